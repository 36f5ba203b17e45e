#include "companions/trv/ring/ring.h"

#include <map>

#include "chronoweave/import/import.h"
#include "companions/trv/server/server_testing.h"
#include "libtrv/trace_store.h"

namespace {

class RingTest : public TargetTest {
  protected:
    std::unique_ptr<Ring> ring(const std::string& text, size_t most = Ring::mostBytes) {
        std::string_view rest = text;
        RingOptions options;
        const Result read = ring_Read(rest, options);
        EXPECT_TRUE(read.ok()) << read.text();
        return std::make_unique<Ring>(facts_, options, most);
    }
    // A user event every tenth of a second from 1 s on, of the task 0x401; those of subtype 9 where marked.
    static std::vector<uint8_t> tenths(size_t from, size_t to, size_t marked = SIZE_MAX) {
        RawWriter out(false);
        for (size_t i = from; i < to; ++i)
            put(out, at(i), i == marked ? 9 : 0, i == marked ? "here it is" : "");
        return out.take();
    }
    static mt_Time at(size_t tenth) { return 1'000'000'000 + tenth * 100'000'000; }
    static void put(RawWriter& out, mt_Time time, uint16_t subtype, const std::string& text) {
        std::vector<uint8_t> extra{1, 4, 0, 0};
        extra.insert(extra.end(), text.begin(), text.end());
        EXPECT_TRUE(out.event(time, mt_UserEvent, subtype, extra));
    }
    // The tenths of the events in the file, which hold no states.
    static std::pair<size_t, size_t> span(const std::string& file) {
        const auto events = events_in(file);
        if (events.empty()) return {0, 0};
        EXPECT_EQ(events.back().time - events.front().time, (events.size() - 1) * 100'000'000);
        const auto tenth = [](const TestEvent& event) { return (event.time - 1'000'000'000) / 100'000'000; };
        return {tenth(events.front()), tenth(events.back())};
    }

    TargetFacts facts_ = target_NanosecondFacts("t");
};

using Span = std::pair<size_t, size_t>;

TEST_F(RingTest, WritesTheSecondsAheadOfWhatWasWaitedFor) {
    const struct {
        const char* text;
        Span written;  // behind event 50, and once all 100 have come; {0, 0} for nothing yet
        Span atEnd;
    } cases[] = {
        {"2 t", {0, 0}, {80, 99}},
        {"1000 t", {0, 0}, {0, 99}},
        {"2 on 4:9 t", {31, 50}, {31, 50}},
        {"2 on \"here it\" t", {31, 50}, {31, 50}},
        {"2 after 1 on UserEvent t", {0, 15}, {0, 15}},
        {"2 after 0.55 on 4:9 t", {0, 0}, {36, 55}},
        {"2 after 30 on 4:9 t", {0, 0}, {80, 99}},
        {"2 on 5 t", {0, 0}, {80, 99}},
    };
    for (const auto& c : cases) {
        auto one = ring(c.text);
        const std::string file = path("r.trr");
        std::filesystem::remove(file);
        ASSERT_TRUE(one->take(tenths(0, 5), now()).ok());
        ASSERT_TRUE(one->enable(file, {}).ok());
        EXPECT_FALSE(std::filesystem::exists(file)) << "arming leaves the file alone";
        ASSERT_TRUE(one->take(tenths(5, 51, 50), now()).ok());
        EXPECT_EQ(std::filesystem::exists(file), c.written != Span()) << c.text;
        if (c.written != Span()) {
            EXPECT_EQ(span(file), c.written) << c.text;
        }
        ASSERT_TRUE(one->take(tenths(51, 100), now()).ok());
        std::string said;
        ASSERT_TRUE(one->disable(said).ok());
        EXPECT_EQ(span(file), c.atEnd) << c.text;
        EXPECT_TRUE(said.starts_with(std::to_string(events_in(file).size()) + " events")) << said;
        EXPECT_FALSE(one->isEnabled());
    }
}

TEST_F(RingTest, TheTargetsEndEndsTheWaitBehindTheEvent) {
    auto one = ring("2 after 60 on 4:9 t");
    ASSERT_TRUE(one->enable(path("r.trr"), {}).ok());
    ASSERT_TRUE(one->take(tenths(0, 60, 50), now()).ok());
    EXPECT_TRUE(one->takeNotes().empty());
    ASSERT_TRUE(one->targetEnded().ok());
    EXPECT_EQ(span(path("r.trr")), Span(40, 59));
    EXPECT_EQ(one->takeNotes().size(), 1u);
}

// A file that stands is the old one until the new one is there whole.
TEST_F(RingTest, AClosedRingWritesNothing) {
    auto one = ring("2 on 4:9 t");
    std::ofstream(path("r.trr")) << "old";
    ASSERT_TRUE(one->enable(path("r.trr"), {}).ok());
    ASSERT_TRUE(one->take(tenths(0, 30), now()).ok());
    std::string said;
    ASSERT_TRUE(one->close(said).ok());
    EXPECT_NE(said.find("20 events"), std::string::npos) << said;
    EXPECT_EQ(bytes_of(path("r.trr")).size(), 3u);
    EXPECT_FALSE(one->enable(path("nowhere/r.trr"), {}).ok());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 1)
        << "nothing is left beside it";
}

TEST_F(RingTest, FullMemoryKeepsTheNewestAndSaysSo) {
    auto one = ring("1000 t", 17 * 100);
    ASSERT_TRUE(one->take(tenths(0, 1000), now()).ok());
    EXPECT_EQ(one->takeNotes().size(), 1u);
    ASSERT_TRUE(one->enable(path("r.trr"), {}).ok());
    std::string said;
    ASSERT_TRUE(one->disable(said).ok());
    EXPECT_EQ(span(path("r.trr")), Span(900, 999));
}

TEST_F(RingTest, EventsWithoutATimeGoWithTheOneBefore) {
    RawWriter out(false);
    put(out, 0, 1, "");
    for (size_t i = 0; i < 50; ++i) {
        put(out, at(i), 2, "");
        put(out, 0, 3, "");
        put(out, at(i) - 5, 4, "");
    }
    auto one = ring("1 t");
    ASSERT_TRUE(one->take(out.bytes(), now()).ok());
    ASSERT_TRUE(one->enable(path("r.trr"), {}).ok());
    std::string said;
    ASSERT_TRUE(one->disable(said).ok());
    const auto events = events_in(path("r.trr"));
    ASSERT_EQ(events.size(), 30u);
    EXPECT_TRUE(events.front().time == at(40) && events.front().subtype == 2);
}

// --- a real trace

using States = std::map<uint32_t, std::vector<uint8_t>>;

// What is known of each task just before a time counted from the first event, and the events from there on.
struct Seen {
    States states;
    std::vector<std::pair<uint32_t, uint64_t>> events;  // type and subtype, time from the trace's end
};
Seen see(const std::string& file, mt_Time before) {
    const OpenedSource opened = import_OpenSource(file, {});
    EXPECT_TRUE(opened.store != nullptr) << opened.trouble.text();
    Seen seen;
    const mt_Time end = mt_GetTimeRange(*opened.store).end;
    StateTable table;
    EventWalk walk;
    EventRecord event;
    EXPECT_TRUE(mt_StartWalkInTimeRange(*opened.store, end - before, end, &table, walk));
    for (uint32_t i = 0; i < table.size(); ++i) {
        const auto entry = table.entry(i).block;
        std::vector<uint8_t> block(entry.begin(), entry.end());
        // What stood behind a shorter name before is no part of it.
        const auto name = block.begin() + mt_TaskName, behind = name + mt_NameSize;
        std::fill(std::find(name, behind, 0), behind, uint8_t{0});
        if (block[mt_TaskStatusValid] != 0) seen.states[table.entry(i).objectId] = block;
    }
    while (mt_NextEvent(walk, event))
        seen.events.emplace_back(event.type << 16 | event.subtype, end - event.time);
    return seen;
}

TEST_F(RingTest, APieceOfATraceKnowsWhatTheWholeKnows) {
    const std::string whole = path("whole.trr");
    std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", whole);
    const auto bytes = bytes_of(whole);
    facts_.headerBytes.assign(bytes.begin(), bytes.begin() + raw_LongHeaderSize);
    auto one = ring("0.05 t");
    ASSERT_TRUE(one->take(std::span(bytes).subspan(raw_LongHeaderSize), now()).ok());
    ASSERT_TRUE(one->enable(path("piece.trr"), {}).ok());
    std::string said;
    ASSERT_TRUE(one->disable(said).ok());
    // Just behind the beginning of the 50 milliseconds, which the states bear as their time.
    constexpr mt_Time window = 50'000'000;
    const Seen all = see(whole, window), piece = see(path("piece.trr"), window);
    EXPECT_GT(all.events.size(), 1000u);
    EXPECT_TRUE(all.events == piece.events);
    EXPECT_GT(all.states.size(), 20u);
    for (const auto& [object, state] : all.states) {
        const auto at = piece.states.find(object);
        ASSERT_TRUE(at != piece.states.end()) << object;
        EXPECT_TRUE(at->second == state)
            << object << ' ' << testing::PrintToString(state) << ' ' << testing::PrintToString(at->second);
    }
    EXPECT_EQ(all.states.size(), piece.states.size());
}

TEST_F(RingTest, WrongWordsAreRefused) {
    for (std::string_view text : {"", "x t", "0 t", "-1 t", "5", "5 after x t", "5 on", "1e9 t"}) {
        RingOptions options;
        EXPECT_FALSE(ring_Read(text, options).ok()) << text;
    }
    std::string_view text = " 5 on \"a b\" after 2 sim 3 4";
    RingOptions options;
    ASSERT_TRUE(ring_Read(text, options).ok());
    EXPECT_EQ(text, "sim 3 4");
    EXPECT_EQ(options.on->text, "a b");
    EXPECT_EQ(options.after, 2);
}

TEST(EventMatch, ReadsNumbersNamesAndTexts) {
    const struct {
        const char* text;
        std::optional<uint16_t> type, subtype;
        const char* inText;
    } cases[] = {{"4", 4, {}, ""},         {"0x4:0x10", 4, 16, ""},
                 {"userevent", 4, {}, ""}, {"ReleaseSemaphore", 3, 25, ""},
                 {"4:x", {}, {}, "4:x"},   {"deadline missed", {}, {}, "deadline missed"}};
    for (const auto& c : cases) {
        const EventMatch match = match_Read(c.text);
        EXPECT_EQ(match.type, c.type) << c.text;
        EXPECT_EQ(match.subtype, c.subtype) << c.text;
        EXPECT_EQ(match.text, c.inText);
    }
}

}  // namespace
