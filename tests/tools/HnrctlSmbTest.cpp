// hnrctl against a real smbd (run inside scripts/with-smbd): the built
// binary moves a small tree with names holding blanks to a share and back,
// measures and lists it, creates and removes folders, and is refused with a
// wrong password. No output of any run holds the password.
#include "tools/HnrctlTestSupport.h"
#include "smbd/SmbServer.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include <nlohmann/json.hpp>

#include <poll.h>
#include <pty.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

using namespace HNRTest;
namespace fs = boost::filesystem;

namespace {

class HnrctlSmbTest : public SmbServerTest {
protected:
    void SetUp() override
    {
        SmbServerTest::SetUp();
        share_ = smb.authShare;
        user_ = smb.user;
        password_ = smb.password;
        dir_ = fs::temp_directory_path() / fs::unique_path("hnrctl-smb-%%%%%%%%");
        fs::create_directories(dir_);
    }

    void TearDown() override
    {
        for (const HnrctlRun& run : runs_) {
            EXPECT_EQ(std::string::npos, run.out.find(password_)) << run.out;
            EXPECT_EQ(std::string::npos, run.err.find(password_)) << run.err;
        }
        boost::system::error_code ec;
        fs::remove_all(dir_, ec);
    }

    // The binary with -U and the password in HNR_SMB_PASSWORD.
    HnrctlRun run(std::vector<std::string> args, const std::string& password)
    {
        args.push_back("-U");
        args.push_back(user_);
        HnrctlRun r = runBinary(args, {{"HNR_SMB_PASSWORD", password}});
        runs_.push_back(r);
        return r;
    }
    HnrctlRun run(const std::vector<std::string>& args) { return run(args, password_); }

    std::string onShare(const std::string& name) const { return share_ + "\\" + name; }

    void writeFile(const fs::path& path, size_t size, char seed)
    {
        fs::create_directories(path.parent_path());
        std::ofstream out(path.string(), std::ios::binary);
        for (size_t i = 0; i < size; ++i)
            out.put(static_cast<char>(seed + i * 7 + i / 251));
    }

    std::string share_, user_, password_;
    fs::path dir_;
    std::vector<HnrctlRun> runs_;
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
    fs::path tree = dir_ / "my tree";
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

    fs::path back = dir_ / "back here";
    r = run({"share", "get", "--to", back.string(), onShare("hnrctl up\\my tree")});
    ASSERT_EQ(0, r.status) << r.err;
    expectProgressLines(r.err, "get");
    for (const char* name : {"big file.bin", "notes.txt", "sub folder/inner file.dat", "sub folder/deeper/x"})
        EXPECT_TRUE(contents(tree / name) == contents(back / "my tree" / name)) << name;

    r = run({"share", "rmdir", onShare("hnrctl up")});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("removed " + onShare("hnrctl up") + "\n", r.out);
    EXPECT_FALSE(fs::exists(fs::path(smb.authDir) / "hnrctl up"));
    r = run({"share", "check", "--file", onShare("hnrctl up")});
    EXPECT_EQ(1, r.status);
}

TEST_F(HnrctlSmbTest, ContentsOfAFolderAndGuestAccess)
{
    fs::path tree = dir_ / "t";
    writeFile(tree / "one", 10, '1');
    writeFile(tree / "two", 20, '2');
    // Guest share, no -U: the guest logon.
    std::string guest = smb.guestShare;
    HnrctlRun r = runBinary({"share", "mkdir", guest + "\\flat"}, {{"HNR_SMB_PASSWORD", ""}});
    ASSERT_EQ(0, r.status) << r.err;
    r = runBinary({"share", "put", "--contents", guest + "\\flat", tree.string()}, {{"HNR_SMB_PASSWORD", ""}});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_TRUE(fs::exists(fs::path(smb.guestDir) / "flat" / "one"));
    EXPECT_FALSE(fs::exists(fs::path(smb.guestDir) / "flat" / "t"));
    r = runBinary({"share", "size", guest + "\\flat", "one", "two"}, {});
    EXPECT_EQ("30\n", r.out);
    r = runBinary({"share", "rmdir", guest, "flat"}, {});
    EXPECT_EQ(0, r.status) << r.err;
}

TEST_F(HnrctlSmbTest, FolderErrorsKeepTheModulesMessages)
{
    HnrctlRun r = run({"share", "mkdir", share_, "twice"});
    ASSERT_EQ(0, r.status) << r.err;
    r = run({"share", "mkdir", share_, "twice"});
    EXPECT_EQ(1, r.status);
    EXPECT_NE(std::string::npos, r.err.find("directory already exist")) << r.err;
    EXPECT_EQ("", r.out);
    r = run({"share", "rmdir", share_, "twice"});
    EXPECT_EQ(0, r.status) << r.err;
    r = run({"share", "rmdir", share_, "twice"});
    EXPECT_EQ(1, r.status);
    EXPECT_NE(std::string::npos, r.err.find("directory does not exist")) << r.err;
}

TEST_F(HnrctlSmbTest, WrongPasswordIsALogonFailure)
{
    for (const char* cmd : {"check", "ls"}) {
        HnrctlRun r = run({"share", cmd, share_}, "Wrong-" + password_.substr(0, 3));
        EXPECT_EQ(1, r.status) << cmd;
        EXPECT_EQ("", r.out);
        EXPECT_NE(std::string::npos, r.err.find("Logon failure: unknown user name or bad password")) << r.err;
        // One line: the module's own error log lines stay quiet without -v.
        EXPECT_EQ(1, std::count(r.err.begin(), r.err.end(), '\n')) << r.err;
    }
    HnrctlRun r = run({"share", "check", share_});
    EXPECT_EQ(0, r.status) << r.err;
}

TEST_F(HnrctlSmbTest, PasswordFileServesAsWellAsTheEnvironment)
{
    fs::path file = dir_ / "pw";
    std::ofstream(file.string()) << password_ << "\n";
    HnrctlRun r = runBinary({"share", "check", "-U", user_, "--password-file", file.string(), share_},
                            {{"HNR_SMB_PASSWORD", ""}});
    runs_.push_back(r);
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("ok: the share of '" + share_ + "' answers\n", r.out);
}

TEST_F(HnrctlSmbTest, VerboseShowsTheModulesInformationLines)
{
    HnrctlRun quiet = run({"share", "check", share_});
    EXPECT_EQ(0, quiet.status);
    EXPECT_EQ("", quiet.err);
    HnrctlRun loud = run({"-v", "share", "check", share_});
    EXPECT_EQ(0, loud.status);
    EXPECT_NE(std::string::npos, loud.err.find("[smbclientApi] share '//127.0.0.1/auth'")) << loud.err;
}

namespace {

std::string slashForm(const std::string& unc)
{
    std::string s = unc;
    std::replace(s.begin(), s.end(), '\\', '/');
    return s;
}

} // namespace

// UNC, slash and smb:// forms are taken by every command, and a failure is
// one line naming the path as the user wrote it; -v adds the details.
TEST_F(HnrctlSmbTest, EveryPathFormWorksAndErrorsComeInTheUsersForm)
{
    const std::string slash = slashForm(share_);
    const std::string url = "smb:" + slash;

    HnrctlRun r = run({"share", "mkdir", url + "/forms"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("created " + url + "/forms\n", r.out);
    EXPECT_TRUE(fs::is_directory(fs::path(smb.authDir) / "forms"));

    // -p: every missing parent, and an existing folder is no error.
    for (int i = 0; i < 2; ++i) {
        r = run({"share", "mkdir", "-p", slash + "/forms/a/b"});
        ASSERT_EQ(0, r.status) << r.err;
        EXPECT_EQ("created " + slash + "/forms/a/b\n", r.out);
        EXPECT_EQ("", r.err);
    }
    EXPECT_TRUE(fs::is_directory(fs::path(smb.authDir) / "forms" / "a" / "b"));

    // Without -p an existing folder is a failure, in the form of the operand.
    r = run({"share", "mkdir", slash + "/forms/a/b"});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("", r.out);
    EXPECT_EQ("hnrctl: share mkdir: Can't create directory 'b' on share '" + slash +
                  "/forms/a': directory already exist\n",
              r.err);
    r = run({"share", "mkdir", share_ + "\\forms\\a\\b"});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("hnrctl: share mkdir: Can't create directory 'b' on share '" + share_ +
                  "\\forms\\a': directory already exist\n",
              r.err);

    r = run({"share", "ls", url + "/missing"});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("", r.out);
    EXPECT_EQ("hnrctl: share ls: " + url + "/missing: Path is not found\n", r.err);
    // The script and the module's log lines only with -v.
    r = run({"-v", "share", "ls", url + "/missing"});
    EXPECT_EQ(1, r.status);
    EXPECT_NE(std::string::npos, r.err.find("Failed execute command 'prompt off; ls'")) << r.err;
    EXPECT_NE(std::string::npos, r.err.find("[smbclientApi] ")) << r.err;

    r = run({"share", "size", url + "/forms"});
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("0\n", r.out);
    r = run({"share", "check", "--file", url + "/forms/a"});
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("ok: '" + url + "/forms/a' exists\n", r.out);

    // A URL with credentials would put the password on the command line.
    r = run({"share", "ls", "smb://dQ==:cA==@" + slash.substr(2)});
    EXPECT_EQ(2, r.status);
    EXPECT_NE(std::string::npos, r.err.find("with credentials is not taken on the command line")) << r.err;

    r = run({"share", "rmdir", url, "forms"});
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("removed " + url + "/forms\n", r.out);
}

// share ls sorts by name and sums up (not with --json); share size of the
// share root is everything on the share.
TEST_F(HnrctlSmbTest, ListingIsSortedAndSizeCoversTheShareRoot)
{
    fs::path tree = dir_ / "sorted";
    writeFile(tree / "b.txt", 5, 'b');
    writeFile(tree / "A.txt", 3, 'a');
    writeFile(tree / "c dir" / "x", 7, 'x');
    HnrctlRun r = run({"share", "put", "-q", share_, tree.string()});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("", r.err); // -q: no progress

    r = run({"share", "ls", share_ + "\\sorted"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("-              3  A.txt\n"
              "-              5  b.txt\n"
              "d              0  c dir\n"
              "2 file(s), 1 folder(s), 8 bytes in files\n",
              r.out);
    r = run({"share", "ls", share_ + "\\sorted", "*.TXT"});
    EXPECT_EQ("-              3  A.txt\n-              5  b.txt\n2 file(s), 0 folder(s), 8 bytes in files\n", r.out);

    r = run({"share", "ls", "--json", share_ + "\\sorted"});
    ASSERT_EQ(0, r.status) << r.err;
    nlohmann::json listing = nlohmann::json::parse(r.out);
    EXPECT_EQ(share_ + "\\sorted", listing["path"]);
    ASSERT_EQ(3u, listing["entries"].size());
    EXPECT_EQ("A.txt", listing["entries"][0]["name"]);
    EXPECT_EQ("file", listing["entries"][0]["type"]);
    EXPECT_EQ(3, listing["entries"][0]["size"]);
    EXPECT_EQ("c dir", listing["entries"][2]["name"]);
    EXPECT_EQ("directory", listing["entries"][2]["type"]);

    // The whole share, as on the server's disk (names beginning with '.' left out).
    std::uint64_t onDisk = 0;
    for (fs::recursive_directory_iterator it(smb.authDir), end; it != end; ++it) {
        if (it->path().filename().string()[0] == '.') {
            if (fs::is_directory(it->path()))
                it.disable_recursion_pending();
            continue;
        }
        if (fs::is_regular_file(it->path()))
            onDisk += fs::file_size(it->path());
    }
    EXPECT_GE(onDisk, 15u);
    r = run({"share", "size", share_});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(std::to_string(onDisk) + "\n", r.out);
    r = run({"share", "size", "--json", slashForm(share_) + "/sorted"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(nlohmann::json({{"path", slashForm(share_) + "/sorted"}, {"bytes", 15}}), nlohmann::json::parse(r.out));

    r = run({"share", "ls", share_});
    EXPECT_NE(std::string::npos, r.out.find("d              0  sorted\n")) << r.out;
    EXPECT_EQ(0, run({"share", "rmdir", share_, "sorted"}).status);
}

// -A FILE in smbclient's format; no password and no terminal is a usage error.
TEST_F(HnrctlSmbTest, AuthenticationFileServesAsSmbclientsDoes)
{
    const std::string file = (dir_ / "auth").string();
    std::ofstream(file) << "# for the backup share\nusername = " << user_ << "\npassword = " << password_ << "\n";
    HnrctlRun r = runBinary({"share", "check", "-A", file, share_}, {{"HNR_SMB_PASSWORD", ""}});
    runs_.push_back(r);
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("ok: the share of '" + share_ + "' answers\n", r.out);

    std::ofstream(file) << "username = " << user_ << "\npassword = not-" << password_ << "\n";
    r = runBinary({"share", "check", "-A", file, share_}, {{"HNR_SMB_PASSWORD", ""}});
    runs_.push_back(r);
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("hnrctl: share check: " + share_ + ": Logon failure: unknown user name or bad password\n", r.err);

    std::ofstream(file) << "user " << user_ << "\n";
    r = runBinary({"share", "check", "-A", file, share_}, {{"HNR_SMB_PASSWORD", ""}});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("hnrctl: share check: the authentication file '" + file +
                  "' does not read at line 1: expected 'username = ...', 'password = ...' or 'domain = ...'\n",
              r.err);

    // -U without any password source, standard input not a terminal.
    r = runBinary({"share", "check", "-U", user_, share_}, {{"HNR_SMB_PASSWORD", ""}});
    EXPECT_EQ(2, r.status);
    EXPECT_NE(std::string::npos, r.err.find("-U " + user_ + " needs a password")) << r.err;
}

// On a terminal the password is asked for without echo, as smbclient does.
TEST_F(HnrctlSmbTest, PasswordPromptOnATerminalDoesNotEcho)
{
    int master = -1;
    pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        unsetenv("HNR_SMB_PASSWORD");
        std::string share = slashForm(share_);
        execl(HNRCTL_PATH, HNRCTL_PATH, "share", "check", "-U", user_.c_str(), share.c_str(), (char*)nullptr);
        _exit(127);
    }
    // Everything the terminal shows; the password goes in once the prompt is there.
    std::string screen;
    bool typed = false;
    for (;;) {
        pollfd p = {master, POLLIN, 0};
        if (poll(&p, 1, 30000) <= 0)
            break;
        char buffer[512];
        ssize_t n = read(master, buffer, sizeof buffer);
        if (n <= 0)
            break; // EIO: the program has ended
        screen.append(buffer, static_cast<size_t>(n));
        if (!typed && screen.find("Password for [" + user_ + "]:") != std::string::npos) {
            std::string line = password_ + "\n";
            ASSERT_EQ(static_cast<ssize_t>(line.size()), write(master, line.data(), line.size()));
            typed = true;
        }
    }
    close(master);
    int wstatus = 0;
    ASSERT_EQ(pid, waitpid(pid, &wstatus, 0));
    EXPECT_TRUE(typed) << screen;
    EXPECT_TRUE(WIFEXITED(wstatus) && WEXITSTATUS(wstatus) == 0) << screen;
    EXPECT_NE(std::string::npos, screen.find("ok: the share of '" + slashForm(share_) + "' answers")) << screen;
    EXPECT_EQ(std::string::npos, screen.find(password_)) << "the password was echoed";
}

// SIGINT during a put: smbclient is killed and reaped, the file on the share
// stops growing, and hnrctl exits 130.
TEST_F(HnrctlSmbTest, InterruptingAPutStopsTheToolAndExits130)
{
    // Large and sparse: the transfer takes seconds, the local disk nothing.
    fs::path big = dir_ / "interrupt-me.bin";
    {
        std::ofstream out(big.string(), std::ios::binary);
        out.seekp(4LL * 1024 * 1024 * 1024 - 1);
        out.put('!');
    }
    fs::path errFile = dir_ / "put.err";
    const pid_t pid =
        spawnBinary({"share", "put", "-U", user_, share_, big.string()}, {}, "/dev/null", "/dev/null", errFile.string());
    ASSERT_GT(pid, 0);

    // Wait until bytes have reached the share.
    fs::path remote = fs::path(smb.authDir) / "interrupt-me.bin";
    boost::system::error_code ec;
    for (int i = 0; i < 600 && !(fs::exists(remote, ec) && fs::file_size(remote, ec) > 0); ++i)
        usleep(50 * 1000);
    ASSERT_GT(fs::file_size(remote, ec), 0u) << slurp(errFile.string());

    ASSERT_EQ(0, kill(pid, SIGINT));
    int wstatus = 0;
    ASSERT_EQ(pid, waitpid(pid, &wstatus, 0));
    ASSERT_TRUE(WIFEXITED(wstatus)) << "killed by signal " << WTERMSIG(wstatus);
    EXPECT_EQ(130, WEXITSTATUS(wstatus));
    std::string err = slurp(errFile.string());
    EXPECT_NE(std::string::npos, err.find("hnrctl: share put: cancelled\n")) << err;

    // No smbclient of this transfer is left.
    for (fs::directory_iterator it("/proc", ec), end; it != end; it.increment(ec)) {
        std::string cmdline = slurp((it->path() / "cmdline").string());
        if (cmdline.find("smbclient") != std::string::npos) {
            EXPECT_EQ(std::string::npos, cmdline.find(big.string())) << it->path();
        }
    }
    // The file on the share no longer grows, once the writes smbd had already
    // received when its client went have landed (two equal samples 200 ms apart).
    std::uint64_t size = fs::file_size(remote, ec);
    for (int i = 0; i < 50; ++i) {
        usleep(200 * 1000);
        std::uint64_t now = fs::file_size(remote, ec);
        if (now == size)
            break;
        size = now;
    }
    usleep(1500 * 1000);
    EXPECT_EQ(size, fs::file_size(remote, ec));
    EXPECT_LT(size, fs::file_size(big));
    fs::remove(remote, ec);
}
