#include "services/servicerouter_proxy/router_place.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

// Directories of the system's for this are the user's alone. The cache directory is made so when it is made.
std::string directory() {
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime && *runtime ? runtime : path_cache_directory();
}

std::string fileWord(const std::string& zone) {
    std::string word;
    for (const char c : zone) {
        const bool plain =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
        word += plain ? std::string(1, c) : gen_format("_%02x", static_cast<unsigned char>(c));
    }
    return word;
}

}  // namespace

std::string routerPlace_File(const std::string& zone) {
    return path_join(directory(), "chronoweave-router" + (zone.empty() ? "" : "." + fileWord(zone)));
}

// A router holds the lock; a file without one was left by a router that is gone.
std::optional<uint16_t> routerPlace_Port(const std::string& zone) {
    const FileDescriptor file(::open(routerPlace_File(zone).c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen()) return std::nullopt;
    if (::flock(file.number(), LOCK_SH | LOCK_NB) == 0) return std::nullopt;
    char text[8] = {};
    const ssize_t length = ::read(file.number(), text, sizeof text - 1);
    uint16_t port = 0;
    if (length <= 0 || std::from_chars(text, text + length, port).ec != std::errc() || port == 0)
        return std::nullopt;
    return port;
}

Result RouterPlace::take(const std::string& zone) {
    path_ = routerPlace_File(zone);
    path_make_directory(path_directory(path_));
    FileDescriptor file(::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.IsOpen()) return Result::system(path_, errno);
    constexpr int tries = 5;
    constexpr useconds_t nap = 20'000;
    // Who looks for the port holds the lock for a moment.
    for (int i = 0; ::flock(file.number(), LOCK_EX | LOCK_NB) != 0; ++i) {
        if (i == tries) return Result::failure("another router has this place", path_);
        ::usleep(nap);
    }
    file_ = std::move(file);
    return {};
}

Result RouterPlace::tell(uint16_t port) {
    const std::string text = std::to_string(port) + '\n';
    if (::ftruncate(file_.number(), 0) != 0 ||
        ::pwrite(file_.number(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        return Result::system(path_, errno);
    return {};
}

// The file stays, empty: one that is removed while another waits for its lock would give two places.
RouterPlace::~RouterPlace() {
    if (file_.IsOpen() && ::ftruncate(file_.number(), 0) != 0)
        gen_warning("%s", Result::system(path_, errno).text().c_str());
}
