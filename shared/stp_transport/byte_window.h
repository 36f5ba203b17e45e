// A buffer of bytes that are put in at the end and taken out at the front: the outgoing or incoming side of a
// transport. Plain fields, so that another party in the process may read from an outgoing one by their
// addresses and reset it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

struct ByteWindow {
    // What is in use starts at offset; offset + length <= capacity.
    uint32_t offset = 0, length = 0;
    uint32_t initial, capacity;
    uint8_t* buffer;  // of storage

    explicit ByteWindow(uint32_t initialBytes);
    ByteWindow(const ByteWindow&) = delete;
    ByteWindow& operator=(const ByteWindow&) = delete;

    std::span<const uint8_t> bytes() const { return {buffer + offset, length}; }
    // The free bytes behind the data.
    std::span<uint8_t> room() { return {buffer + offset + length, capacity - offset - length}; }
    // Counts bytes that were put into the room, or takes some from the front. An empty window starts over.
    void added(size_t count) { length += static_cast<uint32_t>(count); }
    void taken(size_t count);
    // A buffer of this capacity with the data at its start; at least length.
    void reallocate(uint32_t newCapacity);
    // Moves the data to the start of the same buffer.
    void compact();
    // Empty, at the initial capacity.
    void reset();

  private:
    std::unique_ptr<uint8_t[]> storage_;
};

// The addresses of the four fields of another party's outgoing window.
struct PeerWindow {
    uint32_t* offset;
    uint32_t* length;
    uint32_t* capacity;
    uint8_t** buffer;
};
