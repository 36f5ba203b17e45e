#include "chronoweave/analysis/detail_windows.h"

#include "chronoweave/analysis/detail_walk.h"
#include "chronoweave/analysis/detail_window.h"
#include "chronoweave/analysis/object_tree.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr const char* noMore = "No more required object.";
constexpr const char* taskGone =
    "The task does not exist in the time range, please close the obsolete TASK window.";
constexpr const char* noMoreTasks =
    "There is no required object for the task in the time range, please close the obsolete TASK window.";

// A walk paints, and so runs with the surface open.
template <class Step>
auto paint_step(_LaCanvasData& canvas, const Step& step) {
    decltype(step()) found;
    laCanvas_Paint(canvas, [&] { found = step(); });
    return found;
}

bool is_next(const std::string& button) {
    return button.ends_with("next");
}

class StatusDetail : public DetailWindow {
  public:
    StatusDetail(_LaCanvasData& canvas, DialogModel& model, const DetailStatus& status)
        : DetailWindow(canvas, model), status_(status) {
        detail_FindEnds(canvas_, status_);
        Fill();
    }

    void Press(const std::string& name) override {
        if (name == "bt_go") return Go();
        if (name == "bt_task") return detail_OpenTask(canvas_, status_.object);
        detail_FindEnds(canvas_, status_);  // unless that was stopped
        const auto found = paint_step(
            canvas_, [&] { return detail_StepStatus(canvas_, status_, name[0] == 's', is_next(name)); });
        if (!found) return Refuse(noMore);
        status_ = *found;
        Say("");
        detail_FindEnds(canvas_, status_);
        Fill();
    }

  private:
    void Fill() {
        model_.setText("tf_status", text_utf8(Row().name));
        model_.setText("tf_taskid", ObjectText(status_.object));
        const LaStretch& ends = status_.ends;
        model_.setText("tf_ftime", EndText(ends.from, "began before ", "before "));
        model_.setText("tf_ttime", EndText(ends.to, "goes on at ", "after "));
        model_.setText("tf_length", (ends.whole() ? "" : "over ") + TimeText(ends.to.time - ends.from.time));
    }
    std::string EndText(const LaStretchEnd& end, const char* beyond, const char* notYet) const {
        const bool exact = end.known == LaEndKnown::Exact;
        return (exact ? "" : end.known == LaEndKnown::Beyond ? beyond : notYet) + TimeText(end.time);
    }
    void Go() {
        laCanvas_Paint(canvas_, [&] { detail_MoveCursor(canvas_, status_.ends.from.time, status_.object); });
        if (Row().visible)
            Say("");
        else
            Refuse("Status " + text_utf8(Row().name) + " is invisible.");
    }
    const LegendStatus& Row() const {
        return canvas_.looks.legend.statuses[static_cast<size_t>(status_.status)];
    }

    DetailStatus status_;
};

class EventDetail : public DetailWindow {
  public:
    EventDetail(_LaCanvasData& canvas, DialogModel& model, const DetailEvent& event)
        : DetailWindow(canvas, model), event_(event) {
        Fill();
        AskDebugger();
    }

    void Press(const std::string& name) override {
        if (name == "bt_go") return Go();
        if (name == "bt_task") return detail_OpenTask(canvas_, event_.object);
        const bool sameEvent = name[0] == 'e' || name[0] == 't',
                   sameObject = name[0] == 's' || name[0] == 't';
        const auto found = paint_step(
            canvas_, [&] { return detail_StepEvent(canvas_, event_, sameEvent, sameObject, is_next(name)); });
        if (!found) return Refuse(noMore);
        event_ = *found;
        Say("");
        Fill();
    }

  private:
    // The event as an icon; its place among the canvas's own may be gone.
    laItem_Bitmap Icon() const {
        return {event_.time,  laNoLane,    event_.sequence - canvas_.items.firstSequence,
                event_.event, event_.type, event_.subtype};
    }
    void Fill() {
        model_.setText("tf_name", text_utf8(laItem_EventName(canvas_, Icon())));
        model_.setText("tf_taskid", ObjectText(event_.object));
        model_.setText("tf_time", TimeText(event_.time));
        model_.setText("tf_comments", laItem_EventText(canvas_, Icon()));
        ShowDebuggerChoice();
    }
    std::optional<uint64_t> Address() const { return laDebugger_Address(laItem_EventData(canvas_, Icon())); }
    // The choice to go to the debugger is looked at anew for each event; a trace of ThreadX has none.
    void ShowDebuggerChoice() {
        if (canvas_.source.osKind == Os_ThreadX) return;
        const bool can = (can_.link && Address()) || can_.shows;
        model_.setChoiceEnabled("gotos", gotoDebugger, can);
        if (!can && model_.item("gotos").choice == gotoDebugger) model_.setChoice("gotos", gotoCanvas);
    }
    // The answer may come when the window is gone.
    void AskDebugger() {
        laDebugger* const debugger = laDebugger_Of(canvas_);
        if (!debugger) return;
        debugger->AskLater(canvas_, [this, here = std::weak_ptr<int>(here_)](const laDebuggerCan& can) {
            if (here.expired()) return;
            can_ = can;
            ShowDebuggerChoice();
        });
    }
    void GoToDebugger(laDebugger& debugger) {
        Say("");
        debugger.GotoLater(canvas_, {event_.object, event_.time, Address()},
                           [this, here = std::weak_ptr<int>(here_)](const std::string& problem) {
                               if (!here.expired()) Refuse(problem);
                           });
    }
    void Go() {
        laDebugger* const debugger = laDebugger_Of(canvas_);
        if (debugger && model_.item("gotos").choice == gotoDebugger) return GoToDebugger(*debugger);
        laCanvas_Paint(canvas_, [&] { detail_MoveCursor(canvas_, event_.time, event_.object); });
        const LegendEvent& row = canvas_.looks.legend.events[static_cast<size_t>(event_.event)];
        if (row.visibility() != 0)
            Say("");
        else
            Refuse("Event " + text_utf8(row.name) + " is invisible.");
    }

    DetailEvent event_;
    laDebuggerCan can_;
    std::shared_ptr<int> here_ = std::make_shared<int>();  // gone with the window
};

class SwitchDetail : public DetailWindow {
  public:
    SwitchDetail(_LaCanvasData& canvas, DialogModel& model, const DetailSwitch& line)
        : DetailWindow(canvas, model), switch_(line) {
        Fill();
    }

    void Press(const std::string& name) override {
        if (name == "bt_goto") return Go();
        const auto found =
            paint_step(canvas_, [&] { return detail_StepSwitch(canvas_, switch_, is_next(name)); });
        if (!found) return Refuse(noMore);
        switch_ = *found;
        Say("");
        Fill();
    }

  private:
    void Fill() {
        model_.setText("tf_ftaskid", ObjectText(switch_.fromObject));
        model_.setText("tf_ftime", TimeText(switch_.time));
        model_.setText("tf_ttaskid", ObjectText(switch_.toObject));
        model_.setText("tf_ttime", TimeText(switch_.time));
    }
    void Go() {
        laCanvas_Paint(canvas_, [&] { detail_MoveCursor(canvas_, switch_.time, switch_.fromObject); });
        const auto row = static_cast<size_t>(switch_.status);
        if (row < canvas_.looks.legend.statuses.size() && canvas_.looks.legend.statuses[row].visible)
            Say("");
        else
            Refuse("Context switch is invisible.");
    }

    DetailSwitch switch_;
};

class ObjectDetail : public DetailWindow {
  public:
    ObjectDetail(_LaCanvasData& canvas, DialogModel& model, uint32_t object)
        : DetailWindow(canvas, model), object_(object) {
        Fill();
    }

    void Press(const std::string& name) override {
        uint32_t at = laNoLane;
        if (!laCanvas_FindLane(canvas_.items, object_, &at)) return Refuse(taskGone);
        const uint32_t next = Neighbour(at, name[0] == 'N');
        if (next == laNoLane) {
            Enable(at);
            return Refuse(noMoreTasks);
        }
        object_ = canvas_.items.lanes[next].objectId;
        Say("");
        Fill();
    }

  private:
    uint32_t Neighbour(uint32_t at, bool forward) const {
        while (forward ? at + 1 < canvas_.items.lanes.size() : at > 0) {
            at = forward ? at + 1 : at - 1;
            if (!canvas_.items.lanes[at].isAgent) return at;
        }
        return laNoLane;
    }
    void Enable(uint32_t at) {
        model_.setEnabled("Prev", Neighbour(at, false) != laNoLane);
        model_.setEnabled("Next", Neighbour(at, true) != laNoLane);
    }
    void Fill() {
        uint32_t at = laNoLane;
        const laItem_Line* lane = laCanvas_FindLane(canvas_.items, object_, &at);
        if (!lane) return;
        model_.setText("tf_id", gen_format("0x%x", object_));
        model_.setText("tf_name", lane->hasName ? text_utf8(laTask_WithoutFake(lane->name))
                                                : canvas_.list.objectTerm + gen_format(" 0x%x", object_));
        model_.setText("tf_priority", object_PriorityText(lane->priority));
        model_.setTitle(canvas_.list.objectTerm + " " + model_.item("tf_name").text);
        Enable(at);
    }

    uint32_t object_;
};

// Windows of a kind are numbered as long as the program runs.
std::string numbered(const char* kind, int& number, const _LaCanvasData& canvas) {
    return kind + std::string("-W ") + std::to_string(number++) + " for '" +
           detail_CanvasTitle(canvas, "No_Name") + "'";
}

void open_detail(_LaCanvasData& canvas, const laItemRef& item) {
    static int statuses = 1, events = 1, switches = 1;
    if (canvas.calls.host == nullptr) return;
    const std::string& term = canvas.list.objectTerm;
    switch (item.itype) {
        case laItemType::Line:
            detail_Open<StatusDetail>(canvas, detail_StatusWindow(term), numbered("S", statuses, canvas),
                                      detail_StatusOf(canvas, item));
            return;
        case laItemType::Bitmap:
            detail_Open<EventDetail>(canvas, detail_EventWindow(term, canvas.source.osKind != Os_ThreadX),
                                     numbered("E", events, canvas), detail_EventOf(canvas, item.index));
            return;
        case laItemType::Ctx:
            detail_Open<SwitchDetail>(canvas, detail_SwitchWindow(term), numbered("CS", switches, canvas),
                                      detail_SwitchOf(canvas, item.index));
            return;
        case laItemType::None:
            return;
    }
}

}  // namespace

void detail_OpenTask(_LaCanvasData& canvas, uint32_t objectId) {
    if (canvas.calls.host == nullptr) return;
    const laItem_Line* lane = laCanvas_FindLane(canvas.items, objectId);
    if (lane == nullptr || lane->isAgent) return laCanvas_Refuse(canvas, taskGone);
    detail_Open<ObjectDetail>(canvas, detail_TaskWindow(canvas.list.objectTerm), canvas.list.objectTerm,
                              objectId);
}

void detail_Attach(_LaCanvasData& canvas) {
    canvas.calls.openDetail = [&canvas](const laItemRef& item) { open_detail(canvas, item); };
    canvas.calls.openInfo = [&canvas](uint32_t objectId) {
        object_OpenInfo(canvas, objectId, detail_OpenTask);
    };
}
