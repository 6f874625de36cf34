#include "Hnrctl.h"

#include "HnrctlCommandLine.h"
#include "HnrctlMessage.h"
#include "HnrctlShare.h"
#include "HnrctlValidate.h"

#include "Logger.h"

#include "share/HNRCancellation.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iostream>

namespace hnrctl {

namespace {

typedef int (*Handler)(const HnrctlCommandLine&, HnrctlContext&);

const size_t kMany = SIZE_MAX;

struct HnrctlCommand {
    const char* group;
    const char* name;
    const char* operands;
    const char* summary;
    const char* details;
    std::vector<HnrctlOption> options;
    size_t minOperands;
    size_t maxOperands;
    Handler run;
};

const HnrctlOption kHelp = {"-h", "--help", nullptr, "show this help and exit"};
const HnrctlOption kVerbose = {"-v", "--verbose", nullptr, "also show the module's log lines and the details of failures"};
const HnrctlOption kVersion = {"-V", "--version", nullptr, "print the version and exit"};
const HnrctlOption kUser = {"-U", "--user", "USER",
                            "log on as USER, DOMAIN\\USER, DOMAIN/USER or USER@DOMAIN (default: guest)"};
const HnrctlOption kPasswordFile = {nullptr, "--password-file", "FILE",
                                    "read the password from the first line of FILE"};
const HnrctlOption kAuthFile = {"-A", "--authentication-file", "FILE",
                                "read username, password and domain from FILE (smbclient's format)"};
const HnrctlOption kJson = {nullptr, "--json", nullptr, "print JSON instead of text"};
const HnrctlOption kShowSecrets = {nullptr, "--show-secrets", nullptr, "show passwords instead of hiding them"};
const HnrctlOption kQuiet = {"-q", "--quiet", nullptr, "show no progress"};

const char kShareIntro[] =
    "Share paths are UNC (\\\\server\\share\\dir), slash paths (//server/share/dir)\n"
    "or URLs (smb://server/share/dir).\n"
    "PATH [NAME...]: NAMEs are files or folders inside the folder PATH; without\n"
    "NAME, PATH itself is meant.\n"
    "The password of -U comes from the environment variable HNR_SMB_PASSWORD,\n"
    "from --password-file FILE, or from a prompt on the terminal; -A FILE holds\n"
    "user, password and domain. Never from the command line. Without -U or -A the\n"
    "share is reached as guest.\n";

const std::vector<HnrctlCommand>& commands()
{
    static const std::vector<HnrctlCommand> table = {
        {"message", "check", "FILE|-", "check that a message reads, element by element",
         "Parses the XML message in FILE (or standard input for '-') and reads every\n"
         "typed element through the module's registries. Prints the root element and\n"
         "its type key (namespace URI ':' type name). Each element that does not read\n"
         "is reported with its path and why, and the exit status is 1; a parse error\n"
         "names its place as FILE:LINE:COLUMN and the byte offset.\n",
         {kJson}, 1, 1, runMessageCheck},
        {"message", "read", "FILE|-", "read the root record through the parser-factory registries",
         "Reads the root element of the message as a record: its xsi:type is looked up\n"
         "in every registry of the module (VM configurations, VM devices, environments,\n"
         "host devices, network devices and services, virtualization info and settings,\n"
         "guest OS memory, clone, migration and backup options) and the factory found\n"
         "creates the record. Prints the registry, the C++ class and the record's\n"
         "fields; a VM configuration shows every setting and a table of its devices.\n"
         "Each element that does not read is reported with its path and why (exit 1).\n"
         "Secrets (passwords) are hidden unless --show-secrets, in the XML of --write\n"
         "too (emptied there).\n",
         {{nullptr, "--write", nullptr, "then write it back through its factory and print the XML"}, kShowSecrets,
          kJson},
         1, 1, runMessageRead},
        {"message", "dump", "FILE|-", "print the record as its factory writes it (XML only)",
         "Reads the root record like 'message read' and prints only the XML its\n"
         "factory writes, ready for another tool. Secrets are emptied unless\n"
         "--show-secrets.\n",
         {kShowSecrets}, 1, 1, runMessageDump},
        {"message", "diff", "FILE1 FILE2", "list every difference between two records",
         "Reads both records and lists each field that differs ('~ path: a -> b'),\n"
         "is only in FILE1 ('- path: a') or only in FILE2 ('+ path: b'). Devices are\n"
         "named by index and class: device_list/device[2](vm_hard_disk_device).\n"
         "Exit status as diff: 0 the same, 1 different, 2 trouble.\n",
         {kShowSecrets, kJson}, 2, 2, runMessageDiff},
        {"message", "validate", "FILE...", "check messages against the module's XML schema",
         "Validates each message FILE (or standard input for '-') against the XML schema\n"
         "of the module (share/hnrfunctionality/schema, or the folder in HNR_SCHEMA_DIR)\n"
         "with libxml2. Prints each violation as FILE:LINE:COLUMN: message, then\n"
         "'FILE: valid' or 'FILE: invalid'. The root element must carry an xsi:type.\n"
         "Exit status: 0 all valid, 1 one is invalid, 2 one cannot be read or no schema.\n",
         {{nullptr, "--json", nullptr, "print the result as JSON"}}, 1, kMany, runMessageValidate},
        {"share", "check", "PATH", "check that a share (or with --file, a path in it) answers",
         "Runs a listing on the share of PATH; with --file, on PATH itself.\n",
         {{nullptr, "--file", nullptr, "check that the file or folder PATH exists"}}, 1, 1, runShareCheck},
        {"share", "ls", "PATH [PATTERN]", "list a folder of a share",
         "Lists the folder PATH (the share root when PATH names only the share),\n"
         "entries matching PATTERN (default '*') sorted by name: type (d or -), size\n"
         "in bytes, name; then a summary line (not with --json).\n",
         {kJson}, 1, 2, runShareLs},
        {"share", "put", "PATH LOCAL...", "upload local files and folders into the folder PATH",
         "Uploads each LOCAL file or folder (recursively) into the share folder PATH,\n"
         "which must exist. Progress (bytes, rate, time left) goes to standard error.\n",
         {{nullptr, "--contents", nullptr, "for a LOCAL folder, upload its contents, not the folder"}, kQuiet}, 2,
         kMany, runSharePut},
        {"share", "get", "PATH [NAME...]", "download files and folders from a share",
         "Downloads NAMEs inside the share folder PATH (or PATH itself) into a local\n"
         "folder, created when missing. Checks local free space first. Progress\n"
         "(bytes, rate, time left) goes to standard error.\n",
         {{nullptr, "--to", "DIR", "local folder to download into (default: the current folder)"},
          {nullptr, "--contents", nullptr, "for a folder, download its contents, not the folder"}, kQuiet},
         1, kMany, runShareGet},
        {"share", "size", "PATH [NAME...]", "print the total size in bytes of files and folders on a share",
         "Prints the total size in bytes of the NAMEs inside PATH (or of PATH itself,\n"
         "the whole share when PATH names only the share), folders counted\n"
         "recursively.\n",
         {kJson}, 1, kMany, runShareSize},
        {"share", "mkdir", "PATH [NAME]", "create a folder on a share",
         "Creates the folder NAME inside PATH (or PATH itself); its parent must exist\n"
         "unless -p.\n",
         {{"-p", "--parents", nullptr, "create missing parents too; an existing folder is no error"}}, 1, 2,
         runShareMkdir},
        {"share", "rmdir", "PATH [NAME]", "remove a folder and everything in it from a share",
         "Removes the folder NAME inside PATH (or PATH itself) with everything in it.\n", {}, 1, 2,
         runShareRmdir},
        {"share", "url", "PATH", "print the smb:// URL form of a share path",
         "Prints the URL form of PATH. With --with-credentials and -U the URL carries\n"
         "the login and password in Base64, which anyone who sees it can decode.\n",
         {{nullptr, "--with-credentials", nullptr, "put the login and password (Base64) into the URL"}}, 1, 1,
         runShareUrl},
        {"share", "unc", "URL", "print the UNC path of an smb:// URL",
         "Prints the UNC path of URL. Warns when the URL carries credentials (its\n"
         "password is only Base64-encoded); the password is never printed.\n",
         {{nullptr, "--show-login", nullptr, "also print the login the URL carries"}}, 1, 1, runShareUnc},
    };
    return table;
}

bool isShareCommand(const HnrctlCommand& c) { return std::string(c.group) == "share"; }

std::vector<HnrctlOption> optionsOf(const HnrctlCommand& c)
{
    std::vector<HnrctlOption> all = c.options;
    if (isShareCommand(c) && std::string(c.name) != "unc") {
        all.push_back(kUser);
        all.push_back(kPasswordFile);
        all.push_back(kAuthFile);
    }
    all.push_back(kVerbose);
    all.push_back(kHelp);
    return all;
}

const size_t kWidth = 80;

// Prints head, then text from column `column`, words wrapped within kWidth;
// a head too wide for the column gets a line of its own.
void printWrapped(std::ostream& out, const std::string& head, size_t column, const std::string& text)
{
    out << head;
    size_t at = head.size();
    if (!head.empty() && at + 2 > column) {
        out << "\n";
        at = 0;
    }
    out << std::string(column - at, ' ');
    at = column;
    size_t pos = 0;
    bool first = true;
    while (pos < text.size()) {
        size_t end = text.find(' ', pos);
        if (end == std::string::npos)
            end = text.size();
        std::string word = text.substr(pos, end - pos);
        if (!first && at + 1 + word.size() > kWidth) {
            out << "\n" << std::string(column, ' ');
            at = column;
            first = true;
        }
        if (!first) {
            out << " ";
            ++at;
        }
        out << word;
        at += word.size();
        first = false;
        pos = end + 1;
    }
    out << "\n";
}

void printOption(std::ostream& out, const HnrctlOption& o)
{
    std::string names = o.shortName ? std::string(o.shortName) + ", " + o.longName : std::string("    ") + o.longName;
    if (o.valueName)
        names += std::string(" ") + o.valueName;
    printWrapped(out, "  " + names, 24, o.help);
}

const char* groupTitle(const std::string& group)
{
    return group == "message" ? "Messages:" : "Network shares (SMB/CIFS):";
}

void printMainHelp(std::ostream& out)
{
    out << "Usage: hnrctl [-v] <group> <command> [options] [operands]\n"
           "       hnrctl help [<group> [<command>]]\n"
           "       hnrctl --version\n\n"
           "Works with the messages and network shares of the tessaline platform module.\n";
    std::string group;
    for (const HnrctlCommand& c : commands()) {
        if (group != c.group) {
            group = c.group;
            out << "\n" << groupTitle(group) << "\n";
        }
        printWrapped(out, "  " + group + " " + c.name + " " + c.operands, 32, c.summary);
    }
    out << "\nOptions everywhere:\n";
    printOption(out, kVerbose);
    printOption(out, kHelp);
    printOption(out, kVersion);
    out << "\n" << kShareIntro
        << "\nExit status: 0 success, 1 the operation failed (reason on standard error),\n"
           "2 wrong command line; 130 interrupted.\n";
}

void printGroupHelp(std::ostream& out, const std::string& group)
{
    out << "Usage: hnrctl " << group << " <command> [options] [operands]\n\n";
    for (const HnrctlCommand& c : commands()) {
        if (group == c.group)
            out << "  " << c.name << " " << c.operands << "\n      " << c.summary << "\n";
    }
    if (group == "share")
        out << "\n" << kShareIntro;
    out << "\nRun 'hnrctl help " << group << " <command>' for a command's options.\n";
}

void printCommandHelp(std::ostream& out, const HnrctlCommand& c)
{
    std::string summary = c.summary;
    summary[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(summary[0])));
    out << "Usage: hnrctl " << c.group << " " << c.name << " [options] " << c.operands << "\n\n";
    printWrapped(out, "", 0, summary + ".");
    out << "\n" << c.details;
    if (isShareCommand(c) && std::string(c.name) != "unc" && std::string(c.name) != "url")
        out << "\n" << kShareIntro;
    out << "\nOptions:\n";
    for (const HnrctlOption& o : optionsOf(c))
        printOption(out, o);
}

std::vector<std::string> groups()
{
    std::vector<std::string> names;
    for (const HnrctlCommand& c : commands()) {
        if (std::find(names.begin(), names.end(), c.group) == names.end())
            names.push_back(c.group);
    }
    return names;
}

bool isKnownGroup(const std::string& group)
{
    std::vector<std::string> names = groups();
    return std::find(names.begin(), names.end(), group) != names.end();
}

size_t editDistance(const std::string& a, const std::string& b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The closest candidate within two edits (or of which word is a prefix);
// "" when none is close.
std::string closest(const std::string& word, const std::vector<std::string>& candidates)
{
    std::string best;
    size_t bestDistance = 3;
    for (const std::string& c : candidates) {
        size_t d = editDistance(word, c);
        if (word.size() >= 2 && c.compare(0, word.size(), word) == 0)
            d = std::min<size_t>(d, 1);
        if (d < bestDistance) {
            bestDistance = d;
            best = c;
        }
    }
    return best;
}

int unknownCommand(HnrctlContext& context, const std::string& prefix, const std::string& word,
                   const std::vector<std::string>& candidates, const std::string& helpTarget)
{
    *context.err << "hnrctl: unknown command '" << prefix << word << "'\n";
    std::string guess = closest(word, candidates);
    if (!guess.empty())
        *context.err << "Did you mean '" << prefix << guess << "'?\n";
    *context.err << "Try 'hnrctl " << helpTarget << "'.\n";
    return kExitUsage;
}

const HnrctlCommand* findCommand(const std::string& group, const std::string& name)
{
    for (const HnrctlCommand& c : commands()) {
        if (group == c.group && name == c.name)
            return &c;
    }
    return nullptr;
}

std::vector<std::string> commandNames(const std::string& group)
{
    std::vector<std::string> names;
    for (const HnrctlCommand& c : commands()) {
        if (group == c.group)
            names.push_back(c.name);
    }
    return names;
}

// hnrctl help [GROUP [COMMAND]]
int runHelp(const std::vector<std::string>& args, HnrctlContext& context)
{
    if (args.size() == 1) {
        printMainHelp(*context.out);
        return kExitOk;
    }
    const std::string& group = args[1];
    if (!isKnownGroup(group))
        return unknownCommand(context, "", group, groups(), "help");
    if (args.size() == 2) {
        printGroupHelp(*context.out, group);
        return kExitOk;
    }
    if (args.size() > 3) {
        *context.err << "hnrctl: help: too many operands (expected [GROUP [COMMAND]])\nTry 'hnrctl help'.\n";
        return kExitUsage;
    }
    const HnrctlCommand* command = findCommand(group, args[2]);
    if (!command)
        return unknownCommand(context, group + " ", args[2], commandNames(group), "help " + group);
    printCommandHelp(*context.out, *command);
    return kExitOk;
}

} // namespace

std::string versionText()
{
    return std::string("hnrctl ") + HNRCTL_VERSION + " (libHNRFunctionality " + HNRCTL_VERSION + ")";
}

int reportFailure(HnrctlContext& context, const std::string& command, const std::string& message)
{
    *context.err << "hnrctl: " << command << ": " << message << "\n";
    return kExitFailure;
}

int reportUsage(HnrctlContext& context, const std::string& command, const std::string& message)
{
    *context.err << "hnrctl: " << command << ": " << message << "\n"
                 << "Try 'hnrctl help " << command << "'.\n";
    return kExitUsage;
}

int runHnrctl(const std::vector<std::string>& argsIn, HnrctlContext& context)
{
    // -v, --help and --version may stand before the group as well.
    std::vector<std::string> args;
    bool verbose = false;
    bool help = false;
    size_t i = 0;
    for (; i < argsIn.size() && !argsIn[i].empty() && argsIn[i][0] == '-'; ++i) {
        if (argsIn[i] == "-v" || argsIn[i] == "--verbose") {
            verbose = true;
        } else if (argsIn[i] == "-h" || argsIn[i] == "--help") {
            help = true;
        } else if (argsIn[i] == "-V" || argsIn[i] == "--version") {
            *context.out << versionText() << "\n";
            return kExitOk;
        } else {
            *context.err << "hnrctl: unknown option '" << argsIn[i].substr(0, argsIn[i].find('='))
                         << "' before the command\nTry 'hnrctl --help'.\n";
            return kExitUsage;
        }
    }
    args.assign(argsIn.begin() + i, argsIn.end());
    if (args.empty()) {
        if (help) {
            printMainHelp(*context.out);
            return kExitOk;
        }
        printMainHelp(*context.err);
        return kExitUsage;
    }
    const std::string& group = args[0];
    if (group == "help")
        return runHelp(args, context);
    if (group == "version") {
        *context.out << versionText() << "\n";
        return kExitOk;
    }
    if (!isKnownGroup(group)) {
        std::vector<std::string> candidates = groups();
        candidates.push_back("help");
        candidates.push_back("version");
        return unknownCommand(context, "", group, candidates, "--help");
    }
    if (args.size() < 2 || args[1] == "-h" || args[1] == "--help") {
        bool asked = help || args.size() >= 2;
        printGroupHelp(asked ? *context.out : *context.err, group);
        return asked ? kExitOk : kExitUsage;
    }
    const HnrctlCommand* command = findCommand(group, args[1]);
    std::string fullName = group + " " + args[1];
    if (!command)
        return unknownCommand(context, group + " ", args[1], commandNames(group), "help " + group);
    HnrctlCommandLine line;
    if (!line.parse(std::vector<std::string>(args.begin() + 2, args.end()), optionsOf(*command)))
        return reportUsage(context, fullName, line.error());
    if (help || line.has("--help")) {
        printCommandHelp(*context.out, *command);
        return kExitOk;
    }
    size_t n = line.operands().size();
    if (n < command->minOperands || n > command->maxOperands) {
        return reportUsage(context, fullName,
                           std::string(n < command->minOperands ? "missing operand" : "too many operands") +
                               " (expected " + command->operands + ")");
    }
    // Quiet by default: a failure is reported once, by hnrctl, from the
    // module's error message; -v shows the module's own log lines too.
    int savedLevel = Logger::level();
    context.verbose = verbose || line.has("--verbose");
    Logger::setLevel(context.verbose ? 3 : 0);
    int status = kExitOk;
    if (context.cancellation) {
        // Every share operation of the command watches the cancellation.
        HNR::HNRCancellationScope scope(*context.cancellation);
        status = command->run(line, context);
        if (context.cancellation->isCancelled())
            status = kExitInterrupted;
    } else {
        status = command->run(line, context);
    }
    Logger::setLevel(savedLevel);
    return status;
}

} // namespace hnrctl
