// Reading smbclient listings; the lines are as smbclient 4.17 prints them.
#include "share/HNRShareListing.h"

#include <gtest/gtest.h>

namespace {

using HNR::HNRListingBlock;
using HNR::HNRListingEntry;
using HNR::parseListing;
using HNR::parseListingEntry;

HNRListingEntry parsed(const std::string& line)
{
    HNRListingEntry entry;
    EXPECT_TRUE(parseListingEntry(line, entry)) << line;
    return entry;
}

TEST(HNRShareListingTest, ReadsAFileLine)
{
    HNRListingEntry e = parsed("  name                                A  5242880  Fri Nov 20 23:12:02 2026");
    EXPECT_EQ(e.name, "name");
    EXPECT_EQ(e.attributes, "A");
    EXPECT_EQ(e.size, 5242880u);
    EXPECT_FALSE(e.isDirectory());
}

TEST(HNRShareListingTest, ShortSizeNearTheStartIsNoEntry)
{
    // Found by fuzzing: too short for the 8-column size field before the date.
    HNRListingEntry e;
    EXPECT_FALSE(parseListingEntry("  0  Sat Nov 21 00:24:15 2026", e));
    EXPECT_FALSE(parseListingEntry("  x 12  Sat Nov 21 00:24:15 2026", e));
}

TEST(HNRShareListingTest, ReadsAFolderLine)
{
    HNRListingEntry e = parsed("  d1                                  D        0  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, "d1");
    EXPECT_TRUE(e.isDirectory());
    EXPECT_EQ(e.size, 0u);
}

TEST(HNRShareListingTest, NameWithBlanksStaysWhole)
{
    HNRListingEntry e = parsed("  name with blanks                    N        6  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, "name with blanks");
    EXPECT_EQ(e.size, 6u);
}

TEST(HNRShareListingTest, TrailingAOfTheNameIsNotTheAttribute)
{
    HNRListingEntry e = parsed("  fileA                               N        3  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, "fileA");
    EXPECT_EQ(e.attributes, "N");
    e = parsed("  sub A                               D        0  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, "sub A");
    EXPECT_TRUE(e.isDirectory());
    e = parsed("  dataA                               A      100  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, "dataA");
    EXPECT_EQ(e.attributes, "A");
}

TEST(HNRShareListingTest, SizesAboveFourGibibytes)
{
    HNRListingEntry e = parsed("  big                                 N 5368709120  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, "big");
    EXPECT_EQ(e.size, 5368709120u);
    e = parsed("  huge A                              A 1099511627776  Mon Jan  5 01:02:03 2026");
    EXPECT_EQ(e.name, "huge A");
    EXPECT_EQ(e.size, 1099511627776u);
}

TEST(HNRShareListingTest, NamesLongerThanTheNameColumn)
{
    const std::string name = "a very long file name that runs past thirty columns A";
    HNRListingEntry e = parsed("  " + name + "      A       42  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, name);
    EXPECT_EQ(e.size, 42u);
}

TEST(HNRShareListingTest, HiddenFolderWithSeveralAttributesKeepsItsNameAndIsAFolder)
{
    HNRListingEntry e = parsed("  .hidden dir                        DH        0  Fri Nov 20 23:42:00 2026");
    EXPECT_EQ(e.name, ".hidden dir");
    EXPECT_TRUE(e.isDirectory());
}

TEST(HNRShareListingTest, OtherLinesAreNoEntries)
{
    HNRListingEntry e;
    EXPECT_FALSE(parseListingEntry("", e));
    EXPECT_FALSE(parseListingEntry("\\top\\d1", e));
    EXPECT_FALSE(parseListingEntry("\t\t264212084 blocks of size 1024. 83124448 blocks available", e));
    EXPECT_FALSE(parseListingEntry("NT_STATUS_NO_SUCH_FILE listing \\nothere", e));
    EXPECT_FALSE(parseListingEntry("   indented                           N        3  Fri Nov 20 23:42:00 2026", e));
    EXPECT_FALSE(parseListingEntry("  short", e));
    EXPECT_FALSE(parseListingEntry("  name                                N       xx  Fri Nov 20 23:42:00 2026", e));
}

TEST(HNRShareListingTest, SplitsARecursiveScriptIntoBlocks)
{
    const std::string output =
        "  d1                                  D        0  Fri Nov 20 23:42:42 2026\n"
        "\n"
        "\\top\\d1\n"
        "  .                                   D        0  Fri Nov 20 23:42:42 2026\n"
        "  ..                                  D        0  Fri Nov 20 23:42:42 2026\n"
        "  .hidden                             H        2  Fri Nov 20 23:42:42 2026\n"
        "  fileA                               N        3  Fri Nov 20 23:42:42 2026\n"
        "  sub A                               D        0  Fri Nov 20 23:42:42 2026\n"
        "\n"
        "\\top\\d1\\sub A\n"
        "  .                                   D        0  Fri Nov 20 23:42:42 2026\n"
        "  ..                                  D        0  Fri Nov 20 23:42:42 2026\n"
        "  big                                 N 5368709120  Fri Nov 20 23:42:42 2026\n"
        "\n"
        "\t\t264212084 blocks of size 1024. 83122968 blocks available\n"
        "  fileA                               N        3  Fri Nov 20 23:42:42 2026\n"
        "\n"
        "\t\t264212084 blocks of size 1024. 83122968 blocks available\n";
    std::vector<HNRListingBlock> blocks = parseListing(output);
    ASSERT_EQ(blocks.size(), 2u);
    ASSERT_NE(blocks[0].matched(), nullptr);
    EXPECT_EQ(blocks[0].matched()->name, "d1");
    ASSERT_EQ(blocks[0].sections.size(), 3u);
    EXPECT_EQ(blocks[0].sections[1].folder, "\\top\\d1");
    EXPECT_EQ(blocks[0].sections[2].folder, "\\top\\d1\\sub A");
    EXPECT_EQ(blocks[0].fileBytes(), 2u + 3u + 5368709120u);
    EXPECT_EQ(blocks[1].matched()->name, "fileA");
    EXPECT_EQ(blocks[1].fileBytes(), 3u);
}

TEST(HNRShareListingTest, AFailedCommandLeavesNoBlock)
{
    std::vector<HNRListingBlock> blocks = parseListing("NT_STATUS_NO_SUCH_FILE listing \\x\n");
    EXPECT_TRUE(blocks.empty());
}

// ---- one result per ls command, failed ones included (smbclient 4.17 text) --

namespace more {

const char kEnd[] = "\t\t264212084 blocks of size 1024. 74706392 blocks available";

TEST(HNRShareListingTest, ResultsKeepTheOrderOfTheCommandsFailedOnesIncluded)
{
    const std::string output = std::string("  g                                   N        2  Sun Nov 22 17:54:12 2026\n\n") +
                               kEnd + "\nNT_STATUS_NO_SUCH_FILE listing \\d\\missing\n" +
                               "  sub                                 D        0  Sun Nov 22 17:54:12 2026\n\n\\d\\sub\n" +
                               "  .                                   D        0  Sun Nov 22 17:54:12 2026\n" +
                               "  f                                   N        3  Sun Nov 22 17:54:12 2026\n\n" + kEnd +
                               "\n";
    const std::vector<HNR::HNRListingResult> results = HNR::parseListingResults(output);
    ASSERT_EQ(results.size(), 3u);
    EXPECT_TRUE(results[0].failure.empty());
    ASSERT_NE(results[0].block.matched(), nullptr);
    EXPECT_EQ(results[0].block.matched()->name, "g");
    EXPECT_EQ(results[1].failure, "NT_STATUS_NO_SUCH_FILE listing \\d\\missing");
    EXPECT_EQ(results[1].block.matched(), nullptr);
    EXPECT_TRUE(results[2].failure.empty());
    EXPECT_EQ(results[2].block.fileBytes(), 3u);
    ASSERT_EQ(results[2].block.sections.size(), 2u);
    EXPECT_EQ(results[2].block.sections[1].folder, "\\d\\sub");
    for (const std::string& line : HNR::splitLines(output))
        EXPECT_TRUE(HNR::isListingLine(line)) << line;
}

TEST(HNRShareListingTest, AFolderBelowThatCannotBeListedStaysInItsBlock)
{
    const std::string output = std::string("  sub                                 D        0  Sun Nov 22 17:54:12 2026\n") +
                               "NT_STATUS_ACCESS_DENIED listing \\d\\sub\\*\n\n" + kEnd + "\n";
    const std::vector<HNR::HNRListingResult> results = HNR::parseListingResults(output);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_TRUE(results[0].failure.empty());
    EXPECT_EQ(results[0].block.failures, std::vector<std::string>{"NT_STATUS_ACCESS_DENIED listing \\d\\sub\\*"});
}

TEST(HNRShareListingTest, TransferFailuresAreNoListingLines)
{
    EXPECT_FALSE(HNR::isListingLine("NT_STATUS_ACCESS_DENIED opening remote file \\f"));
    EXPECT_FALSE(HNR::isListingLine("/tmp/x does not exist"));
    EXPECT_FALSE(HNR::isListingLine("NT_STATUS_OBJECT_NAME_COLLISION making remote directory \\d\\"));
    EXPECT_FALSE(HNR::isListingFailure("NT_STATUS_ACCESS_DENIED opening remote file \\f"));
    EXPECT_TRUE(HNR::isListingFailure("NT_STATUS_NO_SUCH_FILE listing \\d\\missing"));
}

} // namespace more

} // namespace
