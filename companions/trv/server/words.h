// The words of a command: divided by blanks, kept together by double quotes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "shared/libcxxutil/result.h"

// Takes the first word off the text, with the blanks around it. Within double quotes a backslash stands
// before a quote or a backslash that is meant. A quote that is not closed goes to the end. Empty when there
// is none.
std::string words_TakeFirst(std::string_view& text);
// All of them. Refused when a quote is not closed.
Result words_Split(std::string_view text, std::vector<std::string>& words);
