// The windows of search results: rows that lead back to the canvas, their figures, and a histogram of their
// lengths. The rows of the last search are marked on the picture for as long as its window is open, and the
// canvas steps from one to the next.
#pragma once

#include <memory>

#include "chronoweave/analysis/trace_facts.h"
#include "windlib/dialog/description.h"

class SearchWindow;

// What the result windows of one canvas share.
struct SearchDesk {
    SearchWindow* last = nullptr;      // that of the last search, whose rows are marked
    SearchWindow* limiting = nullptr;  // that whose objects alone are shown
};

// Runs a search with progress, tells what came of it on the message line and opens a window with the rows, if
// there are any. The marks of the search before go in any case.
void search_RunAndShow(const std::shared_ptr<SearchDesk>& desk, const std::shared_ptr<TraceFacts>& facts,
                       SearchRequest request);
// Opens the window of a result with rows, without its messages.
void search_OpenResult(const std::shared_ptr<SearchDesk>& desk, const std::shared_ptr<TraceFacts>& facts,
                       SearchResult result);
// Shows the next or previous row of the last search, from the first cursor or the end of the view. False,
// with a beep and a message, when there is none.
bool search_StepHit(_LaCanvasData& canvas, SearchDesk& desk, bool forward);

// "SearchResult" or, with a histogram, "SearchIntervals": menu line, list "list", "t_stat", "t_lengths" and
// strip "histogram", check box "only_rows", button "quit".
DialogDescription search_ResultWindow(bool histogram);

// Takes a window into the canvas's list of windows and out of it.
void analysis_AddWindow(_LaCanvasData& canvas, DialogModel& model);
void analysis_RemoveWindow(_LaCanvasData& canvas, const DialogModel& model);
