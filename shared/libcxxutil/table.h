// Table: an ordered container that grows by chunks, so that an element never moves once it is in, growing
// costs no copy, and dropping everything, or its front, is one step per chunk. Indexes count from 0 and are
// stable until something is put into the middle or in front, or the front is dropped.
#pragma once

#include <cassert>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

constexpr uint32_t Table_End = 0x7fffffff;  // the end of a walk

template <class T>
class Table {
  public:
    Table() = default;
    Table(Table&&) noexcept = default;
    Table& operator=(Table&&) noexcept = default;

    uint32_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    // index < size(), which builds without NDEBUG check.
    T& operator[](uint32_t index) {
        assert(index < size_);
        return place(index);
    }
    const T& operator[](uint32_t index) const {
        assert(index < size_);
        return place(index);
    }
    T& back() { return (*this)[size_ - 1]; }
    const T& back() const { return (*this)[size_ - 1]; }

    // Appends and returns the index of the new element.
    uint32_t push_back(T value) {
        if ((front_ + size_) >> shift == chunks_.size()) chunks_.push_back(std::make_unique<T[]>(mask + 1));
        place(size_) = std::move(value);
        return size_++;
    }
    // Puts a value before the element at index (at the end for index == size()). Moves all behind it.
    void insert(uint32_t index, T value) {
        push_back(std::move(value));
        for (uint32_t i = size_ - 1; i > index; --i) std::swap((*this)[i], (*this)[i - 1]);
    }
    // Puts a value in front; the indexes of all others grow by 1.
    void push_front(T value) {
        if (front_ == 0) {
            chunks_.insert(chunks_.begin(), std::make_unique<T[]>(mask + 1));
            front_ = mask + 1;
        }
        --front_;
        ++size_;
        place(0) = std::move(value);
    }
    // Drops the first count elements, at most all: those of whole chunks at once, others when their chunk
    // goes.
    void DropFront(uint32_t count) {
        if (count >= size_) return clear();
        front_ += count;
        size_ -= count;
        chunks_.erase(chunks_.begin(), chunks_.begin() + (front_ >> shift));
        front_ &= mask;
    }
    void clear() {
        chunks_.clear();
        front_ = size_ = 0;
    }
    // Bytes held by the elements' chunks.
    size_t bytes() const { return chunks_.size() * (mask + 1) * sizeof(T); }

  private:
    // Small elements in large chunks: about 64 elements at least keep short tables small.
    static constexpr uint32_t shift = 8;
    static constexpr uint32_t mask = (1u << shift) - 1;
    T& place(uint32_t index) const { return chunks_[(front_ + index) >> shift][(front_ + index) & mask]; }

    std::vector<std::unique_ptr<T[]>> chunks_;
    uint32_t front_ = 0;  // dropped elements of the first chunk
    uint32_t size_ = 0;
};
