#include "chronoweave/traxfunc/fetch/stretch_ends.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

#include "chronoweave/import/import.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

class StretchEnds : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
    }
    void TearDown() override { gen_set_console_sink({}); }
    static TestEvent status(mt_Time time, uint32_t object, uint16_t code) {
        return {time, mt_StatusChange, code, words({object})};
    }
    // Object 1 is pending from tick 100 to 29900, while object 2 goes on and off each tick; object 3 was
    // there at the beginning already, and stays.
    void OpenLong() {
        std::vector<TestEvent> events = {status(0, 1, mt_Ready), status(0, 2, mt_Ready),
                                         status(0, 3, mt_Ready)};
        for (uint32_t tick = 1; tick < 30000; ++tick) {
            if (tick == 100) events.push_back(status(tick, 1, mt_Pend));
            if (tick == 29900) events.push_back(status(tick, 1, mt_Ready));
            events.push_back(status(tick, 2, tick % 2 ? mt_Pend : mt_Ready));
        }
        ASSERT_TRUE(test.Open(events));
        canvas.options.prefetch = false;
        canvas.axis.timeMode = Time_Second;
    }
    // The segment of an object that holds a time.
    laItemRef Segment(uint32_t object, double time) const {
        uint32_t at = laNoLane;
        const laItem_Line* lane = laCanvas_FindLane(std::as_const(canvas.items), object, &at);
        for (size_t i = 0; lane && i < lane->segments.size(); ++i)
            if (lane->segments[i].t0 <= time && time <= lane->segments[i].t1)
                return {laItemType::Line, at, i};
        return {};
    }
    LaStretch Complete(const laItemRef& item, const Progress& progress = {}) {
        return laStretch_Complete(canvas.items, canvas.source, canvas.looks.legend, item, progress);
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(StretchEnds, AreThoseOfTheTraceWhereverTheItemsAreCut) {
    OpenLong();
    for (const auto& [low, high] :
         {std::pair{15.0, 15.01}, {0.1005, 0.2}, {29.0, 29.8999}, {0.0, 30.0}, {12, 30}}) {
        laCanvas_ShowRange(canvas, low, high);
        const laItemRef item = Segment(1, (std::max(low, 0.1) + std::min(high, 29.9)) / 2);
        ASSERT_EQ(item.itype, laItemType::Line) << low;
        const LaStretch stretch = Complete(item);
        EXPECT_TRUE(stretch.whole()) << low;
        EXPECT_EQ(stretch.from.time, 0.1) << low;
        EXPECT_EQ(stretch.to.time, 29.9) << low;
    }
}

// Object 1 is pending on both sides of a stretch that can't be read, where it may have been anything.
TEST_F(StretchEnds, AreLostInWhatCantBeRead) {
    OpenLong();
    CursorPosition damaged;
    ASSERT_TRUE(mt_GetEventListAndStateFromTimeRange(*canvas.source.store, 15050, true, damaged, nullptr));
    {
        std::fstream file(test.folder / "store0.trs", std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(damaged.offset));
        file << std::string(64, '\xFF');
    }
    laCanvas_ShowRange(canvas, 12, 12.01);
    const LaStretch before = Complete(Segment(1, 12.005));
    EXPECT_EQ(before.from.known, LaEndKnown::Exact);
    EXPECT_EQ(before.from.time, 0.1);
    EXPECT_EQ(before.to.known, LaEndKnown::Lost);
    EXPECT_NEAR(before.to.time, 15.0, 0.2) << "known up to the damage";
    laCanvas_ShowRange(canvas, 18, 18.01);
    const LaStretch behind = Complete(Segment(1, 18.005));
    EXPECT_EQ(behind.from.known, LaEndKnown::Lost);
    EXPECT_NEAR(behind.from.time, 15.1, 0.2) << "known from the damage on";
    EXPECT_EQ(behind.to.known, LaEndKnown::Exact);
    EXPECT_EQ(behind.to.time, 29.9);
}

TEST_F(StretchEnds, WhatTheTraceDoesNotHoldIsSaid) {
    OpenLong();
    laCanvas_ShowRange(canvas, 15, 15.01);
    const LaStretch stretch = Complete(Segment(3, 15.005));
    EXPECT_EQ(stretch.from.known, LaEndKnown::Exact) << "its first event tells its status";
    EXPECT_EQ(stretch.from.time, 0);
    EXPECT_EQ(stretch.to.known, LaEndKnown::Beyond);
    EXPECT_EQ(stretch.to.time, 29.999) << "the last event";
    EXPECT_NE(
        laTip_Text(canvas, Segment(3, 15.005)).find(" from 0 and goes on at 29.999 with length over 29.999"),
        std::string::npos);
}

TEST_F(StretchEnds, AStoppedSearchSaysWhatItKnowsAndGoesOnWhereItWas) {
    OpenLong();
    laCanvas_ShowRange(canvas, 15, 15.01);
    const laItemRef item = Segment(1, 15.005);
    const double cut = canvas.items.lanes[item.lane].segments[item.index].t0;
    const auto once = [](double, double) { return false; };
    const std::string first = laTip_Text(canvas, item, once);
    EXPECT_NE(first.find(" from before "), std::string::npos) << first;
    EXPECT_NE(first.find(" with length over "), std::string::npos) << first;
    double before = laStretch_Of(canvas.items, item).from.time;
    EXPECT_LE(before, cut);
    int pieces = 0;
    while (!laStretch_Of(canvas.items, item).from.settled() && ++pieces < 1000) {
        Complete(item, once);
        EXPECT_LE(laStretch_Of(canvas.items, item).from.time, before) << "never back";
        before = laStretch_Of(canvas.items, item).from.time;
    }
    EXPECT_GT(pieces, 3);
    EXPECT_EQ(before, 0.1);
    canvas.hand.tipItem = item;
    canvas.hand.tipItems = canvas.items.itemsVersion;
    std::optional<std::string> text;
    for (int i = 0; i < 1000 && (text = laTip_More(canvas, 0)) && text->empty(); ++i) {
    }
    ASSERT_TRUE(text);
    EXPECT_NE(text->find(" from 0.1 to 29.9 with length 29.8 (in "), std::string::npos) << *text;
    EXPECT_FALSE(laTip_More(canvas)) << "nothing is left";
    laCanvas_ClearItems(canvas);
    canvas.hand.tipItem = item;
    EXPECT_FALSE(laTip_More(canvas)) << "the items are gone";
}

TEST_F(StretchEnds, ATipTellsTheTimesOfTheTrace) {
    const std::string trace = test.folder / "run.trr";
    std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", trace);
    OpenedSource opened = import_OpenSource(trace, {});
    Legend legend;
    ASSERT_TRUE(opened.store && configure_Read(legend, "KORVANTIS", configure_ConsoleCallbacks(), 0));
    ASSERT_TRUE(laCanvas_SetUpFromStore(canvas, std::move(opened.store), std::move(legend), trace));
    laCanvas_ShowRange(canvas, 0.004558, 0.005172);
    canvas.axis.timeMode = Time_Millisecond;
    std::string tip;
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
        if (canvas.items.lanes[i].name == "CPU0@migration/0/18")
            tip = laTip_Text(canvas, Segment(canvas.items.lanes[i].objectId, 0.0048));
    EXPECT_NE(tip.find(" from 0.03819 to 8.017088 with length 7.978898 (in Milliseconds)"), std::string::npos)
        << tip;
}

// Against a fetch of everything, for every lane, from views all over.
TEST_F(StretchEnds, AgreeWithTheWholeTrace) {
    ASSERT_TRUE(test.Open(random_events(11, 3000)));
    canvas.options.prefetch = false;
    test.ShowAll();
    std::map<uint32_t, std::vector<LaLnSeg>> whole;
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
        whole[canvas.items.lanes[i].objectId] = canvas.items.lanes[i].segments.kept();
    const double total = canvas.source.totalLength;
    size_t compared = 0;
    for (double low = 0; low < total * 0.95; low += total / 23) {
        laCanvas_ShowRange(canvas, low, low + total / 20);
        for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
            for (size_t s = 0; s < canvas.items.lanes[i].segments.size(); ++s) {
                const LaLnSeg shown = canvas.items.lanes[i].segments[s];
                if (shown.t1 <= shown.t0) continue;
                const LaStretch stretch = Complete({laItemType::Line, i, s});
                const double middle = (shown.t0 + shown.t1) / 2;
                for (const LaLnSeg& one : whole[canvas.items.lanes[i].objectId]) {
                    if (!(one.t0 < middle && middle < one.t1)) continue;
                    EXPECT_EQ(one.status, shown.status);
                    EXPECT_EQ(stretch.from.time, one.t0) << low;
                    if (stretch.to.known == LaEndKnown::Exact) {
                        EXPECT_EQ(stretch.to.time, one.t1) << low;
                    } else {
                        EXPECT_EQ(stretch.to.known, LaEndKnown::Beyond);
                        EXPECT_EQ(one.t1, total);
                    }
                    ++compared;
                }
            }
    }
    EXPECT_GT(compared, 100u);
}

}  // namespace
