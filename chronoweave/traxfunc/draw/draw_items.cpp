#include "chronoweave/traxfunc/draw/draw_items.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/columns.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"

namespace {

constexpr double countInk = 0.62;     // opacity of the numbers on marks
constexpr int solidLineLimit = 1000;  // pixels; no legend needs a thicker line

// The dashes of a stretch that holds few of them, as rectangles: a dashed pen costs many times as much.
void fill_dashes(Surface& surface, int x0, int x1, int top, const LaStatusLook& look, int phase) {
    int x = x0 - phase;
    for (int part = 0; x < x1; part = dashPattern[look.style][part + 1] != 0 ? part + 1 : 0) {
        const int end = x + dashPattern[look.style][part] * look.thickness;
        const int from = std::max(x, x0), to = std::min(end, x1);
        if (part % 2 == 0 && from < to) surface.fillRect(from, top, to - from, look.thickness, look.colour);
        x = end;
    }
}

// The line of one lane. Neighbouring stretches that look the same are drawn as one.
class LanePainter {
  public:
    LanePainter(const laPaint& paint, const laItem_Line& lane)
        : paint_(paint),
          segments_(lane.segments),
          y_(laLn_LineY(paint.scene.looks, lane) - paint.scene.view.verticalOffset),
          width_(paint.scene.graph.width) {}

    void Draw() {
        const laScene& scene = paint_.scene;
        const double low = std::max(scene.view.viewLow, paint_.scale.ToTime(paint_.rect.left - 2));
        const double high = std::min(scene.view.viewHigh, paint_.scale.ToTime(paint_.rect.right + 2));
        LaLnSeg made;
        for (size_t at = segments_.FirstEndingFrom(low); at < segments_.size();) {
            const LaLnSeg& segment = segments_.At(at, made);
            if (segment.t0 > high) break;
            const int x1 = paint_.scale.ToPixel(segment.t1);
            const int x0 = paint_.scale.ToPixel(segment.t0);
            if (x0 < x1) Add(scene.looks.statusLooks[static_cast<size_t>(segment.status)], x0, x1);
            // What ends in the same column is shorter than a pixel and isn't drawn.
            at = laPaint_FirstRightOf(at + 1, segments_.size(), x1,
                                      [&](size_t i) { return paint_.scale.ToPixel(segments_.EndAt(i)); });
        }
        Flush();
    }

  private:
    void Add(const LaStatusLook& look, int x0, int x1) {
        if (!look.shown) return;
        x0 = std::max(x0, 0);
        x1 = std::min(x1, width_);
        if (look_ != nullptr && end_ == x0 && look_->style == look.style && look_->colour == look.colour &&
            look_->thickness == look.thickness) {
            end_ = x1;
            return;
        }
        Flush();
        look_ = &look;
        start_ = x0;
        end_ = x1;
    }

    void Flush() {
        if (look_ != nullptr && start_ < end_) {
            const int thickness = look_->thickness, top = y_ - thickness / 2;
            const int phase = laPaint_DashPhase(
                paint_.scene.view.scrollPosition + static_cast<uint64_t>(start_), thickness, look_->style);
            if (look_->style == Line_Solid)
                paint_.surface.fillRect(start_, top, end_ - start_, thickness, look_->colour);
            else if (end_ - start_ <= thickness * dashPeriod[look_->style])
                fill_dashes(paint_.surface, start_, end_, top, *look_, phase);
            else
                paint_.surface.drawStyledLine(start_, y_, end_ - 1, y_, look_->colour, thickness,
                                              look_->style, phase);
        }
        look_ = nullptr;
    }

    const laPaint& paint_;
    const LaSegments& segments_;
    int y_, width_;
    const LaStatusLook* look_ = nullptr;  // of the stretch not drawn yet
    int start_ = 0, end_ = 0;
};

// The number of a mark, in the axis's font, which the surface has: weaker than what is drawn beside it.
void draw_count(const laPaint& paint, const laShownIcon& mark, int centre) {
    if (mark.left + laMark_Width(paint.scene, mark.hidden) <= paint.rect.left ||
        mark.left >= paint.rect.right)
        return;
    Surface& surface = paint.surface;
    const int baseline = centre + paint.scene.graph.axisFont.ascent * 2 / 5;
    surface.drawShortText(mark.left + 1, baseline, laMark_Text(mark.hidden),
                          colour_Mix(surface.foreground(), surface.background(), countInk));
}

// The icons of one lane that meet the rectangle.
void draw_icons(const laPaint& paint, const laItem_Line& lane) {
    const laScene& scene = paint.scene;
    const int centre = laLn_IconY(scene.looks, lane) - scene.view.verticalOffset;
    laIconWalk walk(scene, lane, paint.scale, paint.rect.right);
    for (laShownIcon shown; walk.Next(shown);) {
        if (shown.hidden > 0) {
            draw_count(paint, shown, centre);
            continue;
        }
        const LaEventLook& look = scene.looks.eventLooks[lane.icons.event(shown.number)];
        const int right = shown.left + std::max(look.width, shown.mark ? icon_Width(shown.icon) : 0);
        if (right <= paint.rect.left || shown.left >= paint.rect.right) continue;
        const int top = centre - look.height / 2;
        if (shown.visibleFrom >= 0)
            paint.surface.pushClip(shown.visibleFrom, top, shown.left + look.width - shown.visibleFrom,
                                   look.height, true);
        paint.surface.drawIcon(shown.left, top, shown.icon);
        if (shown.visibleFrom >= 0) paint.surface.popClip();
    }
}

}  // namespace

void laPaint_Lanes(const laPaint& paint) {
    const laScene& scene = paint.scene;
    const int reach = std::max(scene.looks.rowHeight, std::min(scene.looks.maxExtent, solidLineLimit));
    for (uint32_t i = 0; i < scene.items.lanes.size(); ++i) {
        const laItem_Line& lane = scene.items.lanes[i];
        if (lane.hidden || lane.y + reach < paint.rect.top || lane.y - reach > paint.rect.bottom) continue;
        LanePainter(paint, lane).Draw();
    }
}

void laPaint_Icons(const laPaint& paint) {
    const laScene& scene = paint.scene;
    const int reach = scene.looks.rowHeight + scene.looks.maxExtent;
    const int oldFont = paint.surface.setFont(Font_Axis);
    for (uint32_t i = 0; i < scene.items.lanes.size(); ++i) {
        const laItem_Line& lane = scene.items.lanes[i];
        if (lane.hidden || lane.y + reach < paint.rect.top || lane.y - reach > paint.rect.bottom) continue;
        draw_icons(paint, lane);
    }
    if (oldFont >= 0) paint.surface.setFont(oldFont);
}
