// Differential fuzz target for the strict text form: every text fromXML
// accepts must be one libxml2 (the parser behind xmllint) reads without an
// error, namespace errors included; warnings do not count. Aborts otherwise.
#include "HNKMessageIterator.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int errors;

void countError(void*, xmlErrorPtr error)
{
    if (error && error->level >= XML_ERR_ERROR)
        ++errors;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    HNKMessageIterator it;
    if (it.fromXML(text) != 0 || size > 1000000)
        return 0;
    errors = 0;
    xmlSetStructuredErrorFunc(nullptr, countError);
    // HUGE lifts libxml2's own size and depth limits, which are not XML rules.
    xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(size), "message.xml", nullptr,
                                  XML_PARSE_NONET | XML_PARSE_HUGE);
    if (doc)
        xmlFreeDoc(doc);
    if (!doc || errors != 0) {
        std::fprintf(stderr, "fromXML accepts a text libxml2 refuses\n");
        std::abort();
    }
    return 0;
}
