#include "HNKDSLocation.h"

#include "HNKMessageIterator.h"

namespace {
const int kPath = 3068;
const int kAuthName = 3069;
} // namespace

int HNKDSLocation::Reader::operator()(const HNKMessageIterator& it, HNKDSLocation& location) const
{
    if (it.getValue(kPath, location.path_) != 0)
        return -1;
    if (it.getObject(location.authName_, HNKAuthName::Reader(), kAuthName) != 0)
        return -1;
    return 0;
}

int HNKDSLocation::Writer::operator()(HNKMessageIterator& it, const HNKDSLocation& location) const
{
    if (it.putValue(kPath, location.path_) != 0)
        return -1;
    if (it.putObject(location.authName_, HNKAuthName::Writer(), kAuthName) != 0)
        return -1;
    return 0;
}
