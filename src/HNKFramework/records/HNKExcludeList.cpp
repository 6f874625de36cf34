#include "HNKExcludeList.h"

#include "HNKMessageIterator.h"

namespace {
const int kPattern = 3066;
} // namespace

int HNKExcludeList::Reader::operator()(const HNKMessageIterator& it, HNKExcludeList& list) const
{
    list.patterns_.clear();
    return it.getObject(list.patterns_, HNKReaderListT<int, HNKStringReader>(kPattern, HNK_READER_ABSENCE_OK)) == 0
               ? 0
               : -1;
}

int HNKExcludeList::Writer::operator()(HNKMessageIterator& it, const HNKExcludeList& list) const
{
    return it.putObject(list.patterns_, HNKWriterListOf(HNKStringWriter(), kPattern)) == 0 ? 0 : -1;
}
