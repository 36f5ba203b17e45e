// The router as a process, and its clients as processes that are killed.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

#include "services/servicerouter_proxy/proxy.h"
#include "services/servicerouter_proxy/router_place.h"
#include "services/servicerouter_proxy/stp_child_process.h"
#include "services/svc_router/peers_testing.h"
#include "shared/libcxxutil/child_process.h"
#include "shared/libcxxutil/event_loop.h"
#include "shared/libcxxutil/report.h"

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

using Server = TestServer;
using Client = TestClient;

struct Factory : ServiceFactory {
    using ServiceFactory::ServiceFactory;
    Ref<STPSpecClass> create(const ServiceRequest& request) override {
        const auto server = ref_Make<Server>();
        server->attach(request.transport, request.localId, request.remoteId);
        return Ref<STPSpecClass>(server.get());
    }
};

// A zone of the test's own, so that no router of the user's is met.
class Zone {
  public:
    Zone() : folder_(std::filesystem::temp_directory_path() / ("cw_zone_" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(folder_);
        ::setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
        options.zone = "test";
        options.directory = std::filesystem::path(CW_SVC_ROUTER).parent_path();
    }
    ~Zone() { std::filesystem::remove_all(folder_); }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

    // Waits until no router has the zone any more.
    bool ends() const {
        for (int i = 0; i < 400 && routerPlace_Port(options.zone); ++i) std::this_thread::sleep_for(50ms);
        return !routerPlace_Port(options.zone);
    }

    const std::filesystem::path& folder() const { return folder_; }

    ServiceRouterOptions options;

  private:
    std::filesystem::path folder_;
};

struct Program {
    EventLoop loop;
    Ref<ServiceRouter_Proxy> proxy;
    explicit Program(const ServiceRouterOptions& options) {
        ServiceRouterHooks hooks;
        hooks.watches = &loop.watches;
        hooks.tasks = &loop.tasks;
        proxy = ref_Make<ServiceRouter_Proxy>(options, hooks);
    }
    ~Program() { proxy->leave(); }
    bool join() {
        STPStatus status;
        const bool joined = proxy->join(ServiceRouter_Proxy::WithoutRouter::Start, &status);
        EXPECT_TRUE(joined) << status.text;
        return joined;
    }
};

// What a client of the soak does until it is killed: offers, asks, calls, gives up, in an order of chance.
[[noreturn]] void runClient(const ServiceRouterOptions& options, unsigned seed) {
    gen_set_report_sink([](int, const std::string&) {});
    if (!std::freopen("/dev/null", "w", stderr)) ::_exit(1);
    std::minstd_rand random(seed);
    Program program(options);
    Factory factory("TRA");
    if (random() % 2 == 0) program.proxy->offer(factory);
    if (!program.proxy->join(ServiceRouter_Proxy::WithoutRouter::Fail)) ::_exit(1);
    while (program.proxy->alive()) {
        const auto client = ref_Make<Client>();
        ServiceWish wish{.name = "TRA"};
        if (random() % 8 == 0)
            wish.startCookie =
                program.proxy->launchPlugin({"/bin/true"}, "", ServiceRouter_Proxy::StartedBy::Router);
        else if (program.proxy->connectService(*client, wish, nullptr)) {
            for (auto calls = random() % 20; calls > 0; --calls) client->OpenFile({.dataFile = "f"});
            if (random() % 2 == 0) program.proxy->dropService(*client);
        }
        if (const auto id = program.proxy->pluginOfService("TRA", nullptr))
            program.proxy->valueOnPlugin(*id, "x", nullptr);
        program.loop.round(milliseconds(static_cast<long>(random() % 10)));
    }
    ::_exit(0);
}

// How long the soak lasts: short, unless the environment says otherwise.
milliseconds soakLength() {
    const char* const seconds = std::getenv("CW_ROUTER_SOAK_SECONDS");
    return seconds ? std::chrono::seconds(std::atoi(seconds)) : 3s;
}

}  // namespace

TEST(RouterProcess, IsStartedByItsFirstClientSharedAndEndsWithItsLast) {
    const Zone zone;
    Factory factory("TRA");
    {
        Program second(zone.options);
        {
            Program first(zone.options);
            ASSERT_TRUE(first.join());
            first.proxy->offer(factory);
            const auto port = routerPlace_Port(zone.options.zone);
            ASSERT_TRUE(port);
            ASSERT_TRUE(second.join());
            EXPECT_EQ(second.proxy->location(nullptr)->port, *port);
        }
        EXPECT_TRUE(second.proxy->alive()) << "who started it may leave";
        STPStatus status;
        const auto client = ref_Make<Client>();
        // The router may still learn that the first is gone: until then its channel is refused.
        for (int tries = 500; tries > 0 && status.text != "No program offers the service \"TRA\"."; --tries) {
            EXPECT_FALSE(second.proxy->connectService(*client, {.name = "TRA"}, nullptr, &status));
            second.loop.round(10ms);
        }
        EXPECT_EQ(status.text, "No program offers the service \"TRA\".");
    }
    EXPECT_TRUE(zone.ends());
}

TEST(RouterProcess, ASecondOneHandsItsClientToTheFirst) {
    const Zone zone;
    Program first(zone.options);
    ASSERT_TRUE(first.join());
    const auto port = first.proxy->location(nullptr)->port;
    // One that does not look for a running router first.
    ServiceRouterOptions eager = zone.options;
    STPChildProcess child;
    child.transport = ref_Make<STPTransport>();
    child.arguments = {CW_SVC_ROUTER, "-connect_servicerouter", "-sr_zone", eager.zone};
    child.portPosition = 2;
    STPStatus status;
    ASSERT_TRUE(child.launch(nullptr, status)) << status.text;
    const auto proxy = ref_Make<ServiceRouter_Proxy>(eager);
    ASSERT_TRUE(proxy->joinOver(child.transport, &status)) << status.text;
    EXPECT_EQ(proxy->location(nullptr)->port, port);
    EXPECT_TRUE(child.process().WaitForEnd(20s).has_value());
    proxy->leave();
}

// A number that the shared object counts in.
int counted(void* library, const char* name) {
    const auto* number = static_cast<const int*>(::dlsym(library, name));
    return number ? *number : -1;
}

TEST(RouterProcess, ServicesInSharedObjectsLieBesideItAndAreLoadedByWhoAsks) {
    namespace fs = std::filesystem;
    Zone zone;
    // A router of its own, with services beside it.
    const fs::path place = zone.folder() / "router", services = place / "services";
    fs::create_directories(services);
    fs::copy_file(CW_SVC_ROUTER, place / "svc_router");
    for (const char* name : {"Sample.so", "Lacking.so"})
        fs::copy_file(fs::path(CW_SAMPLES) / name, services / name);
    std::ofstream(services / "Broken.so") << "no shared object";
    zone.options.directory = place;
    Program program(zone.options);
    ASSERT_TRUE(program.join());

    STPStatus status;
    void* const library = ::dlopen((services / "Sample.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    {
        const auto client = ref_Make<Client>();
        ASSERT_TRUE(program.proxy->connectService(*client, {.name = "Sample"}, nullptr, &status))
            << status.text;
        EXPECT_EQ(counted(library, "sampleStarts"), 1);
        const auto opened = client->OpenFile({.dataFile = "f.trr"}, nullptr, &status);
        ASSERT_TRUE(opened) << status.text;
        EXPECT_EQ(opened->win, 6u) << "the answer of its call back";
        for (int i = 0; i < 200 && counted(library, "sampleIdles") == 0; ++i) program.loop.round(50ms);
        EXPECT_GT(counted(library, "sampleIdles"), 0);
        program.proxy->dropService(*client);
        EXPECT_EQ(client->lost, 1);
        EXPECT_EQ(counted(library, "sampleEnds"), 1);
        EXPECT_FALSE(client->OpenFile({.dataFile = "f.trr"}, nullptr, &status));
    }
    ::dlclose(library);

    const auto refused = [&](const char* name) {
        const auto client = ref_Make<Client>();
        testing::internal::CaptureStderr();
        EXPECT_FALSE(program.proxy->connectService(*client, {.name = name}, nullptr, &status)) << name;
        testing::internal::GetCapturedStderr();
        return status.text;
    };
    EXPECT_EQ(refused("Lacking"), "Failed to get pointer to driveIdle function.");
    EXPECT_NE(refused("Broken").find("Broken.so"), std::string::npos) << status.text;
    EXPECT_EQ(refused("Missing"), "No program offers the service \"Missing\".");
    EXPECT_EQ(refused("../services/Sample"), "No program offers the service \"../services/Sample\".");
}

// What this process has open, and how many children.
struct Held {
    std::ptrdiff_t descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    size_t children = countChildren();

  private:
    static size_t countChildren() {
        child_Reap();
        const std::string self = std::to_string(::getpid());
        std::ifstream file("/proc/self/task/" + self + "/children");
        return static_cast<size_t>(std::distance(std::istream_iterator<int>(file), {}));
    }
};

TEST(RouterProcess, NoDescriptorAndNoChildIsLeftWhenAllHaveGone) {
    const Zone zone;
    const Held before;
    for (int round = 0; round < 3; ++round) {
        Program server(zone.options), asker(zone.options);
        ASSERT_TRUE(server.join());
        Factory factory("TRA");
        server.proxy->offer(factory);
        ASSERT_TRUE(asker.join());
        // A start that fails, a service that nobody has, a peer that goes within its connection.
        STPStatus status;
        const uint32_t start =
            asker.proxy->launchPlugin({"/bin/true"}, "", ServiceRouter_Proxy::StartedBy::Router, &status);
        EXPECT_FALSE(asker.proxy->awaitPlugin(start, nullptr, &status));
        const auto client = ref_Make<Client>();
        EXPECT_FALSE(asker.proxy->connectService(*client, {.name = "None"}, nullptr, &status));
        server.proxy->leave();
        for (int i = 0; i < 100 && status.text != "No program offers the service \"TRA\"."; ++i) {
            asker.proxy->connectService(*client, {.name = "TRA"}, nullptr, &status);
            asker.loop.round(10ms);
        }
    }
    EXPECT_TRUE(zone.ends());
    Held after;
    // The router, and what was started, end in their own time.
    for (int i = 0; i < 400 && after.children > 0; ++i) {
        std::this_thread::sleep_for(25ms);
        after = Held();
    }
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.children, 0u);
}

TEST(RouterProcess, StartsProgramsInTheEnvironmentOfWhoAsks) {
    const Zone zone;
    Program asker(zone.options), other(zone.options);
    ASSERT_TRUE(asker.join());
    ASSERT_TRUE(other.join());
    const auto status = [](Program& program) {
        STPStatus told;
        const uint32_t start = program.proxy->launchPlugin({"/bin/sh", "-c", "exit ${CW_TOLD:-9}"}, "",
                                                           ServiceRouter_Proxy::StartedBy::Router, &told);
        EXPECT_FALSE(program.proxy->awaitPlugin(start, nullptr, &told));
        return told.text;
    };
    EXPECT_TRUE(asker.proxy->setEnvironment("CW_TOLD", "3"));
    for (const char* none : {"", "CW_TOLD=4", "CW_TOLD=4;"})
        EXPECT_TRUE(asker.proxy->setEnvironment(none, "4")) << "sent, and no variable";
    EXPECT_EQ(status(asker), "Unable to launch plugin. /bin/sh ended with status 3 before it joined.");
    EXPECT_EQ(status(other), "Unable to launch plugin. /bin/sh ended with status 9 before it joined.");
}

TEST(RouterProcess, OutlivesTwentyClientsThatAreKilledAtRandom) {
    const Zone zone;
    Program keeper(zone.options);
    ASSERT_TRUE(keeper.join());
    std::mt19937 random(1);
    std::vector<pid_t> clients;
    const auto add = [&] {
        const auto seed = static_cast<unsigned>(random());
        const pid_t child = ::fork();
        if (child == 0) runClient(zone.options, seed);
        clients.push_back(child);
    };
    const auto kill = [&](size_t which) {
        ::kill(clients[which], SIGKILL);
        ::waitpid(clients[which], nullptr, 0);
        clients.erase(clients.begin() + static_cast<std::ptrdiff_t>(which));
    };
    for (int i = 0; i < 20; ++i) add();
    const auto end = std::chrono::steady_clock::now() + soakLength();
    while (std::chrono::steady_clock::now() < end) {
        keeper.loop.round(milliseconds(random() % 60));
        kill(random() % clients.size());
        add();
        ASSERT_TRUE(keeper.proxy->alive());
    }
    while (!clients.empty()) kill(clients.size() - 1);
    // The router serves as before, and sees that nobody is there.
    STPStatus status;
    for (int i = 0; i < 200 && status.text != "No program offers the service \"TRA\"."; ++i) {
        const auto client = ref_Make<Client>();
        EXPECT_FALSE(keeper.proxy->connectService(*client, {.name = "TRA"}, nullptr, &status));
    }
    EXPECT_EQ(status.text, "No program offers the service \"TRA\".");
    keeper.proxy->leave();
    EXPECT_TRUE(zone.ends());
}
