#include "chronoweave/import/merge/merge_input.h"

#include <algorithm>

#include "chronoweave/import/merge/turn_words.h"
#include "chronoweave/import/raw/raw_writer.h"

namespace {

constexpr mt_Time last_time = UINT64_MAX;

}  // namespace

void MergeInput::SetTarget(const MergeTarget& target) {
    rate_ = source_->facts().ticksPerSecond;
    targetRate_ = target.ticksPerSecond;
    scales_ = rate_ != targetRate_;
    turns_ = source_->facts().bigEndian != target.bigEndian;
}

void MergeInput::Shift(mt_Time from, mt_Time to) {
    from_ = from;
    to_ = to;
    if (newest_ == 0) return;
    place_ = Shifted(newest_);
    if (record_.time != 0) record_.time = place_;
}

// Rounded down. The merged clock is not slower, so that times keep their order and none becomes 0.
mt_Time MergeInput::Scaled(mt_Time time) const {
    if (!scales_) return time;
    __extension__ typedef unsigned __int128 Wide;
    const Wide scaled = static_cast<Wide>(time) * targetRate_ / rate_;
    return scaled > last_time ? last_time : static_cast<mt_Time>(scaled);
}

mt_Time MergeInput::Shifted(mt_Time time) const {
    if (time <= from_) return to_ - std::min(to_, from_ - time);
    const mt_Time further = time - from_;
    return further > last_time - to_ ? last_time : to_ + further;
}

void MergeInput::Take() {
    ++counts_.events;
    if (record_.time != 0) {
        const mt_Time own = record_.time, time = Scaled(own);
        if (time >= newest_)
            newest_ = time;
        else
            ++counts_.back;
        place_ = record_.time = Shifted(newest_);
        if (place_ == last_time && (own != last_time || scales_)) ++counts_.far;
    }
    if (turns_ || record_.extra.size() > raw_LongestExtra) MakeFit();
}

// Extra data of the other byte order, or too long for a stream.
void MergeInput::MakeFit() {
    std::span<uint8_t> extra(extra_.data(), std::min(record_.extra.size(), extra_.size()));
    std::copy_n(record_.extra.begin(), extra.size(), extra.begin());
    if (extra.size() > raw_LongestExtra) {
        // A Refresh of exactly the longest has a second name at its end.
        extra = extra.first(raw_LongestExtra - (record_.type == mt_Refresh ? 1 : 0));
        ++counts_.shortened;
    }
    if (turns_ && turn_Words(record_.type, extra) > 0) ++counts_.unturned;
    record_.extra = extra;
}

std::optional<mt_Time> MergeInput::LookForNewest() {
    const std::optional<SourceLook> look = source_->look({});
    return look ? std::optional(Scaled(look->newest)) : std::nullopt;
}
