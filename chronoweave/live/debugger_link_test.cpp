// Both routes into a debugger, with a debugger and a host program that do what a script says.
#include "chronoweave/live/debugger_link.h"

#include <gtest/gtest.h>

#include <deque>

#include "chronoweave/traxfunc/session/canvas_testing.h"

namespace {

constexpr char probe[] = "route debugserver.name.tgtlnk forward_to_pr {}";

struct Service : DebuggerService {
    uint32_t bits = 0;
    bool reached = true;
    std::vector<std::string>* calls = nullptr;
    std::function<void()> inCall;
    uint32_t Abilities(const std::string&) override {
        if (inCall) inCall();
        return bits;
    }
    bool RunCommand(const std::string& file, const std::string& command, uint32_t, const std::string&,
                    uint32_t) override {
        calls->push_back("bus " + file + " " + command);
        return reached;
    }
    bool ShowPosition(const std::string& file, uint32_t id, const std::string& time, uint32_t pc) override {
        calls->push_back("show " + file + " " + std::to_string(id) + " " + time + " " + std::to_string(pc));
        return reached;
    }
};

struct Desk {
    LaGraph graph;
    EventTasks tasks;
    std::shared_ptr<Service> service;
    std::deque<int> answers;  // of the host program, 1 when they are used up
    bool plugin = true;
    std::string target;
    bool yes = true;
    std::vector<std::string> calls;
    std::unique_ptr<DebuggerLink> link;
    std::unique_ptr<_LaCanvasData> canvas;

    Desk() {
        canvas = std::make_unique<_LaCanvasData>(graph);
        DebuggerSurroundings around;
        around.tasks = &tasks;
        around.service = [this](const _LaCanvasData&) { return service; };
        around.file = [](const _LaCanvasData&) { return std::string("f.trr"); };
        around.plugin = [this]() -> std::function<uint8_t(const std::string&)> {
            if (!plugin) return {};
            return [this](const std::string& text) { return answer(text); };
        };
        around.dropPlugin = [this] {
            plugin = false;
            calls.emplace_back("drop");
        };
        around.target = [this](const _LaCanvasData&) { return target; };
        around.beep = [this] { calls.emplace_back("beep"); };
        around.error = [this](const std::string& text) { calls.push_back("error " + text); };
        around.question = [this](const std::string& text) {
            calls.push_back("ask " + text);
            return yes;
        };
        around.busy = [](bool) {};
        link = std::make_unique<DebuggerLink>(around);
        laDebugger_Set(*canvas, link.get());
    }
    uint8_t answer(const std::string& text) {
        calls.push_back(text);
        if (answers.empty()) return 1;
        const int status = answers.front();
        answers.pop_front();
        return static_cast<uint8_t>(status);
    }
    std::vector<std::string> take() { return std::exchange(calls, {}); }
    bool run(const std::string& command, DebuggerLink::ReportLost report = DebuggerLink::ReportLost::Yes,
             DebuggerLink::AutoConnect connect = DebuggerLink::AutoConnect::Allowed) {
        return link->RunDebuggerCommand(*canvas, command, report, connect);
    }
    void serve() { tasks.Run(EventTasks::Clock::now()); }
};

using Texts = std::vector<std::string>;

}  // namespace

TEST(DebuggerCommands, AreProbedOnceAndWrappedWhereTheProbeWasTaken) {
    Desk desk;
    EXPECT_TRUE(desk.run(""));
    EXPECT_EQ(desk.take(), Texts{});
    EXPECT_TRUE(desk.run("attach 0x1"));
    const std::string route = "route debugserver.name.tgtlnk forward_to_pr";
    EXPECT_EQ(desk.take(), (Texts{probe, route + " {attach 0x1}"}));
    EXPECT_TRUE(desk.run(route + " {x}"));
    EXPECT_EQ(desk.take(), Texts{route + " {x}"}) << "not wrapped twice";
    Desk plain;
    plain.answers = {0, 1};
    EXPECT_TRUE(plain.run("attach 0x1"));
    EXPECT_TRUE(plain.run("attach 0x2"));
    EXPECT_EQ(plain.take(), (Texts{probe, "attach 0x1", "attach 0x2"}));
}

TEST(DebuggerCommands, ALostConnectionIsToldOnceAndARefusalBeeps) {
    Desk desk;
    desk.answers = {0, 255};
    EXPECT_FALSE(desk.run("x"));
    EXPECT_EQ(desk.take(), (Texts{probe, "x", "drop", "beep", "error Plugin connection to VOREL is lost."}));
    EXPECT_FALSE(desk.run("x"));
    EXPECT_EQ(desk.take(), Texts{"beep"});
    EXPECT_FALSE(desk.run("x", DebuggerLink::ReportLost::No));
    EXPECT_EQ(desk.take(), Texts{});
    Desk refused;
    refused.answers = {0, 0};
    EXPECT_FALSE(refused.run("x"));
    EXPECT_EQ(refused.take(), (Texts{probe, "x", "beep"}));
}

TEST(DebuggerCommands, ARefusalTriesToConnectTheTarget) {
    Desk desk;
    desk.target = "board";
    desk.answers = {0, 0, 1, 0};
    EXPECT_FALSE(desk.run("x"));
    EXPECT_EQ(desk.take(), (Texts{probe, "x", "remote -noprocess tgtlnk -port udp@board", "x", "beep"}))
        << "the second try does not connect again, whatever comes of it";
    desk.yes = false;
    desk.answers = {0, 0};
    EXPECT_FALSE(desk.run("x"));
    EXPECT_EQ(
        desk.take(),
        (Texts{"x", "remote -noprocess tgtlnk -port udp@board",
               "ask Cannot automatically connect to \"board\" with tgtlnk. Try again next time?", "beep"}));
    desk.answers = {0};
    EXPECT_FALSE(desk.run("x"));
    EXPECT_EQ(desk.take(), (Texts{"x", "beep"})) << "the question does not come again, the command is sent";
}

TEST(GotoDebugger, GoesByTheHostProgramWithAnAddressElseByTheBus) {
    Desk desk;
    desk.answers = {0};
    EXPECT_EQ(desk.link->Goto(*desk.canvas, {0x10, 0.5, 0x401136}), "");
    EXPECT_EQ(desk.take(), (Texts{probe, "attach 0x10; route debugger.pid.16 e 0x401136"}));
    desk.answers = {0, 1};
    EXPECT_EQ(desk.link->Goto(*desk.canvas, {0x10, 0.5, 0x401136}), "");
    EXPECT_EQ(desk.take(),
              (Texts{"attach 0x10; route debugger.pid.16 e 0x401136", "beep", "__raisewindow; e 0x401136"}));
    desk.answers = {0, 0};
    EXPECT_EQ(desk.link->Goto(*desk.canvas, {0x10, 0.5, 0x401136}),
              "Failed to show task 0x10 at address 0x401136.");
    desk.take();
    EXPECT_EQ(desk.link->Goto(*desk.canvas, {0x10, 0.5, {}}), "The debugger does not show positions.");
    desk.service = std::make_shared<Service>();
    desk.service->calls = &desk.calls;
    desk.service->bits = 2;
    EXPECT_EQ(desk.link->Goto(*desk.canvas, {0x10, 0.1234567890123, {}}), "");
    EXPECT_EQ(desk.take(), Texts{"show f.trr 16 0.123456789012 0"});
}

TEST(DebuggerRoutes, AreChosenAtEachCommand) {
    Desk desk;
    desk.answers = {0};
    EXPECT_TRUE(desk.link->Attach(*desk.canvas, 0x10));
    EXPECT_EQ(desk.take(), (Texts{probe, "attach 0x10"}));
    desk.service = std::make_shared<Service>();
    desk.service->calls = &desk.calls;
    desk.service->bits = 15;
    EXPECT_TRUE(desk.link->Attach(*desk.canvas, 0x10));
    EXPECT_TRUE(desk.link->Rewindscope(*desk.canvas, 0x10));
    EXPECT_TRUE(desk.link->ShowPast(*desk.canvas, {0x10, 1.5, 0x20}));
    EXPECT_EQ(desk.take(), (Texts{"bus f.trr attach 0x10", "bus f.trr rewindscope -tid 0x10",
                                  "show f.trr 16 1.5 32", "bus f.trr rewindscope"}));
    const laDebuggerCan can = desk.link->Ask(*desk.canvas);
    EXPECT_TRUE(can.listens && can.shows && can.commands && can.timeTravel && can.link);
    desk.service->bits = 1;
    EXPECT_TRUE(desk.link->Attach(*desk.canvas, 0x10));
    EXPECT_EQ(desk.take(), Texts{"attach 0x10"}) << "a debugger that takes no commands";
    desk.plugin = false;
    EXPECT_FALSE(desk.link->Ask(*desk.canvas).attaches());
    EXPECT_FALSE(desk.link->Attach(*desk.canvas, 0x10));
}

TEST(DebuggerRoutes, AClickIsShownInADebuggerThatHasTheCanvas) {
    Desk desk;
    desk.link->PointLater(*desk.canvas, {0x10, 0.5, {}});
    desk.serve();
    EXPECT_EQ(desk.take(), Texts{}) << "nobody has it";
    desk.service = std::make_shared<Service>();
    desk.service->calls = &desk.calls;
    desk.link->PointLater(*desk.canvas, {0x10, 0.5, {}});
    desk.serve();
    EXPECT_EQ(desk.take(), Texts{}) << "it shows nothing";
    desk.service->bits = 2;
    desk.link->PointLater(*desk.canvas, {0x10, 0.5, {}});
    desk.link->PointLater(*desk.canvas, {0x10, 1.5, 0x20});
    desk.serve();
    EXPECT_EQ(desk.take(), Texts{"show f.trr 16 1.5 32"});
}

TEST(DebuggerRoutes, ClicksInTwoWindowsAreBothTold) {
    Desk desk;
    desk.service = std::make_shared<Service>();
    desk.service->calls = &desk.calls;
    desk.service->bits = Debugger_Shows;
    _LaCanvasData second(desk.graph);
    laDebugger_Set(second, desk.link.get());
    desk.link->PointLater(*desk.canvas, {1, 0.5, {}});
    desk.link->PointLater(second, {2, 1.5, {}});
    desk.serve();
    EXPECT_EQ(desk.take(), (Texts{"show f.trr 1 0.5 0", "show f.trr 2 1.5 0"}));
}

TEST(DebuggerRoutes, ACanvasThatGoesWithinAQuestionIsNoHarm) {
    const std::function<void(Desk&, bool& told)> asks[] = {
        [](Desk& desk, bool& told) {
            desk.link->AskLater(*desk.canvas, [&](const laDebuggerCan&) { told = true; });
        },
        [](Desk& desk, bool& told) {
            desk.link->GotoLater(*desk.canvas, {}, [&](const std::string&) { told = true; });
        },
        [](Desk& desk, bool&) { desk.link->PointLater(*desk.canvas, {}); },
        [](Desk& desk, bool& told) { told = desk.link->Attach(*desk.canvas, 1); },
    };
    for (const auto& ask : asks) {
        Desk desk;
        desk.service = std::make_shared<Service>();
        desk.service->calls = &desk.calls;
        desk.service->bits = 15;
        desk.service->inCall = [&] { desk.canvas.reset(); };
        bool told = false;
        ask(desk, told);
        desk.serve();
        EXPECT_FALSE(told);
        EXPECT_EQ(desk.canvas, nullptr);
        EXPECT_EQ(desk.take(), Texts{});
    }
    Desk stays;
    stays.service = std::make_shared<Service>();
    stays.service->bits = Debugger_Shows;
    bool shows = false;
    stays.link->AskLater(*stays.canvas, [&](const laDebuggerCan& can) { shows = can.shows; });
    stays.serve();
    EXPECT_TRUE(shows);
}

TEST(DebuggerRoutes, ACommandThatNobodyTakesIsSaidInTheWindow) {
    Desk desk;
    desk.plugin = false;
    laDebugger_Attach(*desk.canvas, *desk.link);
    const auto run = [&](const char* command) {
        const auto step = desk.canvas->calls.upper.commands.find(command)->second;
        return step("");
    };
    for (const char* command : {laDebugger_AttachHere, laDebugger_ShowHere, laDebugger_PastHere}) {
        desk.canvas->fields.message.clear();
        EXPECT_FALSE(run(command));
        EXPECT_EQ(desk.canvas->fields.message, "The debugger did not take the command.");
        EXPECT_EQ(desk.take(), Texts{"beep"});
    }
    desk.service = std::make_shared<Service>();
    desk.service->inCall = [&] { desk.canvas.reset(); };
    EXPECT_FALSE(run(laDebugger_AttachHere));
    EXPECT_EQ(desk.canvas, nullptr);
}

TEST(DebuggerAddress, IsTheNumberBehindItsMark) {
    const struct {
        const char* text;
        std::optional<uint64_t> address;
    } rows[] = {
        {"PC=0x401136", 0x401136}, {"x PC=12 y", 12}, {"PC=", {}}, {"pc=1", {}}, {"", {}}, {"PC=zz", {}}};
    for (const auto& row : rows) EXPECT_EQ(laDebugger_Address(row.text), row.address) << row.text;
}
