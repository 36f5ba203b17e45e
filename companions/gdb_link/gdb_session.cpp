#include "companions/gdb_link/gdb_session.h"

#include <poll.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

using Clock = std::chrono::steady_clock;

bool lives(int pid) {
    return pid > 0 && (::kill(pid, 0) == 0 || errno == EPERM);
}

}  // namespace

std::optional<SourcePlace> gdb_PlaceOf(const std::string& text) {
    constexpr std::string_view marker = " is in ";
    const size_t at = text.find(marker);
    const size_t open = at == text.npos ? at : text.find(" (", at);
    const size_t close = open == text.npos ? open : text.find(").", open);
    if (close == text.npos) return std::nullopt;
    const size_t colon = text.rfind(':', close);
    if (colon == text.npos || colon < open) return std::nullopt;
    SourcePlace place;
    place.function = text.substr(at + marker.size(), open - at - marker.size());
    place.file = text.substr(open + 2, colon - open - 2);
    const auto [end, error] = std::from_chars(text.data() + colon + 1, text.data() + close, place.line);
    if (error != std::errc() || end != text.data() + close) return std::nullopt;
    return place;
}

GdbSession::GdbSession(std::string gdb, std::function<void(const std::string&)> print, Watches* watches)
    : gdb_(std::move(gdb)), print_(std::move(print)), watches_(watches) {}

GdbSession::~GdbSession() {
    // One that is attached lets its process go on.
    if (process_.IsRunning()) {
        const std::string bye = "-gdb-exit\n";
        pipe_Write(to_, {reinterpret_cast<const uint8_t*>(bye.data()), bye.size()});
        process_.WaitForEnd(std::chrono::milliseconds(2000));
    }
}

void GdbSession::stop() {
    watch_.remove();
    to_.close();
    from_.close();
    in_.clear();
    attached_ = 0;
    program_.clear();
}

Result GdbSession::start() {
    if (process_.IsRunning() && to_.IsOpen()) return {};  // else it is ending
    stop();
    BytePipe in, out;
    if (Result made = result_First(pipe_Make(in), pipe_Make(out)); !made) return made;
    Result started = process_.start({.arguments = {gdb_, "--interpreter=mi3", "-q", "-nx"},
                                     .descriptors = {{0, in.read.number()}, {1, out.write.number()}}});
    if (!started) return started;
    in.read.close();  // so that its end is seen
    out.write.close();
    to_ = std::move(in.write);
    from_ = std::move(out.read);
    from_.SetNonBlocking();
    if (watches_) watch_ = Watch(*watches_, from_.number(), WatchFor::Input, [this] { readUnasked(); });
    MiRecord answer;
    // What it would ask its user nobody answers.
    return result_First(run("-gdb-set confirm off", answer), run("-gdb-set pagination off", answer));
}

// The next line, taken apart; nothing when gdb is gone or said nothing in time.
std::optional<MiRecord> GdbSession::next(Wait wait, Clock::time_point until) {
    while (true) {
        if (const size_t end = in_.find('\n'); end != std::string::npos) {
            const std::string line = in_.substr(0, end);
            in_.erase(0, end + 1);
            return mi_Parse(line);
        }
        std::array<uint8_t, 4096> piece;
        const MovedBytes moved = pipe_Read(from_, piece);
        if (moved.what == Moved::Some) {
            in_.append(piece.begin(), piece.begin() + moved.bytes);
            continue;
        }
        if (moved.what != Moved::None) stop();
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
        if (moved.what != Moved::None || wait == Wait::No || left <= 0) return std::nullopt;
        pollfd entry{from_.number(), POLLIN, 0};
        ::poll(&entry, 1, static_cast<int>(left));
    }
}

void GdbSession::take(const MiRecord& record) {
    if (record.kind == MiRecord::Kind::Console) {
        said_ += record.rest;
        print_(record.rest);
    }
    if (record.kind != MiRecord::Kind::Async || record.name != "stopped") return;
    if (const auto reason = mi_Field(record, "reason"); reason && reason->starts_with("exited"))
        attached_ = 0;
}

void GdbSession::readUnasked() {
    while (from_.IsOpen()) {
        const auto record = next(Wait::No, Clock::now());
        if (!record) return;
        take(*record);
    }
}

Result GdbSession::run(const std::string& miCommand, MiRecord& answer) {
    readUnasked();
    if (!to_.IsOpen()) return Result::failure("gdb has ended");
    said_.clear();
    const std::string line = std::to_string(++token_) + miCommand + '\n';
    const MovedBytes moved = pipe_Write(to_, {reinterpret_cast<const uint8_t*>(line.data()), line.size()});
    if (moved.bytes != line.size()) return Result::failure("gdb takes no commands");
    const auto until = Clock::now() + patience;
    while (const auto record = next(Wait::Yes, until)) {
        take(*record);
        if (record->kind != MiRecord::Kind::Result || record->token != token_) continue;
        answer = *record;
        readUnasked();  // what came with it announces itself no more
        if (answer.name != "error") return {};
        return Result::failure(mi_Field(answer, "msg").value_or("gdb refused"), miCommand);
    }
    return Result::failure(to_.IsOpen() ? "gdb did not answer in time" : "gdb has ended", miCommand);
}

Result GdbSession::detach() {
    if (attached_ == 0) return {};
    attached_ = 0;
    program_.clear();
    MiRecord answer;
    return run("-target-detach", answer);
}

Result GdbSession::attach(int pid) {
    if (Result started = start(); !started) return started;
    if (attached_ == pid) return {};
    if (!lives(pid)) return Result::failure(gen_format("process %d has ended", pid));
    MiRecord answer;
    Result result = result_First(detach(), run(gen_format("-target-attach %d", pid), answer));
    if (result.ok()) attached_ = pid;
    return result;
}

Result GdbSession::load(const std::string& program) {
    if (program.empty()) return Result::failure("the process has ended, and no program file is named");
    if (program == program_) return {};
    MiRecord answer;
    Result loaded = result_First(detach(), run("-file-exec-and-symbols " + mi_Quote(program), answer));
    if (loaded.ok()) program_ = program;
    return loaded;
}

Result GdbSession::show(int pid, const std::string& program, uint64_t address, SourcePlace& place) {
    if (Result started = start(); !started) return started;
    Result ready = lives(pid) ? attach(pid) : Result::failure("");
    // A process that may not be watched is as good as one that has ended: its program file says the same.
    if (!ready && lives(pid)) gen_warning("%s", ready.text().c_str());
    if (!ready) ready = load(program);
    if (!ready) return ready;
    Result shown = command(gen_format("list *0x%llx", static_cast<unsigned long long>(address)));
    if (!shown) return shown;
    const auto found = gdb_PlaceOf(said_);
    if (!found)
        return Result::failure(gen_format("no source line is known for the address 0x%llx",
                                          static_cast<unsigned long long>(address)));
    place = *found;
    return {};
}

Result GdbSession::command(const std::string& text) {
    if (Result started = start(); !started) return started;
    MiRecord answer;
    return run("-interpreter-exec console " + mi_Quote(text), answer);
}
