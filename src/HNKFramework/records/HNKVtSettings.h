#pragma once
// The framework's server-wide virtualization settings: the server's name and
// the revision of the settings. Platform modules extend it; the registry of
// its parser factories lives in libHNKFramework.
#include "HNKDerivedParserFactory.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKVtSettings {
public:
    HNKVtSettings() = default;
    HNKVtSettings(const HNKVtSettings&) = default;
    HNKVtSettings& operator=(const HNKVtSettings&) = default;
    virtual ~HNKVtSettings();

    int getRevision() const { return revision_; }
    void setRevision(int revision) { revision_ = revision; }
    const std::string& getServerName() const { return serverName_; }
    void setServerName(const std::string& name) { serverName_ = name; }

    // Both values are required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKVtSettings& settings) const;
    };
    // Stamps the framework's own type (292/152).
    class Writer : public HNKWriterBase {
    public:
        static unsigned getNSID() { return HNK_NS_TYPES; }
        static unsigned getTypeID() { return HNK_TYPE_VT_SETTINGS; }
        int operator()(HNKMessageIterator& it, const HNKVtSettings& settings) const;
    };

private:
    int revision_ = 0;
    std::string serverName_;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKVtSettings);
