// What the selection tells: its length, the events in it by kind, how long each processor and each object ran
// and which share of the selection that is, and the longest that an object waited while ready. A small panel
// shows all of it, the message line the most of it.
//
// The figures follow the selection: first estimated, marked "~", then exact. They are made in slices by
// whoever shows the panel, when there is nothing else to do. An estimate that was begun is finished, so that
// there is something to see while the selection goes on changing.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chronoweave/analysis/canvas_facts.h"
#include "chronoweave/engine/range_figures.h"
#include "windlib/dialog/model.h"

// "t_length", "t_wait", the list "list", buttons "copy", "close".
DialogDescription selection_PanelDescription();

class SelectionPanel {
  public:
    // The canvas outlives it.
    explicit SelectionPanel(_LaCanvasData& canvas);
    ~SelectionPanel();
    SelectionPanel(const SelectionPanel&) = delete;
    SelectionPanel& operator=(const SelectionPanel&) = delete;

    // The user closed it; may be empty.
    std::function<void()> closed;
    DialogModel& model() { return model_; }
    // To be called whenever the canvas may have changed; costs next to nothing when it has not. True while
    // there is work for Step.
    bool Sync();
    // The next slice, about a millisecond. False when there is nothing to do.
    bool Step();
    // There is a selection, and there are figures of it.
    bool HasFigures() const { return figures_ != nullptr; }
    // All that the panel shows, as lines of cells with tabs between; empty without figures.
    std::string Text() const;

  private:
    using Cells = std::array<std::string, 3>;  // what, count or time, share

    bool IsOfTrace() const;
    void TakeTrace();
    void Begin();
    void Show();
    void Fill();
    std::string Time(double time) const;
    std::string WaitText() const;
    std::string NameOn(const ProcessorLoad& load, uint32_t object) const;
    std::string Summary() const;
    void Say(const std::string& text);

    _LaCanvasData& canvas_;
    DialogModel model_;
    // The trace that all below is of.
    const TraceStore* store_ = nullptr;
    uint32_t legends_ = 0;
    std::unique_ptr<CanvasFacts> facts_;
    std::vector<uint32_t> idle_;
    std::optional<TimeSpan> wanted_;   // the selection
    TimeMode timeMode_ = Time_Second;  // of what is shown
    std::optional<TimeSpan> tallied_;
    std::unique_ptr<RangeTally> tally_;  // of it
    std::unique_ptr<RangeFigures> figures_;
    std::vector<Cells> rows_;
    std::string said_;  // on the message line
};
