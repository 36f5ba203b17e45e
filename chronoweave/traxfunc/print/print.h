// Printing as the user sees it: the job, its progress, and what is said about how it went.
#pragma once

#include "chronoweave/traxfunc/print/pages.h"
#include "windlib/dialog/print_host.h"

// Runs a job that prints the canvas through its host's printer, with the name "trvgui.ps"; listWidth is that
// of the names on screen, with the divider. 1 on success, 0 for what failed or was cancelled; the user was
// told.
int TRAX_Print(_LaCanvasData& canvas, int listWidth, PrintJob job, const TraxPrintOptions& options);
