// The proxy and what it stands on, without a router: starting one, every failure of joining, names and
// values, shared objects.
#include "services/servicerouter_proxy/proxy.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "services/generated/servicerouter_service_router_impl.h"
#include "services/generated/tra_service_client_impl.h"
#include "services/servicerouter_proxy/router_place.h"
#include "services/servicerouter_proxy/stp_child_process.h"
#include "shared/stp_transport/transport_testing.h"

namespace {

// A program whose life is told by the test.
struct ToldChild : STPChildProcess {
    std::vector<bool> runs;  // what is answered first; then the truth
    size_t asked = 0;
    bool isRunning() override { return asked < runs.size() ? runs[asked++] : STPChildProcess::isRunning(); }
};

// The client whose calls a test doesn't make.
struct Client : TRA_client_Impl {
    TRA_CheckAbility_Reply CheckAbility(const TRA_CheckAbility_Request&) override { return {}; }
    void RunCmdInDebugger(const TRA_RunCmdInDebugger_Request&) override {}
    TRA_ShowPositionInDebugger_Reply ShowPositionInDebugger(
        const TRA_ShowPositionInDebugger_Request&) override {
        return {};
    }
};

// A proxy whose transport does what a script says.
struct ScriptedProxy {
    ScriptedEnd end;
    Ref<ServiceRouter_Proxy> proxy;
    explicit ScriptedProxy(ServiceRouterOptions options = {}) {
        ServiceRouterHooks hooks;
        hooks.joining = [](Ref<STPTransport> transport) { return rounds(std::move(transport)); };
        hooks.calls = [](const STPSpecClass& service) { return rounds(Ref(service.transport())); };
        proxy = ref_Make<ServiceRouter_Proxy>(options, hooks);
    }
    // A wait that looks at the wire a few times.
    static std::unique_ptr<RetryHandler> rounds(Ref<STPTransport> transport) {
        return std::make_unique<RoundsRetry>(
            3, [transport] { transport->serviceOnce(std::chrono::milliseconds(0)); });
    }
    ~ScriptedProxy() { proxy->leave(); }
    void come(const STPHeader& header, std::string body) {
        end.script->come(packet_Of(header, std::move(body)));
    }
    void comeTags() {
        come({1, 2, 1, 0, static_cast<uint32_t>(STPKind::Negotiation), 1, stpOneWay},
             negotiation_WriteTags(ServiceRouter_router_Impl::serviceDescription()));
    }
    template <class Request>
    void comeEvent(const char* name, const Request& request) {
        for (const STPTableRow& row : ServiceRouter_plugin_Impl::serviceDescription().receives)
            if (std::string_view(row.name) == name)
                come({1, 2, 2, 0, static_cast<uint32_t>(STPKind::Binary), row.number, stpOneWay, {9, 9, 1}},
                     stp_WriteBody(STPBodyForm::Binary, name, request));
    }
    bool join(STPStatus& status) { return proxy->joinOver(end.transport, &status); }
};

// What is written to the error stream during a test.
struct ErrorStream {
    ErrorStream() { testing::internal::CaptureStderr(); }
    static std::string text() { return testing::internal::GetCapturedStderr(); }
};

}  // namespace

TEST(LaunchingAChild, EveryFailureHasItsCodeAndText) {
    const struct {
        bool transport;
        std::vector<std::string> arguments;
        std::vector<bool> runs;
        STPCode code;
        const char* text;
    } rows[] = {
        {false,
         {"/bin/true"},
         {},
         STPCode::Misuse,
         "[launch]: transport required to launch STPChildProcess."},
        {true, {}, {}, STPCode::Misuse, "[launch]: command required to launch STPChildProcess."},
        {true, {"/bin/true"}, {true}, STPCode::Misuse, "[launch]: Child is already launched."},
        {true, {"/no/program"}, {}, STPCode::Launch, "[launch]: Program could not start (not found?)."},
        {true, {"/bin/true"}, {false, false}, STPCode::Launch, "[launch]: Program died upon launch."},
        {true,
         {"/bin/true"},
         {false, true, false},
         STPCode::Launch,
         "[launch]: Program died before connecting."},
        {true,
         {"/bin/sleep"},
         {},
         STPCode::TimeOut,
         "[launch]: Timed out while waiting for child to connect."},
    };
    for (const auto& row : rows) {
        ToldChild child;
        if (row.transport) child.transport = ref_Make<STPTransport>();
        child.arguments = row.arguments;
        child.runs = row.runs;
        RoundsRetry retry(0);
        STPStatus status;
        EXPECT_FALSE(child.launch(&retry, status));
        EXPECT_EQ(status.text, row.text);
        EXPECT_EQ(status.code, row.code);
        EXPECT_FALSE(child.process().WaitForEnd(std::chrono::seconds(10)).has_value() !=
                     child.process().WasStarted())
            << "nothing is left";
    }
}

TEST(LaunchingAChild, TheChildIsToldWhereToConnect) {
    for (const auto inserts : {STPChildProcess::Inserts::Port, STPChildProcess::Inserts::HostAndPort}) {
        STPChildProcess child;
        child.transport = ref_Make<STPTransport>();
        child.inserts = inserts;
        child.arguments = {"/bin/bash", "-c",
                           "exec 3<>/dev/tcp/localhost/${@: -1}; echo \"$#\" >&3; read x <&3", "sh"};
        child.portPosition = 4;
        STPStatus status;
        EXPECT_TRUE(child.launch(nullptr, status)) << status.text;
        EXPECT_TRUE(child.transport->bound());
        EXPECT_FALSE(child.launch(nullptr, status));
        EXPECT_EQ(status.text, "[launch]: Child is already launched.");
        child.transport->close();
        EXPECT_TRUE(child.process().WaitForEnd(std::chrono::seconds(20)).has_value());
    }
}

TEST(JoiningTheRouter, EachStepThatFailsHasItsText) {
    const struct {
        int goodWrites;
        const char* text;
    } rows[] = {
        {0, "Negotiation with ServiceRouter failed during initialization: "},
        {1, "Unable to give the ServiceRouter the client start cookie.\n"},
        {2, "Unable to send our working directory to the ServiceRouter.\n"},
        {3, "Failed to send list of available services.\n"},
    };
    for (const auto& row : rows) {
        ServiceRouterOptions options;
        options.startCookie = 5;
        ScriptedProxy scripted(options);
        scripted.comeTags();
        for (int i = 0; i < row.goodWrites; ++i) scripted.end.script->takeOnly(1 << 20);
        scripted.end.script->failWrite(SocketError::Other);
        const ErrorStream errors;
        STPStatus status;
        EXPECT_FALSE(scripted.join(status));
        EXPECT_NE(ErrorStream::text().find(row.text), std::string::npos) << row.text << status.text;
        EXPECT_FALSE(scripted.proxy->alive());
        EXPECT_FALSE(status.ok());
    }
    ScriptedProxy silent;
    const ErrorStream errors;
    STPStatus status;
    EXPECT_FALSE(silent.join(status));
    EXPECT_EQ(
        ErrorStream::text(),
        "Negotiation with ServiceRouter failed during initialization: awaitNegotiate: timed out waiting for "
        "reply..\n");
}

TEST(JoiningTheRouter, NoRouterAndNoneToStartHaveTheirTexts) {
    const std::string zone = "zone of a test that has no router";
    ServiceRouterOptions named, started;
    named.namesRouter = true;
    named.port = 1;
    started.zone = zone;
    started.directory = "/no/such/directory";
    const auto text = [](const ServiceRouterOptions& options, ServiceRouter_Proxy::WithoutRouter otherwise) {
        const ErrorStream errors;
        STPStatus status;
        EXPECT_FALSE(ref_Make<ServiceRouter_Proxy>(options)->join(otherwise, &status));
        EXPECT_FALSE(status.ok());
        return ErrorStream::text();
    };
    constexpr char unreachable[] = "Unable to connect to a running or launch a new servicerouter.\n";
    EXPECT_EQ(text(named, ServiceRouter_Proxy::WithoutRouter::Start), unreachable);
    EXPECT_EQ(text(started, ServiceRouter_Proxy::WithoutRouter::Fail), unreachable);
    EXPECT_NE(text(started, ServiceRouter_Proxy::WithoutRouter::Start)
                  .find("Unable to launch new servicerouter.\n"),
              std::string::npos);
}

TEST(AskingForServices, MistakesOfTheCallerHaveTheirTexts) {
    const auto proxy = ref_Make<ServiceRouter_Proxy>(ServiceRouterOptions{});
    const auto client = ref_Make<Client>();
    STPStatus status;
    EXPECT_FALSE(proxy->connectServiceAt("", 1, *client, {.name = "TRA"}, nullptr, &status));
    EXPECT_EQ(status.text, "Invalid host specified.");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(proxy->connectServiceAt("localhost", 1, *client, {.name = "TRA"}, nullptr, &status));
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(status.text, "Unable to connect to ServiceRouter.");
    EXPECT_EQ(proxy->launchPlugin({}, "", ServiceRouter_Proxy::StartedBy::Router, &status), 0u);
    EXPECT_EQ(status.text, "Invalid arguments specified when attempting to launch plugin.");
    EXPECT_EQ(proxy->launchPlugin({"x"}, "", ServiceRouter_Proxy::StartedBy::Router, &status), 0u);
    EXPECT_EQ(status.text, "Unable to launch plugin.");
    EXPECT_FALSE(proxy->connectService(*client, {.name = "TRA"}, nullptr, &status));
    EXPECT_EQ(status.text, "There is no service router.");
}

TEST(AskingForServices, ALateAnswerIsGivenBackAndTheNextRequestGoesOut) {
    ScriptedProxy scripted;
    scripted.comeTags();
    STPStatus status;
    ASSERT_TRUE(scripted.join(status)) << status.text;
    const auto client = ref_Make<Client>();
    EXPECT_FALSE(scripted.proxy->connectService(*client, {.name = "TRA"}, nullptr, &status));
    EXPECT_EQ(status.code, STPCode::TimeOut);
    EXPECT_FALSE(scripted.proxy->connectService(*client, {.name = "TRA"}, nullptr, &status));
    scripted.end.script->takeWritten();
    scripted.comeEvent("ConnectionReplyEvent",
                       ServiceRouter_ConnectionReplyEvent_Request{"TRA", 0x200, 1, 0, 1, 0x201});
    scripted.end.come("");
    scripted.end->handleWrite();
    const auto sent = headers_Of(scripted.end.script->takeWritten());
    ASSERT_EQ(sent.size(), 1u) << "the connection is dropped, and the abandoned second request not sent";
    const auto& rows = ServiceRouter_router_Impl::serviceDescription().receives;
    EXPECT_STREQ(rows[sent[0].tag].name, "DropServiceConnection");
}

TEST(AskingForServices, AQuestionFromNobodyIsRefusedAndEndsNothing) {
    ScriptedProxy scripted;
    scripted.comeTags();
    STPStatus status;
    ASSERT_TRUE(scripted.join(status));
    scripted.end.script->takeWritten();
    testing::internal::CaptureStderr();
    scripted.comeEvent("ForwardedRequestValueOfNameOnPlugin",
                       ServiceRouter_ForwardedRequestValueOfNameOnPlugin_Request{0xFFFFFFFF, 1, "x"});
    scripted.end.come("");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("requesting_plugin_id != -1"), std::string::npos);
    scripted.end->handleWrite();
    EXPECT_EQ(scripted.end.script->takeWritten(), "");
    EXPECT_TRUE(scripted.proxy->alive());
}

TEST(NamesAndValues, NamesAreExpandedAndCirclesEnd) {
    NameValueResolver names;
    names.set("home", "/h");
    names.set("file", "${home}/${name}.trr");
    names.set("name", "run");
    names.set("made", [] { return std::string("${home}"); });
    names.set("a", "${b}");
    names.set("b", "x${a}");
    const struct {
        const char* text;
        const char* expanded;
    } rows[] = {
        {"${file}", "/h/run.trr"},
        {"${made}", "${home}"},
        {"${none} ${", "${none} ${"},
        {"$home", "$home"},
        {"${a}", "x${a}"},
        {"", ""},
        {"${}", "${}"},
    };
    for (const auto& row : rows) EXPECT_EQ(names.expand(row.text), row.expanded);
    EXPECT_EQ(names.valueOf("file"), "/h/run.trr");
    EXPECT_EQ(names.valueOf("none"), std::nullopt);
    names.set("d0", std::string(1024, 'x'));
    for (int i = 1; i < 40; ++i) {
        const std::string half = "${d" + std::to_string(i - 1) + "}";
        names.set("d" + std::to_string(i), half + half);
    }
    EXPECT_EQ(names.valueOf("d39")->size(), NameValueResolver::mostBytes);
}

namespace {

// The entries of a shared object, as a test fills them.
struct Entries {
    static inline STPTransport* far = nullptr;
    static inline bool connects = true;
    static inline std::vector<std::string> calls;
    static STPTransport* initialize(const char* name) {
        calls.push_back(std::string("initialize ") + name);
        return far;
    }
    static bool negotiate(uint32_t local, uint32_t remote) {
        calls.push_back("negotiate " + std::to_string(local) + " " + std::to_string(remote));
        return connects;
    }
    static void driveIdle() { calls.emplace_back("idle"); }
    static void shutdown() { calls.emplace_back("shutdown"); }
};

struct FakeLibrary : SharedLibrary {
    std::string missing;
    explicit FakeLibrary(std::string what) : missing(std::move(what)) {}
    void* find(const char* entry) override {
        if (missing == entry) return nullptr;
        const std::string_view name(entry);
        if (name == "initializeService") return reinterpret_cast<void*>(&Entries::initialize);
        if (name == "negotiate") return reinterpret_cast<void*>(&Entries::negotiate);
        if (name == "driveIdle") return reinterpret_cast<void*>(&Entries::driveIdle);
        return reinterpret_cast<void*>(&Entries::shutdown);
    }
};

}  // namespace

TEST(SharedObjects, EachMissingPartHasItsText) {
    const auto bound = ref_Make<STPTransport>(), free = ref_Make<STPTransport>();
    auto other = ref_Make<STPTransport>();
    ASSERT_TRUE(STPTransport::linkInProcess(*bound, *other));
    const struct {
        const char* missing;
        STPTransport* far;
        const char* text;
    } rows[] = {
        {"initializeService", nullptr, "Failed to get pointer to initialize function.\n"},
        {"shutdownService", nullptr, "Failed to get pointer to shutdownService function.\n"},
        {"negotiate", nullptr, "Failed to get pointer to neogiate function.\n"},
        {"driveIdle", nullptr, "Failed to get pointer to driveIdle function.\n"},
        {"", nullptr, "Unable to get handle to shared object transport.\n"},
        {"", bound.get(), "Unable to initialize loopback pair.\n"},
        {"", free.get(), "Unable to setup connection to shared object service.\n"},
    };
    for (const auto& row : rows) {
        Entries::far = row.far;
        Entries::connects = false;
        Entries::calls.clear();
        const ErrorStream errors;
        STPStatus status;
        {
            const auto service =
                SharedService::start(std::make_unique<FakeLibrary>(row.missing), "S", status);
            EXPECT_FALSE(service && service->connect(1, 2, status));
        }
        EXPECT_EQ(ErrorStream::text(), row.text);
        EXPECT_EQ(status.text + "\n", row.text);
        EXPECT_TRUE(Entries::calls.empty() || Entries::calls.back() == "shutdown");
    }
}

TEST(RouterPlace, OneRouterHasAZoneAndItsPortIsFoundWhileItLives) {
    const auto folder = std::filesystem::temp_directory_path() / ("cw_place_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    {
        RouterPlace place, second, other;
        EXPECT_EQ(routerPlace_Port("z/1"), std::nullopt);
        ASSERT_TRUE(place.take("z/1"));
        EXPECT_EQ(routerPlace_Port("z/1"), std::nullopt) << "it has not told its port yet";
        ASSERT_TRUE(place.tell(4711));
        EXPECT_EQ(routerPlace_Port("z/1"), 4711);
        EXPECT_FALSE(second.take("z/1"));
        EXPECT_TRUE(other.take("z_1"));
        EXPECT_EQ(routerPlace_File("z/1"), folder / "chronoweave-router.z_2f1");
    }
    EXPECT_EQ(routerPlace_Port("z/1"), std::nullopt);
    std::filesystem::remove_all(folder);
}
