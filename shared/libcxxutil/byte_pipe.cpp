#include "shared/libcxxutil/byte_pipe.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

namespace {

// The signal for writing to a closed pipe, kept from the process while this lives: blocked, and taken off the
// thread again when the write raised it.
class NoPipeSignal {
  public:
    NoPipeSignal() {
        sigemptyset(&set_);
        sigaddset(&set_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        pending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &set_, &before_);
    }
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;
    ~NoPipeSignal() {
        const timespec now{};
        if (raised_ && !pending_) sigtimedwait(&set_, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    void raised() { raised_ = true; }

  private:
    sigset_t set_{}, before_{};
    bool pending_ = false, raised_ = false;
};

MovedBytes failure(int error) {
    if (error == EAGAIN || error == EWOULDBLOCK || error == EINTR) return {};
    if (error == EPIPE) return {Moved::End, 0, 0};
    return {Moved::Failed, 0, error};
}

}  // namespace

Result pipe_Make(BytePipe& pipe) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return Result::system("pipe", errno);
    pipe.read = FileDescriptor(ends[0]);
    pipe.write = FileDescriptor(ends[1]);
    return {};
}

MovedBytes pipe_Read(const FileDescriptor& from, std::span<uint8_t> room) {
    if (room.empty()) return {};
    const ssize_t got = ::read(from.number(), room.data(), room.size());
    if (got < 0) return failure(errno);
    if (got == 0) return {Moved::End, 0, 0};
    return {Moved::Some, static_cast<size_t>(got), 0};
}

MovedBytes pipe_Write(const FileDescriptor& to, std::span<const uint8_t> bytes) {
    if (bytes.empty()) return {};
    NoPipeSignal quiet;
    const ssize_t put = ::write(to.number(), bytes.data(), bytes.size());
    if (put >= 0) return {put > 0 ? Moved::Some : Moved::None, static_cast<size_t>(put), 0};
    const int error = errno;
    if (error == EPIPE) quiet.raised();
    return failure(error);
}
