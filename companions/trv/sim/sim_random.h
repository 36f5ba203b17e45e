// Random numbers that are the same on every machine for a seed.
#pragma once

#include <cstdint>

class SimRandom {
  public:
    explicit SimRandom(uint64_t seed) : state_(seed) {}

    uint64_t next() {
        uint64_t z = state_ += 0x9E3779B97F4A7C15ull;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // 0 <= result < 1.
    double share() { return static_cast<double>(next() >> 11) * 0x1p-53; }
    double between(double low, double high) { return low + (high - low) * share(); }
    // True once in so many times.
    bool oneIn(uint64_t times) { return next() % times == 0; }

  private:
    uint64_t state_;
};
