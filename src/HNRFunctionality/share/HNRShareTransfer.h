#pragma once
// Internal to the share client (not installed): one transfer run after
// another, polled to its end, with progress cumulative over all of them.
// HNRShareConnection::putFiles and getFiles are built on it (same unit).
#include <cstdint>
#include <functional>
#include <string>

#include "share/HNRShare.h"

class GenExec;

namespace HNR {

class HNRShareLocation;

class HNRShareTransfer {
public:
    enum class End {
        Finished,    // exit status 0 and no status name on either stream
        FailureLine, // a line on standard output: smbclient's failures go there
        Status,      // a status name on standard error (a full local disk, ...)
        WaitError,   // exit status not 0, killed, cancelled
        StartError,  // smbclient could not start (message set)
    };

    // total: bytes of the whole operation, for percentages.
    HNRShareTransfer(HNRShareConnection::Progress* progress, std::uint64_t total);

    // Runs script on loc to its end. measure(runner) gives the bytes of this
    // run done so far, when a progress computation is due (at the start, then
    // every period x 6 polling units); bytes of earlier runs are added with
    // done(). detail: the failure line, or the status line, or the runner's
    // message with smbclient's last line on standard error. expected, when
    // given, names the standard-output lines the script prints on success (a
    // listing at its end): those are no failure, a status name in them is
    // left to the caller, and so is an exit status of 1 after a last line
    // that says a listing failed.
    End run(const HNRShareLocation& loc, const std::string& script,
            const std::function<std::uint64_t(const GenExec&)>& measure, std::string& detail,
            const std::function<bool(const std::string&)>& expected = nullptr);
    // The standard error and standard output texts of the last run.
    const std::string& lastStandardError() const { return stderr_; }
    const std::string& lastStandardOutput() const { return stdout_; }
    // Adds bytes finished by a run.
    void done(std::uint64_t bytes) { doneBytes_ += bytes; }
    // 100, once, after everything was checked.
    void finish();
    int runs() const { return runs_; }

private:
    void update(double percent);

    HNRShareConnection::Progress* progress_;
    std::uint64_t total_;
    std::uint64_t doneBytes_ = 0;
    double last_ = 0.0;
    int runs_ = 0;
    std::string stderr_;
    std::string stdout_;
};

// "NT_STATUS_X ..." with the table's message added: "... (message)".
std::string explainStatus(const std::string& text);

} // namespace HNR
