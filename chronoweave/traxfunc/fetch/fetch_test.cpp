#include "chronoweave/traxfunc/fetch/fetch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>

#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/fetch/sweep.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

struct Switch {
    double time;
    uint32_t from, to;
    int32_t status;
    bool operator==(const Switch&) const = default;
};

struct Icon {
    double time;
    uint32_t object, sequence;
    uint16_t type, subtype;
    bool operator==(const Icon&) const = default;
};

struct Segment {
    double t0, t1;
    int32_t status;
    bool operator==(const Segment&) const = default;
};

// The sweep told the plain way: at every event, every lane is asked for everything.
class PlainSweep {
  public:
    struct Lane {
        uint32_t id;
        std::string name;
        bool named = false;
        int32_t open = -1;
        double since = -1;
        std::vector<Segment> segments;
    };
    std::vector<Lane> lanes;
    std::vector<Switch> switches;
    std::vector<Icon> icons;

    PlainSweep(const _LaCanvasData& canvas, double low, double high) : canvas_(canvas) {
        TraceStore& store = *canvas.source.store;
        const auto tick = [&](double t) {
            uint64_t first = 0;  // that does not lie before t
            while (static_cast<double>(first) / canvas.source.clock.ticksPerSecond < t) ++first;
            return first + canvas.source.clock.baseTick;
        };
        const uint64_t t0 = tick(low), t1 = tick(high) + (high >= canvas.source.totalLength);
        EventList list;
        StateTable state;
        EXPECT_TRUE(mt_GetEventsInTimeRange(store, t0, t1, list, state));
        for (uint32_t id : mt_GetObjectIdsUsedInTimeRange(store, 0, t0, t1)) LaneOf(id);
        Look(state, low, false, true);
        uint32_t count = 0;
        for (const EventRecord& event : list) {
            const double time = static_cast<double>(event.time - canvas.source.clock.baseTick) /
                                canvas.source.clock.ticksPerSecond;
            mt_ApplyEventToState(state, event);
            if (time >= low) {
                Look(state, time, false, true);
                const uint32_t id = load_be32(event.extra.data());
                LaneOf(id);
                icons.push_back({time, id, count, event.type, event.subtype});
            }
            ++count;
        }
        Look(state, high, true, false);
    }

  private:
    size_t LaneOf(uint32_t id) {
        for (size_t i = 0; i < lanes.size(); ++i)
            if (lanes[i].id == id) return i;
        lanes.push_back({id, {}, false, -1, -1, {}});
        return lanes.size() - 1;
    }

    void Look(const StateTable& state, double time, bool closing, bool track) {
        for (Lane& lane : lanes) {
            bool delivered = false;
            char name[1024];
            if (!lane.named &&
                mt_GetObjectAttribute(*canvas_.source.store, state, 0, lane.id, 2, name, sizeof name,
                                      canvas_.list.separator[0], delivered) &&
                delivered) {
                lane.name = name;
                lane.named = true;
            }
            uint16_t code = 0;
            if (mt_GetObjectAttribute(*canvas_.source.store, state, 0, lane.id, 0, &code, sizeof code, 0,
                                      delivered) &&
                delivered) {
                const int32_t row = canvas_.looks.legend.StatusIndex(code);
                if (lane.open == -1) {
                    if (lane.since < 0) lane.since = time;
                } else if (lane.open != row || closing) {
                    Append(lane, time);
                }
                lane.open = row;
            }
            if (track && lane.open >= 0 &&
                canvas_.looks.legend.statuses[static_cast<size_t>(lane.open)].isExecution)
                Run(lane, time);
        }
    }

    void Append(Lane& lane, double time) {
        if (!lane.segments.empty() && lane.segments.back().status == lane.open)
            lane.segments.back().t1 = time;
        else
            lane.segments.push_back({lane.since, time, lane.open});
        lane.since = time;
    }

    void Run(const Lane& lane, double time) {
        const uint32_t key = canvas_.source.osKind == Os_Korvantis ? lane.id & 0x3ff : 0;
        const auto running = running_.find(key);
        if (running != running_.end() && running->second != lane.id) {
            const Switch made{time, running->second, lane.id,
                              canvas_.looks.legend.LinkedStatus(lanes[LaneOf(running->second)].open)};
            if (switches.empty() || switches.back().to != made.to ||
                std::fabs(switches.back().time - time) > 1e-12)
                switches.push_back(made);
        }
        running_[key] = lane.id;
    }

    const _LaCanvasData& canvas_;
    std::map<uint32_t, uint32_t> running_;
};

void expect_same(const _LaCanvasData& canvas, const PlainSweep& plain) {
    ASSERT_EQ(canvas.items.lanes.size(), plain.lanes.size());
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
        const laItem_Line& lane = canvas.items.lanes[i];
        EXPECT_EQ(lane.objectId, plain.lanes[i].id);
        EXPECT_EQ(lane.name, plain.lanes[i].name);
        std::vector<Segment> segments;
        for (const LaLnSeg& segment : lane.segments)
            segments.push_back({segment.t0, segment.t1, segment.status});
        EXPECT_TRUE(segments == plain.lanes[i].segments)
            << "lane " << i << ": " << segments.size() << " segments, not " << plain.lanes[i].segments.size();
    }
    std::vector<Switch> switches;
    for (uint32_t i = 0; i < canvas.items.ctxLines.size(); ++i) {
        const laItem_Ctx& line = canvas.items.ctxLines[i];
        switches.push_back({line.t0, canvas.items.lanes[line.fromLane].objectId,
                            canvas.items.lanes[line.toLane].objectId, line.status});
    }
    EXPECT_TRUE(switches == plain.switches) << switches.size() << " switches, not " << plain.switches.size();
    std::vector<Icon> icons;
    for (uint32_t i = 0; i < canvas.items.bitmaps.size(); ++i) {
        const laItem_Bitmap& icon = canvas.items.bitmaps[i];
        icons.push_back(
            {icon.time, canvas.items.lanes[icon.lane].objectId, icon.sequence, icon.type, icon.subtype});
    }
    EXPECT_TRUE(icons == plain.icons) << icons.size() << " icons, not " << plain.icons.size();
}

class Quiet {
  public:
    Quiet() {
        gen_set_console_sink([](std::string_view) {});
    }
    ~Quiet() { gen_set_console_sink({}); }
};

TEST(Fetch, GivesWhatLookingAtEveryLaneAtEveryEventGives) {
    const Quiet quiet;
    for (unsigned seed = 1; seed <= 12; ++seed)
        for (const char* os : {"ThreadX", "Korvantis"}) {
            TestCanvas test;
            test.canvas->options.prefetch = false;
            ASSERT_TRUE(test.Open(random_events(seed, 1200), os));
            const double total = test.canvas->source.totalLength;
            for (const auto& [from, to] : {std::pair{0.0, 1.0}, {0.31, 0.32}, {0.5, 0.77}, {0.98, 1.0}}) {
                SCOPED_TRACE(testing::Message() << "seed " << seed << " " << os << " from " << from);
                ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, total * from, total * to));
                expect_same(*test.canvas, PlainSweep(*test.canvas, total * from, total * to));
            }
        }
}

TEST(Fetch, SequenceNumbersLeadBackToTheStore) {
    const Quiet quiet;
    TestCanvas test;
    const auto events = random_events(5, 900);
    ASSERT_TRUE(test.Open(events));
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, test.canvas->source.totalLength / 2,
                                    test.canvas->source.totalLength * 0.6));
    ASSERT_GT(test.canvas->items.bitmaps.size(), 10u);
    for (uint32_t i = 0; i < test.canvas->items.bitmaps.size(); ++i) {
        const laItem_Bitmap& icon = test.canvas->items.bitmaps[i];
        const TestEvent& event = events[laItem_StoreSequence(test.canvas->items, icon) - 1];
        EXPECT_EQ(event.type, icon.type);
        EXPECT_EQ(event.subtype, icon.subtype);
    }
    std::vector<size_t> seen(test.canvas->items.lanes.size());
    for (uint32_t i = 0; i < test.canvas->items.bitmaps.size(); ++i) {
        const uint32_t lane = test.canvas->items.bitmaps[i].lane;
        EXPECT_EQ(laBm_OfLane(test.canvas->items, lane, seen[lane]++), i);
    }
}

TEST(Fetch, TakesHalfAViewOnEachSideAndKnowsIt) {
    const Quiet quiet;
    TestCanvas test;
    ASSERT_TRUE(test.Open(random_events(3, 3000)));
    const double total = test.canvas->source.totalLength, low = total * 0.4, high = total * 0.5;
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, low, high));
    EXPECT_NEAR(test.canvas->items.cachedLow, total * 0.35, total * 1e-9);
    EXPECT_NEAR(test.canvas->items.cachedHigh, total * 0.55, total * 1e-9);
    EXPECT_TRUE(laCanvas_IsCached(test.canvas->items, test.canvas->source, low, high));
    EXPECT_FALSE(laCanvas_IsCached(test.canvas->items, test.canvas->source, total * 0.5, total * 0.56));
    // What lies behind the end holds nothing, so that a view which reaches there is cached all the same.
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, total * 0.9, total * 1.2));
    EXPECT_TRUE(laCanvas_IsCached(test.canvas->items, test.canvas->source, total * 0.9, total * 1.2));
}

TEST(Fetch, StopsWhereItIsToldToWithWhatItHas) {
    const Quiet quiet;
    TestCanvas test;
    ASSERT_TRUE(test.Open(random_events(3, 60000)));
    int told = 0;
    test.canvas->calls.progress = [&](double done, double all) {
        EXPECT_LE(done, all);
        return ++told < 2;
    };
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, 0, test.canvas->source.totalLength));
    EXPECT_EQ(told, 2);
    EXPECT_GT(test.canvas->items.bitmaps.size(), 30000u);
    EXPECT_LT(test.canvas->items.cachedHigh, test.canvas->source.totalLength);
    for (uint32_t i = 0; i < test.canvas->items.lanes.size(); ++i)
        if (!test.canvas->items.lanes[i].segments.empty()) {
            EXPECT_EQ(test.canvas->items.lanes[i].segments.back().t1, test.canvas->items.cachedHigh);
        }
}

TEST(Fetch, RangeWithNoEventsShowsTheStatesBeforeIt) {
    TestCanvas test;
    ASSERT_TRUE(test.Open({name_event(0, 0x400, "A"),
                           {10, mt_TaskChange, 0, words({0x400, 0})},
                           {5000, mt_TaskChange, 0, words({0x800, 0})}}));
    test.canvas->options.prefetch = false;
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, 1.0, 2.0));
    EXPECT_EQ(test.canvas->items.bitmaps.size(), 0u);
    const laItem_Line* lane = laCanvas_FindLane(test.canvas->items, 0x400);
    ASSERT_NE(lane, nullptr);
    ASSERT_EQ(lane->segments.size(), 1u);
    EXPECT_EQ(lane->segments[0].t0, 1.0);
    EXPECT_EQ(lane->segments[0].t1, 2.0);
}

TEST(Fetch, StatusesEndWhereTheStoreCantBeReadAndBeginAnewBehind) {
    const Quiet quiet;
    TestCanvas test;
    test.canvas->options.prefetch = false;
    std::vector<TestEvent> events{name_event(0, 0x400, "A")};
    for (mt_Time time = 1; time < 400; ++time) events.push_back({time, mt_Interrupt, 0, words({0x400, 0})});
    ASSERT_TRUE(test.Open(events));
    const std::string stream = test.folder / "store0.trs";
    CursorPosition damaged;
    TraceStore& store = *test.canvas->source.store;
    ASSERT_TRUE(mt_GetEventListAndStateFromTimeRange(store, 150, true, damaged, nullptr));
    std::fstream file(stream, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(damaged.offset);
    file << std::string(64, '\xFF');
    file.close();
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, 0, test.canvas->source.totalLength));
    const laItem_Line* lane = laCanvas_FindLane(test.canvas->items, 0x400);
    ASSERT_NE(lane, nullptr);
    ASSERT_EQ(lane->segments.size(), 2u);
    EXPECT_NEAR(lane->segments[0].t1, 0.149, 1e-9) << "the last event that can be read";
    EXPECT_NEAR(lane->segments[1].t0, 0.200, 1e-9) << "the next block";
    EXPECT_NEAR(lane->segments[1].t1, 0.400, 1e-9);
    const laItem_Bitmap& last = test.canvas->items.bitmaps[test.canvas->items.bitmaps.size() - 1];
    EXPECT_EQ(laItem_StoreSequence(test.canvas->items, last), 400u) << "numbers jump with the events";
    const std::string told = laSource_TellDamage(test.canvas->source);
    EXPECT_NE(told.find("The store is damaged: " + stream + ", byte " + std::to_string(damaged.offset)),
              std::string::npos)
        << told;
    EXPECT_TRUE(laSource_TellDamage(test.canvas->source).empty()) << "once";
    // Nothing behind can be read: the last status isn't drawn to the end.
    std::filesystem::resize_file(stream, damaged.offset);
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, 0, test.canvas->source.totalLength));
    lane = laCanvas_FindLane(test.canvas->items, 0x400);
    ASSERT_EQ(lane->segments.size(), 1u);
    EXPECT_NEAR(lane->segments[0].t1, 0.149, 1e-9);
}

TEST(Fetch, ItemsStaySmall) {
    const Quiet quiet;
    TestCanvas test;
    ASSERT_TRUE(test.Open(random_events(9, 50000), "Korvantis"));
    ASSERT_TRUE(laCanvas_FetchRange(*test.canvas, 0, test.canvas->source.totalLength));
    size_t bytes = test.canvas->items.bitmaps.bytes() + test.canvas->items.ctxLines.bytes();
    for (uint32_t i = 0; i < test.canvas->items.lanes.size(); ++i)
        bytes += test.canvas->items.lanes[i].segments.bytes() + test.canvas->items.lanes[i].icons.bytes();
    EXPECT_LT(bytes, 50000u * 100);
}

// The low ten bits of an id are its processor.
TEST(Processors, EachHasItsOwnSwitchesUpToTheLast) {
    const std::vector<uint32_t> processors = {0, 1, 511, 1022, 1023};
    gen_set_console_sink([](std::string_view) {});
    TestCanvas test;
    std::vector<TestEvent> events;
    mt_Time time = 0;
    for (const uint32_t processor : processors)
        for (const uint32_t task : {1u, 2u})
            events.push_back(status_change(time, task << 10 | processor, mt_Ready));
    for (int turn = 0; turn < 4; ++turn)
        for (const uint32_t processor : processors)
            events.push_back({++time, mt_TaskChange, 0, words({(1 + turn % 2u) << 10 | processor})});
    ASSERT_TRUE(test.Open(events, "KORVANTIS"));
    test.ShowAll();
    std::map<uint32_t, int> switches;
    const auto& items = test.canvas->items;
    for (uint32_t i = 0; i < items.ctxLines.size(); ++i) {
        const uint32_t from = items.lanes[items.ctxLines[i].fromLane].objectId,
                       to = items.lanes[items.ctxLines[i].toLane].objectId;
        EXPECT_EQ(from & 1023, to & 1023) << "a processor's objects take over from each other alone";
        ++switches[to & 1023];
    }
    for (const uint32_t processor : processors) {
        EXPECT_EQ(switches[processor], 3) << processor;
        EXPECT_EQ(items.running.on(processor), 2u << 10 | processor);
    }
    gen_set_console_sink({});
}

}  // namespace
