#include "shared/stp_transport/byte_window.h"

#include <cstring>

#include "shared/libcxxutil/report.h"

ByteWindow::ByteWindow(uint32_t initialBytes)
    : initial(initialBytes), capacity(initialBytes), buffer(nullptr), storage_(new uint8_t[initialBytes]) {
    buffer = storage_.get();
}

void ByteWindow::taken(size_t count) {
    GEN_ASSERT(count <= length);
    offset += static_cast<uint32_t>(count);
    length -= static_cast<uint32_t>(count);
    if (length == 0) offset = 0;
}

void ByteWindow::reallocate(uint32_t newCapacity) {
    GEN_ASSERT(newCapacity >= length);
    std::unique_ptr<uint8_t[]> storage(new uint8_t[newCapacity]);
    if (length > 0) std::memcpy(storage.get(), buffer + offset, length);
    storage_ = std::move(storage);
    buffer = storage_.get();
    capacity = newCapacity;
    offset = 0;
}

void ByteWindow::compact() {
    if (offset == 0) return;
    std::memmove(buffer, buffer + offset, length);
    offset = 0;
}

void ByteWindow::reset() {
    offset = length = 0;
    if (capacity != initial) reallocate(initial);
}
