// Rows of a legend's table by the codes of a trace, as they were when the items were made.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

class CodeRows {
  public:
    static constexpr int32_t none = -1;

    // Of a code that is not known yet.
    void Add(uint32_t code, int32_t row) {
        if (2 * ++count_ > slots_.size()) Grow();
        Slot& slot = slots_[PlaceOf(code)];
        slot = {code, row};
    }
    int32_t of(uint32_t code) const {
        const Slot& slot = slots_[PlaceOf(code)];
        return slot.code == code ? slot.row : none;
    }

  private:
    struct Slot {
        uint32_t code = 0;
        int32_t row = none;
    };
    // The code's, or a free one.
    size_t PlaceOf(uint32_t code) const {
        const size_t mask = slots_.size() - 1;
        size_t place = (code * 0x9E3779B1u >> 8) & mask;
        while (slots_[place].row != none && slots_[place].code != code) place = (place + 1) & mask;
        return place;
    }
    void Grow() {
        std::vector<Slot> old(slots_.size() * 2);
        std::swap(old, slots_);
        for (const Slot& slot : old)
            if (slot.row != none) slots_[PlaceOf(slot.code)] = slot;
    }

    std::vector<Slot> slots_ = std::vector<Slot>(64);
    size_t count_ = 0;
};
