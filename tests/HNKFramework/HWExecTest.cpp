#include "GenExec.h"
#include "HNKErrorMessage.h"

#include "HNKFramework/ProcessChecks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <set>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Args = std::vector<std::string>;

Args sh(const std::string& script) { return {"sh", "-c", script}; }

double secondsSince(Clock::time_point t)
{
    return std::chrono::duration<double>(Clock::now() - t).count();
}

std::set<std::string> openFds()
{
    std::set<std::string> fds;
    DIR* d = ::opendir("/proc/self/fd");
    if (!d)
        return fds;
    int own = ::dirfd(d);
    while (dirent* e = ::readdir(d)) {
        std::string name = e->d_name;
        if (name != "." && name != ".." && name != std::to_string(own))
            fds.insert(name);
    }
    ::closedir(d);
    return fds;
}



std::string tempPath(const std::string& name)
{
    return ::testing::TempDir() + "hwexec-" + std::to_string(::getpid()) + "-" + name;
}

// Collects every reported line of an asynchronous run until it finishes.
std::vector<std::string> drainLines(HWExec& exec)
{
    std::vector<std::string> lines;
    int finished = 1;
    auto start = Clock::now();
    while (finished && secondsSince(start) < 60) {
        std::string line = exec.getsWTimeout(6, &finished);
        // "" is a pass without a line (1.5 s); the children here print no empty lines.
        if (finished && !line.empty())
            lines.push_back(line);
    }
    return lines;
}

TEST(HWExecTest, ZeroExitStatusIsSuccess)
{
    HWExec exec;
    EXPECT_EQ(exec.execWithError({"true"}, 0, 10000), 0);
    EXPECT_EQ(exec.exitStatus(), 0);
}

TEST(HWExecTest, NonZeroExitStatusIsReportedWithProgramName)
{
    HWExec exec;
    EXPECT_NE(exec.execWithError(sh("exit 3"), 0, 10000), 0);
    EXPECT_EQ(exec.exitStatus(), 3);
    EXPECT_EQ(getErrorMessage(), "Program 'sh' exited with status 3");
}

TEST(HWExecTest, OutputErrorVariantQuotesStandardError)
{
    HWExec exec;
    EXPECT_NE(exec.execWithOutputError(sh("echo boom >&2; echo quiet; exit 1"), 0, 10000), 0);
    EXPECT_EQ(getErrorMessage(), "Program 'sh' exited with status 1: boom");
    EXPECT_NE(exec.execWithError(sh("echo boom >&2; exit 1"), 0, 10000), 0);
    EXPECT_EQ(getErrorMessage().find("boom"), std::string::npos);
}

TEST(HWExecTest, ArgumentsReachTheProgramUnchangedWithoutShell)
{
    HWExec exec;
    ASSERT_EQ(exec.execWithError({"printf", "%s|", "a b", "$HOME", "x;y", "\"q\"", ""}, 0, 10000), 0);
    EXPECT_EQ(exec.getOutput(4), "a b|$HOME|x;y|\"q\"||");
}

TEST(HWExecTest, SelectorsSplitAndMergeTheStreams)
{
    HWExec exec;
    ASSERT_EQ(exec.execWithError(sh("echo a; sleep 0.2; echo b >&2; sleep 0.2; echo c"), 0, 10000), 0);
    EXPECT_EQ(exec.getOutput(GenExec::OUTPUT_STDOUT), "a\nc\n");
    EXPECT_EQ(exec.getOutput(GenExec::OUTPUT_STDERR), "b\n");
    EXPECT_EQ(exec.getOutput(GenExec::OUTPUT_ALL), "a\nb\nc\n");
    EXPECT_EQ(exec.getOutput(5), "");
}

TEST(HWExecTest, EachRunStartsWithEmptyOutput)
{
    HWExec exec;
    ASSERT_EQ(exec.execWithError(sh("echo first"), 0, 10000), 0);
    ASSERT_EQ(exec.execWithError({"true"}, 0, 10000), 0);
    EXPECT_EQ(exec.getOutput(2), "");
}

TEST(HWExecTest, StandardInputIsEmpty)
{
    HWExec exec;
    ASSERT_EQ(exec.execWithError({"cat"}, 0, 10000), 0);
    EXPECT_EQ(exec.getOutput(2), "");
}

TEST(HWExecTest, TenMegabytesOnBothStreamsDoNotDeadlock)
{
    HWExec exec;
    // All of standard error first: a reader that drained one stream before
    // the other would block forever.
    ASSERT_EQ(exec.execWithError(sh("head -c 10485760 /dev/zero >&2; head -c 10485760 /dev/zero"), 0, 120000),
              0);
    EXPECT_EQ(exec.getOutput(4).size(), 10485760u);
    EXPECT_EQ(exec.getOutput(6).size(), 10485760u);
    EXPECT_EQ(exec.getOutput(2).size(), 2 * 10485760u);
    EXPECT_TRUE(noChildren());
}

TEST(HWExecTest, TimeOutKillsAndReapsTheWholeProcessGroup)
{
    std::string pidFile = tempPath("bg.pid");
    HWExec exec;
    auto start = Clock::now();
    int rc = exec.execWithError(sh("sleep 30 & echo $! > '" + pidFile + "'; sleep 30"), 0, 500);
    double took = secondsSince(start);
    EXPECT_NE(rc, 0);
    EXPECT_EQ(exec.exitStatus(), -1);
    EXPECT_EQ(getErrorMessage(), "Program 'sh' timed out and was killed");
    EXPECT_GE(took, 0.45);
    EXPECT_LT(took, 10.0);
    EXPECT_TRUE(noChildren());

    std::ifstream in(pidFile);
    pid_t background = 0;
    ASSERT_TRUE(in >> background);
    EXPECT_TRUE(processGone(background)) << "the background sleep survived the time-out";
    ::unlink(pidFile.c_str());
}

TEST(HWExecTest, GrandchildHoldingThePipeCannotOutliveTheTimeOut)
{
    HWExec exec;
    auto start = Clock::now();
    // The shell exits at once; its background child keeps standard output open.
    EXPECT_NE(exec.execWithError(sh("sleep 30 & echo started"), 0, 500), 0);
    EXPECT_LT(secondsSince(start), 10.0);
    EXPECT_EQ(exec.getOutput(4), "started\n");
    EXPECT_TRUE(noChildren());
}

TEST(HWExecTest, DeathBySignalIsReportedAsSuch)
{
    HWExec exec;
    EXPECT_NE(exec.execWithError(sh("kill -USR1 $$; sleep 5"), 0, 10000), 0);
    EXPECT_EQ(exec.exitStatus(), 128 + SIGUSR1);
    EXPECT_NE(getErrorMessage().find("Program 'sh' was killed by signal 10"), std::string::npos)
        << getErrorMessage();
}

TEST(HWExecTest, MissingProgramIsNamedInTheError)
{
    HWExec exec;
    EXPECT_NE(exec.execWithError({"hnr-no-such-program-4711", "-x"}, 0, 10000), 0);
    EXPECT_EQ(exec.exitStatus(), -1);
    EXPECT_EQ(getErrorMessage(), "Program 'hnr-no-such-program-4711' not found");
    EXPECT_NE(exec.start({"hnr-no-such-program-4711"}, 6), 0);
    EXPECT_EQ(getErrorMessage(), "Program 'hnr-no-such-program-4711' not found");
    EXPECT_TRUE(noChildren());
}

TEST(HWExecTest, ProgramIsSearchedOnPath)
{
    std::string dir = tempPath("bin");
    ASSERT_EQ(::mkdir(dir.c_str(), 0755), 0);
    std::string tool = dir + "/hnr-path-probe";
    {
        std::ofstream f(tool);
        f << "#!/bin/sh\necho probe \"$@\"\n";
    }
    ASSERT_EQ(::chmod(tool.c_str(), 0755), 0);
    std::string oldPath = std::getenv("PATH") ? std::getenv("PATH") : "";
    ::setenv("PATH", (dir + ":" + oldPath).c_str(), 1);
    HWExec exec;
    int rc = exec.execWithError({"hnr-path-probe", "x"}, 0, 10000);
    ::setenv("PATH", oldPath.c_str(), 1);
    ::unlink(tool.c_str());
    ::rmdir(dir.c_str());
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(exec.getOutput(4), "probe x\n");
}

TEST(HWExecTest, AsyncReportsOnlyStandardOutputWithFlagsSix)
{
    HWExec exec;
    ASSERT_EQ(exec.start(sh("echo out1; echo progress >&2; echo out2; echo more >&2"), 6), 0);
    EXPECT_EQ(drainLines(exec), (std::vector<std::string>{"out1", "out2"}));
    EXPECT_EQ(exec.wait(), 0);
    EXPECT_EQ(exec.getOutput(6), "progress\nmore\n"); // captured all the same
    EXPECT_TRUE(noChildren());
}

TEST(HWExecTest, AsyncReportsBothStreamsWithFlagsZeroOrTwo)
{
    for (int flags : {0, 2}) {
        HWExec exec;
        ASSERT_EQ(exec.start(sh("echo out1; echo err1 >&2; printf tail"), flags), 0);
        std::vector<std::string> lines = drainLines(exec);
        std::sort(lines.begin(), lines.end());
        EXPECT_EQ(lines, (std::vector<std::string>{"err1", "out1", "tail"})) << "flags " << flags;
        EXPECT_EQ(exec.wait(), 0);
    }
}

TEST(HWExecTest, AsyncReportsNothingWithFlagsFour)
{
    HWExec exec;
    ASSERT_EQ(exec.start(sh("echo out1; echo err1 >&2"), 4), 0);
    EXPECT_TRUE(drainLines(exec).empty());
    EXPECT_EQ(exec.wait(), 0);
    EXPECT_EQ(exec.getOutput(2).size(), 10u);
}

TEST(HWExecTest, AsyncDeliversManyLinesInOrder)
{
    HWExec exec;
    ASSERT_EQ(exec.start({"seq", "1", "100000"}, 6), 0);
    std::vector<std::string> lines = drainLines(exec);
    ASSERT_EQ(lines.size(), 100000u);
    EXPECT_EQ(lines.front(), "1");
    EXPECT_EQ(lines.back(), "100000");
    EXPECT_EQ(exec.wait(), 0);
}

TEST(HWExecTest, GetsWithTimeoutReturnsEmptyWhenNothingCame)
{
    HWExec exec;
    ASSERT_EQ(exec.start(sh("sleep 4; echo late"), 6), 0);
    int finished = 1;
    auto start = Clock::now();
    // 6 units of a quarter-second each: 1.5 s.
    EXPECT_EQ(exec.getsWTimeout(6, &finished), "");
    double took = secondsSince(start);
    EXPECT_EQ(finished, 1);
    EXPECT_GE(took, 1.4);
    EXPECT_LT(took, 3.0); // 6 whole seconds under the old unit
    EXPECT_EQ(drainLines(exec), (std::vector<std::string>{"late"}));
    EXPECT_EQ(exec.wait(), 0);
}

TEST(HWExecTest, AsyncFailureIsSeenByWait)
{
    HWExec exec;
    ASSERT_EQ(exec.start(sh("echo 'NT_STATUS_ACCESS_DENIED x'; exit 1"), 6), 0);
    EXPECT_EQ(drainLines(exec), (std::vector<std::string>{"NT_STATUS_ACCESS_DENIED x"}));
    EXPECT_NE(exec.wait(), 0);
    EXPECT_EQ(exec.exitStatus(), 1);
    EXPECT_EQ(getErrorMessage(), "Program 'sh' exited with status 1");
}

TEST(HWExecTest, WaitWithoutReadingStillDrainsLargeOutput)
{
    HWExec exec;
    ASSERT_EQ(exec.start(sh("head -c 5000000 /dev/zero >&2; echo done"), 6), 0);
    EXPECT_EQ(exec.wait(), 0);
    EXPECT_EQ(exec.getOutput(6).size(), 5000000u);
    int finished = 1;
    EXPECT_EQ(exec.getsWTimeout(1, &finished), "done");
    EXPECT_EQ(exec.getsWTimeout(1, &finished), "");
    EXPECT_EQ(finished, 0);
}

TEST(HWExecTest, WaitWithoutStartFails)
{
    HWExec exec;
    EXPECT_NE(exec.wait(), 0);
    int finished = 1;
    EXPECT_EQ(exec.getsWTimeout(0, &finished), "");
    EXPECT_EQ(finished, 0);
}

TEST(HWExecTest, SecondStartWhileRunningIsRefused)
{
    HWExec exec;
    ASSERT_EQ(exec.start({"sleep", "30"}, 6), 0);
    EXPECT_NE(exec.start({"true"}, 6), 0);
    EXPECT_NE(exec.execWithError({"true"}, 0, 1000), 0);
}

TEST(HWExecTest, DestructorKillsAndReapsRunningChild)
{
    auto start = Clock::now();
    {
        HWExec exec;
        ASSERT_EQ(exec.start({"sleep", "30"}, 6), 0);
        int finished = 1;
        exec.getsWTimeout(0, &finished);
        EXPECT_EQ(finished, 1);
    }
    EXPECT_LT(secondsSince(start), 10.0);
    EXPECT_TRUE(noChildren());
}

TEST(HWExecTest, NoDescriptorLeaksIntoChildOrStaysOpen)
{
    // A descriptor without close-on-exec, as another thread might leave one.
    int stray = ::open("/dev/null", O_RDONLY);
    ASSERT_GE(stray, 0);
    std::set<std::string> before = openFds();
    {
        HWExec exec;
        ASSERT_EQ(exec.execWithError(sh("ls /proc/$$/fd"), 0, 10000), 0);
        EXPECT_EQ(exec.getOutput(4), "0\n1\n2\n");
        ASSERT_EQ(exec.execWithError({"true"}, 0, 10000), 0);
        EXPECT_NE(exec.execWithError({"sleep", "5"}, 0, 100), 0);
        EXPECT_NE(exec.execWithError({"hnr-no-such-program-4711"}, 0, 100), 0);
        ASSERT_EQ(exec.start(sh("echo x"), 6), 0);
        drainLines(exec);
        exec.wait();
        ASSERT_EQ(exec.start({"sleep", "30"}, 6), 0);
    }
    EXPECT_EQ(openFds(), before);
    ::close(stray);
    EXPECT_TRUE(noChildren());
}

TEST(HWExecTest, ChildGetsDefaultSignalsWhateverTheParentSet)
{
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction oldPipe;
    ASSERT_EQ(::sigaction(SIGPIPE, &ignore, &oldPipe), 0);
    sigset_t block;
    sigset_t oldMask;
    sigemptyset(&block);
    sigaddset(&block, SIGTERM);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &block, &oldMask), 0);

    HWExec exec;
    // With SIGPIPE inherited as ignored, yes would end on EPIPE with status 1.
    int pipeRc = exec.execWithError(sh("yes | head -n 1 >/dev/null; kill -PIPE $$; exit 0"), 0, 10000);
    int pipeStatus = exec.exitStatus();
    int termRc = exec.execWithError(sh("kill -TERM $$; exit 0"), 0, 10000);
    int termStatus = exec.exitStatus();

    ::pthread_sigmask(SIG_SETMASK, &oldMask, nullptr);
    ::sigaction(SIGPIPE, &oldPipe, nullptr);

    EXPECT_NE(pipeRc, 0);
    EXPECT_EQ(pipeStatus, 128 + SIGPIPE);
    EXPECT_NE(termRc, 0);
    EXPECT_EQ(termStatus, 128 + SIGTERM);
}

} // namespace
