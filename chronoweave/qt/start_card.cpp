#include "chronoweave/qt/start_card.h"

#include <QEvent>
#include <QUrl>

#include "shared/libcxxutil/paths.h"

namespace {

constexpr size_t mostShown = 5;  // recent files

QString linkTo(const std::string& command, const std::string& shown) {
    return QStringLiteral("<a href=\"") +
           QString::fromLatin1(QUrl::toPercentEncoding(QString::fromStdString(command))) +
           QStringLiteral("\">") + QString::fromStdString(shown).toHtmlEscaped() + QStringLiteral("</a>");
}

}  // namespace

StartCard::StartCard(QWidget& over, std::function<void(const std::string&)> run) : QLabel(&over) {
    setObjectName(QStringLiteral("StartCard"));
    setAccessibleName(QStringLiteral("What to do first"));
    setAutoFillBackground(true);  // a cursor may stand behind it
    setBackgroundRole(QPalette::Base);
    setMargin(12);
    setTextFormat(Qt::RichText);
    setAlignment(Qt::AlignCenter);
    setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    connect(this, &QLabel::linkActivated, this, [run = std::move(run)](const QString& chosen) {
        run(QUrl::fromPercentEncoding(chosen.toLatin1()).toStdString());
    });
    over.installEventFilter(this);
}

void StartCard::fill(const std::vector<std::string>& recent) {
    QString text = QStringLiteral("<h3>No trace is open</h3><p>") + linkTo("Open", "Open a trace...") +
                   QStringLiteral(
                       " (Ctrl+O), or drop a file here:<br>"
                       "a raw event file (.trr), a core file (.core) or a store (.trs)</p><p>") +
                   linkTo("Korvantis", "Watch a running system...") +
                   QStringLiteral("<br>a target, this machine, or a simulation to try it</p>");
    if (!recent.empty()) text += QStringLiteral("<p>Open lately:</p><p>");
    for (size_t i = 0; i < std::min(recent.size(), mostShown); ++i)
        text += linkTo("Open " + recent[i], std::string(path_file(recent[i]))) + QStringLiteral(" &nbsp; ") +
                QString::fromStdString(path_directory(recent[i])).toHtmlEscaped() + QStringLiteral("<br>");
    if (!recent.empty()) text += QStringLiteral("</p>");
    if (text != this->text()) setText(text);
    place();
}

void StartCard::place() {
    adjustSize();
    const QSize room = parentWidget()->size();
    move((room.width() - width()) / 2, (room.height() - height()) / 3);
}

bool StartCard::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parent() && event->type() == QEvent::Resize) place();
    return QLabel::eventFilter(watched, event);
}
