#include "chronoweave/traxfunc/list/hide_dialog.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/list.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int leastNameColumn = 80;  // pixels

bool any_selected(const std::vector<laHideRow>& rows) {
    return std::any_of(rows.begin(), rows.end(), [](const laHideRow& row) { return row.selected; });
}

}  // namespace

laHideDialog::laHideDialog(_LaCanvasData& canvas)
    : canvas_(canvas), paths_(canvas.taskList->hiddenPaths()), savedRefresh_(canvas.source.liveRefresh) {
    title = "Select " + canvas.list.objectTermLower + "s to hide";
    showTitle = laCanvas_Plural(canvas.list.objectTerm) + " to Show";
    hideTitle = laCanvas_Plural(canvas.list.objectTerm) + " to Hide";
    nameColumn = canvas.list.objectTerm + " Name";
    idColumn = canvas.list.objectTerm + " ID";
    canvas.source.liveRefresh = false;
    Refresh();
}

int laHideDialog::NameColumnWidth(int listWidth) {
    return std::max(leastNameColumn, listWidth / 3);
}

void laHideDialog::Refresh() {
    toShow.clear();
    toHide.clear();
    for (size_t i = 0; i < paths_.size(); ++i) {
        const laPath& path = paths_[i];
        toHide.push_back({text_utf8(path.Joined(canvas_.list.separator.substr(0, 1))),
                          path.id ? gen_format("0x%x", *path.id) : "N/A", static_cast<uint32_t>(i), false});
    }
    for (uint32_t i = 0; i < canvas_.items.lanes.size(); ++i) {
        const laItem_Line& lane = canvas_.items.lanes[i];
        // The agent stands for what is hidden; it is no object.
        if (lane.isAgent || laHide_IsHidden(canvas_, lane, paths_)) continue;
        toShow.push_back({text_utf8(laTask_DisplayName(canvas_, lane)), gen_format("0x%x", lane.objectId),
                          lane.objectId, false});
    }
}

bool laHideDialog::Enabled(std::string_view button) const {
    if (!open_) return false;
    if (button == "hide") return any_selected(toShow) || !pattern.empty();
    if (button == "show") return any_selected(toHide);
    if (button == "hideall") return !toShow.empty();
    if (button == "showall") return !toHide.empty();
    return button == "ok" || button == "cancel";
}

bool laHideDialog::Press(std::string_view button) {
    if (!Enabled(button)) return false;
    if (button == "cancel") {
        Close();
        return true;
    }
    if (button == "ok") {
        TakePattern();
        Apply();
        Close();
        return true;
    }
    if (button == "hide") {
        TakePattern();
        HideRows(false);
    } else if (button == "hideall") {
        HideRows(true);
    } else {
        ShowRows(button == "showall");
    }
    Refresh();
    return true;
}

void laHideDialog::DoubleClick(bool inToShow, size_t row) {
    std::vector<laHideRow>& rows = inToShow ? toShow : toHide;
    if (!open_ || row >= rows.size()) return;
    for (size_t i = 0; i < rows.size(); ++i) rows[i].selected = i == row;
    if (inToShow)
        HideRows(false);
    else
        ShowRows(false);
    Refresh();
}

void laHideDialog::Add(laPath path) {
    const bool known = std::any_of(paths_.begin(), paths_.end(), [&](const laPath& one) {
        return one.components == path.components && one.wildcard == path.wildcard;
    });
    if (!known) paths_.push_back(std::move(path));
}

void laHideDialog::TakePattern() {
    if (pattern.empty()) return;
    Add(laTask_PatternPath(pattern));
    pattern.clear();
}

void laHideDialog::HideRows(bool all) {
    for (const laHideRow& row : toShow) {
        if (!all && !row.selected) continue;
        if (const laItem_Line* lane = laCanvas_FindLane(canvas_.items, row.data))
            Add(laTask_PathOfLane(canvas_, *lane));
    }
}

void laHideDialog::ShowRows(bool all) {
    for (size_t i = toHide.size(); i-- > 0;)
        if (all || toHide[i].selected) paths_.erase(paths_.begin() + static_cast<ptrdiff_t>(toHide[i].data));
}

void laHideDialog::Apply() {
    canvas_.taskList->SetHiddenPaths(paths_);
    laCanvas_Resort(canvas_);
    laCanvas_Repaint(canvas_);
}

void laHideDialog::Close() {
    if (!open_) return;
    open_ = false;
    paths_.clear();
    canvas_.source.liveRefresh = savedRefresh_;
}
