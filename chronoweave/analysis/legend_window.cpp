#include "chronoweave/analysis/legend_window.h"

#include <algorithm>
#include <utility>

#include "chronoweave/analysis/canvas_windows.h"
#include "chronoweave/analysis/legend_dialogs.h"
#include "chronoweave/rtos/status_looks.h"
#include "shared/libcxxutil/text.h"
#include "windlib/lagraph/surface.h"
#include "windlib/menu/menu.h"

namespace {

enum Column : int { Column_Kind, Column_Name, Column_Look, Column_Visibility };
constexpr int kindWidth = 90, lookWidth = 60, visibilityWidth = 90, leastNameWidth = 120;
constexpr size_t mostUndo = 100;

std::string lower(std::string text) {
    for (char& c : text) c = text_lower(c);
    return text;
}

// What stands behind the window while it is open. A row's id in the list is its row in the legend.
class LegendWindow {
  public:
    LegendWindow(_LaCanvasData& canvas, DialogModel& model) : canvas_(canvas), model_(model) {
        model_.setTitle("Legend for " +
                        (canvas.source.canvasName.empty() ? "NO_NAME" : canvas.source.canvasName));
        MScrollList& list = model_.list("list");
        list.sortByHeader = false;  // the order says which events belong to a category
        list.nameColumn = Column_Name;
        list.SetOwnerDrawn(Column_Look, true);
        const std::pair<Column, int> widths[] = {
            {Column_Kind, kindWidth}, {Column_Look, lookWidth}, {Column_Visibility, visibilityWidth}};
        for (const auto& [column, width] : widths) list.SetWidth(column, width);
        list.viewResized = [&list](int width) {
            list.SetWidth(Column_Name,
                          std::max(leastNameWidth, width - kindWidth - lookWidth - visibilityWidth));
        };
        list.drawCell = [this, &list](Surface& surface, int x, int y, int w, int h, int row, int, bool) {
            Draw(surface, x, y, w, h, list.RowId(row));
        };
        Fill();
    }

    // Each click on a visibility counts; the first one on a look has opened its dialog.
    void RowClick(int row, int column, int clicks) {
        const auto legendRow = RowOf(row);
        if (legendRow == none) return;
        clickTaken_ = clicks == 2 && (column == Column_Look || column == Column_Visibility);
        if (column == Column_Look && clicks == 1) Change(legendRow);
        if (column == Column_Visibility) ToggleVisible(legendRow);
    }
    // By Enter or a double click, whose clicks may have been taken already.
    void Activate(int row) {
        if (!std::exchange(clickTaken_, false)) Change(RowOf(row));
    }

    void Press(const std::string& name) {
        const size_t row = Selected();
        if (name == "bt_change") Change(row);
        if (name == "bt_visible") ToggleVisible(row);
        if (name == "bt_look") UseLook();
        if (name == "bt_undo") Undo();
        if (name == "bt_close") model_.close(Dialog_Dismissed);
    }

    void SetImportant(bool on) {
        const size_t row = Selected();
        if (!IsEvent(row)) return;
        Remember();
        laLegend_SetImportant(canvas_, laLegend_EventOf(canvas_, row), on);
        Refresh();
    }

    void Menu(const std::string& command) {
        if (command == "Close")
            model_.close(Dialog_Dismissed);
        else if (command == "Undo" && !undo_.empty())
            Undo();
        else if (command == "UseLook")
            UseLook();
        else
            canvas_.calls.host->beep();
    }

    void RowMenu(int row) {
        const size_t legendRow = RowOf(row);
        if (legendRow == none) return;
        const bool event = IsEvent(legendRow), changes = event || laLegend_IsStatus(canvas_, legendRow);
        const bool important = event && Event(legendRow).IsImportant();
        switch (canvas_.calls.host->popUpMenu("Operations", {{"&Change...", changes, {}},
                                                             {"&Visible / Invisible", true, {}},
                                                             {"&Never Hidden Under Others", event, important},
                                                             {popUpSeparator, false, {}},
                                                             {"&Undo", !undo_.empty(), {}}})) {
            case 0:
                return Change(legendRow);
            case 1:
                return ToggleVisible(legendRow);
            case 2:
                return SetImportant(!important);
            case 4:
                return Undo();
            default:
                return;
        }
    }

    // Rows whose names hold the filter's text; a category stays above its events.
    void Fill() {
        const std::string wanted = lower(model_.item("tf_filter").text);
        const auto selected = model_.selectedIds("list");
        std::vector<DialogRow> rows;
        size_t category = none;
        for (size_t row = 0; row < laLegend_RowCount(canvas_); ++row) {
            const bool isCategory = laLegend_KindText(canvas_, row) == "Category";
            if (isCategory) category = row;
            const bool fits = lower(laLegend_Name(canvas_, row)).find(wanted) != std::string::npos;
            if (!fits || (isCategory && !wanted.empty())) continue;
            if (!wanted.empty() && !laLegend_IsStatus(canvas_, row) && category != none) {
                rows.push_back(RowOfLegend(category));
                category = none;
            }
            rows.push_back(RowOfLegend(row));
        }
        model_.setRows("list", std::move(rows));
        Look();
        model_.setSelectedIds("list", selected);
        Enable();
    }

    void Enable() {
        const size_t row = Selected();
        const bool event = IsEvent(row);
        model_.setEnabled("bt_change", row != none && (event || laLegend_IsStatus(canvas_, row)));
        model_.setEnabled("bt_visible", row != none);
        model_.setEnabled("bt_important", event);
        model_.setChecked("bt_important", event && Event(row).IsImportant());
        model_.setEnabled("bt_undo", !undo_.empty());
    }

  private:
    static constexpr size_t none = static_cast<size_t>(-1);

    size_t RowOf(int listRow) const {
        const MScrollList& list = model_.list("list");
        if (listRow < 0 || listRow >= list.RowCount()) return none;
        const auto row = static_cast<size_t>(list.RowId(listRow));
        return row < laLegend_RowCount(canvas_) ? row : none;
    }
    size_t Selected() const { return RowOf(model_.selectedRow("list")); }
    const LegendEvent& Event(size_t row) const {
        return canvas_.looks.legend.events[laLegend_EventOf(canvas_, row)];
    }
    bool IsEvent(size_t row) const {
        return row != none && !laLegend_IsStatus(canvas_, row) && !Event(row).IsCategory();
    }

    DialogRow RowOfLegend(size_t row) const {
        return {{laLegend_KindText(canvas_, row), laLegend_Name(canvas_, row), "",
                 laLegend_VisibilityText(canvas_, row)},
                row};
    }

    // The height of the rows and the look of the categories'.
    void Look() {
        MScrollList& list = model_.list("list");
        list.SetRowHeight(std::max(canvas_.looks.maxExtent, canvas_.graph->font.height) + 2);
        for (int row = 0; row < list.RowCount(); ++row) {
            const size_t legendRow = RowOf(row);
            const bool heading =
                legendRow != none && !laLegend_IsStatus(canvas_, legendRow) && Event(legendRow).IsCategory();
            for (int column = 0; heading && column < list.ColumnCount(); ++column)
                list.SetCellAttribute(row, column, mslHeading, 1);
        }
    }

    void Draw(Surface& surface, int x, int y, int w, int h, uint64_t id) {
        if (id >= laLegend_RowCount(canvas_))
            // The wording is kept as it is known.
            return canvas_.calls.host->message("Error happended in Legend_OwnerDraw().");
        const auto row = static_cast<size_t>(id);
        if (laLegend_IsStatus(canvas_, row)) {
            const LegendStatus& status = canvas_.looks.legend.statuses[row];
            const int inset = w >= 16 ? 3 : 0;
            surface.drawStyledLine(x + inset, y + h / 2, x + w - 1 - inset, y + h / 2,
                                   colour_From16(status.red, status.green, status.blue),
                                   std::clamp(status.thickness, 1, std::max(1, h)), status.lineStyle, 0);
        } else if (IsEvent(row)) {
            const IconHandle icon = canvas_.looks.eventLooks[laLegend_EventOf(canvas_, row)].icon;
            surface.drawIcon(x + std::max(0, (w - icon_Width(icon)) / 2),
                             y + std::max(0, (h - icon_Height(icon)) / 2), icon);
        }
    }

    void Change(size_t row) {
        if (row == none) return;
        if (laLegend_IsStatus(canvas_, row)) {
            const auto setting = legend_AskStatus(*canvas_.calls.host, canvas_, row);
            if (!setting || *setting == laLegend_StatusSetting(canvas_, row)) return;
            Remember();
            laLegend_SetStatus(canvas_, row, *setting);
        } else if (IsEvent(row)) {
            const auto icon = legend_AskIcon(*canvas_.calls.host, Event(row).iconName);
            if (!icon) return;
            Remember();
            laLegend_SetIcon(canvas_, laLegend_EventOf(canvas_, row), *icon);
        } else {
            return;
        }
        Refresh();
    }

    void ToggleVisible(size_t row) {
        if (row == none) return;
        Remember();
        laLegend_ToggleVisible(canvas_, row);
        Refresh();
    }

    // The lines of all statuses at once, from a file.
    void UseLook() {
        const std::vector<LegendLook> looks = legend_Looks(canvas_.looks.legend.osName);
        std::vector<PopUpRow> rows;
        for (const LegendLook& look : looks) rows.push_back({text_utf8(look.name), true, {}});
        if (rows.empty()) rows.push_back({"No look is installed", false, {}});
        const int chosen = canvas_.calls.host->popUpMenu("Use look", rows);
        if (chosen < 0 || static_cast<size_t>(chosen) >= looks.size()) return;
        Remember();
        const Result used = laLegend_UseLook(canvas_, looks[static_cast<size_t>(chosen)].path);
        if (!used) {
            undo_.pop_back();
            canvas_.calls.host->message(used.text());
        }
        Refresh();
    }

    void Remember() {
        if (undo_.size() == mostUndo) undo_.erase(undo_.begin());
        undo_.push_back(laLegend_Take(canvas_));
    }

    void Undo() {
        if (undo_.empty()) return;
        laLegendTables tables = std::move(undo_.back());
        undo_.pop_back();
        laLegend_PutBack(canvas_, std::move(tables));
        Refresh();
    }

    // Texts and looks of the rows as the tables are now.
    void Refresh() {
        MScrollList& list = model_.list("list");
        for (int row = 0; row < list.RowCount(); ++row)
            if (const size_t legendRow = RowOf(row); legendRow != none)
                list.SetText(row, Column_Visibility, laLegend_VisibilityText(canvas_, legendRow));
        Look();
        for (int row = 0; row < list.RowCount(); ++row) list.RepaintRow(row);
        Enable();
    }

    _LaCanvasData& canvas_;
    DialogModel& model_;
    std::vector<laLegendTables> undo_;
    bool clickTaken_ = false;
};

void add_edit_menu() {
    MenuRegistry& menus = menu_Registry();
    if (!menus.Find("TraxLegendEdit", false))
        menus.Define("TraxLegendEdit", "{'&Undo' 'C-z' Undo} {'Use &Look...' UseLook}");
    MenuResource* bar = menus.Find("TraxLegendMenu", false);
    if (bar && !bar->RowOf("->TraxLegendEdit"))
        menus.AddRow("TraxLegendMenu", {"&Edit", "", "->TraxLegendEdit"});
}

bool open_legend(_LaCanvasData& canvas) {
    if (canvas.calls.host == nullptr) return false;
    if (canvas.calls.legendWindow != nullptr) {
        canvas.calls.host->raise(*canvas.calls.legendWindow);
        return true;
    }
    add_edit_menu();
    auto made = std::make_unique<DialogModel>(legend_Window());
    DialogModel& model = *made;
    auto window = std::make_shared<LegendWindow>(canvas, model);
    model.onPress = [window](const std::string& name) { window->Press(name); };
    model.onEdit = [window](const std::string&, const std::string&) { window->Fill(); };
    model.onSelect = [window](const std::string&) { window->Enable(); };
    model.onCheck = [window](const std::string&, bool on) { window->SetImportant(on); };
    model.onMenu = [window](const std::string& body) { window->Menu(body); };
    model.onActivate = [window](const std::string&, int row) { window->Activate(row); };
    model.onRowMenu = [window](const std::string&, int row, int) { window->RowMenu(row); };
    model.onRowClick = [window](const std::string&, int row, int column, int clicks) {
        window->RowClick(row, column, clicks);
    };
    analysis_OpenWindow(canvas, CanvasWindow::Legend, std::move(made));
    return true;
}

}  // namespace

void legend_Attach(_LaCanvasData& canvas) {
    canvas.calls.upper.commands["Legend"] = [&canvas](const std::string&) { return open_legend(canvas); };
}
