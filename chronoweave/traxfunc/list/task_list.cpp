#include "chronoweave/traxfunc/list/task_list.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/pinned_rows.h"
#include "chronoweave/traxfunc/model/absent.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr std::string_view fakePrefix = "__vrl_fake_";
constexpr Colour rowTints[3] = {0xE4EEF8, 0xE8F4E4, 0xF6EFE0};
constexpr Colour agentDefault = 0x90C890;
constexpr char pathKey = '\0';

bool has_separator(const LaList& list, std::string_view name) {
    return !list.separator.empty() && name.find(list.separator[0]) != std::string_view::npos;
}

// A lane without a row is hidden.
void set_row(laItem_Line& lane, int row) {
    lane.row = row;
    lane.hidden = row < 0;
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

bool laTask_UsesKernel(const LaList& list, const LaSource& source) {
    return list.kernelGroup && source.osKind == Os_Korvantis;
}

laPath laTask_MakePath(const LaList& list, std::string_view name, bool kernel) {
    laPath path;
    const bool separated = has_separator(list, name);
    const bool grouped = kernel && !separated;
    if (list.flatView) {
        path.components.push_back(grouped ? "Kernel" + list.separator + std::string(name)
                                          : std::string(name));
        return path;
    }
    if (grouped) path.components.emplace_back("Kernel");
    while (separated) {
        const size_t end = name.find(list.separator[0]);
        if (end == std::string_view::npos) break;
        path.components.emplace_back(name.substr(0, end));
        name.remove_prefix(end + 1);
    }
    path.components.emplace_back(name);
    return path;
}

laPath laTask_PathOfLane(const LaList& list, const LaSource& source, const laItem_Line& lane) {
    laPath path = laTask_MakePath(list, laCanvas_LaneName(list, lane),
                                  !lane.isAgent && laTask_UsesKernel(list, source));
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

std::string laTask_DisplayName(const LaList& list, const LaSource& source, const laItem_Line& lane) {
    std::string name = laCanvas_LaneName(list, lane);
    if ((lane.hasName || list.flatView) && laTask_UsesKernel(list, source) && !has_separator(list, name))
        return "Kernel" + list.separator + name;
    return name;
}

bool laTask_Compare(const LaList& list, const LaItems& items, const MslObjectEntry& a,
                    const MslObjectEntry& b) {
    const bool aGroup = a.payload == laNoLane, bGroup = b.payload == laNoLane;
    if (aGroup && bGroup) return a.name < b.name;
    if (aGroup != bGroup && list.sortField == 1) return aGroup;
    if (!aGroup && !bGroup) {
        const laItem_Line &la = items.lanes[a.payload], &lb = items.lanes[b.payload];
        if (list.sortAroundEvent) return la.eventDistance < lb.eventDistance;
        if (list.sortField == 1)
            return list.sortAscending ? la.objectId < lb.objectId : la.objectId > lb.objectId;
    }
    return list.sortAscending ? a.name < b.name : b.name < a.name;
}

bool laHide_Covers(const LaList& list, const laPath& hidden, const laPath& path) {
    const std::string separator = list.separator.substr(0, 1);
    if (hidden.wildcard) return text_matches(hidden.Joined(separator), path.Joined(separator));
    return hidden.components.size() <= path.components.size() &&
           std::equal(hidden.components.begin(), hidden.components.end(), path.components.begin());
}

bool laHide_IsHidden(const LaList& list, const laPath& path, const std::vector<laPath>& hidden) {
    return std::any_of(hidden.begin(), hidden.end(),
                       [&](const laPath& one) { return laHide_Covers(list, one, path); });
}

std::string_view laTask_WithoutFake(std::string_view name) {
    if (name.substr(0, fakePrefix.size()) == fakePrefix) name.remove_prefix(fakePrefix.size());
    return name;
}

TraxTaskList::TraxTaskList(LaItems& items, const LaList& settings, const LaSource& source,
                           const LaLooks& looks, const LaAxis& axis)
    : items_(items), settings_(settings), source_(source), looks_(looks), axis_(axis), processors_(items) {
    // An object's window opens; a group opens or closes.
    list().activated = [this](int row) {
        const MslObjectEntry* entry = EntryAt(row);
        if (entry == nullptr) return false;
        if (entry->payload == laNoLane || items_.lanes[entry->payload].isAgent)
            return list().ClickToggle(row);
        return openObject && openObject(items_.lanes[entry->payload].objectId);
    };
}

void TraxTaskList::Fill() {
    Clear(false);
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
        laItem_Line& lane = items_.lanes[i];
        lane.listEntry = Place(laTask_PathOfLane(settings_, source_, lane), i);
    }
    Sort(root_);
    processors_.Place(root_, source_.osKind);
    NumberRows();
}

void TraxTaskList::Clear(bool all) {
    DropRows(all);
    byPath_.clear();
    processors_.Forget();
    root_.children.clear();
    depth_ = 0;
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
        items_.lanes[i].listEntry = nullptr;
        set_row(items_.lanes[i], -1);
    }
    if (!all) return;
    hiddenPaths_.clear();
    collapsed_.clear();
    activity_.clear();
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
        if (known == nullptr || (last && known->payload != laNoLane)) {
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
        if (last) at->payload = lane;
    }
    return at;
}

laActivity TraxTaskList::ActivityOf(const MslObjectEntry& entry) const {
    if (entry.payload == laNoLane) return {};
    const auto known = activity_.find(items_.lanes[entry.payload].objectId);
    return known == activity_.end() ? laActivity() : known->second;
}

// Gives how long the entry and all in it ran, where that decides.
double TraxTaskList::Sort(MslObjectEntry& entry) {
    const bool byActivity = settings_.mostActiveFirst && !settings_.sortAroundEvent;
    double sum = byActivity ? ActivityOf(entry).ran : 0;
    if (entry.children.empty()) return sum;
    std::vector<std::pair<double, std::unique_ptr<MslObjectEntry>>> ranked;
    ranked.reserve(entry.children.size());
    for (auto& child : entry.children) {
        const double ran = Sort(*child);
        sum += ran;
        ranked.emplace_back(ran, std::move(child));
    }
    std::ranges::stable_sort(ranked, [&](const auto& a, const auto& b) {
        return a.first != b.first ? a.first > b.first
                                  : laTask_Compare(settings_, items_, *a.second, *b.second);
    });
    for (size_t i = 0; i < ranked.size(); ++i) entry.children[i] = std::move(ranked[i].second);
    return sum;
}

bool TraxTaskList::LeftOut(const laItem_Line& lane) const {
    if (!settings_.onlyActive) return Covered(lane);
    const auto known = activity_.find(lane.objectId);
    return known == activity_.end() || !known->second.active || Covered(lane);
}

bool TraxTaskList::Covered(const laItem_Line& lane) const {
    return !hiddenPaths_.empty() &&
           laHide_IsHidden(settings_, laTask_PathOfLane(settings_, source_, lane), hiddenPaths_);
}

bool TraxTaskList::Hide(MslObjectEntry& entry) {
    entry.selfHidden = entry.payload != laNoLane && LeftOut(items_.lanes[entry.payload]);
    bool any = (entry.payload != laNoLane && !entry.selfHidden) || processors_.IsOwn(entry);
    for (auto& child : entry.children)
        if (Hide(*child)) any = true;
    entry.hidden = !any;
    entry.row = -1;
    if (entry.payload != laNoLane) set_row(items_.lanes[entry.payload], -1);
    return any;
}

void TraxTaskList::Number(MslObjectEntry& entry, int depth) {
    for (auto& child : entry.children) {
        if (child->hidden) continue;
        child->row = static_cast<int>(rows_.size());
        child->depth = depth;
        rows_.push_back(child.get());
        processors_.Numbered(*child);
        if (child->payload != laNoLane && !child->selfHidden)
            set_row(items_.lanes[child->payload], child->row);
        if (!child->collapsed) Number(*child, depth + 1);
        processors_.Ended(*child, rows_.size());
    }
}

void TraxTaskList::NumberRows() {
    rows_.clear();
    processors_.NoRows();
    Hide(root_);
    Number(root_, 0);
    processors_.AllEnded(rows_.size());
    ShowRows();
}

void TraxTaskList::Collapsed(MslObjectEntry& entry) {
    if (entry.collapsed)
        collapsed_.insert(entry.path);
    else
        collapsed_.erase(entry.path);
}

void TraxTaskList::RowChanged(MslObjectEntry&) {
    if (rowsChanged) rowsChanged();
}

// Two objects of one name are told apart by their ids.
std::string TraxTaskList::EntryKey(const MslObjectEntry& entry) const {
    if (entry.payload >= items_.lanes.size()) return entry.path;
    return entry.path + pathKey + pathKey + std::to_string(items_.lanes[entry.payload].objectId);
}

std::string TraxTaskList::RowTip(const MslObjectEntry& entry) const {
    if (processors_.IsOwn(entry))
        return RowText(entry, 0) + ": the " + laCanvas_Plural(settings_.objectTermLower) + " that run there";
    if (entry.payload == laNoLane) {
        const auto total = static_cast<int>(entry.children.size());
        const auto shown = static_cast<int>(std::count_if(entry.children.begin(), entry.children.end(),
                                                          [](const auto& child) { return child->row >= 0; }));
        return "Non-" + settings_.objectTermLower + " object \"" + text_utf8(RowText(entry, 0)) +
               "\", which has " +
               gen_format("%d(out of %d) %s being shown", shown, total, total == 1 ? "child" : "children");
    }
    if (entry.payload >= items_.lanes.size()) return {};
    const laItem_Line& lane = items_.lanes[entry.payload];
    const std::string name(laTask_WithoutFake(laCanvas_LaneName(settings_, lane)));
    if (lane.isAgent || axis_.timeMode == Time_Tick) return text_utf8(name);
    const std::string priority =
        lane.priority < 0 ? std::string("Unknown") : gen_format("0x%x", static_cast<unsigned>(lane.priority));
    const std::string object = lane.hasName
                                   ? " \"" + text_utf8(name) + "\"(" + gen_format("0x%x", lane.objectId) + ")"
                                   : gen_format(" 0x%x", lane.objectId);
    return settings_.objectTerm + object + ", Priority = " + priority;
}

std::vector<std::pair<int, int>> TraxTaskList::PinnedRows(const LaView& view, int height) const {
    std::vector<std::pair<int, int>> rows;
    for (const laPinnedRow& pinned : laPinned_Rows(items_, looks_, view, height))
        rows.emplace_back(items_.processors.list[pinned.processor].row, pinned.top);
    return rows;
}

LaFreeRows TraxTaskList::FreeRows(const LaView& view, int height) const {
    return laPinned_Free(items_, looks_, view, height);
}

bool TraxTaskList::IsAbsent(const MslObjectEntry& entry, const LaView& view) const {
    return entry.payload < items_.lanes.size() && laLn_IsAbsent(items_.lanes[entry.payload], view);
}

laPath TraxTaskList::PathOf(const MslObjectEntry& entry) const {
    laPath path;
    for (const MslObjectEntry* at = &entry; at != nullptr && at != &root_; at = at->parent)
        path.components.insert(path.components.begin(), at->name);
    if (entry.payload != laNoLane && !items_.lanes[entry.payload].isAgent)
        path.id = items_.lanes[entry.payload].objectId;
    return path;
}

void TraxTaskList::AddHiddenPath(laPath path) {
    const auto same = [&](const laPath& one) {
        return one.components == path.components && one.wildcard == path.wildcard;
    };
    if (std::none_of(hiddenPaths_.begin(), hiddenPaths_.end(), same)) hiddenPaths_.push_back(std::move(path));
}

bool TraxTaskList::HideEntry(const MslObjectEntry& entry) {
    if (entry.row < 0) return false;
    AddHiddenPath(PathOf(entry));
    NumberRows();
    return true;
}

bool TraxTaskList::ShowEntry(const MslObjectEntry& entry) {
    const laPath path = PathOf(entry);
    const auto covers = [&](const laPath& hidden) { return laHide_Covers(settings_, hidden, path); };
    if (std::erase_if(hiddenPaths_, covers) == 0) return false;
    NumberRows();
    return true;
}

std::string TraxTaskList::RowText(const MslObjectEntry& entry, int column) const {
    if (column != 0) return {};
    const std::string_view name = laTask_WithoutFake(entry.name);
    if (!text_trim(name).empty() || entry.payload >= items_.lanes.size()) return std::string(name);
    // The last part of a name can be empty: the row still says what it is.
    return settings_.objectTerm + gen_format(" 0x%x", items_.lanes[entry.payload].objectId);
}

Colour TraxTaskList::RowColour(const MslObjectEntry& entry) const {
    if (entry.payload != laNoLane && items_.lanes[entry.payload].isAgent) {
        const int32_t row = looks_.legend.firstExecutionStatus;
        return row < 0 ? agentDefault : looks_.statusLooks[static_cast<size_t>(row)].colour;
    }
    if (entry.row < 0 || !HasChildren(entry)) return NoColour;
    return rowTints[entry.row % 3];
}
