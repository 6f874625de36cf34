#pragma once
// The framework's description of a host's virtualization layer: its kind and
// how many virtual machines it runs at most. Platform modules extend it; the
// registry of its parser factories lives in libHNKFramework.
#include "HNKDerivedParserFactory.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKVtInfo {
public:
    HNKVtInfo() = default;
    HNKVtInfo(const HNKVtInfo&) = default;
    HNKVtInfo& operator=(const HNKVtInfo&) = default;
    virtual ~HNKVtInfo();

    const std::string& getLayerType() const { return layerType_; }
    void setLayerType(const std::string& type) { layerType_ = type; }
    int getMaxRunningVMs() const { return maxRunningVMs_; }
    void setMaxRunningVMs(int count) { maxRunningVMs_ = count; }

    // Both values are required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKVtInfo& info) const;
    };
    // Stamps the framework's own type (292/151).
    class Writer : public HNKWriterBase {
    public:
        static unsigned getNSID() { return HNK_NS_TYPES; }
        static unsigned getTypeID() { return HNK_TYPE_VT_INFO; }
        int operator()(HNKMessageIterator& it, const HNKVtInfo& info) const;
    };

private:
    std::string layerType_;
    int maxRunningVMs_ = 0;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKVtInfo);
