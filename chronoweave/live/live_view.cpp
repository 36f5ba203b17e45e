#include "chronoweave/live/live_view.h"

#include <algorithm>

#include "chronoweave/live/live_words.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

double time_of_event(const _LaCanvasData& canvas, uint32_t sequence) {
    EventWalk walk;
    EventRecord event;
    if (!mt_StartWalkAtEvent(*canvas.source.store, sequence, 1, nullptr, walk) || !mt_NextEvent(walk, event))
        return 0;
    return canvas.source.clock.LengthOf(static_cast<double>(event.time - canvas.source.clock.baseTick));
}

bool show(_LaCanvasData& canvas, const FollowView& view) {
    if (view.which == FollowCase::Stays) return true;
    const bool keeps = view.length == canvas.view.viewLength;
    return laCanvas_ShowRange(canvas, view.low, view.low + view.length,
                              {.paint = true, .keepLength = keeps, .ahead = laFetchAhead::No});
}

bool fail(_LaCanvasData& canvas) {
    laCanvas_Beep(canvas);
    const std::string name = path_join(canvas.source.sourcePath, canvas.source.sourceFile);
    laCanvas_UpdateFields(canvas, 0, gen_format(words_LoadFailed, name.c_str()).c_str());
    laCanvas_Repaint(canvas);
    return false;
}

}  // namespace

FollowFacts live_Facts(const _LaCanvasData& canvas, uint64_t previousBase) {
    FollowFacts facts;
    facts.viewLow = canvas.view.viewLow;
    facts.viewHigh = canvas.view.viewHigh;
    facts.viewLength = canvas.view.viewLength;
    facts.dataEnd = canvas.source.totalLength;
    facts.events = mt_GetEventCount(*canvas.source.store);
    facts.mostEvents = static_cast<uint32_t>(std::max(1, canvas.options.maxRefreshedEvents));
    facts.originMoved = canvas.source.clock.baseTick != previousBase;
    if (facts.events > facts.mostEvents)
        facts.left = time_of_event(canvas, facts.events - facts.mostEvents + 1);
    facts.span = facts.dataEnd - facts.left;
    return facts;
}

bool live_Follow(_LaCanvasData& canvas) {
    const uint64_t previousBase = canvas.source.clock.baseTick;
    mt_RefreshIndex(*canvas.source.store);
    laCanvas_TakeBounds(canvas);
    const mt_Range range = mt_GetTimeRange(*canvas.source.store);
    const FollowFacts facts = live_Facts(canvas, previousBase);
    const auto view = canvas.options.followEnd ? std::optional(follow_End(facts)) : follow_View(facts);
    const bool isMoment = range.end <= range.first + 1;  // no view
    if (view && !isMoment && !facts.originMoved && view->which != FollowCase::Stays &&
        view->length == canvas.view.viewLength)
        return laCanvas_SourceMovedOn(canvas, view->low) || fail(canvas);
    canvas.source.clock.baseTick = previousBase;  // that it is another now is noticed there
    laCanvas_SourceGrew(canvas);
    return isMoment || (view && show(canvas, *view)) || fail(canvas);
}
