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
        winners_.resize(2 * half_, nobody);
    }
    // The input is at this place now.
    void Set(size_t input, uint64_t place) { Play(input, static_cast<Entry>(place) << 64 | input); }
    void TakeOut(size_t input) { Play(input, nobody); }
    bool IsIn(size_t input) const { return winners_[half_ + input] != nobody; }
    // Nothing when no input is in.
    std::optional<size_t> First() const {
        const Entry winner = winners_[1];
        return winner != nobody ? std::optional(static_cast<size_t>(winner)) : std::nullopt;
    }

  private:
    // A place over the number of the input that is there: one comparison says who comes first.
    __extension__ typedef unsigned __int128 Entry;
    static constexpr Entry nobody = ~Entry{0};

    // Others need no look at what this one changes, so that their loads don't wait; and there is no jump,
    // whose way nobody could foresee.
    void Play(size_t input, Entry winner) {
        size_t at = half_ + input;
        for (winners_[at] = winner; at > 1; at /= 2) {
            const Entry other = winners_[at ^ 1];
            winner = other < winner ? other : winner;
            winners_[at / 2] = winner;
        }
    }

    size_t half_ = 1;  // a power of 2
    std::vector<Entry>
        winners_;  // of the match of 2i and 2i + 1 at i; the inputs from half_ on; [0] is nobody's
};
