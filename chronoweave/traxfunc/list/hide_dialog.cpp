#include "chronoweave/traxfunc/list/hide_dialog.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int leastNameColumn = 80;  // pixels

bool any_selected(const std::vector<laHideRow>& rows) {
    return std::any_of(rows.begin(), rows.end(), [](const laHideRow& row) { return row.selected; });
}

}  // namespace

laHideDialog::laHideDialog(TraxTaskList& list, const LaList& settings, const LaItems& items, LaSource& source,
                           std::function<void()> apply)
    : list_(list),
      settings_(settings),
      items_(items),
      source_(source),
      apply_(std::move(apply)),
      paths_(list.HiddenPaths()),
      savedRefresh_(source.liveRefresh) {
    title = "Select " + settings.objectTermLower + "s to hide";
    showTitle = laCanvas_Plural(settings.objectTerm) + " to Show";
    hideTitle = laCanvas_Plural(settings.objectTerm) + " to Hide";
    nameColumn = settings.objectTerm + " Name";
    idColumn = settings.objectTerm + " ID";
    source.liveRefresh = false;
    Refresh();
}

int laHideDialog::NameColumnWidth(int listWidth, int namesNeed, int idsNeed) {
    return std::max({leastNameColumn, listWidth / 3, std::min(namesNeed, listWidth - idsNeed)});
}

void laHideDialog::Refresh() {
    toShow.clear();
    toHide.clear();
    for (size_t i = 0; i < paths_.size(); ++i) {
        const laPath& path = paths_[i];
        toHide.push_back({text_utf8(path.Joined(settings_.separator.substr(0, 1))),
                          path.id ? gen_format("0x%x", *path.id) : "N/A", static_cast<uint32_t>(i), false});
    }
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
        const laItem_Line& lane = items_.lanes[i];
        // The agent stands for what is hidden; it is no object.
        if (lane.isAgent) continue;
        if (laHide_IsHidden(settings_, laTask_PathOfLane(settings_, source_, lane), paths_)) continue;
        toShow.push_back({text_utf8(laTask_DisplayName(settings_, source_, lane)),
                          gen_format("0x%x", lane.objectId), lane.objectId, false});
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
        list_.SetHiddenPaths(paths_);
        apply_();
        Close();
        return true;
    }
    if (button == "hide") {
        TakePattern();
        HideRows(Rows::Selected);
    } else if (button == "hideall") {
        HideRows(Rows::All);
    } else {
        ShowRows(button == "showall" ? Rows::All : Rows::Selected);
    }
    Refresh();
    return true;
}

void laHideDialog::DoubleClick(bool inToShow, size_t row) {
    std::vector<laHideRow>& rows = inToShow ? toShow : toHide;
    if (!open_ || row >= rows.size()) return;
    for (size_t i = 0; i < rows.size(); ++i) rows[i].selected = i == row;
    if (inToShow)
        HideRows(Rows::Selected);
    else
        ShowRows(Rows::Selected);
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

void laHideDialog::HideRows(Rows which) {
    for (const laHideRow& row : toShow) {
        if (which == Rows::Selected && !row.selected) continue;
        if (const laItem_Line* lane = laCanvas_FindLane(items_, row.data))
            Add(laTask_PathOfLane(settings_, source_, *lane));
    }
}

void laHideDialog::ShowRows(Rows which) {
    for (size_t i = toHide.size(); i-- > 0;)
        if (which == Rows::All || toHide[i].selected)
            paths_.erase(paths_.begin() + static_cast<ptrdiff_t>(toHide[i].data));
}

void laHideDialog::Close() {
    if (!open_) return;
    open_ = false;
    paths_.clear();
    source_.liveRefresh = savedRefresh_;
}
