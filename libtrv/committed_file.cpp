#include "libtrv/committed_file.h"

#include <cerrno>
#include <utility>
#include <vector>

namespace {
// So much is handed on to the disk at a time while more is made, so that the end need not wait for all of it.
constexpr uint64_t sync_portion = 4 << 20;
}  // namespace

Result CommittedFile::create(const std::string& fileName, uint32_t kind, uint32_t kindVersion) {
    errno = 0;
    auto made = gf_CreateDevice(fileName);
    if (!made) return Result::system(fileName, errno);
    return begin(std::move(made), fileName, kind, kindVersion);
}

Result CommittedFile::begin(std::unique_ptr<FileDevice> on, const std::string& fileName, uint32_t kind,
                            uint32_t kindVersion) {
    device = std::move(on);
    name = fileName;
    GFileHeader header;
    header.kind = kind;
    header.kindVersion = kindVersion;
    std::vector<uint8_t> bytes = gf_EncodeHeader(header);
    bytes.push_back(mt_PacketEnd);
    terminator = bytes.size() - 1;
    const DeviceWrite written = device->WriteAt(0, bytes);
    return written.bytes == bytes.size() ? Result() : Result::system(name, written.error);
}

Result CommittedFile::WriteBehind(size_t& wrote) {
    pending.put8(mt_PacketEnd);
    const DeviceWrite written = device->WriteAt(terminator + 1, {pending.data() + 1, pending.size() - 1});
    pending.cut(pending.size() - 1);
    wrote = written.bytes;
    return wrote == pending.size() ? Result() : Result::system(name, written.error);
}

Result CommittedFile::EndBehind(size_t size) {
    const uint8_t end[1] = {mt_PacketEnd};
    const DeviceWrite written = device->WriteAt(terminator + size, end);
    return written.bytes == 1 ? Result() : Result::system(name, written.error);
}

Result CommittedFile::TurnTerminator(size_t size) {
    const DeviceWrite written = device->WriteAt(terminator, {pending.data(), 1});
    if (written.bytes != 1) return Result::system(name, written.error);
    terminator += size;
    pending.cut(0);
    if (terminator - syncStarted_ >= sync_portion) StartSync();
    return {};
}

void CommittedFile::CutBack() {
    static_cast<void>(device->truncate(terminator + 1));
}

void CommittedFile::StartSync() {
    if (terminator > syncStarted_) device->StartSync(syncStarted_, terminator);
    syncStarted_ = terminator;
}

Result CommittedFile::sync() {
    const int error = device->sync();
    return error == 0 ? Result() : Result::system(name, error, "the disk did not keep it");
}
