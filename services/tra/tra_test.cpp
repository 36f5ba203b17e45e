// The analyzer's service with a client beside it, over a program that is a list of windows.
#include <gtest/gtest.h>

#include <list>

#include "services/generated/tra_service_client_impl.h"
#include "services/tra/tra_service_factory.h"
#include "shared/stp_transport/transport_testing.h"

struct TraWindow {
    uint32_t number;
    std::string file, title;
    const TRA_Server* owner = nullptr;
};

namespace {

// Writes down what it is asked, in few words.
struct Program : TraProgram {
    std::list<TraWindow> windows;
    std::string did;
    TraWindow* inFocus = nullptr;
    std::function<void()> inLoad;
    bool opens = true;

    TraWindow* open() override {
        did += " open";
        if (!opens) return nullptr;
        return &windows.emplace_back(TraWindow{static_cast<uint32_t>(windows.size() + 1), {}, {}});
    }
    TraWindow* find(const std::string& file) override {
        for (TraWindow& window : windows)
            if (window.file == file) return &window;
        return nullptr;
    }
    TraWindow* focused() override { return inFocus; }
    void load(TraWindow& window, const std::string& file) override {
        did += " load" + std::to_string(window.number);
        window.file = file;
        if (inLoad) inLoad();
    }
    bool lives(const TraWindow* window) override {
        for (const TraWindow& own : windows)
            if (&own == window) return true;
        return false;
    }
    void raise(TraWindow& window) override { did += " raise" + std::to_string(window.number); }
    void setTitle(TraWindow& window, const std::string& title) override { window.title = title; }
    void setOwner(TraWindow& window, TRA_Server& server) override { window.owner = &server; }
    uint32_t number(const TraWindow& window) override { return window.number; }
    void scroll(TraWindow& window, uint32_t object, const std::string& time) override {
        did += " scroll" + std::to_string(window.number) + ":" + std::to_string(object) + "@" + time;
    }
    void close(const std::string& file) override {
        windows.remove_if([&](const TraWindow& window) { return !file.empty() && window.file == file; });
    }
    void forget(const TRA_Server& server) override {
        for (TraWindow& window : windows)
            if (window.owner == &server) window.owner = nullptr;
    }
};

struct Client : TRA_client_Impl {
    uint32_t ability = 0;
    int asked = 0;
    std::vector<std::string> calls;
    TRA_CheckAbility_Reply CheckAbility(const TRA_CheckAbility_Request&) override {
        ++asked;
        return {.powerMmask = ability};
    }
    void RunCmdInDebugger(const TRA_RunCmdInDebugger_Request& request) override {
        calls.push_back(request.multiCmd);
    }
    TRA_ShowPositionInDebugger_Reply ShowPositionInDebugger(
        const TRA_ShowPositionInDebugger_Request& request) override {
        calls.push_back(request.time);
        return {};
    }
};

struct Analyzer : testing::Test {
    Program program;
    STPCallState calls[2];
    Gate gates[2];
    Ref<STPTransport> near, far;
    Ref<TRA_Server> server;
    Ref<Client> client = ref_Make<Client>();

    Analyzer() {
        auto [first, second] = STPTransport::createInProcessPair({.calls = &calls[0], .gate = &gates[0]},
                                                                 {.calls = &calls[1], .gate = &gates[1]});
        near = first;
        far = second;
        TRA_ServiceFactory factory("TRA", program);
        const auto made = factory.create({near, 2, 1, 0, {}});
        server = Ref<TRA_Server>(dynamic_cast<TRA_Server*>(made.get()));
        client->attach(far);
        EXPECT_TRUE(client->sendNegotiate(STPSpecClass::Blocking::Yes, nullptr));
        EXPECT_TRUE(server->negotiate(nullptr));
        EXPECT_TRUE(client->awaitTags(nullptr));
    }
    ~Analyzer() override {
        if (near->bound()) near->close();
        if (far->bound()) far->close();
    }
};

}  // namespace

TEST_F(Analyzer, OpensAndScrollsAsTheFlagsSay) {
    const struct {
        TRA_OpenFile_Request open;
        const char* did;
        uint32_t win;
    } opens[] = {
        {{.dataFile = ""}, "", 0},
        {{.dataFile = "a", .title = "T", .raiseWin = 1}, " open load1", 1},
        {{.dataFile = "a"}, "", 1},
        {{.dataFile = "a", .raiseWin = 1}, " raise1", 1},
        {{.dataFile = "a", .reload = 1, .raiseWin = 1}, " load1", 1},
        {{.dataFile = "a", .reload = 1, .newWin = 1}, " open load2", 2},
    };
    for (const auto& row : opens) {
        program.did.clear();
        EXPECT_EQ(client->OpenFile(row.open)->win, row.win) << row.did;
        EXPECT_EQ(program.did, row.did);
    }
    EXPECT_EQ(program.windows.front().title, "T");
    EXPECT_EQ(program.windows.back().owner, server.get());
    program.inFocus = &program.windows.back();
    program.windows.back().owner = nullptr;
    const struct {
        TRA_ScrollToPosition_Request scroll;
        const char* did;
        uint32_t win;
    } scrolls[] = {
        {{.oid = 7, .time = "0.5"}, " scroll2:7@0.5", 0},
        {{.dataFile = "none", .time = "1"}, "", 0},
        {{.dataFile = "a", .raiseWin = 1, .oid = 3, .time = "2"}, " raise1 scroll1:3@2", 1},
        {{.dataFile = "a", .reload = 1, .raiseWin = 1}, " load1", 1},
        {{.dataFile = "b", .newWinIfNotExist = 1, .time = "4"}, " open load3 scroll3:0@4", 3},
        {{.dataFile = "b", .newWin = 1, .newWinIfNotExist = 1}, " open load4", 4},
    };
    for (const auto& row : scrolls) {
        program.did.clear();
        EXPECT_EQ(client->ScrollToPosition(row.scroll)->win, row.win) << row.did;
        EXPECT_EQ(program.did, row.did);
    }
    EXPECT_EQ(std::next(program.windows.begin())->owner, nullptr) << "with no file nobody becomes an owner";
    program.opens = false;
    EXPECT_EQ(client->OpenFile({.dataFile = "c"})->win, 0u);
    EXPECT_TRUE(client->CloseFile({.dataFile = ""}));
    EXPECT_TRUE(client->CloseFile({.dataFile = "a"}));
    near->serviceOnce(std::chrono::milliseconds(0));
    EXPECT_EQ(program.windows.size(), 2u) << "both windows of the file are closed by one call";
}

TEST_F(Analyzer, AWindowOrAClientThatGoesDuringALoadIsNoHarm) {
    program.inLoad = [&] { program.windows.clear(); };
    EXPECT_EQ(client->OpenFile({.dataFile = "a", .title = "T"})->win, 0u);
    program.inLoad = [&] { server->setConnectionDown(); };
    RoundsRetry retry(3, [&] { far->serviceOnce(std::chrono::milliseconds(0)); });
    EXPECT_FALSE(client->OpenFile({.dataFile = "b"}, &retry));
    ASSERT_EQ(program.windows.size(), 1u);
    EXPECT_EQ(program.windows.front().owner, nullptr);
}

TEST_F(Analyzer, AbilitiesAreAskedOnceAFileAndAgainAfterAFailure) {
    client->ability = 6;
    EXPECT_TRUE(server->can(TraAbility::ShowsPosition, "a"));
    EXPECT_TRUE(server->can(TraAbility::RunsCommands, "a"));
    EXPECT_FALSE(server->can(TraAbility::Listens, "a"));
    EXPECT_FALSE(server->can(TraAbility::TimeTravel, "a"));
    EXPECT_EQ(client->asked, 1);
    server->abilities("b");
    server->abilities("a");
    EXPECT_EQ(client->asked, 3);
    server->setRetryHandler(std::make_unique<RoundsRetry>(0));
    EXPECT_EQ(server->abilities("c"), 0u);
    server->setRetryHandler(
        std::make_unique<RoundsRetry>(3, [&] { near->serviceOnce(std::chrono::milliseconds(0)); }));
    EXPECT_EQ(server->abilities("c"), 6u) << "a query that failed is asked again";
}

TEST_F(Analyzer, TheListHoldsEveryServerUntilTheProgramEnds) {
    EXPECT_EQ(TRA_Server::all().size(), 1u);
    {
        const auto second = ref_Make<TRA_Server>(program);
        EXPECT_EQ(TRA_Server::all().size(), 2u);
    }
    EXPECT_EQ(TRA_Server::all().size(), 1u);
    EXPECT_EQ(client->OpenFile({.dataFile = "a"})->win, 1u);
    far->close();
    near->serviceOnce(std::chrono::milliseconds(0));
    EXPECT_EQ(program.windows.front().owner, nullptr) << "a client that is gone owns nothing";
    TRA_Server::endAll();
    EXPECT_TRUE(TRA_Server::all().empty());
}

namespace {

struct TextLog : STPLog {
    std::string text;
    void write(const char* bytes, size_t length) override { text.append(bytes, length); }
};

}  // namespace

TEST_F(Analyzer, LogsWhatIsSentOverATransportThatHasFailed) {
    TextLog log;
    server->setLog(&log);
    const auto fail = [&] {
        EXPECT_FALSE(near->bindFD(-1)) << "it is bound: the misuse stays in its status";
    };
    fail();
    server->abilities("a");
    fail();
    server->ShowPositionInDebugger({.dataFile = "a"});
    fail();
    server->RunCmdInDebugger({.dataFile = "a"});
    for (const char* words : {"SEND FAILED: CheckAbility\n", "SEND FAILED: ShowPositionInDebugger\n",
                              "SEND FAILED: RunCmdInDebugger\n"})
        EXPECT_NE(log.text.find(words), std::string::npos) << words << " in " << log.text;
}

TEST_F(Analyzer, LogsEveryMessageByItsWords) {
    TextLog log;
    server->setLog(&log);
    client->OpenFile({.dataFile = "a"});
    client->ScrollToPosition({.dataFile = "a"});
    client->CloseFile({.dataFile = "a"});
    near->serviceOnce(std::chrono::milliseconds(0));
    server->abilities("a");
    server->ShowPositionInDebugger({.dataFile = "a"});
    server->RunCmdInDebugger({.dataFile = "a"});
    for (const char* words :
         {"RECV: OpenFile: ", "REPLY: OpenFile: ", "RECV: ScrollToPosition: ", "REPLY: ScrollToPosition: ",
          "RECV: CloseFile: ", "SEND: CheckAbility: ", "RECV: CheckAbility: ",
          "SEND: ShowPositionInDebugger: ", "RECV: ShowPositionInDebugger: ", "SEND: RunCmdInDebugger: "})
        EXPECT_NE(log.text.find(words), std::string::npos) << words << " in " << log.text;
}
