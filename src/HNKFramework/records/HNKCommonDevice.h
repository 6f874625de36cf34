#pragma once
// The framework's generic host-device record: a name and a description.
// Platform modules derive their host devices from it and register them in
// its parser-factory registry, which lives in libHNKFramework.
#include "HNKDerivedParserFactory.h"
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKCommonDevice {
public:
    HNKCommonDevice() = default;
    HNKCommonDevice(const HNKCommonDevice&) = default;
    HNKCommonDevice& operator=(const HNKCommonDevice&) = default;

    // A new heap copy; the caller owns it.
    virtual HNKCommonDevice* clone() const;
    virtual ~HNKCommonDevice();

    const std::string& getName() const { return name_; }
    void setName(const std::string& name) { name_ = name; }
    const std::string& getDescription() const { return description_; }
    void setDescription(const std::string& description) { description_ = description; }

    // Both texts are required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKCommonDevice& device) const;
    };
    // Stamps the framework's own host-device type (278/301).
    class Writer : public HNKWriterBase {
    public:
        static unsigned getNSID() { return HNK_NS_DEVICES; }
        static unsigned getTypeID() { return HNK_TYPE_COMMON_DEVICE; }
        int operator()(HNKMessageIterator& it, const HNKCommonDevice& device) const;
    };

private:
    std::string name_;
    std::string description_;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKCommonDevice);
