#include "fsutil/HNRPathElements.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace fs = boost::filesystem;
using HNR::createFromBegin;
using HNR::createPath;
using HNR::createToEnd;
using HNR::getSize;

namespace {

std::vector<std::string> elements(const fs::path& p)
{
    std::vector<std::string> out;
    for (const fs::path& e : p)
        out.push_back(e.string());
    return out;
}

TEST(HNRPathElementsTest, SplitsShareIntoServerRootShareAndInside)
{
    fs::path p("//srv/share/d");
    EXPECT_EQ((std::vector<std::string>{"//srv", "/", "share", "d"}), elements(p));
    EXPECT_EQ(4u, getSize(p));
}

TEST(HNRPathElementsTest, CountsRootNameRootAndEachElement)
{
    EXPECT_EQ(0u, getSize(fs::path()));
    EXPECT_EQ(1u, getSize(fs::path("//srv")));
    EXPECT_EQ(3u, getSize(fs::path("//srv/share")));
    EXPECT_EQ(3u, getSize(fs::path("/a/b")));
    EXPECT_EQ(2u, getSize(fs::path("a/b")));
}

TEST(HNRPathElementsTest, CreatePathCollapsesRepeatedSeparators)
{
    EXPECT_EQ("//srv/share/d/e", createPath(fs::path("//srv//share///d/e")).string());
    EXPECT_EQ("a/b", createPath(fs::path("a//b")).string());
    EXPECT_EQ("", createPath(fs::path()).string());
}

TEST(HNRPathElementsTest, CreateFromBeginTakesFirstElements)
{
    fs::path p("//srv/share/d/e");
    EXPECT_EQ("", createFromBegin(p, 0).string());
    EXPECT_EQ("//srv", createFromBegin(p, 1).string());
    EXPECT_EQ("//srv/", createFromBegin(p, 2).string());
    EXPECT_EQ("//srv/share", createFromBegin(p, 3).string());
    EXPECT_EQ("//srv/share/d/e", createFromBegin(p, 9).string());
}

TEST(HNRPathElementsTest, CreateToEndTakesElementsFromIndex)
{
    fs::path p("//srv/share/d/e");
    EXPECT_EQ("d/e", createToEnd(p, 3).string());
    EXPECT_EQ("e", createToEnd(p, 4).string());
    EXPECT_EQ("", createToEnd(p, 5).string());
    EXPECT_EQ("", createToEnd(fs::path("//srv/share"), 3).string());
    EXPECT_EQ("//srv/share/d/e", createToEnd(p, 0).string());
}

} // namespace
