// Tables of windows on paper: their rows as they stand, page by page, the titles of the columns on each.
#pragma once

#include <string>
#include <vector>

#include "shared/libcxxutil/progress.h"
#include "windlib/lagraph/page.h"
#include "windlib/msl/scroll_list.h"

enum class TablePrinted {
    Done,
    Stopped,       // behind pages that are whole
    StoppedAhead,  // of all pages
    Failed,
};

// Each list begins on a page of its own; one without rows is left out, but for the first. What has no room in
// its column ends in "…"; columns of numbers end at the right. progress is told in rows of all lists, and may
// stop at the next page.
TablePrinted table_DrawPages(PageDevice& page, const std::string& title,
                             const std::vector<const MScrollList*>& lists, const Progress& progress);
