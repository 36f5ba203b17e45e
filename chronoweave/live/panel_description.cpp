#include "chronoweave/live/panel_description.h"

#include "chronoweave/analysis/dialog_items.h"
#include "windlib/dialog/layout_builder.h"

namespace {

DialogItem field(const char* name, const char* spoken, const char* tip, unsigned flags) {
    return {.name = name,
            .kind = DialogKind::TextField,
            .accessible = spoken,
            .flags = flags,
            .room = std::string(20, 'n'),
            .tip = tip};
}

// Buttons whose text changes have room for either.
DialogItem button(const char* name, const char* label, const char* tip, const char* room = "",
                  unsigned flags = 0) {
    return {
        .name = name, .kind = DialogKind::Button, .text = label, .flags = flags, .room = room, .tip = tip};
}

std::vector<DialogItem> items() {
    return {
        field("ConnectToTarget", "Target", "<Target Name or IP Address> [-port <Port Number>]",
              Dialog_PullsDown),
        button("ConnectButton", "Connect", "Connect to/Disconnect from Target", "Disconnect"),
        button("ControlLogging", "Start", "Start/Stop Event Logging", "Start"),
        item_Label("TextEventLogging", "Event Logging"),
        button("LiveMode", "Enable", "Enable/Disable Live Mode", "Disable"),
        item_Label("LiveModeText", "Live Mode"),
        field("MaskField", "Event Logging Mask",
              "Pulldown menu is available only when the field contains a number", Dialog_PullsDown),
        button("MaskButton", "Set Mask", "Set Event Logging Mask"),
        {.name = "TargetOutput", .kind = DialogKind::List, .accessible = "Output of the target"},
        {.name = "sbox",
         .kind = DialogKind::Strip,
         .accessible = "Scroll in the output",
         .part = "TargetOutput"},
        button("Info", "Info", "Information about Target"),
        button("Disconnect", "Choose File", "", "", Dialog_Hidden),
        field("outputFile", "Live-mode event stream file", "Live-mode event stream file", 0),
        button("browseFile", "Choose File", "Choose a Log File"),
    };
}

}  // namespace

// Three rows over the output: target, file and live mode, mask; the other buttons stand at their right.
DialogDescription target_PanelDescription() {
    LayoutBuilder layout;
    layout.leastWidths(
        {{.of = {"ControlLogging", "TextEventLogging", "LiveMode", "LiveModeText", "Disconnect", "Info"},
          .pixels = 80},
         {.of = {"browseFile"}, .pixels = 24, .letters = 30}});
    layout.leastHeight(
        {.of = {"ConnectButton", "LiveMode", "browseFile", "MaskButton"}, .pixels = 48, .lines = 5});
    layout.firstWidths({{.letters = 76}});
    layout.firstHeight(
        {.of = {"ConnectButton", "LiveMode", "browseFile", "MaskButton"}, .pixels = 48, .lines = 14});
    const struct {
        const char *field, *button;
    } rows[] = {
        {"ConnectToTarget", "ConnectButton"}, {"outputFile", "browseFile"}, {"MaskField", "MaskButton"}};
    for (const auto& row : rows) {
        layout.fillWidth(row.field, {.less = {row.button}, .gaps = 24});
        layout.left({.items = {row.field}});
        layout.right({.items = {row.button}});
        layout.middle({row.field}, row.button);
    }
    layout.top({.items = {"ConnectButton"}});
    layout.below({.items = {"ControlLogging", "LiveMode", "Info", "Disconnect"}, .of = "ConnectButton"});
    layout.left({.items = {"ControlLogging"}});
    layout.inRow({"ControlLogging", "TextEventLogging"});
    layout.inRow({"TextEventLogging", "LiveMode"}, 24);
    layout.inRow({"LiveMode", "LiveModeText"});
    layout.right({.items = {"Info"}});
    layout.leftOf({.items = {"Disconnect"}, .of = "Info"});
    layout.middle({"TextEventLogging", "LiveModeText"}, "ControlLogging");
    layout.below({.items = {"browseFile"}, .of = "ControlLogging"});
    layout.below({.items = {"MaskButton"}, .of = "browseFile"});
    layout.fillWidth("TargetOutput", {.gaps = 16});
    layout.fillHeight("TargetOutput",
                      {.less = {"ConnectButton", "ControlLogging", "browseFile", "MaskButton"}, .gaps = 48});
    layout.left({.items = {"TargetOutput"}});
    layout.below({.items = {"TargetOutput"}, .of = "MaskButton"});
    return {.name = "KorvantisTarget",
            .title = "Target Control for KORVANTIS",
            .helpKey = "live",
            .offset = 320,  // names and the first rows of the canvas are still seen
            .positionKey = "TRVGUI KORVANTIS Control Panel",
            .items = items(),
            .layout = layout.lines()};
}
