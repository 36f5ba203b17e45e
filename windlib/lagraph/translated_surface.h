// A part of another surface with its own origin and size, clipped to that part for as long as it lives. It
// draws through; the other surface must outlive it.
#pragma once

#include "windlib/lagraph/surface.h"

class TranslatedSurface : public Surface {
  public:
    TranslatedSurface(Surface& target, int left, int top, int width, int height)
        : target_(target), left_(left), top_(top), width_(width), height_(height) {
        target_.pushClip(left, top, width, height, true);
    }
    ~TranslatedSurface() override { target_.popClip(); }
    TranslatedSurface(const TranslatedSurface&) = delete;
    TranslatedSurface& operator=(const TranslatedSurface&) = delete;

    int width() const override { return width_; }
    int height() const override { return height_; }
    void drawLine(int x0, int y0, int x1, int y1, Colour colour) override {
        target_.drawLine(left_ + x0, top_ + y0, left_ + x1, top_ + y1, colour);
    }
    void drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                        int phase) override {
        target_.drawStyledLine(left_ + x0, top_ + y0, left_ + x1, top_ + y1, colour, thickness, style, phase);
    }
    void fillRect(int x, int y, int w, int h, Colour colour) override {
        target_.fillRect(left_ + x, top_ + y, w, h, colour);
    }
    void clearRect(int x, int y, int w, int h) override { target_.clearRect(left_ + x, top_ + y, w, h); }
    void drawText(int x, int y, std::string_view text, Colour foreground, Colour background) override {
        target_.drawText(left_ + x, top_ + y, text, foreground, background);
    }
    void drawShortText(int x, int y, std::string_view text, Colour foreground) override {
        target_.drawShortText(left_ + x, top_ + y, text, foreground);
    }
    TextExtent textExtent(std::string_view text) override { return target_.textExtent(text); }
    void drawIcon(int x, int y, IconHandle icon) override { target_.drawIcon(left_ + x, top_ + y, icon); }
    bool copyRect(int x, int y, int w, int h, int dx, int dy) override {
        return target_.copyRect(left_ + x, top_ + y, w, h, dx, dy);
    }
    // Always an intersection, so that nothing is drawn outside the part.
    void pushClip(int x, int y, int w, int h, bool) override {
        target_.pushClip(left_ + x, top_ + y, w, h, true);
    }
    void popClip() override { target_.popClip(); }
    void setExclusiveOr(bool on) override { target_.setExclusiveOr(on); }
    int setFont(int slot) override { return target_.setFont(slot); }
    FontMetrics fontMetrics(int slot) override { return target_.fontMetrics(slot); }

    Colour foreground() const override { return target_.foreground(); }
    Colour background() const override { return target_.background(); }
    Colour selectionBackground() const override { return target_.selectionBackground(); }
    Colour selectionForeground() const override { return target_.selectionForeground(); }

  private:
    Surface& target_;
    int left_, top_, width_, height_;
};
