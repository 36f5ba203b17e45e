// Items that many of the analyzer's dialogs have.
#pragma once

#include <string>
#include <vector>

#include "windlib/dialog/description.h"

// The text beside an item, which its shortcut leads to; empty: none.
DialogItem item_Label(std::string name, std::string text, std::string leadsTo = {});
// A button for an answer: pressed by Enter, by Escape.
DialogItem item_Ok(std::string name = "ok", std::string text = "OK");
DialogItem item_Cancel(std::string name = "cancel", std::string text = "Cancel");
DialogItem item_Close(std::string name = "close", std::string text = "Close");
// The message line, "ts_info".
DialogItem item_Message();
// A range of times: fields "tf_from" and "tf_to" with their labels "t_from" and "t_to", and buttons that fill
// them: "r_view", "r_selection", "r_all".
std::vector<DialogItem> items_Range();
std::vector<DialogItem> items_RangeButtons();
// The filter line "f_LIST" of a list (see list_filter.h).
DialogItem item_Filter(const std::string& list);
// Puts more items behind those that there are.
void items_Add(std::vector<DialogItem>& items, const std::vector<DialogItem>& more);
