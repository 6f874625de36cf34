#include "HNKAuthName.h"

#include "HNKMessageIterator.h"

namespace {
const int kUser = 3070;
const int kDomain = 3071;
} // namespace

int HNKAuthName::Reader::operator()(const HNKMessageIterator& it, HNKAuthName& name) const
{
    if (it.getValue(kUser, name.user_) != 0)
        return -1;
    if (it.getValue(kDomain, name.domain_) != 0)
        return -1;
    return 0;
}

int HNKAuthName::Writer::operator()(HNKMessageIterator& it, const HNKAuthName& name) const
{
    if (it.putValue(kUser, name.user_) != 0)
        return -1;
    if (it.putValue(kDomain, name.domain_) != 0)
        return -1;
    return 0;
}
