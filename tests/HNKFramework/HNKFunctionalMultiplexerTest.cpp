#include "HNKFunctionalMultiplexer.h"

#include <gtest/gtest.h>

#include "HNKFramework/ModuleAccessFakes.h"

namespace {

using fakes::CountingAccessor;
using fakes::CountingProvider;
using fakes::FakeAgentFactory;
using fakes::FakeLocalFactory;
using fakes::originOf;

class Probe {
public:
    virtual ~Probe() = default;
};

using ProbePtr = boost::shared_ptr<Probe>;
using Mux = HNKFunctionalMultiplexer<ProbePtr>;

const HNKEID kLocalEid(HNKGUID(0x1111, 1));
const HNKEID kRemoteEid(HNKGUID(0x2222, 2));

class MultiplexerTest : public ::testing::Test {
protected:
    void SetUp() override {
        local = boost::make_shared<FakeLocalFactory<Probe>>("impl");
        agent = boost::make_shared<FakeAgentFactory<Probe>>("impl");
        mux.addLocal("impl", local);
        mux.addAgent("impl", agent);

        accessor.reset(new CountingAccessor(&accessorsDestroyed));
        accessor->addLocal(kLocalEid);
        provider.reset(new CountingProvider(&providersDestroyed));
        provider->setEnvAccessor(accessor);
    }

    void TearDown() override {
        provider.reset();
        accessor.reset();
        EXPECT_EQ(providersDestroyed, 1);
        EXPECT_EQ(accessorsDestroyed, 1);
    }

    Mux mux;
    boost::shared_ptr<FakeLocalFactory<Probe>> local;
    boost::shared_ptr<FakeAgentFactory<Probe>> agent;
    int accessorsDestroyed = 0;
    int providersDestroyed = 0;
    boost::intrusive_ptr<CountingAccessor> accessor;
    boost::intrusive_ptr<CountingProvider> provider;
};

TEST_F(MultiplexerTest, NullProviderYieldsLocalWhateverTheEid) {
    for (const HNKEID& eid : {HNKEID(), kLocalEid, kRemoteEid}) {
        EXPECT_EQ(originOf(mux.get(eid, nullptr, "impl")), "local:impl") << eid.toString();
    }
    ASSERT_EQ(local->calls.size(), 3u);
    EXPECT_EQ(local->calls[0].provider, nullptr);
    EXPECT_TRUE(agent->calls.empty());
    EXPECT_TRUE(accessor->queried.empty());
}

TEST_F(MultiplexerTest, NullAccessorYieldsLocal) {
    provider->setEnvAccessor(nullptr);
    EXPECT_EQ(originOf(mux.get(kRemoteEid, provider, "impl")), "local:impl");
    EXPECT_EQ(provider->accessorRequests, 1);
    ASSERT_EQ(local->calls.size(), 1u);
    EXPECT_EQ(local->calls[0].provider, provider.get());
    EXPECT_TRUE(agent->calls.empty());
}

TEST_F(MultiplexerTest, AccessorSayingLocalYieldsLocal) {
    EXPECT_EQ(originOf(mux.get(kLocalEid, provider, "impl")), "local:impl");
    ASSERT_EQ(accessor->queried.size(), 1u);
    EXPECT_EQ(accessor->queried[0], kLocalEid);
    EXPECT_TRUE(agent->calls.empty());
}

TEST_F(MultiplexerTest, RemoteEidYieldsAgent) {
    EXPECT_EQ(originOf(mux.get(kRemoteEid, provider, "impl")), "agent:impl");
    ASSERT_EQ(agent->calls.size(), 1u);
    EXPECT_EQ(agent->calls[0].eid, kRemoteEid);
    EXPECT_EQ(agent->calls[0].provider, provider.get());
    EXPECT_FALSE(agent->calls[0].extended);
    EXPECT_TRUE(local->calls.empty());
}

TEST_F(MultiplexerTest, AccessorIsFetchedAfreshForEachTest) {
    mux.get(kRemoteEid, provider, "impl");
    EXPECT_EQ(provider->accessorRequests, 2);
}

TEST_F(MultiplexerTest, RemoteEidWithoutAgentFactoryIsEmptyEvenWithLocalFactory) {
    mux.removeAgent("impl");
    EXPECT_FALSE(mux.get(kRemoteEid, provider, "impl"));
    EXPECT_TRUE(local->calls.empty());
}

TEST_F(MultiplexerTest, UnknownNameIsEmpty) {
    EXPECT_FALSE(mux.get(kLocalEid, provider, "other"));
    EXPECT_FALSE(mux.get(kRemoteEid, provider, "other"));
    EXPECT_FALSE(mux.get(kRemoteEid, nullptr, "other"));
    EXPECT_FALSE(mux.getLocal(provider, "other"));
    EXPECT_FALSE(mux.getAgent(kRemoteEid, provider, "other"));
    EXPECT_FALSE(mux.getLocal(provider, ""));
    EXPECT_TRUE(local->calls.empty());
    EXPECT_TRUE(agent->calls.empty());
}

TEST_F(MultiplexerTest, GetLocalAndGetAgentIgnoreTheAccessor) {
    EXPECT_EQ(originOf(mux.getLocal(provider, "impl")), "local:impl");
    EXPECT_EQ(originOf(mux.getAgent(kLocalEid, provider, "impl")), "agent:impl");
    EXPECT_EQ(originOf(mux.getAgent(kLocalEid, nullptr, "impl")), "agent:impl");
    EXPECT_EQ(provider->accessorRequests, 0);
    ASSERT_EQ(agent->calls.size(), 2u);
    EXPECT_EQ(agent->calls[1].provider, nullptr);
}

TEST_F(MultiplexerTest, ExtendedCreateExactlyForMarkedNames) {
    auto marked = boost::make_shared<FakeAgentFactory<Probe>>("marked");
    mux.addAgent("marked", marked);
    mux.addExtended("marked", "some value");

    EXPECT_EQ(originOf(mux.get(kRemoteEid, provider, "impl")), "agent:impl");
    EXPECT_EQ(originOf(mux.get(kRemoteEid, provider, "marked")), "agent-extended:marked");
    EXPECT_EQ(originOf(mux.getAgent(kRemoteEid, provider, "marked")), "agent-extended:marked");

    ASSERT_EQ(agent->calls.size(), 1u);
    EXPECT_FALSE(agent->calls[0].extended);
    ASSERT_EQ(marked->calls.size(), 2u);
    for (const auto& call : marked->calls) {
        EXPECT_TRUE(call.extended);
        EXPECT_TRUE(call.scratchEmpty);  // fresh each time, although the factory wrote into it
        EXPECT_EQ(call.eid, kRemoteEid);
    }

    mux.removeExtended("marked");
    EXPECT_EQ(originOf(mux.get(kRemoteEid, provider, "marked")), "agent:marked");
}

TEST_F(MultiplexerTest, MarkedNameWithoutAgentFactoryIsEmpty) {
    mux.addExtended("ghost", "");
    EXPECT_FALSE(mux.getAgent(kRemoteEid, provider, "ghost"));
    EXPECT_FALSE(mux.get(kRemoteEid, provider, "ghost"));
}

TEST_F(MultiplexerTest, FactoryFailureIsReturnedUnchanged) {
    mux.addLocal("impl", boost::make_shared<FakeLocalFactory<Probe>>("broken", true));
    EXPECT_FALSE(mux.get(kLocalEid, provider, "impl"));
    EXPECT_TRUE(local->calls.empty());  // replaced
}

TEST_F(MultiplexerTest, AccessorIsReleasedBeforeTheChosenFactoryRuns) {
    // The test holds one reference to the accessor; the provider holds another.
    const int32_t held = accessor->refCount();
    ASSERT_EQ(held, 2);
    std::vector<int32_t> seen;
    local->onCreate = [&] { seen.push_back(accessor->refCount()); };
    agent->onCreate = [&] { seen.push_back(accessor->refCount()); };

    mux.get(kLocalEid, provider, "impl");
    mux.get(kRemoteEid, provider, "impl");
    EXPECT_EQ(seen, (std::vector<int32_t>{held, held}));
    EXPECT_EQ(accessor->refCount(), held);
}

TEST_F(MultiplexerTest, ProviderIsHeldDuringCreateAndReleasedAfter) {
    const int32_t held = provider->refCount();
    mux.get(kLocalEid, provider, "impl");
    mux.get(kRemoteEid, provider, "impl");
    mux.getLocal(provider, "impl");
    mux.getAgent(kRemoteEid, provider, "impl");
    ASSERT_EQ(local->calls.size(), 2u);
    ASSERT_EQ(agent->calls.size(), 2u);
    for (const auto& call : local->calls) EXPECT_GT(call.providerCount, held);
    for (const auto& call : agent->calls) EXPECT_GT(call.providerCount, held);
    EXPECT_EQ(provider->refCount(), held);
    EXPECT_EQ(providersDestroyed, 0);
}

TEST_F(MultiplexerTest, RegistrationReplacesAndRemoves) {
    mux.addLocal("impl", boost::make_shared<FakeLocalFactory<Probe>>("second"));
    EXPECT_EQ(originOf(mux.getLocal(provider, "impl")), "local:second");
    EXPECT_EQ(mux.localFactories().size(), 1u);
    mux.removeLocal("impl");
    mux.removeLocal("never registered");
    EXPECT_FALSE(mux.getLocal(provider, "impl"));
    EXPECT_TRUE(mux.localFactories().empty());
    EXPECT_EQ(mux.agentFactories().count("impl"), 1u);
    EXPECT_TRUE(mux.extendedNames().empty());
}

} // namespace
