// The cursor finds children by name through an index of its own and stamps
// through a cache of the prefixes in scope. What it finds must be what a scan
// of the current tree finds, whatever changed since the cache was filled:
// children added or removed through this or another cursor, declarations
// added, a shared tree copied on change.
#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

const char kTypes[] = "http://example.test/lookup/types";

std::string valueOf(const HNKMessageIterator& it, const char* tag)
{
    std::string v;
    return it.getValue(tag, v) == 0 ? v : "<absent>";
}

} // namespace

TEST(HNKMessageIteratorLookupTest, FindsTheFirstChildOfEachNameAmongMany)
{
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r><a>1</a><b>2</b><a>3</a><abcdefgh>4</abcdefgh><abcdefghi>5</abcdefghi>"
                            "<abcd>6</abcd><abce>7</abce><x>8</x></r>"));
    EXPECT_EQ("1", valueOf(it, "a"));
    EXPECT_EQ("2", valueOf(it, "b"));
    EXPECT_EQ("4", valueOf(it, "abcdefgh"));
    EXPECT_EQ("5", valueOf(it, "abcdefghi"));
    EXPECT_EQ("6", valueOf(it, "abcd"));
    EXPECT_EQ("7", valueOf(it, "abce"));
    EXPECT_EQ("8", valueOf(it, "x"));
    EXPECT_EQ("<absent>", valueOf(it, "abcdefghij"));
    EXPECT_EQ("<absent>", valueOf(it, "abc"));
    EXPECT_EQ("<absent>", valueOf(it, "y"));
    EXPECT_EQ("8", valueOf(it, "x")); // asked again, out of document order
    EXPECT_EQ("1", valueOf(it, "a"));
}

// Records are read in the order they hold their fields, so the cursor tries
// the child after the last one found first; any other order, a repeat, a
// duplicate or a name sharing a beginning must still find the first child of
// the name asked.
TEST(HNKMessageIteratorLookupTest, ChildrenAskedInAnyOrderAreTheFirstOfTheirName)
{
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r><a>1</a><b>2</b><a>3</a><ab>4</ab><b>5</b><abcdefghij>6</abcdefghij>"
                            "<abcdefghik>7</abcdefghik><c>8</c></r>"));
    const char* const inOrder[] = {"a", "b", "a", "ab", "b", "abcdefghij", "abcdefghik", "c"};
    const char* const expected[] = {"1", "2", "1", "4", "2", "6", "7", "8"};
    for (int round = 0; round < 2; ++round) { // the second round starts with the index at its end
        for (size_t i = 0; i < 8; ++i)
            EXPECT_EQ(expected[i], valueOf(it, inOrder[i])) << inOrder[i];
        for (size_t i = 8; i-- > 0;)
            EXPECT_EQ(expected[i], valueOf(it, inOrder[i])) << inOrder[i];
    }
    // Names close to the one after the last found: the same beginning, or
    // the same length and beginning with another last byte.
    EXPECT_EQ("4", valueOf(it, "ab"));
    EXPECT_EQ("<absent>", valueOf(it, "abcdefghi"));
    EXPECT_EQ("6", valueOf(it, "abcdefghij"));
    EXPECT_EQ("6", valueOf(it, "abcdefghij"));
    EXPECT_EQ("<absent>", valueOf(it, "abcdefghijk"));
    EXPECT_EQ("<absent>", valueOf(it, "abcdefghil"));
    EXPECT_EQ("8", valueOf(it, "c"));
    EXPECT_EQ("1", valueOf(it, "a"));
    EXPECT_EQ("1", valueOf(it, "a"));
    EXPECT_EQ("2", valueOf(it, "b"));
}

// A tag is measured in whole aligned words: wherever its bytes lie, with
// zero bytes just before it or the end of readable memory just after it,
// its length comes out right and nothing outside its page is read.
TEST(HNKMessageIteratorLookupTest, TagsAreMeasuredRightWhereverTheyLie)
{
    std::string text = "<r>";
    for (int n = 1; n <= 24; ++n)
        text += "<" + std::string(static_cast<size_t>(n), 'q') + ">" + std::to_string(n) + "</" +
                std::string(static_cast<size_t>(n), 'q') + ">";
    text += "</r>";
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML(text));
    alignas(8) char buffer[64];
    for (size_t offset = 0; offset < 8; ++offset)
        for (int n = 1; n <= 24; ++n) {
            std::memset(buffer, 0, sizeof buffer);              // zeros before the tag
            std::memset(buffer + offset, 'q', static_cast<size_t>(n));
            std::memset(buffer + offset + n + 1, 'z', sizeof buffer - offset - n - 1); // bytes after its end
            EXPECT_EQ(std::to_string(n), valueOf(it, buffer + offset)) << "offset " << offset << ", length " << n;
        }
    // Tags ending at the last byte of a page whose next page cannot be read.
    const long page = sysconf(_SC_PAGESIZE);
    void* mapped = mmap(nullptr, static_cast<size_t>(2 * page), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, mapped);
    char* end = static_cast<char*>(mapped) + page;
    ASSERT_EQ(0, mprotect(end, static_cast<size_t>(page), PROT_NONE));
    for (int n = 1; n <= 24; ++n) {
        char* tag = end - n - 1;
        std::memset(tag, 'q', static_cast<size_t>(n));
        tag[n] = '\0';
        EXPECT_EQ(std::to_string(n), valueOf(it, tag)) << "length " << n;
        EXPECT_TRUE(it.hasChild(tag));
    }
    munmap(mapped, static_cast<size_t>(2 * page));
}

TEST(HNKMessageIteratorLookupTest, PrefixedNamesAreFoundByLocalName)
{
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r xmlns:p=\"urn:p\"><p:a>1</p:a><b>2</b><p:b>3</p:b></r>"));
    EXPECT_EQ("1", valueOf(it, "a"));
    EXPECT_EQ("2", valueOf(it, "b"));
}

TEST(HNKMessageIteratorLookupTest, SeesChildrenAddedAndRemovedThroughAnyCursor)
{
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r><a>1</a><b>2</b></r>"));
    HNKMessageIterator other(it);
    EXPECT_EQ("1", valueOf(it, "a"));
    EXPECT_EQ("<absent>", valueOf(it, "c"));

    ASSERT_EQ(0, other.putValue("c", std::string("3"))); // another cursor adds
    EXPECT_EQ("3", valueOf(it, "c"));
    ASSERT_EQ(0, other.removeChild("a")); // and removes
    EXPECT_EQ("<absent>", valueOf(it, "a"));
    EXPECT_EQ("2", valueOf(it, "b"));

    ASSERT_EQ(0, it.putValue("a", std::string("4"))); // this cursor adds it again
    EXPECT_EQ("4", valueOf(it, "a"));
    EXPECT_EQ("4", valueOf(other, "a"));

    // Removing the element under a cursor and building a new one in its place.
    ASSERT_EQ(0, other.descend("b"));
    other.removeCurrent();
    ASSERT_EQ(0, other.createChild("b"));
    ASSERT_EQ(0, other.putValue("inner", std::string("5")));
    other.ascend();
    EXPECT_EQ("", valueOf(it, "b"));
    ASSERT_EQ(0, it.descend("b"));
    EXPECT_EQ("5", valueOf(it, "inner"));
    it.ascend();
    EXPECT_EQ("<r><c>3</c><a>4</a><b><inner>5</inner></b></r>", it.toXML());
}

TEST(HNKMessageIteratorLookupTest, WritesIntoAFreshElementFindWhatWasJustWritten)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("item"));
    for (int i = 0; i < 300; ++i) // beyond what the index holds
        ASSERT_EQ(0, it.putValue("n" + std::to_string(i), i));
    ASSERT_EQ(0, it.putValue("n7", 70)); // replaces, does not append
    ASSERT_EQ(0, it.putValue("n299", 2990));
    int v = 0;
    ASSERT_EQ(0, it.getValue("n7", v));
    EXPECT_EQ(70, v);
    ASSERT_EQ(0, it.getValue("n299", v));
    EXPECT_EQ(2990, v);
    ASSERT_EQ(0, it.getValue("n150", v));
    EXPECT_EQ(150, v);
    EXPECT_EQ(std::string::npos, it.toXML().find("<n7>7</n7>"));
}

TEST(HNKMessageIteratorLookupTest, ASharedTreeCopiedOnChangeIsSearchedAsTheCopy)
{
    HNKMessageIterator message;
    ASSERT_EQ(0, message.fromXML("<r><a>1</a><b>2</b></r>"));
    HNKMessageIterator shared = message.shareSubtree();
    EXPECT_EQ("1", valueOf(shared, "a")); // both cursors index the one tree
    EXPECT_EQ("1", valueOf(message, "a"));

    ASSERT_EQ(0, shared.removeChild("a")); // takes a copy of its own first
    EXPECT_EQ("<absent>", valueOf(shared, "a"));
    EXPECT_EQ("1", valueOf(message, "a"));
    ASSERT_EQ(0, message.putValue("c", std::string("3")));
    EXPECT_EQ("3", valueOf(message, "c"));
    EXPECT_EQ("<absent>", valueOf(shared, "c"));
    EXPECT_EQ("<r><b>2</b></r>", shared.toXML());
    EXPECT_EQ("<r><a>1</a><b>2</b><c>3</c></r>", message.toXML());
}

TEST(HNKMessageIteratorLookupTest, StampsOfSiblingsFollowDeclarationChanges)
{
    // Siblings stamped alike reuse the prefixes found for the first; a stamp
    // in another namespace declares a prefix, and the next stamps must see
    // the scope as it now is.
    const char* uris[] = {kTypes, kTypes, "http://example.test/lookup/other", kTypes, "urn:x:types", kTypes};
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("list"));
    for (const char* uri : uris) {
        ASSERT_EQ(0, it.createChild("item"));
        it.setType("itemType", uri);
        it.setType("ignoredType", uri); // the first stamp stays
        it.ascend();
    }
    it.ascend();
    HNKMessageIterator back;
    ASSERT_EQ(0, back.fromXML(it.toXML())) << it.toXML();
    ASSERT_EQ(0, back.descend("list"));
    ASSERT_EQ(0, back.firstChild("item"));
    for (const char* uri : uris) {
        EXPECT_EQ(std::string(uri) + ":itemType", back.getTypeName());
        back.nextSibling("item");
    }
}

TEST(HNKMessageIteratorLookupTest, TypeNamesResolveThroughTheScopeOfEachElement)
{
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r xmlns:t=\"urn:one\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">"
                            "<i xsi:type=\"t:a\"/><i xsi:type=\"t:b\"/>"
                            "<i xmlns:t=\"urn:two\" xsi:type=\"t:c\"/><i xsi:type=\"t:d\"/>"
                            "<g xmlns:t=\"urn:three\"><i xsi:type=\"t:e\"/></g></r>"));
    const char* expected[] = {"urn:one:a", "urn:one:b", "urn:two:c", "urn:one:d"};
    ASSERT_EQ(0, it.firstChild("i"));
    for (const char* e : expected) {
        EXPECT_EQ(e, it.getTypeName());
        it.nextSibling("i");
    }
    it.ascend();
    ASSERT_EQ(0, it.descend("g"));
    ASSERT_EQ(0, it.descend("i"));
    EXPECT_EQ("urn:three:e", it.getTypeName());
}
