#include "chronoweave/cli/opened.h"

#include <cmath>

#include "chronoweave/cli/outputs.h"
#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/progress_bar.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {
constexpr size_t most_told = 20;
}

OpenedSource cli_Open(const CommandLine& line, const std::string& outputBase, uint32_t checkpoint) {
    ProgressBar bar(!line.quiet);
    ImportOptions options;
    options.outputBase = outputBase;
    options.checkpoint = checkpoint;
    options.progress = bar.progress();
    OpenedSource opened = import_OpenSource(line.path, options);
    if (opened.inCache)
        cli_Say(path_directory(outputBase.empty() ? line.path : outputBase) +
                ": the folder can't be written, the store is " + opened.base);
    // A store in the cache has a name that the command line does not tell.
    if (const std::string output = cli_OutputInStore(line, opened.base); opened.store && !output.empty()) {
        opened.store.reset();
        opened.trouble = Result::failure("the result would overwrite what it is made of", output);
    }
    return opened;
}

int cli_Finish(const OpenedSource& opened, TraceStore* store) {
    int status = opened.trouble ? Exit_Done : cli_Failure(opened.trouble.text());
    if (!store) return status;
    // What the canvas has told already counts too.
    if (mt_IsDamaged(*store)) status = Exit_Failed;
    const std::vector<Result> damage = mt_TakeDamage(*store);
    for (size_t i = 0; i < std::min(damage.size(), most_told); ++i) cli_Failure(damage[i].text());
    if (damage.size() > most_told)
        cli_Failure(gen_format("and damage in %zu more places", damage.size() - most_told));
    return status;
}

int cli_Refused(const OpenedSource& opened) {
    const int status = cli_Finish(opened, opened.store.get());
    return status == Exit_Done ? Exit_Usage : status;
}

LegendFound cli_LoadLegend(const CommandLine& line, const TraceStore& store, Legend& legend) {
    const char* os = mt_GetOsName(&store);
    std::string problem;
    ConfigureCallbacks callbacks = configure_ConsoleCallbacks();
    callbacks.message = [&](const std::string& text) { problem = text; };
    callbacks.errorDialog = [&](const std::string& text) { problem += (problem.empty() ? "" : " ") + text; };
    const bool loaded = line.config.empty() ? configure_Read(legend, os, callbacks, 0)
                                            : configure_ReadFile(legend, line.config, os, callbacks, 0);
    if (!problem.empty()) cli_Say(problem);
    if (loaded) return LegendFound::Yes;
    return line.config.empty() ? LegendFound::None : LegendFound::Unreadable;
}

std::optional<mt_Time> cli_Time(const std::string& text, bool ticks, mt_Time first, uint64_t ticksPerSecond) {
    if (ticks) return scan_number(text);
    const auto seconds = scan_double(text);
    if (!seconds) return std::nullopt;
    if (*seconds <= 0) return first;
    const long double exact = static_cast<long double>(*seconds) * static_cast<long double>(ticksPerSecond);
    if (exact >= 9.0e18L) return INT64_MAX;
    // A typed decimal stands for the tick that it was printed from, which its double may miss by a hair.
    const long double nearest = std::round(exact);
    const long double hair = std::max(1e-6L, exact * 4e-16L);
    const long double tick = std::fabs(exact - nearest) <= hair ? nearest : std::ceil(exact);
    return first + static_cast<mt_Time>(tick);
}

std::optional<mt_Range> cli_Range(const CommandLine& line, TraceStore& store) {
    mt_Range range = mt_GetTimeRange(store);
    const mt_Time first = range.first;
    const uint64_t rate = mt_GetTicksPerSecond(store);
    for (const auto& [text, option, bound] :
         {std::tuple{&line.from, "--from", &range.first}, std::tuple{&line.to, "--to", &range.end}}) {
        if (text->empty()) continue;
        const auto time = cli_Time(*text, line.ticks, first, rate);
        if (!time) {
            cli_UsageError(std::string(option) + ": not a time: " + *text);
            return std::nullopt;
        }
        *bound = *time;
    }
    return range;
}

std::optional<uint32_t> cli_Number(const std::string& text, const char* option, uint32_t otherwise) {
    if (text.empty()) return otherwise;
    const auto value = scan_number(text);
    if (value && *value <= UINT32_MAX) return static_cast<uint32_t>(*value);
    cli_UsageError(std::string(option) + ": not a number of 32 bits: " + text);
    return std::nullopt;
}
