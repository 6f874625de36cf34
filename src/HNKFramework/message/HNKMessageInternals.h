#pragma once
// Private to the message cursor: what its source files share (small name and
// text helpers, the namespace binding lookups, the drafts' escape table) and
// the cursor's own state (Draft, Tree, Document, Caches). Not installed, and
// everything declared here is hidden inside the library; the helpers a hot
// path calls (names, lookups, escapes) are inline so that splitting the
// cursor over several files costs no calls.
#include "HNKByteInternals.h"
#include "HNKMessageIterator.h"

#include <pugixml.hpp>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace hnk_message_detail __attribute__((visibility("hidden"))) {

using pugi::xml_attribute;
using pugi::xml_node;
using pugi::xml_node_struct;
using pugi::xml_text;

inline constexpr char kXsiURI[] = "http://www.w3.org/2001/XMLSchema-instance";
inline constexpr char kXmlURI[] = "http://www.w3.org/XML/1998/namespace";
inline constexpr char kXmlnsURI[] = "http://www.w3.org/2000/xmlns/";

inline xml_node nodeOf(xml_node_struct* n) { return xml_node(n); }

inline bool isXmlBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

inline std::string_view trimBlanks(const char* text)
{
    std::string_view v(text, stringLength(text));
    while (!v.empty() && isXmlBlank(v.front()))
        v.remove_prefix(1);
    while (!v.empty() && isXmlBlank(v.back()))
        v.remove_suffix(1);
    return v;
}

inline const char* localName(const char* name)
{
    const char* colon = std::strchr(name, ':');
    return colon ? colon + 1 : name;
}

inline bool nameMatches(const char* name, const char* tag) { return std::strcmp(localName(name), tag) == 0; }

// "xmlns" or "xmlns:...": a namespace declaration (byte by byte, so a
// shorter name is never read past its end).
inline bool isXmlnsName(const char* name)
{
    return name[0] == 'x' && name[1] == 'm' && name[2] == 'l' && name[3] == 'n' && name[4] == 's';
}

// The colon of "prefix:type" (a candidate xsi:type name), else nullptr.
inline const char* typeColon(const char* name)
{
    const char* colon = std::strchr(name, ':');
    return colon && colon[1] == 't' && colon[2] == 'y' && colon[3] == 'p' && colon[4] == 'e' && colon[5] == '\0'
               ? colon
               : nullptr;
}

// Names the cursor creates: ASCII NCNames (no prefix), so any output is
// namespace-well-formed. Checked on every write by name, so by table.
struct TagChars {
    enum : unsigned char { kStart = 1, kChar = 2 };
    unsigned char t[256] = {};
    constexpr TagChars()
    {
        for (int c = 'a'; c <= 'z'; ++c)
            t[c] = kStart | kChar;
        for (int c = 'A'; c <= 'Z'; ++c)
            t[c] = kStart | kChar;
        t[static_cast<unsigned char>('_')] = kStart | kChar;
        for (int c = '0'; c <= '9'; ++c)
            t[c] = kChar;
        t[static_cast<unsigned char>('-')] = kChar;
        t[static_cast<unsigned char>('.')] = kChar;
    }
};
inline constexpr TagChars kTagChars{};

// The length of `tag` when it is a name the cursor creates, else 0. One
// loop measures and checks: the terminating NUL is no name character.
inline size_t tagLength(const char* tag)
{
    const unsigned char* p = reinterpret_cast<const unsigned char*>(tag);
    if (!(kTagChars.t[p[0]] & TagChars::kStart))
        return 0;
    size_t n = 1;
    while (kTagChars.t[p[n]] & TagChars::kChar)
        ++n;
    return p[n] == 0 ? n : 0;
}

inline bool isValidTag(const char* tag) { return tagLength(tag) != 0; }

// Splits a QName; false when it is not prefix:local or local.
inline bool splitQName(std::string_view qname, std::string_view& prefix, std::string_view& local)
{
    size_t colon = qname.find(':');
    if (colon == std::string_view::npos) {
        prefix = std::string_view();
        local = qname;
        return !local.empty();
    }
    prefix = qname.substr(0, colon);
    local = qname.substr(colon + 1);
    return !prefix.empty() && !local.empty() && local.find(':') == std::string_view::npos;
}

struct StringWriter : pugi::xml_writer {
    std::string out;
    void write(const void* data, size_t size) override { out.append(static_cast<const char*>(data), size); }
};

// ---- Namespace bindings seen from an element of a built tree ----
// Defined, and described, in HNKMessageNamespaces.cpp.

const char* lookupPrefix(xml_node el, const char* prefix, size_t len);
const char* findPrefixFor(xml_node el, const char* uri);
std::string declarePrefix(xml_node el, const std::string& base, const char* uri);
std::string prefixBaseFor(const char* uri);
xml_attribute findXsiType(xml_node el);

// ---- Escapes of text written from a draft (HNKMessageDrafts.cpp) ----

// How pugixml escapes each ASCII character in text and in attribute values
// (nullptr: written as is), asked of pugixml itself once, so text written
// from a draft is byte for byte what it writes from nodes.
struct EscapeTable {
    const char* text[128] = {};
    const char* attribute[128] = {};
    std::string held[256];
    // Each table escapes no printable character but '<', '>', '&', '"'
    // (ChunkOut::putEscaped may then pass over words).
    bool textWordwise = true, attributeWordwise = true;

    EscapeTable();
};

// Text written in small pieces: they are gathered in a buffer on the stack
// and appended to the string a chunk at a time (as pugixml's own writer
// does), instead of one append call each.
class ChunkOut {
public:
    explicit ChunkOut(std::string& out) : out_(out) {}
    ChunkOut(const ChunkOut&) = delete;
    ChunkOut& operator=(const ChunkOut&) = delete;
    ~ChunkOut() { flush(); }

    void put(char c)
    {
        if (n_ == sizeof buf_)
            flush();
        buf_[n_++] = c;
    }
    void put(const char* d, size_t size)
    {
        if (size > sizeof buf_ - n_) {
            flush();
            if (size > sizeof buf_) {
                out_.append(d, size);
                return;
            }
        }
        copyBytes(buf_ + n_, d, size);
        n_ += size;
    }
    // "<name>text</name>" with a text that needs no escape, in one step.
    void putLeaf(const char* name, size_t length, const char* text, size_t textLength)
    {
        const size_t size = 2 * length + textLength + 5;
        if (size > sizeof buf_ - n_) {
            flush();
            if (size > sizeof buf_) { // (larger than the buffer: piece by piece)
                put('<');
                put(name, length);
                put('>');
                put(text, textLength);
                put("</", 2);
                put(name, length);
                put('>');
                return;
            }
        }
        char* w = buf_ + n_;
        *w++ = '<';
        copyBytes(w, name, length);
        w += length;
        *w++ = '>';
        copyBytes(w, text, textLength);
        w += textLength;
        *w++ = '<';
        *w++ = '/';
        copyBytes(w, name, length);
        w += length;
        *w = '>';
        n_ += size;
    }
    // Each ASCII byte with an entry in `table` written as that entry. With
    // `wordwise` (the table escapes nothing but control characters and
    // '<', '>', '&', '"'), eight bytes at a time are passed over while none
    // of them can need it.
    void putEscaped(const char* d, size_t size, const char* const* table, bool wordwise)
    {
        const char* run = d;
        const char* const end = d + size;
        while (d < end) {
            if (wordwise)
                while (end - d >= 8 && !mayEscape(d))
                    d += 8;
            for (const char* stop = end - d > 8 ? d + 8 : end; d < stop; ++d) {
                unsigned char c = static_cast<unsigned char>(*d);
                if (c < 128 && table[c]) {
                    put(run, static_cast<size_t>(d - run));
                    put(table[c], std::strlen(table[c]));
                    run = d + 1;
                }
            }
        }
        put(run, static_cast<size_t>(end - run));
    }
    void flush()
    {
        out_.append(buf_, n_);
        n_ = 0;
    }

    // Whether one of the first `n` (below 8) bytes at `d` may need an escape
    // from a wordwise table; eight bytes must be readable there. A short
    // value (most are) is so passed over in one step.
    static bool shortMayEscape(const char* d, size_t n)
    {
        uint64_t w;
        std::memcpy(&w, d, 8);
        const uint64_t keep = (uint64_t(1) << (8 * n)) - 1;
        return mayEscape((w & keep) | (0x6161616161616161ull & ~keep)); // 'a' beyond the value
    }
    // The same for a value of eight bytes or more, a word at a time (the
    // last word overlapping the one before).
    static bool longMayEscape(const char* d, size_t n)
    {
        for (size_t k = 0; k + 8 < n; k += 8)
            if (mayEscape(d + k))
                return true;
        return mayEscape(d + n - 8);
    }

private:
    // Whether one of the eight bytes at `d` is below 0x20, from 0x80, or
    // one of '<', '>', '&', '"'.
    static bool mayEscape(const char* d)
    {
        uint64_t w;
        std::memcpy(&w, d, 8);
        return mayEscape(w);
    }
    static bool mayEscape(uint64_t w)
    {
        const uint64_t ones = 0x0101010101010101ull, high = 0x8080808080808080ull;
        auto has = [&](unsigned char b) {
            const uint64_t v = w ^ (ones * b);
            return (v - ones) & ~v & high;
        };
        return ((((w - 0x2020202020202020ull) | w) & high) | has('<') | has('>') | has('&') | has('"')) != 0;
    }

    std::string& out_;
    size_t n_ = 0;
    char buf_[4096];
};

inline const EscapeTable& escapes()
{
    static const EscapeTable table;
    return table;
}

inline void appendEscaped(std::string& out, const char* s, size_t n, const char* const* table)
{
    const char* run = s;
    const char* end = s + n;
    for (; s < end; ++s) {
        unsigned char c = static_cast<unsigned char>(*s);
        if (c < 128 && table[c]) {
            out.append(run, static_cast<size_t>(s - run));
            out.append(table[c]);
            run = s + 1;
        }
    }
    out.append(run, static_cast<size_t>(end - run));
}

} // namespace hnk_message_detail

// The new content of an element (its host) kept as the log of the writes
// that made it instead of as nodes: "O" name, "A" name value, "T" text, "C"
// (open, attribute, text, close). Each string is preceded by its length in
// a byte and followed by a NUL, so it is copied out without being
// measured and compared or handed to pugixml in place. Writers fill a
// fresh element with records that nobody reads back, so the content is
// written once as a log and once as text (toXML, spliced), never as nodes;
// the first look inside turns it into exactly the nodes the writes would
// have made (Tree::realize). One cursor at a time may be inside a draft.
struct HNKMessageIterator::Draft {
    // A draft's log: bytes appended in small pieces. Unlike std::string, making
    // room does not first zero what the caller is about to write over.
    class Log {
    public:
        Log() = default;
        Log(const Log& other) { *this = other; }
        Log& operator=(const Log& other)
        {
            if (this != &other) {
                size_ = 0;
                append(other.data(), other.size());
            }
            return *this;
        }

        size_t size() const { return size_; }
        const char* data() const { return buf_ ? buf_.get() : ""; }
        char operator[](size_t i) const { return buf_[i]; }

        // Room for `n` more bytes at the end, for the caller to fill.
        char* grow(size_t n)
        {
            if (n > cap_ - size_)
                reserve(std::max(size_ + n, cap_ == 0 ? kFirstBytes : 2 * cap_)); // a record's worth first
            char* p = buf_.get() + size_;
            size_ += n;
            return p;
        }
        void append(const char* d, size_t n)
        {
            if (n != 0)
                std::memcpy(grow(n), d, n);
        }
        Log& operator+=(char c)
        {
            *grow(1) = c;
            return *this;
        }
        void reserve(size_t n)
        {
            if (n <= cap_)
                return;
            std::unique_ptr<char[]> bigger(new char[n]);
            if (size_ != 0)
                std::memcpy(bigger.get(), buf_.get(), size_);
            buf_ = std::move(bigger);
            cap_ = n;
        }

    private:
        static const size_t kFirstBytes = 1024;
        std::unique_ptr<char[]> buf_;
        size_t size_ = 0;
        size_t cap_ = 0;
    };

    struct Level {
        bool startOpen = false; // no content yet: the start tag takes attributes
        bool stamped = false;
        uint64_t filter = 0;
        std::vector<size_t> names; // offsets in `ops` of the child names, each once
        // Beyond kIndexFrom names (a record's root takes sixty settings, each
        // setter asking first for the one it replaces), open addressing over
        // `names` (index + 1, 0 empty) by the names' keys.
        std::vector<size_t> slots;
    };
    static const size_t kIndexFrom = 16;
    Log ops;
    std::vector<Level> levels{1}; // [0]: the host; one more per open element
    size_t depth = 1;
    HNKMessageIterator* writer = nullptr; // the cursor inside, if any
    // What a look at the host's children needs without reading the log:
    // where each top-level child's entries begin and end (npos while it is
    // open), whether the host holds text of its own, and the prefixes the
    // attributes name (in their names and values).
    std::vector<std::pair<size_t, size_t>> tops;
    bool hostText = false;
    std::vector<std::string> prefixes;
    // The length of the written text but for escapes: the writer reserves
    // it at once instead of growing the output while it goes.
    size_t textBytes = 0;

    Level& top() { return levels[depth - 1]; }

    // A string's length in the log; one of kLong bytes or more (a long
    // value, rare) is measured where it is read.
    static const unsigned char kLong = 0xFF;
    // How far a name (or text) stands from its entry's op: the op, then the length.
    static const size_t kNameFrom = 2;

    static char lengthByte(size_t n) { return static_cast<char>(n < kLong ? n : kLong); }

    static char* putString(char* p, const char* s, size_t n)
    {
        *p = lengthByte(n);
        hnk_message_detail::copyBytes(p + 1, s, n);
        p[n + 1] = '\0';
        return p + n + 2;
    }

    // The length of the string whose length byte is at `at`.
    size_t lengthAt(size_t at) const
    {
        const unsigned char length = static_cast<unsigned char>(ops[at]);
        return length != kLong ? length : std::strlen(ops.data() + at + 1);
    }

    // A name's key, from its length and (up to) its first and last eight
    // bytes; two of its bits make a filter that rules out most names without
    // a look at the list.
    static uint64_t keyOf(const char* name, size_t length)
    {
        uint64_t first = 0, last = 0;
        if (length >= 8) {
            std::memcpy(&first, name, 8);
            std::memcpy(&last, name + length - 8, 8);
        } else if (length >= 4) { // two overlapping loads
            uint32_t a, b;
            std::memcpy(&a, name, 4);
            std::memcpy(&b, name + length - 4, 4);
            first = a | static_cast<uint64_t>(b) << 32;
        } else {
            for (size_t i = 0; i < length; ++i)
                first |= static_cast<uint64_t>(static_cast<unsigned char>(name[i])) << (8 * i);
        }
        uint64_t h = (first * 0x9E3779B97F4A7C15ull) ^ (last * 0xC2B2AE3D27D4EB4Full) ^ (length * 0x165667B19E3779F9ull);
        h ^= h >> 29;
        return h * 0xFF51AFD7ED558CCDull;
    }
    static uint64_t bitsOf(uint64_t key) { return (1ull << (key >> 58)) | (1ull << ((key >> 52) & 63)); }

    bool nameAt(size_t at, const char* name, size_t length) const
    {
        return hnk_message_detail::sameBytes(ops.data() + at, name, length) && ops[at + length] == '\0';
    }

    // Whether the element under the writer has a child with this name. The
    // filter answers most (a record's writer asks for each new name): inline.
    __attribute__((always_inline)) bool hasChild(const char* name, size_t length, uint64_t key) const
    {
        const Level& l = levels[depth - 1];
        const uint64_t bits = bitsOf(key);
        return (l.filter & bits) == bits && listed(l, name, length, key);
    }

    __attribute__((noinline)) bool listed(const Level& l, const char* name, size_t length, uint64_t key) const
    {
        if (!l.slots.empty()) {
            const size_t mask = l.slots.size() - 1;
            for (size_t i = (key >> 8) & mask; l.slots[i] != 0; i = (i + 1) & mask)
                if (nameAt(l.names[l.slots[i] - 1], name, length))
                    return true;
            return false;
        }
        for (size_t at : l.names)
            if (nameAt(at, name, length))
                return true;
        return false;
    }

    // Lists start with room for a record's fields rather than growing from
    // one entry a step at a time.
    static const size_t kFirstRoom = 16;

    void addTop(size_t begin, size_t end)
    {
        if (tops.capacity() == 0)
            tops.reserve(kFirstRoom);
        tops.emplace_back(begin, end);
    }

    // Notes a new child name (at offset `at` in ops) of level `l`.
    void addName(Level& l, size_t at, uint64_t key)
    {
        l.filter |= bitsOf(key);
        if (l.names.capacity() == 0)
            l.names.reserve(kFirstRoom);
        l.names.push_back(at);
        if (l.slots.empty() ? l.names.size() > kIndexFrom : 2 * l.names.size() > l.slots.size())
            reindex(l);
        else if (!l.slots.empty())
            place(l, l.names.size() - 1, key);
    }

    __attribute__((noinline)) void reindex(Level& l)
    {
        size_t size = 64;
        while (size < 4 * l.names.size())
            size *= 2;
        l.slots.assign(size, 0);
        for (size_t k = 0; k < l.names.size(); ++k)
            place(l, k, keyOf(ops.data() + l.names[k], lengthAt(l.names[k] - 1)));
    }

    static void place(Level& l, size_t k, uint64_t key)
    {
        const size_t mask = l.slots.size() - 1;
        size_t i = (key >> 8) & mask;
        while (l.slots[i] != 0)
            i = (i + 1) & mask;
        l.slots[i] = k + 1;
    }

    void open(const char* name, size_t length)
    {
        uint64_t key = keyOf(name, length);
        if (hasChild(name, length, key))
            openKnown(name, length);
        else
            openNew(name, length, key);
    }

    // open() of a name the element has no child of yet (hasChild said so).
    void openNew(const char* name, size_t length, uint64_t key)
    {
        const size_t parent = depth - 1;
        const size_t at = ops.size() + kNameFrom;
        openKnown(name, length); // (the name is in the log before the list reads it)
        addName(levels[parent], at, key);
    }

    void openKnown(const char* name, size_t length)
    {
        top().startOpen = false;
        const size_t at = ops.size();
        if (depth == 1)
            addTop(at, std::string::npos);
        textBytes += 2 * length + 5; // <name></name>
        char* p = ops.grow(length + 3);
        *p = 'O';
        putString(p + 1, name, length);
        if (levels.size() == depth)
            levels.emplace_back();
        Level& child = levels[depth++];
        child.startOpen = true;
        child.stamped = false;
        child.filter = 0;
        child.names.clear();
        child.slots.clear();
    }

    void text(const char* value, size_t size)
    {
        top().startOpen = false;
        hostText = hostText || depth == 1;
        textBytes += size;
        char* p = ops.grow(size + 3);
        *p = 'T';
        putString(p + 1, value, size);
    }

    // A new child holding nothing but text (openNew, text, close): the most
    // common write, in one step.
    __attribute__((always_inline)) void leaf(const char* name, size_t length, uint64_t key, const char* value, size_t size)
    {
        Level& l = top();
        l.startOpen = false;
        const size_t at = ops.size();
        textBytes += 2 * length + 5 + size;
        char* p = ops.grow(length + size + 7);
        *p++ = 'O';
        p = putString(p, name, length);
        *p++ = 'T';
        p = putString(p, value, size);
        *p = 'C';
        addName(l, at + kNameFrom, key);
        if (depth == 1)
            addTop(at, ops.size());
    }

    void attribute(const char* name, const char* value)
    {
        notePrefix(name);
        notePrefix(value);
        const size_t nameLength = std::strlen(name), valueLength = std::strlen(value);
        textBytes += nameLength + valueLength + 4; // ` name="value"`
        char* p = ops.grow(nameLength + valueLength + 5);
        *p++ = 'A';
        p = putString(p, name, nameLength);
        putString(p, value, valueLength);
    }

    void close()
    {
        ops += 'C';
        if (--depth == 1)
            tops.back().second = ops.size();
    }

    // Closes the elements still open (the writer left).
    void closeAll()
    {
        while (depth > 1)
            close();
    }

    // A type stamp: attribute `name` holding "prefix:type", as attribute()
    // would write it, in one piece.
    void stamp(const std::string& name, const std::string& prefix, const char* type, size_t typeLength)
    {
        notePrefix(name.c_str());
        notePrefixOnly(prefix);
        textBytes += name.size() + prefix.size() + typeLength + 5;
        const size_t valueLength = prefix.size() + 1 + typeLength;
        char* p = ops.grow(name.size() + valueLength + 5);
        *p++ = 'A';
        p = putString(p, name.data(), name.size());
        *p++ = lengthByte(valueLength);
        hnk_message_detail::copyBytes(p, prefix.data(), prefix.size());
        p += prefix.size();
        *p++ = ':';
        hnk_message_detail::copyBytes(p, type, typeLength);
        p[typeLength] = '\0';
    }

    void notePrefix(const char* qname)
    {
        const char* colon = std::strchr(qname, ':');
        if (colon)
            notePrefixOnly(std::string_view(qname, static_cast<size_t>(colon - qname)));
    }

    void notePrefixOnly(std::string_view p)
    {
        for (const std::string& known : prefixes)
            if (known == p)
                return;
        prefixes.emplace_back(p);
    }

    // The content as text, the elements still open closed. Small pieces go
    // through a buffer on the stack, appended to `out` a chunk at a time.
    void write(std::string& out) const
    {
        const hnk_message_detail::EscapeTable& esc = hnk_message_detail::escapes();
        const size_t need = out.size() + textBytes;
        if (out.capacity() < need)
            out.reserve(std::max(need, 2 * out.capacity()));
        hnk_message_detail::ChunkOut o(out);
        std::vector<std::pair<size_t, size_t>> names; // the open elements' names: offset, length
        names.reserve(16);
        bool startOpen = false;
        const char* base = ops.data();
        // Past the log, the elements still open are closed.
        for (size_t i = 0; i < ops.size() || !names.empty();) {
            char op = i < ops.size() ? ops[i++] : 'C';
            size_t length = op == 'C' ? 0 : lengthAt(i);
            switch (op) {
            case 'O': {
                if (startOpen)
                    o.put('>');
                const size_t name = i + 1;
                i = name + length + 1;
                // An element holding one text (most are): written whole.
                if (i < ops.size() && base[i] == 'T') {
                    const size_t textLength = lengthAt(i + 1);
                    const size_t after = i + textLength + 3;
                    if (after < ops.size() && base[after] == 'C') {
                        const char* text = base + i + kNameFrom;
                        if (esc.textWordwise &&
                            (textLength < 8 ? text + 8 <= base + ops.size() &&
                                                  !hnk_message_detail::ChunkOut::shortMayEscape(text, textLength)
                                            : !hnk_message_detail::ChunkOut::longMayEscape(text, textLength))) {
                            o.putLeaf(base + name, length, text, textLength);
                        } else {
                            o.put('<');
                            o.put(base + name, length);
                            o.put('>');
                            o.putEscaped(text, textLength, esc.text, esc.textWordwise);
                            o.put("</", 2);
                            o.put(base + name, length);
                            o.put('>');
                        }
                        startOpen = false;
                        i = after + 1;
                        break;
                    }
                }
                o.put('<');
                o.put(base + name, length);
                names.emplace_back(name, length);
                startOpen = true;
                break;
            }
            case 'A': {
                o.put(' ');
                o.put(base + i + 1, length);
                o.put("=\"", 2);
                i += length + 2;
                const size_t valueLength = lengthAt(i);
                o.putEscaped(base + i + 1, valueLength, esc.attribute, esc.attributeWordwise);
                o.put('"');
                i += valueLength + 2;
                break;
            }
            case 'T':
                if (startOpen) {
                    o.put('>');
                    startOpen = false;
                }
                o.putEscaped(base + i + 1, length, esc.text, esc.textWordwise);
                i += length + 2;
                break;
            default: // 'C'
                if (startOpen) {
                    o.put("/>", 2);
                    startOpen = false;
                } else {
                    o.put("</", 2);
                    o.put(base + names.back().first, names.back().second);
                    o.put('>');
                }
                names.pop_back();
                break;
            }
        }
        o.flush();
    }

    // The nodes the writes would have made, under `host`; returns the
    // innermost element still open (`host` when none is).
    pugi::xml_node_struct* realize(pugi::xml_node host) const
    {
        pugi::xml_node at = host;
        const char* base = ops.data();
        for (size_t i = 0; i < ops.size();) {
            char op = ops[i++];
            switch (op) {
            case 'O':
                at = at.append_child(base + i + 1);
                i += lengthAt(i) + 2;
                break;
            case 'A': {
                pugi::xml_attribute a = at.append_attribute(base + i + 1);
                i += lengthAt(i) + 2;
                const size_t length = lengthAt(i);
                a.set_value(base + i + 1, length);
                i += length + 2;
                break;
            }
            case 'T': {
                const size_t length = lengthAt(i);
                at.append_child(pugi::node_pcdata).set_value(base + i + 1, length);
                i += length + 2;
                break;
            }
            default:
                at = at.parent();
                break;
            }
        }
        return at.internal_object();
    }

    // The prefixes the content names (attribute names, xsi:type values).
    void notePrefixes(const std::function<void(const char*, size_t)>& note) const
    {
        for (const std::string& p : prefixes) {
            const std::string qname = p + ":";
            note(qname.data(), qname.size());
        }
    }
};

// The element tree, with what is known of all its names. Several documents
// may share one tree (shareSubtree): it is then read-only for all of them,
// and a document about to change it first takes a copy of its own
// (Document::own). `shares` counts the documents on the tree; it is the only
// state touched by more than one thread, so it is atomic: a release by one
// document happens before the remaining one changes the tree in place or
// deletes it.
struct HNKMessageIterator::Tree {
    // A pugixml document takes a 32 KB page for its first node. A message
    // built in code holds little more than its root (its content is drafts),
    // so its emptied document goes back to a small per-thread stock with
    // that page, and the next such message starts from there instead of
    // from the heap's top (which glibc would otherwise give back to the
    // system and take again on every message).
    std::unique_ptr<pugi::xml_document> held = spareDocument();
    pugi::xml_document& xml = *held;
    // Set once a text was parsed into `xml`: its buffer goes with the document.
    bool parsed = false;
    // False while no element name can carry a prefix (the cursor creates
    // none; parsed or copied-in names may): then a child is found by its
    // exact name with pugixml's own walk instead of comparing local names.
    bool prefixedNames = false;
    std::atomic<long> shares{1};
    // Elements appended by appendLinked whose content still lives in another
    // tree, which this one holds a share of (so that tree stays unchanged).
    // Only an unshared tree has links: they are settled (copied in) before
    // anyone looks inside them, changes this tree or shares it.
    struct Link {
        pugi::xml_node_struct* placeholder;
        Tree* source;
        pugi::xml_node_struct* from;
    };
    std::vector<Link> links;
    // Elements whose content is a draft, by element. A writer asks about the
    // element it writes in several times per value (is there a draft, may
    // there be one, does it hold the child), so the last one found is kept
    // at hand. Only a hit is kept, and only an unshared tree has drafts, so
    // readers of a shared tree never write here.
    class DraftMap {
    public:
        typedef std::unordered_map<pugi::xml_node_struct*, std::unique_ptr<Draft>> Map;
        typedef Map::iterator iterator;
        typedef Map::const_iterator const_iterator;

        bool empty() const { return map_.empty(); }
        iterator begin() { return map_.begin(); }
        iterator end() { return map_.end(); }
        const_iterator begin() const { return map_.begin(); }
        const_iterator end() const { return map_.end(); }

        iterator find(pugi::xml_node_struct* host) const
        {
            if (host && host == lastHost_)
                return last_;
            auto found = map_.find(host);
            if (found != map_.end()) {
                lastHost_ = host;
                last_ = found;
            }
            return found;
        }
        size_t count(pugi::xml_node_struct* host) const { return find(host) != map_.end() ? 1 : 0; }

        // Changes of the set of elements (an insertion may move them all).
        std::unique_ptr<Draft>& operator[](pugi::xml_node_struct* host)
        {
            lastHost_ = nullptr;
            return map_[host];
        }
        iterator erase(iterator at)
        {
            lastHost_ = nullptr;
            return map_.erase(at);
        }

    private:
        mutable Map map_;
        mutable pugi::xml_node_struct* lastHost_ = nullptr;
        mutable iterator last_;
    };
    DraftMap drafts;
    // Whether the whole content is in nodes (no draft, no link): what looks
    // inside then needs nothing realized or settled first.
    bool allNodes() const { return drafts.empty() && links.empty(); }
    // What the cursors' caches (Caches) check before use: `serial` is this
    // tree's alone; `childGen` changes whenever any element gains or loses
    // element children, `scopeGen` whenever a namespace declaration is added
    // or elements go (their memory may come back as other elements). Only
    // changed by the one document owning the tree, like the tree itself.
    const unsigned long long serial = nextSerial();
    unsigned long childGen = 0;
    unsigned long scopeGen = 0;

    static unsigned long long nextSerial()
    {
        static std::atomic<unsigned long long> last{0};
        return last.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    void restructured()
    {
        ++childGen;
        ++scopeGen;
    }

    Tree() = default;
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    ~Tree()
    {
        for (const Link& l : links)
            release(l.source);
        if (!parsed)
            keepSpare(held);
    }

    static std::unique_ptr<pugi::xml_document> spareDocument();
    static void keepSpare(std::unique_ptr<pugi::xml_document>& doc);

    static void release(Tree* t)
    {
        if (t && t->shares.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete t;
    }

    // Turns the draft of `host` into nodes; a cursor inside it moves onto
    // the element it was on.
    void realize(pugi::xml_node_struct* host)
    {
        auto found = drafts.find(host);
        if (found == drafts.end())
            return;
        std::unique_ptr<Draft> d = std::move(found->second);
        drafts.erase(found);
        restructured();
        pugi::xml_node_struct* open = d->realize(pugi::xml_node(host));
        if (d->writer) {
            d->writer->node_ = open;
            d->writer->draft_ = nullptr;
        }
    }

    void realizeAll()
    {
        while (!drafts.empty())
            realize(drafts.begin()->first);
    }

    // Forgets the drafts of elements about to be removed with `top`.
    void forgetDrafts(pugi::xml_node top)
    {
        for (auto it = drafts.begin(); it != drafts.end();) {
            bool inside = false;
            for (pugi::xml_node n(it->first); n && !inside; n = n.parent())
                inside = n == top;
            if (inside) {
                if (it->second->writer)
                    it->second->writer->draft_ = nullptr;
                it = drafts.erase(it);
            } else {
                ++it;
            }
        }
    }

    // Gives `to`, a copy of `from` (in tree `src`), the drafts of the
    // elements in `from`'s subtree, as they stand.
    static void carryDrafts(const Tree& src, pugi::xml_node from, Tree& dst, pugi::xml_node to)
    {
        if (src.drafts.empty())
            return;
        std::vector<std::pair<pugi::xml_node_struct*, const Draft*>> inside;
        for (const auto& d : src.drafts)
            for (pugi::xml_node n(d.first); n; n = n.parent())
                if (n == from) {
                    inside.emplace_back(d.first, d.second.get());
                    break;
                }
        for (const auto& d : inside) {
            std::vector<size_t> path;
            for (pugi::xml_node at(d.first); at != from; at = at.parent()) {
                size_t index = 0;
                for (pugi::xml_node s = at.previous_sibling(); s; s = s.previous_sibling())
                    ++index;
                path.push_back(index);
            }
            pugi::xml_node at = to;
            for (auto i = path.rbegin(); i != path.rend(); ++i) {
                at = at.first_child();
                for (size_t k = 0; k < *i; ++k)
                    at = at.next_sibling();
            }
            std::unique_ptr<Draft> copy(new Draft);
            copy->ops = d.second->ops;
            copy->levels[0] = d.second->levels[0];
            copy->tops = d.second->tops;
            copy->hostText = d.second->hostText;
            copy->textBytes = d.second->textBytes;
            copy->prefixes = d.second->prefixes;
            copy->depth = d.second->depth;
            copy->levels.resize(copy->depth); // (only the host's level is read once closed)
            copy->closeAll();
            dst.drafts[at.internal_object()] = std::move(copy);
        }
        ++dst.childGen;
    }

    // Copies the content of every link in.
    void settle()
    {
        std::vector<Link> pending;
        pending.swap(links);
        restructured();
        for (const Link& l : pending) {
            pugi::xml_node to(l.placeholder), from(l.from);
            if (*from.value()) // leading text a parsed element keeps in itself
                to.append_child(pugi::node_pcdata).set_value(from.value());
            for (pugi::xml_node c = from.first_child(); c; c = c.next_sibling())
                to.append_copy(c);
            release(l.source);
        }
    }
};

// What the copies of a cursor share: a tree and the list of those cursors,
// so that taking an own copy of a shared tree moves every one of them onto
// the copy. Used by one thread at a time, like its cursors.
struct HNKMessageIterator::Document {
    Tree* tree;
    HNKMessageIterator* cursors = nullptr;

    Document() : tree(new Tree) {}
    explicit Document(Tree* shared) : tree(shared) { tree->shares.fetch_add(1, std::memory_order_relaxed); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document() { Tree::release(tree); }

    // Whether a change of the tree needs nothing done first (changing()):
    // nothing linked in, and the tree this document's alone. The usual case,
    // tested inline by the callers that change a tree on every value.
    bool readyForChange() const
    {
        return tree->links.empty() && tree->shares.load(std::memory_order_acquire) == 1;
    }

    // Before any change of the tree: while another document shares it, copy
    // it and move this document's cursors onto the copy.
    void own()
    {
        if (tree->shares.load(std::memory_order_acquire) == 1)
            return;
        Tree* mine = new Tree;
        mine->prefixedNames = tree->prefixedNames;
        for (pugi::xml_node c = tree->xml.first_child(); c; c = c.next_sibling())
            mine->xml.append_copy(c);
        for (HNKMessageIterator* c = cursors; c; c = c->nextInDoc_)
            if (c->node_)
                c->node_ = counterpart(c->node_, mine->xml);
        Tree::release(tree);
        tree = mine;
    }

    // The node at the same place in `copy` as `n` in its own tree.
    static pugi::xml_node_struct* counterpart(pugi::xml_node_struct* n, pugi::xml_node copy)
    {
        std::vector<size_t> path;
        for (pugi::xml_node at(n); at.parent(); at = at.parent()) {
            size_t index = 0;
            for (pugi::xml_node s = at.previous_sibling(); s; s = s.previous_sibling())
                ++index;
            path.push_back(index);
        }
        pugi::xml_node at = copy;
        for (auto i = path.rbegin(); i != path.rend(); ++i) {
            at = at.first_child();
            for (size_t k = 0; k < *i; ++k)
                at = at.next_sibling();
        }
        return at.internal_object();
    }
};

// Per cursor: the element children of the last two elements looked into, by
// local name, and the namespace scope of one element (prefixes resolved there, the last type
// stamp given to a child). Records gets and puts ask an element for a dozen
// children by name and stamp list items alike, so without these each lookup
// is a scan of the children and each stamp a walk over the ancestors.
struct HNKMessageIterator::Caches {
    // The element children of one element by local name.
    struct ChildIndex {
        // Beyond this many children the index is not built: a scan finds the
        // first of a list of many items at once, and nobody asks a list for
        // several names.
        static const size_t kMaxIndexed = 256;
        static const size_t kKeptSlots = 64;
        struct Entry {
            // Built in place: a temporary copied in would be written in words
            // and read back in halves, which stalls the store forwarding.
            Entry(uint64_t h, size_t l, const char* n, pugi::xml_node_struct* x) : head(h), length(l), name(n), node(x) {}
            uint64_t head; // the first (up to) 8 bytes of the name
            size_t length;
            const char* name;
            pugi::xml_node_struct* node;
        };

        unsigned long long serial = 0;
        pugi::xml_node_struct* parent = nullptr;
        unsigned long gen = 0;
        bool indexed = false; // false: too many children, scanned instead
        std::vector<Entry> entries; // the first child of each local name
        // Open addressing over `entries`: slot = entry index + 1, 0 empty; a
        // power of two at least twice the entries, so a miss (a writer asking
        // for a child it is about to append) ends on an empty slot at once.
        std::vector<uint16_t> slots = std::vector<uint16_t>(kKeptSlots);
        size_t next = 0; // the entry after the last one found

        bool holds(unsigned long long s, pugi::xml_node_struct* p, unsigned long g) const
        {
            return serial == s && parent == p && gen == g;
        }

        // With the length, the whole of a name up to 8 bytes: fixed-size
        // loads (two overlapping ones from 4 to 7 bytes).
        static uint64_t headOf(const char* name, size_t length)
        {
            uint64_t h = 0;
            if (length >= 8) {
                std::memcpy(&h, name, 8);
            } else if (length >= 4) {
                uint32_t first, last;
                std::memcpy(&first, name, 4);
                std::memcpy(&last, name + length - 4, 4);
                h = first | static_cast<uint64_t>(last) << 32;
            } else {
                for (size_t i = 0; i < length; ++i)
                    h |= static_cast<uint64_t>(static_cast<unsigned char>(name[i])) << (8 * i);
            }
            return h;
        }

        static size_t hashOf(uint64_t head, size_t length)
        {
            uint64_t x = (head ^ (length * 0x9E3779B97F4A7C15ull)) * 0xFF51AFD7ED558CCDull;
            return static_cast<size_t>(x >> 40);
        }

        static bool same(const Entry& e, uint64_t head, size_t length, const char* name)
        {
            return e.head == head && e.length == length &&
                   (length <= 8 || hnk_message_detail::sameBytes(e.name + 8, name + 8, length - 8));
        }

        void clear()
        {
            entries.clear();
            if (entries.capacity() == 0)
                entries.reserve(kKeptSlots / 2); // a record's children, without growing step by step
            next = 0;
            // A table sized for a device's fields stays: shrinking it for
            // the next record only to grow it again costs a rehash each time.
            if (slots.size() > kKeptSlots)
                slots.assign(kKeptSlots, 0);
            else
                std::fill(slots.begin(), slots.end(), 0);
        }

        __attribute__((always_inline)) pugi::xml_node_struct* find(const char* tag, size_t length)
        {
            const uint64_t h = headOf(tag, length);
            // Readers ask for a record's fields in the order it holds them:
            // the entry after the last one found is tried before the table.
            if (next < entries.size()) {
                if (same(entries[next], h, length, tag))
                    return entries[next++].node;
                // or the one after it: a field the reader passes over
                if (next + 1 < entries.size() && same(entries[next + 1], h, length, tag)) {
                    next += 2;
                    return entries[next - 1].node;
                }
            }
            const size_t mask = slots.size() - 1;
            for (size_t i = hashOf(h, length) & mask;; i = (i + 1) & mask) {
                const uint16_t s = slots[i];
                if (s == 0)
                    return nullptr;
                if (same(entries[s - 1], h, length, tag)) {
                    next = s;
                    return entries[s - 1].node;
                }
            }
        }

        // False when the index grew too large (then it is dropped). Taken
        // for every child of every element looked into: inlined in the walk,
        // with the rare growth of the table out of line.
        __attribute__((always_inline)) bool add(const char* name, pugi::xml_node_struct* node)
        {
            const size_t length = hnk_message_detail::stringLength(name);
            const uint64_t h = headOf(name, length);
            if (2 * (entries.size() + 1) > slots.size() && !grow())
                return false;
            const size_t mask = slots.size() - 1;
            size_t i = hashOf(h, length) & mask;
            for (; slots[i] != 0; i = (i + 1) & mask)
                if (same(entries[slots[i] - 1], h, length, name))
                    return true; // the first child of a name stays the one found
            entries.emplace_back(h, length, name, node);
            slots[i] = static_cast<uint16_t>(entries.size());
            return true;
        }

        __attribute__((noinline)) bool grow()
        {
            if (entries.size() >= kMaxIndexed) {
                indexed = false;
                clear();
                return false;
            }
            slots.assign(2 * slots.size(), 0);
            for (size_t k = 0; k < entries.size(); ++k) {
                size_t i = hashOf(entries[k].head, entries[k].length) & (slots.size() - 1);
                while (slots[i] != 0)
                    i = (i + 1) & (slots.size() - 1);
                slots[i] = static_cast<uint16_t>(k + 1);
            }
            return true;
        }
    };

    // Two elements' indexes: a reader going from a record's root into one of
    // its lists and back finds the root's index still there.
    ChildIndex index[2];
    unsigned char lastIndex = 0; // the one used last

    unsigned long long scopeSerial = 0;
    pugi::xml_node_struct* scopeElement = nullptr;
    unsigned long scopeGen = 0;
    std::vector<std::pair<std::string, const char*>> prefixes; // prefix -> URI (nullptr: unbound)
    std::string stampUri, stampPrefix, stampAttribute;       // no stamp while stampAttribute is ""
    std::string scratch;

    // appendCopy: the bindings a child of copySourceParent needs declared
    // when copied under copyTarget, and the default namespaces there.
    unsigned long long copySourceSerial = 0, copyTargetSerial = 0;
    unsigned long copySourceGen = 0, copyTargetGen = 0;
    pugi::xml_node_struct* copySourceParent = nullptr;
    pugi::xml_node_struct* copyTarget = nullptr;
    std::vector<std::pair<const char*, const char*>> copyMissing;
    const char* copyTargetDefault = nullptr;
    const char* copyParentDefault = nullptr;
};
