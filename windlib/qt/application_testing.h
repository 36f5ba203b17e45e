// For tests: the one application object of a test program, on the offscreen platform, and the user's hand.
#pragma once

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

#include "windlib/qt/platform.h"

inline void testing_StartApplication() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Left to the end of the process: Qt's own state goes before statics do.
    [[maybe_unused]] static auto* const application = platform_Start("test").release();
}

inline void testing_Key(QWidget& widget, int key, const QString& text = {},
                        Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(&widget, &press);
}

inline void testing_Mouse(QWidget& widget, QEvent::Type type, QPoint at,
                          Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QMouseEvent event(type, QPointF(at), widget.mapToGlobal(QPointF(at)), Qt::LeftButton, Qt::LeftButton,
                      modifiers);
    QApplication::sendEvent(&widget, &event);
}

inline void testing_Click(QWidget& widget, QPoint at, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    testing_Mouse(widget, QEvent::MouseButtonPress, at, modifiers);
    testing_Mouse(widget, QEvent::MouseButtonRelease, at, modifiers);
}
