#include "libtrv/store_index.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "libtrv/block_reader.h"
#include "libtrv/trace_store_impl.h"

namespace {

constexpr size_t record_size = 13;
constexpr uint8_t record_type = 1;
constexpr size_t most_looked_at = size_t{1} << 20;  // bytes behind the end mark

struct Record {
    uint32_t number;
    mt_Time time;
    uint64_t offset;
};

enum class ScanEnd { Mark, EndOfFile, BadRecord };

void note(TraceStore& store, uint64_t offset, std::string what, std::string reason) {
    const auto block = static_cast<uint32_t>((offset - mt_HeaderSize) / record_size);
    store.damage.note(
        mt_DamageKind::IndexFile, block, block + 1,
        Result::failure(std::move(what), mt_PlaceText(store.index->name(), offset), std::move(reason)));
}

// Records from the tail on, where the file stands, are appended, but for those that were made anew already;
// the tail is then behind the last one.
ScanEnd scan(TraceStore& store) {
    GFile& file = *store.index;
    for (size_t number = (store.indexTail - mt_HeaderSize) / record_size; file.fill(1); ++number) {
        if (*file.here() == mt_PacketEnd) return ScanEnd::Mark;
        if (*file.here() != record_type) return ScanEnd::BadRecord;
        if (!file.fill(record_size)) break;
        const uint8_t* record = file.step(record_size);
        if (number >= store.blockTimes.size()) {
            store.blockTimes.push_back(load_be64(record + 1));
            store.blockOffsets.push_back(load_be32(record + 9));
        }
        store.indexTail += record_size;
    }
    return ScanEnd::EndOfFile;
}

// With what stands there now.
ScanEnd scan_again(TraceStore& store) {
    uint8_t mark[1] = {record_type};
    if (store.index->device().ReadAt(store.indexTail, mark) == 1 && mark[0] == mt_PacketEnd)
        return ScanEnd::Mark;
    store.index->seek(store.indexTail);
    return scan(store);
}

// The number of records, from a number on, that stand in order; the one ahead of a break is in doubt too.
// The first block stands behind the header.
uint32_t in_order(const TraceStore& store, uint32_t from) {
    if (!store.blockOffsets.empty() && store.blockOffsets[0] != mt_HeaderSize) return 0;
    for (size_t i = std::max(from, 1u); i < store.blockTimes.size(); ++i)
        if (store.blockOffsets[i] <= store.blockOffsets[i - 1] ||
            store.blockTimes[i] < store.blockTimes[i - 1])
            return static_cast<uint32_t>(i - 1);
    return static_cast<uint32_t>(store.blockTimes.size());
}

// The records of the bytes behind the end mark, by the places that they have in the file, when they are there
// because the mark is none: they lead to the end of the file, and what stands at the mark is no record.
std::vector<Record> behind_mark(const TraceStore& store) {
    if (store.index->EndsWithin(2 * record_size - 1)) return {};
    const uint64_t size = store.index->device().size(), mark = store.indexTail;
    if (size < mark + 2 * record_size || size - mark > most_looked_at) return {};
    std::vector<uint8_t> bytes(static_cast<size_t>(size - mark));
    if (store.index->device().ReadAt(mark, bytes) != static_cast<int64_t>(bytes.size())) return {};
    mt_Time last = store.blockTimes.empty() ? 0 : store.blockTimes.back();
    uint64_t offset = store.blockOffsets.empty() ? 0 : store.blockOffsets.back();
    std::vector<Record> records;
    for (size_t at = 0; at + record_size <= bytes.size(); at += record_size) {
        const uint8_t* record = bytes.data() + at;
        const Record one{static_cast<uint32_t>((mark + at - mt_HeaderSize) / record_size),
                         load_be64(record + 1), load_be32(record + 9)};
        const bool follows = one.time >= last && one.offset > offset;
        if (at == 0 && follows) return {};
        if (record[0] != record_type || !follows) continue;
        last = one.time;
        offset = one.offset;
        records.push_back(one);
    }
    return bytes.back() == mt_PacketEnd && !records.empty() ? records : std::vector<Record>{};
}

std::vector<Record> records_from(const TraceStore& store, uint32_t first) {
    std::vector<Record> records;
    for (size_t i = first; i < store.blockTimes.size(); ++i)
        records.push_back({static_cast<uint32_t>(i), store.blockTimes[i], store.blockOffsets[i]});
    return records;
}

// The first block always stands behind the header, and its two tables are empty.
bool append_first_block(TraceStore& store) {
    constexpr size_t head = 11;
    const auto file = store.events->View();
    file->seek(mt_HeaderSize);
    if (!file->fill(head + 8) || *file->here() != mt_PacketObjectsUsed) return false;
    index_Append(store, load_be64(file->here() + head), mt_HeaderSize);
    return true;
}

// Enters the blocks that the reader comes to. The reader stands in the last block that is known.
void enter_blocks(TraceStore& store, BlockReader& reader) {
    EventRecord event;
    for (uint64_t heads = reader.heads(); reader.next(event);) {
        if (reader.heads() == heads) continue;
        heads = reader.heads();
        if (reader.block() == store.blockTimes.size()) index_Append(store, event.time, reader.HeadOffset());
    }
}

// Starts behind damage of the stream, at the first of the old records that leads to a block.
bool start_at_record(TraceStore& store, BlockReader& reader, const std::vector<Record>& records) {
    const uint64_t reached = reader.position();
    for (const Record& record : records) {
        if (record.number < store.blockTimes.size() || record.offset <= reached) continue;
        const size_t known = store.blockTimes.size();
        while (store.blockTimes.size() < record.number) index_Append(store, record.time, mt_UnknownOffset);
        index_Append(store, record.time, record.offset);
        if (reader.start(record.number, nullptr) == BlockReader::Head::Sound) return true;
        store.blockTimes.resize(known);
        store.blockOffsets.resize(known);
    }
    return false;
}

// Drops the records from a number on and reads the stream instead; where that is damaged too, the old records
// help on. The result is how many blocks were found.
uint32_t rebuild(TraceStore& store, uint32_t good, const std::vector<Record>& records) {
    store.blockTimes.resize(good);
    store.blockOffsets.resize(good);
    if (good == 0 && !append_first_block(store)) return 0;
    BlockReader reader(store);
    bool reading = reader.StartNear(static_cast<uint32_t>(store.blockTimes.size() - 1), nullptr);
    while (reading) {
        enter_blocks(store, reader);
        reading = reader.gap() && start_at_record(store, reader, records);
    }
    return static_cast<uint32_t>(store.blockTimes.size()) - good;
}

void rebuild_and_note(TraceStore& store, uint32_t good, const std::vector<Record>& records, uint64_t offset,
                      std::string what, int error) {
    const uint32_t found = rebuild(store, good, records);
    std::string cost = std::to_string(found) + " blocks were found in the stream instead";
    if (error != 0) cost = std::string(std::strerror(error)) + "; " + cost;
    note(store, offset, std::move(what), std::move(cost));
}

uint64_t place_of(uint32_t record) {
    return mt_HeaderSize + uint64_t{record} * record_size;
}

}  // namespace

void index_Append(TraceStore& store, mt_Time time, uint64_t offset) {
    store.blockTimes.push_back(time);
    store.blockOffsets.push_back(offset);
}

IndexScan index_Read(TraceStore& store) {
    store.indexTail = mt_HeaderSize;
    const uint64_t most = store.index->device().size() / record_size;
    store.blockTimes.reserve(most);
    store.blockOffsets.reserve(most);
    ScanEnd end = scan(store);  // the file stands behind its header
    // A writer may just have been about to append.
    if (end == ScanEnd::EndOfFile) end = scan_again(store);
    if (end == ScanEnd::BadRecord) return IndexScan::BadRecord;
    const int error = end == ScanEnd::EndOfFile ? store.index->error() : 0;
    const uint32_t count = static_cast<uint32_t>(store.blockTimes.size()), good = in_order(store, 0);
    if (good < count)
        rebuild_and_note(store, good, records_from(store, good), place_of(good),
                         "records of the index that are out of order", error);
    else if (end == ScanEnd::EndOfFile)
        rebuild_and_note(store, count, {}, store.indexTail,
                         error != 0 ? "the index can't be read" : "the index ends without an end mark",
                         error);
    else if (const auto records = behind_mark(store); !records.empty())
        rebuild_and_note(store, count, records, store.indexTail,
                         "an end mark of the index with records behind it", 0);
    // A writer commits the stream first: its first blocks may not be in the index yet.
    if (store.blockTimes.empty()) rebuild(store, 0, {});
    return IndexScan::Whole;
}

void index_Refresh(TraceStore& store) {
    const auto before = static_cast<uint32_t>(store.blockTimes.size());
    const uint64_t tail = store.indexTail;
    if (scan_again(store) == ScanEnd::BadRecord) {
        note(store, store.indexTail, "a record of the index has an unknown type", "the index ends there");
        store.blockTimes.resize(before);
        store.blockOffsets.resize(before);
        store.indexTail = tail;
        return;
    }
    const uint32_t good = in_order(store, before);
    if (good < store.blockTimes.size())
        rebuild_and_note(store, good, records_from(store, good), place_of(good),
                         "records of the index that are out of order", 0);
}
