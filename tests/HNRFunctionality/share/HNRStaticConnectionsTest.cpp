// The connection registry against the recording stand-ins of the mount tools.
#include "share/HNRStaticConnections.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HNKErrorMessage.h"
#include "HNRFunctionality/share/ShareFakeTools.h"

namespace {

using HNR::HNRGetConnections;
using HNR::HNRShareParams;
using HNR::HNRStaticConnections;
using HNRTest::isDir;

class HNRStaticConnectionsTest : public HNRTest::FakeToolsTest {
protected:
    void TearDown() override
    {
        {
            HNRGetConnections registry;
            registry->clear();
        }
        FakeToolsTest::TearDown();
    }
    HNRShareParams params(const std::string& path) { return HNRShareParams(path, "user", kPassword); }
    std::size_t entries()
    {
        HNRGetConnections registry;
        return registry->size();
    }
};

TEST_F(HNRStaticConnectionsTest, TwoKeysOnOneShareMountOnce)
{
    std::string local;
    ASSERT_TRUE(HNRStaticConnections::add(params("\\\\srv\\share"), "a", &local)) << getErrorMessage();
    EXPECT_EQ(local, mountRoot() + "0");
    // The second caller's path lies inside the same mount; its credentials are not used.
    ASSERT_TRUE(HNRStaticConnections::add(HNRShareParams("\\\\srv\\share\\", "other", "pw"), "b", &local))
        << getErrorMessage();
    EXPECT_EQ(local, mountRoot() + "0");
    EXPECT_EQ(mounts().size(), 1u);
    EXPECT_TRUE(HNRStaticConnections::isExist("a"));
    EXPECT_TRUE(HNRStaticConnections::isExist("b"));

    HNRStaticConnections::remove("a");
    EXPECT_FALSE(HNRStaticConnections::isExist("a"));
    EXPECT_TRUE(umounts().empty());
    EXPECT_EQ(table().size(), 1u);

    HNRStaticConnections::remove("b");
    EXPECT_FALSE(HNRStaticConnections::isExist("b"));
    EXPECT_EQ(umounts(), (std::vector<std::string>{mountRoot() + "0"}));
    EXPECT_TRUE(table().empty());
    EXPECT_FALSE(isDir(mountRoot() + "0"));
}

TEST_F(HNRStaticConnectionsTest, LocalPathOfAFolderInsideTheShare)
{
    const std::string theirs = tmp / "theirs";
    ASSERT_EQ(::mkdir(theirs.c_str(), 0755), 0);
    ASSERT_EQ(::mkdir((theirs + "/vm").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir((theirs + "/vm/disk").c_str(), 0755), 0);
    std::ofstream(mtab) << "//srv/share on " << theirs << " type cifs (rw)\n";
    std::string local;
    ASSERT_TRUE(HNRStaticConnections::add(params("\\\\srv\\share\\vm"), "k", &local)) << getErrorMessage();
    EXPECT_EQ(local, theirs + "/vm");
    ASSERT_TRUE(HNRStaticConnections::add(params("\\\\srv\\share\\vm\\disk\\"), "k2", &local)) << getErrorMessage();
    EXPECT_EQ(local, theirs + "/vm/disk");
    HNRStaticConnections::remove("k");
    HNRStaticConnections::remove("k2");
    EXPECT_FALSE(ran("mount.cifs"));
    EXPECT_FALSE(ran("umount.cifs"));
}

TEST_F(HNRStaticConnectionsTest, SameKeyTwiceAndOneRemove)
{
    ASSERT_TRUE(HNRStaticConnections::add(params("\\\\srv\\share"), "k")) << getErrorMessage();
    ASSERT_TRUE(HNRStaticConnections::add(params("\\\\srv\\other"), "k")) << getErrorMessage();
    EXPECT_EQ(entries(), 2u);
    EXPECT_EQ(mounts().size(), 2u);
    HNRStaticConnections::remove("k");
    EXPECT_EQ(entries(), 0u);
    EXPECT_FALSE(HNRStaticConnections::isExist("k"));
    EXPECT_EQ(umounts().size(), 2u);
    EXPECT_TRUE(table().empty());
}

TEST_F(HNRStaticConnectionsTest, FailedConnectLeavesTheRegistryUnchanged)
{
    ASSERT_TRUE(HNRStaticConnections::add(params("\\\\srv\\share"), "k")) << getErrorMessage();
    answer("mount.cifs", "", "mount error(2): No such file or directory", 32);
    std::string local = "untouched";
    EXPECT_FALSE(HNRStaticConnections::add(params("\\\\srv\\missing"), "bad", &local));
    EXPECT_EQ(getErrorMessage(),
              "Failed to connect to network share '//srv/missing': mount error(2): No such file or directory");
    EXPECT_EQ(local, "untouched");
    EXPECT_FALSE(HNRStaticConnections::isExist("bad"));
    EXPECT_EQ(entries(), 1u);
    EXPECT_FALSE(HNRStaticConnections::add(params("\\\\srv"), "bad"));
    EXPECT_EQ(entries(), 1u);
    EXPECT_FALSE(isDir(mountRoot() + "1"));
}

TEST_F(HNRStaticConnectionsTest, RemoveOfAnUnknownKeyChangesNothing)
{
    ASSERT_TRUE(HNRStaticConnections::add(params("\\\\srv\\share"), "k")) << getErrorMessage();
    HNRStaticConnections::remove("nothing");
    EXPECT_TRUE(HNRStaticConnections::isExist("k"));
    EXPECT_FALSE(HNRStaticConnections::isExist("nothing"));
    EXPECT_TRUE(umounts().empty());
}

} // namespace
