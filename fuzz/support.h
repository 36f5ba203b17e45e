// What the entry points share: silence, an import into memory, and a reader that asks a store everything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "libtrv/trace_store.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Reports, the console and the standard error stream go nowhere from the first call on. Sanitizers write to
// the descriptor and are still heard.
void fuzz_Silence();

// Ends the process when a promise was broken; the sanitizer or the driver then tells of the input.
void fuzz_Check(bool kept);

// The three files of a store in memory; null when they can't be opened as one.
TraceStorePtr fuzz_OpenStore(std::span<const uint8_t> version, std::span<const uint8_t> events,
                             std::span<const uint8_t> index);
// Every query of a store, at times and numbers that come from its own facts.
void fuzz_QueryStore(TraceStore& store);

// Imports a file in memory into a store in memory, whichever of a stream, a log image or a core file it is.
// What was imported must read back as it was counted.
void fuzz_Import(std::span<const uint8_t> file);
