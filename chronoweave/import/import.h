// From a file name to a store: which kind of source it is, and what came of reading it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "chronoweave/engine/lanes/lane_block.h"
#include "chronoweave/import/source/source.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/progress.h"
#include "shared/libcxxutil/result.h"

// What an import counted: what the source counted, and what became of the rest.
struct ImportCounts : SourceCounts {
    uint64_t events = 0;   // taken into the store
    uint64_t refused = 0;  // events that the store could not take (disk full, four gigabytes)
    bool stopped = false;  // the user ended it; before the store was begun, there is none and no error
    uint64_t dropped() const { return tooShort + tooLong + refused; }
};

struct ImportOptions {
    std::string outputBase = {};  // where the store goes; empty: beside the source
    uint32_t checkpoint = 0;  // events from one checkpoint to the next, a multiple of 100; 0: by the objects
    uint32_t laneBlock = lane_BlockEvents;  // events of a block of the lane index; 0: none is made
    bool keepGrowing = false;               // a source that may grow stays open to be read on
    Progress progress = {};                 // in any one unit
};

// A source that is read on as it grows, with the writer of its store (import_session.h).
class ImportSession;
struct ImportSessionEnd {
    void operator()(ImportSession* session) const;
};
using GrowingSource = std::unique_ptr<ImportSession, ImportSessionEnd>;

// The result of opening any source.
struct OpenedSource {
    TraceStorePtr store;    // null when there is nothing to show
    GrowingSource growing;  // with keepGrowing, when the source can grow
    std::string base;       // base name of the store
    bool imported = false;  // a store was made; counts tell of it
    bool inCache = false;   // the source's folder can't be written, so the store is in the cache directory
    ImportCounts counts;
    // What failed, in the system's own words, one sentence a line where it was more than one thing. A store
    // may be there all the same, holding what could be read. Nothing of it is printed here: the caller shows
    // it. What is wrong with single bytes and records goes to the console as it is met.
    Result trouble;
};

// Opens a store by its base name (no extension) or its .trs, or a source of any format (formats.h), which is
// imported first, beside the source or where options say; a folder of the source that can't be written falls
// back on the user's cache directory. Extensions are compared exactly: ".TRR" is refused with "Cannot open
// file.".
OpenedSource import_OpenSource(const std::string& name, const ImportOptions& options);

// What a further read of a growing source took in.
struct ReadOn {
    uint64_t events = 0;
    uint64_t unread = 0;  // bytes of a record that the source's present end cuts
    bool more = false;    // the time limit cut it short
    SourceExtent extent;  // how far the source is read
    // What went wrong; the events count all the same. Once the store has come to its end each read that finds
    // more says so.
    Result trouble;
};
// Reads what has been added to a growing source since into its store, for at most so many milliseconds (0 or
// below: no limit); a reader of the store then sees it after mt_RefreshIndex. A record that is cut by the
// source's present end is told on the console once; with a time limit, as of one read among many, only when
// nothing came to it since the read before.
ReadOn import_ReadOn(ImportSession& session, int64_t limitMs);
