// The tracking of reports: the objects of a range followed from its start to its end, with a sink that sums.
// The walk may be done event by event, so that it can be left and taken up again.
//
// The sink is told that an object enters a status (record.status, since record.time), leaves it at a time,
// and takes over its processor:
//     entered(const Record&), left(const Record&, double until), TookOver(const Record&)
#pragma once

#include <vector>

#include "chronoweave/engine/search_tracker.h"

template <class Sink>
class ReportTracking {
  public:
    using Record = SearchTracker::Record;

    ReportTracking(SearchTracker& tracker, Sink& sink) : tracker_(tracker), sink_(sink) {}

    void all(double time, bool final) {
        tracker_.All([&](Record& record, Cause) { return look(record, time, final); });
    }
    // Around a stretch that can't be read.
    void interrupt(const TimeGap& gap, double time) {
        tracker_.Forget([&](const Record& record) {
            if (record.status >= 0) sink_.left(record, gap.from);
        });
        all(time, false);
    }
    void step(double time) {
        tracker_.Step([&](Record& record, Cause) { return look(record, time, false); });
    }

  private:
    Pass look(Record& record, double time, bool final) {
        if (record.status < 0) {
            if (record.time < 0) record.time = time;
            record.status = record.now;
            sink_.entered(record);
        } else if (record.status != record.now || final) {
            sink_.left(record, time);
            record.time = time;
            if (record.status != record.now) {
                record.status = record.now;
                sink_.entered(record);
            }
        }
        if (record.executing && tracker_.TakeOver(record)) sink_.TookOver(record);
        return Pass::Goes;
    }

    SearchTracker& tracker_;
    Sink& sink_;
};

// The walk over a range with objects tracked, which come ascending. Source, objects and sink outlive it; the
// source's running objects are its own as long as it lives.
template <class Sink>
class TrackedWalk {
  public:
    TrackedWalk(AnalysisSource& source, const std::vector<uint32_t>& objects, double from, double to,
                Sink& sink, Passed passed)
        : range_(source, objects, from, to, Follow::Executions, passed), tracking_(range_.tracker(), sink) {
        source.running.clear();
        known_ = started() && range_.walk().gap() == nullptr;
        time_ = source.clock.OnTick(from);
        if (known_) tracking_.all(time_, false);
    }

    bool started() const { return range_.walk().started(); }
    const WalkEnd& end() const { return range_.walk().end(); }
    // Time of the last event, or of the range's start ahead of the first.
    double time() const { return time_; }
    // The event last given, where the store gave it.
    const EventRecord* event() const { return range_.walk().FromStore() ? &range_.event() : nullptr; }
    // Those that a lane index has told of or passed over.
    EventSpan ByLanes() const { return range_.walk().ByLanes(); }
    // False behind the last event; what was still open is closed then, and the sink is told no more.
    bool next() {
        if (!range_.next(time_)) {
            close(range_.walk().closing());
            return false;
        }
        if (const TimeGap* gap = range_.walk().gap()) tracking_.interrupt(*gap, time_);
        range_.Take();
        tracking_.step(time_);
        known_ = true;
        return true;
    }
    // Ends ahead of the range's end, at the last event given. Next is not called any more.
    void cut() { close(time_); }

  private:
    void close(double time) {
        if (known_) tracking_.all(time, true);
        known_ = false;
    }

    TrackedRange range_;
    ReportTracking<Sink> tracking_;
    double time_ = 0;
    bool known_ = false;  // what the objects do
};
