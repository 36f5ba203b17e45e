#include "windlib/qt/qt_wait_windows.h"

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWindow>
#include <algorithm>

#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/event_service.h"

namespace {

// A question with its two buttons. Escape, and closing it, mean to stop.
class QuestionBox : public QMessageBox {
  public:
    explicit QuestionBox(const WaitQuestion& question)
        : QMessageBox(QMessageBox::Question, QString::fromStdString(question.title),
                      QString::fromStdString(question.text), NoButton, QApplication::activeWindow()) {
        setObjectName(QStringLiteral("waitQuestion"));
        setAccessibleName(QString::fromStdString(question.title));
        setTextFormat(Qt::PlainText);
        goOn_ = add("goOn", question.goOn, AcceptRole);
        setDefaultButton(goOn_);
        setEscapeButton(add("stop", question.stop, RejectRole));
    }
    WaitAnswer answer() const { return clickedButton() == goOn_ ? WaitAnswer::GoOn : WaitAnswer::Stop; }

  private:
    QPushButton* add(const char* name, const std::string& label, ButtonRole role) {
        QPushButton* const button = addButton(QString::fromStdString(label), role);
        button->setObjectName(QLatin1String(name));
        button->setAccessibleName(QString::fromStdString(label));
        return button;
    }
    QPushButton* goOn_ = nullptr;
};

// Windows and the widgets in them belong to a box.
bool belongsTo(const QObject* receiver, const QMessageBox& box) {
    if (const auto* widget = qobject_cast<const QWidget*>(receiver)) return widget->window() == &box;
    return receiver == box.windowHandle();
}

}  // namespace

QtWaitWindows::QtWaitWindows(QtEventService& events, Questions questions, std::function<bool()> quits)
    : events_(events), questions_(questions), quits_(std::move(quits)) {}

QtWaitWindows::~QtWaitWindows() = default;

bool QtWaitWindows::hasDisplay() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

bool QtWaitWindows::handlesEvents() {
    return !QCoreApplication::closingDown();
}

bool QtWaitWindows::serve(Serve what, std::chrono::milliseconds longest) {
    if (!hasDisplay()) return false;
    const auto around = std::exchange(serving_, what);
    QTimer wake;  // so long Qt may sleep
    wake.setSingleShot(true);
    wake.setTimerType(Qt::PreciseTimer);
    const bool sleeps = longest.count() > 0;
    if (sleeps) wake.start(longest);
    QCoreApplication::processEvents(sleeps ? QEventLoop::WaitForMoreEvents : QEventLoop::AllEvents);
    serving_ = around;
    return true;
}

void QtWaitWindows::idle() {
    gate_Program().RunHeld();
}

void QtWaitWindows::serveTimers() {
    events_.run();
}

void QtWaitWindows::background(std::chrono::milliseconds longest) {
    QtWaitWindows::serve(Serve::Painting, longest);
}

void QtWaitWindows::abort() {
    gen_error("The windows can't be served while something waits.");
    stopInnermost();
}

void QtWaitWindows::began(int handle) {
    if (waits_.empty())
        input_ = std::make_unique<HeldInput>([this](QObject* receiver) { return holds(receiver); },
                                             [this] { stopInnermost(); });
    waits_.push_back({handle, QApplication::activeModalWidget(), QApplication::activePopupWidget(), nullptr});
}

void QtWaitWindows::ended(int handle) {
    std::erase_if(waits_, [handle](const Wait& wait) { return wait.handle == handle; });
    if (waits_.empty()) input_.reset();
}

void QtWaitWindows::stopInnermost() {
    if (!waits_.empty()) waitHandle_Stop(waits_.back().handle);
}

// One that a handler of a service opened within the wait, or a menu that was opened meanwhile: it has the
// user's hand.
bool QtWaitWindows::newDialogStands() const {
    const QWidget* const modal = QApplication::activeModalWidget();
    const QWidget* const popup = QApplication::activePopupWidget();
    return (modal && modal != waits_.back().modal) || (popup && popup != waits_.back().popup);
}

HeldInput::Hold QtWaitWindows::holds(QObject* receiver) const {
    using Hold = HeldInput::Hold;
    if (waits_.empty()) return Hold::Nothing;
    if (const QMessageBox* const question = waits_.back().question)
        return belongsTo(receiver, *question) ? Hold::Nothing : Hold::Everything;
    if (!serving_ || newDialogStands()) return Hold::Nothing;
    switch (*serving_) {
        case Serve::Painting:
            return Hold::Everything;
        case Serve::Modal:
            return QApplication::activeModalWidget() ? Hold::Nothing : Hold::Everything;
        case Serve::Full:
            return QApplication::activeModalWidget() ? Hold::Nothing : Hold::Escape;
    }
    return Hold::Nothing;
}

WaitAnswer QtWaitWindows::ask(const WaitQuestion& question) {
    if (questions_ == Questions::Nobody) {
        gen_warning("%s", question.text.c_str());
        return WaitAnswer::Stop;
    }
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    const auto around = std::exchange(serving_, std::nullopt);
    QuestionBox box(question);
    box.exec();
    serving_ = around;
    return box.answer();
}

WaitAnswer QtWaitWindows::askModeless(int handle, const WaitQuestion& question) {
    const auto wait = [&] {
        return std::find_if(waits_.begin(), waits_.end(), [&](const Wait& w) { return w.handle == handle; });
    };
    if (wait() == waits_.end()) return ask(question);
    QuestionBox box(question);
    QEventLoop loop;
    QObject::connect(&box, &QDialog::finished, &loop, &QEventLoop::quit);
    wait()->question = &box;
    box.setModal(false);
    box.show();
    loop.exec();
    if (const auto asked = wait(); asked != waits_.end()) asked->question = nullptr;
    return box.answer();
}

void QtWaitWindows::closeQuestion(int handle) {
    for (const Wait& wait : waits_)
        if (wait.handle == handle && wait.question) wait.question->reject();
}
