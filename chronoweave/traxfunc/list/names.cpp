#include "chronoweave/traxfunc/list/names.h"

#include <algorithm>

#include "chronoweave/traxfunc/input/navigate.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int margin = 4;  // pixels ahead of and behind a text
constexpr int levelIndent = 14;
constexpr int markSize = 9;  // the expand mark, a square
constexpr int leastWidth = 100;
constexpr Colour tintText = 0x202020;  // readable on every tint, whatever the palette

int mark_left(const MslObjectEntry& entry) {
    return margin + entry.depth * levelIndent;
}

// With any nesting, all rows leave room for a mark, so that names of a level stand below each other.
int text_left(const _LaCanvasData& canvas, const MslObjectEntry& entry) {
    return mark_left(entry) + (canvas.taskList->depth() > 1 ? markSize + margin : 0);
}

std::string shown_text(const _LaCanvasData& canvas, const MslObjectEntry& entry) {
    return text_utf8(canvas.taskList->RowText(entry, 0));
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

void draw_current(const _LaCanvasData& canvas, Surface& surface, int width) {
    const int row = canvas.taskList->list().CurrentRow();
    if (row < 0) return;
    const int top = row * canvas.looks.rowHeight - canvas.view.verticalOffset,
              bottom = top + canvas.looks.rowHeight - 1;
    const Colour colour = surface.foreground();
    surface.drawLine(0, top, width - 1, top, colour);
    surface.drawLine(0, bottom, width - 1, bottom, colour);
    surface.drawLine(0, top, 0, bottom, colour);
    surface.drawLine(width - 1, top, width - 1, bottom, colour);
}

// The list stands as the picture does while work goes on in it; where it scrolled, the picture follows.
template <class Work>
void with_list(_LaCanvasData& canvas, const Work& work) {
    MScrollList& list = canvas.taskList->list();
    if (list.RowHeight() != canvas.looks.rowHeight) list.SetRowHeight(canvas.looks.rowHeight, false);
    list.SetViewHeight(static_cast<int>(canvas.graph->vertical.visible()));
    list.ScrollTo(canvas.view.verticalOffset);
    const int64_t before = list.ViewTop();
    work(list);
    if (list.ViewTop() != before) laCanvas_ScrollRows(canvas, list.ViewTop() - canvas.view.verticalOffset);
}

int row_at(const _LaCanvasData& canvas, int y) {
    const MslObjectEntry* entry = laNames_RowAt(canvas, y);
    return entry == nullptr ? MScrollList::noRow : entry->row;
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

void laNames_Draw(const _LaCanvasData& canvas, Surface& surface, int width, int height, bool inWindow) {
    const auto& rows = canvas.taskList->rows();
    const int oldFont = surface.setFont(Font_Application);
    surface.clearRect(0, 0, width, height);
    const FontMetrics font = surface.fontMetrics(Font_Application);
    const int first = canvas.looks.rowHeight > 0 ? canvas.view.verticalOffset / canvas.looks.rowHeight : 0;
    for (size_t i = static_cast<size_t>(std::max(0, first)); i < rows.size(); ++i) {
        const MslObjectEntry& entry = *rows[i];
        const int top = entry.row * canvas.looks.rowHeight - canvas.view.verticalOffset;
        if (top >= height) break;
        Colour ground = tint_for(canvas.taskList->RowColour(entry), surface.background());
        Colour ink = surface.foreground();
        if (ground != NoColour) ink = text_on(ground);
        if (inWindow && canvas.taskList->list().IsSelected(entry.row)) {
            ground = surface.selectionBackground();
            ink = surface.selectionForeground();
        }
        if (ground != NoColour) surface.fillRect(0, top, width, canvas.looks.rowHeight, ground);
        if (canvas.taskList->HasChildren(entry))
            draw_mark(surface, mark_left(entry), top + canvas.looks.rowHeight / 2, entry.collapsed, ink);
        const int left = text_left(canvas, entry);
        const std::string text = laNames_Elide(surface, shown_text(canvas, entry), width - left - margin);
        if (!text.empty())
            surface.drawText(left, top + (canvas.looks.rowHeight - font.height) / 2 + font.ascent, text, ink,
                             NoColour);
    }
    if (inWindow && canvas.taskList->focused) draw_current(canvas, surface, width);
    if (oldFont >= 0) surface.setFont(oldFont);
}

int laNames_Width(const _LaCanvasData& canvas, Surface& surface, int most) {
    int width = leastWidth;
    const int oldFont = surface.setFont(Font_Application);
    for (const MslObjectEntry* entry : canvas.taskList->rows()) {
        width = std::max(
            width, text_left(canvas, *entry) + surface.textExtent(shown_text(canvas, *entry)).width + margin);
        if (width >= most) break;
    }
    if (oldFont >= 0) surface.setFont(oldFont);
    return std::max(leastWidth, std::min(width, most));
}

MslObjectEntry* laNames_RowAt(const _LaCanvasData& canvas, int y) {
    const auto& rows = canvas.taskList->rows();
    const int content = y + canvas.view.verticalOffset;
    if (y < 0 || content < 0 || canvas.looks.rowHeight <= 0) return nullptr;
    const auto row = static_cast<size_t>(content / canvas.looks.rowHeight);
    return row < rows.size() ? rows[row] : nullptr;
}

bool laNames_HitsMark(const _LaCanvasData& canvas, const MslObjectEntry& entry, int x) {
    const int left = mark_left(entry);
    return canvas.taskList->HasChildren(entry) && x >= left - 2 && x < left + markSize + 2;
}

bool laNames_Click(_LaCanvasData& canvas, int x, int y, int clicks, bool control, bool shift) {
    const MslObjectEntry* entry = laNames_RowAt(canvas, y);
    if (entry == nullptr) return false;
    const int row = entry->row;
    const bool onMark = laNames_HitsMark(canvas, *entry, x);
    laNames_EndSearch(canvas);
    with_list(canvas, [&](MScrollList& list) {
        if (onMark)
            list.ClickToggle(row);
        else
            list.Click(row, 0, clicks, control, shift);
    });
    return true;
}

void laNames_DragTo(_LaCanvasData& canvas, int y) {
    with_list(canvas, [&](MScrollList& list) {
        const int64_t end = list.TopOf(list.RowCount()) - 1;
        if (end >= 0) list.DragTo(list.RowAt(std::clamp<int64_t>(list.ViewTop() + y, 0, end)));
    });
}

MslObjectEntry* laNames_RightClick(_LaCanvasData& canvas, int y) {
    const int row = row_at(canvas, y);
    if (row >= 0) with_list(canvas, [&](MScrollList& list) { list.RightClick(row, 0); });
    return canvas.taskList->EntryAt(row);
}

std::vector<MslObjectEntry*> laNames_Selected(const _LaCanvasData& canvas) {
    return canvas.taskList->SelectedEntries();
}

void laNames_ClearSelection(_LaCanvasData& canvas) {
    canvas.taskList->list().SelectOnly(MScrollList::noRow);
}

std::string laNames_Tip(const _LaCanvasData& canvas, int y) {
    const MslObjectEntry* entry = laNames_RowAt(canvas, y);
    return entry == nullptr ? std::string() : canvas.taskList->RowTip(*entry);
}

bool laNames_Key(_LaCanvasData& canvas, MslKey key, bool control, bool shift) {
    bool done = false;
    laNames_EndSearch(canvas);
    with_list(canvas, [&](MScrollList& list) { done = list.Key(key, control, shift); });
    return done;
}

void laNames_Type(_LaCanvasData& canvas, std::string_view typed) {
    with_list(canvas, [&](MScrollList& list) { list.TypeAhead(typed); });
}

bool laNames_Backspace(_LaCanvasData& canvas) {
    if (!canvas.taskList->list().Searching()) return false;
    with_list(canvas, [](MScrollList& list) { list.SearchBackspace(); });
    return true;
}

void laNames_EndSearch(_LaCanvasData& canvas) {
    canvas.taskList->list().EndSearch();
}

void laNames_Focus(_LaCanvasData& canvas, bool focused) {
    if (canvas.taskList->focused == focused) return;
    canvas.taskList->focused = focused;
    if (!focused) laNames_EndSearch(canvas);
    if (canvas.graph->listChanged) canvas.graph->listChanged();
}
