// Dialogs at work: the canvas's own dialog logic tied to the items of a description, so that a window and a
// test drive the same thing. The canvas must outlive the model.
#pragma once

#include <memory>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/model.h"

// Each gives a model ready to be shown; null when the canvas refused, which the user was told.
std::unique_ptr<DialogModel> dialogs_OpenHide(_LaCanvasData& canvas);
std::unique_ptr<DialogModel> dialogs_OpenTimeUnit(_LaCanvasData& canvas);
std::unique_ptr<DialogModel> dialogs_OpenGoto(_LaCanvasData& canvas);
