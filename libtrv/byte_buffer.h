// The bytes of packets as a writer builds them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

#include "libtrv/byte_order.h"

// Copies bytes, which do not overlap with where they go. Those of events are few: up to 64 go in steps of
// eight, where a call would cost more than the copying.
inline void bytes_Copy(uint8_t* to, std::span<const uint8_t> bytes) {
    const uint8_t* from = bytes.data();
    const size_t count = bytes.size();
    if (count > 64) {
        std::memcpy(to, from, count);
    } else if (count >= 8) {
        for (size_t at = 0; at + 8 < count; at += 8) std::memcpy(to + at, from + at, 8);
        std::memcpy(to + count - 8, from + count - 8, 8);
    } else if (count >= 4) {
        std::memcpy(to, from, 4);
        std::memcpy(to + count - 4, from + count - 4, 4);
    } else {
        for (size_t at = 0; at < count; ++at) to[at] = from[at];
    }
}

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
        bytes_Copy(room(bytes.size()), bytes);
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
