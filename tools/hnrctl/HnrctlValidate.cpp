#include "HnrctlValidate.h"

#include "Hnrctl.h"
#include "HnrctlCommandLine.h"
#include "HnrctlSchemaValidator.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <iostream>
#include <iterator>

namespace hnrctl {

namespace {

const char kCommand[] = "message validate";

bool readInput(const std::string& file, HnrctlContext& context, std::string& text)
{
    if (file == "-") {
        text.assign(std::istreambuf_iterator<char>(*context.in), std::istreambuf_iterator<char>());
        return !context.in->bad();
    }
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return false;
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

std::string displayName(const std::string& file) { return file == "-" ? "standard input" : file; }

} // namespace

int runMessageValidate(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const bool json = line.has("--json");
    std::string dir = HnrctlSchemaValidator::findSchemaDir();
    if (dir.empty()) {
        *context.err << "hnrctl: " << kCommand
                     << ": no schema folder found (installed share/hnrfunctionality/schema); set HNR_SCHEMA_DIR\n";
        return kExitUsage;
    }
    if (line.has("--verbose"))
        *context.err << "hnrctl: " << kCommand << ": schema folder " << dir << "\n";
    HnrctlSchemaValidator validator(dir);
    nlohmann::json files = nlohmann::json::array();
    bool anyInvalid = false;
    bool anyUnreadable = false;
    for (const std::string& file : line.operands()) {
        const std::string name = displayName(file);
        nlohmann::json entry = {{"file", name}};
        std::string text;
        if (!readInput(file, context, text)) {
            *context.err << "hnrctl: " << kCommand << ": cannot read '" << file << "'\n";
            anyUnreadable = true;
            entry["status"] = "unreadable";
            files.push_back(entry);
            continue;
        }
        std::vector<HnrctlSchemaViolation> violations;
        std::string error;
        bool valid = validator.validate(text, violations, error);
        if (!error.empty()) {
            *context.err << "hnrctl: " << kCommand << ": " << error << "\n";
            return kExitUsage;
        }
        anyInvalid = anyInvalid || !valid;
        entry["status"] = valid ? "valid" : "invalid";
        entry["violations"] = nlohmann::json::array();
        for (const HnrctlSchemaViolation& v : violations) {
            entry["violations"].push_back({{"line", v.line}, {"column", v.column}, {"message", v.message}});
            if (!json)
                *context.out << name << ":" << v.line << ":" << v.column << ": " << v.message << "\n";
        }
        if (!json)
            *context.out << name << ": " << (valid ? "valid" : "invalid") << "\n";
        files.push_back(entry);
    }
    if (json) {
        nlohmann::json result = {{"valid", !anyInvalid && !anyUnreadable}, {"files", files}};
        *context.out << result.dump(2) << "\n";
    }
    if (anyUnreadable)
        return kExitUsage;
    return anyInvalid ? kExitFailure : kExitOk;
}

} // namespace hnrctl
