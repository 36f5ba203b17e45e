#include "companions/trv/server_form.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <limits>

#include "companions/trv/server/server.h"
#include "companions/trv/targets.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/watches.h"

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::milliseconds longest_wait{1000};
// A pipe that can take anything can take so much without making us wait.
constexpr size_t write_at_once = 512;

std::chrono::milliseconds wait_time(const Server& server, Instant now) {
    const auto next = server.next();
    if (!next) return longest_wait;
    if (*next <= now) return 0ms;
    return std::min(longest_wait, std::chrono::ceil<std::chrono::milliseconds>(*next - now));
}

class ServerRun {
  public:
    explicit ServerRun(Server& server) : server_(server) {}
    // One round; false when there is nothing more to do.
    bool round();

  private:
    void read(Instant now);
    void write();
    bool isOver() const { return gone_ || (server_.isDone() && server_.output().empty()); }

    Server& server_;
    bool atEnd_ = false, gone_ = false;
};

void ServerRun::read(Instant now) {
    std::array<char, 4096> room;
    const ssize_t got = ::read(STDIN_FILENO, room.data(), room.size());
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (got > 0) return server_.input({room.data(), static_cast<size_t>(got)}, now);
    atEnd_ = true;
    server_.inputEnded(now);
}

void ServerRun::write() {
    const std::string_view text = server_.output().substr(0, write_at_once);
    const ssize_t put = ::write(STDOUT_FILENO, text.data(), text.size());
    if (put > 0) server_.written(static_cast<size_t>(put));
    gone_ = put < 0 && errno != EINTR && errno != EAGAIN;
}

bool ServerRun::round() {
    const Instant now = std::chrono::steady_clock::now();
    server_.step(now);
    std::array<pollfd, 2> entries{{{STDIN_FILENO, POLLIN, 0}, {STDOUT_FILENO, POLLOUT, 0}}};
    // What is not asked about is left out by a number below 0.
    if (atEnd_ || server_.isDone()) entries[0].fd = -1;
    if (server_.output().empty()) entries[1].fd = -1;
    watches_Poll(entries, static_cast<int>(wait_time(server_, now).count()));
    if (entries[0].revents != 0) read(std::chrono::steady_clock::now());
    if (entries[1].revents != 0) write();
    if (!process_IsStopAsked()) return !isOver();
    server_.inputEnded(std::chrono::steady_clock::now());
    return false;
}

}  // namespace

bool server_IsAsked(std::span<const std::string> words) {
    return words.empty();
}

int server_Run(std::span<const std::string>) {
    process_CatchStops();
    Server server(targets_Connect, "Chronoweave event server " CW_VERSION "; help lists the commands");
    ServerRun run(server);
    while (run.round()) {
    }
    return 0;
}

std::string server_Usage() {
    return "usage: trv\n"
           "\n"
           "Serves events: reads commands from standard input, a line each, and answers on standard output. "
           "A\n"
           "prompt, \"> \", stands behind each answer. help lists the commands. The targets to connect to:\n"
           "\n" +
           targets_Usage() + '\n';
}
