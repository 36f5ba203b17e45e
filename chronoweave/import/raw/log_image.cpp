#include "chronoweave/import/raw/log_image.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "chronoweave/import/raw/raw_words.h"
#include "libtrv/byte_order.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr size_t task_table_at = 24;

uint32_t address_of(const RawLogImage& image, uint64_t position) {
    return image.base + static_cast<uint32_t>(position);
}

void tell_damage(RawLogImage& image, std::string words) {
    if (image.damage.empty()) image.damage = std::move(words);
}

// Moves the position of a wrapped ring to the next record. False behind the newest one. The old part of the
// ring leads from the start to the wrap, the new part from the ring's first byte to the end, and each is
// walked once.
bool step_wrapped(RawLogImage& image) {
    if (!image.cursor.wrapped) {
        if (image.cursor.position < image.wrap) return true;
        if (image.cursor.position > image.wrap)
            tell_damage(image,
                        gen_format(words_ImageWrap, image.wrap == 0 ? 0 : address_of(image, image.wrap)));
        image.cursor.wrapped = true;
        image.cursor.position = image.ring;
    }
    if (image.cursor.position >= image.bytes.size())
        tell_damage(image, gen_format(words_ImageOutside, address_of(image, image.cursor.position)));
    else if (image.cursor.position >= image.start)
        tell_damage(image, gen_format(words_ImageOverrun, address_of(image, image.cursor.position)));
    return image.cursor.position < image.end;
}

bool step_to_record(RawLogImage& image) {
    if (image.end == image.start) return false;
    if (!image.cursor.positionSet) {
        image.cursor.position = image.start;
        image.cursor.positionSet = true;
    }
    return image.end < image.start ? step_wrapped(image) : image.cursor.position < image.end;
}

}  // namespace

bool log_Read(std::vector<uint8_t> bytes, bool bigEndian, RawLogImage& image) {
    if (bytes.size() < task_table_at) return false;
    image = {};
    image.bytes = std::move(bytes);
    image.bigEndian = bigEndian;
    const uint8_t* p = image.bytes.data();
    image.base = load_32(p + 8, bigEndian);
    const auto offsetAt = [&](size_t at) -> uint64_t { return load_32(p + at, bigEndian) - image.base; };
    image.wrap = load_32(p + 12, bigEndian) == 0 ? 0 : offsetAt(12);
    image.end = offsetAt(16);
    image.start = offsetAt(20);
    const uint32_t tasks = load_16(p, bigEndian);
    const size_t ringAt = task_table_at + size_t{task_EntrySize} * tasks;
    if (image.bytes.size() < ringAt + 4) {
        const size_t whole = (image.bytes.size() - task_table_at) / task_EntrySize;
        image.taskCount = static_cast<uint32_t>(std::min<size_t>(whole, tasks));
        image.ringStands = false;
        tell_damage(image, gen_format(words_ImageTasks, tasks));
    } else {
        image.taskCount = tasks;
        image.ring = offsetAt(ringAt);
    }
    return true;
}

uint32_t log_NextRecord(RawLogImage& image, uint8_t* record) {
    const uint8_t* bytes = image.bytes.data();
    if (const uint32_t length =
            task_NextRecord(bytes + task_table_at, image.taskCount, image.cursor.task, record))
        return length;
    if (!image.ringStands || !step_to_record(image)) return 0;
    if (image.cursor.position >= image.bytes.size()) {
        tell_damage(image, gen_format(words_ImageOutside, address_of(image, image.cursor.position)));
        return 0;
    }
    const uint8_t length = bytes[image.cursor.position];
    if (length == 0) return 0;
    if (image.bytes.size() - image.cursor.position <= length) {
        tell_damage(image, gen_format(words_ImageCut, address_of(image, image.cursor.position)));
        return 0;
    }
    std::memcpy(record, bytes + image.cursor.position + 1, length);
    image.cursor.position += 1u + length;
    return length;
}

namespace {
constexpr uint64_t portion = 1 << 20;  // bytes of records from one pause to the next
}

LogImageSource::LogImageSource(RawLogImage image, const EventSourceHeader& header)
    : image_(std::move(image)),
      facts_{header.ticksPerSecond, header.osName, header.bigEndian, TaskTracker, header.architecture} {}

SourceStep LogImageSource::next(SourceRecord& record) {
    if (done_ - paused_ >= portion) {
        paused_ = done_;
        return SourceStep::Pause;
    }
    while (const uint32_t length = log_NextRecord(image_, record_)) {
        done_ += length;
        if (records_.take({record_, length}, facts_.bigEndian, record)) return SourceStep::Record;
    }
    return SourceStep::End;
}

SourceExtent LogImageSource::extent() const {
    const auto size = static_cast<double>(image_.bytes.size());
    return {std::min(static_cast<double>(done_), size), size};
}

std::optional<SourceLook> LogImageSource::look(const Progress& progress) {
    const RawLogImage::Cursor cursor = image_.cursor;
    const std::string damage = image_.damage;
    const auto size = static_cast<double>(image_.bytes.size());
    ObjectLook look;
    bool goesOn = true;
    uint64_t seen = 0, told = 0;
    while (const uint32_t length = goesOn ? log_NextRecord(image_, record_) : 0) {
        raw_Look({record_, length}, facts_.bigEndian, look);
        seen += length;
        if (seen - told < portion) continue;
        told = seen;
        goesOn = !progress || progress(std::min(static_cast<double>(seen), size), size);
    }
    image_.cursor = cursor;
    image_.damage = damage;
    return goesOn ? std::optional(look.seen()) : std::nullopt;
}

Result LogImageSource::damage() const {
    return image_.damage.empty() ? Result() : Result::failure(image_.damage);
}
