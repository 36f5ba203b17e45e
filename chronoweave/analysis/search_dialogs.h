// The dialogs of searches: which objects, what kind of thing and when, and the thing itself. Each runs to its
// end through the canvas's host. The dialogs for objects, kind and thing also serve the reports.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "chronoweave/analysis/canvas_facts.h"
#include "chronoweave/engine/search.h"
#include "windlib/dialog/description.h"

// What a search begins with: as the dialogs are filled when they come up. Rows are of the legend's tables.
struct SearchSeed {
    std::optional<int> kind;        // SearchKind, which Enter chooses
    std::optional<TimeSpan> range;  // else the whole trace
    std::vector<uint32_t> objects;  // chosen at first; none: as without a seed
    std::vector<int32_t> events, statuses;
};

// The whole chain of a search. None when the user cancelled at any step, or when there is nothing to choose
// from, which the message line tells.
std::optional<SearchRequest> search_Ask(CanvasFacts& facts, const SearchSeed& seed = {});
// The one dialog of an interval search. None when cancelled, or without events (silently) or objects to
// choose.
std::optional<SearchRequest> search_AskInterval(CanvasFacts& facts, const SearchSeed& seed = {});

// The steps; false when cancelled. The objects and the period in which they are alive:
bool search_AskObjects(CanvasFacts& facts, SearchRequest& request, const SearchSeed& seed = {});
// The kind and the range. With Search_OfferPattern the pattern is among them; with asReport the range must be
// one that a report can cover.
bool search_AskKind(CanvasFacts& facts, SearchRequest& request, bool asReport = false,
                    const SearchSeed& seed = {});
// The event or status; nothing is asked for a context switch.
bool search_AskTarget(CanvasFacts& facts, SearchRequest& request, const SearchSeed& seed = {});
bool search_AskPattern(CanvasFacts& facts, SearchRequest& request, const SearchSeed& seed = {});

// "SelectObjects" and "SelectOneObject": "t_prompt", "f_list", of several "all_rows", "list", "t_period",
// "t_from", "tf_from", "t_to", "tf_to", "r_view", "r_selection", "r_all", message line, "ok", "cancel".
DialogDescription search_ObjectsDialog(bool several);
// "SelectObjectType": buttons "event", "event_pattern", "ctx_switch", "status", the range as above, "cancel".
// chosen: the button that Enter presses.
DialogDescription search_KindDialog(bool pattern, std::string_view chosen = "event");
// "SelectOneLegend": "t_prompt", "f_list", "list", "ok", "cancel".
DialogDescription search_ChoiceDialog();
// "DefinePattern": lists "begin", "begin_objects", "end", "end_objects", each with a filter, check box
// "same", "ok", "cancel".
DialogDescription search_PatternDialog();
// "SearchInterval": pull-downs "begin", "end", lists "begin_objects", "end_objects", "tf_from", "tf_to".
DialogDescription search_IntervalDialog();
