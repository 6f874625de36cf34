#include "frame/HNRLibFunctionality.h"

#include <gtest/gtest.h>

#include "HNKFramework/ModuleAccessFakes.h"

namespace {

using HNR::HNRLibFunctionality;
using fakes::CountingAccessor;
using fakes::CountingProvider;
using fakes::FakeAgentFactory;
using fakes::FakeLocalFactory;
using fakes::originOf;
using ProviderPtr = HNRLibFunctionality::ProviderPtr;

// One traits type per module: its interface, its multiplexer and its three getters.
#define HNR_MODULE_TRAITS(Module, accessor)                                                              \
    struct Module##Traits {                                                                               \
        using M = HNR::HNR##Module;                                                                       \
        using Ptr = boost::shared_ptr<M>;                                                                 \
        static auto& mux(HNRLibFunctionality& lib) { return lib.accessor(); }                            \
        static Ptr get(const HNRLibFunctionality& lib, const HNKEID& eid, ProviderPtr p,                  \
                       const std::string& name) {                                                         \
            return lib.getHNR##Module(eid, p, name);                                                      \
        }                                                                                                 \
        static Ptr getAgent(const HNRLibFunctionality& lib, const HNKEID& eid, ProviderPtr p,             \
                            const std::string& name) {                                                    \
            return lib.getHNR##Module##Agent(eid, p, name);                                               \
        }                                                                                                 \
        static Ptr getLocal(const HNRLibFunctionality& lib, ProviderPtr p, const std::string& name) {     \
            return lib.getHNR##Module##Local(p, name);                                                    \
        }                                                                                                 \
    };

HNR_MODULE_TRAITS(EnvM, envMultiplexer)
HNR_MODULE_TRAITS(ComputerM, computerMultiplexer)
HNR_MODULE_TRAITS(ProcessMonitor, processMonitorMultiplexer)
HNR_MODULE_TRAITS(NetworkM, networkMultiplexer)
HNR_MODULE_TRAITS(DevM, devMultiplexer)
HNR_MODULE_TRAITS(SampleM, sampleMultiplexer)
#undef HNR_MODULE_TRAITS

const HNKEID kLocalEid(HNKGUID(0x10, 0x20));
const HNKEID kRemoteEid(HNKGUID(0x30, 0x40));

template <class Traits>
class ModuleAccessTest : public ::testing::Test {
protected:
    using M = typename Traits::M;

    void SetUp() override {
        local = boost::make_shared<FakeLocalFactory<M>>("impl");
        agent = boost::make_shared<FakeAgentFactory<M>>("impl");
        extendedAgent = boost::make_shared<FakeAgentFactory<M>>("ext");
        auto& mux = Traits::mux(lib);
        mux.addLocal("impl", local);
        mux.addAgent("impl", agent);
        mux.addLocal("ext", boost::make_shared<FakeLocalFactory<M>>("ext"));
        mux.addAgent("ext", extendedAgent);
        mux.addExtended("ext", "x");
        mux.addLocal("local-only", boost::make_shared<FakeLocalFactory<M>>("local-only"));

        accessor.reset(new CountingAccessor(&accessorsDestroyed));
        accessor->addLocal(kLocalEid);
        provider.reset(new CountingProvider(&providersDestroyed));
        provider->setEnvAccessor(accessor);
        providerStart = provider->refCount();
        accessorStart = accessor->refCount();
    }

    void TearDown() override {
        provider.reset();
        accessor.reset();
        EXPECT_EQ(providersDestroyed, 1);
        EXPECT_EQ(accessorsDestroyed, 1);
    }

    // After any getter the counts are back where they started and nothing died.
    void expectCountsRestored() {
        EXPECT_EQ(provider->refCount(), providerStart);
        EXPECT_EQ(accessor->refCount(), accessorStart);
        EXPECT_EQ(providersDestroyed, 0);
        EXPECT_EQ(accessorsDestroyed, 0);
    }

    HNRLibFunctionality lib;
    boost::shared_ptr<FakeLocalFactory<M>> local;
    boost::shared_ptr<FakeAgentFactory<M>> agent;
    boost::shared_ptr<FakeAgentFactory<M>> extendedAgent;
    int providersDestroyed = 0;
    int accessorsDestroyed = 0;
    boost::intrusive_ptr<CountingAccessor> accessor;
    boost::intrusive_ptr<CountingProvider> provider;
    int32_t providerStart = 0;
    int32_t accessorStart = 0;
};

using AllModules = ::testing::Types<EnvMTraits, ComputerMTraits, ProcessMonitorTraits, NetworkMTraits,
                                    DevMTraits, SampleMTraits>;
TYPED_TEST_SUITE(ModuleAccessTest, AllModules);

TYPED_TEST(ModuleAccessTest, GetServesLocalEnvironmentLocally) {
    EXPECT_EQ(originOf(TypeParam::get(this->lib, kLocalEid, this->provider, "impl")), "local:impl");
    this->expectCountsRestored();
    ASSERT_EQ(this->local->calls.size(), 1u);
    EXPECT_EQ(this->local->calls[0].provider, this->provider.get());
    EXPECT_GT(this->local->calls[0].providerCount, this->providerStart);
}

TYPED_TEST(ModuleAccessTest, GetServesRemoteEnvironmentThroughTheAgent) {
    EXPECT_EQ(originOf(TypeParam::get(this->lib, kRemoteEid, this->provider, "impl")), "agent:impl");
    this->expectCountsRestored();
    ASSERT_EQ(this->agent->calls.size(), 1u);
    EXPECT_EQ(this->agent->calls[0].eid, kRemoteEid);
    EXPECT_GT(this->agent->calls[0].providerCount, this->providerStart);
    EXPECT_TRUE(this->local->calls.empty());
}

TYPED_TEST(ModuleAccessTest, NullProviderAlwaysYieldsLocal) {
    for (const HNKEID& eid : {HNKEID(), kLocalEid, kRemoteEid}) {
        EXPECT_EQ(originOf(TypeParam::get(this->lib, eid, nullptr, "impl")), "local:impl");
    }
    EXPECT_TRUE(this->agent->calls.empty());
    EXPECT_EQ(this->provider->accessorRequests, 0);
}

TYPED_TEST(ModuleAccessTest, NullAccessorYieldsLocal) {
    this->provider->setEnvAccessor(nullptr);
    EXPECT_EQ(originOf(TypeParam::get(this->lib, kRemoteEid, this->provider, "impl")), "local:impl");
    EXPECT_EQ(this->provider->refCount(), this->providerStart);
    EXPECT_EQ(this->accessor->refCount(), this->accessorStart - 1);
}

TYPED_TEST(ModuleAccessTest, RemoteWithoutAgentFactoryIsEmptyEvenWithLocalOne) {
    EXPECT_FALSE(TypeParam::get(this->lib, kRemoteEid, this->provider, "local-only"));
    EXPECT_FALSE(TypeParam::getAgent(this->lib, kLocalEid, this->provider, "local-only"));
    EXPECT_EQ(originOf(TypeParam::get(this->lib, kLocalEid, this->provider, "local-only")), "local:local-only");
    this->expectCountsRestored();
}

TYPED_TEST(ModuleAccessTest, UnknownNameIsEmptyFromEveryGetter) {
    EXPECT_FALSE(TypeParam::get(this->lib, kLocalEid, this->provider, "unknown"));
    EXPECT_FALSE(TypeParam::get(this->lib, kRemoteEid, this->provider, "unknown"));
    EXPECT_FALSE(TypeParam::getAgent(this->lib, kRemoteEid, this->provider, "unknown"));
    EXPECT_FALSE(TypeParam::getLocal(this->lib, this->provider, "unknown"));
    this->expectCountsRestored();
}

TYPED_TEST(ModuleAccessTest, AgentGetterIgnoresLocality) {
    EXPECT_EQ(originOf(TypeParam::getAgent(this->lib, kLocalEid, this->provider, "impl")), "agent:impl");
    EXPECT_EQ(originOf(TypeParam::getAgent(this->lib, kRemoteEid, nullptr, "impl")), "agent:impl");
    EXPECT_EQ(this->provider->accessorRequests, 0);
    this->expectCountsRestored();
    ASSERT_EQ(this->agent->calls.size(), 2u);
    EXPECT_EQ(this->agent->calls[0].eid, kLocalEid);
    EXPECT_GT(this->agent->calls[0].providerCount, this->providerStart);
}

TYPED_TEST(ModuleAccessTest, LocalGetterIgnoresLocality) {
    EXPECT_EQ(originOf(TypeParam::getLocal(this->lib, this->provider, "impl")), "local:impl");
    EXPECT_EQ(this->provider->accessorRequests, 0);
    this->expectCountsRestored();
    ASSERT_EQ(this->local->calls.size(), 1u);
    EXPECT_GT(this->local->calls[0].providerCount, this->providerStart);
}

TYPED_TEST(ModuleAccessTest, ExtendedCreateForMarkedNamesOnly) {
    EXPECT_EQ(originOf(TypeParam::get(this->lib, kRemoteEid, this->provider, "ext")), "agent-extended:ext");
    EXPECT_EQ(originOf(TypeParam::getAgent(this->lib, kRemoteEid, this->provider, "ext")), "agent-extended:ext");
    EXPECT_EQ(originOf(TypeParam::getAgent(this->lib, kRemoteEid, this->provider, "impl")), "agent:impl");
    this->expectCountsRestored();
    ASSERT_EQ(this->extendedAgent->calls.size(), 2u);
    for (const auto& call : this->extendedAgent->calls) {
        EXPECT_TRUE(call.extended);
        EXPECT_TRUE(call.scratchEmpty);
    }
    ASSERT_EQ(this->agent->calls.size(), 1u);
    EXPECT_FALSE(this->agent->calls[0].extended);
}

TYPED_TEST(ModuleAccessTest, AccessorReleasedBeforeTheFactoryRuns) {
    std::vector<int32_t> seen;
    this->local->onCreate = [&] { seen.push_back(this->accessor->refCount()); };
    this->agent->onCreate = [&] { seen.push_back(this->accessor->refCount()); };
    TypeParam::get(this->lib, kLocalEid, this->provider, "impl");
    TypeParam::get(this->lib, kRemoteEid, this->provider, "impl");
    EXPECT_EQ(seen, (std::vector<int32_t>{this->accessorStart, this->accessorStart}));
}

TYPED_TEST(ModuleAccessTest, ProviderHeldOnlyByTheCallerDiesOnceAfterGetters) {
    int destroyed = 0;
    {
        boost::intrusive_ptr<CountingProvider> only(new CountingProvider(&destroyed));
        only->setEnvAccessor(this->accessor);
        TypeParam::get(this->lib, kRemoteEid, only, "impl");
        TypeParam::get(this->lib, kLocalEid, only, "impl");
        TypeParam::getAgent(this->lib, kRemoteEid, only, "ext");
        TypeParam::getLocal(this->lib, only, "impl");
        EXPECT_EQ(only->refCount(), 1);
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(HNRLibFunctionalityTest, MultiplexersAreSeparatePerModule) {
    HNRLibFunctionality lib;
    lib.envMultiplexer().addLocal("x", boost::make_shared<FakeLocalFactory<HNR::HNREnvM>>("x"));
    EXPECT_EQ(originOf(lib.getHNREnvMLocal(nullptr, "x")), "local:x");
    EXPECT_FALSE(lib.getHNRComputerMLocal(nullptr, "x"));
    EXPECT_FALSE(lib.getHNRProcessMonitorLocal(nullptr, "x"));
    EXPECT_FALSE(lib.getHNRNetworkMLocal(nullptr, "x"));
    EXPECT_FALSE(lib.getHNRDevMLocal(nullptr, "x"));
    EXPECT_FALSE(lib.getHNRSampleMLocal(nullptr, "x"));
}

TEST(HNRLibFunctionalityTest, EmptyMultiplexersYieldEmpty) {
    HNRLibFunctionality lib;
    EXPECT_FALSE(lib.getHNREnvM(kLocalEid, nullptr, "impl"));
    EXPECT_FALSE(lib.getHNRDevMAgent(kRemoteEid, nullptr, "impl"));
    EXPECT_FALSE(lib.getHNRSampleMLocal(nullptr, ""));
}

TEST(HNRLibFunctionalityTest, ModuleGuidIsHalvesZeroAndTwo) {
    const HNKGUID& guid = HNRLibFunctionality::moduleGUID();
    EXPECT_FALSE(guid.isNull());
    EXPECT_EQ(guid, HNKGUID(0, 2));
    EXPECT_EQ(guid.toString(), "00000000-0000-0000-0000-000000000002");
}

} // namespace
