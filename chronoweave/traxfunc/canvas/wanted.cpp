#include "chronoweave/traxfunc/canvas/wanted.h"

#include <algorithm>

namespace {

constexpr size_t mostParts = 32;

bool touches(const LaWanted::Part& one, const LaWanted::Part& other) {
    return one.strip == other.strip && one.from <= other.end && other.from <= one.end;
}

}  // namespace

void laWanted_Whole(LaWanted& wanted) {
    wanted = {};
    wanted.whole = true;
}

void laWanted_Moved(LaWanted& wanted) {
    if (wanted.whole) return;
    if (!wanted.parts.empty()) return laWanted_Whole(wanted);
    wanted.moved = true;
}

void laWanted_Part(LaWanted& wanted, LaWanted::Part part) {
    if (wanted.whole || part.from >= part.end) return;
    // What stands in these rows would be copied along with what moves.
    if (wanted.moved && part.strip == LaWanted::Strip::Rows) return laWanted_Whole(wanted);
    const auto same = std::find_if(wanted.parts.begin(), wanted.parts.end(),
                                   [&](const LaWanted::Part& other) { return touches(part, other); });
    if (same != wanted.parts.end()) {
        same->from = std::min(same->from, part.from);
        same->end = std::max(same->end, part.end);
    } else if (wanted.parts.size() < mostParts) {
        wanted.parts.push_back(part);
    } else {
        laWanted_Whole(wanted);
    }
}
