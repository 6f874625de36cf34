#include "HNKSerialization.h"

#include "HNKDefaultMap.h"
#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKMessageIterator.h"

#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

const char kNs[] = "urn:test:types";

struct Point {
    int x = 0;
    int y = 0;

    struct Reader {
        int operator()(const HNKMessageIterator& it, Point& p) const
        {
            if (it.getValue("x", p.x) != 0 || it.getValue("y", p.y) != 0)
                return -1;
            return 0;
        }
    };
    struct Writer : HNKWriterBase {
        static const char* getStrNSID() { return kNs; }
        static const char* getStrTypeID() { return "pointType"; }
        int operator()(HNKMessageIterator& it, const Point& p) const
        {
            if (p.x < 0) // lets tests make one item fail
                return -1;
            if (it.putValue("x", p.x) != 0 || it.putValue("y", p.y) != 0)
                return -1;
            return 0;
        }
    };
};

// Records every stamp call, so tests see exactly what putObjectInternal asks.
class RecordingIterator : public HNKMessageIterator {
public:
    RecordingIterator() : HNKMessageIterator("r") {}
    std::vector<std::string> calls;

    void setType(unsigned nsid, unsigned typeId) override
    {
        calls.push_back("numeric " + std::to_string(nsid) + " " + std::to_string(typeId));
        HNKMessageIterator::setType(nsid, typeId);
    }
    void setType(const char* type, const char* ns) override
    {
        calls.push_back(std::string("string ") + type + " " + ns);
        HNKMessageIterator::setType(type, ns);
    }
    void setNamespace(unsigned nsid) override
    {
        calls.push_back("ns " + std::to_string(nsid));
        HNKMessageIterator::setNamespace(nsid);
    }
    void setNamespace(const char* ns) override
    {
        calls.push_back(std::string("ns ") + ns);
        HNKMessageIterator::setNamespace(ns);
    }
    using HNKMessageIterator::setNamespace;
    using HNKMessageIterator::setType;
};

template <unsigned NS, unsigned TYPE>
struct NumericWriter {
    static const char* getStrNSID() { return ""; }
    static const char* getStrTypeID() { return "fallbackType"; }
    static unsigned getNSID() { return NS; }
    static unsigned getTypeID() { return TYPE; }
    int operator()(HNKMessageIterator& it, const int& v) const { return it.putValue(0, v); }
};

// ---- getObject / putObject ----

TEST(HNKSerializationTest, GetObjectWithMissingIdFailsAndEmptyIdReadsCurrentElement)
{
    HNKMessageIterator it = parsed("<r><x>1</x><y>2</y><p><x>3</x><y>4</y></p></r>");
    Point p;
    EXPECT_EQ(-1, it.getObject(p, Point::Reader(), "missing"));
    EXPECT_EQ(-1, it.getObject(p, Point::Reader(), 1114));
    EXPECT_EQ(0, p.x);
    EXPECT_EQ(0, it.getObject(p, Point::Reader()));
    EXPECT_EQ(1, p.x);
    EXPECT_EQ(0, it.getObject(p, Point::Reader(), std::string()));
    EXPECT_EQ(0, it.getObject(p, Point::Reader(), 0));
    EXPECT_EQ(0, it.getObject(p, Point::Reader(), "p"));
    EXPECT_EQ(3, p.x);
    EXPECT_EQ(4, p.y);
    EXPECT_STREQ("r", it.currentName());
}

TEST(HNKSerializationTest, FailingReaderStillAscends)
{
    HNKMessageIterator it = parsed("<r><p><x>1</x></p></r>");
    Point p;
    EXPECT_EQ(-1, it.getObject(p, Point::Reader(), "p"));
    EXPECT_STREQ("r", it.currentName());
}

TEST(HNKSerializationTest, PutObjectWithIdReplacesAnExistingChild)
{
    HNKMessageIterator it("r");
    Point a{1, 2}, b{3, 4};
    ASSERT_EQ(0, it.putObject(a, Point::Writer(), "p"));
    ASSERT_EQ(0, it.putObject(b, Point::Writer(), "p"));
    ASSERT_EQ(0, it.putObject(a, Point::Writer(), 1114));
    ASSERT_EQ(0, it.putObject(b, Point::Writer(), 1114));
    int count = 0;
    if (it.firstChild("p") == 0) {
        do
            ++count;
        while (it.nextSibling("p") == 0);
        it.ascend();
    }
    EXPECT_EQ(1, count);
    Point back;
    EXPECT_EQ(0, it.getObject(back, Point::Reader(), "p"));
    EXPECT_EQ(3, back.x);
    EXPECT_EQ(0, it.getObject(back, Point::Reader(), 1114));
    EXPECT_EQ(3, back.x);
    std::string xml = it.toXML();
    EXPECT_EQ(xml.find("<device"), xml.rfind("<device")) << xml;
    EXPECT_TRUE(xmllintAccepts(xml)) << xmllintProblems(xml);
}

TEST(HNKSerializationTest, PutObjectStampsTheChildWithTheWritersType)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putObject(Point{5, 6}, Point::Writer(), "p"));
    ASSERT_EQ(0, it.descend("p"));
    EXPECT_EQ(std::string(kNs) + ":pointType", it.getTypeName());
    it.ascend();
    EXPECT_EQ("", it.getTypeName());
    EXPECT_EQ("", it.getNamespace()); // restored after the writer ran
}

TEST(HNKSerializationTest, PutObjectWithEmptyIdWritesTheCurrentElement)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putObject(Point{7, 8}, Point::Writer()));
    EXPECT_EQ(std::string(kNs) + ":pointType", it.getTypeName());
    Point back;
    EXPECT_EQ(0, it.getObject(back, Point::Reader()));
    EXPECT_EQ(7, back.x);
}

TEST(HNKSerializationTest, WriterStatusIsPassedUp)
{
    HNKMessageIterator it("r");
    EXPECT_EQ(-1, it.putObject(Point{-1, 0}, Point::Writer(), "p"));
}

TEST(HNKSerializationTest, TypeIdOf100IsNeverStampedByNumberAnd101Is)
{
    RecordingIterator at100;
    ASSERT_EQ(0, at100.putObject(1, NumericWriter<292, 100>()));
    EXPECT_EQ((std::vector<std::string>{"ns 292", "string fallbackType ", "ns 0"}), at100.calls);

    RecordingIterator at101;
    ASSERT_EQ(0, at101.putObject(1, NumericWriter<292, 101>()));
    EXPECT_EQ((std::vector<std::string>{"ns 292", "numeric 292 101", "ns 0"}), at101.calls);

    // With no string type either, 100 stamps nothing at all.
    struct Bare : NumericWriter<292, 100> {
        static const char* getStrTypeID() { return ""; }
    };
    HNKMessageIterator bare("r");
    ASSERT_EQ(0, bare.putObject(1, Bare()));
    EXPECT_EQ("", bare.getTypeName());
    EXPECT_EQ("<r>1</r>", bare.toXML());
}

TEST(HNKSerializationTest, NumericTypeAbove100IsStampedWithDefaultMapNames)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putObject(3, NumericWriter<HNK_NS_BACKUP, HNK_TYPE_BACKUP_OPTIONS>(), "opts"));
    ASSERT_EQ(0, it.descend("opts"));
    EXPECT_EQ(std::string(HNKDefaultMap::findNSID(HNK_NS_BACKUP)) + ":" +
                  HNKDefaultMap::findTypeID(HNK_TYPE_BACKUP_OPTIONS),
              it.getTypeName());
    EXPECT_TRUE(xmllintAccepts(it.toXML()));
}

TEST(HNKSerializationTest, DefaultWriterBaseStampsNothing)
{
    EXPECT_EQ(0u, HNKWriterBase::getNSID());
    EXPECT_EQ(50u, HNKWriterBase::getTypeID());
    EXPECT_STREQ("", HNKWriterBase::getStrNSID());
    EXPECT_STREQ("", HNKWriterBase::getStrTypeID());
    RecordingIterator it;
    ASSERT_EQ(0, it.putObject(std::string("v"), HNKStringWriter()));
    EXPECT_TRUE(it.calls.empty());
}

TEST(HNKSerializationTest, EmptyIdGivenToIdTemplatesAsserts)
{
    HNKMessageIterator it("r");
    Point p;
    HNKReaderIDT<std::string, Point::Reader> reader(Point::Reader(), "");
    EXPECT_THROW(reader(it, p), HNKAssertionFailure);
    HNKWriterIDT<int, Point::Writer> writer(Point::Writer(), 0);
    EXPECT_THROW(writer(it, p), HNKAssertionFailure);
    std::vector<int> v;
    HNKReaderListT<int, HNKIntReader> list(0);
    EXPECT_THROW(list(it, v), HNKAssertionFailure);
}

// ---- Reader flags and simple values ----

TEST(HNKSerializationTest, ReaderFlagsZeroToleratesAbsenceAndOneRequiresTheElement)
{
    HNKMessageIterator it = parsed("<r><n>5</n></r>");
    int n = 42;
    EXPECT_EQ(0, HNKReaderID(HNKIntReader(), std::string("missing"), HNK_READER_ABSENCE_OK)(it, n));
    EXPECT_EQ(42, n);
    EXPECT_EQ(-1, HNKReaderID(HNKIntReader(), std::string("missing"), HNK_READER_REQUIRED)(it, n));
    EXPECT_EQ(0, HNKReaderID(HNKIntReader(), std::string("n"), HNK_READER_REQUIRED)(it, n));
    EXPECT_EQ(5, n);
    EXPECT_EQ(0, HNKReaderID(HNKIntReader(), 1192, 0)(it, n));
    EXPECT_EQ(-1, HNKReaderID(HNKIntReader(), 1192, 1)(it, n));
}

TEST(HNKSerializationTest, SimpleReadersAndWritersUseTheElementItself)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putObject(std::string("text"), HNKStringWriter(), "s"));
    ASSERT_EQ(0, it.putObject(12, HNKIntWriter(), "i"));
    ASSERT_EQ(0, it.putObject(true, HNKBoolWriter(), 1152));
    ASSERT_EQ(0, it.putObject(std::string("secret"), HNKBase64Writer(), "b"));
    EXPECT_EQ("<r><s>text</s><i>12</i><linked_clone>1</linked_clone><b>c2VjcmV0</b></r>", it.toXML());
    std::string s, b;
    int i = 0;
    bool flag = false;
    EXPECT_EQ(0, it.getObject(s, HNKStringReader(), "s"));
    EXPECT_EQ(0, it.getObject(i, HNKIntReader(), "i"));
    EXPECT_EQ(0, it.getObject(flag, HNKBoolReader(), 1152));
    EXPECT_EQ(0, it.getObject(b, HNKBase64Reader(), "b"));
    EXPECT_EQ("text", s);
    EXPECT_EQ(12, i);
    EXPECT_TRUE(flag);
    EXPECT_EQ("secret", b);
    EXPECT_NE(0, it.getObject(i, HNKIntReader(), "s"));
}

// ---- Lists and sets ----

TEST(HNKSerializationTest, StringSetUnderWrapperRoundTripsInSetOrder)
{
    std::set<std::string> services{"nfs", "cifs", "ssh"};
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putObject(services, HNKWriterListOf(HNKStringWriter(), 1747), "offline_management_list"));
    EXPECT_EQ("<r><offline_management_list><offline_service>cifs</offline_service><offline_service>nfs</"
              "offline_service><offline_service>ssh</offline_service></offline_management_list></r>",
              it.toXML());
    std::set<std::string> back;
    EXPECT_EQ(0, it.getObject(back, HNKReaderListT<int, HNKStringReader, HNKReaderSetDataT>(1747, 0),
                              "offline_management_list"));
    EXPECT_EQ(services, back);
    EXPECT_STREQ("r", it.currentName());
}

TEST(HNKSerializationTest, SetReadCollapsesDuplicatesAndSucceeds)
{
    HNKMessageIterator it = parsed("<r><l><offline_service>a</offline_service><offline_service>b</offline_service>"
                                   "<offline_service>a</offline_service></l></r>");
    std::set<std::string> back;
    EXPECT_EQ(0, it.getObject(back, HNKReaderListT<int, HNKStringReader, HNKReaderSetDataT>(1747, 0), "l"));
    EXPECT_EQ((std::set<std::string>{"a", "b"}), back);
}

TEST(HNKSerializationTest, SetReadFailsOnAnUnreadableItem)
{
    HNKMessageIterator it = parsed("<r><l><i>1</i><i>x</i><i>3</i></l></r>");
    std::set<int> back;
    EXPECT_EQ(-1, it.getObject(back, HNKReaderListT<std::string, HNKIntReader, HNKReaderSetDataT>("i", 0), "l"));
    EXPECT_EQ((std::set<int>{1}), back);
}

TEST(HNKSerializationTest, EmptyListUnderPresentWrapperFailsUnlessAbsenceTolerated)
{
    HNKMessageIterator it = parsed("<r><l/></r>");
    std::vector<int> v;
    EXPECT_EQ(-1, it.getObject(v, HNKReaderListT<std::string, HNKIntReader>("i", HNK_READER_REQUIRED), "l"));
    EXPECT_EQ(0, it.getObject(v, HNKReaderListT<std::string, HNKIntReader>("i", HNK_READER_ABSENCE_OK), "l"));
    EXPECT_TRUE(v.empty());
    // A missing wrapper is an error through getObject whatever the list flags.
    EXPECT_EQ(-1, it.getObject(v, HNKReaderListT<std::string, HNKIntReader>("i", 0), "missing"));
    EXPECT_STREQ("r", it.currentName());
}

TEST(HNKSerializationTest, ListWithoutWrapperLiesDirectlyUnderTheCurrentElement)
{
    std::vector<Point> points{{1, 2}, {3, 4}};
    HNKMessageIterator it("dev");
    ASSERT_EQ(0, it.putValue("name", "n"));
    ASSERT_EQ(0, it.putObject(points, HNKWriterListOf(Point::Writer(), 2047)));
    ASSERT_EQ(0, it.putValue("mac", "m"));
    std::vector<Point> back;
    EXPECT_EQ(0, it.getObject(back, HNKReaderListT<int, Point::Reader>(2047, 0)));
    ASSERT_EQ(2u, back.size());
    EXPECT_EQ(3, back[1].x);
    EXPECT_STREQ("dev", it.currentName());
    std::vector<Point> none;
    EXPECT_EQ(0, it.getObject(none, HNKReaderListT<int, Point::Reader>(1281, 0)));
    EXPECT_EQ(-1, it.getObject(none, HNKReaderListT<int, Point::Reader>(1281, 1)));
    EXPECT_STREQ("dev", it.currentName());
}

TEST(HNKSerializationTest, StringTagItemsRoundTrip)
{
    std::vector<Point> rows{{1, 1}, {2, 2}, {3, 3}};
    HNKMessageIterator it("settings");
    ASSERT_EQ(0, it.putObject(rows, HNKWriterListOf(Point::Writer(), std::string("vm_memory"))));
    std::vector<Point> back;
    EXPECT_EQ(0, it.getObject(back, HNKReaderListT<std::string, Point::Reader>("vm_memory", 0)));
    EXPECT_EQ(3u, back.size());
}

TEST(HNKSerializationTest, FailingListItemIsDroppedAndEarlierItemsStay)
{
    HNKMessageIterator it = parsed("<r><l><p><x>1</x><y>1</y></p><p><x>2</x></p><p><x>3</x><y>3</y></p></l></r>");
    std::vector<Point> back;
    EXPECT_EQ(-1, it.getObject(back, HNKReaderListT<std::string, Point::Reader>("p", 0), "l"));
    ASSERT_EQ(1u, back.size());
    EXPECT_EQ(1, back[0].x);
    EXPECT_STREQ("r", it.currentName());
}

TEST(HNKSerializationTest, ListWriterReturnsOneWhenStoppedAndKeepsEarlierItems)
{
    std::vector<Point> points{{1, 1}, {-1, 0}, {3, 3}};
    HNKMessageIterator it("r");
    EXPECT_EQ(1, it.putObject(points, HNKWriterListOf(Point::Writer(), std::string("p")), "l"));
    EXPECT_EQ(std::string::npos, it.toXML().find("<x>3</x>")); // stopped before the third
    std::vector<Point> back;
    EXPECT_EQ(-1, it.getObject(back, HNKReaderListT<std::string, Point::Reader>("p", 0), "l"));
    ASSERT_EQ(1u, back.size()); // the first item, then the half-written failing one
    EXPECT_EQ(1, back[0].x);
    EXPECT_STREQ("r", it.currentName());
    EXPECT_EQ(1, HNKWriterListOf(Point::Writer(), 1114)(it, points));
}

TEST(HNKSerializationTest, EmptyContainerWritesNothingAndSucceeds)
{
    HNKMessageIterator it("r");
    std::vector<Point> none;
    EXPECT_EQ(0, it.putObject(none, HNKWriterListOf(Point::Writer(), 2047)));
    EXPECT_EQ("<r/>", it.toXML());
    EXPECT_EQ(0, it.putObject(none, HNKWriterListOf(Point::Writer(), 2047), "wrapper"));
    EXPECT_EQ("<r><wrapper/></r>", it.toXML());
}

TEST(HNKSerializationTest, ListWriteWithWrapperReplacesTheOldWrapper)
{
    HNKMessageIterator it("r");
    std::set<std::string> first{"a", "b"}, second{"c"};
    ASSERT_EQ(0, it.putObject(first, HNKWriterListOf(HNKStringWriter(), 1747), "offline_management_list"));
    ASSERT_EQ(0, it.putObject(second, HNKWriterListOf(HNKStringWriter(), 1747), "offline_management_list"));
    EXPECT_EQ("<r><offline_management_list><offline_service>c</offline_service></offline_management_list></r>",
              it.toXML());
}

TEST(HNKSerializationTest, UnknownNumericItemIdFailsTheWrite)
{
    HNKMessageIterator it("r");
    std::vector<int> v{1};
    EXPECT_EQ(1, it.putObject(v, HNKWriterListOf(HNKIntWriter(), 777777)));
    EXPECT_EQ("<r/>", it.toXML());
}

// ---- Heap records ----

struct Shape {
    virtual ~Shape() {}
    int id = 0;
};
struct Circle : Shape {
    int radius = 0;
};
struct Square : Shape {};

struct CircleReader {
    int operator()(const HNKMessageIterator& it, Circle& c) const { return it.getValue("radius", c.radius); }
};
struct CircleWriter : HNKWriterBase {
    static const char* getStrNSID() { return kNs; }
    static const char* getStrTypeID() { return "circle"; }
    int operator()(HNKMessageIterator& it, const Circle& c) const { return it.putValue("radius", c.radius); }
};

TEST(HNKSerializationTest, PointerReaderHandsOutANewObjectOnlyOnSuccess)
{
    HNKMessageIterator good = parsed("<c><radius>4</radius></c>");
    HNKMessageIterator bad = parsed("<c/>");
    HNKReaderPointerDataT<Circle, CircleReader> reader;
    Shape* out = nullptr;
    EXPECT_EQ(-1, reader(bad, out));
    EXPECT_EQ(nullptr, out);
    ASSERT_EQ(0, reader(good, out));
    ASSERT_NE(nullptr, out);
    EXPECT_EQ(4, dynamic_cast<Circle*>(out)->radius);
    delete out;
}

TEST(HNKSerializationTest, PointerWriterRefusesNullAndOtherClasses)
{
    HNKWriterPointerDataT<Circle, CircleWriter> writer;
    HNKMessageIterator it("r");
    Square square;
    Circle circle;
    circle.radius = 9;
    EXPECT_EQ(-1, writer(it, static_cast<const Shape*>(nullptr)));
    EXPECT_EQ(-1, writer(it, static_cast<const Shape*>(&square)));
    EXPECT_EQ(0, writer(it, static_cast<const Shape*>(&circle)));
    EXPECT_STREQ(kNs, writer.getStrNSID());
    EXPECT_STREQ("circle", writer.getStrTypeID());
    EXPECT_EQ("<r><radius>9</radius></r>", it.toXML());
}

} // namespace
