// The event log mask of a target, as its field and its pull-down show it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "windlib/dialog/host.h"

// The number of the field, when the whole text is one.
std::optional<uint32_t> mask_Of(std::string_view text);
// The pull-down: the setting as it is, then a row a bit, with a check mark where it is set.
std::vector<PopUpRow> mask_Rows(uint32_t mask);
// The field's text when a row was chosen: the row's bit turned over. Row 0 has no bit.
std::string mask_Chosen(uint32_t mask, int row);
