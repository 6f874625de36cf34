#pragma once
// What the message path makes of a text: the record read through its
// registry (its printed fields), then written back through its factory, as
// compact text. The written-text test compares it with the outputs saved in
// tests/data/expected/ before the message path was reworked for speed.
#include "HnrctlRecordPrinter.h"

#include "HNKMessageIterator.h"

#include <sstream>
#include <string>

namespace HNRTest {

inline std::string writtenTextOf(const std::string& text)
{
    HNKMessageIterator it;
    if (it.fromXML(text) != 0)
        return "parse failed";
    hnrctl::HnrctlRecord record;
    std::string error;
    if (!hnrctl::readRecord(it, record, error))
        return "read failed: " + error;
    std::ostringstream out;
    out << record.className << "\n";
    record.print(out);
    HNKMessageIterator written(it.currentName());
    if (record.write(written, false) != 0)
        return out.str() + "write failed";
    out << "--\n" << written.toXML() << "\n";
    return out.str();
}

} // namespace HNRTest
