#include "chronoweave/engine/lanes/lane_index.h"

#include <algorithm>
#include <numeric>

#include "chronoweave/engine/lanes/lane_file.h"
#include "libtrv/gfile.h"
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

Result LaneIndex::Begin(std::unique_ptr<MappedFile> file, const std::string& name,
                        std::unique_ptr<LaneIndex>& index) {
    std::unique_ptr<LaneIndex> begun(new LaneIndex);
    const auto bytes = file->bytes();
    GFileHeader header;
    if (bytes.size() < mt_HeaderSize) return Result::failure(damaged_words, place_text(name, 0));
    if (Result decoded = gf_DecodeHeader(bytes.first(mt_HeaderSize), header); !decoded.ok())
        return Result::failure(decoded.what(), name, decoded.reason());
    if (header.kind != lane_FileKind || header.kindVersion != lane_FileVersion)
        return Result::failure("the lane index is of a form that is not known", name);
    begun->file_ = std::move(file);
    begun->name_ = name;
    begun->tail_ = mt_HeaderSize;
    index = std::move(begun);
    return index->TakeHeads(nullptr);
}

Result LaneIndex::OpenFile(const std::string& name, std::unique_ptr<LaneIndex>& index) {
    std::unique_ptr<MappedFile> file;
    Result opened = MappedFile::Open(name, file);
    return opened.ok() ? Begin(std::move(file), name, index) : opened;
}

Result LaneIndex::OfBytes(std::vector<uint8_t> bytes, std::unique_ptr<LaneIndex>& index) {
    return Begin(MappedFile::OfBytes(std::move(bytes)), "index", index);
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
    file_->Refresh();
    const auto bytes = file_->bytes();
    const uint32_t events = store ? mt_GetEventCount(*store) : UINT32_MAX;
    for (;;) {
        const auto rest = bytes.subspan(std::min<uint64_t>(tail_, bytes.size()));
        if (!rest.empty() && rest[0] == mt_PacketEnd) return {};
        LaneHead head;
        const bool read = rest.size() > lane_HeadBytes && rest[0] == 1 &&
                          lane_DecodeHead(rest.subspan(1, lane_HeadBytes), head);
        const uint64_t size = 1 + lane_HeadBytes + head.OffsetOf(lane_PartCount);
        const bool follows = read && head.first == EndEvent() && size < rest.size() &&
                             (heads_.empty() || head.firstTick >= heads_.back().lastTick);
        if (!follows) {
            static_cast<void>(FailAt(tail_));
            return damage_;
        }
        if (head.end() - 1 > events || (store && head.mark != mt_MarkOf(*store, head.end() - 1))) return {};
        heads_.push_back(head);
        offsets_.push_back(tail_ + 1);
        checked_.push_back(0);
        tail_ += size;
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
           ReadColumns(heads_.size() - 1, summary, Columns::All, columns) &&
           event.extra.size() >= sizeof object && mt_GetEventObject(store, event, type, object) &&
           summary.objects[columns.objects.back()] == object &&
           summary.kinds[columns.kinds.back()] == lane_Kind(event.type, event.subtype);
}

// ---- Reading

bool LaneIndex::FailAt(uint64_t offset) {
    if (damage_.ok()) damage_ = Result::failure(damaged_words, place_text(name_, offset));
    return false;
}

bool LaneIndex::Fail(size_t block, LanePart part) {
    return FailAt(offsets_[block] + lane_HeadBytes + heads_[block].OffsetOf(lane_Number(part)));
}

std::optional<std::span<const uint8_t>> LaneIndex::Part(size_t block, LanePart part) {
    if (!damage_.ok()) return std::nullopt;
    const LaneHead& head = heads_[block];
    const size_t number = lane_Number(part);
    const auto bytes =
        file_->bytes().subspan(offsets_[block] + lane_HeadBytes + head.OffsetOf(number), head.bytes[number]);
    const auto bit = static_cast<uint8_t>(1u << number);
    if ((checked_[block] & bit) == 0 && lane_CheckSum(bytes) != head.checks[number]) {
        Fail(block, part);
        return std::nullopt;
    }
    checked_[block] |= bit;
    return bytes;
}

bool LaneIndex::ReadSummary(size_t block, LaneSummary& summary) {
    const auto bytes = Part(block, LanePart::Summary);
    return bytes && (lane_DecodeSummary(heads_[block], *bytes, summary) || Fail(block, LanePart::Summary));
}

bool LaneIndex::ReadColumns(size_t block, const LaneSummary& summary, Columns wanted, LaneColumns& columns) {
    const LaneHead& head = heads_[block];
    const auto times = Part(block, LanePart::Times);
    if (!times) return false;
    if (!lane_DecodeTimes(head, *times, columns.ticks)) return Fail(block, LanePart::Times);
    if (wanted == Columns::Times) return true;
    const auto statuses = Part(block, LanePart::Statuses);
    if (!statuses) return false;
    if (!lane_DecodeStatuses(head, summary, *statuses, lists_, columns))
        return Fail(block, LanePart::Statuses);
    if (wanted == Columns::Statuses) return true;
    const auto events = Part(block, LanePart::Events);
    return events &&
           (lane_DecodeEvents(head, summary, *events, lists_, columns) || Fail(block, LanePart::Events));
}

bool LaneIndex::ReadStatusLists(size_t block, const LaneSummary& summary, std::vector<uint64_t>& ticks,
                                LaneLists& lists) {
    const auto times = Part(block, LanePart::Times), statuses = Part(block, LanePart::Statuses);
    if (!times || !statuses) return false;
    if (!lane_DecodeTimes(heads_[block], *times, ticks)) return Fail(block, LanePart::Times);
    return lane_DecodeStatusLists(heads_[block], summary, *statuses, lists) ||
           Fail(block, LanePart::Statuses);
}

bool LaneIndex::ReadSums(size_t block, size_t level, LaneSums& sums) {
    LaneSummary summary;
    if (!ReadSummary(block, summary)) return false;
    const auto bytes = Part(block, LanePart::Sums);
    return bytes && (lane_DecodeSums(*bytes, summary.objects, level, sums) || Fail(block, LanePart::Sums));
}

bool LaneIndex::ReadFacts(size_t block, const LaneSummary& summary, LaneFacts& facts) {
    const auto bytes = Part(block, LanePart::Facts);
    const auto all = [](const std::vector<uint32_t>& counts) {
        return std::accumulate(counts.begin(), counts.end(), size_t{0});
    };
    return bytes && (lane_DecodeFacts(*bytes, heads_[block].count, all(summary.priorities),
                                      all(summary.names), facts) ||
                     Fail(block, LanePart::Facts));
}

bool LaneIndex::ReadWhole(size_t block, std::vector<uint8_t>& bytes) {
    const auto all =
        file_->bytes().subspan(offsets_[block], lane_HeadBytes + heads_[block].OffsetOf(lane_PartCount));
    bytes.assign(all.begin(), all.end());
    LaneHead head;
    return lane_DecodeHead(std::span(bytes).first(lane_HeadBytes), head) || FailAt(offsets_[block]);
}

// ---- Positions and counts

size_t LaneIndex::BlockOf(uint32_t sequence) const {
    const auto behind = std::upper_bound(heads_.begin(), heads_.end(), sequence,
                                         [](uint32_t at, const LaneHead& head) { return at < head.first; });
    return static_cast<size_t>(behind - heads_.begin()) - 1;
}

// Of nothing where it is damaged.
SteppedView LaneIndex::TimesOf(size_t block) {
    const auto bytes = Part(block, LanePart::Times);
    if (!bytes) return {};
    ColumnReader reader(*bytes);
    const SteppedView times = reader.SteppedAt(heads_[block].count);
    if (!reader.AtEnd()) Fail(block, LanePart::Times);
    return times;
}

std::optional<uint32_t> LaneIndex::FirstFrom(mt_Time tick) {
    if (static_cast<int64_t>(tick) < 0) tick = 0;
    const auto block = std::partition_point(heads_.begin(), heads_.end(),
                                            [tick](const LaneHead& head) { return head.lastTick < tick; });
    if (block == heads_.end()) return EndEvent();
    if (tick <= block->firstTick) return block->first;
    const auto at = TimesOf(static_cast<size_t>(block - heads_.begin())).FirstFrom(tick - block->firstTick);
    if (!damage_.ok()) return std::nullopt;
    return block->first + static_cast<uint32_t>(at);
}

std::optional<mt_Time> LaneIndex::TickOf(uint32_t sequence) {
    const size_t block = BlockOf(sequence);
    const LaneHead& head = heads_[block];
    const mt_Time tick = head.firstTick + TimesOf(block).at(sequence - head.first);
    if (!damage_.ok()) return std::nullopt;
    return std::min(tick, head.lastTick);
}

// Blocks that lie inside are counted by the sums.
bool LaneIndex::Count(uint32_t first, uint32_t end, const Visit& visit) {
    LaneSums sums;
    for (uint32_t at = first; at < end;) {
        const size_t block = BlockOf(at);
        const LaneHead& head = heads_[block];
        const uint32_t upTo = std::min(end, head.end());
        if (at != head.first || upTo != head.end()) {
            if (!CountInBlock(block, at, upTo, visit)) return false;
            at = upTo;
            continue;
        }
        const size_t behind = end == EndEvent() ? heads_.size() : BlockOf(end);
        const LaneStride stride = lane_StrideAt(block, behind);
        const size_t last = block + stride.blocks - 1;
        if (!ReadSums(last, stride.level, sums)) return false;
        for (const LaneSums::Events& cell : sums.events) visit(cell.object, cell.kind, cell.count);
        at = heads_[last].end();
    }
    return true;
}

bool LaneIndex::CountInBlock(size_t block, uint32_t first, uint32_t end, const Visit& visit) {
    LaneSummary summary;
    const auto events = ReadSummary(block, summary) ? Part(block, LanePart::Events) : std::nullopt;
    if (!events) return false;
    LaneColumns columns;
    if (!lane_DecodeEvents(heads_[block], summary, *events, lists_, columns))
        return Fail(block, LanePart::Events);
    for (uint32_t i = first - heads_[block].first; i < end - heads_[block].first; ++i)
        visit(static_cast<uint32_t>(summary.objects[columns.objects[i]]), summary.kinds[columns.kinds[i]], 1);
    return true;
}
