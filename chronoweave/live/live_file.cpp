#include "chronoweave/live/live_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>

#include "chronoweave/import/raw/raw_header.h"
#include "chronoweave/import/raw/raw_record.h"
#include "chronoweave/import/source/byte_source.h"

namespace {

constexpr size_t tailBytes = 64;
constexpr uint8_t endMark = 0xFF;  // ahead of it a tick stops

bool has_record(ByteSource& bytes, uint64_t from) {
    std::array<uint8_t, raw_RecordRoom> room;
    const SourceRead read = bytes.ReadAt(from, room);
    if (read.status != SourceStatus::Data || read.bytes == 0 || room[0] == endMark) return false;
    return raw_Cut(std::span(room).first(read.bytes), 0).kind != RawCut::Kind::CutShort;
}

}  // namespace

LiveLook live_Look(const std::string& path) {
    std::unique_ptr<ByteSource> bytes;
    if (!source_OpenFile(path, true, bytes).ok()) return LiveLook::Absent;
    EventSourceHeader header;
    const int64_t first = raw_ReadHeader(*bytes, header);
    if (first == raw_HeaderNothing) return LiveLook::NotYet;
    if (first == raw_HeaderUnsupported) return LiveLook::Unsupported;
    if (first < 0 || header.version == raw_LogImageVersion) return LiveLook::BadFormat;
    return has_record(*bytes, static_cast<uint64_t>(first)) ? LiveLook::Records : LiveLook::NotYet;
}

void LiveFile::Open(const std::string& path) {
    Close();
    path_ = path;
    file_ = FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat facts {};
    if (!file_.IsOpen() || ::fstat(file_.number(), &facts) != 0) return;
    device_ = facts.st_dev;
    number_ = facts.st_ino;
}

std::vector<uint8_t> LiveFile::Before(uint64_t offset) const {
    std::vector<uint8_t> bytes(static_cast<size_t>(std::min<uint64_t>(tailBytes, offset)));
    const auto from = static_cast<off_t>(offset - bytes.size());
    const ssize_t got = ::pread(file_.number(), bytes.data(), bytes.size(), from);
    bytes.resize(static_cast<size_t>(std::max<ssize_t>(0, got)));
    return bytes;
}

LiveFile::State LiveFile::Look(uint64_t read) {
    struct stat named {
    }, held{};
    if (::stat(path_.c_str(), &named) != 0 || !file_.IsOpen()) return State::Vanished;
    if (named.st_dev != device_ || named.st_ino != number_) return State::Replaced;
    if (::fstat(file_.number(), &held) != 0 || static_cast<uint64_t>(held.st_size) < read)
        return State::Shrunk;
    if (seen_ == read && !tail_.empty() && Before(read) != tail_) return State::Replaced;
    uint8_t next = endMark;
    const bool more = ::pread(file_.number(), &next, 1, static_cast<off_t>(read)) == 1 && next != endMark;
    return more ? State::More : State::Nothing;
}

void LiveFile::Note(uint64_t read) {
    seen_ = read;
    tail_ = Before(read);
}
