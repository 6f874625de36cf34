// The SMB tool runners against recording stand-ins of mount, mount.cifs,
// umount.cifs and smbclient put first on PATH (tests/scripts/fake-smb-tool).
#include "share/HNRShareTools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "GenExec.h"
#include "HNKErrorMessage.h"
#include "HNKStringUtils.h"
#include "HNRFunctionality/fsutil/FsutilTestSupport.h"
#include "share/HNRShareParams.h"
#include "share/HNRSharePaths.h"

namespace {

using HNR::HNRShareParams;
using Args = std::vector<std::string>;
using LogLine = std::pair<int, std::string>;

const char kPassword[] = "Pw-S3cret-77";
const char* const kTools[] = {"mount", "mount.cifs", "umount.cifs", "smbclient"};
const char* const kFakeVars[] = {"STDOUT", "STDERR", "STATUS"};

class MockExec : public GenExec {
public:
    MOCK_METHOD(int, execWithError, (const std::vector<std::string>&, int, int), (override));
    MOCK_METHOD(int, execWithOutputError, (const std::vector<std::string>&, int, int), (override));
    MOCK_METHOD(std::string, getOutput, (int), (const, override));
    MOCK_METHOD(int, start, (const std::vector<std::string>&, int), (override));
    MOCK_METHOD(std::string, getsWTimeout, (int, int*), (override));
    MOCK_METHOD(int, wait, (), (override));
};

std::string envKey(std::string tool)
{
    for (char& c : tool)
        c = c == '.' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return tool;
}

class HNRShareToolsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        bin = tmp / "bin";
        argvDir = tmp / "argv";
        ASSERT_EQ(::mkdir(bin.c_str(), 0755), 0);
        ASSERT_EQ(::mkdir(argvDir.c_str(), 0755), 0);
        for (const char* tool : kTools)
            ASSERT_EQ(::symlink(HNR_TEST_SCRIPTS_DIR "/fake-smb-tool", (bin + "/" + tool).c_str()), 0);
        oldPath = std::getenv("PATH") ? std::getenv("PATH") : "";
        ::setenv("PATH", (bin + ":" + oldPath).c_str(), 1);
        ::setenv("HNR_FAKE_ARGV_DIR", argvDir.c_str(), 1);
        clearFakeAnswers();
        setErrorMessage("untouched");
    }

    void TearDown() override
    {
        ::setenv("PATH", oldPath.c_str(), 1);
        ::unsetenv("HNR_FAKE_ARGV_DIR");
        clearFakeAnswers();
        // Whatever a test did, the password never reached a log line or a message.
        for (const LogLine& line : log.lines())
            EXPECT_EQ(line.second.find(kPassword), std::string::npos) << line.second;
        EXPECT_EQ(getErrorMessage().find(kPassword), std::string::npos) << getErrorMessage();
    }

    static void clearFakeAnswers()
    {
        for (const char* tool : kTools)
            for (const char* var : kFakeVars)
                ::unsetenv(("HNR_FAKE_" + envKey(tool) + "_" + var).c_str());
    }

    void answer(const std::string& tool, const std::string& out, const std::string& err, int status)
    {
        std::string key = "HNR_FAKE_" + envKey(tool) + "_";
        if (!out.empty()) {
            std::string file = tmp / (tool + ".out");
            std::ofstream(file) << out;
            ::setenv((key + "STDOUT").c_str(), file.c_str(), 1);
        }
        if (!err.empty())
            ::setenv((key + "STDERR").c_str(), err.c_str(), 1);
        ::setenv((key + "STATUS").c_str(), std::to_string(status).c_str(), 1);
    }

    // The argv the stand-in recorded; empty when the tool never ran.
    Args recorded(const std::string& tool)
    {
        Args args;
        std::ifstream in(argvDir + "/" + tool + ".argv");
        for (std::string line; std::getline(in, line);)
            args.push_back(line);
        return args;
    }

    bool logged(int level, const std::string& text) const
    {
        for (const LogLine& line : log.lines())
            if (line.first == level && line.second == text)
                return true;
        return false;
    }

    HNRTest::TempDir tmp;
    HNRTest::LogCapture log;
    std::string bin, argvDir, oldPath;
};

// --- status table and mount root -------------------------------------------

TEST_F(HNRShareToolsTest, StatusTableHoldsTheFourteenMessages)
{
    const std::map<std::string, std::string> expected = {
        {"NT_STATUS_BAD_NETWORK_NAME", "Bad network name"},
        {"NT_STATUS_ACCESS_DENIED", "Access is denied"},
        {"NT_STATUS_LOGON_FAILURE", "Logon failure: unknown user name or bad password"},
        {"NT_STATUS_INVALID_COMPUTER_NAME", "Invalid computer name"},
        {"NT_STATUS_NO_LOGON_SERVERS", "No logon servers"},
        {"NT_STATUS_CANT_ACCESS_DOMAIN_INFO", "Can't access to domain info"},
        {"NT_STATUS_NO_SUCH_USER", "No such user"},
        {"NT_STATUS_END_OF_FILE", "End of file"},
        {"NT_STATUS_HOST_UNREACHABLE", "Host is unreachable"},
        {"NT_STATUS_PROTOCOL_UNREACHABLE", "Protocol is unreachable"},
        {"NT_STATUS_NO_SUCH_FILE", "No such file"},
        {"NT_STATUS_OBJECT_NAME_NOT_FOUND", "Path is not found"},
        {"NT_STATUS_OBJECT_PATH_NOT_FOUND", "Path is not found"},
        {"NT_STATUS_OBJECT_NAME_COLLISION", "Path is already exist"},
    };
    EXPECT_EQ(HNR::getSmbStatusTable(), expected);
    EXPECT_EQ(HNR::getSmbStatusMessage("NT_STATUS_OBJECT_NAME_COLLISION"), "Path is already exist");
    EXPECT_EQ(HNR::getSmbStatusMessage("NT_STATUS_FOO"), "Unknown error: NT_STATUS_FOO");
}

TEST_F(HNRShareToolsTest, MountRootIsTheTempDirWithMnt)
{
    EXPECT_EQ(HNR::getMountRoot(), getTempDir() + "mnt");
}

TEST_F(HNRShareToolsTest, ScriptSafetyRefusesSemicolonQuoteLineBreakAndNul)
{
    EXPECT_TRUE(HNR::isSafeForSmbScript("dir with blanks/file,name%.txt"));
    EXPECT_TRUE(HNR::isSafeForSmbScript(""));
    EXPECT_FALSE(HNR::isSafeForSmbScript("x;mkdir INJECTED"));
    EXPECT_FALSE(HNR::isSafeForSmbScript("a\"b"));
    EXPECT_FALSE(HNR::isSafeForSmbScript("a\nb"));
    EXPECT_FALSE(HNR::isSafeForSmbScript("a\rb"));
    EXPECT_FALSE(HNR::isSafeForSmbScript(std::string("a\0b", 3)));
    EXPECT_TRUE(HNR::isSafeForMountOption("p;a\"ss%"));
    EXPECT_FALSE(HNR::isSafeForMountOption("pass,uid=0"));
    EXPECT_FALSE(HNR::isSafeForMountOption("a\nb"));
}

// --- isMountExist ------------------------------------------------------------

TEST_F(HNRShareToolsTest, MountListIsReadFromMountTypeCifs)
{
    answer("mount", "", "", 0);
    std::string dir = "kept";
    EXPECT_FALSE(HNR::isMountExist("//srv/share", "user", dir));
    EXPECT_EQ(recorded("mount"), (Args{"mount", "-t", "cifs"}));
    EXPECT_EQ(dir, "kept");
    EXPECT_EQ(getErrorMessage(), "untouched");
}

TEST_F(HNRShareToolsTest, MountLineMatchesShareWhateverItsCase)
{
    answer("mount",
           "/dev/sda1 on / type ext4 (rw,relatime)\n"
           "//other/share on /mnt/other type cifs (rw)\n"
           "//SRV/Share on /tmp/mnt3 type cifs (rw,relatime,vers=3.1.1,cache=strict)\n"
           "//srv/share on /tmp/mnt4 type cifs (rw)\n",
           "", 0);
    std::string dir;
    ASSERT_TRUE(HNR::isMountExist("//srv/share", "", dir));
    EXPECT_EQ(dir, "/tmp/mnt3"); // the first match wins
    EXPECT_TRUE(logged(3, "[isMountExist] Already mounted: /tmp/mnt3"));
    ASSERT_TRUE(HNR::isMountExist("//Srv/SHARE", "", dir));
    EXPECT_EQ(dir, "/tmp/mnt3");
}

TEST_F(HNRShareToolsTest, MountLinesThatAreNotCifsMountsOfTheShareAreSkipped)
{
    answer("mount",
           "/\n"
           " //srv/share on /tmp/a type cifs (rw)\n"
           "//srv/share on \n"
           "//srv/share.on/tmp/b type cifs (rw)\n"
           "//srv/share on /tmp/c type nfs (rw)\n"
           "//srv/share2 on /tmp/d type cifs (rw)\n"
           "//srv/sha on /tmp/e type cifs (rw)\n",
           "", 0);
    std::string dir = "kept";
    EXPECT_FALSE(HNR::isMountExist("//srv/share", "", dir));
    EXPECT_EQ(dir, "kept");
    EXPECT_EQ(getErrorMessage(), "untouched");
}

TEST_F(HNRShareToolsTest, MountDirectoryRunsToTheLastTypeCifs)
{
    answer("mount", "//srv/share on /tmp/x type cifs y type cifs (rw)\n", "", 0);
    std::string dir;
    ASSERT_TRUE(HNR::isMountExist("//srv/share", "", dir));
    EXPECT_EQ(dir, "/tmp/x type cifs y");
}

TEST_F(HNRShareToolsTest, FailingMountListIsAnError)
{
    answer("mount", "//srv/share on /tmp/mnt0 type cifs (rw)\n", "mount: failed", 1);
    std::string dir = "kept";
    EXPECT_FALSE(HNR::isMountExist("//srv/share", "", dir));
    EXPECT_EQ(getErrorMessage(), "Failed to get mount list");
    EXPECT_TRUE(logged(1, "[isMountExist] Failed to get mount list"));
    EXPECT_EQ(dir, "kept");
}

// --- mountApi / unmountApi ---------------------------------------------------

TEST_F(HNRShareToolsTest, MountPassesShareDirectoryAndUserOption)
{
    answer("mount.cifs", "", "", 0);
    ASSERT_TRUE(HNR::mountApi("/tmp/mnt0", "//srv/share", "user", kPassword)) << getErrorMessage();
    EXPECT_EQ(recorded("mount.cifs"),
              (Args{"mount.cifs", "//srv/share", "/tmp/mnt0", std::string("-ouser=user%") + kPassword}));
    EXPECT_TRUE(logged(3, "[mountApi] Mounting samba share '//srv/share' to directory '/tmp/mnt0'"));
}

TEST_F(HNRShareToolsTest, MountWritesDomainLoginsWithASlash)
{
    answer("mount.cifs", "", "", 0);
    for (const char* login : {"DOM\\user", "DOM/user", "user@DOM"}) {
        ASSERT_TRUE(HNR::mountApi("/tmp/mnt1", "//srv/share", login, kPassword)) << login;
        EXPECT_EQ(recorded("mount.cifs").at(3), std::string("-ouser=DOM/user%") + kPassword) << login;
    }
}

TEST_F(HNRShareToolsTest, MountFailureQuotesTheErrorTextOfMountCifs)
{
    answer("mount.cifs", "noise on standard output\n", "mount error(13): Permission denied", 32);
    EXPECT_FALSE(HNR::mountApi("/tmp/mnt0", "//srv/share", "user", kPassword));
    EXPECT_EQ(getErrorMessage(), "Failed to connect to network share '//srv/share': mount error(13): Permission denied");
    EXPECT_TRUE(logged(1, "[mountApi] Failed to connect to network share '//srv/share': "
                          "mount error(13): Permission denied"));
}

TEST_F(HNRShareToolsTest, MountFailureNeverEchoesThePassword)
{
    answer("mount.cifs", "", std::string("bad option user=user%") + kPassword, 1);
    EXPECT_FALSE(HNR::mountApi("/tmp/mnt0", "//srv/share", "user", kPassword));
    EXPECT_EQ(getErrorMessage(), "Failed to connect to network share '//srv/share': bad option user=user%***");
}

TEST_F(HNRShareToolsTest, MountRefusesValuesThatWouldAddMountOptions)
{
    EXPECT_FALSE(HNR::mountApi("/tmp/mnt0", "//srv/share,uid=0", "user", kPassword));
    EXPECT_NE(getErrorMessage().find("Can't mount share '//srv/share,uid=0'"), std::string::npos);
    EXPECT_FALSE(HNR::mountApi("/tmp/mnt0", "//srv/share", "user,uid=0", kPassword));
    EXPECT_NE(getErrorMessage().find("the login holds"), std::string::npos);
    EXPECT_FALSE(HNR::mountApi("/tmp/mnt0", "//srv/share", "us%er", kPassword));
    EXPECT_FALSE(HNR::mountApi("/tmp/mnt0", "//srv/share", "user", std::string(kPassword) + ",uid=0"));
    EXPECT_EQ(getErrorMessage(),
              "Can't mount share '//srv/share': the password holds ',', a line break or NUL, which mount.cifs would misread");
    EXPECT_FALSE(HNR::mountApi("/tmp/mnt0", "//srv/share", "user", std::string("a\0b", 3)));
    EXPECT_TRUE(recorded("mount.cifs").empty()) << "mount.cifs ran";
}

TEST_F(HNRShareToolsTest, UnmountPassesTheMountDirectory)
{
    answer("umount.cifs", "", "", 0);
    ASSERT_TRUE(HNR::unmountApi("/tmp/mnt2", "//srv/share"));
    EXPECT_EQ(recorded("umount.cifs"), (Args{"umount.cifs", "/tmp/mnt2"}));
}

TEST_F(HNRShareToolsTest, UnmountFailureQuotesAllItsOutput)
{
    answer("umount.cifs", "", "umount: /tmp/mnt2: target is busy.", 32);
    EXPECT_FALSE(HNR::unmountApi("/tmp/mnt2", "//srv/share"));
    EXPECT_EQ(getErrorMessage(), "Failed to disconnect from network share '//srv/share': umount: /tmp/mnt2: target is busy.");
    EXPECT_TRUE(logged(1, "[unmountApi] " + getErrorMessage()));
}

TEST_F(HNRShareToolsTest, MissingToolIsNamedInTheMessage)
{
    ASSERT_EQ(::unlink((bin + "/umount.cifs").c_str()), 0);
    ::setenv("PATH", bin.c_str(), 1); // the real umount.cifs must not be found either
    EXPECT_FALSE(HNR::unmountApi("/tmp/mnt2", "//srv/share"));
    EXPECT_EQ(getErrorMessage(), "Failed to disconnect from network share '//srv/share': Program 'umount.cifs' not found");
}

// --- smbclientApi / runShareCommand -----------------------------------------

TEST_F(HNRShareToolsTest, AnonymousRunAtShareRootUsesGuestAndBackslash)
{
    answer("smbclient", "  .   D   0  Fri Nov 20 23:12:02 2026\n", "", 0);
    std::string output;
    ASSERT_TRUE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share", "", ""), "prompt off; ls", output, nullptr))
        << getErrorMessage();
    EXPECT_EQ(recorded("smbclient"),
              (Args{"smbclient", "//srv/share", "-U", "guest%", "-D", "\\", "-c", "prompt off; ls"}));
    EXPECT_EQ(output, "  .   D   0  Fri Nov 20 23:12:02 2026\n");
    EXPECT_TRUE(logged(3, "[smbclientApi] share '//srv/share', relativeDir '\\', command 'prompt off; ls', "
                          "output '  .   D   0  Fri Nov 20 23:12:02 2026\n'"));
}

TEST_F(HNRShareToolsTest, AuthenticatedRunPassesLoginPasswordAndFolder)
{
    answer("smbclient", "", "", 0);
    std::string output;
    HNRShareParams params("\\\\srv\\share\\dir\\sub\\", "DOM\\user", kPassword);
    ASSERT_TRUE(HNR::runShareCommand(params, "prompt off; ls \"a b\"", output, nullptr)) << getErrorMessage();
    EXPECT_EQ(recorded("smbclient"), (Args{"smbclient", "//srv/share", "-U", std::string("DOM\\user%") + kPassword,
                                           "-D", "dir/sub", "-c", "prompt off; ls \"a b\""}));
    EXPECT_TRUE(logged(3, "[smbclientApi] share '//srv/share', relativeDir 'dir/sub', "
                          "command 'prompt off; ls \"a b\"', output ''"));
}

TEST_F(HNRShareToolsTest, PasswordIsPassedVerbatimWhateverItHolds)
{
    // It is an argv element of its own after the first '%': nothing in it is parsed.
    answer("smbclient", "", "", 0);
    std::string output;
    std::string password = std::string(kPassword) + ";\"%,";
    ASSERT_TRUE(HNR::smbclientApi(HNR::createCanonized("//srv/share"), "user", password, "prompt off; ls", output,
                                  nullptr));
    EXPECT_EQ(recorded("smbclient").at(3), "user%" + password);
}

TEST_F(HNRShareToolsTest, CollisionAnywhereInTheOutputIsPathAlreadyExist)
{
    answer("smbclient", "first line\nNT_STATUS_OBJECT_NAME_COLLISION making remote directory \\d\\\n", "", 0);
    std::string output;
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share", "user", kPassword), "prompt off; mkdir \"d\\\"",
                                      output, nullptr));
    EXPECT_EQ(output, "NT_STATUS_OBJECT_NAME_COLLISION");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; mkdir \"d\\\"' on share '//srv/share': "
                                 "Path is already exist");
    EXPECT_TRUE(logged(1, "[smbclientApi] " + getErrorMessage()));
}

TEST_F(HNRShareToolsTest, StatusOnStandardErrorCountsToo)
{
    answer("smbclient", "", "do_connect: Connection to srv failed (Error NT_STATUS_HOST_UNREACHABLE)", 1);
    std::string output;
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share", "", ""), "prompt off; ls", output, nullptr));
    EXPECT_EQ(output, "NT_STATUS_HOST_UNREACHABLE");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//srv/share': Host is unreachable");
}

TEST_F(HNRShareToolsTest, UnknownStatusNameIsAnUnknownError)
{
    answer("smbclient", "tree connect failed: NT_STATUS_FOO: more\n", "", 1);
    std::string output;
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share", "", ""), "prompt off; ls", output, nullptr));
    EXPECT_EQ(output, "NT_STATUS_FOO");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//srv/share': "
                                 "Unknown error: NT_STATUS_FOO");
}

TEST_F(HNRShareToolsTest, NonZeroExitWithoutStatusReportsTheRawOutput)
{
    answer("smbclient", "/tmp/x does not exist\n", "", 1);
    std::string output;
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share", "", ""), "prompt off; put \"/tmp/x\" \"x\"",
                                      output, nullptr));
    EXPECT_EQ(output, "/tmp/x does not exist\n");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; put \"/tmp/x\" \"x\"' on share '//srv/share': "
                                 "/tmp/x does not exist");
}

TEST_F(HNRShareToolsTest, MissingSmbclientIsNamed)
{
    ::setenv("PATH", (tmp / "empty").c_str(), 1);
    std::string output;
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share", "", ""), "prompt off; ls", output, nullptr));
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//srv/share': "
                                 "Program 'smbclient' not found");
}

TEST_F(HNRShareToolsTest, IncorrectSharePathRunsNothing)
{
    std::string output;
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\srv", "", ""), "prompt off; ls", output, nullptr));
    EXPECT_EQ(getErrorMessage(), "Incorrect share path: \\\\srv");
    EXPECT_TRUE(logged(1, "[smbclientApi] Incorrect share path: \\\\srv"));
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\", "", ""), "prompt off; ls", output, nullptr));
    EXPECT_TRUE(recorded("smbclient").empty());
}

TEST_F(HNRShareToolsTest, UnsafeValuesAreRefusedBeforeSmbclientRuns)
{
    answer("smbclient", "", "", 0);
    std::string output;
    auto run = [&](const std::string& path, const std::string& login, const std::string& password,
                   const std::string& command) {
        return HNR::runShareCommand(HNRShareParams(path, login, password), command, output, nullptr);
    };
    EXPECT_FALSE(run("\\\\srv\\share\\x;mkdir INJECTED", "", "", "prompt off; ls"));
    EXPECT_EQ(getErrorMessage(), "Can't run smbclient on share path '\\\\srv\\share\\x;mkdir INJECTED': "
                                 "it holds ';', '\"', a line break or NUL");
    EXPECT_FALSE(run("\\\\srv\\share\\a\"b", "", "", "prompt off; ls"));
    EXPECT_FALSE(run("\\\\srv\\share\\a\nb", "", "", "prompt off; ls"));
    EXPECT_FALSE(run("\\\\srv\\share", "us%er", kPassword, "prompt off; ls"));
    EXPECT_EQ(getErrorMessage(), "Can't run smbclient as 'us%er': the login holds '%', a line break or NUL");
    EXPECT_FALSE(run("\\\\srv\\share", "user", std::string(kPassword) + "\n", "prompt off; ls"));
    EXPECT_EQ(getErrorMessage(), "Can't run smbclient: the password holds a line break or NUL");
    EXPECT_FALSE(run("\\\\srv\\share", "user", std::string("a\0b", 3), "prompt off; ls"));
    EXPECT_FALSE(run("\\\\srv\\share", "", "", "prompt off; ls\nmkdir x"));
    EXPECT_EQ(getErrorMessage(), "Can't run smbclient: the command holds a line break or NUL");
    EXPECT_FALSE(run("\\\\srv\\share", "", "", "prompt off; ls \"x;mkdir INJECTED\""));
    EXPECT_EQ(getErrorMessage(),
              "Can't run smbclient: a quoted name in command 'prompt off; ls \"x;mkdir INJECTED\"' holds ';' or '\"'");
    EXPECT_FALSE(run("\\\\srv\\share", "", "", "prompt off; ls \"a\"b\""));
    EXPECT_TRUE(recorded("smbclient").empty()) << "smbclient ran";
}

TEST_F(HNRShareToolsTest, RunnerStartsSmbclientReportingStandardOutputOnly)
{
    ::testing::StrictMock<MockExec> runner;
    Args expected{"smbclient", "//srv/share", "-U", std::string("user%") + kPassword, "-D", "dir",
                  "-c", "prompt off; put \"/tmp/f\" \"f\""};
    EXPECT_CALL(runner, start(expected, 6)).WillOnce(::testing::Return(0));
    std::string output = "kept";
    EXPECT_TRUE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share\\dir", "user", kPassword),
                                     "prompt off; put \"/tmp/f\" \"f\"", output, &runner));
    EXPECT_EQ(output, "kept");
    EXPECT_TRUE(recorded("smbclient").empty()); // nothing ran outside the runner
}

TEST_F(HNRShareToolsTest, RunnerStartFailureIsReported)
{
    ::testing::StrictMock<MockExec> runner;
    EXPECT_CALL(runner, start(::testing::_, 6)).WillOnce([](const Args&, int) {
        setErrorMessage("Program 'smbclient' not found");
        return -1;
    });
    std::string output;
    EXPECT_FALSE(HNR::runShareCommand(HNRShareParams("\\\\srv\\share", "", ""), "prompt off; ls", output, &runner));
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//srv/share': "
                                 "Program 'smbclient' not found");
    EXPECT_TRUE(logged(1, "[smbclientApi] " + getErrorMessage()));
}

} // namespace
