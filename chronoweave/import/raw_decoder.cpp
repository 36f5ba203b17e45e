#include "chronoweave/import/raw_decoder.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "chronoweave/import/import_words.h"
#include "libtrv/byte_order.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/tick_text.h"

namespace {

constexpr size_t timed_buffer = 32768;  // the deadline is tested once per buffer
// Where no deadline cuts in, the size of the buffer can't be seen: a record that does not fit is read again,
// whole, by the next pass whatever the size, and offsets in messages are the file's. A large one saves system
// calls.
constexpr size_t whole_buffer = 1 << 20;
constexpr size_t group_bytes = 256 * 1024;  // a group that is still in the cache when it is written

void tell_bad_byte(RawSession& session, uint64_t offset, uint8_t byte) {
    ++session.counts.badBytes;
    if (session.messages.count(ImportProblem::BadByte))
        session.messages.print(gen_format(words_BadByte, static_cast<unsigned long long>(offset), byte));
}

bool drop(RawSession& session, size_t length) {
    const bool isLong = length > raw_MaxLength;
    ++(isLong ? session.counts.tooLong : session.counts.tooShort);
    if (session.messages.count(isLong ? ImportProblem::TooLong : ImportProblem::TooShort))
        session.messages.print(isLong ? gen_format(words_TooLong, static_cast<int>(length), 164)
                                      : gen_format(words_TooShort, static_cast<int>(length), 16));
    return false;
}

// Nothing more goes into the store; told once.
void end_store(RawSession& session, Result why) {
    if (!session.storeEnd.ok()) return;
    session.storeEnd = std::move(why);
    session.messages.print(words_AppendFailed);
}

// The store time of an event: ticks since the first timed event, never decreasing. When time goes back behind
// the first event the origin moves with it, and the store times of later events jump up by the difference.
mt_Time store_time(RawSession& session, mt_Time t) {
    if (t == 0) return session.lastRawTime - session.firstRawTime;
    if (session.firstRawTime == 0) {
        session.firstRawTime = session.lastRawTime = t;
        return 0;
    }
    if (t >= session.lastRawTime) {
        session.lastRawTime = t;
    } else {
        if (t < session.firstRawTime) session.firstRawTime = t;
        t = session.lastRawTime;
    }
    return t - session.firstRawTime;
}

// Walks the records of a buffer that stands at a file offset; the result is how many bytes were consumed.
size_t walk(RawSession& session, std::span<const uint8_t> bytes, uint64_t offset) {
    size_t at = 0;
    while (at < bytes.size()) {
        const uint8_t length = bytes[at];
        if (length == 0 || length > raw_StreamMax) {
            tell_bad_byte(session, offset + at, length);
            ++at;
            continue;
        }
        if (bytes.size() - at <= length) break;
        session_DecodeRecord(session, bytes.subspan(at + 1, length));
        at += 1u + length;
    }
    return at;
}

struct Pass {
    ReadOnEnd end = ReadOnEnd::Done;
    uint64_t consumed = 0;
    size_t unread = 0;
};

// The passes over the source, from the session's offset until there is no more or something ends them.
Pass read_passes(RawSession& session, bool limited, int64_t deadline) {
    Pass pass;
    for (;;) {
        const uint64_t offset = session.offset + pass.consumed;
        const SourceRead read = session.source->read_at(offset, session.buffer);
        if (read.status == SourceStatus::Failed) {
            gen_console("%s\n", gen_format(words_Seek, static_cast<unsigned long long>(offset)).c_str());
            pass.end = ReadOnEnd::Failed;
            return pass;
        }
        if (read.status != SourceStatus::Data || read.bytes == 0) return pass;
        const size_t walked = walk(session, {session.buffer.data(), read.bytes}, offset);
        pass.consumed += walked;
        // Only a cut record is left: the next pass would find the same bytes again.
        if (walked == 0) {
            pass.unread = read.bytes;
            return pass;
        }
        if (limited) {
            if (session.clock() >= deadline) pass.end = ReadOnEnd::CutShort;
        } else if (session.progress) {
            const uint64_t done = offset + walked, size = session.source->size();
            if (!session.progress(static_cast<double>(done), static_cast<double>(done > size ? done : size)))
                pass.end = ReadOnEnd::Stopped;
        }
        if (pass.end != ReadOnEnd::Done) return pass;
    }
}

}  // namespace

int64_t raw_SteadyClock() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

Result session_OpenWriter(RawSession& session, const WriterMaker& make) {
    const EventSourceHeader& header = session.header;
    const auto rate = static_cast<uint32_t>(header.ticksPerSecond);
    if (rate != header.ticksPerSecond)
        gen_console(words_ClockRate, static_cast<unsigned long long>(header.ticksPerSecond), rate);
    Result made = make({rate, header.osName, header.bigEndian}, session.writer);
    if (made.ok()) session.writer->SetGrouping(group_bytes);
    return made;
}

bool session_DecodeRecord(RawSession& session, std::span<const uint8_t> record) {
    if (record.size() > raw_MaxLength || record.size() < raw_MinLength) return drop(session, record.size());
    const uint8_t* p = record.data();
    const bool big = session.header.bigEndian;
    const mt_Time raw = static_cast<mt_Time>(load_32(p + 8, big)) << 32 | load_32(p + 4, big);
    const mt_Time time = store_time(session, raw);
    if (!session.storeEnd.ok()) {
        ++session.passed;
        return false;
    }
    Result taken = session.writer->AppendEvent(time, load_be16(p), load_be16(p + 2), record.subspan(12));
    if (taken.ok()) return true;
    end_store(session, std::move(taken));
    return false;
}

namespace {

std::string shown_time(const RawSession& session, mt_Time time) {
    const uint64_t rate = session.writer->facts().ticksPerSecond;
    char text[TickWriter::room];
    const TickWriter writer({std::max<uint64_t>(1, rate), 1}, 9);
    return {text, writer.put(static_cast<int64_t>(time), text)};
}

Result settle(RawSession& session, Result (StoreWriter::*step)()) {
    Result result;
    if (StoreWriter* writer = session.writer.get()) {
        const uint64_t refused = writer->eventsRefused();
        result = (writer->*step)();
        if (writer->eventsRefused() > refused) end_store(session, writer->refusal());
        session.counts.events = writer->eventsWritten();
        session.counts.refused = writer->eventsRefused() + session.passed;
    }
    session.messages.finish();
    return result;
}

}  // namespace

Result session_Settle(RawSession& session) {
    return settle(session, &StoreWriter::Commit);
}

Result session_Close(RawSession& session) {
    return settle(session, &StoreWriter::Close);
}

std::string session_MissingEvents(const RawSession& session) {
    if (session.counts.refused == 0) return {};
    const auto last = session.writer->lastTime();
    const std::string end =
        last ? gen_format(words_EndsAt, shown_time(session, *last).c_str()) : words_EndsEmpty;
    return gen_format(words_Refused, static_cast<unsigned long long>(session.counts.refused), end.c_str(),
                      session.storeEnd.text().c_str());
}

ReadOnEnd session_ReadOn(RawSession& session, int64_t limitMs) {
    const bool limited = limitMs > 0;
    const int64_t deadline = limited ? session.clock() + limitMs : 0;
    session.buffer.resize(limited ? timed_buffer : whole_buffer);
    const Pass pass = read_passes(session, limited, deadline);
    session.offset += pass.consumed;
    session.trouble = session_Settle(session);
    if (!limited) {
        session.buffer = {};
        session.counts.stopped = pass.end == ReadOnEnd::Stopped;
        session.counts.unread = pass.unread;
        if (pass.unread > 0)
            session.messages.print(gen_format(words_Unread, static_cast<unsigned long long>(pass.unread),
                                              static_cast<unsigned long long>(session.offset)));
    }
    if (session.status) session.status(pass.end == ReadOnEnd::CutShort ? words_Overrun : "");
    return pass.end;
}

RawKind session_ReadHeader(RawSession& session) {
    const int64_t offset = raw_ReadHeader(*session.source, session.header);
    switch (offset) {
        case raw_HeaderNothing:
            return RawKind::Nothing;
        case raw_HeaderBad:
            return RawKind::BadFormat;
        case raw_HeaderUnsupported:
            return RawKind::Unsupported;
        case raw_HeaderIsCore:
            return RawKind::Core;
        default:
            break;
    }
    if (session.header.version == raw_LogImageVersion) return RawKind::LogImage;
    session.offset = static_cast<uint64_t>(offset);
    return RawKind::Stream;
}
