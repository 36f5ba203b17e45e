#include "chronoweave/traxfunc/list/processor_rows.h"

#include <algorithm>

#include "chronoweave/engine/running_objects.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr uint32_t several = laNoLane;  // no key

bool lies_in(const MslObjectEntry* entry, const MslObjectEntry* group) {
    for (; entry != nullptr; entry = entry->parent)
        if (entry == group) return true;
    return false;
}

// The row of an object is the object's.
bool is_group(const MslObjectEntry& entry) {
    return entry.payload == MslObjectEntry::noPayload;
}

}  // namespace

void laProcessorRows::Forget() {
    heads_.clear();
    own_.clear();
    users_.clear();
}

void laProcessorRows::FindUsers(const MslObjectEntry& root, int osKind) {
    users_.clear();
    const auto& list = items_.processors.list;
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
        const laItem_Line& lane = items_.lanes[i];
        if (lane.isAgent || lane.listEntry == nullptr) continue;
        const uint32_t key = RunningObjects::ProcessorOf(osKind, lane.objectId);
        if (!std::ranges::binary_search(list, key, {}, &LaProcessor::key)) continue;
        for (const MslObjectEntry* at = lane.listEntry->parent; at != nullptr && at != &root;
             at = at->parent) {
            const auto [known, fresh] = users_.try_emplace(at, key);
            if (known->second != key) known->second = several;
        }
    }
}

const MslObjectEntry* laProcessorRows::GroupOf(const LaProcessor& one, const MslObjectEntry& root,
                                               int osKind) const {
    const MslObjectEntry* group = nullptr;
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
        const laItem_Line& lane = items_.lanes[i];
        if (lane.isAgent || lane.listEntry == nullptr ||
            RunningObjects::ProcessorOf(osKind, lane.objectId) != one.key)
            continue;
        if (group == nullptr) group = lane.listEntry->parent;
        while (group != nullptr && !lies_in(lane.listEntry, group)) group = group->parent;
    }
    while (group != nullptr && group != &root && !is_group(*group)) group = group->parent;
    if (group == nullptr || group == &root) return nullptr;
    for (const MslObjectEntry* outer = group->parent; outer != nullptr && outer != &root;
         outer = outer->parent) {
        const auto user = users_.find(outer);
        if (user == users_.end() || user->second != one.key) break;
        if (is_group(*outer)) group = outer;
    }
    return group;
}

void laProcessorRows::Place(MslObjectEntry& root, int osKind) {
    Forget();
    FindUsers(root, osKind);
    std::vector<std::unique_ptr<MslObjectEntry>> top;
    for (const LaProcessor& one : items_.processors.list) {
        const MslObjectEntry* group = GroupOf(one, root, osKind);
        if (group != nullptr && heads_.try_emplace(group, one.key).second) continue;
        auto row = std::make_unique<MslObjectEntry>();
        row->name = gen_format("CPU %u", one.key);
        row->parent = &root;
        row->path = '\1' + row->name;
        own_.emplace(row.get(), one.key);
        top.push_back(std::move(row));
    }
    root.children.insert(root.children.begin(), std::make_move_iterator(top.begin()),
                         std::make_move_iterator(top.end()));
}

LaProcessor* laProcessorRows::Find(const MslObjectEntry& entry) {
    auto known = heads_.find(&entry);
    if (known == heads_.end() && (known = own_.find(&entry)) == own_.end()) return nullptr;
    auto& list = items_.processors.list;
    const auto one = std::ranges::lower_bound(list, known->second, {}, &LaProcessor::key);
    return one == list.end() || one->key != known->second ? nullptr : &*one;
}

const LaProcessor* laProcessorRows::Of(const MslObjectEntry& entry) const {
    return const_cast<laProcessorRows*>(this)->Find(entry);
}

void laProcessorRows::NoRows() {
    for (LaProcessor& one : items_.processors.list) one.row = one.endRow = -1;
}

void laProcessorRows::Numbered(const MslObjectEntry& entry) {
    LaProcessor* one = Find(entry);
    if (one == nullptr) return;
    one->row = entry.row;
    one->own = IsOwn(entry);
}

void laProcessorRows::Ended(const MslObjectEntry& entry, size_t rows) {
    LaProcessor* one = Find(entry);
    if (one != nullptr) one->endRow = static_cast<int>(rows);
}

void laProcessorRows::AllEnded(size_t rows) {
    for (LaProcessor& one : items_.processors.list)
        if (one.own && one.row >= 0) one.endRow = static_cast<int>(rows);
}
