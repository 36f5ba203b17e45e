#include "libtrv/trace_store.h"

#include <algorithm>
#include <cstring>

#include "libtrv/trace_store_impl.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr size_t index_record = 13;
constexpr uint8_t record_type = 1;

enum class IndexScan { Whole, BadRecord };

// Reads records from the index file's position on and appends them; indexTail is then behind the last one.
IndexScan read_index(TraceStore& store) {
    GFile& file = *store.index;
    const size_t before = store.blockTimes.size();
    uint64_t end = file.tell();
    while (file.fill(1) && *file.here() != 0) {
        if (*file.here() != record_type) {
            store.blockTimes.resize(before);
            store.blockOffsets.resize(before);
            return IndexScan::BadRecord;
        }
        if (!file.fill(index_record)) break;
        const uint8_t* record = file.step(index_record);
        store.blockTimes.push_back(load_be64(record + 1));
        store.blockOffsets.push_back(load_be32(record + 9));
        end += index_record;
    }
    store.indexTail = end;
    return IndexScan::Whole;
}

void read_version(TraceStore& store) {
    GFile& file = *store.version;
    store.formatVersion = file.u8();
    store.ticksPerSecond = file.u32();
    store.osName = file.block(file.u32());
    store.bigEndian = file.u8() != 0;
    store.checkpointInterval = mt_CheckpointInterval;
    if (store.formatVersion >= 2) {
        const uint32_t interval = file.u32();
        if (interval > 0) store.checkpointInterval = interval;
    }
}

TraceStorePtr refuse(std::string* why, std::string reason) {
    if (why) *why = std::move(reason);
    return nullptr;
}

// Takes in what the open files say; the store or, when they can't be a store, null.
TraceStorePtr finish_open(TraceStorePtr store, std::string* why) {
    read_version(*store);
    const uint64_t records = store->index->device().size() / index_record;
    store->blockTimes.reserve(records);
    store->blockOffsets.reserve(records);
    if (read_index(*store) == IndexScan::BadRecord)
        return refuse(why, store->base + ".tri: a record of the index has an unknown type");
    return store;
}

}  // namespace

void TraceStoreDeleter::operator()(TraceStore* store) const {
    mt_Close(store);
}

TraceStorePtr mt_OpenForRead(const std::string& base, std::string* why) {
    TraceStorePtr store(new TraceStore);
    store->base = base;
    std::string reason;
    if (!(store->version = GFile::OpenForRead(base + ".trv", reason))) return refuse(why, reason);
    if (!(store->events = GFile::OpenForRead(base + ".trs", reason))) return refuse(why, reason);
    if (!(store->index = GFile::OpenForRead(base + ".tri", reason))) return refuse(why, reason);
    return finish_open(std::move(store), why);
}

TraceStorePtr mt_OpenOnDevices(std::unique_ptr<FileDevice> version, std::unique_ptr<FileDevice> events,
                               std::unique_ptr<FileDevice> index, const std::string& base, std::string* why) {
    TraceStorePtr store(new TraceStore);
    store->base = base;
    std::string reason;
    store->version = GFile::OpenOnDevice(std::move(version), base + ".trv", reason);
    if (!store->version) return refuse(why, reason);
    store->events = GFile::OpenOnDevice(std::move(events), base + ".trs", reason);
    if (!store->events) return refuse(why, reason);
    store->index = GFile::OpenOnDevice(std::move(index), base + ".tri", reason);
    if (!store->index) return refuse(why, reason);
    return finish_open(std::move(store), why);
}

TraceStorePtr mt_OpenForReadByDataFile(const std::string& name, std::string* why) {
    if (name.size() < 4) return refuse(why, name + ": not the name of a .trs file");
    return mt_OpenForRead(name.substr(0, name.size() - 4), why);
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

void mt_RefreshIndex(TraceStore& store) {
    store.index->seek(store.indexTail);
    read_index(store);  // a bad record changes nothing
}

mt_LastBlock mt_ScanLastBlock(TraceStore& store) {
    mt_LastBlock last;
    if (store.blockOffsets.empty()) return last;
    GFile& file = *store.events;
    file.seek(store.blockOffsets.back());
    EventRecord event;
    for (;;) {
        store.tail = file.tell();
        if (!file.fill(1)) return last;
        bool whole = true;
        switch (file.u8()) {
            case mt_PacketEnd:
                return last;
            case mt_PacketEvent:
                whole = mt_ReadEvent(file, event);
                if (whole) {
                    ++last.events;
                    last.lastTime = event.time;
                }
                break;
            case mt_PacketState:
                whole = mt_SkipStateTable(file);
                break;
            case mt_PacketObjectsUsed:
                mt_SkipObjectsUsed(file);
                break;
            default:
                return {};
        }
        if (!whole) return last;
    }
}

mt_Range mt_GetTimeRange(TraceStore& store) {
    mt_RefreshIndex(store);
    const mt_LastBlock last = mt_ScanLastBlock(store);
    const mt_Time first = store.blockTimes.empty() ? 0 : store.blockTimes.front();
    return {first, (last.events == 0 ? first : last.lastTime) + 1};
}

uint32_t mt_GetEventCount(TraceStore& store) {
    mt_RefreshIndex(store);
    const uint32_t tail = mt_ScanLastBlock(store).events;
    const auto blocks = static_cast<uint32_t>(store.blockTimes.size());
    return blocks == 0 ? tail : (blocks - 1) * store.checkpointInterval + tail;
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
