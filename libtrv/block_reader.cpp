#include "libtrv/block_reader.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "libtrv/packets.h"
#include "libtrv/tail_check.h"
#include "libtrv/trace_store_impl.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "shared/libcxxutil/tick_text.h"

namespace {

constexpr int most_decimals = 9;
constexpr size_t packet_head = 5;  // type and count of a list of objects or a table of states

std::string number(uint64_t value) {
    return std::to_string(value);
}

bool same_state(const StateTable& a, const StateTable& b) {
    if (std::ranges::equal(a.image(), b.image())) return true;
    if (a.size() != b.size()) return false;
    for (uint32_t position = 0; position < a.size(); ++position) {
        const ObjectEntry entry = a.entry(position);
        const uint32_t other = b.find(entry.objectType, entry.objectId);
        if (other == StateTable::npos || !std::ranges::equal(entry.block, b.entry(other).block)) return false;
    }
    return true;
}

// A time from the first event on; in ticks, where the system counts them.
std::string time_text(const TraceStore& store, mt_Time time) {
    if (store.ticksPerSecond == 0 || text_equal_nocase(store.osName, "trace_function_flow"))
        return "tick " + number(time);
    const mt_Time first = store.blockTimes.empty() ? 0 : store.blockTimes.front();
    const double seconds = static_cast<double>(static_cast<int64_t>(time - first)) / store.ticksPerSecond;
    return tick_Text({store.ticksPerSecond, 1}, seconds, most_decimals) + " s";
}

}  // namespace

BlockReader::BlockReader(TraceStore& store) : store_(store), file_(store.events->View()) {}
BlockReader::~BlockReader() = default;

// ---- Events

bool BlockReader::GiveHeld(EventRecord& event) {
    held_ = false;
    event = heldEvent_;
    return true;
}

void BlockReader::hold(const EventRecord& event) {
    heldEvent_ = event;
    held_ = special_ = true;
}

void BlockReader::TakeStateBehindGap() {
    if (!pendingState_) return;
    std::swap(*state_, *pendingState_);
    pendingState_.reset();
}

void BlockReader::FinishBlock() {
    EventRecord event;
    for (const uint64_t heads = heads_; heads_ == heads && next(event);) {
    }
}

// Makes the event at the position stand whole in the buffer. False when there is none; the position is then
// another one.
bool BlockReader::CompleteEvent(EventRecord& event, size_t& size) {
    for (;;) {
        switch (mt_ParseEvent(file_->here() + 1, file_->buffered() - 1, event, size)) {
            case mt_Parse::Whole:
                return true;
            case mt_Parse::UnknownChange:
                if (file_->tell() == retried_) gen_error("Unrecognized StateChange type\n");
                lose({"a change of state of an unknown kind"}, block_);
                return false;
            case mt_Parse::Implausible:
                lose({"a change of state that can't be"}, block_);
                return false;
            case mt_Parse::NeedMore:
                break;
        }
        if (file_->tell() + 1 + size > limit_) {
            CrossLimit();
            return false;
        }
        if (!file_->fill(1 + size)) {
            lose(ShortOf("the file ends within an event"), block_);
            return false;
        }
    }
}

bool BlockReader::TakeEvent(EventRecord& event) {
    size_t size = 0;
    if (mt_ParseEvent(file_->here() + 1, file_->buffered() - 1, event, size) != mt_Parse::Whole) [[unlikely]]
        if (!CompleteEvent(event, size)) return false;
    if (file_->tell() + 1 + size > limit_) [[unlikely]] {
        CrossLimit();
        return false;
    }
    if (event.time < last_ || event.time > ceiling_) [[unlikely]]
        TellTime(event.time);
    lastSize_ = 1 + size;
    file_->step(lastSize_);
    --room_;
    last_ = event.time;
    event.sequence = ++sequence_;
    return true;
}

void BlockReader::TellTime(mt_Time time) {
    note(mt_DamageKind::Index, block_, file_->tell(),
         "an event's time of tick " + number(time) +
             (time < last_ ? " behind tick " + number(last_)
                           : " in front of a block of tick " + number(ceiling_)));
}

// An event reaches into the next block: either it is none, or the index is wrong.
void BlockReader::CrossLimit() {
    BlockReader probe(store_);
    if (probe.start(limitBlock_, nullptr) != Head::Wrong)
        return lose({"an event that runs into the next block"}, block_);
    note(mt_DamageKind::Index, limitBlock_, limit_, "the index has a block here, and there is none");
    store_.blockOffsets[limitBlock_] = mt_UnknownOffset;
    TakeLimits();
}

// ---- What is no event

// Deals with anything but an event that may stand here. False at the end of the store.
bool BlockReader::TakeOther() {
    if (ended_) return false;
    if (!file_->fill(1)) {
        lose(ShortOf("the file ends without an end mark"), block_);
        return true;
    }
    switch (*file_->here()) {
        case mt_PacketEnd:
            return TakeEnd();
        case mt_PacketObjectsUsed:
            TakeBoundary();
            return true;
        case mt_PacketEvent:
            note(mt_DamageKind::Index, block_, file_->tell(),
                 "more than " + number(store_.checkpointInterval) + " events in a block");
            room_ = UINT32_MAX;
            return true;
        case mt_PacketState:
            lose({"a table of states in the midst of a block"}, block_);
            return true;
        default:
            lose({"a packet of an unknown type"}, block_);
            return true;
    }
}

bool BlockReader::TakeEnd() {
    if (block_ + 1 < store_.blockOffsets.size()) {
        lose({"the events end here, though the index knows of more"}, block_);
        return true;
    }
    const uint64_t at = file_->tell();
    if (!file_->EndsWithin(mt_LeastTail) && at != store_.checkedTail) {
        if (mt_TailHidesEvents(store_.events->device(), at, room_ == 0, last_)) {
            lose({"an end mark with more events behind it"}, block_);
            return true;
        }
        store_.checkedTail = at;
    }
    // What is appended later is to be seen.
    file_->seek(at);
    return false;
}

// The same as TakeHead, but that the table is read and must be the state that the events led to.
BlockReader::Problem BlockReader::TakeCheckedHead(uint32_t block) {
    const uint64_t at = file_->tell();
    StateTable table;
    Problem problem = TakeHead(block, &table);
    if (!problem && same_state(table, *state_)) return {};
    if (problem && problem.kind != mt_DamageKind::Table) return problem;
    note(mt_DamageKind::Table, block, at,
         problem ? problem.what : "a table of states that the events ahead of it do not lead to");
    file_->seek(at);
    return TakeHead(block, nullptr);
}

// Holds a block that was come to against the index, which learns what it did not know. False when the index
// lacks the block, so that the number is that of another.
bool BlockReader::PlaceBoundary(uint32_t next, uint64_t at, mt_Time time) {
    if (next >= store_.blockOffsets.size()) return true;
    uint64_t& offset = store_.blockOffsets[next];
    const bool sameTime = time == store_.blockTimes[next];
    if (offset == mt_UnknownOffset) {
        offset = at;
        store_.blockTimes[next] = time;
    } else if (offset != at && !sameTime) {
        note(mt_DamageKind::Index, next, at, "the index lacks this block");
        return false;
    } else if (offset != at) {
        note(mt_DamageKind::Index, next, at, "the index has another place for this block");
        offset = at;
    } else if (!sameTime) {
        note(mt_DamageKind::Index, next, at, "the index has another time for this block");
    }
    return true;
}

// A list of objects used, which begins a block.
void BlockReader::TakeBoundary() {
    const uint64_t at = file_->tell();
    const uint32_t next = block_ + 1, left = room_;
    const bool indexed = next < store_.blockOffsets.size();
    const uint64_t expected = indexed ? store_.blockOffsets[next] : mt_UnknownOffset;
    if (left > 0 && left < UINT32_MAX && at != expected && expected != mt_UnknownOffset)
        return lose({"a block begins in the midst of another"}, block_);
    const uint32_t counted = sequence_;
    const Problem problem = checksTables_ ? TakeCheckedHead(next) : TakeHead(next, nullptr);
    if (problem) {
        file_->seek(at);
        return lose(problem, next);
    }
    const bool lacking = !PlaceBoundary(next, at, load_be64(file_->here() + 1));
    if (left > 0 && left < UINT32_MAX)
        note(mt_DamageKind::Index, block_, at,
             "only " + number(store_.checkpointInterval - left) + " of " + number(store_.checkpointInterval) +
                 " events in a block");
    enter(lacking ? block_ : next, at);
    sequence_ = counted;
}

// ---- Heads of blocks

BlockReader::Problem BlockReader::ShortOf(const char* what) {
    const int error = file_->error();
    return {error != 0 ? "it can't be read" : what, true, mt_DamageKind::Lost, error};
}

void BlockReader::TakeLimits() {
    limitBlock_ = block_ + 1;
    while (limitBlock_ < store_.blockOffsets.size() && store_.blockOffsets[limitBlock_] == mt_UnknownOffset)
        ++limitBlock_;
    const bool known = limitBlock_ < store_.blockOffsets.size();
    limit_ = known ? store_.blockOffsets[limitBlock_] : UINT64_MAX;
    ceiling_ = known ? store_.blockTimes[limitBlock_] : UINT64_MAX;
}

void BlockReader::enter(uint32_t block, uint64_t offset) {
    block_ = block;
    room_ = store_.checkpointInterval;
    headOffset_ = offset;
    ++heads_;
    TakeLimits();
}

// Passes the list of objects and the table of the block that begins at the position, up to its first event's
// type byte, which is looked at too. With a table, that becomes the one read. The reader is not in the block
// yet.
BlockReader::Problem BlockReader::TakeHead(uint32_t block, StateTable* table) {
    uint64_t bound = UINT64_MAX;
    for (uint32_t later = block + 1; later < store_.blockOffsets.size() && bound == UINT64_MAX; ++later)
        if (store_.blockOffsets[later] > file_->tell()) bound = store_.blockOffsets[later];
    if (bound == UINT64_MAX) bound = std::max(store_.events->device().size(), file_->tell());
    if (Problem problem = TakeObjects(bound, table != nullptr)) return problem;
    if (!file_->fill(packet_head)) return ShortOf("the file ends within the head of a block");
    if (*file_->here() != mt_PacketState) return {"no table of states at the head of a block"};
    if (Problem problem = table ? ReadTable(bound, *table) : SkipTable(block, bound)) return problem;
    if (!file_->fill(9)) return ShortOf("the file ends behind a table of states");
    if (*file_->here() != mt_PacketEvent) return {"no event behind a table of states"};
    return {};
}

BlockReader::Problem BlockReader::TakeObjects(uint64_t bound, bool keep) {
    if (!file_->fill(packet_head)) return ShortOf("the file ends ahead of a block");
    if (*file_->here() != mt_PacketObjectsUsed) return {"no list of objects at the head of a block"};
    const uint64_t size = uint64_t{load_be32(file_->here() + 1)} * mt_KeySize;
    if (file_->tell() + packet_head + size > bound)
        return {"a list of objects that is longer than its block"};
    file_->step(packet_head);
    keys_.clear();
    if (!keep) {
        file_->skip(size);
        return {};
    }
    if (!file_->fill(static_cast<size_t>(size))) return ShortOf("the file ends within a list of objects");
    const uint8_t* keys = file_->step(static_cast<size_t>(size));
    keys_.assign(keys, keys + size);
    return {};
}

// Most tables have entries of one size: then the event behind it can be looked for at once. It must be there,
// with the time that the index has for it, and the last entry must be such an entry too.
bool BlockReader::JumpOverTable(uint32_t count, uint32_t block, uint64_t bound) {
    if (block >= store_.blockTimes.size() || !file_->fill(mt_EntryHead)) return false;
    const uint64_t start = file_->tell();
    const uint32_t length = load_be32(file_->here() + 6);
    const uint64_t entry = mt_EntryHead + uint64_t{length};
    if (entry > bound || start + count * entry + 9 > bound) return false;
    file_->skip((count - 1) * entry);
    const auto size = static_cast<size_t>(entry);
    if (file_->fill(size + 9) && load_be32(file_->here() + 6) == length &&
        file_->here()[size] == mt_PacketEvent &&
        load_be64(file_->here() + size + 1) == store_.blockTimes[block]) {
        file_->step(size);
        return true;
    }
    file_->seek(start);
    return false;
}

BlockReader::Problem BlockReader::SkipTable(uint32_t block, uint64_t bound) {
    const uint32_t count = load_be32(file_->step(packet_head) + 1);
    if (count == 0 || JumpOverTable(count, block, bound)) return {};
    for (uint32_t i = 0; i < count; ++i) {
        if (!file_->fill(mt_EntryHead)) return ShortOf("the file ends within a table of states");
        file_->skip(mt_EntryHead + uint64_t{load_be32(file_->here() + 6)});
        if (file_->tell() > bound) return {"a table of states that is longer than its block"};
    }
    return {};
}

BlockReader::Problem BlockReader::ReadTable(uint64_t bound, StateTable& table) {
    const uint32_t count = load_be32(file_->step(packet_head) + 1);
    table.clear();
    for (uint32_t i = 0; i < count; ++i) {
        if (!file_->fill(mt_EntryHead)) return ShortOf("the file ends within a table of states");
        const size_t size = mt_EntryHead + size_t{load_be32(file_->here() + 6)};
        if (file_->tell() + size > bound) return {"a table of states that is longer than its block"};
        if (!file_->fill(size)) return ShortOf("the file ends within a table of states");
        const uint8_t* entry = file_->step(size);
        const std::span<const uint8_t> block(entry + mt_EntryHead, size - mt_EntryHead);
        if (!mt_IsPlausibleBlock(load_be16(entry), block) ||
            table.create(load_be16(entry), load_be32(entry + 2), block) == StateTable::npos)
            return {"a table of states with an entry that can't be", false, mt_DamageKind::Table};
    }
    return CheckKeys(table);
}

// Every object of the table was used in the block before, so the list of objects has it: as a rule both have
// them in the same order.
BlockReader::Problem BlockReader::CheckKeys(const StateTable& table) {
    const auto key_of = [](uint16_t type, uint32_t id) { return uint64_t{type} << 32 | id; };
    std::unordered_set<uint64_t> listed;
    size_t at = 0;
    for (uint32_t position = 0; position < table.size(); ++position, at += mt_KeySize) {
        const ObjectEntry entry = table.entry(position);
        if (listed.empty() && at < keys_.size() && load_be32(keys_.data() + at + 2) == entry.objectId &&
            load_be16(keys_.data() + at) == entry.objectType)
            continue;
        if (listed.empty())
            for (size_t i = 0; i < keys_.size(); i += mt_KeySize)
                listed.insert(key_of(load_be16(keys_.data() + i), load_be32(keys_.data() + i + 2)));
        if (!listed.contains(key_of(entry.objectType, entry.objectId)))
            return {"a table of states that does not fit the list of objects", false, mt_DamageKind::Table};
    }
    return {};
}

BlockReader::Head BlockReader::start(uint32_t block, StateTable* state) {
    state_ = state;
    pendingState_.reset();
    gap_.reset();
    held_ = special_ = ended_ = false;
    gaps_ = room_ = 0;
    block_ = firstBlock_ = block;
    sequence_ = block * store_.checkpointInterval;
    last_ = store_.blockTimes[block];
    retried_ = 0;
    const uint64_t at = store_.blockOffsets[block];
    if (at == mt_UnknownOffset) return Head::Wrong;
    file_->seek(at);
    if (const Problem problem = TakeHead(block, state)) {
        if (problem.kind == mt_DamageKind::Table) note(problem.kind, block, at, problem.what);
        return problem.unreadable ? Head::Unreadable : Head::Wrong;
    }
    if (load_be64(file_->here() + 1) != store_.blockTimes[block]) {
        note(mt_DamageKind::Index, block, at, "the index has another time for this block");
        if (block > 0) return Head::Wrong;
    }
    enter(block, at);
    return Head::Sound;
}

bool BlockReader::StartNear(uint32_t block, StateTable* state) {
    for (uint32_t near = block;; --near) {
        if (start(near, state) == Head::Sound) return true;
        if (near == 0) break;
    }
    if (state) state->clear();
    const uint64_t at = store_.blockOffsets[0];
    retried_ = at == mt_UnknownOffset ? uint64_t{mt_HeaderSize} : at;
    file_->seek(retried_);
    const Problem problem = TakeHead(0, state);
    file_->seek(retried_);
    if (state) state->clear();
    lose(problem ? problem : Problem{"the first block can't be read"}, 0);
    return !ended_;
}

// ---- Damage

void BlockReader::note(mt_DamageKind kind, uint32_t block, uint64_t offset, std::string what,
                       std::string cost) {
    store_.damage.note(
        kind, block, block + 1,
        Result::failure(std::move(what), mt_PlaceText(file_->name(), offset), std::move(cost)));
}

// The next block from a number on whose head is sound and lies behind an offset. The reader is then in it.
bool BlockReader::FindReadable(uint32_t from, uint64_t behind) {
    auto table = state_ ? std::make_unique<StateTable>() : nullptr;
    for (uint32_t block = from; block < store_.blockOffsets.size(); ++block) {
        const uint64_t at = store_.blockOffsets[block];
        if (at == mt_UnknownOffset || at <= behind) continue;
        file_->seek(at);
        if (TakeHead(block, table.get())) continue;
        enter(block, at);
        sequence_ = block * store_.checkpointInterval;
        pendingState_ = std::move(table);
        return true;
    }
    return false;
}

void BlockReader::NoteLost(const Problem& problem, uint64_t at, uint32_t firstLost, uint32_t sequence,
                           bool found) {
    std::string cost = "events from " + number(sequence + 1);
    if (found)
        cost += " to " + number(sequence_) + " can't be read, reading goes on at " +
                time_text(store_, store_.blockTimes[block_]);
    else
        cost += " on can't be read";
    if (sequence > 0) cost = "read up to " + time_text(store_, last_) + "; " + cost;
    if (problem.error != 0) cost = std::string(std::strerror(problem.error)) + "; " + cost;
    const auto blocks = static_cast<uint32_t>(store_.blockOffsets.size());
    store_.damage.note(mt_DamageKind::Lost, firstLost, std::max(firstLost + 1, found ? block_ : blocks),
                       Result::failure(problem.what, mt_PlaceText(file_->name(), at), cost));
}

// What stands at the position is none of the store's packets. Tried once more with fresh bytes, since a
// writer may just have put it there; then reading goes on at the next block whose head is sound.
void BlockReader::lose(Problem problem, uint32_t firstLost) {
    const uint64_t at = file_->tell();
    if (at != retried_) {
        retried_ = at;
        file_->seek(at);
        return;
    }
    if (query_ && !problem.unreadable && file_->fill(1) && *file_->here() > mt_PacketObjectsUsed)
        gen_error("libtrv: [%s]: Unrecognized .trs packet type (%d)", query_, int{*file_->here()});
    const uint32_t sequence = sequence_;
    const bool found = FindReadable(block_ + 1, at);
    NoteLost(problem, at, firstLost, sequence, found);
    gap_ = mt_Gap{last_, found ? load_be64(file_->here() + 1) : mt_NoTime};
    ++gaps_;
    special_ = true;
    if (found) {
        last_ = gap_->to;
        return;
    }
    ended_ = true;
    room_ = 0;
}
