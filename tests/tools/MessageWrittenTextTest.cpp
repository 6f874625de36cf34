// The written text stays byte-identical to the outputs saved in
// tests/data/expected/ before the message path was reworked for speed: every
// sample read through its registry and written back through its factory
// (<sample>.txt: printed fields, then the compact text), and the benchmark's
// round trip at 11 and 100 devices (bench-<N>.xml).
#include "tools/WrittenText.h"

#include "BenchMessageRoundTrip.h"
#include "BenchMessageText.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include <fstream>
#include <iterator>

namespace {

const std::string kData = HNR_TEST_DATA_DIR;

std::string slurp(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Where two texts first differ, without printing them (samples hold secrets).
::testing::AssertionResult sameText(const std::string& expected, const std::string& actual)
{
    if (expected == actual)
        return ::testing::AssertionSuccess();
    size_t at = 0;
    while (at < expected.size() && at < actual.size() && expected[at] == actual[at])
        ++at;
    return ::testing::AssertionFailure() << "texts differ from byte " << at << " (expected " << expected.size()
                                         << " bytes, got " << actual.size() << ")";
}

TEST(MessageWrittenText, EverySampleReadsAndWritesAsBefore)
{
    int compared = 0;
    for (boost::filesystem::directory_iterator e(kData + "/expected"), end; e != end; ++e) {
        const boost::filesystem::path& p = e->path();
        if (p.extension() != ".txt")
            continue;
        std::string sample = kData + "/" + p.stem().string() + ".xml";
        SCOPED_TRACE(sample);
        ASSERT_TRUE(boost::filesystem::exists(sample));
        EXPECT_TRUE(sameText(slurp(p.string()), HNRTest::writtenTextOf(slurp(sample))));
        ++compared;
    }
    EXPECT_GE(compared, 22);
}

TEST(MessageWrittenText, BenchmarkRoundTripWritesAsBefore)
{
    for (size_t devices : {11, 100}) {
        SCOPED_TRACE(devices);
        std::string expected = slurp(kData + "/expected/bench-" + std::to_string(devices) + ".xml");
        ASSERT_FALSE(expected.empty());
        EXPECT_TRUE(sameText(expected, HNRBench::roundTrip(HNRBench::configurationWithDevices(devices))));
    }
}

TEST(MessageWrittenText, RoundTripTwiceOnOneTextWritesTheSame)
{
    std::string text = HNRBench::configurationWithDevices(30);
    std::string first = HNRBench::roundTrip(text);
    EXPECT_TRUE(sameText(first, HNRBench::roundTrip(text)));
    EXPECT_TRUE(sameText(first, HNRBench::roundTrip(first))); // the output reads back and writes alike
}

} // namespace
