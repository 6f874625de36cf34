#include "HnrctlMessage.h"

#include "Hnrctl.h"
#include "HnrctlCommandLine.h"
#include "HnrctlRecordPrinter.h"

#include "frame/HNRRecordCatalogue.h"

#include "HNKErrorMessage.h"
#include "HNKMessageIterator.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <map>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace HNR;

namespace hnrctl {

namespace {

// The whole text of FILE, or of standard input for "-"; false with why.
bool readInput(const std::string& file, HnrctlContext& context, std::string& text, std::string& why)
{
    if (file == "-") {
        text.assign(std::istreambuf_iterator<char>(*context.in), std::istreambuf_iterator<char>());
        return true;
    }
    int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        why = std::strerror(errno);
        return false;
    }
    struct stat st;
    if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
        ::close(fd);
        why = "it is a folder";
        return false;
    }
    char buffer[65536];
    for (;;) {
        ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            why = std::strerror(errno);
            ::close(fd);
            return false;
        }
        if (n == 0)
            break;
        text.append(buffer, static_cast<size_t>(n));
    }
    ::close(fd);
    return true;
}

std::string displayName(const std::string& file) { return file == "-" ? "standard input" : file; }

// Where a parse failed: the byte offset the parser names, as line:column.
struct Position {
    bool known = false;
    long long offset = 0;
    long long line = 0;
    long long column = 0;
};

Position positionOf(const std::string& text, const std::string& error)
{
    Position p;
    const std::string marker = "byte offset ";
    size_t at = error.rfind(marker);
    if (at == std::string::npos)
        return p;
    long long offset = std::atoll(error.c_str() + at + marker.size());
    if (offset < 0 || static_cast<unsigned long long>(offset) > text.size())
        return p;
    p.known = true;
    p.offset = offset;
    // The parser names line and column itself (columns in characters).
    long long line = 0, column = 0;
    size_t named = error.find(" (line ", at);
    if (named != std::string::npos &&
        std::sscanf(error.c_str() + named, " (line %lld, column %lld)", &line, &column) == 2) {
        p.line = line;
        p.column = column;
        return p;
    }
    p.line = 1;
    size_t lineStart = 0;
    for (size_t i = 0; i < static_cast<size_t>(offset); ++i) {
        if (text[i] == '\n') {
            ++p.line;
            lineStart = i + 1;
        }
    }
    p.column = offset - static_cast<long long>(lineStart) + 1;
    return p;
}

// A message read from an operand: its text, its tree, and why not.
struct Input {
    std::string file;
    std::string text;
    HNKMessageIterator tree;
    bool readable = false; // the file could be read
    bool parsed = false;   // and parsed
    std::string error;     // why not
    Position position;
};

Input load(const std::string& file, HnrctlContext& context)
{
    Input in;
    in.file = file;
    std::string why;
    if (!readInput(file, context, in.text, why)) {
        in.error = "cannot read '" + file + "': " + why;
        return in;
    }
    in.readable = true;
    if (in.tree.fromXML(in.text) != 0) {
        std::string message = getErrorMessage();
        in.position = positionOf(in.text, message);
        if (in.position.known && message.find(" (line ") == std::string::npos) {
            // "... at byte offset 10 (line 2, column 7): ..."
            size_t number = message.rfind("byte offset ") + 12;
            size_t end = message.find_first_not_of("0123456789", number);
            message.insert(end == std::string::npos ? message.size() : end,
                           " (line " + std::to_string(in.position.line) + ", column " +
                               std::to_string(in.position.column) + ")");
        }
        in.error = displayName(file) + ": " + message;
        return in;
    }
    in.parsed = true;
    return in;
}

nlohmann::json problemsJson(const std::vector<HNRReadProblem>& problems)
{
    nlohmann::json list = nlohmann::json::array();
    for (const HNRReadProblem& p : problems)
        list.push_back({{"path", p.path}, {"reason", p.reason}});
    return list;
}

nlohmann::json parseErrorJson(const Input& in)
{
    nlohmann::json j = {{"file", displayName(in.file)}, {"well_formed", false}, {"error", in.error}};
    if (in.position.known) {
        j["line"] = in.position.line;
        j["column"] = in.position.column;
        j["offset"] = in.position.offset;
    }
    return j;
}

void printJson(std::ostream& out, const nlohmann::json& j)
{
    out << j.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

int reportProblems(HnrctlContext& context, const char* command, const Input& in,
                   const std::vector<HNRReadProblem>& problems)
{
    for (const HNRReadProblem& p : problems)
        reportFailure(context, command, displayName(in.file) + ": " + p.path + ": " + p.reason);
    return problems.empty() ? kExitOk : kExitFailure;
}

} // namespace

int runMessageCheck(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const char* command = "message check";
    bool json = line.has("--json");
    Input in = load(line.operands()[0], context);
    if (!in.parsed) {
        if (json && in.readable)
            printJson(*context.out, parseErrorJson(in));
        return reportFailure(context, command, in.error);
    }
    std::string type = in.tree.getTypeName();
    std::vector<HNRReadProblem> problems = HNRRecordCatalogue::diagnose(in.tree);
    if (json) {
        nlohmann::json j = {{"file", displayName(in.file)},
                            {"well_formed", true},
                            {"root", in.tree.currentName()},
                            {"type", type},
                            {"registry", HNRRecordCatalogue::registryOf(type)},
                            {"problems", problemsJson(problems)}};
        printJson(*context.out, j);
    } else {
        *context.out << displayName(in.file) << ": well-formed, root <" << in.tree.currentName() << ">, type "
                     << (type.empty() ? "(none: no xsi:type)" : type) << "\n";
    }
    return reportProblems(context, command, in, problems);
}

int runMessageRead(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const char* command = "message read";
    Input in = load(line.operands()[0], context);
    if (!in.parsed)
        return reportFailure(context, command, in.error);
    HNKMessageIterator& it = in.tree;
    std::string type = it.getTypeName();
    if (type.empty())
        return reportFailure(context, command, "the root element <" + std::string(it.currentName()) +
                                                   "> has no xsi:type, so no factory can read it");
    HnrctlRecord record;
    std::string error;
    if (!readRecord(it, record, error))
        return reportFailure(context, command, error);
    std::vector<HNRReadProblem> problems = HNRRecordCatalogue::diagnose(it);
    bool showSecrets = line.has("--show-secrets");
    std::ostream& out = *context.out;
    if (line.has("--json")) {
        HNRRecord read;
        HNRRecordCatalogue::read(it, read, error);
        std::vector<HNRRecordField> fields;
        read.fields(fields);
        nlohmann::json list = nlohmann::json::array();
        for (const HNRRecordField& f : fields)
            list.push_back({{"path", f.path}, {"value", f.secret && !showSecrets ? "(hidden)" : f.value}});
        nlohmann::json j = {{"file", displayName(in.file)}, {"type", type},
                            {"registry", record.registry},   {"class", record.className},
                            {"fields", list},                {"problems", problemsJson(problems)}};
        printJson(out, j);
        return reportProblems(context, command, in, problems);
    }
    out << "type key:  " << type << "\n"
        << "registry:  " << record.registry << "\n"
        << "class:     " << record.className << "\n";
    record.print(out);
    if (line.has("--write")) {
        HNKMessageIterator written(it.currentName());
        if (record.write(written, !showSecrets) != 0)
            return reportFailure(context, command, "writing the record back failed: " + getErrorMessage());
        std::string xml = written.toXML(true);
        out << "\nwritten back through " << record.className << "'s factory:\n" << xml;
        if (xml.empty() || xml.back() != '\n')
            out << "\n";
    }
    return reportProblems(context, command, in, problems);
}

int runMessageDump(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const char* command = "message dump";
    Input in = load(line.operands()[0], context);
    if (!in.parsed)
        return reportFailure(context, command, in.error);
    if (in.tree.getTypeName().empty())
        return reportFailure(context, command, "the root element <" + std::string(in.tree.currentName()) +
                                                   "> has no xsi:type, so no factory can read it");
    HNRRecord record;
    std::string error;
    if (HNRRecordCatalogue::read(in.tree, record, error) != 0)
        return reportFailure(context, command, error);
    HNKMessageIterator written(in.tree.currentName());
    if (record.write(written, !line.has("--show-secrets")) != 0)
        return reportFailure(context, command, "writing the record failed: " + getErrorMessage());
    std::string xml = written.toXML(true);
    *context.out << xml;
    if (xml.empty() || xml.back() != '\n')
        *context.out << "\n";
    return reportProblems(context, command, in, HNRRecordCatalogue::diagnose(in.tree));
}

int runMessageDiff(const HnrctlCommandLine& line, HnrctlContext& context)
{
    const char* command = "message diff";
    const int kTrouble = 2; // as diff: 0 same, 1 different, 2 trouble
    std::vector<HNRRecordField> fields[2];
    std::string classes[2];
    for (int i = 0; i < 2; ++i) {
        Input in = load(line.operands()[i], context);
        if (!in.parsed) {
            reportFailure(context, command, in.error);
            return kTrouble;
        }
        HNRRecord record;
        std::string error;
        if (HNRRecordCatalogue::read(in.tree, record, error) != 0) {
            reportFailure(context, command, displayName(in.file) + ": " + error);
            return kTrouble;
        }
        classes[i] = record.className;
        if (record.fields(fields[i], true) != 0) {
            reportFailure(context, command, displayName(in.file) + ": the record does not write: " + getErrorMessage());
            return kTrouble;
        }
    }
    bool showSecrets = line.has("--show-secrets");
    struct Difference {
        char change; // '~' changed, '-' only in A, '+' only in B
        std::string path, a, b;
    };
    std::vector<Difference> differences;
    if (classes[0] != classes[1])
        differences.push_back({'~', "(class)", classes[0], classes[1]});
    std::map<std::string, const HNRRecordField*> inB;
    for (const HNRRecordField& f : fields[1])
        inB[f.path] = &f;
    std::set<std::string> inA;
    auto shown = [showSecrets](const HNRRecordField& f) {
        return f.secret && !showSecrets ? std::string("(hidden)") : f.value;
    };
    for (const HNRRecordField& f : fields[0]) {
        inA.insert(f.path);
        auto other = inB.find(f.path);
        if (other == inB.end())
            differences.push_back({'-', f.path, shown(f), ""});
        else if (other->second->value != f.value)
            differences.push_back({'~', f.path, shown(f), shown(*other->second)});
    }
    for (const HNRRecordField& f : fields[1]) {
        if (!inA.count(f.path))
            differences.push_back({'+', f.path, "", shown(f)});
    }
    if (line.has("--json")) {
        nlohmann::json list = nlohmann::json::array();
        for (const Difference& d : differences) {
            nlohmann::json j = {{"path", d.path},
                                {"change", d.change == '~' ? "changed" : d.change == '-' ? "removed" : "added"}};
            if (d.change != '+')
                j["a"] = d.a;
            if (d.change != '-')
                j["b"] = d.b;
            list.push_back(j);
        }
        printJson(*context.out, {{"differences", list}});
    } else {
        for (const Difference& d : differences) {
            *context.out << d.change << " " << d.path << ": ";
            if (d.change == '~')
                *context.out << d.a << " -> " << d.b << "\n";
            else
                *context.out << (d.change == '-' ? d.a : d.b) << "\n";
        }
    }
    return differences.empty() ? kExitOk : kExitFailure;
}

} // namespace hnrctl
