// The two dialogs of the legend's window, run to their end through a host.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/traxfunc/input/legend_edit.h"
#include "windlib/dialog/host.h"

// The line of a status as the user wants it; none when cancelled.
std::optional<laStatusSetting> legend_AskStatus(DialogHost& host, const _LaCanvasData& canvas, size_t status);
// The name of the icon chosen, with the present one selected at first; none when cancelled.
std::optional<std::string> legend_AskIcon(DialogHost& host, const std::string& present);

// Their descriptions. A status's line: "rgbWin" shows it, "tf_red", "tf_green", "tf_blue", "tf_thickness",
// "stylePD", "bt_choose".
DialogDescription legend_StatusDialog();
// One of the icons, in the list "colHeader".
DialogDescription legend_IconDialog();
