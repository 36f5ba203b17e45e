#include "windlib/qt/platform.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QIcon>
#include <QKeyEvent>
#include <QMessageBox>
#include <QTimer>
#include <QToolTip>

#include "shared/libcxxutil/report.h"
#include "windlib/icons.h"
#include "windlib/qt/manual_window.h"

namespace {

constexpr qint64 paintEvery = 40;  // milliseconds between looks at the window system during long work

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

}  // namespace

std::unique_ptr<QApplication> platform_Start(int& argc, char** argv) {
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setApplicationName(QStringLiteral("chronoweave"));
    QApplication::setApplicationDisplayName(QStringLiteral("VOREL Chronoweave"));
    QApplication::setQuitOnLastWindowClosed(false);  // the main loop decides
    if (const IconHandle icon = icon_Find("app"); icon != NoIcon)
        QApplication::setWindowIcon(
            QIcon(QString::fromStdString(icon_Table()[static_cast<size_t>(icon)].path)));
    manual_TakeF1();
    return application;
}

void platform_ProcessPending() {
    QCoreApplication::processEvents();
}

void platform_Wait(std::chrono::milliseconds longest) {
    QTimer timer;
    timer.setSingleShot(true);
    timer.start(longest);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void platform_SetDark(bool dark) {
    static bool set = false;
    if (set == dark) return;
    set = dark;
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
    QMessageBox box(QMessageBox::Warning, QApplication::applicationDisplayName(),
                    QString::fromStdString(text), QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

class LongWork::Filter : public QObject {
  public:
    explicit Filter(std::function<void(double, double)> show) : show_(std::move(show)) {
        since_.start();
        qApp->installEventFilter(this);
    }
    bool tell(double done, double total) {
        if (since_.elapsed() >= paintEvery) {
            if (show_) show_(done, total);
            QCoreApplication::processEvents();
            since_.restart();
        }
        return !stopped_;
    }
    bool stopped() const { return stopped_; }
    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
            case QEvent::KeyPress:
            case QEvent::ShortcutOverride:
                stopped_ = stopped_ || static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
                return true;
            case QEvent::KeyRelease:
            case QEvent::Shortcut:
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseButtonDblClick:
            case QEvent::Wheel:
            case QEvent::ContextMenu:
            case QEvent::DragEnter:
            case QEvent::Drop:
            case QEvent::Close:
                event->ignore();
                return true;
            default:
                return false;
        }
    }

  private:
    std::function<void(double, double)> show_;
    QElapsedTimer since_;
    bool stopped_ = false;
};

LongWork::LongWork(std::function<void(double, double)> show)
    : filter_(std::make_unique<Filter>(std::move(show))) {}
LongWork::~LongWork() = default;
bool LongWork::tell(double done, double total) {
    return filter_->tell(done, total);
}
bool LongWork::stopped() const {
    return filter_->stopped();
}
