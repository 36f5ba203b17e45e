// The target's control panel: the logic of its window. It keeps no state of its own; what it shows and
// changes is the link's, which goes on when it is closed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "chronoweave/live/target_link.h"
#include "windlib/dialog/host.h"

// What the panel needs beside the link.
struct PanelDesk {
    DialogHost* host = nullptr;     // never null
    std::function<void()> changed;  // flags of the link may be others; may be empty
    std::function<void(const std::string& name)> enableOrDisable;  // live mode, with this file; must be set
    std::function<std::string()> folder;   // in which files are chosen at first; must be set
    std::function<std::string()> example;  // a raw event file to be replayed; empty for none; must be set
    // The targets that were connected to, newest first; both must be set.
    std::function<std::vector<std::string>()> history;
    std::function<void(const std::string& target)> remember;
    int letterWidth = 8;  // pixels, of the output's font
};

class TargetPanel : public LinkPanel {
  public:
    static constexpr int mostLines = 5000;  // of the output

    // Both outlive it.
    TargetPanel(TargetLink& link, PanelDesk desk) : link_(link), desk_(std::move(desk)) {}
    ~TargetPanel() override;

    // Opens the window, or raises it.
    void Open();
    bool IsOpen() const { return model_ != nullptr; }
    // Of the open window; null for none.
    DialogModel* model() { return model_; }

    void AddLine(const std::string& line) override;
    void ShowMask(const std::string& mask) override;
    void Refresh() override { PanelRefresh(); }
    void Destroy() override;
    // The name in the file field, as the link has it.
    void ShowFile();

  private:
    void PanelRefresh();
    void Build();
    void Closed();
    void Press(const std::string& name);
    void Enter(const std::string& name);
    void Keep(const std::string& name, const std::string& text);
    void PullDown(const std::string& name);
    void PullDownTargets();
    void PullDownMask();
    void ChooseFile();
    std::string Text(const char* item) const { return model_->item(item).text; }

    TargetLink& link_;
    PanelDesk desk_;
    DialogModel* model_ = nullptr;  // the host's
    size_t widest_ = 0;             // letters of the longest line of the output
};
