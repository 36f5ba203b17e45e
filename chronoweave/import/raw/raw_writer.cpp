#include "chronoweave/import/raw/raw_writer.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "chronoweave/import/raw/task_table.h"
#include "libtrv/byte_order.h"

namespace {

void put_text(std::string_view name, size_t size, uint8_t* to) {
    std::fill(std::copy_n(name.begin(), std::min(name.size(), size), to), to + size, uint8_t{0});
}

}  // namespace

void RawWriter::grow(size_t count) {
    constexpr size_t least = 256;
    bytes_.resize(std::max({least, 2 * bytes_.size(), used_ + count}));
}

void RawWriter::put16(uint16_t value) {
    store_16(room(2), value, big_);
}
void RawWriter::put32(uint32_t value) {
    store_32(room(4), value, big_);
}
void RawWriter::raw(std::span<const uint8_t> bytes) {
    std::copy(bytes.begin(), bytes.end(), room(bytes.size()));
}

// A field of a size, filled up with zeros.
void RawWriter::text(std::string_view name, size_t size) {
    put_text(name, size, room(size));
}

void RawWriter::header(const EventSourceHeader& header, RawHeaderForm form) {
    raw(raw_EncodeHeader(header, form));
}

bool RawWriter::event(mt_Time time, uint16_t type, uint16_t subtype, std::initializer_list<uint32_t> words) {
    const size_t size = words.size() * 4;
    if (size > raw_LongestExtra) return false;
    uint8_t* at = room(1 + raw_RecordHead + size);
    raw_PutHead(at, size, time, type, subtype, big_);
    at += 1 + raw_RecordHead;
    for (const uint32_t word : words) {
        store_32(at, word, big_);
        at += 4;
    }
    return true;
}

void RawWriter::refresh(mt_Time time, uint16_t status, const RawTask& task) {
    const size_t size = 8 + mt_NameSize + (task.prefix ? mt_NameSize : 0);
    uint8_t* at = room(1 + raw_RecordHead + size);
    raw_PutHead(at, size, time, mt_Refresh, status, big_);
    at += 1 + raw_RecordHead;
    store_32(at, task.id, big_);
    store_32(at + 4, task.priority, big_);
    put_text(task.name, mt_NameSize, at + 8);
    if (task.prefix) put_text(*task.prefix, mt_NameSize, at + 8 + mt_NameSize);
}

void RawWriter::TaskEntry(const RawTask& task, bool inUse) {
    text(std::string_view(task.name).substr(0, mt_NameSize), 34);
    const uint8_t use[] = {static_cast<uint8_t>(inUse ? 1 : 0), 0};
    raw(use);
    put32(task.id);
    put32(task.priority);
}

std::vector<uint8_t> raw_EncodeEvent(bool bigEndian, mt_Time time, uint16_t type, uint16_t subtype,
                                     std::span<const uint8_t> extra) {
    std::vector<uint8_t> bytes(raw_RecordHead + extra.size());
    store_be16(&bytes[0], type);
    store_be16(&bytes[2], subtype);
    store_32(&bytes[4], static_cast<uint32_t>(time), bigEndian);
    store_32(&bytes[8], static_cast<uint32_t>(time >> 32), bigEndian);
    std::copy(extra.begin(), extra.end(), bytes.begin() + raw_RecordHead);
    return bytes;
}

RawFile::RawFile(std::unique_ptr<FileDevice> device, const std::string& name, bool bigEndian)
    : device_(std::move(device)), name_(name), writer_(bigEndian), handedOn_(block_ + raw_RecordRoom) {
    writer_.reserve(handedOn_.size());
}

Result RawFile::create(const std::string& name, const EventSourceHeader& header, RawHeaderForm form,
                       std::unique_ptr<RawFile>& file) {
    errno = 0;
    auto device = gf_CreateDevice(name);
    if (!device) return Result::system(name, errno);
    file.reset(new RawFile(std::move(device), name, header.bigEndian));
    file->writer_.header(header, form);
    return {};
}

Result RawFile::HandOn() {
    if (Result before = Wait(); !before.ok()) return before;
    writingBytes_ = writer_.exchange(handedOn_);
    // Where the system has no thread to give it is written in Wait.
    writing_ = std::async([this] { return device_->WriteAt(written_, {handedOn_.data(), writingBytes_}); });
    return {};
}

Result RawFile::Wait() {
    if (!writing_.valid()) return {};
    const DeviceWrite done = writing_.get();
    written_ += done.bytes;
    return done.bytes == writingBytes_ ? Result() : Result::system(name_, done.error);
}

Result RawFile::flush() {
    Result done = HandOn();
    return done.ok() ? Wait() : done;
}
