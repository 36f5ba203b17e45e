#include "libtrv/tail_check.h"

#include <algorithm>
#include <span>
#include <vector>

#include "libtrv/packets.h"

namespace {

constexpr size_t most_looked_at = size_t{1} << 20;  // bytes behind the mark
constexpr size_t longest_stretch = 64 * 1024;       // that is overwritten
constexpr uint32_t chain_is_sure = 64;              // packets
constexpr size_t event_head = 16;

enum class Step { Whole, Cut, None };

// The packet of a type whose body begins the bytes; size becomes the body's.
Step packet(uint8_t type, std::span<const uint8_t> body, mt_Time& last, size_t& size) {
    if (type == mt_PacketEvent) {
        EventRecord event;
        const mt_Parse parse = mt_ParseEvent(body.data(), body.size(), event, size);
        const bool headless = body.size() < event_head;
        if (parse == mt_Parse::UnknownChange || parse == mt_Parse::Implausible ||
            (!headless && event.time < last))
            return Step::None;
        if (parse == mt_Parse::NeedMore) return size <= longest_stretch ? Step::Cut : Step::None;
        last = event.time;
        return Step::Whole;
    }
    if (type != mt_PacketObjectsUsed && type != mt_PacketState) return Step::None;
    size = 4;
    if (body.size() < size) return Step::Cut;
    const uint32_t count = load_be32(body.data());
    if (type == mt_PacketObjectsUsed) size += size_t{count} * mt_KeySize;
    for (uint32_t i = 0; type == mt_PacketState && i < count && size <= body.size(); ++i) {
        if (body.size() - size < mt_EntryHead) return Step::Cut;
        size += mt_EntryHead + size_t{load_be32(body.data() + size + 6)};
    }
    return size <= body.size() ? Step::Whole : Step::Cut;
}

// How a row of packets ends that begins with the bytes.
struct Row {
    uint32_t packets = 0;
    size_t end = 0;          // offset of the end mark or of what is no whole packet
    Step last = Step::None;  // of what stands there: Whole is an end mark
};

Row follow(std::span<const uint8_t> bytes, uint8_t type, mt_Time time) {
    Row row;
    while (row.packets < chain_is_sure) {
        size_t size = 0;
        row.last = type == mt_PacketEnd ? Step::Whole : packet(type, bytes.subspan(row.end + 1), time, size);
        if (type == mt_PacketEnd || row.last != Step::Whole) return row;
        ++row.packets;
        row.end += 1 + size;
        if (row.end == bytes.size()) {
            row.last = Step::Cut;
            return row;
        }
        type = bytes[row.end];
    }
    return row;
}

// The end of a last event's changes and the end mark behind it, which no append that was cut short leaves.
bool ends_like_a_store(std::span<const uint8_t> tail) {
    return tail[tail.size() - 2] == mt_ChangeEnd && tail[tail.size() - 1] == mt_PacketEnd;
}

}  // namespace

bool mt_TailHidesEvents(FileDevice& device, uint64_t mark, bool atBlockEnd, mt_Time last) {
    const uint64_t size = device.size();
    if (size <= mark + mt_LeastTail) return false;
    std::vector<uint8_t> bytes(static_cast<size_t>(std::min<uint64_t>(size - mark, most_looked_at)));
    const int64_t got = device.ReadAt(mark, bytes);
    if (got <= int64_t{mt_LeastTail}) return false;
    const bool whole = static_cast<uint64_t>(got) == size - mark;
    const std::span<const uint8_t> tail(bytes.data(), static_cast<size_t>(got));
    const auto is_row_to_end = [&](const Row& row) {
        if (row.packets == chain_is_sure) return true;
        return row.packets > 0 && row.last == Step::Whole && whole && row.end + 1 == tail.size();
    };
    // An append that was not finished leads, from the mark on, to its own end mark or to where it is cut.
    const Row append = follow(tail, atBlockEnd ? mt_PacketObjectsUsed : mt_PacketEvent, last);
    if (is_row_to_end(append)) return false;
    const bool isNoAppend = append.packets == 0 && append.last == Step::None;
    if (isNoAppend && whole && ends_like_a_store(tail)) return true;
    for (size_t at = 1; at < std::min(longest_stretch, tail.size()); ++at) {
        Row row = follow(tail.subspan(at), tail[at], last);
        row.end += at;
        if (is_row_to_end(row)) return true;
    }
    return false;
}
