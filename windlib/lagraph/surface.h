// The drawing surface: the few operations by which the canvas draws. Coordinates are logical pixels from the
// top left corner of the surface; the real forms (window, picture file, page) scale them to their device, so
// that the picture is sharp at any resolution. The recording form (recording_surface.h) is for tests.
//
// Lines of one pixel that run along an axis cover exactly the pixels from the smaller end up to and including
// the larger one. A line of thickness n is centred: it covers n rows (columns) beginning n / 2 before its
// coordinate.
#pragma once

#include <cstdint>
#include <string_view>

#include "windlib/icons.h"

// 0xRRGGBB.
using Colour = uint32_t;
// From 16-bit channels whose high byte counts.
constexpr Colour colour_From16(uint16_t red, uint16_t green, uint16_t blue) {
    return (static_cast<Colour>(red >> 8) << 16) | (static_cast<Colour>(green >> 8) << 8) |
           static_cast<Colour>(blue >> 8);
}
// What a colour at an opacity from 0 to 1 makes of a ground.
constexpr Colour colour_Mix(Colour colour, Colour ground, double opacity) {
    Colour mixed = 0;
    for (int shift = 0; shift <= 16; shift += 8)
        mixed |= static_cast<Colour>(static_cast<double>(colour >> shift & 0xFF) * opacity +
                                     static_cast<double>(ground >> shift & 0xFF) * (1 - opacity) + 0.5)
                 << shift;
    return mixed;
}
constexpr Colour NoColour = 0xFFFFFFFF;  // a transparent text background

// Fonts by slot. Names in the list and on the axis must be measurable with no display, see FontMetrics.
enum FontSlot : int { Font_Application = 0, Font_Axis = 1, Font_Count = 2 };

// What layout needs of a font, in logical pixels.
struct FontMetrics {
    int height = 16;  // character height plus external leading
    int ascent = 13;
    int charWidth = 7;  // average width of a digit, for label room
};

struct TextExtent {
    int width = 0;
    int height = 0;
};

// Period of a dash pattern in units of the line's thickness, by line style (0 for solid).
constexpr int dashPeriod[5] = {0, 12, 6, 24, 24};
// The pattern itself, dash and gap lengths in units of the thickness, ended by 0; each row sums to its
// period.
constexpr int dashPattern[5][7] = {{0}, {8, 4, 0}, {3, 3, 0}, {12, 4, 4, 4, 0}, {8, 4, 2, 4, 2, 4, 0}};

class Surface {
  public:
    virtual ~Surface() = default;

    virtual int width() const = 0;
    virtual int height() const = 0;

    // One-pixel solid line between two points, both included.
    virtual void drawLine(int x0, int y0, int x1, int y1, Colour colour) = 0;
    // A pen of the style (LineStyle of the legend). phase, in pixels, says how far into its pattern a line
    // along an axis begins: (start + scroll position) mod (thickness x period); 0 where nothing scrolls.
    virtual void drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                                int phase) = 0;
    virtual void fillRect(int x, int y, int w, int h, Colour colour) = 0;
    // With the background colour.
    virtual void clearRect(int x, int y, int w, int h) = 0;
    // y is the baseline. text is UTF-8. background NoColour is transparent.
    virtual void drawText(int x, int y, std::string_view text, Colour foreground, Colour background) = 0;
    // The same with no background, for few different texts that are drawn very often: a surface may keep
    // pictures of them.
    virtual void drawShortText(int x, int y, std::string_view text, Colour foreground) {
        drawText(x, y, text, foreground, NoColour);
    }
    virtual TextExtent textExtent(std::string_view text) = 0;
    // At its top left corner.
    virtual void drawIcon(int x, int y, IconHandle icon) = 0;
    // Moves the pixels of a rectangle by dx, dy, as if they were taken up before any is put down. Rectangle
    // and target lie within the surface and the clip. False, and nothing done, by a surface that can't, or
    // not to the exact pixel.
    virtual bool copyRect(int /*x*/, int /*y*/, int /*w*/, int /*h*/, int /*dx*/, int /*dy*/) {
        return false;
    }
    // A clip inside the present one when intersect, in place of it otherwise; pop restores.
    virtual void pushClip(int x, int y, int w, int h, bool intersect) = 0;
    virtual void popClip() = 0;
    // While on, drawing exclusive-ors the pixels with the colour.
    virtual void setExclusiveOr(bool on) = 0;
    // Returns the old slot; -1 and no change for a slot that has no font.
    virtual int setFont(int slot) = 0;
    virtual FontMetrics fontMetrics(int slot) = 0;

    virtual Colour foreground() const = 0;  // of axis, cursors and text
    virtual Colour background() const = 0;
    virtual Colour selectionBackground() const = 0;  // of the selection band
    virtual Colour selectionForeground() const = 0;
};
