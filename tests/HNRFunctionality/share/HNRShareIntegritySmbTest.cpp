// A transfer is true only when the bytes are there; any number of files;
// refused names; every false with its own reason. Against a real smbd (runs
// inside scripts/with-smbd).
#include "share/HNRShare.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "HNRFunctionality/share/ShareSmbSupport.h"
#include "fsutil/HNRLocalFiles.h"

namespace {

using HNR::HNRShareConnection;
using HNR::HNRShareParams;
using HNRTest::checksums;
using HNRTest::ProgressRecorder;

class HNRShareIntegritySmbTest : public HNRTest::SmbFixture {
protected:
    // A private mount namespace, so test mounts vanish with the process.
    void privateMounts()
    {
        ASSERT_EQ(::unshare(CLONE_NEWNS), 0) << std::strerror(errno);
        ASSERT_EQ(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0) << std::strerror(errno);
    }
};

bool exists(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

// Writes zeros until the filesystem is full.
void fillUp(const std::string& path)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return;
    static const char block[4096] = {};
    while (::write(fd, block, sizeof block) > 0) {
    }
    ::close(fd);
}

TEST_F(HNRShareIntegritySmbTest, GetIntoDiskThatFillsAfterTheSpaceCheckFails)
{
    privateMounts();
    HNRTest::writeBytes(guestDir + "/one and a half mib", 1536 * 1024, 21);
    const std::string small = local / "small";
    ASSERT_EQ(::mkdir(small.c_str(), 0755), 0);
    ASSERT_EQ(::mount("tmpfs", small.c_str(), "tmpfs", 0, "size=2m"), 0) << std::strerror(errno);
    ProgressRecorder progress;
    // The first progress report comes right after smbclient started: another
    // writer takes the room the check saw.
    bool filled = false;
    progress.onProgress = [&](double) {
        if (!filled)
            fillUp(small + "/filler");
        filled = true;
    };
    EXPECT_FALSE(HNRShareConnection::getFiles({"one and a half mib"}, guest(), small, true, &progress));
    EXPECT_TRUE(filled);
    EXPECT_NE(getErrorMessage().find("Can't get file 'one and a half mib' to directory '" + small + "' from share: "),
              std::string::npos)
        << getErrorMessage();
    // smbclient names the full disk on standard error, or the file is short.
    EXPECT_TRUE(getErrorMessage().find("NT_STATUS_DISK_FULL") != std::string::npos ||
                getErrorMessage().find("of 1572864 bytes") != std::string::npos)
        << getErrorMessage();
    progress.expectNever100();
    ASSERT_EQ(::umount2(small.c_str(), MNT_DETACH), 0);
}

TEST_F(HNRShareIntegritySmbTest, GetOfAFolderWithTopDirsIntoReadOnlyFolderFails)
{
    privateMounts();
    ASSERT_EQ(::mkdir((guestDir + "/folder").c_str(), 0777), 0);
    HNRTest::writeBytes(guestDir + "/folder/inside", 5000, 22);
    const std::string ro = local / "ro";
    ASSERT_EQ(::mkdir(ro.c_str(), 0755), 0);
    ASSERT_EQ(::mount("tmpfs", ro.c_str(), "tmpfs", MS_RDONLY, "size=1m"), 0) << std::strerror(errno);
    ProgressRecorder progress;
    EXPECT_FALSE(HNRShareConnection::getFiles({"folder"}, guest(), ro, true, &progress));
    EXPECT_NE(getErrorMessage().find("Can't get file 'folder' to directory '" + ro + "' from share: "),
              std::string::npos)
        << getErrorMessage();
    EXPECT_NE(getErrorMessage().find("folder/inside"), std::string::npos) << getErrorMessage();
    progress.expectNever100();
    ASSERT_EQ(::umount2(ro.c_str(), MNT_DETACH), 0);
}

TEST_F(HNRShareIntegritySmbTest, PutAndGetOfThreeThousandFilesInSixtyFolders)
{
    // Long names, so that one script would be several times the 128 KiB an
    // argument may hold.
    const std::string tree = local / "a tree whose folder names are rather long";
    ASSERT_EQ(::mkdir(tree.c_str(), 0755), 0);
    for (int d = 0; d < 60; ++d) {
        const std::string dir = tree + "/folder number " + std::to_string(d) + " with a long name";
        ASSERT_EQ(::mkdir(dir.c_str(), 0755), 0);
        for (int f = 0; f < 50; ++f)
            HNRTest::writeBytes(dir + "/file " + std::to_string(f) + " of folder " + std::to_string(d),
                                static_cast<std::size_t>((d * 50 + f) * 37 % 4096), static_cast<unsigned>(d * 50 + f));
    }
    ASSERT_EQ(::mkdir((guestDir + "/many").c_str(), 0777), 0);
    ProgressRecorder put;
    ASSERT_TRUE(HNRShareConnection::putFiles({tree}, guest("\\many"), true, &put)) << getErrorMessage();
    put.expectMonotonicEndingAt100();
    const std::string leaf = "a tree whose folder names are rather long";
    EXPECT_EQ(checksums(guestDir + "/many/" + leaf), checksums(tree));

    const std::string out = local / "out";
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    ProgressRecorder get;
    ASSERT_TRUE(HNRShareConnection::getFiles({leaf}, guest("\\many"), out, true, &get)) << getErrorMessage();
    get.expectMonotonicEndingAt100();
    EXPECT_EQ(checksums(out + "/" + leaf), checksums(tree));

    // 1,500 files named one by one: listings and fetches split as well.
    std::vector<std::string> names;
    for (int d = 0; d < 30; ++d)
        for (int f = 0; f < 50; ++f)
            names.push_back(leaf + "\\folder number " + std::to_string(d) + " with a long name\\file " +
                            std::to_string(f) + " of folder " + std::to_string(d));
    const std::string flat = local / "flat";
    ASSERT_EQ(::mkdir(flat.c_str(), 0755), 0);
    ProgressRecorder each;
    ASSERT_TRUE(HNRShareConnection::getFiles(names, guest("\\many"), flat, true, &each)) << getErrorMessage();
    each.expectMonotonicEndingAt100();
    EXPECT_EQ(HNRTest::fnv1a(flat + "/file 49 of folder 29"),
              HNRTest::fnv1a(tree + "/folder number 29 with a long name/file 49 of folder 29"));
    std::uint64_t total = 0;
    ASSERT_TRUE(HNRShareConnection::size(names, guest("\\many"), total)) << getErrorMessage();
    std::uint64_t expected = 0;
    for (int i = 0; i < 1500; ++i)
        expected += static_cast<std::uint64_t>(i * 37 % 4096);
    EXPECT_EQ(total, expected);
}

// The check of a put rides in its last transfer run: a put that fits in one
// script is one smbclient run, checked all the same.
TEST_F(HNRShareIntegritySmbTest, PutIsOneRunAndStillChecked)
{
    // A counting smbclient first on PATH.
    const std::string bin = local / "bin";
    const std::string runs = local / "runs";
    ASSERT_EQ(::mkdir(bin.c_str(), 0755), 0);
    std::string real;
    for (const char* dir : {"/usr/bin", "/usr/local/bin", "/bin"})
        if (real.empty() && exists(std::string(dir) + "/smbclient"))
            real = std::string(dir) + "/smbclient";
    ASSERT_FALSE(real.empty());
    std::ofstream(bin + "/smbclient") << "#!/bin/sh\necho run >>'" << runs << "'\nexec '" << real << "' \"$@\"\n";
    ASSERT_EQ(::chmod((bin + "/smbclient").c_str(), 0755), 0);
    const std::string path = HNRTest::env("PATH");
    ASSERT_EQ(::setenv("PATH", (bin + ":" + path).c_str(), 1), 0);
    const auto countRuns = [&runs] {
        std::ifstream in(runs);
        std::string line;
        int n = 0;
        while (std::getline(in, line))
            ++n;
        std::remove(runs.c_str());
        return n;
    };

    HNRTest::writeBytes(local / "one.bin", 3 * 1024 * 1024 + 7, 5);
    ProgressRecorder one;
    EXPECT_TRUE(HNRShareConnection::putFiles({local / "one.bin"}, auth(), false, &one)) << getErrorMessage();
    EXPECT_EQ(countRuns(), 1);
    one.expectMonotonicEndingAt100();
    EXPECT_EQ(HNRTest::fnv1a(authDir + "/one.bin"), HNRTest::fnv1a(local / "one.bin"));

    const std::string tree = local / "tree";
    ASSERT_EQ(::mkdir(tree.c_str(), 0755), 0);
    HNRTest::makeTree(tree);
    ProgressRecorder many;
    EXPECT_TRUE(HNRShareConnection::putFiles({tree}, auth(), true, &many)) << getErrorMessage();
    EXPECT_EQ(countRuns(), 1);
    many.expectMonotonicEndingAt100();
    EXPECT_EQ(checksums(authDir + "/tree"), checksums(tree));

    ASSERT_EQ(::setenv("PATH", path.c_str(), 1), 0);
}

TEST_F(HNRShareIntegritySmbTest, NulInAnyNameIsRefused)
{
    HNRTest::writeBytes(guestDir + "/a", 10, 1);
    HNRTest::writeBytes(local / "a", 10, 1);
    const std::string nul("a\0.secret", 9);
    EXPECT_TRUE(HNRShareConnection::checkFile(guest("\\a"))) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::checkFile(guest("\\" + nul)));
    EXPECT_NE(getErrorMessage().find("a\\0.secret' holds a NUL character"), std::string::npos) << getErrorMessage();

    std::vector<std::function<bool()>> operations = {
        [&] { return HNRShareConnection::check(guest("\\" + nul)); },
        [&] { return HNRShareConnection::putFiles({local / nul}, guest(), true, nullptr); },
        [&] { return HNRShareConnection::putFiles({local / "a"}, guest("\\" + nul), true, nullptr); },
        [&] { return HNRShareConnection::getFiles({nul}, guest(), local.path(), true, nullptr); },
        [&] { return HNRShareConnection::getFiles({"a"}, guest(), local / nul, true, nullptr); },
        [&] { return HNRShareConnection::createDir(nul, guest()); },
        [&] { return HNRShareConnection::removeDir(nul, guest()); },
        [&] {
            std::uint64_t total = 0;
            return HNRShareConnection::size({nul}, guest(), total);
        },
        [&] {
            std::vector<HNR::HNRShareEntry> entries;
            return HNRShareConnection::list(guest("\\" + nul), entries);
        },
        [&] {
            HNRShareConnection c;
            return c.connect(guest("\\" + nul));
        },
        [&] { return HNRShareConnection::check(HNRShareParams(guestShare, "us" + std::string(1, '\0') + "er", "x")); },
    };
    for (std::size_t i = 0; i < operations.size(); ++i) {
        setErrorMessage("stale");
        EXPECT_FALSE(operations[i]()) << "operation " << i;
        EXPECT_NE(getErrorMessage().find("NUL"), std::string::npos) << "operation " << i << ": " << getErrorMessage();
    }
    EXPECT_FALSE(exists(guestDir + "/a\\0.secret"));
}

TEST_F(HNRShareIntegritySmbTest, ParentComponentsAreRefusedNotClamped)
{
    ASSERT_EQ(::mkdir((guestDir + "/inner").c_str(), 0777), 0);
    setErrorMessage("stale");
    EXPECT_FALSE(HNRShareConnection::createDir("..\\..\\escape", guest("\\inner")));
    EXPECT_NE(getErrorMessage().find("has a '..' component"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(exists(guestDir + "/escape"));
    EXPECT_FALSE(exists(guestDir + "/inner/escape"));
    EXPECT_FALSE(HNRShareConnection::createDir("x", guest("\\inner\\..\\..")));
    EXPECT_NE(getErrorMessage().find("has a '..' component"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::removeDir("a/../inner", guest()));
    EXPECT_NE(getErrorMessage().find("has a '..' component"), std::string::npos) << getErrorMessage();
    EXPECT_TRUE(exists(guestDir + "/inner"));
    EXPECT_FALSE(HNRShareConnection::getFiles({"../x"}, guest("\\inner"), local.path(), true, nullptr));
    EXPECT_NE(getErrorMessage().find("has a '..' component"), std::string::npos) << getErrorMessage();
    std::uint64_t total = 0;
    EXPECT_FALSE(HNRShareConnection::size({"inner\\.."}, guest(), total));
    EXPECT_NE(getErrorMessage().find("has a '..' component"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::putFiles({local.path() + "/.."}, guest("\\inner"), true, nullptr));
    EXPECT_NE(getErrorMessage().find("ends in '..'"), std::string::npos) << getErrorMessage();
    // A name that merely contains two dots is fine.
    EXPECT_TRUE(HNRShareConnection::createDir("in..between", guest("\\inner"))) << getErrorMessage();
    EXPECT_TRUE(exists(guestDir + "/inner/in..between"));
}

TEST_F(HNRShareIntegritySmbTest, LocalNamesThatCannotBeExaminedGiveTheirOwnReason)
{
    const std::string longName = local / std::string(5000, 'n');
    setErrorMessage("an earlier message");
    EXPECT_FALSE(HNRShareConnection::putFiles({longName}, guest(), true, nullptr));
    EXPECT_NE(getErrorMessage().find("File name too long"), std::string::npos) << getErrorMessage();

    ASSERT_EQ(::symlink((local / "loop b").c_str(), (local / "loop a").c_str()), 0);
    ASSERT_EQ(::symlink((local / "loop a").c_str(), (local / "loop b").c_str()), 0);
    setErrorMessage("an earlier message");
    EXPECT_FALSE(HNRShareConnection::putFiles({local / "loop a"}, guest(), true, nullptr));
    EXPECT_NE(getErrorMessage().find("Too many levels of symbolic links"), std::string::npos) << getErrorMessage();

    // A loop inside a folder that is put.
    const std::string dir = local / "with loop";
    ASSERT_EQ(::mkdir(dir.c_str(), 0755), 0);
    HNRTest::writeBytes(dir + "/fine", 10, 3);
    ASSERT_EQ(::symlink((dir + "/l2").c_str(), (dir + "/l1").c_str()), 0);
    ASSERT_EQ(::symlink((dir + "/l1").c_str(), (dir + "/l2").c_str()), 0);
    setErrorMessage("an earlier message");
    EXPECT_FALSE(HNRShareConnection::putFiles({dir}, guest(), true, nullptr));
    EXPECT_NE(getErrorMessage().find("Too many levels of symbolic links"), std::string::npos) << getErrorMessage();

    setErrorMessage("an earlier message");
    EXPECT_FALSE(HNRShareConnection::getFiles({"x"}, guest(), longName, true, nullptr));
    EXPECT_NE(getErrorMessage(), "an earlier message");
    EXPECT_FALSE(getErrorMessage().empty());
}

TEST_F(HNRShareIntegritySmbTest, SizeSkipsNamesBeginningWithADot)
{
    ASSERT_EQ(::mkdir((guestDir + "/sized").c_str(), 0777), 0);
    ASSERT_EQ(::mkdir((guestDir + "/sized/.hidden dir").c_str(), 0777), 0);
    HNRTest::writeBytes(guestDir + "/sized/seen", 1000, 1);
    HNRTest::writeBytes(guestDir + "/sized/.unseen", 200, 2);
    HNRTest::writeBytes(guestDir + "/sized/.hidden dir/below", 30, 3);
    std::uint64_t total = 0;
    ASSERT_TRUE(HNRShareConnection::size({"sized"}, guest(), total)) << getErrorMessage();
    EXPECT_EQ(total, 1000u);
    // A requested name counts whatever it is called.
    ASSERT_TRUE(HNRShareConnection::size({"sized\\.unseen"}, guest(), total)) << getErrorMessage();
    EXPECT_EQ(total, 200u);
    // A get still fetches everything.
    const std::string out = local / "out";
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    ASSERT_TRUE(HNRShareConnection::getFiles({"sized"}, guest(), out, true, nullptr)) << getErrorMessage();
    EXPECT_TRUE(exists(out + "/sized/.hidden dir/below"));
}

TEST_F(HNRShareIntegritySmbTest, EveryFalseSetsItsOwnMessage)
{
    HNRTest::writeBytes(local / "f", 10, 1);
    std::vector<std::pair<const char*, std::function<bool()>>> operations = {
        {"check of a missing share", [&] { return HNRShareConnection::check(HNRShareParams("\\\\127.0.0.1\\nope", "", "")); }},
        {"check of a server path", [&] { return HNRShareConnection::check(HNRShareParams("\\\\127.0.0.1", "", "")); }},
        {"checkFile of a missing file", [&] { return HNRShareConnection::checkFile(guest("\\missing")); }},
        {"put to a missing folder", [&] { return HNRShareConnection::putFiles({local / "f"}, guest("\\missing"), true, nullptr); }},
        {"put of a missing file", [&] { return HNRShareConnection::putFiles({local / "missing"}, guest(), true, nullptr); }},
        {"get of a missing file", [&] { return HNRShareConnection::getFiles({"missing"}, guest(), local.path(), true, nullptr); }},
        {"get into a missing folder", [&] {
             HNRTest::writeBytes(guestDir + "/g", 1, 1);
             return HNRShareConnection::getFiles({"g"}, guest(), local / "missing", true, nullptr);
         }},
        {"get of nothing but separators", [&] { return HNRShareConnection::getFiles({"\\\\"}, guest(), local.path(), true, nullptr); }},
        {"createDir twice", [&] {
             HNRShareConnection::createDir("twice", guest());
             return HNRShareConnection::createDir("twice", guest());
         }},
        {"createDir of an empty name", [&] { return HNRShareConnection::createDir("", guest()); }},
        {"removeDir of a missing folder", [&] { return HNRShareConnection::removeDir("missing", guest()); }},
        {"size of a missing file", [&] {
             std::uint64_t total = 0;
             return HNRShareConnection::size({"missing"}, guest(), total);
         }},
        {"list of a missing folder", [&] {
             std::vector<HNR::HNRShareEntry> entries;
             return HNRShareConnection::list(guest("\\missing"), entries);
         }},
        {"wrong password", [&] { return HNRShareConnection::check(HNRShareParams(authShare, user, "wrong")); }},
        {"login with %", [&] { return HNRShareConnection::check(HNRShareParams(authShare, "a%b", "x")); }},
        {"password with a line break", [&] { return HNRShareConnection::check(HNRShareParams(authShare, user, "a\nb")); }},
        {"connect with a comma in the password", [&] {
             HNRShareConnection c;
             return c.connect(HNRShareParams(authShare, user, "a,b"));
         }},
    };
    for (const auto& op : operations) {
        setErrorMessage("stale");
        EXPECT_FALSE(op.second()) << op.first;
        EXPECT_NE(getErrorMessage(), "stale") << op.first;
        EXPECT_FALSE(getErrorMessage().empty()) << op.first;
    }
}

} // namespace
