#include "chronoweave/live/server_process.h"

#include <fcntl.h>
#include <semaphore.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <utility>
#include <vector>

#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr size_t longestPath = 255;  // of the server; a longer one is left to the search path
constexpr int replyNumber = 3;       // of the reply pipe in the child
constexpr char semaphoreFolder[] = "/dev/shm", semaphoreFile[] = "sem.vrl:TRV:";

bool is_own(const std::filesystem::path& file) {
    struct stat facts {};
    return ::stat(file.c_str(), &facts) == 0 && facts.st_uid == ::geteuid();
}

// Names that programs left which ended by force.
void sweep_semaphores() {
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(semaphoreFolder, none)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(semaphoreFile) || !is_own(entry.path())) continue;
        const char* const number = name.data() + sizeof semaphoreFile - 1;
        pid_t pid = 0;
        const auto [end, error] = std::from_chars(number, name.data() + name.size(), pid, 16);
        const bool isOurs = error == std::errc() && *end == ':' && pid > 0;
        if (isOurs && ::kill(pid, 0) < 0 && errno == ESRCH) ::sem_unlink(("/" + name.substr(4)).c_str());
    }
}

std::string next_semaphore() {
    static unsigned counter = 0;
    if (counter == 0) sweep_semaphores();
    return gen_format("vrl:TRV:%X:exec:%03u", static_cast<unsigned>(::getpid()), counter++);
}

std::string program_at(const std::string& installation, const char* name) {
    std::string there = path_join(installation, name);
    if (!installation.empty() && path_is_readable_file(there)) return there;
    std::string found = path_find_program(name);
    return found.empty() ? name : found;
}

struct Retired {
    ServerProcess server;
    std::chrono::steady_clock::time_point since;
};

// At the program's end those that still run have a moment, and no more.
struct RetiredServers {
    std::vector<Retired> all;
    ~RetiredServers() {
        for (Retired& retired : all) retired.server.child.WaitForEnd(std::chrono::milliseconds(500));
    }
};
std::vector<Retired>& retired_servers() {
    static RetiredServers servers;
    return servers.all;
}

}  // namespace

HeldSemaphore::HeldSemaphore(HeldSemaphore&& other) noexcept
    : name_(std::exchange(other.name_, {})), semaphore_(std::exchange(other.semaphore_, nullptr)) {}

HeldSemaphore& HeldSemaphore::operator=(HeldSemaphore&& other) noexcept {
    if (this == &other) return *this;
    Drop();
    name_ = std::exchange(other.name_, {});
    semaphore_ = std::exchange(other.semaphore_, nullptr);
    return *this;
}

Result HeldSemaphore::Make(const std::string& name) {
    Drop();
    const std::string path = "/" + name;
    ::sem_unlink(path.c_str());
    sem_t* const made = ::sem_open(path.c_str(), O_CREAT | O_EXCL, S_IRUSR | S_IWUSR, 1);
    if (made == SEM_FAILED) return Result::system(name, errno, "can't be made");
    name_ = name;
    semaphore_ = made;
    if (::sem_trywait(made) == 0) return {};
    const int error = errno;
    Drop();
    return Result::system(name, error, "can't be taken");
}

void HeldSemaphore::Drop() {
    if (semaphore_ == nullptr) return;
    ::sem_close(static_cast<sem_t*>(std::exchange(semaphore_, nullptr)));
    ::sem_unlink(("/" + name_).c_str());
    name_.clear();
}

ServerPrograms server_Programs(const std::string& installation) {
    ServerPrograms programs{program_at(installation, "gexec"), program_at(installation, "trv")};
    if (programs.server.size() >= longestPath) programs.server = "trv";
    return programs;
}

Result server_Start(const ServerPrograms& programs, ServerProcess& server) {
    ServerProcess made;
    BytePipe commands, replies;
    if (Result piped = pipe_Make(commands); !piped) return piped;
    if (Result piped = pipe_Make(replies); !piped) return piped;
    if (!commands.write.SetNonBlocking() || !replies.read.SetNonBlocking())
        return Result::system("pipe", errno);
    if (Result named = made.semaphore.Make(next_semaphore()); !named) return named;
    ChildOptions options;
    options.program = programs.launcher;
    options.arguments = {
        "-" + programs.launcher, std::to_string(replyNumber), made.semaphore.name(), "0", "-stdin",
        programs.server};
    options.descriptors = {{STDIN_FILENO, commands.read.number()}, {replyNumber, replies.write.number()}};
    if (Result started = made.child.start(options); !started) return started;
    made.commands = std::move(commands.write);
    made.replies = std::move(replies.read);
    server = std::move(made);
    return {};
}

void server_Retire(ServerProcess server) {
    server.commands.close();
    server.replies.close();
    server.child.signal(SIGCONT);  // one that was stopped sees the end of its input, too
    if (server.child.IsRunning())
        retired_servers().push_back({std::move(server), std::chrono::steady_clock::now()});
}

// One that has had its time is killed, and waited for, as it goes.
size_t server_Reap(std::chrono::milliseconds longest) {
    const auto now = std::chrono::steady_clock::now();
    std::erase_if(retired_servers(), [&](Retired& retired) {
        return !retired.server.child.IsRunning() || now - retired.since >= longest;
    });
    return retired_servers().size();
}
