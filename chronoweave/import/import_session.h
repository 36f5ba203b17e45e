// From a source's records to store events. Every source ends here, whatever its format, be it read once or
// read on as it grows. The session is what lives between two reads of one source: the source, the writer of
// its store, and where its times begin.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "chronoweave/engine/lanes/lane_feed.h"
#include "chronoweave/import/import.h"
#include "chronoweave/import/source/source.h"
#include "libtrv/store_writer.h"
#include "shared/libcxxutil/progress.h"
#include "shared/libcxxutil/result.h"

// Milliseconds of a clock that only goes forward.
int64_t import_SteadyClock();

// Makes the writer of a source's store.
using WriterMaker = std::function<Result(const StoreFacts& facts, mt_EventCallback tracker,
                                         std::unique_ptr<StoreWriter>& writer)>;

enum class ReadEnd {
    Done,      // nothing more to read now
    CutShort,  // the time limit ended it
    Stopped,   // the progress callback ended it
    Failed     // the source can't be read on; its damage says why
};

class ImportSession {
  public:
    ImportSession() = default;
    ImportSession(const ImportSession&) = delete;
    ImportSession& operator=(const ImportSession&) = delete;
    // Commits and closes without a word.
    ~ImportSession();

    Progress progress;  // of the look ahead and the reading together; asked only without a time limit
    std::function<void(const char* text)> status;  // the status line; "" clears it
    int64_t (*clock)() = import_SteadyClock;
    bool tellsCutRecords = true;  // on the console, each once; not where more is sure to come

    // Takes the source over and makes its store, with a checkpoint every so many events; 0: as the number of
    // objects asks that a look ahead finds. A clock rate above 32 bits is told on the console and cut to its
    // low word. Where progress stopped the look, no store is made, the failure says nothing, and the counts
    // say that it was stopped.
    Result open(std::unique_ptr<EventSource> source, uint32_t checkpoint, const WriterMaker& make);
    // Makes a lane index beside the store, of so many events a block; 0 for none. Called ahead of any read.
    void IndexLanes(uint32_t blockEvents);
    // Takes in records until there are no more, or the limit is over (milliseconds; 0 or below: none), and
    // commits them. A record cut by the source's end is not consumed.
    ReadEnd read(int64_t limitMs);
    // Commits what was taken and closes the store's files, then the lane index.
    Result close();

    EventSource& source() const { return *source_; }
    // Whether the last read came to an end behind which more may follow.
    bool MayGrow() const { return mayGrow_; }
    // Null before open and when that failed.
    const StoreWriter* writer() const { return writer_.get(); }
    // Of the whole session, up to the last read.
    const ImportCounts& counts() const { return counts_; }
    // A failure of the last read or of close that lost no event, but left the store's index or its keeping by
    // the disk behind.
    const Result& trouble() const { return trouble_; }
    // One sentence on the events that the store did not take; empty when it took all. A store ends at the
    // first of them: what comes behind is only counted, so that no hole is left within it.
    std::string MissingEvents() const;

  private:
    std::optional<uint32_t> LookOver();
    bool tell(double done, double total, double from, double to) const;
    ReadEnd TakeRecords(int64_t limitMs);
    std::optional<ReadEnd> pause(bool limited, int64_t deadline) const;
    void take(const SourceRecord& record);
    mt_Time StoreTime(mt_Time t);
    void EndStore(const Result& why);
    Result settle(Result (StoreWriter::*step)());
    void TellCut(int64_t limitMs);

    std::unique_ptr<EventSource> source_;
    std::unique_ptr<LaneFeed> lanes_;
    std::unique_ptr<StoreWriter> writer_;  // tells the lanes, so it goes ahead of them
    mt_Time firstRawTime_ = 0, lastRawTime_ = 0;
    double lookedShare_ = 0;  // of all that progress is told, what the look ahead was
    bool mayGrow_ = false;
    bool toldFarTime_ = false;
    uint64_t toldCutAt_ = UINT64_MAX;
    uint64_t cutAt_ = UINT64_MAX, cutBytes_ = 0;  // the cut record that the last read ended at
    Result storeEnd_;
    uint64_t passed_ = 0;  // events behind the store's end
    Result trouble_;
    ImportCounts counts_;
};
