#include "chronoweave/import/core/core_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "chronoweave/import/core/core_words.h"
#include "chronoweave/import/raw/task_table.h"
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
    const uint64_t logAt = korvantis_header + uint64_t{task_EntrySize} * image.taskCount;
    const uint64_t tableAt = logAt + image.logSize;
    if (file.size() < tableAt + 4 * uint64_t{image.slotCount}) return false;
    image.tasks = p + korvantis_header;
    image.log = p + logAt;
    image.events = p + tableAt;
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
    const uint64_t eventsAt = tolmund_header + uint64_t{task_EntrySize} * image.taskCount;
    if (file.size() < eventsAt + tolmund_record * uint64_t{image.slotCount}) return false;
    image.tasks = p + tolmund_header;
    image.events = p + eventsAt;
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

}  // namespace

Result core_ReadHeader(std::span<const uint8_t> file, CoreLogImage& image) {
    image = {};
    if (file.size() < 2 || (file[0] != 0 && file[1] != 0)) return Result::failure(words_CoreFormat);
    image.bigEndian = file[0] == 0;
    image.version = image.bigEndian ? file[1] : file[0];
    if (image.version == 2)
        return read_tolmund(file, image) ? Result() : Result::failure(words_CoreSize2).fatal();
    if (image.version != 1 && image.version != 4)
        return Result::failure(gen_format(words_CoreVersion, image.version)).fatal();
    if (read_korvantis(file, image)) return {};
    const auto size = static_cast<unsigned long long>(file.size());
    return Result::failure(gen_format(words_CoreSize, image.version, size)).fatal();
}

int core_NextRecord(CoreLogImage& image, uint8_t* record, bool trace) {
    if (const uint32_t length = task_NextRecord(image.tasks, image.taskCount, image.taskCursor, record))
        return static_cast<int>(length);
    return image.version == 2 ? next_tolmund(image, record) : next_korvantis(image, record, trace);
}

CoreSource::CoreSource(std::vector<uint8_t> file, const std::string& name)
    : file_(std::move(file)), name_(name), batch_(std::make_unique<CoreBatch>()) {}

Result CoreSource::open(std::vector<uint8_t> file, const std::string& name,
                        std::unique_ptr<EventSource>& source) {
    std::unique_ptr<CoreSource> made(new CoreSource(std::move(file), name));
    Result read = core_ReadHeader(made->file_, made->image_);
    if (!read.ok()) return read;
    made->facts_ = {made->image_.ticksPerSecond, made->image_.version == 2 ? "TOLMUND" : "KORVANTIS",
                    made->image_.bigEndian};
    made->ReadBatch();
    source = std::move(made);
    return {};
}

void CoreSource::ReadBatch() {
    CoreLogImage& image = image_;
    CoreBatch* const target = batch_.get();
    taken_ = 0;
    batch_->count = 0;
    faulted_ = !gen_guarded([&image, target] { fill_batch(image, *target); });
}

SourceStep CoreSource::next(SourceRecord& record) {
    while (HasBatch()) {
        const int at = taken_++;
        ++delivered_;
        const auto length = static_cast<size_t>(batch_->lengths[at]);
        if (records_.take({batch_->records[at], length}, facts_.bigEndian, record)) return SourceStep::Record;
    }
    if (batch_->end <= 0 || faulted_) return SourceStep::End;
    ReadBatch();
    return SourceStep::Pause;
}

SourceExtent CoreSource::extent() const {
    return {static_cast<double>(image_.slotsRead), static_cast<double>(image_.slotCount)};
}

std::optional<SourceLook> CoreSource::look(const Progress& progress) {
    CoreLogImage image = image_;
    image.taskCursor = image.slotCursor = -1;
    image.slotsRead = 0;
    const auto batch = std::make_unique<CoreBatch>();
    CoreBatch* const target = batch.get();
    ObjectLook look;
    for (bool whole = true; whole && batch->end > 0;) {
        batch->count = 0;
        whole = gen_guarded([&image, target] { fill_batch(image, *target); });
        for (int i = 0; i < batch->count; ++i)
            raw_Look({batch->records[i], static_cast<size_t>(batch->lengths[i])}, facts_.bigEndian, look);
        const auto done = static_cast<double>(image.slotsRead), total = static_cast<double>(image.slotCount);
        if (progress && !progress(done, std::max(done, total))) return std::nullopt;
    }
    return look.seen();
}

Result CoreSource::damage() const {
    if (faulted_ || image_.wild)
        return Result::failure(name_.empty() ? words_CoreNoName : gen_format(words_CoreWild, name_.c_str()));
    if (batch_->end >= 0 || (delivered_ == 0 && image_.version != 2)) return {};
    return Result::failure(gen_format(words_CoreDamaged, image_.version));
}
