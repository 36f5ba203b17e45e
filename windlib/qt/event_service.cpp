#include "windlib/qt/event_service.h"

#include <fcntl.h>

#include <QSocketNotifier>
#include <cerrno>
#include <cstring>

#include "shared/libcxxutil/report.h"

QtWatches::QtWatches() = default;
QtWatches::~QtWatches() = default;

int QtWatches::add(int descriptor, WatchFor what, std::function<void()> ready) {
    const int number = ++last_;
    if (::fcntl(descriptor, F_GETFD) < 0) {
        gen_warning("descriptor %d can't be watched: %s", descriptor, std::strerror(errno));
        return number;
    }
    const auto type = what == WatchFor::Input ? QSocketNotifier::Read : QSocketNotifier::Write;
    auto& notifier = notifiers_[number] = std::make_unique<QSocketNotifier>(descriptor, type);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [ready = std::move(ready)] { ready(); });
    return number;
}

// It may be the one that is being called: what it calls lives as long as it does.
void QtWatches::remove(int number) {
    const auto at = notifiers_.find(number);
    if (at == notifiers_.end()) return;
    at->second->setEnabled(false);
    at->second.release()->deleteLater();
    notifiers_.erase(at);
}

QtEventService::QtEventService(std::function<EventTasks::Clock::time_point()> now) : now_(std::move(now)) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { run(); });
    tasks.SetChanged([this] { arm(); });
    arm();
}

void QtEventService::run() {
    arm();  // a task may run a loop of its own, in which the others have their turn
    tasks.Run(now_());
    arm();
}

void QtEventService::arm() {
    timer_.start(tasks.UntilNext(now_()));
}
