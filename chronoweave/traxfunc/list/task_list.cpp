#include "chronoweave/traxfunc/list/task_list.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr std::string_view fakePrefix = "__vrl_fake_";
constexpr Colour rowTints[3] = {0xE4EEF8, 0xE8F4E4, 0xF6EFE0};
constexpr Colour agentDefault = 0x90C890;
constexpr char pathKey = '\0';

bool kernel_applies(const _LaCanvasData& canvas) {
    return canvas.options.kernelGroup && canvas.source.osKind == Os_Korvantis;
}

bool has_separator(const _LaCanvasData& canvas, std::string_view name) {
    return !canvas.list.separator.empty() && name.find(canvas.list.separator[0]) != std::string_view::npos;
}

}  // namespace

std::string laPath::Joined(std::string_view separator) const {
    std::string all;
    for (size_t i = 0; i < components.size(); ++i) {
        if (i > 0) all += separator;
        all += components[i];
    }
    return all;
}

laPath laTask_MakePath(const _LaCanvasData& canvas, std::string_view name, bool noKernel) {
    laPath path;
    const bool separated = has_separator(canvas, name);
    const bool kernel = !noKernel && kernel_applies(canvas) && !separated;
    if (canvas.list.flatView) {
        path.components.push_back(kernel ? "Kernel" + canvas.list.separator + std::string(name)
                                         : std::string(name));
        return path;
    }
    if (kernel) path.components.emplace_back("Kernel");
    while (separated) {
        const size_t end = name.find(canvas.list.separator[0]);
        if (end == std::string_view::npos) break;
        path.components.emplace_back(name.substr(0, end));
        name.remove_prefix(end + 1);
    }
    path.components.emplace_back(name);
    return path;
}

laPath laTask_PathOfLane(const _LaCanvasData& canvas, const laItem_Line& lane) {
    laPath path = laTask_MakePath(canvas, laCanvas_LaneName(canvas.list, lane), lane.isAgent);
    if (!lane.isAgent) path.id = lane.objectId;
    return path;
}

laPath laTask_PatternPath(std::string_view pattern) {
    laPath path;
    path.wildcard = true;
    path.components.emplace_back(pattern);
    if (pattern.empty() || (pattern.back() != '*' && pattern.back() != '?')) path.components[0] += '*';
    return path;
}

std::string laTask_DisplayName(const _LaCanvasData& canvas, const laItem_Line& lane) {
    const std::string name = laCanvas_LaneName(canvas.list, lane);
    if ((lane.hasName || canvas.list.flatView) && kernel_applies(canvas) && !has_separator(canvas, name))
        return "Kernel" + canvas.list.separator + name;
    return name;
}

bool laTask_Compare(const _LaCanvasData& canvas, const MslObjectEntry& a, const MslObjectEntry& b) {
    const bool aGroup = a.lane == laNoLane, bGroup = b.lane == laNoLane;
    if (aGroup && bGroup) return a.name < b.name;
    if (aGroup != bGroup && canvas.list.sortField == 1) return aGroup;
    if (!aGroup && !bGroup) {
        const laItem_Line &la = canvas.items.lanes[a.lane], &lb = canvas.items.lanes[b.lane];
        if (canvas.list.sortAroundEvent) return la.eventDistance < lb.eventDistance;
        if (canvas.list.sortField == 1)
            return canvas.list.sortAscending ? la.objectId < lb.objectId : la.objectId > lb.objectId;
    }
    return canvas.list.sortAscending ? a.name < b.name : b.name < a.name;
}

bool laHide_Covers(const _LaCanvasData& canvas, const laPath& hidden, const laPath& path) {
    const std::string separator = canvas.list.separator.substr(0, 1);
    if (hidden.wildcard) return text_matches(hidden.Joined(separator), path.Joined(separator));
    return hidden.components.size() <= path.components.size() &&
           std::equal(hidden.components.begin(), hidden.components.end(), path.components.begin());
}

bool laHide_IsHidden(const _LaCanvasData& canvas, const laItem_Line& lane,
                     const std::vector<laPath>& hidden) {
    if (hidden.empty()) return false;
    const laPath path = laTask_PathOfLane(canvas, lane);
    return std::any_of(hidden.begin(), hidden.end(),
                       [&](const laPath& one) { return laHide_Covers(canvas, one, path); });
}

void laTask_Hide(_LaCanvasData& canvas, MslObjectEntry& entry, bool show, bool repaint) {
    TraxTaskList& list = *canvas.taskList;
    const laPath path = list.PathOf(entry);
    if (show) {
        std::vector<laPath> kept;
        for (const laPath& hidden : list.hiddenPaths())
            if (!laHide_Covers(canvas, hidden, path)) kept.push_back(hidden);
        if (kept.size() == list.hiddenPaths().size()) return;
        list.SetHiddenPaths(std::move(kept));
    } else {
        if (entry.row < 0) return;
        list.AddHiddenPath(path);
    }
    list.NumberRows();
    if (repaint)
        laCanvas_Relayout(canvas);
    else
        laCanvas_Layout(canvas, true);
}

bool laCanvas_HasHierarchy(const _LaCanvasData& canvas) {
    return canvas.taskList != nullptr && (canvas.list.flatView || canvas.taskList->depth() > 1);
}

std::string_view laTask_WithoutFake(std::string_view name) {
    if (name.substr(0, fakePrefix.size()) == fakePrefix) name.remove_prefix(fakePrefix.size());
    return name;
}

TraxTaskList::TraxTaskList(_LaCanvasData& canvas) : canvas_(canvas) {
    changed = [this](MslChange change) {
        if (change == MslChange::Footer) laCanvas_UpdateFields(canvas_, 0, list().Footer().c_str());
        if (change != MslChange::Scroll && canvas_.graph->listChanged) canvas_.graph->listChanged();
    };
    // An object's window opens; a group opens or closes.
    list().activated = [this](int row) {
        const MslObjectEntry* entry = EntryAt(row);
        if (entry == nullptr) return false;
        if (entry->lane == laNoLane || canvas_.items.lanes[entry->lane].isAgent)
            return list().ClickToggle(row);
        if (canvas_.calls.openInfo) canvas_.calls.openInfo(canvas_.items.lanes[entry->lane].objectId);
        return static_cast<bool>(canvas_.calls.openInfo);
    };
}

void TraxTaskList::Fill() {
    Clear(false);
    for (uint32_t i = 0; i < canvas_.items.lanes.size(); ++i) {
        laItem_Line& lane = canvas_.items.lanes[i];
        lane.listEntry = Place(laTask_PathOfLane(canvas_, lane), i);
    }
    Sort(root_);
    NumberRows();
}

void TraxTaskList::Clear(bool all) {
    DropRows(all);
    byPath_.clear();
    root_.children.clear();
    depth_ = 0;
    for (uint32_t i = 0; i < canvas_.items.lanes.size(); ++i) {
        canvas_.items.lanes[i].listEntry = nullptr;
        canvas_.items.lanes[i].row = -1;
    }
    if (!all) return;
    hiddenPaths_.clear();
    collapsed_.clear();
}

MslObjectEntry* TraxTaskList::Place(const laPath& path, uint32_t lane) {
    MslObjectEntry* at = &root_;
    std::string key;
    for (size_t i = 0; i < path.components.size(); ++i) {
        const bool last = i + 1 == path.components.size();
        key += pathKey;
        key += path.components[i];
        MslObjectEntry*& known = byPath_[key];
        // Two objects of one name are two rows; the first of them holds what is nested in the name.
        if (known == nullptr || (last && known->lane != laNoLane)) {
            auto made = std::make_unique<MslObjectEntry>();
            made->name = path.components[i];
            made->parent = at;
            made->depth = static_cast<int>(i);
            made->path = key;
            made->collapsed = collapsed_.count(key) != 0;
            at->children.push_back(std::move(made));
            MslObjectEntry* entry = at->children.back().get();
            if (known == nullptr) known = entry;
            at = entry;
            depth_ = std::max(depth_, static_cast<int>(i) + 1);
        } else {
            at = known;
        }
        if (last) at->lane = lane;
    }
    return at;
}

void TraxTaskList::Sort(MslObjectEntry& entry) {
    std::stable_sort(entry.children.begin(), entry.children.end(),
                     [&](const auto& a, const auto& b) { return laTask_Compare(canvas_, *a, *b); });
    for (auto& child : entry.children) Sort(*child);
}

bool TraxTaskList::Hide(MslObjectEntry& entry) {
    entry.laneHidden =
        entry.lane != laNoLane && laHide_IsHidden(canvas_, canvas_.items.lanes[entry.lane], hiddenPaths_);
    bool any = entry.lane != laNoLane && !entry.laneHidden;
    for (auto& child : entry.children)
        if (Hide(*child)) any = true;
    entry.hidden = !any;
    entry.row = -1;
    if (entry.lane != laNoLane) canvas_.items.lanes[entry.lane].row = -1;
    return any;
}

void TraxTaskList::Number(MslObjectEntry& entry, int depth) {
    for (auto& child : entry.children) {
        if (child->hidden) continue;
        child->row = static_cast<int>(rows_.size());
        child->depth = depth;
        rows_.push_back(child.get());
        if (child->lane != laNoLane && !child->laneHidden) canvas_.items.lanes[child->lane].row = child->row;
        if (!child->collapsed) Number(*child, depth + 1);
    }
}

void TraxTaskList::NumberRows() {
    rows_.clear();
    Hide(root_);
    Number(root_, 0);
    ShowRows();
}

void TraxTaskList::Collapsed(MslObjectEntry& entry) {
    if (entry.collapsed)
        collapsed_.insert(entry.path);
    else
        collapsed_.erase(entry.path);
}

void TraxTaskList::RowChanged(MslObjectEntry&) {
    laCanvas_Relayout(canvas_);
}

// Two objects of one name are told apart by their ids.
std::string TraxTaskList::EntryKey(const MslObjectEntry& entry) const {
    if (entry.lane >= canvas_.items.lanes.size()) return entry.path;
    return entry.path + pathKey + pathKey + std::to_string(canvas_.items.lanes[entry.lane].objectId);
}

std::string TraxTaskList::RowTip(const MslObjectEntry& entry) const {
    if (entry.lane == laNoLane) {
        const auto total = static_cast<int>(entry.children.size());
        const auto shown = static_cast<int>(std::count_if(entry.children.begin(), entry.children.end(),
                                                          [](const auto& child) { return child->row >= 0; }));
        return "Non-" + canvas_.list.objectTermLower + " object \"" + text_utf8(RowText(entry, 0)) +
               "\", which has " +
               gen_format("%d(out of %d) %s being shown", shown, total, total == 1 ? "child" : "children");
    }
    if (entry.lane >= canvas_.items.lanes.size()) return {};
    const laItem_Line& lane = canvas_.items.lanes[entry.lane];
    const std::string name(laTask_WithoutFake(laCanvas_LaneName(canvas_.list, lane)));
    if (lane.isAgent || canvas_.axis.timeMode == Time_Tick) return text_utf8(name);
    const std::string priority =
        lane.priority < 0 ? std::string("Unknown") : gen_format("0x%x", static_cast<unsigned>(lane.priority));
    const std::string object = lane.hasName
                                   ? " \"" + text_utf8(name) + "\"(" + gen_format("0x%x", lane.objectId) + ")"
                                   : gen_format(" 0x%x", lane.objectId);
    return canvas_.list.objectTerm + object + ", Priority = " + priority;
}

laPath TraxTaskList::PathOf(const MslObjectEntry& entry) const {
    laPath path;
    for (const MslObjectEntry* at = &entry; at != nullptr && at != &root_; at = at->parent)
        path.components.insert(path.components.begin(), at->name);
    if (entry.lane != laNoLane && !canvas_.items.lanes[entry.lane].isAgent)
        path.id = canvas_.items.lanes[entry.lane].objectId;
    return path;
}

void TraxTaskList::AddHiddenPath(laPath path) {
    const auto same = [&](const laPath& one) {
        return one.components == path.components && one.wildcard == path.wildcard;
    };
    if (std::none_of(hiddenPaths_.begin(), hiddenPaths_.end(), same)) hiddenPaths_.push_back(std::move(path));
}

std::string TraxTaskList::RowText(const MslObjectEntry& entry, int column) const {
    if (column != 0) return {};
    const std::string_view name = laTask_WithoutFake(entry.name);
    if (!text_trim(name).empty() || entry.lane >= canvas_.items.lanes.size()) return std::string(name);
    // The last part of a name can be empty: the row still says what it is.
    return canvas_.list.objectTerm + gen_format(" 0x%x", canvas_.items.lanes[entry.lane].objectId);
}

Colour TraxTaskList::RowColour(const MslObjectEntry& entry) const {
    if (entry.lane != laNoLane && canvas_.items.lanes[entry.lane].isAgent) {
        const int32_t row = canvas_.looks.legend.firstExecutionStatus;
        return row < 0 ? agentDefault : canvas_.looks.statusLooks[static_cast<size_t>(row)].colour;
    }
    if (entry.row < 0 || !HasChildren(entry)) return NoColour;
    return rowTints[entry.row % 3];
}
