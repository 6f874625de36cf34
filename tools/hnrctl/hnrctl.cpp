// hnrctl: see Hnrctl.h and "hnrctl --help".
#include "Hnrctl.h"

#include <cstdlib>
#include <iostream>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

// Reads one line from the terminal with echo off, as smbclient does.
bool promptOnTerminal(const std::string& login, std::string& password)
{
    int fd = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return false;
    if (!isatty(fd)) {
        ::close(fd);
        return false;
    }
    std::string prompt = "Password for [" + login + "]:";
    ssize_t ignored = ::write(fd, prompt.data(), prompt.size());
    (void)ignored;
    struct termios saved;
    bool restore = tcgetattr(fd, &saved) == 0;
    if (restore) {
        struct termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        quiet.c_lflag |= ECHONL;
        tcsetattr(fd, TCSAFLUSH, &quiet);
    }
    password.clear();
    char c;
    bool ok = false;
    for (;;) {
        ssize_t n = ::read(fd, &c, 1);
        if (n <= 0)
            break;
        if (c == '\n' || c == '\r') {
            ok = true;
            break;
        }
        password += c;
    }
    if (restore)
        tcsetattr(fd, TCSAFLUSH, &saved);
    ::close(fd);
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    hnrctl::HnrctlContext context;
    context.in = &std::cin;
    context.out = &std::cout;
    context.err = &std::cerr;
    context.errIsTerminal = isatty(STDERR_FILENO) == 1;
    if (const char* password = std::getenv("HNR_SMB_PASSWORD")) {
        context.hasPasswordEnv = true;
        context.passwordEnv = password;
    }
    context.promptPassword = promptOnTerminal;
    std::vector<std::string> args(argv + 1, argv + argc);
    int status = hnrctl::runHnrctl(args, context);
    std::cout.flush();
    return status;
}
