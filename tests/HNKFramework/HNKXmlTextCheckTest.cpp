// Strict message text: fromXML refuses every text that is not well-formed
// XML 1.0 with namespaces, saying what and where, and the real xmllint
// agrees that each refused text is broken.
#include "HNKXmlTextCheck.h"

#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKMessageIterator.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

struct Refused {
    std::string text;
    const char* messagePart;
};

// fromXML refuses `text` with a message naming `part`, the byte offset, the
// line and the column, and keeps the document it had.
void expectRefused(const std::string& text, const char* part, bool xmllintRefusesToo = true)
{
    SCOPED_TRACE(text);
    HNKMessageIterator it("kept");
    setErrorMessage("none");
    EXPECT_EQ(-1, it.fromXML(text));
    std::string message = getErrorMessage();
    EXPECT_NE(std::string::npos, message.find("fromXML")) << message;
    EXPECT_NE(std::string::npos, message.find(part)) << message;
    EXPECT_NE(std::string::npos, message.find("byte offset ")) << message;
    EXPECT_NE(std::string::npos, message.find("(line ")) << message;
    EXPECT_NE(std::string::npos, message.find(", column ")) << message;
    EXPECT_EQ("<kept/>", it.toXML());
    if (xmllintRefusesToo) {
        EXPECT_FALSE(xmllintAccepts(text)) << "xmllint accepts it";
    }
}

void expectAccepted(const std::string& text)
{
    SCOPED_TRACE(text);
    HNKMessageIterator it;
    EXPECT_EQ(0, it.fromXML(text)) << getErrorMessage();
    EXPECT_TRUE(xmllintAccepts(text)) << xmllintProblems(text);
    // What was accepted writes back as text that parses again to itself.
    std::string out = it.toXML();
    HNKMessageIterator again;
    EXPECT_EQ(0, again.fromXML(out)) << getErrorMessage() << "\n" << out;
    EXPECT_EQ(out, again.toXML());
    EXPECT_TRUE(xmllintAccepts(out)) << xmllintProblems(out);
}

std::string offsetPart(size_t offset) { return "byte offset " + std::to_string(offset) + " "; }

TEST(HNKXmlTextCheckTest, CharacterReferencesToForbiddenCharactersAreRefused)
{
    for (const char* ref : {"&#0;", "&#1;", "&#x1F;", "&#xD800;", "&#xDFFF;", "&#xFFFE;", "&#xFFFF;", "&#x110000;",
                            "&#99999999999999999999;", "&#x0000000000000000001;"}) {
        expectRefused(std::string("<r>ab") + ref + "</r>", "character reference to a character XML does not allow");
        expectRefused(std::string("<r a='") + ref + "'/>", "character reference");
        expectRefused(std::string("<r>ab") + ref + "</r>", offsetPart(5).c_str());
    }
    // Their allowed neighbours read as the characters they name.
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r>&#9;&#xA;&#x20;&#xD7FF;&#xE000;&#xFFFD;&#x10000;&#x10FFFF;&#65;</r>"))
        << getErrorMessage();
    std::string value;
    ASSERT_EQ(0, it.getValue(0, value));
    EXPECT_EQ("\t\n \xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"
              "A",
              value);
}

TEST(HNKXmlTextCheckTest, TextTheTreeCouldNotWriteBackIsRefused)
{
    // The tree writes a CR in text raw, and XML reads a raw CR as LF.
    expectRefused("<r>a&#13;b</r>", "character reference to CR in text content", false);
    expectRefused("<r>a&#xD;b</r>", "character reference to CR in text content", false);
    expectRefused("<r><e>&#x000d;</e></r>", "character reference to CR in text content", false);
    // Text of blanks only is dropped by the parser when the blanks are raw,
    // and kept but written back raw when one is a reference.
    expectRefused("<r>&#10;</r>", "text of white space only from character references", false);
    expectRefused("<r><a/> &#x20;&#9;\n<b/></r>", "text of white space only", false);
    expectRefused("<r><a>x</a>&#32;</r>", "text of white space only", false);
    // With anything else in the run the text is kept both times.
    expectAccepted("<r><a>&#32;x&#10;</a><b>&amp;&#32;</b><c>&#65;\n</c></r>");
    // In an attribute value CR is written as a reference again, and kept.
    HNKMessageIterator it;
    ASSERT_EQ(0, it.fromXML("<r a='x&#13;&#10;&#9;y'>a&#10;&#9;</r>")) << getErrorMessage();
    HNKMessageIterator again;
    ASSERT_EQ(0, again.fromXML(it.toXML())) << getErrorMessage();
    EXPECT_EQ(it.toXML(), again.toXML());
    EXPECT_NE(std::string::npos, it.toXML().find("x&#13;&#10;&#09;y")) << it.toXML();
}

TEST(HNKXmlTextCheckTest, MalformedReferencesAreRefused)
{
    expectRefused("<r>&#65</r>", "malformed character reference");
    expectRefused("<r>&#A;</r>", "malformed character reference");
    expectRefused("<r>&#X41;</r>", "malformed character reference");
    expectRefused("<r>&#x;</r>", "malformed character reference");
    expectRefused("<r>&#;</r>", "malformed character reference");
    expectRefused("<r>&#x4 1;</r>", "malformed character reference");
    expectRefused("<r>&foo;</r>", "undefined entity");
    expectRefused("<r>&Amp;</r>", "undefined entity");
    expectRefused("<r>&amp</r>", "without ';'");
    expectRefused("<r>a & b</r>", "'&' that starts no reference");
    expectRefused("<r>&a:b;</r>", "'&' that starts no reference");
    expectRefused("<r>&</r>", "'&' that starts no reference");
    expectRefused("<r a='x&y'/>", "without ';'");
    expectRefused("<r a='x & y'/>", "'&' that starts no reference");
    expectRefused("<r a=\"&#65\"/>", "malformed character reference");
    expectRefused("<r a='<'/>", "'<' in an attribute value");
    expectRefused("<r a=\"a<b\"/>", "'<' in an attribute value");
    expectRefused("<r>x</r>&amp;", "text outside the root element");
}

TEST(HNKXmlTextCheckTest, DuplicateAttributesAreRefused)
{
    expectRefused("<r a='1' a='2'/>", "duplicate attribute");
    expectRefused("<r><e a='1' b='2' a='3'></e></r>", "duplicate attribute");
    expectRefused("<r xmlns:p='urn:a' p:a='1' p:a='2'/>", "duplicate attribute");
    expectRefused("<r xmlns:p='urn:a' xmlns:p='urn:b'/>", "duplicate attribute");
    expectRefused("<r xmlns='urn:a' xmlns='urn:a'/>", "duplicate attribute");
    // More attributes than are compared directly: the rare path that remembers them.
    std::string many = "<r";
    for (int i = 0; i < 40; ++i)
        many += " a" + std::to_string(i) + "='" + std::to_string(i) + "'";
    expectAccepted(many + "/>");
    expectRefused(many + " a17='x'/>", "duplicate attribute");
    expectRefused(many + " a39='x'/>", "duplicate attribute");
    // The same attribute once its prefixes are resolved.
    expectRefused("<r xmlns:p='urn:a' xmlns:q='urn:a' p:x='1' q:x='2'/>", "duplicate attribute {urn:a}x");
    expectRefused("<r xmlns:p='urn:a'><e xmlns:q='urn:a' q:x='1' p:x='2'/></r>", "duplicate attribute {urn:a}x");
    expectRefused("<r xmlns:p='urn:a' xmlns:q='urn:a' p:y='0' p:x='1' q:z='0' q:x='2'/>", "duplicate attribute");
    // Different namespaces, or a prefixed and an unprefixed one, do not clash.
    expectAccepted("<r xmlns:p='urn:a' xmlns:q='urn:b' p:x='1' q:x='2' x='3'/>");
    expectAccepted("<r xmlns:p='urn:a' xmlns='urn:a' p:x='1' x='2'/>");
}

TEST(HNKXmlTextCheckTest, DoubleHyphenInCommentsIsRefused)
{
    expectRefused("<r><!-- a -- b --></r>", "'--' inside a comment");
    expectRefused("<r><!-- a ---></r>", "'--' inside a comment");
    expectRefused("<!-- a ---><r/>", "'--' inside a comment");
    expectRefused("<r/><!----->", "'--' inside a comment");
    expectRefused("<r><!-- a --!></r>", "'--' inside a comment");
    expectRefused("<r><!-- a </r>", "unterminated comment");
    expectRefused("<r><!- a --></r>", "malformed markup");
    expectAccepted("<!-- - a - --><r><!----><!-- a-b --></r><!-- after -->");
}

TEST(HNKXmlTextCheckTest, MisplacedOrMalformedXmlDeclarationsAreRefused)
{
    expectRefused("<?xml version='2.0'?><r/>", "unsupported XML version");
    expectRefused("<?xml version='1'?><r/>", "unsupported XML version");
    expectRefused("<?xml version=1.0?><r/>", "malformed version");
    expectRefused("<?xml encoding='UTF-8'?><r/>", "without a version");
    expectRefused("<?xml?><r/>", "without a version");
    expectRefused("<?xml version='1.0' encoding='UTF 8'?><r/>", "malformed encoding name");
    expectRefused("<?xml version='1.0' encoding=''?><r/>", "malformed encoding name");
    expectRefused("<?xml version='1.0' encoding='8bit'?><r/>", "malformed encoding name");
    expectRefused("<?xml version='1.0' standalone='maybe'?><r/>", "standalone");
    expectRefused("<?xml version='1.0' standalone='YES'?><r/>", "standalone");
    expectRefused("<?xml version='1.0' standalone='yes' encoding='UTF-8'?><r/>", "malformed XML declaration");
    expectRefused("<?xml version='1.0'encoding='UTF-8'?><r/>", "malformed XML declaration");
    expectRefused("<?xml version='1.0' foo='bar'?><r/>", "malformed XML declaration");
    expectRefused(" <?xml version='1.0'?><r/>", "XML declaration not at the start");
    expectRefused("<!-- c --><?xml version='1.0'?><r/>", "XML declaration not at the start");
    expectRefused("<r><?xml version='1.0'?></r>", "XML declaration not at the start");
    expectRefused("<?xml version='1.0'?><?xml version='1.0'?><r/>", "XML declaration not at the start");
    expectRefused("<r><?XML x?></r>", "target 'xml' is reserved");
    expectRefused("<?Xml version='1.0'?><r/>", "target 'xml' is reserved");
    expectRefused("<r/><?xmL?>", "target 'xml' is reserved");
    // Other encodings are well-formed but not read: the text is taken as UTF-8.
    expectRefused("<?xml version='1.0' encoding='ISO-8859-1'?><r/>", "unsupported encoding", false);
    expectRefused("<?xml version='1.0' encoding='UTF-16'?><r/>", "unsupported encoding", false);
    expectAccepted("<?xml version=\"1.0\"?><r/>");
    expectAccepted("<?xml version = '1.0' encoding = 'utf-8' standalone = 'no' ?>\n<r/>");
    expectAccepted("\xEF\xBB\xBF<?xml version='1.0' standalone='yes'?><r/>");
    expectAccepted("<?style href='a'?><r><?pi some data?></r>");
}

TEST(HNKXmlTextCheckTest, DocumentsDeclaringVersionOneDotOneAreRefused)
{
    expectRefused("<?xml version='1.1'?><r/>", "XML 1.1 documents are not accepted", false);
    expectRefused("<?xml version=\"1.1\" encoding=\"UTF-8\"?>\n<r>&#x1;</r>", "XML 1.1", false);
    expectRefused("\xEF\xBB\xBF<?xml version='1.1' standalone='yes'?><r/>", "XML 1.1", false);
}

TEST(HNKXmlTextCheckTest, NamesBreakingTheNameRulesAreRefused)
{
    expectRefused("<1r/>", "invalid element name");
    expectRefused("<-r/>", "invalid element name");
    expectRefused("<.r/>", "invalid element name");
    expectRefused("<r><:a/></r>", "invalid element name");
    expectRefused("<r><a:/></r>", "invalid element name");
    expectRefused("<a:b:c xmlns:a='urn:a'/>", "invalid element name");
    expectRefused("<a:1b xmlns:a='urn:a'/>", "invalid element name");
    expectRefused("<r 1a='x'/>", "invalid attribute name");
    expectRefused("<r a:b:c='x'/>", "invalid attribute name");
    expectRefused("<r :a='x'/>", "invalid attribute name");
    expectRefused("<r xmlns:='urn:a'/>", "invalid attribute name");
    expectRefused("<r xmlns:1p='urn:a'/>", "invalid attribute name");
    expectRefused("<r></r\xC3\x97>", "invalid element name");           // U+00D7 is no name character
    expectRefused("<\xC2\xB7r/>", "invalid element name");    // U+00B7 may continue a name, not start one
    expectRefused("<\xE2\x80\xBF/>", "invalid element name"); // U+203F likewise
    expectRefused("<r><a\xCD\xBE/></r>", "invalid element name"); // U+037E (Greek question mark)
    expectRefused("<r><?a:b x?></r>", "invalid processing instruction target");
    expectRefused("<r><? x?></r>", "invalid processing instruction target");
    expectRefused("<r a='1'b='2'/>", "white space expected");
    expectRefused("<r a/>", "without '='");
    expectRefused("<r a=1/>", "not in quotes");
    expectRefused("<r></r a>", "malformed end tag");
    expectAccepted("<r\xC2\xB7/>");
    // Names from the whole XML 1.0 (fifth edition) repertoire are names.
    expectAccepted("<\xC3\xA9l\xC3\xA9ment \xE6\x97\xA5\xE6\x9C\xAC='1' a\xC2\xB7\xCC\x80-.9='2'>"
                   "<_x\xF0\x90\x80\x80 xml:lang='de'/></\xC3\xA9l\xC3\xA9ment>");
}

TEST(HNKXmlTextCheckTest, ReservedPrefixesAndNamespacesCannotBeRebound)
{
    expectRefused("<r xmlns:xml='urn:other'/>", "the xml prefix is bound to its own namespace only");
    expectRefused("<r><e xmlns:xmlns='urn:a'/></r>", "the xmlns prefix cannot be declared");
    expectRefused("<r xmlns:xmlns='http://www.w3.org/2000/xmlns/'/>", "the xmlns prefix cannot be declared");
    expectRefused("<r xmlns:p='http://www.w3.org/XML/1998/namespace'/>", "the xml prefix is bound");
    expectRefused("<r xmlns:p='http://www.w3.org/2000/xmlns/'/>", "the xmlns namespace cannot be bound");
    expectRefused("<r xmlns='http://www.w3.org/XML/1998/namespace'/>", "cannot be the default");
    expectRefused("<r xmlns='http://www.w3.org/2000/xmlns/'/>", "cannot be the default");
    expectRefused("<r xmlns:p='urn:a'><e xmlns:p=''/></r>", "a prefix cannot be undeclared");
    expectRefused("<xmlns:r/>", "the xmlns prefix is reserved");
    // Binding xml to its own namespace is allowed, as is undeclaring the default.
    expectAccepted("<r xmlns:xml='http://www.w3.org/XML/1998/namespace' xml:space='preserve'/>");
    expectAccepted("<r xmlns='urn:a'><e xmlns=''/></r>");
}

TEST(HNKXmlTextCheckTest, NamespaceNamesThatAreNoUrisAreRefused)
{
    expectRefused("<r xmlns:p='urn:a b'/>", "the namespace name is not a URI");
    // Found by fuzzing against libxml2: an authority ending in ':' (empty port).
    expectRefused("<r xmlns:p='http://www.w3.orghttp://www.w3.org/2001/XMLSchema-instance'/>",
                  "the namespace name is not a URI");
    expectRefused("<r xmlns:p='http://a:/b'/>", "the namespace name is not a URI");
    // And a port beyond what libxml2 holds in an int.
    expectRefused("<r xmlns:p='http://www.wpppmlns:04466666666666666666666'/>", "the namespace name is not a URI");
    expectRefused("<r xmlns:p='http://a:2147483648/'/>", "the namespace name is not a URI");
    expectAccepted("<r xmlns:p='http://a:2147483647/' xmlns:q='http://b:000000000000000000080/'/>");
    expectRefused("<r xmlns:p='http://host:port/'/>", "the namespace name is not a URI");
    expectRefused("<r xmlns:p='1a:b'/>", "the namespace name is not a URI");
    expectRefused("<r xmlns:p='urn:%zz'/>", "the namespace name is not a URI");
    expectRefused("<r xmlns='urn:a#b#c'/>", "the namespace name is not a URI");
    expectRefused("<r xmlns='urn:a&lt;b'/>", "the namespace name is not a URI");
    expectRefused("<r xmlns:p='urn:\xC3\xA9'/>", "the namespace name is not a URI");
    expectRefused("<r xmlns:p='urn:a?x=1&amp;y=2'/>", "the namespace name is not a URI", false); // see isUriReference
    expectAccepted("<r xmlns:p='http://u@h:8080/p;x?q=1;r=(2)#f' xmlns='urn:a:b%20c'/>");
    EXPECT_TRUE(HNKXmlTextCheck::isUriReference("http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes"));
    EXPECT_TRUE(HNKXmlTextCheck::isUriReference("../relative/path"));
    EXPECT_FALSE(HNKXmlTextCheck::isUriReference("a:b@c:d//e\\f"));
}

TEST(HNKXmlTextCheckTest, CdataEndInTextUnterminatedConstructsAndStrayTextAreRefused)
{
    expectRefused("<r>]]></r>", "']]>' in text content");
    expectRefused("<r>a]]]>b</r>", "']]>' in text content");
    expectRefused("<r><![CDATA[x]]>]]></r>", "']]>' in text content");
    expectRefused("<r><![CDATA[x</r>", "unterminated CDATA section");
    expectRefused("<![CDATA[x]]><r/>", "text outside the root element");
    expectRefused("<r", "unterminated start tag");
    expectRefused("<r a='1", "unterminated attribute value");
    expectRefused("<r><", "unterminated markup");
    expectRefused("<r><?pi x", "unterminated processing instruction");
    expectRefused("<r>", "unclosed element");
    expectRefused("</r>", "end tag without a start tag");
    expectRefused("<r/></r>", "end tag without a start tag");
    expectRefused("<r></r>text", "text outside the root element");
    expectRefused("<r/><!-- --><r/>", "more than one root element");
    expectRefused("<r/ >", "'/' not followed by '>'");
    expectRefused("<!DOCTYPE r><r/>", "DOCTYPE", false); // well-formed, but never accepted in a message
    expectRefused("<r><!ELEMENT r ANY></r>", "malformed markup");
    expectRefused("", "empty document");
    expectAccepted("<r><![CDATA[<a> & ]] ]>]]> a ] b ]] c > </r>");
}

TEST(HNKXmlTextCheckTest, RefusalsGiveLineAndColumnInCharacters)
{
    HNKMessageIterator it;
    ASSERT_EQ(-1, it.fromXML("<r>\n  <a>\n\t&#0;</a></r>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("byte offset 11 (line 3, column 2)")) << getErrorMessage();
    // CR LF and a lone CR end one line each; a two-byte character is one column.
    ASSERT_EQ(-1, it.fromXML("<r>\r\n\r<a>\xC3\xA9\xC3\xA9&#0;</a></r>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("byte offset 13 (line 3, column 6)")) << getErrorMessage();
    // The parser's own finding (a mismatched end tag) and the tree check's.
    ASSERT_EQ(-1, it.fromXML("<r>\n<a></b></r>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("(line 2, column 6)")) << getErrorMessage();
    ASSERT_EQ(-1, it.fromXML("<r>\n <p:a/></r>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("undeclared namespace prefix 'p'")) << getErrorMessage();
    EXPECT_NE(std::string::npos, getErrorMessage().find("(line 2, column 3)")) << getErrorMessage();

    size_t line = 0, column = 0;
    HNKXmlTextCheck::position("ab\ncd", 5, 5, line, column);
    EXPECT_EQ(2u, line);
    EXPECT_EQ(3u, column);
    HNKXmlTextCheck::position("ab", 2, 99, line, column); // past the end: the end
    EXPECT_EQ(1u, line);
    EXPECT_EQ(3u, column);
}

TEST(HNKXmlTextCheckTest, EverySampleMessagePassesTheCheckAndParses)
{
    std::string dir = HNR_TEST_DATA_DIR;
    DIR* d = opendir(dir.c_str());
    ASSERT_NE(nullptr, d);
    int samples = 0;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (name.size() < 4 || name.compare(name.size() - 4, 4, ".xml") != 0)
            continue;
        std::ifstream in(dir + "/" + name, std::ios::binary);
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        HNKXmlTextCheck::Error error;
        HNKXmlTextCheck::Namespaces facts;
        EXPECT_TRUE(HNKXmlTextCheck::check(text.data(), text.size(), error, &facts)) << name << ": " << error.what;
        // Messages use namespaces plainly: settled without the walk over the tree.
        EXPECT_TRUE(facts.settled) << name;
        HNKMessageIterator it;
        EXPECT_EQ(0, it.fromXML(text)) << name << ": " << getErrorMessage();
        ++samples;
    }
    closedir(d);
    EXPECT_GE(samples, 20);
}

TEST(HNKXmlTextCheckTest, CheckNamesTheFirstProblemInDocumentOrder)
{
    const std::string text = "<r a='1' a='2'>&#0;<!-- -- --></r>";
    HNKXmlTextCheck::Error error;
    ASSERT_FALSE(HNKXmlTextCheck::check(text.data(), text.size(), error));
    EXPECT_EQ(9u, error.offset);
    EXPECT_STREQ("duplicate attribute", error.what);
    const std::string later = "<r a='1' b='2'>&#0;<!-- -- --></r>";
    ASSERT_FALSE(HNKXmlTextCheck::check(later.data(), later.size(), error));
    EXPECT_EQ(15u, error.offset);
}

// Random edits of valid messages, with the tokens that break XML most often.
std::vector<std::string> mutatedTexts(size_t count)
{
    const std::vector<std::string> seeds = {
        "<?xml version='1.0' encoding='UTF-8'?>\n<r xmlns:p='urn:a' a='1'><p:e b=\"x &amp; y\">t&#65;</p:e>"
        "<!-- c --><![CDATA[d]]><?pi x?></r>",
        "<configuration xmlns:hnr='http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes' "
        "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='hnr:venv_configType'>"
        "<name>Box</name><device_list><device xsi:type='hnr:hard_disk_device'><index>0</index></device>"
        "</device_list></configuration>",
        "<\xC3\xA9 x='\xE6\x97\xA5'>\xF0\x9F\x98\x80 &lt;&gt;&quot;&apos;</\xC3\xA9>",
    };
    const std::vector<std::string> tokens = {
        "&", "&#0;", "&#65", "&#x1F;", "&#xD800;", "&foo;", "&amp;", "<", ">", "/>", "</", "--", "-->", "<!--",
        "]]>", "<![CDATA[", ":", "a:b:c", "xmlns:p='urn:b'", "xmlns:q='urn:a'", "q:x='1' ", "xmlns:xml='urn:x'",
        "xmlns:xmlns='urn:x'", "xmlns:p=''", " a='2'", "'", "\"", "=", " ", "\n", "\r", "\t", "<?xml version='1.0'?>",
        "<?XML?>", "?>", "<?pi?>", "\xC3", "\xC3\xA9", "\xC2\xB7", "\x01", "\x7F", "1", ".", "-", "<!DOCTYPE r>",
        "version='1.1'", "encoding='x y'", "standalone='maybe'", "xml",
    };
    std::mt19937 random(20261122);
    std::vector<std::string> out;
    for (size_t i = 0; i < count; ++i) {
        std::string t = seeds[random() % seeds.size()];
        int edits = 1 + static_cast<int>(random() % 3);
        for (int k = 0; k < edits; ++k) {
            size_t at = random() % (t.size() + 1);
            switch (random() % 4) {
            case 0:
            case 1:
                t.insert(at, tokens[random() % tokens.size()]);
                break;
            case 2:
                t.erase(at, random() % 4);
                break;
            default:
                t.insert(at, t.substr(random() % (t.size() + 1), random() % 12));
                break;
            }
        }
        out.push_back(t);
    }
    return out;
}

// Names of the files among `paths` on which xmllint reports an error
// (warnings, such as a relative namespace URI, do not count).
std::set<std::string> xmllintRefusals(const std::vector<std::string>& paths)
{
    std::string cmd = "xmllint --noout";
    for (const std::string& p : paths)
        cmd += " " + p;
    cmd += " 2>&1";
    std::set<std::string> refused;
    FILE* pipe = popen(cmd.c_str(), "r");
    if (!pipe)
        return refused;
    char line[4096];
    while (fgets(line, sizeof line, pipe)) {
        std::string l = line;
        size_t colon = l.find(':');
        if (colon != std::string::npos && l.find("error") != std::string::npos)
            refused.insert(l.substr(0, colon));
    }
    pclose(pipe);
    return refused;
}

TEST(HNKXmlTextCheckTest, TextsFromXmlAcceptsAreAcceptedByXmllint)
{
    char dirTemplate[] = "/tmp/hnk_xmldiff_XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(dirTemplate));
    std::string dir = dirTemplate;
    std::vector<std::string> texts = mutatedTexts(1500);
    std::vector<std::string> paths;
    std::vector<bool> accepted;
    for (size_t i = 0; i < texts.size(); ++i) {
        std::string path = dir + "/t" + std::to_string(i) + ".xml";
        std::ofstream(path, std::ios::binary) << texts[i];
        paths.push_back(path);
        HNKMessageIterator it;
        accepted.push_back(it.fromXML(texts[i]) == 0);
    }
    std::set<std::string> refused = xmllintRefusals(paths);
    size_t acceptedCount = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
        if (accepted[i]) {
            ++acceptedCount;
            EXPECT_EQ(0u, refused.count(paths[i])) << "fromXML accepts what xmllint refuses: " << texts[i];
        }
        std::remove(paths[i].c_str());
    }
    rmdir(dir.c_str());
    // The edits leave both kinds of text, so the comparison means something.
    EXPECT_GT(acceptedCount, 100u);
    EXPECT_GT(refused.size(), 300u);
}

} // namespace

// An end tag that closes the wrong element is named where it stands, not as
// an element left open at the end; an element really left open is that.
TEST(HNKXmlTextCheckTest, MismatchedEndTagIsNamedWhereItStands)
{
    HNKMessageIterator it;
    ASSERT_EQ(-1, it.fromXML("<a>\n  <b>\n</a>"));
    EXPECT_EQ("fromXML: malformed XML at byte offset 12 (line 3, column 3): Start-end tags mismatch",
              getErrorMessage());
    ASSERT_EQ(-1, it.fromXML("<a><b></c></b></a>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("Start-end tags mismatch")) << getErrorMessage();
    ASSERT_EQ(-1, it.fromXML("<r>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("unclosed element")) << getErrorMessage();
    EXPECT_EQ(std::string::npos, getErrorMessage().find("mismatch")) << getErrorMessage();
}

namespace {

HNKXmlTextCheck::Namespaces namespacesOf(const std::string& text)
{
    HNKXmlTextCheck::Error error;
    HNKXmlTextCheck::Namespaces ns;
    EXPECT_TRUE(HNKXmlTextCheck::check(text.data(), text.size(), error, &ns)) << text << ": " << error.what;
    return ns;
}

} // namespace

// Most elements of a message are a setting holding one plain value, read
// at once; every near miss of that shape must still get the full check.
TEST(HNKXmlTextCheckTest, ElementsHoldingOneValueGetTheFullCheck)
{
    const Refused refused[] = {
        {"<r>\n  <a>x]]>y</a>\n</r>", "']]>' in text content"},
        {"<r><a>&#0;</a></r>", "character reference to a character XML does not allow"},
        {"<r><a>x\x01y</a></r>", "invalid UTF-8 or a character XML does not allow"},
        {"<r><a>x\xC3y</a></r>", "invalid UTF-8 or a character XML does not allow"},
        {"<r><a>x& y</a></r>", "'&' that starts no reference"},
        {"<r><a>x</b></r>", "mismatch"},
        {"<r><a>x</a></r><s/>", "more than one root element"},
        {"<r><1a>x</1a></r>", "invalid element name"},
        {"<r><a-\xC3>x</a-\xC3></r>", "invalid element name"},
        {"<r><a/ ></r>", "malformed start tag"},
        {"<r><a>x</a", "malformed end tag"},
    };
    for (const Refused& r : refused)
        expectRefused(r.text, r.messagePart);
    // The blanks before the reference belong to its text: it is named from them.
    expectRefused("<r>\n  <a>x</a>\n  &#32;\n</r>", ("white space only from character references" ), false);
    expectRefused("<r>\n  <a>x</a>\n  &#32;\n</r>", offsetPart(14).c_str(), false);
    expectAccepted("<r>\n  <a>x</a >\n  <b/>\n  <c />\n  <d>\xC3\xA9</d>\n  <e>a&amp;b</e>\n  <f>\x7F</f>\n</r>");
    expectAccepted("<r>\n  <a>x</a>\n  y\n</r>");
    expectAccepted("<r><a.b-c_9>]</a.b-c_9><a>x]]y</a><b>\t</b><_>  </_></r>");
    // A value element's depth counts like any other's.
    std::string deep;
    for (int i = 0; i < HNKMessageIterator::kMaxDepth; ++i)
        deep += "<e>";
    std::string closing;
    for (int i = 0; i < HNKMessageIterator::kMaxDepth; ++i)
        closing += "</e>";
    HNKMessageIterator it;
    EXPECT_EQ(0, it.fromXML(deep + "v" + closing)) << getErrorMessage();
    EXPECT_EQ(-1, it.fromXML(deep + "<v>1</v>" + closing));
    EXPECT_NE(std::string::npos, getErrorMessage().find("nested deeper than"));
    EXPECT_EQ(-1, it.fromXML(deep + "<v/>" + closing));
}

TEST(HNKXmlTextCheckTest, PlainNamespacesAreSettledOnTheWay)
{
    const std::string xsi = "http://www.w3.org/2001/XMLSchema-instance";
    HNKXmlTextCheck::Namespaces ns = namespacesOf("<c xmlns:h='urn:h' xmlns:xsi='" + xsi +
                                                  "' xsi:type='h:t'><d xsi:type=' h:u '><e/></d><h:f/></c>");
    EXPECT_TRUE(ns.settled);
    EXPECT_TRUE(ns.prefixedElements);
    EXPECT_EQ(3u, ns.depth);
    ns = namespacesOf("<r xmlns='urn:a'><e xmlns=''><f/></e></r>");
    EXPECT_TRUE(ns.settled);
    EXPECT_FALSE(ns.prefixedElements);
    EXPECT_EQ(3u, ns.depth);
}

TEST(HNKXmlTextCheckTest, UnusualNamespacesAreLeftToTheTreeCheck)
{
    const std::string xsi = "http://www.w3.org/2001/XMLSchema-instance";
    const std::string unusual[] = {
        "<p:r/>",                                            // undeclared element prefix
        "<r p:a='1'/>",                                      // undeclared attribute prefix
        "<r xmlns:xsi='" + xsi + "' xsi:type='q:t'/>",       // undeclared prefix in a type
        "<r xmlns:xsi='" + xsi + "' xsi:type='q:'/>",        // malformed type
        "<r xmlns:xsi='" + xsi + "' xsi:type='&#x71;:t'/>",  // a reference in a type
        "<r xmlns:p='urn:a&amp;b'/>",                        // a reference in a namespace name
        "<r xmlns:p='urn:a' xmlns:q='urn:a' p:a='1' q:a='2'/>", // two prefixed attributes
        "<r xmlns:xml='http://www.w3.org/XML/1998/namespace'/>",
        "<r xml:lang='de'/>",
        "<r xmlns:p='urn:a'><e xmlns:p=''/></r>",            // undeclaring a prefix
        "<r xmlns:p='urn:a b'/>",                            // not a URI
        "<r><a xmlns:p='urn:a'/><p:b/></r>",                 // a binding ends with its element
        "<r><a xmlns:p='urn:a'></a><b p:x='1'/></r>",
    };
    for (const std::string& text : unusual) {
        SCOPED_TRACE(text);
        HNKXmlTextCheck::Error error;
        HNKXmlTextCheck::Namespaces ns;
        if (HNKXmlTextCheck::check(text.data(), text.size(), error, &ns)) {
            EXPECT_FALSE(ns.settled);
        }
    }
    // The tree check still refuses what is wrong among them.
    HNKMessageIterator it;
    EXPECT_EQ(-1, it.fromXML("<r><a xmlns:p='urn:a'/><p:b/></r>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("undeclared namespace prefix 'p'")) << getErrorMessage();
    EXPECT_EQ(-1, it.fromXML("<r><a xmlns:p='urn:a'></a><b p:x='1'/></r>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("undeclared namespace prefix 'p'")) << getErrorMessage();
    EXPECT_EQ(-1, it.fromXML("<r xmlns:p='urn:a' xmlns:q='urn:a' p:a='1' q:a='2'/>"));
    EXPECT_NE(std::string::npos, getErrorMessage().find("duplicate attribute")) << getErrorMessage();
    EXPECT_EQ(0, it.fromXML("<r xmlns:p='urn:a'><p:e p:a='1'/></r>")) << getErrorMessage();
}

// Names are passed over a word at a time while they hold lowercase letters
// and '_': a byte that ends or breaks a name must be seen wherever it stands,
// and an end tag must match its start tag at every place.
TEST(HNKXmlTextCheckTest, LongNamesAreCheckedAtEveryPlace)
{
    const std::string base = "abcdefghijklmnopqrstu_wxyzabcdef"; // 32 name bytes
    const std::string fine[] = {"A", "Z", "0", "9", "-", ".", "_", "z", "a", "\xC3\xA9", "\xC2\xB7"};
    const std::string broken[] = {"`", "{", "^", "@", "[", "~", "!", "\x7F", "\xC3\x97", "\x80"};
    for (size_t length = 2; length <= base.size(); ++length) {
        const std::string name = base.substr(0, length);
        for (size_t at = 1; at < length; ++at) {
            // The lexical check itself (the parser would refuse some of
            // these on its own), then the whole of fromXML.
            auto expectName = [&](const std::string& c, bool accepted) {
                std::string n = name;
                n.replace(at, 1, c);
                const std::string text = "<" + n + ">x</" + n + ">";
                HNKXmlTextCheck::Error error;
                EXPECT_EQ(accepted, HNKXmlTextCheck::check(text.data(), text.size(), error)) << text;
                HNKMessageIterator it;
                EXPECT_EQ(accepted ? 0 : -1, it.fromXML(text)) << text << ": " << getErrorMessage();
            };
            for (const std::string& c : fine)
                expectName(c, true);
            for (const std::string& c : broken)
                expectName(c, false);
            // An end tag differing in one byte is a mismatch.
            std::string other = name;
            other[at] = other[at] == 'q' ? 'r' : 'q';
            HNKMessageIterator it;
            EXPECT_EQ(-1, it.fromXML("<" + name + ">x</" + other + ">")) << name;
            EXPECT_NE(std::string::npos, getErrorMessage().find("mismatch")) << getErrorMessage();
        }
    }
    // Every length up to the end of the text, the name's last byte last.
    for (size_t length = 1; length <= base.size(); ++length) {
        HNKMessageIterator it;
        const std::string name = base.substr(0, length);
        EXPECT_EQ(0, it.fromXML("<" + name + "/>")) << name << ": " << getErrorMessage();
        EXPECT_EQ(-1, it.fromXML("<" + name)) << name;
    }
}
