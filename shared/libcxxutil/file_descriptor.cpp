#include "shared/libcxxutil/file_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

int FileDescriptor::close() {
    const int number = give();
    // After EINTR the number is free all the same, and closing it again would close another's.
    if (number < 0 || ::close(number) == 0 || errno == EINTR) return 0;
    return errno;
}

bool FileDescriptor::SetNonBlocking() const {
    const int flags = ::fcntl(number_, F_GETFL);
    return flags >= 0 && ::fcntl(number_, F_SETFL, flags | O_NONBLOCK) == 0;
}
