#include "companions/trv/ring/ring.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>

#include "companions/trv/server/words.h"
#include "shared/libcxxutil/file_beside.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

const char ring_Usage[] =
    "ring N [after T] [on EVENT] TARGET\n"
    "                            any of these, its last N seconds kept in memory; l FILE waits for EVENT,\n"
    "                            and T seconds more, and then writes them; so does n";

namespace {

constexpr size_t chunk_size = 64 * 1024;
constexpr double longest = 24 * 3600;  // seconds

SourceRecord decode(std::span<const uint8_t> record, bool bigEndian) {
    return raw_Decode(record.subspan(1), bigEndian);
}

Result put_all(int file, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t put = ::write(file, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return Result::system("", put < 0 ? errno : ENOSPC);
        bytes = bytes.subspan(static_cast<size_t>(put));
    }
    return {};
}

Result read_seconds(const std::string& word, const char* what, double& seconds) {
    const auto number = scan_double(word);
    if (!number || !(*number >= 0 && *number <= longest))
        return Result::failure(std::string(what) + " is a number of seconds, not " +
                               (word.empty() ? "nothing" : word));
    seconds = *number;
    return {};
}

}  // namespace

Result ring_Read(std::string_view& text, RingOptions& options) {
    const std::string_view whole = text;
    if (Result read = read_seconds(words_TakeFirst(text), "what a ring keeps", options.seconds); !read)
        return read;
    if (options.seconds <= 0) return Result::failure("what a ring keeps is more than 0 seconds");
    for (;;) {
        std::string_view rest = text;
        const std::string word = words_TakeFirst(rest);
        if (word == "after") {
            if (Result read = read_seconds(words_TakeFirst(rest), "after", options.after); !read) return read;
        } else if (word == "on") {
            options.on = match_Read(words_TakeFirst(rest));
        } else {
            break;
        }
        text = rest;
    }
    options.said = text_trim(whole.substr(0, whole.size() - text.size()));
    return text.empty() ? Result::failure("the target of the ring is missing") : Result();
}

Ring::Ring(const TargetFacts& facts, RingOptions options, size_t most)
    : facts_(facts), options_(std::move(options)), most_(most), book_(facts.header.bigEndian) {
    const auto rate = static_cast<double>(facts_.header.ticksPerSecond);
    window_ = static_cast<mt_Time>(std::llround(options_.seconds * rate));
    after_ = static_cast<mt_Time>(std::llround(options_.after * rate));
}

// --- what is kept

void Ring::append(std::span<const uint8_t> record) {
    if (chunks_.empty() || chunks_.back().bytes.size() + record.size() > chunk_size) {
        chunks_.emplace_back();
        chunks_.back().bytes.reserve(chunk_size);
    }
    auto& bytes = chunks_.back().bytes;
    bytes.insert(bytes.end(), record.begin(), record.end());
    bytes_ += record.size();
    ++events_;
}

void Ring::dropFirst() {
    Chunk& chunk = chunks_.front();
    const size_t size = 1u + chunk.bytes[chunk.at];
    book_.take(decode(std::span(chunk.bytes).subspan(chunk.at, size), facts_.header.bigEndian));
    chunk.at += size;
    bytes_ -= size;
    --events_;
    if (chunk.at == chunk.bytes.size()) chunks_.pop_front();
}

// One with no time of its own, and one whose time goes back, goes with the one before it.
void Ring::dropTo(mt_Time time) {
    while (!chunks_.empty()) {
        const Chunk& chunk = chunks_.front();
        const mt_Time own = decode(std::span(chunk.bytes).subspan(chunk.at), facts_.header.bigEndian).time;
        if ((time == 0 || std::max(own, dropped_) > time) && bytes_ <= most_) return;
        if (bytes_ > most_ && !std::exchange(isFullTold_, true))
            note("The memory for events is full; less than the seconds asked for is kept.");
        dropped_ = std::max(own, dropped_);
        dropFirst();
    }
}

mt_Time Ring::startOf(mt_Time end) const {
    return end > window_ ? end - window_ : 0;
}

Result Ring::take(std::span<const uint8_t> records, Instant) {
    for (size_t at = 0; at < records.size();) {
        const size_t size = 1u + records[at];
        const auto record = records.subspan(at, size);
        if (Result taken = takeOne(record, decode(record, facts_.header.bigEndian)); !taken) return taken;
        at += size;
    }
    return {};
}

Result Ring::takeOne(std::span<const uint8_t> record, const SourceRecord& event) {
    if (wait_ == Wait::Behind && event.time > until_) {
        if (Result done = writeUpTo(until_); !done) return done;
    }
    newest_ = std::max(newest_, event.time);
    append(record);
    dropTo(startOf(newest_));
    if (wait_ != Wait::ForEvent || !options_.on || !match_Fits(*options_.on, event)) return {};
    wait_ = Wait::Behind;
    until_ = newest_ + after_;
    return after_ > 0 ? Result() : writeUpTo(until_);
}

// --- into the file

Result Ring::writeBytes(int file, mt_Time begin, size_t& states) const {
    RawWriter head(facts_.header.bigEndian);
    head.raw(facts_.headerBytes);
    states = book_.write(begin, head);
    Result result = put_all(file, head.bytes());
    for (const Chunk& chunk : chunks_)
        if (result) result = put_all(file, std::span(chunk.bytes).subspan(chunk.at));
    if (result && ::fdatasync(file) != 0) result = Result::system("", errno);
    return result;
}

Result Ring::writeUpTo(mt_Time end) {
    dropTo(startOf(end));
    wait_ = Wait::Off;
    FileBeside beside;
    if (Result made = beside.make(file_); !made) return made;
    if (const Result put =
            writeBytes(beside.descriptor().number(), std::max(dropped_, startOf(end)), statesWritten_);
        !put)
        return Result::failure(put.what(), file_, put.reason());
    if (Result kept = beside.keep(); !kept) return kept;
    eventsWritten_ = events_;
    wait_ = Wait::Written;
    note(written());
    return {};
}

std::string Ring::written() const {
    return gen_format("%llu events, behind what %zu tasks did before, were written to %s",
                      static_cast<unsigned long long>(eventsWritten_), statesWritten_, file_.c_str());
}

Result Ring::enable(const std::string& file, std::span<const uint8_t>) {
    FileBeside probe;
    if (Result made = probe.make(file); !made) return made;
    file_ = file;
    until_ = 0;
    wait_ = Wait::ForEvent;
    return {};
}

Result Ring::disable(std::string& said) {
    if (wait_ == Wait::ForEvent || wait_ == Wait::Behind) {
        Result result = writeUpTo(newest_);
        takeNotes();
        wait_ = wait_ == Wait::Written ? Wait::Written : Wait::Off;
        if (!result) return result;
    }
    said = written();
    wait_ = Wait::Off;
    return {};
}

Result Ring::close(std::string& said) {
    if (wait_ != Wait::Written)
        said = gen_format("%llu events in memory were not written", static_cast<unsigned long long>(events_));
    wait_ = Wait::Off;
    return {};
}

Result Ring::targetEnded() {
    return wait_ == Wait::Behind ? writeUpTo(newest_) : Result();
}

std::string Ring::info() const {
    std::string text = gen_format("Ring %s: %llu events in memory", options_.said.c_str(),
                                  static_cast<unsigned long long>(events_));
    switch (wait_) {
        case Wait::Off:
            return text + "; live mode is off";
        case Wait::ForEvent:
            return text + (options_.on ? "; waiting for the event" : "; written when live mode ends");
        case Wait::Behind:
            return text + "; the event has come";
        case Wait::Written:
            return text + "; " + written();
    }
    return text;
}
