#include "chronoweave/import/raw/raw_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "chronoweave/import/raw/task_table.h"
#include "libtrv/byte_order.h"

namespace {

uint8_t* room(std::vector<uint8_t>& bytes, size_t count) {
    bytes.resize(bytes.size() + count);
    return bytes.data() + bytes.size() - count;
}

void put_text(std::string_view name, size_t size, uint8_t* to) {
    std::fill(std::copy_n(name.begin(), std::min(name.size(), size), to), to + size, uint8_t{0});
}

// A record on its way to the end of the bytes.
struct Record {
    Record(bool big, size_t length, mt_Time time, uint16_t type, uint16_t subtype) : size(1 + length) {
        bytes[0] = static_cast<uint8_t>(length);
        store_be16(&bytes[1], type);
        store_be16(&bytes[3], subtype);
        store_32(&bytes[5], static_cast<uint32_t>(time), big);
        store_32(&bytes[9], static_cast<uint32_t>(time >> 32), big);
    }
    uint8_t* extra() { return &bytes[1 + raw_RecordHead]; }

    size_t size;  // with the length byte
    std::array<uint8_t, 1 + raw_StreamMax> bytes;
};

}  // namespace

void RawWriter::put16(uint16_t value) {
    store_16(room(bytes_, 2), value, big_);
}
void RawWriter::put32(uint32_t value) {
    store_32(room(bytes_, 4), value, big_);
}
void RawWriter::raw(std::span<const uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

// A field of a size, filled up with zeros.
void RawWriter::text(std::string_view name, size_t size) {
    put_text(name, size, room(bytes_, size));
}

void RawWriter::header(const EventSourceHeader& header, RawHeaderForm form) {
    raw(raw_EncodeHeader(header, form));
}

bool RawWriter::event(mt_Time time, uint16_t type, uint16_t subtype, std::span<const uint8_t> extra) {
    if (extra.size() > raw_LongestExtra) return false;
    Record record(big_, raw_RecordHead + extra.size(), time, type, subtype);
    std::copy(extra.begin(), extra.end(), record.extra());
    raw({record.bytes.data(), record.size});
    return true;
}

bool RawWriter::event(mt_Time time, uint16_t type, uint16_t subtype, std::initializer_list<uint32_t> words) {
    if (words.size() * 4 > raw_LongestExtra) return false;
    Record record(big_, raw_RecordHead + words.size() * 4, time, type, subtype);
    uint8_t* at = record.extra();
    for (const uint32_t word : words) {
        store_32(at, word, big_);
        at += 4;
    }
    raw({record.bytes.data(), record.size});
    return true;
}

void RawWriter::refresh(mt_Time time, uint16_t status, const RawTask& task) {
    const size_t extra = 8 + mt_NameSize + (task.prefix ? mt_NameSize : 0);
    Record record(big_, raw_RecordHead + extra, time, mt_Refresh, status);
    uint8_t* at = record.extra();
    store_32(at, task.id, big_);
    store_32(at + 4, task.priority, big_);
    put_text(task.name, mt_NameSize, at + 8);
    if (task.prefix) put_text(*task.prefix, mt_NameSize, at + 8 + mt_NameSize);
    raw({record.bytes.data(), record.size});
}

void RawWriter::TaskEntry(const RawTask& task, bool inUse) {
    text(std::string_view(task.name).substr(0, mt_NameSize), 34);
    bytes_.push_back(inUse ? 1 : 0);
    bytes_.push_back(0);
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
    : device_(std::move(device)), name_(name), writer_(bigEndian) {}

Result RawFile::create(const std::string& name, const EventSourceHeader& header, RawHeaderForm form,
                       std::unique_ptr<RawFile>& file) {
    errno = 0;
    auto device = gf_CreateDevice(name);
    if (!device) return Result::system(name, errno);
    file.reset(new RawFile(std::move(device), name, header.bigEndian));
    file->writer_.header(header, form);
    return {};
}

Result RawFile::flush() {
    const size_t count = writer_.bytes().size();
    const DeviceWrite written = device_->WriteAt(written_, writer_.bytes());
    writer_.clear();
    written_ += written.bytes;
    return written.bytes == count ? Result() : Result::system(name_, written.error);
}
