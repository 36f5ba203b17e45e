#include "windlib/qt/platform.h"

#include <QApplication>
#include <QIcon>
#include <QMessageBox>
#include <QStyleFactory>
#include <QTimer>
#include <QToolTip>
#include <cstdlib>
#include <utility>

#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/icons.h"
#include "windlib/qt/dark_style.h"

namespace {

QPalette darkPalette() {
    const QColor text(0xE0, 0xE0, 0xE0), faint(0x80, 0x80, 0x80), window(0x2B, 0x2B, 0x2B);
    QPalette palette(text, window, window.lighter(150), window.darker(150), window.lighter(120), text,
                     QColor(0x1E, 0x1E, 0x1E));
    palette.setColor(QPalette::Button, QColor(0x3A, 0x3A, 0x3A));
    palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Highlight, QColor(0x2F, 0x6E, 0xA8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x6C, 0xB2, 0xF0));
    palette.setColor(QPalette::LinkVisited, QColor(0xB0, 0x98, 0xE0));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

// What the window system's library says while it starts: held back, as a failure is told in one line.
QtMessageHandler libraryMessages = nullptr;
bool starting = false;
QStringList heldMessages;

std::string whyNoWindowSystem() {
    const QByteArray chosen = qgetenv("QT_QPA_PLATFORM"), wayland = qgetenv("WAYLAND_DISPLAY"),
                     display = qgetenv("DISPLAY");
    if (!chosen.isEmpty()) return "the window system \"" + chosen.toStdString() + "\" can't be used";
    const QByteArray& name = display.isEmpty() ? wayland : display;
    return name.isEmpty() ? "there is no display"
                          : "the display \"" + name.toStdString() + "\" can't be reached";
}

void takeMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtFatalMsg) {
        const std::string why =
            starting ? "No window can be opened: " + whyNoWindowSystem() : text.trimmed().toStdString();
        gen_fatal("%s", why.c_str());
        std::_Exit(1);
    }
    if (starting)
        heldMessages.append(qFormatLogMessage(type, context, text));
    else
        libraryMessages(type, context, text);
}

}  // namespace

std::unique_ptr<QApplication> platform_Start(const char* program) {
    static std::string name;
    static char* arguments[] = {nullptr, nullptr};
    static int count = 1;
    name = program;
    arguments[0] = name.data();
    starting = true;
    libraryMessages = qInstallMessageHandler(takeMessage);
    auto application = std::make_unique<QApplication>(count, arguments);
    starting = false;
    for (const QString& text : std::exchange(heldMessages, {})) gen_standard_error(text.toStdString() + '\n');
    QApplication::setApplicationName(QStringLiteral("chronoweave"));
    QApplication::setApplicationDisplayName(QStringLiteral("VOREL Chronoweave"));
    QApplication::setQuitOnLastWindowClosed(false);  // the main loop decides
    if (const IconHandle icon = icon_Find("app"); icon != NoIcon)
        QApplication::setWindowIcon(
            QIcon(QString::fromStdString(icon_Table()[static_cast<size_t>(icon)].path)));
    gate_Program().SetWake([] {
        if (qApp) QTimer::singleShot(0, qApp, [] { gate_Program().RunHeld(); });
    });
    return application;
}

std::string platform_KeyName(const QKeyEvent& event) {
    constexpr int firstNamed = 0x01000000;  // keys below stand for characters
    const int key = event.key();
    if (key == Qt::Key_unknown || (key >= Qt::Key_Shift && key <= Qt::Key_ScrollLock)) return {};
    Qt::KeyboardModifiers held = event.modifiers() & ~Qt::KeypadModifier;
    // A sign that needs Shift on this keyboard and not on that has one name.
    const bool letter = key >= Qt::Key_A && key <= Qt::Key_Z;
    if (key < firstNamed && !letter) held &= ~Qt::ShiftModifier;
    return QKeySequence(static_cast<int>(held.toInt()) | key)
        .toString(QKeySequence::PortableText)
        .toStdString();
}

std::string platform_BareKeyName(const QKeyEvent& event) {
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return {};
    return platform_KeyName(QKeyEvent(QEvent::KeyPress, event.key(), Qt::NoModifier));
}

void platform_ProcessPending() {
    QCoreApplication::processEvents();
}

void platform_Loop(const std::function<bool()>& goOn) {
    while (goOn()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void platform_SetDark(bool dark) {
    static bool set = false;
    if (set == dark) return;
    set = dark;
    static const QString desktop = QApplication::style()->name();
    QApplication::setStyle(dark ? new DarkStyle(desktop) : QStyleFactory::create(desktop));
    // An empty palette takes the desktop's colours back.
    QApplication::setPalette(dark ? darkPalette() : QPalette());
}

void platform_ShowTip(const QPoint& at, const std::string& text, QWidget* over) {
    if (text.empty()) return QToolTip::hideText();
    QToolTip::showText(at,
                       QStringLiteral("<p style='white-space:pre'>") +
                           QString::fromStdString(text).toHtmlEscaped() + QStringLiteral("</p>"),
                       over);
}

bool platform_TipStands() {
    return QToolTip::isVisible();
}

void platform_Beep() {
    QApplication::beep();
}

void platform_SetBusy(bool busy) {
    if (busy)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QGuiApplication::restoreOverrideCursor();
}

bool platform_IsAutomatic() {
    return QGuiApplication::platformName() == QLatin1String("offscreen");
}

void platform_MessageBox(QWidget* parent, const std::string& text) {
    if (platform_IsAutomatic()) {
        gen_error("%s", text.c_str());
        return;
    }
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    QMessageBox box(QMessageBox::Warning, QApplication::applicationDisplayName(),
                    QString::fromStdString(text), QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
