// Bytes on their way to a file: one block that grows, written to by pointer.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

class RowBuffer {
  public:
    size_t size() const { return size_; }
    char* data() { return bytes_.get(); }
    void clear() { size_ = 0; }

    // A place behind what is there with at least so many bytes free, until the next call; took says how far
    // it was filled.
    char* room(size_t bytes) {
        if (size_ + bytes > capacity_) grow(bytes);
        return bytes_.get() + size_;
    }
    void took(const char* end) { size_ = static_cast<size_t>(end - bytes_.get()); }

    void put(char c) {
        *room(1) = c;
        ++size_;
    }
    void put(std::string_view text) {
        char* to = room(text.size());
        std::copy(text.begin(), text.end(), to);
        size_ += text.size();
    }

  private:
    void grow(size_t bytes) {
        const size_t capacity = std::max(2 * capacity_, size_ + bytes);
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(bytes_.get(), size_, larger.get());
        bytes_ = std::move(larger);
        capacity_ = capacity;
    }
    size_t size_ = 0, capacity_ = 0;
    std::unique_ptr<char[]> bytes_;
};
