// From the records of a file to the legend: the rows that every legend must have, icons, links and look-ups.
#include <algorithm>

#include "chronoweave/rtos/configure_messages.h"
#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/icons.h"

namespace messages = configure_messages;

namespace {

constexpr const char* unknownName = "Unknown";
constexpr const char* helpIcon = "help";

}  // namespace

bool ConfigureReader::Finish(Legend& legend, const std::string& osName, int errors) {
    if (statuses_.empty() || events_.empty()) {
        callbacks_.attention();
        callbacks_.errorDialog(path_.empty() ? configure_Fill(messages::CantReadForRtos, {osName})
                                             : configure_Fill(messages::CantRead, {path_}));
        return false;
    }
    AddMissingRows();
    CheckIcons(true);
    legend.statuses = std::move(statuses_);
    legend.events = std::move(events_);
    legend.misc = misc_;
    legend.path = path_;
    legend.osName = osName;
    legend.BuildLookups();
    legend.RollUpCategories();
    if (errors > 0) {
        const std::string count = std::to_string(errors);
        callbacks_.message(errors == 1 ? configure_Fill(messages::OneErrorIgnored, {count, path_})
                                       : configure_Fill(messages::ErrorsIgnored, {count, osName}));
        callbacks_.attention();
    }
    return true;
}

void ConfigureReader::AddMissingRows() {
    const auto unknown = [](const auto& row) { return text_equal_nocase(row.name, unknownName); };
    if (std::none_of(statuses_.begin(), statuses_.end(), unknown)) {
        ConfigureStatus status;
        status.name = unknownName;
        statuses_.push_back(std::move(status));
    }
    const auto unknownEvent = [&](const ConfigureEvent& event) {
        return !event.IsCategory() && unknown(event);
    };
    if (std::none_of(events_.begin(), events_.end(), unknownEvent)) {
        ConfigureEvent event;
        event.type = event.subtype = 0xFFFF;
        event.name = unknownName;
        event.iconName = helpIcon;
        event.flags = 0;
        // As it will read back once the legend has been written: behind the last category, and so in it.
        event.category = events_.back().category;
        events_.push_back(std::move(event));
        eventLines_.push_back(0);
        eventNames_.push_back(nullptr);
    }
    auto contextSwitch = std::find_if(statuses_.begin(), statuses_.end(),
                                      [](const ConfigureStatus& status) { return status.isContextSwitch; });
    if (contextSwitch == statuses_.end()) {
        ConfigureStatus status;
        status.name = "Context Switch";
        status.lineStyle = Line_Dot;
        status.isContextSwitch = true;
        contextSwitch = statuses_.insert(statuses_.end(), std::move(status));
    }
    LinkExecution(static_cast<int32_t>(contextSwitch - statuses_.begin()));
}

void ConfigureReader::LinkExecution(int32_t contextSwitch) {
    bool anyExecution = false;
    for (ConfigureStatus& status : statuses_) {
        anyExecution = anyExecution || status.isExecution;
        if (status.isExecution && status.contextSwitchLink < 0) status.contextSwitchLink = contextSwitch;
    }
    if (anyExecution) return;
    const auto running =
        std::find_if(statuses_.rbegin(), statuses_.rend(), [](const ConfigureStatus& status) {
            return text_equal_nocase(status.name, "running") || text_equal_nocase(status.name, "executing");
        });
    if (running == statuses_.rend()) return;
    running->isExecution = true;
    running->contextSwitchLink = contextSwitch;
}

void ConfigureReader::CheckIcons(bool apply) {
    const int line = line_;
    if (!misc_.overlapIcon.empty() && icon_Find(misc_.overlapIcon) == NoIcon) {
        line_ = overlapLine_;
        Fail(messages::NoOverlapIcon, misc_.overlapIcon);
    }
    for (size_t row = 0; row < events_.size(); ++row) {
        ConfigureEvent& event = events_[row];
        if (event.IsCategory() || icon_Find(event.iconName) != NoIcon) continue;
        line_ = eventLines_[row];
        MissingIcon(event, apply);
    }
    line_ = line;
}

void ConfigureReader::MissingIcon(ConfigureEvent& event, bool apply) {
    const std::string text = configure_Fill(messages::NoIcon, {event.iconName, event.name});
    if (!apply) {
        Say(text);
        return;
    }
    gen_warning("%s", text.c_str());
    callbacks_.attention();
    event.missingIcon = std::move(event.iconName);
    event.iconName = helpIcon;
}
