// The small windows about one thing of the picture: a stretch in a status, an event, a context switch, an
// object. Each walks to the next or previous thing of a like kind and takes the canvas's cursor with it. Any
// number may be open; the canvas closes them with itself (viewWindows).
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/description.h"

// Makes double clicks and menus of the canvas open these windows (openDetail, openInfo). Does nothing where
// the canvas has no host.
void detail_Attach(_LaCanvasData& canvas);

// The window about an object of the canvas. Refused with a message when the object isn't there.
void detail_OpenTask(_LaCanvasData& canvas, uint32_t objectId);

// Their descriptions, with the canvas's word for an object. offerDebugger: an event's window has the choice
// to go to a debugger.
DialogDescription detail_StatusWindow(const std::string& term);
DialogDescription detail_EventWindow(const std::string& term, bool offerDebugger);
DialogDescription detail_SwitchWindow(const std::string& term);
DialogDescription detail_TaskWindow(const std::string& term);

// Choices of "gotos" in an event's window.
constexpr int gotoCanvas = 0, gotoDebugger = 1;
