#include "companions/trv/server/live_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "chronoweave/import/raw/raw_record.h"
#include "chronoweave/import/source/byte_source.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr size_t much = 256 * 1024;

uint64_t count_records(std::span<const uint8_t> records) {
    uint64_t count = 0;
    for (size_t at = 0; at < records.size(); at += 1u + records[at]) ++count;
    return count;
}

// Whether nothing but whole records stands from an offset on.
bool is_whole(ByteSource& bytes, uint64_t from) {
    std::vector<uint8_t> buffer(much);
    for (;;) {
        const SourceRead read = bytes.ReadAt(from, buffer);
        if (read.status != SourceStatus::Data || read.bytes == 0) return from == bytes.size();
        size_t at = 0;
        while (at < read.bytes) {
            const RawCut cut = raw_Cut({buffer.data(), read.bytes}, at);
            if (cut.kind == RawCut::Kind::BadByte) return false;
            if (cut.kind == RawCut::Kind::CutShort) break;
            at += cut.size;
        }
        if (at == 0) return false;
        from += at;
    }
}

}  // namespace

// Whether a file that stands can be gone on with.
Result LiveFile::fitsOn(const FileDescriptor& file, const std::string& name) const {
    struct stat standing {};
    if (::fstat(file.number(), &standing) != 0) return Result::system(name, errno);
    if (!S_ISREG(standing.st_mode)) return Result::failure("", name, "it is no regular file");
    if (standing.st_size == 0) return {};
    std::unique_ptr<ByteSource> bytes;
    if (Result opened = source_OpenFile(name, false, bytes); !opened) return opened;
    std::vector<uint8_t> head(facts_.headerBytes.size());
    const SourceRead read = bytes->ReadAt(0, head);
    if (read.bytes != head.size() || head != facts_.headerBytes)
        return Result::failure("", name, "it holds something else than events of this target");
    if (!is_whole(*bytes, head.size()))
        return Result::failure("", name, "it does not end with a whole event");
    return {};
}

Result LiveFile::enable(const std::string& file, std::span<const uint8_t> states) {
    FileDescriptor made(::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
    if (!made.IsOpen()) return Result::system(file, errno);
    if (Result fits = fitsOn(made, file); !fits) return fits;
    struct stat standing {};
    ::fstat(made.number(), &standing);
    file_ = std::move(made);
    name_ = file;
    size_ = static_cast<uint64_t>(standing.st_size);
    events_ = count_records(states);
    waiting_.clear();
    if (size_ == 0) waiting_ = facts_.headerBytes;
    waiting_.insert(waiting_.end(), states.begin(), states.end());
    return flush();
}

Result LiveFile::take(std::span<const uint8_t> records, Instant now) {
    if (!isEnabled() || records.empty()) return {};
    if (waiting_.empty()) since_ = now;
    waiting_.insert(waiting_.end(), records.begin(), records.end());
    events_ += count_records(records);
    return waiting_.size() < much ? Result() : flush();
}

std::optional<Instant> LiveFile::flushDue() const {
    if (waiting_.empty()) return std::nullopt;
    return since_ + delay;
}

Result LiveFile::ended(Result why) {
    file_.close();
    waiting_.clear();
    return why;
}

Result LiveFile::flush() {
    if (!isEnabled()) return {};
    struct stat standing {};
    if (::fstat(file_.number(), &standing) == 0 && standing.st_nlink == 0)
        return ended(Result::failure("", name_, "it was removed"));
    size_t done = 0;
    while (done < waiting_.size()) {
        const ssize_t put = ::write(file_.number(), waiting_.data() + done, waiting_.size() - done);
        if (put < 0 && errno == EINTR) continue;
        if (put > 0) {
            done += static_cast<size_t>(put);
            continue;
        }
        const int error = put < 0 ? errno : ENOSPC;
        // No part of a record stays.
        if (::ftruncate(file_.number(), static_cast<off_t>(size_)) != 0)
            return ended(Result::system(name_, errno));
        return ended(Result::system(name_, error));
    }
    size_ += waiting_.size();
    waiting_.clear();
    return {};
}

Result LiveFile::disable(std::string& said) {
    Result flushed = flush();
    if (!flushed) return flushed;
    file_.close();
    said =
        gen_format("%llu events were written to %s", static_cast<unsigned long long>(events_), name_.c_str());
    return {};
}

std::string LiveFile::info() const {
    if (!isEnabled()) return "Live mode is off";
    return gen_format("Live mode: %llu events written to %s", static_cast<unsigned long long>(events_),
                      name_.c_str());
}
