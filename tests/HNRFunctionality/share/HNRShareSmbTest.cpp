// Share operations against a real smbd on loopback (runs inside scripts/with-smbd).
#include "share/HNRShare.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "HNRFunctionality/share/ShareSmbSupport.h"
#include "fsutil/HNRLocalFiles.h"

namespace {

using HNR::HNRShareConnection;
using HNRTest::checksums;
using HNRTest::ProgressRecorder;

class HNRShareSmbTest : public HNRTest::SmbFixture {};

bool exists(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

TEST_F(HNRShareSmbTest, PutThenGetOneFileOnBothShares)
{
    const std::string name = "single file A.bin";
    HNRTest::writeBytes(local / name, 300000, 7);
    for (const HNR::HNRShareParams& params : {guest(), auth()}) {
        const std::string serverDir = params.login.empty() ? guestDir : authDir;
        ProgressRecorder put;
        ASSERT_TRUE(HNRShareConnection::putFiles({local / name}, params, true, &put)) << getErrorMessage();
        put.expectMonotonicEndingAt100();
        EXPECT_EQ(HNRTest::fnv1a(serverDir + "/" + name), HNRTest::fnv1a(local / name));

        std::uint64_t total = 0;
        ASSERT_TRUE(HNRShareConnection::size({name}, params, total)) << getErrorMessage();
        EXPECT_EQ(total, 300000u);

        const std::string out = local / (params.login.empty() ? "out-guest" : "out-auth");
        ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
        ProgressRecorder get;
        ASSERT_TRUE(HNRShareConnection::getFiles({name}, params, out, true, &get)) << getErrorMessage();
        get.expectMonotonicEndingAt100();
        EXPECT_EQ(HNRTest::fnv1a(out + "/" + name), HNRTest::fnv1a(local / name));
    }
}

TEST_F(HNRShareSmbTest, TreeWithTopDirsRoundTrips)
{
    const std::string tree = local / "tree";
    const std::uint64_t bytes = HNRTest::makeTree(tree);
    ASSERT_EQ(::mkdir((guestDir + "/up").c_str(), 0777), 0);
    ProgressRecorder put;
    ASSERT_TRUE(HNRShareConnection::putFiles({tree}, guest("\\up"), true, &put)) << getErrorMessage();
    put.expectMonotonicEndingAt100();
    EXPECT_EQ(checksums(guestDir + "/up/tree"), checksums(tree));

    std::uint64_t total = 0;
    ASSERT_TRUE(HNRShareConnection::size({"tree"}, guest("\\up"), total)) << getErrorMessage();
    EXPECT_EQ(total, bytes);
    ASSERT_TRUE(HNRShareConnection::size({"up/tree/sub one", "up\\tree\\other"}, guest(), total));
    std::uint64_t expected = 0;
    ASSERT_TRUE(HNR::getSizeRecursiveLocal({tree + "/sub one", tree + "/other"}, expected));
    EXPECT_EQ(total, expected);

    const std::string out = local / "out";
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    ProgressRecorder get;
    ASSERT_TRUE(HNRShareConnection::getFiles({"tree"}, guest("\\up"), out, true, &get)) << getErrorMessage();
    get.expectMonotonicEndingAt100();
    EXPECT_EQ(checksums(out + "/tree"), checksums(tree));
}

TEST_F(HNRShareSmbTest, TreeWithoutTopDirsMovesTheContents)
{
    const std::string tree = local / "tree";
    const std::uint64_t bytes = HNRTest::makeTree(tree);
    ASSERT_EQ(::mkdir((authDir + "/flat").c_str(), 0777), 0);
    ProgressRecorder put;
    ASSERT_TRUE(HNRShareConnection::putFiles({tree}, auth("\\flat"), false, &put)) << getErrorMessage();
    put.expectMonotonicEndingAt100();
    EXPECT_FALSE(exists(authDir + "/flat/tree"));
    EXPECT_EQ(checksums(authDir + "/flat"), checksums(tree));

    std::uint64_t total = 0;
    ASSERT_TRUE(HNRShareConnection::size({"flat"}, auth(), total)) << getErrorMessage();
    EXPECT_EQ(total, bytes);

    const std::string out = local / "out";
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    ProgressRecorder get;
    ASSERT_TRUE(HNRShareConnection::getFiles({"flat"}, auth(), out, false, &get)) << getErrorMessage();
    get.expectMonotonicEndingAt100();
    EXPECT_EQ(checksums(out), checksums(tree));
}

TEST_F(HNRShareSmbTest, SizeOfASparseFiveGibibyteFile)
{
    const std::string path = guestDir + "/sparse 5G A";
    int fd = ::open(path.c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, 5368709120LL), 0);
    ::close(fd);
    std::uint64_t total = 0;
    ASSERT_TRUE(HNRShareConnection::size({"sparse 5G A"}, guest(), total)) << getErrorMessage();
    EXPECT_EQ(total, 5368709120u);
    ::unlink(path.c_str());
}

TEST_F(HNRShareSmbTest, CreateDirTwiceSaysItExists)
{
    ASSERT_TRUE(HNRShareConnection::createDir("made", guest())) << getErrorMessage();
    EXPECT_TRUE(boost::filesystem::is_directory(guestDir + "/made"));
    ASSERT_TRUE(HNRShareConnection::createDir("made\\inner dir", guest())) << getErrorMessage();
    EXPECT_TRUE(boost::filesystem::is_directory(guestDir + "/made/inner dir"));
    EXPECT_FALSE(HNRShareConnection::createDir("made", guest()));
    EXPECT_EQ(getErrorMessage(), "Can't create directory 'made' on share '" + guestShare + "': directory already exist");
    EXPECT_FALSE(HNRShareConnection::createDir("no/such/parent", guest()));
    EXPECT_NE(getErrorMessage().find("Path is not found"), std::string::npos) << getErrorMessage();
}

TEST_F(HNRShareSmbTest, RemoveDirRemovesTheWholeTree)
{
    const std::string tree = local / "tree";
    HNRTest::makeTree(tree);
    ::mkdir((tree + "/other/empty dir").c_str(), 0755);
    ASSERT_TRUE(HNRShareConnection::putFiles({tree}, auth(), true, nullptr)) << getErrorMessage();
    ASSERT_TRUE(boost::filesystem::is_directory(authDir + "/tree/other/empty dir"));
    std::ofstream(authDir + "/tree/.hidden") << "h";
    ASSERT_TRUE(HNRShareConnection::removeDir("tree", auth())) << getErrorMessage();
    EXPECT_FALSE(exists(authDir + "/tree"));

    EXPECT_FALSE(HNRShareConnection::removeDir("tree", auth()));
    EXPECT_EQ(getErrorMessage(), "Can't get directories from 'tree' on share '" + authShare +
                                     "': directory does not exist");
}

TEST_F(HNRShareSmbTest, CheckAndCheckFile)
{
    std::ofstream(guestDir + "/present.txt") << "p";
    EXPECT_TRUE(HNRShareConnection::check(guest())) << getErrorMessage();
    EXPECT_TRUE(HNRShareConnection::check(auth())) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::check(HNR::HNRShareParams(authShare, user, password + "x")));
    EXPECT_NE(getErrorMessage().find("Logon failure"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::check(HNR::HNRShareParams("\\\\127.0.0.1\\nosuchshare", "", "")));
    EXPECT_NE(getErrorMessage().find("Bad network name"), std::string::npos) << getErrorMessage();

    EXPECT_TRUE(HNRShareConnection::checkFile(guest("\\present.txt"))) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::checkFile(guest("\\absent.txt")));
    EXPECT_FALSE(HNRShareConnection::checkFile(guest("\\no dir\\absent.txt")));
}

TEST_F(HNRShareSmbTest, GetIntoTooSmallFolderFailsBeforeAnyTransfer)
{
    HNRTest::writeBytes(guestDir + "/two mib", 2 * 1048576, 3);
    ASSERT_EQ(::unshare(CLONE_NEWNS), 0) << std::strerror(errno);
    ASSERT_EQ(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0) << std::strerror(errno);
    const std::string small = local / "small";
    ASSERT_EQ(::mkdir(small.c_str(), 0755), 0);
    ASSERT_EQ(::mount("tmpfs", small.c_str(), "tmpfs", 0, "size=1m"), 0) << std::strerror(errno);
    ProgressRecorder progress;
    EXPECT_FALSE(HNRShareConnection::getFiles({"two mib"}, guest(), small, true, &progress));
    EXPECT_EQ(getErrorMessage(), "Not enough space on local folder '" + small + "'");
    EXPECT_TRUE(progress.values.empty());
    EXPECT_TRUE(boost::filesystem::is_empty(small));
    ASSERT_EQ(::umount(small.c_str()), 0);
}

TEST_F(HNRShareSmbTest, AccessDeniedOnOneFileOfManyFails)
{
    const std::string dir = local / "many";
    ASSERT_EQ(::mkdir(dir.c_str(), 0755), 0);
    for (const char* name : {"a1", "b2 locked", "c3"})
        HNRTest::writeBytes(dir + "/" + name, 50000, 1);
    // Immutable on the server side: even smbd acting as root cannot overwrite it.
    std::ofstream(guestDir + "/b2 locked") << "old";
    ASSERT_EQ(std::system(("chattr +i '" + guestDir + "/b2 locked'").c_str()), 0);
    ProgressRecorder progress;
    EXPECT_FALSE(HNRShareConnection::putFiles({dir}, guest(), false, &progress));
    (void)std::system(("chattr -i '" + guestDir + "/b2 locked'").c_str());
    EXPECT_NE(getErrorMessage().find("b2 locked"), std::string::npos) << getErrorMessage();
    EXPECT_NE(getErrorMessage().find("Access is denied"), std::string::npos) << getErrorMessage();
    progress.expectNever100();
}

TEST_F(HNRShareSmbTest, LocalFileRemovedDuringThePutFails)
{
    HNRTest::writeBytes(local / "first big", 300 * 1048576, 5);
    HNRTest::writeBytes(local / "second", 1000, 6);
    ProgressRecorder progress;
    progress.onProgress = [&](double) { ::unlink((local / "second").c_str()); };
    EXPECT_FALSE(HNRShareConnection::putFiles({local / "first big", local / "second"}, guest(), true, &progress));
    EXPECT_EQ(getErrorMessage(), "Can't put file(s) on share '" + guestShare + "': " + (local / "second") +
                                     " does not exist");
    progress.expectNever100();
    ::unlink((guestDir + "/first big").c_str());
}

TEST_F(HNRShareSmbTest, GetOfAMissingFileFails)
{
    EXPECT_FALSE(HNRShareConnection::getFiles({"not here"}, guest(), local.path(), true, nullptr));
    EXPECT_NE(getErrorMessage().find("No such file"), std::string::npos) << getErrorMessage();
}

} // namespace
