#include "HNKProbeRecord.h"

const char kProbeNamespace[] = "urn:test:probe";

HNK_INSTANTIATE_FACTORY_REGISTRY(HNKProbeRecord);

HNKProbeRecord::~HNKProbeRecord() {}
HNKProbeImplicit::~HNKProbeImplicit() {}

int HNKProbeRecord::Reader::operator()(const HNKMessageIterator& it, HNKProbeRecord& r) const
{
    return it.getValue("label", r.label);
}

int HNKProbeRecord::Writer::operator()(HNKMessageIterator& it, const HNKProbeRecord& r) const
{
    return it.putValue("label", r.label);
}

namespace {

struct ImplicitWriter : HNKWriterBase {
    static const char* getStrNSID() { return kProbeNamespace; }
    static const char* getStrTypeID() { return "probe_implicit"; }
    int operator()(HNKMessageIterator&, const HNKProbeImplicit&) const { return 0; }
};
struct ImplicitReader {
    int operator()(const HNKMessageIterator&, HNKProbeImplicit&) const { return 0; }
};

HNKDerivedParserFactoryT<HNKProbeRecord, HNKProbeRecord, HNKProbeRecord, HNKProbeRecord::Reader,
                         HNKProbeRecord::Writer>
    factoryHNKProbeRecord(true);
HNKDerivedParserFactoryT<HNKProbeImplicit, HNKProbeImplicit, HNKProbeImplicit, ImplicitReader, ImplicitWriter>
    factoryHNKProbeImplicit(true);

} // namespace

const void* probeOwnerRecordRegistry() { return &HNKDerivedParserFactory<HNKProbeRecord>::factoryData(); }

const void* probeOwnerImplicitRegistry() { return &HNKDerivedParserFactory<HNKProbeImplicit>::factoryData(); }
