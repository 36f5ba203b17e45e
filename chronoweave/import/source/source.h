// What a source of events gives, whatever its format: a raw event file, a core file, a folder of another
// system's trace. A format is a folder beside this one with a SourceFormat, and a line in
// chronoweave/import/formats.cpp.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "chronoweave/import/source/object_look.h"
#include "chronoweave/import/source/source_name.h"
#include "libtrv/task_tracker.h"
#include "shared/libcxxutil/progress.h"
#include "shared/libcxxutil/result.h"

// What a source says of its target; it stands as soon as the source is open.
struct SourceFacts {
    uint64_t ticksPerSecond = 0;
    std::string osName;  // which configure file explains it
    bool bigEndian = false;
    mt_EventCallback tracker = TaskTracker;  // what its events do to objects
    uint32_t architecture = 0;               // a code of raw event files; 0 where the source tells none
};

// One event as the source has it. The import counts times from the first timed event on, keeps the order of
// the source, and lets a time that goes back stand at the newest.
struct SourceRecord {
    mt_Time time = 0;  // the source's own ticks; 0 for an event with no time of its own
    uint16_t type = 0;
    uint16_t subtype = 0;
    std::span<const uint8_t> extra;  // in the target's byte order; lasts until the next step
};

enum class SourceStep {
    Record,  // one was delivered
    Pause,   // none this time, but nothing is over: a moment to look at the clock and to tell progress
    Again,   // none now, but more may come
    End,     // none, and none will come
    Failed   // the source can't be read on; damage says why
};

// What a source counted. Nothing is lost without a number here.
struct SourceCounts {
    uint64_t tooShort = 0;  // records dropped: below the shortest that there can be
    uint64_t tooLong = 0;   // records dropped: above the longest
    uint64_t badBytes = 0;  // bytes where a record was expected and none began
    uint64_t unread = 0;    // bytes of a record that is cut by the source's present end
    uint64_t unreadAt = 0;  // where they begin
};

// How far a source is read, in any one unit. total may grow.
struct SourceExtent {
    double done = 0, total = 0;
};

class EventSource {
  public:
    virtual ~EventSource() = default;
    virtual const SourceFacts& facts() const = 0;
    // The next record, if the step says so.
    virtual SourceStep next(SourceRecord& record) = 0;
    // Moves on over records that are at hand, as many as there is room for; they last together until the next
    // step. 0 where none is at hand, or nothing but next can say what comes: it is asked then.
    virtual size_t NextAtHand(std::span<SourceRecord>) { return 0; }
    virtual SourceExtent extent() const = 0;

    // A quick look over all that is there now, without moving on; it prints nothing. Nothing where there is
    // no such look, as with what comes through a pipe, and where progress, in any one unit, stopped it.
    virtual std::optional<SourceLook> look(const Progress&) { return std::nullopt; }
    // The highest time that look tells, for those who want nothing else of it.
    virtual std::optional<mt_Time> LookForNewest(const Progress& progress) {
        const std::optional<SourceLook> seen = look(progress);
        return seen ? std::optional(seen->newest) : std::nullopt;
    }
    virtual const SourceCounts& counts() const {
        static const SourceCounts none;
        return none;
    }
    // What is wrong with the source as far as it was read; the records delivered count all the same.
    virtual Result damage() const { return {}; }
    // Whether the reader has a deadline: the source is then to pause after little work.
    virtual void SetDeadline(bool) {}
    // A read ends here, be it for now: what was left unsaid to keep messages few is said in one line a kind.
    virtual void settle() {}
};

struct SourceOptions {
    bool mayGrow = false;  // the present end is Again and not End
};

// One kind of source.
struct SourceFormat {
    const char* name;  // for people
    // Whether a name is this format's, by extension, kind or first bytes; of several formats the first in the
    // list has it. A name that this says yes to and open refuses is told in open's words.
    bool (*takes)(const SourceName& name);
    // What can't be read is refused with the sentence for it, and behind that with place and reason if there
    // are any. A fatal failure is the only thing to say.
    Result (*open)(const SourceName& name, const SourceOptions& options,
                   std::unique_ptr<EventSource>& source);
};
