// The smbclient runner against a real smbd (runs inside scripts/with-smbd).
#include "share/HNRShareTools.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "GenExec.h"
#include "HNKErrorMessage.h"
#include "HNRFunctionality/share/ShareSmbSupport.h"
#include "share/HNRShareParams.h"

namespace {

using HNR::HNRShareParams;
using HNRTest::env;

bool exists(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

// The shares, credentials and password checks come from the shared fixture.
class HNRShareToolsSmbTest : public HNRTest::SmbFixture {
protected:
    bool run(const HNRShareParams& params, const std::string& command)
    {
        return HNR::runShareCommand(params, command, output, nullptr);
    }

    std::string output;
};

TEST_F(HNRShareToolsSmbTest, ListsAFolderOfTheGuestShare)
{
    ASSERT_EQ(::mkdir((guestDir + "/listed").c_str(), 0777), 0);
    std::ofstream(guestDir + "/listed/file one.txt") << "12345";
    ASSERT_TRUE(run(HNRShareParams(guestShare + "\\listed", "", ""), "prompt off; ls")) << getErrorMessage();
    EXPECT_NE(output.find("  file one.txt "), std::string::npos) << output;
    EXPECT_NE(output.find(" 5  "), std::string::npos) << output;
}

TEST_F(HNRShareToolsSmbTest, ProtectedShareOpensWithTheRightPassword)
{
    std::ofstream(authDir + "/secret.txt") << "x";
    ASSERT_TRUE(run(HNRShareParams(authShare, user, password), "prompt off; ls")) << getErrorMessage();
    EXPECT_NE(output.find("  secret.txt "), std::string::npos);
}

TEST_F(HNRShareToolsSmbTest, WrongPasswordIsALogonFailure)
{
    EXPECT_FALSE(run(HNRShareParams(authShare, user, password + "x"), "prompt off; ls"));
    EXPECT_EQ(output, "NT_STATUS_LOGON_FAILURE");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//127.0.0.1/auth': "
                                 "Logon failure: unknown user name or bad password");
}

TEST_F(HNRShareToolsSmbTest, GuestOnProtectedShareIsDenied)
{
    EXPECT_FALSE(run(HNRShareParams(authShare, "", ""), "prompt off; ls"));
    EXPECT_EQ(output, "NT_STATUS_ACCESS_DENIED");
    EXPECT_NE(getErrorMessage().find(": Access is denied"), std::string::npos) << getErrorMessage();
}

TEST_F(HNRShareToolsSmbTest, MissingShareIsABadNetworkName)
{
    EXPECT_FALSE(run(HNRShareParams("\\\\127.0.0.1\\nosuchshare", "", ""), "prompt off; ls"));
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//127.0.0.1/nosuchshare': "
                                 "Bad network name");
}

TEST_F(HNRShareToolsSmbTest, MissingFolderIsPathNotFound)
{
    EXPECT_FALSE(run(HNRShareParams(guestShare + "\\nofolder", "", ""), "prompt off; ls"));
    EXPECT_EQ(output, "NT_STATUS_OBJECT_NAME_NOT_FOUND");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//127.0.0.1/guest': "
                                 "Path is not found");
    EXPECT_FALSE(run(HNRShareParams(guestShare + "\\no\\such\\folder", "", ""), "prompt off; ls"));
    EXPECT_EQ(output, "NT_STATUS_OBJECT_PATH_NOT_FOUND");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls' on share '//127.0.0.1/guest': "
                                 "Path is not found");
}

TEST_F(HNRShareToolsSmbTest, MkdirOfAnExistingFolderIsPathAlreadyExist)
{
    ASSERT_TRUE(run(HNRShareParams(guestShare, "", ""), "prompt off; mkdir \"made\\\"")) << getErrorMessage();
    EXPECT_TRUE(exists(guestDir + "/made"));
    EXPECT_FALSE(run(HNRShareParams(guestShare, "", ""), "prompt off; mkdir \"made\\\""));
    EXPECT_EQ(output, "NT_STATUS_OBJECT_NAME_COLLISION");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; mkdir \"made\\\"' on share '//127.0.0.1/guest': "
                                 "Path is already exist");
}

TEST_F(HNRShareToolsSmbTest, FailingFirstCommandFailsTheScriptEvenIfTheLastSucceeds)
{
    // smbclient itself exits 0 here: only the status in its text tells.
    EXPECT_FALSE(run(HNRShareParams(guestShare, "", ""), "prompt off; ls \"missing\"; ls"));
    EXPECT_EQ(output, "NT_STATUS_NO_SUCH_FILE");
    EXPECT_EQ(getErrorMessage(), "Failed execute command 'prompt off; ls \"missing\"; ls' on share "
                                 "'//127.0.0.1/guest': No such file");
}

TEST_F(HNRShareToolsSmbTest, SmbclientSplitsScriptsEvenInsideQuotes)
{
    // Why names holding ';' must never reach a script.
    HWExec exec;
    ASSERT_EQ(exec.execWithOutputError({"smbclient", "//127.0.0.1/guest", "-U", "guest%", "-D", "\\", "-c",
                                        "prompt off; ls \"x;mkdir SPLIT\""},
                                       0, HNR::kToolTimeout),
              0);
    EXPECT_TRUE(exists(guestDir + "/SPLIT"));
}

TEST_F(HNRShareToolsSmbTest, NameThatWouldInjectACommandIsRefused)
{
    const std::string name = "x;mkdir INJECTED";
    EXPECT_FALSE(HNR::isSafeForSmbScript(name));
    EXPECT_FALSE(run(HNRShareParams(guestShare + "\\" + name, "", ""), "prompt off; ls"));
    EXPECT_NE(getErrorMessage().find("it holds ';'"), std::string::npos) << getErrorMessage();
    EXPECT_FALSE(run(HNRShareParams(guestShare, "", ""), "prompt off; ls \"" + name + "\""));
    EXPECT_EQ(getErrorMessage(), "Can't run smbclient: a quoted name in command 'prompt off; ls \"x;mkdir INJECTED\"' "
                                 "holds ';' or '\"'");
    EXPECT_FALSE(exists(guestDir + "/INJECTED"));
}

TEST_F(HNRShareToolsSmbTest, PasswordWithScriptAndOptionCharactersWorks)
{
    // smbclient takes everything after the first '%' of -U as the password.
    const std::string special = password + ";\"%,x";
    auto setPassword = [&](const std::string& pw) {
        HWExec exec;
        return exec.execWithOutputError({"sh", "-c", "printf '%s\\n%s\\n' \"$1\" \"$1\" | smbpasswd -c \"$2\" -s \"$3\"",
                                         "sh", pw, smb.conf, user},
                                        0, HNR::kToolTimeout);
    };
    ASSERT_EQ(setPassword(special), 0) << getErrorMessage();
    bool ok = run(HNRShareParams(authShare, user, special), "prompt off; ls");
    std::string message = getErrorMessage();
    bool wrongFails = !run(HNRShareParams(authShare, user, password), "prompt off; ls");
    ASSERT_EQ(setPassword(password), 0) << getErrorMessage();
    EXPECT_TRUE(ok) << message;
    EXPECT_TRUE(wrongFails);
    for (const auto& line : log.lines())
        EXPECT_EQ(line.second.find(special), std::string::npos) << "a log line holds the password";
}

TEST_F(HNRShareToolsSmbTest, RunnerReportsOnlyFailuresOfAnUpload)
{
    HNRTest::TempDir local;
    std::ofstream(local / "up.bin") << std::string(200000, 'u');
    HWExec runner;
    ASSERT_TRUE(HNR::runShareCommand(HNRShareParams(authShare, user, password),
                                     "prompt off; put \"" + (local / "up.bin") + "\" \"up.bin\"", output, &runner))
        << getErrorMessage();
    int finished = 1;
    std::vector<std::string> lines;
    while (finished) {
        std::string line = runner.getsWTimeout(6, &finished);
        if (finished && !line.empty()) // "" is a pass without a line
            lines.push_back(line);
    }
    EXPECT_TRUE(lines.empty()) << lines.front();
    EXPECT_EQ(runner.wait(), 0);
    struct stat st;
    ASSERT_EQ(::stat((authDir + "/up.bin").c_str(), &st), 0);
    EXPECT_EQ(st.st_size, 200000);

    ASSERT_TRUE(HNR::runShareCommand(HNRShareParams(authShare, user, password),
                                     "prompt off; put \"" + (local / "missing") + "\" \"m\"", output, &runner));
    finished = 1;
    lines.clear();
    while (finished) {
        std::string line = runner.getsWTimeout(6, &finished);
        if (finished && !line.empty()) // "" is a pass without a line
            lines.push_back(line);
    }
    EXPECT_EQ(lines, std::vector<std::string>{(local / "missing") + " does not exist"});
    EXPECT_NE(runner.wait(), 0);
}

} // namespace
