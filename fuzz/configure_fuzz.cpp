// Configure files, and the look-ups of the legend that one makes.
#include <string>
#include <string_view>

#include "chronoweave/rtos/configure_reader.h"
#include "fuzz/support.h"

namespace {

void look_up(const Legend& legend) {
    const auto statuses = static_cast<int32_t>(legend.statuses.size());
    const auto events = static_cast<int32_t>(legend.events.size());
    for (const uint32_t code : {0u, 1u, 3u, 10u, 255u, 256u, 0xFFFFu, 0x10000u, 0xFFFFFFFFu}) {
        const int32_t status = legend.StatusIndex(code);
        fuzz_Check(status >= 0 && status < statuses);
        for (const uint16_t subtype : {uint16_t{0}, uint16_t{9}, uint16_t{300}, uint16_t{0xFFFF}}) {
            const auto type = static_cast<uint16_t>(code);
            const int32_t event = legend.EventIndex(type, subtype);
            fuzz_Check(event >= 0 && event < events && legend.EventMatches(type, subtype, event));
        }
    }
    for (int32_t row = -1; row <= statuses; ++row) {
        const int32_t linked = legend.LinkedStatus(row);
        fuzz_Check(linked >= 0 && linked < statuses);
    }
    for (const LegendStatus& status : legend.statuses) {
        const int32_t row = legend.StatusIndex(status.code);
        fuzz_Check(row >= 0 && row < statuses && status.contextSwitchLink < statuses);
    }
    // Names are looked for from the front: a few will do.
    for (size_t row = 0; row < legend.events.size(); row += 1 + legend.events.size() / 16) {
        const int32_t event = legend.EventByName(legend.events[row].name);
        fuzz_Check(event >= 0 && event < events);
        fuzz_Check(legend.StatusByName(legend.events[row].name) < statuses);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    ConfigureCallbacks callbacks;
    callbacks.message = [](const std::string&) {};
    callbacks.syntaxError = [](const std::string&, const std::string&) {};
    callbacks.lineStyle = legend_LineStyle;
    callbacks.errorDialog = [](const std::string&) {};
    Legend legend;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const int thickness : {0, 3}) {  // the second time over the legend of the first
        const bool made = configure_ReadText(legend, text, "fuzz.tc", "KORVANTIS", callbacks, thickness);
        fuzz_Check(made == !legend.empty());
        if (!made) continue;
        look_up(legend);
        legend.RollUpCategories();
        legend.BuildLookups();
        look_up(legend);
    }
    return 0;
}
