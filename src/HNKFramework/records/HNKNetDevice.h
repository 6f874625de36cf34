#pragma once
// The framework's generic network device: a name. Adapters (HNKNetNIC and
// the platform modules' kinds of it) are read and written polymorphically
// through its parser-factory registry, which lives in libHNKFramework.
#include "HNKDerivedParserFactory.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKNetDevice {
public:
    HNKNetDevice() = default;
    HNKNetDevice(const HNKNetDevice&) = default;
    HNKNetDevice& operator=(const HNKNetDevice&) = default;
    virtual ~HNKNetDevice();

    const std::string& getName() const { return name_; }
    void setName(const std::string& name) { name_ = name; }

    // The name is required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKNetDevice& device) const;
    };
    // No type of its own: the element keeps the stamp of its writer's caller.
    class Writer : public HNKWriterBase {
    public:
        int operator()(HNKMessageIterator& it, const HNKNetDevice& device) const;
    };

private:
    std::string name_;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKNetDevice);
