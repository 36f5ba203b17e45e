// Merging against an import of the same bytes, and what memory it takes.
#include <cstdio>
#include <filesystem>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "bench/self_measure.h"
#include "chronoweave/import/import.h"
#include "chronoweave/import/merge/merge_files.h"
#include "shared/libcxxutil/paths.h"

namespace {

constexpr uint64_t sources = 4;

// Traces that each hold a part of as many events as the input has.
std::vector<std::string> parts_of(const BenchPlace& place, bool large) {
    std::vector<std::string> names;
    for (uint64_t seed = 1; seed <= sources; ++seed)
        names.push_back(input_Generated(place.work, large ? 2'500'000 : 250'000, 30, seed));
    return names;
}

Outcome merge_sources(const BenchPlace& place, bool large, MergeAlign align, double atMost) {
    const std::string base = path_join(place.work, "merged"), output = base + ".trr";
    MergeRequest request{parts_of(place, large), output, align};
    bool good = merge_Files(request).result.ok();
    const std::string whole = path_join(place.work, "whole.trr");
    std::error_code none;
    std::filesystem::rename(output, whole, none);
    ImportOptions options;
    options.outputBase = base;
    const auto before = [&](bool) {
        for (const char* extension : {".trr", ".trs", ".tri", ".trv"})
            std::filesystem::remove(base + extension, none);
        for (const std::string& source : request.sources) good = plain_Read(source) && good;
        good = plain_Read(whole) && good;
    };
    const auto subject = [&] { good = merge_Files(request).result.ok() && good; };
    const auto baseline = [&] { good = import_OpenSource(whole, options).store != nullptr && good; };
    const Turns turns =
        measure_Turns({.count = large ? 5 : 9, .clock = Clock::Wall}, before, subject, baseline);
    before(true);
    std::filesystem::remove(whole, none);
    return good ? outcome_OfRatio(turns, atMost) : outcome_OfTrouble("a merge or an import failed");
}

Outcome merge_memory(const BenchPlace& place, const std::string& file) {
    const std::string output = path_join(place.work, "merged.trr");
    Outcome outcome = outcome_OfMemory({"--measured-merge", file, output}, 64);
    std::error_code none;
    std::filesystem::remove(output, none);
    return outcome;
}

}  // namespace

int run_MeasuredMerge(const std::string& file, const std::string& output) {
    return self_Measure([&] {
        return merge_Files({std::vector<std::string>(sources, file), output, MergeAlign::Tail}).result.ok();
    });
}

void register_MergeBenchmarks(const BenchPlace& place) {
    const BenchInput& generated = place.inputs.back();
    const bool isLarge = generated.name == "generated-10M";
    for (const auto& [align, atMost] :
         {std::pair{MergeAlign::Natural, 1.0 / 3}, {MergeAlign::Head, 1.0 / 3}, {MergeAlign::Tail, 1.0 / 2}})
        measure_Register(std::string("merge ") + merge_AlignName(align) + "/" + generated.name,
                         [&place, isLarge, align = align, atMost = atMost] {
                             return merge_sources(place, isLarge, align, atMost);
                         });
    measure_Register("merge memory/4 times " + generated.name,
                     [&place, file = generated.file] { return merge_memory(place, file); });
}
