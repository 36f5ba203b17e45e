// A trace that grows under a canvas: after every growth, items and picture are those of a fetch of the same
// range in a trace that ends there.
#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "chronoweave/import/import.h"
#include "chronoweave/import/raw/raw_writer.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/draw/pixel_surface_testing.h"
#include "chronoweave/traxfunc/fetch/range_fetch.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "chronoweave/traxfunc/session/items_testing.h"
#include "libtrv/store_files.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr int width = 420, height = 260;

// Tasks come all the time, with ids between those that are there; some are only stopped, which makes no task
// of them, some of these come later. Times often stand still, and there are pauses in which nobody runs.
std::vector<TestEvent> coming_tasks(unsigned seed, uint32_t count) {
    std::mt19937 random(seed);
    const auto below = [&](uint32_t n) { return static_cast<uint32_t>(random() % n); };
    constexpr uint16_t codes[] = {0, 1, 2, 3, 7, 10, 6};
    std::vector<TestEvent> events;
    mt_Time time = 5;
    for (uint32_t i = 0; i < count; ++i) {
        if (below(3) == 0) time += below(30) == 0 ? 300 : 1 + below(9);
        const uint32_t number = below(std::min(48u, 3 + i / 20));
        const uint32_t id = (number * 37 % 64) << 10 | number % 3;
        const uint32_t what = below(24);
        if (what == 0)
            events.push_back(status_change(time, below(80) * 37 % 64 << 10 | below(3), 8));
        else if (what < 4)
            events.push_back({time, mt_Refresh, codes[below(7)],
                              refresh_extra(id, below(50), "task" + std::to_string(number % 7 + below(2)),
                                            below(3) == 0 ? "group" : nullptr)});
        else if (what < 12)
            events.push_back(switch_to(time, id));
        else if (what < 20)
            events.push_back(status_change(time, id, codes[below(7)]));
        else
            events.push_back(user(time, id, static_cast<uint16_t>(below(9))));
    }
    return events;
}

Legend legend(bool agent) {
    Legend made = test_legend();
    made.misc.showHiddenAgent = agent;
    return made;
}

// A canvas on pixels over a trace that grows, held against fetches of the trace as far as it came.
class Grown {
  public:
    Grown(TraceStorePtr store, bool agent) : test(width, height), pixels_(width, height), agent_(agent) {
        prepare(test, pixels_);
        canvas.options.prefetch = false;
        EXPECT_TRUE(laCanvas_SetUpFromStore(canvas, std::move(store), legend(agent), "/folder/live.trr"));
        laCanvas_Repaint(canvas);
    }

    void Show(double low, double high) { laCanvas_ShowRange(canvas, low, high, {.paint = true}); }
    void Hide(const char* pattern) {
        canvas.taskList->AddHiddenPath(laTask_PatternPath(pattern));
        laCanvas_Resort(canvas);
        laCanvas_Repaint(canvas);
    }
    bool DropLeft(double share) {
        if (!canvas.fetch || !canvas.fetch->CanExtend()) return false;
        const double low = canvas.items.cachedLow;
        const double most = std::min(canvas.view.viewLow, canvas.items.cachedHigh);
        const bool done = canvas.fetch->DropLeft(low + share * (most - low)) == laLeftDrop::Done;
        if (!done) return false;
        EXPECT_GT(canvas.items.cachedLow, low);
        laCanvas_Resort(canvas);
        laCanvas_Repaint(canvas);
        return true;
    }

    // What differs from a fetch of the same range in the trace that ends here; empty when nothing does.
    std::string Wrong(TraceStorePtr store) {
        TestCanvas other(width, height);
        PixelSurface otherPixels(width, height);
        prepare(other, otherPixels);
        _LaCanvasData& fresh = *other.canvas;
        fresh.options.prefetch = false;
        if (!laCanvas_SetUpFromStore(fresh, std::move(store), legend(agent_), "/folder/live.trr"))
            return "no store";
        fresh.taskList->SetHiddenPaths(canvas.taskList->HiddenPaths());
        fresh.view = canvas.view;
        fresh.source.scrollExtent = canvas.source.scrollExtent;
        fresh.marks = canvas.marks;
        fresh.axis = canvas.axis;  // the unit that it came to have
        laCanvas_FetchRange(fresh, canvas.items.cachedLow, canvas.items.cachedHigh, laFetchAhead::No);
        laCanvas_Resort(fresh);
        laCanvas_Rescale(fresh);
        laCanvas_Repaint(fresh);
        std::string differs = items_Difference(items_Text(canvas.items), items_Text(fresh.items));
        if (!differs.empty()) return differs;
        size_t wrong = 0;
        int left = width, right = 0, top = height, bottom = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (otherPixels.at(x, y) != pixels_.at(x, y)) {
                    ++wrong;
                    left = std::min(left, x);
                    right = std::max(right, x);
                    top = std::min(top, y);
                    bottom = std::max(bottom, y);
                }
        return wrong == 0 ? ""
                          : gen_format("%zu pixels of columns %d to %d, rows %d to %d", wrong, left, right,
                                       top, bottom);
    }

    size_t Touched() { return std::exchange(pixels_.touched, 0); }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;

  private:
    static void prepare(TestCanvas& canvas, PixelSurface& pixels) {
        canvas.graph.surface = &pixels;
        canvas.canvas->list.processorRows = true;
        laCanvas_Resized(*canvas.canvas, width, height);
    }

    PixelSurface pixels_;
    bool agent_;
};

// A store in memory that a writer appends to.
class MemoryStore {
  public:
    explicit MemoryStore(const char* os) : facts_{1000, os, true} {
        writer_ = StoreWriter::OnDevices(std::make_unique<MemoryDevice>(events_),
                                         std::make_unique<MemoryDevice>(index_), facts_, TaskTracker);
        writer_->SetGrouping(1 << 20);
    }
    // Up to a number of events of a trace.
    void Write(const std::vector<TestEvent>& trace, size_t count) {
        for (; written < std::min(count, trace.size()); ++written) {
            const TestEvent& event = trace[written];
            EXPECT_TRUE(writer_->AppendEvent(event.time, event.type, event.subtype, event.extra).ok());
        }
        EXPECT_TRUE(writer_->Commit().ok());
    }
    TraceStorePtr Open() const {
        return mt_OpenOnDevices(
            std::make_unique<MemoryDevice>(std::make_shared<Bytes>(store_EncodeVersionFile(facts_))),
            std::make_unique<MemoryDevice>(events_), std::make_unique<MemoryDevice>(index_), "live");
    }
    size_t written = 0;

  private:
    StoreFacts facts_;
    std::shared_ptr<Bytes> events_ = std::make_shared<Bytes>(), index_ = std::make_shared<Bytes>();
    std::unique_ptr<StoreWriter> writer_;
};

class GrowingTest : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
    }
    void TearDown() override { gen_set_console_sink({}); }

    void Begin(const std::vector<TestEvent>& events, uint32_t count, const char* os) {
        os_ = os;
        events_ = events;
        live_ = std::make_unique<MemoryStore>(os);
        live_->Write(events, count);
    }
    void Write(uint32_t count) { live_->Write(events_, count); }
    // A trace that ends where the growing one does.
    TraceStorePtr Cut() {
        cut_ = std::make_unique<MemoryStore>(os_);
        cut_->Write(events_, live_->written);
        return cut_->Open();
    }

    const char* os_ = "";
    std::vector<TestEvent> events_;
    std::unique_ptr<MemoryStore> live_, cut_;
};

struct Way {
    const char* os;
    bool agent;
    const char* hidden;  // pattern, null for none
    double window;       // of the trace, that the view shows at its end; 0: the view stands
};

TEST_F(GrowingTest, GivesTheItemsAndPixelsOfAFetchAtEveryCut) {
    constexpr Way ways[] = {{"ThreadX", false, nullptr, 0},
                            {"Korvantis", false, nullptr, 0},
                            {"ThreadX", false, "task3*", 0.2},
                            {"Korvantis", true, "task*", 0.15},
                            {"Korvantis", false, "group*", 0.4},
                            {"ThreadX", true, "*", 0.3},
                            {"Trace_Function_Flow", false, nullptr, 0.1}};
    int cuts = 0, dropped = 0;
    for (unsigned seed = 1; seed <= 14; ++seed) {
        const Way& way = ways[seed % std::size(ways)];
        SCOPED_TRACE(testing::Message() << way.os << ", seed " << seed);
        std::mt19937 random(uint64_t{seed} * 77);
        const auto events = coming_tasks(seed, 1500);
        uint32_t count = 1 + static_cast<uint32_t>(random() % 60);
        Begin(events, count, way.os);
        Grown grown(live_->Open(), way.agent);
        const double rate = grown.canvas.source.clock.ticksPerSecond;
        const double end = static_cast<double>(events.back().time - events.front().time) / rate;
        if (way.hidden != nullptr) grown.Hide(way.hidden);
        grown.Show(0, way.window > 0 ? end * way.window : end * (seed % 2 == 0 ? 1.1 : 0.6));
        for (int i = 0; i < 20 && count < events.size(); ++i, ++cuts) {
            count += random() % 4 == 0 ? 1 + static_cast<uint32_t>(random() % 3)
                                       : static_cast<uint32_t>(random() % 150);
            Write(count);
            laCanvas_SourceGrew(grown.canvas);
            ASSERT_EQ(grown.Wrong(Cut()), "") << "behind event " << live_->written;
            if (way.window == 0) continue;
            const double total = grown.canvas.source.totalLength;
            grown.Show(std::max(0.0, total - end * way.window), std::max(total, end * way.window));
            ASSERT_EQ(grown.Wrong(Cut()), "") << "followed behind event " << live_->written;
            if (grown.DropLeft(static_cast<double>(random() % 1000) / 1000)) ++dropped;
            ASSERT_EQ(grown.Wrong(Cut()), "") << "dropped behind event " << live_->written;
        }
    }
    EXPECT_GE(cuts, 200);
    EXPECT_GE(dropped, 90);
}

TEST_F(GrowingTest, PaintsNoMoreThanTheNewColumns) {
    const auto events = random_events(3, 4000);
    Begin(events, 3000, "ThreadX");
    Grown grown(live_->Open(), false);
    const double end = static_cast<double>(events.back().time + 1) / 1000;
    grown.Show(0, end);
    const size_t whole = grown.Touched();
    Write(3050);
    EXPECT_EQ(laCanvas_SourceGrew(grown.canvas), laGrown::InPicture);
    EXPECT_LT(grown.Touched(), whole / 2);
    EXPECT_EQ(grown.Wrong(Cut()), "");
    // Neither is what no event has reached yet.
    grown.Show(0, 4 * end);
    grown.Touched();
    Write(3060);
    EXPECT_EQ(laCanvas_SourceGrew(grown.canvas), laGrown::InPicture);
    EXPECT_LT(grown.Touched(), size_t{width} * height / 2);
    EXPECT_EQ(grown.Wrong(Cut()), "");
    // What lies behind the view changes no picture.
    grown.Show(0, end / 2);
    Write(3100);
    grown.Touched();
    EXPECT_EQ(laCanvas_SourceGrew(grown.canvas), laGrown::InPicture);
    EXPECT_EQ(grown.Touched(), 0u);
    EXPECT_EQ(grown.Wrong(Cut()), "");
    // A task that comes has a row.
    grown.Show(0, end);
    events_[3100] = switch_to(events_[3100].time, 0xFC00);
    Write(3101);
    EXPECT_EQ(laCanvas_SourceGrew(grown.canvas), laGrown::WithRows);
    EXPECT_EQ(grown.Wrong(Cut()), "");
}

TEST_F(GrowingTest, FollowingForLongKeepsWhatTheViewNeeds) {
    std::vector<TestEvent> events;
    for (uint32_t i = 0; i < 120'000; ++i) events.push_back(switch_to(i, 0x400 * (1 + i % 7)));
    Begin(events, 1000, "ThreadX");
    Grown grown(live_->Open(), false);
    uint32_t most = 0, passes = 0;
    for (uint32_t count = 2000; count <= events.size(); count += 500, ++passes) {
        Write(count);
        laCanvas_SourceGrew(grown.canvas);
        const double total = grown.canvas.source.totalLength;
        grown.Show(std::max(0.0, total - 3), total);
        most = std::max(most, grown.canvas.items.bitmaps.size());
    }
    EXPECT_LE(most, 4 * 3000u + 4096);
    EXPECT_LT(grown.canvas.items.itemsVersion, passes / 3) << "no fetch a growth";
    EXPECT_EQ(grown.Wrong(Cut()), "");
}

TEST_F(GrowingTest, WhatCantBeExtendedIsFetched) {
    const auto events = random_events(9, 3000);
    Begin(events, 2000, "Korvantis");
    Grown grown(live_->Open(), false);
    const auto extends = [&] { return grown.canvas.fetch && grown.canvas.fetch->CanExtend(); };
    grown.Show(0, 1e3);
    EXPECT_TRUE(extends());
    grown.Show(0, grown.canvas.source.totalLength / 2);
    grown.canvas.items.cachedLow = grown.canvas.items.cachedHigh = 0;
    grown.Show(0, grown.canvas.source.totalLength / 3);
    EXPECT_FALSE(extends()) << "it did not reach the end";
    grown.Show(0, 1e3);
    // Whoever stops it has what came until then, and the next look fetches.
    grown.canvas.calls.progress = [](double, double) { return false; };
    std::vector<TestEvent> many = events;
    many.resize(2000);
    while (many.size() < 60'000) many.push_back(user(many.back().time + 1, 0x400, 1));
    events_ = many;
    Write(60'000);
    laCanvas_SourceGrew(grown.canvas);
    EXPECT_LT(grown.canvas.items.cachedHigh, grown.canvas.source.totalLength);
    EXPECT_GT(grown.canvas.items.bitmaps.size(), 2000u);
    EXPECT_FALSE(extends());
    grown.canvas.calls.progress = {};
    grown.canvas.source.liveRefresh = true;
    grown.Show(grown.canvas.view.viewLow, grown.canvas.view.viewHigh);
    EXPECT_TRUE(extends());
    EXPECT_EQ(grown.Wrong(Cut()), "");
}

// A raw event file as its writer leaves it: cut anywhere, within a record too.
TEST_F(GrowingTest, ARawFileCutAnywhereIsShownAsFarAsItsRecordsAreWhole) {
    const TestFolder folder;
    RawWriter writer(true);
    const EventSourceHeader header{0x200, true, 2, 1000, raw_OsKorvantis};
    writer.header(header, RawHeaderForm::Long);
    for (const TestEvent& event : coming_tasks(4, 900))
        ASSERT_TRUE(writer.event(event.time, event.type, event.subtype, event.extra));
    const std::span<const uint8_t> bytes = writer.bytes();
    const auto write = [&](const std::string& name, size_t end) {
        std::ofstream file(folder / name, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(end));
    };
    std::mt19937 random(8);
    size_t end = raw_LongHeaderSize;  // no event yet
    write("live.trr", end);
    OpenedSource opened = import_OpenSource(folder / "live.trr", {.keepGrowing = true});
    ASSERT_TRUE(opened.store && opened.growing) << opened.trouble.text();
    Grown grown(std::move(opened.store), false);
    uint64_t events = 0;
    for (int cut = 0; end < bytes.size(); ++cut) {
        end = std::min(bytes.size(), end + 1 + random() % (cut % 3 == 0 ? 20 : 2000));
        write("live.trr", end);
        const ReadOn read = import_ReadOn(*opened.growing, cut % 2 == 0 ? 1000 : 0);
        ASSERT_TRUE(read.trouble.ok()) << read.trouble.text();
        events += read.events;
        laCanvas_SourceGrew(grown.canvas);
        if (cut == 3) grown.Show(0, 3);
        write("cut.trr", end);
        const OpenedSource whole = import_OpenSource(folder / "cut.trr", {});
        ASSERT_EQ(events, whole.counts.events);
        ASSERT_EQ(grown.Wrong(mt_OpenForRead(whole.base)), "") << "cut at byte " << end;
    }
    EXPECT_EQ(events, 900u);
}

}  // namespace
