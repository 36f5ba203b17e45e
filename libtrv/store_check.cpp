// Looking for damage ahead of need.
#include <algorithm>

#include "libtrv/block_reader.h"
#include "libtrv/store_index.h"
#include "libtrv/trace_store.h"
#include "libtrv/trace_store_impl.h"

namespace {

constexpr uint32_t blocks_at_once = 256;  // between two words of progress
constexpr uint64_t least_event = 18;      // bytes: no extra data, no change
constexpr size_t packet_head = 5;

bool go_on(const Progress& progress, uint32_t block, size_t blocks) {
    return block % blocks_at_once != 0 || !progress ||
           progress(static_cast<double>(block), static_cast<double>(blocks));
}

// True when the block is too small to be two, so that the index lacks none there: each would have a table of
// as many objects at least.
bool is_one_block(const TraceStore& store, uint32_t block, GFile& file) {
    const uint64_t from = store.blockOffsets[block], to = store.blockOffsets[block + 1];
    if (from == mt_UnknownOffset || to == mt_UnknownOffset) return false;
    const uint64_t events = 2 * least_event * store.checkpointInterval;
    if (to - from < events) return true;
    file.seek(from);
    if (file.u8() != mt_PacketObjectsUsed) return false;
    mt_SkipObjectsUsed(file);
    if (file.u8() != mt_PacketState) return false;
    const uint64_t objects = file.u32();
    const uint64_t entry = objects > 0 && file.fill(mt_EntryHead) ? load_be32(file.here() + 6) : 0;
    return to - from < events + 2 * (2 * packet_head + objects * (mt_KeySize + mt_EntryHead + entry));
}

}  // namespace

bool mt_CheckStore(TraceStore& store, const Progress& progress) {
    mt_RefreshIndex(store);
    if (store.blockTimes.empty()) return true;
    StateTable state;
    BlockReader reader(store);
    reader.CheckTables();
    if (!reader.StartNear(0, &state)) return true;
    EventRecord event;
    for (uint64_t heads = 0; reader.next(event);) {
        reader.TakeStateBehindGap();
        mt_ApplyEventToState(state, event);
        if (reader.heads() == heads) continue;
        heads = reader.heads();
        if (reader.block() == store.blockTimes.size()) index_Append(store, event.time, reader.HeadOffset());
        if (!go_on(progress, reader.block(), store.blockTimes.size())) return false;
    }
    return true;
}

bool mt_CheckNumbers(TraceStore& store, uint32_t events, const Progress& progress) {
    const size_t blocks = store.blockTimes.size();
    const auto file = store.events->View();
    BlockReader reader(store);
    for (uint32_t block = 0; block + 1 < blocks && block < events / store.checkpointInterval; ++block) {
        if (!go_on(progress, block, blocks)) return false;
        if (!is_one_block(store, block, *file) && reader.start(block, nullptr) == BlockReader::Head::Sound)
            reader.FinishBlock();
    }
    return true;
}
