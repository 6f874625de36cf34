#pragma once
// Runs hnrctl in-process (runHnrctl) or as the built binary (HNRCTL_PATH),
// capturing exit status, standard output and standard error.
#include "Hnrctl.h"

#include <boost/filesystem.hpp>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace HNRTest {

struct HnrctlRun {
    int status = -1;
    std::string out;
    std::string err;
};

// In-process; password is what HNR_SMB_PASSWORD would hold (unset when null).
inline HnrctlRun runInProcess(const std::vector<std::string>& args, const char* password = nullptr,
                              const std::string& input = "")
{
    std::istringstream in(input);
    std::ostringstream out, err;
    hnrctl::HnrctlContext context;
    context.in = &in;
    context.out = &out;
    context.err = &err;
    if (password) {
        context.hasPasswordEnv = true;
        context.passwordEnv = password;
    }
    HnrctlRun run;
    run.status = hnrctl::runHnrctl(args, context);
    run.out = out.str();
    run.err = err.str();
    return run;
}

inline std::string slurp(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Starts the binary as a child process and returns its pid (0 when it could
// not start). env: variables to set (an empty value unsets); its standard
// input comes from stdinFile, its output goes to outFile and errFile.
inline pid_t spawnBinary(const std::vector<std::string>& args, const std::map<std::string, std::string>& env,
                         const std::string& stdinFile, const std::string& outFile, const std::string& errFile)
{
    std::vector<std::string> envStrings;
    for (char** e = environ; *e; ++e) {
        std::string entry = *e;
        std::string name = entry.substr(0, entry.find('='));
        if (env.count(name) == 0)
            envStrings.push_back(entry);
    }
    for (const auto& kv : env) {
        if (!kv.second.empty())
            envStrings.push_back(kv.first + "=" + kv.second);
    }
    std::vector<char*> envp;
    for (std::string& s : envStrings)
        envp.push_back(&s[0]);
    envp.push_back(nullptr);

    std::vector<std::string> argvStrings;
    argvStrings.push_back(HNRCTL_PATH);
    argvStrings.insert(argvStrings.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& s : argvStrings)
        argv.push_back(&s[0]);
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, stdinFile.c_str(), O_RDONLY, 0);
    const int outFlags = outFile == "/dev/null" ? O_WRONLY : O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, 1, outFile.c_str(), outFlags, 0600);
    const int errFlags = errFile == "/dev/null" ? O_WRONLY : O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, 2, errFile.c_str(), errFlags, 0600);
    pid_t pid = 0;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data()) != 0)
        pid = 0;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// The binary as a child process, run to its end. env: variables to set (an
// empty value unsets); stdinFile: its standard input ("/dev/null" by default).
inline HnrctlRun runBinary(const std::vector<std::string>& args, const std::map<std::string, std::string>& env = {},
                           const std::string& stdinFile = "/dev/null")
{
    boost::filesystem::path dir = boost::filesystem::temp_directory_path() /
                                  boost::filesystem::unique_path("hnrctl-run-%%%%%%%%");
    boost::filesystem::create_directories(dir);
    std::string outFile = (dir / "out").string(), errFile = (dir / "err").string();

    HnrctlRun run;
    const pid_t pid = spawnBinary(args, env, stdinFile, outFile, errFile);
    if (pid > 0) {
        int wstatus = 0;
        if (waitpid(pid, &wstatus, 0) == pid)
            run.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : 128 + WTERMSIG(wstatus);
    }
    run.out = slurp(outFile);
    run.err = slurp(errFile);
    boost::system::error_code ec;
    boost::filesystem::remove_all(dir, ec);
    return run;
}

} // namespace HNRTest
