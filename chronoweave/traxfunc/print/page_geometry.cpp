#include "chronoweave/traxfunc/print/page_geometry.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int frameRoom = 4;  // pixels of the screen beside names and drawing area

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

// All that stands below each other, in pixels of the screen.
int picture_height(const TraxPrintSizes& sizes) {
    return sizes.TitleHeight() + sizes.ViewHeight() + sizes.graphHeight + sizes.footHeight +
           sizes.HeaderHeight();
}

}  // namespace

TraxPageGeometry traxPrint_Geometry(const PageFacts& page, const TraxPrintSizes& sizes) {
    TraxPageGeometry geometry;
    geometry.sizes = sizes;
    if (page.screenX <= 0 || page.screenY <= 0 || page.printerX <= 0 || page.printerY <= 0) return geometry;
    geometry.printScaleX = static_cast<double>(page.printerX) / page.screenX;
    geometry.printScaleY = static_cast<double>(page.printerY) / page.screenY;
    geometry.printOriginX = rounded(page.printerX * traxPrint_MarginInches);
    geometry.printOriginY = rounded(page.printerY * traxPrint_MarginInches);
    geometry.width = page.width - 2 * geometry.printOriginX;
    geometry.height = page.height - 2 * geometry.printOriginY;
    const double room = geometry.width - frameRoom * geometry.printScaleX;
    const int across = sizes.graphWidth + sizes.listWidth, down = picture_height(sizes);
    if (room <= 0 || geometry.height <= 0 || across <= 0 || down <= 0) return geometry;
    const double byWidth = std::min(1.0, room / (across * geometry.printScaleX));
    geometry.zoomRate = std::min(byWidth, geometry.height / (down * geometry.printScaleY));
    geometry.printBigFontHeight = std::max(1, rounded(sizes.fontHeight * geometry.PerY()));
    geometry.printSmallFontHeight = std::max(1, rounded(sizes.axisFontHeight * geometry.PerY()));
    return geometry;
}

int TraxPageGeometry::X(TraxRegion region, int x) const {
    switch (region) {
        case TraxRegion::Data:
        case TraxRegion::Axis:
        case TraxRegion::AxisFromBottom:
            x += sizes.listWidth;
            break;
        case TraxRegion::Names:
        case TraxRegion::Total:
        case TraxRegion::TotalValue:
        case TraxRegion::Bottom:
            break;
    }
    return printOriginX + rounded(x * PerX());
}

int TraxPageGeometry::Y(TraxRegion region, int y) const {
    switch (region) {
        case TraxRegion::Data:
        case TraxRegion::Axis:
        case TraxRegion::Names:
            y += GraphTop();
            break;
        case TraxRegion::AxisFromBottom:
            y = GraphTop() + sizes.graphHeight - y;
            break;
        case TraxRegion::Total:
        case TraxRegion::TotalValue:
            break;
        case TraxRegion::Bottom:
            return printOriginY + height - rounded(y * PerY());
    }
    return printOriginY + rounded(y * PerY());
}

int TraxPageGeometry::LyingThickness(int pixels) const {
    return std::max(1, rounded(pixels * PerX()));
}

int TraxPageGeometry::StandingThickness(int pixels) const {
    return std::max(1, static_cast<int>(std::floor(pixels * PerX())));
}

int TraxPageGeometry::FrameWidth() const {
    return PerX() > 0 ? static_cast<int>(width / PerX()) : 0;
}

TraxGraphSize traxPrint_FillingGraph(const PageFacts& page, const TraxPrintSizes& sizes, int rowsHeight,
                                     int axisHeight) {
    TraxPrintSizes bare = sizes;
    bare.graphWidth = 1;
    bare.graphHeight = bare.listWidth = 0;
    const TraxPageGeometry geometry = traxPrint_Geometry(page, bare);
    if (geometry.zoomRate <= 0) return {};
    const double across = geometry.width / geometry.printScaleX - frameRoom;
    const double down = geometry.height / geometry.printScaleY - picture_height(bare);
    const double needed = rowsHeight + axisHeight;
    const double shrink = std::max(1.0, (needed + picture_height(bare)) / (down + picture_height(bare)));
    const int width = static_cast<int>(across * shrink) - sizes.listWidth;
    const int height = static_cast<int>(needed);
    return {std::max(1, width), std::max(1, height)};
}
