#pragma once
// Test helpers: a private temporary directory removed with its contents, and
// a capture of every logger line.
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include "Logger.h"

namespace HNRTest {

class TempDir {
public:
    TempDir()
    {
        std::string pattern = "/tmp/hnr-fsutil-XXXXXX";
        if (::mkdtemp(&pattern[0]) == nullptr)
            ADD_FAILURE() << "mkdtemp failed";
        else
            path_ = pattern;
    }
    ~TempDir()
    {
        if (path_.empty())
            return;
        boost::system::error_code ec;
        boost::filesystem::remove_all(path_, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

class LogCapture {
public:
    LogCapture()
    {
        Logger::setSink([this](int level, const std::string& line) { lines_.emplace_back(level, line); });
    }
    ~LogCapture() { Logger::setSink(Logger::Sink()); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<std::pair<int, std::string>>& lines() const { return lines_; }

private:
    std::vector<std::pair<int, std::string>> lines_;
};

} // namespace HNRTest
