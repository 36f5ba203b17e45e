// Views that are read from the lane index against the same views by a fetch: items, pixels, hits, tips and
// snaps.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <span>

#include "chronoweave/engine/lanes/lane_table.h"
#include "chronoweave/engine/lanes/lanes_testing.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/draw/pixel_surface_testing.h"
#include "chronoweave/traxfunc/fetch/range_fetch.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/hit.h"
#include "chronoweave/traxfunc/input/pointer.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "chronoweave/traxfunc/session/items_testing.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr int width = 420, height = 260;
constexpr uint32_t never = UINT32_MAX;

class Random {
  public:
    explicit Random(uint64_t seed) : made_(seed) {}
    uint32_t below(uint32_t n) { return static_cast<uint32_t>(made_() % n); }
    bool chance(uint32_t n) { return below(n) == 0; }
    double share() { return below(100'001) / 100'000.0; }

  private:
    std::mt19937_64 made_;
};

// Tasks come, go and are named all the time; those that run are switched, so that most ranges have one that
// runs on each processor.
std::vector<TestEvent> random_trace(Random& random, bool processors) {
    constexpr uint16_t codes[] = {0, 1, 2, 7, 10, 6, 0, 2};
    const uint32_t count = 40 + random.below(random.chance(4) ? 2500 : 500);
    const uint32_t tasks = 2 + random.below(12), still = 1 + random.below(4), rare = 100 + random.below(900);
    std::vector<TestEvent> events;
    mt_Time time = random.below(50);
    uint32_t running = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (random.chance(still)) time += random.chance(40) ? 400 : random.below(12);
        const uint32_t number = random.below(std::min(tasks, 2 + i / 16));
        const uint32_t id = (1 + number * 7 % 16) << 10 | (processors ? number % 2 : 0);
        const uint32_t what = random.below(20);
        if (random.chance(rare))
            events.push_back(user(time, id, static_cast<uint16_t>(9 + random.below(2))));
        else if (random.chance(rare))
            events.push_back(status_change(time, id, random.chance(2) ? 3 : 8));
        else if (what == 0)
            events.push_back(
                {time, mt_Refresh, codes[random.below(8)],
                 refresh_extra(id, random.below(50), random.chance(5) ? "" : "task" + std::to_string(number),
                               random.chance(3) ? "group" : nullptr)});
        else if (what < 8)
            events.push_back(switch_to(time, running = id));
        else if (what < 13)
            events.push_back(status_change(time, id, codes[random.below(8)]));
        else if (what < 16)
            events.push_back({time, mt_Interrupt, static_cast<uint16_t>(random.below(3)), words({id})});
        else
            events.push_back(user(time, id, static_cast<uint16_t>(random.below(9))));
    }
    // In the end nobody knows how long who ran last did so.
    if (running != 0 && random.chance(3))
        events.push_back(user(time, running, static_cast<uint16_t>(9 + random.below(2))));
    return events;
}

Legend random_legend(Random& random) {
    Legend legend = test_legend();
    for (LegendStatus& status : legend.statuses) {
        if (random.chance(6)) status.visible = !status.visible;
        if (random.chance(5)) status.thickness = 1 + static_cast<int>(random.below(6));
        if (random.chance(5)) status.lineStyle = static_cast<int>(random.below(5));
        if (random.chance(2)) status.contextSwitchLink = -1;
        if (random.chance(20)) status.isExecution = !status.isContextSwitch;
        if (status.isContextSwitch && random.chance(2)) status.red = 0x9000;
    }
    for (LegendEvent& event : legend.events) {
        if (random.chance(6)) event.flags ^= 1u;
        if (random.chance(6)) event.flags |= LegendEvent_Important;
        if (random.chance(3)) event.iconName = "bug";
    }
    legend.misc.showHiddenAgent = random.chance(12);
    legend.misc.overlapIcon = random.chance(2) ? "help" : "";
    legend.misc.centerStatus = random.chance(2);
    legend.BuildLookups();
    return legend;
}

struct Shown {
    explicit Shown(uint32_t leastFromLanes) : test(width, height), pixels(width, height) {
        test.graph.surface = &pixels;
        test.graph.axisFont = pixels.fontMetrics(Font_Axis);
        canvas.options.leastFromLanes = leastFromLanes;
        laCanvas_Resized(canvas, width, height);
    }
    TestCanvas test;
    PixelSurface pixels;
    _LaCanvasData& canvas = *test.canvas;
};

class LaneItems : public ::testing::Test {
  protected:
    LaneItems() {
        gen_set_console_sink([](std::string_view) {});
    }
    ~LaneItems() override { gen_set_console_sink({}); }

    void Begin(const std::string& os) {
        base_ = folder_ / ("trace" + std::to_string(traces_++));
        writer_ = StoreWriter::OpenForWrite(base_, 1000, os, true, lanes_TestTracker);
        ASSERT_TRUE(writer_);
        feed_ = std::make_unique<LaneFeed>(base_, true, lanes_TestBlock);
        writer_->SetObserver(feed_.get());
        writer_->SetGrouping(1000);
    }
    void Write(std::span<const TestEvent> events) {
        for (const TestEvent& event : events)
            ASSERT_TRUE(writer_->AppendEvent(event.time, event.type, event.subtype, event.extra).ok());
        ASSERT_TRUE(writer_->Commit().ok());
    }
    void Finish() {
        ASSERT_TRUE(writer_->Close().ok());
        feed_->Finish();
        writer_.reset();
    }
    void Open(const Legend& legend) {
        for (Shown* one : {&fetched_, &read_})
            ASSERT_TRUE(
                laCanvas_SetUpFromStore(one->canvas, mt_OpenForRead(base_), legend, "/folder/run.trs"));
    }
    template <class Work>
    void Both(const Work& work) {
        work(fetched_.canvas);
        work(read_.canvas);
    }
    bool IsRead() const {
        return read_.canvas.fetch == nullptr && !read_.canvas.items.bitmaps.empty() &&
               read_.canvas.items.bitmaps.bytes() == 0;
    }

    std::string DifferentPixels() const {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (fetched_.pixels.at(x, y) != read_.pixels.at(x, y))
                    return gen_format("pixel %d, %d", x, y);
        return {};
    }
    // At a point: what is hit, told of it, and snapped to.
    std::string Pointed(_LaCanvasData& canvas, int x, int y) const {
        laHit hit;
        laCanvas_HitTest(canvas, x, y, false, &hit);
        std::string text = gen_format("%d %u %a", static_cast<int>(hit.item.itype), hit.lane, hit.time);
        if (hit.item.itype == laItemType::Line) {
            const LaLnSeg segment = canvas.items.lanes[hit.item.lane].segments[hit.item.index];
            text += gen_format(" %a %a %d", segment.t0, segment.t1, segment.status);
        } else if (hit.item.itype != laItemType::None) {
            text += gen_format(" %zu", hit.item.index);
        }
        return text + '\n' + laPointer_Tip(canvas, x, y) + '\n' +
               gen_format("%a", laCanvas_PointerTime(canvas, x, y, false));
    }
    std::string Different(Random& random) {
        std::string items =
            items_Difference(items_Text(read_.canvas.items), items_Text(fetched_.canvas.items));
        if (!items.empty()) return items;
        if (std::string pixels = DifferentPixels(); !pixels.empty()) return pixels;
        for (int i = 0; i < 10; ++i) {
            const int x = static_cast<int>(random.below(width)), y = static_cast<int>(random.below(height));
            const std::string read = Pointed(read_.canvas, x, y), fetched = Pointed(fetched_.canvas, x, y);
            if (read != fetched) return gen_format("at %d, %d: ", x, y) + read + "\nnot " + fetched;
        }
        return {};
    }

    TestFolder folder_;
    std::string base_;
    int traces_ = 0;
    std::unique_ptr<LaneFeed> feed_;
    std::unique_ptr<StoreWriter> writer_;
    Shown fetched_{never}, read_{1};
};

// Another view of the trace, with other objects hidden and other options.
void change(Random& random, const std::function<void(const std::function<void(_LaCanvasData&)>&)>& both) {
    const bool newTrv = !random.chance(3), plainMarks = random.chance(3), plainSwitches = random.chance(3),
               prefetch = random.chance(2), rows = random.chance(3), refetch = random.chance(3);
    const uint32_t hidden = random.below(6);
    const double low = random.chance(4) ? 0 : random.share(), length = random.share() * random.share();
    both([&](_LaCanvasData& canvas) {
        canvas.options.newTrv = newTrv;
        canvas.options.plainMarks = plainMarks;
        canvas.options.plainSwitches = plainSwitches;
        canvas.options.prefetch = prefetch;
        canvas.list.processorRows = rows;
        std::vector<laPath> paths;
        if (hidden < 3) paths.push_back(laTask_PatternPath("*" + std::to_string(hidden) + "*"));
        canvas.taskList->SetHiddenPaths(paths);
        if (refetch) laCanvas_ClearItems(canvas);
        const double total = canvas.source.totalLength;
        laCanvas_ShowRange(canvas, low * total, low * total + std::max(length * total, total / 1000));
        laCanvas_Resort(canvas);
        laCanvas_Repaint(canvas);
    });
}

TEST_F(LaneItems, ViewsReadFromTheIndexAreThoseOfAFetch) {
    constexpr int views = 2000, viewsOfATrace = 20;
    constexpr auto most = std::chrono::seconds(12);
    const char* given = std::getenv("CW_SEED");
    uint64_t seed = given ? std::strtoull(given, nullptr, 0) : std::random_device()();
    std::cout << "first seed " << seed << "; CW_SEED=" << seed << " begins there again\n";
    const auto begin = std::chrono::steady_clock::now();
    int compared = 0, read = 0;
    for (; compared < views && std::chrono::steady_clock::now() - begin < most; ++seed) {
        Random random(seed);
        const char* const kinds[] = {"korvantis", "ThreadX", "Tolmund", "other"};
        const uint32_t kind = random.below(4);
        const auto events = random_trace(random, kind == 0);
        // Some are seen first when only a part of them is there.
        const size_t first = random.chance(4) ? events.size() / 2 : events.size();
        Begin(kinds[kind]);
        Write(std::span(events).first(first));
        if (first == events.size()) Finish();
        Open(random_legend(random));
        for (int i = 0; i < viewsOfATrace; ++i, ++compared) {
            if (writer_ && i == viewsOfATrace / 2) {
                Write(std::span(events).subspan(first));
                Finish();
                Both([](_LaCanvasData& canvas) {
                    laCanvas_SourceGrew(canvas);
                    laCanvas_ClearItems(canvas);  // one goes on with its items, the other reads anew
                });
            }
            change(random, [&](const auto& work) { Both(work); });
            read += IsRead() ? 1 : 0;
            ASSERT_EQ(Different(random), "") << "seed " << seed << ", view " << i;
        }
    }
    std::cout << compared << " views compared, of which the index gave " << read << '\n';
    EXPECT_GT(read * 3, compared);
}

}  // namespace
