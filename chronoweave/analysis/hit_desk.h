// Who has found something in a canvas's trace: result windows and the find line. What was worked with last
// leads: its hits are marked on the picture, and F3 steps through them. When it goes it is the turn of the
// one before.
#pragma once

#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

class HitSource {
  public:
    virtual ~HitSource() = default;
    // Its times become the marks of the picture.
    virtual void MarkHits() = 0;
    // Shows the next or previous hit, from the first cursor or the end of the view. False, with a beep and a
    // message, when there is none.
    virtual bool StepHit(bool forward) = 0;
};

class HitDesk {
  public:
    // Marks its hits unless it leads already.
    void Lead(HitSource& source);
    // The next one leads then; with none the marks go.
    void Leave(_LaCanvasData& canvas, HitSource& source);
    // The same with nothing marked, when the canvas goes too.
    void Forget(HitSource& source) { std::erase(open_, &source); }
    HitSource* leading() const { return open_.empty() ? nullptr : open_.back(); }

  private:
    std::vector<HitSource*> open_;  // the leading one behind
};
