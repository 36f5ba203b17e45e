#include "chronoweave/analysis/program_options.h"

namespace {

struct OptionName {
    const char* name;
    bool ProgramOptions::*field;
};
constexpr OptionName optionNames[] = {{"NewTrv", &ProgramOptions::newTrv},
                                      {"Prefetch", &ProgramOptions::prefetch},
                                      {"Kernel", &ProgramOptions::kernel},
                                      {"IconButton", &ProgramOptions::iconButtons},
                                      {"ScrollRight", &ProgramOptions::verticalBarRight},
                                      {"ScrollBottom", &ProgramOptions::horizontalBarBottom},
                                      {"WheelZoom", &ProgramOptions::bareWheelZooms},
                                      {"Snap", &ProgramOptions::cursorsSnap},
                                      {"ProcessorRows", &ProgramOptions::processorRows},
                                      {"PlainSwitches", &ProgramOptions::plainSwitches},
                                      {"PlainMarks", &ProgramOptions::plainMarks},
                                      {"EventTable", &ProgramOptions::eventTable},
                                      {"SelectionPanel", &ProgramOptions::selectionPanel},
                                      {"FollowEnd", &ProgramOptions::followEnd},
                                      {"DarkColours", &ProgramOptions::darkColours}};

}  // namespace

std::vector<SettingsSwitch> program_Switches() {
    const ProgramOptions defaults;
    std::vector<SettingsSwitch> switches;
    for (const OptionName& option : optionNames) switches.push_back({option.name, defaults.*option.field});
    return switches;
}

ProgramOptions program_OptionsOf(const SettingsManager& settings) {
    ProgramOptions options;
    for (const OptionName& option : optionNames) options.*option.field = settings.IsOn(option.name);
    return options;
}

void program_Keep(const ProgramOptions& options, SettingsManager& settings) {
    for (const OptionName& option : optionNames) settings.SetOn(option.name, options.*option.field);
}
