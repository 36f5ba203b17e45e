// The items of a canvas as those that read them see them: lists in time order, each item known by its place
// and given as a value. A fetch keeps them item by item, and they are read as quickly as from a vector. A
// list can also stand for items that are made of something else when they are asked for: its reader makes
// them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "shared/libcxxutil/table.h"

// The first place from 0 on for which a condition holds, size when there is none; behind a place for which it
// holds it holds for all.
template <class Condition>
size_t laPlaces_First(size_t size, const Condition& holds) {
    size_t first = 0;
    for (size_t end = size; first < end;) {
        const size_t middle = first + (end - first) / 2;
        if (holds(middle))
            end = middle;
        else
            first = middle + 1;
    }
    return first;
}

// A stretch of a lane in one status. t0 <= t1, in the time base.
struct LaLnSeg {
    double t0 = 0, t1 = 0;
    int32_t status = -1;  // row of the legend's status table
};

// Makes the segments of a lane. Several neighbouring places may be of one segment, which is known by the
// first of them.
class LaSegmentReader {
  public:
    virtual ~LaSegmentReader() = default;
    virtual size_t size() const = 0;
    virtual LaLnSeg At(size_t place) const = 0;      // whole, from any of its places
    virtual double EndAt(size_t place) const = 0;    // its t1
    virtual size_t PlaceOf(size_t place) const = 0;  // by which the segment is known
    virtual size_t Next(size_t place) const = 0;     // the first place behind it
    virtual size_t FirstEndingFrom(double time) const = 0;
};

// The segments of a lane. They never overlap.
class LaSegments {
  public:
    size_t size() const { return reader_ ? reader_->size() : kept_.size(); }  // of places
    bool empty() const { return size() == 0; }
    LaLnSeg operator[](size_t place) const { return reader_ ? reader_->At(place) : kept_[place]; }
    // The same without a copy of one that is kept; another is put into made.
    const LaLnSeg& At(size_t place, LaLnSeg& made) const {
        return reader_ ? made = reader_->At(place) : kept_[place];
    }
    double EndAt(size_t place) const { return reader_ ? reader_->EndAt(place) : kept_[place].t1; }
    LaLnSeg front() const { return (*this)[0]; }
    LaLnSeg back() const { return (*this)[size() - 1]; }
    // Places by which segments are known: the one behind a segment (size() when it is the last), the one
    // ahead (of one that is not the first), the last (of a lane that has any).
    size_t Next(size_t place) const { return reader_ ? reader_->Next(place) : place + 1; }
    size_t Previous(size_t place) const { return reader_ ? PlaceOf(PlaceOf(place) - 1) : place - 1; }
    size_t Last() const { return PlaceOf(size() - 1); }
    // The first that ends at or behind a time, that begins at or behind one; size() when there is none.
    size_t FirstEndingFrom(double time) const {
        if (reader_) return reader_->FirstEndingFrom(time);
        return laPlaces_First(kept_.size(), [&](size_t place) { return kept_[place].t1 >= time; });
    }
    size_t FirstFrom(double time) const {
        size_t place = FirstEndingFrom(time);
        while (place < size() && (*this)[place].t0 < time) place = Next(place);
        return place;
    }

    // Over the segments, each once.
    class Walk {
      public:
        Walk() = default;
        Walk(const LaSegments& of, size_t place) : of_(&of), place_(place) {}
        LaLnSeg operator*() const { return (*of_)[place_]; }
        Walk& operator++() {
            place_ = of_->Next(place_);
            return *this;
        }
        bool operator==(const Walk& other) const { return place_ == other.place_; }

      private:
        const LaSegments* of_ = nullptr;
        size_t place_ = 0;
    };
    Walk begin() const { return {*this, 0}; }
    Walk end() const { return {*this, size()}; }

    // Those that are kept; none while a reader makes them.
    std::vector<LaLnSeg>& kept() { return kept_; }
    void Clear() {
        kept_.clear();
        reader_.reset();
    }
    void ReadFrom(std::unique_ptr<const LaSegmentReader> reader) {
        Clear();
        reader_ = std::move(reader);
    }
    size_t bytes() const { return kept_.capacity() * sizeof(LaLnSeg); }
    // The end, which is written to soon, is fetched into the processor's cache.
    void Warm() const {
        if (!kept_.empty()) __builtin_prefetch(&kept_.back(), 1);
    }

  private:
    size_t PlaceOf(size_t place) const { return reader_ ? reader_->PlaceOf(place) : place; }

    std::vector<LaLnSeg> kept_;
    std::unique_ptr<const LaSegmentReader> reader_;
};

// Makes the events of a lane.
class LaLaneIconReader {
  public:
    virtual ~LaLaneIconReader() = default;
    virtual size_t size() const = 0;
    virtual double TimeAt(size_t place) const = 0;
    virtual uint16_t EventAt(size_t place) const = 0;
    virtual std::span<const uint16_t> Rows() const = 0;  // that any of them may have
    virtual size_t FirstFrom(double time) const = 0;
};

// The events of a lane: times, and rows of the event table.
class LaLaneIcons {
  public:
    size_t size() const { return reader_ ? reader_->size() : times_.size(); }
    bool empty() const { return size() == 0; }
    double time(size_t place) const { return reader_ ? reader_->TimeAt(place) : times_[place]; }
    uint16_t event(size_t place) const { return reader_ ? reader_->EventAt(place) : events_[place]; }
    // The rows that any of them may have, where that is known; else none.
    std::span<const uint16_t> Rows() const { return reader_ ? reader_->Rows() : std::span<const uint16_t>(); }
    // The first at or behind a time, the first behind one; size() when there is none.
    size_t FirstFrom(double time) const {
        if (reader_) return reader_->FirstFrom(time);
        return static_cast<size_t>(std::lower_bound(times_.begin(), times_.end(), time) - times_.begin());
    }
    size_t FirstBehind(double time) const {
        if (reader_) return laPlaces_First(size(), [&](size_t place) { return this->time(place) > time; });
        return static_cast<size_t>(std::upper_bound(times_.begin(), times_.end(), time) - times_.begin());
    }

    // Of those that are kept.
    void Append(double time, uint16_t event) {
        times_.push_back(time);
        events_.push_back(event);
    }
    void DropFront(size_t count) {
        times_.erase(times_.begin(), times_.begin() + static_cast<std::ptrdiff_t>(count));
        events_.erase(events_.begin(), events_.begin() + static_cast<std::ptrdiff_t>(count));
    }
    void Clear() {
        times_.clear();
        events_.clear();
        reader_.reset();
    }
    void ReadFrom(std::unique_ptr<const LaLaneIconReader> reader) {
        Clear();
        reader_ = std::move(reader);
    }
    // As of segments.
    void Warm() const {
        __builtin_prefetch(times_.data() + times_.size(), 1);
        __builtin_prefetch(events_.data() + events_.size(), 1);
    }
    size_t bytes() const {
        return times_.capacity() * sizeof(double) + events_.capacity() * sizeof(uint16_t);
    }

  private:
    // What drawing and hits read lies together.
    std::vector<double> times_;
    std::vector<uint16_t> events_;
    std::unique_ptr<const LaLaneIconReader> reader_;
};

// Makes items of one kind.
template <typename Item>
class LaItemReader {
  public:
    virtual ~LaItemReader() = default;
    virtual uint32_t size() const = 0;
    virtual Item At(uint32_t place) const = 0;
    virtual double TimeAt(uint32_t place) const = 0;
    virtual uint32_t FirstFrom(double time) const = 0;
};

// Items of all lanes together, in time order; laItem_Time(item) gives an item's time.
template <class Item>
class LaItemList {
  public:
    uint32_t size() const { return reader_ ? reader_->size() : kept_.size(); }
    bool empty() const { return size() == 0; }
    Item operator[](uint32_t place) const { return reader_ ? reader_->At(place) : kept_[place]; }
    // The same without a copy of one that is kept; another is put into made.
    const Item& At(uint32_t place, Item& made) const {
        return reader_ ? made = reader_->At(place) : kept_[place];
    }
    double TimeAt(uint32_t place) const {
        return reader_ ? reader_->TimeAt(place) : laItem_Time(kept_[place]);
    }
    Item back() const { return (*this)[size() - 1]; }
    // The first at or behind a time; size() when there is none.
    uint32_t FirstFrom(double time) const {
        if (reader_) return reader_->FirstFrom(time);
        return static_cast<uint32_t>(laPlaces_First(kept_.size(), [&](size_t place) {
            return laItem_Time(kept_[static_cast<uint32_t>(place)]) >= time;
        }));
    }

    // Those that are kept; none while a reader makes them.
    Table<Item>& kept() { return kept_; }
    void Clear() {
        kept_.clear();
        reader_.reset();
    }
    void ReadFrom(std::unique_ptr<const LaItemReader<Item>> reader) {
        Clear();
        reader_ = std::move(reader);
    }
    size_t bytes() const { return kept_.bytes(); }

  private:
    Table<Item> kept_;
    std::unique_ptr<const LaItemReader<Item>> reader_;
};
