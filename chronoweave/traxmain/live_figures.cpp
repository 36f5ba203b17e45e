// live_figures: a window follows a target, driven by its own panel, and what that costs and how it keeps up
// is printed. Needs no display.
#include <unistd.h>

#include <QApplication>
#include <QEvent>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>

#include "chronoweave/analysis/program_options.h"
#include "chronoweave/import/raw/raw_header.h"
#include "chronoweave/import/source/byte_source.h"
#include "chronoweave/live/live_target.h"
#include "chronoweave/live/server_process.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxmain/live_watch.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/config/settings.h"
#include "windlib/qt/event_service.h"
#include "windlib/qt/platform.h"
#include "windlib/qt/qt_wait_windows.h"

namespace {

constexpr double settlesAfter = 300;  // seconds, from which on memory is to stay

constexpr char usage[] =
    "usage: live_figures TARGET [OPTION...]\n"
    "\n"
    "A window follows TARGET, which is named as in its panel (\"sim 30 10000\").\n"
    "--seconds N     how long (default 60)\n"
    "--interval MS   from one refresh to the next (default 1000)\n"
    "--last S        the view follows the last S seconds (default: the newest events, as a new window does)\n"
    "--every S       seconds from one line of figures to the next (default 10)\n"
    "--work DIR      where the trace goes; it is removed in the end (default: the temporary directory)\n"
    "Limits, of which a missed one gives status 1, as a lost event does:\n"
    "--unread S      seconds that what is written may wait to be read\n"
    "--growth MIB    growth of private memory from the fifth minute on\n"
    "--stall MS      longest time in which the window takes no events, of its own work\n"
    "--latency MS    from the file to the screen, of 99 in 100\n";

struct Options {
    std::string target, work = path_temporary_directory();
    double seconds = 60, every = 10;
    int interval = 1000;
    std::optional<double> last, unread, growth, stall, latency;
};

bool parse(int argc, char** argv, Options& options) {
    const std::pair<const char*, std::function<void(double)>> numbers[] = {
        {"--seconds", [&](double n) { options.seconds = n; }},
        {"--every", [&](double n) { options.every = n; }},
        {"--interval", [&](double n) { options.interval = static_cast<int>(n); }},
        {"--last", [&](double n) { options.last = n; }},
        {"--unread", [&](double n) { options.unread = n; }},
        {"--growth", [&](double n) { options.growth = n; }},
        {"--stall", [&](double n) { options.stall = n; }},
        {"--latency", [&](double n) { options.latency = n; }}};
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const auto* const number = std::find_if(std::begin(numbers), std::end(numbers),
                                                [&](const auto& each) { return word == each.first; });
        if (word[0] != '-' && options.target.empty()) {
            options.target = word;
        } else if (i + 1 < argc && word == "--work") {
            options.work = argv[++i];
        } else if (i + 1 < argc && number != std::end(numbers)) {
            const auto value = scan_double(argv[++i]);
            if (!value || *value <= 0) return false;
            number->second(*value);
        } else {
            return false;
        }
    }
    return !options.target.empty();
}

// What is this process's alone and not a file's, MiB.
double private_memory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("RssAnon:")) return std::strtod(line.c_str() + 8, nullptr) / 1024;
    return 0;
}

double processor_seconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Of values in order of size; 0 for none.
double share_of(const std::vector<double>& values, double share) {
    if (values.empty()) return 0;
    return values[std::min(values.size() - 1,
                           static_cast<size_t>(share * static_cast<double>(values.size())))];
}

// Records that stand in the file.
uint64_t count_records(const std::string& file) {
    std::unique_ptr<ByteSource> source;
    EventSourceHeader header;
    if (!source_OpenFile(file, true, source).ok()) return 0;
    const int64_t begin = raw_ReadHeader(*source, header);
    std::ifstream bytes(file, std::ios::binary);
    bytes.seekg(begin);
    std::vector<char> buffer(1 << 20);
    uint64_t count = 0, skip = 0;  // bytes of the record under way that are still to come
    for (;;) {
        bytes.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto got = static_cast<uint64_t>(bytes.gcount());
        if (got == 0) return count;
        for (; skip < got; ++count) skip += 1u + static_cast<uint8_t>(buffer[skip]);
        skip -= got;
    }
}

class Session : public QObject {
  public:
    explicit Session(const Options& options);
    ~Session() override;
    bool begin();
    void follow();
    bool finish();

  private:
    using Clock = LiveWatch::Clock;
    _LaCanvasData& canvas() { return window_->view().canvas(); }
    LiveReader& reader() { return window_->target()->reader(); }
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool press(const char* button, TargetFlag flag, bool on);
    void serve(Clock::duration time);
    void showLast();
    void tell(double seconds);
    bool limit(const char* what, const std::optional<double>& most, double value) const;

    const Options& options_;
    const std::string folder_, file_;
    QtEventService services_;
    QtWaitWindows waits_{services_, QtWaitWindows::Questions::Modal};
    SettingsManager settings_;
    CanvasWindow* window_ = nullptr;
    std::unique_ptr<LiveWatch> watch_;
    LiveStall worst_;
    double longestUnread_ = 0, worstUnread_ = 0;
    std::optional<double> memoryThen_;
    std::vector<double> latencies_;
    bool goesWithTheEnd_ = false;
};

Session::Session(const Options& options)
    : options_(options),
      folder_(path_join(options.work, gen_format("live-figures-%d", static_cast<int>(::getpid())))),
      file_(path_join(folder_, "live.trr")),
      settings_(program_Switches(), path_join(folder_, "config")) {
    std::filesystem::create_directories(folder_);
    settings_.SetOn("FollowEnd", options.last.has_value());
    window_ = new CanvasWindow("VOREL Chronoweave", false,
                               {.settings = &settings_, .events = &services_, .waits = &waits_});
    window_->resize(1600, 1000);
    window_->show();
    platform_ProcessPending();
    window_->showEmpty();
    window_->view().installEventFilter(this);
    watch_ = std::make_unique<LiveWatch>(file_);
}

Session::~Session() {
    watch_.reset();
    delete window_;
    while (server_Reap() > 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::error_code none;
    std::filesystem::remove_all(folder_, none);
}

// What is painted is on the screen once the event is over.
bool Session::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Paint && canvas().source.store)
        QMetaObject::invokeMethod(
            watch_.get(), [this, read = reader().ReadUpTo()] { watch_->shown(read); }, Qt::QueuedConnection);
    return false;
}

bool Session::press(const char* button, TargetFlag flag, bool on) {
    DialogModel* const panel = window_->target()->panel().model();
    panel->press(button);
    const TargetLink& link = window_->target()->link();
    if (link.Has(flag) == on) return true;
    std::fprintf(stderr, "live_figures: %s: %s\n", button, link.lastMessage.c_str());
    return false;
}

bool Session::begin() {
    laCanvas_Command(canvas(), "Korvantis");
    DialogModel& panel = *window_->target()->panel().model();
    panel.edit("ConnectToTarget", options_.target);
    panel.edit("outputFile", file_);
    panel.commit("outputFile");
    if (!press("ConnectButton", Target_Connected, true)) return false;
    if (!press("LiveMode", Target_LiveModeEnabled, true)) return false;
    canvas().options.refreshInterval = options_.interval;
    reader().CreateRefreshTimer();
    return press("ControlLogging", Target_LoggingStarted, true);
}

void Session::serve(Clock::duration time) {
    const auto until = Clock::now() + time;
    platform_Loop([&] {
        longestUnread_ = std::max(longestUnread_, watch_->unread(reader().ReadUpTo()));
        return Clock::now() < until;
    });
}

void Session::showLast() {
    if (goesWithTheEnd_ || !options_.last || !canvas().source.store) return;
    laCanvas_ShowRange(canvas(), 0, *options_.last, {.paint = true});
    goesWithTheEnd_ = true;
}

void Session::tell(double seconds) {
    const LiveStall stall = watch_->takeLongestStall();
    std::vector<double> latencies = watch_->takeLatencies();
    const double memory = private_memory();
    if (!memoryThen_ && seconds >= settlesAfter) memoryThen_ = memory;
    const uint64_t events = canvas().source.store ? mt_GetEventCount(*canvas().source.store) : 0;
    std::printf("%7.0f %11llu %9.3f %9.1f %9.1f %9.1f %9.1f %9.1f %9.1f\n", seconds,
                static_cast<unsigned long long>(events), longestUnread_, share_of(latencies, 0.5),
                share_of(latencies, 0.99), stall.wall, stall.processor, memory, processor_seconds());
    std::fflush(stdout);
    worst_.wall = std::max(worst_.wall, stall.wall);
    worst_.processor = std::max(worst_.processor, stall.processor);
    worstUnread_ = std::max(worstUnread_, std::exchange(longestUnread_, 0));
    latencies_.insert(latencies_.end(), latencies.begin(), latencies.end());
}

void Session::follow() {
    std::printf("%7s %11s %9s %9s %9s %9s %9s %9s %9s\n", "seconds", "events", "unread s", "shown ms",
                "of 99 %", "stall ms", "own ms", "MiB", "busy s");
    const auto began = Clock::now();
    for (double next = std::min(1.0, options_.every);;) {
        const double now = std::chrono::duration<double>(Clock::now() - began).count();
        serve(std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double>(std::max(0.0, std::min(next, options_.seconds) - now))));
        showLast();
        const double reached = std::chrono::duration<double>(Clock::now() - began).count();
        tell(reached);
        if (reached >= options_.seconds) return;
        while (next <= reached) next += options_.every;
    }
}

bool Session::limit(const char* what, const std::optional<double>& most, double value) const {
    const bool holds = !most || value <= *most;
    std::printf("%-46s %10.3f%s\n", what, value,
                most ? gen_format("   at most %g%s", *most, holds ? "" : ": MISSED").c_str() : "");
    return holds;
}

// The server says all that it has, and all is read; then both sides are counted.
bool Session::finish() {
    bool good = press("ControlLogging", Target_LoggingStarted, false);
    window_->target()->panel().model()->press("Info");
    std::printf("%s", window_->target()->link().lastMessage.c_str());
    good = press("LiveMode", Target_LiveModeEnabled, false) && good;
    std::error_code none;
    for (int i = 0; i < 1000 && reader().ReadUpTo() < std::filesystem::file_size(file_, none); ++i)
        serve(std::chrono::milliseconds(20));
    tell(options_.seconds);
    const uint64_t written = count_records(file_);
    const uint64_t read = canvas().source.store ? mt_GetEventCount(*canvas().source.store) : 0;
    std::printf("events written %llu, read %llu\n", static_cast<unsigned long long>(written),
                static_cast<unsigned long long>(read));
    std::sort(latencies_.begin(), latencies_.end());
    good =
        limit("events lost", 0, std::abs(static_cast<double>(written) - static_cast<double>(read))) && good;
    good = limit("longest time unread, s", options_.unread, worstUnread_) && good;
    limit("from the file to the screen, median, ms", std::nullopt, share_of(latencies_, 0.5));
    good = limit("from the file to the screen, of 99 in 100, ms", options_.latency,
                 share_of(latencies_, 0.99)) &&
           good;
    limit("from the file to the screen, longest, ms", std::nullopt, share_of(latencies_, 1));
    limit("longest wait of the window's events, ms", std::nullopt, worst_.wall);
    good = limit("of it the window's own work, ms", options_.stall, worst_.processor) && good;
    if (memoryThen_)
        good =
            limit("growth of private memory, MiB", options_.growth, private_memory() - *memoryThen_) && good;
    return good && written > 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fputs(usage, stderr);
        return 2;
    }
    if (std::getenv("QT_QPA_PLATFORM") == nullptr) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 0);  // for icons and configure files
    process_LetWritesFail();
    gen_set_short_name(argv[0]);
    const auto application = platform_Start(argv[0]);
    Session session(options);
    if (!session.begin()) return 1;
    session.follow();
    return session.finish() ? 0 : 1;
}
