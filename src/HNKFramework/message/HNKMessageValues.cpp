// Values of elements: the text of an element read and written (a new child
// written into a draft when it can be), numbers and booleans converted
// strictly both ways, Base64 values. A malformed value is refused with an
// error message naming the element.
#include "HNKMessageInternals.h"

#include "Base64.h"
#include "HNKElementDictionary.h"
#include "HNKErrorMessage.h"
#include "HNKXmlTextCheck.h"

#include <charconv>
#include <limits>
#include <type_traits>

using namespace hnk_message_detail;

namespace {

// ---- Number conversions ----

template <class T>
bool parseNumber(const char* text, T& out)
{
    // Most values are a few plain digits: read at once. Anything else (a
    // sign, blanks around, more digits than fit surely) takes the full way.
    unsigned plain = 0;
    size_t digits = 0;
    for (; digits < 5 && text[digits] >= '0' && text[digits] <= '9'; ++digits)
        plain = plain * 10 + static_cast<unsigned>(text[digits] - '0');
    if (digits != 0 && text[digits] == '\0' && plain <= static_cast<unsigned long long>(std::numeric_limits<T>::max())) {
        out = static_cast<T>(plain);
        return true;
    }
    std::string_view v = trimBlanks(text);
    bool negative = false;
    if (!v.empty() && (v.front() == '+' || v.front() == '-')) {
        negative = v.front() == '-';
        v.remove_prefix(1);
    }
    if (v.empty() || v.front() < '0' || v.front() > '9')
        return false;
    unsigned long long magnitude = 0;
    auto [end, ec] = std::from_chars(v.data(), v.data() + v.size(), magnitude);
    if (ec != std::errc() || end != v.data() + v.size())
        return false;
    if constexpr (std::is_signed<T>::value) {
        using U = typename std::make_unsigned<T>::type;
        U limit = static_cast<U>(std::numeric_limits<T>::max());
        if (negative) {
            if (magnitude > static_cast<unsigned long long>(limit) + 1)
                return false;
            out = magnitude == 0 ? T(0) : static_cast<T>(-static_cast<T>(magnitude - 1) - 1);
        } else {
            if (magnitude > limit)
                return false;
            out = static_cast<T>(magnitude);
        }
    } else {
        if ((negative && magnitude != 0) || magnitude > std::numeric_limits<T>::max())
            return false;
        out = static_cast<T>(magnitude);
    }
    return true;
}

bool parseBool(const char* text, bool& out)
{
    if ((text[0] == '0' || text[0] == '1') && text[1] == '\0') { // the usual form
        out = text[0] == '1';
        return true;
    }
    std::string_view v = trimBlanks(text);
    if (v == "1" || v == "true") {
        out = true;
        return true;
    }
    if (v == "0" || v == "false") {
        out = false;
        return true;
    }
    return false;
}

template <class T>
const char* typeLabel()
{
    if constexpr (std::is_same<T, bool>::value)
        return "bool";
    else if constexpr (std::is_signed<T>::value)
        return "signed integer";
    else
        return "unsigned integer";
}

const char* idLabel(int id, char (&buf)[16])
{
    std::to_chars_result r = std::to_chars(buf, buf + sizeof buf - 1, id);
    *r.ptr = '\0';
    return buf;
}

const char* idLabel(const char* tag, char (&)[16]) { return tag; }

bool isText(xml_node n) { return n.type() == pugi::node_pcdata || n.type() == pugi::node_cdata; }

// The element's text: the leading text a parsed element keeps in itself
// (parse_embed_pcdata) and its text children, joined (CDATA sections and text
// split around child elements included). A single piece, the usual case, is
// returned in place; `scratch` holds a joined text.
const char* textOf(xml_node el, std::string& scratch)
{
    const char* own = el.value();
    const char* single = *own ? own : nullptr;
    for (xml_node c = el.first_child(); c; c = c.next_sibling()) {
        if (!isText(c))
            continue;
        if (!single) {
            single = c.value();
            continue;
        }
        scratch.assign(single);
        for (xml_node t = c; t; t = t.next_sibling())
            if (isText(t))
                scratch.append(t.value());
        return scratch.c_str();
    }
    return single ? single : "";
}

// Makes `value` the element's whole text: the element's own text (a parsed
// element's leading text) or else its first text child takes it, every other
// text child goes.
bool setTextOf(xml_node el, const char* value, size_t size)
{
    xml_text text = el.text();
    if (!text.set(value, size))
        return false;
    xml_node kept = text.data();
    for (xml_node c = kept == el ? el.first_child() : kept.next_sibling(); c;) {
        xml_node next = c.next_sibling();
        if (isText(c))
            el.remove_child(c);
        c = next;
    }
    return true;
}

} // namespace

// ---- Values ----

template <class ID, class T>
int HNKMessageIterator::getNumber(ID id, T& out) const
{
    xml_node_struct* n = target(id);
    if (!n)
        return -1;
    std::string scratch;
    const char* text = textOf(nodeOf(n), scratch);
    bool ok;
    if constexpr (std::is_same<T, bool>::value)
        ok = parseBool(text, out);
    else
        ok = parseNumber(text, out);
    if (!ok) {
        char buf[16];
        setErrorMessage("HNKMessageIterator: the value of element '%s' (ID %s) is not a valid %s",
                        localName(nodeOf(n).name()), idLabel(id, buf), typeLabel<T>());
        return -1;
    }
    return 0;
}

template <class ID>
int HNKMessageIterator::putText(ID id, const char* value, size_t size, bool plain)
{
    if (!node_)
        return -1;
    if (!plain && HNKXmlTextCheck::findInvalidChar(value, size) >= 0) {
        char buf[16];
        setErrorMessage("HNKMessageIterator: the value for element ID %s is not UTF-8 or holds a character "
                        "XML cannot carry",
                        idLabel(id, buf));
        return -1;
    }
    if (!doc_->readyForChange())
        changing();
    if (draft_ || draftable()) {
        // A new child, or the first text of an element written in a draft,
        // is one more entry in the draft; anything else takes nodes.
        const char* name = nullptr;
        if constexpr (std::is_same<ID, int>::value)
            name = id == 0 ? "" : HNKElementDictionary::findName(id);
        else
            name = id ? id : "";
        const size_t length = name ? tagLength(name) : 0;
        Draft* here = name && (*name || draft_) && (!*name || length != 0) ? (draft_ ? draft_ : draftHere()) : nullptr;
        if (here) {
            Draft& d = *here;
            if (!*name) {
                Draft::Level& level = d.top();
                if (level.startOpen) {
                    d.text(value, size);
                    return 0;
                }
            } else if (uint64_t key = Draft::keyOf(name, length); !d.hasChild(name, length, key)) {
                d.leaf(name, length, key, value, size);
                return 0;
            }
        }
        real();
        if (!draft_ && doc_->tree->drafts.count(node_))
            doc_->tree->realize(node_);
    }
    xml_node_struct* n = target(id);
    if (n)
        return setTextOf(nodeOf(n), value, size) ? 0 : -1;
    // A new child has no text to replace: its one text node is appended.
    int status = createChild(id);
    if (status != 0)
        return status;
    xml_node child = nodeOf(node_);
    ascend();
    return child.append_child(pugi::node_pcdata).set_value(value, size) ? 0 : -1;
}

template <class ID, class T>
int HNKMessageIterator::putNumber(ID id, T value)
{
    char buf[24];
    std::to_chars_result r = std::to_chars(buf, buf + sizeof buf, value);
    return putText(id, buf, static_cast<size_t>(r.ptr - buf), true); // digits and '-'
}

template <class ID>
int HNKMessageIterator::getBase64(ID id, std::string& out) const
{
    xml_node_struct* n = target(id);
    if (!n)
        return -1;
    std::string decoded;
    std::string scratch;
    if (!Base64::decode(std::string(trimBlanks(textOf(nodeOf(n), scratch))), decoded)) {
        char buf[16];
        setErrorMessage("HNKMessageIterator: the value of element '%s' (ID %s) is not Base64",
                        localName(nodeOf(n).name()), idLabel(id, buf));
        return -1;
    }
    out.swap(decoded);
    return 0;
}

int HNKMessageIterator::getValue(int id, std::string& out) const
{
    xml_node_struct* n = target(id);
    if (!n)
        return -1;
    std::string scratch;
    out.assign(textOf(nodeOf(n), scratch));
    return 0;
}

int HNKMessageIterator::getValue(const char* tag, std::string& out) const
{
    xml_node_struct* n = target(tag);
    if (!n)
        return -1;
    std::string scratch;
    const char* text = textOf(nodeOf(n), scratch);
    out.clear(); // then appended: a plain copy (assign guards against an overlap that cannot be)
    out.append(text, stringLength(text));
    return 0;
}

int HNKMessageIterator::getValue(int id, int& out) const { return getNumber(id, out); }
int HNKMessageIterator::getValue(int id, unsigned& out) const { return getNumber(id, out); }
int HNKMessageIterator::getValue(int id, long& out) const { return getNumber(id, out); }
int HNKMessageIterator::getValue(int id, unsigned long& out) const { return getNumber(id, out); }
int HNKMessageIterator::getValue(int id, long long& out) const { return getNumber(id, out); }
int HNKMessageIterator::getValue(int id, unsigned long long& out) const { return getNumber(id, out); }
int HNKMessageIterator::getValue(int id, bool& out) const { return getNumber(id, out); }
int HNKMessageIterator::getValue(const char* tag, int& out) const { return getNumber(tag, out); }
int HNKMessageIterator::getValue(const char* tag, unsigned& out) const { return getNumber(tag, out); }
int HNKMessageIterator::getValue(const char* tag, long& out) const { return getNumber(tag, out); }
int HNKMessageIterator::getValue(const char* tag, unsigned long& out) const { return getNumber(tag, out); }
int HNKMessageIterator::getValue(const char* tag, long long& out) const { return getNumber(tag, out); }
int HNKMessageIterator::getValue(const char* tag, unsigned long long& out) const { return getNumber(tag, out); }
int HNKMessageIterator::getValue(const char* tag, bool& out) const { return getNumber(tag, out); }

int HNKMessageIterator::putValue(int id, const std::string& value) { return putText(id, value.data(), value.size()); }
int HNKMessageIterator::putValue(int id, const char* value)
{
    return value ? putText(id, value, std::strlen(value)) : -1;
}
int HNKMessageIterator::putValue(int id, const int& value) { return putNumber(id, value); }
int HNKMessageIterator::putValue(int id, const unsigned& value) { return putNumber(id, value); }
int HNKMessageIterator::putValue(int id, const long& value) { return putNumber(id, value); }
int HNKMessageIterator::putValue(int id, const unsigned long& value) { return putNumber(id, value); }
int HNKMessageIterator::putValue(int id, const long long& value) { return putNumber(id, value); }
int HNKMessageIterator::putValue(int id, const unsigned long long& value) { return putNumber(id, value); }
int HNKMessageIterator::putValue(int id, const bool& value) { return putNumber(id, value ? 1 : 0); }
int HNKMessageIterator::putValue(const char* tag, const std::string& value)
{
    return putText(tag, value.data(), value.size());
}
int HNKMessageIterator::putValue(const char* tag, const char* value)
{
    return value ? putText(tag, value, std::strlen(value)) : -1;
}
int HNKMessageIterator::putValue(const char* tag, const int& value) { return putNumber(tag, value); }
int HNKMessageIterator::putValue(const char* tag, const unsigned& value) { return putNumber(tag, value); }
int HNKMessageIterator::putValue(const char* tag, const long& value) { return putNumber(tag, value); }
int HNKMessageIterator::putValue(const char* tag, const unsigned long& value) { return putNumber(tag, value); }
int HNKMessageIterator::putValue(const char* tag, const long long& value) { return putNumber(tag, value); }
int HNKMessageIterator::putValue(const char* tag, const unsigned long long& value) { return putNumber(tag, value); }
int HNKMessageIterator::putValue(const char* tag, const bool& value) { return putNumber(tag, value ? 1 : 0); }

int HNKMessageIterator::getValueBase64(int id, std::string& out) const { return getBase64(id, out); }
int HNKMessageIterator::getValueBase64(const char* tag, std::string& out) const { return getBase64(tag, out); }

int HNKMessageIterator::putValueBase64(int id, const std::string& value)
{
    std::string encoded = Base64::encode(value);
    return putText(id, encoded.data(), encoded.size(), true);
}

int HNKMessageIterator::putValueBase64(const char* tag, const std::string& value)
{
    std::string encoded = Base64::encode(value);
    return putText(tag, encoded.data(), encoded.size(), true);
}
