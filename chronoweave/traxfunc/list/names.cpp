#include "chronoweave/traxfunc/list/names.h"

#include <algorithm>

#include "shared/libcxxutil/text.h"

namespace {

constexpr int margin = 4;  // pixels ahead of and behind a text
constexpr int levelIndent = 14;
constexpr int markSize = 9;  // the expand mark, a square
constexpr int leastWidth = 100;
constexpr double absentInk = 0.45;     // opacity of the names of objects with nothing in the view
constexpr Colour tintText = 0x202020;  // readable on every tint, whatever the palette

int mark_left(const MslObjectEntry& entry) {
    return margin + entry.depth * levelIndent;
}

void draw_mark(Surface& surface, int left, int middle, bool collapsed, Colour colour) {
    const int top = middle - markSize / 2, right = left + markSize - 1, bottom = top + markSize - 1;
    surface.drawLine(left, top, right, top, colour);
    surface.drawLine(left, bottom, right, bottom, colour);
    surface.drawLine(left, top, left, bottom, colour);
    surface.drawLine(right, top, right, bottom, colour);
    surface.drawLine(left + 2, middle, right - 2, middle, colour);
    if (collapsed) surface.drawLine(left + markSize / 2, top + 2, left + markSize / 2, bottom - 2, colour);
}

int brightness(Colour colour) {
    return static_cast<int>((colour >> 16 & 0xFF) * 3 + (colour >> 8 & 0xFF) * 6 + (colour & 0xFF)) / 10;
}

Colour text_on(Colour ground) {
    return brightness(ground) > 110 ? tintText : 0xF8F8F8;
}

// A light tint on a dark ground is only hinted at: a fifth of it, the rest ground.
Colour tint_for(Colour tint, Colour ground) {
    if (tint == NoColour || brightness(ground) > 127 || brightness(tint) < 192) return tint;
    Colour mixed = 0;
    for (int shift = 0; shift <= 16; shift += 8)
        mixed |= ((tint >> shift & 0xFF) + 4 * (ground >> shift & 0xFF)) / 5 << shift;
    return mixed;
}

}  // namespace

std::string laNames_Elide(Surface& surface, std::string_view text, int width) {
    if (surface.textExtent(text).width <= width) return std::string(text);
    static constexpr std::string_view dots = "\xE2\x80\xA6";
    // Byte positions at which a character begins; the longest that fits is searched by halving.
    std::vector<size_t> ends;
    for (size_t i = 0; i < text.size(); ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) ends.push_back(i);
    const auto fits = [&](size_t end) {
        return surface.textExtent(std::string(text.substr(0, end)) + std::string(dots)).width <= width;
    };
    const auto past = std::partition_point(ends.begin(), ends.end(), fits);
    return past == ends.begin() ? std::string()
                                : std::string(text.substr(0, *(past - 1))) + std::string(dots);
}

// With any nesting, all rows leave room for a mark, so that names of a level stand below each other.
int laNames::TextLeft(const MslObjectEntry& entry) const {
    return mark_left(entry) + (objects_.depth() > 1 ? markSize + margin : 0);
}

std::string laNames::ShownText(const MslObjectEntry& entry) const {
    return text_utf8(objects_.RowText(entry, 0));
}

void laNames::Draw(Surface& surface, int width, int height, Look look) const {
    const auto& rows = objects_.rows();
    const int oldFont = surface.setFont(Font_Application);
    surface.clearRect(0, 0, width, height);
    const int first = looks_.rowHeight > 0 ? view_.verticalOffset / looks_.rowHeight : 0;
    for (size_t i = static_cast<size_t>(std::max(0, first)); i < rows.size(); ++i) {
        if (TopOf(*rows[i]) >= height) break;
        DrawRow(surface, *rows[i], TopOf(*rows[i]), width, look);
    }
    if (look == Look::Window && objects_.focused) DrawCurrent(surface, width);
    DrawPinned(surface, width, height, look);
    if (oldFont >= 0) surface.setFont(oldFont);
}

int laNames::TopOf(const MslObjectEntry& entry) const {
    return entry.row * looks_.rowHeight - view_.verticalOffset;
}

void laNames::DrawPinned(Surface& surface, int width, int height, Look look) const {
    for (const auto& [row, top] : objects_.PinnedRows(view_, height)) {
        surface.clearRect(0, top, width, looks_.rowHeight);
        DrawRow(surface, *objects_.rows()[static_cast<size_t>(row)], top, width, look);
    }
}

void laNames::DrawRow(Surface& surface, const MslObjectEntry& entry, int top, int width, Look look) const {
    Colour ground = tint_for(objects_.RowColour(entry), surface.background());
    Colour ink = ground != NoColour ? text_on(ground) : surface.foreground();
    if (look == Look::Window && objects_.list().IsSelected(entry.row)) {
        ground = surface.selectionBackground();
        ink = surface.selectionForeground();
    }
    if (objects_.IsAbsent(entry, view_))
        ink = colour_Mix(ink, ground != NoColour ? ground : surface.background(), absentInk);
    if (ground != NoColour) surface.fillRect(0, top, width, looks_.rowHeight, ground);
    if (objects_.HasChildren(entry))
        draw_mark(surface, mark_left(entry), top + looks_.rowHeight / 2, entry.collapsed, ink);
    const int left = TextLeft(entry);
    const std::string text = laNames_Elide(surface, ShownText(entry), width - left - margin);
    const FontMetrics font = surface.fontMetrics(Font_Application);
    if (!text.empty())
        surface.drawText(left, top + (looks_.rowHeight - font.height) / 2 + font.ascent, text, ink, NoColour);
}

void laNames::DrawCurrent(Surface& surface, int width) const {
    const int row = objects_.list().CurrentRow();
    if (row < 0) return;
    const int top = row * looks_.rowHeight - view_.verticalOffset, bottom = top + looks_.rowHeight - 1;
    const Colour colour = surface.foreground();
    surface.drawLine(0, top, width - 1, top, colour);
    surface.drawLine(0, bottom, width - 1, bottom, colour);
    surface.drawLine(0, top, 0, bottom, colour);
    surface.drawLine(width - 1, top, width - 1, bottom, colour);
}

int laNames::Width(Surface& surface, int most, std::optional<int> height) const {
    int width = leastWidth;
    const int oldFont = surface.setFont(Font_Application);
    const auto& rows = objects_.rows();
    const int rowHeight = std::max(1, looks_.rowHeight), offset = height ? view_.verticalOffset : 0;
    for (auto i = static_cast<size_t>(offset / rowHeight); i < rows.size() && width < most; ++i) {
        if (height && static_cast<int>(i) * rowHeight - offset >= *height) break;
        width = std::max(width, TextLeft(*rows[i]) + surface.textExtent(ShownText(*rows[i])).width + margin);
    }
    if (oldFont >= 0) surface.setFont(oldFont);
    return std::max(leastWidth, std::min(width, most));
}

MslObjectEntry* laNames::RowAt(int y) const {
    const auto& rows = objects_.rows();
    const int content = y + view_.verticalOffset;
    if (y < 0 || content < 0 || looks_.rowHeight <= 0) return nullptr;
    for (const auto& [pinned, top] : objects_.PinnedRows(view_, static_cast<int>(graph_.vertical.visible())))
        if (y >= top && y < top + looks_.rowHeight) return rows[static_cast<size_t>(pinned)];
    const auto row = static_cast<size_t>(content / looks_.rowHeight);
    return row < rows.size() ? rows[row] : nullptr;
}

laNames::Band laNames::BandOf(const MslObjectEntry& entry) const {
    if (entry.row < 0) return {};
    const int height = static_cast<int>(graph_.vertical.visible());
    for (const auto& [row, top] : objects_.PinnedRows(view_, height))
        if (row == entry.row) return {top, std::min(height, top + looks_.rowHeight)};
    const LaFreeRows free = objects_.FreeRows(view_, height);
    const int top = TopOf(entry);
    const Band band{std::max(free.from, top), std::min(free.end, top + looks_.rowHeight)};
    return band.top < band.end ? band : Band{};
}

bool laNames::HitsMark(const MslObjectEntry& entry, int x) const {
    const int left = mark_left(entry);
    return objects_.HasChildren(entry) && x >= left - 2 && x < left + markSize + 2;
}

// The list stands as the picture does while work goes on in it; where it scrolled, the picture follows.
template <class Work>
void laNames::WithList(const Work& work) {
    MScrollList& list = objects_.list();
    if (list.RowHeight() != looks_.rowHeight) list.SetRowHeight(looks_.rowHeight, false);
    list.SetViewHeight(objects_.FreeRows(view_, static_cast<int>(graph_.vertical.visible())).end);
    list.ScrollTo(view_.verticalOffset);
    const int64_t before = list.ViewTop();
    work(list);
    if (list.ViewTop() != before) graph_.vertical.userScrolled(list.ViewTop() - view_.verticalOffset);
}

bool laNames::Click(int x, int y, int clicks, bool control, bool shift) {
    const MslObjectEntry* entry = RowAt(y);
    if (entry == nullptr) return false;
    const int row = entry->row;
    const bool onMark = HitsMark(*entry, x);
    EndSearch();
    WithList([&](MScrollList& list) {
        if (onMark)
            list.ClickToggle(row);
        else
            list.Click(row, 0, clicks, control, shift);
    });
    return true;
}

void laNames::DragTo(int y) {
    WithList([&](MScrollList& list) {
        const int64_t end = list.TopOf(list.RowCount()) - 1;
        if (end >= 0) list.DragTo(list.RowAt(std::clamp<int64_t>(list.ViewTop() + y, 0, end)));
    });
}

MslObjectEntry* laNames::RightClick(int y) {
    const MslObjectEntry* entry = RowAt(y);
    const int row = entry == nullptr ? MScrollList::noRow : entry->row;
    if (row >= 0) WithList([&](MScrollList& list) { list.RightClick(row, 0); });
    return objects_.EntryAt(row);
}

void laNames::ClearSelection() {
    objects_.list().SelectOnly(MScrollList::noRow);
}

std::string laNames::Tip(int y) const {
    const MslObjectEntry* entry = RowAt(y);
    return entry == nullptr ? std::string() : objects_.RowTip(*entry);
}

bool laNames::Key(MslKey key, bool control, bool shift) {
    bool done = false;
    EndSearch();
    WithList([&](MScrollList& list) { done = list.Key(key, control, shift); });
    return done;
}

void laNames::Type(std::string_view typed) {
    WithList([&](MScrollList& list) { list.TypeAhead(typed); });
}

bool laNames::Backspace() {
    if (!objects_.list().Searching()) return false;
    WithList([](MScrollList& list) { list.SearchBackspace(); });
    return true;
}

void laNames::EndSearch() {
    objects_.list().EndSearch();
}

void laNames::Focus(bool focused) {
    if (objects_.focused == focused) return;
    objects_.focused = focused;
    if (!focused) EndSearch();
    if (graph_.listChanged) graph_.listChanged();
}
