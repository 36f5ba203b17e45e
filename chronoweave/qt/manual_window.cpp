#include "chronoweave/qt/manual_window.h"

#include <QApplication>
#include <QDir>
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
#include "windlib/qt/dialog_view.h"
#include "windlib/qt/platform.h"

namespace {

constexpr int mostMarks = 1000;  // of searched words in a page

struct Page {
    const char *name, *title;
    const char* file = nullptr;  // where it is not NAME.md
};
// In the order of the list.
constexpr std::array<Page, 23> pageTable{{{"start", "Chronoweave"},
                                          {"navigate", "Moving about"},
                                          {"measure", "Measuring"},
                                          {"objects", "Objects"},
                                          {"legend", "The legend"},
                                          {"find", "Finding"},
                                          {"search", "Searching"},
                                          {"intervals", "Intervals"},
                                          {"report", "Reports"},
                                          {"details", "Detail windows"},
                                          {"eventtable", "The event table"},
                                          {"merge", "Merging"},
                                          {"print", "Printing"},
                                          {"commands", "All commands"},
                                          {"options", "Options"},
                                          {"configure", "Configure files"},
                                          {"commandline", "The command line"},
                                          {"checks", "Timing checks"},
                                          {"live", "Live targets"},
                                          {"companions", "The event server"},
                                          {"remote", "Steering from outside"},
                                          {"formats", "File formats", "../formats.md"},
                                          {"messages", "Messages"}}};

// Where help keys lead that are no pages' names, and windows without one or with a page of their own.
struct Lead {
    const char *from, *page;
};
constexpr Lead leadTable[] = {{"TRAXHelp", "start"},     {"TraxMenuBarHelp", "commands"},
                              {"TRVHelp", "start"},      {"SearchInterval", "intervals"},
                              {"HideTasks", "objects"},  {"TimeUnit", "navigate"},
                              {"GotoTime", "navigate"},  {"EditBookmarks", "navigate"},
                              {"Options", "options"},    {"ScrollPos", "options"},
                              {"Palette", "commands"},   {"KeySheet", "commands"},
                              {"MergeOptions", "merge"}, {"getValue", "legend"},
                              {"About", "start"},        {"Print", "print"},
                              {"PrintTable", "print"},   {"KorvantisTarget", "live"}};

QString folder() {
    return QString::fromStdString(path_join(path_installation_directory(), "docs/manual"));
}

QString fileOf(const Page& page) {
    const QString name =
        page.file ? QString::fromUtf8(page.file) : QLatin1String(page.name) + QStringLiteral(".md");
    return QDir::cleanPath(folder() + QLatin1Char('/') + name);
}

const Page* pageNamed(const std::string& name) {
    for (const Page& known : pageTable)
        if (name == known.name) return QFileInfo::exists(fileOf(known)) ? &known : nullptr;
    return nullptr;
}

// What the reader of a page sees, without its marks.
QString textOf(const Page& page) {
    QFile file(fileOf(page));
    if (!file.open(QIODevice::ReadOnly)) return {};
    QTextDocument document;
    document.setMarkdown(QString::fromUtf8(file.readAll()));
    return document.toPlainText();
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
        auto* widget = static_cast<QWidget*>(watched);
        if (!manual_OpenFor(widget))
            platform_MessageBox(widget->window(), "Sorry, on-line help is not supported.");
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
    for (const std::string& name : {window, helpKey}) {
        for (const Lead& lead : leadTable)
            if (name == lead.from) return lead.page;
        for (const Page& page : pageTable)
            if (name == page.name) return name;
    }
    return "start";
}

std::vector<std::string> manual_Pages() {
    std::vector<std::string> names;
    for (const Page& page : pageTable)
        if (pageNamed(page.name)) names.emplace_back(page.name);
    return names;
}

bool manual_Open(const std::string& page, QWidget* parent) {
    if (!pageNamed(page)) return false;
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
        const QVariant name = at->property(dialogView_WindowName);
        if (!name.isValid()) continue;
        return manual_Open(manual_PageOf(at->property(dialogView_HelpKey).toString().toStdString(),
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

    for (const Page& page : pageTable) texts_.push_back(textOf(page));
    listPages();
    connect(field_, &QLineEdit::returnPressed, this, [this] { findNext(); });
    connect(text_, &QTextBrowser::sourceChanged, this, [this](const QUrl& source) {
        open_ = QDir::cleanPath(source.toLocalFile());  // the browser itself knows it later
        showInList();
    });
    connect(field_, &QLineEdit::textChanged, this, [this] { listPages(); });
    connect(pages_, &QListWidget::currentRowChanged, this, [this] { showChosen(); });
    text_->setFocus();
}

bool ManualWindow::open(const std::string& page) {
    const Page* found = pageNamed(page);
    if (!found) return false;
    text_->setSource(QUrl::fromLocalFile(fileOf(*found)), QTextDocument::MarkdownResource);
    return true;
}

QStringList ManualWindow::words() const {
    return field_->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void ManualWindow::search(const QString& words) {
    field_->setText(words);
}

void ManualWindow::listPages() {
    const QStringList wanted = words();
    const QSignalBlocker quiet(pages_);
    pages_->clear();
    for (size_t i = 0; i < pageTable.size(); ++i) {
        const QString& content = texts_[i];
        const bool fits = std::all_of(wanted.begin(), wanted.end(), [&](const QString& word) {
            return content.contains(word, Qt::CaseInsensitive);
        });
        if (content.isEmpty() || !fits) continue;
        auto* item = new QListWidgetItem(QString::fromUtf8(pageTable[i].title), pages_);
        item->setData(Qt::UserRole, QString::fromUtf8(pageTable[i].name));
    }
    showInList();
    markWords();
}

// The list tells which page is open.
void ManualWindow::showInList() {
    const QSignalBlocker quiet(pages_);
    pages_->setCurrentRow(-1);
    for (int row = 0; row < pages_->count(); ++row) {
        const Page* page = pageNamed(pages_->item(row)->data(Qt::UserRole).toString().toStdString());
        if (page && fileOf(*page) == open_) pages_->setCurrentRow(row);
    }
    markWords();
}

// All places of the words searched for stand out in the open page.
void ManualWindow::markWords() {
    QList<QTextEdit::ExtraSelection> marks;
    QTextCharFormat look;
    look.setBackground(palette().color(QPalette::Highlight));
    look.setForeground(palette().color(QPalette::HighlightedText));
    for (const QString& word : words())
        for (QTextCursor at = text_->document()->find(word, 0); !at.isNull() && marks.size() < mostMarks;
             at = text_->document()->find(word, at))
            marks.append({at, look});
    text_->setExtraSelections(marks);
}

// Enter in the field: the first page found, then from place to place in it.
void ManualWindow::findNext() {
    if (words().isEmpty() || pages_->count() == 0) return;
    if (pages_->currentRow() < 0) return pages_->setCurrentRow(0);
    if (text_->find(words().front())) return;
    text_->moveCursor(QTextCursor::Start);
    text_->find(words().front());
}

// The page chosen in the list, at the first word searched for.
void ManualWindow::showChosen() {
    const QListWidgetItem* item = pages_->currentItem();
    if (!item || !open(item->data(Qt::UserRole).toString().toStdString())) return;
    if (!words().isEmpty()) text_->find(words().front());
}

void ManualWindow::keyPressEvent(QKeyEvent* event) {
    const bool alt = event->modifiers() & Qt::AltModifier;
    if (event->key() == Qt::Key_Escape)
        close();
    else if (event->matches(QKeySequence::Find))
        field_->setFocus(), field_->selectAll();
    else if (alt && event->key() == Qt::Key_Left)
        text_->backward();
    else if (alt && event->key() == Qt::Key_Right)
        text_->forward();
    else
        QWidget::keyPressEvent(event);
}
