#pragma once
// Helpers of the share client's tests.
//
// The mount root (getTempDir() + "mnt") is fixed while the library loads, so
// TMPDIR must point at a private folder before the process starts: including
// this header makes the test program run itself again, once, with TMPDIR set
// to a fresh folder that is removed when the program exits.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

#include <boost/filesystem/operations.hpp>

namespace HNRTest {

inline void removePrivateTmpDir()
{
    const char* dir = std::getenv("HNR_TEST_PRIVATE_TMPDIR");
    if (dir && *dir) {
        boost::system::error_code ec;
        boost::filesystem::remove_all(dir, ec);
    }
}

inline bool reexecWithPrivateTmpDir()
{
    const char* done = std::getenv("HNR_TEST_PRIVATE_TMPDIR");
    if (done && *done && std::getenv("TMPDIR") && std::string(std::getenv("TMPDIR")) == done) {
        std::atexit(removePrivateTmpDir);
        return true;
    }
    std::string dir = "/tmp/hnr-share-test-XXXXXX";
    if (::mkdtemp(&dir[0]) == nullptr)
        std::abort();
    ::setenv("TMPDIR", dir.c_str(), 1);
    ::setenv("HNR_TEST_PRIVATE_TMPDIR", dir.c_str(), 1);
    std::ifstream in("/proc/self/cmdline", std::ios::binary);
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<std::string> args;
    for (std::size_t start = 0; start < all.size();) {
        std::size_t end = all.find('\0', start);
        if (end == std::string::npos)
            end = all.size();
        args.push_back(all.substr(start, end - start));
        start = end + 1;
    }
    std::vector<char*> argv;
    for (std::string& a : args)
        argv.push_back(&a[0]);
    argv.push_back(nullptr);
    ::execv("/proc/self/exe", argv.data());
    std::abort();
}

// Runs before main() of every program that includes this header.
static const bool kPrivateTmpDir = reexecWithPrivateTmpDir();

} // namespace HNRTest
