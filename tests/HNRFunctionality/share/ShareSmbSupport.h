#pragma once
// Helpers of the share tests that run beside a real smbd (scripts/with-smbd).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "HNKErrorMessage.h"
#include "HNRFunctionality/fsutil/FsutilTestSupport.h"
#include "HNRFunctionality/share/ShareTestSupport.h"
#include "share/HNRShare.h"
#include "share/HNRShareParams.h"
#include "smbd/SmbServer.h"

namespace HNRTest {

inline std::string env(const char* name)
{
    const char* v = std::getenv(name);
    return v ? v : "";
}

// Records every progress value; checks they never go back and end at 100.
class ProgressRecorder : public HNR::HNRShareConnection::Progress {
public:
    void setProgress(double percent) override
    {
        values.push_back(percent);
        if (onProgress)
            onProgress(percent);
    }
    void expectMonotonicEndingAt100() const
    {
        ASSERT_FALSE(values.empty());
        for (std::size_t i = 1; i < values.size(); ++i)
            EXPECT_GE(values[i], values[i - 1]) << "at " << i;
        for (std::size_t i = 0; i + 1 < values.size(); ++i)
            EXPECT_LT(values[i], 100.0) << "at " << i;
        EXPECT_EQ(values.back(), 100.0);
    }
    void expectNever100() const
    {
        for (double v : values)
            EXPECT_LT(v, 100.0);
    }
    std::vector<double> values;
    std::function<void(double)> onProgress;
};

inline void writeBytes(const std::string& path, std::size_t size, unsigned seed)
{
    std::string data(size, '\0');
    std::uint32_t x = seed * 2654435761u + 1;
    for (char& c : data) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        c = static_cast<char>(x);
    }
    std::ofstream(path, std::ios::binary) << data;
}

inline std::uint64_t fnv1a(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::uint64_t h = 1469598103934665603ull;
    char buf[65536];
    while (in.read(buf, sizeof buf) || in.gcount() > 0) {
        for (std::streamsize i = 0; i < in.gcount(); ++i) {
            h ^= static_cast<unsigned char>(buf[i]);
            h *= 1099511628211ull;
        }
    }
    return h;
}

// Relative path -> checksum of every file below root ("/" marks folders).
inline std::map<std::string, std::uint64_t> checksums(const std::string& root)
{
    std::map<std::string, std::uint64_t> sums;
    namespace fs = boost::filesystem;
    for (fs::recursive_directory_iterator it(root), end; it != end; ++it) {
        std::string rel = it->path().string().substr(root.size() + 1);
        if (fs::is_directory(it->path()))
            sums[rel + "/"] = 0;
        else
            sums[rel] = fnv1a(it->path().string());
    }
    return sums;
}

// A tree three levels deep with 200 files: empty ones, names with blanks,
// names ending in "A". Returns its byte count.
inline std::uint64_t makeTree(const std::string& root)
{
    const std::vector<std::string> dirs = {root, root + "/sub one", root + "/sub one/deep A", root + "/other"};
    for (const std::string& d : dirs)
        ::mkdir(d.c_str(), 0755);
    std::uint64_t total = 0;
    for (int i = 0; i < 200; ++i) {
        const std::string& dir = dirs[static_cast<std::size_t>(i) % dirs.size()];
        std::string name;
        std::size_t size = static_cast<std::size_t>(i * 977) % 20000;
        if (i % 10 == 0) {
            name = "empty " + std::to_string(i);
            size = 0;
        } else if (i % 3 == 0) {
            name = "data" + std::to_string(i) + "A";
        } else {
            name = "file " + std::to_string(i) + ".bin";
        }
        writeBytes(dir + "/" + name, size, static_cast<unsigned>(i));
        total += size;
    }
    return total;
}

class SmbFixture : public SmbServerTest {
protected:
    void SetUp() override
    {
        SmbServerTest::SetUp();
        guestShare = smb.guestShare;
        guestDir = smb.guestDir;
        authShare = smb.authShare;
        authDir = smb.authDir;
        user = smb.user;
        password = smb.password;
    }
    void TearDown() override
    {
        for (const auto& line : log.lines())
            EXPECT_EQ(line.second.find(password), std::string::npos) << "a log line holds the password";
        EXPECT_EQ(getErrorMessage().find(password), std::string::npos) << "the error message holds the password";
    }
    HNR::HNRShareParams guest(const std::string& inside = "") const
    {
        return HNR::HNRShareParams(guestShare + inside, "", "");
    }
    HNR::HNRShareParams auth(const std::string& inside = "") const
    {
        return HNR::HNRShareParams(authShare + inside, user, password);
    }

    TempDir local;
    LogCapture log;
    std::string guestShare, guestDir, authShare, authDir, user, password;
};

} // namespace HNRTest
