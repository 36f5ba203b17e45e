// cw_bench: the measurements of Chronoweave in one table. See bench/run.sh.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr char usage[] =
    "usage: cw_bench [--small] [--traces DIR] [--work DIR] [options of Google Benchmark]\n"
    "\n"
    "--small        a generated trace of 1 million events in place of 10 million\n"
    "--traces DIR   also measures every .trr of the folder (default: $CW_BENCH_TRACES)\n"
    "--work DIR     where stores and generated traces go; the latter are kept for the next run\n"
    "               (default: chronoweave-bench in the temporary directory)\n"
    "--benchmark_filter=REGEX, --benchmark_out=FILE (JSON), ...\n"
    "\n"
    "Status 1 when a limit is missed or something can't be measured.\n";

struct Options {
    bool small = false, help = false;
    std::string traces, work;
    std::vector<char*> rest;
};

bool parse(int argc, char** argv, Options& options) {
    if (const char* traces = std::getenv("CW_BENCH_TRACES")) options.traces = traces;
    options.work = path_join(path_temporary_directory(), "chronoweave-bench");
    options.rest.push_back(argv[0]);
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--small") {
            options.small = true;
        } else if (argument == "--help") {
            options.help = true;
        } else if (argument == "--traces" || argument == "--work") {
            if (++i == argc) return false;
            (argument == "--work" ? options.work : options.traces) = argv[i];
        } else if (argument.rfind("--benchmark_", 0) == 0 || argument.rfind("--v=", 0) == 0) {
            options.rest.push_back(argv[i]);
        } else {
            return false;
        }
    }
    return true;
}

bool find_inputs(const Options& options, BenchPlace& place) {
    place.work = options.work;
    place.inputs.push_back({"build-2cpu", path_join(CW_SOURCE_DIR, "samples/build-2cpu.trr"), false});
    std::error_code error;
    std::vector<std::string> more;
    if (!options.traces.empty())
        for (const auto& entry : std::filesystem::directory_iterator(options.traces, error))
            if (path_extension(entry.path().string()) == "trr") more.push_back(entry.path().string());
    if (error) std::fprintf(stderr, "%s: %s\n", options.traces.c_str(), error.message().c_str());
    std::sort(more.begin(), more.end());
    for (const std::string& file : more) {
        const std::string name = path_without_extension(path_file(file));
        if (name != place.inputs.front().name) place.inputs.push_back({name, file, false});
    }
    const uint64_t events = options.small ? 1'000'000 : 10'000'000;
    const std::string generated = input_Generated(place.work, events, 30);
    place.inputs.push_back({options.small ? "generated-1M" : "generated-10M", generated, true});
    place.hundredTasks = input_Generated(place.work, 1'000'000, 100);
    place.thousandTasks = input_Generated(place.work, 200'000, 1000);
    return !error && !generated.empty() && !place.hundredTasks.empty() && !place.thousandTasks.empty();
}

}  // namespace

int main(int argc, char** argv) {
    gen_set_console_sink([](std::string_view) {});  // damaged inputs would drown the table, and writing costs
    if (argc == 4 && std::string(argv[1]) == "--measured-import") return run_MeasuredImport(argv[2], argv[3]);
    if (argc == 4 && std::string(argv[1]) == "--measured-merge") return run_MeasuredMerge(argv[2], argv[3]);
    if (argc == 4 && std::string(argv[1]) == "--measured-print") return run_MeasuredPrint(argv[2], argv[3]);
    Options options;
    if (!parse(argc, argv, options) || options.help) {
        std::fputs(usage, options.help ? stdout : stderr);
        return options.help ? 0 : 2;
    }
    ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 0);  // for icons and configure files
    BenchPlace place;
    if (!path_make_directory(options.work) || !find_inputs(options, place)) {
        std::fprintf(stderr, "%s: the traces to measure can't be made there\n", options.work.c_str());
        return 1;
    }
    int count = static_cast<int>(options.rest.size());
    benchmark::Initialize(&count, options.rest.data());
    register_StoreBenchmarks(place);
    register_MergeBenchmarks(place);
    register_CanvasBenchmarks(place);
    register_LaneBenchmarks(place);
    register_GrowingBenchmarks(place);
    register_NavigationBenchmarks(place);
    register_AnalysisBenchmarks(place);
    register_TextBenchmarks(place);
    register_BusBenchmarks();
    register_WindowBenchmarks(place);
    register_PrintBenchmarks(place);
    return measure_RunAll() == 0 ? 0 : 1;
}
