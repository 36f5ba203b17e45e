#include "chronoweave/analysis/canvas_windows.h"

#include <vector>

namespace {

void note(_LaCanvasData& canvas, CanvasWindow kind, DialogModel& model) {
    switch (kind) {
        case CanvasWindow::View:
            canvas.calls.viewWindows.push_back(&model);
            return;
        case CanvasWindow::Legend:
            canvas.calls.legendWindow = &model;
            return;
    }
}

void forget(_LaCanvasData& canvas, const DialogModel& model) {
    std::erase(canvas.calls.viewWindows, &model);
    if (canvas.calls.legendWindow == &model) canvas.calls.legendWindow = nullptr;
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

}  // namespace

void analysis_OpenWindow(_LaCanvasData& canvas, CanvasWindow kind, std::unique_ptr<DialogModel> made,
                         std::function<void()> closed) {
    DialogModel& model = *made;
    model.onClose = [&canvas, &model, closed = std::move(closed)](int) {
        if (closed) closed();
        forget(canvas, model);
    };
    note(canvas, kind, model);
    canvas.calls.host->open(std::move(made));
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}
