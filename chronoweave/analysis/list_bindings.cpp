#include <algorithm>

#include "chronoweave/analysis/dialogs.h"
#include "chronoweave/analysis/list_filter.h"
#include "chronoweave/analysis/program_dialogs.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/menus.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/items.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/menu/menu.h"

namespace {

constexpr int timeColumn = 1;  // of the bookmarks

// The bookmarks in their list. A row's id is the position in the canvas's list, which nobody else changes
// while the dialog is open.
class BookmarkList {
  public:
    BookmarkList(DialogHost& host, _LaCanvasData& canvas)
        : host_(host), canvas_(canvas), model_(dialogs_Bookmarks()) {
        model_.list("marks").SetRightAligned(timeColumn, true);
        model_.onSelect = [this](const std::string&) { enable(); };
        model_.onActivate = [this](const std::string&, int) { GoTo(); };
        model_.onCommit = [this](const std::string& name, const std::string&) {
            if (name == "label") rename();
        };
        model_.onEdit = [this](const std::string& name, const std::string&) {
            if (name == "f_marks") fill(FirstShown());
        };
        model_.onPress = [this](const std::string& name) { press(name); };
        fill(0);
    }
    void run() { host_.run(model_); }

  private:
    LaBookmark* selected() {
        const int row = model_.selectedRow("marks");
        const auto& rows = model_.item("marks").rows;
        if (row < 0 || static_cast<size_t>(row) >= rows.size()) return nullptr;
        const auto at = static_cast<size_t>(rows[static_cast<size_t>(row)].id);
        return at < canvas_.marks.bookmarks.size() ? &canvas_.marks.bookmarks[at] : nullptr;
    }
    std::string ObjectOf(const LaBookmark& mark) {
        if (mark.objectId == laAgentId) return {};
        const laItem_Line* lane = laCanvas_FindLane(canvas_.items, mark.objectId);
        return lane ? std::string(laTask_WithoutFake(laCanvas_LaneName(canvas_.list, *lane)))
                    : gen_format("0x%x", mark.objectId);
    }
    void fill(size_t select) {
        std::vector<DialogRow> rows;
        for (size_t i = 0; i < canvas_.marks.bookmarks.size(); ++i) {
            const LaBookmark& mark = canvas_.marks.bookmarks[i];
            DialogRow row;
            row.cells = {laBookmark_ShownLabel(canvas_, mark), laCanvas_TimeWithUnit(canvas_, mark.time),
                         ObjectOf(mark), gen_format("#%06X", static_cast<unsigned>(mark.colour & 0xFFFFFF))};
            row.id = i;
            if (filter_Fits(row, model_.item("f_marks").text)) rows.push_back(std::move(row));
        }
        const auto wanted =
            std::ranges::find_if(rows, [&](const DialogRow& row) { return row.id >= select; });
        const uint64_t chosen = rows.empty() ? 0 : wanted == rows.end() ? rows.back().id : wanted->id;
        const bool any = !rows.empty();
        model_.setRows("marks", std::move(rows));
        if (any) model_.setSelectedIds("marks", {chosen});
        enable();
    }
    // Of the selected one; the first without one.
    size_t FirstShown() {
        const LaBookmark* mark = selected();
        return mark ? static_cast<size_t>(mark - canvas_.marks.bookmarks.data()) : 0;
    }
    void enable() {
        LaBookmark* mark = selected();
        for (const char* name : {"label", "rename", "colour", "goto", "delete"})
            model_.setEnabled(name, mark != nullptr);
        model_.setText("label", mark ? laBookmark_ShownLabel(canvas_, *mark) : "");
    }
    void GoTo() {
        if (const LaBookmark* mark = selected())
            laCanvas_Paint(canvas_, [&] { laCanvas_Reveal(canvas_, mark->time, mark->objectId); });
    }
    void rename() {
        LaBookmark* mark = selected();
        const std::string& label = model_.item("label").text;
        if (!mark || label.empty() || label == laBookmark_ShownLabel(canvas_, *mark)) return;
        mark->label = text_escape(label);
        fill(static_cast<size_t>(mark - canvas_.marks.bookmarks.data()));
    }
    void ChangeColour() {
        LaBookmark* mark = selected();
        const auto colour = host_.chooseColour("Colour of the bookmark", mark->colour & 0xFFFFFF);
        if (!colour) return;
        mark->colour = *colour;
        laCanvas_Paint(canvas_, [&] { laCanvas_Repaint(canvas_); });
        fill(static_cast<size_t>(mark - canvas_.marks.bookmarks.data()));
    }
    void press(const std::string& name) {
        if (name == "close") return model_.close(0);
        LaBookmark* mark = selected();
        if (!mark) return;
        const auto at = static_cast<size_t>(mark - canvas_.marks.bookmarks.data());
        if (name == "goto") GoTo();
        if (name == "rename") rename();
        if (name == "colour") ChangeColour();
        if (name == "delete") {
            laCanvas_Paint(canvas_, [&] { laBookmark_DeleteAt(canvas_, at); });
            fill(at);
        }
    }

    DialogHost& host_;
    _LaCanvasData& canvas_;
    DialogModel model_;
};

struct ListedCommand {
    std::string label, menu, keys, body;
};

std::string keys_of(const MenuRow& row) {
    const laCommand* command = laCommands_Find(row.body);
    return command && text_equal_nocase(command->name, row.body) ? laCommand_Keys(*command)
                                                                 : menu_ShownAccelerator(row.accelerator);
}

// Those that stand in no menu.
void collect_others(const _LaCanvasData& canvas, std::vector<ListedCommand>& all) {
    for (const laCommand& command : laCommands_All())
        if (*command.label && laMenu_Of(command.name).empty() && (!command.can || command.can(canvas)) &&
            std::none_of(all.begin(), all.end(),
                         [&](const ListedCommand& listed) { return listed.body == command.name; }))
            all.push_back({laCommand_Title(command), "", laCommand_Keys(command), command.name});
}

void collect(MenuRegistry& menus, const MenuResource& menu, const std::string& path,
             std::vector<ListedCommand>& all, int depth) {
    constexpr int deepest = 8;
    for (const MenuRow& row : menu.rows) {
        if (row.IsSeparator() || (row.flags & (MenuRow_Hidden | MenuRow_Disabled))) continue;
        const std::string label = dialog_PlainText(row.label);
        if (row.child && depth < deepest)
            collect(menus, *row.child, path.empty() ? label : path + ", " + label, all, depth + 1);
        else if (!row.child)
            all.push_back({label, path, keys_of(row), row.body});
    }
}

bool contains_nocase(std::string_view text, std::string_view part) {
    for (size_t i = 0; i + part.size() <= text.size(); ++i)
        if (text_starts_nocase(text.substr(i), part)) return true;
    return false;
}

}  // namespace

void dialogs_EditBookmarks(DialogHost& host, _LaCanvasData& canvas) {
    BookmarkList(host, canvas).run();
}

std::string dialogs_AskCommand(DialogHost& host, MenuRegistry& menus, const _LaCanvasData& canvas) {
    std::vector<ListedCommand> all;
    if (MenuResource* root = menus.Find("TraxMenuBar", true)) {
        menus.Update(*root);
        collect(menus, *root, "", all, 0);
    }
    collect_others(canvas, all);
    DialogModel model(dialogs_Palette());
    const auto fill = [&](const std::string& part) {
        std::vector<DialogRow> rows;
        for (const ListedCommand& command : all)
            if (contains_nocase(command.label, part) || contains_nocase(command.body, part))
                rows.push_back({{command.label, command.menu, command.keys}, rows.size(), command.body});
        const bool any = !rows.empty();
        model.setRows("commands", std::move(rows));
        if (any) model.setSelected("commands", {0});
        model.setEnabled("run", any);
    };
    fill("");
    std::string chosen;
    const auto take = [&] {
        const int row = model.selectedRow("commands");
        if (row < 0) return;
        chosen = model.item("commands").rows[static_cast<size_t>(row)].data;
        model.close(1);
    };
    model.onEdit = [&](const std::string&, const std::string& text) { fill(text); };
    model.onActivate = [&](const std::string&, int) { take(); };
    model.onSelect = [&](const std::string&) { model.setEnabled("run", model.selectedRow("commands") >= 0); };
    model.onPress = [&](const std::string& name) { name == "run" ? take() : model.close(0); };
    host.run(model);
    return chosen;
}
