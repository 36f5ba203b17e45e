#include "windlib/qt/qt_surface.h"

#include <QPen>
#include <algorithm>
#include <array>

#include "windlib/qt/icon_images.h"
#include "windlib/qt/text_images.h"

namespace {

constexpr int applicationPixels = 13;
constexpr int axisPixels = 11;

QColor colourOf(Colour colour) {
    return QColor::fromRgb(colour | 0xFF000000u);
}
Colour plainColour(const QColor& colour) {
    return colour.rgb() & 0xFFFFFFu;
}

QFont canvasFont(int pixels) {
    QFont font(QStringLiteral("Sans Serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    return font;
}

// The pixels of a line along an axis, both ends included, as a rectangle of its thickness.
QRect lineRect(int x0, int y0, int x1, int y1, int thickness) {
    const int before = thickness / 2;
    if (y0 == y1) return {std::min(x0, x1), y0 - before, std::abs(x1 - x0) + 1, thickness};
    return {x0 - before, std::min(y0, y1), thickness, std::abs(y1 - y0) + 1};
}

Qt::PenStyle penStyle(int style) {
    constexpr std::array<Qt::PenStyle, 5> styles{Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine,
                                                 Qt::DashDotDotLine};
    return style >= 0 && style < 5 ? styles[static_cast<size_t>(style)] : Qt::SolidLine;
}

}  // namespace

SurfaceFonts::SurfaceFonts() : SurfaceFonts(canvasFont(applicationPixels), canvasFont(axisPixels)) {}

SurfaceFonts::SurfaceFonts(const QFont& application, const QFont& axis)
    : fonts{application, axis}, metrics{QFontMetrics(fonts[0]), QFontMetrics(fonts[1])} {}

FontMetrics SurfaceFonts::plain(int slot) const {
    const QFontMetrics& of = metrics[slot == Font_Axis ? Font_Axis : Font_Application];
    return {of.height(), of.ascent(), of.horizontalAdvance(QLatin1Char('0'))};
}

const SurfaceFonts& surfaceFonts() {
    static const SurfaceFonts fonts;
    return fonts;
}

SurfaceColours surfaceColours(const QPalette& palette) {
    return {plainColour(palette.color(QPalette::Text)), plainColour(palette.color(QPalette::Base)),
            plainColour(palette.color(QPalette::HighlightedText)),
            plainColour(palette.color(QPalette::Highlight))};
}

QtSurface::QtSurface(QPainter& painter, QImage* image, int width, int height, const SurfaceColours& colours,
                     const SurfaceFonts& fonts)
    : painter_(painter),
      width_(width),
      height_(height),
      colours_(colours),
      fonts_(fonts),
      vector_(image == nullptr),
      clip_(0, 0, width, height) {
    if (image) pixels_ = PixelBlit(*image);
    painter_.setRenderHint(QPainter::Antialiasing, false);
    painter_.setRenderHint(QPainter::TextAntialiasing, true);
    setFont(Font_Application);
}

QtSurface::~QtSurface() {
    if (!clips_.empty()) painter_.setClipping(false);
}

void QtSurface::drawLine(int x0, int y0, int x1, int y1, Colour colour) {
    drawStyledLine(x0, y0, x1, y1, colour, 1, 0, 0);
}

void QtSurface::drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                               int phase) {
    thickness = std::max(thickness, 1);
    const bool horizontal = y0 == y1;
    if (!horizontal && x0 != x1) {
        painter_.setPen(QPen(colourOf(colour), thickness, penStyle(style), Qt::FlatCap));
        painter_.drawLine(x0, y0, x1, y1);
        return;
    }
    const QRect line = lineRect(x0, y0, x1, y1, thickness);
    if (style <= 0 || style > 4)
        fill(line, colour);
    else
        drawDashes(line, horizontal, colour, thickness, style, phase);
}

// Dashes of a line along an axis are rectangles: exact, and cheap enough for thousands of lines.
void QtSurface::drawDashes(const QRect& line, bool horizontal, Colour colour, int thickness, int style,
                           int phase) {
    const int* pattern = dashPattern[style];
    const int period = dashPeriod[style] * thickness;
    const int from = horizontal ? line.left() : line.top();
    const int end = horizontal ? line.right() + 1 : line.bottom() + 1;
    for (int at = from - ((phase % period) + period) % period; at < end;) {
        for (int i = 0; pattern[i] != 0; ++i) {
            const int next = at + pattern[i] * thickness;
            const int first = std::max(at, from), last = std::min(next, end);
            if (i % 2 == 0 && first < last)
                fill(horizontal ? QRect(first, line.top(), last - first, line.height())
                                : QRect(line.left(), first, line.width(), last - first),
                     colour);
            at = next;
        }
    }
}

void QtSurface::fill(const QRect& rect, Colour colour) {
    if (pixels_.usable() && !exclusiveOr_)
        pixels_.fill(rect, colour, clip_);
    else
        painter_.fillRect(rect, colourOf(colour));
}

void QtSurface::fillRect(int x, int y, int w, int h, Colour colour) {
    fill({x, y, w, h}, colour);
}

void QtSurface::clearRect(int x, int y, int w, int h) {
    fill({x, y, w > 0 ? w : width_ - x, h > 0 ? h : height_ - y}, colours_.background);
}

void QtSurface::drawText(int x, int y, std::string_view text, Colour foreground, Colour background) {
    const QString shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    if (background != NoColour) {
        const QFontMetrics& metrics = fonts_.metrics[font_];
        painter_.fillRect(x, y - metrics.ascent(), metrics.horizontalAdvance(shown), metrics.height(),
                          colourOf(background));
    }
    painter_.setPen(colourOf(foreground));
    painter_.drawText(x, y, shown);
}

void QtSurface::drawShortText(int x, int y, std::string_view text, Colour foreground) {
    if (!pixels_.usable() || exclusiveOr_) return drawText(x, y, text, foreground, NoColour);
    const QFontMetrics& metrics = fonts_.metrics[font_];
    pixels_.blend(
        x, y - metrics.ascent(),
        textSprite(fonts_.fonts[font_], metrics, text, foreground, painter_.device()->devicePixelRatioF()),
        clip_);
}

TextExtent QtSurface::textExtent(std::string_view text) {
    const QFontMetrics& metrics = fonts_.metrics[font_];
    const QString shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return {metrics.horizontalAdvance(shown), metrics.height()};
}

void QtSurface::drawIcon(int x, int y, IconHandle icon) {
    if (vector_) return iconDrawShapes(painter_, x, y, icon);
    const Sprite& sprite = iconSprite(icon, painter_.device()->devicePixelRatioF());
    if (pixels_.usable() && !exclusiveOr_)
        pixels_.blend(x, y, sprite, clip_);
    else
        painter_.drawImage(QPoint(x, y), sprite.image);
}

bool QtSurface::copyRect(int x, int y, int w, int h, int dx, int dy) {
    if (!pixels_.usable()) return false;
    pixels_.copy(QRect(x, y, w, h), dx, dy);
    return true;
}

void QtSurface::pushClip(int x, int y, int w, int h, bool intersect) {
    clip_ = QRect(x, y, w, h) & (intersect ? clip_ : QRect(0, 0, width_, height_));
    clips_.push_back(clip_);
    painter_.setClipRect(clip_);
}

void QtSurface::popClip() {
    if (clips_.empty()) return;
    clips_.pop_back();
    clip_ = clips_.empty() ? QRect(0, 0, width_, height_) : clips_.back();
    if (clips_.empty())
        painter_.setClipping(false);
    else
        painter_.setClipRect(clip_);
}

void QtSurface::setExclusiveOr(bool on) {
    exclusiveOr_ = on;
    painter_.setCompositionMode(on ? QPainter::RasterOp_SourceXorDestination
                                   : QPainter::CompositionMode_SourceOver);
}

int QtSurface::setFont(int slot) {
    if (slot < 0 || slot >= Font_Count) return -1;
    painter_.setFont(fonts_.fonts[slot]);
    return std::exchange(font_, slot);
}
