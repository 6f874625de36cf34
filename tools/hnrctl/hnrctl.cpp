// hnrctl: see Hnrctl.h and "hnrctl --help".
#include "Hnrctl.h"

#include <cstdlib>
#include <iostream>

#include <unistd.h>

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
    std::vector<std::string> args(argv + 1, argv + argc);
    int status = hnrctl::runHnrctl(args, context);
    std::cout.flush();
    return status;
}
