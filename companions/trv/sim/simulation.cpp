#include "companions/trv/sim/simulation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "libtrv/store_format.h"

namespace {

constexpr uint32_t tasks_for_two_processors = 4;
constexpr double load = 0.6;    // of a processor
constexpr double slowest = 16;  // longest period, in shortest ones
constexpr std::array roles{"motor",   "brake",  "sensor",  "control", "radio",
                           "network", "filter", "display", "logger",  "monitor"};

std::string name_of(uint32_t number) {
    const std::string role = roles[number % roles.size()];
    const auto round = number / roles.size();
    return round == 0 ? role : role + std::to_string(round + 1);
}

// The tasks of one of so many processors; period is the shortest.
std::vector<SimTask> tasks_of(uint32_t processor, uint32_t processors, uint32_t tasks, double period) {
    std::vector<SimTask> mine;
    for (uint32_t number = processor; number < tasks; number += processors) {
        const auto place = static_cast<uint32_t>(mine.size());
        mine.push_back({name_of(number), (number + 1) << 10 | processor, 10 + place, 0, 0});
    }
    const auto count = static_cast<double>(mine.size());
    for (size_t i = 0; i < mine.size(); ++i) {
        const double share = mine.size() > 1 ? static_cast<double>(i) / (count - 1) : 0;
        mine[i].period = period * std::pow(slowest, share);
        mine[i].work = mine[i].period * load / count;
    }
    return mine;
}

// The shortest period with which so many events happen a second, found by trying one that is long enough for
// rounding to be of no effect.
double period_for(const SimSize& size, Simulation trial, double tried) {
    constexpr size_t enough = 20'000;
    RawWriter out(false);
    const size_t events = std::max<size_t>(enough, size_t{20} * size.tasks);
    size_t seen = 0;
    SimTime time = 0;
    while (seen < events) {
        time += static_cast<SimTime>(tried);
        out.clear();
        trial.run(time, SIZE_MAX, out);
        for (size_t at = 0; at < out.bytes().size(); at += 1u + out.bytes()[at]) ++seen;
    }
    return tried * (static_cast<double>(seen) / static_cast<double>(time)) / (size.rate * 1e-9);
}

}  // namespace

Simulation::Simulation(const SimSize& size, double period) {
    const uint32_t processors = size.tasks < tasks_for_two_processors ? 1 : 2;
    for (uint32_t i = 0; i < processors; ++i)
        processors_.emplace_back(i, tasks_of(i, processors, size.tasks, period), size.seed * 2 + i);
}

Simulation::Simulation(const SimSize& size)
    : Simulation(size, period_for(size, Simulation(size, 1e9), 1e9)) {}

bool Simulation::run(SimTime until, size_t most, RawWriter& out) {
    if (!std::exchange(hasBegun_, true))
        for (SimProcessor& processor : processors_) processor.begin(out);
    for (size_t count = 0; count < most; ++count) {
        SimProcessor& first =
            *std::min_element(processors_.begin(), processors_.end(),
                              [](const auto& a, const auto& b) { return a.next() < b.next(); });
        if (first.next() >= until) return true;
        first.advance(out);
    }
    return false;
}
