// Measures memory from outside: this program runs itself with words that make it do one thing and tell how
// far its memory grew.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/measure.h"

// In the child: runs the work and prints by how many bytes the process grew at most. An exit status.
int self_Measure(const std::function<bool()>& work);
// In the parent: what the child with these words grew by, in MiB, against a limit.
Outcome outcome_OfMemory(const std::vector<std::string>& words, double mostMebibytes);
