#include "chronoweave/traxfunc/print/legend_foot.h"

#include <algorithm>
#include <set>

#include "chronoweave/traxfunc/list/names.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int sampleWidth = 24, gap = 6, mostRows = 12, mostLetters = 32;

// Rows of the legend's tables that something of the view has.
struct Seen {
    std::vector<char> statuses, events;
};

void see_lane(const laScene& scene, const laItem_Line& lane, Seen& seen) {
    const double low = scene.view.viewLow, high = scene.view.viewHigh;
    for (const LaLnSeg segment : lane.segments)
        if (segment.t1 > low && segment.t0 < high && segment.status >= 0)
            seen.statuses[static_cast<size_t>(segment.status)] = 1;
    const size_t end = lane.icons.FirstBehind(high);
    for (size_t at = lane.icons.FirstFrom(low); at < end; ++at) seen.events[lane.icons.event(at)] = 1;
}

Seen see(const laScene& scene) {
    Seen seen{std::vector<char>(scene.looks.statusLooks.size()),
              std::vector<char>(scene.looks.eventLooks.size())};
    for (uint32_t i = 0; i < scene.items.lanes.size(); ++i)
        if (!scene.items.lanes[i].hidden) see_lane(scene, scene.items.lanes[i], seen);
    const LaItems& items = scene.items;
    for (uint32_t i = laCtx_FirstAt(items, scene.view.viewLow); i < items.ctxLines.size(); ++i) {
        const laItem_Ctx line = items.ctxLines[i];
        if (line.t0 > scene.view.viewHigh) break;
        if (line.status >= 0) seen.statuses[static_cast<size_t>(line.status)] = 1;
    }
    return seen;
}

}  // namespace

std::vector<TraxFootEntry> traxFoot_Entries(const laScene& scene) {
    const Seen seen = see(scene);
    const LaLooks& looks = scene.looks;
    std::vector<TraxFootEntry> entries;
    std::set<std::string> names;
    for (size_t i = 0; i < looks.statusLooks.size(); ++i) {
        const LaStatusLook& look = looks.statusLooks[i];
        const std::string& name = looks.legend.statuses[i].name;
        if (seen.statuses[i] == 0 || !look.shown || !names.insert("s" + name).second) continue;
        entries.push_back({text_utf8(name), NoIcon, look.colour, look.thickness, look.style});
    }
    for (size_t i = 0; i < looks.eventLooks.size(); ++i) {
        const LaEventLook& look = looks.eventLooks[i];
        const std::string& name = looks.legend.events[i].name;
        if (seen.events[i] == 0 || !look.shown || !names.insert("e" + name).second) continue;
        entries.push_back({text_utf8(name), look.icon});
    }
    return entries;
}

// A fixed pitch letter is a little wider than half its height.
TraxFootLayout traxFoot_LayOut(const std::vector<TraxFootEntry>& entries, int width, int fontHeight) {
    TraxFootLayout layout;
    if (entries.empty()) return layout;
    size_t letters = 0;
    int high = fontHeight;
    for (const TraxFootEntry& entry : entries) {
        letters = std::max(letters, entry.name.size());
        high = std::max(high, entry.icon == NoIcon ? 0 : icon_Height(entry.icon));
    }
    const int shown = static_cast<int>(std::min<size_t>(letters, mostLetters));
    layout.rowHeight = high + 2;
    layout.cellWidth = sampleWidth + 2 * gap + (shown * fontHeight * 5 + 8) / 9;
    layout.columns = std::max(1, width / layout.cellWidth);
    const int count = static_cast<int>(entries.size());
    layout.rows = std::min(mostRows, (count + layout.columns - 1) / layout.columns);
    return layout;
}

namespace {

void draw_entry(const TraxFootEntry& entry, const TraxPageGeometry& geometry, PageDevice& page, int left,
                int up, const TraxFootLayout& layout) {
    const auto x = [&](int at) { return geometry.X(TraxRegion::Bottom, at); };
    const auto y = [&](int at) { return geometry.Y(TraxRegion::Bottom, at); };
    Surface& surface = page.surface();
    const int middle = (y(up) + y(up - layout.rowHeight)) / 2;
    if (entry.icon != NoIcon) {
        const int from = left + (sampleWidth - icon_Width(entry.icon)) / 2,
                  half = icon_Height(entry.icon) / 2;
        const int top = up - layout.rowHeight / 2 + half;
        page.drawIcon(x(from), y(top), x(from + icon_Width(entry.icon)) - x(from),
                      y(top - icon_Height(entry.icon)) - y(top), entry.icon);
    } else {
        const int thick = geometry.LyingThickness(std::min(entry.thickness, layout.rowHeight - 2));
        surface.drawStyledLine(x(left), middle, x(left + sampleWidth), middle, entry.colour, thick,
                               entry.style, 0);
    }
    const FontMetrics font = surface.fontMetrics(Font_Application);
    const int textLeft = x(left + sampleWidth + gap);
    const std::string name = laNames_Elide(surface, entry.name, x(left + layout.cellWidth) - textLeft);
    surface.drawText(textLeft, middle - font.height / 2 + font.ascent, name, 0x000000, NoColour);
}

}  // namespace

void traxFoot_Draw(const std::vector<TraxFootEntry>& entries, const TraxFootLayout& layout,
                   const TraxPageGeometry& geometry, PageDevice& page) {
    const size_t room = static_cast<size_t>(layout.rows) * static_cast<size_t>(layout.columns);
    page.surface().setFont(Font_Application);
    for (size_t i = 0; i < std::min(room, entries.size()); ++i) {
        const int row = static_cast<int>(i) / layout.columns, column = static_cast<int>(i) % layout.columns;
        const int left = gap + column * layout.cellWidth;
        const int up = layout.Height() - 2 - row * layout.rowHeight;
        const bool last = i + 1 == room && entries.size() > room;
        const TraxFootEntry more{gen_format("and %zu more", entries.size() - room + 1), NoIcon, 0xFFFFFF};
        draw_entry(last ? more : entries[i], geometry, page, left, up, layout);
    }
}
