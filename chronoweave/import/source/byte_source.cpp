#include "chronoweave/import/source/byte_source.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "libtrv/gfile.h"

namespace {

class FileSource : public ByteSource {
  public:
    FileSource(std::unique_ptr<FileDevice> device, bool growing)
        : device_(std::move(device)), growing_(growing) {}

    SourceRead ReadAt(uint64_t offset, std::span<uint8_t> bytes) override {
        const int64_t count = device_->ReadAt(offset, bytes);
        if (count < 0) return {SourceStatus::Failed, 0};
        if (count > 0) return {SourceStatus::Data, static_cast<size_t>(count)};
        return {growing_ ? SourceStatus::Again : SourceStatus::End, 0};
    }
    uint64_t size() override { return device_->size(); }

  private:
    std::unique_ptr<FileDevice> device_;
    bool growing_;
};

// What is there of a run of bytes from an offset on.
size_t copy_from(std::span<const uint8_t> there, uint64_t offset, std::span<uint8_t> bytes) {
    if (offset >= there.size()) return 0;
    const size_t count = std::min(bytes.size(), there.size() - static_cast<size_t>(offset));
    if (count > 0) std::memcpy(bytes.data(), there.data() + offset, count);
    return count;
}

class MemorySource : public ByteSource {
  public:
    explicit MemorySource(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

    SourceRead ReadAt(uint64_t offset, std::span<uint8_t> bytes) override {
        const size_t count = copy_from(bytes_, offset, bytes);
        return {count > 0 ? SourceStatus::Data : SourceStatus::End, count};
    }
    uint64_t size() override { return bytes_.size(); }

  private:
    std::vector<uint8_t> bytes_;
};

class PipeSource : public ByteSource {
  public:
    explicit PipeSource(int file) : file_(file) {}

    SourceRead ReadAt(uint64_t offset, std::span<uint8_t> bytes) override {
        if (offset < begin_ || offset > begin_ + kept_.size()) return {SourceStatus::Failed, 0};
        SourceStatus met = SourceStatus::Data;
        bool more = true;  // as long as reads are filled whole
        while (more && met == SourceStatus::Data && begin_ + kept_.size() < offset + bytes.size())
            met = ReadMore(more);
        const size_t count = copy_from(kept_, offset - begin_, bytes);
        LetGo(offset + count);
        return {count > 0 ? SourceStatus::Data : met, count};
    }
    uint64_t size() override { return begin_ + kept_.size(); }
    bool rereadable() const override { return false; }

  private:
    static constexpr size_t kept_least = size_t{64} * 1024, portion = size_t{64} * 1024;

    SourceStatus ReadMore(bool& filled) {
        const size_t before = kept_.size();
        kept_.resize(before + portion);
        ssize_t got = -1;
        do got = ::read(file_, kept_.data() + before, portion);
        while (got < 0 && errno == EINTR);
        const int error = got < 0 ? errno : 0;
        kept_.resize(before + static_cast<size_t>(std::max<ssize_t>(0, got)));
        filled = got == static_cast<ssize_t>(portion);
        if (got > 0) return SourceStatus::Data;
        if (got == 0) return SourceStatus::End;
        return error == EAGAIN || error == EWOULDBLOCK ? SourceStatus::Again : SourceStatus::Failed;
    }
    // Of what was delivered the newest stays; moving the rest down is worth it once it is much.
    void LetGo(uint64_t delivered) {
        if (delivered < begin_ + 16 * kept_least) return;
        const auto gone = static_cast<ptrdiff_t>(delivered - kept_least - begin_);
        kept_.erase(kept_.begin(), kept_.begin() + gone);
        begin_ += static_cast<uint64_t>(gone);
    }

    int file_;
    uint64_t begin_ = 0;  // offset of kept_[0]
    std::vector<uint8_t> kept_;
};

}  // namespace

Result source_OpenFile(const std::string& name, bool growing, std::unique_ptr<ByteSource>& source) {
    std::unique_ptr<FileDevice> device;
    Result opened = gf_OpenDevice(name, device);
    if (!opened.ok()) return opened;
    source = std::make_unique<FileSource>(std::move(device), growing);
    return {};
}

std::unique_ptr<ByteSource> source_FromBytes(std::vector<uint8_t> bytes) {
    return std::make_unique<MemorySource>(std::move(bytes));
}

std::unique_ptr<ByteSource> source_FromPipe(int file) {
    return std::make_unique<PipeSource>(file);
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
        const SourceRead read = source.ReadAt(offset + at, std::span(bytes).subspan(at));
        if (read.status != SourceStatus::Data) return false;
        at += read.bytes;
    }
    return true;
}
