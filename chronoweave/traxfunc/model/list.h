// How the list of objects beside the picture names and orders them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct laItem_Line;

// What rows that follow the view were made for: the view, and the items that it showed.
struct LaRowsView {
    double low = 0, high = 0;  // of the view
    double cachedLow = 0, cachedHigh = 0;
    uint32_t itemsVersion = 0;
    bool operator==(const LaRowsView&) const = default;
};

struct LaList {
    int nameWidth = 0;      // of the name column, pixels, as the user set it; 0: what the names need
    uint32_t layouts = 0;   // how often the rows were laid out: their names may need another width
    bool flatView = false;  // whole names, no hierarchy
    int sortField = 0;      // 0 name, 1 id
    bool sortAscending = true;
    bool sortAroundEvent = false;       // by laItem_Line::eventDistance
    bool onlyActive = false;            // rows of objects alone that are active in the view
    bool mostActiveFirst = false;       // by how long they ran in it, the order above among equals
    std::optional<LaRowsView> madeFor;  // what such rows were made for; none before they were
    bool showHiddenAgent = false;
    bool processorRows = false;  // a row for each processor shows who ran there
    bool kernelGroup = false;    // objects with no separator go under "Kernel" on Korvantis
    std::string separator = "@";
    std::string objectTerm = "Task", objectTermLower = "task";
};

// True when rows or their order depend on the view.
inline bool laList_FollowsView(const LaList& list) {
    return list.onlyActive || list.mostActiveFirst;
}
// The plural of a term, as used in titles.
std::string laCanvas_Plural(const std::string& term);
// The name as shown in texts: the lane's own, or the object term and the id.
std::string laCanvas_LaneName(const LaList& list, const laItem_Line& lane);
