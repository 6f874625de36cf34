// appendLinked behaves as appendCopy for every observer: the same text, the
// same reads, and neither side ever sees a later change of the other.
#include "HNKErrorMessage.h"
#include "HNKMessageIterator.h"
#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The first child element of the root of `text`, appended to a fresh
// document with `appendCopy` or `appendLinked`.
std::string appended(const std::string& text, const char* childTag, bool linked, const char* targetRoot)
{
    HNKMessageIterator source = parsed(text);
    EXPECT_EQ(0, source.descend(childTag));
    HNKMessageIterator target = parsed(targetRoot);
    EXPECT_EQ(0, target.createChild("before"));
    target.ascend();
    EXPECT_EQ(0, linked ? target.appendLinked(source) : target.appendCopy(source));
    EXPECT_EQ(0, target.createChild("after"));
    target.ascend();
    return target.toXML();
}

TEST(HNKMessageIteratorLinkTest, WritesTheSameTextAsACopy)
{
    const std::string cases[][3] = {
        {"<r><list>\n  <a x=\"1&amp;&lt;&quot;\">t&amp;&lt;&gt;</a>\n  <b/><c><![CDATA[x<y]]></c>\n</list></r>", "list",
         "<out/>"},
        {"<r xmlns:p=\"urn:p\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><list><p:a xsi:type=\"p:t\"/>"
         "</list></r>",
         "list", "<out/>"},
        {"<r xmlns=\"urn:d\"><list><a>1</a></list></r>", "list", "<out xmlns=\"urn:other\"/>"},
        {"<r><list a=\"&#9;&#10;\">  <a>1</a>tail<b>2</b></list></r>", "list", "<out><x/></out>"},
        {"<r><value>no element children</value></r>", "value", "<out/>"},
        {"<r><list>lead<a/></list></r>", "list", "<out/>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c[0]);
        EXPECT_EQ(appended(c[0], c[1].c_str(), false, c[2].c_str()), appended(c[0], c[1].c_str(), true, c[2].c_str()));
    }
}

TEST(HNKMessageIteratorLinkTest, ReadsLookInsideAsInACopy)
{
    HNKMessageIterator source = parsed("<r><list><a>1</a><b>two</b></list></r>");
    ASSERT_EQ(0, source.descend("list"));
    HNKMessageIterator target("out");
    ASSERT_EQ(0, target.appendLinked(source));
    HNKMessageIterator view(target);
    ASSERT_EQ(0, view.descend("list"));
    int n = 0;
    EXPECT_EQ(0, view.getValue("a", n));
    EXPECT_EQ(1, n);
    std::string s;
    EXPECT_EQ(0, view.getValue("b", s));
    EXPECT_EQ("two", s);
    EXPECT_EQ("<out><list><a>1</a><b>two</b></list></out>", target.toXML());
    EXPECT_EQ("<out>\n  <list>\n    <a>1</a>\n    <b>two</b>\n  </list>\n</out>\n", HNKMessageIterator(target).toXML(true));
}

TEST(HNKMessageIteratorLinkTest, NeitherSideSeesTheOthersLaterChanges)
{
    HNKMessageIterator source = parsed("<r><list><a>1</a></list></r>");
    HNKMessageIterator onList(source);
    ASSERT_EQ(0, onList.descend("list"));
    HNKMessageIterator target("out");
    ASSERT_EQ(0, target.appendLinked(onList));
    const std::string before = target.toXML();
    // The source changes: the target keeps what was appended.
    EXPECT_EQ(0, onList.putValue("a", 5));
    EXPECT_EQ(0, onList.createChild("c"));
    onList.ascend();
    EXPECT_EQ(0, source.removeChild("list"));
    EXPECT_EQ(before, target.toXML());
    // The target changes inside the appended element: the source keeps its own.
    HNKMessageIterator other = parsed("<r><list><a>1</a></list></r>");
    HNKMessageIterator otherList(other);
    ASSERT_EQ(0, otherList.descend("list"));
    HNKMessageIterator t2("out");
    ASSERT_EQ(0, t2.appendLinked(otherList));
    ASSERT_EQ(0, t2.descend("list"));
    EXPECT_EQ(0, t2.putValue("a", 9));
    t2.ascend();
    int n = 0;
    EXPECT_EQ(0, otherList.getValue("a", n));
    EXPECT_EQ(1, n);
    EXPECT_EQ("<out><list><a>9</a></list></out>", t2.toXML());
    // Removing the appended element, and appending next to it.
    HNKMessageIterator t3("out");
    ASSERT_EQ(0, t3.appendLinked(otherList));
    ASSERT_EQ(0, t3.putValue("z", 1));
    EXPECT_EQ("<out><list><a>1</a></list><z>1</z></out>", t3.toXML());
    EXPECT_EQ(0, t3.removeChild("list"));
    EXPECT_EQ("<out><z>1</z></out>", t3.toXML());
    // The source document may go away before the target is written.
    HNKMessageIterator t4("out");
    {
        HNKMessageIterator gone = parsed("<r><list><a>7</a></list></r>");
        ASSERT_EQ(0, gone.descend("list"));
        ASSERT_EQ(0, t4.appendLinked(gone));
    }
    EXPECT_EQ("<out><list><a>7</a></list></out>", t4.toXML());
}

TEST(HNKMessageIteratorLinkTest, CopiesAndSharesOfALinkedDocumentHoldTheContent)
{
    HNKMessageIterator source = parsed("<r><list><a>1</a></list></r>");
    ASSERT_EQ(0, source.descend("list"));
    HNKMessageIterator target("out");
    ASSERT_EQ(0, target.appendLinked(source));
    HNKMessageIterator clone = target.cloneSubtree();
    HNKMessageIterator shared = target.shareSubtree();
    HNKMessageIterator into("x");
    ASSERT_EQ(0, into.appendCopy(target));
    EXPECT_EQ(0, source.putValue("a", 2));
    EXPECT_EQ("<out><list><a>1</a></list></out>", clone.toXML());
    EXPECT_EQ("<out><list><a>1</a></list></out>", shared.toXML());
    EXPECT_EQ("<x><out><list><a>1</a></list></out></x>", into.toXML());
}

} // namespace
