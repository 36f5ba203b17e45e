#include "chronoweave/live/target_mask.h"

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

// From bit 0 on.
constexpr const char* bitNames[] = {
    "Status", "Interrupt",      "Send and Receive", "Create and Close", "User Event",    "Semaphore",
    "Clock",  "Connection",     "Address Space",    "Activity",         "Memory Region", "IO Device",
    "Task",   "Fatal Exception"};

}  // namespace

std::optional<uint32_t> mask_Of(std::string_view text) {
    const auto value = scan_number(text);
    return value ? std::optional(static_cast<uint32_t>(*value)) : std::nullopt;
}

std::vector<PopUpRow> mask_Rows(uint32_t mask) {
    std::vector<PopUpRow> rows = {{.text = "[ Keep Current Setting ]"}};
    for (size_t bit = 0; bit < std::size(bitNames); ++bit)
        rows.push_back({.text = bitNames[bit], .checked = (mask >> bit & 1) != 0});
    return rows;
}

std::string mask_Chosen(uint32_t mask, int row) {
    if (row > 0) mask ^= 1u << (row - 1);
    return gen_format("0x%08x", mask);
}
