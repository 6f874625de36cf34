// hnrctl's main(): signals and the terminal; the commands are in Hnrctl.h.
#include "Hnrctl.h"

#include "share/HNRCancellation.h"

#include <cstdlib>
#include <cstring>
#include <iostream>

#include <csignal>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

HNR::HNRCancellation g_cancellation;

// Only the async-signal-safe cancel: the operation on the main thread sees
// it, kills and reaps its tool, and returns.
void onSignal(int) { g_cancellation.cancel(); }

void catchStopSignals()
{
    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

// Reads one line from the terminal with echo off, as smbclient does.
bool promptOnTerminal(const std::string& login, std::string& password)
{
    if (!isatty(STDIN_FILENO))
        return false; // a script or a pipe: no one to ask
    int fd = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return false;
    if (!isatty(fd)) {
        ::close(fd);
        return false;
    }
    // Echo off before the prompt shows, so nothing typed after it echoes.
    struct termios saved;
    bool restore = tcgetattr(fd, &saved) == 0;
    if (restore) {
        struct termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        quiet.c_lflag |= ECHONL;
        tcsetattr(fd, TCSAFLUSH, &quiet);
    }
    std::string prompt = "Password for [" + login + "]:";
    ssize_t ignored = ::write(fd, prompt.data(), prompt.size());
    (void)ignored;
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
    context.cancellation = &g_cancellation;
    catchStopSignals();
    std::vector<std::string> args(argv + 1, argv + argc);
    int status = hnrctl::runHnrctl(args, context);
    std::cout.flush();
    return status;
}
