// Transfers whose server dies in the middle (its own program: the server's
// connection processes are killed). Runs inside scripts/with-smbd.
#include "share/HNRShare.h"

#include "HNKFramework/ProcessChecks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <dirent.h>
#include <set>
#include <thread>

#include "HNRFunctionality/share/ShareSmbSupport.h"

namespace {

using HNR::HNRShareConnection;
using HNRTest::ProgressRecorder;
using Clock = std::chrono::steady_clock;


std::uint64_t fileSize(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? static_cast<std::uint64_t>(st.st_size) : 0;
}

class HNRShareFaultSmbTest : public HNRTest::SmbFixture {
protected:
    // Once `watched` holds 20 MB, kills the connection processes smbd started
    // after `before` was taken: the server side of the transfer dies.
    void killServerOnceGrown(const std::string& watched, const std::set<int>& before)
    {
        if (killed)
            return;
        killed = true;
        auto start = Clock::now();
        while (fileSize(watched) < 20u * 1048576 && Clock::now() - start < std::chrono::seconds(30))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const int smbd = smb.smbdPid;
        for (int child : childrenOf(smbd))
            if (!before.count(child))
                ::kill(child, SIGKILL);
    }
    bool killed = false;
};

TEST_F(HNRShareFaultSmbTest, ServerKilledDuringAPut)
{
    HNRTest::writeBytes(local / "big put", 500u * 1048576, 11);
    const int smbd = smb.smbdPid;
    const std::set<int> before = childrenOf(smbd);
    ProgressRecorder progress;
    progress.onProgress = [&](double) { killServerOnceGrown(guestDir + "/big put", before); };
    auto start = Clock::now();
    EXPECT_FALSE(HNRShareConnection::putFiles({local / "big put"}, guest(), true, &progress));
    EXPECT_TRUE(killed);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(120)) << "no hang";
    EXPECT_NE(getErrorMessage().find("Can't put file(s) on share '" + guestShare + "': "), std::string::npos)
        << getErrorMessage();
    EXPECT_NE(getErrorMessage().find("big put"), std::string::npos) << getErrorMessage();
    progress.expectNever100();
}

TEST_F(HNRShareFaultSmbTest, ServerKilledDuringAGet)
{
    HNRTest::writeBytes(guestDir + "/big get", 500u * 1048576, 12);
    const int smbd = smb.smbdPid;
    const std::set<int> before = childrenOf(smbd);
    ProgressRecorder progress;
    progress.onProgress = [&](double) { killServerOnceGrown(local / "big get", before); };
    auto start = Clock::now();
    EXPECT_FALSE(HNRShareConnection::getFiles({"big get"}, guest(), local.path(), true, &progress));
    EXPECT_TRUE(killed);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(120)) << "no hang";
    EXPECT_NE(getErrorMessage().find("Can't get file 'big get' to directory '" + local.path() + "' from share: "),
              std::string::npos)
        << getErrorMessage();
    progress.expectNever100();
}

} // namespace
