// What the writer builds its files with: bytes that grow, and a file whose every append becomes visible by
// one byte.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>

#include "libtrv/byte_order.h"
#include "libtrv/gfile.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/result.h"

// Bytes that grow at the end, with room made ahead so that small puts are stores.
class ByteBuffer {
  public:
    size_t size() const { return size_; }
    const uint8_t* data() const { return bytes_.get(); }
    void cut(size_t size) { size_ = size; }
    // Room for count more bytes; the caller fills them and calls took.
    uint8_t* room(size_t count) {
        if (capacity_ - size_ < count) grow(count);
        return bytes_.get() + size_;
    }
    void took(size_t count) { size_ += count; }
    void put(std::span<const uint8_t> bytes) {
        if (!bytes.empty()) std::memcpy(room(bytes.size()), bytes.data(), bytes.size());
        took(bytes.size());
    }
    void put8(uint8_t value) {
        *room(1) = value;
        took(1);
    }
    void put32(uint32_t value) {
        store_be32(room(4), value);
        took(4);
    }

  private:
    void grow(size_t count) {
        capacity_ = std::max(capacity_ * 2, size_ + count + 4096);
        auto larger = std::make_unique_for_overwrite<uint8_t[]>(capacity_);
        if (size_ > 0) std::memcpy(larger.get(), bytes_.get(), size_);
        bytes_ = std::move(larger);
    }
    std::unique_ptr<uint8_t[]> bytes_;
    size_t size_ = 0, capacity_ = 0;
};

// One growing file under the commit protocol. pending holds what is to come behind the terminator, beginning
// with the byte that takes the terminator's place. Failures name the file.
struct CommittedFile {
    std::unique_ptr<FileDevice> device;
    std::string name;
    uint64_t terminator = 0;
    ByteBuffer pending;

    // Makes the file of a name, with a header of this kind and its terminator.
    Result create(const std::string& fileName, uint32_t kind);
    // The same on a device.
    Result begin(std::unique_ptr<FileDevice> on, const std::string& fileName, uint32_t kind);

    // Writes what is pending behind the terminator, a new terminator included. wrote: how many bytes of it
    // the device took. Nothing is visible to a reader yet.
    Result WriteBehind(size_t& wrote);
    // Puts a terminator behind the first size bytes of what is pending, all of which were taken.
    Result EndBehind(size_t size);
    // Makes the first size bytes of what is pending visible, behind which a terminator already stands, and
    // lets go of the rest.
    Result TurnTerminator(size_t size);

    // Takes away what was written behind the terminator and never became visible. Where that fails the bytes
    // stay, and no reader looks at them.
    void CutBack();
    // Asks the disk to keep what was written.
    Result sync();
};
