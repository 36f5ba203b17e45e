// GFile: the binary file layer under the store. A 20-byte header says what the file is; behind it stand
// big-endian fields with no alignment. Reading goes through one large buffer; writing of store files is the
// writer's own matter (store_writer.h), which uses only the header and the device from here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "libtrv/byte_order.h"
#include "shared/libcxxutil/result.h"

// What a device took of a write: how many bytes, and when they are fewer than were given the system's error
// number, 0 where it gives none.
struct DeviceWrite {
    size_t bytes = 0;
    int error = 0;
};

// Where the bytes are: a file of the operating system, or something else in a test. Offsets are 64 bits.
class FileDevice {
  public:
    virtual ~FileDevice() = default;
    // Bytes read, fewer only at the end of the file; -1 on an error.
    virtual int64_t ReadAt(uint64_t offset, std::span<uint8_t> bytes) = 0;
    virtual DeviceWrite WriteAt(uint64_t offset, std::span<const uint8_t> bytes) = 0;
    // 0, or the system's error number.
    [[nodiscard]] virtual int truncate(uint64_t size) = 0;
    virtual uint64_t size() = 0;
    // Begins to bring bytes that were written to the disk, and does not wait. Nothing follows from it but
    // that a later sync has less to do; what goes wrong is told by that.
    virtual void StartSync(uint64_t /*from*/, uint64_t /*end*/) {}
    // Asks the disk to keep what was written. 0, or the system's error number.
    [[nodiscard]] virtual int sync() = 0;
};

// Opens a file of the operating system for reading. Nothing but a regular file is one, so that a pipe among
// the names never waits for its other end.
Result gf_OpenDevice(const std::string& name, std::unique_ptr<FileDevice>& device);
// Makes a file anew, or empties the one that stands, for reading and writing. Null with errno set otherwise.
std::unique_ptr<FileDevice> gf_CreateDevice(const std::string& name);

// For tests: what every device that is opened or made from now on is put into, to make it fail. An empty
// function ends it.
using DeviceWrap =
    std::function<std::unique_ptr<FileDevice>(std::unique_ptr<FileDevice> device, const std::string& name)>;
void gf_WrapDevices(DeviceWrap wrap);

struct GFileHeader {
    uint32_t version = 1;
    uint32_t kind = 0;
    uint32_t kindVersion = 0;
    int mode = 2;  // gadr_Mode
};

// The 20 bytes of a header.
std::vector<uint8_t> gf_EncodeHeader(const GFileHeader& header);
// Checks and decodes a header; fails with the reason alone when a reader must refuse the file. A descriptor
// flag is also reported at level error, as is an unknown address size code, which reads as 32bit.
Result gf_DecodeHeader(std::span<const uint8_t> bytes, GFileHeader& header);

// A file open for reading. Positions are absolute. A read past the end gives 0 and sets the end mark; one
// that the device fails does the same, keeps the error, and is reported at level fatal, once per file.
class GFile {
  public:
    // Opens and checks the header. The position is then behind the header.
    static Result OpenForRead(const std::string& name, std::unique_ptr<GFile>& file);
    // The same on a device that the file takes over, instead of a name of the operating system.
    static Result OpenOnDevice(std::unique_ptr<FileDevice> device, const std::string& name,
                               std::unique_ptr<GFile>& file);
    // On a device that stays the caller's and must outlive the file; its header is not looked at.
    static std::unique_ptr<GFile> OnDevice(FileDevice& device, const std::string& name);
    // Another position in the same file, with a buffer of its own. The file must outlive it.
    std::unique_ptr<GFile> View() const;

    const std::string& name() const { return name_; }
    const GFileHeader& header() const { return header_; }
    FileDevice& device() { return *device_; }

    uint64_t tell() const { return base_ + at_; }
    // Drops what is buffered, so that bytes another handle wrote since are seen.
    void seek(uint64_t offset);
    bool AtEnd() const { return end_; }
    // The error number of the read that set the end mark; 0 when it was the end of the file.
    int error() const { return error_; }

    uint8_t u8() { return fill(1) ? buffer_[at_++] : static_cast<uint8_t>(0); }
    uint16_t u16() { return fill(2) ? load_be16(step(2)) : static_cast<uint16_t>(0); }
    uint32_t u32() { return fill(4) ? load_be32(step(4)) : 0u; }
    uint64_t u64() { return fill(8) ? load_be64(step(8)) : 0u; }
    // Up to size bytes; fewer at the end of the file.
    std::string block(uint32_t size);

    // Makes count bytes stand contiguously at the position; false at the end of the file, and the end mark is
    // set.
    bool fill(size_t count) { return buffered_ - at_ >= count || refill(count); }
    // The bytes at the position, as many as fill promised; step takes them.
    const uint8_t* here() const { return buffer_.get() + at_; }
    const uint8_t* step(size_t count) {
        at_ += count;
        return buffer_.get() + at_ - count;
    }
    size_t buffered() const { return buffered_ - at_; }
    // True when the last read came to the end of the file, as it was then, and so many bytes or fewer are
    // left.
    bool EndsWithin(size_t count) const { return sawEnd_ && buffered() <= count; }
    // Moves on without reading what lies between.
    void skip(uint64_t count);

  private:
    GFile() = default;
    bool refill(size_t count);
    void MakeRoom(size_t room);
    int64_t ReadBehind(size_t most);
    void report();

    std::string name_;
    std::unique_ptr<FileDevice> owned_;
    FileDevice* device_ = nullptr;
    GFileHeader header_;
    std::unique_ptr<uint8_t[]> buffer_;
    size_t capacity_ = 0;
    uint64_t base_ = 0;    // file offset of buffer_[0]
    size_t at_ = 0;        // position in the buffer
    size_t buffered_ = 0;  // bytes in the buffer
    size_t window_ = 0;    // bytes the next read asks for: grows while reading on, falls back at a seek
    bool end_ = false;
    bool sawEnd_ = false;  // nothing was behind what is buffered
    int error_ = 0;
    std::shared_ptr<bool> reported_ = std::make_shared<bool>(false);  // shared by the views of a file
};
