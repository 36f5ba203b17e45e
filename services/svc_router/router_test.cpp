// The router with proxies in one process.
#include "services/svc_router/router.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "services/svc_router/peers_testing.h"
#include "services/svc_router/router_options.h"

namespace {

using std::chrono::milliseconds;

using Server = TestServer;
using Client = TestClient;

struct Factory : ServiceFactory {
    using ServiceFactory::ServiceFactory;
    std::vector<Ref<Server>> made;
    std::vector<std::string> pairs;
    bool refuses = false;
    Ref<STPSpecClass> create(const ServiceRequest& request) override {
        if (refuses) return {};
        pairs = request.nameValuePairs;
        made.push_back(ref_Make<Server>());
        made.back()->attach(request.transport, request.localId, request.remoteId);
        return Ref<STPSpecClass>(made.back().get());
    }
};

// A router and the loop that it shares with its plug-ins, which have ends of their own.
struct Suite {
    EventTasks tasks;
    PollWatches watches;
    STPCallState routerCalls;
    Gate routerGate;
    std::unique_ptr<Router> router;
    explicit Suite(RouterSettings settings = {}) {
        settings.tasks = &tasks;
        settings.watches = &watches;
        settings.port = 4711;
        router = std::make_unique<Router>(settings);
    }
    void sweep() { tasks.Run(EventTasks::Clock::now()); }
};

class PlugIn {
  public:
    explicit PlugIn(Suite& suite, const ServiceRouterOptions& options = {}) : suite_(suite) {
        const STPTransportOptions own{.calls = &calls_, .gate = &gate_};
        auto [near, far] =
            STPTransport::createInProcessPair(own, {.calls = &suite.routerCalls, .gate = &suite.routerGate});
        transport = near;
        far_ = far;
        ServiceRouterHooks hooks;
        hooks.joining = [](const Ref<STPTransport>&) { return rounds(); };
        hooks.calls = [](const STPSpecClass& service) {
            auto retry = rounds();
            retry->AddCondition([&service] { return service.localUp() || service.remoteUp(); });
            return retry;
        };
        proxy = ref_Make<ServiceRouter_Proxy>(options, hooks);
    }
    ~PlugIn() {
        if (proxy) proxy->leave();
        proxy = {};
        suite_.sweep();
    }
    PlugIn& join() {
        suite_.router->add(far_);
        STPStatus status;
        EXPECT_TRUE(proxy->joinOver(transport, &status)) << status.text;
        far_->serviceOnce(milliseconds(0));
        turn();
        return *this;
    }
    // Takes what the router has for it, and the router what it has for the router.
    void turn() {
        transport->serviceOnce(milliseconds(0));
        if (far_->bound()) far_->serviceOnce(milliseconds(0));
    }
    void die() {
        transport->close();
        far_->serviceOnce(milliseconds(0));
    }

    // The others have their turns while this one waits.
    static inline std::vector<PlugIn*> others;
    static std::unique_ptr<RetryHandler> rounds() { return std::make_unique<RoundsRetry>(); }

    Ref<STPTransport> transport;
    Ref<ServiceRouter_Proxy> proxy;

  private:
    struct RoundsRetry : RetryHandler {
        int left = 12;
        bool keepTrying() override { return left-- > 0 && RetryHandler::keepTrying(); }
        void wait() override {
            for (PlugIn* plugin : others)
                if (plugin->transport->bound()) plugin->turn();
        }
    };
    Suite& suite_;
    STPCallState calls_;
    Gate gate_;
    Ref<STPTransport> far_;
};

// A router with a plug-in that offers TRA and one that asks for it.
struct TwoPlugIns : testing::Test {
    Suite suite;
    Factory factory{"TRA"};
    PlugIn provider{suite}, asker{suite};
    Ref<Client> client = ref_Make<Client>();
    STPStatus status;

    void SetUp() override {
        PlugIn::others = {&provider, &asker};
        provider.proxy->offer(factory);
        provider.join();
        asker.join();
    }
    void TearDown() override { PlugIn::others.clear(); }
    bool connect(const ServiceWish& wish = {.name = "TRA"}) {
        return asker.proxy->connectService(*client, wish, nullptr, &status);
    }
    void turns() {
        for (int i = 0; i < 4; ++i)
            for (PlugIn* plugin : PlugIn::others)
                if (plugin->transport->bound()) plugin->turn();
    }
};

}  // namespace

TEST_F(TwoPlugIns, AreConnectedAndCallEachOtherAndBack) {
    ASSERT_TRUE(connect({.name = "TRA", .nameValuePairs = {"a", "b"}})) << status.text;
    EXPECT_EQ(factory.pairs, (std::vector<std::string>{"service", "TRA", "a", "b"}));
    EXPECT_EQ(provider.proxy->clientCount(), 1u);
    EXPECT_NE(provider.proxy->pluginId(), asker.proxy->pluginId());
    provider.turn();
    const auto opened = client->OpenFile({.dataFile = "f.trr"}, nullptr, &status);
    ASSERT_TRUE(opened) << status.text;
    EXPECT_EQ(opened->win, 6u) << "the answer of the call back within the call";
    asker.proxy->dropService(*client);
    EXPECT_EQ(client->lost, 1);
    turns();
    EXPECT_EQ(factory.made[0]->lost, 1);
    EXPECT_EQ(provider.proxy->clientCount(), 0u);
    EXPECT_EQ(suite.router->connections().size(), 0u);
}

TEST_F(TwoPlugIns, WhatCannotBeConnectedIsSaid) {
    const auto text = [&](const ServiceWish& wish) {
        EXPECT_FALSE(connect(wish));
        return status.text;
    };
    EXPECT_EQ(text({.name = "None"}), "No program offers the service \"None\".");
    EXPECT_EQ(text({.name = "TRA", .providingPlugin = 99}), "No program offers the service \"TRA\".");
    factory.refuses = true;
    EXPECT_EQ(text({.name = "TRA"}), "The service \"TRA\" takes no further client.");
    factory.refuses = false;
    provider.proxy->withdraw(factory);
    turns();
    EXPECT_EQ(text({.name = "TRA"}), "No program offers the service \"TRA\".");
    EXPECT_EQ(suite.router->connections().size(), 0u);
}

TEST_F(TwoPlugIns, AServiceForOneRefusesTheSecond) {
    Factory one("One", ServiceFactory::Clients::One);
    provider.proxy->offer(one);
    turns();
    ASSERT_TRUE(connect({.name = "One"})) << status.text;
    const auto second = ref_Make<Client>();
    EXPECT_FALSE(asker.proxy->connectService(*second, {.name = "One"}, nullptr, &status));
    provider.proxy->withdraw(one);
}

TEST_F(TwoPlugIns, TheDeathOfEitherEndsTheConnectionOfTheOther) {
    ASSERT_TRUE(connect());
    provider.die();
    suite.sweep();
    turns();
    EXPECT_EQ(client->lost, 1);
    EXPECT_FALSE(client->OpenFile({.dataFile = "x"}, nullptr, &status));
    EXPECT_EQ(status.text, "[send]: virtual connection is down");
    EXPECT_EQ(suite.router->pluginCount(), 1u);
    EXPECT_EQ(suite.router->connections().size(), 0u);
    asker.die();
    suite.sweep();
    EXPECT_TRUE(suite.router->idle());
}

TEST_F(TwoPlugIns, AWaitEndsWhenTheFarEndDiesWithinIt) {
    ASSERT_TRUE(connect());
    provider.turn();
    client->asked = [&] { provider.die(); };
    EXPECT_FALSE(client->OpenFile({.dataFile = "f"}, nullptr, &status));
    EXPECT_EQ(status.code, STPCode::TimeOut);
    EXPECT_EQ(client->lost, 1);
}

TEST_F(TwoPlugIns, TheRoutersDeathEndsEverything) {
    ASSERT_TRUE(connect());
    suite.router.reset();
    turns();
    EXPECT_FALSE(asker.proxy->alive());
    EXPECT_FALSE(provider.proxy->alive());
    EXPECT_EQ(client->lost, 1);
    EXPECT_EQ(factory.made[0]->lost, 1);
    suite.router = std::make_unique<Router>(RouterSettings{.tasks = &suite.tasks, .watches = &suite.watches});
}

TEST_F(TwoPlugIns, QuestionsToTheRouterAndToEachOther) {
    provider.proxy->names().set("windows", "a ${b}");
    provider.proxy->names().set("b", "c");
    const auto id = asker.proxy->pluginOfService("TRA", nullptr, &status);
    ASSERT_EQ(id, provider.proxy->pluginId());
    EXPECT_EQ(asker.proxy->valueOnPlugin(*id, "windows", nullptr, &status), "a c");
    EXPECT_FALSE(asker.proxy->valueOnPlugin(*id, "none", nullptr, &status));
    EXPECT_EQ(status.text, "The program has no value \"none\".");
    EXPECT_FALSE(asker.proxy->valueOnPlugin(99, "windows", nullptr, &status));
    EXPECT_FALSE(asker.proxy->pluginOfService("None", nullptr, &status));
    const auto place = asker.proxy->location(nullptr, &status);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->host + std::to_string(place->port), "localhost4711");
    const auto first = asker.proxy->reserveNumbers(10, nullptr, &status);
    ASSERT_TRUE(first);
    EXPECT_FALSE(asker.proxy->reserveNumbers(0, nullptr, &status));
    ASSERT_TRUE(connect());
    EXPECT_FALSE(client->localId() - *first < 10 || client->remoteId() - *first < 10);
    asker.proxy->releaseNumbers(*first);
}

TEST_F(TwoPlugIns, WithANewOneWantedATakenProviderIsPassedOver) {
    ServiceRouterOptions options;
    options.reuse = ServiceRouterOptions::Reuse::New;
    PlugIn third(suite, options);
    PlugIn::others.push_back(&third);
    third.join();
    const auto other = ref_Make<Client>();
    EXPECT_TRUE(third.proxy->connectService(*other, {.name = "TRA"}, nullptr, &status)) << status.text;
    third.proxy->dropService(*other);
    ASSERT_TRUE(connect());
    const auto second = ref_Make<Client>();
    EXPECT_FALSE(third.proxy->connectService(*second, {.name = "TRA"}, nullptr, &status));
    PlugIn::others.pop_back();
}

TEST_F(TwoPlugIns, AStartedPlugInIsWaitedForUntilItOffersTheService) {
    const uint32_t cookie =
        asker.proxy->launchPlugin({"/bin/true"}, "", ServiceRouter_Proxy::StartedBy::ThisProcess, &status);
    ASSERT_NE(cookie, 0u);
    turns();
    // The plug-in is this one, by the number that the router gave its start.
    ServiceRouterOptions options;
    options.startCookie = 1;
    PlugIn started(suite, options);
    Factory late("Late");
    asker.proxy->awaitPlugin(cookie, nullptr);
    PlugIn::others.push_back(&started);
    started.join();
    EXPECT_EQ(asker.proxy->awaitPlugin(cookie, nullptr, &status), started.proxy->pluginId()) << status.text;
    started.proxy->offer(late);
    EXPECT_TRUE(connect({.name = "Late", .startCookie = cookie})) << status.text;
    PlugIn::others.pop_back();
    started.proxy->withdraw(late);
}

TEST_F(TwoPlugIns, AStartThatComesToNothingIsTold) {
    const auto by = [&](ServiceRouter_Proxy::StartedBy who) {
        const uint32_t cookie = asker.proxy->launchPlugin({"/no/program"}, "", who, &status);
        EXPECT_NE(cookie, 0u);
        EXPECT_FALSE(asker.proxy->awaitPlugin(cookie, nullptr, &status));
        return status.text;
    };
    EXPECT_TRUE(by(ServiceRouter_Proxy::StartedBy::Router).starts_with("Unable to launch plugin. "));
    EXPECT_TRUE(by(ServiceRouter_Proxy::StartedBy::ThisProcess).starts_with("Unable to launch plugin. "));
    PluginStarts starts;
    const auto begun = PluginStarts::Clock::now();
    starts.add(1, 1, "slow", begun);
    EXPECT_FALSE(starts.nextFailed(begun));
    EXPECT_EQ(starts.nextFailed(begun + PluginStarts::longest)->problem, "slow did not join in time.");
    PluginStart& ended = starts.add(1, 2, "quick", begun);
    ASSERT_TRUE(ended.process.start({.arguments = {"/bin/sh", "-c", "exit 3"}}, ChildProcess::AtEnd::Leave));
    ended.process.WaitForEnd(std::chrono::seconds(20));
    EXPECT_EQ(starts.nextFailed(begun)->problem, "quick ended with status 3 before it joined.");
}

TEST(RouterLog, HoldsTheMessagesOfThePlugIns) {
    const auto file =
        std::filesystem::temp_directory_path() / ("cw_router_log_" + std::to_string(::getpid()));
    {
        Suite suite({.log = file});
        Factory factory("TRA");
        PlugIn provider(suite), asker(suite);
        PlugIn::others = {&provider, &asker};
        provider.proxy->offer(factory);
        provider.join();
        asker.join();
        for (int i = 0; i < 4; ++i) provider.turn(), asker.turn();
        const auto client = ref_Make<Client>();
        EXPECT_TRUE(asker.proxy->connectService(*client, {.name = "TRA"}, nullptr));
        EXPECT_TRUE(client->OpenFile({.dataFile = "f.trr"}));
        for (int i = 0; i < 4; ++i) provider.turn(), asker.turn();
        PlugIn::others.clear();
    }
    std::ifstream log(file);
    const std::string text{std::istreambuf_iterator<char>(log), {}};
    for (const char* line :
         {"SEND: OpenFile: dataFile:\"f.trr\"", "RECV: OpenFile: ", "REPLY: OpenFile: win:0x6",
          "SEND: CheckAbility: ", "RECV: CheckAbility: powerMmask:0x6"})
        EXPECT_NE(text.find(line), std::string::npos) << line << " in " << text;
    std::filesystem::remove(file);
}

TEST(ConnectionTable, NumbersAreNotUsedAgainSoonAndReservedOnesNever) {
    ConnectionTable table;
    const auto block = table.reserve(1, 3);
    ASSERT_TRUE(block);
    const uint32_t first = table.add(1, 2, "S").clientRN;
    EXPECT_GE(first, *block + 3);
    table.remove(first);
    EXPECT_NE(table.add(1, 2, "S").clientRN, first);
    EXPECT_FALSE(table.reserve(1, ConnectionTable::mostReserved + 1));
    table.release(2, *block);  // not its own
    table.releaseAll(1);
    EXPECT_EQ(table.ofPlugin(1).size(), 1u);
    EXPECT_TRUE(table.serves(2, "S"));
    EXPECT_FALSE(table.serves(1, "S"));
}

TEST(RouterOptions, MistakesAreTold) {
    const struct {
        std::vector<std::string> arguments;
        const char* problem;
    } rows[] = {
        {{"-connect_servicerouter", "12", "-not_shared", "-sr_zone", "z", "-log", "f"}, ""},
        {{"-connect_servicerouter"}, "-connect_servicerouter: no such option, or its argument is missing"},
        {{"-listen", "0"}, "0: no whole number from 1 to 65535"},
        {{"-what", "x"}, "-what: no option of this program"},
        {{"what"}, "what: not understood"},
    };
    for (const auto& row : rows) {
        RouterOptions options;
        EXPECT_EQ(routerOptions_Parse(row.arguments, options).what().empty(),
                  std::string(row.problem).empty())
            << row.problem;
    }
}
