#include "shared/libcxxutil/captured_run.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <csignal>

#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/watches.h"

using namespace std::chrono_literals;

namespace {

constexpr auto round_time = 20ms;
constexpr auto patience = 2s;  // for a program that was asked to end
constexpr int reads_a_round = 64;

enum class PipeIs { Open, AtEnd };

// What is there now, and no more than a few blocks of it, so that who prints without end can be stopped.
PipeIs take_some(const FileDescriptor& from, TextEnds& text) {
    std::array<uint8_t, 16384> room;
    for (int reads = 0; reads < reads_a_round; ++reads) {
        const MovedBytes moved = pipe_Read(from, room);
        if (moved.what == Moved::None) return PipeIs::Open;
        if (moved.what != Moved::Some) return PipeIs::AtEnd;
        text.add({reinterpret_cast<const char*>(room.data()), moved.bytes});
    }
    return PipeIs::Open;
}

void wait_for_input(const FileDescriptor& from) {
    pollfd entry{from.number(), POLLIN, 0};
    watches_Poll({&entry, 1}, static_cast<int>(round_time.count()));
}

void end_child(ChildProcess& child, const std::function<bool()>& goesOn) {
    child.signal(SIGTERM);
    const auto until = std::chrono::steady_clock::now() + patience;
    while (!child.WaitForEnd(round_time) && std::chrono::steady_clock::now() < until) goesOn();
    child.signal(SIGKILL);
    child.WaitForEnd(patience);
}

}  // namespace

void TextEnds::add(std::string_view text) {
    const size_t first = std::min(text.size(), most_ - head_.size());
    head_.append(text.substr(0, first));
    tail_.append(text.substr(first));
    if (tail_.size() <= 2 * most_) return;
    between_ += tail_.size() - most_;
    tail_.erase(0, tail_.size() - most_);
}

std::string TextEnds::text() const {
    const size_t shown = std::min(tail_.size(), most_);
    const uint64_t between = between_ + tail_.size() - shown;
    if (between == 0) return head_ + tail_;
    return head_ + "\n... " + std::to_string(between) + " more bytes ...\n" +
           tail_.substr(tail_.size() - shown);
}

CapturedRun run_Captured(ChildOptions options, size_t most, const std::function<bool()>& goesOn) {
    CapturedRun run;
    BytePipe pipe;
    run.started = pipe_Make(pipe);
    if (!run.started.ok()) return run;
    const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    for (const int stream : {1, 2}) options.descriptors.push_back({stream, pipe.write.number()});
    if (nothing.IsOpen()) options.descriptors.push_back({0, nothing.number()});
    ChildProcess child;
    run.started = child.start(options);
    pipe.write.close();
    pipe.read.SetNonBlocking();
    if (!run.started.ok()) return run;
    TextEnds text(most);
    PipeIs pipeIs = PipeIs::Open;
    while (child.IsRunning()) {
        if (!goesOn()) {
            run.stopped = true;
            pipe.read.close();
            end_child(child, goesOn);
            break;
        }
        if (pipeIs == PipeIs::AtEnd)
            child.WaitForEnd(round_time);
        else
            wait_for_input(pipe.read);
        if (pipeIs == PipeIs::Open) pipeIs = take_some(pipe.read, text);
    }
    if (!run.stopped) take_some(pipe.read, text);
    run.end = child.ended();
    run.printed = text.text();
    return run;
}
