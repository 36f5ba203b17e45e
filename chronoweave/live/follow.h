// Which part of a trace that grows the view shows once new events came: a question of numbers alone. Times
// are of the time base.
#pragma once

#include <cstdint>
#include <optional>

struct FollowFacts {
    double viewLow = 0, viewHigh = 0, viewLength = 0;
    double dataEnd = 0;  // of the trace, as it is now
    // Of the newest events, at most mostEvents of them: where the first is, and how far it is from there to
    // the end of the data.
    double left = 0, span = 0;
    uint32_t events = 0, mostEvents = 0;
    bool originMoved = false;  // times count from another event than before
};

enum class FollowCase {
    Anew,    // the newest events, as times are others or there was no view
    Stays,   // the end of the data is in it
    Middle,  // the view goes on, with the end of the data in its middle
    Newest,  // the newest events in its left half
    All      // all events, in the view's length
};
struct FollowView {
    FollowCase which = FollowCase::Stays;
    double low = 0, length = 0;
};
// Nothing when the facts are no trace's.
std::optional<FollowView> follow_View(const FollowFacts& facts);
// The other way: the view keeps its length and has the end of the data at its right edge.
FollowView follow_End(const FollowFacts& facts);
