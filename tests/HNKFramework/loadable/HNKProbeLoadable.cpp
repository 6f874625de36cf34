// Loaded with dlopen by the load/unload test: registers one factory in each
// probe family while it loads and unregisters them when it unloads.
#include "HNKProbeRecord.h"

namespace {

struct LoadedRecord : HNKProbeRecord {
    int extra = 0;

    struct Reader {
        int operator()(const HNKMessageIterator& it, LoadedRecord& r) const
        {
            if (HNKProbeRecord::Reader()(it, r) != 0)
                return -1;
            return it.getValue("extra", r.extra);
        }
    };
    struct Writer : HNKWriterBase {
        static const char* getStrNSID() { return kProbeNamespace; }
        static const char* getStrTypeID() { return "loaded_record"; }
        int operator()(HNKMessageIterator& it, const LoadedRecord& r) const
        {
            if (it.putObject(static_cast<const HNKProbeRecord&>(r), HNKProbeRecord::Writer()) != 0)
                return -1;
            return it.putValue("extra", r.extra);
        }
    };
};

struct LoadedImplicit : HNKProbeImplicit {
    struct Reader {
        int operator()(const HNKMessageIterator&, LoadedImplicit&) const { return 0; }
    };
    struct Writer : HNKWriterBase {
        static const char* getStrNSID() { return kProbeNamespace; }
        static const char* getStrTypeID() { return "loaded_implicit"; }
        int operator()(HNKMessageIterator&, const LoadedImplicit&) const { return 0; }
    };
};

HNKDerivedParserFactoryT<LoadedRecord, HNKProbeRecord, HNKProbeRecord, LoadedRecord::Reader, LoadedRecord::Writer>
    factoryLoadedRecord(false);
HNKDerivedParserFactoryT<LoadedImplicit, HNKProbeImplicit, HNKProbeImplicit, LoadedImplicit::Reader,
                         LoadedImplicit::Writer>
    factoryLoadedImplicit(false);

} // namespace

// The registries as this library sees them.
extern "C" const void* probeLoadableRecordRegistry()
{
    return &HNKDerivedParserFactory<HNKProbeRecord>::factoryData();
}

extern "C" const void* probeLoadableImplicitRegistry()
{
    return &HNKDerivedParserFactory<HNKProbeImplicit>::factoryData();
}
