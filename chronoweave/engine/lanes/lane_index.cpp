#include "chronoweave/engine/lanes/lane_index.h"

#include <algorithm>
#include <array>

#include "chronoweave/engine/lanes/lane_file.h"
#include "chronoweave/engine/lanes/packed_column.h"
#include "libtrv/byte_order.h"
#include "libtrv/store_mark.h"
#include "shared/libcxxutil/paths.h"

namespace {

constexpr const char* damaged_words = "the lane index is damaged";
constexpr const char* foreign_words = "the lane index is that of another store";

std::string place_text(const std::string& name, uint64_t offset) {
    return name + ", offset " + std::to_string(offset);
}

}  // namespace

// ---- Opening

Result LaneIndex::Begin(std::unique_ptr<FileDevice> device, const std::string& name,
                        std::unique_ptr<LaneIndex>& index) {
    std::unique_ptr<LaneIndex> begun(new LaneIndex);
    begun->device_ = std::move(device);
    begun->name_ = name;
    std::array<uint8_t, mt_HeaderSize> bytes;
    GFileHeader header;
    if (begun->device_->ReadAt(0, bytes) != mt_HeaderSize)
        return Result::failure(damaged_words, place_text(name, 0));
    if (Result decoded = gf_DecodeHeader(bytes, header); !decoded.ok())
        return Result::failure(decoded.what(), name, decoded.reason());
    if (header.kind != lane_FileKind || header.kindVersion != lane_FileVersion)
        return Result::failure("the lane index is of a form that is not known", name);
    begun->tail_ = mt_HeaderSize;
    index = std::move(begun);
    return {};
}

Result LaneIndex::OpenFile(const std::string& name, std::unique_ptr<LaneIndex>& index) {
    std::unique_ptr<FileDevice> device;
    Result opened = gf_OpenDevice(name, device);
    if (!opened.ok()) return opened;
    opened = Begin(std::move(device), name, index);
    return opened.ok() ? index->TakeHeads(nullptr) : opened;
}

Result LaneIndex::OnDevice(std::unique_ptr<FileDevice> device, std::unique_ptr<LaneIndex>& index) {
    Result begun = Begin(std::move(device), "index", index);
    return begun.ok() ? index->TakeHeads(nullptr) : begun;
}

std::unique_ptr<LaneIndex> LaneIndex::Open(TraceStore& store, Result& why) {
    why = {};
    const std::string& base = mt_GetBaseName(store);
    for (const std::string& name : {lane_NameBeside(base), lane_NameInCache(base)}) {
        if (!path_is_readable_file(name)) continue;
        std::unique_ptr<LaneIndex> index;
        Result opened = OpenFile(name, index);
        if (opened.ok() && !index->Fits(store)) opened = Result::failure(foreign_words, name);
        if (opened.ok()) return index;
        why = result_First(why, opened);
    }
    return nullptr;
}

// Reads the heads of the blocks behind those that are known; with a store, of those that it has the events
// of.
Result LaneIndex::TakeHeads(TraceStore* store) {
    const uint64_t size = device_->size();
    const uint32_t events = store ? mt_GetEventCount(*store) : UINT32_MAX;
    std::array<uint8_t, 1 + lane_HeadBytes> bytes;
    for (;;) {
        const int64_t got = device_->ReadAt(tail_, bytes);
        if (got >= 1 && bytes[0] == mt_PacketEnd) return {};
        LaneHead head;
        const bool read = got == static_cast<int64_t>(bytes.size()) && bytes[0] == 1 &&
                          lane_DecodeHead(std::span(bytes).subspan(1), head);
        const uint64_t end = tail_ + bytes.size() + head.summaryBytes + head.columnBytes;
        const bool follows = read && head.first == EndEvent() && end < size &&
                             (heads_.empty() || head.firstTick >= heads_.back().lastTick);
        if (!follows) {
            static_cast<void>(Fail(damaged_words, tail_));
            return damage_;
        }
        if (head.end() - 1 > events || (store && head.mark != mt_MarkOf(*store, head.end() - 1))) return {};
        heads_.push_back(head);
        offsets_.push_back(tail_ + 1);
        tail_ = end;
    }
}

void LaneIndex::Refresh(TraceStore& store) {
    if (damage_.ok()) static_cast<void>(TakeHeads(&store));
}

// Whether it was made of this store: by the mark up to the last event that is covered, and by that event.
bool LaneIndex::Fits(TraceStore& store) {
    if (heads_.empty()) return true;
    const LaneHead& last = heads_.back();
    const uint32_t sequence = last.end() - 1;
    if (mt_GetEventCount(store) < sequence || last.mark != mt_MarkOf(store, sequence)) return false;
    EventWalk walk;
    EventRecord event;
    if (!mt_StartWalkAtEvent(store, sequence, 1, nullptr, walk) || !mt_NextEvent(walk, event)) return false;
    LaneSummary summary;
    LaneColumns columns;
    uint16_t type = 0;
    uint32_t object = 0;
    return event.sequence == sequence && event.time == last.lastTick &&
           ReadSummary(heads_.size() - 1, summary) &&
           ReadColumns(heads_.size() - 1, summary, LaneColumnSet::All, columns) &&
           event.extra.size() >= sizeof object && mt_GetEventObject(store, event, type, object) &&
           summary.objects[columns.objects.back()] == object &&
           summary.kinds[columns.kinds.back()] == lane_Kind(event.type, event.subtype);
}

// ---- Reading

bool LaneIndex::Fail(const char* what, uint64_t offset) {
    if (damage_.ok()) damage_ = Result::failure(what, place_text(name_, offset));
    return false;
}

// Into bytes_.
bool LaneIndex::ReadPart(uint64_t offset, size_t size, uint64_t check) {
    if (!damage_.ok()) return false;
    bytes_.resize(size + column_Slack);
    const bool whole = device_->ReadAt(offset, std::span(bytes_).first(size)) == static_cast<int64_t>(size);
    if (whole && lane_CheckSum(std::span(bytes_).first(size)) == check) return true;
    return Fail(damaged_words, offset);
}

bool LaneIndex::ReadSummary(size_t block, LaneSummary& summary) {
    const LaneHead& head = heads_[block];
    const uint64_t offset = offsets_[block] + lane_HeadBytes;
    if (!ReadPart(offset, head.summaryBytes, head.summaryCheck)) return false;
    return lane_DecodeSummary(head, std::span(bytes_).first(head.summaryBytes), summary) ||
           Fail(damaged_words, offset);
}

bool LaneIndex::ReadColumns(size_t block, const LaneSummary& summary, LaneColumnSet set,
                            LaneColumns& columns) {
    const LaneHead& head = heads_[block];
    const uint64_t offset = offsets_[block] + lane_HeadBytes + head.summaryBytes;
    if (!ReadPart(offset, head.columnBytes, head.columnCheck)) return false;
    return lane_DecodeColumns(head, summary, std::span(bytes_).first(head.columnBytes), set, columns) ||
           Fail(damaged_words, offset);
}

bool LaneIndex::ReadWhole(size_t block, std::vector<uint8_t>& bytes) {
    const LaneHead& head = heads_[block];
    bytes.resize(lane_HeadBytes + size_t{head.summaryBytes} + head.columnBytes);
    const int64_t got = device_->ReadAt(offsets_[block], bytes);
    return got == static_cast<int64_t>(bytes.size()) || Fail(damaged_words, offsets_[block]);
}

// ---- Positions and counts

size_t LaneIndex::BlockOf(uint32_t sequence) const {
    const auto behind = std::upper_bound(heads_.begin(), heads_.end(), sequence,
                                         [](uint32_t at, const LaneHead& head) { return at < head.first; });
    return static_cast<size_t>(behind - heads_.begin()) - 1;
}

std::optional<uint32_t> LaneIndex::FirstFrom(mt_Time tick) {
    if (static_cast<int64_t>(tick) < 0) tick = 0;
    const auto block = std::partition_point(heads_.begin(), heads_.end(),
                                            [tick](const LaneHead& head) { return head.lastTick < tick; });
    if (block == heads_.end()) return EndEvent();
    if (tick <= block->firstTick) return block->first;
    LaneSummary summary;
    LaneColumns columns;
    const auto number = static_cast<size_t>(block - heads_.begin());
    if (!ReadSummary(number, summary) || !ReadColumns(number, summary, LaneColumnSet::Times, columns))
        return std::nullopt;
    const auto at = std::lower_bound(columns.ticks.begin(), columns.ticks.end(), tick - block->firstTick);
    return block->first + static_cast<uint32_t>(at - columns.ticks.begin());
}

std::optional<mt_Time> LaneIndex::TickOf(uint32_t sequence) {
    const size_t block = BlockOf(sequence);
    const LaneHead& head = heads_[block];
    if (sequence == head.first) return head.firstTick;
    if (sequence == head.end() - 1) return head.lastTick;
    LaneSummary summary;
    LaneColumns columns;
    if (!ReadSummary(block, summary) || !ReadColumns(block, summary, LaneColumnSet::Times, columns))
        return std::nullopt;
    return head.firstTick + columns.ticks[sequence - head.first];
}

// Blocks that lie inside are counted by their summaries.
bool LaneIndex::Count(uint32_t first, uint32_t end, const Visit& visit) {
    LaneSummary summary;
    for (uint32_t at = first; at < end;) {
        const size_t block = BlockOf(at);
        const LaneHead& head = heads_[block];
        const uint32_t upTo = std::min(end, head.end());
        if (!ReadSummary(block, summary)) return false;
        if (at != head.first || upTo != head.end()) {
            if (!CountInBlock(block, summary, at, upTo, visit)) return false;
        } else {
            for (size_t i = 0; i < summary.count.size(); ++i)
                visit(static_cast<uint32_t>(summary.objects[summary.ofObject[i]]),
                      summary.kinds[summary.ofKind[i]], summary.count[i]);
        }
        at = upTo;
    }
    return true;
}

bool LaneIndex::CountInBlock(size_t block, const LaneSummary& summary, uint32_t first, uint32_t end,
                             const Visit& visit) {
    LaneColumns columns;
    if (!ReadColumns(block, summary, LaneColumnSet::All, columns)) return false;
    for (uint32_t i = first - heads_[block].first; i < end - heads_[block].first; ++i)
        visit(static_cast<uint32_t>(summary.objects[columns.objects[i]]), summary.kinds[columns.kinds[i]], 1);
    return true;
}
