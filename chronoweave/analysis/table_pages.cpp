#include "chronoweave/analysis/table_pages.h"

#include <algorithm>
#include <numeric>

#include "chronoweave/traxfunc/list/names.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr double marginInches = 0.4, titleInches = 0.17, rowInches = 0.14;
constexpr int measuredRows = 2000;  // the columns are as wide as these need
constexpr Colour ink = 0x000000;

std::string header_of(const MScrollList& list, int column) {
    std::string title;
    for (const std::string& text : list.Column(column).header)
        if (!text.empty()) title += (title.empty() ? "" : " ") + text;
    return text_utf8(title);
}

int letters(const std::string& text) {
    return static_cast<int>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }));
}

// Letters of each column and two between; the widest give way until all fit.
std::vector<int> widths_of(const MScrollList& list, int room) {
    std::vector<int> widths;
    for (int column = 0; column < list.ColumnCount(); ++column) {
        int width = letters(header_of(list, column));
        for (int row = 0; row < std::min(list.RowCount(), measuredRows); ++row)
            width = std::max(width, letters(text_utf8(list.Text(row, column))));
        widths.push_back(width + 2);
    }
    while (!widths.empty() && std::accumulate(widths.begin(), widths.end(), 0) > room) {
        int& widest = *std::max_element(widths.begin(), widths.end());
        if (widest <= 4) break;
        --widest;
    }
    return widths;
}

class TablePages {
  public:
    TablePages(PageDevice& page, const std::string& title, const Progress& progress, double rows)
        : page_(page), title_(title), progress_(progress), total_(rows) {
        const PageFacts facts = page.facts();
        left_ = static_cast<int>(facts.printerX * marginInches);
        top_ = static_cast<int>(facts.printerY * marginInches);
        width_ = facts.width - 2 * left_;
        height_ = facts.height - 2 * top_;
        titleHeight_ = std::max(1, static_cast<int>(facts.printerY * titleInches));
        rowHeight_ = std::max(1, static_cast<int>(facts.printerY * rowInches));
        rowsOnPage_ = (height_ - 2 * titleHeight_ - 2 * rowHeight_) / rowHeight_;
        canDraw_ = facts.canDraw && width_ > 0 && rowsOnPage_ > 0;
    }

    TablePrinted Draw(const MScrollList& list) {
        if (!canDraw_) return TablePrinted::Failed;
        widths_.clear();
        int row = 0;
        do {
            if (progress_ && !progress_(done_, total_))
                return pages_ > 0 ? TablePrinted::Stopped : TablePrinted::StoppedAhead;
            const int end = std::min(list.RowCount(), row + rowsOnPage_);
            if (!DrawPage(list, row, end)) return TablePrinted::Failed;
            done_ += end - row;
            row = end;
        } while (row < list.RowCount());
        return TablePrinted::Done;
    }

  private:
    bool DrawPage(const MScrollList& list, int from, int end) {
        if (!page_.makeFonts("Courier New", titleHeight_, rowHeight_) || !page_.startPage()) return false;
        Surface& surface = page_.surface();
        surface.setFont(Font_Application);
        Put(left_, top_, width_ * 3 / 4, title_, Font_Application);
        const std::string number = gen_format("Page %d", ++pages_);
        const int wide = surface.textExtent(number).width;
        Put(left_ + width_ - wide, top_, wide, number, Font_Application);
        surface.setFont(Font_Axis);
        letterWidth_ = std::max(1, surface.fontMetrics(Font_Axis).charWidth);
        if (widths_.empty()) widths_ = widths_of(list, width_ / letterWidth_);
        int y = top_ + 2 * titleHeight_;
        Row(list, y, [&](int column) { return header_of(list, column); });
        y += rowHeight_ + rowHeight_ / 4;
        surface.fillRect(left_, y - rowHeight_ / 8, width_, std::max(1, rowHeight_ / 16), ink);
        for (int row = from; row < end; ++row, y += rowHeight_)
            Row(list, y, [&](int column) { return text_utf8(list.Text(row, column)); });
        return page_.endPage();
    }

    template <class Text>
    void Row(const MScrollList& list, int y, const Text& text) {
        int x = left_;
        for (int column = 0; column < static_cast<int>(widths_.size()); ++column) {
            const int letters = widths_[static_cast<size_t>(column)];
            const At at = list.Column(column).rightAligned ? At::Right : At::Left;
            Put(x, y, (letters - 1) * letterWidth_, text(column), Font_Axis, at);
            x += letters * letterWidth_;
        }
    }

    enum class At { Left, Right };
    void Put(int x, int y, int width, const std::string& text, int font, At at = At::Left) {
        Surface& surface = page_.surface();
        const std::string shown = laNames_Elide(surface, text, width);
        if (shown.empty()) return;
        if (at == At::Right) x += std::max(0, width - surface.textExtent(shown).width);
        surface.drawText(x, y + surface.fontMetrics(font).ascent, shown, ink, NoColour);
    }

    PageDevice& page_;
    const std::string& title_;
    const Progress& progress_;
    double done_ = 0, total_;
    int left_ = 0, top_ = 0, width_ = 0, height_ = 0, titleHeight_ = 1, rowHeight_ = 1, rowsOnPage_ = 0;
    int letterWidth_ = 1, pages_ = 0;
    std::vector<int> widths_;  // letters, of the list that is drawn
    bool canDraw_ = false;
};

}  // namespace

TablePrinted table_DrawPages(PageDevice& page, const std::string& title,
                             const std::vector<const MScrollList*>& lists, const Progress& progress) {
    double rows = 0;
    for (const MScrollList* list : lists) rows += list->RowCount();
    TablePages pages(page, title, progress, rows);
    for (const MScrollList* list : lists) {
        if (list->RowCount() == 0 && list != lists.front()) continue;
        if (const TablePrinted printed = pages.Draw(*list); printed != TablePrinted::Done) return printed;
    }
    return TablePrinted::Done;
}
