
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/draw/hit_marks.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/found_times.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr IconHandle first = 0, second = 1, mark = 2;
constexpr double unit = 0.01;  // seconds a pixel in Clusters

// A canvas with lanes made by hand; icons of event row 0 are 10 wide, of row 1 20, the mark 14.
class Clusters : public testing::Test {
  protected:
    Clusters() {
        LoadLegend();
        _LaCanvasData& canvas = *test.canvas;
        canvas.looks.eventLooks[0] = {first, 10, 10, true};
        canvas.looks.eventLooks[1] = {second, 20, 10, true};
        canvas.looks.maxIconWidth = 20;
        canvas.looks.overlapIcon = NoIcon;
        for (uint32_t id : {1u, 2u}) laLn_New(canvas.items, id);
        canvas.source.totalLength = canvas.source.scrollExtent = 1000 * unit;
        laCanvas_ShowRange(canvas, 0, 1000 * unit);
        laCanvas_Resort(canvas);
    }
    void LoadLegend() { EXPECT_TRUE(laCanvas_LoadLegend(*test.canvas, test_legend())); }

    void Icon(int x, uint32_t lane = 0, int32_t event = 0) {
        laBm_Append(test.canvas->items, {x * unit, lane, test.canvas->items.bitmaps.size(), event, 1, 0});
    }
    // Icons drawn in a lane, as pairs of column and handle.
    std::vector<std::pair<int, IconHandle>> Drawn(uint32_t lane = 0) {
        test.surface.forget();
        laCanvas_Repaint(*test.canvas);
        std::vector<std::pair<int, IconHandle>> drawn;
        const int middle = laLn_IconY(test.canvas->looks, test.canvas->items.lanes[lane]);
        for (const SurfaceOp& op : test.surface.of(SurfaceOp::Icon))
            if (op.y0 == middle - 5) drawn.emplace_back(op.x0, op.icon);
        return drawn;
    }

    TestCanvas test;
};

using Icons = std::vector<std::pair<int, IconHandle>>;

TEST_F(Clusters, OneIconThenOneMarkAboutEveryIconWidth) {
    for (int x : {100, 103, 105, 110, 116, 150}) Icon(x);
    // Without a mark of its own the free place moves on by the widest icon: 103 + 10.
    EXPECT_EQ(Drawn(), (Icons{{95, first}, {111, first}, {145, first}}));
}

TEST_F(Clusters, MarkTakesThePlaceOfTheSecondIcon) {
    test.canvas->looks.overlapIcon = mark;
    test.canvas->options.plainMarks = true;
    const int reach = std::max(10, icon_Width(mark)) / 2;
    for (int x : {100, 103, 103 + reach, 104 + reach}) Icon(x);
    EXPECT_EQ(Drawn(), (Icons{{95, first}, {98, mark}, {99 + reach, first}}));
}

TEST_F(Clusters, LanesAreIndependentAndHiddenEventsTakeNoRoom) {
    test.canvas->looks.eventLooks[2].shown = false;
    Icon(100, 0, 2);
    Icon(101, 0);
    Icon(102, 1, 1);
    Icon(103, 0);
    EXPECT_EQ(Drawn(0), (Icons{{96, first}}));
    EXPECT_EQ(Drawn(1), (Icons{{92, second}}));
}

TEST_F(Clusters, OlderRuleShowsWhatTheIconBeforeLeavesFree) {
    test.canvas->options.newTrv = false;
    for (int x : {100, 104, 120}) Icon(x);
    EXPECT_EQ(Drawn(), (Icons{{95, first}, {99, first}, {115, first}}));
    const auto clips = test.surface.of(SurfaceOp::PushClip);
    EXPECT_TRUE(std::any_of(clips.begin(), clips.end(),
                            [](const SurfaceOp& op) { return op.x0 == 105 && op.x1 == 4; }));
}

TEST_F(Clusters, SwitchesOfAColumnAreDrawnOnlyAsFarAsTheyShow) {
    _LaCanvasData& canvas = *test.canvas;
    canvas.options.plainSwitches = true;
    for (uint32_t id : {3u, 4u}) laLn_New(canvas.items, id);
    laCanvas_Resort(canvas);
    const int32_t plain = canvas.looks.legend.contextSwitchStatus;
    for (const auto& [x, from, to] :
         {std::tuple{10, 0u, 1u}, {10, 0u, 1u}, {10, 0u, 3u}, {11, 1u, 2u}, {11, 3u, 2u}})
        canvas.items.ctxLines.kept().push_back({x * unit, from, to, plain});
    laCanvas_Repaint(canvas);
    std::map<int, std::vector<std::pair<int, int>>> columns;
    for (const SurfaceOp& op : test.surface.of(SurfaceOp::StyledLine))
        columns[op.x0].emplace_back(op.y0, op.y1);
    const auto y = [&](uint32_t lane) { return laLn_LineY(canvas.looks, canvas.items.lanes[lane]); };
    EXPECT_EQ(columns[10], (std::vector<std::pair<int, int>>{{y(0), y(3)}}));
    EXPECT_EQ(columns[11], (std::vector<std::pair<int, int>>{{y(1), y(2)}, {y(2), y(3)}}));
}

TEST_F(Clusters, SwitchOfAHiddenObjectRunsToTheAgentAndIsInvisibleWithoutOne) {
    _LaCanvasData& canvas = *test.canvas;
    canvas.items.ctxLines.kept().push_back({1, 0, 1, canvas.looks.legend.contextSwitchStatus});
    int y0 = 0, y1 = 0;
    EXPECT_TRUE(laCtx_Ends(canvas.items, canvas.looks, canvas.items.ctxLines[0], y0, y1));
    canvas.items.lanes[1].hidden = true;
    EXPECT_FALSE(laCtx_Ends(canvas.items, canvas.looks, canvas.items.ctxLines[0], y0, y1));
    laItem_Line agent;
    agent.isAgent = true;
    agent.hidden = false;
    agent.y = 300;
    canvas.items.hiddenAgent = canvas.items.lanes.push_back(std::move(agent));
    EXPECT_TRUE(laCtx_Ends(canvas.items, canvas.looks, canvas.items.ctxLines[0], y0, y1));
    EXPECT_EQ(y1, laLn_LineY(canvas.looks, canvas.items.lanes[2]));
    canvas.items.lanes[0].hidden = true;
    EXPECT_FALSE(laCtx_Ends(canvas.items, canvas.looks, canvas.items.ctxLines[0], y0, y1));
}

TEST_F(Clusters, DashesStandStillWhileThePictureScrolls) {
    _LaCanvasData& canvas = *test.canvas;
    const int32_t dashed = canvas.looks.legend.StatusByName("OffBeat");
    laLn_AppendSegment(canvas.items.lanes[0], 0, 1000 * unit, dashed);
    canvas.source.totalLength = canvas.source.scrollExtent = 1000 * unit;
    for (int scroll : {0, 7, 60, 133}) {
        test.surface.forget();
        laCanvas_ShowRange(canvas, 100 * unit + scroll * unit / 2, 600 * unit + scroll * unit / 2,
                           {.paint = true});
        const auto lines = test.surface.of(SurfaceOp::StyledLine);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].phase, static_cast<int>((200 + static_cast<uint64_t>(scroll)) % 72)) << scroll;
    }
}

// The picture of the solid operations as colours by pixel, icons by a number of their own.
class Raster {
  public:
    Raster(int width, int height) : width_(width), pixels_(static_cast<size_t>(width * height), 0xFFFFFF) {}
    void Apply(const std::vector<SurfaceOp>& ops) {
        std::vector<laRect> clips{{0, 0, width_, static_cast<int>(pixels_.size()) / width_}};
        for (const SurfaceOp& op : ops) {
            const laRect& clip = clips.back();
            switch (op.kind) {
                case SurfaceOp::PushClip:
                    clips.push_back({std::max(clip.left, op.x0), std::max(clip.top, op.y0),
                                     std::min(clip.right, op.x0 + op.x1),
                                     std::min(clip.bottom, op.y0 + op.y1)});
                    break;
                case SurfaceOp::PopClip:
                    clips.pop_back();
                    break;
                case SurfaceOp::Fill:
                    Box(clip, op.x0, op.y0, op.x1, op.y1, op.colour);
                    break;
                case SurfaceOp::Clear:
                    Box(clip, op.x0, op.y0, op.x1, op.y1, 0xFFFFFF);
                    break;
                case SurfaceOp::Icon:
                    Box(clip, op.x0, op.y0, 14, 14, 0x1000000u + static_cast<Colour>(op.icon));
                    break;
                case SurfaceOp::Line:
                    Box(clip, op.x0, op.y0, op.x1 - op.x0 + 1, op.y1 - op.y0 + 1, op.colour);
                    break;
                case SurfaceOp::StyledLine:
                    Box(clip, std::min(op.x0, op.x1) - (op.x0 == op.x1 ? op.thickness / 2 : 0),
                        std::min(op.y0, op.y1), std::abs(op.x1 - op.x0) + 1, std::abs(op.y1 - op.y0) + 1,
                        op.colour);
                    break;
                default:
                    break;
            }
        }
    }
    bool operator==(const Raster&) const = default;

  private:
    void Box(const laRect& clip, int x, int y, int w, int h, Colour colour) {
        for (int row = std::max(y, clip.top); row < std::min(y + h, clip.bottom); ++row)
            for (int column = std::max(x, clip.left); column < std::min(x + w, clip.right); ++column)
                pixels_[static_cast<size_t>(row) * static_cast<size_t>(width_) +
                        static_cast<size_t>(column)] = colour;
    }
    int width_;
    std::vector<Colour> pixels_;
};

TEST(Draw, PartPaintedAloneLooksLikeThatPartOfTheWhole) {
    gen_set_console_sink([](std::string_view) {});
    Legend legend = test_legend();
    for (LegendStatus& status : legend.statuses) status.lineStyle = Line_Solid;
    TestCanvas test(700, 400);
    ASSERT_TRUE(test.Open(random_events(4, 4000), "ThreadX", legend));
    test.ShowAll();
    _LaCanvasData& canvas = *test.canvas;
    for (double zoom : {1.0, 0.2, 0.01}) {
        laCanvas_ShowRange(canvas, canvas.source.totalLength * 0.3 * (1 - zoom),
                           canvas.source.totalLength * (0.3 * (1 - zoom) + zoom));
        test.surface.forget();
        laCanvas_Repaint(canvas);
        Raster whole(700, 400);
        whole.Apply(test.surface.ops);
        Raster patched = whole;
        for (int x : {0, 5, 211, 450, 690}) {
            test.surface.forget();
            laCanvas_RepaintColumns(canvas, x, x + 3 + x / 10);
            laCanvas_RepaintRows(canvas, x / 3, x / 3 + 20);
            patched.Apply(test.surface.ops);
            EXPECT_TRUE(patched == whole) << zoom << " at " << x;
        }
    }
    EXPECT_EQ(test.surface.clipDepth(), 0);
    gen_set_console_sink({});
}

TEST(Draw, CoordinatesStayNearTheAreaAtAnyZoom) {
    gen_set_console_sink([](std::string_view) {});
    TestCanvas test(700, 400);
    ASSERT_TRUE(test.Open(random_events(4, 4000)));
    _LaCanvasData& canvas = *test.canvas;
    for (double length = canvas.source.totalLength * 3; length > 1e-11; length /= 7) {
        test.surface.forget();
        laCanvas_ShowRange(canvas, canvas.source.totalLength / 3, canvas.source.totalLength / 3 + length,
                           {.paint = true});
        EXPECT_LT(test.surface.farthest, 1000) << length;
        EXPECT_GT(test.surface.counts[SurfaceOp::Fill], 0u);
    }
    gen_set_console_sink({});
}

TEST(Draw, CursorsAndTheirMessage) {
    TestCanvas test(1000, 400);
    ASSERT_TRUE(test.Open({name_event(0, 0x400, "A"), {999, mt_TaskChange, 0, words({0x400, 0})}}));
    _LaCanvasData& canvas = *test.canvas;
    test.ShowAll();
    canvas.marks.cursor[0] = 0.25;
    canvas.marks.cursor[1] = 0.75;
    canvas.marks.secondDragged = true;
    test.surface.forget();
    laCanvas_Repaint(canvas);
    int plain = 0, dragged = 0;
    for (const SurfaceOp& op : test.surface.of(SurfaceOp::Line)) {
        if (op.x0 == 250 && op.y0 == 0) plain += !op.exclusiveOr;
        if (op.x0 == 750 && op.y0 == 0) dragged += op.exclusiveOr && op.colour == 0xFFFFFF;
    }
    EXPECT_EQ(plain, 1);
    EXPECT_EQ(dragged, 1);
    canvas.axis.timeMode = Time_Millisecond;
    EXPECT_EQ(laCanvas_ColumnText(canvas, 500), "500 Milliseconds.");
    laCanvas_EraseCursor(canvas, 500);
    EXPECT_EQ(test.message(), " ");
}

TEST(Picture, PlacesItsPartsSideBySideAndKeepsInside) {
    gen_set_console_sink([](std::string_view) {});
    for (const auto& [width, height] : {std::pair{1200, 600}, {300, 200}, {40, 30}, {1, 1}}) {
        TestCanvas test;
        ASSERT_TRUE(test.Open(random_events(4, 500)));
        RecordingSurface sheet(width, height);
        const laPicture picture = laPicture_LayOut(*test.canvas, sheet, width, height);
        test.ShowAll();
        laPicture_Draw(*test.canvas, sheet, picture, false);
        EXPECT_EQ(sheet.clipDepth(), 0);
        EXPECT_EQ(test.graph.surface, &test.surface);
        EXPECT_EQ(picture.graphLeft + picture.graphWidth, width > 103 ? width : picture.graphLeft);
        EXPECT_LE(picture.graphTop + picture.graphHeight, height);
        if (width < 1000) continue;
        EXPECT_GE(picture.nameWidth, 100);
        EXPECT_LE(picture.nameWidth, width / 4);
        EXPECT_EQ(picture.rowHeight, test.canvas->looks.rowHeight);
        const auto texts = sheet.texts();
        const auto shown = [&](const std::string& text) {
            return std::find(texts.begin(), texts.end(), text) != texts.end();
        };
        EXPECT_TRUE(shown(test.canvas->fields.tickPattern) && shown(test.canvas->fields.tickUnit));
        EXPECT_TRUE(shown(test.canvas->fields.totalLengthTitle + ": " + test.canvas->fields.totalLength));
    }
    gen_set_console_sink({});
}

// A million marks cost what the columns cost; each column with a hit bears one.
TEST(Draw, HitsAreMarkedOncePerColumn) {
    TestCanvas test;
    ASSERT_TRUE(test.Open(random_events(3, 300)));
    test.ShowAll();
    _LaCanvasData& canvas = *test.canvas;
    std::vector<double> times;
    for (int i = 0; i < 1000000; ++i) times.push_back(canvas.source.totalLength * i / 1e6);
    laHits_Set(canvas, times);
    test.surface.forget();
    laHits_Paint(canvas.scene(), 0, canvas.graph->width);
    EXPECT_EQ(test.surface.counts[SurfaceOp::Fill], 1000u * laHits_Height);
    const double pixel = 1 / canvas.view.pixelsPerUnit;
    laHits_Set(canvas, {100 * pixel, 100.2 * pixel, 400 * pixel});
    for (const auto& [x0, x1, marks] :
         {std::tuple{0, 1000, 2u}, {97, 98, 1u}, {96, 97, 0u}, {104, 397, 0u}, {403, 404, 1u}}) {
        test.surface.forget();
        laHits_Paint(canvas.scene(), x0, x1);
        EXPECT_EQ(test.surface.counts[SurfaceOp::Fill], marks * laHits_Height) << x0;
    }
    laCanvas_Reset(canvas, laResetOf::View);
    EXPECT_TRUE(canvas.marks.hits.empty());
}

}  // namespace
