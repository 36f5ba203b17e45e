#include "chronoweave/import/log_image.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "chronoweave/import/import_words.h"
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
    if (!image.wrapped) {
        if (image.position < image.wrap) return true;
        if (image.position > image.wrap)
            tell_damage(image,
                        gen_format(words_ImageWrap, image.wrap == 0 ? 0 : address_of(image, image.wrap)));
        image.wrapped = true;
        image.position = image.ring;
    }
    if (image.position >= image.bytes.size())
        tell_damage(image, gen_format(words_ImageOutside, address_of(image, image.position)));
    else if (image.position >= image.start)
        tell_damage(image, gen_format(words_ImageOverrun, address_of(image, image.position)));
    return image.position < image.end;
}

bool step_to_record(RawLogImage& image) {
    if (image.end == image.start) return false;
    if (!image.positionSet) {
        image.position = image.start;
        image.positionSet = true;
    }
    return image.end < image.start ? step_wrapped(image) : image.position < image.end;
}

}  // namespace

bool log_Read(std::vector<uint8_t> bytes, bool bigEndian, RawLogImage& image) {
    if (bytes.size() < task_table_at) return false;
    image = {};
    image.bytes = std::move(bytes);
    image.bigEndian = bigEndian;
    const uint8_t* p = image.bytes.data();
    image.base = load_32(p + 8, bigEndian);
    const auto offset_at = [&](size_t at) -> uint64_t { return load_32(p + at, bigEndian) - image.base; };
    image.wrap = load_32(p + 12, bigEndian) == 0 ? 0 : offset_at(12);
    image.end = offset_at(16);
    image.start = offset_at(20);
    const uint32_t tasks = load_16(p, bigEndian);
    const size_t ring_at = task_table_at + size_t{task_EntrySize} * tasks;
    if (image.bytes.size() < ring_at + 4) {
        const size_t whole = (image.bytes.size() - task_table_at) / task_EntrySize;
        image.taskCount = static_cast<uint32_t>(std::min<size_t>(whole, tasks));
        image.ringStands = false;
        tell_damage(image, gen_format(words_ImageTasks, tasks));
    } else {
        image.taskCount = tasks;
        image.ring = offset_at(ring_at);
    }
    return true;
}

uint32_t log_NextRecord(RawLogImage& image, uint8_t* record) {
    const uint8_t* bytes = image.bytes.data();
    if (const uint32_t length =
            task_NextRecord(bytes + task_table_at, image.taskCount, image.taskCursor, record))
        return length;
    if (!image.ringStands || !step_to_record(image)) return 0;
    if (image.position >= image.bytes.size()) {
        tell_damage(image, gen_format(words_ImageOutside, address_of(image, image.position)));
        return 0;
    }
    const uint8_t length = bytes[image.position];
    if (length == 0) return 0;
    if (image.bytes.size() - image.position <= length) {
        tell_damage(image, gen_format(words_ImageCut, address_of(image, image.position)));
        return 0;
    }
    std::memcpy(record, bytes + image.position + 1, length);
    image.position += 1u + length;
    return length;
}

void log_ReadThrough(RawSession& session, RawLogImage& image) {
    uint8_t record[raw_RecordRoom];
    uint64_t done = 0, told = 0;
    const auto size = static_cast<double>(image.bytes.size());
    while (const uint32_t length = log_NextRecord(image, record)) {
        session_DecodeRecord(session, {record, length});
        done += length;
        if (!session.progress || done - told < (1 << 20)) continue;
        told = done;
        if (session.progress(std::min(static_cast<double>(done), size), size)) continue;
        session.counts.stopped = true;
        break;
    }
    session.trouble = session_Settle(session);
}
