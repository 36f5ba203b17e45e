// Which of several inputs comes next: the one at the earliest place and, of those at one place, the first
// among the inputs. A tournament whose matches are played again from the changed input up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

class MergeOrder {
  public:
    // No input is in at first.
    explicit MergeOrder(size_t inputs) {
        while (half_ < inputs) half_ *= 2;
        places_.resize(half_, last);
        isIn_.resize(half_, 0);
        winners_.resize(2 * half_);
        for (size_t i = 0; i < half_; ++i) winners_[half_ + i] = i;
        for (size_t match = half_ - 1; match > 0; --match) Play(match);
    }
    // The input is at this place now.
    void Set(size_t input, uint64_t place) {
        isIn_[input] = 1;
        Move(input, place);
    }
    void TakeOut(size_t input) {
        isIn_[input] = 0;
        Move(input, last);
    }
    bool IsIn(size_t input) const { return isIn_[input] != 0; }
    // Nothing when no input is in.
    std::optional<size_t> First() const {
        const size_t winner = winners_[1];
        return places_[winner] != last ? std::optional(winner) : FirstAtLast();
    }

  private:
    static constexpr uint64_t last = UINT64_MAX;  // also the place of those that are not in

    void Move(size_t input, uint64_t place) {
        places_[input] = place;
        for (size_t match = (half_ + input) / 2; match > 0; match /= 2) Play(match);
    }
    // Without a jump, whose way nobody could foresee.
    void Play(size_t match) {
        const size_t left = winners_[2 * match], right = winners_[2 * match + 1];
        const size_t rightWins = places_[right] < places_[left] ? SIZE_MAX : 0;
        winners_[match] = left ^ ((left ^ right) & rightWins);
    }
    std::optional<size_t> FirstAtLast() const {
        for (size_t i = 0; i < half_; ++i)
            if (isIn_[i] != 0) return i;
        return std::nullopt;
    }

    size_t half_ = 1;  // a power of 2
    std::vector<uint64_t> places_;
    std::vector<uint8_t> isIn_;
    std::vector<size_t> winners_;  // match i is played by the winners of 2i and 2i + 1; [0] is nobody's
};
