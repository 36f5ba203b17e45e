// Follows the status of objects through a walk over the store. What comes of it is as if every object were
// looked at, in the order in which they were added, at every event; but only an object that an event changed
// can have another status, and only one that executes can take over a processor, so that a step looks at
// these alone.
//
// The picture and the searches follow objects by one rule and differ in two things, which are the policies
// CanvasTracking and SearchTracking. The picture adds objects as they appear and in that order, searches all
// at the start by their ids.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "chronoweave/engine/object_index.h"
#include "chronoweave/engine/running_objects.h"
#include "chronoweave/rtos/legend.h"
#include "libtrv/trace_store.h"

// Of the picture. An object that the state tells no status of any more is drawn on in the one that it had: if
// that executes, it goes on executing. Who ran last on a processor is remembered while nobody executes, so
// that the next one takes over from it.
struct CanvasTracking {
    static constexpr bool holdsStatus = true;
    static constexpr bool remembersRunning = true;
};
// Of searches, reports, load and rules. An object without a status is passed over, and executes nowhere.
// Where no followed object executes, nobody runs: the next one takes over from no one who is known.
struct SearchTracking {
    static constexpr bool holdsStatus = false;
    static constexpr bool remembersRunning = false;
};

enum class Follow {
    Changes,    // steps look at the objects that events changed
    Executions  // and at those that execute
};

// What a visit wants of the pass that it is part of.
enum class Pass { Goes, Ends };

// Why an object is visited: its status may be another, or it executes and may take its processor.
enum class Cause { Changed, Executes };

// Kept: what a follower keeps with each object, as further members of its record.
template <class Tracking, class Kept>
class ObjectTracker {
  public:
    struct Record : Kept {
        uint32_t object = 0;
        uint32_t processor = 0;
        uint32_t place = 0;                    // among the objects
        uint32_t position = StateTable::npos;  // in the state as last looked at; npos for not in it
        int32_t now = -1;                      // row of the status there; -1 for none
        bool executing = false;
        bool told = false;  // now is newer than the state
    };

    // All are borrowed. The state changes by the events between the steps; running is read and updated.
    ObjectTracker(const Legend& legend, int osKind, const StateTable& state, RunningObjects& running,
                  Follow follow)
        : legend_(legend), osKind_(osKind), state_(state), running_(running), follow_(follow) {}

    // Adds an object behind the others, which is not among them yet. It is looked at once it is touched.
    Record& Add(uint32_t object) {
        Record record;
        record.object = object;
        record.processor = RunningObjects::ProcessorOf(osKind_, object);
        record.place = static_cast<uint32_t>(records_.size());
        index_.add(object, record.place);
        return records_.emplace_back(std::move(record));
    }
    bool IsExecution(int32_t statusRow) const {
        return statusRow >= 0 && legend_.statuses[static_cast<size_t>(statusRow)].isExecution;
    }

    // The next step looks at this object, if it is followed.
    void Touch(uint32_t object) {
        const uint32_t place = index_.find(object);
        if (place != ObjectIndex::none) Insert(touched_, place);
    }
    // Touches what an event changes, and applies it to the state, which is that of the tracker.
    void Take(const EventRecord& event, StateTable& state) {
        StateChange change;
        std::optional<uint32_t> last;
        for (ChangeList list = event.changes; list.next(change);) {
            // Most changes name the object of the one ahead.
            if (change.objectType != mt_ObjectTask || last == change.objectId) continue;
            last = change.objectId;
            Touch(change.objectId);
        }
        mt_ApplyEventToState(state, event);
    }

    // The next step looks at an object, by its place, whose status has become another: its row, or -1 for
    // none. The state need not say so yet.
    void Tell(uint32_t place, int32_t statusRow) {
        records_[place].now = statusRow;
        records_[place].told = true;
        Insert(touched_, place);
    }

    // A visit is visit(Record&, Cause) -> Pass.
    //
    // A pass over all objects.
    template <class Visit>
    void All(Visit&& visit) {
        settled_ = true;
        Each(visit);
        touched_.clear();
        EndPass();
    }
    // The same, but what was touched, or could still take over, is left for the next step.
    template <class Visit>
    void Each(Visit&& visit) {
        for (uint32_t place = 0; place < records_.size(); ++place) {
            Look(records_[place]);
            if (Call(records_[place], Cause::Changed, visit) == Pass::Ends) break;
        }
    }
    // A pass over those that can matter. With nothing touched, what a pass without a take-over found is what
    // this one would find.
    template <class Visit>
    void Step(Visit&& visit) {
        if (touched_.empty() && (settled_ || follow_ == Follow::Changes)) return;
        settled_ = true;
        // Both lists are walked at once, in order. A look may put an object among the executing ones or take
        // it away, so that list is searched afresh each time; both are short, the executing ones most often
        // very much so.
        size_t nextTouched = 0;
        for (uint32_t from = 0;;) {
            const uint32_t touched =
                nextTouched < touched_.size() ? touched_[nextTouched] : ObjectIndex::none;
            const uint32_t place = std::min(touched, NextExecuting(from));
            if (place == ObjectIndex::none) break;
            Record& record = records_[place];
            const Cause cause = place == touched ? Cause::Changed : Cause::Executes;
            if (cause == Cause::Changed) {
                Look(record);
                ++nextTouched;
            }
            if (Call(record, cause, visit) == Pass::Ends) break;
            from = place + 1;
        }
        touched_.clear();
        EndPass();
    }
    // Nothing would come of a step as long as nothing is touched.
    bool IsSettled() const { return settled_ || follow_ == Follow::Changes; }
    // The object, which executes, runs on its processor from now on; false when it does already.
    bool TakeOver(const Record& record) {
        if (running_.on(record.processor) == record.object) return false;
        running_.enter(record.processor, record.object);
        settled_ = false;
        return true;
    }
    // What follows can't be read: leave(Record&) for each object, and then of none anything is known.
    template <class Leave>
    void Forget(Leave&& leave) {
        for (Record& record : records_) {
            leave(record);
            static_cast<Kept&>(record).Forget();
            record.now = -1;
            record.executing = false;
        }
        touched_.clear();
        executing_.clear();
        running_.clear();
    }

    // Puts the objects into the order of keyOf(Record&); one whose key is ObjectIndex::none is followed no
    // more.
    template <class KeyOf>
    void Arrange(KeyOf&& keyOf) {
        std::vector<std::pair<uint32_t, uint32_t>> order;  // key, place
        for (Record& record : records_) {
            const uint32_t key = keyOf(record);
            if (key != ObjectIndex::none)
                order.emplace_back(key, record.place);
            else if (running_.on(record.processor) == record.object)
                running_.leave(record.processor);
        }
        std::sort(order.begin(), order.end());
        std::vector<uint32_t> to(records_.size(), ObjectIndex::none);
        std::vector<Record> arranged;
        index_.clear();
        for (const auto& [key, from] : order) {
            Record& record = arranged.emplace_back(records_[from]);
            record.place = to[from] = static_cast<uint32_t>(arranged.size() - 1);
            index_.add(record.object, record.place);
        }
        records_ = std::move(arranged);
        for (std::vector<uint32_t>* places : {&touched_, &executing_}) {
            for (uint32_t& place : *places) place = to[place];
            std::erase(*places, ObjectIndex::none);
            std::sort(places->begin(), places->end());
        }
    }

  private:
    // Asks the state for the object's status, unless it was told.
    void Look(Record& record) {
        if (!std::exchange(record.told, false)) Ask(record);
        if (record.now < 0 && Tracking::holdsStatus) return;
        const bool executes = IsExecution(record.now);
        if (executes == record.executing) return;
        record.executing = executes;
        if (executes)
            Insert(executing_, record.place);
        else
            executing_.erase(std::lower_bound(executing_.begin(), executing_.end(), record.place));
    }
    void Ask(Record& record) {
        // A position holds until something is removed from the state.
        uint32_t& position = record.position;
        if (position >= state_.size() || state_.IdAt(position) != record.object ||
            state_.entry(position).objectType != mt_ObjectTask)
            position = state_.find(mt_ObjectTask, record.object);
        const auto code = position == StateTable::npos ? std::nullopt : mt_TaskStatusAt(state_, position);
        record.now = code ? legend_.StatusIndex(*code) : -1;
    }
    template <class Visit>
    Pass Call(Record& record, Cause cause, Visit& visit) {
        return record.now < 0 && !Tracking::holdsStatus ? Pass::Goes : visit(record, cause);
    }
    uint32_t NextExecuting(uint32_t from) const {
        if (follow_ == Follow::Changes) return ObjectIndex::none;
        constexpr size_t few = 8;
        if (executing_.size() > few) {
            const auto at = std::lower_bound(executing_.begin(), executing_.end(), from);
            return at == executing_.end() ? ObjectIndex::none : *at;
        }
        for (const uint32_t place : executing_)
            if (place >= from) return place;
        return ObjectIndex::none;
    }
    // A pass that no one is touched for changes nothing unless someone who executes takes over.
    void EndPass() {
        settled_ = settled_ || std::all_of(executing_.begin(), executing_.end(), [this](uint32_t place) {
                       const Record& record = records_[place];
                       return running_.on(record.processor) == record.object;
                   });
        if (!Tracking::remembersRunning && follow_ == Follow::Executions && executing_.empty())
            running_.clear();
    }
    static void Insert(std::vector<uint32_t>& list, uint32_t place) {
        if (list.empty() || list.back() < place) {
            list.push_back(place);
            return;
        }
        const auto at = std::lower_bound(list.begin(), list.end(), place);
        if (*at != place) list.insert(at, place);
    }

    const Legend& legend_;
    int osKind_;
    const StateTable& state_;
    RunningObjects& running_;
    Follow follow_;
    bool settled_ = false;  // nothing would come of a pass that no one is touched for
    std::vector<Record> records_;
    ObjectIndex index_;                // of records, by object
    std::vector<uint32_t> touched_;    // places in order, each once
    std::vector<uint32_t> executing_;  // likewise
};
