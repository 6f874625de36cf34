#pragma once
// Argument parsing of hnrctl: options declared per command, GNU style
// ("-U user", "-Uuser", "--user user", "--user=user", "--" ends options,
// "-" alone is an operand).
#include <map>
#include <string>
#include <vector>

namespace hnrctl {

struct HnrctlOption {
    const char* shortName; // "-U", or nullptr
    const char* longName;  // "--user"
    const char* valueName; // "USER" when the option takes a value, else nullptr
    const char* help;
};

class HnrctlCommandLine {
public:
    // Parses args against options; false with error() set on an unknown
    // option, a missing value or a password on the command line. The error
    // never repeats what followed an '=' (it might be a password).
    bool parse(const std::vector<std::string>& args, const std::vector<HnrctlOption>& options);

    // Keyed by the option's long name.
    bool has(const std::string& longName) const { return values_.count(longName) != 0; }
    // The option's value, or fallback when absent.
    std::string value(const std::string& longName, const std::string& fallback = "") const;
    const std::vector<std::string>& operands() const { return operands_; }
    const std::string& error() const { return error_; }

private:
    std::map<std::string, std::string> values_;
    std::vector<std::string> operands_;
    std::string error_;
};

} // namespace hnrctl
