// hnrctl against a real smbd (run inside scripts/with-smbd): the built
// binary moves a small tree with names holding blanks to a share and back,
// measures and lists it, creates and removes folders, and is refused with a
// wrong password. No output of any run holds the password.
#include "tools/HnrctlTestSupport.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

using namespace HNRTest;
namespace fs = boost::filesystem;

namespace {

std::string env(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

class HnrctlSmbTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(env("HNR_SMB_AUTH_SHARE").empty()) << "run inside scripts/with-smbd";
        m_share = env("HNR_SMB_AUTH_SHARE");
        m_user = env("HNR_SMB_USER");
        m_password = env("HNR_SMB_PASSWORD");
        m_dir = fs::temp_directory_path() / fs::unique_path("hnrctl-smb-%%%%%%%%");
        fs::create_directories(m_dir);
    }

    void TearDown() override
    {
        for (const HnrctlRun& run : m_runs) {
            EXPECT_EQ(std::string::npos, run.out.find(m_password)) << run.out;
            EXPECT_EQ(std::string::npos, run.err.find(m_password)) << run.err;
        }
        boost::system::error_code ec;
        fs::remove_all(m_dir, ec);
    }

    // The binary with -U and the password in HNR_SMB_PASSWORD.
    HnrctlRun run(std::vector<std::string> args, const std::string& password)
    {
        args.push_back("-U");
        args.push_back(m_user);
        HnrctlRun r = runBinary(args, {{"HNR_SMB_PASSWORD", password}});
        m_runs.push_back(r);
        return r;
    }
    HnrctlRun run(const std::vector<std::string>& args) { return run(args, m_password); }

    std::string onShare(const std::string& name) const { return m_share + "\\" + name; }

    void writeFile(const fs::path& path, size_t size, char seed)
    {
        fs::create_directories(path.parent_path());
        std::ofstream out(path.string(), std::ios::binary);
        for (size_t i = 0; i < size; ++i)
            out.put(static_cast<char>(seed + i * 7 + i / 251));
    }

    std::string m_share, m_user, m_password;
    fs::path m_dir;
    std::vector<HnrctlRun> m_runs;
};

// Every line of err is "label: N.N%  DONE of TOTAL bytes  RATE  H:MM:SS left",
// never decreasing, the first one 0.0 and the last one 100.0 with DONE the
// total.
void expectProgressLines(const std::string& err, const std::string& label)
{
    std::istringstream lines(err);
    std::string line;
    double last = -1;
    int count = 0;
    const std::regex shape(label + ": +([0-9]+\\.[0-9])%  ([0-9,]+) of ([0-9,]+) bytes  "
                                   "(--|[0-9]+\\.[0-9]{2}[kMG]?B/s)  ([0-9]+:[0-9]{2}:[0-9]{2}|-:--:--) left");
    std::string done, total;
    while (std::getline(lines, line)) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(line, m, shape)) << "not a progress line: '" << line << "'";
        double value = std::stod(m[1]);
        if (count == 0) {
            EXPECT_EQ(0.0, value) << err;
        }
        EXPECT_GT(value, last) << err;
        last = value;
        done = m[2];
        total = m[3];
        ++count;
    }
    EXPECT_GE(count, 2);
    EXPECT_EQ(100.0, last) << err;
    EXPECT_EQ(total, done) << err;
}

std::string contents(const fs::path& p) { return slurp(p.string()); }

} // namespace

TEST_F(HnrctlSmbTest, PutSizeListGetGiveBackTheSameBytes)
{
    fs::path tree = m_dir / "my tree";
    writeFile(tree / "big file.bin", 3 * 1024 * 1024 + 17, 'a');
    writeFile(tree / "notes.txt", 12, 'n');
    writeFile(tree / "sub folder" / "inner file.dat", 4096, 'z');
    writeFile(tree / "sub folder" / "deeper" / "x", 1, 'x');
    const std::uint64_t total = 3 * 1024 * 1024 + 17 + 12 + 4096 + 1;

    HnrctlRun r = run({"share", "mkdir", onShare("hnrctl up")});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("created " + onShare("hnrctl up") + "\n", r.out);

    r = run({"share", "put", onShare("hnrctl up"), tree.string()});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("put 1 item(s) into " + onShare("hnrctl up") + "\n", r.out);
    expectProgressLines(r.err, "put");

    r = run({"share", "size", onShare("hnrctl up\\my tree")});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(std::to_string(total) + "\n", r.out);
    r = run({"share", "size", onShare("hnrctl up\\my tree"), "notes.txt", "sub folder"});
    EXPECT_EQ(std::to_string(12 + 4096 + 1) + "\n", r.out);

    r = run({"share", "ls", onShare("hnrctl up\\my tree")});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_NE(std::string::npos, r.out.find("-        3145745  big file.bin\n")) << r.out;
    EXPECT_NE(std::string::npos, r.out.find("d              0  sub folder\n")) << r.out;
    EXPECT_NE(std::string::npos, r.out.find("2 file(s), 1 folder(s), 3145757 bytes in files\n")) << r.out;
    EXPECT_EQ(std::string::npos, r.out.find(" .\n"));

    fs::path back = m_dir / "back here";
    r = run({"share", "get", "--to", back.string(), onShare("hnrctl up\\my tree")});
    ASSERT_EQ(0, r.status) << r.err;
    expectProgressLines(r.err, "get");
    for (const char* name : {"big file.bin", "notes.txt", "sub folder/inner file.dat", "sub folder/deeper/x"})
        EXPECT_TRUE(contents(tree / name) == contents(back / "my tree" / name)) << name;

    r = run({"share", "rmdir", onShare("hnrctl up")});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("removed " + onShare("hnrctl up") + "\n", r.out);
    EXPECT_FALSE(fs::exists(fs::path(env("HNR_SMB_AUTH_DIR")) / "hnrctl up"));
    r = run({"share", "check", "--file", onShare("hnrctl up")});
    EXPECT_EQ(1, r.status);
}

TEST_F(HnrctlSmbTest, ContentsOfAFolderAndGuestAccess)
{
    fs::path tree = m_dir / "t";
    writeFile(tree / "one", 10, '1');
    writeFile(tree / "two", 20, '2');
    // Guest share, no -U: the guest logon.
    std::string guest = env("HNR_SMB_GUEST_SHARE");
    HnrctlRun r = runBinary({"share", "mkdir", guest + "\\flat"}, {{"HNR_SMB_PASSWORD", ""}});
    ASSERT_EQ(0, r.status) << r.err;
    r = runBinary({"share", "put", "--contents", guest + "\\flat", tree.string()}, {{"HNR_SMB_PASSWORD", ""}});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_TRUE(fs::exists(fs::path(env("HNR_SMB_GUEST_DIR")) / "flat" / "one"));
    EXPECT_FALSE(fs::exists(fs::path(env("HNR_SMB_GUEST_DIR")) / "flat" / "t"));
    r = runBinary({"share", "size", guest + "\\flat", "one", "two"}, {});
    EXPECT_EQ("30\n", r.out);
    r = runBinary({"share", "rmdir", guest, "flat"}, {});
    EXPECT_EQ(0, r.status) << r.err;
}

TEST_F(HnrctlSmbTest, FolderErrorsKeepTheModulesMessages)
{
    HnrctlRun r = run({"share", "mkdir", m_share, "twice"});
    ASSERT_EQ(0, r.status) << r.err;
    r = run({"share", "mkdir", m_share, "twice"});
    EXPECT_EQ(1, r.status);
    EXPECT_NE(std::string::npos, r.err.find("directory already exist")) << r.err;
    EXPECT_EQ("", r.out);
    r = run({"share", "rmdir", m_share, "twice"});
    EXPECT_EQ(0, r.status) << r.err;
    r = run({"share", "rmdir", m_share, "twice"});
    EXPECT_EQ(1, r.status);
    EXPECT_NE(std::string::npos, r.err.find("directory does not exist")) << r.err;
}

TEST_F(HnrctlSmbTest, WrongPasswordIsALogonFailure)
{
    for (const char* cmd : {"check", "ls"}) {
        HnrctlRun r = run({"share", cmd, m_share}, "Wrong-" + m_password.substr(0, 3));
        EXPECT_EQ(1, r.status) << cmd;
        EXPECT_EQ("", r.out);
        EXPECT_NE(std::string::npos, r.err.find("Logon failure: unknown user name or bad password")) << r.err;
        // One line: the module's own error log lines stay quiet without -v.
        EXPECT_EQ(1, std::count(r.err.begin(), r.err.end(), '\n')) << r.err;
    }
    HnrctlRun r = run({"share", "check", m_share});
    EXPECT_EQ(0, r.status) << r.err;
}

TEST_F(HnrctlSmbTest, PasswordFileServesAsWellAsTheEnvironment)
{
    fs::path file = m_dir / "pw";
    std::ofstream(file.string()) << m_password << "\n";
    HnrctlRun r = runBinary({"share", "check", "-U", m_user, "--password-file", file.string(), m_share},
                            {{"HNR_SMB_PASSWORD", ""}});
    m_runs.push_back(r);
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("ok: the share of '" + m_share + "' answers\n", r.out);
}

TEST_F(HnrctlSmbTest, VerboseShowsTheModulesInformationLines)
{
    HnrctlRun quiet = run({"share", "check", m_share});
    EXPECT_EQ(0, quiet.status);
    EXPECT_EQ("", quiet.err);
    HnrctlRun loud = run({"-v", "share", "check", m_share});
    EXPECT_EQ(0, loud.status);
    EXPECT_NE(std::string::npos, loud.err.find("[smbclientApi] share '//127.0.0.1/auth'")) << loud.err;
}
