// Long work among the window system's events.
#pragma once

#include <functional>
#include <memory>

// One stretch of long work: while it lives, windows keep painting, Escape asks it to stop, and no other input
// is taken, so that no command starts inside. Of the pointer's moves and wheel turns meanwhile the last comes
// when the work is over, and so does the release of a button that was down before it. One at a time.
class LongWork {
  public:
    explicit LongWork(std::function<void(double done, double total)> show);
    ~LongWork();
    LongWork(const LongWork&) = delete;
    LongWork& operator=(const LongWork&) = delete;
    // For the worker: keeps the windows alive now and then; false once Escape was pressed.
    bool tell(double done, double total);

    // How long the worker is left alone between two looks at the window system, milliseconds. For tests.
    static void setPace(int milliseconds);

  private:
    struct State;
    std::unique_ptr<State> state_;
};
