// Services over an in-process pair: negotiation, guards, calls, commands, logs, loss and lifetime.
#include "shared/stp_transport/spec/spec_class.h"

#include <gtest/gtest.h>

#include <array>

#include "libtrv/documented_bytes_testing.h"
#include "shared/stp_transport/spec/service_conn_retry_handler.h"
#include "shared/stp_transport/transport_testing.h"

using namespace std::chrono_literals;

namespace {

constexpr std::array<STPTableRow, 3> serverReceives{{
    {"CloseFile", "dataFile:%str% ", 0, 0x02},
    {"OpenFile", "dataFile:%str% title:%str% reload:%num% newWin:%num% raiseWin:%num% | win:%num% ", 1, 0x81},
    {"ScrollToPosition",
     "dataFile:%str% reload:%num% newWin:%num% newWinIfNotExist:%num% raiseWin:%num% oid:%num% time:%str% | "
     "win:%num% ",
     2, 0x81},
}};
constexpr std::array<STPTableRow, 2> serverSends{{
    {"CheckAbility", "dataFile:%str% | powerMmask:%num% ", 0, 0x01},
    {"Forgotten", "", 1, 0x02},
}};
constexpr std::array<STPTableRow, 2> clientReceives{{
    {"Beyond", "x:%num% ", 0, 0x02},
    {"CheckAbility", "dataFile:%str% | powerMmask:%num% ", 5, 0x11},  // another number than the server's
}};
constexpr const char* clientTags[] = {"colour", "sound"};
constexpr const char* serverTags[] = {"light", "sound"};

const STPServiceDescription serverSide{"TRA", "server", "1", 0, 2, 1, serverReceives, serverSends, {}};
const STPServiceDescription clientSide{"TRA", "client", "1", 0, 1, 2, clientReceives, serverReceives, {}};
const STPServiceDescription taggedClient{"TRA",          "client",       "2",       1, 1, 2,
                                         clientReceives, serverReceives, clientTags};
const STPServiceDescription taggedServer{"TRA", "server",       "1",         0,         2,
                                         1,     serverReceives, serverSends, serverTags};

struct TextLog : STPLog {
    std::string text;
    int entries = 0;
    void write(const char* bytes, size_t length) override { text.append(bytes, length); }
    void beginEntry(const STPLogSource&, STPLogWay) override { ++entries; }
    void endEntry(const STPLogSource&, STPLogWay) override { --entries; }
};

struct Side : STPSpecClass {
    explicit Side(const STPServiceDescription& description) : STPSpecClass(description) {}
    ~Side() override {
        if (gone) *gone = true;
    }
    std::vector<std::pair<uint32_t, std::string>> seen;  // number, body
    std::function<void()> inHandler;
    int lost = 0;
    bool* gone = nullptr;

    using STPSpecClass::callOneWay;
    using STPSpecClass::callTwoWay;

  protected:
    void handleAscii(const STPMessage& message, STPMessage* reply, uint32_t number) override {
        seen.emplace_back(number, message.body.c_str());
        EXPECT_EQ(busy(), 1);
        if (inHandler) inHandler();
        if (reply) reply->body = "powerMmask:0x6 ";
    }
    uint32_t handleCommand(const STPMessage& message, STPMessage*, uint32_t number,
                           uint32_t action) override {
        seen.emplace_back(number, message.body.c_str());
        return action + 1;
    }
    void connectionLost() override { ++lost; }
};

// Two processes' ends of one in-process pair.
struct Pair {
    STPCallState calls[2];
    Gate gates[2];
    Ref<STPTransport> transports[2];
    Ref<Side> server, client;

    explicit Pair(const STPServiceDescription& one = serverSide,
                  const STPServiceDescription& other = clientSide) {
        auto [first, second] = STPTransport::createInProcessPair({.calls = &calls[0], .gate = &gates[0]},
                                                                 {.calls = &calls[1], .gate = &gates[1]});
        transports[0] = first;
        transports[1] = second;
        server = ref_Make<Side>(one);
        client = ref_Make<Side>(other);
        server->attach(first);
        client->attach(second);
    }
    void negotiate() {
        STPStatus status;
        EXPECT_TRUE(client->sendNegotiate(STPSpecClass::Blocking::Yes, nullptr));
        EXPECT_TRUE(server->negotiate(nullptr, &status)) << status.text;
        EXPECT_TRUE(client->awaitTags(nullptr));
    }
    STPMessagePtr checkAbility(RetryHandler* retry = nullptr, STPStatus* status = nullptr) {
        return server->callTwoWay(STPBodyForm::Text, 0, "CheckAbility dataFile:\"a.trr\" ",
                                  "dataFile:\"a.trr\" ", retry, status);
    }
};

void expectStatus(const STPStatus& status, STPCode code, const std::string& text) {
    EXPECT_EQ(status.code, code) << status.text;
    EXPECT_EQ(status.text, text);
}

}  // namespace

TEST(Negotiation, TagsAndFormatsAreAsDocumented) {
    EXPECT_EQ(negotiation_WriteTags(serverSide), documented_Text("bus-tags"));
    EXPECT_EQ(negotiation_WriteFormats(serverReceives), documented_Text("bus-formats"));
    const STPPeerTags tags = negotiation_ReadTags(documented_Text("bus-tags"));
    EXPECT_EQ(tags.name, "server");
    EXPECT_EQ(tags.version, "1");
    ASSERT_EQ(tags.messages.size(), 3u);
    EXPECT_EQ(tags.messages[2].name, "ScrollToPosition");
    EXPECT_EQ(tags.messages[2].id, 2u);
    EXPECT_EQ(tags.messages[2].flags, 0x81u);
}

TEST(Negotiation, MergesByNameAndKeepsWhatThePeerDidNotName) {
    std::vector<STPSendRow> rows{{"A", "", 0, 1, false, {}}, {"B", "", 1, 2, false, {}}};
    STPPeerTags peer;
    peer.messages = {{7, "Z", 1}, {9, "B", 5}, {10, "B", 6}};  // not sorted, and one twice
    const auto extra = negotiation_MergeMessages(rows, peer);
    EXPECT_EQ(rows[0], (STPSendRow{"A", "", 0, 1, false, {}}));
    EXPECT_EQ(rows[1], (STPSendRow{"B", "", 9, 5, true, {}}));
    ASSERT_EQ(extra.size(), 1u);
    EXPECT_EQ(extra[0].name, "Z");
    negotiation_ReadFormats(
        "msgs:(0x3 )[ { name:A fmt:\"x:%num% \"  }  { name:B fmt:\"bad\"  }  { name:C fmt:\"\"  }  ] ", rows);
    EXPECT_EQ(rows[0].peerFormat, "x:%num% ");
    EXPECT_EQ(rows[1].peerFormat, "");
}

TEST(SpecClass, CallsWaitForNegotiation) {
    STPStatus status;
    const auto alone = ref_Make<Side>(serverSide);
    EXPECT_FALSE(alone->sendNegotiate(STPSpecClass::Blocking::Yes, nullptr, &status));
    expectStatus(status, STPCode::Misuse, "[sendNegotiate]: cannot send with NULL transport");
    EXPECT_FALSE(alone->awaitTags(nullptr, &status));
    expectStatus(status, STPCode::Misuse, "[awaitTags]: cannot receive tags on NULL transport");
    EXPECT_EQ(alone->callTwoWay(STPBodyForm::Text, 0, "", "", nullptr, &status), nullptr);
    expectStatus(status, STPCode::Misuse, "Attempted send before negotiation is complete.");

    Pair pair;
    EXPECT_EQ(pair.checkAbility(nullptr, &status), nullptr);
    expectStatus(status, STPCode::Misuse, "Attempted send before negotiation is complete.");
    EXPECT_EQ(pair.transports[0]->census().outBytes, 0u);
    RoundsRetry silent(2);
    EXPECT_FALSE(pair.server->awaitTags(&silent, &status));
    expectStatus(status, STPCode::TimeOut, "awaitNegotiate: timed out waiting for reply.");
    pair.negotiate();
    EXPECT_EQ(pair.server->sendTable()[0].id, 5u);
    EXPECT_TRUE(pair.server->sendTable()[0].namedByPeer);
    ASSERT_EQ(pair.server->extraTable().size(), 1u);
    EXPECT_EQ(pair.server->extraTable()[0].name, "Beyond");
    EXPECT_EQ(pair.client->peer().name, "server");
    // Messages that the peer did not name go only to one that takes such.
    EXPECT_FALSE(pair.server->callOneWay(STPBodyForm::Text, 1, "", "", STPSend::Blocking, nullptr, &status));
    expectStatus(status, STPCode::Unsupported, "[send]: sending a message the other side does not support");
    pair.server->setRemoteDown();
    EXPECT_EQ(pair.checkAbility(nullptr, &status), nullptr);
    expectStatus(status, STPCode::Connection, "[send]: virtual connection is down");
    EXPECT_FALSE(pair.server->awaitTags(nullptr, &status));
    expectStatus(status, STPCode::Connection, "[awaitTags]: virtual connection is down");
    pair.server->setLocalDown();
    EXPECT_FALSE(pair.server->sendNegotiate(STPSpecClass::Blocking::No, nullptr, &status));
    expectStatus(status, STPCode::Connection, "[sendNegotiate]: virtual connection is down");
    EXPECT_EQ(pair.server->lost, 1);
}

TEST(SpecClass, EarlyTagsTagMapsFormatsAndAcknowledge) {
    Pair pair(taggedServer, taggedClient);
    // The client's tags come while the server is not attached.
    pair.server->attach({});
    EXPECT_TRUE(pair.client->sendNegotiate(STPSpecClass::Blocking::Yes, nullptr));
    pair.transports[0]->serviceOnce(0ms);
    EXPECT_EQ(pair.transports[0]->census().unclaimed, 1u);
    pair.server->attach(pair.transports[0]);
    EXPECT_TRUE(pair.server->negotiate(nullptr));
    EXPECT_EQ(pair.server->peerTagMap(), (std::vector<std::optional<uint32_t>>{std::nullopt, 1u}));
    EXPECT_EQ(pair.server->peer().flags, 1u);
    EXPECT_TRUE(pair.client->awaitTags(nullptr));
    STPStatus status;
    EXPECT_TRUE(pair.client->requestFormats(nullptr, &status)) << status.text;
    EXPECT_TRUE(pair.client->formatsKnown());
    EXPECT_EQ(pair.client->sendTable()[1].peerFormat, serverReceives[1].format);
    // Each tells the other that it is done.
    RoundsRetry both(5, [&] {
        RoundsRetry none(0);
        pair.client->awaitNegotiate(&none);
        pair.transports[0]->serviceOnce(0ms);
    });
    EXPECT_TRUE(pair.server->awaitNegotiate(&both, &status)) << status.text;
    RoundsRetry none(1);
    EXPECT_FALSE(pair.server->awaitNegotiate(&none, &status));  // the acknowledge was used up
    expectStatus(status, STPCode::TimeOut, "awaitNegotiate: timed out waiting for reply.");
}

TEST(SpecClass, CallsReachThePeerByNumberOrByNameAndAreLogged) {
    Pair pair;
    pair.negotiate();
    TextLog log;
    pair.server->setLog(&log);
    STPStatus status;
    const STPMessagePtr reply = pair.checkAbility(nullptr, &status);
    ASSERT_NE(reply, nullptr) << status.text;
    EXPECT_STREQ(reply->body.c_str(), "powerMmask:0x6 ");
    EXPECT_EQ(log.text, "SEND: CheckAbility: dataFile:\"a.trr\" \n");
    EXPECT_EQ(log.entries, 0);
    ASSERT_EQ(pair.client->seen.size(), 1u);
    EXPECT_EQ(pair.client->seen[0].first, 5u);
    const auto sendByName = [&](const std::string& body) {
        STPMessage message = pair.transports[0]->newRequest(2, 1, STPKind::Text, stpNoTag, stpOneWay);
        message.body = body;
        pair.transports[0]->sendMessage(message, nullptr);
        pair.transports[1]->serviceOnce(0ms);
    };
    sendByName("CheckAbility x:1 ");
    sendByName("CheckAbilityToo x:1 ");
    EXPECT_EQ(pair.client->seen[1].first, 5u);
    EXPECT_EQ(pair.client->seen[2].first, stpNoTag);
    // One that is not to block is only enqueued.
    EXPECT_TRUE(pair.client->callOneWay(STPBodyForm::Text, 0, "CloseFile dataFile:\"b\" ", "",
                                        STPSend::NonBlocking, nullptr, &status));
    EXPECT_EQ(pair.server->seen.size(), 0u);
    pair.transports[0]->serviceOnce(0ms);
    EXPECT_EQ(pair.server->seen.size(), 1u);
    EXPECT_EQ(pair.server->busy() + pair.client->busy(), 0);
}

TEST(SpecClass, ForegroundIsAskedForByWhoSendsAndTakenByWhoReceives) {
    Pair pair;
    pair.negotiate();
    int allowed = 0, taken = 0;
    stp_ForegroundHooks() = {[&] { return ++allowed > 1; }, [&] { ++taken; }, 0};
    for (int i = 0; i < 2; ++i)
        EXPECT_NE(pair.client->callTwoWay(STPBodyForm::Text, 1, "OpenFile ", "", nullptr, nullptr), nullptr);
    EXPECT_NE(pair.checkAbility(), nullptr);
    EXPECT_EQ(allowed, 2);
    EXPECT_EQ(taken, 2);
    EXPECT_EQ(stp_ForegroundHooks().failures, 1u);
    stp_ForegroundHooks() = {};
}

TEST(SpecClass, CommandsAreFreeTextWithANumber) {
    Pair pair;
    pair.negotiate();
    TextLog log;
    pair.client->setLog(&log);
    EXPECT_EQ(pair.client->sendCommand("go __action:0x9 there", 3, nullptr), 4u);
    EXPECT_EQ(pair.server->seen[0].second, "go __action:0x9 there __action:0x3 ");
    EXPECT_EQ(log.text,
              "SEND: STPCommandSystemMessage: go __action:0x9 there [3]\n"
              "RECV: STPCommandSystemMessage: go __action:0x9 there [4]\n");
}

TEST(SpecClass, WhatNoClassExpectsIsReported) {
    Pair pair;
    std::string told;
    gen_set_report_sink([&](int, const std::string& line) { told += line; });
    struct Bare : STPSpecClass {
        Bare() : STPSpecClass(serverSide) {}
    };
    const auto bare = ref_Make<Bare>();
    pair.server->attach({});
    bare->attach(pair.transports[0]);
    for (const STPKind kind : {STPKind::Text, STPKind::Binary, STPKind::Command}) {
        STPMessage message = pair.transports[1]->newRequest(1, 2, kind, 0, stpOneWay);
        pair.transports[1]->sendMessage(message, nullptr);
    }
    pair.transports[0]->serviceOnce(0ms);
    STPMessage odd{header_Text(1), {}};
    odd.header.kind = 16;
    STPSpecClass_HandleMessages(*bare).handleMessage(odd, true);
    gen_set_report_sink({});
    for (const char* text : {"unexpected stp ascii message", "unexpected stp binary message",
                             "unexpected stp command message", "oops"})
        EXPECT_NE(told.find(text), std::string::npos) << text;
}

TEST(SpecClass, TheLossOfTheConnectionIsToldOnce) {
    Pair pair;
    pair.negotiate();
    pair.transports[1]->close();
    pair.transports[0]->serviceOnce(0ms);
    EXPECT_EQ(pair.server->lost, 1);
    EXPECT_EQ(pair.client->lost, 1);
    pair.server->setConnectionDown();
    EXPECT_EQ(pair.server->lost, 1);
    EXPECT_FALSE(pair.server->localUp() || pair.server->remoteUp());
    TextLog log;
    pair.server->setLog(&log);
    STPStatus status;
    EXPECT_EQ(pair.checkAbility(nullptr, &status), nullptr);
    expectStatus(status, STPCode::Connection, "[send]: virtual connection is down");
    EXPECT_EQ(log.text, "");
}

TEST(SpecClass, AFailedSendIsLoggedAsOne) {
    ScriptedEnd end;
    const auto side = ref_Make<Side>(serverSide);
    side->attach(end.transport);
    side->assumeNegotiated();
    TextLog log;
    side->setLog(&log);
    end.script->failWrite(SocketError::Reset);
    STPStatus status;
    // The connection is lost, but nothing told the service of it: it is not the transport's handler any more.
    side->attach({});
    side->attach(end.transport);
    end->unregisterHandler(*std::make_unique<NotingHandler>());
    EXPECT_EQ(side->callTwoWay(STPBodyForm::Text, 0, "x ", "", nullptr, &status), nullptr);
    EXPECT_EQ(status.text, "[handleWrite]: Virtual circuit reset");
    EXPECT_EQ(side->lost, 1);
}

TEST(SpecClass, RetryHandlersOfServicesEndWithBothEndsDown) {
    Pair pair;
    ServiceConnRetryHandler retry(*pair.server);
    retry.start();
    EXPECT_TRUE(retry.keepTrying());
    pair.server->setLocalDown();
    EXPECT_TRUE(retry.keepTrying());
    pair.server->setRemoteDown();
    EXPECT_FALSE(retry.keepTrying());
    // A handler from outside stays when the class attaches.
    const auto other = ref_Make<Side>(serverSide);
    auto own = std::make_unique<RoundsRetry>(1);
    RetryHandler* const given = own.get();
    other->setRetryHandler(std::move(own));
    other->attach(pair.transports[0]);
    EXPECT_EQ(other->getRetryHandler(), given);
}

TEST(SpecClass, AServiceMayBeGivenUpWhileItsCallWaits) {
    Pair pair;
    pair.negotiate();
    bool gone = false;
    pair.server->gone = &gone;
    pair.client->inHandler = [&] {
        pair.server = {};
        EXPECT_FALSE(gone);
    };
    STPStatus status;
    EXPECT_NE(pair.checkAbility(nullptr, &status), nullptr) << status.text;
    EXPECT_TRUE(gone);
    EXPECT_EQ(pair.transports[0]->census().handlers, 0u);
    EXPECT_EQ(pair.calls[0].messageDepth, 0);
}

TEST(SpecClass, DeferredMessagesHoldTheService) {
    Pair pair;
    pair.negotiate();
    bool gone = false;
    pair.server->gone = &gone;
    Gate::Token dialog = pair.gates[0].Begin(GateWork::ModalDialog);
    for (int i = 0; i < 3; ++i)
        pair.client->callOneWay(STPBodyForm::Text, 0, "CloseFile ", "", STPSend::Blocking, nullptr, nullptr);
    pair.transports[0]->serviceOnce(0ms);
    EXPECT_EQ(pair.server->deferredCount(), 3);
    Side* const raw = pair.server.get();
    pair.server = {};
    EXPECT_FALSE(gone);
    raw->inHandler = [&] { EXPECT_FALSE(gone); };
    dialog.End();
    pair.gates[0].RunHeld();
    EXPECT_TRUE(gone);
}

TEST(Logs, FilesTimesAndForwardedEntries) {
    using std::chrono::system_clock;
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    const STPLogSource source{"TRA", 2};
    {
        TimestampedSTPFileLog log(file, STPFileLog::Owns::No,
                                  [] { return system_clock::time_point(std::chrono::milliseconds(12007)); });
        log.beginEntry(source, STPLogWay::Send);
        log.printf("%s %d\n", "entry", 1);
        log.puts(std::string(1000, 'x'));
        log.endEntry(source, STPLogWay::Send);
    }
    std::rewind(file);
    std::string text(2000, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    EXPECT_EQ(text, "12.007:entry 1\n" + std::string(1000, 'x'));
    std::vector<std::string> sent;
    ForwardingSTPLog forwarding([&](const std::string& entry) { sent.push_back(entry); });
    forwarding.beginEntry(source, STPLogWay::Receive);
    forwarding.puts("RECV: ");
    forwarding.puts("x\n");
    EXPECT_TRUE(sent.empty());
    forwarding.endEntry(source, STPLogWay::Receive);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_NE(sent[0].find(":2: RECV: x\n"), std::string::npos);
}
