// The runner's stop hook: a flag set from another thread (or a signal
// handler) kills the child's whole process group, reaps it and fails the call
// with "cancelled"; nothing starts while the flag is set.
#include "GenExec.h"
#include "HNKErrorMessage.h"

#include "HNKFramework/ProcessChecks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Args = std::vector<std::string>;

Args sh(const std::string& script) { return {"sh", "-c", script}; }



std::string tempPath(const std::string& name)
{
    return ::testing::TempDir() + "hwexec-cancel-" + std::to_string(::getpid()) + "-" + name;
}

// Reads the pid a child wrote, waiting until it is there.
pid_t waitForPid(const std::string& file)
{
    for (int i = 0; i < 400; ++i) {
        std::ifstream in(file);
        pid_t pid = 0;
        if (in >> pid && pid > 0)
            return pid;
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    return 0;
}

// Installs a flag for the lifetime of the object, as the library's scope does.
struct StopScope {
    explicit StopScope(const std::atomic<bool>& flag) : previous(GenExec::setThreadStopFlag(&flag)) {}
    ~StopScope() { GenExec::setThreadStopFlag(previous); }
    const std::atomic<bool>* previous;
};

TEST(HWExecCancelTest, StopDuringSynchronousRunKillsTheGroupAndSaysCancelled)
{
    const std::string pidFile = tempPath("sync.pid");
    std::atomic<bool> stop{false};
    std::thread stopper([&] {
        if (waitForPid(pidFile) > 0)
            stop = true;
    });
    HWExec exec;
    int rc = 0;
    {
        StopScope scope(stop);
        rc = exec.execWithError(sh("sleep 60 & echo $! > '" + pidFile + "'; wait"), 0, 80000);
    }
    stopper.join();
    EXPECT_NE(rc, 0);
    EXPECT_EQ(getErrorMessage(), "cancelled");
    EXPECT_TRUE(noChildren());
    const pid_t background = waitForPid(pidFile);
    ASSERT_GT(background, 0);
    EXPECT_TRUE(processGone(background)) << "the child's own child survived the stop";
    ::unlink(pidFile.c_str());
}

TEST(HWExecCancelTest, StopDuringAsynchronousRunEndsPollingAndWait)
{
    const std::string pidFile = tempPath("async.pid");
    std::atomic<bool> stop{false};
    HWExec exec;
    StopScope scope(stop);
    ASSERT_EQ(exec.start(sh("sleep 60 & echo $! > '" + pidFile + "'; wait"), 6), 0) << getErrorMessage();
    const pid_t background = waitForPid(pidFile);
    ASSERT_GT(background, 0);
    std::thread stopper([&] { stop = true; });
    stopper.join();
    int finished = 1;
    for (int i = 0; i < 100 && finished; ++i)
        exec.getsWTimeout(6, &finished);
    EXPECT_EQ(finished, 0);
    EXPECT_NE(exec.wait(), 0);
    EXPECT_EQ(getErrorMessage(), "cancelled");
    EXPECT_TRUE(noChildren());
    EXPECT_TRUE(processGone(background));
    ::unlink(pidFile.c_str());
}

TEST(HWExecCancelTest, NothingStartsOnceStopped)
{
    const std::string marker = tempPath("ran");
    std::atomic<bool> stop{true};
    StopScope scope(stop);
    HWExec exec;
    EXPECT_NE(exec.execWithError(sh("touch '" + marker + "'"), 0, 80000), 0);
    EXPECT_EQ(getErrorMessage(), "cancelled");
    EXPECT_NE(exec.start(sh("touch '" + marker + "'"), 6), 0);
    EXPECT_EQ(getErrorMessage(), "cancelled");
    EXPECT_NE(::access(marker.c_str(), F_OK), 0) << "a child ran although the flag was set";
    EXPECT_TRUE(noChildren());
}

TEST(HWExecCancelTest, FlagOnlyWatchedOnTheThreadThatInstalledIt)
{
    std::atomic<bool> stop{true};
    StopScope scope(stop);
    EXPECT_TRUE(GenExec::stopRequested());
    int rc = -1;
    std::thread other([&] {
        EXPECT_FALSE(GenExec::stopRequested());
        HWExec exec;
        rc = exec.execWithError(sh("exit 0"), 0, 80000);
    });
    other.join();
    EXPECT_EQ(rc, 0);
}

TEST(HWExecCancelTest, InstallationsNestAndRestore)
{
    std::atomic<bool> outer{false};
    std::atomic<bool> inner{true};
    const std::atomic<bool>* before = GenExec::setThreadStopFlag(&outer);
    EXPECT_FALSE(GenExec::stopRequested());
    EXPECT_EQ(GenExec::setThreadStopFlag(&inner), &outer);
    EXPECT_TRUE(GenExec::stopRequested());
    EXPECT_EQ(GenExec::setThreadStopFlag(&outer), &inner);
    EXPECT_FALSE(GenExec::stopRequested());
    GenExec::setThreadStopFlag(before);
    HWExec exec;
    EXPECT_EQ(exec.execWithError(sh("exit 0"), 0, 80000), 0);
}

std::atomic<bool> g_signalStop{false};
void onAlarm(int) { g_signalStop.store(true); }

TEST(HWExecCancelTest, SignalHandlerCanStopARun)
{
    struct sigaction sa = {};
    struct sigaction old = {};
    sa.sa_handler = onAlarm;
    ASSERT_EQ(::sigaction(SIGALRM, &sa, &old), 0);
    g_signalStop = false;
    StopScope scope(g_signalStop);
    HWExec exec;
    ::alarm(1);
    EXPECT_NE(exec.execWithError(sh("sleep 60"), 0, 80000), 0);
    EXPECT_EQ(getErrorMessage(), "cancelled");
    EXPECT_TRUE(noChildren());
    ::alarm(0);
    ::sigaction(SIGALRM, &old, nullptr);
}

TEST(HWExecCancelTest, ChildDiesWithACallerKilledOutright)
{
    const std::string pidFile = tempPath("orphan.pid");
    ::unlink(pidFile.c_str());
    pid_t caller = ::fork();
    ASSERT_GE(caller, 0);
    if (caller == 0) {
        HWExec exec;
        exec.execWithError(sh("echo $$ > '" + pidFile + "'; exec sleep 60"), 0, 80000);
        ::_exit(0);
    }
    const pid_t tool = waitForPid(pidFile);
    ::kill(caller, SIGKILL);
    int st = 0;
    ASSERT_EQ(::waitpid(caller, &st, 0), caller);
    ASSERT_GT(tool, 0);
    // processGone() looks for up to 5 s; the death signal comes at once.
    EXPECT_TRUE(processGone(tool)) << "the tool outlived its caller";
    ::kill(tool, SIGKILL);
    ::unlink(pidFile.c_str());
}

} // namespace
