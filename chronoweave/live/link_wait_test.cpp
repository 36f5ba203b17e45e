// The wait for a server among windows, which are a stand-in that lets things happen while it serves them.
#include "chronoweave/live/link_wait.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <map>

#include "shared/libcxxutil/byte_pipe.h"
#include "windlib/waits/wait_windows.h"

namespace {

using std::chrono::milliseconds;

class PolledWatches : public Watches {
  public:
    int add(int descriptor, WatchFor, std::function<void()> ready) override {
        watched[++last] = {descriptor, std::move(ready)};
        return last;
    }
    void remove(int number) override { watched.erase(number); }
    // Tells those that have something to read.
    void run() {
        for (const auto& [number, watch] : std::map(watched)) {
            pollfd entry{watch.first, POLLIN, 0};
            if (::poll(&entry, 1, 0) > 0) watch.second();
        }
    }
    std::map<int, std::pair<int, std::function<void()>>> watched;
    int last = 0;
};

class ServedWindows : public WaitWindows {
  public:
    explicit ServedWindows(PolledWatches& served) : watches(served) {}
    bool quitting() override { return quits; }
    bool hasDisplay() override { return display; }
    bool handlesEvents() override { return true; }
    bool serve(Serve what, milliseconds longest) override {
        EXPECT_EQ(what, Serve::Painting);
        ++served;
        pass(longest);
        return !fails;
    }
    void background(milliseconds longest) override {
        ++backgrounds;
        pass(longest);
    }
    void pass(milliseconds longest) {
        if (meanwhile) meanwhile();
        now += longest;
        watches.run();
    }
    void idle() override {}
    void serveTimers() override {}
    void abort() override {}
    void began(int handle) override { begun.push_back(handle); }
    void ended(int handle) override { over.push_back(handle); }
    bool waitDialogMode() override { return false; }
    WaitAnswer ask(const WaitQuestion&) override { return WaitAnswer::GoOn; }
    WaitAnswer askModeless(int, const WaitQuestion&) override { return WaitAnswer::GoOn; }
    void closeQuestion(int) override {}

    PolledWatches& watches;
    std::function<void()> meanwhile;
    LinkWait::Clock::time_point now{std::chrono::hours(1)};
    bool quits = false, display = true, fails = false;
    int served = 0, backgrounds = 0;
    std::vector<int> begun, over;
};

class ClockedWait : public WindowLinkWait {
  public:
    ClockedWait(Watches& watches, ServedWindows& windows)
        : WindowLinkWait(watches, windows), windows_(windows) {}
    Clock::time_point Now() override { return windows_.now; }

  private:
    ServedWindows& windows_;
};

class WindowLinkWaitTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(pipe_Make(pipe).ok()); }
    void say() const { EXPECT_EQ(::write(pipe.write.number(), "x", 1), 1); }
    milliseconds spent() const {
        return std::chrono::duration_cast<milliseconds>(windows.now -
                                                        LinkWait::Clock::time_point(std::chrono::hours(1)));
    }
    BytePipe pipe;
    PolledWatches watches;
    ServedWindows windows{watches};
    ClockedWait wait{watches, windows};
};

}  // namespace

TEST_F(WindowLinkWaitTest, EndsAsItMust) {
    using Came = LinkWait::Came;
    const auto stop = [this] { waitHandle_Stop(windows.begun.back()); };
    const struct {
        const char* name;
        std::function<void()> prepare, meanwhile;
        std::optional<milliseconds> longest;
        Came came;
        int served, spent;
    } rows[] = {
        {"there already", [this] { say(); }, {}, milliseconds(100), Came::Input, 0, 0},
        {"comes", {}, [this] { say(); }, milliseconds(5000), Came::Input, 1, 500},
        {"comes late",
         {},
         [this] {
             if (windows.served == 3) say();
         },
         std::nullopt,
         Came::Input,
         3,
         1500},
        {"the end of the pipe", {}, [this] { pipe.write.close(); }, std::nullopt, Came::Input, 1, 500},
        {"never", {}, {}, milliseconds(1200), Came::Nothing, 3, 1200},
        {"no time", {}, {}, milliseconds(0), Came::Nothing, 0, 0},
        {"Escape", {}, stop, std::nullopt, Came::Stopped, 1, 500},
        {"Escape with a limit", {}, stop, milliseconds(5000), Came::Stopped, 1, 500},
        {"the program ends", [this] { windows.quits = true; }, {}, std::nullopt, Came::Stopped, 0, 0},
        {"the windows fail", [this] { windows.fails = true; }, {}, std::nullopt, Came::Stopped, 1, 500},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(pipe_Make(pipe).ok());
        windows.quits = windows.fails = false;
        windows.served = 0;
        windows.now = LinkWait::Clock::time_point(std::chrono::hours(1));
        if (row.prepare) row.prepare();
        windows.meanwhile = row.meanwhile;
        wait.Begin();
        EXPECT_EQ(wait.ForInput(pipe.read, row.longest), row.came);
        EXPECT_EQ(windows.served, row.served);
        EXPECT_EQ(spent().count(), row.spent);
        EXPECT_TRUE(watches.watched.empty()) << "nobody watches the pipe any more";
        wait.End();
        EXPECT_EQ(windows.begun, windows.over);
        EXPECT_FALSE(waitHandle_Stop(windows.begun.back())) << "the wait is over";
    }
}

TEST_F(WindowLinkWaitTest, LastsFromBeginToEnd) {
    wait.Begin();
    wait.Begin();
    EXPECT_EQ(windows.begun.size(), 1u);
    EXPECT_TRUE(wait.GoesOn());
    EXPECT_EQ(windows.served, 1) << "an answer that keeps coming lets the windows paint";
    waitHandle_Stop(windows.begun.back());
    EXPECT_FALSE(wait.GoesOn());
    EXPECT_EQ(wait.ForInput(pipe.read, std::nullopt), LinkWait::Came::Stopped);
    wait.End();
    wait.End();
    EXPECT_EQ(windows.over, windows.begun);
    // Outside, as for what is said unasked, no window is served.
    const int served = windows.served;
    EXPECT_EQ(wait.ForInput(pipe.read, milliseconds(0)), LinkWait::Came::Nothing);
    say();
    EXPECT_EQ(wait.ForInput(pipe.read, milliseconds(0)), LinkWait::Came::Input);
    EXPECT_EQ(windows.served, served);
}

TEST_F(WindowLinkWaitTest, AWaitThatLastsIsToldOnce) {
    std::string told;
    wait.onLong = [&](LinkWait::Long what) { told += what == LinkWait::Long::Begins ? "long " : "over "; };
    const auto waitFor = [&](milliseconds longest) {
        wait.Begin();
        wait.ForInput(pipe.read, longest);
        wait.End();
        return std::exchange(told, {});
    };
    EXPECT_EQ(waitFor(milliseconds(300)), "");
    EXPECT_EQ(waitFor(milliseconds(3000)), "long over ");
    EXPECT_EQ(waitFor(milliseconds(300)), "");
}

TEST_F(WindowLinkWaitTest, WithoutADisplayTheRestIsServed) {
    windows.display = false;
    windows.meanwhile = [this] { say(); };
    wait.Begin();
    EXPECT_EQ(wait.ForInput(pipe.read, milliseconds(5000)), LinkWait::Came::Input);
    EXPECT_EQ(windows.served, 0);
    EXPECT_EQ(windows.backgrounds, 1);
}
