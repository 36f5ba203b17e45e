#include "chronoweave/live/follow.h"

#include <algorithm>

std::optional<FollowView> follow_View(const FollowFacts& facts) {
    double span = facts.span;
    if (span <= 0) span = facts.viewLength;
    if (span <= 0) span = facts.dataEnd;
    if (span < 0) return std::nullopt;
    if (facts.originMoved || facts.viewLength <= 0) return FollowView{FollowCase::Anew, facts.left, span};
    const bool endIsShown = facts.viewLow <= facts.dataEnd && facts.dataEnd <= facts.viewHigh;
    if (facts.left <= facts.viewLow && endIsShown)
        return FollowView{FollowCase::Stays, facts.viewLow, facts.viewLength};
    if (facts.viewLength <= span)
        return FollowView{FollowCase::Middle, std::max(0.0, facts.dataEnd - facts.viewLength / 2),
                          facts.viewLength};
    if (facts.mostEvents <= facts.events) return FollowView{FollowCase::Newest, facts.left + span / 2, span};
    return FollowView{FollowCase::All, facts.left, facts.viewLength};
}

FollowView follow_End(const FollowFacts& facts) {
    const double length = facts.viewLength > 0 ? facts.viewLength : std::max(facts.span, facts.dataEnd);
    const double low = std::max(0.0, facts.dataEnd - length);
    const bool stays = !facts.originMoved && low == facts.viewLow;
    return {stays ? FollowCase::Stays : FollowCase::Middle, low, length};
}
