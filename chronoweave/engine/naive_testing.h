// The searches and reports once more, the plain way: the whole list of events in memory, and every tracked
// object looked at at every event.
#pragma once

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "chronoweave/engine/report.h"

class NaiveWalk {
  public:
    NaiveWalk(const AnalysisSource& source, double from, double to, std::vector<uint32_t> objects)
        : source_(source), legend_(*source.legend), from_(from), to_(to), objects_(std::move(objects)) {
        const auto first = static_cast<mt_Time>(std::llround(from * source.clock.ticksPerSecond));
        const auto last = static_cast<mt_Time>(std::llround(to * source.clock.ticksPerSecond));
        mt_GetEventsInTimeRange(*source.store, source.clock.baseTick + first,
                                source.clock.baseTick + last + 1, events_, state_);
        for (const uint32_t object : objects_) records_.push_back({object, -1, -1});
    }

    std::vector<SearchRow> search(const SearchRequest& request) {
        request_ = &request;
        const bool statuses = request.kind == Search_Status || request.kind == Search_Switch;
        if (from_ > to_) return rows_;
        if (statuses) compare(OnTick(from_), false, true);
        for (const EventRecord& event : events_) {
            if (full()) break;
            const double time =
                static_cast<double>(event.time - source_.clock.baseTick) / source_.clock.ticksPerSecond;
            if (statuses) {
                mt_ApplyEventToState(state_, event);
                compare(time, false, true);
            } else {
                take(event, time);
            }
        }
        if (statuses && !full()) compare(closing(), true, false);
        return rows_;
    }

    LegendStatistics report(bool allEvents) {
        statistics_.eventCounts.resize(legend_.events.size());
        statistics_.statusCounts.resize(legend_.statuses.size());
        statistics_.statusTimes.resize(legend_.statuses.size());
        track(OnTick(from_), false);
        for (const EventRecord& event : events_) {
            mt_ApplyEventToState(state_, event);
            track(static_cast<double>(event.time - source_.clock.baseTick) / source_.clock.ticksPerSecond,
                  false);
            if (allEvents || ObjectOf(event) == objects_[0])
                ++statistics_.eventCounts[static_cast<size_t>(legend_.EventIndex(event.type, event.subtype))];
        }
        track(closing(), true);
        return statistics_;
    }
    std::map<uint32_t, ObjectFigures> figures;  // of the report: switches in count

  private:
    struct Record {
        uint32_t object;
        int32_t status;
        double time;
    };

    double OnTick(double time) const {
        return std::round(time * source_.clock.ticksPerSecond) / source_.clock.ticksPerSecond;
    }
    // The range's end, unless it was rounded up to the tick of the last event.
    double closing() const {
        const double last =
            events_.empty() ? OnTick(from_)
                            : static_cast<double>((*std::prev(events_.end())).time - source_.clock.baseTick) /
                                  source_.clock.ticksPerSecond;
        return std::max(to_, last);
    }
    bool full() const { return request_->rowLimit > 0 && rows_.size() >= request_->rowLimit; }
    bool executes(int32_t row) const {
        return row >= 0 && legend_.statuses[static_cast<size_t>(row)].isExecution;
    }
    uint32_t ObjectOf(const EventRecord& event) const {
        return load_32(event.extra.data(), mt_IsBigEndianTarget(*source_.store));
    }
    static bool in(const std::vector<uint32_t>& list, uint32_t object) {
        return std::find(list.begin(), list.end(), object) != list.end();
    }
    uint32_t processor(uint32_t object) const { return source_.osKind == Os_Korvantis ? object % 1024 : 0; }
    int32_t StatusOf(uint32_t object) const {
        uint16_t code = 0;
        bool delivered = false;
        mt_GetObjectAttribute(*source_.store, state_, mt_ObjectTask, object, mt_AttributeStatus, &code, 2,
                              '@', delivered);
        return delivered ? legend_.StatusIndex(code) : -1;
    }

    void take(const EventRecord& event, double time) {
        const uint32_t object = ObjectOf(event);
        const SearchRequest& request = *request_;
        const auto is = [&](int32_t target) {
            return target < 0 || legend_.EventIndex(event.type, event.subtype) == target;
        };
        if (request.kind == Search_Event) {
            if (in(objects_, object) && is(request.target)) rows_.push_back({object, object, time, time});
            return;
        }
        if (in(request.endObjects, object) && is(request.endTarget)) {
            std::vector<uint32_t> tried = objects_;
            if (request.flags & Search_SameObject) tried = {object};
            for (const uint32_t one : tried) {
                const auto found = open_.find(one);
                if (found == open_.end()) continue;
                rows_.push_back({one, object, found->second, time});
                open_.erase(found);
                return;
            }
        }
        if (in(request.beginObjects, object) && is(request.target)) open_.insert({object, time});
    }

    void compare(double time, bool final, bool detection) {
        bool any = false;
        for (Record& record : records_) {
            const int32_t status = StatusOf(record.object);
            if (status < 0) continue;
            bool counts = false;
            if (detection && request_->kind == Search_Switch && executes(status)) {
                counts = any = true;
                const auto found = running_.find(processor(record.object));
                int64_t before = found == running_.end() ? -1 : int64_t{found->second};
                if (before != record.object) {
                    for (const Record& other : records_)
                        if (before < 0 && other.object != record.object && executes(other.status) &&
                            processor(other.object) == processor(record.object))
                            before = other.object;
                    if (before < 0) before = record.object;
                    rows_.push_back({static_cast<uint32_t>(before), record.object, time, time});
                }
            }
            if (record.status == -1) {
                record.status = status;
                record.time = time;
            } else if (record.status != status || final) {
                if (request_->kind == Search_Status &&
                    (request_->target < 0 || record.status == request_->target))
                    rows_.push_back({record.object, record.object, record.time, time});
                if (!(request_->kind == Search_Switch && detection && !executes(status) &&
                      executes(record.status))) {
                    record.status = status;
                    record.time = time;
                }
            }
            if (counts) running_[processor(record.object)] = record.object;
            if (full()) return;
        }
        if (!any) running_.clear();
    }

    void track(double time, bool final) {
        bool any = false;
        for (Record& record : records_) {
            const int32_t status = StatusOf(record.object);
            if (status < 0) continue;
            ObjectFigures& mine = figures[record.object];
            if (record.status == -1) {
                record.time = time;
                record.status = status;
                ++statistics_.statusCounts[static_cast<size_t>(status)];
            } else if (record.status != status || final) {
                statistics_.statusTimes[static_cast<size_t>(record.status)] += time - record.time;
                record.time = time;
                if (record.status != status) ++statistics_.statusCounts[static_cast<size_t>(status)];
                record.status = status;
            }
            if (!executes(record.status)) continue;
            any = true;
            const auto found = running_.find(processor(record.object));
            if (found == running_.end() || found->second != record.object) {
                ++mine.count;
                const int32_t link =
                    lastTaker_ < 0 ? legend_.contextSwitchStatus
                                   : legend_.statuses[static_cast<size_t>(lastTaker_)].contextSwitchLink;
                ++statistics_
                      .statusCounts[static_cast<size_t>(link < 0 ? legend_.contextSwitchStatus : link)];
                lastTaker_ = record.status;
            }
            running_[processor(record.object)] = record.object;
        }
        if (!any) running_.clear();
    }

    const AnalysisSource& source_;
    const Legend& legend_;
    double from_, to_;
    std::vector<uint32_t> objects_;
    EventList events_;
    StateTable state_;
    std::vector<Record> records_;
    std::map<uint32_t, uint32_t> running_;
    std::map<uint32_t, double> open_;
    std::vector<SearchRow> rows_;
    const SearchRequest* request_ = nullptr;
    LegendStatistics statistics_;
    int32_t lastTaker_ = -1;
};
