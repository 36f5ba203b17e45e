// From a file name to a store: which kind of source it is, and what came of reading it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "libtrv/trace_store.h"
#include "shared/libcxxutil/progress.h"

// What an import counted. Nothing is lost without a number here.
struct ImportCounts {
    uint64_t events = 0;    // taken into the store
    uint64_t tooShort = 0;  // records dropped: below 16 bytes
    uint64_t tooLong = 0;   // records dropped: above 164 bytes
    uint64_t badBytes = 0;  // bytes where a record length was expected and none stood
    uint64_t refused = 0;   // events that the store could not take (disk full, four gigabytes)
    uint64_t unread = 0;    // bytes of a cut record at the end
    bool stopped = false;   // the user ended it
    uint64_t dropped() const { return tooShort + tooLong + refused; }
};

struct ImportOptions {
    std::string outputBase;    // where the store goes; empty: beside the source
    bool keepGrowing = false;  // a raw event file that may grow stays open to be read on
    Progress progress;         // bytes of the source
};

// A raw event file that is read on as it grows, with the writer of its store (raw_decoder.h).
struct RawSession;
struct RawSessionEnd {
    void operator()(RawSession* session) const;
};
using RawSessionPtr = std::unique_ptr<RawSession, RawSessionEnd>;

// The result of opening any source.
struct OpenedSource {
    TraceStorePtr store;    // null when there is nothing to show
    RawSessionPtr growing;  // with keepGrowing, when the source can grow
    std::string base;       // base name of the store
    bool imported = false;  // a store was made; counts tell of it
    bool inCache = false;   // the source's folder can't be written, so the store is in the cache directory
    ImportCounts counts;
    // Empty when all went well; else what failed, in the system's own words, one sentence a line. A store may
    // be there all the same, holding what could be read.
    // Nothing of it is printed here: the caller shows it. What is wrong with single bytes and records goes to
    // the console as it is met.
    std::string error;
};

// Opens a .trr (stream or log image), a .core, a .trs, or a store by its base name (no extension). A .trr or
// .core is imported first, beside the source or where options say; a folder that can't be written falls back
// on the user's cache directory. Extensions are compared exactly: ".TRR" is refused with "Cannot open file.".
OpenedSource import_OpenSource(const std::string& name, const ImportOptions& options);
// Reads what has been added to a growing source since, into its store; a reader of the store then sees it
// after mt_RefreshIndex. Events taken; why says what went wrong, else it is left alone.
uint64_t import_ReadOn(RawSession& session, std::string& why);
