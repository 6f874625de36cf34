// Runs inside scripts/with-smbd: the real smbclient against a real smbd.
// Pins down what smbclient prints on which stream, which the runner's
// selectors and flags rely on.
#include "GenExec.h"
#include "HNKErrorMessage.h"
#include "smbd/SmbServer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using Args = std::vector<std::string>;

class HWExecSmbTest : public HNRTest::SmbServerTest {
protected:
    void SetUp() override
    {
        HNRTest::SmbServerTest::SetUp();
        guest = HNRTest::SmbServer::slashForm(smb.guestShare);
        auth = HNRTest::SmbServer::slashForm(smb.authShare);
        guestDir = smb.guestDir;
    }

    Args guestRun(const std::string& script, const std::string& dir = "\\")
    {
        return {"smbclient", guest, "-U", "guest%", "-D", dir, "-c", script};
    }

    std::string guest, auth, guestDir;
};

TEST_F(HWExecSmbTest, GuestListingGoesToStandardOutput)
{
    {
        std::ofstream f(guestDir + "/listed.txt");
        f << "hello";
    }
    HWExec exec;
    ASSERT_EQ(exec.execWithOutputError(guestRun("prompt off; ls"), 0, 80000), 0) << getErrorMessage();
    EXPECT_NE(exec.getOutput(4).find("  listed.txt "), std::string::npos) << exec.getOutput(2);
    EXPECT_EQ(exec.getOutput(6), "");
}

TEST_F(HWExecSmbTest, ProtectedShareNeedsTheRightPassword)
{
    HWExec exec;
    Args good = {"smbclient", auth, "-U", smb.user + "%" + smb.password, "-D", "\\",
                 "-c", "prompt off; ls"};
    EXPECT_EQ(exec.execWithOutputError(good, 0, 80000), 0) << exec.getOutput(2);
    EXPECT_NE(exec.getOutput(4).find("  .  "), std::string::npos);

    Args bad = {"smbclient", auth, "-U", smb.user + "%wrong-password", "-D", "\\",
                "-c", "prompt off; ls"};
    EXPECT_NE(exec.execWithOutputError(bad, 0, 80000), 0);
    EXPECT_NE(exec.getOutput(4).find("NT_STATUS_LOGON_FAILURE"), std::string::npos) << exec.getOutput(2);

    Args asGuest = {"smbclient", auth, "-U", "guest%", "-D", "\\", "-c", "prompt off; ls"};
    EXPECT_NE(exec.execWithOutputError(asGuest, 0, 80000), 0);
    EXPECT_NE(exec.getOutput(2).find("NT_STATUS_ACCESS_DENIED"), std::string::npos) << exec.getOutput(2);
}

TEST_F(HWExecSmbTest, ProgressGoesToStandardErrorAndFailuresToStandardOutput)
{
    std::string local = ::testing::TempDir() + "hwexec-smb-up.bin";
    {
        std::ofstream f(local);
        f << std::string(100000, 'x');
    }
    HWExec exec;
    ASSERT_EQ(exec.execWithOutputError(guestRun("prompt off; put \"" + local + "\" \"up.bin\""), 0, 80000), 0);
    EXPECT_EQ(exec.getOutput(4), "");
    EXPECT_EQ(exec.getOutput(6).rfind("putting file " + local + " as \\up.bin", 0), 0u) << exec.getOutput(6);

    ASSERT_EQ(exec.execWithOutputError(guestRun("prompt off; mkdir \"made\\\""), 0, 80000), 0);
    // A failed mkdir still exits 0: only the text tells.
    ASSERT_EQ(exec.execWithOutputError(guestRun("prompt off; mkdir \"made\\\""), 0, 80000), 0);
    EXPECT_NE(exec.getOutput(4).find("NT_STATUS_OBJECT_NAME_COLLISION making remote directory"), std::string::npos)
        << exec.getOutput(2);
    ::unlink(local.c_str());
}

TEST_F(HWExecSmbTest, ExitStatusIsThatOfTheLastCommand)
{
    HWExec exec;
    EXPECT_EQ(exec.execWithOutputError(guestRun("prompt off; ls \"missing\"; ls"), 0, 80000), 0);
    EXPECT_NE(exec.getOutput(4).find("NT_STATUS_NO_SUCH_FILE listing \\missing"), std::string::npos)
        << exec.getOutput(2);
    EXPECT_NE(exec.execWithOutputError(guestRun("prompt off; ls", "missing-dir"), 0, 80000), 0);
    EXPECT_NE(exec.getOutput(4).find("NT_STATUS_OBJECT_NAME_NOT_FOUND"), std::string::npos) << exec.getOutput(2);
}

TEST_F(HWExecSmbTest, AsyncWithFlagsSixReportsFailuresOnly)
{
    std::string local = ::testing::TempDir() + "hwexec-smb-async.bin";
    {
        std::ofstream f(local);
        f << std::string(300000, 'y');
    }
    HWExec exec;
    ASSERT_EQ(exec.start(guestRun("prompt off; put \"" + local + "\" \"async.bin\"; put \"/nonexistent/x\" \"x\""), 6),
              0);
    std::vector<std::string> lines;
    int finished = 1;
    while (finished) {
        std::string line = exec.getsWTimeout(6, &finished);
        if (finished && !line.empty()) // "" is a pass without a line
            lines.push_back(line);
    }
    EXPECT_NE(exec.wait(), 0);
    EXPECT_EQ(lines, (std::vector<std::string>{"/nonexistent/x does not exist"}));
    EXPECT_NE(exec.getOutput(6).find("putting file"), std::string::npos);
    struct stat st;
    ASSERT_EQ(::stat((guestDir + "/async.bin").c_str(), &st), 0);
    EXPECT_EQ(st.st_size, 300000);
    ::unlink(local.c_str());
}

TEST_F(HWExecSmbTest, UnreachableServerIsReportedOnStandardError)
{
    HWExec exec;
    Args args = {"smbclient", "//127.0.0.2/guest", "-U", "guest%", "-D", "\\", "-c", "prompt off; ls"};
    EXPECT_NE(exec.execWithOutputError(args, 0, 80000), 0);
    EXPECT_EQ(exec.getOutput(4), "");
    EXPECT_NE(exec.getOutput(6).find("NT_STATUS_CONNECTION_REFUSED"), std::string::npos) << exec.getOutput(2);
    EXPECT_NE(getErrorMessage().find("NT_STATUS_CONNECTION_REFUSED"), std::string::npos);
}

} // namespace
