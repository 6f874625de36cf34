#pragma once
// The framework's process runner. Every external program the module drives
// (mount, mount.cifs, umount.cifs, smbclient) runs through it, so tests can
// point PATH at recording scripts and assert the exact argv.
//
// argv[0] is a bare program name looked up on PATH; no shell is involved.
// Time-outs of synchronous runs are in milliseconds (80000 is 80 s).
// The child starts with default signal dispositions, an empty signal mask,
// standard input from /dev/null, no descriptor of ours but its two output
// pipes, a death signal tied to its caller, and in a process group of its
// own, so a time-out or a stop kills everything it started.
//
// What smbclient 4.17 prints where (checked against a real smbd):
//   standard output: ls listings; "NT_STATUS_NO_SUCH_FILE listing \x";
//     "/tmp/x does not exist" (put of a missing local file);
//     "NT_STATUS_OBJECT_NAME_COLLISION making remote directory \d\";
//     "cd \x\: NT_STATUS_OBJECT_NAME_NOT_FOUND" (also a bad -D folder);
//     "tree connect failed: NT_STATUS_BAD_NETWORK_NAME" / "..._ACCESS_DENIED";
//     "session setup failed: NT_STATUS_LOGON_FAILURE";
//   standard error: "putting file X as \X (... kb/s) ...", "getting file \X
//     of size N as X (...)" and "do_connect: Connection to H failed (Error
//     NT_STATUS_CONNECTION_REFUSED)";
//   exit status: that of the last command of the -c script, so "ls x; ls"
//     with x missing exits 0, and a failed mkdir or rmdir exits 0 anyway:
//     callers must look for "NT_STATUS_" in the text, not only at the status.
//
// Output selectors of getOutput():
//   2  everything the child printed, both streams in order of arrival
//      (smbclient's listings and failures on standard output, its connection
//      errors on standard error: callers need both);
//   4  standard output only (the mount list of "mount -t cifs");
//   6  standard error only (the error text of mount.cifs).
//
// Flags of the exec calls and start() choose which lines getsWTimeout()
// reports; they never change what is captured:
//   0  lines of both streams are reported;
//   otherwise bit 2 reports standard-output lines and bit 4 marks
//   standard-error lines as progress, captured but not reported.
//   smbclient sends transfer progress to standard error and failures to
//   standard output, so start(argv, 6) reports exactly the failures.
#include <atomic>
#include <string>
#include <vector>

class GenExec {
public:
    // Stop hook, for callers that must be able to stop a run from another
    // thread or a signal handler. While a flag is installed on a thread, every
    // run that thread starts, waits for or polls watches it (at least every
    // kStopCheckMs): once it is true, the child's process group is killed and
    // reaped, nothing new starts, and the call fails with the message
    // "cancelled". The flag must outlive its installation. Returns the flag
    // installed before, so that installations nest.
    static const std::atomic<bool>* setThreadStopFlag(const std::atomic<bool>* flag) noexcept;
    // True when a flag is installed on this thread and it is set.
    static bool stopRequested() noexcept;
    static constexpr int kStopCheckMs = 50;

    // Length of one time-out unit of getsWTimeout(), in milliseconds.
    static constexpr int kGetsUnitMs = 250;

    enum Output { OUTPUT_ALL = 2, OUTPUT_STDOUT = 4, OUTPUT_STDERR = 6 };
    enum Flags { REPORT_STDOUT = 2, QUIET_STDERR = 4 };

    virtual ~GenExec() = default;

    // Runs argv to completion. 0 when it exited with status 0; non-zero when
    // it could not start, exited non-zero, died by a signal or timed out (the
    // child is then killed and reaped); the reason is in getErrorMessage().
    virtual int execWithError(const std::vector<std::string>& argv, int flags, int timeoutMs) = 0;
    // As execWithError; on failure the error message also carries the
    // child's standard error text.
    virtual int execWithOutputError(const std::vector<std::string>& argv, int flags, int timeoutMs) = 0;

    // Text captured by the last run, per selector above ("" for others).
    virtual std::string getOutput(int selector) const = 0;

    // Starts argv in the background. 0 on success.
    virtual int start(const std::vector<std::string>& argv, int flags) = 0;
    // Waits up to timeoutQuarters quarter-seconds (6 is 1.5 s) for one
    // reported line and returns it without its line break; returns "" when
    // none came in time. Clears *finished (and returns "") once the child has
    // ended and its output is drained. Quarter-seconds, so that a transfer
    // polling with 6 units can report progress well within 2 s.
    virtual std::string getsWTimeout(int timeoutQuarters, int* finished) = 0;
    // Waits for the started child and reaps it. 0 when it exited with status 0.
    virtual int wait() = 0;
};

// The POSIX implementation (fork and execve, pipes read through poll). The
// child gets SIGKILL when the thread that started it ends in any way, the
// process killed outright included, so no tool outlives its caller; a run
// must therefore be waited for on the thread that started it.
// One object runs one child at a time; separate objects may be used from
// separate threads at once (no shared state).
class HWExec : public GenExec {
public:
    HWExec();
    ~HWExec() override; // kills and reaps a child still running

    int execWithError(const std::vector<std::string>& argv, int flags, int timeoutMs) override;
    int execWithOutputError(const std::vector<std::string>& argv, int flags, int timeoutMs) override;
    std::string getOutput(int selector) const override;
    int start(const std::vector<std::string>& argv, int flags) override;
    std::string getsWTimeout(int timeoutQuarters, int* finished) override;
    int wait() override;

    // Exit status of the last finished child: 0..255, 128+N after signal N,
    // -1 when it could not start or was killed on time-out.
    int exitStatus() const;

    HWExec(const HWExec&) = delete;
    HWExec& operator=(const HWExec&) = delete;

private:
    struct Impl;
    Impl* impl_;
};
