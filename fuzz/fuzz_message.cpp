// Fuzz target for the message tree's text form: any input is parsed or
// refused without a crash, and whatever parses serializes to text that
// parses again to the same serialization.
#include "HNKMessageIterator.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    HNKMessageIterator it;
    if (it.fromXML(std::string(reinterpret_cast<const char*>(data), size)) != 0)
        return 0;
    std::string text = it.toXML();
    (void)it.getTypeName();
    if (it.descend("device") == 0) {
        (void)it.getTypeName();
        it.ascend();
    }
    HNKMessageIterator again;
    if (again.fromXML(text) != 0 || again.toXML() != text)
        std::abort();
    HNKMessageIterator copy = it.cloneSubtree();
    if (copy.toXML().empty())
        std::abort();
    return 0;
}
