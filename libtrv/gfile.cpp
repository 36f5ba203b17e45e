#include "libtrv/gfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "libtrv/gadr.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/report.h"

namespace {

// A first read behind a seek is small, since many queries want one packet; reading on grows to large blocks.
constexpr size_t first_window = 4096;
constexpr size_t largest_window = 256 * 1024;
// A length from a file above this is held against the file's size before room is made for it.
constexpr size_t trusted_length = 64 * 1024;

class FileOnDisk : public FileDevice {
  public:
    explicit FileOnDisk(int file) : file_(file) {}
    ~FileOnDisk() override { ::close(file_); }
    FileOnDisk(const FileOnDisk&) = delete;
    FileOnDisk& operator=(const FileOnDisk&) = delete;

    int64_t read_at(uint64_t offset, std::span<uint8_t> bytes) override {
        size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n =
                ::pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) return -1;
            if (n == 0) break;
            done += static_cast<size_t>(n);
        }
        return static_cast<int64_t>(done);
    }
    DeviceWrite write_at(uint64_t offset, std::span<const uint8_t> bytes) override {
        DeviceWrite written;
        while (written.bytes < bytes.size()) {
            const ssize_t n = ::pwrite(file_, bytes.data() + written.bytes, bytes.size() - written.bytes,
                                       static_cast<off_t>(offset + written.bytes));
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                written.error = n < 0 ? errno : 0;
                break;
            }
            written.bytes += static_cast<size_t>(n);
        }
        return written;
    }
    int truncate(uint64_t size) override {
        return ::ftruncate(file_, static_cast<off_t>(size)) == 0 ? 0 : errno;
    }
    uint64_t size() override {
        struct stat facts {};
        return ::fstat(file_, &facts) == 0 ? static_cast<uint64_t>(facts.st_size) : 0;
    }
    int sync() override { return ::fdatasync(file_) == 0 ? 0 : errno; }

  private:
    int file_;
};

}  // namespace

std::unique_ptr<FileDevice> gf_OpenDevice(const std::string& name, bool create) {
    const int file = create ? ::open(name.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)
                            : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return nullptr;
    return std::make_unique<FileOnDisk>(file);
}

std::vector<uint8_t> gf_EncodeHeader(const GFileHeader& header) {
    std::vector<uint8_t> bytes(mt_HeaderSize, 0);
    bytes[0] = 0x7F;
    std::memcpy(&bytes[1], "VRL", 3);
    store_be32(&bytes[4], header.version);
    store_be32(&bytes[8], header.kind);
    store_be32(&bytes[12], header.kindVersion);
    bytes[16] = gadr_encoding_from_mode(header.mode);
    return bytes;
}

bool gf_DecodeHeader(std::span<const uint8_t> bytes, GFileHeader& header, std::string& why) {
    if (bytes.size() < mt_HeaderSize) {
        why = "the file ends within its header";
        return false;
    }
    if (bytes[0] != 0x7F || std::memcmp(&bytes[1], "VRL", 3) != 0) {
        why = "not a trace store file";
        return false;
    }
    header.version = load_be32(&bytes[4]);
    header.kind = load_be32(&bytes[8]);
    header.kindVersion = load_be32(&bytes[12]);
    if (header.version >= 2) {
        why = gen_format("header version %u is not supported", header.version);
        return false;
    }
    header.mode = gadr_mode_from_encoding(bytes[16]);
    if (bytes[17] != 0) {
        gen_error("GFile desciptors not supported");
        why = "GFile desciptors not supported";
        return false;
    }
    if (bytes[19] != 0) {
        why = "the reserved byte of the header is not 0";
        return false;
    }
    return true;
}

std::unique_ptr<GFile> GFile::OnDevice(FileDevice& device, const std::string& name) {
    std::unique_ptr<GFile> file(new GFile);
    file->name_ = name;
    file->device_ = &device;
    file->seek(0);
    return file;
}

std::unique_ptr<GFile> GFile::OpenForRead(const std::string& name, std::string& why) {
    std::unique_ptr<FileDevice> device = gf_OpenDevice(name, false);
    if (!device) {
        why = name + ": " + std::strerror(errno);
        return nullptr;
    }
    return OpenOnDevice(std::move(device), name, why);
}

std::unique_ptr<GFile> GFile::OpenOnDevice(std::unique_ptr<FileDevice> device, const std::string& name,
                                           std::string& why) {
    std::unique_ptr<GFile> file = OnDevice(*device, name);
    file->owned_ = std::move(device);
    const size_t there = file->fill(mt_HeaderSize) ? mt_HeaderSize : file->buffered();
    std::string reason;
    if (!gf_DecodeHeader({file->here(), there}, file->header_, reason)) {
        why = name + ": " + reason;
        return nullptr;
    }
    file->step(mt_HeaderSize);
    return file;
}

void GFile::seek(uint64_t offset) {
    base_ = offset;
    at_ = buffered_ = 0;
    end_ = false;
    window_ = first_window;
}

void GFile::skip(uint64_t count) {
    if (count <= buffered()) {
        at_ += static_cast<size_t>(count);
        return;
    }
    const size_t window = window_;
    seek(tell() + count);
    window_ = window;
}

std::string GFile::block(uint32_t size) {
    const size_t there = fill(size) ? size : buffered();
    std::string bytes(reinterpret_cast<const char*>(here()), there);
    step(there);
    return bytes;
}

bool GFile::refill(size_t count) {
    if (count > trusted_length && tell() + count > device_->size()) {
        end_ = true;
        return false;
    }
    if (at_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + at_, buffered_ - at_);
        base_ += at_;
        buffered_ -= at_;
        at_ = 0;
    }
    const size_t room = std::max(count, buffered_ + window_);
    if (buffer_.size() < room) buffer_.resize(room);
    window_ = std::min(window_ * 4, largest_window);
    const int64_t got = device_->read_at(base_ + buffered_, {buffer_.data() + buffered_, room - buffered_});
    if (got < 0 && !reported_) {
        reported_ = true;
        gen_fatal("Error while processing \"%s\": %s", name_.empty() ? "UNKNOWN" : name_.c_str(),
                  std::strerror(errno));
    }
    if (got > 0) buffered_ += static_cast<size_t>(got);
    if (buffered_ >= count) return true;
    end_ = true;
    return false;
}
