// The drawing surface on a QPainter: of a window's backing image, a picture file or a page.
#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPalette>
#include <QRect>
#include <vector>

#include "windlib/lagraph/surface.h"
#include "windlib/qt/pixel_blit.h"

// The fonts of the canvas and their metrics. The same in every form of the surface and on every platform
// plugin, so that a picture file and a window show the same pixels.
struct SurfaceFonts {
    SurfaceFonts();
    SurfaceFonts(const QFont& application, const QFont& axis);
    QFont fonts[Font_Count];
    QFontMetrics metrics[Font_Count];
    FontMetrics plain(int slot) const;
};
const SurfaceFonts& surfaceFonts();

struct SurfaceColours {
    Colour foreground = 0x000000, background = 0xFFFFFF;
    Colour selectionForeground = 0xFFFFFF, selectionBackground = 0x308CC6;
};
SurfaceColours surfaceColours(const QPalette& palette);

class QtSurface : public Surface {
  public:
    // Draws on the painter, which is begun and outlives the surface. Size in logical pixels. image is what
    // the painter paints on when that is an image; null for a device that has no pixels, where icons are
    // drawn as shapes.
    // The fonts outlive it.
    QtSurface(QPainter& painter, QImage* image, int width, int height, const SurfaceColours& colours,
              const SurfaceFonts& fonts = surfaceFonts());
    ~QtSurface() override;

    int width() const override { return width_; }
    int height() const override { return height_; }
    void drawLine(int x0, int y0, int x1, int y1, Colour colour) override;
    void drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                        int phase) override;
    void fillRect(int x, int y, int w, int h, Colour colour) override;
    void clearRect(int x, int y, int w, int h) override;
    void drawText(int x, int y, std::string_view text, Colour foreground, Colour background) override;
    void drawShortText(int x, int y, std::string_view text, Colour foreground) override;
    TextExtent textExtent(std::string_view text) override;
    void drawIcon(int x, int y, IconHandle icon) override;
    bool copyRect(int x, int y, int w, int h, int dx, int dy) override;
    void pushClip(int x, int y, int w, int h, bool intersect) override;
    void popClip() override;
    void setExclusiveOr(bool on) override;
    int setFont(int slot) override;
    FontMetrics fontMetrics(int slot) override { return fonts_.plain(slot); }
    Colour foreground() const override { return colours_.foreground; }
    Colour background() const override { return colours_.background; }
    Colour selectionBackground() const override { return colours_.selectionBackground; }
    Colour selectionForeground() const override { return colours_.selectionForeground; }

  private:
    void fill(const QRect& rect, Colour colour);
    void drawDashes(const QRect& line, bool horizontal, Colour colour, int thickness, int style, int phase);

    QPainter& painter_;
    int width_, height_;
    SurfaceColours colours_;
    const SurfaceFonts& fonts_;
    bool vector_;
    PixelBlit pixels_;
    bool exclusiveOr_ = false;
    QRect clip_;  // the innermost, or everything
    int font_ = Font_Application;
    std::vector<QRect> clips_;
};
