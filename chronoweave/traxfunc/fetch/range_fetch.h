// The fetch: from a time range of the store to items. One walk over the events of the range; nothing of an
// event is kept but its icon, and texts are decoded when they are shown.
//
// A fetch that came to the end of the trace stays: when the trace has grown it goes on where it stopped, and
// what lies left of the view is dropped. Both leave the items as a fetch of the whole new range would give
// them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "chronoweave/traxfunc/fetch/fetch.h"
#include "chronoweave/traxfunc/fetch/left_side.h"
#include "chronoweave/traxfunc/fetch/sweep.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/source.h"
#include "shared/libcxxutil/progress.h"

// Rows of event codes, asked of the legend once per code and fetch, so that an unknown code is reported once.
class EventRows {
  public:
    explicit EventRows(const Legend& legend) : legend_(legend), slots_(1024) {}
    int32_t of(uint16_t type, uint16_t subtype) {
        const uint32_t code = uint32_t{type} << 16 | subtype;
        Slot& slot = slots_[(code * 0x9E3779B1u) >> 22];
        if (slot.row == -2 || slot.code != code) slot = {code, legend_.EventIndex(type, subtype)};
        return slot.row;
    }

  private:
    struct Slot {
        uint32_t code = 0;
        int32_t row = -2;
    };
    const Legend& legend_;
    std::vector<Slot> slots_;
};

// What going on added to the items.
struct laFetchGrowth {
    double from = 0;     // the items of earlier times are as they were, but for what reaches to here
    bool lanes = false;  // lanes came, moved or got a name: the rows are to be made anew
};

class LaFetch {
  public:
    // All outlive the fetch, and so does the source's store, once Run was called.
    LaFetch(LaItems& items, const LaSource& source, const LaLooks& looks, const LaList& list);
    LaFetch(const LaFetch&) = delete;
    LaFetch& operator=(const LaFetch&) = delete;

    // Fills items, which are empty, for the range; once. progress is told and may stop the fetch: the items
    // then end where it stopped, and so does the cached range. False when the store gave nothing; the items
    // are then empty.
    bool Run(laFetchRange range, const Progress& progress);

    // Whether the items, which nobody else changed, once ended where the trace did, and the fetch can go on
    // where it is now.
    bool CanExtend() const;
    // Goes on up to high, or to where the trace ends now, which may be nowhere further; the cached range ends
    // there then. progress may stop it as in Run. Nothing when that can't be done: the items are then of no
    // use, and are to be fetched anew. Only when CanExtend.
    std::optional<laFetchGrowth> Extend(double high, const Progress& progress);
    // Drops what lies left of a time within the cached range, which begins there then, or up to a tick
    // earlier. Only when the fetch could be extended last.
    laLeftDrop DropLeft(double low);

  private:
    enum class Ended { AtRangeEnd, Stopped, Damaged };
    bool Begin(EventWalk& walk);
    double TakeRange(EventWalk& walk, const Progress& progress);
    double EndAhead(const mt_Gap& gap) const;
    void Bridge(const mt_Gap& gap, double time);
    bool GoOn(uint32_t count, double time, const Progress& progress) const;
    bool ContinueWalk();
    Ended TakeRest(uint64_t end, const Progress& progress, laFetchGrowth& growth);
    void Warm() const;
    bool MakesLanes(const EventRecord& event) const;
    bool IsNew(uint32_t objectId) const;
    void AddLanes(uint32_t sequence, uint64_t end);
    void InsertLanes(const std::vector<uint32_t>& objects);
    void TouchChanged(const EventRecord& event);
    void Step(double time, uint32_t sequence);
    void Take(const EventRecord& event, double time);
    uint32_t NamedLanes() const;
    bool Executing(const laItem_Line& lane) const {
        return lane.openStatus >= 0 && looks_.statusLooks[static_cast<size_t>(lane.openStatus)].isExecution;
    }

    LaItems& items_;
    const LaSource& source_;
    const LaLooks& looks_;
    const LaList& list_;
    laFetchRange range_;
    EventRows rows_;
    StateTable state_;
    LaneSweep sweep_;
    EventWalk walk_;        // behind the last event taken, once the fetch went on
    uint32_t next_ = 0;     // number of the event behind the last one taken; 0 while none was
    uint32_t ordered_ = 0;  // lanes that are in the order of their objects; those behind, of their icons
    uint32_t version_ = 0;  // of the items, as the fetch left them
    bool open_ = false;     // the range ended where the trace did, and nothing stopped or broke it since
    bool deleted_ = false;  // an object was: who has a lane is then the fetch's to say
};
