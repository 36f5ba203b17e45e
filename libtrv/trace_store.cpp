#include "libtrv/trace_store.h"

#include <algorithm>
#include <cstring>

#include "libtrv/block_reader.h"
#include "libtrv/store_index.h"
#include "libtrv/trace_store_impl.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr uint32_t most_interval = uint32_t{1} << 31;
constexpr mt_Time late_times = mt_Time{1} << 63;

TraceStorePtr refuse(Result* trouble, Result failure) {
    if (trouble) *trouble = std::move(failure);
    return nullptr;
}

void note_version(TraceStore& store, std::string what, std::string cost) {
    store.damage.note(
        mt_DamageKind::VersionFile, 0, 1,
        Result::failure(std::move(what), mt_PlaceText(store.version->name(), store.version->tell()),
                        std::move(cost)));
}

// The events of the first block, whatever the interval says.
uint32_t count_first_block(TraceStore& store) {
    if (store.blockOffsets.empty()) return 0;
    const uint64_t end = store.blockOffsets.size() > 1 ? store.blockOffsets[1] : UINT64_MAX;
    const auto file = store.events->View();
    file->seek(store.blockOffsets[0]);
    uint32_t events = 0;
    EventRecord event;
    while (file->tell() < end && file->fill(1)) {
        const uint8_t type = file->u8();
        if (type == mt_PacketEvent && mt_ReadEvent(*file, event))
            ++events;
        else if (type == mt_PacketState && file->u32() == 0 && events == 0)
            continue;
        else if (type == mt_PacketObjectsUsed && events == 0)
            mt_SkipObjectsUsed(*file);
        else
            break;
    }
    return events;
}

// An interval that can't be is taken from the stream.
void check_interval(TraceStore& store) {
    const uint32_t interval = store.checkpointInterval;
    if (interval > 0 && interval < most_interval) return;
    const uint32_t counted = count_first_block(store);
    store.checkpointInterval =
        store.blockOffsets.size() > 1 && counted > 0 ? counted : std::max(counted, mt_CheckpointInterval);
    note_version(store, "a checkpoint interval of " + std::to_string(interval) + " events",
                 "taken as " + std::to_string(store.checkpointInterval));
}

Result read_version(TraceStore& store) {
    GFile& file = *store.version;
    store.formatVersion = file.u8();
    store.ticksPerSecond = file.u32();
    store.osName = file.block(file.u32());
    store.bigEndian = file.u8() != 0;
    store.checkpointInterval = store.formatVersion >= 2 ? file.u32() : mt_CheckpointInterval;
    if (file.error() != 0) return Result::system(file.name(), file.error());
    if (!file.AtEnd()) return {};
    store.checkpointInterval = mt_CheckpointInterval;
    store.ticksPerSecond = std::max(1u, store.ticksPerSecond);
    note_version(store, "the file ends within what it has to say",
                 "clock, system, byte order and checkpoint interval are in doubt");
    return {};
}

void tell_late_times(TraceStore& store, mt_Time latest) {
    if (latest < late_times || store.toldOfLateTimes) return;
    store.toldOfLateTimes = true;
    gen_warning("%s: times of 2^63 ticks and more come ahead of all others in ranges",
                store.events->name().c_str());
}

// Takes in what the open files say; the store or, when they can't be a store, null.
TraceStorePtr finish_open(TraceStorePtr store, Result* trouble) {
    if (const Result read = read_version(*store); !read) return refuse(trouble, read);
    if (index_Read(*store) == IndexScan::BadRecord)
        return refuse(trouble, Result::failure("a record of the index has an unknown type",
                                               mt_PlaceText(store->index->name(), store->indexTail)));
    check_interval(*store);
    if (!store->blockTimes.empty())
        tell_late_times(*store, *std::max_element(store->blockTimes.begin(), store->blockTimes.end()));
    return store;
}

}  // namespace

void TraceStoreDeleter::operator()(TraceStore* store) const {
    mt_Close(store);
}

TraceStorePtr mt_OpenForRead(const std::string& base, Result* trouble) {
    TraceStorePtr store(new TraceStore);
    store->base = base;
    for (const auto& [file, extension] :
         {std::pair{&store->version, ".trv"}, std::pair{&store->events, ".trs"},
          std::pair{&store->index, ".tri"}})
        if (const Result opened = GFile::OpenForRead(base + extension, *file); !opened)
            return refuse(trouble, opened);
    return finish_open(std::move(store), trouble);
}

TraceStorePtr mt_OpenOnDevices(std::unique_ptr<FileDevice> version, std::unique_ptr<FileDevice> events,
                               std::unique_ptr<FileDevice> index, const std::string& base, Result* trouble) {
    TraceStorePtr store(new TraceStore);
    store->base = base;
    const auto open = [&](std::unique_ptr<FileDevice> device, const char* extension,
                          std::unique_ptr<GFile>& file) {
        return GFile::OpenOnDevice(std::move(device), base + extension, file);
    };
    Result opened = open(std::move(version), ".trv", store->version);
    if (opened) opened = open(std::move(events), ".trs", store->events);
    if (opened) opened = open(std::move(index), ".tri", store->index);
    return opened ? finish_open(std::move(store), trouble) : refuse(trouble, opened);
}

TraceStorePtr mt_OpenForReadByDataFile(const std::string& name, Result* trouble) {
    if (name.size() < 4) return refuse(trouble, Result::failure("not the name of a .trs file", name));
    return mt_OpenForRead(name.substr(0, name.size() - 4), trouble);
}

void mt_Close(TraceStore* store) {
    delete store;
}

bool mt_FlushFiles(TraceStore* store) {
    if (!store) return true;
    bool kept = true;
    for (GFile* file : {store->version.get(), store->events.get(), store->index.get()})
        if (file) kept = file->device().sync() == 0 && kept;
    return kept;
}

uint64_t mt_GetTicksPerSecond(const TraceStore& store) {
    return store.ticksPerSecond;
}
const char* mt_GetOsName(const TraceStore* store) {
    return store ? store->osName.c_str() : nullptr;
}
bool mt_IsBigEndianTarget(const TraceStore& store) {
    return store.bigEndian;
}
uint32_t mt_GetFormatVersion(const TraceStore& store) {
    return store.formatVersion;
}
uint32_t mt_GetCheckpointInterval(const TraceStore& store) {
    return store.checkpointInterval;
}
uint32_t mt_GetBlockCount(const TraceStore& store) {
    return static_cast<uint32_t>(store.blockTimes.size());
}
mt_Time mt_GetBlockTime(const TraceStore& store, uint32_t block) {
    return block < store.blockTimes.size() ? store.blockTimes[block] : 0;
}
const std::string& mt_GetBaseName(const TraceStore& store) {
    return store.base;
}

std::vector<Result> mt_TakeDamage(TraceStore& store) {
    return store.damage.take();
}
bool mt_IsDamaged(const TraceStore& store) {
    return !store.damage.empty();
}

void mt_RefreshIndex(TraceStore& store) {
    index_Refresh(store);
}

namespace {

// The last block whose place is in the file, as far as is known.
uint32_t last_block_in_file(TraceStore& store) {
    const uint64_t size = store.events->device().size();
    auto block = static_cast<uint32_t>(store.blockOffsets.size() - 1);
    while (block > 0 && (store.blockOffsets[block] >= size || store.blockOffsets[block] == mt_UnknownOffset))
        --block;
    return block;
}

void read_to_end(TraceStore& store) {
    EventRecord event;
    while (store.tailReader->next(event)) {
    }
}

// Whether the tail reader stands at the end mark still.
bool is_at_end(TraceStore& store) {
    uint8_t mark[1] = {mt_PacketEvent};
    return store.tailReader && !store.tailReader->IsBroken() &&
           store.tailReader->block() + 1 >= store.blockOffsets.size() &&
           store.events->device().ReadAt(store.tailReader->position(), mark) == 1 && mark[0] == mt_PacketEnd;
}

// Brings the tail reader to the last event that can be read.
void read_tail(TraceStore& store) {
    if (store.blockTimes.empty() || is_at_end(store)) return;
    if (store.tailReader) read_to_end(store);
    if (!store.tailReader || store.tailReader->IsBroken()) {
        store.tailReader = std::make_unique<BlockReader>(store);
        // A block that gives no event leaves the last one to the block before.
        for (uint32_t block = last_block_in_file(store);; --block) {
            const bool started = store.tailReader->StartNear(block, nullptr);
            const uint32_t before = store.tailReader->sequence();
            if (started) read_to_end(store);
            if (store.tailReader->sequence() > before || block == 0) break;
            block = std::min(block, store.tailReader->FirstBlock());
            if (block == 0) break;
        }
    }
    const BlockReader& reader = *store.tailReader;
    store.tail = reader.IsBroken() ? store.events->device().size() : reader.position();
    tell_late_times(store, reader.LastTime());
}

}  // namespace

mt_LastBlock mt_ScanLastBlock(TraceStore& store) {
    read_tail(store);
    if (!store.tailReader) return {};
    const BlockReader& reader = *store.tailReader;
    const uint64_t before = (store.blockTimes.size() - 1) * uint64_t{store.checkpointInterval};
    if (reader.sequence() <= before) return {};
    return {static_cast<uint32_t>(reader.sequence() - before), reader.LastTime()};
}

mt_Range mt_GetTimeRange(TraceStore& store) {
    mt_RefreshIndex(store);
    read_tail(store);
    const mt_Time first = store.blockTimes.empty() ? 0 : store.blockTimes.front();
    const bool any = store.tailReader && store.tailReader->sequence() > 0;
    return {first, (any ? store.tailReader->LastTime() : first) + 1};
}

uint32_t mt_GetEventCount(TraceStore& store) {
    mt_RefreshIndex(store);
    read_tail(store);
    return store.tailReader ? store.tailReader->sequence() : 0;
}

bool mt_HasNewData(TraceStore& store) {
    store.events->seek(store.tail);
    return store.events->u8() != 0;
}

uint32_t mt_BlockOfTime(const TraceStore& store, mt_Time t) {
    const auto later = std::partition_point(store.blockTimes.begin(), store.blockTimes.end(),
                                            [&](mt_Time first) { return mt_Earlier(first, t); });
    const auto count = static_cast<uint32_t>(later - store.blockTimes.begin());
    return count == 0 ? 0 : count - 1;
}
