// Golden texts: every sample message in tests/data, read through its registry
// and written back through its factory, gives exactly the bytes checked in
// beside it as NAME.out.xml. A change that alters every output alike shows
// here; regenerate with scripts/regen-golden only when it is intended.
#include "HNRFunctionality/model/MessageRecords.h"

#include "HNKErrorMessage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <dirent.h>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

bool endsWith(const std::string& s, const std::string& tail)
{
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

std::vector<std::string> dataFiles(bool golden)
{
    std::vector<std::string> names;
    DIR* d = opendir(HNR_TEST_DATA_DIR);
    EXPECT_NE(nullptr, d);
    if (!d)
        return names;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (endsWith(name, ".xml") && endsWith(name, ".out.xml") == golden)
            names.push_back(name);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    return names;
}

bool readFile(const std::string& name, std::string& text)
{
    std::ifstream in(std::string(HNR_TEST_DATA_DIR) + "/" + name, std::ios::binary);
    if (!in)
        return false;
    std::ostringstream s;
    s << in.rdbuf();
    text = s.str();
    return true;
}

std::string goldenName(const std::string& sample) { return sample.substr(0, sample.size() - 4) + ".out.xml"; }

TEST(GoldenTextTest, EverySampleHasItsGoldenTextAndNothingElseDoes)
{
    std::vector<std::string> samples = dataFiles(false);
    std::vector<std::string> golden = dataFiles(true);
    EXPECT_EQ(22u, samples.size());
    std::vector<std::string> expected;
    for (const std::string& s : samples)
        expected.push_back(goldenName(s));
    EXPECT_EQ(expected, golden);
}

TEST(GoldenTextTest, ReadAndWriteGiveTheGoldenBytes)
{
    for (const std::string& sample : dataFiles(false)) {
        SCOPED_TRACE(sample);
        std::string text, golden, output;
        ASSERT_TRUE(readFile(sample, text));
        ASSERT_TRUE(readFile(goldenName(sample), golden)) << "run scripts/regen-golden";
        ASSERT_TRUE(hnr_test::goldenOutput(text, output)) << getErrorMessage();
        EXPECT_EQ(golden, output);
    }
}

// The golden text is a fixed point: read and written again it stays the same.
TEST(GoldenTextTest, GoldenTextsReadBackToThemselves)
{
    for (const std::string& name : dataFiles(true)) {
        SCOPED_TRACE(name);
        std::string golden, output;
        ASSERT_TRUE(readFile(name, golden));
        ASSERT_TRUE(hnr_test::goldenOutput(golden, output)) << getErrorMessage();
        EXPECT_EQ(golden, output);
    }
}

// The comparison of the test sees a change of one byte.
TEST(GoldenTextTest, AChangedOutputIsNoticed)
{
    std::string text, golden, output;
    ASSERT_TRUE(readFile("common_device.xml", text));
    ASSERT_TRUE(readFile("common_device.out.xml", golden));
    std::string changed = text;
    size_t at = changed.find("Host bridge");
    ASSERT_NE(std::string::npos, at);
    changed[at] = 'h';
    ASSERT_TRUE(hnr_test::goldenOutput(changed, output));
    EXPECT_NE(golden, output);
}

} // namespace
