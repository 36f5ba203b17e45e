// Times of a trace in digits: rounded to the tick, and with no more decimals than a tick has. What lies
// between ticks (a cursor, a mean, a share) is not for here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// What times are counted in, and the unit in which they are shown. Both above 0.
struct TickScale {
    uint64_t ticksPerSecond = 1;
    uint64_t unitsPerSecond = 1;  // 1 for seconds, 1000 for milliseconds, ...; ticksPerSecond for ticks
};

// The decimals that a tick has in the unit: none where it is whole units, and at most most, which also stands
// for decimals that never end (those of a third). most is 0 to 17.
int tick_Decimals(const TickScale& scale, int most);

// A time in the unit, or the difference of two, rounded to the tick, with tick_Decimals digits behind the
// point. What is no number, and what 64 bits of ticks don't hold, is printed as it is.
std::string tick_Text(const TickScale& scale, double time, int most);

// The same for many numbers of ticks.
class TickWriter {
  public:
    static constexpr size_t room = 64;  // bytes that put needs at most

    TickWriter() : TickWriter(TickScale(), 0) {}
    TickWriter(const TickScale& scale, int most);
    int decimals() const { return decimals_; }
    // Writes the text at to, where room bytes are free, and gives the place behind it. The whole units must
    // fit 64 bits; those of seconds always do.
    char* put(int64_t ticks, char* to) const;

  private:
    TickScale scale_;
    int decimals_;
    uint64_t shift_;     // ten to the power of decimals_
    uint64_t factor_;    // of a tick in the last decimal; 0 where that is no whole number
    uint64_t most_ = 0;  // ticks that the factor takes within 64 bits
};
