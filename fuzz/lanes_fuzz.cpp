// A lane index file. Its check sums are put right first, so that what lies behind them is reached.
#include <algorithm>

#include "chronoweave/engine/lanes/lane_table.h"
#include "chronoweave/engine/lanes/lane_walk.h"
#include "fuzz/support.h"
#include "libtrv/byte_order.h"
#include "libtrv/test_store.h"

namespace {

// The sums of the blocks as far as their lengths lead.
void put_right(Bytes& bytes) {
    for (size_t at = mt_HeaderSize + 1; at + lane_HeadBytes <= bytes.size();) {
        uint8_t* head = bytes.data() + at;
        const std::span<const uint8_t> rest = std::span<const uint8_t>(bytes).subspan(at + lane_HeadBytes);
        size_t part = 0;
        for (uint8_t* of = head + 32; of != head + lane_HeadBytes - 8; of += 12) {
            const size_t bytes = load_be32(of);
            if (bytes > rest.size() - part) return;
            store_be64(of + 4, lane_CheckSum(rest.subspan(part, bytes)));
            part += bytes;
        }
        store_be64(head + lane_HeadBytes - 8, lane_CheckSum({head, lane_HeadBytes - 8}));
        at += lane_HeadBytes + part + column_Slack + 1;
    }
}

// What a walk gives is in order, with one change of a status at least where it was given for that.
void walk(LaneIndex& index, LaneWants wants, LaneWalk::Stop stop) {
    StateTable state;
    const uint32_t end = index.EndEvent(), first = 1 + (end - 1) / 3;
    LaneWalk walk(index, false, first, end, std::move(wants), &state);
    EventRecord event;
    uint32_t sequence = first;
    for (mt_Time time = 0; walk.next(event, stop); ++sequence) {
        fuzz_Check(event.sequence >= sequence && event.sequence < end && event.time >= time);
        time = event.time;
        sequence = event.sequence;
        mt_ApplyEventToState(state, event);
    }
    fuzz_Check(walk.position() <= end && (walk.position() == end || !index.damage().ok()));
}

// Whatever is read of lanes lies within what there is.
void read_lanes(LaneIndex& index) {
    const LaneTable table(index);
    const uint32_t end = table.EndEvent();
    for (uint32_t lane = 0; lane < table.size(); ++lane) {
        LaneReader reader(table, lane);
        for (uint32_t n = 0; n < std::min(reader.StatusCount(), 500u); ++n)
            fuzz_Check(reader.status(n).sequence < end && reader.status(n).state <= lane_Absent);
        for (uint32_t n = 0; n < reader.EventCount(); ++n) fuzz_Check(reader.event(n).sequence < end);
        for (const mt_Time tick : {mt_Time{0}, mt_Time{50}, mt_Time{5000}})
            fuzz_Check(reader.FirstStatusFrom(tick) <= reader.StatusCount() &&
                       reader.FirstEventFrom(tick) <= reader.EventCount());
        fuzz_Check(reader.FirstEventAt(end / 2) <= reader.EventCount() && table.FirstSeen(lane) <= end);
        static_cast<void>(table.Names(lane));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    Bytes bytes(data, data + size);
    put_right(bytes);
    std::unique_ptr<LaneIndex> index;
    if (!LaneIndex::OfBytes(bytes, index).ok()) return 0;
    LaneWants all;
    all.changes = LaneWants::Changes::Given;
    all.kind = [](uint16_t type, uint16_t) { return type % 2 == 0; };
    all.object = [](uint32_t object) { return object % 3 != 0; };
    walk(*index, {LaneWants::Changes::Given, {}, {}}, LaneWalk::Stop::Wanted);
    walk(*index, all, LaneWalk::Stop::Every);
    walk(*index, std::move(all), LaneWalk::Stop::Wanted);
    const uint32_t end = index->EndEvent();
    read_lanes(*index);
    static_cast<void>(index->Count(1, end, [](uint32_t, uint32_t, uint64_t) {}));
    static_cast<void>(index->Count(1 + end / 3, end, [](uint32_t, uint32_t, uint64_t) {}));
    for (const mt_Time tick : {mt_Time{0}, mt_Time{50}, mt_Time{5000}})
        fuzz_Check(index->FirstFrom(tick).value_or(end) <= end);
    return 0;
}
