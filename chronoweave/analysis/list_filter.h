// Filter lines of a dialog's lists: what is typed into the field "f_LIST" leaves the rows of LIST of which a
// cell fits (see find_Fits). What is selected is always shown; a row that is left alone is selected.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "windlib/dialog/model.h"

// Whether a row stays where this is typed; all do for blanks.
bool filter_Fits(const DialogRow& row, std::string_view typed);

class ListFilters {
  public:
    // The lists have their rows. Takes the model's onEdit; the model outlives it.
    ListFilters(DialogModel& model, const std::vector<std::string>& lists);
    ListFilters(const ListFilters&) = delete;
    ListFilters& operator=(const ListFilters&) = delete;

  private:
    struct Filtered {
        std::string list;
        std::vector<DialogRow> rows;  // all of them
    };
    void Filter(const Filtered& filtered, const std::string& typed);
    DialogModel& model_;
    std::vector<Filtered> lists_;
};
