#include "Hnrctl.h"

#include "HnrctlCommandLine.h"
#include "HnrctlMessage.h"
#include "HnrctlShare.h"
#include "HnrctlValidate.h"

#include "Logger.h"

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
const HnrctlOption kVerbose = {"-v", "--verbose", nullptr, "also show the module's log lines (errors and information)"};
const HnrctlOption kUser = {"-U", "--user", "USER",
                            "log on as USER, DOMAIN\\USER, DOMAIN/USER or USER@DOMAIN (default: guest)"};
const HnrctlOption kPasswordFile = {nullptr, "--password-file", "FILE",
                                    "read the password from the first line of FILE"};

const char kShareIntro[] =
    "Share paths are UNC (\\\\server\\share\\dir) or slash paths (//server/share/dir).\n"
    "PATH [NAME...]: NAMEs are files or folders inside the folder PATH; without\n"
    "NAME, PATH itself is meant.\n"
    "The password of -U comes from the environment variable HNR_SMB_PASSWORD or\n"
    "from --password-file FILE, never from the command line. Without -U the share\n"
    "is reached as guest.\n";

const std::vector<HnrctlCommand>& commands()
{
    static const std::vector<HnrctlCommand> table = {
        {"message", "check", "FILE|-", "parse a message and print the type of its root",
         "Parses the XML message in FILE (or standard input for '-'). On success prints\n"
         "the root element and its resolved type key (namespace URI ':' type name); on\n"
         "failure prints why and at which byte offset, and exits 1.\n",
         {}, 1, 1, runMessageCheck},
        {"message", "read", "FILE|-", "read the root record through the parser-factory registries",
         "Reads the root element of the message as a record: its xsi:type is looked up\n"
         "in every registry of the module (VM configurations, VM devices, environments,\n"
         "host devices, network devices and services, virtualization info and settings,\n"
         "guest OS memory, clone, migration and backup options) and the factory found\n"
         "creates the record. Prints the registry, the C++ class and the record's\n"
         "fields; a VM configuration shows every setting and a table of its devices.\n"
         "Secrets (passwords) are shown as '(hidden)' in the field listing; the XML of\n"
         "--write is the message as written, secrets included.\n",
         {{nullptr, "--write", nullptr, "then write it back through its factory and print the XML"}},
         1, 1, runMessageRead},
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
         "entries matching PATTERN (default '*'): type (d or -), size in bytes, name.\n",
         {}, 1, 2, runShareLs},
        {"share", "put", "PATH LOCAL...", "upload local files and folders into the folder PATH",
         "Uploads each LOCAL file or folder (recursively) into the share folder PATH,\n"
         "which must exist. Progress goes to standard error.\n",
         {{nullptr, "--contents", nullptr, "for a LOCAL folder, upload its contents, not the folder"}}, 2, kMany,
         runSharePut},
        {"share", "get", "PATH [NAME...]", "download files and folders from a share",
         "Downloads NAMEs inside the share folder PATH (or PATH itself) into a local\n"
         "folder, created when missing. Checks local free space first. Progress goes\n"
         "to standard error.\n",
         {{nullptr, "--to", "DIR", "local folder to download into (default: the current folder)"},
          {nullptr, "--contents", nullptr, "for a folder, download its contents, not the folder"}},
         1, kMany, runShareGet},
        {"share", "size", "PATH [NAME...]", "print the total size in bytes of files and folders on a share",
         "Prints the total size in bytes of the NAMEs inside PATH (or of PATH itself),\n"
         "folders counted recursively.\n",
         {}, 1, kMany, runShareSize},
        {"share", "mkdir", "PATH [NAME]", "create a folder on a share",
         "Creates the folder NAME inside PATH (or PATH itself); its parent must exist.\n", {}, 1, 2,
         runShareMkdir},
        {"share", "rmdir", "PATH [NAME]", "remove a folder and everything in it from a share",
         "Removes the folder NAME inside PATH (or PATH itself) with everything in it.\n", {}, 1, 2,
         runShareRmdir},
        {"share", "url", "PATH", "print the smb:// URL form of a UNC path",
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
    }
    all.push_back(kVerbose);
    all.push_back(kHelp);
    return all;
}

void printOption(std::ostream& out, const HnrctlOption& o)
{
    std::string names = o.shortName ? std::string(o.shortName) + ", " + o.longName : std::string("    ") + o.longName;
    if (o.valueName)
        names += std::string(" ") + o.valueName;
    out << "  " << names;
    if (names.size() < 22)
        out << std::string(22 - names.size(), ' ');
    else
        out << "\n" << std::string(24, ' ');
    out << o.help << "\n";
}

void printMainHelp(std::ostream& out)
{
    out << "Usage: hnrctl [-v] <group> <command> [options] [operands]\n"
           "       hnrctl <group> <command> --help\n\n"
           "Works with the messages and network shares of the tessaline platform module.\n\n";
    std::string group;
    for (const HnrctlCommand& c : commands()) {
        if (group != c.group) {
            group = c.group;
            out << (group == "message" ? "Messages:\n" : "\nNetwork shares (SMB/CIFS):\n");
        }
        std::string synopsis = group + " " + c.name + " " + c.operands;
        out << "  " << synopsis;
        if (synopsis.size() < 30)
            out << std::string(30 - synopsis.size(), ' ');
        else
            out << "\n" << std::string(32, ' ');
        out << c.summary << "\n";
    }
    out << "\nOptions everywhere:\n";
    printOption(out, kVerbose);
    printOption(out, kHelp);
    out << "\n" << kShareIntro
        << "\nExit status: 0 success, 1 the operation failed (reason on standard error),\n"
           "2 wrong command line.\n";
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
    out << "\nRun 'hnrctl " << group << " <command> --help' for a command's options.\n";
}

void printCommandHelp(std::ostream& out, const HnrctlCommand& c)
{
    std::string summary = c.summary;
    summary[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(summary[0])));
    out << "Usage: hnrctl " << c.group << " " << c.name << " [options] " << c.operands << "\n\n"
        << summary << ".\n\n"
        << c.details;
    if (isShareCommand(c) && std::string(c.name) != "unc" && std::string(c.name) != "url")
        out << "\n" << kShareIntro;
    out << "\nOptions:\n";
    for (const HnrctlOption& o : optionsOf(c))
        printOption(out, o);
}

bool isKnownGroup(const std::string& group) { return group == "message" || group == "share"; }

} // namespace

int reportFailure(HnrctlContext& context, const std::string& command, const std::string& message)
{
    *context.err << "hnrctl: " << command << ": " << message << "\n";
    return kExitFailure;
}

int reportUsage(HnrctlContext& context, const std::string& command, const std::string& message)
{
    *context.err << "hnrctl: " << command << ": " << message << "\n"
                 << "Try 'hnrctl " << command << " --help'.\n";
    return kExitUsage;
}

int runHnrctl(const std::vector<std::string>& argsIn, HnrctlContext& context)
{
    // -v and --help may stand before the group as well.
    std::vector<std::string> args;
    bool verbose = false;
    bool help = false;
    size_t i = 0;
    for (; i < argsIn.size() && !argsIn[i].empty() && argsIn[i][0] == '-'; ++i) {
        if (argsIn[i] == "-v" || argsIn[i] == "--verbose") {
            verbose = true;
        } else if (argsIn[i] == "-h" || argsIn[i] == "--help") {
            help = true;
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
    if (group == "help") {
        printMainHelp(*context.out);
        return kExitOk;
    }
    if (!isKnownGroup(group)) {
        *context.err << "hnrctl: unknown command '" << group << "'\nTry 'hnrctl --help'.\n";
        return kExitUsage;
    }
    if (args.size() < 2 || args[1] == "-h" || args[1] == "--help") {
        bool asked = help || args.size() >= 2;
        printGroupHelp(asked ? *context.out : *context.err, group);
        return asked ? kExitOk : kExitUsage;
    }
    const HnrctlCommand* command = nullptr;
    for (const HnrctlCommand& c : commands()) {
        if (group == c.group && args[1] == c.name)
            command = &c;
    }
    std::string fullName = group + " " + args[1];
    if (!command) {
        *context.err << "hnrctl: unknown command '" << fullName << "'\nTry 'hnrctl " << group << " --help'.\n";
        return kExitUsage;
    }
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
    Logger::setLevel(verbose || line.has("--verbose") ? 3 : 0);
    int status = command->run(line, context);
    Logger::setLevel(savedLevel);
    return status;
}

} // namespace hnrctl
