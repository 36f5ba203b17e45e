#include "chronoweave/import/core_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "chronoweave/import/import_words.h"
#include "chronoweave/import/task_table.h"
#include "libtrv/byte_order.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/return_point.h"

namespace {

constexpr size_t smallest_core = 12;
constexpr size_t korvantis_header = 28;
constexpr size_t tolmund_header = 20;
constexpr uint32_t tolmund_record = 24;

bool read_korvantis(std::span<const uint8_t> file, CoreLogImage& image) {
    if (file.size() < std::max(smallest_core, korvantis_header)) return false;
    const uint8_t* p = file.data();
    const bool big = image.bigEndian;
    image.taskCount = load_16(p + 2, big);
    image.logSize = load_32(p + 4, big);
    image.slotCount = load_32(p + 8, big);
    image.logBase = load_32(p + 12, big);
    image.firstSlot = load_32(p + 16, big);
    image.nextSlot = load_32(p + 20, big);
    image.ticksPerSecond = load_32(p + 24, big);
    const uint64_t log_at = korvantis_header + uint64_t{task_EntrySize} * image.taskCount;
    const uint64_t table_at = log_at + image.logSize;
    if (file.size() < table_at + 4 * uint64_t{image.slotCount}) return false;
    image.tasks = p + korvantis_header;
    image.log = p + log_at;
    image.events = p + table_at;
    return true;
}

bool read_tolmund(std::span<const uint8_t> file, CoreLogImage& image) {
    if (file.size() < std::max(smallest_core, tolmund_header)) return false;
    const uint8_t* p = file.data();
    const bool big = image.bigEndian;
    image.taskCount = load_16(p + 2, big);
    image.slotCount = load_32(p + 4, big);
    image.firstSlot = load_32(p + 8, big);
    image.nextSlot = load_32(p + 12, big);
    image.ticksPerSecond = load_32(p + 16, big);
    const uint64_t events_at = tolmund_header + uint64_t{task_EntrySize} * image.taskCount;
    if (file.size() < events_at + tolmund_record * uint64_t{image.slotCount}) return false;
    image.tasks = p + tolmund_header;
    image.events = p + events_at;
    return true;
}

void advance(CoreLogImage& image) {
    ++image.slotsRead;
    if (++image.slotCursor == image.slotCount) image.slotCursor = 0;
}

// 1 when the slot cursor stands at an event, 0 at the end of the log, -1 when it left the table or has been
// round it without meeting the next slot.
int check_slot(CoreLogImage& image) {
    if (image.slotCursor >= image.slotCount) {
        image.wild = true;
        return -1;
    }
    return image.slotsRead < image.slotCount ? 1 : -1;
}

int next_korvantis(CoreLogImage& image, uint8_t* record, bool trace) {
    const auto entry = [&] { return load_32(image.events + 4 * image.slotCursor, image.bigEndian); };
    if (image.slotCursor < 0) {
        const bool isEmpty = image.version > 3 && image.firstSlot == image.nextSlot;
        if (isEmpty || image.slotCount == 0) return 0;
        // Not compared with the next slot: in version 1 a full log has both the same.
        image.slotCursor = image.firstSlot;
        if (image.slotCursor < image.slotCount && entry() == 0) return 0;
    } else if (image.slotCursor == image.nextSlot) {
        return 0;
    }
    if (check_slot(image) < 0) return -1;
    const uint32_t address = entry();
    if (address < image.logBase) return -1;
    const uint32_t offset = address - image.logBase;
    if (offset >= image.logSize) return -1;
    const uint8_t length = image.log[offset];
    if (uint64_t{offset} + 1 + length >= image.logSize) return -1;
    std::memcpy(record, image.log + offset + 1, length);
    if (trace) std::printf(words_CoreTrace, static_cast<int>(image.slotCursor), address);
    advance(image);
    return length;
}

int next_tolmund(CoreLogImage& image, uint8_t* record) {
    if (image.slotCursor < 0) {
        if (image.slotCount == 0) return 0;
        image.slotCursor = image.firstSlot;
    } else if (image.slotCursor == image.nextSlot) {
        return 0;
    }
    if (check_slot(image) < 0) return -1;
    const uint8_t* event = image.events + tolmund_record * image.slotCursor;
    std::memcpy(record, event, tolmund_record);
    if (!image.bigEndian) {
        // Stored the other way round than the decoder wants them: type and subtype little-endian, time
        // big-endian.
        std::reverse(record, record + 2);
        std::reverse(record + 2, record + 4);
        std::reverse(record + 4, record + 8);
        std::reverse(record + 8, record + 12);
    }
    advance(image);
    return tolmund_record;
}

// Records read under one return point. Nothing here owns memory.
struct CoreBatch {
    static constexpr int room = 256;
    int count;
    int end;  // the result that ended the log; 1 while there is more
    int lengths[room];
    uint8_t records[room][raw_RecordRoom];
};

void fill_batch(CoreLogImage& image, CoreBatch& batch) {
    batch.count = 0;
    batch.end = 1;
    while (batch.count < CoreBatch::room) {
        const int length = core_NextRecord(image, batch.records[batch.count], false);
        if (length <= 0) {
            batch.end = length;
            return;
        }
        batch.lengths[batch.count++] = length;
    }
}

constexpr uint64_t progress_records = 64 * CoreBatch::room;  // about a megabyte of them

struct CoreRun {
    uint64_t records = 0;
    int end = 1;
    bool whole = true;  // no fault was caught
};

// All records into the session's writer.
CoreRun decode_all(RawSession& session, CoreLogImage& image) {
    const auto batch = std::make_unique<CoreBatch>();
    CoreRun run;
    while (run.end > 0) {
        CoreBatch* const target = batch.get();
        batch->count = 0;
        run.whole = gen_guarded([&image, target] { fill_batch(image, *target); });
        for (int i = 0; i < batch->count; ++i)
            session_DecodeRecord(session, {batch->records[i], static_cast<size_t>(batch->lengths[i])});
        run.records += static_cast<uint64_t>(batch->count);
        run.end = run.whole ? batch->end : -1;
        const bool isDue = session.progress && run.records % progress_records == 0;
        if (run.end > 0 && isDue && !session.progress(image.slotsRead, image.slotCount)) {
            session.counts.stopped = true;
            break;
        }
    }
    return run;
}

}  // namespace

bool core_ReadHeader(std::span<const uint8_t> file, CoreLogImage& image, std::string& error, bool& fatal) {
    image = {};
    fatal = false;
    if (file.size() < 2 || (file[0] != 0 && file[1] != 0)) {
        error = words_CoreFormat;
        return false;
    }
    image.bigEndian = file[0] == 0;
    image.version = image.bigEndian ? file[1] : file[0];
    fatal = true;
    if (image.version == 2) {
        if (read_tolmund(file, image)) return true;
        error = words_CoreSize2;
    } else if (image.version == 1 || image.version == 4) {
        if (read_korvantis(file, image)) return true;
        error = gen_format(words_CoreSize, image.version, static_cast<unsigned long long>(file.size()));
    } else {
        error = gen_format(words_CoreVersion, image.version);
    }
    return false;
}

int core_NextRecord(CoreLogImage& image, uint8_t* record, bool trace) {
    if (const uint32_t length = task_NextRecord(image.tasks, image.taskCount, image.taskCursor, record))
        return static_cast<int>(length);
    return image.version == 2 ? next_tolmund(image, record) : next_korvantis(image, record, trace);
}

bool core_Import(RawSession& session, std::span<const uint8_t> file, const std::string& name,
                 const WriterMaker& make, std::string& error, bool& fatal) {
    CoreLogImage image;
    if (!core_ReadHeader(file, image, error, fatal)) return false;
    fatal = false;
    session.header = {};
    session.header.bigEndian = image.bigEndian;
    session.header.ticksPerSecond = image.ticksPerSecond;
    if (image.version == 2) session.header.osName = "TOLMUND";
    if (const Result made = session_OpenWriter(session, make); !made.ok()) {
        error = made.text();
        return false;
    }
    const CoreRun run = decode_all(session, image);
    session.trouble = session_Settle(session);
    if (run.end >= 0) return true;
    if (!run.whole || image.wild)
        error = name.empty() ? words_CoreNoName : gen_format(words_CoreWild, name.c_str());
    else if (run.records > 0 || image.version == 2)
        error = gen_format(words_CoreDamaged, image.version);
    return true;
}
