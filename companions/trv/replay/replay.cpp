#include "companions/trv/replay/replay.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "chronoweave/import/raw/raw_format.h"
#include "chronoweave/import/raw/raw_stream.h"
#include "chronoweave/import/raw/raw_words.h"
#include "shared/libcxxutil/text.h"

const char replay_Usage[] =
    "replay FILE [xSPEED]      a .trr at its own pace, faster (x4), or as fast as it goes (xmax)";

namespace {

using namespace std::chrono_literals;
constexpr auto step_time = 10ms;  // events of one such time come together
constexpr size_t most_at_once = 20000;

struct Wanted {
    std::string file;
    std::optional<double> speed = 1;  // nothing is as fast as it goes
};

// Whether the word is a speed, and which.
bool read_speed(std::string_view word, std::optional<double>& speed) {
    if (word.size() < 2 || word[0] != 'x') return false;
    if (word == "xmax") {
        speed.reset();
        return true;
    }
    const auto number = scan_double(word.substr(1));
    if (!number || !(*number > 0) || !std::isfinite(*number)) return false;
    speed = number;
    return true;
}

Wanted read_text(std::string_view text) {
    Wanted wanted;
    text = text_trim(text);
    const size_t blank = text.find_last_of(" \t");
    if (blank != std::string_view::npos && read_speed(text.substr(blank + 1), wanted.speed))
        text = text_trim_right(text.substr(0, blank));
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    wanted.file = text;
    return wanted;
}

class Replay : public Target {
  public:
    Replay(TargetFacts facts, std::unique_ptr<EventSource> source, std::optional<double> speed)
        : facts_(std::move(facts)), source_(std::move(source)), speed_(speed) {}

    const TargetFacts& facts() const override { return facts_; }
    Result start(Instant now) override;
    TargetPoll poll(Instant now, RawWriter& out) override;
    TargetPoll stop(Instant now, RawWriter&) override;
    std::vector<std::string> info() const override;

  private:
    // The event that is next; nothing when there is none.
    bool lookAhead();
    Instant dueAt(mt_Time time) const;
    TargetPoll ended();

    TargetFacts facts_;
    std::unique_ptr<EventSource> source_;
    std::optional<double> speed_;

    SourceRecord ahead_;
    bool isAhead_ = false;
    mt_Time first_ = 0, newest_ = 0;  // times of events; 0 before the first that has one
    Instant began_{};                 // when the first event was due, pauses left out
    Instant paused_{};
    bool wasStarted_ = false;
    uint64_t tooLong_ = 0;
};

Result Replay::start(Instant now) {
    began_ = wasStarted_ ? began_ + (now - paused_) : now;
    wasStarted_ = true;
    return {};
}

TargetPoll Replay::stop(Instant now, RawWriter&) {
    paused_ = now;
    return {};
}

bool Replay::lookAhead() {
    while (!isAhead_) {
        const SourceStep step = source_->next(ahead_);
        if (step == SourceStep::Pause) continue;
        if (step != SourceStep::Record) return false;
        isAhead_ = true;
        if (first_ == 0) first_ = ahead_.time;
        newest_ = std::max(newest_, ahead_.time);
    }
    return true;
}

// Events with no time of their own, and those whose time goes back, come with the one before.
Instant Replay::dueAt(mt_Time time) const {
    if (!speed_) return Instant::min();
    const double seconds =
        static_cast<double>(time - first_) / static_cast<double>(facts_.header.ticksPerSecond) / *speed_;
    constexpr double most = 1e8;  // seconds; more does not fit the clock
    return began_ + std::chrono::duration_cast<Instant::duration>(
                        std::chrono::duration<double>(std::min(seconds, most)));
}

TargetPoll Replay::ended() {
    source_->settle();
    TargetPoll end{TargetPoll::State::Ended, {}, 0, {}};
    const SourceCounts& counts = source_->counts();
    const auto tell = [&](uint64_t count, const char* what) {
        if (count > 0) end.notes.push_back(std::to_string(count) + what);
    };
    tell(counts.badBytes, " bytes of the file are no part of any event");
    tell(counts.tooShort + counts.tooLong, " records of the file are too short or too long to be events");
    tell(counts.unread,
         " bytes at the end of the file are the beginning of an event that is not there whole");
    tell(tooLong_, " events of the file are too long for a stream");
    if (const Result damage = source_->damage(); !damage) end.notes.push_back(damage.text());
    return end;
}

TargetPoll Replay::poll(Instant now, RawWriter& out) {
    for (size_t count = 0; count < most_at_once; ++count) {
        if (!lookAhead()) return ended();
        const Instant due = dueAt(newest_);
        if (due > now) return {TargetPoll::State::Waiting, std::max(due, now + step_time), 0, {}};
        if (!out.event(ahead_.time, ahead_.type, ahead_.subtype, ahead_.extra)) ++tooLong_;
        isAhead_ = false;
    }
    return {TargetPoll::State::More, {}, 0, {}};
}

std::vector<std::string> Replay::info() const {
    const SourceExtent extent = source_->extent();
    std::string text = "Replayed: " + std::to_string(static_cast<uint64_t>(extent.done)) + " of " +
                       std::to_string(static_cast<uint64_t>(extent.total)) + " bytes";
    return {text};
}

// How a file of the source's events begins: as the file itself, or, where that is no stream, as a stream of
// the same clock.
Result read_facts(const std::string& file, const SourceFacts& source, TargetFacts& facts) {
    std::unique_ptr<ByteSource> bytes;
    if (Result opened = source_OpenFile(file, false, bytes); !opened) return opened;
    const int64_t first = raw_ReadHeader(*bytes, facts.header);
    if (first <= 0) return Result::failure(words_BadFormatTrr, file);
    facts.name = "replay " + file;
    if (facts.header.version == raw_LogImageVersion) {
        facts.header.version = 3 << 8;
        facts.headerBytes = raw_EncodeHeader(facts.header, RawHeaderForm::Long);
        return {};
    }
    facts.headerBytes.resize(static_cast<size_t>(first));
    const SourceRead read = bytes->ReadAt(0, facts.headerBytes);
    if (read.bytes != facts.headerBytes.size() || source.ticksPerSecond == 0)
        return Result::failure(words_BadFormatTrr, file);
    return {};
}

}  // namespace

Result replay_Connect(std::string_view text, std::unique_ptr<Target>& target) {
    const Wanted wanted = read_text(text);
    if (wanted.file.empty()) return Result::failure("the file to be replayed is missing");
    std::unique_ptr<ByteSource> bytes;
    if (Result opened = source_OpenFile(wanted.file, false, bytes); !opened) return opened;
    std::unique_ptr<EventSource> source;
    if (const Result made = raw_Open(std::move(bytes), wanted.file, source); !made)
        return Result::failure(made.what(), wanted.file, made.reason());
    TargetFacts facts;
    if (Result read = read_facts(wanted.file, source->facts(), facts); !read) return read;
    target = std::make_unique<Replay>(std::move(facts), std::move(source), wanted.speed);
    return {};
}
