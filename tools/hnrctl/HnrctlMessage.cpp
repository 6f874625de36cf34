#include "HnrctlMessage.h"

#include "Hnrctl.h"
#include "HnrctlCommandLine.h"
#include "HnrctlRecordPrinter.h"

#include "HNKErrorMessage.h"
#include "HNKMessageIterator.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

namespace hnrctl {

namespace {

// The whole text of FILE, or of standard input for "-".
bool readInput(const std::string& file, HnrctlContext& context, std::string& text)
{
    if (file == "-") {
        text.assign(std::istreambuf_iterator<char>(*context.in), std::istreambuf_iterator<char>());
        return true;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return false;
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

std::string displayName(const std::string& file) { return file == "-" ? "standard input" : file; }

// Parses the operand's text into it; false after reporting why.
bool parseInput(const HnrctlCommandLine& line, HnrctlContext& context, const char* command, HNKMessageIterator& it,
                int& status)
{
    const std::string& file = line.operands()[0];
    std::string text;
    if (!readInput(file, context, text)) {
        status = reportFailure(context, command, "cannot read '" + file + "'");
        return false;
    }
    if (it.fromXML(text) != 0) {
        status = reportFailure(context, command, displayName(file) + ": " + getErrorMessage());
        return false;
    }
    return true;
}

} // namespace

int runMessageCheck(const HnrctlCommandLine& line, HnrctlContext& context)
{
    HNKMessageIterator it;
    int status = kExitOk;
    if (!parseInput(line, context, "message check", it, status))
        return status;
    std::string type = it.getTypeName();
    *context.out << displayName(line.operands()[0]) << ": well-formed, root <" << it.currentName() << ">, type "
                 << (type.empty() ? "(none: no xsi:type)" : type) << "\n";
    return kExitOk;
}

int runMessageRead(const HnrctlCommandLine& line, HnrctlContext& context)
{
    HNKMessageIterator it;
    int status = kExitOk;
    if (!parseInput(line, context, "message read", it, status))
        return status;
    std::string type = it.getTypeName();
    if (type.empty())
        return reportFailure(context, "message read", "the root element <" + std::string(it.currentName()) +
                                                          "> has no xsi:type, so no factory can read it");
    HnrctlRecord record;
    std::string error;
    if (!readRecord(it, record, error))
        return reportFailure(context, "message read", error);
    std::ostream& out = *context.out;
    out << "type key:  " << type << "\n"
        << "registry:  " << record.registry << "\n"
        << "class:     " << record.className << "\n";
    record.print(out);
    if (line.has("--write")) {
        HNKMessageIterator written(it.currentName());
        if (record.write(written) != 0)
            return reportFailure(context, "message read", "writing the record back failed: " + getErrorMessage());
        out << "\nwritten back through " << record.className << "'s factory:\n" << written.toXML(true);
        if (written.toXML(true).empty() || written.toXML(true).back() != '\n')
            out << "\n";
    }
    return kExitOk;
}

} // namespace hnrctl
