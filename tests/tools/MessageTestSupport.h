#pragma once
// Test support for messages: a tree parsed from text (the parse is part of
// what the test expects), and the children of an element by name.
#include "HNKErrorMessage.h"
#include "HNKMessageIterator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The tree of `text`; a failed parse fails the test with the parser's message.
inline HNKMessageIterator parsed(const std::string& text)
{
    HNKMessageIterator it;
    EXPECT_EQ(0, it.fromXML(text)) << getErrorMessage();
    return it;
}

// Local names of the children of the element under the cursor, in order.
inline std::vector<std::string> childNames(const HNKMessageIterator& at)
{
    HNKMessageIterator it(at);
    std::vector<std::string> names;
    if (it.firstChild() != 0)
        return names;
    do
        names.push_back(it.currentName());
    while (it.nextSibling() == 0);
    return names;
}

// How many children of the element under the cursor are named `tag`.
inline int countChildren(const HNKMessageIterator& at, const std::string& tag)
{
    int n = 0;
    for (const std::string& name : childNames(at))
        n += name == tag;
    return n;
}
