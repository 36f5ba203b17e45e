// All of a canvas that is live: its link to an event server, the panel that steers it, and the reading of
// what grows. One for each canvas window, made with it and gone before the canvas and its host of dialogs.
#pragma once

#include <memory>

#include "chronoweave/live/live_mode.h"
#include "chronoweave/live/live_reader.h"
#include "chronoweave/live/target_panel.h"

class SettingsManager;
class WaitWindows;
class Watches;

// What the program's windows share. The tasks must be there; without watches and windows nothing is painted
// while the server is waited for.
struct LiveServices {
    EventTasks* tasks = nullptr;
    Watches* watches = nullptr;
    WaitWindows* windows = nullptr;
    SettingsManager* settings = nullptr;  // keeps the targets that were connected to; may be null
};

class LiveTarget {
  public:
    // Makes "Korvantis" a command of the canvas, which has its host by now, and follows its refresh.
    LiveTarget(_LaCanvasData& canvas, LiveWindow window, const LiveServices& services);
    ~LiveTarget();
    LiveTarget(const LiveTarget&) = delete;
    LiveTarget& operator=(const LiveTarget&) = delete;

    LiveReader& reader() { return reader_; }
    TargetLink& link() { return link_; }
    TargetPanel& panel() { return panel_; }

    // A file is about to be loaded by hand: the server's own log file turns the refresh on.
    LiveReader::Loading BeforeLoad(const std::string& path);

  private:
    PanelDesk Desk();
    void OpenPanel();
    void LoadDefaults();

    _LaCanvasData& canvas_;
    LiveWindow window_;
    LiveServices services_;
    std::unique_ptr<LinkWait> wait_;
    LiveReader reader_;
    TargetLink link_;
    TargetPanel panel_;
};
