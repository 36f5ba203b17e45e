#include "chronoweave/traxfunc/input/debugger.h"

#include <charconv>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/hit.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/list/task_list.h"

namespace {

// The place of an object and a time, or of an event, with the address that this tells.
laDebuggerPlace place_at(_LaCanvasData& canvas, uint32_t objectId, double time, std::optional<size_t> event) {
    laDebuggerPlace place{objectId, time, {}};
    if (event && *event < canvas.items.bitmaps.size()) {
        const laItem_Bitmap icon = canvas.items.bitmaps[static_cast<uint32_t>(*event)];
        place.time = icon.time;
        place.pc = laDebugger_Address(laItem_EventData(canvas, icon));
    }
    return place;
}

// Where the menu was called up.
laDebuggerPlace place_of(_LaCanvasData& canvas) {
    const LaPlace& clicked = canvas.hand.place;
    return place_at(canvas, clicked.objectId, clicked.time, clicked.icon);
}

// The objects of the selected rows that can be attached to. Taken beforehand: the calls serve other programs.
std::vector<uint32_t> selected_tasks(const _LaCanvasData& canvas) {
    std::vector<uint32_t> tasks;
    for (const MslObjectEntry* entry : canvas.taskList->SelectedEntries())
        if (entry->payload < canvas.items.lanes.size() &&
            laDebugger_IsTask(canvas.items.lanes[entry->payload]))
            tasks.push_back(canvas.items.lanes[entry->payload].objectId);
    return tasks;
}

using Step = bool (laDebugger::*)(const _LaCanvasData& canvas, uint32_t objectId);

bool for_selected(const _LaCanvasData& canvas, laDebugger& debugger, Step step) {
    const laDebuggerWatch watch(canvas);
    for (const uint32_t task : selected_tasks(canvas))
        if (!watch.holds() || !(debugger.*step)(canvas, task)) return false;
    return true;
}

// The debugger has beeped where it did not take the command; here it is said in words. The canvas, and with
// it the command, may be gone when that is over.
bool run_told(_LaCanvasData& canvas, const std::function<bool()>& command) {
    const laDebuggerWatch watch(canvas);
    const bool taken = command();
    if (!taken && watch.holds()) laCanvas_UpdateFields(canvas, 0, "The debugger did not take the command.");
    return taken;
}

}  // namespace

void laDebugger_Set(_LaCanvasData& canvas, laDebugger* debugger) {
    canvas.calls.upper.debugger =
        debugger ? std::make_shared<laDebuggerSeat>(laDebuggerSeat{*debugger}) : nullptr;
}

laDebugger* laDebugger_Of(const _LaCanvasData& canvas) {
    const auto& seat = canvas.calls.upper.debugger;
    return seat ? &seat->debugger : nullptr;
}

std::optional<uint64_t> laDebugger_Address(std::string_view text) {
    constexpr std::string_view marker = "PC=", prefix = "0x";
    const size_t at = text.find(marker);
    if (at == text.npos) return std::nullopt;
    text.remove_prefix(at + marker.size());
    const bool hexadecimal = text.starts_with(prefix);
    if (hexadecimal) text.remove_prefix(prefix.size());
    uint64_t address = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), address, hexadecimal ? 16 : 10);
    if (error != std::errc()) return std::nullopt;
    return address;
}

bool laDebugger_IsTask(const laItem_Line& lane) {
    constexpr uint32_t none = 0xFFFFFFFF;
    const bool fake = lane.hasName && laTask_WithoutFake(lane.name) != lane.name;
    return !lane.isAgent && lane.objectId != 0 && lane.objectId != none && !fake;
}

void laDebugger_Point(_LaCanvasData& canvas, int x, int y) {
    laDebugger* const debugger = laDebugger_Of(canvas);
    if (!debugger) return;
    laHit hit;
    laCanvas_HitTest(canvas, x, y, false, &hit);
    debugger->PointLater(canvas,
                         place_at(canvas, laHit_Object(canvas, hit).value_or(laAgentId), hit.time, hit.icon));
}

void laDebugger_Attach(_LaCanvasData& canvas, laDebugger& debugger) {
    const auto add = [&](const char* name, auto command) {
        canvas.calls.upper.commands[name] = [&canvas, &debugger, command](const std::string&) {
            return run_told(canvas, [&canvas, &debugger, command] { return command(canvas, debugger); });
        };
    };
    using Canvas = _LaCanvasData;
    add(laDebugger_AttachHere,
        [](Canvas& from, laDebugger& to) { return to.Attach(from, from.hand.place.objectId); });
    add(laDebugger_ShowHere, [](Canvas& from, laDebugger& to) { return to.Show(from, place_of(from)); });
    add(laDebugger_PastHere, [](Canvas& from, laDebugger& to) { return to.ShowPast(from, place_of(from)); });
    add(laDebugger_AttachSelected,
        [](Canvas& from, laDebugger& to) { return for_selected(from, to, &laDebugger::Attach); });
    add(laDebugger_PastSelected,
        [](Canvas& from, laDebugger& to) { return for_selected(from, to, &laDebugger::Rewindscope); });
}
