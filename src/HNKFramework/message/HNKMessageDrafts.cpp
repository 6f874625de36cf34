// Drafts: new content a writer puts under an empty element, kept as a log of
// its writes and written straight to text (see Draft in
// HNKMessageInternals.h). Here: whether the cursor may write into a draft,
// entering and leaving one, and the escape table the draft's text uses.
#include "HNKMessageInternals.h"

using namespace hnk_message_detail;

namespace hnk_message_detail {

EscapeTable::EscapeTable()
{
    for (int c = 1; c < 128; ++c) {
        const std::string one(1, static_cast<char>(c));
        pugi::xml_document doc;
        xml_node a = doc.append_child("a");
        a.append_attribute("b").set_value(one.c_str());
        a.append_child(pugi::node_pcdata).set_value(one.c_str());
        StringWriter w;
        doc.save(w, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
        const std::string& t = w.out; // <a b="X">Y</a>
        size_t from = t.find('"') + 1;
        size_t to = t.find('"', from);
        held[c] = t.substr(from, to - from);
        held[128 + c] = t.substr(to + 2, t.size() - 4 - (to + 2));
        if (held[c] != one)
            attribute[c] = held[c].c_str();
        if (held[128 + c] != one)
            text[c] = held[128 + c].c_str();
        const bool passedOver = c >= 0x20 && c != '<' && c != '>' && c != '&' && c != '"';
        if (passedOver && attribute[c])
            attributeWordwise = false;
        if (passedOver && text[c])
            textWordwise = false;
    }
}

} // namespace hnk_message_detail

namespace {

// An element a draft may begin in: nothing inside it yet, in a tree no other
// document reads.
bool isFreshElement(xml_node el, const std::atomic<long>& shares)
{
    return !el.first_child() && !*el.value() && shares.load(std::memory_order_relaxed) == 1;
}

} // namespace

bool HNKMessageIterator::draftable() const
{
    Tree& t = *doc_->tree;
    if (!t.drafts.empty() && t.drafts.count(node_))
        return true;
    return isFreshElement(nodeOf(node_), t.shares);
}

HNKMessageIterator::Draft* HNKMessageIterator::draftHere()
{
    if (draft_)
        return draft_;
    Tree& t = *doc_->tree;
    auto found = t.drafts.find(node_); // one lookup for both questions: is there one, may there be one
    Draft* d;
    if (found != t.drafts.end()) {
        d = found->second.get();
    } else {
        if (!isFreshElement(nodeOf(node_), t.shares))
            return nullptr;
        d = (t.drafts[node_] = std::unique_ptr<Draft>(new Draft)).get();
    }
    if (d->writer) { // another cursor is inside it
        t.realize(node_);
        return nullptr;
    }
    return d;
}

void HNKMessageIterator::leaveDraft() const
{
    if (!draft_)
        return;
    draft_->closeAll();
    draft_->writer = nullptr;
    draft_ = nullptr;
}
