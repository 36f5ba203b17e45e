// The writing half of the store: events go in one by one, state is tracked by a callback, and every so many
// events, the checkpoint interval, a checkpoint is written.
//
// Commit protocol: the files always end in a byte 0, at offset T. An append writes everything behind T first,
// hands it to the operating system, and then turns the byte at T from 0 into the type of the first new
// packet. A reader that stops at a 0 therefore sees whole events only. With grouping on, many events are one
// such append.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "libtrv/byte_buffer.h"
#include "libtrv/store_files.h"
#include "libtrv/store_format.h"
#include "libtrv/writer_state.h"
#include "shared/libcxxutil/result.h"

class AppendObserver;
class FileDevice;

// What the callback learns of an event. sequence comes from one counter of the process and is not stored.
struct mt_WriteRecord {
    mt_Time time = 0;
    uint32_t sequence = 0;
    uint16_t type = 0;
    uint16_t subtype = 0;
    std::span<const uint8_t> extra;
};

class StoreWriter;
// Turns an event into state changes by the three record operations below; false fails the append.
using mt_EventCallback = bool (*)(StoreWriter& writer, const mt_WriteRecord& record);

class StoreWriter {
  public:
    // Makes a store of a base name in place of one that stands there. Where that fails, an earlier one is
    // gone all the same.
    static Result Create(const std::string& base, const StoreFacts& facts, mt_EventCallback callback,
                         std::unique_ptr<StoreWriter>& writer);
    // The same with an interval of 100; null on failure.
    static std::unique_ptr<StoreWriter> OpenForWrite(const std::string& base, uint32_t ticksPerSecond,
                                                     const std::string& osName, bool bigEndianTarget,
                                                     mt_EventCallback callback);
    // Closes without a word: whoever has to tell of a failure calls Close before.
    ~StoreWriter();

    // Appends one event. Without grouping it is committed on success. A failure means that it was refused, or
    // with grouping that events of its group were: the store then ends behind the last event that could be
    // taken and stays valid. Whoever appends on leaves a hole, unless it begins with the first one refused.
    Result AppendEvent(mt_Time time, uint16_t type, uint16_t subtype, std::span<const uint8_t> extra) {
        mt_WriteRecord record{time, 0, type, subtype, extra};
        return append(record) ? Result() : outcome();
    }

    // With grouping, appends are held in memory and committed together once about groupBytes are pending, at
    // Commit, and at the end. The files are the same bytes either way. With 0 each append is one commit, with
    // what may be pending.
    void SetGrouping(size_t groupBytes);
    // Told of what goes in from now on; borrowed, null for none. It must outlive the writer or be taken away.
    void SetObserver(AppendObserver* observer);
    // Commits what is pending. Events that the device did not take are refused, all behind the first of them.
    // An index record that it did not take stays pending and goes with the next commit.
    Result Commit();
    // Commits and asks the disk to keep it.
    Result Flush();
    // Flushes and lets go of the files; the first failure of all. Nothing can be appended afterwards. A
    // second call does nothing.
    Result Close();

    uint32_t EventsWritten() const;  // committed and pending
    uint64_t EventsRefused() const;  // appended, but not stored
    // Time of the last event that is stored or pending; nothing for an empty store.
    std::optional<mt_Time> LastTime() const;
    // Why events were refused, the last time that it happened.
    const Result& refusal() const;
    const std::string& base() const;
    const StoreFacts& facts() const;
    bool BigEndianTarget() const { return bigEndianTarget_; }

    // For callbacks: the state of all objects now, and its changes. Each change is applied and then written.
    // A create of a key that is in already changes nothing but is written all the same.
    const StateTable& state() const { return state_.table(); }
    void RecordCreated(uint16_t objectType, uint32_t objectId, std::span<const uint8_t> block);
    void RecordModified(uint16_t objectType, uint32_t objectId, uint16_t offset,
                        std::span<const uint8_t> bytes);
    void RecordModifiedAt(uint32_t position, uint16_t offset, std::span<const uint8_t> bytes);
    void RecordDeleted(uint16_t objectType, uint32_t objectId);
    // Positions in state() of the tasks of a group: all of them, and those whose status is running.
    const std::vector<uint32_t>& group(uint32_t id) const { return state_.group(id); }
    const std::vector<uint32_t>& running(uint32_t id) const { return state_.running(id); }

    // For tests: the devices in place of files, and the offset past which appends are refused (2^32 - 1).
    static std::unique_ptr<StoreWriter> OnDevices(std::unique_ptr<FileDevice> events,
                                                  std::unique_ptr<FileDevice> index, const StoreFacts& facts,
                                                  mt_EventCallback callback);
    void SetOffsetLimit(uint64_t limit);

    struct Impl;

  private:
    explicit StoreWriter(std::unique_ptr<Impl> impl);
    bool append(mt_WriteRecord& record);
    const Result& outcome() const;  // of the last append that failed
    void PutModify(uint16_t type, uint32_t id, uint16_t offset, std::span<const uint8_t> bytes);

    std::unique_ptr<Impl> impl_;
    // Within impl_: what every event needs.
    WriterState& state_;
    ByteBuffer& packets_;
    bool bigEndianTarget_;
};

inline void StoreWriter::PutModify(uint16_t type, uint32_t id, uint16_t offset,
                                   std::span<const uint8_t> bytes) {
    constexpr size_t head = 10;
    uint8_t* at = packets_.room(head + bytes.size());
    at[0] = mt_ChangeModify;
    store_be16(at + 1, type);
    store_be32(at + 3, id);
    store_be16(at + 7, offset);
    at[9] = static_cast<uint8_t>(bytes.size());
    bytes_Copy(at + head, bytes);
    packets_.took(head + bytes.size());
}

inline void StoreWriter::RecordModifiedAt(uint32_t position, uint16_t offset,
                                          std::span<const uint8_t> bytes) {
    state_.modify(position, offset, bytes);
    PutModify(state().TypeAt(position), state().IdAt(position), offset, bytes);
}
