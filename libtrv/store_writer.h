// The writing half of the store: events go in one by one, state is tracked by a callback, and every 100
// events a checkpoint is written.
//
// Commit protocol: the files always end in a byte 0, at offset T. An append writes everything behind T first,
// hands it to the operating system, and then turns the byte at T from 0 into the type of the first new
// packet. A reader that stops at a 0 therefore sees whole events only. With grouping on, many events are one
// such append.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "libtrv/state_table.h"
#include "libtrv/store_format.h"
#include "libtrv/trace_store.h"

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
    // Deletes files of the three names that exist, makes the .trs and .tri with their terminators, and moves
    // the complete .trv into place last. Null on failure, with what and where in why.
    static std::unique_ptr<StoreWriter> OpenForWrite(const std::string& base, uint32_t ticksPerSecond,
                                                     const std::string& osName, bool bigEndianTarget,
                                                     mt_EventCallback callback, std::string* why = nullptr);
    // Commits what is pending and asks the disk to keep it.
    ~StoreWriter();

    // Appends one event. Without grouping it is committed on return. False when it was refused: the store
    // then ends where it ended before, stays valid, and lastError() says why.
    [[nodiscard]] bool AppendEvent(mt_Time time, uint16_t type, uint16_t subtype,
                                   std::span<const uint8_t> extra);

    // With grouping, appends are held in memory and committed together once about groupBytes are pending, at
    // Commit, and at the end. The files are the same bytes either way. 0 turns grouping off and commits what
    // is pending.
    bool SetGrouping(size_t groupBytes);
    // Commits what is pending. False when the device refused something, be it an index record, which then
    // stays pending; as many whole events as it took are kept.
    [[nodiscard]] bool Commit();
    // Flushes to the operating system and the disk.
    bool Flush();

    uint32_t eventsWritten() const;  // committed and pending
    uint64_t eventsRefused() const;  // appended, but not stored
    const std::string& lastError() const;
    const std::string& base() const;
    bool bigEndianTarget() const;

    // For callbacks: the state of all objects now, and its changes. Each change is applied and then written.
    // A create of a key that is in already changes nothing but is written all the same.
    const StateTable& state() const;
    void RecordCreated(uint16_t objectType, uint32_t objectId, std::span<const uint8_t> block);
    void RecordModified(uint16_t objectType, uint32_t objectId, uint16_t offset,
                        std::span<const uint8_t> bytes);
    void RecordModifiedAt(uint32_t position, uint16_t offset, std::span<const uint8_t> bytes);
    void RecordDeleted(uint16_t objectType, uint32_t objectId);
    // Positions in state() of the tasks of a group: all of them, and those whose status is running.
    const std::vector<uint32_t>& group(uint32_t id) const;
    const std::vector<uint32_t>& running(uint32_t id) const;

    // For tests: the devices in place of files, and the offset past which appends are refused (2^32 - 1).
    static std::unique_ptr<StoreWriter> OnDevices(std::unique_ptr<FileDevice> events,
                                                  std::unique_ptr<FileDevice> index, bool bigEndianTarget,
                                                  mt_EventCallback callback);
    void SetOffsetLimit(uint64_t limit);

    // The bytes of a .trv file.
    static std::vector<uint8_t> EncodeVersionFile(uint32_t ticksPerSecond, const std::string& osName,
                                                  bool bigEndianTarget);

    struct Impl;

  private:
    explicit StoreWriter(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};
