#include "GenExec.h"

#include "HNKErrorMessage.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <poll.h>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

// The stop flag installed on this thread (GenExec::setThreadStopFlag).
thread_local const std::atomic<bool>* t_stopFlag = nullptr;

static_assert(std::atomic<bool>::is_always_lock_free, "a stop flag must be settable from a signal handler");

// A wait of waitMs (-1: no limit) cut so that a stop flag is looked at often.
int stopSlice(int waitMs)
{
    if (!t_stopFlag)
        return waitMs;
    return waitMs < 0 || waitMs > GenExec::kStopCheckMs ? GenExec::kStopCheckMs : waitMs;
}

constexpr int kStdout = 0;
constexpr int kStderr = 1;

// Longest error text of a child quoted in an error message.
constexpr size_t kMaxQuotedError = 4096;

void closeFd(int& fd)
{
    if (fd >= 0) {
        ::close(fd);
        fd = -1;
    }
}

int msLeft(Clock::time_point deadline)
{
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0)
        return 0;
    return left > 1000000 ? 1000000 : static_cast<int>(left);
}

std::string trimmed(const std::string& s)
{
    size_t b = s.find_first_not_of(" \t\r\n");
    if (b == std::string::npos)
        return std::string();
    size_t e = s.find_last_not_of(" \t\r\n");
    std::string t = s.substr(b, e - b + 1);
    if (t.size() > kMaxQuotedError)
        t = t.substr(0, kMaxQuotedError) + "...";
    return t;
}

// The file to execute for argv[0]: itself when it holds a slash, else the
// first executable match on PATH (the default path when PATH is unset).
// Resolved before fork, since the child may only make async-signal-safe calls.
// error := 0, or why there is none (ENOENT, EACCES) and the result is empty.
std::string resolveProgram(const std::string& name, int& error)
{
    error = 0;
    if (name.find('/') != std::string::npos) {
        if (::access(name.c_str(), X_OK) == 0)
            return name;
        error = errno;
        return std::string();
    }
    const char* env = std::getenv("PATH");
    const std::string path = env ? env : "/usr/local/bin:/usr/bin:/bin";
    bool denied = false;
    for (size_t begin = 0;;) {
        size_t colon = path.find(':', begin);
        std::string dir = path.substr(begin, colon == std::string::npos ? std::string::npos : colon - begin);
        std::string candidate = (dir.empty() ? std::string(".") : dir) + "/" + name;
        struct stat st;
        if (::stat(candidate.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
            if (::access(candidate.c_str(), X_OK) == 0) {
                error = 0;
                return candidate;
            }
            denied = true;
        }
        if (colon == std::string::npos)
            break;
        begin = colon + 1;
    }
    error = denied ? EACCES : ENOENT;
    return std::string();
}

// The child between fork and exec: only async-signal-safe calls. Reports a
// failure as its errno on reportFd and ends.
[[noreturn]] void runChild(const char* file, char* const* args, int outFd, int errFd, int reportFd, pid_t parent)
{
    // A child never outlives its caller: killed when the thread that started
    // it ends, whatever way. getppid() closes the race with a parent that
    // died before the request was made.
    if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || ::getppid() != parent)
        ::_exit(127);
    // A group of its own, so a time-out or a stop also kills what it started.
    ::setpgid(0, 0);
    // Whatever the host ignores or blocks (an agent often ignores SIGPIPE)
    // must not change how the tools behave or die.
    struct sigaction dfl;
    std::memset(&dfl, 0, sizeof dfl);
    dfl.sa_handler = SIG_DFL;
    for (int sig = 1; sig < NSIG; ++sig)
        if (sig != SIGKILL && sig != SIGSTOP)
            ::sigaction(sig, &dfl, nullptr);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);

    int in = ::open("/dev/null", O_RDONLY);
    if (in < 0 || ::dup2(in, 0) < 0 || ::dup2(outFd, 1) < 0 || ::dup2(errFd, 2) < 0) {
        int e = errno;
        (void)!::write(reportFd, &e, sizeof e);
        ::_exit(127);
    }
    // Descriptors another thread opened without O_CLOEXEC stay ours; the
    // report pipe closes itself when exec succeeds.
    if (::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) != 0) {
        for (int fd = 3; fd < 65536; ++fd)
            if (fd != reportFd)
                ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
    ::execve(file, args, environ);
    int e = errno;
    (void)!::write(reportFd, &e, sizeof e);
    ::_exit(127);
}

} // namespace

struct HWExec::Impl {
    std::string program;   // argv[0], named in messages (never the other arguments)
    pid_t pid = -1;        // child not yet reaped
    pid_t group = -1;      // the child's process group while the run lasts
    int fds[2] = {-1, -1}; // read ends of the child's stdout and stderr
    std::string partial[2];
    bool report[2] = {true, true};
    std::string out, err, all;
    std::deque<std::string> lines;
    int status = -1;
    int termSignal = 0;
    bool timedOut = false;
    bool cancelled = false;
    bool started = false;
    int napMs = 1; // next wait for a child whose output has closed


    ~Impl() { killAll(); }

    bool running() const { return pid > 0; }
    bool streamsOpen() const { return fds[kStdout] >= 0 || fds[kStderr] >= 0; }

    void reset(int flags)
    {
        out.clear();
        err.clear();
        all.clear();
        lines.clear();
        partial[kStdout].clear();
        partial[kStderr].clear();
        report[kStdout] = flags == 0 || (flags & GenExec::REPORT_STDOUT) != 0;
        report[kStderr] = (flags & GenExec::QUIET_STDERR) == 0;
        status = -1;
        termSignal = 0;
        timedOut = false;
        cancelled = false;
        started = false;
        napMs = 1;
    }

    // Waits for a child whose output has closed: it is nearly always on its
    // way out, so first 1 ms, doubling up to 20 ms (a flat 20 ms cost every
    // run about 15 ms). leftMs: the caller's time left (-1: no limit).
    void napUpTo(int leftMs)
    {
        const int ms = leftMs >= 0 && leftMs < napMs ? leftMs : napMs;
        ::usleep(static_cast<useconds_t>(ms) * 1000);
        napMs = napMs >= 10 ? 20 : napMs * 2;
    }

    // Kills everything of the run once the thread's stop flag is set.
    bool stopIfRequested()
    {
        if (!GenExec::stopRequested())
            return false;
        if (!cancelled && (running() || streamsOpen() || group > 0)) {
            killAll();
            lines.clear();
        }
        cancelled = true;
        return true;
    }

    int spawn(const std::vector<std::string>& argv, int flags)
    {
        if (running() || streamsOpen()) {
            setErrorMessage("A child process is still running; cannot start '%s'",
                            argv.empty() ? "" : argv[0].c_str());
            return -1;
        }
        reset(flags);
        program = argv.empty() ? std::string() : argv[0];
        if (GenExec::stopRequested()) {
            cancelled = true;
            setErrorMessage("cancelled");
            return -1;
        }
        if (argv.empty() || argv[0].empty()) {
            setErrorMessage("No program to run");
            return -1;
        }

        int outPipe[2] = {-1, -1};
        int errPipe[2] = {-1, -1};
        if (::pipe2(outPipe, O_CLOEXEC) != 0) {
            setErrorMessage("Failed to start '%s': %s", program.c_str(), std::strerror(errno));
            return -1;
        }
        if (::pipe2(errPipe, O_CLOEXEC) != 0) {
            int e = errno;
            ::close(outPipe[0]);
            ::close(outPipe[1]);
            setErrorMessage("Failed to start '%s': %s", program.c_str(), std::strerror(e));
            return -1;
        }

        std::vector<char*> args;
        args.reserve(argv.size() + 1);
        for (const std::string& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);

        int rc = 0;
        const std::string file = resolveProgram(program, rc);
        pid_t child = -1;
        int reportPipe[2] = {-1, -1};
        if (file.empty()) {
            // rc says why
        } else if (::pipe2(reportPipe, O_CLOEXEC) != 0) {
            rc = errno;
        } else {
            const pid_t parent = ::getpid();
            child = ::fork();
            if (child == 0)
                runChild(file.c_str(), args.data(), outPipe[1], errPipe[1], reportPipe[1], parent);
            if (child < 0)
                rc = errno;
            ::close(reportPipe[1]);
            if (child > 0) {
                // Also from here, so the group exists before anyone signals it.
                ::setpgid(child, child);
                int childError = 0;
                ssize_t got;
                do {
                    got = ::read(reportPipe[0], &childError, sizeof childError);
                } while (got < 0 && errno == EINTR);
                if (got == static_cast<ssize_t>(sizeof childError)) {
                    // exec failed: the child is gone already, reap it.
                    rc = childError;
                    int st;
                    while (::waitpid(child, &st, 0) < 0 && errno == EINTR) {
                    }
                    child = -1;
                }
            }
            ::close(reportPipe[0]);
        }
        ::close(outPipe[1]);
        ::close(errPipe[1]);
        if (rc != 0) {
            ::close(outPipe[0]);
            ::close(errPipe[0]);
            if (rc == ENOENT)
                setErrorMessage("Program '%s' not found", program.c_str());
            else
                setErrorMessage("Failed to start '%s': %s", program.c_str(), std::strerror(rc));
            return -1;
        }
        pid = child;
        group = child;
        started = true;
        fds[kStdout] = outPipe[0];
        fds[kStderr] = errPipe[0];
        return 0;
    }

    void addText(int stream, const char* data, size_t n)
    {
        (stream == kStdout ? out : err).append(data, n);
        all.append(data, n);
        if (!report[stream])
            return;
        std::string& part = partial[stream];
        part.append(data, n);
        size_t begin = 0;
        size_t nl;
        while ((nl = part.find('\n', begin)) != std::string::npos) {
            size_t end = nl;
            if (end > begin && part[end - 1] == '\r')
                --end;
            lines.emplace_back(part, begin, end - begin);
            begin = nl + 1;
        }
        part.erase(0, begin);
    }

    void endOfStream(int stream)
    {
        closeFd(fds[stream]);
        if (report[stream] && !partial[stream].empty()) {
            lines.push_back(partial[stream]);
            partial[stream].clear();
        }
    }

    // Waits up to waitMs (-1: no limit) for output and reads what is there.
    void readOnce(int waitMs)
    {
        pollfd p[2];
        int stream[2];
        nfds_t n = 0;
        for (int s = 0; s < 2; ++s) {
            if (fds[s] >= 0) {
                p[n] = pollfd{fds[s], POLLIN, 0};
                stream[n] = s;
                ++n;
            }
        }
        if (n == 0)
            return;
        if (::poll(p, n, stopSlice(waitMs)) <= 0)
            return; // time-out, or EINTR: the caller looks at its clock again
        char buf[65536];
        for (nfds_t i = 0; i < n; ++i) {
            if (p[i].revents == 0)
                continue;
            ssize_t got = ::read(p[i].fd, buf, sizeof buf);
            if (got > 0)
                addText(stream[i], buf, static_cast<size_t>(got));
            else if (got == 0 || (errno != EINTR && errno != EAGAIN))
                endOfStream(stream[i]);
        }
    }

    bool hasReadable()
    {
        pollfd p[2];
        nfds_t n = 0;
        for (int s = 0; s < 2; ++s)
            if (fds[s] >= 0)
                p[n++] = pollfd{fds[s], POLLIN, 0};
        return n > 0 && ::poll(p, n, 0) > 0;
    }

    // Reaps the child if it has ended, or waits for it when block is set.
    bool reap(bool block)
    {
        if (!running())
            return true;
        int st = 0;
        pid_t r;
        do {
            r = ::waitpid(pid, &st, block ? 0 : WNOHANG);
        } while (r < 0 && errno == EINTR);
        if (r == 0)
            return false;
        status = -1; // also when someone else reaped it (SIGCHLD set to SIG_IGN)
        if (r > 0 && WIFEXITED(st)) {
            status = WEXITSTATUS(st);
        } else if (r > 0 && WIFSIGNALED(st)) {
            termSignal = WTERMSIG(st);
            status = 128 + termSignal;
        }
        pid = -1;
        return true;
    }

    // True when the child has ended and both its streams are drained.
    bool done()
    {
        if (streamsOpen() || !reap(false))
            return false;
        group = -1;
        return true;
    }

    // Pumps output until done() or the deadline; forever ignores the deadline.
    bool pumpUntil(Clock::time_point deadline, bool forever)
    {
        for (;;) {
            if (stopIfRequested() || done())
                return true;
            int left = forever ? -1 : msLeft(deadline);
            if (streamsOpen()) {
                if (left == 0 && !hasReadable())
                    return false;
                readOnce(left);
            } else {
                // Output closed but the child lives on: look again shortly.
                if (left == 0)
                    return false;
                napUpTo(left);
            }
        }
    }

    // Kills the child's process group and the child, closes the pipes and
    // reaps: nothing of the run survives it. The group is signalled before
    // the reap, while its id cannot have been handed to anyone else.
    void killAll()
    {
        if (group > 0)
            ::kill(-group, SIGKILL);
        if (running())
            ::kill(pid, SIGKILL);
        closeFd(fds[kStdout]);
        closeFd(fds[kStderr]);
        reap(true);
        group = -1;
    }

    // Sets the error message of a finished run and returns its result.
    int finish(bool withStderr)
    {
        group = -1;
        if (timedOut || cancelled)
            status = -1;
        if (cancelled) {
            setErrorMessage("cancelled");
            return -1;
        }
        if (status == 0)
            return 0;
        std::string detail;
        if (withStderr) {
            std::string e = trimmed(err);
            if (!e.empty())
                detail = ": " + e;
        }
        if (timedOut)
            setErrorMessage("Program '%s' timed out and was killed%s", program.c_str(), detail.c_str());
        else if (termSignal != 0)
            setErrorMessage("Program '%s' was killed by signal %d (%s)%s", program.c_str(), termSignal,
                            strsignal(termSignal), detail.c_str());
        else if (status < 0)
            setErrorMessage("Program '%s' ended with an unknown status%s", program.c_str(), detail.c_str());
        else
            setErrorMessage("Program '%s' exited with status %d%s", program.c_str(), status, detail.c_str());
        return status > 0 ? status : -1;
    }

    int runSync(const std::vector<std::string>& argv, int flags, int timeoutMs, bool withStderr)
    {
        if (spawn(argv, flags) != 0) {
            status = -1;
            return -1;
        }
        bool forever = timeoutMs < 0;
        Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(forever ? 0 : timeoutMs);
        if (!pumpUntil(deadline, forever)) {
            timedOut = true;
            killAll();
        }
        lines.clear(); // nothing reads lines of a synchronous run
        return finish(withStderr);
    }
};

HWExec::HWExec() : impl_(new Impl) {}

HWExec::~HWExec() { delete impl_; }

int HWExec::execWithError(const std::vector<std::string>& argv, int flags, int timeoutMs)
{
    return impl_->runSync(argv, flags, timeoutMs, false);
}

int HWExec::execWithOutputError(const std::vector<std::string>& argv, int flags, int timeoutMs)
{
    return impl_->runSync(argv, flags, timeoutMs, true);
}

std::string HWExec::getOutput(int selector) const
{
    switch (selector) {
    case OUTPUT_ALL:
        return impl_->all;
    case OUTPUT_STDOUT:
        return impl_->out;
    case OUTPUT_STDERR:
        return impl_->err;
    default:
        return std::string();
    }
}

int HWExec::start(const std::vector<std::string>& argv, int flags)
{
    return impl_->spawn(argv, flags);
}

std::string HWExec::getsWTimeout(int timeoutQuarters, int* finished)
{
    Impl& d = *impl_;
    Clock::time_point deadline =
        Clock::now() + std::chrono::milliseconds(static_cast<long long>(timeoutQuarters < 0 ? 0 : timeoutQuarters) *
                                                 kGetsUnitMs);
    for (;;) {
        if (d.stopIfRequested()) {
            if (finished)
                *finished = 0;
            return std::string();
        }
        if (!d.lines.empty()) {
            std::string line = std::move(d.lines.front());
            d.lines.pop_front();
            return line;
        }
        if (d.done()) {
            if (finished)
                *finished = 0;
            return std::string();
        }
        int left = msLeft(deadline);
        if (d.streamsOpen()) {
            if (left == 0 && !d.hasReadable())
                return std::string();
            d.readOnce(left);
        } else {
            if (left == 0)
                return std::string();
            d.napUpTo(left);
        }
    }
}

int HWExec::wait()
{
    Impl& d = *impl_;
    if (!d.started) {
        setErrorMessage("No child process was started");
        return -1;
    }
    d.pumpUntil(Clock::time_point(), true);
    return d.finish(false);
}

int HWExec::exitStatus() const { return impl_->status; }

const std::atomic<bool>* GenExec::setThreadStopFlag(const std::atomic<bool>* flag) noexcept
{
    const std::atomic<bool>* previous = t_stopFlag;
    t_stopFlag = flag;
    return previous;
}

bool GenExec::stopRequested() noexcept
{
    return t_stopFlag && t_stopFlag->load(std::memory_order_acquire);
}
