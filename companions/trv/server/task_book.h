// What is known of the tasks at one point of a stream of events, as a reader of all events up to there knows
// it: so that a file that begins there can name them and say what they do.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "chronoweave/import/raw/raw_record.h"
#include "chronoweave/import/raw/raw_writer.h"

class TaskBook {
  public:
    explicit TaskBook(bool bigEndian) : big_(bigEndian) {}

    // The next event, of a sound length.
    void take(const SourceRecord& event);
    // The newest time of an event; 0 before the first that has one.
    mt_Time time() const { return time_; }
    // What the newest event is about; 0 before the first.
    uint32_t object() const { return object_; }
    // Puts records of this time for every task of which something is known, in the order of first sight.
    // Gives how many.
    size_t write(mt_Time time, RawWriter& out) const;

  private:
    struct Task {
        uint32_t id = 0;
        std::optional<uint16_t> status;
        std::optional<uint32_t> priority;
        std::optional<std::string> name, prefix;
    };
    // The task, and whether this event made it known.
    struct Entry {
        Task& task;
        bool isNew;
    };
    Entry ensure(uint32_t id);
    void set(Entry entry, uint16_t status, const SourceRecord& event);
    void stopRunning(uint32_t id);
    void change(uint32_t id);
    void stopGroup(uint32_t id);
    void refresh(Task& task, const SourceRecord& event);

    bool big_;
    mt_Time time_ = 0;
    uint32_t object_ = 0;
    std::vector<Task> tasks_;
    std::unordered_map<uint32_t, uint32_t> places_;
    // Of each group, those that are held running; rarely more than one.
    std::unordered_map<uint32_t, std::vector<uint32_t>> running_;
};
