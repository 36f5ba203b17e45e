// live: a target's events into a file and its store, with no window.
#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>

#include "chronoweave/cli/commands.h"
#include "chronoweave/cli/live_session.h"
#include "chronoweave/cli/opened.h"
#include "chronoweave/cli/rows.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto round_time = 20ms;

struct LiveWish {
    std::optional<double> seconds;
    std::optional<uint64_t> events;
};

// False when the line was wrong, which has been said.
bool read_wish(const CommandLine& line, LiveSessionOptions& options, LiveWish& wish, int& status) {
    const auto wrong = [&](const std::string& what) {
        status = cli_UsageError(what);
        return false;
    };
    const auto checkpoint = cli_Number(line.checkpoint, "--checkpoint", 0);
    status = Exit_Usage;
    if (!checkpoint) return false;
    if (!line.checkpoint.empty() && (*checkpoint == 0 || *checkpoint % mt_CheckpointInterval != 0))
        return wrong(gen_format("--checkpoint: no multiple of %u: %s", mt_CheckpointInterval,
                                line.checkpoint.c_str()));
    if (line.output.empty()) return wrong("live: -o is required");
    if (!line.seconds.empty()) {
        wish.seconds = scan_double(line.seconds);
        if (!wish.seconds || !(*wish.seconds > 0)) return wrong("--seconds: no time: " + line.seconds);
    }
    if (!line.mostEvents.empty()) {
        wish.events = scan_number(line.mostEvents);
        if (!wish.events || *wish.events == 0)
            return wrong("--events: no number of events: " + line.mostEvents);
    }
    options.checkpoint = *checkpoint;
    options.target = line.path;
    options.file =
        std::filesystem::absolute(path_extension(line.output) == "trr" ? line.output : line.output + ".trr")
            .string();
    return true;
}

// Whether a word of the target names the file: it would be removed before it is read.
bool is_source(const LiveSessionOptions& options) {
    std::string_view rest = options.target;
    while (!(rest = text_trim(rest)).empty()) {
        for (size_t length = rest.size(); length != std::string_view::npos;
             length = rest.rfind(' ', length - 1)) {
            std::string name(text_trim(rest.substr(0, length)));
            if (name.size() > 2 && name.front() == '"' && name.back() == '"')
                name = name.substr(1, name.size() - 2);
            if (!name.empty() && path_is_readable_file(name) && path_same_file(name, options.file))
                return true;
            if (length == 0) break;
        }
        const size_t blank = rest.find(' ');
        if (blank == std::string_view::npos) break;
        rest.remove_prefix(blank);
    }
    return false;
}

// The file is free; what stands there goes where that is wanted.
bool make_room(const CommandLine& line, const LiveSessionOptions& options, int& status) {
    status = Exit_Failed;
    std::error_code error;
    if (is_source(options)) {
        cli_Failure(options.file + ": the result would overwrite what it is made of");
        return false;
    }
    const std::string store = path_without_extension(options.file) + ".trs";
    for (const std::string& name : {options.file, store}) {
        if (!std::filesystem::exists(std::filesystem::symlink_status(name, error))) continue;
        if (!line.force) {
            cli_Failure(name + ": it is there already; --force replaces it");
            return false;
        }
        if (!std::filesystem::is_regular_file(name, error)) {
            cli_Failure(name + ": it is no regular file");
            return false;
        }
    }
    if (line.force && !std::filesystem::remove(options.file, error) && error) {
        cli_Failure(options.file + ": " + error.message());
        return false;
    }
    return true;
}

const char* words_of(LiveEnd end) {
    switch (end) {
        case LiveEnd::Target:
            return "the target has ended";
        case LiveEnd::Seconds:
            return "the seconds are over";
        case LiveEnd::Events:
            return "the events are there";
        case LiveEnd::Interrupt:
            return "it was interrupted";
        case LiveEnd::ServerLost:
            return "the event server was lost";
        case LiveEnd::Recording:
            return "the events can be recorded no more";
    }
    return "";
}

class LiveRun {
  public:
    LiveRun(const CommandLine& line, LiveSessionOptions options, const LiveWish& wish)
        : line_(line), wish_(wish), session_(std::move(options)) {}
    int run();

  private:
    std::optional<LiveEnd> ended() const;
    void counters(RowWriter& rows, const char* ended);
    double seconds() const { return std::chrono::duration<double>(Clock::now() - began_).count(); }
    void tellNotes();

    const CommandLine& line_;
    LiveWish wish_;
    LiveSession session_;
    Clock::time_point began_ = Clock::now();
};

std::optional<LiveEnd> LiveRun::ended() const {
    if (session_.end()) return session_.end();
    if (process_IsStopAsked()) return LiveEnd::Interrupt;
    if (wish_.events && session_.counts().events >= *wish_.events) return LiveEnd::Events;
    if (wish_.seconds && seconds() >= *wish_.seconds) return LiveEnd::Seconds;
    return std::nullopt;
}

void LiveRun::tellNotes() {
    for (const std::string& note : session_.takeNotes())
        if (!line_.quiet) cli_SayLine(note);
}

// One line, at once where somebody may be reading. Why it ended stands in the last one alone.
void LiveRun::counters(RowWriter& rows, const char* ended) {
    const LiveCounts& counts = session_.counts();
    if (line_.json) {
        std::vector<Fact> facts{{"seconds", seconds()},
                                {"events", counts.events},
                                {"dropped", counts.dropped},
                                {"lost", counts.lost},
                                {"behind", counts.behind}};
        if (ended) facts.push_back({"ended", ended});
        rows.facts(facts);
    } else {
        rows.row({seconds(), counts.events, counts.dropped, counts.lost, counts.behind});
        if (ended) rows.note(std::string("ended: ") + ended);
    }
    rows.send();
}

int LiveRun::run() {
    CommandLine form = line_;
    form.output.clear();  // -o names the trace
    RowWriter rows(form, {{{"seconds", 10}, {"events", 12}, {"dropped", 8}, {"lost", 8}, {"behind", 10}}});
    if (!rows.good()) return Exit_Failed;
    if (const Result begun = session_.begin(); !begun) {
        tellNotes();
        return cli_Failure(begun.text());
    }
    began_ = Clock::now();
    auto next = began_ + 1s;
    std::optional<LiveEnd> end;
    while (!end && rows.good()) {
        const bool isMore = session_.round();
        tellNotes();
        end = ended();
        if (!end && Clock::now() >= next) {
            counters(rows, nullptr);
            next += 1s;
        }
        if (!isMore && !end) std::this_thread::sleep_for(round_time);
    }
    const Result finished = session_.finish();
    tellNotes();
    counters(rows, end ? words_of(*end) : "nobody reads on");
    const bool closed = rows.close();
    if (!finished) return cli_Failure(finished.text());
    const bool isBad = end == LiveEnd::ServerLost || end == LiveEnd::Recording;
    return closed && !isBad ? Exit_Done : Exit_Failed;
}

}  // namespace

int command_Live(const CommandLine& line) {
    LiveSessionOptions options;
    LiveWish wish;
    int status = Exit_Done;
    if (!read_wish(line, options, wish, status) || !make_room(line, options, status)) return status;
    process_CatchStops();
    return LiveRun(line, std::move(options), wish).run();
}
