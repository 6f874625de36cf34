#include "HNKXmlTextCheck.h"

#include "HNKByteInternals.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace {

using uchar = unsigned char;

const uint64_t kOnes = 0x0101010101010101ull;
const uint64_t kHigh = 0x8080808080808080ull;
const uint64_t kSpaces = 0x2020202020202020ull;

inline uint64_t load8(const uchar* p)
{
    uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
}

// Non-zero when some byte of `w` is `b` (exact as a yes/no answer).
inline uint64_t hasByte(uint64_t w, uchar b)
{
    uint64_t v = w ^ (kOnes * b);
    return (v - kOnes) & ~v & kHigh;
}

// Skips eight bytes at a time while each is printable ASCII (0x20..0x7F)
// and none is one of the stop bytes: such bytes are valid characters that
// need no further look. A byte below 0x20 borrows into its top bit, a byte
// from 0x80 has it set. In a word that holds another byte, the lowest marked
// byte is exactly the first one (borrows only mark bytes above a real hit),
// so the scan stops on it; the last seven bytes or fewer are left to the
// caller. Little-endian loads: this runs on x86-64.
template <uchar A, uchar B, uchar C>
inline const uchar* skipPlain(const uchar* p, const uchar* end)
{
    while (end - p >= 8) {
        uint64_t w = load8(p);
        uint64_t marks = (((w - kSpaces) | w) & kHigh) | hasByte(w, A) | hasByte(w, B) | hasByte(w, C);
        if (marks != 0)
            return p + (__builtin_ctzll(marks) >> 3);
        p += 8;
    }
    return p;
}

// Skips eight bytes at a time while each is a lowercase ASCII letter or '_'
// (most names are nothing else), stopping on the first other byte; the
// last seven bytes or fewer are left to the caller.
inline const uchar* skipLowerName(const uchar* p, const uchar* end)
{
    while (end - p >= 8) {
        const uint64_t w = load8(p);
        // Per byte, the top bit: from 'a' (0x61), up to 'z' (0x7A), ASCII;
        // no borrow crosses a byte in either subtraction.
        const uint64_t lower = ((w | kHigh) - 0x6161616161616161ull) & (0xFAFAFAFAFAFAFAFAull - w) & ~w & kHigh;
        const uint64_t v = w ^ 0x5F5F5F5F5F5F5F5Full; // zero where '_'
        const uint64_t underscore = ~(((v & 0x7F7F7F7F7F7F7F7Full) + 0x7F7F7F7F7F7F7F7Full) | v) & kHigh;
        const uint64_t other = ~(lower | underscore) & kHigh;
        if (other != 0)
            return p + (__builtin_ctzll(other) >> 3);
        p += 8;
    }
    return p;
}

bool isXmlChar(uint32_t cp)
{
    if (cp < 0x20)
        return cp == 0x9 || cp == 0xA || cp == 0xD;
    if (cp < 0xD800)
        return true;
    if (cp < 0xE000)
        return false;
    if (cp < 0x10000)
        return cp != 0xFFFE && cp != 0xFFFF;
    return cp <= 0x10FFFF;
}

// Decodes the non-ASCII UTF-8 sequence at `p` (*p >= 0x80); its length, or
// 0 when it is not UTF-8 or not a character XML 1.0 allows.
size_t decodeMultiByte(const uchar* p, const uchar* end, uint32_t& cp)
{
    uchar c = *p;
    size_t len;
    if (c >= 0xC2 && c <= 0xDF) {
        cp = c & 0x1F;
        len = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
        cp = c & 0x0F;
        len = 3;
    } else if (c >= 0xF0 && c <= 0xF4) {
        cp = c & 0x07;
        len = 4;
    } else {
        return 0;
    }
    if (static_cast<size_t>(end - p) < len)
        return 0;
    for (size_t k = 1; k < len; ++k) {
        if ((p[k] & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (p[k] & 0x3F);
    }
    bool overlong = (len == 3 && cp < 0x800) || (len == 4 && cp < 0x10000);
    if (overlong || !isXmlChar(cp))
        return 0;
    return len;
}

// Length of the character at `p` (p < end), 0 when it is not one XML allows.
inline size_t charLength(const uchar* p, const uchar* end)
{
    uchar c = *p;
    if (c < 0x80)
        return (c >= 0x20 || c == '\t' || c == '\n' || c == '\r') ? 1 : 0;
    uint32_t cp;
    return decodeMultiByte(p, end, cp);
}

inline bool isBlank(uchar c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// ASCII name characters: 1 may start a name, 2 may continue one. The colon
// is handled apart (namespaces give it a meaning), bytes from 0x80 decoded.
enum : uchar { kStart = 1, kChar = 2 };

// Built at compile time, so a check run from another unit's static
// initialiser never sees an empty table.
struct NameTable {
    uchar t[256] = {}; // bytes from 0x80 are 0: decoded apart
    constexpr NameTable()
    {
        for (int c = 'a'; c <= 'z'; ++c)
            t[c] = kStart | kChar;
        for (int c = 'A'; c <= 'Z'; ++c)
            t[c] = kStart | kChar;
        t[uchar('_')] = kStart | kChar;
        for (int c = '0'; c <= '9'; ++c)
            t[c] = kChar;
        t[uchar('-')] = kChar;
        t[uchar('.')] = kChar;
    }
};
constexpr NameTable kNames;

// Name productions of XML 1.0 (fifth edition) beyond ASCII.
bool isNameStartCp(uint32_t c)
{
    return (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF) ||
           (c >= 0x370 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) || (c >= 0x200C && c <= 0x200D) ||
           (c >= 0x2070 && c <= 0x218F) || (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) ||
           (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0xEFFFF);
}

bool isNameCp(uint32_t c)
{
    return isNameStartCp(c) || c == 0xB7 || (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

class Scanner {
public:
    Scanner(const uchar* begin, const uchar* end, HNKXmlTextCheck::Namespaces* ns)
        : begin_(begin), p_(begin), end_(end), ns_(ns), nsSettled_(ns != nullptr)
    {
        // Room for the depth of a message and its declarations at once,
        // rather than growing a step at a time with each new level.
        open_.reserve(32);
        bindings_.reserve(8);
    }

    bool run(HNKXmlTextCheck::Error& error)
    {
        bool ok = document();
        if (!ok) {
            error.offset = static_cast<size_t>(at_ - begin_);
            error.what = what_;
        }
        if (ns_) {
            ns_->settled = ok && nsSettled_;
            ns_->prefixedElements = prefixedElements_;
            ns_->depth = maxDepth_;
        }
        return ok;
    }

private:
    bool fail(const uchar* at, const char* what)
    {
        at_ = at;
        what_ = what;
        return false;
    }

    bool more(size_t n = 1) const { return static_cast<size_t>(end_ - p_) >= n; }
    bool startsWith(const char* s, size_t n) const { return more(n) && std::memcmp(p_, s, n) == 0; }

    bool skipBlanks()
    {
        const uchar* q = p_;
        while (q < end_ && isBlank(*q))
            ++q;
        bool moved = q != p_;
        p_ = q;
        return moved;
    }

    // Validates and passes one character; false (error set) when invalid.
    bool passChar()
    {
        size_t len = charLength(p_, end_);
        if (len == 0)
            return fail(p_, "invalid UTF-8 or a character XML does not allow");
        p_ += len;
        return true;
    }

    // A Name at p_; with `qualified` a namespace QName (NCName, or NCName ':'
    // NCName); without, an NCName (entity names, PI targets). False when the
    // text there is no such name; p_ then is undefined.
    bool name(bool qualified)
    {
        // Most names are ASCII without a colon: one tight loop.
        // (A local cursor: p_ is a member, and a byte read may alias it, so
        // the loop would store it at every step.)
        if (p_ < end_ && (kNames.t[*p_] & kStart)) {
            const uchar* q = skipLowerName(p_ + 1, end_);
            const uchar* const end = end_;
            while (q < end && (kNames.t[*q] & kChar))
                ++q;
            if (q == end || (*q < 0x80 && *q != ':')) {
                p_ = q;
                plainName_ = true;
                return true;
            }
        }
        plainName_ = false;
        bool start = true;
        bool colon = false;
        while (p_ < end_) {
            uchar c = *p_;
            if (c < 0x80) {
                uchar k = kNames.t[c];
                if (start ? (k & kStart) : (k & kChar)) {
                    ++p_;
                    start = false;
                    continue;
                }
                if (c != ':')
                    break;
                if (!qualified || colon || start)
                    return false;
                colon = true;
                start = true; // the local part must begin with a start character
                ++p_;
                continue;
            }
            uint32_t cp;
            size_t len = decodeMultiByte(p_, end_, cp);
            if (len == 0)
                return false;
            if (!(start ? isNameStartCp(cp) : isNameCp(cp)))
                return false;
            p_ += len;
            start = false;
        }
        return !start;
    }

    bool document()
    {
        if (startsWith("\xEF\xBB\xBF", 3))
            p_ += 3;
        if (startsWith("<?xml", 5) && more(6) && (isBlank(p_[5]) || p_[5] == '?')) {
            if (!xmlDeclaration())
                return false;
        }
        while (p_ < end_) {
            if (*p_ == '<') {
                if (depth_ > 0 && leaf())
                    continue;
                if (!markup())
                    return false;
            } else if (depth_ > 0 && isBlank(*p_)) {
                // The line break and indentation before a tag, passed at
                // once; any other text is read from its start.
                const uchar* q = p_ + 1;
                const uchar* const end = end_;
                // Indentation is spaces: eight compared at a time.
                while (end - q >= 8) {
                    const uint64_t other = load8(q) ^ kSpaces;
                    if (other != 0) {
                        q += __builtin_ctzll(other) >> 3;
                        break;
                    }
                    q += 8;
                }
                while (q < end && isBlank(*q))
                    ++q;
                if (q < end && *q == '<') {
                    p_ = q;
                    continue;
                }
                if (!content())
                    return false;
            } else if (depth_ == 0) {
                if (isBlank(*p_)) {
                    ++p_;
                    continue;
                }
                if (charLength(p_, end_) == 0)
                    return fail(p_, "invalid UTF-8 or a character XML does not allow");
                return fail(p_, "text outside the root element");
            } else if (!content()) {
                return false;
            }
        }
        if (depth_ > 0)
            return fail(end_, "unclosed element at the end of the text");
        if (!roots_)
            return fail(end_, "empty document: no root element");
        return true;
    }

    // "<name>value</name>" or "<name/>" at p_, inside the root: most
    // elements of a message are a setting holding one plain value. Passes it
    // whole when the name is plain ASCII and the value is printable ASCII
    // without '&', ']' or '<'; otherwise (false) leaves p_ where it was and
    // the general path reads the element. Such an element binds, uses and
    // leaves open nothing, so only the depth is noted.
    bool leaf()
    {
        const uchar* const end = end_;
        const uchar* const nameStart = p_ + 1;
        if (nameStart == end || !(kNames.t[*nameStart] & kStart))
            return false;
        const uchar* q = skipLowerName(nameStart + 1, end);
        while (q < end && (kNames.t[*q] & kChar))
            ++q;
        if (end - q < 2)
            return false;
        const size_t n = static_cast<size_t>(q - nameStart);
        if (*q == '/') {
            if (q[1] != '>')
                return false;
            p_ = q + 2;
        } else {
            if (*q != '>')
                return false;
            q = skipPlain<'<', '&', ']'>(q + 1, end);
            while (q < end && *q != '<') {
                if (*q < 0x20 || *q >= 0x80 || *q == '&' || *q == ']')
                    return false;
                ++q;
            }
            if (static_cast<size_t>(end - q) < n + 3 || q[1] != '/' || q[n + 2] != '>' ||
                !hnk_message_detail::sameBytes(reinterpret_cast<const char*>(q + 2),
                                               reinterpret_cast<const char*>(nameStart), n))
                return false;
            p_ = q + n + 3;
        }
        maxDepth_ = std::max(maxDepth_, depth_ + 1);
        return true;
    }

    // Character data up to the next '<' (or the end).
    bool content()
    {
        const uchar* run = p_;
        bool blankReference = false;
        for (;;) {
            p_ = skipPlain<'<', '&', ']'>(p_, end_);
            if (p_ == end_ || *p_ == '<')
                return !blankReference || !blankOnly(run, p_) ||
                       fail(run, "text of white space only from character references (it cannot be written back)");
            uchar c = *p_;
            if (c == '&') {
                const uchar* amp = p_;
                if (!reference(true))
                    return false;
                blankReference = blankReference || (amp[1] == '#' && lastReference_ <= 0x20 && isBlank(static_cast<uchar>(lastReference_)));
                continue;
            }
            if (c == ']') {
                if (more(3) && p_[1] == ']' && p_[2] == '>')
                    return fail(p_, "']]>' in text content");
                ++p_;
                continue;
            }
            if (!passChar())
                return false;
        }
    }

    // True when the checked text run [from, to) is nothing but blanks, raw
    // or as character references. The parser drops a run of raw blanks but
    // keeps one holding a reference, and the tree writes it back raw: read
    // again, it would be gone. Only runs holding a blank reference (rare)
    // are looked at again.
    static bool blankOnly(const uchar* from, const uchar* to)
    {
        for (const uchar* p = from; p < to; ++p) {
            if (isBlank(*p))
                continue;
            if (*p != '&' || p[1] != '#')
                return false;
            bool hex = p[2] == 'x';
            uint32_t value = 0;
            for (p += hex ? 3 : 2; *p != ';'; ++p)
                value = value * (hex ? 16 : 10) + static_cast<uint32_t>(*p <= '9' ? *p - '0' : (*p | 0x20) - 'a' + 10);
            if (value > 0x20 || !isBlank(static_cast<uchar>(value)))
                return false;
        }
        return true;
    }

    // '&' at p_: a character reference to a character XML allows, or one of
    // the five predefined entities (there is no DTD to define others). In
    // text content a reference to CR is refused too: the tree writes text
    // with a raw CR, which every parser reads back as LF, so the value could
    // not be written back.
    bool reference(bool inText)
    {
        const uchar* amp = p_;
        ++p_;
        if (p_ < end_ && *p_ == '#') {
            ++p_;
            bool hex = p_ < end_ && *p_ == 'x';
            if (hex)
                ++p_;
            uint32_t value = 0;
            size_t digits = 0;
            for (; p_ < end_; ++p_, ++digits) {
                uchar c = *p_;
                uint32_t d;
                if (c >= '0' && c <= '9')
                    d = c - '0';
                else if (hex && c >= 'a' && c <= 'f')
                    d = c - 'a' + 10;
                else if (hex && c >= 'A' && c <= 'F')
                    d = c - 'A' + 10;
                else
                    break;
                value = value * (hex ? 16 : 10) + d;
                if (value > 0x10FFFF)
                    value = 0x110000; // stays out of range, never overflows
            }
            if (digits == 0 || p_ == end_ || *p_ != ';')
                return fail(amp, "malformed character reference");
            if (!isXmlChar(value))
                return fail(amp, "character reference to a character XML does not allow");
            lastReference_ = value;
            if (value == 0xD && inText)
                return fail(amp, "character reference to CR in text content (it cannot be written back)");
            ++p_;
            return true;
        }
        const uchar* nameStart = p_;
        if (!name(false))
            return fail(amp, "'&' that starts no reference (write &amp;)");
        std::string_view n(reinterpret_cast<const char*>(nameStart), static_cast<size_t>(p_ - nameStart));
        if (p_ == end_ || *p_ != ';')
            return fail(amp, "entity reference without ';'");
        if (n != "lt" && n != "gt" && n != "amp" && n != "apos" && n != "quot")
            return fail(amp, "reference to an undefined entity");
        ++p_;
        return true;
    }

    bool markup()
    {
        const uchar* lt = p_;
        if (!more(2))
            return fail(lt, "unterminated markup");
        switch (p_[1]) {
        case '/':
            return endTag();
        case '?':
            return processingInstruction();
        case '!':
            if (startsWith("<!--", 4))
                return comment();
            if (startsWith("<![CDATA[", 9)) {
                if (depth_ == 0)
                    return fail(lt, "text outside the root element (CDATA section)");
                return cdata();
            }
            if (startsWith("<!DOCTYPE", 9))
                return fail(lt, "DOCTYPE declarations are not accepted");
            return fail(lt, "malformed markup after '<!'");
        default:
            return startTag();
        }
    }

    bool startTag()
    {
        const uchar* lt = p_;
        if (depth_ == 0 && roots_)
            return fail(lt, "more than one root element");
        ++p_;
        const uchar* nameStart = p_;
        if (!name(true))
            return fail(lt + 1, "invalid element name");
        std::string_view elementName(reinterpret_cast<const char*>(nameStart), static_cast<size_t>(p_ - nameStart));
        const bool plainElement = plainName_;
        size_t count = 0;
        bool empty = false;
        for (;;) {
            bool blank = skipBlanks();
            if (p_ == end_)
                return fail(lt, "unterminated start tag");
            if (*p_ == '>') {
                ++p_;
                break;
            }
            if (*p_ == '/') {
                if (!more(2) || p_[1] != '>')
                    return fail(p_, "malformed start tag: '/' not followed by '>'");
                p_ += 2;
                empty = true;
                break;
            }
            if (!blank)
                return fail(p_, "malformed start tag: white space expected before an attribute");
            if (!attribute(count))
                return false;
        }
        roots_ = true;
        if (count > kInline)
            overflow_.clear();
        maxDepth_ = std::max(maxDepth_, depth_ + 1);
        // An element without attributes whose name has no prefix binds and
        // uses nothing: most elements, and nothing to look at.
        if (nsSettled_ && (count != 0 || !plainElement))
            nsSettled_ = namespacesHold(elementName, count);
        if (!empty) {
            ++depth_;
            // Built in place from the two words (a copy of the view made on the
            // stack is read back in one load that store forwarding cannot serve).
            open_.emplace_back(elementName.data(), elementName.size());
        } else {
            leaveScope();
        }
        return true;
    }

    // ---- Namespaces, where they are plain ----
    // The tree check after the parse knows every namespace rule; this pass
    // settles the common case on the way instead (declarations of ordinary
    // prefixes to URIs, prefixed names and xsi:type values that use them)
    // and leaves anything else to it: it never refuses, it only stops
    // vouching (nsSettled_ false).

    static bool isDeclaration(std::string_view n)
    {
        return n.size() >= 5 && n.compare(0, 5, "xmlns") == 0 && (n.size() == 5 || n[5] == ':');
    }

    // The URI a prefix is bound to here; false when unbound (or "xml",
    // which the tree check resolves).
    bool bound(std::string_view prefix, std::string_view& uri) const
    {
        for (size_t i = bindings_.size(); i-- > 0;)
            if (bindings_[i].prefix == prefix) {
                uri = bindings_[i].uri;
                return !uri.empty() || prefix.empty();
            }
        return false;
    }

    // Pushes the element's declarations (at depth_ + 1, its own level) and
    // checks its names; false when the tree check must decide.
    bool namespacesHold(std::string_view element, size_t count)
    {
        if (count > kInline)
            return false;
        const size_t level = depth_ + 1;
        for (size_t i = 0; i < count; ++i) {
            std::string_view n = seen_[i];
            if (!isDeclaration(n))
                continue;
            if (values_[i].amp)
                return false;
            std::string_view uri = values_[i].value;
            std::string_view prefix = n.size() == 5 ? std::string_view() : n.substr(6);
            if (prefix == "xml" || prefix == "xmlns" || uri == "http://www.w3.org/XML/1998/namespace" ||
                uri == "http://www.w3.org/2000/xmlns/" || (uri.empty() && !prefix.empty()) ||
                !HNKXmlTextCheck::isUriReference(uri))
                return false;
            bindings_.push_back(Binding{prefix, uri, level});
        }
        std::string_view uri;
        size_t colon = element.find(':');
        if (colon != std::string_view::npos) {
            prefixedElements_ = true;
            if (!bound(element.substr(0, colon), uri))
                return false;
        }
        size_t prefixed = 0;
        for (size_t i = 0; i < count; ++i) {
            std::string_view n = seen_[i];
            colon = n.find(':');
            if (colon == std::string_view::npos || isDeclaration(n))
                continue;
            if (++prefixed > 1 || !bound(n.substr(0, colon), uri))
                return false; // two prefixed attributes may clash once resolved: the tree check compares them
            if (n.substr(colon + 1) != "type" || uri != "http://www.w3.org/2001/XMLSchema-instance")
                continue;
            if (values_[i].amp)
                return false;
            std::string_view v = values_[i].value;
            while (!v.empty() && isBlank(static_cast<uchar>(v.front())))
                v.remove_prefix(1);
            while (!v.empty() && isBlank(static_cast<uchar>(v.back())))
                v.remove_suffix(1);
            size_t c = v.find(':');
            if (v.empty() || (c != std::string_view::npos &&
                              (c == 0 || c + 1 == v.size() || v.find(':', c + 1) != std::string_view::npos ||
                               !bound(v.substr(0, c), uri))))
                return false;
        }
        return true;
    }

    // Drops the declarations of the element being left (deeper than depth_).
    void leaveScope()
    {
        while (!bindings_.empty() && bindings_.back().depth > depth_)
            bindings_.pop_back();
    }

    bool attribute(size_t& count)
    {
        const uchar* nameStart = p_;
        if (!name(true))
            return fail(nameStart, "invalid attribute name");
        std::string_view n(reinterpret_cast<const char*>(nameStart), static_cast<size_t>(p_ - nameStart));
        if (!remember(n, count))
            return fail(nameStart, "duplicate attribute");
        skipBlanks();
        if (p_ == end_ || *p_ != '=')
            return fail(p_, "attribute without '=' and a value");
        ++p_;
        skipBlanks();
        if (p_ == end_ || (*p_ != '"' && *p_ != '\''))
            return fail(p_, "attribute value not in quotes");
        uchar quote = *p_++;
        const uchar* valueStart = p_;
        bool amp = false;
        for (;;) {
            p_ = quote == '"' ? skipPlain<'"', '<', '&'>(p_, end_) : skipPlain<'\'', '<', '&'>(p_, end_);
            if (p_ == end_)
                return fail(nameStart, "unterminated attribute value");
            uchar c = *p_;
            if (c == quote) {
                if (count <= kInline)
                    values_[count - 1] = Value{std::string_view(reinterpret_cast<const char*>(valueStart),
                                                                static_cast<size_t>(p_ - valueStart)),
                                               amp};
                ++p_;
                return true;
            }
            if (c == '<')
                return fail(p_, "'<' in an attribute value");
            if (c == '&') {
                amp = true;
                if (!reference(false))
                    return false;
                continue;
            }
            if (!passChar())
                return false;
        }
    }

    // Notes an attribute name of the current start tag; false when the tag
    // had it already. The usual few are compared directly, without memory.
    bool remember(std::string_view n, size_t& count)
    {
        if (count < kInline) {
            for (size_t i = 0; i < count; ++i)
                if (seen_[i] == n)
                    return false;
            seen_[count++] = n;
            return true;
        }
        if (count == kInline)
            overflow_.insert(seen_, seen_ + kInline);
        ++count;
        return overflow_.insert(n).second;
    }

    bool endTag()
    {
        const uchar* lt = p_;
        if (depth_ == 0)
            return fail(lt, "end tag without a start tag");
        // Mostly the end tag names its start tag, checked already: then a
        // comparison will do. (Anything else is read as before, and a
        // mismatch left to the parser.)
        std::string_view expected = open_.back();
        open_.pop_back();
        if (static_cast<size_t>(end_ - p_) > expected.size() + 2 && p_[2 + expected.size()] == '>' &&
            hnk_message_detail::sameBytes(reinterpret_cast<const char*>(p_ + 2), expected.data(), expected.size())) {
            p_ += expected.size() + 3;
            --depth_;
            if (!bindings_.empty())
                leaveScope();
            return true;
        }
        p_ += 2;
        if (!name(true))
            return fail(lt + 2, "invalid element name in an end tag");
        skipBlanks();
        if (p_ == end_ || *p_ != '>')
            return fail(lt, "malformed end tag");
        ++p_;
        --depth_;
        if (!bindings_.empty())
            leaveScope();
        return true;
    }

    // "<!--" at p_. "--" may only close a comment, so a comment never ends
    // in "--->".
    bool comment()
    {
        const uchar* lt = p_;
        p_ += 4;
        for (;;) {
            p_ = skipPlain<'-', '-', '-'>(p_, end_);
            if (p_ == end_)
                return fail(lt, "unterminated comment");
            if (*p_ != '-') {
                if (!passChar())
                    return false;
                continue;
            }
            if (more(2) && p_[1] == '-') {
                if (!more(3) || p_[2] != '>')
                    return fail(p_, "'--' inside a comment");
                p_ += 3;
                return true;
            }
            ++p_;
        }
    }

    bool cdata()
    {
        const uchar* lt = p_;
        p_ += 9;
        for (;;) {
            p_ = skipPlain<']', ']', ']'>(p_, end_);
            if (p_ == end_)
                return fail(lt, "unterminated CDATA section");
            if (*p_ == ']') {
                if (more(3) && p_[1] == ']' && p_[2] == '>') {
                    p_ += 3;
                    return true;
                }
                ++p_;
                continue;
            }
            if (!passChar())
                return false;
        }
    }

    // "<?" at p_: a processing instruction whose target is not "xml" in any
    // case (the declaration is read by xmlDeclaration, first in the text).
    bool processingInstruction()
    {
        const uchar* lt = p_;
        p_ += 2;
        const uchar* target = p_;
        if (!name(false))
            return fail(target, "invalid processing instruction target");
        if (p_ - target == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' && (target[2] | 0x20) == 'l')
            return fail(lt, std::memcmp(target, "xml", 3) == 0 ? "XML declaration not at the start of the text"
                                                                 : "processing instruction target 'xml' is reserved");
        if (startsWith("?>", 2)) {
            p_ += 2;
            return true;
        }
        if (!skipBlanks())
            return fail(p_, "malformed processing instruction");
        for (;;) {
            p_ = skipPlain<'?', '?', '?'>(p_, end_);
            if (p_ == end_)
                return fail(lt, "unterminated processing instruction");
            if (*p_ == '?' && more(2) && p_[1] == '>') {
                p_ += 2;
                return true;
            }
            if (!passChar())
                return false;
        }
    }

    // Eq and a quoted value made of ASCII letters, digits, '.', '_' and '-'
    // (what the three pseudo-attributes can hold); false when malformed.
    bool pseudoValue(std::string_view& value)
    {
        skipBlanks();
        if (p_ == end_ || *p_ != '=')
            return false;
        ++p_;
        skipBlanks();
        if (p_ == end_ || (*p_ != '"' && *p_ != '\''))
            return false;
        uchar quote = *p_++;
        const uchar* from = p_;
        while (p_ < end_ && *p_ != quote) {
            uchar c = *p_;
            if (!(kNames.t[c] & kChar))
                return false;
            ++p_;
        }
        if (p_ == end_)
            return false;
        value = std::string_view(reinterpret_cast<const char*>(from), static_cast<size_t>(p_ - from));
        ++p_;
        return true;
    }

    static bool equalsNoCase(std::string_view a, const char* b)
    {
        size_t n = std::strlen(b);
        if (a.size() != n)
            return false;
        for (size_t i = 0; i < n; ++i) {
            char c = a[i];
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c + ('a' - 'A'));
            if (c != b[i])
                return false;
        }
        return true;
    }

    // "<?xml" and a blank at p_, the very start of the text. Only version
    // 1.0 in UTF-8 is read: the text is taken as UTF-8 whatever it declares.
    bool xmlDeclaration()
    {
        const uchar* lt = p_;
        p_ += 5;
        std::string_view value;
        bool blank = skipBlanks();
        if (!blank || !startsWith("version", 7))
            return fail(lt, "XML declaration without a version");
        p_ += 7;
        const uchar* at = p_;
        if (!pseudoValue(value))
            return fail(at, "malformed version in the XML declaration");
        if (value == "1.1")
            return fail(at, "XML 1.1 documents are not accepted");
        if (value != "1.0")
            return fail(at, "unsupported XML version (only 1.0)");
        blank = skipBlanks();
        if (blank && startsWith("encoding", 8)) {
            p_ += 8;
            at = p_;
            if (!pseudoValue(value) || value.empty() || !(kNames.t[static_cast<uchar>(value[0])] & kStart) ||
                value[0] == '_')
                return fail(at, "malformed encoding name in the XML declaration");
            if (!equalsNoCase(value, "utf-8"))
                return fail(at, "unsupported encoding (only UTF-8)");
            blank = skipBlanks();
        }
        if (blank && startsWith("standalone", 10)) {
            p_ += 10;
            at = p_;
            if (!pseudoValue(value) || (value != "yes" && value != "no"))
                return fail(at, "standalone must be \"yes\" or \"no\" in the XML declaration");
            skipBlanks();
        }
        if (!startsWith("?>", 2))
            return fail(p_, "malformed XML declaration");
        p_ += 2;
        return true;
    }

    static const size_t kInline = 16;

    const uchar* begin_;
    const uchar* p_;
    const uchar* end_;
    const uchar* at_ = nullptr;
    const char* what_ = nullptr;
    uint32_t lastReference_ = 0; // value of the last character reference
    size_t depth_ = 0;
    bool roots_ = false;
    std::string_view seen_[kInline];
    std::unordered_set<std::string_view> overflow_;

    struct Value {
        std::string_view value; // as written, references undecoded
        bool amp;               // holds a reference
    };
    struct Binding {
        std::string_view prefix; // empty: the default namespace
        std::string_view uri;
        size_t depth; // of the element declaring it
    };
    HNKXmlTextCheck::Namespaces* ns_;
    bool nsSettled_;
    bool prefixedElements_ = false;
    bool plainName_ = false; // the last name read was ASCII without a colon
    size_t maxDepth_ = 0;
    Value values_[kInline];
    std::vector<Binding> bindings_;
    std::vector<std::string_view> open_; // names of the elements open, innermost last
};

} // namespace

bool HNKXmlTextCheck::check(const char* text, size_t size, Error& error) { return check(text, size, error, nullptr); }

bool HNKXmlTextCheck::check(const char* text, size_t size, Error& error, Namespaces* namespaces)
{
    const uchar* begin = reinterpret_cast<const uchar*>(text);
    Scanner scanner(begin, begin + size, namespaces);
    return scanner.run(error);
}

ptrdiff_t HNKXmlTextCheck::findInvalidChar(const char* text, size_t size)
{
    const uchar* begin = reinterpret_cast<const uchar*>(text);
    const uchar* end = begin + size;
    const uchar* p = begin;
    for (;;) {
        p = skipPlain<0, 0, 0>(p, end); // no stop byte: NUL is caught by the range test
        if (p == end)
            return -1;
        size_t len = charLength(p, end);
        if (len == 0)
            return p - begin;
        p += len;
    }
}

namespace {

bool isAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isHex(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// unreserved, sub-delims, and the gen-delims a URI may hold unescaped, so
// every byte that may appear outside '%' escapes; brackets and '&' aside
// (libxml2 refuses a namespace name holding '&', which it keeps escaped).
struct UriChars {
    bool t[256];
    constexpr UriChars() : t()
    {
        for (int c = 0; c < 256; ++c)
            t[c] = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        for (const char* s = "-._~!$'()*+,;=:/?#@"; *s; ++s)
            t[static_cast<unsigned char>(*s)] = true;
    }
};
constexpr UriChars kUriChars;

bool isUriChar(char c) { return kUriChars.t[static_cast<unsigned char>(c)]; }

// The first of `u`'s bytes that is one of ':' (with `colon`), '/', '?' and
// '#', else npos; a plain loop (find_first_of asks memchr once per byte).
size_t firstDelimiter(std::string_view u, bool colon)
{
    for (size_t i = 0; i < u.size(); ++i) {
        const char c = u[i];
        if (c == '/' || c == '?' || c == '#' || (colon && c == ':'))
            return i;
    }
    return std::string_view::npos;
}

} // namespace

bool HNKXmlTextCheck::isUriReference(const char* uri) { return isUriReference(std::string_view(uri)); }

bool HNKXmlTextCheck::isUriReference(std::string_view u)
{
    int hashes = 0;
    for (size_t i = 0; i < u.size(); ++i) {
        char c = u[i];
        if (c == '%') {
            if (i + 2 >= u.size() || !isHex(u[i + 1]) || !isHex(u[i + 2]))
                return false;
            i += 2;
            continue;
        }
        if (!isUriChar(c) || (c == '#' && ++hashes > 1))
            return false;
    }
    std::string_view rest = u;
    size_t delim = firstDelimiter(u, true);
    if (delim != std::string_view::npos && u[delim] == ':') {
        if (delim == 0 || !isAlpha(u[0]))
            return false;
        for (size_t i = 1; i < delim; ++i)
            if (!isAlpha(u[i]) && !isDigit(u[i]) && u[i] != '+' && u[i] != '-' && u[i] != '.')
                return false;
        rest = u.substr(delim + 1);
    }
    if (rest.substr(0, 2) != "//")
        return true;
    // authority: [userinfo "@"] host [":" port]
    rest.remove_prefix(2);
    std::string_view authority = rest.substr(0, firstDelimiter(rest, false));
    size_t at = authority.find('@');
    if (at != std::string_view::npos)
        authority.remove_prefix(at + 1);
    if (authority.find('@') != std::string_view::npos)
        return false;
    size_t colon = authority.find(':');
    if (colon == std::string_view::npos)
        return true;
    // RFC 3986 allows an empty port and any number of digits; libxml2 wants
    // a port that fits its int.
    if (colon + 1 == authority.size())
        return false;
    uint64_t port = 0;
    for (char c : authority.substr(colon + 1)) {
        if (!isDigit(c))
            return false;
        port = std::min<uint64_t>(port * 10 + static_cast<uint64_t>(c - '0'), uint64_t(1) << 32);
    }
    return port <= 2147483647u;
}

void HNKXmlTextCheck::position(const char* text, size_t size, size_t offset, size_t& line, size_t& column)
{
    if (offset > size)
        offset = size;
    line = 1;
    column = 1;
    for (size_t i = 0; i < offset; ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '\n' || c == '\r') {
            if (c == '\r' && i + 1 < offset && text[i + 1] == '\n')
                ++i;
            ++line;
            column = 1;
        } else if ((c & 0xC0) != 0x80) {
            ++column;
        }
    }
}
