// Raw event files of any length, made up by a seeded generator: a few processors with tasks that switch, call
// the kernel, change status and log user events, as a busy real-time system does.
#pragma once

#include <cstdint>
#include <string>

struct GeneratedTrace {
    uint64_t events = 10'000'000;
    uint32_t tasks = 30;  // per trace, spread over the processors
    uint32_t processors = 2;
    uint64_t seed = 1;
};

// Writes a long-header, little-endian .trr of 1 GHz ticks. False when the file can't be written.
bool generate_Trr(const std::string& name, const GeneratedTrace& trace);
