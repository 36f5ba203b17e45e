#include "chronoweave/engine/lanes/lane_merge.h"

#include <algorithm>

LaneMerge::LaneMerge(const LaneTable& table, const std::vector<uint32_t>& lanes,
                     std::function<bool(uint32_t state)> chosen)
    : chosen_(std::move(chosen)) {
    for (const uint32_t lane : lanes)
        sources_.push_back({LaneReader(table, lane), table.ObjectOf(lane), 0, {{}, lane_Absent, lane}});
}

bool LaneMerge::IsLater(uint32_t a, uint32_t b) const {
    const Source &one = sources_[a], &other = sources_[b];
    const uint32_t sequence = one.turn.status.sequence, before = other.turn.status.sequence;
    return sequence != before ? sequence > before : one.object > other.object;
}

// The lane's next turn; false when it has none any more.
bool LaneMerge::Seek(Source& source) const {
    uint32_t ahead = source.reader.StateAhead(source.next);
    bool was = chosen_(ahead);
    for (const uint32_t count = source.reader.StatusCount(); source.next < count;) {
        const uint32_t state = source.reader.StateOf(source.next++);
        const bool is = chosen_(state);
        if (was || is) {
            source.turn.status = source.reader.status(source.next - 1);
            source.turn.ahead = ahead;
            return true;
        }
        ahead = state;
        was = is;
    }
    return false;
}

void LaneMerge::GoTo(uint32_t sequence) {
    heap_.clear();
    for (uint32_t at = 0; at < sources_.size(); ++at) {
        sources_[at].next = sources_[at].reader.FirstStatusAt(sequence);
        if (Seek(sources_[at])) heap_.push_back(at);
    }
    std::make_heap(heap_.begin(), heap_.end(), [this](uint32_t a, uint32_t b) { return IsLater(a, b); });
}

bool LaneMerge::next(LaneTurn& turn) {
    if (heap_.empty()) return false;
    const auto later = [this](uint32_t a, uint32_t b) { return IsLater(a, b); };
    Source& source = sources_[heap_.front()];
    turn = source.turn;
    std::pop_heap(heap_.begin(), heap_.end(), later);
    if (Seek(source))
        std::push_heap(heap_.begin(), heap_.end(), later);
    else
        heap_.pop_back();
    return true;
}
