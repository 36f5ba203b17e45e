#include "windlib/qt/held_input.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

HeldInput::HeldInput(std::function<Hold(QObject*)> holds, std::function<void()> escape)
    : holds_(std::move(holds)), escape_(std::move(escape)) {
    qApp->installEventFilter(this);
}

HeldInput::~HeldInput() {
    qApp->removeEventFilter(this);
    for (Kept& kept : kept_)
        if (kept.receiver) QCoreApplication::postEvent(kept.receiver, kept.event.release());
}

bool HeldInput::eventFilter(QObject* receiver, QEvent* event) {
    switch (holds_(receiver)) {
        case Hold::Nothing:
            return false;
        case Hold::Escape:
            if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride) return false;
            if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) return false;
            break;
        case Hold::Everything:
            break;
    }
    return take(receiver, *event);
}

// True when the event goes no further.
bool HeldInput::take(QObject* receiver, QEvent& event) {
    switch (event.type()) {
        case QEvent::KeyPress:
        case QEvent::ShortcutOverride:
            takeKey(event);
            return true;
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            ignored_ |= static_cast<QMouseEvent&>(event).button();
            break;
        case QEvent::MouseButtonRelease:
            keepRelease(receiver, event);
            break;
        case QEvent::MouseMove:
        case QEvent::Wheel:
            keepLast(receiver, event);
            break;
        case QEvent::KeyRelease:
        case QEvent::Shortcut:
        case QEvent::ToolTip:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::NativeGesture:
        case QEvent::InputMethod:
        case QEvent::ContextMenu:
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
        case QEvent::Close:
            break;
        default:
            return false;
    }
    event.ignore();
    return true;
}

void HeldInput::takeKey(const QEvent& event) {
    if (static_cast<const QKeyEvent&>(event).key() == Qt::Key_Escape) escape_();
}

void HeldInput::keep(QObject* receiver, const QEvent& event) {
    kept_.push_back({receiver, std::unique_ptr<QEvent>(event.clone())});
}

void HeldInput::keepLast(QObject* receiver, const QEvent& event) {
    std::erase_if(kept_, [&](const Kept& kept) {
        return kept.receiver == receiver && kept.event->type() == event.type();
    });
    keep(receiver, event);
}

// A button that was pressed meanwhile has done nothing, and its release does nothing.
void HeldInput::keepRelease(QObject* receiver, const QEvent& event) {
    const Qt::MouseButton button = static_cast<const QMouseEvent&>(event).button();
    if (ignored_ & button)
        ignored_ &= ~Qt::MouseButtons(button);
    else
        keep(receiver, event);
}
