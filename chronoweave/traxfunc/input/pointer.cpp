#include "chronoweave/traxfunc/input/pointer.h"

#include <algorithm>
#include <cstdlib>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/input/crowd.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "chronoweave/traxfunc/input/hit.h"
#include "chronoweave/traxfunc/input/processor_hit.h"
#include "chronoweave/traxfunc/input/view.h"

namespace {

constexpr int still = 2;  // pixels that the pointer may move with its tip
constexpr int noCursor = -100;

bool inside(const _LaCanvasData& canvas, const laPointerEvent& event) {
    return event.x >= 0 && event.x < canvas.graph->width && event.y >= 0 && event.y < canvas.graph->height;
}

}  // namespace

std::string laPointer_Tip(_LaCanvasData& canvas, int x, int y) {
    if (y >= laAxis_Top(*canvas.graph)) return {};
    canvas.hand.tipItem.reset();
    if (const auto processor = laProcessor_HitTest(canvas, x, y)) return laProcessor_Tip(canvas, *processor);
    if (const auto crowd = laCrowd_At(canvas, x, y)) return laCrowd_Tip(canvas, *crowd);
    canvas.hand.hoverPass = true;
    canvas.hand.hoverText.clear();
    laCanvas_HitTest(canvas, x, y, true, nullptr);
    canvas.hand.hoverPass = false;
    return std::exchange(canvas.hand.hoverText, {});
}

void laPointer::Press(const laPointerEvent& event) {
    if (!canvas_.source.storeHasEvents || !inside(canvas_, event)) return;
    last_ = event;
    if (event.button == laButton_Left) PressLeft(event);
    if (event.button == laButton_Right) PressRight(event);
}

void laPointer::PressLeft(const laPointerEvent& event) {
    if (event.modifiers & laModifier_Shift) {
        canvas_.marks.pendingCursorX = event.x;
        laCanvas_RepaintColumns(canvas_, event.x, event.x + 1);
        laCanvas_UpdateFields(canvas_, 0, laCanvas_ColumnText(canvas_, event.x).c_str());
        return;
    }
    if (event.clicks >= 2) {
        if (drag_) EndDrag();
        if (const auto processor = laProcessor_HitTest(canvas_, event.x, event.y))
            laProcessor_SelectObject(canvas_, *processor);
        else if (const auto crowd = laCrowd_At(canvas_, event.x, event.y))
            laCrowd_Part(canvas_, *crowd);
        else if (event.y < laAxis_Top(*canvas_.graph))
            laCanvas_HitTest(canvas_, event.x, event.y, true, nullptr);
        return;
    }
    pressX_ = event.x;
    pressY_ = event.y;
    ShowTip(event);
    laCanvas_BeginDrag(canvas_, event.x, event.y, event.modifiers & laModifier_Alt);
    drag_ = gate_Begin(GateWork::DraggedCursor);
    if (!canvas_.calls.iconPressed || event.y >= laAxis_Top(*canvas_.graph)) return;
    if (const auto icon = laCanvas_IconAt(canvas_, event.x, event.y)) canvas_.calls.iconPressed(*icon);
}

void laPointer::ShowTip(const laPointerEvent& event) {
    const std::string text = laPointer_Tip(canvas_, event.x, event.y);
    tip_ = !text.empty();
    if (canvas_.graph->showTip) canvas_.graph->showTip(text);
}

void laPointer::PressRight(const laPointerEvent& event) {
    if (drag_) EndDrag();
    const bool first = event.modifiers & laModifier_Shift, second = event.modifiers & laModifier_Control;
    if (!first && !second) return;
    const double time = canvas_.marks.cursor[first ? 0 : 1];
    if (time < 0)
        laCanvas_Beep(canvas_);
    else
        laCanvas_GoTo(canvas_, time, laAgentId);
}

void laPointer::Move(const laPointerEvent& event) {
    last_ = event;
    if (tip_ && (std::abs(event.x - pressX_) > still || std::abs(event.y - pressY_) > still)) {
        tip_ = false;
        if (canvas_.graph->showTip) canvas_.graph->showTip({});
    }
    if (drag_) laCanvas_DragTo(canvas_, event.x, event.y, event.modifiers & laModifier_Alt);
}

void laPointer::Scrolled() {
    if (drag_) laCanvas_DragTo(canvas_, last_.x, last_.y, true);
}

bool laPointer::Release(const laPointerEvent& event) {
    if (canvas_.marks.pendingCursorX != noCursor) {
        const int x = std::exchange(canvas_.marks.pendingCursorX, noCursor);
        laCanvas_EraseCursor(canvas_, x);
    } else if (drag_ && event.button == laButton_Left) {
        // A release where the press was selects nothing between.
        const bool selects = event.x != pressX_ || canvas_.marks.cursor[1] >= 0;
        if (selects) laCanvas_DragTo(canvas_, event.x, event.y, event.modifiers & laModifier_Alt);
        EndDrag();
        if (!selects) laDebugger_Point(canvas_, event.x, event.y);
    }
    return event.button == laButton_Right && canvas_.source.storeHasEvents && inside(canvas_, event) &&
           (event.modifiers & (laModifier_Shift | laModifier_Control)) == 0;
}

void laPointer::EndDrag() {
    drag_.reset();
    laCanvas_EndDrag(canvas_);
}

void laPointer::Cancel() {
    if (drag_) EndDrag();
    if (canvas_.marks.pendingCursorX != noCursor)
        laCanvas_EraseCursor(canvas_, std::exchange(canvas_.marks.pendingCursorX, noCursor));
}
