#include "chronoweave/import/merge/merge_input.h"

#include <algorithm>
#include <utility>

#include "chronoweave/import/merge/turn_words.h"

void MergeInput::SetTarget(const MergeTarget& target) {
    rate_ = source_->facts().ticksPerSecond;
    targetRate_ = target.ticksPerSecond;
    scales_ = rate_ != targetRate_;
    turns_ = source_->facts().bigEndian != target.bigEndian;
}

void MergeInput::Shift(mt_Time from, mt_Time to) {
    from_ = from;
    to_ = to;
    // Those at hand were taken as they were.
    for (size_t i = present_; i < std::max(atHand_, present_ + 1); ++i) {
        if (places_[i] == 0) continue;
        const mt_Time before = std::exchange(places_[i], Shifted(places_[i]));
        if (records_[i].time == 0) continue;
        records_[i].time = places_[i];
        if (places_[i] == last_ && before != last_) ++counts_.far;
    }
}

// Extra data of the other byte order, or too long for a stream.
void MergeInput::MakeFit() {
    SourceRecord& record = records_[present_];
    std::span<uint8_t> extra(extra_.data(), std::min(record.extra.size(), extra_.size()));
    std::copy_n(record.extra.begin(), extra.size(), extra.begin());
    if (extra.size() > raw_LongestExtra) {
        // A Refresh of exactly the longest has a second name at its end.
        extra = extra.first(raw_LongestExtra - (record.type == mt_Refresh ? 1 : 0));
        ++counts_.shortened;
    }
    if (turns_ && turn_Words(record.type, extra) > 0) ++counts_.unturned;
    record.extra = extra;
}

std::optional<mt_Time> MergeInput::LookForNewest(const Progress& progress) {
    const std::optional<mt_Time> newest = source_->LookForNewest(progress);
    return newest ? std::optional(Scaled(*newest)) : std::nullopt;
}
