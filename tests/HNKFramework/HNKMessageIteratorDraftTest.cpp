// Content written under a fresh element is kept as a draft (the log of the
// writes) until someone looks inside it. Whatever looks, and however, must
// see the tree the same writes make as nodes: the same text (compact and
// indented), the same values, names and types, the same positions.
//
// The reference: the same writes with every draft turned into nodes at once;
// the written samples and the benchmark text (MessageWrittenTextTest) check
// the text against what was written before drafts existed.
#include "HNKMessageIterator.h"
#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

const char kTypes[] = "http://example.test/draft/types";

// Writes as a record writer does, with every kind of write a draft keeps.
void writeRecords(HNKMessageIterator& it)
{
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(0, it.createChild("item"));
        it.setType("itemType", kTypes);
        ASSERT_EQ(0, it.putValue("n", i));
        ASSERT_EQ(0, it.putValue("s", std::string("a&b<c>d\"e'f\tg\nh\ri \xC3\xA9")));
        ASSERT_EQ(0, it.putValue("empty", std::string()));
        ASSERT_EQ(0, it.createChild("flag"));
        it.ascend();
        ASSERT_EQ(0, it.createChild("nested"));
        it.setType("nestedType", kTypes);
        ASSERT_EQ(0, it.putValue(0, std::string("text & more")));
        ASSERT_EQ(0, it.createChild("deep"));
        ASSERT_EQ(0, it.putValue("v", true));
        it.ascend();
        it.ascend();
        ASSERT_EQ(0, it.putValueBase64("b64", std::string("\x01\x02 binary")));
        it.ascend();
    }
}

// The writes under a fresh element, twice: one document keeps its drafts,
// the other has them turned into nodes at once (indented text needs nodes).
// Both must write the same compact text, also after `look` ran on the cursor
// left on the element in each (looking turns drafts into nodes as it goes).
void expectSame(const std::function<void(HNKMessageIterator&)>& write,
                const std::function<void(HNKMessageIterator&)>& look = nullptr)
{
    HNKMessageIterator drafted("r");
    ASSERT_EQ(0, drafted.createChild("list"));
    write(drafted);
    HNKMessageIterator nodes("r");
    ASSERT_EQ(0, nodes.createChild("list"));
    write(nodes);
    const std::string spliced = drafted.toXML();
    nodes.toXML(true);
    EXPECT_EQ(spliced, nodes.toXML());
    if (look) {
        look(drafted);
        look(nodes);
        EXPECT_EQ(nodes.toXML(), drafted.toXML());
    }
}

std::string valueOf(const HNKMessageIterator& it, const char* tag)
{
    std::string v;
    return it.getValue(tag, v) == 0 ? v : "<absent>";
}

} // namespace

TEST(HNKMessageIteratorDraftTest, WrittenTextIsTheTextOfTheNodes)
{
    expectSame(writeRecords);
}

TEST(HNKMessageIteratorDraftTest, ReadingBackSeesTheNodes)
{
    expectSame(writeRecords, [](HNKMessageIterator& it) {
        ASSERT_EQ(0, it.firstChild("item"));
        int n = -1;
        EXPECT_EQ(0, it.getValue("n", n));
        EXPECT_EQ(0, n);
        EXPECT_EQ("a&b<c>d\"e'f\tg\nh\ri \xC3\xA9", valueOf(it, "s"));
        EXPECT_EQ("", valueOf(it, "empty"));
        EXPECT_TRUE(it.hasChild("flag"));
        EXPECT_EQ(std::string(kTypes) + ":itemType", it.getTypeName());
        std::string b;
        EXPECT_EQ(0, it.getValueBase64("b64", b));
        EXPECT_EQ(std::string("\x01\x02 binary"), b);
        ASSERT_EQ(0, it.descend("nested"));
        EXPECT_EQ("text & more", valueOf(it, ""));
        EXPECT_EQ(std::string(kTypes) + ":nestedType", it.getTypeName());
        it.ascend();
        ASSERT_EQ(0, it.nextSibling("item"));
        EXPECT_EQ(0, it.getValue("n", n));
        EXPECT_EQ(1, n);
        it.ascend();
        EXPECT_STREQ("list", it.currentName());
    });
}

TEST(HNKMessageIteratorDraftTest, ChangesAfterWritingApplyToTheNodes)
{
    // Replacing a value, a second stamp, a second text, a secondary ID,
    // removals: each needs the nodes, and the result is what nodes give.
    expectSame([](HNKMessageIterator& it) {
        ASSERT_EQ(0, it.createChild("item"));
        ASSERT_EQ(0, it.putValue("n", 1));
        ASSERT_EQ(0, it.putValue("n", 2)); // replaces
        it.setType("aType", kTypes);       // after content: an attribute all the same
        it.setType("bType", kTypes);       // the first stamp stays
        ASSERT_EQ(0, it.putValue(0, std::string("t")));
        ASSERT_EQ(0, it.putValue(0, std::string("u"))); // replaces
        it.applySecondaryID(7);
        ASSERT_EQ(0, it.putValue("gone", 3));
        ASSERT_EQ(0, it.removeChild("gone"));
        ASSERT_EQ(0, it.createChild("removed"));
        it.removeCurrent();
        it.ascend();
        ASSERT_EQ(0, it.putValue("after", 4));
    });
}

TEST(HNKMessageIteratorDraftTest, AWriterReplacingAChildThatIsNotThereKeepsWriting)
{
    expectSame([](HNKMessageIterator& it) {
        ASSERT_EQ(0, it.createChild("item"));
        EXPECT_NE(0, it.descend("sub")); // as putObject with an ID does first
        EXPECT_FALSE(it.hasChild("sub"));
        ASSERT_EQ(0, it.createChild("sub"));
        ASSERT_EQ(0, it.putValue("x", 1));
        it.ascend();
        ASSERT_EQ(0, it.descend("sub")); // now it is there
        ASSERT_EQ(0, it.putValue("x", 2));
        it.ascend();
        it.ascend();
    });
}

TEST(HNKMessageIteratorDraftTest, ACopyOfAWritingCursorIsWhereTheWriterWas)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("list"));
    ASSERT_EQ(0, it.createChild("item"));
    ASSERT_EQ(0, it.createChild("inner"));
    HNKMessageIterator copy(it); // turns the draft into nodes
    EXPECT_STREQ("inner", copy.currentName());
    EXPECT_STREQ("inner", it.currentName());
    ASSERT_EQ(0, it.putValue("x", 1));
    ASSERT_EQ(0, copy.putValue("y", 2));
    it.ascend();
    EXPECT_STREQ("item", it.currentName());
    EXPECT_EQ("<r><list><item><inner><x>1</x><y>2</y></inner></item></list></r>", it.toXML());
}

TEST(HNKMessageIteratorDraftTest, AnotherCursorLookingInsideWhileOneWritesSeesTheWritesSoFar)
{
    HNKMessageIterator writer("r");
    ASSERT_EQ(0, writer.createChild("list"));
    HNKMessageIterator reader(writer);
    ASSERT_EQ(0, writer.createChild("item"));
    ASSERT_EQ(0, writer.putValue("a", 1));
    EXPECT_EQ("<r><list><item><a>1</a></item></list></r>", reader.toXML()); // open elements written closed
    ASSERT_EQ(0, reader.firstChild("item")); // looks inside: nodes now
    EXPECT_EQ("1", valueOf(reader, "a"));
    ASSERT_EQ(0, writer.putValue("b", 2)); // the writer carries on, on the node
    writer.ascend();
    ASSERT_EQ(0, writer.createChild("item"));
    ASSERT_EQ(0, writer.putValue("a", 3));
    writer.ascend();
    EXPECT_EQ("2", valueOf(reader, "b"));
    EXPECT_EQ("<r><list><item><a>1</a><b>2</b></item><item><a>3</a></item></list></r>", writer.toXML());
}

TEST(HNKMessageIteratorDraftTest, AWriterThatGoesAwayLeavesItsElementsClosed)
{
    HNKMessageIterator keep("r");
    ASSERT_EQ(0, keep.createChild("list"));
    {
        HNKMessageIterator w(keep);
        ASSERT_EQ(0, w.createChild("item"));
        ASSERT_EQ(0, w.createChild("inner"));
        ASSERT_EQ(0, w.putValue("x", 1));
    }
    ASSERT_EQ(0, keep.createChild("item"));
    keep.ascend();
    EXPECT_EQ("<r><list><item><inner><x>1</x></inner></item><item/></list></r>", keep.toXML());
}

TEST(HNKMessageIteratorDraftTest, CopiesOfASubtreeCarryItsDraftsAndStayIndependent)
{
    // Every kind of copy, of a source holding drafts and of the same source
    // turned into nodes first; then the sources write on.
    struct Copies {
        HNKMessageIterator src{"r"};
        HNKMessageIterator clone, shared, target{"t"}, linked{"t"}, children{"t"};
        explicit Copies(bool nodes)
        {
            EXPECT_EQ(0, src.createChild("list"));
            writeRecords(src);
            if (nodes)
                src.toXML(true);
            clone = src.cloneSubtree(); // on the host
            shared = src.root().shareSubtree();
            EXPECT_EQ(0, target.appendCopy(src));
            EXPECT_EQ(0, linked.appendLinked(src));
            EXPECT_EQ(0, children.appendChildrenCopy(src));
            EXPECT_EQ(0, src.createChild("item"));
            EXPECT_EQ(0, src.putValue("n", 99));
            src.ascend();
        }
    };
    Copies drafts(false), nodes(true);
    EXPECT_EQ(nodes.src.toXML(), drafts.src.toXML());
    EXPECT_EQ(nodes.clone.toXML(), drafts.clone.toXML());
    EXPECT_EQ(nodes.shared.toXML(), drafts.shared.toXML());
    EXPECT_EQ(nodes.target.toXML(), drafts.target.toXML());
    EXPECT_EQ(nodes.linked.toXML(), drafts.linked.toXML());
    EXPECT_EQ(nodes.children.toXML(), drafts.children.toXML());
    EXPECT_EQ(std::string::npos, drafts.clone.toXML().find("99"));
    EXPECT_EQ(std::string::npos, drafts.target.toXML().find("99"));
    ASSERT_EQ(0, drafts.target.descend("list"));
    ASSERT_EQ(0, drafts.target.firstChild("item"));
    EXPECT_EQ(std::string(kTypes) + ":itemType", drafts.target.getTypeName());
    ASSERT_EQ(0, drafts.target.putValue("n", 5)); // the copy changes alone
    EXPECT_EQ(nodes.src.toXML(), drafts.src.toXML());
}

TEST(HNKMessageIteratorDraftTest, RemovingAWrittenElementRemovesItsDraft)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("list"));
    ASSERT_EQ(0, it.putValue("a", 1));
    it.ascend();
    ASSERT_EQ(0, it.createChild("other"));
    ASSERT_EQ(0, it.putValue("b", 2));
    it.ascend();
    ASSERT_EQ(0, it.removeChild("list"));
    EXPECT_EQ("<r><other><b>2</b></other></r>", it.toXML());
    ASSERT_EQ(0, it.descend("other"));
    it.removeCurrent();
    EXPECT_EQ("<r/>", it.toXML());
}

TEST(HNKMessageIteratorDraftTest, AStampInANewNamespaceDeclaresItOnTheOutermostElement)
{
    expectSame([](HNKMessageIterator& it) {
        ASSERT_EQ(0, it.createChild("item"));
        it.setType("aType", kTypes);
        it.ascend();
        ASSERT_EQ(0, it.createChild("item"));
        it.setType("bType", "http://example.test/draft/other");
        it.ascend();
        ASSERT_EQ(0, it.createChild("item"));
        it.setNamespace(kTypes);
        it.setType("cType", nullptr);
        it.setNamespace(0);
        it.setType("dType", ""); // an empty namespace: no prefix
        it.ascend();
    });
}

// Draft text is escaped and copied a word at a time where it can be: every
// length of value and name, with a character to escape (or a multi-byte one)
// at every place, must come out as the nodes write it.
TEST(HNKMessageIteratorDraftTest, ValuesAndNamesOfEveryLengthWriteAsTheNodesDo)
{
    const std::string specials[] = {"<", ">", "&", "\"", "'", "\r", "\t", "\n", "\x7F", "\xC3\xA9", "\xE2\x82\xAC"};
    expectSame([&specials](HNKMessageIterator& it) {
        for (size_t length = 0; length <= 40; ++length) {
            const std::string name = "n" + std::string(length % 24, 'a');
            const std::string plain(length, 'x');
            ASSERT_EQ(0, it.putValue(name + "p", plain));
            for (size_t at = 0; at < length; ++at)
                for (const std::string& c : specials) {
                    std::string v = plain;
                    v.replace(at, 1, c);
                    ASSERT_EQ(0, it.createChild("v"));
                    ASSERT_EQ(0, it.putValue(name, v));
                    it.ascend();
                }
        }
    });
}

// A draft keeps each string's length in a byte, the longer ones measured
// where they are read instead: strings on both sides of that limit, as
// values, names and types, must be written and read back whole.
TEST(HNKMessageIteratorDraftTest, StringsAroundTheLogsLengthLimitWriteAndReadWhole)
{
    const size_t lengths[] = {0, 1, 253, 254, 255, 256, 65536};
    auto write = [&lengths](HNKMessageIterator& it) {
        for (size_t length : lengths) {
            ASSERT_EQ(0, it.createChild("item"));
            it.setType(("t" + std::string(length, 'y')).c_str(), kTypes);
            ASSERT_EQ(0, it.putValue("value", std::string(length, 'v')));
            ASSERT_EQ(0, it.putValue(("n" + std::string(length, 'a')).c_str(), std::string("x")));
            it.ascend();
        }
    };
    auto look = [&lengths](HNKMessageIterator& it) {
        ASSERT_EQ(0, it.firstChild("item"));
        for (size_t length : lengths) {
            EXPECT_EQ(std::string(length, 'v'), valueOf(it, "value"));
            EXPECT_EQ("x", valueOf(it, ("n" + std::string(length, 'a')).c_str()));
            std::string_view uri, type;
            ASSERT_TRUE(it.getTypeName(uri, type));
            EXPECT_EQ(kTypes, uri);
            EXPECT_EQ("t" + std::string(length, 'y'), type);
            if (length != lengths[sizeof lengths / sizeof *lengths - 1]) {
                ASSERT_EQ(0, it.nextSibling("item"));
            }
        }
        it.ascend();
    };
    expectSame(write, look);
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("list"));
    write(it);
    const std::string text = it.toXML();
    for (size_t length : lengths) {
        EXPECT_NE(std::string::npos, text.find("<value>" + std::string(length, 'v') + "</value>"));
        EXPECT_NE(std::string::npos, text.find("</n" + std::string(length, 'a') + ">"));
        EXPECT_NE(std::string::npos, text.find(":t" + std::string(length, 'y') + "\""));
    }
}
