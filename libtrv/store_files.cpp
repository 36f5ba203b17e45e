#include "libtrv/store_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "shared/libcxxutil/paths.h"

namespace {

Result delete_existing(const std::string& name) {
    if (::unlink(name.c_str()) == 0 || errno == ENOENT) return {};
    return Result::system(name, errno);
}

Result write_version_file(const std::string& name, const StoreFacts& facts) {
    const std::vector<uint8_t> bytes = store_EncodeVersionFile(facts);
    errno = 0;
    const auto device = gf_CreateDevice(name);
    if (!device) return Result::system(name, errno);
    const DeviceWrite written = device->WriteAt(0, bytes);
    return written.bytes == bytes.size() ? Result() : Result::system(name, written.error);
}

// By name, or where the folders lie on different file systems by a copy, of which nothing stays that is not
// whole.
Result move_file(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) == 0) return {};
    std::error_code error, none;
    if (std::filesystem::copy_file(from, to, error)) return {};
    std::filesystem::remove(to, none);
    return Result::system(to, error.value());
}

Result make_version_file(const std::string& name, const StoreFacts& facts) {
    std::string temporary = path_join(path_temporary_directory(), "tmpXXXXXX");
    const int made = ::mkstemp(temporary.data());
    if (made < 0) return Result::system(temporary, errno);
    ::fchmod(made, 0644);
    ::close(made);
    Result result = write_version_file(temporary, facts);
    if (result.ok()) result = move_file(temporary, name);
    ::unlink(temporary.c_str());
    return result;
}

}  // namespace

std::vector<uint8_t> store_EncodeVersionFile(const StoreFacts& facts) {
    GFileHeader header;
    header.kind = mt_KindVersion;
    ByteBuffer bytes;
    bytes.put(gf_EncodeHeader(header));
    bytes.put8(mt_FormatVersion);
    bytes.put32(facts.ticksPerSecond);
    bytes.put32(static_cast<uint32_t>(facts.osName.size()));
    bytes.put({reinterpret_cast<const uint8_t*>(facts.osName.data()), facts.osName.size()});
    bytes.put8(facts.bigEndianTarget ? 1 : 0);
    bytes.put32(facts.checkpointInterval);
    return {bytes.data(), bytes.data() + bytes.size()};
}

Result store_CreateFiles(const std::string& base, const StoreFacts& facts, CommittedFile& events,
                         CommittedFile& index) {
    Result result;
    for (const char* extension : {".trv", ".tri", ".trs"})
        if (result.ok()) result = delete_existing(base + extension);
    if (result.ok()) result = events.create(base + ".trs", mt_KindEvents);
    if (result.ok()) result = index.create(base + ".tri", mt_KindIndex);
    if (result.ok()) result = make_version_file(base + ".trv", facts);
    return result;
}
