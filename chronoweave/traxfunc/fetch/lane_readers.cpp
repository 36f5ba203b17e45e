#include "chronoweave/traxfunc/fetch/lane_readers.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

// Times that were asked for last, by number: drawing looks at the same few again and again.
class RecentTimes {
  public:
    template <class Make>
    double of(uint32_t number, const Make& make) {
        One& one = recent_[number % recent_.size()];
        if (one.number != number) one = {number, make(number)};
        return one.time;
    }

  private:
    struct One {
        uint32_t number = UINT32_MAX;
        double time = 0;
    };
    std::array<One, 8> recent_;
};

// A place stands for a status that the object got: from the one that it is in at the range's begin, or else
// the first one in it, to the last. One that is not valid, or like the one ahead, begins no segment. Where
// the object is in no valid status in the end, the segment that it was in last is none: nobody knows how long
// it held.
class SegmentReader : public LaSegmentReader {
  public:
    SegmentReader(std::shared_ptr<const LaLaneRange> range, uint32_t lane, laStatusRow row)
        : range_(std::move(range)), lane_(*range_->table, lane), plain_(row == laStatusRow::Plain) {
        endTime_ = range_->range.high;
        inRange_ = lane_.FirstStatusAt(range_->first);
        end_ = lane_.FirstStatusAt(range_->end);
        begin_ = inRange_;
        if (inRange_ > 0 && RowAt(inRange_ - 1) != CodeRows::none)
            --begin_;
        else
            while (begin_ < end_ && RowAt(begin_) == CodeRows::none) ++begin_;
        if (begin_ == end_ || RowAt(end_ - 1) != CodeRows::none) return;
        end_ = StartOf(end_ - 1);
        endTime_ = BeginOf(end_);
    }

    size_t size() const override { return end_ - begin_; }
    LaLnSeg At(size_t place) const override {
        const uint32_t from = StartOf(NumberOf(place));
        return {BeginOf(from), EndBehind(NumberOf(place)), RowAt(from)};
    }
    double EndAt(size_t place) const override { return EndBehind(NumberOf(place)); }
    size_t PlaceOf(size_t place) const override { return StartOf(NumberOf(place)) - begin_; }
    size_t Next(size_t place) const override { return NextStart(NumberOf(place)) - begin_; }
    size_t FirstEndingFrom(double time) const override {
        if (begin_ == end_ || endTime_ < time) return size();
        const uint32_t next = std::clamp(lane_.FirstStatusFrom(range_->clock.TickFrom(time)), begin_, end_);
        return next == begin_ ? 0 : StartOf(next - 1) - begin_;
    }

  private:
    uint32_t NumberOf(size_t place) const { return begin_ + static_cast<uint32_t>(place); }
    int32_t RowAt(uint32_t number) const { return range_->RowOf(lane_.StateOf(number)); }
    double TimeAt(uint32_t number) const {
        return times_.of(number, [this](uint32_t of) { return range_->clock.TimeOf(lane_.StatusTick(of)); });
    }
    // Where the segment that holds a status begins. The first one is valid.
    uint32_t StartOf(uint32_t number) const {
        for (uint32_t start = number; !plain_;) {
            while (RowAt(start) == CodeRows::none) --start;
            if (start == begin_) return start;
            uint32_t ahead = start - 1;
            while (RowAt(ahead) == CodeRows::none) --ahead;
            if (RowAt(ahead) != RowAt(start)) return start;
            start = ahead;
        }
        return number;
    }
    uint32_t NextStart(uint32_t number) const {
        if (plain_) return number + 1;
        uint32_t valid = number;
        while (RowAt(valid) == CodeRows::none) --valid;
        const int32_t row = RowAt(valid);
        uint32_t next = number + 1;
        while (next < end_ && (RowAt(next) == CodeRows::none || RowAt(next) == row)) ++next;
        return next;
    }
    double BeginOf(uint32_t start) const { return start < inRange_ ? range_->range.low : TimeAt(start); }
    double EndBehind(uint32_t number) const {
        const uint32_t next = NextStart(number);
        return next == end_ ? endTime_ : TimeAt(next);
    }

    std::shared_ptr<const LaLaneRange> range_;
    mutable LaneReader lane_;
    mutable RecentTimes times_;
    const bool plain_;
    uint32_t begin_ = 0, inRange_ = 0, end_ = 0;  // numbers of statuses
    double endTime_;                              // of the last segment
};

class IconReader : public LaLaneIconReader {
  public:
    IconReader(std::shared_ptr<const LaLaneRange> range, uint32_t lane)
        : range_(std::move(range)),
          lane_(*range_->table, lane),
          begin_(lane_.FirstEventAt(range_->first)),
          end_(lane_.FirstEventAt(range_->end)) {}

    size_t size() const override { return end_ - begin_; }
    double TimeAt(size_t place) const override {
        return times_.of(begin_ + static_cast<uint32_t>(place),
                         [this](uint32_t of) { return range_->clock.TimeOf(lane_.EventTick(of)); });
    }
    std::span<const uint16_t> Rows() const override { return range_->eventRows; }
    uint16_t EventAt(size_t place) const override {
        return static_cast<uint16_t>(
            range_->events.of(lane_.event(begin_ + static_cast<uint32_t>(place)).kind));
    }
    size_t FirstFrom(double time) const override {
        return std::clamp(lane_.FirstEventFrom(range_->clock.TickFrom(time)), begin_, end_) - begin_;
    }

  private:
    std::shared_ptr<const LaLaneRange> range_;
    mutable LaneReader lane_;
    mutable RecentTimes times_;
    uint32_t begin_, end_;  // numbers of events
};

// A place is the event's, counted from the range's first.
class BitmapReader : public LaItemReader<laItem_Bitmap> {
  public:
    BitmapReader(std::shared_ptr<const LaLaneRange> range, const ObjectIndex& lanes)
        : range_(std::move(range)), lanes_(lanes) {}

    uint32_t size() const override { return range_->end - range_->first; }
    double TimeAt(uint32_t place) const override {
        return range_->clock.TimeOf(range_->table->TickOf(range_->first + place));
    }
    uint32_t FirstFrom(double time) const override {
        const uint32_t at = range_->table->FirstFrom(range_->clock.TickFrom(time));
        return std::clamp(at, range_->first, range_->end) - range_->first;
    }
    laItem_Bitmap At(uint32_t place) const override {
        const uint32_t sequence = range_->first + place;
        const Block& block = BlockOf(sequence);
        if (block.columns.ticks.empty()) return {range_->range.low, 0, place, 0, 0, 0};  // it is damaged
        const uint32_t number = sequence - block.first;
        const uint32_t kind = block.summary.kinds[block.columns.kinds[number]];
        const uint64_t object = block.summary.objects[block.columns.objects[number]];
        return {range_->clock.TimeOf(block.firstTick + block.columns.ticks[number]),
                lanes_.find(static_cast<uint32_t>(object)),
                place,
                range_->events.of(kind),
                lane_TypeOf(kind),
                lane_SubtypeOf(kind)};
    }

  private:
    struct Block {
        size_t number = SIZE_MAX;
        uint32_t first = 0;
        mt_Time firstTick = 0;
        LaneSummary summary;
        LaneColumns columns;  // empty when they can't be read
    };
    // The blocks that were asked for last are kept.
    const Block& BlockOf(uint32_t sequence) const {
        const size_t number = range_->index->BlockOf(sequence);
        for (const Block& block : kept_)
            if (block.number == number) return block;
        oldest_ = (oldest_ + 1) % kept_.size();
        Block& block = kept_[oldest_];
        const LaneHead& head = range_->index->head(number);
        block.number = number;
        block.first = head.first;
        block.firstTick = head.firstTick;
        if (!range_->index->ReadSummary(number, block.summary) ||
            !range_->index->ReadColumns(number, block.summary, LaneIndex::Columns::All, block.columns))
            block.columns = {};
        return block;
    }

    std::shared_ptr<const LaLaneRange> range_;
    const ObjectIndex& lanes_;
    mutable std::array<Block, 2> kept_;
    mutable size_t oldest_ = 0;
};

}  // namespace

std::unique_ptr<const LaSegmentReader> laSegments_Reader(std::shared_ptr<const LaLaneRange> range,
                                                         uint32_t lane, laStatusRow row) {
    return std::make_unique<SegmentReader>(std::move(range), lane, row);
}

std::unique_ptr<const LaLaneIconReader> laIcons_Reader(std::shared_ptr<const LaLaneRange> range,
                                                       uint32_t lane) {
    return std::make_unique<IconReader>(std::move(range), lane);
}

std::unique_ptr<const LaItemReader<laItem_Bitmap>> laBitmaps_Reader(std::shared_ptr<const LaLaneRange> range,
                                                                    const ObjectIndex& lanes) {
    return std::make_unique<BitmapReader>(std::move(range), lanes);
}
