#include "HNKMessageIterator.h"

#include "HNKDefaultMap.h"
#include "HNKElementDictionary.h"
#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "tools/MessageTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <set>

namespace {

const char kNs[] = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes";
const char kXsi[] = "http://www.w3.org/2001/XMLSchema-instance";

TEST(HNKMessageIteratorTest, XmllintIsAvailableAndRejectsBrokenText)
{
    EXPECT_TRUE(xmllintAccepts("<a/>"));
    EXPECT_FALSE(xmllintAccepts("<a>"));
    EXPECT_FALSE(xmllintAccepts("<p:a/>")); // undeclared prefix
}

TEST(HNKMessageIteratorTest, DefaultCursorHasNoDocumentAndEveryOperationFails)
{
    HNKMessageIterator it;
    std::string s;
    EXPECT_FALSE(it.isValid());
    EXPECT_NE(0, it.descend("a"));
    EXPECT_NE(0, it.createChild("a"));
    EXPECT_NE(0, it.getValue("a", s));
    EXPECT_NE(0, it.putValue("a", "x"));
    EXPECT_EQ("", it.toXML());
    EXPECT_EQ("", it.getTypeName());
    it.ascend();
    it.removeCurrent();
    EXPECT_FALSE(it.cloneSubtree().isValid());
}

TEST(HNKMessageIteratorTest, NewDocumentHasRootElementAndCursorOnIt)
{
    HNKMessageIterator it("config");
    ASSERT_TRUE(it.isValid());
    EXPECT_STREQ("config", it.currentName());
    EXPECT_EQ("<config/>", it.toXML());
}

TEST(HNKMessageIteratorTest, InvalidRootNameGivesInvalidCursor)
{
    HNKMessageIterator it("1bad name");
    EXPECT_FALSE(it.isValid());
    EXPECT_NE(std::string::npos, getErrorMessage().find("1bad name"));
}

TEST(HNKMessageIteratorTest, CreateChildMovesOntoItAndAscendReturns)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("a"));
    EXPECT_STREQ("a", it.currentName());
    ASSERT_EQ(0, it.createChild(1114));
    EXPECT_STREQ("device", it.currentName());
    it.ascend();
    it.ascend();
    EXPECT_STREQ("r", it.currentName());
    it.ascend(); // stays on the root
    EXPECT_STREQ("r", it.currentName());
    EXPECT_EQ("<r><a><device/></a></r>", it.toXML());
}

TEST(HNKMessageIteratorTest, CreateChildRefusesEmptyUnknownAndInvalidIds)
{
    HNKMessageIterator it("r");
    EXPECT_NE(0, it.createChild(0));
    EXPECT_NE(0, it.createChild(""));
    EXPECT_NE(0, it.createChild(std::string()));
    EXPECT_NE(0, it.createChild(987654));
    EXPECT_NE(std::string::npos, getErrorMessage().find("987654"));
    EXPECT_NE(0, it.createChild("a b"));
    EXPECT_NE(0, it.createChild("p:a"));
    EXPECT_NE(0, it.createChild("<x"));
    EXPECT_STREQ("r", it.currentName());
    EXPECT_EQ("<r/>", it.toXML());
}

TEST(HNKMessageIteratorTest, DescendMatchesLocalNameIgnoringPrefix)
{
    HNKMessageIterator it = parsed("<r xmlns:q='urn:q'><q:a>1</q:a><b>2</b></r>");
    ASSERT_EQ(0, it.descend("a"));
    EXPECT_STREQ("a", it.currentName());
    it.ascend();
    ASSERT_EQ(0, it.descend(std::string("b")));
    it.ascend();
    EXPECT_NE(0, it.descend("c"));
    EXPECT_STREQ("r", it.currentName());
    EXPECT_NE(0, it.descend("q:a")); // names are local names
    EXPECT_NE(0, it.descend(""));
    EXPECT_NE(0, it.descend(0));
}

TEST(HNKMessageIteratorTest, NumericIdsMapThroughTheElementDictionary)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putValue(1026, "clone-1"));
    ASSERT_EQ(0, it.putValue(1704, 7));
    EXPECT_EQ("<r><clone_name>clone-1</clone_name><operation_flags>7</operation_flags></r>", it.toXML());
    std::string s;
    int n = 0;
    EXPECT_EQ(0, it.getValue("clone_name", s));
    EXPECT_EQ("clone-1", s);
    EXPECT_EQ(0, it.getValue(1704, n));
    EXPECT_EQ(7, n);
    EXPECT_TRUE(it.hasChild(1026));
    EXPECT_EQ(0, it.descend(1026));
    EXPECT_STREQ("clone_name", it.currentName());
}

TEST(HNKMessageIteratorTest, UnknownNumericIdFailsEveryOperationWithoutCrash)
{
    HNKMessageIterator it("r");
    std::string s;
    int n;
    bool b;
    EXPECT_NE(0, it.descend(424242));
    EXPECT_NE(0, it.firstChild(424242));
    EXPECT_NE(0, it.nextSibling(424242));
    EXPECT_NE(0, it.getValue(424242, s));
    EXPECT_NE(0, it.getValue(424242, n));
    EXPECT_NE(0, it.getValue(424242, b));
    EXPECT_NE(0, it.putValue(424242, "x"));
    EXPECT_NE(0, it.putValue(424242, 3));
    EXPECT_NE(0, it.getValueBase64(424242, s));
    EXPECT_NE(0, it.putValueBase64(424242, "x"));
    EXPECT_NE(0, it.removeChild(424242));
    EXPECT_FALSE(it.hasChild(424242));
    EXPECT_EQ("<r/>", it.toXML());
}

TEST(HNKMessageIteratorTest, DictionaryHasTheModuleIdsUniqueAndValid)
{
    for (int id : {1114, 1647, 1747, 2047, 1281, 1558, 1223, 1278, 1007, 1192, 1421, 1026, 1152, 1185, 1687, 1962,
                   1704, 2035})
        EXPECT_NE(nullptr, HNKElementDictionary::findName(id)) << id;
    unsigned count = 0;
    const HNKElementDictionary::Entry* e = HNKElementDictionary::entries(count);
    std::set<int> ids;
    std::set<std::string> names;
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_TRUE(ids.insert(e[i].id).second) << e[i].id;
        EXPECT_TRUE(names.insert(e[i].name).second) << e[i].name;
        EXPECT_EQ(e[i].id, HNKElementDictionary::findID(e[i].name));
        HNKMessageIterator it("r");
        EXPECT_EQ(0, it.createChild(e[i].id)) << e[i].name; // a valid element name
    }
    EXPECT_EQ(nullptr, HNKElementDictionary::findName(1));
    // Every ID names its own entry, and no other number names anything.
    for (unsigned i = 0; i < count; ++i)
        EXPECT_STREQ(e[i].name, HNKElementDictionary::findName(e[i].id)) << e[i].id;
    for (int id = -5000; id <= 70000; ++id) {
        if (!ids.count(id)) {
            ASSERT_EQ(nullptr, HNKElementDictionary::findName(id)) << id;
        }
    }
}

TEST(HNKMessageIteratorTest, FirstChildAndNextSiblingWalkOneIdSkippingOthers)
{
    HNKMessageIterator it = parsed("<r><device>1</device><x/><device>2</device>text<device>3</device></r>");
    std::vector<int> seen;
    ASSERT_EQ(0, it.firstChild(1114));
    do {
        int v;
        ASSERT_EQ(0, it.getValue(0, v));
        seen.push_back(v);
    } while (it.nextSibling(1114) == 0);
    EXPECT_STREQ("device", it.currentName()); // stays on the last item
    it.ascend();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), seen);
    ASSERT_EQ(0, it.firstChild("x"));
    EXPECT_NE(0, it.nextSibling("x"));
    it.ascend();
    EXPECT_NE(0, it.firstChild("none"));
}

TEST(HNKMessageIteratorTest, RemoveCurrentDeletesElementAndReturnsToParent)
{
    HNKMessageIterator it = parsed("<r><a><b/></a><c/></r>");
    ASSERT_EQ(0, it.descend("a"));
    it.removeCurrent();
    EXPECT_STREQ("r", it.currentName());
    EXPECT_EQ("<r><c/></r>", it.toXML());
    it.removeCurrent(); // the root stays
    EXPECT_EQ("<r><c/></r>", it.toXML());
    EXPECT_EQ(0, it.removeChild("c"));
    EXPECT_NE(0, it.removeChild("c"));
    EXPECT_EQ("<r/>", it.toXML());
}

TEST(HNKMessageIteratorTest, IdZeroAndEmptyTagAddressTheCurrentElement)
{
    HNKMessageIterator it = parsed("<r><a>hello</a></r>");
    ASSERT_EQ(0, it.descend("a"));
    std::string s;
    EXPECT_EQ(0, it.getValue(0, s));
    EXPECT_EQ("hello", s);
    s.clear();
    EXPECT_EQ(0, it.getValue("", s));
    EXPECT_EQ("hello", s);
    EXPECT_EQ(0, it.putValue(0, "bye"));
    it.ascend();
    EXPECT_EQ("<r><a>bye</a></r>", it.toXML());
}

TEST(HNKMessageIteratorTest, TextSplitByCdataOrChildrenReadsWholeAndPutReplacesAll)
{
    HNKMessageIterator it = parsed("<r><a>x<![CDATA[<y>]]>z</a><b>1<i/>2</b></r>");
    std::string s;
    int n = 0;
    EXPECT_EQ(0, it.getValue("a", s));
    EXPECT_EQ("x<y>z", s);
    EXPECT_EQ(0, it.getValue("b", n));
    EXPECT_EQ(12, n);
    ASSERT_EQ(0, it.putValue("b", 7));
    EXPECT_EQ(0, it.getValue("b", n));
    EXPECT_EQ(7, n);
    EXPECT_EQ("<r><a>x<![CDATA[<y>]]>z</a><b>7<i/></b></r>", it.toXML());
}

TEST(HNKMessageIteratorTest, PutValueReplacesTheTextOfAnExistingChild)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putValue("cpu_count", 2));
    ASSERT_EQ(0, it.putValue("cpu_count", 4));
    EXPECT_EQ("<r><cpu_count>4</cpu_count></r>", it.toXML());
}

TEST(HNKMessageIteratorTest, StringLiteralIsPutAsTextNotAsBool)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putValue("name", "vm one"));
    ASSERT_EQ(0, it.putValue(std::string("other"), "x"));
    EXPECT_EQ("<r><name>vm one</name><other>x</other></r>", it.toXML());
}

TEST(HNKMessageIteratorTest, BoolIsPutAsZeroOrOneAndReadFromEitherForm)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putValue("t", true));
    ASSERT_EQ(0, it.putValue("f", false));
    EXPECT_EQ("<r><t>1</t><f>0</f></r>", it.toXML());
    HNKMessageIterator in = parsed("<r><a>true</a><b>false</b><c> 1 </c><d>yes</d><e>2</e><f/></r>");
    bool v = false;
    EXPECT_EQ(0, in.getValue("a", v));
    EXPECT_TRUE(v);
    EXPECT_EQ(0, in.getValue("b", v));
    EXPECT_FALSE(v);
    EXPECT_EQ(0, in.getValue("c", v));
    EXPECT_TRUE(v);
    EXPECT_NE(0, in.getValue("d", v));
    EXPECT_NE(0, in.getValue("e", v));
    EXPECT_NE(0, in.getValue("f", v));
    EXPECT_TRUE(v); // untouched by the failed gets
}

TEST(HNKMessageIteratorTest, IntegersParseStrictlyAndRangeChecked)
{
    HNKMessageIterator it = parsed(
        "<r><ok> -42 </ok><plus>+7</plus><max>2147483647</max><min>-2147483648</min><over>2147483648</over>"
        "<under>-2147483649</under><junk>12abc</junk><hex>0x10</hex><empty/><blank>  </blank><frac>1.5</frac>"
        "<sign>-</sign><big>99999999999999999999999</big><neg>-1</neg></r>");
    int v = 99;
    EXPECT_EQ(0, it.getValue("ok", v));
    EXPECT_EQ(-42, v);
    EXPECT_EQ(0, it.getValue("plus", v));
    EXPECT_EQ(7, v);
    EXPECT_EQ(0, it.getValue("max", v));
    EXPECT_EQ(INT_MAX, v);
    EXPECT_EQ(0, it.getValue("min", v));
    EXPECT_EQ(INT_MIN, v);
    v = 5;
    for (const char* bad : {"over", "under", "junk", "hex", "empty", "blank", "frac", "sign", "big", "missing"})
        EXPECT_NE(0, it.getValue(bad, v)) << bad;
    EXPECT_EQ(5, v);
    it.getValue("junk", v);
    EXPECT_NE(std::string::npos, getErrorMessage().find("junk"));

    long long ll = 0;
    EXPECT_EQ(0, it.getValue("over", ll));
    EXPECT_EQ(2147483648LL, ll);
    EXPECT_NE(0, it.getValue("big", ll));
    unsigned u = 3;
    EXPECT_NE(0, it.getValue("neg", u));
    EXPECT_EQ(0, it.getValue("over", u));
    EXPECT_EQ(2147483648u, u);
    unsigned long long ull = 0;
    EXPECT_NE(0, it.getValue("neg", ull));
}

// Short plain digits (the usual value) are read in one step; the values
// around that shape read as every other value does.
TEST(HNKMessageIteratorTest, ShortPlainValuesReadLikeAnyOther)
{
    HNKMessageIterator it = parsed("<r><a>0</a><b>7</b><c>00042</c><d>12345</d><e>99999</e><f>100000</f>"
                                   "<g>5 </g><h>5a</h><i>1</i><j>10</j><k>01</k><l>0 </l></r>");
    const std::pair<const char*, int> good[] = {{"a", 0},     {"b", 7},      {"c", 42}, {"d", 12345},
                                                {"e", 99999}, {"f", 100000}, {"g", 5},  {"j", 10}};
    for (const auto& g : good) {
        int v = -1;
        EXPECT_EQ(0, it.getValue(g.first, v)) << g.first;
        EXPECT_EQ(g.second, v) << g.first;
    }
    int v = -1;
    EXPECT_NE(0, it.getValue("h", v));
    EXPECT_EQ(-1, v);
    unsigned long long big = 0;
    EXPECT_EQ(0, it.getValue("e", big));
    EXPECT_EQ(99999u, big);
    const std::pair<const char*, bool> flags[] = {{"a", false}, {"i", true}, {"l", false}};
    bool flag = true;
    for (const auto& f : flags) {
        flag = !f.second;
        EXPECT_EQ(0, it.getValue(f.first, flag)) << f.first;
        EXPECT_EQ(f.second, flag) << f.first;
    }
    for (const char* bad : {"b", "j", "k", "h"})
        EXPECT_NE(0, it.getValue(bad, flag)) << bad;
    EXPECT_FALSE(flag);
}

TEST(HNKMessageIteratorTest, WideIntegersRoundTrip)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.putValue("a", LLONG_MIN));
    ASSERT_EQ(0, it.putValue("b", ULLONG_MAX));
    ASSERT_EQ(0, it.putValue("c", 4000000000u));
    long long a = 0;
    unsigned long long b = 0;
    unsigned c = 0;
    EXPECT_EQ(0, it.getValue("a", a));
    EXPECT_EQ(LLONG_MIN, a);
    EXPECT_EQ(0, it.getValue("b", b));
    EXPECT_EQ(ULLONG_MAX, b);
    EXPECT_EQ(0, it.getValue("c", c));
    EXPECT_EQ(4000000000u, c);
}

TEST(HNKMessageIteratorTest, StringValuesRoundTripWithEscapes)
{
    HNKMessageIterator it("r");
    const std::string tricky = "a<b>&c\"d'e]]>f\tg\nh \xC3\xA9 \xF0\x9F\x98\x80";
    ASSERT_EQ(0, it.putValue("s", tricky));
    ASSERT_EQ(0, it.putValue("e", ""));
    std::string xml = it.toXML();
    EXPECT_TRUE(xmllintAccepts(xml)) << xml;
    HNKMessageIterator back = parsed(xml);
    std::string s, e = "x";
    EXPECT_EQ(0, back.getValue("s", s));
    EXPECT_EQ(tricky, s);
    EXPECT_EQ(0, back.getValue("e", e));
    EXPECT_EQ("", e);
}

TEST(HNKMessageIteratorTest, PutRefusesTextXmlCannotCarry)
{
    HNKMessageIterator it("r");
    EXPECT_NE(0, it.putValue("a", std::string("x\0y", 3)));
    EXPECT_NE(0, it.putValue("a", "bell\x07"));
    EXPECT_NE(0, it.putValue("a", "\xFF\xFE"));
    EXPECT_NE(0, it.putValue("a", "\xC3"));         // truncated sequence
    EXPECT_NE(0, it.putValue("a", "\xED\xA0\x80")); // surrogate
    EXPECT_NE(0, it.putValue("a", "\xC0\xAF"));     // overlong
    EXPECT_EQ("<r/>", it.toXML());                  // nothing created
    EXPECT_FALSE(getErrorMessage().empty());
}

TEST(HNKMessageIteratorTest, Base64ValuesAreStoredEncodedAndReadDecoded)
{
    HNKMessageIterator it("r");
    const std::string secret("p\0a\xFFss", 6);
    ASSERT_EQ(0, it.putValueBase64("pw", secret));
    ASSERT_EQ(0, it.putValueBase64(1026, "hi"));
    EXPECT_EQ("<r><pw>cABh/3Nz</pw><clone_name>aGk=</clone_name></r>", it.toXML());
    std::string out;
    EXPECT_EQ(0, it.getValueBase64("pw", out));
    EXPECT_EQ(secret, out);
    EXPECT_EQ(0, it.getValueBase64(std::string("clone_name"), out));
    EXPECT_EQ("hi", out);
    HNKMessageIterator bad = parsed("<r><a>not base64!</a></r>");
    out = "kept";
    EXPECT_NE(0, bad.getValueBase64("a", out));
    EXPECT_NE(0, bad.getValueBase64("missing", out));
    EXPECT_EQ("kept", out);
}

// ---- Type stamps ----

TEST(HNKMessageIteratorTest, SetTypeStampsXsiTypeWithDeclaredPrefixes)
{
    HNKMessageIterator it("r");
    it.setType("vm_device", kNs);
    std::string xml = it.toXML();
    EXPECT_EQ(std::string("<r xmlns:hnrtypes=\"") + kNs + "\" xmlns:xsi=\"" + kXsi +
                  "\" xsi:type=\"hnrtypes:vm_device\"/>",
              xml);
    EXPECT_TRUE(xmllintAccepts(xml)) << xml;
    EXPECT_EQ(std::string(kNs) + ":vm_device", it.getTypeName());
}

TEST(HNKMessageIteratorTest, NestedStampsReuseBindingsInScope)
{
    HNKMessageIterator it("r");
    it.setType("venv_configType", kNs);
    ASSERT_EQ(0, it.createChild("device_list"));
    ASSERT_EQ(0, it.createChild(1114));
    it.setType("vm_network_device", kNs);
    EXPECT_EQ(std::string(kNs) + ":vm_network_device", it.getTypeName());
    it.ascend();
    it.ascend();
    std::string xml = it.toXML();
    EXPECT_NE(std::string::npos, xml.find("<device xsi:type=\"hnrtypes:vm_network_device\"/>")) << xml;
    EXPECT_TRUE(xmllintAccepts(xml)) << xml;
}

TEST(HNKMessageIteratorTest, FirstStampWins)
{
    HNKMessageIterator it("r");
    it.setType("vm_network_device", kNs);
    it.setType("vm_device", kNs);
    it.setType(HNK_NS_DEVICES, HNK_TYPE_COMMON_DEVICE);
    EXPECT_EQ(std::string(kNs) + ":vm_network_device", it.getTypeName());
    std::string xml = it.toXML();
    EXPECT_EQ(xml.find("xsi:type"), xml.rfind("xsi:type")) << xml;
}

TEST(HNKMessageIteratorTest, NumericTypeStampUsesDefaultMapNames)
{
    HNKMessageIterator it("r");
    it.setType(HNK_NS_DEVICES, HNK_TYPE_COMMON_DEVICE);
    EXPECT_EQ(std::string(HNKDefaultMap::findNSID(278)) + ":" + HNKDefaultMap::findTypeID(301), it.getTypeName());
    EXPECT_EQ("http://www.tessaline.org/webservices/hnk/4.0.0/hnkdevices:common_deviceType", it.getTypeName());
    EXPECT_TRUE(xmllintAccepts(it.toXML()));
    HNKMessageIterator unknown("r");
    unknown.setType(292, 99999);
    EXPECT_EQ("", unknown.getTypeName());
}

TEST(HNKMessageIteratorTest, DefaultMapKnowsTheFrameworkIds)
{
    for (unsigned ns : {292u, 278u, 294u, 282u})
        EXPECT_STRNE("", HNKDefaultMap::findNSID(ns)) << ns;
    for (unsigned t : {120u, 121u, 122u, 151u, 152u, 167u, 301u, 275u, 277u, 107u})
        EXPECT_STRNE("", HNKDefaultMap::findTypeID(t)) << t;
    EXPECT_STREQ("", HNKDefaultMap::findNSID(0));
    EXPECT_STREQ("", HNKDefaultMap::findNSID(1));
    EXPECT_STREQ("", HNKDefaultMap::findTypeID(1));
}

TEST(HNKMessageIteratorTest, SetTypeWithoutNamespaceUsesTheCurrentNamespace)
{
    HNKMessageIterator it("r");
    it.setNamespace(kNs);
    EXPECT_EQ(kNs, it.getNamespace());
    it.setType("vm_device", nullptr);
    EXPECT_EQ(std::string(kNs) + ":vm_device", it.getTypeName());
    it.setNamespace(0);
    EXPECT_EQ("", it.getNamespace());
    ASSERT_EQ(0, it.createChild("x"));
    it.setType("plain", "");
    EXPECT_EQ("plain", it.getTypeName());
    it.ascend();
    EXPECT_TRUE(xmllintAccepts(it.toXML()));
}

// The namespace may be set from its own text, whole or a piece of it.
TEST(HNKMessageIteratorTest, NamespaceSetFromItselfStaysWhole)
{
    HNKMessageIterator it("r");
    const std::string longer = std::string(kNs) + "/and/a/longer/tail/than/fits/in/place";
    it.setNamespace(longer.c_str());
    it.setNamespace(it.getNamespace().c_str());
    EXPECT_EQ(longer, it.getNamespace());
    it.setNamespace(it.getNamespace().c_str() + 7);
    EXPECT_EQ(longer.substr(7), it.getNamespace());
    it.setNamespace(it.getNamespace().c_str() + it.getNamespace().size());
    EXPECT_EQ("", it.getNamespace());
    it.setNamespace(kNs);
    EXPECT_EQ(kNs, it.getNamespace());
}

TEST(HNKMessageIteratorTest, TypeNameIsIndependentOfThePrefix)
{
    std::string a = std::string("<d xmlns:a=\"") + kNs + "\" xmlns:x=\"" + kXsi + "\" x:type=\"a:vm_device\"/>";
    std::string b = std::string("<d xmlns:b=\"") + kNs + "\" xmlns:xsi=\"" + kXsi + "\" xsi:type=\"b:vm_device\"/>";
    std::string c = std::string("<r xmlns:b=\"") + kNs + "\" xmlns:xsi=\"" + kXsi + "\"><d xsi:type=\"b:vm_device\"/></r>";
    EXPECT_EQ(std::string(kNs) + ":vm_device", parsed(a).getTypeName());
    EXPECT_EQ(parsed(a).getTypeName(), parsed(b).getTypeName());
    HNKMessageIterator nested = parsed(c);
    ASSERT_EQ(0, nested.descend("d"));
    EXPECT_EQ(parsed(a).getTypeName(), nested.getTypeName());
}

TEST(HNKMessageIteratorTest, NearestPrefixDeclarationWins)
{
    HNKMessageIterator it = parsed(std::string("<r xmlns:p='urn:outer' xmlns:xsi='") + kXsi +
                                   "'><d xmlns:p='urn:inner' xsi:type='p:t'/></r>");
    ASSERT_EQ(0, it.descend("d"));
    EXPECT_EQ("urn:inner:t", it.getTypeName());
}

TEST(HNKMessageIteratorTest, UnprefixedTypeTakesTheDefaultNamespace)
{
    HNKMessageIterator withDefault =
        parsed(std::string("<d xmlns='urn:def' xmlns:xsi='") + kXsi + "' xsi:type='vm_device'/>");
    EXPECT_EQ("urn:def:vm_device", withDefault.getTypeName());
    HNKMessageIterator without = parsed(std::string("<d xmlns:xsi='") + kXsi + "' xsi:type='vm_device'/>");
    EXPECT_EQ("vm_device", without.getTypeName());
    // A type attribute in another namespace is not a type stamp.
    HNKMessageIterator other = parsed("<d xmlns:o='urn:o' o:type='vm_device' type='x'/>");
    EXPECT_EQ("", other.getTypeName());
}

TEST(HNKMessageIteratorTest, StampWithoutNamespaceUnderDefaultNamespaceStaysUnqualified)
{
    HNKMessageIterator it = parsed("<r xmlns='urn:def'><d/></r>");
    ASSERT_EQ(0, it.descend("d"));
    it.setType("bare", "");
    EXPECT_EQ("bare", it.getTypeName());
    it.ascend();
    EXPECT_TRUE(xmllintAccepts(it.toXML()));
}

TEST(HNKMessageIteratorTest, StampDoesNotStealAPrefixBoundElsewhere)
{
    // "hnrtypes" is taken by another URI in scope: a fresh prefix is used.
    HNKMessageIterator it = parsed("<r xmlns:hnrtypes='urn:other' xmlns:xsi='urn:not-xsi'><hnrtypes:d/></r>");
    ASSERT_EQ(0, it.descend("d"));
    it.setType("vm_device", kNs);
    EXPECT_EQ(std::string(kNs) + ":vm_device", it.getTypeName());
    it.ascend();
    std::string xml = it.toXML();
    EXPECT_TRUE(xmllintAccepts(xml)) << xml;
    HNKMessageIterator back = parsed(xml);
    ASSERT_EQ(0, back.descend("d"));
    EXPECT_EQ(std::string(kNs) + ":vm_device", back.getTypeName());
}

TEST(HNKMessageIteratorTest, SecondaryIdIsRecordedAsAttribute)
{
    HNKMessageIterator it("r");
    it.applySecondaryID(17);
    it.applySecondaryID(18);
    EXPECT_EQ("<r secondary_id=\"18\"/>", it.toXML());
}

// ---- Text form ----

TEST(HNKMessageIteratorTest, FromXmlReplacesOnlyThisCursorsDocument)
{
    HNKMessageIterator a = parsed("<old/>");
    HNKMessageIterator b(a);
    ASSERT_EQ(0, a.fromXML("<new><x/></new>"));
    EXPECT_STREQ("new", a.currentName());
    EXPECT_EQ("<old/>", b.toXML());
}

TEST(HNKMessageIteratorTest, CopiesShareTheDocumentWithTheirOwnPosition)
{
    HNKMessageIterator a("r");
    HNKMessageIterator b(a);
    ASSERT_EQ(0, b.createChild("x"));
    EXPECT_STREQ("r", a.currentName());
    EXPECT_EQ("<r><x/></r>", a.toXML());
    HNKMessageIterator r = b.root();
    EXPECT_STREQ("r", r.currentName());
}

struct BadInput {
    const char* name;
    std::string text;
    const char* messagePart;
};

TEST(HNKMessageIteratorTest, BadInputIsRefusedWithWhatAndWhere)
{
    const BadInput cases[] = {
        {"malformed", "<r><a></b></r>", "byte offset 8"},
        {"unclosed", "<r><a>", "malformed XML"},
        {"empty", "", "empty document"},
        {"blank", "  \n ", "empty document"},
        {"comment only", "<!-- x -->", "empty document"},
        {"doctype", "<!DOCTYPE r [<!ENTITY x 'yyyy'>]><r>&x;</r>", "DOCTYPE"},
        {"xxe", "<!DOCTYPE r [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><r>&x;</r>", "DOCTYPE"},
        {"two roots", "<a/><b/>", "more than one root"},
        {"text outside", "hello<a/>", "text outside"},
        {"undeclared xsi:type prefix",
         std::string("<d xmlns:xsi='") + kXsi + "' xsi:type='q:vm_device'/>", "undeclared namespace prefix 'q'"},
        {"undeclared element prefix", "<p:d/>", "undeclared namespace prefix 'p'"},
        {"undeclared attribute prefix", "<d p:x='1'/>", "undeclared namespace prefix 'p'"},
        {"nul", std::string("<r>\0</r>", 8), "byte offset 3"},
        {"control char", "<r>\x01</r>", "byte offset 3"},
        {"bad utf8", "<r>\xC3\x28</r>", "UTF-8"},
        {"empty prefix binding", "<r xmlns:p=''/>", "namespace declaration"},
        {"two colons", "<a:b:c xmlns:a='urn:a'/>", "invalid element name"},
    };
    for (const BadInput& c : cases) {
        HNKMessageIterator it("kept");
        setErrorMessage("none");
        EXPECT_EQ(-1, it.fromXML(c.text)) << c.name;
        EXPECT_NE(std::string::npos, getErrorMessage().find(c.messagePart)) << c.name << ": " << getErrorMessage();
        EXPECT_NE(std::string::npos, getErrorMessage().find("fromXML")) << c.name;
        EXPECT_EQ("<kept/>", it.toXML()) << c.name;
    }
}

TEST(HNKMessageIteratorTest, EntityDefinitionsAreNeverExpanded)
{
    // A billion-laughs document is refused at once, not expanded.
    std::string text = "<!DOCTYPE r [<!ENTITY a 'aaaaaaaaaa'>";
    for (int i = 1; i < 10; ++i)
        text += "<!ENTITY a" + std::to_string(i) + " '&a" + (i > 1 ? std::to_string(i - 1) : std::string()) +
                ";&a" + (i > 1 ? std::to_string(i - 1) : std::string()) + ";'>";
    text += "]><r>&a9;</r>";
    HNKMessageIterator it;
    EXPECT_EQ(-1, it.fromXML(text));
    EXPECT_NE(std::string::npos, getErrorMessage().find("DOCTYPE"));
}

TEST(HNKMessageIteratorTest, ByteOrderMarkAndDeclarationAreAccepted)
{
    HNKMessageIterator it = parsed("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>x</r>\n");
    EXPECT_EQ("<r>x</r>", it.toXML());
}

TEST(HNKMessageIteratorTest, NestingAtTheLimitIsReadAndOneDeeperIsRefused)
{
    auto nested = [](int depth) {
        std::string s;
        for (int i = 0; i < depth; ++i)
            s += "<e>";
        for (int i = 0; i < depth; ++i)
            s += "</e>";
        return s;
    };
    HNKMessageIterator it;
    EXPECT_EQ(0, it.fromXML(nested(HNKMessageIterator::kMaxDepth))) << getErrorMessage();
    EXPECT_EQ(-1, it.fromXML(nested(HNKMessageIterator::kMaxDepth + 1)));
    EXPECT_NE(std::string::npos, getErrorMessage().find("nested deeper than"));
}

TEST(HNKMessageIteratorTest, HundredMegabyteMillionLevelDocumentIsRefusedCleanly)
{
    const int levels = 1000000;
    const std::string name = "element_with_a_rather_long_name_to_fill_bytes_0123"; // 50 bytes
    std::string text;
    text.reserve(static_cast<size_t>(levels) * (2 * name.size() + 5));
    for (int i = 0; i < levels; ++i)
        text.append("<").append(name).append(">");
    for (int i = 0; i < levels; ++i)
        text.append("</").append(name).append(">");
    ASSERT_GE(text.size(), 100u * 1000 * 1000);
    HNKMessageIterator it("kept");
    EXPECT_EQ(-1, it.fromXML(text));
    EXPECT_NE(std::string::npos, getErrorMessage().find("nested deeper than")) << getErrorMessage();
    EXPECT_NE(std::string::npos, getErrorMessage().find("byte offset")) << getErrorMessage();
    EXPECT_EQ("<kept/>", it.toXML());
}

TEST(HNKMessageIteratorTest, ToXmlOutputOfBuiltTreesPassesXmllint)
{
    HNKMessageIterator it("venv_config");
    it.setType("venv_configType", kNs);
    ASSERT_EQ(0, it.putValue("name", "a & b < c"));
    ASSERT_EQ(0, it.createChild("device_list"));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(0, it.createChild(1114));
        it.setType(i == 1 ? "vm_hard_disk_device" : "vm_device", kNs);
        ASSERT_EQ(0, it.putValue("index", i));
        it.ascend();
    }
    it.ascend();
    ASSERT_EQ(0, it.createChild("opts"));
    it.setType(HNK_NS_RELOCATOR, HNK_TYPE_MIGRATOR_CLONE_OPTIONS);
    it.ascend();
    for (bool indent : {false, true}) {
        std::string xml = it.toXML(indent);
        EXPECT_TRUE(xmllintAccepts(xml)) << xml;
        HNKMessageIterator back = parsed(xml);
        EXPECT_EQ(it.toXML(), back.toXML());
    }
}

// ---- Subtrees ----

TEST(HNKMessageIteratorTest, CloneSubtreeIsIndependentAndKeepsInheritedBindings)
{
    HNKMessageIterator it("r");
    it.setType("venv_configType", kNs);
    ASSERT_EQ(0, it.createChild("cfg"));
    ASSERT_EQ(0, it.createChild(1114));
    it.setType("vm_device", kNs);
    it.ascend();
    HNKMessageIterator clone = it.cloneSubtree();
    ASSERT_TRUE(clone.isValid());
    EXPECT_STREQ("cfg", clone.currentName());
    ASSERT_EQ(0, clone.putValue("extra", 1));
    EXPECT_FALSE(it.hasChild("extra"));
    ASSERT_EQ(0, clone.descend(1114));
    EXPECT_EQ(std::string(kNs) + ":vm_device", clone.getTypeName());
    EXPECT_TRUE(xmllintAccepts(clone.toXML())) << clone.toXML();
}

TEST(HNKMessageIteratorTest, AppendChildrenCopyCopiesDeepAndKeepsTypesResolvable)
{
    HNKMessageIterator bag("bag");
    bag.setType("venv_configType", kNs); // declares the prefixes on the bag root
    ASSERT_EQ(0, bag.putValue("cpu_count", 2));
    ASSERT_EQ(0, bag.createChild("device_list"));
    ASSERT_EQ(0, bag.createChild(1114));
    bag.setType("vm_device", kNs);
    ASSERT_EQ(0, bag.putValue("name", "d0"));
    bag.ascend();
    bag.ascend();

    HNKMessageIterator target("message");
    ASSERT_EQ(0, target.createChild("config"));
    ASSERT_EQ(0, target.appendChildrenCopy(bag));
    EXPECT_STREQ("config", target.currentName());
    std::string xml = target.toXML();
    EXPECT_TRUE(xmllintAccepts(xml)) << xml;
    int n = 0;
    EXPECT_EQ(0, target.getValue("cpu_count", n));
    EXPECT_EQ(2, n);
    ASSERT_EQ(0, target.descend("device_list"));
    ASSERT_EQ(0, target.descend(1114));
    EXPECT_EQ(std::string(kNs) + ":vm_device", target.getTypeName());
    // The copy is deep: changing the source leaves the target alone.
    ASSERT_EQ(0, bag.putValue("cpu_count", 8));
    target.ascend();
    target.ascend();
    EXPECT_EQ(0, target.getValue("cpu_count", n));
    EXPECT_EQ(2, n);
}

TEST(HNKMessageIteratorTest, AppendChildrenCopyIntoOwnSubtreeTerminates)
{
    HNKMessageIterator it = parsed("<r><a>1</a><b/></r>");
    HNKMessageIterator inner(it);
    ASSERT_EQ(0, inner.descend("b"));
    ASSERT_EQ(0, inner.appendChildrenCopy(it));
    EXPECT_EQ("<r><a>1</a><b><a>1</a><b/></b></r>", it.toXML());
    HNKMessageIterator invalid;
    EXPECT_NE(0, it.appendChildrenCopy(invalid));
    EXPECT_NE(0, invalid.appendChildrenCopy(it));
}

TEST(HNKMessageIteratorTest, WalksChildElementsWhateverTheirNames)
{
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r>text<a/><!-- c --><p:b xmlns:p='urn:x'/>tail<c>1</c></r>"));
    std::string names;
    ASSERT_EQ(0, it.firstChild());
    do
        names += std::string(it.currentName()) + ",";
    while (it.nextSibling() == 0);
    EXPECT_EQ("a,b,c,", names);
    EXPECT_STREQ("c", it.currentName()); // stays on the last one
    it.ascend();
    HNKMessageIterator empty("e");
    EXPECT_NE(0, empty.firstChild());
    EXPECT_STREQ("e", empty.currentName());
    EXPECT_NE(0, HNKMessageIterator().firstChild());
}

TEST(HNKMessageIteratorTest, AppendCopyDeclaresOnlyMissingBindingsAndKeepsTypes)
{
    HNKMessageIterator src;
    ASSERT_EQ(0, src.fromXML("<r xmlns:t='urn:t' xmlns:u='urn:u' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>"
                             "<d xsi:type='t:dev'><n>1</n></d></r>"));
    ASSERT_EQ(0, src.descend("d"));
    HNKMessageIterator dst;
    ASSERT_EQ(0, dst.fromXML("<out xmlns:t='urn:t' xmlns='urn:default'/>"));
    ASSERT_EQ(0, dst.appendCopy(src));
    ASSERT_EQ(0, dst.appendCopy(src));
    EXPECT_STREQ("out", dst.currentName()); // the cursor does not move
    std::string xml = dst.toXML();
    EXPECT_EQ("", xmllintProblems(xml)) << xml;
    EXPECT_EQ(std::string::npos, xml.find("xmlns:t='urn:t' xmlns:t")) << xml;
    ASSERT_EQ(0, dst.descend("d"));
    EXPECT_EQ("urn:t:dev", dst.getTypeName());
    int n = 0;
    EXPECT_EQ(0, dst.getValue("n", n));
    EXPECT_EQ(1, n);
    // Bound to t in scope at the target already: declared only once, on <out>.
    size_t first = xml.find("\"urn:t\"");
    EXPECT_EQ(std::string::npos, xml.find("\"urn:t\"", first + 1)) << xml;
    EXPECT_EQ(std::string::npos, xml.find("urn:u")) << "a binding the copy never names is not declared";
    // The copy must not fall into the target's default namespace.
    EXPECT_NE(std::string::npos, xml.find("xmlns=\"\"")) << xml;
}

TEST(HNKMessageIteratorTest, AppendCopyRefusesItsOwnAncestorsAndInvalidCursors)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("a"));
    HNKMessageIterator parent = it.root();
    EXPECT_NE(0, it.appendCopy(parent));
    EXPECT_NE(0, it.appendCopy(it));
    EXPECT_NE(0, it.appendCopy(HNKMessageIterator()));
    EXPECT_NE(0, HNKMessageIterator().appendCopy(it));
    EXPECT_EQ(0, parent.appendCopy(it)); // a child into its parent is fine
    EXPECT_EQ("<r><a/><a/></r>", parent.toXML());
}

} // namespace

TEST(HNKMessageIteratorTest, StampBindingsAreDeclaredOnceOnTheOutermostElement)
{
    HNKMessageIterator it("r");
    ASSERT_EQ(0, it.createChild("device_list"));
    const char* types[] = {"vm_device", "vm_usb_device", "vm_sound_device"};
    for (const char* type : types) {
        ASSERT_EQ(0, it.createChild(1114));
        it.setType(type, kNs);
        EXPECT_EQ(std::string(kNs) + ":" + type, it.getTypeName());
        it.ascend();
    }
    std::string xml = it.root().toXML();
    EXPECT_EQ(std::string("<r xmlns:hnrtypes=\"") + kNs + "\" xmlns:xsi=\"" + kXsi +
                  "\"><device_list><device xsi:type=\"hnrtypes:vm_device\"/>"
                  "<device xsi:type=\"hnrtypes:vm_usb_device\"/><device xsi:type=\"hnrtypes:vm_sound_device\"/>"
                  "</device_list></r>",
              xml);
    EXPECT_EQ("", xmllintProblems(xml)) << xml;
    // A device taken out of the tree keeps what its type needs.
    ASSERT_EQ(0, it.firstChild(1114));
    HNKMessageIterator alone = parsed(it.cloneSubtree().toXML());
    EXPECT_EQ(std::string(kNs) + ":vm_device", alone.getTypeName());
}

TEST(HNKMessageIteratorTest, PrefixedNamesCopiedIntoABuiltTreeStillMatchByLocalName)
{
    HNKMessageIterator src = parsed("<s xmlns:q='urn:q'><q:c>3</q:c><q:c>4</q:c><d>5</d></s>");
    HNKMessageIterator built("r");
    ASSERT_EQ(0, built.putValue("a", 1));
    EXPECT_NE(0, built.descend("c"));
    ASSERT_EQ(0, built.appendChildrenCopy(src));
    int n = 0;
    EXPECT_EQ(0, built.getValue("c", n));
    EXPECT_EQ(3, n);
    ASSERT_EQ(0, built.firstChild("c"));
    ASSERT_EQ(0, built.nextSibling("c"));
    EXPECT_EQ(0, built.getValue(0, n));
    EXPECT_EQ(4, n);
    EXPECT_NE(0, built.nextSibling("c"));
    built.ascend();
    EXPECT_EQ(0, built.getValue("d", n));
    EXPECT_EQ(5, n);

    HNKMessageIterator one("r");
    ASSERT_EQ(0, src.descend("c"));
    ASSERT_EQ(0, one.appendCopy(src));
    EXPECT_TRUE(one.hasChild("c"));
    HNKMessageIterator clone = src.root().cloneSubtree();
    EXPECT_EQ(0, clone.getValue("c", n));
    EXPECT_EQ(3, n);
    // A tag holding a colon never matches, prefixed names or not.
    EXPECT_FALSE(clone.hasChild("q:c"));
    EXPECT_FALSE(HNKMessageIterator("r").hasChild("q:c"));
}

TEST(HNKMessageIteratorTest, CharacterCheckFindsABadByteAtEveryOffset)
{
    const std::string ascii = "abcdefghijklmnopqrstuvwx";
    for (size_t at = 0; at <= ascii.size(); ++at) {
        SCOPED_TRACE(at);
        for (const char* bad : {"\x01", "\x7F\x1F", "\xFF", "\xC3"}) {
            std::string text = ascii.substr(0, at) + bad + ascii.substr(at);
            HNKMessageIterator it("r");
            EXPECT_NE(0, it.putValue("a", text));
            EXPECT_NE(0, it.fromXML("<r>" + text + "</r>"));
            std::string expected = "byte offset " + std::to_string(3 + at + (bad[0] == '\x7F' ? 1 : 0));
            EXPECT_NE(std::string::npos, getErrorMessage().find(expected)) << getErrorMessage();
        }
        for (const char* good : {"\xC3\xA9", "\t\n\r", "\xF0\x9F\x98\x80", "\x7F"}) {
            std::string text = ascii.substr(0, at) + good + ascii.substr(at);
            HNKMessageIterator it("r");
            EXPECT_EQ(0, it.putValue("a", text));
            std::string back;
            EXPECT_EQ(0, it.getValue("a", back));
            EXPECT_EQ(text, back);
        }
    }
}

TEST(HNKMessageIteratorTest, LeadingTextOfParsedElementsReadsWritesAndCopiesLikeAnyText)
{
    HNKMessageIterator it = parsed("<r>lead<a>1</a>mid<b>x<i/>y</b>tail</r>");
    std::string s;
    EXPECT_EQ(0, it.getValue(0, s));
    EXPECT_EQ("leadmidtail", s);
    // Replacing a child's text leaves the text around that child alone.
    ASSERT_EQ(0, it.putValue("a", 5));
    ASSERT_EQ(0, it.putValue("b", "z"));
    EXPECT_EQ(0, it.getValue(0, s));
    EXPECT_EQ("leadmidtail", s);
    EXPECT_EQ("<r>lead<a>5</a>mid<b>z<i/></b>tail</r>", it.toXML());
    ASSERT_EQ(0, it.putValue(0, "all"));
    EXPECT_EQ("<r>all<a>5</a><b>z<i/></b></r>", it.toXML());

    // Copying the children of an element copies its leading text too.
    HNKMessageIterator from = parsed("<s>lead<c>1</c>tail</s>");
    HNKMessageIterator to("t");
    ASSERT_EQ(0, to.appendChildrenCopy(from));
    EXPECT_EQ("<t>lead<c>1</c>tail</t>", to.toXML());
    EXPECT_EQ(0, to.getValue(0, s));
    EXPECT_EQ("leadtail", s);
    HNKMessageIterator whole("t");
    ASSERT_EQ(0, whole.appendCopy(from));
    EXPECT_EQ("<t><s>lead<c>1</c>tail</s></t>", whole.toXML());
    EXPECT_EQ("<s>lead<c>1</c>tail</s>", from.cloneSubtree().toXML());
}
