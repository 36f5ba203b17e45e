#include "chronoweave/engine/source.h"

#include <algorithm>

namespace {
constexpr uint32_t progress_mask = 0x3FFF;
}  // namespace

AnalysisSource analysis_SourceOfStore(TraceStore& store, const Legend& legend) {
    AnalysisSource source;
    source.store = &store;
    source.legend = &legend;
    const char* osName = mt_GetOsName(&store);
    source.osKind = legend_OsKind(osName ? osName : "");
    source.clock.ticksPerSecond = static_cast<double>(std::max<uint64_t>(1, mt_GetTicksPerSecond(store)));
    const mt_Range range = mt_GetTimeRange(store);
    source.clock.baseTick = range.first;
    source.totalLength = source.clock.TimeOf(range.end);
    return source;
}

std::vector<uint32_t> analysis_ObjectsAlive(const AnalysisSource& source, double from, double to) {
    return mt_GetObjectIdsUsedInTimeRange(*source.store, mt_ObjectTask, source.clock.NearestTick(from),
                                          source.clock.NearestTick(to) + 1);
}

RangeWalk::RangeWalk(const AnalysisSource& source, double from, double to, StateTable* state)
    : source_(source), from_(from), to_(to), last_(source.clock.OnTick(from)) {
    end_.reached = to;
    if (!source.store) return;
    end_.started = mt_StartWalkInTimeRange(*source.store, source.clock.NearestTick(from),
                                           source.clock.NearestTick(to) + 1, state, walk_);
    TakeGap();
}

void RangeWalk::TakeGap() {
    gap_.reset();
    const mt_Gap* gap = walk_.gap();
    if (!gap) return;
    gap_ = TimeGap{std::max(source_.clock.TimeOf(gap->from), last_),
                   gap->to == mt_NoTime ? to_ : std::min(source_.clock.TimeOf(gap->to), to_)};
    if (!end_.damaged) end_.lost = *gap_;
    end_.damaged = true;
}

bool RangeWalk::finish() {
    over_ = true;
    return false;
}

bool RangeWalk::next(EventRecord& event, double& time) {
    if (over_) return false;
    const bool given = mt_NextEvent(walk_, event);
    if (!given || walk_.gap() || gap_) TakeGap();
    if (!given) {
        if (gap_) end_.reached = gap_->from;
        return finish();
    }
    time = last_ = source_.clock.TimeOf(event.time);
    if ((++seen_ & progress_mask) == 0 && source_.progress && !source_.progress(time - from_, to_ - from_)) {
        end_.stopped = true;
        end_.reached = time;
        return finish();
    }
    return true;
}
