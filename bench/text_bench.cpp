// What the command line makes of events: rows a second of processor time, into a pipe that another process
// drains, against writing as many bytes.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/cli/command_line.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/text.h"

namespace {

// Standard output is a pipe as long as this lives.
class DrainedOutput {
  public:
    DrainedOutput() {
        int ends[2];
        std::fflush(stdout);
        if (::pipe(ends) != 0) return;
        child_ = ::fork();
        if (child_ == 0) drain(ends);
        ::close(ends[0]);
        saved_ = ::dup(STDOUT_FILENO);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[1]);
    }
    ~DrainedOutput() {
        if (child_ < 0) return;
        std::fflush(stdout);
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
        ::waitpid(child_, nullptr, 0);
    }
    DrainedOutput(const DrainedOutput&) = delete;
    DrainedOutput& operator=(const DrainedOutput&) = delete;
    bool good() const { return child_ > 0; }

  private:
    [[noreturn]] static void drain(const int (&ends)[2]) {
        ::close(ends[1]);
        static char bytes[1 << 16];
        while (::read(ends[0], bytes, sizeof bytes) > 0) {
        }
        ::_exit(0);
    }
    pid_t child_ = -1;
    int saved_ = -1;
};

// The legend of the tree with a format of extra data for every event, or for none. Empty when it can't be
// made.
std::string legend_file(const BenchPlace& place, bool formatted) {
    const std::string name = path_join(place.work, formatted ? "formatted.tc" : "plain.tc");
    std::string text, made;
    if (!file_read_whole(CW_SOURCE_DIR "/defaults/chrono_weave/korvantis.tc", text)) return {};
    std::string_view rest = text;
    for (std::string_view line; text_next_line(rest, line);) {
        std::string own(line);
        const size_t extra = own.find("TRV_Extra="), end = own.rfind(":TRV_");
        if (own.starts_with("TRV_Event:") && end != std::string::npos) {
            if (extra != std::string::npos && extra < end) own.erase(extra, end + 1 - extra);
            if (formatted) own.insert(own.rfind(":TRV_"), ":TRV_Extra=\"data %4D\"");
        }
        made += own + '\n';
    }
    return file_replace(name, made) ? name : std::string();
}

bool run_events(const std::vector<std::string>& words) {
    std::vector<const char*> argv{"chronoweave", "events"};
    for (const std::string& word : words) argv.push_back(word.c_str());
    int status = Exit_Failed;
    const auto line = cli_Parse(static_cast<int>(argv.size()), argv.data(), status);
    if (line) status = cli_Run(*line);
    return std::fflush(stdout) == 0 && status == Exit_Done;
}

bool write_bytes(uint64_t count) {
    static const std::vector<char> block(1 << 16, 'x');
    for (uint64_t left = count; left > 0;) {
        const auto wrote = ::write(STDOUT_FILENO, block.data(), std::min<uint64_t>(left, block.size()));
        if (wrote <= 0) return false;
        left -= static_cast<uint64_t>(wrote);
    }
    return true;
}

Outcome events_as_text(const BenchPlace& place, const BenchInput& input, const char* form, bool formatted,
                       double least) {
    const std::string base = input_Store(place, input.file), legend = legend_file(place, formatted);
    const std::string file = path_join(place.work, "events.txt");
    if (base.empty() || legend.empty()) return outcome_OfTrouble("the events can't be written");
    const TraceStorePtr store = mt_OpenForRead(base);
    const double events = store ? mt_GetEventCount(*store) : 0;
    const std::vector<std::string> words{form, "--config", legend, base};
    std::vector<std::string> counted = words;
    counted.insert(counted.end(), {"-o", file});
    bool good = run_events(counted);
    const uint64_t bytes = plain_Size(file);
    std::remove(file.c_str());
    Outcome outcome;
    {
        const DrainedOutput output;
        good = output.good() && good && events > 0;
        if (good)
            outcome.turns = measure_Turns(
                {.count = 5, .least = 0.05, .clock = Clock::Processor}, {},
                [&] { good = run_events(words) && good; }, [&] { good = write_bytes(bytes) && good; });
    }
    if (!good) return outcome_OfTrouble("the events can't be written");
    outcome.value = events / outcome.turns.subject / 1e6;
    outcome.unit = "Mrows/s";
    outcome.limit = input.large ? Outcome::AtLeast : Outcome::NoLimit;
    outcome.bound = least;
    return outcome;
}

}  // namespace

void register_TextBenchmarks(const BenchPlace& place) {
    constexpr double plain = 3, formatted = 1;  // million rows a second of CSV; of JSON at least half
    for (const BenchInput& input : place.inputs)
        for (const bool extra : {false, true})
            for (const bool json : {false, true}) {
                const double least = (extra ? formatted : plain) / (json ? 2 : 1);
                measure_Register(std::string(json ? "events json" : "events csv") +
                                     (extra ? ", extra data/" : "/") + input.name,
                                 [&place, input, extra, json, least] {
                                     return events_as_text(place, input, json ? "--json" : "--csv", extra,
                                                           least);
                                 });
            }
}
