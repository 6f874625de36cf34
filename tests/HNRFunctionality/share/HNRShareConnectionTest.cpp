// Share connections and the script operations against recording stand-ins of
// the SMB tools (no kernel CIFS client here; real smbclient runs in the
// ...SmbTest programs).
#include "share/HNRShare.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <boost/filesystem/operations.hpp>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "HNKErrorMessage.h"
#include "HNKStringUtils.h"
#include "HNRFunctionality/share/ShareFakeTools.h"
#include "share/HNRShareParams.h"

namespace {

using HNR::HNRShareConnection;
using HNR::HNRShareParams;
using HNRTest::isDir;
using Clock = std::chrono::steady_clock;

class Recorder : public HNRShareConnection::Progress {
public:
    void setProgress(double percent) override
    {
        values.push_back(percent);
        times.push_back(Clock::now());
    }
    std::vector<double> values;
    std::vector<Clock::time_point> times;
};

class HNRShareConnectionTest : public HNRTest::FakeToolsTest {
protected:
    HNRShareParams params(const std::string& path) { return HNRShareParams(path, "DOM\\user", kPassword); }
    std::string mnt(int n) { return mountRoot() + std::to_string(n); }

    // A put is checked against a listing of what arrived, at the end of its
    // last run: this smbclient keeps the script of a put run (putScript()),
    // waits putSeconds in it, and answers every listing with the text given.
    void smbclientWithListing(const std::string& listing, int putSeconds = 0)
    {
        ASSERT_EQ(::unlink((bin + "/smbclient").c_str()), 0);
        std::ofstream(tmp / "listing") << listing;
        std::ofstream(bin + "/smbclient") << "#!/bin/sh\nfor a; do last=\"$a\"; done\ncase \"$last\" in\n"
                                          << "  *\"; put \"*) printf '%s' \"$last\" > '" << tmp / "put.script"
                                          << "'; sleep " << putSeconds << "\n"
                                          << "    case \"$last\" in *\"; ls \"*) cat '" << tmp / "listing"
                                          << "' ;; esac ;;\n"
                                          << "  *\"; ls \"*) cat '" << tmp / "listing" << "' ;;\nesac\nexit 0\n";
        ASSERT_EQ(::chmod((bin + "/smbclient").c_str(), 0755), 0);
    }
    std::string putScript()
    {
        std::ifstream in(tmp / "put.script");
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    static std::string entry(const std::string& name, const std::string& attributes, std::uint64_t size)
    {
        char line[256];
        std::snprintf(line, sizeof line, "  %-30s %7s %8llu  Fri Nov 20 23:42:42 2026\n", name.c_str(),
                      attributes.c_str(), static_cast<unsigned long long>(size));
        return line;
    }
    static std::string blockEnd() { return "\n\t\t100 blocks of size 1024. 50 blocks available\n"; }
};

// ---- connect / disconnect -------------------------------------------------

TEST_F(HNRShareConnectionTest, MountRootIsInThePrivateTemporaryFolder)
{
    EXPECT_EQ(getTempDir() + "mnt", mountRoot());
    EXPECT_NE(getTempDir(), "/tmp/");
}

TEST_F(HNRShareConnectionTest, MountsUnderTheFirstFreeMountPoint)
{
    {
        HNRShareConnection connection;
        ASSERT_TRUE(connection.connect(params("\\\\srv\\share\\"))) << getErrorMessage();
        EXPECT_TRUE(connection.isConnected());
        EXPECT_EQ(connection.getSharePath(), "//srv/share");
        EXPECT_EQ(connection.getConnectedSharePath(), mnt(0));
        EXPECT_TRUE(isDir(mnt(0)));
        EXPECT_EQ(recorded("mount"), (std::vector<std::string>{"mount", "-t", "cifs"}));
        EXPECT_EQ(recorded("mount.cifs"), (std::vector<std::string>{"mount.cifs", "//srv/share", mnt(0),
                                                                    std::string("-ouser=DOM/user%") + kPassword}));
        EXPECT_TRUE(logged(3, "[mountApi] Mounting samba share '//srv/share' to directory '" + mnt(0) + "'"));
        EXPECT_EQ(mounts().size(), 1u);

        ASSERT_TRUE(connection.disconnect()) << getErrorMessage();
        EXPECT_FALSE(connection.isConnected());
        EXPECT_EQ(connection.getSharePath(), "");
        EXPECT_EQ(connection.getConnectedSharePath(), "");
        EXPECT_EQ(recorded("umount.cifs"), (std::vector<std::string>{"umount.cifs", mnt(0)}));
        EXPECT_TRUE(table().empty());
        // The empty mount point stays until the object goes.
        EXPECT_TRUE(isDir(mnt(0)));
        EXPECT_TRUE(connection.disconnect());
        EXPECT_EQ(umounts().size(), 1u);
    }
    EXPECT_FALSE(isDir(mnt(0)));
}

TEST_F(HNRShareConnectionTest, DestructorUnmountsAndRemovesTheMountPoint)
{
    {
        HNRShareConnection connection;
        ASSERT_TRUE(connection.connect(params("\\\\srv\\share"))) << getErrorMessage();
    }
    EXPECT_EQ(umounts(), (std::vector<std::string>{mnt(0)}));
    EXPECT_FALSE(isDir(mnt(0)));
}

TEST_F(HNRShareConnectionTest, TakenMountPointsAreSkipped)
{
    ASSERT_EQ(::mkdir(mnt(0).c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(mnt(2).c_str(), 0755), 0);
    HNRShareConnection first, second;
    ASSERT_TRUE(first.connect(params("\\\\srv\\one"))) << getErrorMessage();
    ASSERT_TRUE(second.connect(params("\\\\srv\\two"))) << getErrorMessage();
    EXPECT_EQ(first.getConnectedSharePath(), mnt(1));
    EXPECT_EQ(second.getConnectedSharePath(), mnt(3));
}

TEST_F(HNRShareConnectionTest, ExistingMountIsReusedAndNeverUnmounted)
{
    const std::string theirs = tmp / "theirs";
    ASSERT_EQ(::mkdir(theirs.c_str(), 0755), 0);
    ASSERT_EQ(::mkdir((theirs + "/sub").c_str(), 0755), 0);
    std::ofstream(mtab) << "//SRV/Share on " << theirs << " type cifs (rw,relatime)\n";
    {
        HNRShareConnection connection;
        ASSERT_TRUE(connection.connect(params("\\\\srv\\share\\sub"))) << getErrorMessage();
        EXPECT_EQ(connection.getConnectedSharePath(), theirs);
        EXPECT_EQ(connection.getSharePath(), "//srv/share");
        EXPECT_TRUE(logged(3, "[isMountExist] Already mounted: " + theirs));
        EXPECT_TRUE(connection.disconnect());
        ASSERT_TRUE(connection.connect(params("\\\\srv\\share\\sub"))) << getErrorMessage();
    }
    EXPECT_FALSE(ran("mount.cifs"));
    EXPECT_FALSE(ran("umount.cifs"));
    EXPECT_FALSE(isDir(mnt(0)));
    EXPECT_EQ(table().size(), 1u);
}

TEST_F(HNRShareConnectionTest, AllMountPointsTakenFails)
{
    for (int n = 0; n < 100; ++n)
        ASSERT_EQ(::mkdir(mnt(n).c_str(), 0755), 0);
    HNRShareConnection connection;
    EXPECT_FALSE(connection.connect(params("\\\\srv\\share")));
    EXPECT_EQ(getErrorMessage(), "Can't acquire free mount point for share '\\\\srv\\share'");
    EXPECT_TRUE(logged(1, "[connect] Can't acquire free mount point for share '\\\\srv\\share'"));
    EXPECT_FALSE(connection.isConnected());
    EXPECT_FALSE(ran("mount.cifs"));
    EXPECT_FALSE(isDir(mnt(100)));
}

TEST_F(HNRShareConnectionTest, FailedMountLeavesNoMountPoint)
{
    answer("mount.cifs", "", "mount error(13): Permission denied", 32);
    HNRShareConnection connection;
    EXPECT_FALSE(connection.connect(params("\\\\srv\\share")));
    EXPECT_EQ(getErrorMessage(), "Failed to connect to network share '//srv/share': mount error(13): Permission denied");
    EXPECT_FALSE(connection.isConnected());
    EXPECT_FALSE(isDir(mnt(0)));
    EXPECT_TRUE(table().empty());
}

TEST_F(HNRShareConnectionTest, MissingPathInsideTheShareUnmountsAgain)
{
    {
        HNRShareConnection connection;
        EXPECT_FALSE(connection.connect(params("\\\\srv\\share\\missing")));
        EXPECT_EQ(getErrorMessage(), "Failed to open file '\\\\srv\\share\\missing' on share '\\\\srv\\share':"
                                     "No such file or directory");
        EXPECT_FALSE(connection.isConnected());
        EXPECT_EQ(mounts().size(), 1u);
        EXPECT_EQ(umounts().size(), 1u);
        EXPECT_TRUE(table().empty());
        EXPECT_FALSE(isDir(mnt(0)));
    }
    EXPECT_EQ(umounts().size(), 1u);
}

TEST_F(HNRShareConnectionTest, InvalidSharePathIsRefused)
{
    HNRShareConnection connection;
    EXPECT_FALSE(connection.connect(params("\\\\srv")));
    EXPECT_EQ(getErrorMessage(), "Invalid share path: '\\\\srv'");
    EXPECT_FALSE(connection.connect(params("\\\\")));
    EXPECT_EQ(getErrorMessage(), "Invalid share path: '\\\\'");
    EXPECT_FALSE(ran("mount"));
}

TEST_F(HNRShareConnectionTest, FailedUnmountKeepsTheConnection)
{
    HNRShareConnection connection;
    ASSERT_TRUE(connection.connect(params("\\\\srv\\share"))) << getErrorMessage();
    answer("umount.cifs", "", "umount: device is busy", 16);
    EXPECT_FALSE(connection.disconnect());
    EXPECT_EQ(getErrorMessage(), "Failed to disconnect from network share '//srv/share': umount: device is busy");
    EXPECT_TRUE(connection.isConnected());
    // connect first disconnects: failing that, nothing changes.
    EXPECT_FALSE(connection.connect(params("\\\\srv\\other")));
    EXPECT_EQ(connection.getSharePath(), "//srv/share");
    clearAnswers();
    EXPECT_TRUE(connection.disconnect());
    EXPECT_FALSE(connection.isConnected());
}

TEST_F(HNRShareConnectionTest, ConnectWhileConnectedMovesToTheNewShare)
{
    HNRShareConnection connection;
    ASSERT_TRUE(connection.connect(params("\\\\srv\\one"))) << getErrorMessage();
    ASSERT_TRUE(connection.connect(params("\\\\srv\\two"))) << getErrorMessage();
    EXPECT_EQ(connection.getSharePath(), "//srv/two");
    EXPECT_EQ(umounts(), (std::vector<std::string>{mnt(0)}));
    EXPECT_EQ(table().size(), 1u);
    connection.clearPaths();
    EXPECT_FALSE(connection.isConnected());
    EXPECT_EQ(connection.getConnectedSharePath(), "");
}

// ---- script operations: exact scripts and refusals ------------------------

TEST_F(HNRShareConnectionTest, CheckListsTheShare)
{
    EXPECT_TRUE(HNRShareConnection::check(params("\\\\srv\\share\\dir"))) << getErrorMessage();
    EXPECT_EQ(recorded("smbclient"), (std::vector<std::string>{"smbclient", "//srv/share", "-U",
                                                               std::string("DOM\\user%") + kPassword, "-D", "dir",
                                                               "-c", "prompt off; ls *."}));
    answer("smbclient", "tree connect failed: NT_STATUS_ACCESS_DENIED\n", "", 1);
    EXPECT_FALSE(HNRShareConnection::check(params("\\\\srv\\share")));
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls *.' on share '//srv/share': Access is denied");
    EXPECT_TRUE(logged(1, "[check] " + getErrorMessage()));
}

TEST_F(HNRShareConnectionTest, CheckFileListsTheNameInItsFolder)
{
    EXPECT_TRUE(HNRShareConnection::checkFile(params("\\\\srv\\share\\d\\file.txt"))) << getErrorMessage();
    EXPECT_EQ(script(), "prompt off; ls \"file.txt\"");
    std::vector<std::string> args = recorded("smbclient");
    ASSERT_EQ(args.size(), 8u);
    EXPECT_EQ(args[5], "d");
    // A half credential becomes anonymous: the guest logon.
    EXPECT_TRUE(HNRShareConnection::checkFile(HNRShareParams("\\\\srv\\share\\f", "user", "")));
    EXPECT_EQ(recorded("smbclient")[3], "guest%");
    answer("smbclient", "NT_STATUS_NO_SUCH_FILE listing \\f\n", "", 1);
    EXPECT_FALSE(HNRShareConnection::checkFile(params("\\\\srv\\share\\f")));
    EXPECT_TRUE(logged(1, "[checkFile] " + getErrorMessage()));
}

TEST_F(HNRShareConnectionTest, PutWithoutTopDirsUploadsTheContents)
{
    const std::string top = tmp / "top";
    ASSERT_EQ(::mkdir(top.c_str(), 0755), 0);
    ASSERT_EQ(::mkdir((top + "/sub").c_str(), 0755), 0);
    std::ofstream(top + "/a") << "aaa";
    std::ofstream(top + "/sub/b") << "bb";
    // One listing block per entry of top, in the order the put meets them.
    std::string listing;
    for (boost::filesystem::directory_iterator it(top), end; it != end; ++it)
        listing += it->path().filename() == "a" ? entry("a", "N", 3) + blockEnd()
                                                : entry("sub", "D", 0) + "\n\\in\\sub\n" + entry(".", "D", 0) +
                                                      entry("..", "D", 0) + entry("b", "N", 2) + blockEnd();
    smbclientWithListing(listing);
    ASSERT_TRUE(HNRShareConnection::putFiles({top}, params("\\\\srv\\share\\in"), false, nullptr)) << getErrorMessage();
    const std::string s = putScript();
    EXPECT_EQ(s.rfind("prompt off;", 0), 0u) << s;
    EXPECT_NE(s.find("; put \"" + top + "/a\" \"a\""), std::string::npos) << s;
    EXPECT_NE(s.find("; mkdir \"sub\\\""), std::string::npos) << s;
    EXPECT_NE(s.find("; put \"" + top + "/sub/b\" \"sub\\b\""), std::string::npos) << s;
    EXPECT_EQ(s.find("mkdir \"top"), std::string::npos) << s;
    EXPECT_LT(s.find("; mkdir \"sub\\\""), s.find("\"sub\\b\"")) << s;
}

TEST_F(HNRShareConnectionTest, PutWithTopDirsMakesTheFolder)
{
    const std::string top = tmp / "top";
    ASSERT_EQ(::mkdir(top.c_str(), 0755), 0);
    std::ofstream(top + "/a") << "aaa";
    const std::string single = tmp / "single";
    std::ofstream(single) << "s";
    smbclientWithListing(entry("top", "D", 0) + "\n\\top\n" + entry("a", "N", 3) + blockEnd() +
                         entry("single", "N", 1) + blockEnd());
    ASSERT_TRUE(HNRShareConnection::putFiles({top, single}, params("\\\\srv\\share"), true, nullptr))
        << getErrorMessage();
    EXPECT_EQ(putScript(), "prompt off; mkdir \"top\\\"; put \"" + top + "/a\" \"top\\a\"; put \"" + single +
                            "\" \"single\"; recurse; ls \"top\"; ls \"single\"");
}

// The check listing runs in the put's own run; what it says decides.
TEST_F(HNRShareConnectionTest, PutFailsWhenTheCheckListingMissesAFile)
{
    const std::string single = tmp / "single";
    std::ofstream(single) << "s";
    smbclientWithListing("NT_STATUS_NO_SUCH_FILE listing \\single\n");
    EXPECT_FALSE(HNRShareConnection::putFiles({single}, params("\\\\srv\\share"), true, nullptr));
    EXPECT_EQ(getErrorMessage(), "Can't put file(s) on share '\\\\srv\\share': 'single' is missing on the share after the put");
    EXPECT_TRUE(logged(1, "[putFiles] " + getErrorMessage()));
}

TEST_F(HNRShareConnectionTest, PutFailsWhenTheCheckListingShowsFewerBytes)
{
    const std::string top = tmp / "top";
    ASSERT_EQ(::mkdir(top.c_str(), 0755), 0);
    std::ofstream(top + "/a") << "aaa";
    smbclientWithListing(entry("top", "D", 0) + "\n\\top\n" + entry("a", "N", 2) + blockEnd());
    Recorder progress;
    EXPECT_FALSE(HNRShareConnection::putFiles({top}, params("\\\\srv\\share"), true, &progress));
    EXPECT_EQ(getErrorMessage(), "Can't put file(s) on share '\\\\srv\\share': 'top/a' has 2 of 3 bytes on the share");
    for (double v : progress.values)
        EXPECT_LT(v, 100.0);
}

TEST_F(HNRShareConnectionTest, PutOfAMissingLocalFileRunsNothing)
{
    EXPECT_FALSE(HNRShareConnection::putFiles({tmp / "missing"}, params("\\\\srv\\share"), true, nullptr));
    EXPECT_EQ(getErrorMessage(), "File '" + tmp / "missing" + "' does not exist");
    EXPECT_FALSE(ran("smbclient"));
}

TEST_F(HNRShareConnectionTest, UnsafeNamesAreRefusedBeforeAnyToolRuns)
{
    const std::string dir = tmp / "d";
    ASSERT_EQ(::mkdir(dir.c_str(), 0755), 0);
    std::ofstream(dir + "/semi;colon") << "x";
    Recorder progress;
    EXPECT_FALSE(HNRShareConnection::putFiles({dir}, params("\\\\srv\\share"), true, &progress));
    EXPECT_NE(getErrorMessage().find("semi;colon' holds ';'"), std::string::npos) << getErrorMessage();
    EXPECT_TRUE(progress.values.empty());
    EXPECT_FALSE(HNRShareConnection::getFiles({"a\"b"}, params("\\\\srv\\share"), tmp.path(), true, nullptr));
    EXPECT_NE(getErrorMessage().find("holds ';', '\"'"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::getFiles({"a"}, params("\\\\srv\\share"), tmp / "x;y", true, nullptr));
    EXPECT_FALSE(HNRShareConnection::createDir("new;rm *", params("\\\\srv\\share")));
    EXPECT_FALSE(HNRShareConnection::removeDir("d\"", params("\\\\srv\\share")));
    std::uint64_t total = 7;
    EXPECT_FALSE(HNRShareConnection::size({"x;y"}, params("\\\\srv\\share"), total));
    EXPECT_EQ(total, 0u);
    EXPECT_FALSE(HNRShareConnection::checkFile(params("\\\\srv\\share\\a;b")));
    EXPECT_FALSE(ran("smbclient"));
}

TEST_F(HNRShareConnectionTest, CredentialsThatCannotBeCarriedAreRefusedBeforeTheMountListing)
{
    HNRShareConnection connection;
    EXPECT_FALSE(connection.connect(HNRShareParams("\\\\srv\\share", "user", "pass,word")));
    EXPECT_EQ(getErrorMessage(),
              "Can't mount share '//srv/share': the password holds ',', a line break or NUL, which mount.cifs would misread");
    EXPECT_FALSE(connection.connect(HNRShareParams("\\\\srv\\share", "us,er", "password")));
    EXPECT_NE(getErrorMessage().find("the login holds ','"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(connection.connect(HNRShareParams("\\\\srv\\share\\..\\other", "user", "password")));
    EXPECT_NE(getErrorMessage().find("has a '..' component"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(HNRShareConnection::check(HNRShareParams("\\\\srv\\share", "us%er", "password")));
    EXPECT_FALSE(ran("mount"));
    EXPECT_FALSE(ran("mount.cifs"));
    EXPECT_FALSE(ran("smbclient"));
}

TEST_F(HNRShareConnectionTest, CreateDirScript)
{
    ASSERT_TRUE(HNRShareConnection::createDir("a/b\\new", params("\\\\srv\\share"))) << getErrorMessage();
    EXPECT_EQ(script(), "prompt off; mkdir \"a\\b\\new\\\"");
    answer("smbclient", "NT_STATUS_OBJECT_NAME_COLLISION making remote directory \\a\\b\\new\\\n", "", 0);
    EXPECT_FALSE(HNRShareConnection::createDir("a/b\\new", params("\\\\srv\\share")));
    EXPECT_EQ(getErrorMessage(), "Can't create directory 'a/b\\new' on share '\\\\srv\\share': directory already exist");
    EXPECT_TRUE(logged(1, "[createDir] " + getErrorMessage()));
}

TEST_F(HNRShareConnectionTest, RemoveDirDeletesDeepestFirst)
{
    answer("smbclient",
           "  d                                   D        0  Fri Nov 20 23:42:42 2026\n\n"
           "\\in\\d\n"
           "  .                                   D        0  Fri Nov 20 23:42:42 2026\n"
           "  ..                                  D        0  Fri Nov 20 23:42:42 2026\n"
           "  f                                   N        3  Fri Nov 20 23:42:42 2026\n"
           "  s                                   D        0  Fri Nov 20 23:42:42 2026\n\n"
           "\\in\\d\\s\n"
           "  .                                   D        0  Fri Nov 20 23:42:42 2026\n"
           "  ..                                  D        0  Fri Nov 20 23:42:42 2026\n\n"
           "\t\t100 blocks of size 1024. 50 blocks available\n",
           "", 0);
    ASSERT_TRUE(HNRShareConnection::removeDir("d", params("\\\\srv\\share\\in"))) << getErrorMessage();
    // The last run is the removal; the empty folder gets no "rm *".
    EXPECT_EQ(script(), "prompt off; cd \"\\in\\d\\\"; rmdir \"s\\\"; cd \"\\in\\d\\\"; rm *; cd \"\\in\\\"; "
                        "rmdir \"d\\\"");
}

TEST_F(HNRShareConnectionTest, RemoveDirOfMissingFolder)
{
    answer("smbclient", "NT_STATUS_NO_SUCH_FILE listing \\gone\n", "", 1);
    EXPECT_FALSE(HNRShareConnection::removeDir("gone", params("\\\\srv\\share")));
    EXPECT_EQ(getErrorMessage(), "Can't get directories from 'gone' on share '\\\\srv\\share': directory does not exist");
    answer("smbclient", "  f                                   N        3  Fri Nov 20 23:42:42 2026\n\n"
                        "\t\t100 blocks of size 1024. 50 blocks available\n", "", 0);
    EXPECT_FALSE(HNRShareConnection::removeDir("f", params("\\\\srv\\share")));
    EXPECT_EQ(getErrorMessage(), "Can't remove directory 'f' on share '\\\\srv\\share': directory does not exist");
    EXPECT_EQ(script(), "prompt off; recurse; ls \"f\"");
}

TEST_F(HNRShareConnectionTest, MissingSmbclientIsAClearFailure)
{
    ASSERT_EQ(::unlink((bin + "/smbclient").c_str()), 0);
    ::setenv("PATH", bin.c_str(), 1);
    EXPECT_FALSE(HNRShareConnection::check(params("\\\\srv\\share")));
    EXPECT_NE(getErrorMessage().find("Program 'smbclient' not found"), std::string::npos) << getErrorMessage();
    std::ofstream(tmp / "f") << "x";
    Recorder progress;
    EXPECT_FALSE(HNRShareConnection::putFiles({tmp / "f"}, params("\\\\srv\\share"), true, &progress));
    EXPECT_NE(getErrorMessage().find("Program 'smbclient' not found"), std::string::npos) << getErrorMessage();
    EXPECT_TRUE(progress.values.empty());
    EXPECT_FALSE(HNRShareConnection::getFiles({"f"}, params("\\\\srv\\share"), tmp.path(), true, nullptr));
    EXPECT_NE(getErrorMessage().find("Program 'smbclient' not found"), std::string::npos) << getErrorMessage();
}

TEST_F(HNRShareConnectionTest, FailureLineMidTransferFailsWithoutReaching100)
{
    std::ofstream(tmp / "f") << "x";
    answer("smbclient", "NT_STATUS_ACCESS_DENIED opening remote file \\f\n", "", 0);
    Recorder progress;
    EXPECT_FALSE(HNRShareConnection::putFiles({tmp / "f"}, params("\\\\srv\\share"), true, &progress));
    EXPECT_EQ(getErrorMessage(),
              "Can't put file(s) on share '\\\\srv\\share': NT_STATUS_ACCESS_DENIED opening remote file \\f "
              "(Access is denied)");
    EXPECT_TRUE(logged(1, "[putFiles] " + getErrorMessage()));
    for (double v : progress.values)
        EXPECT_LT(v, 100.0);
}

// A transfer that prints nothing for 5 s still reports progress at least
// every 2 s (6 polling units of a quarter-second, plus one listing).
TEST_F(HNRShareConnectionTest, SilentLongTransferReportsProgressEveryTwoSeconds)
{
    smbclientWithListing(entry("f", "N", 1) + blockEnd(), 5);
    std::ofstream(tmp / "f") << "x";
    Recorder progress;
    auto start = Clock::now();
    ASSERT_TRUE(HNRShareConnection::putFiles({tmp / "f"}, params("\\\\srv\\share"), true, &progress))
        << getErrorMessage();
    auto end = Clock::now();
    ASSERT_GE(progress.values.size(), 3u);
    EXPECT_EQ(progress.values.back(), 100.0);
    auto last = start;
    for (std::size_t i = 0; i < progress.times.size(); ++i) {
        EXPECT_LE(std::chrono::duration<double>(progress.times[i] - last).count(), 2.0) << "update " << i;
        last = progress.times[i];
        if (i + 1 < progress.values.size()) {
            EXPECT_LT(progress.values[i], 100.0);
        }
        if (i > 0) {
            EXPECT_GE(progress.values[i], progress.values[i - 1]);
        }
    }
    EXPECT_LE(std::chrono::duration<double>(end - last).count(), 2.0);
}

} // namespace
