#include "fsutil/HNRAutoDirectory.h"

#include <cerrno>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "HNRFunctionality/fsutil/FsutilTestSupport.h"
#include "fsutil/HNRLocalFiles.h"

using HNR::HNRAutoDirectory;
using HNR::pathExists;

namespace {

void writeFile(const std::string& path)
{
    std::ofstream(path) << "x";
}

TEST(HNRAutoDirectoryTest, StartsEmptyAndRemovingNothingSucceeds)
{
    HNRAutoDirectory dir;
    EXPECT_EQ("", dir.getPath());
    EXPECT_TRUE(dir.remove());
    EXPECT_EQ("", dir.getPath());
}

TEST(HNRAutoDirectoryTest, CreatesDirectoryWithMode0777UnderUmask)
{
    HNRTest::TempDir tmp;
    const std::string path = tmp / "mnt0";
    mode_t old = ::umask(0);
    {
        HNRAutoDirectory dir;
        ASSERT_TRUE(dir.create(path));
        EXPECT_EQ(path, dir.getPath());
        struct stat st;
        ASSERT_EQ(0, ::stat(path.c_str(), &st));
        EXPECT_TRUE(S_ISDIR(st.st_mode));
        EXPECT_EQ(0777u, st.st_mode & 07777u);
    }
    ::umask(old);
    EXPECT_FALSE(pathExists(path)) << "the destructor removes the empty directory";
}

TEST(HNRAutoDirectoryTest, CreateFailsWithErrnoAndKeepsPathEmpty)
{
    HNRTest::TempDir tmp;
    HNRAutoDirectory dir;
    errno = 0;
    EXPECT_FALSE(dir.create(tmp / "missing/child"));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ("", dir.getPath());

    errno = 0;
    EXPECT_FALSE(dir.create(tmp.path()));
    EXPECT_EQ(EEXIST, errno);
    EXPECT_EQ("", dir.getPath());
    EXPECT_TRUE(pathExists(tmp.path())) << "an existing directory is never taken over";
}

TEST(HNRAutoDirectoryTest, CreateAgainReplacesTheHeldEmptyDirectory)
{
    HNRTest::TempDir tmp;
    HNRAutoDirectory dir;
    ASSERT_TRUE(dir.create(tmp / "a"));
    ASSERT_TRUE(dir.create(tmp / "b"));
    EXPECT_EQ(tmp / "b", dir.getPath());
    EXPECT_FALSE(pathExists(tmp / "a"));
    EXPECT_TRUE(pathExists(tmp / "b"));
}

TEST(HNRAutoDirectoryTest, CreateWhileHoldingNonEmptyDirectoryFailsBeforeCreatingAnything)
{
    HNRTest::TempDir tmp;
    HNRAutoDirectory dir;
    ASSERT_TRUE(dir.create(tmp / "held"));
    writeFile(tmp / "held/file");

    errno = 0;
    EXPECT_FALSE(dir.create(tmp / "next"));
    EXPECT_EQ(ENOTEMPTY, errno);
    EXPECT_FALSE(pathExists(tmp / "next"));
    EXPECT_EQ(tmp / "held", dir.getPath());
    EXPECT_TRUE(pathExists(tmp / "held/file"));

    ASSERT_EQ(0, ::unlink((tmp / "held/file").c_str()));
}

TEST(HNRAutoDirectoryTest, FailedRemoveKeepsPathAndDestructorRetries)
{
    HNRTest::TempDir tmp;
    const std::string path = tmp / "held";
    {
        HNRAutoDirectory dir;
        ASSERT_TRUE(dir.create(path));
        writeFile(path + "/file");

        errno = 0;
        EXPECT_FALSE(dir.remove());
        EXPECT_EQ(ENOTEMPTY, errno);
        EXPECT_EQ(path, dir.getPath());
        EXPECT_TRUE(pathExists(path));

        ASSERT_EQ(0, ::unlink((path + "/file").c_str()));
    }
    EXPECT_FALSE(pathExists(path));
}

TEST(HNRAutoDirectoryTest, RemoveOfDirectoryGoneElsewhereFailsAndKeepsPath)
{
    HNRTest::TempDir tmp;
    HNRAutoDirectory dir;
    ASSERT_TRUE(dir.create(tmp / "gone"));
    ASSERT_EQ(0, ::rmdir((tmp / "gone").c_str()));
    errno = 0;
    EXPECT_FALSE(dir.remove());
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(tmp / "gone", dir.getPath());
}

TEST(HNRAutoDirectoryTest, DestructorLeavesNonEmptyDirectoryAlone)
{
    HNRTest::TempDir tmp;
    const std::string path = tmp / "held";
    {
        HNRAutoDirectory dir;
        ASSERT_TRUE(dir.create(path));
        writeFile(path + "/file");
    }
    EXPECT_TRUE(pathExists(path + "/file"));
}

} // namespace
