// The find line: what is typed is looked for in the whole trace while the window lives on, and marked on the
// picture at once. It looks for events and beginnings of statuses (see find_Parse), or is a time to go to.
// The search is done in slices by whoever shows the line, when there is nothing else to do; typing on begins
// another one.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "chronoweave/analysis/hit_desk.h"
#include "chronoweave/analysis/search_dialogs.h"
#include "chronoweave/engine/find.h"
#include "windlib/dialog/model.h"

struct SearchDesk;

// "find", the message "ts_info", buttons "previous", "next", "search", "close".
DialogDescription find_LineDescription();

class FindLine : public HitSource {
  public:
    // The canvas outlives it.
    FindLine(_LaCanvasData& canvas, std::shared_ptr<SearchDesk> desk);
    ~FindLine() override;
    FindLine(const FindLine&) = delete;
    FindLine& operator=(const FindLine&) = delete;

    // It was opened or closed, or there is work for Step; may be empty.
    std::function<void()> changed;
    DialogModel& model() { return model_; }
    bool IsOpen() const { return open_; }
    void Open();
    // Its hits are marked no more; what was typed stays.
    void Close();
    // To be called whenever the canvas may have changed: another trace, one that grew, another selection.
    void Sync();
    // The next slice of the search, a few milliseconds. False when there is nothing to do.
    bool Step();
    // Goes to the time that was typed, else to the next or previous hit.
    bool Enter(bool forward);
    // Stops the search, and when none runs closes the line.
    void Escape();

    void MarkHits() override;
    bool StepHit(bool forward) override;

  private:
    bool Works() const { return open_ && walk_ && !stopped_ && !walk_->Over(); }
    bool IsOfTrace() const;
    void TakeTrace();
    void TakeNames();
    void Start();
    void Drop();
    void Tell();
    void Menu();
    void Search(int kind);
    SearchSeed Seed();
    std::string CountText() const;
    std::string HitText(const FindHit& hit) const;
    size_t InSelection() const;

    _LaCanvasData& canvas_;
    std::shared_ptr<SearchDesk> desk_;
    DialogModel model_;
    bool open_ = false;
    bool stopped_ = false;  // by the user
    bool isTime_ = false;   // what is typed
    // The trace that all below is of.
    const TraceStore* store_ = nullptr;
    uint32_t legends_ = 0;
    std::optional<double> namedTo_;  // the trace's length when its names were read
    ObjectNames names_;
    std::unique_ptr<FindWalk> walk_;
    std::optional<size_t> current_;   // the hit shown last
    size_t marked_ = 0;               // hits that are marked
    size_t ahead_ = 0;                // of them, those ahead of the range that was shown at first
    double selection_[2] = {-1, -1};  // as last told
};
