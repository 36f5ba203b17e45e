#include "windlib/qt/manual_window.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QSplitter>
#include <QTextBrowser>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <array>

#include "shared/libcxxutil/paths.h"

namespace {

struct Page {
    const char *name, *title;
};
// In the order of the list.
constexpr std::array<Page, 15> pageTable{{{"start", "Chronoweave"},
                                          {"navigate", "Moving about"},
                                          {"measure", "Measuring"},
                                          {"objects", "Objects"},
                                          {"legend", "The legend"},
                                          {"search", "Searching"},
                                          {"report", "Reports"},
                                          {"details", "Detail windows"},
                                          {"eventtable", "The event table"},
                                          {"commands", "All commands"},
                                          {"options", "Options"},
                                          {"configure", "Configure files"},
                                          {"commandline", "The command line"},
                                          {"checks", "Timing checks"},
                                          {"messages", "Messages"}}};

// Where help keys and windows without one lead.
struct Lead {
    const char *from, *page;
};
constexpr Lead leadTable[] = {{"TRAXHelp", "start"},
                              {"TraxMenuBarHelp", "commands"},
                              {"TRVHelp", "start"},
                              {"HideTasks", "objects"},
                              {"TimeUnit", "navigate"},
                              {"GotoTime", "navigate"},
                              {"EditBookmarks", "navigate"},
                              {"Options", "options"},
                              {"ScrollPos", "options"},
                              {"Palette", "commands"},
                              {"KeySheet", "commands"},
                              {"getValue", "legend"},
                              {"About", "start"}};

QString folder() {
    return QString::fromStdString(path_join(path_installation_directory(), "docs/manual"));
}

QString fileOf(const std::string& page) {
    return folder() + QLatin1Char('/') + QString::fromStdString(page) + QStringLiteral(".md");
}

bool exists(const std::string& page) {
    for (const Page& known : pageTable)
        if (page == known.name) return QFileInfo::exists(fileOf(page));
    return false;
}

QString contentOf(const std::string& page) {
    QFile file(fileOf(page));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QPointer<ManualWindow>& theWindow() {
    static QPointer<ManualWindow> window;
    return window;
}

class F1Filter : public QObject {
  public:
    using QObject::QObject;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_F1)
            return false;
        if (!watched->isWidgetType()) return false;  // the window passes it on to a widget
        if (QWidget* menu = QApplication::activePopupWidget()) {
            menu->close();
            return manual_Open(manual_PageOf("TraxMenuBarHelp", ""), QApplication::activeWindow());
        }
        if (!manual_OpenFor(static_cast<QWidget*>(watched))) QApplication::beep();
        return true;
    }
};

QToolButton* button(const char* text, const char* spoken, QTextBrowser* browser,
                    void (QTextBrowser::*work)()) {
    auto* made = new QToolButton;
    made->setText(QString::fromUtf8(text));
    made->setAccessibleName(QString::fromUtf8(spoken));
    made->setToolTip(QString::fromUtf8(spoken));
    made->setEnabled(false);
    QObject::connect(made, &QToolButton::clicked, browser, work);
    return made;
}

}  // namespace

std::string manual_PageOf(const std::string& helpKey, const std::string& window) {
    for (const std::string& name : {helpKey, window}) {
        for (const Page& page : pageTable)
            if (name == page.name) return name;
        for (const Lead& lead : leadTable)
            if (name == lead.from) return lead.page;
    }
    return "start";
}

std::vector<std::string> manual_Pages() {
    std::vector<std::string> names;
    for (const Page& page : pageTable)
        if (exists(page.name)) names.emplace_back(page.name);
    return names;
}

bool manual_Open(const std::string& page, QWidget* parent) {
    if (!exists(page)) return false;
    // A dialog that waits for its answer lets only windows of its own live.
    QWidget* modal = QApplication::activeModalWidget();
    QPointer<ManualWindow> window = modal ? modal->findChild<ManualWindow*>() : theWindow().data();
    if (!window) {
        window = new ManualWindow(modal);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->resize(900, 640);
        if (parent) window->move(parent->window()->pos() + QPoint(60, 60));
        if (!modal) theWindow() = window;
    }
    window->open(page);
    window->show();
    window->raise();
    window->activateWindow();
    return true;
}

bool manual_OpenFor(QWidget* widget) {
    for (QWidget* at = widget; at; at = at->parentWidget()) {
        const QVariant name = at->property(manual_WindowName);
        if (!name.isValid()) continue;
        return manual_Open(manual_PageOf(at->property(manual_HelpKey).toString().toStdString(),
                                         name.toString().toStdString()),
                           widget);
    }
    return manual_Open("start", widget);
}

void manual_TakeF1() {
    qApp->installEventFilter(new F1Filter(qApp));
}

ManualWindow::ManualWindow(QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName(QStringLiteral("Manual"));
    setWindowTitle(QStringLiteral("Manual"));
    field_ = new QLineEdit;
    field_->setObjectName(QStringLiteral("search"));
    field_->setAccessibleName(QStringLiteral("Search the manual"));
    field_->setPlaceholderText(QStringLiteral("Search (Ctrl+F)"));
    field_->setClearButtonEnabled(true);
    pages_ = new QListWidget;
    pages_->setObjectName(QStringLiteral("pages"));
    pages_->setAccessibleName(QStringLiteral("Pages"));
    text_ = new QTextBrowser;
    text_->setObjectName(QStringLiteral("text"));
    text_->setAccessibleName(QStringLiteral("Page"));
    text_->setSearchPaths({folder()});
    text_->setOpenExternalLinks(false);
    text_->document()->setDocumentMargin(16);

    auto* back = button("\u2190", "Back (Alt+Left)", text_, &QTextBrowser::backward);
    auto* forward = button("\u2192", "Forward (Alt+Right)", text_, &QTextBrowser::forward);
    connect(text_, &QTextBrowser::backwardAvailable, back, &QWidget::setEnabled);
    connect(text_, &QTextBrowser::forwardAvailable, forward, &QWidget::setEnabled);
    auto* ways = new QHBoxLayout;
    ways->addWidget(back);
    ways->addWidget(forward);
    ways->addWidget(field_, 1);
    auto* left = new QWidget;
    auto* column = new QVBoxLayout(left);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(ways);
    column->addWidget(pages_, 1);
    auto* split = new QSplitter;
    split->addWidget(left);
    split->addWidget(text_);
    split->setStretchFactor(1, 1);
    split->setSizes({240, 660});
    auto* whole = new QVBoxLayout(this);
    whole->addWidget(split);

    search(QString());
    connect(field_, &QLineEdit::textChanged, this, &ManualWindow::search);
    connect(pages_, &QListWidget::currentRowChanged, this, [this] { showChosen(); });
    text_->setFocus();
}

bool ManualWindow::open(const std::string& page) {
    if (!exists(page)) return false;
    text_->setSource(QUrl::fromLocalFile(fileOf(page)), QTextDocument::MarkdownResource);
    return true;
}

void ManualWindow::search(const QString& words) {
    const QStringList wanted = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const QSignalBlocker quiet(pages_);
    pages_->clear();
    for (const Page& page : pageTable) {
        const QString content = contentOf(page.name);
        const bool fits = std::all_of(wanted.begin(), wanted.end(), [&](const QString& word) {
            return content.contains(word, Qt::CaseInsensitive);
        });
        if (content.isEmpty() || !fits) continue;
        auto* item = new QListWidgetItem(QString::fromUtf8(page.title), pages_);
        item->setData(Qt::UserRole, QString::fromUtf8(page.name));
    }
}

// The page chosen in the list, at the first word searched for.
void ManualWindow::showChosen() {
    const QListWidgetItem* item = pages_->currentItem();
    if (!item || !open(item->data(Qt::UserRole).toString().toStdString())) return;
    const QStringList wanted = field_->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (!wanted.isEmpty()) text_->find(wanted.front());
}

void ManualWindow::keyPressEvent(QKeyEvent* event) {
    const bool alt = event->modifiers() & Qt::AltModifier;
    if (event->key() == Qt::Key_Escape)
        close();
    else if (event->matches(QKeySequence::Find))
        field_->setFocus();
    else if (alt && event->key() == Qt::Key_Left)
        text_->backward();
    else if (alt && event->key() == Qt::Key_Right)
        text_->forward();
    else
        QWidget::keyPressEvent(event);
}
