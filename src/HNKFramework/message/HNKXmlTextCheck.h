#pragma once
// Lexical check of message text, run once over the raw bytes before the
// parser builds a tree. pugixml accepts much that XML 1.0 refuses (bad
// names, duplicate attributes, references to forbidden characters, "--" in
// comments, ...) and a tree built from such text may not write back as XML;
// this pass refuses all of it, so only well-formed text reaches the tree.
//
// Left to the parser: that each end tag names its start tag. The namespace
// rules that need the bindings in scope (declared prefixes, the xml and
// xmlns prefixes and namespace names, attributes that clash once their
// prefixes are resolved) are settled here on the way when the text uses
// namespaces plainly, as messages do (see Namespaces), and otherwise left to
// the check of the parsed tree.
#include <cstddef>
#include <string_view>

class HNKXmlTextCheck {
public:
    struct Error {
        size_t offset = 0;         // byte offset of the first problem
        const char* what = nullptr; // short description, a static string
    };

    // What the check can tell of the namespaces on the way, so the parser's
    // caller need not walk the tree for the common case.
    struct Namespaces {
        // True when the text passed and the namespace rules are known to
        // hold: every declaration binds an ordinary prefix (or the default)
        // to a URI reference, every prefix used in element names, attribute
        // names and xsi:type values is in scope, no element has two prefixed
        // attributes. False says nothing: the tree must be checked.
        bool settled = false;
        bool prefixedElements = false; // some element name has a prefix
        size_t depth = 0;              // the deepest nesting of elements
    };

    // True when `text` passes; else false and `error` names the first problem
    // in document order. A DOCTYPE, an XML declaration other than version
    // 1.0 in UTF-8, and text or a second element outside the root are refused
    // too. With `namespaces`, also says what it saw of them. Allocates
    // nothing unless an element has more than 16 attributes or declares
    // namespaces.
    static bool check(const char* text, size_t size, Error& error);
    static bool check(const char* text, size_t size, Error& error, Namespaces* namespaces);

    // Offset of the first byte that is not UTF-8 or is a character XML 1.0
    // cannot carry (the text of one value, no markup); -1 when all is fine.
    static ptrdiff_t findInvalidChar(const char* text, size_t size);

    // True when `uri` is a URI reference (RFC 3986), as a namespace name
    // must be: ASCII only, '%' escapes, a scheme when a ':' comes before any
    // '/', '?' or '#', a numeric port. IP literals ("[::1]"), '&', an empty
    // port and one above 2^31-1 are refused too (as xmllint refuses them).
    static bool isUriReference(const char* uri);
    static bool isUriReference(std::string_view uri);

    // 1-based line and column of `offset`: lines end at LF, CR LF or CR (as
    // XML reads them), columns count characters (UTF-8 sequences), not bytes.
    static void position(const char* text, size_t size, size_t offset, size_t& line, size_t& column);
};
