#include "fuzz/window/monkey.h"

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QMenu>
#include <QMouseEvent>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "shared/libcxxutil/gate.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/platform.h"

// The ways into the window system that Qt has for its own tests.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers, int timestamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString& text, bool repeated,
                                    ushort count);
Q_GUI_EXPORT bool qt_sendShortcutOverrideEvent(QObject* receiver, ulong timestamp, int key,
                                               Qt::KeyboardModifiers modifiers, const QString& text,
                                               bool repeated, ushort count);

namespace {

constexpr size_t trailLength = 40;
constexpr int deepest = 5;       // loops in loops: from here on what waits is closed
constexpr int quietEvery = 100;  // steps
constexpr int mostWindows = 3;
constexpr int mostEnding = 20'000;  // milliseconds until nothing waits any more

constexpr int someKeys[] = {Qt::Key_A,    Qt::Key_D,     Qt::Key_W,         Qt::Key_S,      Qt::Key_F,
                            Qt::Key_Z,    Qt::Key_0,     Qt::Key_Left,      Qt::Key_Right,  Qt::Key_Up,
                            Qt::Key_Down, Qt::Key_Home,  Qt::Key_End,       Qt::Key_PageUp, Qt::Key_Tab,
                            Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Return,    Qt::Key_Space,  Qt::Key_PageDown,
                            Qt::Key_F3,   Qt::Key_F5,    Qt::Key_Backspace, Qt::Key_Escape, Qt::Key_E,
                            Qt::Key_G,    Qt::Key_Menu,  Qt::Key_Delete};

QWindow* handleOf(QWidget& widget) {
    return widget.window()->windowHandle();
}

}  // namespace

Monkey::Monkey(unsigned seed, std::function<CanvasWindow*()> open) : random_(seed), open_(std::move(open)) {}

void Monkey::note(const std::string& what) {
    trail_.push_back(what);
    if (trail_.size() > trailLength) trail_.pop_front();
}

std::string Monkey::trail() const {
    std::string text;
    for (const std::string& what : trail_) text += what + '\n';
    return text;
}

void Monkey::act(int times) {
    left_ = times;
    ending_.invalidate();
    over_ = false;
    schedule();
    platform_Loop([this] { return !over_; });
}

// A timer of its own for each step: it fires in loops that are begun by the step before.
void Monkey::schedule() {
    QTimer::singleShot(0, this, [this] { step(); });
}

// Work goes on whose window may be gone: another window can't load while it does.
bool Monkey::isAtWork() {
    for (const GateWork work : {GateWork::Load, GateWork::Fetch, GateWork::Search, GateWork::Report,
                                GateWork::Print, GateWork::Merge})
        if (gate_Program().Runs(work)) return true;
    return false;
}

bool Monkey::isQuiet() const {
    for (size_t i = 0; i < gateWorks; ++i)
        if (gate_Program().Runs(static_cast<GateWork>(i))) return false;
    return !gate_Program().Ready() && depth_ == 1 && buttons_ == Qt::NoButton &&
           !QApplication::activePopupWidget() && !QApplication::activeModalWidget();
}

CanvasWindow* Monkey::canvas() {
    if (CanvasWindow::all().empty() && !open_()) return nullptr;
    for (CanvasWindow* window : CanvasWindow::all()) window->host().popUpShown = [](QMenu&) {};
    return CanvasWindow::all()[static_cast<size_t>(below(CanvasWindow::count()))];
}

// What the window system would let have it: the menu that is open, else the dialog, else any window.
QWidget* Monkey::target() {
    if (QWidget* popup = QApplication::activePopupWidget()) return popup;
    if (QWidget* dialog = QApplication::activeModalWidget()) return dialog;
    if (pressed_ && handleOf(*pressed_)) return pressed_;
    QList<QWidget*> shown;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowHandle()) shown.append(window);
    return shown.isEmpty() ? nullptr : shown[below(static_cast<int>(shown.size()))];
}

void Monkey::step() {
    if (over_) return;
    schedule();
    ++depth_;
    if (left_ <= 0) {
        endStep();
    } else if (CanvasWindow::all().empty() && isAtWork()) {
        dismiss();
    } else if (CanvasWindow* window = canvas()) {
        --left_;
        QWidget* at = target();
        if (++sinceQuiet_ >= quietEvery && isQuiet() && quiet) {
            sinceQuiet_ = 0;
            quiet(*window);
        } else if (auto* chooser = qobject_cast<QFileDialog*>(at)) {
            chooser->reject();  // it could make, rename and delete files
        } else if (depth_ > deepest && at && at->windowHandle()) {
            key(*at, Qt::Key_Escape, Qt::NoModifier, {});
        } else if (CanvasWindow::count() > mostWindows) {
            window->close();
        } else if (const int kind = below(100); kind < 2) {
            resize(*window);
        } else if (kind < 8 && gate_May(GateActivity::Command) && !QApplication::activeModalWidget() &&
                   !QApplication::activePopupWidget()) {
            command(*window);
        } else if (at && at->windowHandle()) {
            pointer(*at);
        }
    }
    --depth_;
}

// Lets go, closes what waits, and is over when nothing does.
void Monkey::endStep() {
    if (!ending_.isValid()) ending_.start();
    if (ending_.elapsed() > mostEnding) {
        stuck = true;
        over_ = true;
        return;
    }
    if (pressed_ && handleOf(*pressed_)) return release(*pressed_);
    // The window of the press is gone; the button is let go all the same.
    QWidget* const any = target();
    if (QGuiApplication::mouseButtons() != Qt::NoButton && any && handleOf(*any)) return release(*any);
    buttons_ = Qt::NoButton;
    if (!dismiss() && isQuiet()) over_ = true;
}

// Closes what waits for an answer; false when nothing does.
bool Monkey::dismiss() {
    if (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
        return true;
    }
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog) dialog->reject();
    return dialog != nullptr;
}

QPoint Monkey::somewhere(QWidget& window) {
    auto* canvas = qobject_cast<CanvasWindow*>(&window);
    QWidget* part = &window;
    if (canvas) {
        static constexpr const char* parts[] = {"Graph", "Graph", "Graph", "Overview", "HScroll", "VScroll"};
        QWidget* chosen = canvas->findChild<QWidget*>(QLatin1String(parts[below(6)]));
        if (below(8) && chosen && chosen->isVisible()) part = chosen;
    }
    const QPoint in(below(std::max(1, part->width())), below(std::max(1, part->height())));
    return part == &window ? in : part->mapTo(&window, in);
}

Qt::KeyboardModifiers Monkey::modifiers() {
    static constexpr Qt::KeyboardModifier some[] = {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier};
    return below(4) ? Qt::NoModifier : Qt::KeyboardModifiers(some[below(3)]);
}

void Monkey::send(QWidget& window, QEvent::Type type, Qt::MouseButton button) {
    note(std::to_string(type) + " at " + std::to_string(at_.x()) + ',' + std::to_string(at_.y()) + " in " +
         window.objectName().toStdString());
    stamp_ += 20 + below(600);
    qt_handleMouseEvent(handleOf(window), at_, window.mapToGlobal(at_), buttons_, button, type, modifiers(),
                        stamp_);
}

void Monkey::press(QWidget& window, Qt::MouseButton button, bool twice) {
    at_ = somewhere(window);
    for (int i = 0; i <= (twice ? 1 : 0); ++i) {
        const QPointer<QWidget> alive = &window;
        buttons_ = button;
        pressed_ = &window;
        send(window, QEvent::MouseButtonPress, button);
        if (!alive || !alive->windowHandle()) return;
        if (twice) release(window);
        if (!alive || !alive->windowHandle()) return;
    }
}

void Monkey::release(QWidget& window) {
    const Qt::MouseButton button = buttons_ & Qt::LeftButton    ? Qt::LeftButton
                                   : buttons_ & Qt::RightButton ? Qt::RightButton
                                                                : Qt::MiddleButton;
    buttons_ = Qt::NoButton;
    pressed_ = nullptr;
    send(window, QEvent::MouseButtonRelease, button);
}

void Monkey::move(QWidget& window) {
    if (below(3))
        at_ += QPoint(below(81) - 40, below(41) - 20);  // also out of the window
    else
        at_ = somewhere(window);
    send(window, QEvent::MouseMove, Qt::NoButton);
}

void Monkey::wheel(QWidget& window) {
    const QPointF at(somewhere(window));
    const int turn = (below(5) - 2) * 120;
    note("wheel " + std::to_string(turn));
    QWheelEvent event(at, window.mapToGlobal(at), QPoint(), below(4) ? QPoint(0, turn) : QPoint(turn, 0),
                      buttons_, below(2) ? Qt::KeyboardModifiers(Qt::ControlModifier) : modifiers(),
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(handleOf(window), &event);
}

void Monkey::key(QWidget& window, int code, Qt::KeyboardModifiers held, const QString& text) {
    note("key " + std::to_string(code) + (held ? " with " + std::to_string(held.toInt()) : ""));
    const QPointer<QWidget> alive = &window;
    QObject* focus = window.focusWidget() ? window.focusWidget() : &window;
    if (qt_sendShortcutOverrideEvent(focus, static_cast<ulong>(++stamp_), code, held, text, false, 1)) return;
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
        if (alive && alive->windowHandle())
            qt_handleKeyEvent(alive->windowHandle(), type, code, held, text, false, 1);
}

void Monkey::key(QWidget& window) {
    const int code = someKeys[below(static_cast<int>(std::size(someKeys)))];
    const Qt::KeyboardModifiers held = modifiers();
    const bool letter = code > 32 && code < 127 && !(held & (Qt::ControlModifier | Qt::AltModifier));
    key(window, code, held, letter ? QString(QChar(code)).toLower() : QString());
}

// A few characters into whatever has the keyboard, and Enter.
void Monkey::type(QWidget& window) {
    static const QString characters = QStringLiteral("0123456789.-eu s*t1k0");
    const QPointer<QWidget> alive = &window;
    for (int i = below(8); i >= 0 && alive && alive->windowHandle(); --i) {
        const QChar c = characters[below(static_cast<int>(characters.size()))];
        key(window, c.toUpper().unicode(), Qt::NoModifier, c);
    }
    if (alive && alive->windowHandle()) key(window, Qt::Key_Return, Qt::NoModifier, {});
}

void Monkey::pointer(QWidget& window) {
    const int kind = below(100);
    if (buttons_ != Qt::NoButton && kind < 70) {
        if (kind < 50) return move(window);
        return release(window);
    }
    if (kind < 25) return move(window);
    if (kind < 40) {
        if (buttons_ != Qt::NoButton) return release(window);
        return press(window, below(5) ? Qt::LeftButton : Qt::MiddleButton, false);
    }
    if (kind < 44) return press(window, Qt::LeftButton, true);
    if (kind < 48 && buttons_ == Qt::NoButton) return press(window, Qt::RightButton, false);
    if (kind < 70) return wheel(window);
    if (kind < 94) return key(window);
    type(window);
}

void Monkey::resize(CanvasWindow& window) {
    const QSize size(300 + below(1200), 200 + below(700));
    note("size " + std::to_string(size.width()) + ',' + std::to_string(size.height()));
    window.resize(size);
}

void Monkey::command(CanvasWindow& window) {
    const std::span<const laCommand> all = laCommands_All();
    const laCommand& chosen = all[static_cast<size_t>(below(static_cast<int>(all.size())))];
    std::string text = chosen.name;
    if (chosen.takes == CommandTakes::Number) text += ' ' + std::to_string(below(1500));
    note("command " + text);
    const QPointer<CanvasWindow> alive = &window;
    window.command(text);
    if (alive && alive->source().empty()) alive->close();  // the next one is opened with the trace
}
