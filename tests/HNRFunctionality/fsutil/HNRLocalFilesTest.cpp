#include "fsutil/HNRLocalFiles.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "HNKErrorMessage.h"
#include "HNRFunctionality/fsutil/FsutilTestSupport.h"

using HNR::checkFilesLocal;
using HNR::getDirFreeSpace;
using HNR::getSizeRecursiveLocal;
using HNR::pathExists;
using HNRTest::LogCapture;
using HNRTest::TempDir;

namespace {

const char kUntouched[] = "previous message";

void writeFile(const std::string& path, std::size_t bytes)
{
    std::ofstream out(path, std::ios::binary);
    out << std::string(bytes, 'z');
}

void makeDir(const std::string& path)
{
    ASSERT_EQ(0, ::mkdir(path.c_str(), 0755)) << path;
}

void makeLink(const std::string& target, const std::string& link)
{
    ASSERT_EQ(0, ::symlink(target.c_str(), link.c_str())) << link;
}

std::uint64_t statfsFree(const std::string& path)
{
    struct statfs st;
    EXPECT_EQ(0, ::statfs(path.c_str(), &st));
    return static_cast<std::uint64_t>(st.f_bfree) * static_cast<std::uint64_t>(st.f_bsize);
}

std::string loopMessage()
{
    return std::strerror(ELOOP);
}

// ---- getDirFreeSpace ----

TEST(HNRLocalFilesTest, FreeSpaceMatchesFreeBlocksIncludingReserved)
{
    TempDir tmp;
    // Other processes write to the same disk: retry until the space held still.
    bool compared = false;
    for (int attempt = 0; attempt < 50 && !compared; ++attempt) {
        std::uint64_t before = statfsFree(tmp.path());
        std::uint64_t measured = getDirFreeSpace(tmp.path());
        std::uint64_t after = statfsFree(tmp.path());
        if (before == after) {
            EXPECT_EQ(before, measured);
            compared = true;
        }
    }
    EXPECT_TRUE(compared) << "free space never held still";
    EXPECT_GT(getDirFreeSpace(tmp.path()), 0u);
}

TEST(HNRLocalFilesTest, FreeSpaceOfMissingDirectoryIsZero)
{
    TempDir tmp;
    EXPECT_EQ(0u, getDirFreeSpace(tmp / "missing"));
}

TEST(HNRLocalFilesTest, FreeSpaceOfOneMebibyteTmpfs)
{
    // A private mount namespace keeps the tmpfs out of everyone else's sight.
    if (::unshare(CLONE_NEWNS) != 0)
        GTEST_SKIP() << "cannot unshare the mount namespace: " << std::strerror(errno);
    ASSERT_EQ(0, ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr)) << std::strerror(errno);
    TempDir tmp;
    const std::string mnt = tmp / "tmpfs";
    makeDir(mnt);
    ASSERT_EQ(0, ::mount("tmpfs", mnt.c_str(), "tmpfs", 0, "size=1m")) << std::strerror(errno);

    EXPECT_EQ(1048576u, getDirFreeSpace(mnt));
    writeFile(mnt + "/data", 65536);
    EXPECT_EQ(1048576u - 65536u, getDirFreeSpace(mnt));
    EXPECT_EQ(1048576u - 65536u, getDirFreeSpace(mnt + "/data"));

    ASSERT_EQ(0, ::umount(mnt.c_str())) << std::strerror(errno);
}

// ---- getSizeRecursiveLocal ----

TEST(HNRLocalFilesTest, MeasuresRealTree)
{
    TempDir tmp;
    const std::string root = tmp / "tree";
    makeDir(root);
    writeFile(root + "/empty", 0);
    writeFile(root + "/one", 1000);
    makeDir(root + "/sub");
    makeDir(root + "/sub/deeper");
    makeDir(root + "/sub/nothing");
    writeFile(root + "/sub/two", 3000);
    writeFile(root + "/sub/deeper/three", 70000);
    makeLink(root + "/absent", root + "/sub/dangling");
    // Sparse: 10 MiB apparent, almost nothing allocated.
    int fd = ::open((root + "/sparse").c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(0, ::ftruncate(fd, 10 * 1048576));
    ::close(fd);

    std::uint64_t total = 99;
    ASSERT_TRUE(getSizeRecursiveLocal({root}, total));
    EXPECT_EQ(1000u + 3000u + 70000u + 10u * 1048576u, total);
}

TEST(HNRLocalFilesTest, SumsEveryListedPath)
{
    TempDir tmp;
    writeFile(tmp / "a", 10);
    makeDir(tmp / "d");
    writeFile(tmp / "d/b", 20);
    std::uint64_t total = 0;
    ASSERT_TRUE(getSizeRecursiveLocal({tmp / "a", tmp / "d", tmp / "missing"}, total));
    EXPECT_EQ(30u, total);
}

TEST(HNRLocalFilesTest, EmptyListMeasuresZeroAndResetsTotal)
{
    std::uint64_t total = 12345;
    EXPECT_TRUE(getSizeRecursiveLocal({}, total));
    EXPECT_EQ(0u, total);
}

TEST(HNRLocalFilesTest, EmptyDirectoryMeasuresZero)
{
    TempDir tmp;
    makeDir(tmp / "empty");
    std::uint64_t total = 7;
    EXPECT_TRUE(getSizeRecursiveLocal({tmp / "empty"}, total));
    EXPECT_EQ(0u, total);
}

TEST(HNRLocalFilesTest, MissingPathMeasuresZeroWithoutError)
{
    TempDir tmp;
    LogCapture log;
    setErrorMessage(kUntouched);
    std::uint64_t total = 7;
    EXPECT_TRUE(getSizeRecursiveLocal({tmp / "missing"}, total));
    EXPECT_EQ(0u, total);
    EXPECT_EQ(kUntouched, getErrorMessage());
    EXPECT_TRUE(log.lines().empty());
}

TEST(HNRLocalFilesTest, PathThroughRegularFileMeasuresAsMissing)
{
    TempDir tmp;
    writeFile(tmp / "file", 5);
    std::uint64_t total = 7;
    EXPECT_TRUE(getSizeRecursiveLocal({tmp / "file/child"}, total));
    EXPECT_EQ(0u, total);
}

TEST(HNRLocalFilesTest, DanglingSymlinkAndFifoMeasureZero)
{
    TempDir tmp;
    makeLink(tmp / "absent", tmp / "dangling");
    ASSERT_EQ(0, ::mkfifo((tmp / "fifo").c_str(), 0644));
    std::uint64_t total = 7;
    EXPECT_TRUE(getSizeRecursiveLocal({tmp / "dangling", tmp / "fifo"}, total));
    EXPECT_EQ(0u, total);
}

TEST(HNRLocalFilesTest, SymlinkToFileCountsItsTarget)
{
    TempDir tmp;
    makeDir(tmp / "d");
    writeFile(tmp / "target", 40);
    makeLink(tmp / "target", tmp / "d/link");
    std::uint64_t total = 0;
    ASSERT_TRUE(getSizeRecursiveLocal({tmp / "d"}, total));
    EXPECT_EQ(40u, total);
}

TEST(HNRLocalFilesTest, RootReadsDirectoryWithoutPermissions)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root";
    TempDir tmp;
    makeDir(tmp / "locked");
    writeFile(tmp / "locked/f", 12);
    ASSERT_EQ(0, ::chmod((tmp / "locked").c_str(), 0));
    std::uint64_t total = 0;
    EXPECT_TRUE(getSizeRecursiveLocal({tmp / "locked"}, total));
    EXPECT_EQ(12u, total);
    ::chmod((tmp / "locked").c_str(), 0755);
}

TEST(HNRLocalFilesTest, SymlinkLoopIsFilesystemError)
{
    TempDir tmp;
    const std::string loop = tmp / "loop";
    makeLink(loop, loop);
    LogCapture log;
    std::uint64_t total = 7;
    EXPECT_FALSE(getSizeRecursiveLocal({loop}, total));
    const std::string message = "Can't get path size for '" + loop + "': " + loopMessage();
    EXPECT_EQ(message, getErrorMessage());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(1, log.lines()[0].first);
    EXPECT_EQ("[getSizeRecursiveLocal] " + message, log.lines()[0].second);
}

TEST(HNRLocalFilesTest, SymlinkLoopInsideTreeStopsTheWalk)
{
    TempDir tmp;
    makeDir(tmp / "tree");
    writeFile(tmp / "tree/f", 3);
    makeLink(tmp / "tree/loop", tmp / "tree/loop");
    writeFile(tmp / "after", 5);
    LogCapture log;
    std::uint64_t total = 0;
    EXPECT_FALSE(getSizeRecursiveLocal({tmp / "tree", tmp / "after"}, total));
    EXPECT_EQ("Can't get path size for '" + (tmp / "tree") + "': " + loopMessage(), getErrorMessage());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("[getSizeRecursiveLocal] " + getErrorMessage(), log.lines()[0].second);
}

// ---- checkFilesLocal ----

TEST(HNRLocalFilesTest, CheckFilesAcceptsExistingFilesAndDirectories)
{
    TempDir tmp;
    writeFile(tmp / "f", 1);
    makeDir(tmp / "d");
    LogCapture log;
    EXPECT_TRUE(checkFilesLocal({tmp / "f", tmp / "d"}));
    EXPECT_TRUE(checkFilesLocal({}));
    EXPECT_TRUE(log.lines().empty());
}

TEST(HNRLocalFilesTest, CheckFilesReportsFirstMissingFile)
{
    TempDir tmp;
    writeFile(tmp / "f", 1);
    makeLink(tmp / "absent", tmp / "dangling");
    LogCapture log;
    EXPECT_FALSE(checkFilesLocal({tmp / "f", tmp / "missing", tmp / "dangling"}));
    const std::string message = "File '" + (tmp / "missing") + "' does not exist";
    EXPECT_EQ(message, getErrorMessage());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(1, log.lines()[0].first);
    EXPECT_EQ("[checkFilesLocal] " + message, log.lines()[0].second);

    EXPECT_FALSE(checkFilesLocal({tmp / "dangling"}));
    EXPECT_EQ("File '" + (tmp / "dangling") + "' does not exist", getErrorMessage());
}

TEST(HNRLocalFilesTest, CheckFilesLogsFilesystemErrorWithoutMessage)
{
    TempDir tmp;
    const std::string loop = tmp / "loop";
    makeLink(loop, loop);
    LogCapture log;
    setErrorMessage(kUntouched);
    EXPECT_FALSE(checkFilesLocal({loop, tmp / "missing"}));
    EXPECT_EQ(kUntouched, getErrorMessage());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(1, log.lines()[0].first);
    EXPECT_EQ("[checkFilesLocal] Can't check files locally for '" + loop + "': " + loopMessage(),
              log.lines()[0].second);
}

// ---- pathExists ----

TEST(HNRLocalFilesTest, PathExistsWhenStatSucceeds)
{
    TempDir tmp;
    writeFile(tmp / "f", 0);
    makeLink(tmp / "absent", tmp / "dangling");
    makeLink(tmp / "f", tmp / "link");
    EXPECT_TRUE(pathExists(tmp.path()));
    EXPECT_TRUE(pathExists(tmp / "f"));
    EXPECT_TRUE(pathExists(tmp / "link"));
    EXPECT_FALSE(pathExists(tmp / "missing"));
    EXPECT_FALSE(pathExists(tmp / "dangling"));
    EXPECT_FALSE(pathExists(tmp / "f/child"));
}

} // namespace
