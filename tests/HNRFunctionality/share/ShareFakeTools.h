#pragma once
// A fixture that puts recording stand-ins of mount, mount.cifs, umount.cifs
// and smbclient first on PATH (tests/scripts/fake-smb-tool), with a mount
// table kept by the stand-ins in a private folder.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "HNKErrorMessage.h"
#include "HNRFunctionality/fsutil/FsutilTestSupport.h"
#include "HNRFunctionality/share/ShareTestSupport.h"

namespace HNRTest {

inline std::vector<std::string> readLines(const std::string& file)
{
    std::vector<std::string> lines;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

inline bool isDir(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

class FakeToolsTest : public ::testing::Test {
protected:
    static constexpr const char* kPassword = "Pw-S3cret-91";

    void SetUp() override
    {
        bin = tmp / "bin";
        argvDir = tmp / "argv";
        mtab = tmp / "mtab";
        ASSERT_EQ(::mkdir(bin.c_str(), 0755), 0);
        ASSERT_EQ(::mkdir(argvDir.c_str(), 0755), 0);
        for (const char* tool : {"mount", "mount.cifs", "umount.cifs", "smbclient"})
            ASSERT_EQ(::symlink(HNR_TEST_SCRIPTS_DIR "/fake-smb-tool", (bin + "/" + tool).c_str()), 0);
        oldPath = std::getenv("PATH") ? std::getenv("PATH") : "";
        ::setenv("PATH", (bin + ":" + oldPath).c_str(), 1);
        ::setenv("HNR_FAKE_ARGV_DIR", argvDir.c_str(), 1);
        ::setenv("HNR_FAKE_MTAB", mtab.c_str(), 1);
        clearAnswers();
        // Every test starts without mount points.
        boost::system::error_code ec;
        for (int n = 0; n < 100; ++n)
            boost::filesystem::remove(mountRoot() + std::to_string(n), ec);
    }

    void TearDown() override
    {
        ::setenv("PATH", oldPath.c_str(), 1);
        ::unsetenv("HNR_FAKE_ARGV_DIR");
        ::unsetenv("HNR_FAKE_MTAB");
        clearAnswers();
        for (const auto& line : log.lines())
            EXPECT_EQ(line.second.find(kPassword), std::string::npos) << line.second;
        EXPECT_EQ(getErrorMessage().find(kPassword), std::string::npos) << getErrorMessage();
    }

    static std::string mountRoot() { return std::string(std::getenv("TMPDIR")) + "/mnt"; }

    static std::string envKey(std::string tool)
    {
        for (char& c : tool)
            c = c == '.' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return "HNR_FAKE_" + tool + "_";
    }

    static void clearAnswers()
    {
        for (const char* tool : {"mount", "mount.cifs", "umount.cifs", "smbclient"})
            for (const char* var : {"STDOUT", "STDERR", "STATUS"})
                ::unsetenv((envKey(tool) + var).c_str());
    }

    void answer(const std::string& tool, const std::string& out, const std::string& err, int status)
    {
        if (!out.empty()) {
            std::string file = tmp / (tool + ".out");
            std::ofstream(file) << out;
            ::setenv((envKey(tool) + "STDOUT").c_str(), file.c_str(), 1);
        }
        if (!err.empty())
            ::setenv((envKey(tool) + "STDERR").c_str(), err.c_str(), 1);
        ::setenv((envKey(tool) + "STATUS").c_str(), std::to_string(status).c_str(), 1);
    }

    std::vector<std::string> recorded(const std::string& tool) { return readLines(argvDir + "/" + tool + ".argv"); }
    std::vector<std::string> mounts() { return readLines(mtab + ".mounts"); }
    std::vector<std::string> umounts() { return readLines(mtab + ".umounts"); }
    std::vector<std::string> table() { return readLines(mtab); }
    bool ran(const std::string& tool) { return !recorded(tool).empty(); }
    // The -c script of the last smbclient run.
    std::string script()
    {
        std::vector<std::string> args = recorded("smbclient");
        for (std::size_t i = 0; i + 1 < args.size(); ++i)
            if (args[i] == "-c")
                return args[i + 1];
        return std::string();
    }

    bool logged(int level, const std::string& text) const
    {
        for (const auto& line : log.lines())
            if (line.first == level && line.second == text)
                return true;
        return false;
    }

    TempDir tmp;
    LogCapture log;
    std::string bin, argvDir, mtab, oldPath;
};

} // namespace HNRTest
