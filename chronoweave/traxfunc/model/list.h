// How the list of objects beside the picture names and orders them.
#pragma once

#include <cstdint>
#include <string>

struct laItem_Line;

struct LaList {
    int nameWidth = 0;      // of the name column, pixels, as the user set it; 0: what the names need
    uint32_t layouts = 0;   // how often the rows were laid out: their names may need another width
    bool flatView = false;  // whole names, no hierarchy
    int sortField = 0;      // 0 name, 1 id
    bool sortAscending = true;
    bool sortAroundEvent = false;  // by laItem_Line::eventDistance
    bool showHiddenAgent = false;
    bool kernelGroup = false;  // objects with no separator go under "Kernel" on Korvantis
    std::string separator = "@";
    std::string objectTerm = "Task", objectTermLower = "task";
};

// The plural of a term, as used in titles.
std::string laCanvas_Plural(const std::string& term);
// The name as shown in texts: the lane's own, or the object term and the id.
std::string laCanvas_LaneName(const LaList& list, const laItem_Line& lane);
