#include "chronoweave/import/byte_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "libtrv/gfile.h"

namespace {

class FileSource : public ByteSource {
  public:
    FileSource(std::unique_ptr<FileDevice> device, bool growing)
        : device_(std::move(device)), growing_(growing) {}

    SourceRead read_at(uint64_t offset, std::span<uint8_t> bytes) override {
        const int64_t count = device_->read_at(offset, bytes);
        if (count < 0) return {SourceStatus::Failed, 0};
        if (count > 0) return {SourceStatus::Data, static_cast<size_t>(count)};
        return {growing_ ? SourceStatus::NothingYet : SourceStatus::End, 0};
    }
    uint64_t size() override { return device_->size(); }

  private:
    std::unique_ptr<FileDevice> device_;
    bool growing_;
};

class MemorySource : public ByteSource {
  public:
    explicit MemorySource(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

    SourceRead read_at(uint64_t offset, std::span<uint8_t> bytes) override {
        if (offset >= bytes_.size() || bytes.empty()) return {SourceStatus::End, 0};
        const size_t count = std::min(bytes.size(), bytes_.size() - static_cast<size_t>(offset));
        std::memcpy(bytes.data(), bytes_.data() + offset, count);
        return {SourceStatus::Data, count};
    }
    uint64_t size() override { return bytes_.size(); }

  private:
    std::vector<uint8_t> bytes_;
};

}  // namespace

std::unique_ptr<ByteSource> source_OpenFile(const std::string& name, bool growing, std::string& why) {
    std::unique_ptr<FileDevice> device;
    if (const Result opened = gf_OpenDevice(name, device); !opened) {
        why = opened.reason().empty() ? opened.what() : opened.reason();
        return nullptr;
    }
    return std::make_unique<FileSource>(std::move(device), growing);
}

std::unique_ptr<ByteSource> source_FromBytes(std::vector<uint8_t> bytes) {
    return std::make_unique<MemorySource>(std::move(bytes));
}

bool source_ReadRest(ByteSource& source, uint64_t offset, uint64_t limit, std::vector<uint8_t>& bytes) {
    const uint64_t size = source.size();
    const uint64_t wanted = std::min(limit, size > offset ? size - offset : 0);
    try {
        bytes.resize(static_cast<size_t>(wanted));
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    size_t at = 0;
    while (at < bytes.size()) {
        const SourceRead read = source.read_at(offset + at, std::span(bytes).subspan(at));
        if (read.status != SourceStatus::Data) return false;
        at += read.bytes;
    }
    return true;
}
