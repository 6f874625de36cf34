#pragma once
// Test helpers: whether the children a runner started are really gone.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <thread>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

// True when the calling process has no child left, running or zombie.
inline bool noChildren()
{
    int st;
    errno = 0;
    return ::waitpid(-1, &st, WNOHANG) == -1 && errno == ECHILD;
}

// The whole of a file, "" when it cannot be opened. Plain reads: a /proc
// file of a process that ends meanwhile fails with ESRCH, which a stream
// would throw as an exception.
inline std::string readAll(const std::string& path)
{
    std::string text;
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return text;
    char buf[4096];
    ssize_t got;
    while ((got = ::read(fd, buf, sizeof buf)) > 0)
        text.append(buf, static_cast<size_t>(got));
    ::close(fd);
    return text;
}

// State letter and parent of a process from its /proc stat line; false when gone.
inline bool processState(pid_t pid, char& state, int& parent)
{
    const std::string line = readAll("/proc/" + std::to_string(pid) + "/stat");
    size_t close = line.rfind(')');
    return close != std::string::npos && std::sscanf(line.c_str() + close + 1, " %c %d", &state, &parent) == 2;
}

// True when pid is gone or a zombie (killed, waiting for init to reap it),
// within five seconds.
inline bool processGone(pid_t pid)
{
    for (int i = 0; i < 100; ++i) {
        char state;
        int parent;
        if (!processState(pid, state, parent) || state == 'Z')
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

// Live (not zombie) processes whose parent is pid.
inline std::set<int> childrenOf(int pid)
{
    std::set<int> children;
    DIR* proc = ::opendir("/proc");
    if (!proc)
        return children;
    while (dirent* entry = ::readdir(proc)) {
        int candidate = std::atoi(entry->d_name);
        char state;
        int parent;
        if (candidate > 0 && processState(candidate, state, parent) && parent == pid && state != 'Z')
            children.insert(candidate);
    }
    ::closedir(proc);
    return children;
}
