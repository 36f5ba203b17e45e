// Places of objects in a list, by id: an open-addressed hash for one look-up an event.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class ObjectIndex {
  public:
    static constexpr uint32_t none = 0xFFFFFFFF;  // no place

    // The object's place; none when it is not in.
    uint32_t find(uint32_t object) const {
        if (slots_.empty()) return none;
        for (size_t at = Bucket(object);; at = (at + 1) & (slots_.size() - 1)) {
            if (slots_[at].place == none) return none;
            if (slots_[at].object == object) return slots_[at].place;
        }
    }
    // The object must not be in yet, and the place not be none.
    void add(uint32_t object, uint32_t place);
    void clear();

  private:
    struct Slot {
        uint32_t object = 0;
        uint32_t place = none;
    };
    size_t Bucket(uint32_t object) const { return (object * 0x9E3779B1u >> 7) & (slots_.size() - 1); }
    std::vector<Slot> slots_;  // a power of two, at most half full
    size_t used_ = 0;
};
