// The generated services over an in-process pair.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "libtrv/documented_bytes_testing.h"
#include "services/descriptions/service_table.h"
#include "services/generated/servicerouter_service_plugin_impl.h"
#include "services/generated/servicerouter_service_router_impl.h"
#include "services/generated/tra_service_client_impl.h"
#include "services/generated/tra_service_server_impl.h"
#include "shared/stp_transport/transport_testing.h"

namespace {

struct TextLog : STPLog {
    std::string text;
    void write(const char* bytes, size_t length) override { text.append(bytes, length); }
};

struct Server : TRA_server_Impl {
    std::vector<std::string> calls;
    std::function<void()> inOpen;

  protected:
    TRA_OpenFile_Reply OpenFile(const TRA_OpenFile_Request& request) override {
        calls.push_back("open " + request.dataFile + " as " + request.title);
        if (inOpen) inOpen();
        return {.win = 77 + request.newWin};
    }
    TRA_ScrollToPosition_Reply ScrollToPosition(const TRA_ScrollToPosition_Request& request) override {
        calls.push_back("scroll " + request.time);
        return {.win = request.oid};
    }
    void CloseFile(const TRA_CloseFile_Request& request) override {
        calls.push_back("close " + request.dataFile);
    }
};

struct Client : TRA_client_Impl {
    std::vector<std::string> calls;
    uint32_t ability = 6;

  protected:
    TRA_CheckAbility_Reply CheckAbility(const TRA_CheckAbility_Request&) override {
        return {.powerMmask = ability};
    }
    void RunCmdInDebugger(const TRA_RunCmdInDebugger_Request& request) override {
        calls.push_back("run " + request.multiCmd);
    }
    TRA_ShowPositionInDebugger_Reply ShowPositionInDebugger(
        const TRA_ShowPositionInDebugger_Request& request) override {
        calls.push_back("show " + request.time);
        return {};
    }
};

template <class One, class Other>
struct Pair {
    STPCallState calls[2];
    Gate gates[2];
    Ref<STPTransport> transports[2];
    Ref<One> one = ref_Make<One>();
    Ref<Other> other = ref_Make<Other>();
    Pair() {
        auto [first, second] = STPTransport::createInProcessPair({.calls = &calls[0], .gate = &gates[0]},
                                                                 {.calls = &calls[1], .gate = &gates[1]});
        transports[0] = first;
        transports[1] = second;
        one->attach(first);
        other->attach(second);
        EXPECT_TRUE(other->sendNegotiate(STPSpecClass::Blocking::Yes, nullptr));
        EXPECT_TRUE(one->negotiate(nullptr));
        EXPECT_TRUE(other->awaitTags(nullptr));
    }
};

}  // namespace

TEST(GeneratedTRA, TheDocumentedExampleByteForByte) {
    ScriptedEnd end;
    const auto server = ref_Make<Server>();
    server->attach(end.transport);
    server->assumeNegotiated();
    end->setLastSequence(6);
    const auto bytes = documented_Bytes("bus-reply");
    RoundsRetry retry(2, [&] { end.come(std::string(bytes.begin(), bytes.end())); });
    const auto answer = server->CheckAbility({.dataFile = "a.trr"}, &retry);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->powerMmask, 6u);
    const std::string written = end.script->takeWritten();
    EXPECT_EQ(std::vector<uint8_t>(written.begin(), written.end()), documented_Bytes("bus-request"));

    ScriptedEnd other;
    const auto client = ref_Make<Client>();
    client->attach(other.transport);
    client->assumeNegotiated();
    other->setLastSequence(8);
    const auto request = documented_Bytes("bus-request");
    other.come(std::string(request.begin(), request.end()));
    const std::string replied = other.script->takeWritten();
    EXPECT_EQ(std::vector<uint8_t>(replied.begin(), replied.end()), bytes);
}

TEST(GeneratedTRA, CallsGoBothWaysWithTheirFieldsAndLogs) {
    Pair<Server, Client> pair;
    TextLog sent, got;
    pair.other->setLog(&sent);
    pair.one->setLog(&got);
    pair.one->inOpen = [&] { EXPECT_EQ(pair.one->CheckAbility({.dataFile = "x"})->powerMmask, 6u); };
    const auto opened = pair.other->OpenFile({.dataFile = "a \"b\"\n.trr", .title = "T", .newWin = 1});
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->win, 78u);
    EXPECT_EQ(pair.other->ScrollToPosition({.oid = 9, .time = "0.25"})->win, 9u);
    EXPECT_TRUE(pair.other->CloseFile({.dataFile = "c"}));
    pair.transports[0]->serviceOnce(std::chrono::milliseconds(0));
    EXPECT_EQ(pair.one->calls,
              (std::vector<std::string>{"open a \"b\"\n.trr as T", "scroll 0.25", "close c"}));
    EXPECT_TRUE(pair.one->RunCmdInDebugger({.multiCmd = "attach"}, STPSend::NonBlocking));
    EXPECT_TRUE(pair.one->ShowPositionInDebugger({.time = "3"}));
    EXPECT_EQ(pair.other->calls, (std::vector<std::string>{"run attach", "show 3"}));
    EXPECT_EQ(
        sent.text.substr(0, sent.text.find('\n')),
        "SEND: OpenFile: dataFile:\"a \\\"b\\\"\\n.trr\" title:\"T\" reload:0x0 newWin:0x1 raiseWin:0x0 ");
    for (const char* line : {"RECV: OpenFile: win:0x4e \n", "RECV: CheckAbility: dataFile:\"x\" \n",
                             "REPLY: CheckAbility: powerMmask:0x6 \n", "SEND: CloseFile: dataFile:\"c\" \n"})
        EXPECT_NE(sent.text.find(line), std::string::npos) << line << sent.text;
    for (const char* line :
         {"REPLY: OpenFile: win:0x4e \n", "SEND: RunCmdInDebugger: dataFile:\"\" multiCmd:\"attach\""})
        EXPECT_NE(got.text.find(line), std::string::npos) << line << got.text;
}

namespace {

struct Plugin : ServiceRouter_plugin_Impl {
    std::vector<std::string> calls;

  protected:
    void ConnectionRequestedEvent(const ServiceRouter_ConnectionRequestedEvent_Request& request) override {
        calls.push_back("requested " + std::to_string(request.name_value_pairs.data.size()));
    }
    void ConnectionReplyEvent(const ServiceRouter_ConnectionReplyEvent_Request& request) override {
        calls.push_back("reply " + request.serviceName + std::to_string(request.wasFound));
    }
    void ConnectionDroppedEvent(const ServiceRouter_ConnectionDroppedEvent_Request&) override {}
    void LocationEvent(const ServiceRouter_LocationEvent_Request& request) override {
        calls.push_back(request.hostname + ":" + std::to_string(request.port));
    }
    void PluginId(const ServiceRouter_PluginId_Request&) override {}
    void PluginIdForServiceReplyEvent(const ServiceRouter_PluginIdForServiceReplyEvent_Request&) override {}
    void PluginConnectedEvent(const ServiceRouter_PluginConnectedEvent_Request&) override {}
    void StartPlugin(const ServiceRouter_StartPlugin_Request&) override {}
    void StartLogging(const ServiceRouter_StartLogging_Request&) override {}
    void RNBlockReservedEvent(const ServiceRouter_RNBlockReservedEvent_Request&) override {}
    void ForwardedRequestValueOfNameOnPlugin(
        const ServiceRouter_ForwardedRequestValueOfNameOnPlugin_Request&) override {}
    void ValueOfNameOnPluginEvent(const ServiceRouter_ValueOfNameOnPluginEvent_Request&) override {}
};

struct Router : ServiceRouter_router_Impl {
    std::vector<std::string> calls;

  protected:
    void RegisterServiceList(const ServiceRouter_RegisterServiceList_Request& request) override {
        for (const std::string& name : request.name_list.data) calls.push_back(name);
    }
    void SetWorkingDir(const ServiceRouter_SetWorkingDir_Request& request) override {
        calls.push_back(request.working_dir);
    }
    void StartPluginEvent(const ServiceRouter_StartPluginEvent_Request&) override {}
    void RequestServiceConnection(const ServiceRouter_RequestServiceConnection_Request&) override {}
    void ConnectionAcceptedEvent(const ServiceRouter_ConnectionAcceptedEvent_Request&) override {}
    void DropServiceConnection(const ServiceRouter_DropServiceConnection_Request&) override {}
    void RequestPluginLaunch(const ServiceRouter_RequestPluginLaunch_Request&) override {}
    void RequestLocation(const ServiceRouter_RequestLocation_Request&) override {
        LocationEvent({"here", 12});
    }
    void UnregisterService(const ServiceRouter_UnregisterService_Request&) override {}
    void SetEnvironmentVariable(const ServiceRouter_SetEnvironmentVariable_Request&) override {}
    void RequestPluginIdForService(const ServiceRouter_RequestPluginIdForService_Request&) override {}
    void RequestPluginConnect(const ServiceRouter_RequestPluginConnect_Request&) override {}
    void RequestServiceRouterDisconnect(
        const ServiceRouter_RequestServiceRouterDisconnect_Request&) override {}
    void LogMessageEvent(const ServiceRouter_LogMessageEvent_Request&) override {}
    void ReserveRNBlock(const ServiceRouter_ReserveRNBlock_Request&) override {}
    void ReleaseRN(const ServiceRouter_ReleaseRN_Request&) override {}
    void RequestValueOfNameOnPlugin(const ServiceRouter_RequestValueOfNameOnPlugin_Request&) override {}
    void ValueOfNameOnPluginResponseEvent(
        const ServiceRouter_ValueOfNameOnPluginResponseEvent_Request&) override {}
};

}  // namespace

TEST(GeneratedServiceRouter, BinaryMessagesAreAsDocumented) {
    const ServiceRouter_RegisterServiceList_Request list{{{"TRA", "b"}}};
    STPMessage message{{}, stp_WriteBody(STPBodyForm::Binary, "RegisterServiceList", list)};
    message.finish();
    EXPECT_EQ(std::vector<uint8_t>(message.body.begin(), message.body.end()),
              documented_Bytes("bus-service-list"));
}

namespace {

template <class Fields>
void expectDocumented(const char* name, const Fields& fields) {
    STPMessage message{{}, stp_WriteBody(STPBodyForm::Binary, name, fields)};
    message.finish();
    const std::vector<uint8_t> documented = documented_Bytes(std::string("bus-") + name);
    EXPECT_EQ(std::vector<uint8_t>(message.body.begin(), message.body.end()), documented) << name;
    const std::string bytes(documented.begin(), documented.end());
    EXPECT_EQ(stp_FieldsAsText(stp_ReadBody<Fields>(STPBodyForm::Binary, bytes)), stp_FieldsAsText(fields));
}

}  // namespace

#define EXPECT_DOCUMENTED(name, ...) expectDocumented(#name, ServiceRouter_##name##_Request __VA_ARGS__)

TEST(GeneratedServiceRouter, EachMessageIsDocumentedByteByByte) {
    EXPECT_DOCUMENTED(SetWorkingDir, {"/w"});
    EXPECT_DOCUMENTED(StartPluginEvent, {7, 1, ""});
    EXPECT_DOCUMENTED(RequestServiceConnection, {"TRA", 0, {{"a", "b"}}, "/w", 1, 7, 0, 1});
    EXPECT_DOCUMENTED(ConnectionRequestedEvent, {3, 0x101, 0x100, {{"service", "TRA"}}});
    EXPECT_DOCUMENTED(ConnectionAcceptedEvent, {0x101, 0x100, 1});
    EXPECT_DOCUMENTED(ConnectionReplyEvent, {"TRA", 0x100, 1, 0, 1, 0x101});
    EXPECT_DOCUMENTED(ConnectionDroppedEvent, {0x101, 0x100});
    EXPECT_DOCUMENTED(DropServiceConnection, {0x100, 0x101});
    EXPECT_DOCUMENTED(RequestPluginLaunch, {{{"x", "-a"}}, 7, 0, "/w"});
    EXPECT_DOCUMENTED(RequestLocation, {});
    EXPECT_DOCUMENTED(LocationEvent, {"localhost", 4711});
}

TEST(GeneratedServiceRouter, MessagesGoBothWays) {
    Pair<Plugin, Router> pair;
    EXPECT_TRUE(pair.one->RegisterServiceList({{{"TRA", "VOREL"}}}));
    EXPECT_TRUE(pair.one->SetWorkingDir({"/tmp"}));
    EXPECT_TRUE(pair.one->RequestLocation({}));
    pair.transports[1]->serviceOnce(std::chrono::milliseconds(0));
    EXPECT_EQ(pair.other->calls, (std::vector<std::string>{"TRA", "VOREL", "/tmp"}));
    EXPECT_TRUE(pair.other->ConnectionReplyEvent({.serviceName = "TRA", .wasFound = 1}));
    EXPECT_TRUE(pair.other->ConnectionRequestedEvent({.name_value_pairs = {{"a", "b", "c"}}}));
    pair.transports[0]->serviceOnce(std::chrono::milliseconds(0));
    EXPECT_EQ(pair.one->calls, (std::vector<std::string>{"here:12", "reply TRA1", "requested 3"}));
}

TEST(ServiceTable, HasEveryServiceOfTheSuite) {
    std::set<std::string> services;
    size_t messages = 0;
    for (const ServiceTableRow& row : service_Table()) {
        services.insert(row.service);
        for (const char* names : {row.receives, row.sends}) {
            std::istringstream words(names);
            for (std::string word; words >> word;) ++messages;
        }
    }
    EXPECT_EQ(services.size(), 16u);
    EXPECT_TRUE(services.contains("WhiteBoard") && services.contains("CheckoutBrowser"));
    EXPECT_GT(messages, 150u);
}
