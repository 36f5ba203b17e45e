// A simulated system of tasks on one or two processors. What happens depends on its size, rate and seed
// alone.
#pragma once

#include <cstdint>
#include <vector>

#include "companions/trv/sim/sim_processor.h"

struct SimSize {
    static constexpr uint32_t mostTasks = 10'000;
    static constexpr double mostRate = 5e6;
    uint32_t tasks = 8;
    double rate = 2000;  // events a second, in the long run
    uint64_t seed = 1;
};

class Simulation {
  public:
    explicit Simulation(const SimSize& size);

    // Puts the events from where it stands up to, and not at, a time, in the order of their times: all of
    // them, or a little more than most. True when it was all.
    bool run(SimTime until, size_t most, RawWriter& out);

    const std::vector<SimProcessor>& processors() const { return processors_; }

  private:
    Simulation(const SimSize& size, double period);

    std::vector<SimProcessor> processors_;
    bool hasBegun_ = false;
};
