#include "companions/trv/perf/held_child.h"

#include <fcntl.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t most_said = 4096;  // bytes of errors that are kept

void default_signals() {
    for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Puts a descriptor at a number from 0 to 5; those that are used are kept above.
void put_at(int descriptor, int number) {
    if (::dup2(descriptor, number) < 0) ::_exit(127);
}

}  // namespace

// Between fork and exec: nothing that takes memory.
void HeldChild::become(char* const* arguments, int go, int failed, int errors) {
    const int nothing = ::open("/dev/null", O_RDWR);
    put_at(nothing, STDIN_FILENO);
    put_at(nothing, STDOUT_FILENO);
    put_at(errors, STDERR_FILENO);
    ::setpgid(0, 0);
    // Whoever watches may be killed.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::personality(ADDR_NO_RANDOMIZE);
    char byte = 0;
    if (::read(go, &byte, 1) != 1) ::_exit(127);
    default_signals();
    ::close_range(3, static_cast<unsigned>(failed) - 1, 0);
    ::close_range(static_cast<unsigned>(failed) + 1, ~0u, 0);
    ::execvp(arguments[0], arguments);
    const int error = errno;
    if (::write(failed, &error, sizeof error) < 0) ::_exit(126);
    ::_exit(127);
}

Result HeldChild::start(const std::vector<std::string>& arguments) {
    BytePipe go, failed, errors;
    for (BytePipe* pipe : {&go, &failed, &errors})
        if (Result made = pipe_Make(*pipe); !made) return made;
    std::vector<char*> words;
    for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    // The ends that the child uses stand above the numbers that it has its streams at.
    const FileDescriptor goRead(::fcntl(go.read.number(), F_DUPFD_CLOEXEC, 6)),
        failedWrite(::fcntl(failed.write.number(), F_DUPFD_CLOEXEC, 6)),
        errorsWrite(::fcntl(errors.write.number(), F_DUPFD_CLOEXEC, 6));
    if (!goRead.IsOpen() || !failedWrite.IsOpen() || !errorsWrite.IsOpen())
        return Result::system("pipe", errno);
    const pid_t pid = ::fork();
    if (pid < 0) return Result::system(arguments[0], errno);
    if (pid == 0) {
        go.write.close();
        become(words.data(), goRead.number(), failedWrite.number(), errorsWrite.number());
    }
    ::setpgid(pid, pid);
    pid_ = pid;
    go_ = std::move(go.write);
    failed_ = std::move(failed.read);
    errors_ = std::move(errors.read);
    errors_.SetNonBlocking();
    return {};
}

Result HeldChild::letGo() {
    const uint8_t byte[1] = {1};
    wasLetGo_ = true;
    pipe_Write(go_, byte);
    go_.close();
    // The end of this pipe is that the program runs.
    std::array<uint8_t, sizeof(int)> room;
    const MovedBytes got = pipe_Read(failed_, room);
    failed_.close();
    if (got.what != Moved::Some) return {};
    int error = 0;
    std::copy(room.begin(), room.end(), reinterpret_cast<uint8_t*>(&error));
    end();
    return Result::system("the command", error, "can't be started");
}

void HeldChild::takeErrors() {
    std::array<uint8_t, 4096> room;
    for (int reads = 0; reads < 16; ++reads) {
        const MovedBytes moved = pipe_Read(errors_, room);
        if (moved.what != Moved::Some) return;
        said_.append(room.begin(), room.begin() + static_cast<ptrdiff_t>(moved.bytes));
        if (said_.size() > most_said) said_.erase(0, said_.size() - most_said);
    }
}

std::string HeldChild::lastError() const {
    const std::string_view text = text_trim(said_);
    return std::string(text.substr(text.rfind('\n') + 1));
}

std::optional<ChildEnd> HeldChild::ended() {
    if (errors_.IsOpen()) takeErrors();
    if (end_ || pid_ == 0) return end_;
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) != pid_) return std::nullopt;
    end_ = WIFSIGNALED(status) ? ChildEnd{ChildEnd::How::Killed, WTERMSIG(status)}
                               : ChildEnd{ChildEnd::How::Exited, WEXITSTATUS(status)};
    // What it wrote last.
    if (errors_.IsOpen()) takeErrors();
    return end_;
}

void HeldChild::end() {
    if (pid_ == 0) return;
    ::kill(-pid_, SIGKILL);
    if (!end_) ::waitpid(pid_, nullptr, 0);
    if (!end_) end_ = ChildEnd{ChildEnd::How::Killed, SIGKILL};
    pid_ = 0;
}
