#pragma once
// Test-only record families for the load/unload checks. libhnk_probe_owner
// owns them (the way libHNKFramework owns its base records);
// libhnk_probe_loadable is dlopen'ed and registers factories of its own.
#include "HNKDerivedParserFactory.h"

#include <string>

extern const char kProbeNamespace[];

// Family whose registry the owner instantiates explicitly and declares here,
// so every other library binds to the owner's copy.
struct HNKProbeRecord {
    virtual ~HNKProbeRecord();
    std::string label;

    struct Reader {
        int operator()(const HNKMessageIterator& it, HNKProbeRecord& r) const;
    };
    struct Writer : HNKWriterBase {
        static const char* getStrNSID() { return kProbeNamespace; }
        static const char* getStrTypeID() { return "probe_record"; }
        int operator()(HNKMessageIterator& it, const HNKProbeRecord& r) const;
    };
};
HNK_DECLARE_FACTORY_REGISTRY(HNKProbeRecord);

// Family whose registry every library instantiates implicitly from the
// header: one copy only because of default visibility and no GNU unique.
struct HNKProbeImplicit {
    virtual ~HNKProbeImplicit();
};

// The registries as the owner library sees them.
const void* probeOwnerRecordRegistry();
const void* probeOwnerImplicitRegistry();
