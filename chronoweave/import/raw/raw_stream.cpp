#include "chronoweave/import/raw/raw_stream.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "chronoweave/import/raw/raw_words.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr size_t timed_buffer = 32768;  // the deadline is tested once per buffer
// Where no deadline cuts in, the size of the buffer can't be seen; a large one saves system calls, but it is
// to stay in the cache.
constexpr size_t whole_buffer = 1 << 18, small_buffer = 4096;

// A short source asks for no more than it has.
size_t buffer_for(ByteSource& bytes, uint64_t from) {
    if (!bytes.rereadable()) return whole_buffer;
    const uint64_t size = bytes.size();
    const uint64_t left = size > from ? size - from : 0;
    return static_cast<size_t>(std::clamp<uint64_t>(left + 1, small_buffer, whole_buffer));
}

}  // namespace

RawStream::RawStream(std::unique_ptr<ByteSource> bytes, const EventSourceHeader& header, uint64_t first,
                     const std::string& name)
    : bytes_(std::move(bytes)),
      facts_{header.ticksPerSecond, header.osName, header.bigEndian, TaskTracker, header.architecture},
      name_(name),
      base_(first) {}

SourceStep RawStream::next(SourceRecord& record) {
    for (;;) {
        while (at_ < there_) {
            const RawCut cut = raw_Cut({buffer_.data(), there_}, at_);
            if (cut.kind == RawCut::Kind::CutShort) break;
            if (cut.kind == RawCut::Kind::BadByte) records_.BadByte(offset(), buffer_[at_]);
            at_ += cut.size;
            if (cut.kind == RawCut::Kind::Record && records_.take(cut.record, facts_.bigEndian, record))
                return SourceStep::Record;
        }
        if (std::exchange(walked_, false)) return SourceStep::Pause;
        const SourceStep step = ReadMore();
        if (step != SourceStep::Record) return step;
    }
}

// Records with nothing wrong about them.
size_t RawStream::NextAtHand(std::span<SourceRecord> records) {
    const std::span<const uint8_t> bytes(buffer_.data(), there_);
    size_t count = 0;
    while (count < records.size() && at_ < there_) {
        const RawCut cut = raw_Cut(bytes, at_);
        if (cut.kind != RawCut::Kind::Record || !raw_IsLengthSound(cut.record.size())) break;
        records[count++] = raw_Decode(cut.record, facts_.bigEndian);
        at_ += cut.size;
    }
    return count;
}

// Fills the buffer up behind the record that is cut by its end. Record when there is something to walk.
SourceStep RawStream::ReadMore() {
    if (at_ > 0) std::memmove(buffer_.data(), buffer_.data() + at_, there_ - at_);
    base_ += at_;
    there_ -= at_;
    at_ = 0;
    const size_t size = deadline_ ? timed_buffer : buffer_for(*bytes_, base_);
    if (buffer_.size() < size) buffer_.resize(size);
    const SourceRead read = bytes_->ReadAt(base_ + there_, std::span(buffer_).subspan(there_, size - there_));
    if (read.status != SourceStatus::Data || read.bytes == 0) return WaitForMore(read.status);
    there_ += read.bytes;
    records_.counts().unread = 0;
    walked_ = true;
    return SourceStep::Record;
}

// What is left is read again, whole, by the next read: whoever writes the file may have rewritten it.
SourceStep RawStream::WaitForMore(SourceStatus status) {
    records_.counts().unread = there_;
    records_.counts().unreadAt = base_;
    if (status == SourceStatus::Failed) {
        const std::string words = gen_format(words_Seek, static_cast<unsigned long long>(base_) + there_);
        gen_console("%s\n", words.c_str());
        damage_ = Result::failure(words, name_);
        return SourceStep::Failed;
    }
    there_ = 0;
    if (!deadline_) buffer_ = {};  // one of many reads keeps it for the next
    return status == SourceStatus::Again ? SourceStep::Again : SourceStep::End;
}

SourceExtent RawStream::extent() const {
    const auto done = static_cast<double>(offset());
    return {done, std::max(done, static_cast<double>(bytes_->size()))};
}

// Hands every record ahead to enter, without moving on. False where bytes can't be read twice, and where
// progress stopped it.
template <typename Enter>
bool RawStream::look_ahead(const Progress& progress, const Enter& enter) {
    if (!bytes_->rereadable()) return false;
    uint64_t from = offset();
    std::vector<uint8_t> own;
    // Nothing is read yet as a rule, and what follows reads into the same buffer.
    std::vector<uint8_t>& buffer = there_ == 0 ? buffer_ : own;
    const size_t size = buffer_for(*bytes_, from);
    if (buffer.size() < size) buffer.resize(size);
    for (;;) {
        const SourceRead read = bytes_->ReadAt(from, std::span(buffer).first(size));
        if (read.status != SourceStatus::Data || read.bytes == 0) return true;
        size_t at = 0;
        while (at < read.bytes) {
            const RawCut cut = raw_Cut({buffer.data(), read.bytes}, at);
            if (cut.kind == RawCut::Kind::CutShort) break;
            if (cut.kind == RawCut::Kind::Record) enter(cut.record);
            at += cut.size;
        }
        if (at == 0) return true;
        from += at;
        const auto done = static_cast<double>(from);
        if (progress && !progress(done, std::max(done, static_cast<double>(bytes_->size())))) return false;
    }
}

std::optional<SourceLook> RawStream::look(const Progress& progress) {
    ObjectLook look;
    const bool bigEndian = facts_.bigEndian;
    const auto enter = [&](std::span<const uint8_t> record) { raw_Look(record, bigEndian, look); };
    return look_ahead(progress, enter) ? std::optional(look.seen()) : std::nullopt;
}

std::optional<mt_Time> RawStream::LookForNewest(const Progress& progress) {
    mt_Time newest = 0;
    const bool bigEndian = facts_.bigEndian;
    const auto enter = [&](std::span<const uint8_t> record) {
        if (raw_IsLengthSound(record.size())) newest = std::max(newest, raw_TimeOf(record, bigEndian));
    };
    return look_ahead(progress, enter) ? std::optional(newest) : std::nullopt;
}
