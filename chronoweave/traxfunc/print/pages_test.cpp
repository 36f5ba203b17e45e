#include "chronoweave/traxfunc/print/pages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "windlib/lagraph/recording_page.h"

namespace {

constexpr PageFacts landscape{
    .width = 7016, .height = 4960, .printerX = 600, .printerY = 600, .canDraw = true};

class Pages : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(test.Open(random_events(4, 4000)));
        canvas.axis.autoAdjustUnit = false;
        total = canvas.source.totalLength;
        test.ShowAll();
        laPicture_LayOut(canvas, test.surface, 1000, 600, false);
        test.graph.surface = nullptr;
        laCanvas_ShowRange(canvas, 0, canvas.source.totalLength);
        list = laPicture_GraphLeft(canvas, test.surface, 1000);
    }

    TraxPrinted Print(const TraxPrintOptions& options = {}) {
        return traxPrint_Pages(canvas, page, Sizes(), options);
    }
    TraxPrintSizes Sizes() const { return traxPrint_SizesOf(canvas, list); }
    TraxPageGeometry Geometry() const {
        return traxPrint_Geometry(landscape, traxPrint_WithNames(canvas, Sizes()));
    }
    std::vector<SurfaceOp> Ops(SurfaceOp::Kind kind, size_t of = 0) const {
        std::vector<SurfaceOp> found;
        for (const SurfaceOp& op : page.pages.at(of))
            if (op.kind == kind) found.push_back(op);
        return found;
    }
    // The text of the line about the view.
    std::string ViewLine(size_t of = 0) const {
        for (const std::string& text : page.texts(of))
            if (text.starts_with("View From: ")) return text;
        return {};
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    RecordingPage page{landscape};
    int list = 0;
    double total = 0;
};

TEST_F(Pages, EverythingStandsWhereTheGeometrySays) {
    canvas.source.canvasName = "A trace";
    const TraxPrinted printed = Print();
    ASSERT_EQ(printed.end, TraxPrintEnd::Done);
    EXPECT_EQ(printed.pages, 1);
    const TraxPageGeometry g = Geometry();
    EXPECT_EQ(printed.zoomRate, g.zoomRate);
    EXPECT_EQ(page.family, "Courier New");
    EXPECT_EQ(page.bigHeight, g.printBigFontHeight);
    EXPECT_EQ(page.smallHeight, g.printSmallFontHeight);
    // The frame is the first that is drawn.
    const std::vector<SurfaceOp> lines = Ops(SurfaceOp::StyledLine);
    ASSERT_GE(lines.size(), 10u);
    const int right = g.printOriginX + g.width - 1, bottom = g.printOriginY + g.height - 1;
    const int corners[4][4] = {{g.printOriginX, g.printOriginY, right, g.printOriginY},
                               {g.printOriginX, bottom, right, bottom},
                               {g.printOriginX, g.printOriginY, g.printOriginX, bottom},
                               {right, g.printOriginY, right, bottom}};
    for (int i = 0; i < 4; ++i) {
        const SurfaceOp& line = lines[static_cast<size_t>(i)];
        EXPECT_EQ(line.x0, corners[i][0]) << i;
        EXPECT_EQ(line.y0, corners[i][1]) << i;
        EXPECT_EQ(line.x1, corners[i][2]) << i;
        EXPECT_EQ(line.y1, corners[i][3]) << i;
    }
    // A shown icon keeps its place in the lane, and its size.
    const std::vector<SurfaceOp> icons = Ops(SurfaceOp::Icon);
    ASSERT_FALSE(icons.empty());
    for (const SurfaceOp& icon : icons) {
        EXPECT_NEAR(icon.x1, icon_Width(icon.icon) * g.PerX(), 1);
        EXPECT_GE(icon.y0, g.Y(TraxRegion::Data, -icon_Height(icon.icon)));
    }
    for (const std::vector<SurfaceOp>& of : page.pages)
        for (const SurfaceOp& op : of)
            if (op.kind == SurfaceOp::Text) {
                EXPECT_GE(op.x0, g.printOriginX) << op.text;
                EXPECT_LE(op.y0, bottom) << op.text;
            }
}

TEST_F(Pages, TheTextsAreThoseOfTheCanvas) {
    ASSERT_EQ(Print().end, TraxPrintEnd::Done);
    const std::vector<std::string> texts = page.texts(0);
    const auto has = [&](const std::string& text) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    };
    EXPECT_TRUE(has("VOREL Chronoweave") || has(canvas.source.canvasName)) << testing::PrintToString(texts);
    EXPECT_TRUE(has(canvas.fields.totalLengthTitle + ": " + canvas.fields.totalLength))
        << testing::PrintToString(texts);
    EXPECT_EQ(ViewLine(), "View From: " + canvas.fields.viewFrom + " To: " + canvas.fields.viewTo +
                              " With Length: " + canvas.fields.viewLength);
    for (const MslObjectEntry* row : canvas.taskList->rows())
        EXPECT_TRUE(has(canvas.taskList->RowText(*row, 0))) << canvas.taskList->RowText(*row, 0);
}

// Two canvases of one size, one in use and one made for the purpose, give the same calls.
TEST_F(Pages, ThePageIsTheSameWhoeverPrintsIt) {
    ASSERT_EQ(Print({.foot = TraxPrintFoot::Legend}).end, TraxPrintEnd::Done);
    const std::string first = page.text();
    canvas.marks.cursor[0] = total / 4;
    canvas.marks.cursor[1] = total / 2;
    canvas.marks.pendingCursorX = 77;
    canvas.taskList->list().SelectOnly(0);
    RecordingPage again(landscape);
    ASSERT_EQ(traxPrint_Pages(canvas, again, Sizes(), {.foot = TraxPrintFoot::Legend}).end,
              TraxPrintEnd::Done);
    EXPECT_EQ(again.text(), first) << "cursor and selection are printed";
}

TEST_F(Pages, TheCanvasIsAsItWas) {
    canvas.marks.cursor[0] = total / 8;
    canvas.marks.cursor[1] = total * 0.9;
    laCanvas_ClearItems(canvas);  // so that the pages need what is not there
    ASSERT_TRUE(laCanvas_ShowRange(canvas, total * 0.5, total * 0.6, {.ahead = laFetchAhead::No}));
    ASSERT_FALSE(laCanvas_IsCached(canvas.items, canvas.source, total / 8, total * 0.9));
    const uint32_t version = canvas.items.itemsVersion;
    const size_t icons = canvas.items.bitmaps.size();
    const double low = canvas.view.viewLow, high = canvas.view.viewHigh;
    const std::string from = canvas.fields.viewFrom;
    const size_t rows = canvas.taskList->rows().size();
    int told = 0;
    canvas.calls.fieldsChanged = [&] { ++told; };
    canvas.calls.paintWanted = [&] { ++told; };
    canvas.wanted = {};
    ASSERT_EQ(Print({.range = TraxPrintRange::Selection, .pages = 3}).end, TraxPrintEnd::Done);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(canvas.graph, &test.graph);
    EXPECT_EQ(canvas.graph->surface, nullptr);
    EXPECT_EQ(canvas.items.itemsVersion, version);
    EXPECT_EQ(canvas.items.bitmaps.size(), icons);
    EXPECT_EQ(canvas.view.viewLow, low);
    EXPECT_EQ(canvas.view.viewHigh, high);
    EXPECT_EQ(canvas.fields.viewFrom, from);
    EXPECT_EQ(canvas.taskList->rows().size(), rows);
    for (const MslObjectEntry* row : canvas.taskList->rows())
        EXPECT_GE(canvas.taskList->RowText(*row, 0).size(), 1u);
    EXPECT_EQ(page.pages.size(), 3u);
    for (size_t i = 0; i < 3; ++i) EXPECT_FALSE(Ops(SurfaceOp::Icon, i).empty()) << i;
    EXPECT_EQ(canvas.marks.cursor[1], total * 0.9);
    EXPECT_FALSE(canvas.wanted.any());
}

TEST_F(Pages, ARangeIsDividedEvenlyWithTheNamesOnEach) {
    ASSERT_EQ(Print({.pages = 4}).pages, 4);
    ASSERT_EQ(page.pages.size(), 4u);
    double end = 0;
    for (size_t i = 0; i < 4; ++i) {
        const std::string line = ViewLine(i);
        double from = -1, to = -1;
        ASSERT_EQ(std::sscanf(line.c_str(), "View From: %lf To: %lf", &from, &to), 2) << line;
        EXPECT_NEAR(from, end, total / 200) << line;
        end = to;
        const std::vector<std::string> texts = page.texts(i);
        EXPECT_NE(std::find(texts.begin(), texts.end(), "Page " + std::to_string(i + 1) + " of 4"),
                  texts.end());
        const std::string name = canvas.taskList->RowText(*canvas.taskList->rows().front(), 0);
        EXPECT_NE(std::find(texts.begin(), texts.end(), name), texts.end()) << name;
    }
    EXPECT_NEAR(end, total, total / 200);
}

TEST_F(Pages, TheSelectionAloneIsPrinted) {
    EXPECT_EQ(Print({.range = TraxPrintRange::Selection}).end, TraxPrintEnd::NothingShown);
    canvas.marks.cursor[0] = total / 2;
    EXPECT_EQ(Print({.range = TraxPrintRange::Selection}).end, TraxPrintEnd::NothingShown);
    canvas.marks.cursor[1] = total / 4;
    ASSERT_EQ(Print({.range = TraxPrintRange::Selection}).end, TraxPrintEnd::Done);
    double from = -1, to = -1;
    ASSERT_EQ(std::sscanf(ViewLine().c_str(), "View From: %lf To: %lf", &from, &to), 2) << ViewLine();
    EXPECT_NEAR(from, total / 4, total / 200);
    EXPECT_NEAR(to, total / 2, total / 200);
}

TEST_F(Pages, TheFootHasWhatIsSeenOfTheLegend) {
    ASSERT_EQ(Print({.foot = TraxPrintFoot::Legend}).end, TraxPrintEnd::Done);
    const std::vector<TraxFootEntry> entries = traxFoot_Entries(canvas.scene());
    ASSERT_FALSE(entries.empty());
    const std::vector<std::string> texts = page.texts(0);
    for (const TraxFootEntry& entry : entries)
        EXPECT_NE(std::find(texts.begin(), texts.end(), entry.name), texts.end()) << entry.name;
    for (LaEventLook& look : canvas.looks.eventLooks) look.shown = false;
    for (LaStatusLook& look : canvas.looks.statusLooks) look.shown = false;
    EXPECT_TRUE(traxFoot_Entries(canvas.scene()).empty());
}

TEST_F(Pages, WhatFailsIsKnown) {
    const struct {
        const char* what;
        void (*spoil)(RecordingPage&);
        TraxPrintEnd end;
        int pages;
    } cases[] = {
        {"fonts", [](RecordingPage& of) { of.hasFonts = false; }, TraxPrintEnd::NoFont, 0},
        {"start", [](RecordingPage& of) { of.failStart = 1; }, TraxPrintEnd::StartFailed, 0},
        {"third start", [](RecordingPage& of) { of.failStart = 3; }, TraxPrintEnd::StartFailed, 2},
        {"second end", [](RecordingPage& of) { of.failEnd = 2; }, TraxPrintEnd::EndFailed, 1},
    };
    for (const auto& c : cases) {
        RecordingPage spoilt(landscape);
        c.spoil(spoilt);
        const TraxPrinted printed = traxPrint_Pages(canvas, spoilt, Sizes(), {.pages = 3});
        EXPECT_EQ(printed.end, c.end) << c.what;
        EXPECT_EQ(printed.pages, c.pages) << c.what;
        EXPECT_EQ(canvas.graph, &test.graph) << c.what;
    }
    PageFacts facts = landscape;
    facts.canDraw = false;
    RecordingPage blind(facts);
    EXPECT_EQ(traxPrint_Pages(canvas, blind, Sizes(), {}).end, TraxPrintEnd::CannotDraw);
    RecordingPage tiny(PageFacts{.width = 79, .height = 79, .printerX = 96, .printerY = 96, .canDraw = true});
    EXPECT_EQ(traxPrint_Pages(canvas, tiny, Sizes(), {}).end, TraxPrintEnd::CannotDraw);
    EXPECT_EQ(blind.started + tiny.started, 0);
}

TEST_F(Pages, StoppedKeepsThePagesThatAreWhole) {
    double last = -1;
    canvas.calls.progress = [&](double done, double total) {
        EXPECT_GE(done, last);
        EXPECT_EQ(total, 5);
        last = done;
        return done < 3;
    };
    const TraxPrinted printed = Print({.pages = 5});
    EXPECT_EQ(printed.end, TraxPrintEnd::Stopped);
    EXPECT_EQ(printed.pages, 2);
    EXPECT_EQ(page.pages.size(), 2u);
    EXPECT_TRUE(canvas.calls.progress);
}

}  // namespace
