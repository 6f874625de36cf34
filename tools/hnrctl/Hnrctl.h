#pragma once
// hnrctl: the command-line face of libHNRFunctionality. Everything but
// main() lives here so that tests can run commands in-process.
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace HNR {
class HNRCancellation;
}

namespace hnrctl {

// Exit statuses.
constexpr int kExitOk = 0;
constexpr int kExitFailure = 1; // the operation failed; the reason is on standard error
constexpr int kExitUsage = 2;   // the command line was wrong
constexpr int kExitInterrupted = 130; // stopped by SIGINT, SIGTERM or SIGHUP (as shells report ^C)

// What a command may touch besides its arguments.
struct HnrctlContext {
    std::istream* in = nullptr;  // read for FILE "-"
    std::ostream* out = nullptr; // results
    std::ostream* err = nullptr; // errors, warnings, progress
    bool errIsTerminal = false;  // progress redraws one line with '\r' when true
    bool hasPasswordEnv = false; // HNR_SMB_PASSWORD was set
    std::string passwordEnv;     // its value
    // Asks for the password of `login` without echo; false when there is no
    // terminal to ask on (null: never ask).
    std::function<bool(const std::string& login, std::string& password)> promptPassword;
    bool verbose = false; // -v: details of failures and the module's log lines
    // Cancelled from a signal handler: the running share operation stops
    // (its tool killed and reaped) and the command exits kExitInterrupted.
    HNR::HNRCancellation* cancellation = nullptr;
};

// "hnrctl 0.1.0 (libHNRFunctionality 0.1.0)"
std::string versionText();

// Runs one command line (without the program name); returns the exit status.
int runHnrctl(const std::vector<std::string>& args, HnrctlContext& context);

} // namespace hnrctl

namespace hnrctl {

class HnrctlCommandLine;

// Prints "hnrctl: <command>: <message>" on the error stream; kExitFailure.
int reportFailure(HnrctlContext& context, const std::string& command, const std::string& message);
// Prints "hnrctl: <command>: <message>" and a hint to --help; kExitUsage.
int reportUsage(HnrctlContext& context, const std::string& command, const std::string& message);

} // namespace hnrctl
