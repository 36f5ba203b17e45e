// One of the sources that are merged: its records, with times on the merged clock and words in the merged
// byte order.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "chronoweave/import/raw/raw_writer.h"
#include "chronoweave/import/source/source.h"

// The clock and the byte order that all sources are brought to.
struct MergeTarget {
    uint64_t ticksPerSecond = 0;  // not below any source's
    bool bigEndian = false;
};

// What was done to a source's records.
struct MergeInputCounts {
    uint64_t events = 0;
    uint64_t back = 0;       // times that went back: they stand at their source's newest time
    uint64_t far = 0;        // times past the last one of the merged clock: they stand at that one
    uint64_t unturned = 0;   // events with bytes of the other byte order whose meaning isn't known
    uint64_t shortened = 0;  // events whose extra data was cut to what a stream's record has room for
};

class MergeInput {
  public:
    // name stands in messages.
    MergeInput(const std::string& name, std::unique_ptr<EventSource> source)
        : name_(name), source_(std::move(source)) {}

    // Ahead of the first step. The source's clock rate must not be 0 when the merged one is not.
    void SetTarget(const MergeTarget& target);
    // Shifts all times so that what stands at one time stands at another.
    void Shift(mt_Time from, mt_Time to);

    // Goes on to the next record.
    SourceStep Step() {
        if (at_ == atHand_) {
            atHand_ = source_->NextAtHand(records_);
            at_ = 0;
            for (size_t i = 0; i < atHand_; ++i) Take(i);
        }
        if (at_ < atHand_) {
            present_ = at_++;
            FitPresent();
            return SourceStep::Record;
        }
        present_ = 0;
        const SourceStep step = source_->next(records_[0]);
        if (step == SourceStep::Record) {
            Take(0);
            FitPresent();
        }
        return step;
    }
    // The present record. Its time is 0 where it has none of its own; no other becomes 0. It lasts until the
    // next step.
    const SourceRecord& record() const { return records_[present_]; }
    // Where the present record belongs: never below that of the one before. 0 ahead of the first that has a
    // time of its own.
    mt_Time place() const { return places_[present_]; }

    // The highest time there is, on the merged clock and unshifted; 0 when no event has one. Nothing where
    // the source can't be looked over, and where progress stopped it.
    std::optional<mt_Time> LookForNewest(const Progress& progress);

    const std::string& name() const { return name_; }
    EventSource& source() const { return *source_; }
    const MergeInputCounts& counts() const { return counts_; }

  private:
    static constexpr mt_Time last_ = UINT64_MAX;

    void Take(size_t at);
    void FitPresent() {
        if (turns_ || records_[present_].extra.size() > raw_LongestExtra) MakeFit();
    }
    mt_Time Scaled(mt_Time time) const;
    mt_Time Shifted(mt_Time time) const;
    void MakeFit();

    std::string name_;
    std::unique_ptr<EventSource> source_;
    uint64_t rate_ = 1, targetRate_ = 1;
    bool scales_ = false, turns_ = false;
    mt_Time from_ = 0, to_ = 0;             // of the shift
    mt_Time newest_ = 0;                    // unshifted
    std::array<SourceRecord, 32> records_;  // from the source
    std::array<mt_Time, 32> places_{};      // where each belongs
    size_t at_ = 0, atHand_ = 0;            // of them
    size_t present_ = 0;
    MergeInputCounts counts_;
    std::array<uint8_t, raw_RecordRoom>
        extra_{};  // of the present record, where it is not as the source has it
};

// Rounded down. The merged clock is not slower, so that times keep their order and none becomes 0.
inline mt_Time MergeInput::Scaled(mt_Time time) const {
    if (!scales_) return time;
    __extension__ typedef unsigned __int128 Wide;
    const Wide scaled = static_cast<Wide>(time) * targetRate_ / rate_;
    return scaled > last_ ? last_ : static_cast<mt_Time>(scaled);
}

inline mt_Time MergeInput::Shifted(mt_Time time) const {
    if (time <= from_) return to_ - std::min(to_, from_ - time);
    const mt_Time further = time - from_;
    return further > last_ - to_ ? last_ : to_ + further;
}

// What the order of the inputs needs of a record; those at hand are taken together, ahead of their turns.
inline void MergeInput::Take(size_t at) {
    ++counts_.events;
    SourceRecord& record = records_[at];
    if (record.time != 0) {
        const mt_Time own = record.time, time = Scaled(own);
        if (time >= newest_)
            newest_ = time;
        else
            ++counts_.back;
        places_[at] = record.time = Shifted(newest_);
        if (record.time == last_ && (own != last_ || scales_)) ++counts_.far;
    } else {
        places_[at] = newest_ != 0 ? Shifted(newest_) : 0;
    }
}
