#pragma once
// Identifier of an environment (a virtual machine, a host, ...) managed by
// the agent. The access provider decides whether it is served on this node.
#include <string>

#include "HNKGUID.h"

class HNKEID {
public:
    // The empty EID: names no environment.
    HNKEID() = default;
    explicit HNKEID(const HNKGUID& guid) : guid_(guid) {}

    const HNKGUID& getGUID() const { return guid_; }
    bool isNull() const { return guid_.isNull(); }

    // Three-way, in the order of the GUIDs.
    int compare(const HNKEID& other) const;

    // Same text as the GUID it wraps.
    std::string toString() const;
    // False on malformed text, with this EID left unchanged.
    bool fromString(const std::string& text);

private:
    HNKGUID guid_;
};

inline bool operator==(const HNKEID& a, const HNKEID& b) { return a.compare(b) == 0; }
inline bool operator!=(const HNKEID& a, const HNKEID& b) { return a.compare(b) != 0; }
inline bool operator<(const HNKEID& a, const HNKEID& b) { return a.compare(b) < 0; }
