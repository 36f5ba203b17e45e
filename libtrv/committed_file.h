// What the writer builds its files with: bytes that grow, and a file whose every append becomes visible by
// one byte.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "libtrv/byte_order.h"
#include "libtrv/gfile.h"
#include "libtrv/store_format.h"

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
// with the byte that takes the terminator's place.
struct CommittedFile {
    std::unique_ptr<FileDevice> device;
    uint64_t terminator = 0;
    ByteBuffer pending;

    bool create(const GFileHeader& header) {
        std::vector<uint8_t> bytes = gf_EncodeHeader(header);
        bytes.push_back(mt_PacketEnd);
        terminator = bytes.size() - 1;
        return device->write_at(0, bytes) == static_cast<int64_t>(bytes.size());
    }

    // Writes what is pending behind the terminator, a new terminator included, and tells how many bytes of it
    // the device took. Nothing is visible to a reader yet.
    size_t write_behind() {
        pending.put8(mt_PacketEnd);
        const int64_t wrote = device->write_at(terminator + 1, {pending.data() + 1, pending.size() - 1});
        pending.cut(pending.size() - 1);
        return wrote > 0 ? static_cast<size_t>(wrote) : 0;
    }

    // Makes the first size bytes of what is pending visible, behind which a terminator already stands.
    bool turn_terminator(size_t size) {
        if (device->write_at(terminator, {pending.data(), 1}) != 1) return false;
        terminator += size;
        pending.cut(0);
        return true;
    }

    void cut_back() { device->truncate(terminator + 1); }
};
