#include <gtest/gtest.h>

#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/transport_testing.h"
#include "windlib/waits/windlib_event_loop.h"
#include "windlib/waits/windlib_retry_handlers.h"

using namespace std::chrono_literals;

namespace {

// Windows that do what a test says, and write down what they were asked for.
struct FakeWindows : WaitWindows {
    bool quits = false, display = true, events = true, inputWorks = true, modeless = false;
    WaitAnswer answer = WaitAnswer::Stop;
    std::string done;
    std::vector<std::string> asked;
    std::vector<int> open;  // waits under way
    RetryHandler::Clock::time_point now{};

    bool quitting() override { return quits; }
    bool hasDisplay() override { return display; }
    bool handlesEvents() override { return events; }
    bool serve(Serve what, std::chrono::milliseconds longest) override {
        const char* const names[] = {"paint", "modal", "full"};
        done += names[static_cast<size_t>(what)] + std::to_string(longest.count()) + ' ';
        now += longest;
        return inputWorks;
    }
    void began(int handle) override { open.push_back(handle); }
    void ended(int handle) override { std::erase(open, handle); }
    void idle() override { done += "idle "; }
    void serveTimers() override { done += "timers "; }
    void background(std::chrono::milliseconds longest) override {
        done += "background" + std::to_string(longest.count()) + ' ';
    }
    void abort() override { done += "abort "; }
    bool waitDialogMode() override { return modeless; }
    WaitAnswer ask(const WaitQuestion& question) override {
        asked.push_back(question.text);
        return answer;
    }
    WaitAnswer askModeless(int handle, const WaitQuestion& question) override {
        asked.push_back(std::to_string(handle) + ": " + question.text);
        return answer;
    }
    void closeQuestion(int handle) override { done += "close" + std::to_string(handle) + ' '; }
    RetryHandler::Now clock() {
        return [this] { return now; };
    }
};

}  // namespace

TEST(WindLibRetryHandler, AsksWhenTheTimeIsOverAndFollowsTheSetting) {
    FakeWindows windows;
    int seconds = 2;
    WindLibRetryHandler retry(windows, "Reading", &seconds, std::nullopt, windows.clock());
    retry.start();
    EXPECT_TRUE(retry.keepTrying());
    windows.now += 2s;
    windows.answer = WaitAnswer::GoOn;
    EXPECT_TRUE(retry.keepTrying());
    EXPECT_EQ(windows.asked, std::vector<std::string>{"Reading, Terminate Connection?"});
    windows.now += 1999ms;  // the clock was started again
    EXPECT_TRUE(retry.keepTrying());
    windows.now += 1ms;
    windows.answer = WaitAnswer::Stop;
    EXPECT_FALSE(retry.keepTrying());
    retry.finish();
    seconds = 100;
    retry.start();
    windows.now += 99s;
    EXPECT_TRUE(retry.keepTrying());
    retry.requestStop();
    EXPECT_FALSE(retry.keepTrying());
    windows.quits = true;
    const size_t asked = windows.asked.size();
    EXPECT_FALSE(retry.keepTrying());
    EXPECT_EQ(windows.asked.size(), asked);  // a program that ends asks nothing
    retry.finish();
}

TEST(WindLibRetryHandler, NestedWaitsHaveHandlesOfTheirOwn) {
    FakeWindows windows;
    windows.modeless = true;
    WindLibRetryHandler retry(windows, "Reading", nullptr, std::nullopt, windows.clock());
    retry.start();
    const int outer = *retry.handle();
    retry.start();
    const int inner = *retry.handle();
    EXPECT_NE(outer, inner);
    EXPECT_TRUE(waitHandle_Stop(inner));
    EXPECT_FALSE(retry.keepTrying());
    EXPECT_EQ(windows.asked,
              std::vector<std::string>{std::to_string(inner) + ": Reading, Terminate Connection?"});
    windows.answer = WaitAnswer::GoOn;
    EXPECT_TRUE(retry.keepTrying());
    EXPECT_TRUE(retry.keepTrying());  // the stop is answered
    EXPECT_EQ(windows.asked.size(), 2u);
    retry.finish();
    EXPECT_EQ(retry.handle(), outer);
    EXPECT_TRUE(retry.keepTrying());
    retry.finish();
    EXPECT_FALSE(retry.handle());
    EXPECT_FALSE(waitHandle_Stop(outer));
    EXPECT_TRUE(windows.open.empty());
}

TEST(WindLibRetryHandler, ThreeRoundsInFourLetTheWindowSystemRun) {
    FakeWindows windows;
    WindLibRetryHandler retry(windows, "Reading", nullptr, std::nullopt, windows.clock());
    retry.start();
    for (int i = 0; i < 5; ++i) retry.wait();
    const std::string step = "paint500 idle timers ", rest = "idle timers ";
    EXPECT_EQ(windows.done, rest + step + step + step + rest);
    windows.done.clear();
    retry.setLimitsRate(false);
    for (int i = 0; i < 4; ++i) retry.wait();
    EXPECT_EQ(windows.done, step + step + step + step);
    windows.done.clear();
    // Where windows are not served something else takes the time: no round spins.
    windows.events = false;
    retry.wait();
    windows.display = false;
    retry.wait();
    EXPECT_EQ(windows.done, "background500 idle timers background500 idle timers ");
    windows.display = windows.events = true;
    windows.inputWorks = false;
    retry.wait();
    EXPECT_FALSE(retry.keepTrying());  // a failure stops, with the question
    EXPECT_EQ(windows.asked.size(), 1u);
}

TEST(WindLibRetryHandler, EventProcessingFormsDispatchEverything) {
    FakeWindows windows;
    ScriptedEnd end;
    STPWindLibEventProcessingRetryHandler retry(end.transport, windows, "Reading");
    retry.wait();
    retry.serves(WaitWindows::Serve::Modal);
    retry.wait();
    EXPECT_EQ(windows.done, "full500 modal500 ");
    windows.done.clear();
    windows.inputWorks = false;
    retry.wait();
    EXPECT_EQ(windows.done, "modal500 abort ");
    windows.done.clear();
    windows.display = false;
    retry.wait();
    EXPECT_EQ(windows.done, "background500 ");
}

TEST(WindLibRetryHandler, LostTransportsAndServicesEndWithoutAQuestion) {
    FakeWindows windows;
    ScriptedEnd end;
    static const STPServiceDescription waiting{"X", "x", "1", 0, 1, 2, {}, {}, {}};
    struct Service : STPSpecClass {
        Service() : STPSpecClass(waiting) {}
    };
    const auto service = ref_Make<Service>();
    service->attach(end.transport);
    STPWindLibRetryHandler byTransport(end.transport, windows, "Reading");
    ConnWindLibRetryHandler byService(*service, windows, "Reading");
    ConnWindLibEventProcessingRetryHandler processing(*service, windows, "Reading");
    STPWindLibRetryHandler none(Ref<STPTransport>(), windows, "Reading");
    WindLibRetryHandler* const all[] = {&byTransport, &byService, &processing};
    none.start();
    EXPECT_FALSE(none.keepTrying());
    for (WindLibRetryHandler* retry : all) {
        retry->start();
        EXPECT_TRUE(retry->keepTrying());
    }
    service->setLocalDown();
    EXPECT_TRUE(byService.keepTrying());
    service->setRemoteDown();
    EXPECT_TRUE(byTransport.keepTrying());
    EXPECT_FALSE(byService.keepTrying());
    EXPECT_FALSE(processing.keepTrying());
    end->close();
    EXPECT_FALSE(byTransport.keepTrying());
    EXPECT_TRUE(windows.asked.empty());
    processing.wait();
    EXPECT_EQ(windows.done, "full500 ");
}

TEST(WindLibRetryHandler, ACallThatTheUserTerminatesEndsAsATimeOut) {
    FakeWindows windows;
    ScriptedEnd end;
    STPWindLibRetryHandler retry(end.transport, windows, "Calling", nullptr, 3000ms, windows.clock());
    STPMessage message = end->newRequest(1, 2, STPKind::Text, 0, stpWantsReply);
    STPStatus status;
    EXPECT_EQ(end->awaitResponse(end->sendMessage(message, &retry), &retry, &status), nullptr);
    EXPECT_EQ(status.code, STPCode::TimeOut);
    EXPECT_EQ(windows.asked, std::vector<std::string>{"Calling, Terminate Connection?"});
    EXPECT_TRUE(end->bound());
}

TEST(ServiceRouterProxyStartup, AsksWithItsOwnWords) {
    FakeWindows windows;
    bool alive = true;
    ServiceRouterProxyStartup_RetryHandler retry([&] { return alive; }, windows, 1000ms, windows.clock());
    retry.start();
    EXPECT_TRUE(retry.keepTrying());
    windows.now += 1s;
    windows.answer = WaitAnswer::GoOn;
    EXPECT_TRUE(retry.keepTrying());
    ASSERT_EQ(windows.asked.size(), 1u);
    EXPECT_TRUE(
        windows.asked[0].starts_with("Unable to connect to the servicerouter. Would you like to continue "
                                     "waiting for aconnection to be established?"));
    EXPECT_TRUE(windows.asked[0].ends_with("Continue waiting for connection?"));
    waitHandle_Stop(*retry.handle());
    windows.answer = WaitAnswer::Stop;
    EXPECT_FALSE(retry.keepTrying());
    windows.display = false;
    EXPECT_FALSE(retry.keepTrying());
    EXPECT_EQ(windows.asked.size(), 2u);
    windows.display = true;
    alive = false;
    EXPECT_FALSE(retry.keepTrying());
    EXPECT_EQ(windows.asked.size(), 2u);
    const int handle = *retry.handle();
    EXPECT_EQ(windows.open, std::vector<int>{handle});
    retry.finish();
    EXPECT_FALSE(waitHandle_Stop(handle));
    EXPECT_TRUE(windows.open.empty());
}

TEST(WindlibEventLoop, DispatchesThenWaitsUntilTheNextTask) {
    FakeWindows windows;
    EventLoop loop;
    Gate gate;
    loop.gate = &gate;
    loop.now = windows.clock();
    struct Link : LoopLink {
        int left = 3;
        bool alive() override { return left-- > 0; }
        void serve() override {}
    } link;
    Windlib_EventLoop windlib(loop, link, windows);
    int ticks = 0;
    loop.tasks.Add(70ms, windows.now, [&] { return ++ticks > 0; });
    windlib.run();
    EXPECT_EQ(windows.done, "full0 full70 full0 full70 full0 full70 ");
    EXPECT_EQ(ticks, 2);
    std::string told;
    gen_set_report_sink([&](int, const std::string& line) { told += line; });
    loop.tasks.Once(0ms, windows.now, [] { return false; });
    link.left = 1000;
    windlib.run();
    gen_set_report_sink({});
    EXPECT_NE(told.find("Error occurred.\n"), std::string::npos);
    EXPECT_EQ(link.left, 999);
}
