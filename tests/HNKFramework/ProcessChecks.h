#pragma once
// Test helpers: whether the children a runner started are really gone.
#include <cerrno>
#include <chrono>
#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

// True when the calling process has no child left, running or zombie.
inline bool noChildren()
{
    int st;
    errno = 0;
    return ::waitpid(-1, &st, WNOHANG) == -1 && errno == ECHILD;
}

// True when pid is gone or a zombie (killed, waiting for init to reap it),
// within five seconds. /proc is read with plain reads: the process may end
// in the middle of one.
inline bool processGone(pid_t pid)
{
    const std::string path = "/proc/" + std::to_string(pid) + "/stat";
    for (int i = 0; i < 100; ++i) {
        int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            return true;
        char buf[512];
        ssize_t n = ::read(fd, buf, sizeof buf - 1);
        ::close(fd);
        if (n <= 0)
            return true;
        std::string line(buf, static_cast<size_t>(n));
        size_t close = line.rfind(')');
        if (close != std::string::npos && close + 2 < line.size() && line[close + 2] == 'Z')
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}
