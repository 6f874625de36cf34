#pragma once
// The framework's environment configuration: a property bag over its own
// message tree. Every setting is one child element of that tree, addressed
// by tag; a configuration may hold no tree at all until a setter creates it.
//
// Output order: the Writer copies the children into the target element
// ordered by getPositionOfTheTag (a derived record's schema table); children
// whose position is -1 follow, in their current order. Inside the tree a
// setter appends, so the tree's own order is the order of the last sets.
//
// Copies are values: two configurations never see each other's changes. A
// copy (and a read) shares the tree until either side changes it.
#include "HNKDerivedParserFactory.h"
#include "HNKMessageIterator.h"
#include "HNKOptionalProperty.h"
#include "HNKWriterBase.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>

#include <string>

class HNKEnvCoreBasic;

class HNKEnvConfig : public boost::enable_shared_from_this<HNKEnvConfig> {
public:
    // No tree, no core.
    HNKEnvConfig();
    // A copy of the element under the cursor (its children are the settings);
    // null or an invalid cursor gives no tree.
    explicit HNKEnvConfig(const HNKMessageIterator* msg);
    // No tree, bound to `core` (which may be empty).
    explicit HNKEnvConfig(boost::shared_ptr<HNKEnvCoreBasic> core);
    HNKEnvConfig(const HNKEnvConfig& other);
    HNKEnvConfig& operator=(const HNKEnvConfig& other);
    virtual ~HNKEnvConfig();

    // ---- The tree ----
    bool hasMsg() const { return msg_.isValid(); }
    // Creates an empty tree when there is none.
    void initMsg();
    // A cursor on the root of the tree; null when there is none.
    const HNKMessageIterator* getMsg() const { return hasMsg() ? &msg_ : nullptr; }
    HNKMessageIterator* getMsg() { return hasMsg() ? &msg_ : nullptr; }
    const boost::shared_ptr<HNKEnvCoreBasic>& getCore() const { return core_; }

    // Schema position of a tag, used to order the output; -1 for unknown.
    virtual int getPositionOfTheTag(const std::string& tag) const;

    // ---- Framework-owned settings ----
    // Getters: 0, or -1 (argument untouched) without a tree or element or on
    // a bad value. Setters replace every element of the tag by one and return
    // 0 (-1 only for a string XML cannot carry: the old element then stays).
    // "name": absent gives 0 with the argument left unspecified; setting an
    // unspecified name removes the element.
    int getName(HNKOptionalProperty<std::string>& name) const;
    int setName(const HNKOptionalProperty<std::string>& name);
    int getDisabled(bool& value) const;               // "disabled"
    int setDisabled(bool value);
    int getCPUHvt(bool& value) const;                 // "cpu_hvt"
    int setCPUHvt(bool value);
    int getVtdSupported(bool& value) const;           // "vtd_supported"
    int setVtdSupported(bool value);
    int getPsPort(int& value) const;                  // "ps_port"
    int setPsPort(int value);
    int getScreenWidth(int& value) const;             // "screen_width"
    int setScreenWidth(int value);
    int getScreenHeight(int& value) const;            // "screen_height"
    int setScreenHeight(int value);
    int getScreenDepth(int& value) const;             // "screen_depth"
    int setScreenDepth(int value);

    // Three-way over the framework-owned settings, each as an optional value
    // (absent on both sides is equal): name, disabled, cpu_hvt,
    // vtd_supported, ps_port, screen width, height, depth.
    int compare(const HNKEnvConfig& other) const;

    // Replaces the tree by a copy of the element at the cursor; -1 when the
    // cursor is invalid.
    struct Reader {
        int operator()(const HNKMessageIterator& it, HNKEnvConfig& config) const;
    };
    // Appends copies of the tree's children to the element at the cursor, in
    // position order (see above); nothing without a tree.
    struct Writer : HNKWriterBase {
        static unsigned getNSID();
        static unsigned getTypeID();
        int operator()(HNKMessageIterator& it, const HNKEnvConfig& config) const;
    };

protected:
    // The value of child `tag`: 0, or -1 without a tree or child.
    template <class T>
    int getElement(T& value, const char* tag) const
    {
        return hasMsg() && msg_.getValue(tag, value) == 0 ? 0 : -1;
    }
    // Makes the value the one element `tag`: the new element is appended and
    // filled first, so a value XML cannot carry is refused (-1) with the old
    // element still in place; then every older element of the tag goes, a
    // duplicate a parsed message held included.
    template <class T>
    int putElement(const T& value, const char* tag)
    {
        initMsg();
        // Without an older element (a fresh record being filled) a put by
        // name appends the element with its value in one step, and refuses a
        // value XML cannot carry before it appends anything.
        if (!msg_.hasChild(tag))
            return msg_.putValue(tag, value);
        int older = 0;
        if (msg_.firstChild(tag) == 0) {
            do
                ++older;
            while (msg_.nextSibling(tag) == 0);
            msg_.ascend();
        }
        if (msg_.createChild(tag) != 0)
            return -1;
        if (msg_.putValue(0, value) != 0) {
            msg_.removeCurrent();
            return -1;
        }
        msg_.ascend();
        while (older-- > 0)
            msg_.removeChild(tag);
        return 0;
    }

private:
    HNKMessageIterator msg_;
    boost::shared_ptr<HNKEnvCoreBasic> core_;
};

HNK_DECLARE_FACTORY_REGISTRY(HNKEnvConfig);

// The framework's own factory of the base record, the registry's default.
typedef HNKDerivedParserFactoryT<HNKEnvConfig, HNKEnvConfig, HNKEnvConfig, HNKEnvConfig::Reader, HNKEnvConfig::Writer>
    HNKEnvConfigFactory;
extern HNKEnvConfigFactory factoryHNKEnvConfig;
