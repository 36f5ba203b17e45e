// Writes raw event files: for tests and benchmarks, and for programs that hand events on in this format.
#pragma once

#include <algorithm>
#include <cstdint>
#include <future>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "chronoweave/import/raw/raw_header.h"
#include "chronoweave/import/raw/raw_record.h"
#include "libtrv/gfile.h"
#include "shared/libcxxutil/result.h"

// What a Refresh record and a task table say of a task. Names are cut to 31 bytes.
struct RawTask {
    uint32_t id = 0;
    uint32_t priority = 0;
    std::string name = {};
    std::optional<std::string> prefix = {};  // only in a Refresh record, and then of its longer form
};

// Puts raw events, in the target's byte order, behind the bytes that are there.
class RawWriter {
  public:
    explicit RawWriter(bool bigEndian) : big_(bigEndian) {}

    bool BigEndian() const { return big_; }
    // Until the next call that puts something or takes it away.
    std::span<const uint8_t> bytes() const { return {bytes_.data(), used_}; }
    std::vector<uint8_t> take() {
        bytes_.resize(std::exchange(used_, 0));
        return std::exchange(bytes_, {});
    }
    void clear() { used_ = 0; }  // keeps the room
    void reserve(size_t room) { bytes_.resize(std::max(bytes_.size(), room)); }
    // Gives its bytes away, as many as are returned, for a vector whose room it takes.
    size_t exchange(std::vector<uint8_t>& bytes) {
        bytes_.swap(bytes);
        return std::exchange(used_, 0);
    }

    // The header's byte order must be the writer's.
    void header(const EventSourceHeader& header, RawHeaderForm form);
    // A record of a stream: its length byte and the event. time 0 stands for none of its own. extra is taken
    // as it is, and is the target's. False, and nothing is written, when it is longer than a stream's records
    // can be (70 bytes).
    [[nodiscard]] bool event(mt_Time time, uint16_t type, uint16_t subtype, std::span<const uint8_t> extra) {
        if (extra.size() > raw_LongestExtra) return false;
        uint8_t* to = room(1 + raw_RecordHead + extra.size());
        raw_PutHead(to, extra.size(), time, type, subtype, big_);
        raw_PutExtra(to + 1 + raw_RecordHead, extra);
        return true;
    }
    // The same with words as extra data, of which the first is the object.
    [[nodiscard]] bool event(mt_Time time, uint16_t type, uint16_t subtype,
                             std::initializer_list<uint32_t> words);
    // A Refresh record: the task's status, priority and name.
    void refresh(mt_Time time, uint16_t status, const RawTask& task);
    // An entry of the task table of log images and core files.
    void TaskEntry(const RawTask& task, bool inUse);
    // Bytes as they are, for what is damaged on purpose.
    void raw(std::span<const uint8_t> bytes);

    // For tables: words in the target's byte order.
    void put16(uint16_t value);
    void put32(uint32_t value);

  private:
    // So many bytes behind those that are there, to be written by the caller.
    uint8_t* room(size_t count) {
        if (bytes_.size() - used_ < count) grow(count);
        used_ += count;
        return bytes_.data() + used_ - count;
    }
    void grow(size_t count);
    void text(std::string_view name, size_t size);

    bool big_;
    std::vector<uint8_t> bytes_;  // with room for more
    size_t used_ = 0;
};

// A raw event without its length byte, of any length.
std::vector<uint8_t> raw_EncodeEvent(bool bigEndian, mt_Time time, uint16_t type, uint16_t subtype,
                                     std::span<const uint8_t> extra);

// A file that a writer's bytes go to in large blocks. A block is written while the next is filled, by a
// thread that lasts as long; so a block that can't be written is told with the next one, or by flush.
class RawFile {
  public:
    // Makes or empties the file, and puts the header there.
    static Result create(const std::string& name, const EventSourceHeader& header, RawHeaderForm form,
                         std::unique_ptr<RawFile>& file);
    // What is put here reaches the file once it is much, and at flush.
    RawWriter& writer() { return writer_; }
    // Call it after each event: hands the bytes on once they are much.
    Result put() { return writer_.bytes().size() < block_ ? Result() : HandOn(); }
    // All there is stands in the file behind it.
    Result flush();

  private:
    // So much that starting to write it costs little beside it.
    static constexpr size_t block_ = size_t{512} * 1024;

    RawFile(std::unique_ptr<FileDevice> device, const std::string& name, bool bigEndian);

    Result HandOn();
    Result Wait();

    std::unique_ptr<FileDevice> device_;
    std::string name_;
    RawWriter writer_;
    uint64_t written_ = 0;
    std::vector<uint8_t> handedOn_;     // a block, the thread's until there is nothing to wait for
    std::future<DeviceWrite> writing_;  // its destructor waits, and stands ahead of the others'
    size_t writingBytes_ = 0;
};
