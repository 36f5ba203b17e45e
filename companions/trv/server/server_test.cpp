#include "companions/trv/server/server.h"

#include "companions/trv/server/live_file.h"
#include "companions/trv/server/replies.h"
#include "companions/trv/server/server_testing.h"
#include "companions/trv/server/words.h"
#include "libtrv/byte_order.h"

namespace {

using namespace std::chrono_literals;

// What a scripted target gives at its next polls; each call of poll takes the first.
struct Script {
    struct Given {
        std::vector<TestEvent> events;
        TargetPoll poll;
    };
    std::vector<Given> polls;
    std::vector<TestEvent> atStop;
    Result start;
    int connects = 0, starts = 0, stops = 0, gone = 0;
};

void put(const std::vector<TestEvent>& events, RawWriter& out) {
    for (const TestEvent& event : events) {
        RawWriter object(false);
        object.put32(event.object);
        std::vector<uint8_t> extra = object.take();
        extra.insert(extra.end(), event.extra.begin(), event.extra.end());
        EXPECT_TRUE(out.event(event.time, event.type, event.subtype, extra));
    }
}

class ScriptedTarget : public Target {
  public:
    ScriptedTarget(Script& script, std::string name)
        : script_(script), facts_(target_NanosecondFacts(std::move(name))) {}
    ~ScriptedTarget() override { ++script_.gone; }
    const TargetFacts& facts() const override { return facts_; }
    Result start(Instant) override {
        ++script_.starts;
        return script_.start;
    }
    TargetPoll poll(Instant now, RawWriter& out) override {
        if (script_.polls.empty()) return {TargetPoll::State::Waiting, now + 20ms, 0, {}};
        const Script::Given given = script_.polls.front();
        script_.polls.erase(script_.polls.begin());
        put(given.events, out);
        return given.poll;
    }
    TargetPoll stop(Instant, RawWriter& out) override {
        ++script_.stops;
        put(std::exchange(script_.atStop, {}), out);
        return {};
    }

  private:
    Script& script_;
    TargetFacts facts_;
};

class ServerTest : public TargetTest {
  protected:
    ServerTest()
        : server_(
              [this](const std::string& text, Connection& connection) {
                  ++script_.connects;
                  if (text.starts_with("no")) return Result::failure("there is no " + text);
                  connection.target = std::make_unique<ScriptedTarget>(script_, text);
                  connection.recorder = std::make_unique<LiveFile>(connection.target->facts());
                  return Result();
              },
              "ready") {
        said();
    }
    std::string said() {
        std::string text(server_.output());
        server_.written(text.size());
        return text;
    }
    // What is answered to a line.
    std::string ask(const std::string& line) {
        server_.input(line + '\n', now());
        return said();
    }
    void step(std::chrono::milliseconds after = 20ms) {
        pass(after);
        server_.step(now());
    }
    static Script::Given given(std::vector<TestEvent> events,
                               TargetPoll::State state = TargetPoll::State::More) {
        return {std::move(events), {state, {}, 0, {}}};
    }

    Script script_;
    Server server_;
};

// The words that a client waits for, and no others, where a command was done; in none of the refusals.
TEST_F(ServerTest, AnswersWithTheWordsAndOnePrompt) {
    const std::string file = path("established enabled disabled.trr");
    const struct {
        std::string line, expected;
        bool isDone;
    } cases[] = {
        {"c nowhere established", "established", false},
        {"g", "event logging: on", false},
        {"s", "event logging: off", false},
        {"l " + file, "enabled", false},
        {"n", "disabled", false},
        {"d", "disconnected from", false},
        {"M 0x10", "Target Event Log Mask:", false},
        {"info", "Target", false},
        {"c somewhere", "established", true},
        {"c elsewhere", "established", false},
        {"g", "event logging: on", true},
        {"l /nowhere/enabled.trr", "enabled", false},
        {"l " + file, "enabled", true},
        {"l " + file, "enabled", false},
        {"n", "disabled", true},
        {"M 0x3f", "Target Event Log Mask: 0x0000003f\n", true},
        {"M x", "Target Event Log Mask:", false},
        {"M 0x100000000", "Target Event Log Mask:", false},
        {"info", "Target Event Log Mask: 0x0000003f\n", true},
        {"s", "event logging: off", true},
        {"d", "disconnected from", true},
        {"x enabled established", "established", false},
        {"", "x", false},
        {"help", "connect", true},
    };
    for (const auto& c : cases) {
        const std::string answer = ask(c.line);
        EXPECT_EQ(answer.find(c.expected) != std::string::npos, c.isDone) << c.line << "\n" << answer;
        EXPECT_EQ(answer.find("> "), answer.size() - 2) << answer;
    }
    EXPECT_EQ(script_.connects, 2);
    EXPECT_EQ(script_.gone, 1);
}

// Who starts the logging alone would wait for events in vain.
TEST_F(ServerTest, SaysWhereTheEventsGoWhileLiveModeIsOff) {
    const std::string hint = "nothing is written";
    ask("c t");
    EXPECT_NE(ask("g").find(hint), std::string::npos);
    ask("l " + path("live.trr"));
    EXPECT_EQ(ask("g").find(hint), std::string::npos);
}

TEST_F(ServerTest, SaysNothingUnaskedButWhatHappened) {
    EXPECT_EQ(ask("c t").find("ready"), std::string::npos);
    ask("g");
    script_.polls = {{{{5, 4, 0, 1, {}}}, {TargetPoll::State::More, {}, 0, {"> a note\xff\nof two"}}},
                     {{}, {TargetPoll::State::Waiting, now() + 1h, 3, {}}},
                     {{}, {TargetPoll::State::Ended, {}, 0, {}}}};
    step();
    EXPECT_EQ(said(), " > a note\uFFFD\nof two\n");
    step();
    EXPECT_EQ(said(), "The system lost 3 events.\n");
    step();
    EXPECT_EQ(said(), "") << "it was not yet time";
    step(1h);
    EXPECT_EQ(said(), "The target has ended: 2 events, 3 lost\n");
    EXPECT_FALSE(server_.next().has_value());
    EXPECT_NE(ask("g").find("anew"), std::string::npos);
}

TEST_F(ServerTest, TakesCommandsInAnyPieces) {
    server_.input("c so", now());
    EXPECT_EQ(said(), "");
    server_.input("mewhere\r\n\ng", now());
    EXPECT_NE(said().find("Target: somewhere\n"), std::string::npos);
    server_.input("\ns\n", now());
    const std::string both = said();
    EXPECT_LT(both.find("logging: on"), both.find("logging: off"));
    EXPECT_EQ(ask(std::string(20000, 'c')), "The command is too long\n> ");
    server_.input("\nq\nc t\n", now());
    EXPECT_TRUE(server_.isDone());
    EXPECT_EQ(said(), "> ") << "nothing behind q";
    EXPECT_EQ(script_.gone, 1);
}

TEST_F(ServerTest, TheEndOfTheInputEndsIt) {
    ask("c t");
    ask("g");
    script_.atStop = {{9, 4, 0, 1, {}}};
    ask("l " + path("a.trr"));
    server_.inputEnded(now());
    EXPECT_TRUE(server_.isDone());
    EXPECT_EQ(script_.stops, 1);
    EXPECT_EQ(events_in(path("a.trr")).size(), 1u);
}

// The file holds what came since live mode began, and ahead of it what was known then.
TEST_F(ServerTest, WritesWholeRecordsAndWhatWasKnownBefore) {
    ask("c t");
    ask("g");
    std::vector<uint8_t> name(4 + mt_NameSize);
    name[0] = 7;
    name[4] = 'a';
    script_.polls = {given({{100, mt_Refresh, 2, 0x401, name}, {110, mt_TaskChange, 0, 0x401, {}}}),
                     given({{120, mt_UserEvent, 1, 0x401, {}}})};
    step();
    ask("l " + path("a.trr"));
    auto events = events_in(path("a.trr"));
    ASSERT_EQ(events.size(), 1u);
    EXPECT_TRUE(events[0].is(mt_Refresh, mt_Running) && events[0].time == 120 && events[0].text(8) == "a")
        << "enabling takes what is there first";
    script_.polls = {given({{130, mt_UserEvent, 1, 0x401, {}}}, TargetPoll::State::Waiting)};
    step();
    EXPECT_EQ(events_in(path("a.trr")).size(), 1u);
    step(50ms);
    EXPECT_EQ(events_in(path("a.trr")).size(), 2u);
}

TEST_F(ServerTest, AMaskKeepsKindsBackAndStatesAreToldAnewWithTheNext) {
    ask("c t");
    ask("g");
    ask("l " + path("a.trr"));
    ask("M 0x10");
    script_.polls = {given({{10, mt_StatusChange, 2, 0x401, {}},
                            {11, mt_UserEvent, 1, 0x401, {}},
                            {12, mt_TaskChange, 0, 0x401, {}},
                            {13, mt_UserEvent, 2, 0x401, {}},
                            {14, mt_Timer, 0, 0x401, {}}})};
    step();
    ask("M 0x3fff");
    ask("n");
    const auto events = events_in(path("a.trr"));
    ASSERT_EQ(events.size(), 3u);
    EXPECT_TRUE(events[0].is(mt_UserEvent, 1) && events[1].is(mt_UserEvent, 2));
    EXPECT_TRUE(events[2].is(mt_StatusChange, mt_Running) && events[2].time == 14);
    EXPECT_NE(ask("info").find("Logged: 5 events, 3 of them not kept"), std::string::npos);
}

TEST_F(ServerTest, AFileThatCanNoLongerBeWrittenEndsLiveModeAlone) {
    ask("c t");
    ask("g");
    ask("l " + path("a.trr"));
    std::filesystem::remove(path("a.trr"));
    script_.polls = {given({{10, mt_UserEvent, 1, 1, {}}})};
    step();
    step(50ms);
    EXPECT_EQ(said(), reply_Lines("Live mode ended: " + path("a.trr") + ": it was removed"));
    EXPECT_NE(ask("l " + path("a.trr")).find("enabled"), std::string::npos);
}

TEST(Replies, AreShortLinesThatLookLikeNoPrompt) {
    const std::string lines = reply_Lines(std::string(300, 'x') + "\n> y\n" + std::string(130, ' ') + "z");
    std::string_view rest = lines;
    for (size_t end; !rest.empty(); rest.remove_prefix(end + 1)) {
        end = rest.find('\n');
        EXPECT_LT(end, reply_MostBytes);
        EXPECT_FALSE(rest.starts_with("> "));
    }
    // A character of several bytes is not cut.
    for (size_t ahead = 110; ahead < 125; ++ahead) {
        const std::string text = reply_Lines(std::string(ahead, 'x') + "\u00e4\u00f6");
        EXPECT_TRUE(text.find("\u00e4") != std::string::npos && text.find("\u00f6") != std::string::npos)
            << ahead;
    }
}

TEST(Words, AreDividedByBlanksOutsideOfQuotes) {
    const struct {
        const char* text;
        std::vector<std::string> words;
    } cases[] = {
        {"", {}},
        {"  a\t b ", {"a", "b"}},
        {R"(sh -c "echo \"x\" \\ \n")", {"sh", "-c", R"(echo "x" \ \n)"}},
        {R"(a"b c"d "")", {"ab cd", ""}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> words;
        EXPECT_TRUE(words_Split(c.text, words).ok());
        EXPECT_EQ(words, c.words) << c.text;
    }
    std::vector<std::string> words;
    EXPECT_FALSE(words_Split("a \"b", words).ok());
}

}  // namespace
