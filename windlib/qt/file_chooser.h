// The chooser of files.
#pragma once

#include <string>
#include <vector>

#include "windlib/dialog/host.h"

class QWidget;
class SettingsManager;

// Asks the user, over a window, which may be null. settings, where folders are remembered, may be null. None
// when the user cancelled.
std::vector<std::string> files_Choose(QWidget* over, SettingsManager* settings, const FileQuestion& question);
