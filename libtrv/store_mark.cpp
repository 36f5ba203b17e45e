#include "libtrv/store_mark.h"

#include <algorithm>

#include "libtrv/trace_store_impl.h"

StoreMark::StoreMark(const StoreFacts& facts) {
    mix(facts.ticksPerSecond);
    for (const char c : facts.osName) mix(static_cast<uint8_t>(c));
    mix(facts.bigEndianTarget ? 1 : 0);
    mix(facts.checkpointInterval);
}

uint64_t mt_MarkOf(const TraceStore& store, uint32_t events) {
    StoreMark mark(StoreFacts{store.ticksPerSecond, store.osName, store.bigEndian, store.checkpointInterval});
    const uint64_t interval = std::max(1u, store.checkpointInterval);
    const uint64_t blocks = std::min<uint64_t>((events + interval - 1) / interval, store.blockTimes.size());
    for (size_t block = 0; block < blocks; ++block)
        mark.Add(store.blockTimes[block], store.blockOffsets[block]);
    return mark.value();
}
