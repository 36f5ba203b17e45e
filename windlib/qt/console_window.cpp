#include "windlib/qt/console_window.h"

#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QTimer>
#include <memory>
#include <utility>

#include "shared/libcxxutil/report.h"

namespace {

constexpr int mostLines = 20000;
std::unique_ptr<QPlainTextEdit> console;
std::function<void(const std::string&)> listener;
std::string untold;  // to the listener

bool hasDisplay() {
    return QCoreApplication::instance() && QGuiApplication::platformName() != QLatin1String("offscreen");
}

}  // namespace

void console_Open(const std::string& title) {
    if (!hasDisplay()) return;
    if (!console) {
        console = std::make_unique<QPlainTextEdit>();
        console->setReadOnly(true);
        console->setMaximumBlockCount(mostLines);
        console->setObjectName(QStringLiteral("Console"));
        console->setAccessibleName(QStringLiteral("Message console"));
        console->resize(760, 320);
        // It comes when something is said: the keyboard stays where the user is.
        console->setAttribute(Qt::WA_ShowWithoutActivating);
    }
    console->setWindowTitle(QString::fromStdString(title));
    console->show();
}

void console_Raise() {
    console_Open(console ? console->windowTitle().toStdString() : "Trvgui Console");
    if (!console) return;
    console->raise();
    console->activateWindow();
}

void console_SetListener(std::function<void(const std::string& text)> told) {
    listener = std::move(told);
}

namespace {

// Later, as what is said may come in the middle of anything.
void tellListener(std::string_view text) {
    if (!listener || !QCoreApplication::instance()) return;
    const bool waits = !untold.empty();
    untold += text;
    if (waits) return;
    QTimer::singleShot(0, qApp, [] {
        const std::string all = std::exchange(untold, {});
        if (listener) listener(all);
    });
}

}  // namespace

void console_Write(std::string_view text) {
    gen_standard_error(text);
    tellListener(text);
    if (!hasDisplay()) return;
    if (!console) console_Open("Trvgui Console");
    console->moveCursor(QTextCursor::End);
    console->insertPlainText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    console->moveCursor(QTextCursor::End);
}

void console_Install() {
    gen_set_report_sink([](int, const std::string& line) { console_Write(line); });
    gen_set_console_sink([](std::string_view text) { console_Write(text); });
}

void console_Close() {
    gen_set_report_sink({});
    gen_set_console_sink({});
    listener = nullptr;
    console.reset();
}
