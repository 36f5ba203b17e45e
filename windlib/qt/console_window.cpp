#include "windlib/qt/console_window.h"

#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPointer>
#include <memory>

#include "shared/libcxxutil/report.h"

namespace {

constexpr int mostLines = 20000;
std::unique_ptr<QPlainTextEdit> console;

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
    }
    console->setWindowTitle(QString::fromStdString(title));
    console->show();
}

void console_Write(std::string_view text) {
    gen_standard_error(text);
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
    console.reset();
}
