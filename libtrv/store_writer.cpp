#include "libtrv/store_writer.h"

#include <algorithm>
#include <utility>

#include "libtrv/append_observer.h"
#include "libtrv/committed_file.h"
#include "libtrv/gfile.h"
#include "libtrv/store_mark.h"
#include "libtrv/trace_store_impl.h"
#include "libtrv/writer_state.h"

namespace {

constexpr uint64_t largest_offset = 0xFFFFFFFF;  // offsets in the index have 32 bits
constexpr size_t index_record = 13;

uint32_t event_counter = 0;  // numbers every append of the process, for diagnostics

struct PendingEvent {
    size_t start = 0;  // where it begins in the pending bytes, its checkpoint included
    mt_Time time = 0;
};

}  // namespace

struct StoreWriter::Impl {
    std::string base;
    StoreFacts facts;
    mt_EventCallback callback = nullptr;

    CommittedFile events, index;
    std::vector<PendingEvent> pendingEvents;
    uint32_t eventsWritten = 0;  // committed and pending
    uint32_t blockEvents = 0;    // those of the last block; 0 when the next event opens one
    uint64_t refused = 0;
    std::optional<mt_Time> committedTime;  // of the last event that is committed
    size_t groupBytes = 0;
    uint64_t offsetLimit = largest_offset;
    Result refusal;
    Result outcome;  // of the last append that failed
    Result end;      // why nothing can be appended any more
    bool closed = false;

    WriterState state;
    StoreMark mark;
    AppendObserver* observer = nullptr;

    void take(const StoreFacts& wanted, mt_EventCallback with) {
        facts = wanted;
        facts.checkpointInterval = std::max(1u, wanted.checkpointInterval);
        mark = StoreMark(facts);
        callback = with;
    }
    void CountEvent() {
        ++eventsWritten;
        if (++blockEvents == facts.checkpointInterval) blockEvents = 0;
    }
    void PutCheckpoint();
    void BeginEvent(const mt_WriteRecord& record);
    void IndexCheckpoint(mt_Time time, size_t start);
    void TellAppended(const mt_WriteRecord& record, size_t changes) const;
    void TellRefused();
    bool PassEvent();
    bool RefuseUntracked(size_t start);
    bool RefuseAtLimit(size_t start);
    Result RefuseEvent(size_t start, const Result& why);
    bool CommitGroup();
    Result commit();
    template <class Write>
    Result WithRoom(Write&& write);
    Result CommitIndex();
    bool KeepWhatFitted(size_t bytes);
    void CutIndex();
    void reload();
    bool LastBlockOffset(uint64_t& offset) const;
    bool ReloadBlock(GFile& file);
};

// ---- Packets

void StoreWriter::Impl::PutCheckpoint() {
    ByteBuffer& out = events.pending;
    out.put8(mt_PacketObjectsUsed);
    out.put32(state.UsedCount());
    out.put(state.used());
    out.put8(mt_PacketState);
    out.put32(state.table().size());
    out.put(state.table().image());
    state.BeginBlock();
}

void StoreWriter::Impl::BeginEvent(const mt_WriteRecord& record) {
    if (blockEvents == 0) PutCheckpoint();
    constexpr size_t head = 17;
    uint8_t* at = events.pending.room(head + record.extra.size());
    at[0] = mt_PacketEvent;
    store_be64(at + 1, record.time);
    store_be32(at + 9, static_cast<uint32_t>(record.extra.size()));
    store_be16(at + 13, record.type);
    store_be16(at + 15, record.subtype);
    bytes_Copy(at + head, record.extra);
    events.pending.took(head + record.extra.size());
}

void StoreWriter::Impl::IndexCheckpoint(mt_Time time, size_t start) {
    uint8_t* at = index.pending.room(index_record);
    at[0] = 1;
    store_be64(at + 1, time);
    store_be32(at + 9, static_cast<uint32_t>(events.terminator + start));
    index.pending.took(index_record);
    mark.Add(time, events.terminator + start);
}

// ---- The observer

// changes: where those of the event begin, which go up to their end mark.
void StoreWriter::Impl::TellAppended(const mt_WriteRecord& record, size_t changes) const {
    const ByteBuffer& out = events.pending;
    observer->Appended({record.time, eventsWritten, record.type, record.subtype, record.extra,
                        ChangeList({out.data() + changes, out.size() - changes - 1})},
                       mark.value());
}

void StoreWriter::Impl::TellRefused() {
    if (observer) observer->Refused();
    observer = nullptr;
}

// ---- Commit and recovery

// Once more, where the observer had room to give.
template <class Write>
Result StoreWriter::Impl::WithRoom(Write&& write) {
    Result result = write();
    return result.ok() || !observer || !observer->GiveRoom() ? result : write();
}

Result StoreWriter::Impl::CommitIndex() {
    if (index.pending.size() == 0) return {};
    Result result = WithRoom([this] {
        size_t wrote = 0;
        return index.WriteBehind(wrote);
    });
    if (result.ok()) result = index.TurnTerminator(index.pending.size());
    if (!result.ok()) index.CutBack();  // the records stay pending and go with the next commit
    return result;
}

Result StoreWriter::Impl::commit() {
    if (events.pending.size() == 0) return CommitIndex();
    size_t wrote = 0;
    Result result = WithRoom([this, &wrote] { return events.WriteBehind(wrote); });
    if (result.ok()) result = events.TurnTerminator(events.pending.size());
    if (!result.ok() && !KeepWhatFitted(wrote)) return refusal = result;
    if (!pendingEvents.empty()) committedTime = pendingEvents.back().time;
    pendingEvents.clear();
    result = CommitIndex();
    if (observer && result.ok()) observer->Committed(eventsWritten);
    return result;
}

// The device took only so many bytes behind the terminator: the whole events among them are kept, the rest is
// dropped, and the state is read back from what is kept. True when all could be kept after all.
bool StoreWriter::Impl::KeepWhatFitted(size_t bytes) {
    const auto endOf = [this](size_t event) {
        return event + 1 < pendingEvents.size() ? pendingEvents[event + 1].start : events.pending.size();
    };
    // A terminator needs one byte behind the last event kept, and pending's first byte is not among those
    // written.
    size_t kept = 0;
    while (kept < pendingEvents.size() && endOf(kept) <= bytes) ++kept;
    const size_t size = kept == 0 ? 0 : endOf(kept - 1);
    if (kept > 0 && !(events.EndBehind(size).ok() && events.TurnTerminator(size).ok())) kept = 0;
    const size_t lost = pendingEvents.size() - kept;
    if (kept > 0) committedTime = pendingEvents[kept - 1].time;
    if (lost == 0) return true;
    TellRefused();
    refused += lost;
    eventsWritten -= static_cast<uint32_t>(lost);
    blockEvents = eventsWritten % facts.checkpointInterval;
    events.pending.cut(0);
    events.CutBack();
    pendingEvents.clear();
    CutIndex();
    static_cast<void>(CommitIndex());  // a record that finds no room stays pending
    reload();
    return false;
}

// Index records of blocks whose first event was dropped go too.
void StoreWriter::Impl::CutIndex() {
    const uint32_t interval = facts.checkpointInterval;
    const uint32_t blocks = eventsWritten / interval + (eventsWritten % interval != 0 ? 1 : 0);
    const auto indexed = static_cast<uint32_t>((index.terminator - mt_HeaderSize) / index_record);
    index.pending.cut((blocks - indexed) * index_record);
}

bool StoreWriter::Impl::LastBlockOffset(uint64_t& offset) const {
    uint8_t last[4];
    const uint8_t* at = last;
    if (index.pending.size() > 0)
        at = index.pending.data() + index.pending.size() - 4;
    else if (index.device->ReadAt(index.terminator - 4, last) != 4)
        return false;
    offset = load_be32(at);
    return true;
}

// The state is read back from the last block of what is stored.
void StoreWriter::Impl::reload() {
    state.clear();
    if (eventsWritten == 0) return;
    uint64_t offset = 0;
    const auto file = GFile::OnDevice(*events.device, events.name);
    bool whole = LastBlockOffset(offset);
    if (whole) {
        file->seek(offset);
        whole = ReloadBlock(*file);
    }
    if (!whole) end = Result::failure("the state could not be read back after a failed write", events.name);
    state.regroup();
}

// False when it does not lead to the terminator.
bool StoreWriter::Impl::ReloadBlock(GFile& file) {
    EventRecord event;
    for (bool whole = true; whole && file.fill(1);) {
        switch (file.u8()) {
            case mt_PacketState:
                whole = mt_ReadStateTable(file, state.loading());
                state.LoadBegun();
                break;
            case mt_PacketObjectsUsed:
                mt_SkipObjectsUsed(file);
                break;
            case mt_PacketEvent:
                whole = mt_ReadEvent(file, event);
                if (!whole) break;
                state.LoadEvent(event);
                break;
            default:
                return file.tell() == events.terminator + 1;
        }
    }
    return false;
}

// Takes back the event that was begun, commits those before it, and reads the state back.
Result StoreWriter::Impl::RefuseEvent(size_t start, const Result& why) {
    TellRefused();
    pendingEvents.pop_back();
    events.pending.cut(start);
    ++refused;
    // Where events before it are refused too, the device is the reason that counts.
    const uint64_t before = refused;
    const Result committed = commit();
    if (refused == before) {
        reload();
        refusal = why;
    }
    return refusal;
}

// What an append that is not taken ends in; always false.

bool StoreWriter::Impl::PassEvent() {
    ++refused;
    outcome = refusal = end;
    return false;
}

bool StoreWriter::Impl::RefuseUntracked(size_t start) {
    outcome = RefuseEvent(start, Result::failure("the event was not accepted", events.name));
    return false;
}

bool StoreWriter::Impl::RefuseAtLimit(size_t start) {
    end = Result::failure("the store is full: its offsets end at four gigabytes", events.name);
    outcome = RefuseEvent(start, Result(end));
    return false;
}

// False when events of the group were refused.
bool StoreWriter::Impl::CommitGroup() {
    const uint64_t before = refused;
    outcome = commit();
    return refused == before;
}

// ---- StoreWriter

StoreWriter::StoreWriter(std::unique_ptr<Impl> impl)
    : impl_(std::move(impl)),
      state_(impl_->state),
      packets_(impl_->events.pending),
      bigEndianTarget_(impl_->facts.bigEndianTarget) {}

StoreWriter::~StoreWriter() {
    static_cast<void>(Close());
}

Result StoreWriter::Create(const std::string& base, const StoreFacts& facts, mt_EventCallback callback,
                           std::unique_ptr<StoreWriter>& writer) {
    auto impl = std::make_unique<Impl>();
    impl->base = base;
    impl->take(facts, callback);
    Result made = store_CreateFiles(base, impl->facts, impl->events, impl->index);
    if (made.ok()) writer.reset(new StoreWriter(std::move(impl)));
    return made;
}

std::unique_ptr<StoreWriter> StoreWriter::OpenForWrite(const std::string& base, uint32_t ticksPerSecond,
                                                       const std::string& osName, bool bigEndianTarget,
                                                       mt_EventCallback callback) {
    std::unique_ptr<StoreWriter> writer;
    return Create(base, {ticksPerSecond, osName, bigEndianTarget}, callback, writer).ok() ? std::move(writer)
                                                                                          : nullptr;
}

std::unique_ptr<StoreWriter> StoreWriter::OnDevices(std::unique_ptr<FileDevice> events,
                                                    std::unique_ptr<FileDevice> index,
                                                    const StoreFacts& facts, mt_EventCallback callback) {
    auto impl = std::make_unique<Impl>();
    impl->take(facts, callback);
    const Result made = result_First(impl->events.begin(std::move(events), ".trs", mt_KindEvents),
                                     impl->index.begin(std::move(index), ".tri", mt_KindIndex));
    return made.ok() ? std::unique_ptr<StoreWriter>(new StoreWriter(std::move(impl))) : nullptr;
}

bool StoreWriter::append(mt_WriteRecord& record) {
    Impl& s = *impl_;
    if (!s.end.ok()) [[unlikely]]
        return s.PassEvent();
    const size_t start = packets_.size();
    record.sequence = event_counter++;
    s.pendingEvents.push_back({start, record.time});
    s.BeginEvent(record);
    const size_t changes = packets_.size();
    const bool tracked = s.callback(*this, record);
    packets_.put8(mt_ChangeEnd);
    if (!tracked) [[unlikely]]
        return s.RefuseUntracked(start);
    if (s.events.terminator + packets_.size() > s.offsetLimit) [[unlikely]]
        return s.RefuseAtLimit(start);
    if (s.blockEvents == 0) s.IndexCheckpoint(record.time, start);
    s.CountEvent();
    if (s.observer) s.TellAppended(record, changes);
    return packets_.size() < s.groupBytes || s.CommitGroup();
}

const Result& StoreWriter::outcome() const {
    return impl_->outcome;
}

void StoreWriter::SetObserver(AppendObserver* observer) {
    impl_->observer = observer;
}

void StoreWriter::SetGrouping(size_t groupBytes) {
    impl_->groupBytes = groupBytes;
}

Result StoreWriter::Commit() {
    return impl_->closed ? Result() : impl_->commit();
}

Result StoreWriter::Flush() {
    if (impl_->closed) return {};
    Result result = impl_->commit();
    impl_->events.StartSync();
    impl_->index.StartSync();
    result = result_First(result, impl_->events.sync());
    return result_First(result, impl_->index.sync());
}

Result StoreWriter::Close() {
    Result result = Flush();
    if (impl_->closed) return result;
    impl_->closed = true;
    impl_->end = Result::failure("the store is closed", impl_->events.name);
    impl_->events.device.reset();
    impl_->index.device.reset();
    return result;
}

uint32_t StoreWriter::EventsWritten() const {
    return impl_->eventsWritten;
}
uint64_t StoreWriter::EventsRefused() const {
    return impl_->refused;
}
std::optional<mt_Time> StoreWriter::LastTime() const {
    const auto& pending = impl_->pendingEvents;
    return pending.empty() ? impl_->committedTime : pending.back().time;
}
const Result& StoreWriter::refusal() const {
    return impl_->refusal;
}
const std::string& StoreWriter::base() const {
    return impl_->base;
}
const StoreFacts& StoreWriter::facts() const {
    return impl_->facts;
}
void StoreWriter::SetOffsetLimit(uint64_t limit) {
    impl_->offsetLimit = limit;
}

// ---- Record operations

void StoreWriter::RecordCreated(uint16_t objectType, uint32_t objectId, std::span<const uint8_t> block) {
    state_.create(objectType, objectId, block);
    uint8_t* at = packets_.room(9 + block.size());
    at[0] = mt_ChangeCreate;
    store_be16(at + 1, objectType);
    store_be32(at + 3, objectId);
    store_be16(at + 7, static_cast<uint16_t>(block.size()));
    bytes_Copy(at + 9, block);
    packets_.took(9 + block.size());
}

void StoreWriter::RecordModified(uint16_t objectType, uint32_t objectId, uint16_t offset,
                                 std::span<const uint8_t> bytes) {
    const uint32_t position = state().find(objectType, objectId);
    if (position != StateTable::npos) state_.modify(position, offset, bytes);
    PutModify(objectType, objectId, offset, bytes);
}

void StoreWriter::RecordDeleted(uint16_t objectType, uint32_t objectId) {
    state_.remove(objectType, objectId);
    uint8_t* at = packets_.room(7);
    at[0] = mt_ChangeDelete;
    store_be16(at + 1, objectType);
    store_be32(at + 3, objectId);
    packets_.took(7);
}
