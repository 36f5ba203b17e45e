#include "chronoweave/traxfunc/print/page_geometry.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// A graph of 1000 by 500 with 200 of names; strips of 20 + 18 + 20 pixels above it.
TraxPrintSizes usual_sizes() {
    TraxPrintSizes sizes;
    sizes.graphWidth = 1000;
    sizes.graphHeight = 500;
    sizes.dataHeight = 464;
    sizes.listWidth = 200;
    sizes.barWidth = 14;
    sizes.fontHeight = 16;
    sizes.axisFontHeight = 13;
    return sizes;
}

PageFacts sheet(int width, int height, int ppiX, int ppiY) {
    return {.width = width, .height = height, .printerX = ppiX, .printerY = ppiY, .canDraw = true};
}

// By hand, in the order of the columns. A4 at 600: 600 / 96 = 6.25; the margin is 0.4 x 600 = 240; the frame
// is 4960 - 480 = 4480 by 7016 - 480 = 6536; across 1200 x 6.25 = 7500 pixels are to go into 4480 - 25 =
// 4455: the rate is 0.594; down 558 x 6.25 = 3487.5 would allow 1.87.
TEST(PageGeometry, FollowsFromSheetAndScreen) {
    const struct {
        const char* what;
        PageFacts page;
        double zoomRate, scaleX, scaleY;
        int originX, originY, width, height, big, small;
    } cases[] = {
        {"A4 portrait", sheet(4960, 7016, 600, 600), 0.594, 6.25, 6.25, 240, 240, 4480, 6536, 59, 48},
        {"A4 landscape", sheet(7016, 4960, 600, 600), 6511 / 7500.0, 6.25, 6.25, 240, 240, 6536, 4480, 87,
         71},
        {"Letter portrait", sheet(2550, 3300, 300, 300), 2297.5 / 3750, 3.125, 3.125, 120, 120, 2310, 3060,
         31, 25},
        {"Letter landscape", sheet(3300, 2550, 300, 300), 3047.5 / 3750, 3.125, 3.125, 120, 120, 3060, 2310,
         41, 33},
        {"A5 portrait", sheet(560, 794, 96, 96), 480 / 1200.0, 1, 1, 38, 38, 484, 718, 6, 5},
        {"A5 landscape", sheet(794, 560, 96, 96), 714 / 1200.0, 1, 1, 38, 38, 718, 484, 10, 8},
        {"never larger than on screen", sheet(20000, 30000, 600, 600), 1, 6.25, 6.25, 240, 240, 19520, 29520,
         100, 81},
        {"the height decides", sheet(20000, 2000, 600, 600), 1520 / 3487.5, 6.25, 6.25, 240, 240, 19520, 1520,
         44, 35},
        {"other resolutions down than across", sheet(4960, 3508, 600, 300), 0.594, 6.25, 3.125, 240, 120,
         4480, 3268, 30, 24},
    };
    for (const auto& c : cases) {
        const TraxPageGeometry g = traxPrint_Geometry(c.page, usual_sizes());
        EXPECT_NEAR(g.zoomRate, c.zoomRate, 1e-12) << c.what;
        EXPECT_DOUBLE_EQ(g.printScaleX, c.scaleX) << c.what;
        EXPECT_DOUBLE_EQ(g.printScaleY, c.scaleY) << c.what;
        EXPECT_EQ(g.printOriginX, c.originX) << c.what;
        EXPECT_EQ(g.printOriginY, c.originY) << c.what;
        EXPECT_EQ(g.width, c.width) << c.what;
        EXPECT_EQ(g.height, c.height) << c.what;
        EXPECT_EQ(g.printBigFontHeight, c.big) << c.what;
        EXPECT_EQ(g.printSmallFontHeight, c.small) << c.what;
    }
}

// A4 portrait as above: 0.594 x 6.25 = 3.7125 pixels of the page for one of the screen.
TEST(PageGeometry, PlacesCoordinatesByTheirRegion) {
    const TraxPageGeometry g = traxPrint_Geometry(sheet(4960, 7016, 600, 600), usual_sizes());
    const struct {
        TraxRegion region;
        int x, y, pageX, pageY;
    } cases[] = {
        {TraxRegion::Data, 0, 0, 240 + 743, 240 + 215},         // 200 x 3.7125 = 742.5; 58 x 3.7125 = 215.3
        {TraxRegion::Data, 1000, 464, 240 + 4455, 240 + 1938},  // 1200 x 3.7125; 522 x 3.7125 = 1937.9
        {TraxRegion::Axis, 10, 470, 240 + 780, 240 + 1960},
        {TraxRegion::AxisFromBottom, 0, 0, 240 + 743, 240 + 2072},  // 558 x 3.7125 = 2071.6
        {TraxRegion::AxisFromBottom, 0, 36, 240 + 743, 240 + 1938},
        {TraxRegion::Names, 0, 0, 240, 240 + 215},
        {TraxRegion::Total, 100, 20, 240 + 371, 240 + 74},
        {TraxRegion::TotalValue, 100, 20, 240 + 371, 240 + 74},
        {TraxRegion::Bottom, 100, 0, 240 + 371, 240 + 6536},
        {TraxRegion::Bottom, 0, 20, 240, 240 + 6536 - 74},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(g.X(c.region, c.x), c.pageX) << static_cast<int>(c.region) << ' ' << c.x;
        EXPECT_EQ(g.Y(c.region, c.y), c.pageY) << static_cast<int>(c.region) << ' ' << c.y;
    }
    EXPECT_EQ(g.LyingThickness(1), 4);
    EXPECT_EQ(g.StandingThickness(1), 3);
    EXPECT_EQ(g.LyingThickness(3), 11);
    EXPECT_EQ(g.FrameWidth(), 1206);
}

TEST(PageGeometry, LinesNeverVanish) {
    const TraxPageGeometry g = traxPrint_Geometry(sheet(300, 300, 96, 96), usual_sizes());
    ASSERT_GT(g.zoomRate, 0);
    ASSERT_LT(g.PerX(), 0.5);
    EXPECT_EQ(g.LyingThickness(1), 1);
    EXPECT_EQ(g.StandingThickness(1), 1);
}

TEST(PageGeometry, WhatCantHoldAnythingHasNoRate) {
    TraxPrintSizes nothing;
    for (const PageFacts& page : {PageFacts{}, sheet(0, 0, 600, 600), sheet(480, 7016, 600, 600),
                                  sheet(4960, 480, 600, 600), sheet(4960, 7016, 0, 600)})
        EXPECT_EQ(traxPrint_Geometry(page, usual_sizes()).zoomRate, 0) << page.width << ' ' << page.height;
    EXPECT_EQ(traxPrint_Geometry(sheet(4960, 7016, 600, 600), nothing).zoomRate, 0);
}

TEST(PageGeometry, AFootTakesItsHeight) {
    TraxPrintSizes sizes = usual_sizes();
    sizes.footHeight = 442;  // 1000 pixels in all
    const TraxPageGeometry g = traxPrint_Geometry(sheet(20000, 2000, 600, 600), sizes);
    EXPECT_NEAR(g.zoomRate, 1520 / 6250.0, 1e-12);
    EXPECT_LE(g.Y(TraxRegion::AxisFromBottom, 0), g.Y(TraxRegion::Bottom, 442) + 1);
}

TEST(PageGeometry, AFillingGraphFillsThePage) {
    const PageFacts page = sheet(1123, 794, 96, 96);
    for (const int rows : {0, 300, 700, 5000}) {
        TraxPrintSizes sizes = usual_sizes();
        const TraxGraphSize filling = traxPrint_FillingGraph(page, sizes, rows, 34);
        sizes.graphWidth = filling.width;
        sizes.graphHeight = filling.height;
        EXPECT_GE(filling.height, rows + 34);
        const TraxPageGeometry g = traxPrint_Geometry(page, sizes);
        EXPECT_LE(g.X(TraxRegion::Data, filling.width), g.printOriginX + g.width) << rows;
        EXPECT_GE(g.X(TraxRegion::Data, filling.width), g.printOriginX + g.width - 12) << rows;
        EXPECT_LE(g.Y(TraxRegion::AxisFromBottom, 0), g.printOriginY + g.height) << rows;
    }
}

}  // namespace
