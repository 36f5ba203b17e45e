// A surface of plain pixels for tests that compare pictures: every operation leaves a mark that depends on
// its place, so that a wrong column, phase or order shows. Texts and icons are fixed patterns with holes.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "windlib/lagraph/surface.h"

class PixelSurface : public Surface {
  public:
    PixelSurface(int width, int height) : width_(width), height_(height) {
        pixels_.assign(static_cast<size_t>(width) * static_cast<size_t>(height), background());
    }

    int copies = 0;
    size_t touched = 0;  // pixels written by anything but copies
    const std::vector<Colour>& pixels() const { return pixels_; }
    Colour at(int x, int y) const { return pixels_[index(x, y)]; }

    int width() const override { return width_; }
    int height() const override { return height_; }
    void drawLine(int x0, int y0, int x1, int y1, Colour colour) override {
        drawStyledLine(x0, y0, x1, y1, colour, 1, 0, 0);
    }
    void drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                        int phase) override {
        const bool flat = y0 == y1;
        const int from = flat ? std::min(x0, x1) : std::min(y0, y1);
        const int to = flat ? std::max(x0, x1) : std::max(y0, y1);
        const int across = (flat ? y0 : x0) - thickness / 2;
        for (int i = from; i <= to; ++i)
            if (inked(style, phase + i - from, thickness)) {
                if (flat)
                    fillRect(i, across, 1, thickness, colour);
                else
                    fillRect(across, i, thickness, 1, colour);
            }
    }
    void fillRect(int x, int y, int w, int h, Colour colour) override {
        for (int row = y; row < y + h; ++row)
            for (int column = x; column < x + w; ++column) put(column, row, colour);
    }
    void clearRect(int x, int y, int w, int h) override { fillRect(x, y, w, h, background()); }
    void drawText(int x, int y, std::string_view text, Colour foreground, Colour) override {
        for (const char c : text) {
            for (int row = 0; row < 10; ++row)
                for (int column = 0; column < 6; ++column)
                    if (((c * 31 + row * 7 + column * 3) & 3) == 0) put(x + column, y - row, foreground);
            x += 7;
        }
    }
    TextExtent textExtent(std::string_view text) override { return {7 * static_cast<int>(text.size()), 16}; }
    void drawIcon(int x, int y, IconHandle icon) override {
        for (int row = 0; row < icon_Height(icon); ++row)
            for (int column = 0; column < icon_Width(icon); ++column)
                if ((row + 2 * column) % 5 != 0)
                    put(x + column, y + row, static_cast<Colour>(icon * 4096 + row * 64 + column + 0x010000));
    }
    bool copyRect(int x, int y, int w, int h, int dx, int dy) override {
        const std::vector<Colour> before = pixels_;
        for (int row = y; row < y + h; ++row)
            for (int column = x; column < x + w; ++column)
                pixels_[index(column + dx, row + dy)] = before[index(column, row)];
        ++copies;
        return true;
    }
    void pushClip(int x, int y, int w, int h, bool intersect) override {
        const Box whole{0, 0, width_, height_};
        const Box& outer = intersect && !clips_.empty() ? clips_.back() : whole;
        clips_.push_back({std::max(x, outer.left), std::max(y, outer.top), std::min(x + w, outer.right),
                          std::min(y + h, outer.bottom)});
    }
    void popClip() override { clips_.pop_back(); }
    void setExclusiveOr(bool on) override { exclusiveOr_ = on; }
    int setFont(int slot) override { return slot; }
    FontMetrics fontMetrics(int) override { return {}; }
    Colour foreground() const override { return 0x000000; }
    Colour background() const override { return 0xFFFFFF; }
    Colour selectionBackground() const override { return 0x3060C0; }
    Colour selectionForeground() const override { return 0xF0F0F0; }

  private:
    struct Box {
        int left, top, right, bottom;
    };
    size_t index(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x);
    }
    static bool inked(int style, int at, int thickness) {
        if (style == 0) return true;
        at %= dashPeriod[style] * thickness;
        int part = 0;
        for (; at >= dashPattern[style][part] * thickness; ++part) at -= dashPattern[style][part] * thickness;
        return part % 2 == 0;
    }
    void put(int x, int y, Colour colour) {
        const Box clip = clips_.empty() ? Box{0, 0, width_, height_} : clips_.back();
        if (x < std::max(0, clip.left) || x >= std::min(width_, clip.right) || y < std::max(0, clip.top) ||
            y >= std::min(height_, clip.bottom))
            return;
        Colour& pixel = pixels_[index(x, y)];
        pixel = exclusiveOr_ ? pixel ^ colour : colour;
        ++touched;
    }

    int width_, height_;
    std::vector<Colour> pixels_;
    std::vector<Box> clips_;
    bool exclusiveOr_ = false;
};
