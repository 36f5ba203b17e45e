// The traces that the benchmarks run on, and plain work on files to hold against.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "libtrv/trace_store.h"

struct BenchInput {
    std::string name;    // of the trace, short
    std::string file;    // .trr
    bool large = false;  // the generated one, which the limits that need many events are for
};

struct BenchPlace {
    std::string work;  // a folder for all that is made
    std::vector<BenchInput> inputs;
    std::string hundredTasks;   // a trace of a million events of 100 tasks
    std::string thousandTasks;  // one of 200,000 events of 1000 tasks
};

// Generates a trace in the work folder, or finds it there from an earlier run. Empty when it can't be
// written.
std::string input_Generated(const std::string& work, uint64_t events, uint32_t tasks, uint64_t seed = 1);
// The base name of the input's store in the work folder, importing it the first time. Empty when that fails.
std::string input_Store(const BenchPlace& place, const std::string& file);

uint64_t plain_Size(const std::string& name);
uint64_t plain_StoreSize(const std::string& base);  // of the three files
// Reads a whole file in blocks of 1 MiB; false when it can't be read.
bool plain_Read(const std::string& name);
// Writes count bytes into a fresh file in blocks of 1 MiB, taken from the source from its start on, again and
// again, and asks the disk to keep them.
bool plain_Copy(const std::string& source, const std::string& target, uint64_t count);

// A canvas on a trace's store, with the legend of the source tree, of a drawing area of a size. Null when
// there is none. graph must outlive it.
std::unique_ptr<_LaCanvasData> input_Canvas(const BenchPlace& place, const std::string& file, LaGraph& graph,
                                            int width, int height);

void register_StoreBenchmarks(const BenchPlace& place);
void register_MergeBenchmarks(const BenchPlace& place);
void register_CanvasBenchmarks(const BenchPlace& place);
void register_LaneBenchmarks(const BenchPlace& place);
void register_GrowingBenchmarks(const BenchPlace& place);
void register_NavigationBenchmarks(const BenchPlace& place);
void register_AnalysisBenchmarks(const BenchPlace& place);
void register_TextBenchmarks(const BenchPlace& place);
void register_BusBenchmarks();
void register_WindowBenchmarks(const BenchPlace& place);
void register_PrintBenchmarks(const BenchPlace& place);
// Runs work with the surface that pictures are drawn on, or one that only counts where there is no Qt, of the
// size of the views that are measured.
constexpr int view_width = 1920, view_height = 1080;
void bench_WithSurface(const std::function<void(Surface&)>& work);
// What the program does when it was started to be measured from outside: imports and prints how many bytes
// its memory grew by at most. An exit status.
int run_MeasuredImport(const std::string& file, const std::string& base);
// The same for merging the file four times.
int run_MeasuredMerge(const std::string& file, const std::string& output);
// Opens the trace of a million events, shows it whole, prints it into a file, and prints how many bytes the
// memory of the process grew by at most in all. An exit status.
int run_MeasuredPrint(const std::string& work, const std::string& trace);
