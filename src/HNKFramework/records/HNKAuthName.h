#pragma once
// The framework's account name for reaching a storage location: a user and
// the domain it belongs to (no secret: credentials travel elsewhere).
#include "HNKWriterBase.h"

#include <string>

class HNKMessageIterator;

class HNKAuthName {
public:
    const std::string& getUser() const { return user_; }
    void setUser(const std::string& user) { user_ = user; }
    const std::string& getDomain() const { return domain_; }
    void setDomain(const std::string& domain) { domain_ = domain; }

    // Both texts are required: a missing one is -1.
    class Reader {
    public:
        int operator()(const HNKMessageIterator& it, HNKAuthName& name) const;
    };
    class Writer : public HNKWriterBase {
    public:
        int operator()(HNKMessageIterator& it, const HNKAuthName& name) const;
    };

private:
    std::string user_;
    std::string domain_;
};
