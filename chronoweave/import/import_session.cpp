#include "chronoweave/import/import_session.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <span>
#include <utility>

#include "chronoweave/import/import_words.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/tick_text.h"

namespace {

constexpr size_t group_bytes = size_t{256} * 1024;  // a group that is still in the cache when it is written
constexpr uint32_t records_without_pause = 65536;   // of a source that makes none
constexpr size_t records_at_once = 128;             // that are at hand
constexpr double look_share = 0.1;                  // of the time of an import

unsigned long long print(uint64_t number) {
    return number;
}

}  // namespace

int64_t import_SteadyClock() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

ImportSession::~ImportSession() {
    writer_.reset();
    if (lanes_) lanes_->Finish();
}

Result ImportSession::open(std::unique_ptr<EventSource> source, uint32_t checkpoint,
                           const WriterMaker& make) {
    source_ = std::move(source);
    const SourceFacts& facts = source_->facts();
    const auto rate = static_cast<uint32_t>(facts.ticksPerSecond);
    if (rate != facts.ticksPerSecond) gen_console(words_ClockRate, print(facts.ticksPerSecond), rate);
    const std::optional<uint32_t> interval = checkpoint == 0 ? LookOver() : checkpoint;
    if (!interval) {
        counts_.stopped = true;
        return Result::failure({});
    }
    Result made = make({rate, facts.osName, facts.bigEndian, *interval}, facts.tracker, writer_);
    if (made.ok()) writer_->SetGrouping(group_bytes);
    return made;
}

void ImportSession::IndexLanes(uint32_t blockEvents) {
    if (blockEvents == 0) return;
    lanes_ = std::make_unique<LaneFeed>(writer_->base(), writer_->BigEndianTarget(), blockEvents);
    writer_->SetObserver(lanes_.get());
}

// Progress is at a part of the way between two shares of all that is to be done.
bool ImportSession::tell(double done, double total, double from, double to) const {
    return !progress || progress(total * from + done * (to - from), total);
}

// The checkpoint interval that the source asks for; nothing when progress stopped the look.
std::optional<uint32_t> ImportSession::LookOver() {
    bool stopped = false;
    const std::optional<SourceLook> look = source_->look([&](double done, double total) {
        stopped = !tell(done, total, 0, look_share);
        return !stopped;
    });
    if (stopped) return std::nullopt;
    if (!look) return look_UnknownInterval;
    lookedShare_ = look_share;
    return look_Interval(*look);
}

ReadEnd ImportSession::read(int64_t limitMs) {
    const ReadEnd end = TakeRecords(limitMs);
    trouble_ = settle(&StoreWriter::Commit);
    counts_.stopped = end == ReadEnd::Stopped;
    if (end == ReadEnd::Done) TellCut(limitMs);
    if (status) status(end == ReadEnd::CutShort ? words_Overrun : "");
    return end;
}

Result ImportSession::close() {
    trouble_ = settle(&StoreWriter::Close);
    if (lanes_) lanes_->Finish();
    return trouble_;
}

ReadEnd ImportSession::TakeRecords(int64_t limitMs) {
    const bool limited = limitMs > 0;
    const int64_t deadline = limited ? clock() + limitMs : 0;
    source_->SetDeadline(limited);
    std::array<SourceRecord, records_at_once> run;
    SourceRecord record;
    for (uint32_t taken = 0;;) {
        const size_t atHand = source_->NextAtHand(run);
        for (const SourceRecord& one : std::span(run).first(atHand)) take(one);
        taken += static_cast<uint32_t>(atHand);
        if (atHand == run.size() && taken < records_without_pause) continue;
        const SourceStep step = source_->next(record);
        mayGrow_ = step == SourceStep::Again;
        switch (step) {
            case SourceStep::Record:
                take(record);
                if (++taken < records_without_pause) continue;
                break;
            case SourceStep::Pause:
                break;
            case SourceStep::Again:
            case SourceStep::End:
                return ReadEnd::Done;
            case SourceStep::Failed:
                return ReadEnd::Failed;
        }
        taken = 0;
        if (const auto end = pause(limited, deadline)) return *end;
    }
}

// What ends the read here, if anything does.
std::optional<ReadEnd> ImportSession::pause(bool limited, int64_t deadline) const {
    if (limited) return clock() >= deadline ? std::optional(ReadEnd::CutShort) : std::nullopt;
    const SourceExtent extent = source_->extent();
    const bool goesOn = tell(extent.done, extent.total, lookedShare_, 1);
    return goesOn ? std::nullopt : std::optional(ReadEnd::Stopped);
}

void ImportSession::take(const SourceRecord& record) {
    const mt_Time time = StoreTime(record.time);
    if (time >> 63 != 0 && !std::exchange(toldFarTime_, true))
        gen_console(words_FarTime, print(writer_->EventsWritten() + uint64_t{1}), print(time));
    if (!storeEnd_.ok()) {
        ++passed_;
        return;
    }
    const Result taken = writer_->AppendEvent(time, record.type, record.subtype, record.extra);
    if (!taken.ok()) EndStore(taken);
}

// The store time of an event: ticks since the first timed event, never decreasing. When time goes back behind
// the first event the origin moves with it, and the store times of later events jump up by the difference.
mt_Time ImportSession::StoreTime(mt_Time t) {
    if (t == 0) return lastRawTime_ - firstRawTime_;
    if (firstRawTime_ == 0) {
        firstRawTime_ = lastRawTime_ = t;
        return 0;
    }
    if (t >= lastRawTime_) {
        lastRawTime_ = t;
    } else {
        if (t < firstRawTime_) firstRawTime_ = t;
        t = lastRawTime_;
    }
    return t - firstRawTime_;
}

// Nothing more goes into the store; told once.
void ImportSession::EndStore(const Result& why) {
    if (!storeEnd_.ok()) return;
    storeEnd_ = why;
    gen_console(words_AppendFailed);
}

Result ImportSession::settle(Result (StoreWriter::*step)()) {
    const uint64_t refused = writer_->EventsRefused();
    Result result = (writer_.get()->*step)();
    if (writer_->EventsRefused() > refused) EndStore(writer_->refusal());
    source_->settle();
    static_cast<SourceCounts&>(counts_) = source_->counts();
    counts_.events = writer_->EventsWritten();
    counts_.refused = writer_->EventsRefused() + passed_;
    return result;
}

// While a source is written, most reads end in a record that is being written.
void ImportSession::TellCut(int64_t limitMs) {
    const bool stands = cutAt_ == counts_.unreadAt && cutBytes_ == counts_.unread;
    cutAt_ = counts_.unreadAt;
    cutBytes_ = counts_.unread;
    if (!tellsCutRecords || counts_.unread == 0 || toldCutAt_ == counts_.unreadAt) return;
    if (limitMs > 0 && !stands) return;
    toldCutAt_ = counts_.unreadAt;
    gen_console(words_Unread, print(counts_.unread), print(counts_.unreadAt));
}

std::string ImportSession::MissingEvents() const {
    if (counts_.refused == 0) return {};
    std::string end = words_EndsEmpty;
    if (const auto last = writer_->LastTime()) {
        const uint64_t rate = writer_->facts().ticksPerSecond;
        char text[TickWriter::room];
        const TickWriter ticks({std::max<uint64_t>(1, rate), 1}, 9);
        end =
            gen_format(words_EndsAt, std::string(text, ticks.put(static_cast<int64_t>(*last), text)).c_str());
    }
    return gen_format(words_Refused, print(counts_.refused), end.c_str(), storeEnd_.text().c_str());
}
