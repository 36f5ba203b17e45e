#include "companions/trv/server/server.h"

#include <algorithm>
#include <array>
#include <utility>

#include "companions/trv/server/replies.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t longest_command = size_t{16} * 1024;
// Nobody need read what nobody asked for; beyond so much it is not kept.
constexpr size_t most_unread = size_t{64} * 1024;
// A user event of this subtype says what the target could not keep.
constexpr uint16_t lost_subtype = 0xFFFE;

std::string count_of(uint64_t number, const char* what) {
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

}  // namespace

const Server::Command Server::commands_[] = {
    {"c", "c TARGET", "connect to a target", &Server::connect},
    {"d", "d", "disconnect", &Server::disconnect},
    {"g", "g", "log the target's events", &Server::startLogging},
    {"s", "s", "log them no more", &Server::stopLogging},
    {"l", "l FILE", "live mode: write what is logged to a raw event file", &Server::enable},
    {"n", "n", "end live mode", &Server::disable},
    {"M", "M NUMBER", "which kinds of events are kept, a bit for each", &Server::setMask},
    {"info", "info", "about the target", &Server::info},
    {"help", "help", "this list", &Server::help},
    {"q", "q", "end", &Server::quit},
};

Server::Server(ConnectFunction connect, std::string_view banner) : connect_(std::move(connect)) {
    output_ = reply_Lines(banner);
    output_ += reply_Prompt;
}

// --- commands in, answers out

void Server::answer(std::string_view text) {
    output_ += reply_Lines(text);
}

void Server::tell(std::string_view what, const Result& why) {
    const std::string reason = why.text();
    output_ += reply_Harmless(std::string(what) + (reason.empty() ? "" : ": " + reason));
}

void Server::remark(std::string_view text) {
    if (output_.size() < most_unread) output_ += reply_Harmless(text);
}

void Server::remarkAll(const std::vector<std::string>& lines) {
    for (const std::string& one : lines) remark(one);
}

void Server::input(std::string_view bytes, Instant now) {
    for (const char byte : bytes) {
        if (done_) return;
        if (byte != '\n') {
            isLineTooLong_ = isLineTooLong_ || line_.size() >= longest_command;
            if (!isLineTooLong_) line_ += byte;
            continue;
        }
        if (isLineTooLong_)
            tell("The command is too long");
        else
            line(text_trim(line_), now);
        line_.clear();
        isLineTooLong_ = false;
        if (!done_) output_ += reply_Prompt;
    }
}

void Server::inputEnded(Instant now) {
    if (!done_) quit({}, now);
}

void Server::line(std::string_view text, Instant now) {
    if (text.empty()) return;
    const size_t blank = std::min(text.find_first_of(" \t"), text.size());
    const std::string_view word = text.substr(0, blank);
    const auto* const command = std::find_if(std::begin(commands_), std::end(commands_),
                                             [&](const Command& one) { return one.word == word; });
    if (command == std::end(commands_))
        return tell("There is no command \"" + std::string(word) + "\"; help lists those that there are");
    (this->*command->run)(text_trim(text.substr(blank)), now);
}

void Server::help(std::string_view, Instant) {
    for (const Command& command : commands_) {
        std::string text(command.usage);
        text.resize(std::max<size_t>(text.size(), 10), ' ');
        tell(text + " " + std::string(command.help));
    }
}

void Server::quit(std::string_view, Instant now) {
    letGo(now);
    done_ = true;
}

bool Server::isConnected() {
    if (connection_.target) return true;
    tell("There is no connection to a target");
    return false;
}

void Server::connect(std::string_view argument, Instant) {
    if (connection_.target)
        return tell("There is a connection already, to " + connection_.target->facts().name);
    if (argument.empty()) return tell("The target is missing");
    Connection connection;
    if (const Result made = connect_(std::string(argument), connection); !made)
        return tell("The target can't be reached", made);
    connection_ = std::move(connection);
    const TargetFacts& facts = connection_.target->facts();
    book_.emplace(facts.header.bigEndian);
    events_ = RawWriter(facts.header.bigEndian);
    counts_ = {};
    mask_ = mask_All;
    answer("Connection " + std::string(reply_Established) + ".");
    tell("Target: " + facts.name);
    answer(std::string(reply_Mask) + gen_format(" 0x%08x", mask_));
}

void Server::disconnect(std::string_view, Instant now) {
    if (!isConnected()) return;
    letGo(now);
    answer("The event server is " + std::string(reply_Disconnected) + " the target.");
}

void Server::startLogging(std::string_view, Instant now) {
    if (!isConnected()) return;
    if (state_ == State::Ended) return tell("The target came to its end; connect to it anew");
    if (state_ == State::Stopped) {
        if (const Result started = connection_.target->start(now); !started)
            return tell("The target's events can't be logged", started);
        state_ = State::Logging;
        polled_ = {TargetPoll::State::More, now, 0, {}};
    }
    answer("Target " + std::string(reply_LoggingOn));
    if (!connection_.recorder->isEnabled()) tell("Live mode is off: nothing is written until it is on");
}

void Server::stopLogging(std::string_view, Instant now) {
    if (!isConnected()) return;
    drain(now);
    answer("Target " + std::string(reply_LoggingOff));
}

void Server::enable(std::string_view argument, Instant now) {
    if (!isConnected()) return;
    if (argument.empty()) return tell("The name of the file is missing");
    if (connection_.recorder->isEnabled()) return tell("Live mode is on already");
    // What was logged up to now is behind us.
    step(now);
    RawWriter states(events_.BigEndian());
    if (book_->time() != 0) book_->write(book_->time(), states);
    if (const Result made = connection_.recorder->enable(std::string(argument), states.bytes()); !made)
        return tell("Live mode stays off", made);
    answer("Live mode " + std::string(reply_Enabled) + ".");
}

void Server::disable(std::string_view, Instant now) {
    if (!isConnected()) return;
    if (state_ == State::Logging) step(now);
    std::string said;
    const bool was = connection_.recorder->isEnabled();
    const Result ended = was ? connection_.recorder->disable(said) : Result();
    answer("Live mode " + std::string(reply_Disabled) + ".");
    if (!ended) tell("Not all could be written", ended);
    if (!said.empty()) tell(said);
}

void Server::setMask(std::string_view argument, Instant now) {
    if (!isConnected()) return;
    const auto number = scan_number(argument);
    if (!number || *number > UINT32_MAX) return tell("The mask is a number, such as 0x3fff");
    step(now);
    mask_ = static_cast<uint32_t>(*number);
    sendStates(now);
    answer(std::string(reply_Mask) + gen_format(" 0x%08x", mask_));
}

void Server::info(std::string_view, Instant) {
    if (!isConnected()) return;
    const TargetFacts& facts = connection_.target->facts();
    tell("Target: " + facts.name);
    answer(std::string(reply_Mask) + gen_format(" 0x%08x", mask_));
    tell(gen_format("Clock: %llu ticks a second, %s",
                    static_cast<unsigned long long>(facts.header.ticksPerSecond),
                    facts.header.bigEndian ? "big-endian" : "little-endian"));
    tell(state_ == State::Logging ? "Logging"
         : state_ == State::Ended ? "The target came to its end"
                                  : "Not logging");
    tell("Logged: " + count_of(counts_.logged, "event") + ", " + std::to_string(counts_.masked) +
         " of them not kept by the mask; lost: " + std::to_string(counts_.lost));
    tell(connection_.recorder->info());
    for (const std::string& one : connection_.target->info()) tell(one);
}

// --- events on their way

std::optional<Instant> Server::next() const {
    if (!connection_.target) return std::nullopt;
    std::optional<Instant> when = connection_.recorder->flushDue();
    if (state_ != State::Logging) return when;
    const Instant poll = polled_.state == TargetPoll::State::More ? Instant::min() : polled_.next;
    return when ? std::min(*when, poll) : poll;
}

void Server::step(Instant now) {
    if (!connection_.target) return;
    if (state_ == State::Logging && (polled_.state == TargetPoll::State::More || polled_.next <= now)) {
        events_.clear();
        polled_ = takeFrom(connection_.target->poll(now, events_), now);
        if (polled_.state == TargetPoll::State::Ended) ended();
    }
    const auto due = connection_.recorder->flushDue();
    if (!due || *due > now) return;
    if (const Result flushed = connection_.recorder->flush(); !flushed) recordingFailed(flushed);
}

// Takes the events that a target has put, and tells what it has to say.
TargetPoll Server::takeFrom(TargetPoll polled, Instant now) {
    record(now);
    if (polled.lost > 0) tellLost(polled.lost, now);
    remarkAll(polled.notes);
    remarkAll(connection_.recorder->takeNotes());
    return polled;
}

// Everything that came stands in the file before the end is told.
void Server::ended() {
    state_ = State::Ended;
    for (const Result& result : {connection_.recorder->flush(), connection_.recorder->targetEnded()})
        if (!result) recordingFailed(result);
    remarkAll(connection_.recorder->takeNotes());
    output_ += reply_Lines(std::string(reply_Ended) + ": " + count_of(counts_.logged, "event") +
                           (counts_.lost > 0 ? ", " + std::to_string(counts_.lost) + " lost" : ""));
}

// Logging ends; what the target still has is taken.
void Server::drain(Instant now) {
    if (state_ == State::Logging) {
        events_.clear();
        takeFrom(connection_.target->stop(now, events_), now);
        if (const Result flushed = connection_.recorder->flush(); !flushed) recordingFailed(flushed);
    }
    if (state_ != State::Ended) state_ = State::Stopped;
}

// Keeps those records that the mask lets pass, and what all of them say of the tasks.
size_t Server::passed(std::span<const uint8_t> records) {
    const bool big = events_.BigEndian();
    size_t at = 0, from = 0, masked = 0;
    kept_.clear();
    const auto keep = [&](size_t to) {
        kept_.insert(kept_.end(), records.begin() + static_cast<ptrdiff_t>(from),
                     records.begin() + static_cast<ptrdiff_t>(to));
    };
    while (at < records.size()) {
        const RawCut cut = raw_Cut(records, at);
        if (cut.kind != RawCut::Kind::Record) break;
        const SourceRecord event = raw_Decode(cut.record, big);
        book_->take(event);
        ++counts_.logged;
        if (!mask_Passes(mask_, event.type, event.subtype)) {
            keep(at);
            from = at + cut.size;
            ++masked;
        }
        at += cut.size;
    }
    if (from > 0) keep(at);
    return masked;
}

void Server::record(Instant now) {
    const std::span<const uint8_t> records = events_.bytes();
    if (records.empty()) return;
    const size_t masked = passed(records);
    counts_.masked += masked;
    const Result taken =
        connection_.recorder->take(masked > 0 ? std::span<const uint8_t>(kept_) : records, now);
    if (!taken) recordingFailed(taken);
}

// What a mask kept back would be missed by whoever reads on: the file is told anew what the tasks do.
void Server::sendStates(Instant now) {
    if (book_->time() == 0) return;
    RawWriter states(events_.BigEndian());
    book_->write(book_->time(), states);
    if (const Result taken = connection_.recorder->take(states.bytes(), now); !taken) recordingFailed(taken);
}

// What is lost is seen in the picture, where it was lost, and counted.
void Server::tellLost(uint64_t lost, Instant now) {
    counts_.lost += lost;
    const std::string text = "lost " + std::to_string(lost);
    RawWriter object(events_.BigEndian());
    object.put32(book_->object());
    std::vector<uint8_t> extra = object.take();
    extra.insert(extra.end(), text.begin(), text.end());
    extra.push_back(0);
    events_.clear();
    if (events_.event(book_->time(), mt_UserEvent, lost_subtype, extra)) record(now);
    remark(std::string(reply_Lost) + ' ' + count_of(lost, "event") + '.');
}

void Server::recordingFailed(const Result& why) {
    remark(std::string(reply_RecordingEnded) + ' ' + why.text());
}

void Server::letGo(Instant now) {
    if (!connection_.target) return;
    drain(now);
    std::string said;
    if (connection_.recorder->isEnabled()) {
        const Result closed = connection_.recorder->close(said);
        if (!closed) recordingFailed(closed);
        if (!said.empty()) remark(said);
    }
    connection_ = {};
    book_.reset();
    state_ = State::Stopped;
}
