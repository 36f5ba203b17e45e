#include "shared/libcxxutil/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "shared/libcxxutil/file_descriptor.h"

extern char** environ;

namespace {

std::vector<pid_t>& left() {
    static std::vector<pid_t> children;
    return children;
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
    result.push_back(nullptr);
    return result;
}

std::string_view variableName(std::string_view setting) {
    return setting.substr(0, setting.find('='));
}

std::vector<std::string> environmentWith(const std::vector<std::string>& more) {
    std::vector<std::string> result = more;
    for (char** entry = environ; entry && *entry; ++entry) {
        const bool replaced = std::any_of(more.begin(), more.end(), [&](const std::string& setting) {
            return variableName(setting) == variableName(*entry);
        });
        if (!replaced) result.emplace_back(*entry);
    }
    return result;
}

// What happens to descriptors and signals between fork and exec.
class SpawnSetting {
  public:
    SpawnSetting() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        sigset_t all, none;
        sigfillset(&all);
        sigemptyset(&none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    SpawnSetting(const SpawnSetting&) = delete;
    SpawnSetting& operator=(const SpawnSetting&) = delete;
    ~SpawnSetting() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }

    // Copies are made above all the numbers that the child is to have, so that no mapping overwrites the
    // source of another one.
    Result map(const std::vector<ChildOptions::Mapping>& descriptors) {
        int above = 3;
        for (const auto& mapping : descriptors) above = std::max(above, mapping.child + 1);
        for (const auto& mapping : descriptors) {
            FileDescriptor copy(::fcntl(mapping.ours, F_DUPFD_CLOEXEC, above));
            if (!copy.IsOpen()) return Result::system("descriptor " + std::to_string(mapping.ours), errno);
            copies_.push_back(std::move(copy));
        }
        for (size_t i = 0; i < descriptors.size(); ++i)
            posix_spawn_file_actions_adddup2(&actions, copies_[i].number(), descriptors[i].child);
        for (int number = 3; number < above; ++number)
            if (std::none_of(descriptors.begin(), descriptors.end(),
                             [&](const auto& mapping) { return mapping.child == number; }))
                posix_spawn_file_actions_addclose(&actions, number);
        posix_spawn_file_actions_addclosefrom_np(&actions, above);
        return {};
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

  private:
    std::vector<FileDescriptor> copies_;
};

ChildEnd endOf(int status) {
    if (WIFSIGNALED(status)) return {ChildEnd::How::Killed, WTERMSIG(status)};
    return {ChildEnd::How::Exited, WEXITSTATUS(status)};
}

}  // namespace

void child_Reap() {
    std::erase_if(left(), [](pid_t pid) { return ::waitpid(pid, nullptr, WNOHANG) != 0; });
}

size_t child_Left() {
    return left().size();
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, std::nullopt)),
      end_(std::exchange(other.end_, std::nullopt)),
      atEnd_(other.atEnd_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this == &other) return *this;
    end();
    pid_ = std::exchange(other.pid_, std::nullopt);
    end_ = std::exchange(other.end_, std::nullopt);
    atEnd_ = other.atEnd_;
    return *this;
}

Result ChildProcess::start(const ChildOptions& options, AtEnd atEnd) {
    child_Reap();
    end();
    if (options.arguments.empty()) return Result::failure("no program to start");
    SpawnSetting setting;
    if (Result mapped = setting.map(options.descriptors); !mapped) return mapped;
    if (!options.directory.empty())
        posix_spawn_file_actions_addchdir_np(&setting.actions, options.directory.c_str());
    const std::vector<std::string> environment = environmentWith(options.environment);
    const std::string& program = options.program.empty() ? options.arguments[0] : options.program;
    pid_t pid = 0;
    const int error = ::posix_spawnp(&pid, program.c_str(), &setting.actions, &setting.attributes,
                                     pointers(options.arguments).data(), pointers(environment).data());
    if (error != 0) return Result::system(program, error, "can't be started");
    pid_ = pid;
    end_.reset();
    atEnd_ = atEnd;
    return {};
}

void ChildProcess::reap(Wait wait) {
    if (!pid_) return;
    int status = 0;
    pid_t got;
    do {
        got = ::waitpid(*pid_, &status, wait == Wait::Yes ? 0 : WNOHANG);
    } while (got < 0 && errno == EINTR);
    if (got == 0) return;
    // Without a status somebody else reaped it; that it ended is all there is to know.
    end_ = got > 0 ? endOf(status) : ChildEnd{};
    pid_.reset();
}

bool ChildProcess::IsRunning() {
    reap(Wait::No);
    return pid_.has_value();
}

std::optional<ChildEnd> ChildProcess::ended() {
    reap(Wait::No);
    return end_;
}

std::optional<ChildEnd> ChildProcess::WaitForEnd(std::chrono::milliseconds longest) {
    const auto until = std::chrono::steady_clock::now() + longest;
    auto pause = std::chrono::milliseconds(1);
    while (IsRunning() && std::chrono::steady_clock::now() < until) {
        ::poll(nullptr, 0, static_cast<int>(pause.count()));
        pause = std::min(pause * 2, std::chrono::milliseconds(20));
    }
    return end_;
}

bool ChildProcess::signal(int number) {
    return IsRunning() && ::kill(*pid_, number) == 0;
}

void ChildProcess::end() {
    if (!IsRunning()) return;
    if (atEnd_ == AtEnd::Leave) {
        left().push_back(*pid_);
        pid_.reset();
        return;
    }
    ::kill(*pid_, SIGKILL);
    reap(Wait::Yes);
}
