#include "chronoweave/traxfunc/input/scroll.h"

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/view.h"

void laCanvas_HorizontalScrolled(_LaCanvasData& canvas) {
    const double low = laCanvas_AbsoluteTime(canvas.view, canvas.graph->horizontal.position());
    if (!laCanvas_ShowRange(canvas, low, low + canvas.view.viewLength, {.keepLength = true}))
        canvas.graph->horizontal.setPosition(canvas.view.scrollPosition);
    laScroll_Paint(canvas);
    if (!canvas.hand.heldView && canvas.hand.dragStartView < 0) laHistory_Add(canvas);
}

void laScroll_Hold(_LaCanvasData& canvas) {
    canvas.hand.heldView = gate_Begin(GateWork::HeldDrawing);
}

void laScroll_Release(_LaCanvasData& canvas) {
    if (!canvas.hand.heldView) return;
    canvas.hand.heldView.reset();
    laHistory_Add(canvas);
}

void laCanvas_VerticalScrolled(_LaCanvasData& canvas) {
    canvas.view.verticalOffset = static_cast<int>(canvas.graph->vertical.position());
    laScroll_Paint(canvas);
}
