#pragma once
// Optional child elements of the module's records: read, written and
// compared through HNKOptionalProperty's `specified` flag.
#include "HNKCompare.h"
#include "HNKMessageIterator.h"
#include "HNKOptionalProperty.h"

#include <string>

namespace HNR {

// Gets child `tag` into the property's value and marks it specified exactly
// when the get succeeded. Always 0: a missing or unreadable element only
// leaves the property unspecified (its value untouched).
template <class T>
int readOptionalProperty(const HNKMessageIterator& it, HNKOptionalProperty<T>& prop, const char* tag)
{
    int status = it.getValue(tag, prop.value());
    prop.specify(status == 0);
    return 0;
}

// As readOptionalProperty, through the Base64 get: the text is decoded.
template <class T>
int readOptionalPropertyBase64(const HNKMessageIterator& it, HNKOptionalProperty<T>& prop, const char* tag)
{
    int status = it.getValueBase64(tag, prop.value());
    prop.specify(status == 0);
    return 0;
}

// Puts the value as child `tag` when specified and returns the put's status;
// writes nothing and returns 0 when not.
template <class T>
int writeOptionalProperty(HNKMessageIterator& it, const HNKOptionalProperty<T>& prop, const char* tag)
{
    if (!prop.isSpecified())
        return 0;
    return it.putValue(tag, prop.get());
}

// As writeOptionalProperty, through the Base64 put: the value is encoded.
template <class T>
int writeOptionalPropertyBase64(HNKMessageIterator& it, const HNKOptionalProperty<T>& prop, const char* tag)
{
    if (!prop.isSpecified())
        return 0;
    return it.putValueBase64(tag, prop.get());
}

// Unspecified a: -1 when b is specified, else 0. Specified a, unspecified b:
// 1. Both specified: the framework's three-way compare of the values.
template <class T>
int compareOptionalProperties(const HNKOptionalProperty<T>& a, const HNKOptionalProperty<T>& b)
{
    if (!a.isSpecified())
        return b.isSpecified() ? -1 : 0;
    if (!b.isSpecified())
        return 1;
    return ::compare(a.get(), b.get());
}

} // namespace HNR
