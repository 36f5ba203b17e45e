// A file that another process writes, as the canvas reads and follows it. The clock is the test's.
#include "chronoweave/live/live_reader.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "chronoweave/import/import_session.h"
#include "chronoweave/import/raw/raw_writer.h"
#include "chronoweave/live/live_words.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/draw/pixel_surface_testing.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "libtrv/store_writer.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr int width = 420, height = 260;

// A raw event file as a server would write it.
std::vector<uint8_t> raw_file(const std::vector<TestEvent>& events) {
    RawWriter writer(true);
    writer.header({0x200, true, 2, 1000, raw_OsKorvantis}, RawHeaderForm::Long);
    for (const TestEvent& event : events)
        EXPECT_TRUE(writer.event(event.time + 1, event.type, event.subtype, event.extra));
    return writer.take();
}

std::string contents(const std::string& path) {
    std::string text;
    EXPECT_TRUE(file_read_whole(path, text).ok()) << path;
    return text;
}

// A canvas on pixels with its live reading, in a window that is only this.
class Reading {
  public:
    Reading() : canvas(*test.canvas) {
        Prepare(test, pixels);
        window = {
            .load = [this](const std::string& name) { return Load(name); },
            .reset =
                [this] {
                    growing.reset();
                    shown.clear();
                    laCanvas_CloseSource(canvas);
                },
            .growing = [this] { return growing.get(); },
            .endGrowing = [this] { growing.reset(); },
            .source = [this] { return shown; },
            .draw = [this](const std::function<void()>& work) { ++draws, work(); },
            .grew = [this] { ++grown; },
            .progress = [this](std::optional<double> share) { progress.push_back(share.value_or(-1)); }};
        reader = std::make_unique<LiveReader>(canvas, window, tasks, [this] { return now; });
        canvas.calls.upper.refreshToggled = [this] { reader->Toggled(); };
        canvas.source.liveRefresh = true;
    }
    static void Prepare(TestCanvas& canvas, PixelSurface& pixels) {
        canvas.graph.surface = &pixels;
        laCanvas_Resized(*canvas.canvas, width, height);
    }
    // As a window would load it.
    bool Load(const std::string& name) {
        ++loads;
        loading = reader->BeforeLoad(name);
        if (loading.what != LiveReader::Loading::What::Load) return false;
        OpenedSource opened = import_OpenSource(name, {.keepGrowing = true});
        if (!opened.store) return false;
        growing = std::move(opened.growing);
        base = opened.base;
        shown = name;
        EXPECT_TRUE(laCanvas_SetUpFromStore(canvas, std::move(opened.store), test_legend(), name));
        laCanvas_Repaint(canvas);
        reader->Loaded(name);
        return true;
    }
    // The next tick, and the slices that follow it.
    void Tick() {
        now += std::chrono::milliseconds(canvas.options.refreshInterval);
        do tasks.Run(now);
        while (tasks.UntilNext(now).count() == 0);
    }
    uint32_t Events() { return mt_GetEventCount(*canvas.source.store); }

    EventTasks tasks;
    LiveReader::Clock::time_point now{std::chrono::hours(1)};
    TestCanvas test{width, height};
    PixelSurface pixels{width, height};
    _LaCanvasData& canvas;
    LiveWindow window;
    std::unique_ptr<LiveReader> reader;
    GrowingSource growing;
    std::string shown, base;
    LiveReader::Loading loading;
    std::vector<double> progress;
    int loads = 0, draws = 0, grown = 0;
};

class LiveReaderTest : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([this](std::string_view text) { console += text; });
    }
    void TearDown() override { gen_set_console_sink({}); }
    void Write(const std::string& name, size_t end) {
        std::ofstream file(folder / name, std::ios::binary | std::ios::app);
        const size_t there = std::filesystem::file_size(folder / name);
        ASSERT_LE(there, end);
        file.write(reinterpret_cast<const char*>(bytes.data()) + there,
                   static_cast<std::streamsize>(end - there));
    }
    // How many pixels differ from a full fetch of the same range and view in the file that ends here.
    size_t Wrong(Reading& reading, size_t end) {
        std::filesystem::remove(folder / "cut.trr");
        Write("cut.trr", end);
        OpenedSource whole = import_OpenSource(folder / "cut.trr", {});
        EXPECT_EQ(reading.Events(), mt_GetEventCount(*whole.store));
        TestCanvas other(width, height);
        PixelSurface pixels(width, height);
        Reading::Prepare(other, pixels);
        const _LaCanvasData& live = reading.canvas;
        _LaCanvasData& fresh = *other.canvas;
        fresh.options.prefetch = false;
        EXPECT_TRUE(laCanvas_SetUpFromStore(fresh, std::move(whole.store), test_legend(), reading.shown));
        fresh.view = live.view;
        fresh.source.scrollExtent = live.source.scrollExtent;
        fresh.marks = live.marks;
        fresh.axis = live.axis;
        laCanvas_FetchRange(fresh, live.items.cachedLow, live.items.cachedHigh, laFetchAhead::No);
        laCanvas_Resort(fresh);
        laCanvas_Rescale(fresh);
        laCanvas_Repaint(fresh);
        EXPECT_EQ(fresh.source.totalLength, live.source.totalLength);
        size_t wrong = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) wrong += pixels.at(x, y) != reading.pixels.at(x, y);
        return wrong;
    }

    TestFolder folder;
    std::vector<uint8_t> bytes;
    std::string console;
};

// What the user may do between two ticks.
void act(Reading& reading, unsigned choice) {
    _LaCanvasData& canvas = reading.canvas;
    const double total = canvas.source.totalLength;
    if (choice == 1) laCanvas_ShowRange(canvas, 0, total * 1.3, {.paint = true});
    if (choice == 2) laCanvas_ShowRange(canvas, total * 0.8, total * 0.9, {.paint = true});
    if (choice == 3) canvas.options.followEnd = !canvas.options.followEnd;
    if (choice == 4) laCanvas_ShowRange(canvas, total * 0.2, total * 1.1, {.paint = true});
    if (choice == 5) canvas.options.maxRefreshedEvents = canvas.options.maxRefreshedEvents == 600 ? 90 : 600;
}

TEST_F(LiveReaderTest, ThePictureIsThatOfAFetchAtEveryCut) {
    int cuts = 0;
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        bytes = raw_file(random_events(seed, 1500));
        std::mt19937 random(seed);
        const std::string name = "live" + std::to_string(seed) + ".trr";
        Reading reading;
        Write(name, 0);
        EXPECT_FALSE(reading.Load(folder / name));
        EXPECT_EQ(reading.reader->WaitsFor(), folder / name);
        size_t end = 0;
        for (; end < bytes.size() && cuts < 1000; ++cuts) {
            end += end < 60 ? 1 + random() % 20 : random() % 5 == 0 ? 1 + random() % 3 : random() % 3000;
            end = std::min(end, bytes.size());
            Write(name, end);
            reading.Tick();
            if (!reading.canvas.source.store) {
                EXPECT_LT(end, size_t{raw_LongHeaderSize} + 83) << "there are whole records";
                continue;
            }
            ASSERT_EQ(Wrong(reading, end), 0u) << "cut at byte " << end;
            act(reading, random() % 16);
            ASSERT_EQ(Wrong(reading, end), 0u) << "what the user did, cut at byte " << end;
        }
        EXPECT_EQ(reading.Events(), 1500u);
        // The store is that of an import.
        const uint32_t interval = mt_GetCheckpointInterval(*reading.canvas.source.store);
        reading.growing.reset();
        std::filesystem::copy_file(folder / name, folder / "whole.trr",
                                   std::filesystem::copy_options::overwrite_existing);
        const OpenedSource whole = import_OpenSource(folder / "whole.trr", {.checkpoint = interval});
        for (const char* extension : {".trs", ".tri", ".trv"})
            EXPECT_EQ(contents(reading.base + extension), contents(whole.base + extension)) << extension;
    }
    EXPECT_GE(cuts, 200);
}

TEST_F(LiveReaderTest, WhatCantGrowIsRefusedAndWhatIsNotThereYetIsWaitedFor) {
    bytes = raw_file(random_events(1, 20));
    std::vector<uint8_t> image = bytes, core = bytes, other = bytes;
    image[4] = 2, image[5] = 1;
    core[0] = 0, core[1] = 1;
    other[9] = 7;
    const auto cut = [&](size_t end) {
        return std::vector<uint8_t>(bytes.begin(), bytes.begin() + static_cast<long>(end));
    };
    std::vector<uint8_t> ended = cut(raw_LongHeaderSize);
    ended.push_back(0xFF);
    using What = LiveReader::Loading::What;
    const struct {
        const char* name;
        std::vector<uint8_t> bytes;
        What what;
        const char* why;
    } rows[] = {{"empty", {}, What::Wait, ""},
                {"header", cut(13), What::Wait, ""},
                {"no record", cut(raw_LongHeaderSize), What::Wait, ""},
                {"half a record", cut(raw_LongHeaderSize + 5), What::Wait, ""},
                {"an end mark", ended, What::Wait, ""},
                {"records", bytes, What::Load, ""},
                {"image", image, What::Refuse, words_BadLiveFile},
                {"core", core, What::Refuse, words_BadLiveFile},
                {"another system", other, What::Refuse, words_LiveUnsupported}};
    Reading reading;
    for (const auto& row : rows) {
        std::ofstream(folder / "a.trr", std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(row.bytes.data()),
                   static_cast<std::streamsize>(row.bytes.size()));
        const auto loading = reading.reader->BeforeLoad(folder / "a.trr");
        EXPECT_EQ(loading.what, row.what) << row.name;
        EXPECT_EQ(loading.why, row.why) << row.name;
        EXPECT_EQ(!reading.reader->WaitsFor().empty(), row.what == What::Wait) << row.name;
    }
    reading.canvas.source.liveRefresh = false;
    EXPECT_EQ(reading.reader->BeforeLoad(folder / "a.trr").what, What::Load) << "nothing grows";
}

// The message, the picture kept, and the road back open.
TEST_F(LiveReaderTest, AFileThatIsNoMoreWhatItWasEndsTheReading) {
    bytes = raw_file(random_events(2, 400));
    const std::string path = folder / "live.trr";
    const auto quoted = [&](const char* words) { return gen_format(words, path.c_str()); };
    const struct {
        const char* name;
        std::function<void()> change;
        std::string said;
    } rows[] = {{"gone", [&] { std::filesystem::remove(path); }, quoted(words_LiveVanished)},
                {"shorter", [&] { std::filesystem::resize_file(path, 1000); }, quoted(words_LiveShrunk)},
                {"another",
                 [&] {
                     std::filesystem::copy_file(path, folder / "copy");
                     std::filesystem::rename(folder / "copy", path);
                 },
                 quoted(words_LiveReplaced)},
                {"written anew",
                 [&] {
                     std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
                     for (int i = 0; i < 9000; ++i) file.put('\1');
                 },
                 quoted(words_LiveReplaced)}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(path);
        Reading reading;
        Write("live.trr", 8000);
        ASSERT_TRUE(reading.Load(path));
        Write("live.trr", 9000);
        reading.Tick();
        const uint32_t events = reading.Events();
        const auto pixels = reading.pixels.pixels();
        row.change();
        reading.Tick();
        EXPECT_EQ(reading.test.message(), row.said);
        EXPECT_EQ(reading.growing, nullptr);
        reading.Tick();
        EXPECT_EQ(reading.Events(), events);
        EXPECT_EQ(reading.pixels.pixels(), pixels);
        std::filesystem::remove(path);
        Write("live.trr", 8000);
        EXPECT_TRUE(reading.Load(path));
        Write("live.trr", 12000);
        reading.Tick();
        EXPECT_EQ(Wrong(reading, 12000), 0u);
    }
}

// The same where there is no room for what came.
TEST_F(LiveReaderTest, AStoreThatTakesNoMoreEndsTheReading) {
    process_LetWritesFail();
    bytes = raw_file(random_events(2, 3000));
    const std::string path = folder / "live.trr";
    struct rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct {
        const char* name;
        std::function<void(Reading&)> fill;
        const char* why;
    } rows[] = {{"the store is full",
                 [](Reading& reading) {
                     const_cast<StoreWriter*>(reading.growing->writer())->SetOffsetLimit(60'000);
                 },
                 "four gigabytes"},
                {"the disk is full",
                 [&](Reading& reading) {
                     struct rlimit small = before;
                     small.rlim_cur = std::filesystem::file_size(reading.base + ".trs") + 3000;
                     ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
                 },
                 "File too large"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(path);
        Write("live.trr", 8000);
        Reading reading;
        ASSERT_TRUE(reading.Load(path));
        Write("live.trr", bytes.size());
        row.fill(reading);
        reading.Tick();
        reading.Tick();
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_TRUE(reading.test.message().starts_with("Live reading has ended")) << reading.test.message();
        EXPECT_NE(reading.test.message().find(row.why), std::string::npos) << reading.test.message();
        EXPECT_EQ(reading.growing, nullptr);
        const uint32_t events = reading.Events();
        EXPECT_GT(events, 100u);
        EXPECT_LT(events, 3000u);
        const auto pixels = reading.pixels.pixels();
        reading.Tick();
        EXPECT_EQ(reading.pixels.pixels(), pixels);
        EXPECT_EQ(reading.Events(), events);
        // The road back.
        ASSERT_TRUE(reading.Load(path));
        reading.Tick();
        EXPECT_EQ(reading.Events(), 3000u);
    }
}

TEST_F(LiveReaderTest, JunkIsPassedOverAndAnEndMarkStopsATick) {
    bytes = raw_file(random_events(3, 300));
    Write("live.trr", 4000);
    Reading reading;
    ASSERT_TRUE(reading.Load(folder / "live.trr"));
    reading.Tick();
    const uint32_t events = reading.Events();
    const auto add = [&](const std::vector<uint8_t>& more) {
        std::ofstream(folder / "live.trr", std::ios::binary | std::ios::app)
            .write(reinterpret_cast<const char*>(more.data()), static_cast<std::streamsize>(more.size()));
    };
    std::filesystem::resize_file(folder / "live.trr",
                                 static_cast<uintmax_t>(reading.growing->source().extent().done));
    console.clear();
    const std::vector<uint8_t> record = raw_EncodeEvent(true, 900, mt_UserEvent, 1, words({0x400}));
    std::vector<uint8_t> junk = {0, 83, 0xFF, static_cast<uint8_t>(record.size())};
    junk.insert(junk.end(), record.begin(), record.end());
    add(junk);
    reading.Tick();
    EXPECT_EQ(reading.Events(), events + 1);
    EXPECT_NE(console.find("Bad TRR byte at offset"), std::string::npos);
    add({0xFF});
    reading.Tick();
    add({1, 2});
    reading.Tick();
    EXPECT_EQ(reading.Events(), events + 1);
    EXPECT_NE(reading.growing, nullptr) << "it may go on";
}

// Each look at the clock of the reading takes longer than a slice may: a slice reads one buffer.
int64_t hasty_clock() {
    static int64_t time = 0;
    return time += 1000;
}

TEST_F(LiveReaderTest, MuchIsReadInSlicesAndSaysSoAfterHalfAnInterval) {
    bytes = raw_file(random_events(4, 9000));
    Write("live.trr", 4000);
    Reading reading;
    ASSERT_TRUE(reading.Load(folder / "live.trr"));
    reading.growing->clock = hasty_clock;
    Write("live.trr", bytes.size());
    reading.now += std::chrono::seconds(1);
    reading.tasks.Run(reading.now);
    const uint32_t first = reading.Events();
    EXPECT_LT(first, 3000u) << "one slice";
    EXPECT_EQ(reading.draws, 1) << "the view follows each";
    EXPECT_EQ(reading.test.message(), "");
    reading.now += std::chrono::milliseconds(499);
    reading.tasks.Run(reading.now);
    EXPECT_GT(reading.Events(), first);
    EXPECT_EQ(reading.test.message(), "");
    reading.now += std::chrono::milliseconds(1);
    reading.tasks.Run(reading.now);
    EXPECT_EQ(reading.test.message(), words_MoreEvents);
    for (int i = 0; i < 50; ++i) reading.tasks.Run(reading.now);
    EXPECT_EQ(reading.Events(), 9000u);
    EXPECT_EQ(reading.test.message(), "");
    EXPECT_EQ(reading.draws, reading.grown);
    EXPECT_EQ(Wrong(reading, bytes.size()), 0u);
}

TEST_F(LiveReaderTest, AFrozenCanvasReadsNothingAndCatchesUpWithProgress) {
    bytes = raw_file(random_events(5, 6000));
    Write("live.trr", 4000);
    Reading reading;
    ASSERT_TRUE(reading.Load(folder / "live.trr"));
    reading.growing->clock = hasty_clock;
    const uint32_t events = reading.Events();
    laCanvas_ToggleFreeze(reading.canvas);
    Write("live.trr", bytes.size());
    reading.Tick();
    reading.Tick();
    EXPECT_EQ(reading.Events(), events);
    EXPECT_EQ(reading.draws, 0);
    laCanvas_ToggleFreeze(reading.canvas);
    EXPECT_EQ(reading.test.message(), words_CatchingUp);
    for (int i = 0; i < 50; ++i) reading.tasks.Run(reading.now);
    EXPECT_EQ(reading.Events(), 6000u);
    EXPECT_EQ(reading.draws, 1) << "drawn once, at the end";
    ASSERT_GE(reading.progress.size(), 4u);
    EXPECT_TRUE(std::is_sorted(reading.progress.begin(), reading.progress.end() - 1));
    EXPECT_EQ(reading.progress.back(), -1);
    EXPECT_EQ(reading.test.message(), "");
    EXPECT_EQ(Wrong(reading, bytes.size()), 0u);
}

TEST_F(LiveReaderTest, TheGateHoldsWhatItMust) {
    bytes = raw_file(random_events(6, 900));
    Write("live.trr", 4000);
    Reading reading;
    ASSERT_TRUE(reading.Load(folder / "live.trr"));
    uint32_t events = reading.Events();
    const struct {
        GateWork work;
        bool reads, draws;
    } rows[] = {{GateWork::DraggedCursor, true, false}, {GateWork::HeldDrawing, true, false},
                {GateWork::Search, false, false},       {GateWork::ContextMenu, false, false},
                {GateWork::ModalDialog, true, true},    {GateWork::TargetWait, true, true}};
    size_t end = 4000;
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.work));
        const int draws = reading.draws;
        {
            const Gate::Token token = gate_Begin(row.work);
            Write("live.trr", end += 3000);
            reading.Tick();
            mt_RefreshIndex(*reading.canvas.source.store);
            EXPECT_EQ(reading.Events() > events, row.reads);
            EXPECT_EQ(reading.draws > draws, row.draws);
        }
        gate_Program().RunHeld();
        EXPECT_EQ(reading.draws, draws + 1) << "what was held runs when it may";
        events = reading.Events();
        EXPECT_EQ(Wrong(reading, end), 0u);
    }
}

TEST_F(LiveReaderTest, TheIntervalIsAtLeastTenMilliseconds) {
    Reading reading;
    for (const auto& [interval, waits] :
         {std::pair{1000, 1000}, {40, 40}, {10, 10}, {9, 10}, {1, 10}, {-5, 10}}) {
        reading.canvas.options.refreshInterval = interval;
        reading.reader->CreateRefreshTimer();
        EXPECT_EQ(reading.tasks.UntilNext(reading.now).count(), waits) << interval;
    }
}

}  // namespace
