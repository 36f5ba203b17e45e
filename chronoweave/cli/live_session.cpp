#include "chronoweave/cli/live_session.h"

#include <sys/stat.h>

#include <chrono>
#include <thread>
#include <utility>

#include "chronoweave/live/target_commands.h"
#include "companions/trv/server/replies.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int answer_time = 5000;          // milliseconds that the server may take for an answer
constexpr uint64_t enough_to_open = 4096;  // bytes; by what stands there the store's interval is chosen
constexpr int64_t slice = 200;             // milliseconds of reading

}  // namespace

LiveSession::LiveSession(LiveSessionOptions options) : options_(std::move(options)) {
    link_.around.installation = path_installation_directory();
    link_.around.tasks = &tasks_;
    link_.around.wait = &wait_;
    link_.around.timeoutMs = [] { return answer_time; };
    link_.mode = TargetLink::Mode::Ready;
    link_.panel = this;
}

LiveSession::~LiveSession() {
    TargetLinkReset(link_, LinkEnd::Final, LinkPanelAfter::Stays);
    // It ends what it has started, and has its time for that.
    while (server_Reap() > 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

void LiveSession::AddLine(const std::string& line) {
    const std::string_view text = text_trim(line);
    if (text.empty()) return;
    notes_.emplace_back(text);
    if (text.starts_with(reply_Ended) && !end_) end_ = LiveEnd::Target;
    if (text.starts_with(reply_RecordingEnded) && !end_) end_ = LiveEnd::Recording;
    if (!text.starts_with(reply_Lost)) return;
    const std::string_view rest = text_trim(text.substr(reply_Lost.size()));
    counts_.lost += scan_number(rest.substr(0, rest.find(' '))).value_or(0);
}

Result LiveSession::refused(const char* what) const {
    return Result::failure(what, options_.target);
}

Result LiveSession::begin() {
    TargetConnect(link_, options_.target, {});
    if (!link_.Has(Target_Connected)) return refused("the target can't be connected to");
    TargetEnable(link_, options_.file);
    if (!link_.Has(Target_LiveModeEnabled)) return refused("its events can't be recorded");
    TargetStartStop(link_);
    if (!link_.Has(Target_LoggingStarted)) return refused("its events can't be logged");
    notes_.clear();  // all went well
    return {};
}

uint64_t LiveSession::written() const {
    struct stat file {};
    return ::stat(options_.file.c_str(), &file) == 0 ? static_cast<uint64_t>(file.st_size) : 0;
}

// Makes the store of what stands in the file.
void LiveSession::open() {
    wasOpened_ = true;
    ImportOptions options;
    options.checkpoint = options_.checkpoint;
    options.keepGrowing = true;
    opened_ = import_OpenSource(options_.file, options);
    counts_.events = opened_.counts.events;
    counts_.dropped = opened_.counts.dropped();
    trouble_ = opened_.trouble;
    if (!opened_.growing && !end_) end_ = LiveEnd::Recording;
}

// Takes in what was written since. True when the time did not do for all of it.
bool LiveSession::readOn(int64_t limitMs) {
    if (!opened_.growing) return false;
    const ReadOn read = import_ReadOn(*opened_.growing, limitMs);
    counts_.events += read.events;
    const auto done = static_cast<uint64_t>(read.extent.done);
    const uint64_t there = written();
    counts_.behind = there > done ? there - done : 0;
    if (!read.trouble.ok() && trouble_.ok()) {
        trouble_ = read.trouble;
        if (!end_) end_ = LiveEnd::Recording;
    }
    return read.more;
}

bool LiveSession::round() {
    tasks_.Run(EventTasks::Clock::now());
    TargetLinkPoll(link_);
    if (!link_.server && !end_) end_ = LiveEnd::ServerLost;
    if (!wasOpened_ && written() >= enough_to_open) open();
    return readOn(slice);
}

Result LiveSession::finish() {
    if (link_.server && link_.Has(Target_LoggingStarted)) TargetStartStop(link_);
    if (link_.server && link_.Has(Target_LiveModeEnabled)) TargetDisable(link_);
    if (!wasOpened_ && written() > 0) open();
    while (readOn(slice)) {
    }
    opened_.growing.reset();
    return trouble_;
}
