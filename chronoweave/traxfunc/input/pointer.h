// The pointer on the drawing area: clicks that set cursors, drags that select, tips, double clicks that open
// windows. The platform passes what happened; x and y are pixels of the drawing area and may lie outside it.
#pragma once

#include <optional>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "shared/libcxxutil/gate.h"

enum : unsigned { laModifier_Shift = 1, laModifier_Control = 2, laModifier_Alt = 4 };
constexpr int laButton_Left = 1, laButton_Right = 3;

struct laPointerEvent {
    int x = 0, y = 0;
    unsigned modifiers = 0;
    int clicks = 1;  // of a press: 2 is a double click
    int button = laButton_Left;
};

class laPointer {
  public:
    // The canvas outlives it.
    explicit laPointer(_LaCanvasData& canvas) : canvas_(canvas) {}

    void Press(const laPointerEvent& event);
    void Move(const laPointerEvent& event);
    // True when the context menu is to be shown, outside of any drawing (see context_menu.h).
    bool Release(const laPointerEvent& event);

    bool dragging() const { return drag_.has_value(); }
    // Where the last press or move was, for scrolling while a drag stays beyond an edge.
    int x() const { return last_.x; }
    int y() const { return last_.y; }
    // A drag beyond an edge goes on after the view scrolled.
    void Scrolled();
    // A drag that was cut short (the window lost the pointer) ends where it is.
    void Cancel();

  private:
    void PressLeft(const laPointerEvent& event);
    void PressRight(const laPointerEvent& event);
    void ShowTip(const laPointerEvent& event);
    void EndDrag();

    _LaCanvasData& canvas_;
    laPointerEvent last_;
    int pressX_ = 0, pressY_ = 0;
    std::optional<Gate::Token> drag_;  // while a cursor or a selection follows the pointer
    bool tip_ = false;                 // one is shown
};

// The tip of the item at a point, for a pointer that rests there; empty for none.
std::string laPointer_Tip(_LaCanvasData& canvas, int x, int y);
