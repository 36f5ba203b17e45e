#include "windlib/qt/long_work.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include "windlib/qt/held_input.h"

namespace {

int pace = 40;

}  // namespace

struct LongWork::State {
    explicit State(std::function<void(double, double)> s) : show(std::move(s)) { since.start(); }
    std::function<void(double, double)> show;
    QElapsedTimer since;
    bool stopped = false;
    HeldInput input{[](QObject*) { return HeldInput::Hold::Everything; }, [this] { stopped = true; }};
};

LongWork::LongWork(std::function<void(double, double)> show)
    : state_(std::make_unique<State>(std::move(show))) {}

LongWork::~LongWork() = default;

bool LongWork::tell(double done, double total) {
    if (state_->since.elapsed() >= pace) {
        if (state_->show) state_->show(done, total);
        QCoreApplication::processEvents();
        state_->since.restart();
    }
    return !state_->stopped;
}

void LongWork::setPace(int milliseconds) {
    pace = milliseconds;
}
