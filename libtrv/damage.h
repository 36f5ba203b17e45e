// What is damaged in a store, as its readers find it. Each finding is noted once, however many queries meet
// it, and is told once by whoever takes it.
//
// Damage is what contradicts the form of the three files: a stream that is cut, a stretch that is none of its
// packets, a device that fails to read, an index that disagrees with the stream. Bytes behind a terminator
// are none: a writer puts them there first.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "libtrv/store_format.h"
#include "shared/libcxxutil/result.h"

enum class mt_DamageKind {
    Lost,       // the events of some blocks, or of the rest of one, can't be read
    Table,      // the table of states of a block
    Objects,    // the list of objects used in a block
    Index,      // a record of the index disagrees with the stream
    EndOfFile,  // an end of the stream that hides events
    IndexFile,
    VersionFile
};

class DamageList {
  public:
    // Blocks from first to end (not included) are concerned; those of findings of one kind are told once.
    void note(mt_DamageKind kind, uint32_t first, uint32_t end, Result failure);
    bool empty() const { return found_.empty(); }
    // What was found since the last call.
    std::vector<Result> take();

  private:
    struct Finding {
        mt_DamageKind kind;
        uint32_t first, end;
        Result failure;
    };
    void add(Finding finding);
    std::vector<Finding> found_;
    size_t taken_ = 0;
};

// A place in a file, for messages: "run.trs, byte 4711".
std::string mt_PlaceText(const std::string& file, uint64_t offset);
