// The windows of search results: rows that lead back to the canvas, their figures, and a histogram of their
// lengths. The rows of the last search are marked on the picture, and the canvas steps from one to the next.
// When its window closes, or an older one is worked with, it is that one's turn.
#pragma once

#include <memory>
#include <vector>

#include "chronoweave/analysis/canvas_facts.h"
#include "chronoweave/analysis/histogram.h"
#include "chronoweave/analysis/hit_desk.h"
#include "windlib/dialog/description.h"

class SearchWindow;

// What the result windows of one canvas share.
struct SearchDesk {
    HitDesk hits;
    SearchWindow* limiting = nullptr;               // that whose objects alone are shown
    HistogramScale scale = HistogramScale::Linear;  // as chosen last
};

// Runs a search with progress, tells what came of it on the message line and opens a window with the rows, if
// there are any; the marks are theirs then.
void search_RunAndShow(const std::shared_ptr<SearchDesk>& desk, const std::shared_ptr<CanvasFacts>& facts,
                       SearchRequest request);
// Opens the window of a result with rows, without its messages.
void search_OpenResult(const std::shared_ptr<SearchDesk>& desk, const std::shared_ptr<CanvasFacts>& facts,
                       SearchResult result);
// Shows the next or previous row of the result worked with last, from the first cursor or the end of the
// view. False, with a beep and a message, when there is none.
bool search_StepHit(_LaCanvasData& canvas, SearchDesk& desk, bool forward);

// "SearchResult" or, with a histogram, "SearchIntervals": menu line, list "list", "t_stat", "t_lengths" and
// strip "histogram" with the check box "log_lengths", check box "only_rows", button "quit". letters: the
// width at first.
constexpr int search_LeastLetters = 88;
DialogDescription search_ResultWindow(bool histogram, int letters = search_LeastLetters);
// The width at which a result's window shows its columns whole, in letters; of very many rows a thousand are
// looked at. Not below search_LeastLetters, and not above what a screen has.
int search_OpeningLetters(const AnalysisWords& words, const SearchResult& result);
