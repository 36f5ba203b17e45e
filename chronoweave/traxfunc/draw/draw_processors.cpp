#include "chronoweave/traxfunc/draw/draw_processors.h"

#include <algorithm>
#include <string>

#include "chronoweave/traxfunc/draw/switch_density.h"
#include "shared/libcxxutil/text.h"
#include "windlib/msl/object_list.h"

namespace {

constexpr Colour palette[] = {0x77AADD, 0xEE8866, 0xEEDD88, 0xFFAABB, 0x99DDFF, 0x44BB99, 0xBBCC33, 0xAAAA00};
constexpr Colour nameInk = 0x202020;
constexpr Colour loadColour = 0x5B8DB8;
constexpr int strip = laSwitches_Strip;
constexpr size_t mostBegins = 2;                 // of a strip that shows its segments
constexpr int loadColumns = 2;                   // of a step of the load curve
constexpr int margin = 2;                        // rows above and below the band
constexpr int nameMargin = 4;                    // columns beside a name
constexpr int leastSeparated = 4;                // columns of a segment with a gap ahead of it
constexpr double baseInk = 0.25, edgeInk = 0.4;  // opacities of the lines under a band and under a pinned row

// Columns counted from a strip's begin: the trace's strips, whatever part of them is seen.
class Strips {
  public:
    Strips(const laScene& scene, const laTimeScale& scale)
        : scale_(scale), phase_(static_cast<int>(scene.view.scrollPosition % strip)) {}

    int Of(int column) const { return (column + phase_) / strip; }  // of a column of the view
    int First(int number) const { return number * strip - phase_; }
    // The time at a column's left edge.
    double Begin(int column) const { return scale_.BeginOf(column); }
    // Few columns between dense strips go with them.
    bool IsDense(const LaProcessor& processor, int number) const {
        const auto full = [&](int offset) { return IsFull(processor, number + offset); };
        return full(0) || (full(-1) && (full(1) || full(2))) || (full(-2) && full(1));
    }

  private:
    bool IsFull(const LaProcessor& processor, int number) const {
        const size_t first = laProcessor_FirstFrom(processor, Begin(First(number)));
        return first + mostBegins < processor.runs.size() &&
               processor.runs[first + mostBegins].t0 < Begin(First(number + 1));
    }

    const laTimeScale& scale_;
    int phase_;
};

// One row.
class BandPainter {
  public:
    // top: of the row, on the surface.
    BandPainter(const laPaint& paint, const LaProcessor& processor, int top)
        : paint_(paint),
          processor_(processor),
          strips_(paint.scene, paint.scale),
          top_(top + margin),
          height_(std::max(1, paint.scene.looks.rowHeight - 2 * margin - 1)),
          width_(paint.scene.graph.width) {}

    void Draw() {
        const Colour base = colour_Mix(paint_.surface.foreground(), paint_.surface.background(), baseInk);
        paint_.surface.fillRect(paint_.rect.left, top_ + height_, paint_.rect.right - paint_.rect.left, 1,
                                base);
        const int first = strips_.Of(std::max(0, paint_.rect.left));
        const int last = strips_.Of(std::max(0, std::min(paint_.rect.right, width_) - 1));
        for (int at = first; at <= last;) {
            const bool dense = strips_.IsDense(processor_, at);
            int end = at + 1;
            while (end <= last && strips_.IsDense(processor_, end) == dense) ++end;
            const int from = std::max(0, strips_.First(at)), to = std::min(width_, strips_.First(end));
            if (dense)
                DrawLoad(from, to);
            else
                DrawSegments(from, to);
            at = end;
        }
    }

  private:
    // Steps begin with the strip, so that they stay where they are while the picture scrolls.
    void DrawLoad(int from, int to) const {
        const laScene& scene = paint_.scene;
        for (int x = strips_.First(strips_.Of(from)); x < to; x += loadColumns) {
            const double begin = std::max(scene.items.cachedLow, strips_.Begin(x));
            const double end = std::min(scene.items.cachedHigh, strips_.Begin(x + loadColumns));
            const double busy =
                laProcessor_BusyUpTo(processor_, end) - laProcessor_BusyUpTo(processor_, begin);
            if (busy <= 0 || end <= begin) continue;
            const int high = std::clamp(static_cast<int>(busy / (end - begin) * height_ + 0.5), 1, height_);
            const int left = std::max(x, from), right = std::min(x + loadColumns, to);
            if (left < right)
                paint_.surface.fillRect(left, top_ + height_ - high, right - left, high, loadColour);
        }
    }

    // However short, it has a column.
    int EndOf(const LaRun& run) const {
        return std::max(paint_.scale.ToColumn(run.t1), paint_.scale.ToColumn(run.t0) + 1);
    }

    void DrawSegments(int from, int to) {
        const std::vector<LaRun>& runs = processor_.runs;
        const double high = std::min(paint_.scene.view.viewHigh, strips_.Begin(to));
        for (size_t i = laProcessor_FirstEndingBehind(processor_, strips_.Begin(from));
             i < runs.size() && runs[i].t0 < high; ++i) {
            if (runs[i].idle) continue;
            const int x0 = paint_.scale.ToColumn(runs[i].t0);
            const int x1 = EndOf(runs[i]);
            const bool joins = i > 0 && !runs[i - 1].idle && EndOf(runs[i - 1]) == x0;
            const int gap = joins && x1 - x0 >= leastSeparated ? 1 : 0;
            const int left = std::max(x0 + gap, from), right = std::min(x1, to);
            if (left >= right) continue;
            const laItem_Line& lane = paint_.scene.items.lanes[runs[i].lane];
            paint_.surface.fillRect(left, top_, right - left, height_, laProcessor_Colour(lane.objectId));
            DrawName(lane, x0, x1);
        }
    }

    // In the part of a segment that the view shows, away from strips that show the load.
    void DrawName(const laItem_Line& lane, int x0, int x1) const {
        if (x1 < 0 || x0 >= width_) return;
        const int left = x0 <= 0 ? 0 : strips_.First(strips_.Of(x0) + (strips_.First(strips_.Of(x0)) < x0));
        const int right = x1 >= width_ ? width_ : strips_.First(strips_.Of(x1));
        const FontMetrics& font = paint_.scene.graph.axisFont;
        if (right - left < 2 * nameMargin + font.charWidth) return;
        const std::string name = text_utf8(lane.listEntry != nullptr ? lane.listEntry->name : lane.name);
        if (name.empty() || paint_.surface.textExtent(name).width > right - left - 2 * nameMargin) return;
        paint_.surface.drawShortText(left + nameMargin, top_ + (height_ - font.height) / 2 + font.ascent,
                                     name, nameInk);
    }

    const laPaint& paint_;
    const LaProcessor& processor_;
    const Strips strips_;
    int top_, height_, width_;
};

template <class Work>
void with_axis_font(Surface& surface, const Work& work) {
    const int oldFont = surface.setFont(Font_Axis);
    work();
    if (oldFont >= 0) surface.setFont(oldFont);
}

}  // namespace

void laPaint_Processors(const laPaint& paint) {
    const laScene& scene = paint.scene;
    if (scene.items.processors.list.empty()) return;
    with_axis_font(paint.surface, [&] {
        for (const LaProcessor& one : scene.items.processors.list) {
            const int top = one.row * scene.looks.rowHeight;
            if (one.row < 0 || top >= paint.rect.bottom || top + scene.looks.rowHeight <= paint.rect.top)
                continue;
            BandPainter(paint, one, top - scene.view.verticalOffset).Draw();
        }
    });
}

void laPaint_PinnedProcessors(const laPaint& paint) {
    const laScene& scene = paint.scene;
    const auto pinned = laPinned_Rows(scene.items, scene.looks, scene.view, paint.dataHeight);
    if (pinned.empty()) return;
    Surface& surface = paint.surface;
    const int left = paint.rect.left, width = paint.rect.right - paint.rect.left;
    with_axis_font(surface, [&] {
        for (const laPinnedRow& row : pinned) {
            surface.fillRect(left, row.top, width, scene.looks.rowHeight, surface.background());
            BandPainter(paint, scene.items.processors.list[row.processor], row.top).Draw();
        }
    });
    const Colour edge = colour_Mix(surface.foreground(), surface.background(), edgeInk);
    const LaFreeRows free = laPinned_Free(scene.items, scene.looks, scene.view, paint.dataHeight);
    if (free.from > 0) surface.fillRect(left, free.from - 1, width, 1, edge);
    if (free.end < paint.dataHeight) surface.fillRect(left, free.end, width, 1, edge);
}

Colour laProcessor_Colour(uint32_t objectId) {
    // Neighbouring numbers get colours far apart. Where the processor stands in the low bits, what is above
    // them tells the object.
    const uint32_t number = (objectId >> 10) + (objectId & 0x3FF);
    return palette[number * 2654435769u >> 29];
}

laLoadStrip laProcessor_LoadAt(const laScene& scene, const LaProcessor& processor, int x) {
    const laTimeScale scale = scene.scale();
    const Strips strips(scene, scale);
    const int number = strips.Of(std::max(0, x));
    if (!strips.IsDense(processor, number)) return {};
    return {strips.First(number), strips.First(number + 1)};
}
