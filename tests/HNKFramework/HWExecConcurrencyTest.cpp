// Separate runner objects on separate threads (also built with ThreadSanitizer).
#include "GenExec.h"

#include "HNKFramework/ProcessChecks.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace {

std::vector<std::string> drainLines(HWExec& exec)
{
    std::vector<std::string> lines;
    int finished = 1;
    auto start = std::chrono::steady_clock::now();
    while (finished && std::chrono::steady_clock::now() - start < std::chrono::seconds(60)) {
        std::string line = exec.getsWTimeout(6, &finished);
        if (finished && !line.empty()) // "" is a pass without a line
            lines.push_back(line);
    }
    return lines;
}


TEST(HWExecConcurrencyTest, SeparateObjectsRunConcurrentlyOnSeparateThreads)
{
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &failures] {
            for (int i = 0; i < 15; ++i) {
                HWExec exec;
                std::string word = "t" + std::to_string(t) + "i" + std::to_string(i);
                if (i % 2 == 0) {
                    if (exec.execWithError({"echo", word}, 0, 20000) != 0 || exec.getOutput(4) != word + "\n")
                        ++failures[t];
                } else {
                    if (exec.start({"echo", word}, 6) != 0 || drainLines(exec) != std::vector<std::string>{word} ||
                        exec.wait() != 0)
                        ++failures[t];
                }
            }
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(failures, std::vector<int>(4, 0));
    EXPECT_TRUE(noChildren());
}

} // namespace
