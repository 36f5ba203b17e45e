// The context switches of a picture.
#include <algorithm>
#include <optional>

#include "chronoweave/traxfunc/draw/columns.h"
#include "chronoweave/traxfunc/draw/draw_items.h"
#include "chronoweave/traxfunc/draw/switch_density.h"

namespace {

// Context switches of one layer. All of one column are held back until the next column begins: a line that
// lies wholly under later ones of the column isn't drawn.
class SwitchPainter {
  public:
    SwitchPainter(const laPaint& paint, laSwitchLayer layer)
        : paint_(paint),
          scene_(paint.scene),
          layer_(layer),
          ends_(scene_.items.lanes.size()),
          density_(scene_, paint.scale) {
        const bool agentShown =
            scene_.items.hiddenAgent != laNoLane && !scene_.items.lanes[scene_.items.hiddenAgent].hidden;
        for (uint32_t i = 0; i < scene_.items.lanes.size(); ++i) {
            const laItem_Line& lane = scene_.items.lanes[i];
            const laItem_Line& at =
                lane.hidden && agentShown ? scene_.items.lanes[scene_.items.hiddenAgent] : lane;
            const int y = laLn_LineY(scene_.looks, at) - scene_.view.verticalOffset;
            ends_[i].y = std::clamp(y, 0, paint.dataHeight);
            ends_[i].hidden = lane.hidden ? (agentShown ? End::AtAgent : End::AtAgent | End::Nowhere) : 0;
            ends_[i].beyond = y < 0 ? End::Above : y > paint.dataHeight ? End::Below : 0;
        }
    }

    void Draw() {
        if (laPaint_SwitchesLookAlike(scene_.looks))
            DrawUnions();
        else
            DrawInOrder();
    }

  private:
    struct End {
        enum : uint8_t { AtAgent = 1, Nowhere = 2, Above = 1, Below = 2 };
        int y = 0;           // on the surface, clamped to the data area
        uint8_t hidden = 0;  // hidden, and whether there is an agent to stand for it
        uint8_t beyond = 0;  // outside the data area
    };
    struct Span {
        int y0, y1;  // on the surface, clamped
        const LaStatusLook* look;
        int top() const { return std::min(y0, y1); }
        int bottom() const { return std::max(y0, y1); }
    };

    static constexpr int noRow = 0x7fffffff;

    double Low() const {
        return std::max(scene_.view.viewLow,
                        paint_.scale.ToTime(paint_.rect.left - scene_.looks.maxExtent - 2));
    }
    double High() const {
        return std::min(scene_.view.viewHigh,
                        paint_.scale.ToTime(paint_.rect.right + scene_.looks.maxExtent + 2));
    }
    bool Seen(const laItem_Ctx& line) const {
        if (!scene_.looks.statusLooks[static_cast<size_t>(line.status)].shown) return false;
        const End &from = ends_[line.fromLane], &to = ends_[line.toLane];
        return (from.hidden & to.hidden) == 0 && ((from.hidden | to.hidden) & End::Nowhere) == 0;
    }

    // Whether the strip that a switch falls into is of this layer. Where it is not, at goes on to the next
    // strip; where another strip begins, what was held back is drawn first by flush.
    template <class Flush>
    bool OfLayer(uint32_t& at, const Flush& flush) {
        if (scene_.options.plainSwitches) return true;
        const int strip = density_.StripOf(at);
        if (!strip_ || strip != *strip_) {
            flush();
            strip_ = strip;
            count_ = density_.Count(at, [this](const laItem_Ctx& line) { return Seen(line); });
        }
        const bool dense = laSwitches_AreDense(count_);
        if (dense == (layer_ == laSwitchLayer::Under)) return true;
        at = density_.EndOfStrip(at);
        return false;
    }
    Colour ColourOf(const LaStatusLook& look) const {
        return layer_ == laSwitchLayer::Under
                   ? laSwitches_Tint(look.colour, paint_.surface.background(), count_)
                   : look.colour;
    }

    void DrawInOrder() {
        const LaItemList<laItem_Ctx>& lines = scene_.items.ctxLines;
        laItem_Ctx made;
        const double high = High();
        for (uint32_t i = laCtx_FirstAt(scene_.items, Low()); i < lines.size() && lines.TimeAt(i) <= high;)
            if (OfLayer(i, [this] { Flush(); })) Add(lines.At(i++, made));
        Flush();
    }

    // With one look for all, a column is the union of its lines, and once that reaches from the first row to
    // the last the rest of the column is skipped.
    void DrawUnions() {
        const LaItemList<laItem_Ctx>& lines = scene_.items.ctxLines;
        laItem_Ctx made;
        const double high = High();
        int top = noRow, bottom = -1;
        for (const End& end : ends_) {
            if (end.hidden != 0) continue;
            top = std::min(top, end.y);
            bottom = std::max(bottom, end.y);
        }
        const auto column = [&](size_t at) {
            return paint_.scale.ToPixel(lines.TimeAt(static_cast<uint32_t>(at)));
        };
        for (uint32_t i = laCtx_FirstAt(scene_.items, Low()); i < lines.size() && lines.TimeAt(i) <= high;) {
            if (!OfLayer(i, [] {})) continue;
            lastX_ = column(i);
            const auto end = static_cast<uint32_t>(laPaint_FirstRightOf(i + 1, lines.size(), lastX_, column));
            // Two that take turns cross the same rows each time.
            uint32_t from = laNoLane, to = laNoLane;
            for (; i < end && lines.TimeAt(i) <= high; ++i) {
                const laItem_Ctx& line = lines.At(i, made);
                if ((line.fromLane == to && line.toLane == from) ||
                    (line.fromLane == from && line.toLane == to))
                    continue;
                if (!Seen(line)) continue;
                from = line.fromLane;
                to = line.toLane;
                if ((ends_[from].beyond & ends_[to].beyond) != 0) continue;
                Unite({ends_[from].y, ends_[to].y,
                       &scene_.looks.statusLooks[static_cast<size_t>(line.status)]});
                if (column_.size() == 1 && column_[0].y0 <= top && column_[0].y1 >= bottom) i = end - 1;
            }
            FlushUnion();
        }
        DrawStretches();
    }

    void FlushUnion() {
        for (const Span& span : column_) {
            if (span.look->style == Line_Solid)
                stretches_.push_back({lastX_, span, ColourOf(*span.look)});
            else
                Draw(span);
        }
        column_.clear();
    }

    // Solid stretches of all columns, painted in bands of rows: between two neighbouring ends of stretches
    // the same columns are covered, and neighbouring ones become one rectangle. Down a single column of
    // pixels every row would be a cache line of its own.
    void DrawStretches() {
        if (stretches_.empty()) return;
        std::vector<int> ends;
        for (const Stretch& stretch : stretches_) {
            ends.push_back(stretch.span.y0);
            ends.push_back(stretch.span.y1 + 1);
        }
        std::sort(ends.begin(), ends.end());
        ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
        for (size_t i = 0; i + 1 < ends.size(); ++i) DrawBand(ends[i], ends[i + 1]);
        stretches_.clear();
    }

    void DrawBand(int top, int end) const {
        const int thickness = std::max(1, stretches_.front().span.look->thickness);  // one look for all
        int left = 0, right = 0;  // columns of the rectangle in hand, the last one not included
        Colour colour = 0;
        const auto flush = [&] {
            if (left < right) paint_.surface.fillRect(left, top, right - left, end - top, colour);
        };
        for (const Stretch& stretch : stretches_) {
            if (stretch.span.y0 > top || stretch.span.y1 < top) continue;
            const int x = stretch.x - thickness / 2;
            if (x > right || left == right || stretch.colour != colour) {
                flush();
                left = x;
                colour = stretch.colour;
            }
            right = x + thickness;
        }
        flush();
    }

    // column_ holds disjoint stretches in no order.
    void Unite(Span span) {
        span = {span.top(), span.bottom(), span.look};
        for (size_t at = 0; at < column_.size();) {
            const Span& known = column_[at];
            if (known.y0 <= span.y0 && known.y1 >= span.y1) return;
            if (known.y0 > span.y1 + 1 || known.y1 + 1 < span.y0) {
                ++at;
                continue;
            }
            span.y0 = std::min(span.y0, known.y0);
            span.y1 = std::max(span.y1, known.y1);
            column_[at] = column_.back();
            column_.pop_back();
            at = 0;
        }
        column_.push_back(span);
    }

    void Add(const laItem_Ctx& line) {
        if (!Seen(line)) return;
        const LaStatusLook& look = scene_.looks.statusLooks[static_cast<size_t>(line.status)];
        const End &from = ends_[line.fromLane], &to = ends_[line.toLane];
        const int x = paint_.scale.ToPixel(line.t0);
        const Span span{from.y, to.y, &look};
        const bool reaches = span.top() < lastTop_ || span.bottom() > lastBottom_;
        if (x < lastX_ || (x == lastX_ && !reaches)) return;
        if (x != lastX_) Flush();
        lastX_ = x;
        lastTop_ = span.top();
        lastBottom_ = span.bottom();
        if ((from.beyond & to.beyond) != 0) return;
        column_.push_back(span);
        columnTop_ = std::min(columnTop_, span.top());
        columnBottom_ = std::max(columnBottom_, span.bottom());
        columnThickness_ = std::max(columnThickness_, look.thickness);
    }

    // From the last to the first, to see what is covered; drawn in order.
    void Flush() {
        size_t kept = column_.size();
        int coveredTop = 0, coveredBottom = -1, coveredThickness = 0;
        for (size_t i = column_.size(); i-- > 0;) {
            if (coveredTop == columnTop_ && coveredBottom == columnBottom_ &&
                coveredThickness == columnThickness_)
                break;
            const Span& span = column_[i];
            const bool plain = span.look->style == Line_Solid;
            if (span.top() >= coveredTop && span.bottom() <= coveredBottom &&
                span.look->thickness <= coveredThickness)
                continue;
            column_[--kept] = span;
            if (!plain) continue;
            const bool joins = span.look->thickness == coveredThickness && span.top() <= coveredBottom + 1 &&
                               span.bottom() >= coveredTop - 1;
            const bool longer = span.bottom() - span.top() > coveredBottom - coveredTop;
            if (joins) {
                coveredTop = std::min(coveredTop, span.top());
                coveredBottom = std::max(coveredBottom, span.bottom());
            } else if (coveredThickness == 0 || (longer && span.look->thickness >= coveredThickness)) {
                coveredTop = span.top();
                coveredBottom = span.bottom();
                coveredThickness = span.look->thickness;
            }
        }
        for (size_t i = kept; i < column_.size(); ++i) Draw(column_[i]);
        column_.clear();
        columnTop_ = noRow;
        columnBottom_ = -1;
        columnThickness_ = 0;
    }

    void Draw(const Span& span) const {
        const LaStatusLook& look = *span.look;
        // Dashes stand still in the content while it scrolls.
        const int top = span.top() + scene_.view.verticalOffset;
        const auto start = static_cast<uint64_t>(top);
        paint_.surface.drawStyledLine(lastX_, span.top(), lastX_, span.bottom(), ColourOf(look),
                                      look.thickness, look.style,
                                      laPaint_DashPhase(start, look.thickness, look.style));
    }

    const laPaint& paint_;
    const laScene& scene_;
    const laSwitchLayer layer_;
    std::vector<End> ends_;
    const laSwitchDensity density_;
    std::optional<int> strip_;  // of the switch in hand
    uint32_t count_ = 0;        // of that strip's switches
    int lastX_ = 0, lastTop_ = 0, lastBottom_ = 0;
    std::vector<Span> column_;  // of the column lastX_, and what they reach together
    int columnTop_ = noRow, columnBottom_ = -1, columnThickness_ = 0;
    struct Stretch {
        int x;
        Span span;  // y0 is the top
        Colour colour;
    };
    std::vector<Stretch> stretches_;  // by column
};

}  // namespace

bool laPaint_SwitchesLookAlike(const LaLooks& looks) {
    const LaStatusLook* one = nullptr;
    const auto agrees = [&](int row) {
        if (row < 0) return true;
        const LaStatusLook& look = looks.statusLooks[static_cast<size_t>(row)];
        if (!look.shown) return true;
        if (one == nullptr) one = &look;
        return look.colour == one->colour && look.thickness == one->thickness && look.style == one->style;
    };
    return agrees(looks.legend.contextSwitchStatus) &&
           std::all_of(looks.legend.statuses.begin(), looks.legend.statuses.end(),
                       [&](const LegendStatus& status) { return agrees(status.contextSwitchLink); });
}

void laPaint_Switches(const laPaint& paint, laSwitchLayer layer) {
    if (layer == laSwitchLayer::Under && paint.scene.options.plainSwitches) return;
    SwitchPainter(paint, layer).Draw();
}
