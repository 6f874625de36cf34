#include "HNKIPAddress.h"

#include "HNKCompare.h"
#include "HNKMessageIterator.h"

int HNKIPAddress::compare(const HNKIPAddress& other) const
{
    int c = ::compare(address_, other.address_);
    return c != 0 ? c : ::compare(prefixLength_, other.prefixLength_);
}

int HNKIPAddress::Reader::operator()(const HNKMessageIterator& it, HNKIPAddress& ip) const
{
    if (it.getValue("address", ip.address_) != 0)
        return -1;
    return it.getValue("prefix_length", ip.prefixLength_) == 0 ? 0 : -1;
}

int HNKIPAddress::Writer::operator()(HNKMessageIterator& it, const HNKIPAddress& ip) const
{
    if (it.putValue("address", ip.address_) != 0)
        return -1;
    return it.putValue("prefix_length", ip.prefixLength_) == 0 ? 0 : -1;
}
