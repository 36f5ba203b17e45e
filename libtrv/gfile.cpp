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
constexpr const char* not_regular = "Not a regular file";

class FileOnDisk : public FileDevice {
  public:
    // size is what the file had when it was opened; without one, the end is where a read gives nothing.
    explicit FileOnDisk(int file, uint64_t size = UINT64_MAX) : file_(file), openedSize_(size) {}
    ~FileOnDisk() override { ::close(file_); }
    FileOnDisk(const FileOnDisk&) = delete;
    FileOnDisk& operator=(const FileOnDisk&) = delete;

    int64_t ReadAt(uint64_t offset, std::span<uint8_t> bytes) override {
        size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n =
                ::pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) return -1;
            done += static_cast<size_t>(n);
            if (n == 0 || (done < bytes.size() && offset + done >= openedSize_)) break;
        }
        return static_cast<int64_t>(done);
    }
    DeviceWrite WriteAt(uint64_t offset, std::span<const uint8_t> bytes) override {
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
    void StartSync([[maybe_unused]] uint64_t from, [[maybe_unused]] uint64_t end) override {
#ifdef __linux__
        ::sync_file_range(file_, static_cast<off_t>(from), static_cast<off_t>(end - from),
                          SYNC_FILE_RANGE_WRITE);
#endif
    }
    int sync() override {
        return ::fdatasync(file_) == 0 ? 0 : errno;
    }

  private:
    int file_;
    uint64_t openedSize_;
};

DeviceWrap& device_wrap() {
    static DeviceWrap wrap;
    return wrap;
}

std::unique_ptr<FileDevice> wrapped(std::unique_ptr<FileDevice> device, const std::string& name) {
    return device_wrap() ? device_wrap()(std::move(device), name) : std::move(device);
}

}  // namespace

Result gf_OpenDevice(const std::string& name, std::unique_ptr<FileDevice>& device) {
    // Without waiting, so that a pipe is seen to be none of ours; of a socket the opening itself fails.
    const int file = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) return errno == ENXIO ? Result::failure(not_regular, name) : Result::system(name, errno);
    struct stat facts {};
    if (::fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode)) {
        ::close(file);
        return S_ISDIR(facts.st_mode) ? Result::system(name, EISDIR) : Result::failure(not_regular, name);
    }
    const auto size = static_cast<uint64_t>(facts.st_size);
    device = wrapped(std::make_unique<FileOnDisk>(file, size), name);
    return {};
}

std::unique_ptr<FileDevice> gf_CreateDevice(const std::string& name) {
    // Emptied only where there is something: of a file that was ever emptied, closing it waits until all is
    // on its way to the disk.
    const int file = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) return nullptr;
    struct stat facts {};
    if (::fstat(file, &facts) != 0 || (facts.st_size > 0 && ::ftruncate(file, 0) != 0)) {
        const int error = errno;
        ::close(file);
        errno = error;
        return nullptr;
    }
    return wrapped(std::make_unique<FileOnDisk>(file), name);
}

void gf_WrapDevices(DeviceWrap wrap) {
    device_wrap() = std::move(wrap);
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

Result gf_DecodeHeader(std::span<const uint8_t> bytes, GFileHeader& header) {
    if (bytes.size() < mt_HeaderSize) return Result::failure("the file ends within its header");
    if (bytes[0] != 0x7F || std::memcmp(&bytes[1], "VRL", 3) != 0)
        return Result::failure("not a trace store file");
    header.version = load_be32(&bytes[4]);
    header.kind = load_be32(&bytes[8]);
    header.kindVersion = load_be32(&bytes[12]);
    if (header.version >= 2)
        return Result::failure(gen_format("header version %u is not supported", header.version));
    header.mode = gadr_mode_from_encoding(bytes[16]);
    if (bytes[17] != 0) {
        constexpr const char* words = "GFile desciptors not supported";  // the text is kept as it is known
        gen_error("%s", words);
        return Result::failure(words);
    }
    if (bytes[19] != 0) return Result::failure("the reserved byte of the header is not 0");
    return {};
}

std::unique_ptr<GFile> GFile::OnDevice(FileDevice& device, const std::string& name) {
    std::unique_ptr<GFile> file(new GFile);
    file->name_ = name;
    file->device_ = &device;
    file->seek(0);
    return file;
}

std::unique_ptr<GFile> GFile::View() const {
    std::unique_ptr<GFile> view = OnDevice(*device_, name_);
    view->header_ = header_;
    view->reported_ = reported_;
    return view;
}

Result GFile::OpenForRead(const std::string& name, std::unique_ptr<GFile>& file) {
    std::unique_ptr<FileDevice> device;
    Result opened = gf_OpenDevice(name, device);
    return opened ? OpenOnDevice(std::move(device), name, file) : opened;
}

Result GFile::OpenOnDevice(std::unique_ptr<FileDevice> device, const std::string& name,
                           std::unique_ptr<GFile>& file) {
    std::unique_ptr<GFile> made = OnDevice(*device, name);
    made->owned_ = std::move(device);
    const size_t there = made->fill(mt_HeaderSize) ? mt_HeaderSize : made->buffered();
    if (made->error() != 0) return Result::system(name, made->error());
    if (const Result header = gf_DecodeHeader({made->here(), there}, made->header_); !header)
        return Result::failure(header.what(), name);
    made->step(mt_HeaderSize);
    file = std::move(made);
    return {};
}

void GFile::seek(uint64_t offset) {
    base_ = offset;
    at_ = buffered_ = 0;
    end_ = sawEnd_ = false;
    error_ = 0;
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

void GFile::MakeRoom(size_t room) {
    if (capacity_ >= room) return;
    auto larger = std::make_unique_for_overwrite<uint8_t[]>(room);
    if (buffered_ > 0) std::memcpy(larger.get(), buffer_.get(), buffered_);
    buffer_ = std::move(larger);
    capacity_ = room;
}

// Reads up to most bytes behind what is buffered.
int64_t GFile::ReadBehind(size_t most) {
    errno = 0;
    return device_->ReadAt(base_ + buffered_, {buffer_.get() + buffered_, most});
}

void GFile::report() {
    if (!*reported_)
        gen_fatal("Error while processing \"%s\": %s", name_.empty() ? "UNKNOWN" : name_.c_str(),
                  std::strerror(error_));
    *reported_ = true;
}

bool GFile::refill(size_t count) {
    error_ = 0;
    if (count > trusted_length && tell() + count > device_->size()) {
        end_ = true;
        return false;
    }
    if (at_ > 0) {
        std::memmove(buffer_.get(), buffer_.get() + at_, buffered_ - at_);
        base_ += at_;
        buffered_ -= at_;
        at_ = 0;
    }
    MakeRoom(std::max(count, buffered_ + window_));
    const size_t most = std::max(count - buffered_, window_);
    int64_t got = ReadBehind(most);
    sawEnd_ = got >= 0 && static_cast<size_t>(got) < most;
    // The bytes that can't be read may be none of those that are needed.
    if (got < 0) got = ReadBehind(count - buffered_);
    window_ = got < 0 ? first_window : std::min(window_ * 4, largest_window);
    if (got < 0) error_ = errno != 0 ? errno : EIO;
    if (got > 0) buffered_ += static_cast<size_t>(got);
    if (buffered_ >= count) return true;
    end_ = true;
    if (error_ != 0) report();
    return false;
}
