// A surface in pixels of the screen whose calls go to a print agent. Paper is white and nothing stood there
// before: clearing draws nothing. Nothing that moves is printed: exclusive-or drawing is none.
#pragma once

#include <cmath>
#include <utility>

#include "windlib/lagraph/page.h"
#include "windlib/lagraph/print_agent.h"

class AgentSurface : public Surface {
  public:
    // A size in pixels of the screen; perX and perY are the page's pixels for one of them, above 0. page is
    // asked for the sizes of texts. Both outlive it.
    AgentSurface(PrintAgent& agent, Surface& page, int width, int height, double perX, double perY)
        : agent_(agent), page_(page), width_(width), height_(height), perX_(perX), perY_(perY) {}

    int width() const override { return width_; }
    int height() const override { return height_; }
    void drawLine(int x0, int y0, int x1, int y1, Colour colour) override {
        if (draws()) agent_.line(x0, y0, x1, y1, colour, 1, 0);
    }
    void drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                        int phase) override {
        if (draws()) agent_.phasedLine(x0, y0, x1, y1, colour, thickness, style, phase);
    }
    void fillRect(int x, int y, int w, int h, Colour colour) override {
        if (draws()) agent_.fill(x, y, w, h, colour);
    }
    void clearRect(int, int, int, int) override {}
    void drawText(int x, int y, std::string_view text, Colour foreground, Colour background) override {
        if (draws()) agent_.text(x, y, text, foreground, background, font_);
    }
    TextExtent textExtent(std::string_view text) override {
        const int before = page_.setFont(font_);
        const TextExtent extent = page_.textExtent(text);
        page_.setFont(before);
        return {up(extent.width, perX_), up(extent.height, perY_)};
    }
    void drawIcon(int x, int y, IconHandle icon) override {
        if (draws()) agent_.icon(x, y, icon);
    }
    void pushClip(int x, int y, int w, int h, bool) override {
        if (agent_.isActive()) agent_.begin(x, y, w, h);
    }
    void popClip() override {
        if (agent_.isActive()) agent_.end();
    }
    void setExclusiveOr(bool on) override { exclusiveOr_ = on; }
    int setFont(int slot) override {
        if (slot < 0 || slot >= Font_Count) return -1;
        return std::exchange(font_, slot);
    }
    FontMetrics fontMetrics(int slot) override {
        const FontMetrics page = page_.fontMetrics(slot);
        return {up(page.height, perY_), up(page.ascent, perY_), up(page.charWidth, perX_)};
    }
    Colour foreground() const override { return 0x000000; }
    Colour background() const override { return 0xFFFFFF; }
    Colour selectionBackground() const override { return 0xFFFFFF; }
    Colour selectionForeground() const override { return 0x000000; }

  private:
    bool draws() const { return agent_.isActive() && !exclusiveOr_; }
    static int up(int pixels, double per) { return static_cast<int>(std::ceil(pixels / per - 1e-9)); }

    PrintAgent& agent_;
    Surface& page_;
    int width_, height_;
    double perX_, perY_;
    int font_ = Font_Application;
    bool exclusiveOr_ = false;
};
