// A cancelled caller also stops a long local walk.
#include "fsutil/HNRLocalFiles.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

#include "HNKErrorMessage.h"
#include "HNRFunctionality/fsutil/FsutilTestSupport.h"
#include "share/HNRCancellation.h"

namespace {

TEST(HNRLocalFilesCancelTest, CancelledWalkFailsWithCancelled)
{
    HNRTest::TempDir tmp;
    ASSERT_EQ(::mkdir((tmp / "d").c_str(), 0755), 0);
    for (int i = 0; i < 10; ++i)
        std::ofstream(tmp / ("d/f" + std::to_string(i))) << "data";
    std::uint64_t total = 0;
    HNR::HNRCancellation cancellation;
    {
        HNR::HNRCancellationScope scope(cancellation);
        ASSERT_TRUE(HNR::getSizeRecursiveLocal({tmp / "d"}, total)) << getErrorMessage();
        EXPECT_EQ(total, 40u);
        cancellation.cancel();
        EXPECT_FALSE(HNR::getSizeRecursiveLocal({tmp / "d"}, total));
        EXPECT_EQ(getErrorMessage(), "cancelled");
    }
    // Outside the scope the flag is not watched.
    EXPECT_TRUE(HNR::getSizeRecursiveLocal({tmp / "d"}, total)) << getErrorMessage();
}

} // namespace
