// A surface with no picture: it counts the operations and, unless told not to, keeps them for tests to look
// at. Its fonts are fixed: every UTF-8 character is 7 pixels wide, a line 16 high with 13 above the baseline.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "windlib/lagraph/surface.h"

struct SurfaceOp {
    enum Kind { Line, StyledLine, Fill, Clear, Text, Icon, PushClip, PopClip, ExclusiveOr, KindCount };
    Kind kind = Line;
    int x0 = 0, y0 = 0;  // first point, top left corner, or baseline start
    int x1 = 0, y1 = 0;  // second point, or width and height
    Colour colour = 0;
    int thickness = 1, style = 0, phase = 0;
    IconHandle icon = NoIcon;
    bool exclusiveOr = false;  // the mode that the operation was drawn in
    std::string text;

    bool operator==(const SurfaceOp&) const = default;
};

class RecordingSurface : public Surface {
  public:
    RecordingSurface(int width, int height, bool keep = true) : width_(width), height_(height), keep_(keep) {}

    std::vector<SurfaceOp> ops;
    std::array<size_t, SurfaceOp::KindCount> counts{};
    // The largest absolute value of any coordinate seen.
    int farthest = 0;

    void forget();
    std::vector<SurfaceOp> of(SurfaceOp::Kind kind) const;
    // One operation a line, for comparing whole drawings.
    std::string text() const;
    // The texts drawn, in order.
    std::vector<std::string> texts() const;
    int clipDepth() const { return clipDepth_; }

    int width() const override { return width_; }
    int height() const override { return height_; }
    void drawLine(int x0, int y0, int x1, int y1, Colour colour) override;
    void drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                        int phase) override;
    void fillRect(int x, int y, int w, int h, Colour colour) override;
    void clearRect(int x, int y, int w, int h) override;
    void drawText(int x, int y, std::string_view text, Colour foreground, Colour background) override;
    TextExtent textExtent(std::string_view text) override;
    void drawIcon(int x, int y, IconHandle icon) override;
    void pushClip(int x, int y, int w, int h, bool intersect) override;
    void popClip() override;
    void setExclusiveOr(bool on) override;
    int setFont(int slot) override;
    FontMetrics fontMetrics(int slot) override;

    Colour foreground() const override { return 0x000000; }
    Colour background() const override { return 0xFFFFFF; }
    Colour selectionBackground() const override { return 0x3060C0; }
    Colour selectionForeground() const override { return 0xF0F0F0; }

  private:
    void add(const SurfaceOp& op);

    int width_, height_;
    bool keep_;
    bool exclusiveOr_ = false;
    int font_ = Font_Application;
    int clipDepth_ = 0;
};
