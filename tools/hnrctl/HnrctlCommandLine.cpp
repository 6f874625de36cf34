#include "HnrctlCommandLine.h"

#include <cstring>

namespace hnrctl {

namespace {

const HnrctlOption* findOption(const std::vector<HnrctlOption>& options, const std::string& name)
{
    for (const HnrctlOption& o : options) {
        if ((o.shortName && name == o.shortName) || name == o.longName)
            return &o;
    }
    return nullptr;
}

// "--password", "--password=...", "-p", "--pass": whatever spelling a user
// tries, the answer points at the two places a password may come from.
bool looksLikePasswordOption(const std::string& name)
{
    return name == "-p" || (name.compare(0, 6, "--pass") == 0 && name != "--password-file");
}

} // namespace

bool HnrctlCommandLine::parse(const std::vector<std::string>& args, const std::vector<HnrctlOption>& options)
{
    values_.clear();
    operands_.clear();
    error_.clear();
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || arg.size() < 2 || arg[0] != '-') {
            operands_.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        std::string name = arg;
        std::string value;
        bool hasInlineValue = false;
        if (arg.compare(0, 2, "--") == 0) {
            size_t eq = arg.find('=');
            if (eq != std::string::npos) {
                name = arg.substr(0, eq);
                value = arg.substr(eq + 1);
                hasInlineValue = true;
            }
        } else if (arg.size() > 2) {
            // "-Uuser": a short option with its value glued on.
            name = arg.substr(0, 2);
            value = arg.substr(2);
            hasInlineValue = true;
        }
        // A command's own option wins (mkdir -p); elsewhere -p means a password.
        if (looksLikePasswordOption(name) && !findOption(options, name)) {
            error_ = "passwords are not taken on the command line: set HNR_SMB_PASSWORD or use --password-file FILE";
            return false;
        }
        const HnrctlOption* option = findOption(options, name);
        if (!option) {
            error_ = "unknown option '" + name + "'";
            return false;
        }
        if (!option->valueName) {
            if (hasInlineValue) {
                error_ = "option '" + name + "' takes no value";
                return false;
            }
            values_[option->longName] = "";
            continue;
        }
        if (!hasInlineValue) {
            if (i + 1 >= args.size()) {
                error_ = "option '" + name + "' needs a value (" + option->valueName + ")";
                return false;
            }
            value = args[++i];
        }
        values_[option->longName] = value;
    }
    return true;
}

std::string HnrctlCommandLine::value(const std::string& longName, const std::string& fallback) const
{
    auto found = values_.find(longName);
    return found == values_.end() ? fallback : found->second;
}

} // namespace hnrctl
