// Follows the status of chosen objects through a walk. What comes of it is as if every object were looked at,
// in the order of their ids, at every event; but only an object that an event changed can have another
// status, and only one that executes can take over a processor, so that a step looks at these alone.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "chronoweave/engine/object_index.h"
#include "chronoweave/engine/source.h"

class ObjectTracker {
  public:
    struct Record {
        uint32_t object = 0;
        uint32_t processor = 0;
        uint32_t index = 0;                    // place among the objects
        uint32_t position = StateTable::npos;  // in the state, as last found
        int32_t now = -1;        // row of the status in the state as last looked at; -1 for none
        int32_t status = -1;     // the walker's own: the status that the object is held to be in
        double time = -1.0;      // likewise: since when
        bool executing = false;  // of now
    };

    // Objects ascending. With followExecuting, steps also look at the objects that execute. The state changes
    // by the events between the steps.
    ObjectTracker(const AnalysisSource& source, const StateTable& state, const std::vector<uint32_t>& objects,
                  bool followExecuting);

    std::vector<Record>& records() { return records_; }
    bool isExecution(int32_t statusRow) const {
        return statusRow >= 0 && source_.legend->statuses[static_cast<size_t>(statusRow)].isExecution;
    }
    // True when some tracked object executes.
    bool anyExecuting() const { return !executing_.empty(); }

    // Notes the tracked objects that the event changes and applies it to the state.
    void take(const EventRecord& event, StateTable& state) {
        StateChange change;
        uint32_t last = 0;
        bool any = false;
        for (ChangeList list = event.changes; list.next(change);) {
            // Most changes name the object of the one ahead.
            if (change.objectType != mt_ObjectTask || (any && change.objectId == last)) continue;
            any = true;
            last = change.objectId;
            const uint32_t at = index_.find(last);
            if (at != ObjectIndex::none) insert(touched_, at);
        }
        mt_ApplyEventToState(state, event);
    }

    // Looks at every object: visit(Record&) -> Next for each that has a status.
    enum class Next {
        Go,
        Changed,
        End
    };  // Changed: looking again could give more, even with nothing touched
    template <class Visit>
    void all(Visit&& visit) {
        settled_ = true;
        for (uint32_t at = 0; at < records_.size(); ++at) {
            look(at);
            if (!call(at, visit)) break;
        }
        touched_.clear();
    }
    // Around a stretch that can't be read: visit(Record&) for each object that is held to be in a status, and
    // then it is in none.
    template <class Visit>
    void forget(Visit&& visit) {
        for (Record& record : records_) {
            if (record.status >= 0) visit(record);
            record.status = record.now = -1;
            record.time = -1.0;
        }
        touched_.clear();
    }
    // Looks at those that can matter. With no changes, an execution is looked at only while something still
    // changes.
    template <class Visit>
    void step(Visit&& visit) {
        if (touched_.empty() && (settled_ || !followExecuting_)) return;
        settled_ = true;
        // Both lists are walked at once, in the order of ids. A look may put an object among the executing
        // ones or take it away, so that list is searched afresh each time; both are short.
        size_t nextTouched = 0;
        for (uint32_t at = 0;;) {
            const uint32_t touched =
                nextTouched < touched_.size() ? touched_[nextTouched] : ObjectIndex::none;
            uint32_t one = touched;
            if (followExecuting_) {
                const auto running = std::lower_bound(executing_.begin(), executing_.end(), at);
                if (running != executing_.end()) one = std::min(one, *running);
            }
            if (one == ObjectIndex::none) break;
            if (one == touched) {
                look(one);
                ++nextTouched;
            }
            if (!call(one, visit)) break;
            at = one + 1;
        }
        touched_.clear();
    }

  private:
    template <class Visit>
    bool call(uint32_t at, Visit& visit) {
        if (records_[at].now < 0) return true;
        const Next next = visit(records_[at]);
        if (next == Next::Changed) settled_ = false;
        return next != Next::End;
    }
    // Asks the state for the object's status.
    void look(uint32_t at);
    static void insert(std::vector<uint32_t>& list, uint32_t value) {
        if (list.empty() || list.back() < value) {
            list.push_back(value);
            return;
        }
        const auto at = std::lower_bound(list.begin(), list.end(), value);
        if (*at != value) list.insert(at, value);
    }

    const AnalysisSource& source_;
    const StateTable& state_;
    bool followExecuting_;
    bool settled_ = false;
    std::vector<Record> records_;
    ObjectIndex index_;                // of records, by object
    std::vector<uint32_t> touched_;    // in order, each once
    std::vector<uint32_t> executing_;  // in order
};
