// Passing an element's children on in a given order (appendChildrenLinked)
// and listing their names (childNames): written children go on as written,
// parsed ones as linked copies. Whichever way, the result must be the text
// and the values the same copies made one by one give, and the two documents
// must stay independent.
#include "HNKMessageIterator.h"

#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

const char kTypes[] = "http://example.test/children/types";

// A record written by a writer: settings, a list of stamped items, a
// nested element; under the root of a fresh document.
void writeRecord(HNKMessageIterator& it)
{
    ASSERT_EQ(0, it.putValue("b", std::string("two & <2>")));
    ASSERT_EQ(0, it.createChild("list"));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(0, it.createChild("item"));
        it.setType("itemType", kTypes);
        ASSERT_EQ(0, it.putValue("n", i));
        it.ascend();
    }
    it.ascend();
    ASSERT_EQ(0, it.putValue("a", 1));
    ASSERT_EQ(0, it.createChild("c"));
    it.ascend();
}

std::vector<std::string> namesOf(const HNKMessageIterator& it)
{
    std::vector<std::string_view> views;
    EXPECT_EQ(0, it.childNames(views));
    return std::vector<std::string>(views.begin(), views.end());
}

// The same children copied one by one with appendLinked, in `order`.
std::string oneByOne(const HNKMessageIterator& source, const std::vector<size_t>& order, const char* root = "out")
{
    HNKMessageIterator out(root);
    out.setType("outType", kTypes);
    std::vector<HNKMessageIterator> children;
    HNKMessageIterator c(source);
    if (c.firstChild() == 0) {
        do
            children.push_back(c);
        while (c.nextSibling() == 0);
    }
    for (size_t k : order)
        EXPECT_EQ(0, out.appendLinked(children[k]));
    return out.toXML();
}

// Passes the children of a record written by `write` on into `out` in
// `order`, and checks the text against the same record turned into elements
// and copied child by child.
template <class Write>
void passOnAndCompare(const Write& write, const std::vector<size_t>& order, HNKMessageIterator& out)
{
    HNKMessageIterator source("r");
    write(source);
    out.setType("outType", kTypes);
    ASSERT_EQ(0, out.appendChildrenLinked(source, order));
    HNKMessageIterator reference("r");
    write(reference);
    reference.toXML(true); // the same writes, as elements
    EXPECT_EQ(oneByOne(reference, order), out.toXML());
}

} // namespace

TEST(HNKMessageIteratorChildrenTest, NamesOfWrittenAndParsedChildrenAlike)
{
    HNKMessageIterator written("r");
    writeRecord(written);
    const std::vector<std::string> expected{"b", "list", "a", "c"};
    EXPECT_EQ(expected, namesOf(written));
    HNKMessageIterator read = parsed(written.toXML());
    EXPECT_EQ(expected, namesOf(read));
    // Listing builds nothing: the writer goes on writing where it was.
    ASSERT_EQ(0, written.putValue("d", 4));
    EXPECT_EQ((std::vector<std::string>{"b", "list", "a", "c", "d"}), namesOf(written));
    HNKMessageIterator none;
    std::vector<std::string_view> views;
    EXPECT_EQ(-1, none.childNames(views));
}

TEST(HNKMessageIteratorChildrenTest, WrittenChildrenPassOnInTheGivenOrder)
{
    HNKMessageIterator out("out");
    passOnAndCompare(writeRecord, {2, 0, 1, 3}, out);
    EXPECT_EQ((std::vector<std::string>{"a", "b", "list", "c"}), namesOf(out));
    // Read back through the copy: values, stamps, positions.
    int a = 0;
    EXPECT_EQ(0, out.getValue("a", a));
    EXPECT_EQ(1, a);
    ASSERT_EQ(0, out.descend("list"));
    ASSERT_EQ(0, out.firstChild("item"));
    EXPECT_EQ(std::string(kTypes) + ":itemType", out.getTypeName());
}

// A record's root holds dozens of settings, so its written children are
// found by name through a table; passed on in another order, every one of
// them is still found there, and no other name is.
TEST(HNKMessageIteratorChildrenTest, ManyWrittenChildrenPassedOnAreFoundByName)
{
    const int count = 40;
    auto nameOf = [](int i) { return "setting_" + std::to_string(i); };
    auto writeSettings = [&](HNKMessageIterator& it) {
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(0, it.putValue(nameOf(i).c_str(), i));
    };
    std::vector<size_t> order;
    for (size_t k = 0; k < static_cast<size_t>(count); ++k)
        order.push_back((k * 17) % count); // every child once, shuffled
    for (int i = 0; i < count; ++i) {
        // A fresh copy for each name: finding one turns the copy into elements.
        HNKMessageIterator source("r");
        writeSettings(source);
        HNKMessageIterator out("out");
        ASSERT_EQ(0, out.appendChildrenLinked(source, order));
        EXPECT_FALSE(out.hasChild("setting_"));
        EXPECT_FALSE(out.hasChild(nameOf(count).c_str()));
        EXPECT_TRUE(out.hasChild(nameOf(i).c_str())) << nameOf(i);
        int value = -1;
        EXPECT_EQ(0, out.getValue(nameOf(i).c_str(), value));
        EXPECT_EQ(i, value);
    }
    HNKMessageIterator out("out");
    passOnAndCompare(writeSettings, order, out);
}

TEST(HNKMessageIteratorChildrenTest, ParsedChildrenPassOnAsLinkedCopies)
{
    HNKMessageIterator written("r");
    writeRecord(written);
    const std::string text = written.toXML();
    HNKMessageIterator source = parsed(text);
    const std::vector<size_t> order{3, 1, 0, 2};
    HNKMessageIterator out("out");
    out.setType("outType", kTypes);
    ASSERT_EQ(0, out.appendChildrenLinked(source, order));
    EXPECT_EQ(oneByOne(source, order), out.toXML());
    EXPECT_EQ(text, source.toXML());
}

TEST(HNKMessageIteratorChildrenTest, EachSideChangesAloneAfterwards)
{
    const std::vector<size_t> order{0, 1, 2, 3};
    HNKMessageIterator source("r");
    writeRecord(source);
    HNKMessageIterator out("out");
    out.setType("outType", kTypes); // the stamps' binding: the written children pass on as written
    ASSERT_EQ(0, out.appendChildrenLinked(source, order));
    const std::string copied = out.toXML();
    // The source writes on, replaces, removes: the copy keeps what it got.
    ASSERT_EQ(0, source.putValue("a", 7));
    ASSERT_EQ(0, source.removeChild("c"));
    ASSERT_EQ(0, source.descend("list"));
    ASSERT_EQ(0, source.createChild("item"));
    ASSERT_EQ(0, source.putValue("n", 9));
    EXPECT_EQ(copied, out.toXML());
    // And the copy's own changes stay out of the source.
    const std::string before = source.root().toXML();
    ASSERT_EQ(0, out.putValue("b", std::string("changed")));
    ASSERT_EQ(0, out.descend("list"));
    ASSERT_EQ(0, out.firstChild("item"));
    ASSERT_EQ(0, out.putValue("n", 42));
    EXPECT_EQ(before, source.root().toXML());
    EXPECT_EQ(std::string::npos, before.find("42"));
    EXPECT_EQ(std::string::npos, before.find("changed"));
}

TEST(HNKMessageIteratorChildrenTest, DifferentBindingsOrDefaultNamespaceTakeTheElementCopies)
{
    const std::vector<size_t> order{0, 1, 2, 3};
    HNKMessageIterator reference("r");
    writeRecord(reference);
    reference.toXML(true);
    // The prefix the items' stamps use is bound to another namespace where
    // they go: the copies declare their own binding.
    HNKMessageIterator source("r");
    writeRecord(source);
    HNKMessageIterator other = parsed(std::string("<out xmlns:") +
                                                 "ns1='urn:other' xmlns:ns0='urn:other0' xmlns:ns2='urn:x'/>");
    HNKMessageIterator otherRef = parsed(other.toXML());
    ASSERT_EQ(0, other.appendChildrenLinked(source, order));
    for (size_t k : order) {
        HNKMessageIterator c(reference);
        ASSERT_EQ(0, c.firstChild());
        for (size_t i = 0; i < k; ++i)
            ASSERT_EQ(0, c.nextSibling());
        ASSERT_EQ(0, otherRef.appendLinked(c));
    }
    EXPECT_EQ(otherRef.toXML(), other.toXML());
    ASSERT_EQ(0, other.descend("list"));
    ASSERT_EQ(0, other.firstChild("item"));
    EXPECT_EQ(std::string(kTypes) + ":itemType", other.getTypeName());
    // A default namespace where they go: the written names must not fall
    // into it.
    HNKMessageIterator source2("r");
    writeRecord(source2);
    HNKMessageIterator defaulted = parsed("<out xmlns='urn:default'/>");
    ASSERT_EQ(0, defaulted.appendChildrenLinked(source2, order));
    const std::string text = defaulted.toXML();
    EXPECT_NE(std::string::npos, text.find("xmlns=\"\"")) << text;
    HNKMessageIterator back = parsed(text);
    int a = 0;
    EXPECT_EQ(0, back.getValue("a", a));
    EXPECT_EQ(1, a);
}

TEST(HNKMessageIteratorChildrenTest, AnOrderThatIsNoPermutationIsRefusedAndAppendsNothing)
{
    HNKMessageIterator source("r");
    writeRecord(source);
    for (const std::vector<size_t>& bad :
         {std::vector<size_t>{0, 1, 2}, std::vector<size_t>{0, 1, 2, 2}, std::vector<size_t>{0, 1, 2, 4}}) {
        HNKMessageIterator out("out");
        EXPECT_EQ(-1, out.appendChildrenLinked(source, bad));
        EXPECT_EQ("<out/>", out.toXML());
    }
    HNKMessageIterator parsedSource = parsed(source.toXML());
    HNKMessageIterator out("out");
    EXPECT_EQ(-1, out.appendChildrenLinked(parsedSource, {3, 2, 1}));
    EXPECT_EQ("<out/>", out.toXML());
    HNKMessageIterator invalid;
    EXPECT_EQ(-1, out.appendChildrenLinked(invalid, {}));
}

TEST(HNKMessageIteratorChildrenTest, AWriterStillInsideLeavesItsChildrenToTheCopies)
{
    HNKMessageIterator source("r");
    ASSERT_EQ(0, source.putValue("a", 1));
    ASSERT_EQ(0, source.createChild("open"));
    ASSERT_EQ(0, source.putValue("x", 2)); // the writer is inside "open"
    HNKMessageIterator top = source.root();
    HNKMessageIterator out("out");
    ASSERT_EQ(0, out.appendChildrenLinked(top, {1, 0}));
    EXPECT_EQ("<out><open><x>2</x></open><a>1</a></out>", out.toXML());
}

TEST(HNKMessageIteratorChildrenTest, ManyWrittenNamesAreFoundAgainExactly)
{
    // Beyond the names a list holds in a row: each setter-like write asks
    // for the element it replaces first; every name ends up once, with its
    // last value, and names sharing their ends stay apart.
    HNKMessageIterator it("r");
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < 40; ++i) {
            const std::string tag = "setting_" + std::to_string(i) + "_value";
            while (it.removeChild(tag) == 0) {
            }
            ASSERT_EQ(0, it.createChild(tag));
            ASSERT_EQ(0, it.putValue(0, round * 100 + i));
            it.ascend();
        }
    const std::string text = it.toXML();
    HNKMessageIterator back = parsed(text);
    EXPECT_EQ(40u, childNames(back).size());
    for (int i = 0; i < 40; ++i) {
        int v = -1;
        EXPECT_EQ(0, back.getValue("setting_" + std::to_string(i) + "_value", v));
        EXPECT_EQ(100 + i, v);
    }
    EXPECT_FALSE(it.hasChild("setting_40_value"));
    EXPECT_FALSE(it.hasChild("setting_1_valu"));
}
