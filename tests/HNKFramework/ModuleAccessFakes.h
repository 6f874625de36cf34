#pragma once
// Fakes for module-access tests: a provider and an accessor that count their
// calls and their destruction, and factories that record what they were given.
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <boost/intrusive_ptr.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "HNKAccessProviderPrototype.h"
#include "HNKEID.h"
#include "HNKEnvAccessor.h"
#include "HNKFunctionalFactoryAgent.h"
#include "HNKFunctionalFactoryLocal.h"

namespace fakes {

class CountingAccessor : public HNKEnvAccessor {
public:
    explicit CountingAccessor(int* destroyed) : destroyed_(destroyed) {}
    ~CountingAccessor() override { ++*destroyed_; }

    bool isLocal(const HNKEID& eid) const override {
        queried.push_back(eid);
        return HNKEnvAccessor::isLocal(eid);
    }

    mutable std::vector<HNKEID> queried;

private:
    int* destroyed_;
};

class CountingProvider : public HNKAccessProviderPrototype {
public:
    explicit CountingProvider(int* destroyed) : destroyed_(destroyed) {}
    ~CountingProvider() override { ++*destroyed_; }

    boost::intrusive_ptr<HNKEnvAccessor> getEnvAccessor() const override {
        ++accessorRequests;
        return HNKAccessProviderPrototype::getEnvAccessor();
    }

    mutable int accessorRequests = 0;

private:
    int* destroyed_;
};

// A module implementation that tells who made it.
template <class M>
class FakeModule : public M {
public:
    explicit FakeModule(std::string origin) : origin(std::move(origin)) {}
    std::string origin;
};

template <class M>
std::string originOf(const boost::shared_ptr<M>& module) {
    if (!module) return "<empty>";
    const auto* fake = dynamic_cast<const FakeModule<M>*>(module.get());
    return fake ? fake->origin : "<foreign>";
}

// What a factory saw on one create.
struct CreateCall {
    HNKEID eid;
    const HNKAccessProviderPrototype* provider = nullptr;
    int32_t providerCount = -1;  // the provider's count inside create
    bool extended = false;
    bool scratchEmpty = false;
};

template <class M>
class FakeLocalFactory : public HNKFunctionalFactoryLocal<boost::shared_ptr<M>> {
public:
    explicit FakeLocalFactory(std::string tag, bool fails = false) : tag_(std::move(tag)), fails_(fails) {}

    boost::shared_ptr<M> create(boost::intrusive_ptr<HNKAccessProviderPrototype> provider) const override {
        CreateCall call;
        call.provider = provider.get();
        call.providerCount = provider ? provider->refCount() : -1;
        calls.push_back(call);
        if (onCreate) onCreate();
        if (fails_) return boost::shared_ptr<M>();
        return boost::make_shared<FakeModule<M>>("local:" + tag_);
    }

    mutable std::vector<CreateCall> calls;
    std::function<void()> onCreate;

private:
    std::string tag_;
    bool fails_;
};

template <class M>
class FakeAgentFactory : public HNKFunctionalFactoryAgent<boost::shared_ptr<M>> {
public:
    explicit FakeAgentFactory(std::string tag) : tag_(std::move(tag)) {}

    boost::shared_ptr<M> create(const HNKEID& eid,
                                boost::intrusive_ptr<HNKAccessProviderPrototype> provider) const override {
        record(eid, provider, false, false);
        return boost::make_shared<FakeModule<M>>("agent:" + tag_);
    }

    boost::shared_ptr<M> create(const HNKEID& eid, boost::intrusive_ptr<HNKAccessProviderPrototype> provider,
                                std::string& scratch) const override {
        record(eid, provider, true, scratch.empty());
        // Left behind on purpose: the next call must get a fresh, empty one.
        scratch = "used by " + tag_;
        return boost::make_shared<FakeModule<M>>("agent-extended:" + tag_);
    }

    mutable std::vector<CreateCall> calls;
    std::function<void()> onCreate;

private:
    void record(const HNKEID& eid, const boost::intrusive_ptr<HNKAccessProviderPrototype>& provider,
                bool extended, bool scratchEmpty) const {
        CreateCall call;
        call.eid = eid;
        call.provider = provider.get();
        call.providerCount = provider ? provider->refCount() : -1;
        call.extended = extended;
        call.scratchEmpty = scratchEmpty;
        calls.push_back(call);
        if (onCreate) onCreate();
    }

    std::string tag_;
};

} // namespace fakes
