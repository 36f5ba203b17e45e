// From raw records to store events. Every source ends here: a raw event file read once, one that still grows,
// a log image, a core file. The session is what lives between two reads of one source.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "chronoweave/import/byte_source.h"
#include "chronoweave/import/event_source_header.h"
#include "chronoweave/import/import.h"
#include "chronoweave/import/import_messages.h"
#include "libtrv/store_writer.h"
#include "shared/libcxxutil/progress.h"

constexpr size_t raw_MinLength = 16;  // bytes of a raw event
constexpr size_t raw_MaxLength = 164;
constexpr uint8_t raw_StreamMax = 0x52;  // longest record of a stream file

// Milliseconds of a clock that only goes forward.
int64_t raw_SteadyClock();

struct RawSession {
    std::unique_ptr<ByteSource> source;
    std::unique_ptr<StoreWriter> writer;
    EventSourceHeader header;
    uint64_t offset = 0;  // of the next unread record; 0: the header is still to be read
    mt_Time firstRawTime = 0;
    mt_Time lastRawTime = 0;
    // The store ends at the first event that it could not take: what comes behind is only counted, so that no
    // hole is left within it.
    Result storeEnd;
    uint64_t passed = 0;  // events behind the store's end
    Result trouble;       // what the last settling said
    // Of the whole session; those of the store are brought up to date by session_Settle.
    ImportCounts counts;
    ImportMessages messages;
    Progress progress;
    std::function<void(const char* text)> status;  // the status line; "" clears it
    int64_t (*clock)() = raw_SteadyClock;
    std::vector<uint8_t> buffer;
};

// Makes the writer of a source's store.
using WriterMaker = std::function<Result(const StoreFacts& facts, std::unique_ptr<StoreWriter>& writer)>;
// Opens the session's writer with the header's clock rate, name and byte order. A rate above 32 bits is told
// on the console and cut to its low word.
// The writer commits in groups; session_Settle commits the last.
Result session_OpenWriter(RawSession& session, const WriterMaker& make);

// Translates one raw event and appends it. False when it was dropped or refused; the session has counted it.
bool session_DecodeRecord(RawSession& session, std::span<const uint8_t> record);

// Commits what was appended, ends the messages of this read, and takes the store's counts into the session's.
// A failure that lost no event, but left the store's index or its keeping by the disk behind, is the result;
// lost events are counted as refused.
Result session_Settle(RawSession& session);
// The same, and closes the store's files.
Result session_Close(RawSession& session);
// One sentence on the events that the store did not take; empty when it took all.
std::string session_MissingEvents(const RawSession& session);

enum class ReadOnEnd {
    Done,      // nothing more to read now
    CutShort,  // the time limit ended it
    Stopped,   // the progress callback ended it
    Failed     // the source can't be read; told on the console
};
// Decodes stream records from session.offset on, and moves the offset past all that was consumed. limitMs of
// 0 or below: no limit. A record cut by the source's end is not consumed; without a limit its bytes are
// counted as unread.
ReadOnEnd session_ReadOn(RawSession& session, int64_t limitMs);

// What a raw event file turns out to hold.
enum class RawKind {
    Nothing,  // no header yet
    Stream,   // records behind the header; session.offset is set
    LogImage,
    Core,
    BadFormat,
    Unsupported  // another operating system
};
// Reads the header of session.source into session.header.
RawKind session_ReadHeader(RawSession& session);
