#include "companions/gdb_link/gdb_client.h"

#include <charconv>

#include "companions/gdb_link/recorded_process.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int processorBits = 10;
// It listens, shows positions and takes commands.
constexpr uint32_t abilities = 7;

}  // namespace

int gdb_ProcessOf(uint32_t object) {
    return static_cast<int>(object >> processorBits);
}

std::optional<uint32_t> gdb_AttachedObject(const std::string& command) {
    constexpr std::string_view word = "attach 0x";
    if (!command.starts_with(word)) return std::nullopt;
    uint32_t object = 0;
    const char* const end = command.data() + command.size();
    const auto parsed = std::from_chars(command.data() + word.size(), end, object, 16);
    if (parsed.ec != std::errc() || (parsed.ptr != end && *parsed.ptr != ';')) return std::nullopt;
    return object;
}

GdbClient::GdbClient(GdbSession& gdb, std::string program, EventTasks& tasks,
                     std::function<void(const std::string& line)> say, std::function<void()> shown)
    : gdb_(gdb),
      program_(std::move(program)),
      tasks_(tasks),
      say_(std::move(say)),
      shown_(std::move(shown)) {}

GdbClient::~GdbClient() {
    if (task_) tasks_.Remove(*task_);
}

// gdb takes its time; the window that asked is answered at once.
void GdbClient::later(std::function<void()> work) {
    work_.push_back(std::move(work));
    if (task_) return;
    task_ = tasks_.Once(std::chrono::milliseconds(0), EventTasks::Clock::now(), [this] {
        task_.reset();
        for (; !work_.empty(); work_.pop_front()) work_.front()();
        return true;
    });
}

TRA_CheckAbility_Reply GdbClient::CheckAbility(const TRA_CheckAbility_Request&) {
    return {.powerMmask = abilities};
}

void GdbClient::RunCmdInDebugger(const TRA_RunCmdInDebugger_Request& request) {
    later([this, request] { runCommand(request.dataFile, request.multiCmd); });
}

TRA_ShowPositionInDebugger_Reply GdbClient::ShowPositionInDebugger(
    const TRA_ShowPositionInDebugger_Request& request) {
    later([this, request] { show(request.dataFile, request.oid, request.pc); });
    return {};
}

void GdbClient::show(const std::string& trace, uint32_t object, uint64_t address) {
    if (address == 0) return say_("This event has no program counter (\"PC=...\").");
    constexpr int ended = 0;
    const int pid = gdb_ProcessOf(object);
    SourcePlace place;
    if (const Result shown = gdb_.show(recorded_MayBe(pid, trace) ? pid : ended, program_, address, place);
        !shown)
        return say_(shown.text());
    shown_();
    say_(gen_format("0x%llx: %s (%s:%d)", static_cast<unsigned long long>(address), place.function.c_str(),
                    place.file.c_str(), place.line));
}

void GdbClient::runCommand(const std::string& trace, const std::string& command) {
    const auto object = gdb_AttachedObject(command);
    if (!object) return say_("Not known here: " + text_printable(command));
    const int pid = gdb_ProcessOf(*object);
    if (!recorded_MayBe(pid, trace))
        return say_(
            gen_format("Process %d began after the recording: its number is another program's now.", pid));
    const Result attached = gdb_.attach(pid);
    say_(attached.ok() ? gen_format("Attached to process %d.", pid) : attached.text());
}
