// Listing a folder, and stopping transfers from another thread, against a
// real smbd (runs inside scripts/with-smbd).
#include "share/HNRCancellation.h"
#include "share/HNRShare.h"

#include "HNKFramework/ProcessChecks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "HNRFunctionality/share/ShareSmbSupport.h"

namespace {

using HNR::HNRCancellation;
using HNR::HNRCancellationScope;
using HNR::HNRShareConnection;
using HNR::HNRShareEntry;

class HNRShareCancelSmbTest : public HNRTest::SmbFixture {};

// -1 when the file is not there.
long long fileSize(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? static_cast<long long>(st.st_size) : -1;
}


// Processes whose command line holds marker (a test's private folder names
// every smbclient script it starts), zombies excluded.
int processesMentioning(const std::string& marker)
{
    int count = 0;
    DIR* d = ::opendir("/proc");
    if (!d)
        return -1;
    while (dirent* e = ::readdir(d)) {
        if (e->d_name[0] < '0' || e->d_name[0] > '9')
            continue;
        const std::string base = std::string("/proc/") + e->d_name;
        const std::string all = readAll(base + "/cmdline");
        if (all.find(marker) == std::string::npos || all.find("smbclient") == std::string::npos)
            continue;
        const std::string line = readAll(base + "/stat");
        const std::size_t close = line.rfind(')');
        if (close != std::string::npos && close + 2 < line.size() && line[close + 2] == 'Z')
            continue;
        ++count;
    }
    ::closedir(d);
    return count;
}

// Waits until path exists with at least min bytes (up to 60 s).
bool waitForGrowth(const std::string& path, long long min)
{
    for (int i = 0; i < 2400; ++i) {
        if (fileSize(path) >= min)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    return false;
}

// The size once writes in flight have landed: smbd finishes requests it had
// already received after its client went. Two equal samples 200 ms apart.
long long settledSize(const std::string& path)
{
    long long last = fileSize(path);
    for (int i = 0; i < 25; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const long long now = fileSize(path);
        if (now == last)
            return now;
        last = now;
    }
    return last;
}

// A sparse file: cheap to make, slow enough to move that a stop lands mid-way.
void makeSparse(const std::string& path, off_t size)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, size), 0);
    ::close(fd);
}

const off_t kLarge = off_t(8) << 30;

TEST_F(HNRShareCancelSmbTest, ListGivesEntriesInServerOrderWithoutDotEntries)
{
    ASSERT_EQ(::mkdir((guestDir + "/listed").c_str(), 0777), 0);
    ASSERT_EQ(::mkdir((guestDir + "/listed/sub dir").c_str(), 0777), 0);
    HNRTest::writeBytes(guestDir + "/listed/one A", 1234, 1);
    HNRTest::writeBytes(guestDir + "/listed/.hidden", 7, 2);
    std::vector<HNRShareEntry> entries;
    ASSERT_TRUE(HNRShareConnection::list(guest("\\listed"), entries)) << getErrorMessage();
    ASSERT_EQ(entries.size(), 3u);
    std::map<std::string, HNRShareEntry> byName;
    for (const HNRShareEntry& e : entries) {
        EXPECT_NE(e.name, ".");
        EXPECT_NE(e.name, "..");
        EXPECT_EQ(e.modified.size(), 24u) << e.modified;
        byName[e.name] = e;
    }
    ASSERT_EQ(byName.count("one A"), 1u);
    EXPECT_FALSE(byName["one A"].isDirectory);
    EXPECT_EQ(byName["one A"].size, 1234u);
    ASSERT_EQ(byName.count("sub dir"), 1u);
    EXPECT_TRUE(byName["sub dir"].isDirectory);
    EXPECT_NE(byName["sub dir"].attributes.find('D'), std::string::npos);
    EXPECT_EQ(byName.count(".hidden"), 1u);

    // The same listing through the authenticated share, and an empty folder.
    ASSERT_EQ(::mkdir((authDir + "/empty").c_str(), 0777), 0);
    entries.push_back(HNRShareEntry());
    ASSERT_TRUE(HNRShareConnection::list(auth("\\empty"), entries)) << getErrorMessage();
    EXPECT_TRUE(entries.empty());
}

TEST_F(HNRShareCancelSmbTest, ListOfMissingFolderFailsWithReason)
{
    std::vector<HNRShareEntry> entries;
    EXPECT_FALSE(HNRShareConnection::list(guest("\\no such folder"), entries));
    EXPECT_FALSE(getErrorMessage().empty());
    EXPECT_TRUE(entries.empty());
}

TEST_F(HNRShareCancelSmbTest, CancelledPutStopsWritingAndLeavesNoTool)
{
    const std::string big = local / "big.bin";
    makeSparse(big, kLarge);
    HNRCancellation cancellation;
    std::thread stopper([&] {
        waitForGrowth(guestDir + "/big.bin", 1 << 20);
        cancellation.cancel();
    });
    bool ok = true;
    {
        HNRCancellationScope scope(cancellation);
        ok = HNRShareConnection::putFiles({big}, guest(), true, nullptr);
    }
    stopper.join();
    EXPECT_FALSE(ok);
    EXPECT_EQ(getErrorMessage(), "cancelled");
    EXPECT_EQ(processesMentioning(local.path()), 0);
    const long long after = settledSize(guestDir + "/big.bin");
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(fileSize(guestDir + "/big.bin"), after) << "the share file still grows";
    EXPECT_LT(after, static_cast<long long>(kLarge));
}

TEST_F(HNRShareCancelSmbTest, CancelledGetStopsWritingAndLeavesNoTool)
{
    makeSparse(guestDir + "/remote big.bin", kLarge);
    const std::string out = local / "out";
    ASSERT_EQ(::mkdir(out.c_str(), 0755), 0);
    HNRCancellation cancellation;
    std::thread stopper([&] {
        waitForGrowth(out + "/remote big.bin", 1 << 20);
        cancellation.cancel();
    });
    bool ok = true;
    {
        HNRCancellationScope scope(cancellation);
        ok = HNRShareConnection::getFiles({"remote big.bin"}, guest(), out, true, nullptr);
    }
    stopper.join();
    EXPECT_FALSE(ok);
    EXPECT_EQ(getErrorMessage(), "cancelled");
    EXPECT_EQ(processesMentioning(local.path()), 0);
    const long long after = settledSize(out + "/remote big.bin");
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(fileSize(out + "/remote big.bin"), after) << "the local file still grows";
    EXPECT_LT(after, static_cast<long long>(kLarge));
}

TEST_F(HNRShareCancelSmbTest, CancelledBeforehandRunsNothingAndResetAllowsTheNext)
{
    HNRTest::writeBytes(local / "small", 10, 3);
    HNRCancellation cancellation;
    cancellation.cancel();
    EXPECT_TRUE(cancellation.isCancelled());
    {
        HNRCancellationScope scope(cancellation);
        EXPECT_FALSE(HNRShareConnection::putFiles({local / "small"}, guest(), true, nullptr));
        EXPECT_EQ(getErrorMessage(), "cancelled");
        EXPECT_EQ(fileSize(guestDir + "/small"), -1);
        std::vector<HNRShareEntry> entries;
        EXPECT_FALSE(HNRShareConnection::list(guest(), entries));
        EXPECT_EQ(getErrorMessage(), "cancelled");
        cancellation.reset();
        EXPECT_TRUE(HNRShareConnection::putFiles({local / "small"}, guest(), true, nullptr)) << getErrorMessage();
    }
    EXPECT_EQ(fileSize(guestDir + "/small"), 10);
}

TEST_F(HNRShareCancelSmbTest, CallerKilledMidPutLeavesNoToolAfterOneSecond)
{
    const std::string big = local / "killed.bin";
    makeSparse(big, kLarge);
    const HNR::HNRShareParams params = guest();
    pid_t caller = ::fork();
    ASSERT_GE(caller, 0);
    if (caller == 0) {
        HNRShareConnection::putFiles({big}, params, true, nullptr);
        ::_exit(0);
    }
    ASSERT_TRUE(waitForGrowth(guestDir + "/killed.bin", 1 << 20));
    ASSERT_EQ(processesMentioning(local.path()), 1);
    ::kill(caller, SIGKILL);
    int st = 0;
    ASSERT_EQ(::waitpid(caller, &st, 0), caller);
    const auto killed = std::chrono::steady_clock::now();
    while (processesMentioning(local.path()) != 0 && std::chrono::steady_clock::now() - killed < std::chrono::seconds(1))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(processesMentioning(local.path()), 0) << "smbclient outlived its caller by a second";
    const long long after = settledSize(guestDir + "/killed.bin");
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(fileSize(guestDir + "/killed.bin"), after) << "the share file still grows";
}

} // namespace
