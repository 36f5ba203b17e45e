#include "libtrv/store_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "libtrv/committed_file.h"
#include "libtrv/gfile.h"
#include "libtrv/trace_store_impl.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr uint64_t largest_offset = 0xFFFFFFFF;  // offsets in the index have 32 bits
constexpr size_t key_size = 6;
constexpr size_t index_record = 13;
constexpr size_t groups = mt_GroupMask + 1;

uint32_t event_counter = 0;  // numbers every append of the process, for diagnostics

std::string system_reason() {
    return std::strerror(errno != 0 ? errno : ENOSPC);
}

}  // namespace

struct StoreWriter::Impl {
    std::string base;
    bool bigEndian = false;
    mt_EventCallback callback = nullptr;

    CommittedFile events, index;
    std::vector<size_t>
        pendingEvents;           // where each pending event begins in events.pending, its checkpoint included
    uint32_t eventsWritten = 0;  // committed and pending
    uint64_t refused = 0;
    size_t groupBytes = 0;
    uint64_t offsetLimit = largest_offset;
    bool full = false;
    std::string lastError;

    StateTable state;
    ByteBuffer used;  // keys of the objects of the block in progress, in packet form
    bool deletedInBlock = false;
    std::array<std::vector<uint32_t>, groups> group, running;

    void put_checkpoint();
    void begin_event(const mt_WriteRecord& record);
    void index_checkpoint(mt_Time time, size_t start);
    bool drop_event(size_t start);
    bool commit();
    bool commit_index();
    bool keep_what_fitted(size_t bytes);
    void reload();
    void reload_block(GFile& file);
    void enter_used(uint16_t type, uint32_t id);
    void used_from_state();
    void regroup();
    void apply_create(uint16_t type, uint32_t id, std::span<const uint8_t> block);
    void apply_modify(uint32_t position, uint32_t offset, std::span<const uint8_t> bytes);
    bool is_task(uint32_t position) const;
    uint16_t status_of(uint32_t position) const {
        return load_be16(state.block_at(position) + mt_TaskStatus);
    }
};

// ---- State
// -----------------------------------------------------------------------------------------------------

bool StoreWriter::Impl::is_task(uint32_t position) const {
    return state.entry(position).objectType == mt_ObjectTask &&
           state.block_size(position) == mt_TaskBlockSize;
}

void StoreWriter::Impl::enter_used(uint16_t type, uint32_t id) {
    uint8_t key[key_size];
    store_be16(key, type);
    store_be32(key + 2, id);
    if (deletedInBlock)  // only then can the key stand there already
        for (size_t at = 0; at < used.size(); at += key_size)
            if (std::memcmp(used.data() + at, key, key_size) == 0) return;
    used.put(key);
}

void StoreWriter::Impl::used_from_state() {
    used.cut(0);
    deletedInBlock = false;
    for (uint32_t position = 0; position < state.size(); ++position) {
        const ObjectEntry entry = state.entry(position);
        enter_used(entry.objectType, entry.objectId);
    }
}

void StoreWriter::Impl::regroup() {
    for (auto& members : group) members.clear();
    for (auto& members : running) members.clear();
    for (uint32_t position = 0; position < state.size(); ++position) {
        if (!is_task(position)) continue;
        const uint32_t of = state.id_at(position) & mt_GroupMask;
        group[of].push_back(position);
        if (status_of(position) == mt_Running) running[of].push_back(position);
    }
}

void StoreWriter::Impl::apply_create(uint16_t type, uint32_t id, std::span<const uint8_t> block) {
    const uint32_t position = state.create(type, id, block);
    if (position == StateTable::npos) return;
    enter_used(type, id);
    if (!is_task(position)) return;
    group[id & mt_GroupMask].push_back(position);
    if (status_of(position) == mt_Running) running[id & mt_GroupMask].push_back(position);
}

void StoreWriter::Impl::apply_modify(uint32_t position, uint32_t offset, std::span<const uint8_t> bytes) {
    const bool touches_status = offset < mt_TaskStatusValid && is_task(position);
    const bool ran = touches_status && status_of(position) == mt_Running;
    state.modify_at(position, offset, bytes);
    if (!touches_status || ran == (status_of(position) == mt_Running)) return;
    auto& members = running[state.id_at(position) & mt_GroupMask];
    if (ran)
        members.erase(std::find(members.begin(), members.end(), position));
    else  // in table order, as a walk of the table would meet them
        members.insert(std::lower_bound(members.begin(), members.end(), position), position);
}

// ---- Packets
// ---------------------------------------------------------------------------------------------------

void StoreWriter::Impl::put_checkpoint() {
    ByteBuffer& out = events.pending;
    out.put8(mt_PacketObjectsUsed);
    out.put32(static_cast<uint32_t>(used.size() / key_size));
    out.put({used.data(), used.size()});
    out.put8(mt_PacketState);
    out.put32(state.size());
    out.put(state.image());
    // The next block starts with every object now known. With nothing deleted, those are the keys that stand
    // there.
    if (deletedInBlock) used_from_state();
}

void StoreWriter::Impl::begin_event(const mt_WriteRecord& record) {
    if (eventsWritten % mt_CheckpointInterval == 0) put_checkpoint();
    constexpr size_t head = 17;
    uint8_t* at = events.pending.room(head + record.extra.size());
    at[0] = mt_PacketEvent;
    store_be64(at + 1, record.time);
    store_be32(at + 9, static_cast<uint32_t>(record.extra.size()));
    store_be16(at + 13, record.type);
    store_be16(at + 15, record.subtype);
    if (!record.extra.empty()) std::memcpy(at + head, record.extra.data(), record.extra.size());
    events.pending.took(head + record.extra.size());
}

void StoreWriter::Impl::index_checkpoint(mt_Time time, size_t start) {
    uint8_t* at = index.pending.room(index_record);
    at[0] = 1;
    store_be64(at + 1, time);
    store_be32(at + 9, static_cast<uint32_t>(events.terminator + start));
    index.pending.took(index_record);
}

// ---- Commit and recovery
// ---------------------------------------------------------------------------------------

bool StoreWriter::Impl::commit_index() {
    if (index.pending.size() == 0) return true;
    if (index.write_behind() == index.pending.size() && index.turn_terminator(index.pending.size()))
        return true;
    lastError = base + ".tri: " + system_reason();
    index.cut_back();  // the records stay pending and go with the next commit
    return false;
}

bool StoreWriter::Impl::commit() {
    if (events.pending.size() == 0) return commit_index();
    errno = 0;
    const size_t wrote = events.write_behind();
    bool whole = wrote == events.pending.size();
    if (whole) whole = events.turn_terminator(events.pending.size());
    if (whole) {
        pendingEvents.clear();
        return commit_index();
    }
    lastError = base + ".trs: " + system_reason();
    return keep_what_fitted(wrote);
}

// The device took only so many bytes behind the terminator: the whole events among them are kept, the rest is
// dropped, and the state is read back from what is kept. Always false.
bool StoreWriter::Impl::keep_what_fitted(size_t bytes) {
    // A terminator needs one byte behind the last event kept, and bytes[0] is not among those written.
    size_t kept = 0;
    while (kept < pendingEvents.size()) {
        const size_t end = kept + 1 < pendingEvents.size() ? pendingEvents[kept + 1] : events.pending.size();
        if (end > bytes) break;
        ++kept;
    }
    const size_t lost = pendingEvents.size() - kept;
    const uint32_t before = eventsWritten - static_cast<uint32_t>(pendingEvents.size());
    const uint8_t terminator[1] = {mt_PacketEnd};
    const size_t size = kept == 0                     ? 0
                        : kept < pendingEvents.size() ? pendingEvents[kept]
                                                      : events.pending.size();
    const bool turned = kept > 0 && events.device->write_at(events.terminator + size, terminator) == 1 &&
                        events.turn_terminator(size);
    refused += turned ? lost : pendingEvents.size();
    eventsWritten = before + (turned ? static_cast<uint32_t>(kept) : 0);
    events.pending.cut(0);
    events.cut_back();
    pendingEvents.clear();
    // Index records of blocks whose first event was dropped go too.
    const uint32_t blocks = (eventsWritten + mt_CheckpointInterval - 1) / mt_CheckpointInterval;
    const auto indexed = static_cast<uint32_t>((index.terminator - mt_HeaderSize) / index_record);
    index.pending.cut((blocks - indexed) * index_record);
    commit_index();
    reload();
    return false;
}

void StoreWriter::Impl::reload() {
    state.clear();
    used.cut(0);
    if (eventsWritten > 0) {
        const auto file = GFile::OnDevice(*events.device, base + ".trs");
        uint8_t last[4];
        const uint8_t* offset = last;
        if (index.pending.size() > 0)
            offset = index.pending.data() + index.pending.size() - 4;
        else if (index.device->read_at(index.terminator - 4, last) != 4)
            return;
        file->seek(load_be32(offset));
        reload_block(*file);
    }
    regroup();
}

void StoreWriter::Impl::reload_block(GFile& file) {
    EventRecord event;
    for (bool whole = true; whole && file.fill(1);) {
        switch (file.u8()) {
            case mt_PacketState:
                whole = mt_ReadStateTable(file, state);
                used_from_state();
                break;
            case mt_PacketObjectsUsed:
                mt_SkipObjectsUsed(file);
                break;
            case mt_PacketEvent: {
                whole = mt_ReadEvent(file, event);
                StateChange change;
                for (ChangeList changes = event.changes; whole && changes.next(change);) {
                    if (change.kind == mt_ChangeCreate &&
                        state.find(change.objectType, change.objectId) == StateTable::npos)
                        enter_used(change.objectType, change.objectId);
                    deletedInBlock = deletedInBlock || change.kind == mt_ChangeDelete;
                }
                if (whole) mt_ApplyEventToState(state, event);
                break;
            }
            default:
                whole = false;
                break;
        }
    }
}

// ---- StoreWriter
// -----------------------------------------------------------------------------------------------

StoreWriter::StoreWriter(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

StoreWriter::~StoreWriter() {
    impl_->commit();
    Flush();
}

namespace {

bool write_version_file(const std::string& name, uint32_t ticksPerSecond, const std::string& osName,
                        bool bigEndian) {
    const std::vector<uint8_t> bytes = StoreWriter::EncodeVersionFile(ticksPerSecond, osName, bigEndian);
    const auto device = gf_OpenDevice(name, true);
    return device && device->write_at(0, bytes) == static_cast<int64_t>(bytes.size());
}

// Writes the version file under a temporary name and moves it to its own.
bool make_version_file(const std::string& name, uint32_t ticksPerSecond, const std::string& osName,
                       bool bigEndian, std::string& why) {
    std::string temporary = path_join(path_temporary_directory(), "tmpXXXXXX");
    const int made = ::mkstemp(temporary.data());
    if (made < 0) {
        why = temporary + ": " + std::strerror(errno);
        return false;
    }
    ::fchmod(made, 0644);
    ::close(made);
    bool moved = write_version_file(temporary, ticksPerSecond, osName, bigEndian);
    if (moved && ::rename(temporary.c_str(), name.c_str()) != 0) {
        std::error_code error;
        moved = std::filesystem::copy_file(temporary, name, error);
        if (!moved) std::filesystem::remove(name, error);
    }
    if (!moved) why = name + ": " + system_reason();
    ::unlink(temporary.c_str());
    return moved;
}

bool delete_existing(const std::string& name, std::string& why) {
    if (::unlink(name.c_str()) == 0 || errno == ENOENT) return true;
    why = name + ": " + std::strerror(errno);
    return false;
}

bool create_stream(const std::string& name, uint32_t kind, CommittedFile& file, std::string& why) {
    GFileHeader header;
    header.kind = kind;
    errno = 0;
    file.device = gf_OpenDevice(name, true);
    if (file.device && file.create(header)) return true;
    why = name + ": " + system_reason();
    return false;
}

}  // namespace

std::unique_ptr<StoreWriter> StoreWriter::OpenForWrite(const std::string& base, uint32_t ticksPerSecond,
                                                       const std::string& osName, bool bigEndianTarget,
                                                       mt_EventCallback callback, std::string* why) {
    std::string reason;
    auto impl = std::make_unique<Impl>();
    impl->base = base;
    impl->bigEndian = bigEndianTarget;
    impl->callback = callback;
    bool made = true;
    for (const char* extension : {".trv", ".tri", ".trs"})
        made = made && delete_existing(base + extension, reason);
    made = made && create_stream(base + ".trs", mt_KindEvents, impl->events, reason) &&
           create_stream(base + ".tri", mt_KindIndex, impl->index, reason) &&
           make_version_file(base + ".trv", ticksPerSecond, osName, bigEndianTarget, reason);
    if (made) return std::unique_ptr<StoreWriter>(new StoreWriter(std::move(impl)));
    if (why) *why = reason;
    return nullptr;
}

std::vector<uint8_t> StoreWriter::EncodeVersionFile(uint32_t ticksPerSecond, const std::string& osName,
                                                    bool bigEndianTarget) {
    GFileHeader header;
    header.kind = mt_KindVersion;
    ByteBuffer bytes;
    bytes.put(gf_EncodeHeader(header));
    bytes.put8(mt_FormatVersion);
    bytes.put32(ticksPerSecond);
    bytes.put32(static_cast<uint32_t>(osName.size()));
    bytes.put({reinterpret_cast<const uint8_t*>(osName.data()), osName.size()});
    bytes.put8(bigEndianTarget ? 1 : 0);
    bytes.put32(mt_CheckpointInterval);
    return {bytes.data(), bytes.data() + bytes.size()};
}

std::unique_ptr<StoreWriter> StoreWriter::OnDevices(std::unique_ptr<FileDevice> events,
                                                    std::unique_ptr<FileDevice> index, bool bigEndianTarget,
                                                    mt_EventCallback callback) {
    auto impl = std::make_unique<Impl>();
    impl->bigEndian = bigEndianTarget;
    impl->callback = callback;
    impl->events.device = std::move(events);
    impl->index.device = std::move(index);
    GFileHeader header;
    header.kind = mt_KindEvents;
    bool made = impl->events.create(header);
    header.kind = mt_KindIndex;
    made = impl->index.create(header) && made;
    return made ? std::unique_ptr<StoreWriter>(new StoreWriter(std::move(impl))) : nullptr;
}

bool StoreWriter::AppendEvent(mt_Time time, uint16_t type, uint16_t subtype, std::span<const uint8_t> extra) {
    Impl& s = *impl_;
    if (s.full) {
        ++s.refused;
        return false;
    }
    const size_t start = s.events.pending.size();
    const uint32_t number = s.eventsWritten;
    const mt_WriteRecord record{time, event_counter++, type, subtype, extra};
    s.pendingEvents.push_back(start);
    s.begin_event(record);
    const bool tracked = s.callback(*this, record);
    s.events.pending.put8(mt_ChangeEnd);
    s.full = s.events.terminator + s.events.pending.size() > s.offsetLimit;
    if (!tracked || s.full) return s.drop_event(start);
    if (number % mt_CheckpointInterval == 0) s.index_checkpoint(time, start);
    ++s.eventsWritten;
    if (s.events.pending.size() < s.groupBytes) return true;
    const uint64_t refused = s.refused;
    s.commit();
    return s.refused == refused;
}

// Takes back the event that was begun, commits those before it, and reads the state back. Always false.
bool StoreWriter::Impl::drop_event(size_t start) {
    pendingEvents.pop_back();
    events.pending.cut(start);
    ++refused;
    const std::string reason = full ? base + ".trs: the store is full: its offsets end at four gigabytes"
                                    : "the event was not accepted";
    commit();
    reload();
    lastError = reason;
    return false;
}

bool StoreWriter::SetGrouping(size_t groupBytes) {
    impl_->groupBytes = groupBytes;
    return groupBytes > 0 || impl_->commit();
}

bool StoreWriter::Commit() {
    return impl_->commit();
}

bool StoreWriter::Flush() {
    const bool committed = impl_->commit();
    const bool events = impl_->events.device->sync();
    return impl_->index.device->sync() && events && committed;
}

uint32_t StoreWriter::eventsWritten() const {
    return impl_->eventsWritten;
}
uint64_t StoreWriter::eventsRefused() const {
    return impl_->refused;
}
const std::string& StoreWriter::lastError() const {
    return impl_->lastError;
}
const std::string& StoreWriter::base() const {
    return impl_->base;
}
bool StoreWriter::bigEndianTarget() const {
    return impl_->bigEndian;
}
const StateTable& StoreWriter::state() const {
    return impl_->state;
}
const std::vector<uint32_t>& StoreWriter::group(uint32_t id) const {
    return impl_->group[id & mt_GroupMask];
}
const std::vector<uint32_t>& StoreWriter::running(uint32_t id) const {
    return impl_->running[id & mt_GroupMask];
}
void StoreWriter::SetOffsetLimit(uint64_t limit) {
    impl_->offsetLimit = limit;
}

void StoreWriter::RecordCreated(uint16_t objectType, uint32_t objectId, std::span<const uint8_t> block) {
    impl_->apply_create(objectType, objectId, block);
    uint8_t* at = impl_->events.pending.room(9 + block.size());
    at[0] = mt_ChangeCreate;
    store_be16(at + 1, objectType);
    store_be32(at + 3, objectId);
    store_be16(at + 7, static_cast<uint16_t>(block.size()));
    std::copy(block.begin(), block.end(), at + 9);
    impl_->events.pending.took(9 + block.size());
}

namespace {
void put_modify(ByteBuffer& out, uint16_t type, uint32_t id, uint16_t offset,
                std::span<const uint8_t> bytes) {
    uint8_t* at = out.room(10 + bytes.size());
    at[0] = mt_ChangeModify;
    store_be16(at + 1, type);
    store_be32(at + 3, id);
    store_be16(at + 7, offset);
    at[9] = static_cast<uint8_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), at + 10);
    out.took(10 + bytes.size());
}
}  // namespace

void StoreWriter::RecordModified(uint16_t objectType, uint32_t objectId, uint16_t offset,
                                 std::span<const uint8_t> bytes) {
    const uint32_t position = impl_->state.find(objectType, objectId);
    if (position != StateTable::npos) impl_->apply_modify(position, offset, bytes);
    put_modify(impl_->events.pending, objectType, objectId, offset, bytes);
}

void StoreWriter::RecordModifiedAt(uint32_t position, uint16_t offset, std::span<const uint8_t> bytes) {
    impl_->apply_modify(position, offset, bytes);
    put_modify(impl_->events.pending, impl_->state.entry(position).objectType, impl_->state.id_at(position),
               offset, bytes);
}

void StoreWriter::RecordDeleted(uint16_t objectType, uint32_t objectId) {
    impl_->state.remove(objectType, objectId);
    impl_->deletedInBlock = true;
    impl_->regroup();
    uint8_t* at = impl_->events.pending.room(7);
    at[0] = mt_ChangeDelete;
    store_be16(at + 1, objectType);
    store_be32(at + 3, objectId);
    impl_->events.pending.took(7);
}
