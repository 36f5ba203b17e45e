// Processes of a recording: numbers of processes are used again.
#pragma once

#include <chrono>
#include <optional>
#include <string>

using ProcessBegin = std::chrono::system_clock::time_point;

// When the process began; nothing when it has ended or the system does not say.
std::optional<ProcessBegin> recorded_Begin(int pid);
// The process that has this number now may be one of the recording: it did not begin after the file was last
// written.
bool recorded_MayBe(int pid, const std::string& trace);
