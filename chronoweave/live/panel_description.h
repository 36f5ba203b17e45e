// The target's control panel as a description. Fields "ConnectToTarget", "MaskField" and "outputFile",
// buttons "ConnectButton", "ControlLogging", "LiveMode", "MaskButton", "Info", "browseFile", labels, and the
// list "TargetOutput" with its bar "sbox". The button "Disconnect" has nothing to do and is not shown.
#pragma once

#include "windlib/dialog/description.h"

DialogDescription target_PanelDescription();
