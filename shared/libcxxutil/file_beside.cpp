#include "shared/libcxxutil/file_beside.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

Result FileBeside::make(const std::string& path) {
    drop();
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
    target_ = error ? path : real.string();
    struct stat standing {};
    if (::stat(target_.c_str(), &standing) == 0 && !S_ISREG(standing.st_mode))
        return S_ISDIR(standing.st_mode) ? Result::system(path, EISDIR)
                                         : Result::failure("", path, "it is no regular file");
    std::string name = target_ + "_XXXXXX";
    file_ = FileDescriptor(::mkstemp(name.data()));
    if (!file_.IsOpen()) return Result::system(path, errno);
    name_ = name;
    return {};
}

Result FileBeside::keep() {
    struct stat standing {};
    const bool stands = ::stat(target_.c_str(), &standing) == 0;
    ::fchmod(file_.number(), stands ? standing.st_mode & 0777 : 0644);
    int failed = file_.close();
    if (failed == 0 && std::rename(name_.c_str(), target_.c_str()) != 0) failed = errno;
    if (failed != 0) {
        drop();
        return Result::system(target_, failed);
    }
    name_.clear();
    return {};
}

void FileBeside::drop() {
    file_.close();
    if (!name_.empty()) ::unlink(name_.c_str());
    name_.clear();
}
