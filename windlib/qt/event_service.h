// Tasks and watches served by Qt's loop: by each that runs, those of modal dialogs, menus and choosers too,
// and by long work when it looks at the window system. What they start asks the gate.
#pragma once

#include <QTimer>
#include <chrono>
#include <functional>
#include <map>
#include <memory>

#include "shared/libcxxutil/event_tasks.h"
#include "shared/libcxxutil/watches.h"

class QSocketNotifier;

// A descriptor that is not open is reported and not watched.
class QtWatches : public Watches {
  public:
    QtWatches();
    ~QtWatches() override;
    int add(int descriptor, WatchFor what, std::function<void()> ready) override;
    void remove(int number) override;

  private:
    std::map<int, std::unique_ptr<QSocketNotifier>> notifiers_;
    int last_ = 0;
};

class QtEventService {
  public:
    // The clock is handed in for tests. Needs the application object, and goes before it.
    explicit QtEventService(std::function<EventTasks::Clock::time_point()> now = EventTasks::Clock::now);
    QtEventService(const QtEventService&) = delete;
    QtEventService& operator=(const QtEventService&) = delete;

    EventTasks tasks;
    QtWatches watches;

    // Runs what is due, for who waits where Qt's loop does not turn.
    void run();
    // How long the loop may sleep before it runs tasks again.
    std::chrono::milliseconds sleep() const { return timer_.intervalAsDuration(); }

  private:
    void arm();

    std::function<EventTasks::Clock::time_point()> now_;
    QTimer timer_;
};
