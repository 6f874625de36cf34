// Peak memory of one message round trip against the size of its text.
//
//   bench_message_memory [N...]        (default 1000 10000 100000)
//
// Three workloads: pugixml parsing and serializing the text; the round trip
// with the request held until the answer is written ("held"); the round trip
// with the request released once it has been read ("released").
//
// Each measurement runs in a fresh process (this program started again with
// --child), so no heap the allocator kept from an earlier run hides or
// inflates the figure. The child reads the text from a file into a string of
// exactly its size, resets the kernel's peak-RSS mark (/proc/self/clear_refs,
// "5"), notes its resident size, runs the workload once and reports
// VmHWM - baseline: the memory the workload itself needed on top of the text.
// Each figure is the median of three such processes.
#include "BenchMessageRoundTrip.h"
#include "BenchMessageText.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

extern char** environ;

namespace {

// A line of /proc/self/status in kB ("VmRSS", "VmHWM").
long statusKb(const char* key)
{
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line)) {
        if (line.compare(0, std::strlen(key), key) == 0 && line[std::strlen(key)] == ':')
            return std::atol(line.c_str() + std::strlen(key) + 1);
    }
    return -1;
}

int child(const std::string& mode, const std::string& file)
{
    std::ifstream in(file, std::ios::binary | std::ios::ate);
    std::string text(static_cast<size_t>(in.tellg()), '\0');
    in.seekg(0);
    in.read(&text[0], static_cast<std::streamsize>(text.size()));
    {
        std::ofstream reset("/proc/self/clear_refs");
        reset << "5";
    }
    long base = statusKb("VmRSS");
    std::string out = mode == "pugixml" ? HNRBench::pugixmlRoundTrip(text)
                                        : HNRBench::roundTrip(text, mode == "released");
    long peak = statusKb("VmHWM");
    std::printf("%ld %zu\n", (peak - base) * 1024, out.size());
    return 0;
}

// Runs this program with --child mode file; the extra bytes it reports.
long measure(const std::string& mode, const std::string& file)
{
    std::string outFile = file + "." + mode + ".out";
    std::vector<std::string> args = {"/proc/self/exe", "--child", mode, file};
    std::vector<char*> argv;
    for (std::string& a : args)
        argv.push_back(&a[0]);
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = 0;
    int status = -1;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0)
        waitpid(pid, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    long bytes = -1;
    std::ifstream result(outFile);
    result >> bytes;
    std::remove(outFile.c_str());
    return status == 0 ? bytes : -1;
}

long medianOfThree(const std::string& mode, const std::string& file)
{
    std::vector<long> v;
    for (int i = 0; i < 3; ++i) {
        long b = measure(mode, file);
        if (b < 0)
            return -1;
        v.push_back(b);
    }
    std::sort(v.begin(), v.end());
    return v[1];
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::string(argv[1]) == "--child")
        return child(argv[2], argv[3]);
    std::vector<size_t> counts;
    for (int i = 1; i < argc; ++i)
        counts.push_back(std::strtoul(argv[i], nullptr, 10));
    if (counts.empty())
        counts = {1000, 10000, 100000};
    char dir[] = "/tmp/hnr-bench-memory-XXXXXX";
    if (!mkdtemp(dir))
        return 1;
    std::printf("%8s %12s %14s %8s %14s %8s %14s %8s\n", "devices", "text_bytes", "pugixml_extra", "x_text",
                "held_extra", "x_text", "released_extra", "x_text");
    int failures = 0;
    for (size_t n : counts) {
        std::string file = std::string(dir) + "/config-" + std::to_string(n) + ".xml";
        std::string text = HNRBench::configurationWithDevices(n);
        std::ofstream(file, std::ios::binary) << text;
        long pugi = medianOfThree("pugixml", file);
        long held = medianOfThree("held", file);
        long released = medianOfThree("released", file);
        if (pugi < 0 || held < 0 || released < 0)
            ++failures;
        double size = static_cast<double>(text.size());
        std::printf("%8zu %12zu %14ld %8.2f %14ld %8.2f %14ld %8.2f\n", n, text.size(), pugi, pugi / size, held,
                    held / size, released, released / size);
        std::fflush(stdout);
        std::remove(file.c_str());
    }
    rmdir(dir);
    return failures == 0 ? 0 : 1;
}
