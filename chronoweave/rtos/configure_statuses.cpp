// Status lines and the lines that link a status with a context switch.
#include <algorithm>

#include "chronoweave/rtos/configure_messages.h"
#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/text.h"

namespace messages = configure_messages;

namespace {

// A line of no limit still has one: sums of pixels must stay far from the end of 32 bits.
constexpr uint32_t mostThickness = 1u << 24;

constexpr const char* contextSwitchName = "Context Switch";

uint16_t channel(uint64_t rgb, int shift) {
    return static_cast<uint16_t>(((rgb >> shift) & 0xFF) << 8);
}

}  // namespace

void ConfigureReader::AddStatus(ConfigureStatus status) {
    statusRows_.try_emplace(status.code, static_cast<int32_t>(statuses_.size()));
    statuses_.push_back(std::move(status));
}

bool ConfigureReader::StatusLine(FieldCursor fields) {
    ConfigureStatus status;
    std::string_view field;
    if (!fields.NextFilled(field)) return Fail(messages::StatusInformation);
    const auto code = scan_number(field);
    if (!code) return Fail(messages::StatusCode);
    status.code = static_cast<uint16_t>(*code);
    if (!fields.NextFilled(field) || !StatusName(field, status)) return Fail(messages::StatusName);
    return StatusOptions(fields, status);
}

bool ConfigureReader::StatusName(std::string_view field, ConfigureStatus& status) {
    std::string_view name = field;
    if (text_starts_nocase(field, "TRV_Execution")) {
        status.isExecution = true;
        name = configure_BehindEquals(field);
    } else if (text_starts_nocase(field, "TRV_Context_Switch")) {
        status.isContextSwitch = true;
        name = configure_BehindEquals(field);
        if (name.empty()) name = contextSwitchName;
    } else if (text_equal_nocase(field, contextSwitchName) || text_equal_nocase(field, "Context_Switch")) {
        status.isContextSwitch = true;
        name = contextSwitchName;
    }
    status.name = name;
    return !name.empty();
}

// The fields behind the name, each of which may end the line. The status is counted unless one can't be read.
bool ConfigureReader::StatusOptions(FieldCursor& fields, ConfigureStatus& status) {
    const auto counted = [&] {
        AddStatus(std::move(status));
        return true;
    };
    std::string_view field;
    if (!fields.Next(field)) return Fail(messages::StatusColor);
    if (field.empty()) return counted();
    const auto rgb = scan_number(field);
    if (!rgb) return Fail(messages::StatusColor);
    status.red = channel(*rgb, 16);
    status.green = channel(*rgb, 8);
    status.blue = channel(*rgb, 0);

    if (!fields.Next(field)) return Fail(messages::StatusStyle);
    if (field.empty()) return counted();
    status.lineStyle = callbacks_.lineStyle(field);

    if (!fields.Next(field)) return Fail(messages::StatusThickness);
    if (field.empty()) return counted();
    if (const auto thickness = configure_ScanLeadingNumber(field)) {
        const uint32_t most =
            largestThickness_ < 1 ? mostThickness : static_cast<uint32_t>(largestThickness_);
        status.thickness = static_cast<int32_t>(std::min(*thickness, most));
    }

    if (!fields.Next(field)) return Fail(messages::StatusVisibility);
    if (field.empty()) return counted();
    const auto visible = configure_ScanVisibility(field);
    status.visible = visible.value_or(true);
    counted();
    return visible ? Clean(fields) : Fail(messages::UnknownItem, field);
}

bool ConfigureReader::LinkLine(FieldCursor fields) {
    std::string_view field;
    const auto number = [&]() { return fields.NextFilled(field) ? scan_number(field) : std::nullopt; };
    const auto statusCode = number();
    if (!statusCode) return Fail(messages::LinkStatus);
    const auto switchCode = number();
    if (!switchCode) return Fail(messages::LinkSwitch);
    if (!Clean(fields)) return false;

    const auto row = [&](uint64_t code) {
        const auto found = statusRows_.find(static_cast<uint16_t>(code));
        return found == statusRows_.end() ? -1 : found->second;
    };
    const auto shown = [](uint64_t code) { return std::to_string(static_cast<int32_t>(code)); };
    const int32_t status = row(*statusCode);
    if (status < 0) return Fail(messages::LinkNoStatus, shown(*statusCode));
    const int32_t contextSwitch = row(*switchCode);
    if (contextSwitch < 0) return Fail(messages::LinkNoSwitch, shown(*switchCode));
    if (!statuses_[static_cast<size_t>(contextSwitch)].isContextSwitch)
        Fail(messages::LinkPlainStatus, shown(*switchCode));
    statuses_[static_cast<size_t>(status)].contextSwitchLink = contextSwitch;
    return true;
}
