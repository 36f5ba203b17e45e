#include "shared/libcxxutil/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "shared/libcxxutil/file_beside.h"

namespace {

bool read_all(int file, std::string& text, size_t most) {
    char block[65536];
    for (;;) {
        const ssize_t got = ::read(file, block, sizeof block);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        // The size told before may be out of date by now.
        if (text.size() + static_cast<size_t>(got) > most) {
            errno = EFBIG;
            return false;
        }
        text.append(block, static_cast<size_t>(got));
    }
}

bool write_all(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t put = ::write(file, text.data(), text.size());
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        text.remove_prefix(static_cast<size_t>(put));
    }
    return ::fdatasync(file) == 0;
}

}  // namespace

Result file_read_whole(const std::string& path, std::string& text, size_t most) {
    text.clear();
    // A name pipe or a terminal must not hold the program up while it is opened.
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) return Result::system(path, errno);
    struct stat about {};
    bool done = ::fstat(file, &about) == 0;
    if (done && !S_ISREG(about.st_mode)) {
        done = false;
        errno = S_ISDIR(about.st_mode) ? EISDIR : EINVAL;
    }
    done = done && read_all(file, text, most);
    const int reason = errno;
    ::close(file);
    if (done) return {};
    text.clear();
    return Result::system(path, reason);
}

Result file_replace(const std::string& path, std::string_view text) {
    FileBeside file;
    if (const Result made = file.make(path); !made.ok()) return Result::failure({}, path, made.reason());
    if (!write_all(file.descriptor().number(), text)) return Result::system(path, errno);
    const Result kept = file.keep();
    return kept.ok() ? Result() : Result::failure({}, path, kept.reason());
}

bool text_next_line(std::string_view& text, std::string_view& line) {
    if (text.empty()) return false;
    const size_t end = text.find_first_of("\r\n");
    line = text.substr(0, end);
    if (end == std::string_view::npos) {
        text = {};
        return true;
    }
    const bool both = text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n';
    text.remove_prefix(end + (both ? 2 : 1));
    return true;
}
