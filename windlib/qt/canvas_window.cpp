#include "windlib/qt/canvas_window.h"

#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QScrollBar>
#include <QSignalBlocker>

#include "chronoweave/import/import.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/session.h"
#include "chronoweave/traxfunc/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/qt/picture_view.h"
#include "windlib/qt/platform.h"

namespace {

int windows = 0;

// What an import left out, for the message line; empty when it took everything.
std::string lossesOf(const ImportCounts& counts) {
    std::string text;
    const auto add = [&](uint64_t count, const char* what) {
        if (count > 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + what;
    };
    add(counts.dropped(), " records dropped");
    add(counts.badBytes, " bad bytes");
    add(counts.unread, " bytes unread at the end");
    return text;
}

}  // namespace

CanvasWindow::CanvasWindow(const std::string& title, bool live) : live_(live) {
    ++windows;
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("Canvas"));
    setWindowTitle(QString::fromStdString(title));
    build();
    connectBars();
    view_->canvas().fieldsChanged = [this] { showFields(); };
    view_->canvas().progress = [this](double done, double total) {
        return !work_ || work_->tell(done, total);
    };
    view_->graph().setBusy = [this](bool busy) { setBusy(busy); };
    connect(view_, &PictureView::barsChanged, this, [this] { syncBars(); });
    connect(view_, &PictureView::hovered, this, [this](int x) { showPointer(x); });
    connect(view_, &PictureView::fileDropped, this,
            [this](const QString& path) { load(path.toStdString()); });
    resize(1200, 700);
}

CanvasWindow::~CanvasWindow() {
    --windows;
}
int CanvasWindow::count() {
    return windows;
}

void CanvasWindow::build() {
    view_ = new PictureView;
    horizontal_ = new QScrollBar(Qt::Horizontal);
    vertical_ = new QScrollBar(Qt::Vertical);
    horizontal_->setObjectName(QStringLiteral("HScroll"));
    horizontal_->setAccessibleName(QStringLiteral("Scroll in time"));
    vertical_->setObjectName(QStringLiteral("VScroll"));
    vertical_->setAccessibleName(QStringLiteral("Scroll over the rows"));
    message_ = new QLabel;
    message_->setObjectName(QStringLiteral("ts_info"));
    message_->setAccessibleName(QStringLiteral("Message line"));
    message_->setTextFormat(Qt::PlainText);
    message_->setMinimumWidth(1);
    bar_ = new QProgressBar;
    bar_->setObjectName(QStringLiteral("Progress"));
    bar_->setAccessibleName(QStringLiteral("Progress"));
    bar_->setRange(0, 1000);
    bar_->setMaximumWidth(200);
    bar_->hide();
    auto* line = new QHBoxLayout;
    line->addWidget(message_, 1);
    line->addWidget(bar_);
    line->setContentsMargins(6, 2, 6, 4);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->setRowStretch(0, 1);
    grid->setColumnStretch(0, 1);
    grid->addWidget(view_, 0, 0);
    grid->addWidget(vertical_, 0, 1);
    grid->addWidget(horizontal_, 1, 0);
    grid->addLayout(line, 2, 0, 1, 2);
    view_->setFocus();
}

void CanvasWindow::connectBars() {
    LaGraph& graph = view_->graph();
    const auto follow = [](QScrollBar* bar, ScrollBarModel& model) {
        connect(bar, &QScrollBar::valueChanged, bar,
                [&model](int value) { model.userMoved(model.fromNative(static_cast<uint32_t>(value))); });
    };
    follow(horizontal_, graph.horizontal);
    follow(vertical_, graph.vertical);
}

void CanvasWindow::syncBars() {
    const LaGraph& graph = view_->graph();
    const auto take = [](QScrollBar* bar, const ScrollBarModel& model) {
        const QSignalBlocker quiet(bar);
        const double scale = model.maximum() > 0 ? static_cast<double>(model.nativeMaximum()) /
                                                       static_cast<double>(model.maximum())
                                                 : 1;
        const int page = std::max(1, static_cast<int>(static_cast<double>(model.visible()) * scale));
        bar->setRange(0, static_cast<int>(model.nativeMaximum()));
        bar->setPageStep(page);
        bar->setSingleStep(std::max(1, page / 20));
        bar->setValue(static_cast<int>(model.nativePosition()));
    };
    take(horizontal_, graph.horizontal);
    take(vertical_, graph.vertical);
}

std::string CanvasWindow::message() const {
    return message_->text().toStdString();
}
void CanvasWindow::say(const std::string& text) {
    laCanvas_UpdateFields(view_->canvas(), 0, text.c_str());
}

void CanvasWindow::showFields() {
    message_->setText(QString::fromStdString(view_->canvas().fields.message));
}

void CanvasWindow::showPointer(int x) {
    _LaCanvasData& canvas = view_->canvas();
    if (!canvas.storeHasEvents || loading_) return;
    say(x < 0 ? "" : laTime_Text(canvas, laTimeScale(canvas).toTime(x)));
}

void CanvasWindow::showProgress(double done, double total) {
    bar_->show();
    bar_->setValue(total > 0 ? static_cast<int>(1000 * done / total) : 0);
}

bool CanvasWindow::load(const std::string& name) {
    if (loading_) return false;
    if (name.empty()) {
        say("Invalid file name.");
        return false;
    }
    loading_ = true;
    say(gen_format("Loading data from file \"%s\" ...", name.c_str()));
    setBusy(true);
    ImportOptions options;
    options.progress = view_->canvas().progress;
    OpenedSource opened = import_OpenSource(name, options);
    std::string losses = lossesOf(opened.counts);
    if (opened.counts.stopped) losses = "stopped" + (losses.empty() ? "" : "; " + losses);
    const bool shown = opened.store && showStore(opened, name);
    setBusy(false);
    loading_ = false;
    std::string message = opened.inCache ? "The store is " + opened.base + ".trs" : "";
    if (!losses.empty()) message += (message.empty() ? "" : "; ") + losses;
    if (shown) say(message);
    if (!opened.error.empty()) platform_MessageBox(this, opened.error);
    return shown;
}

void CanvasWindow::setBusy(bool busy) {
    busy_ += busy ? 1 : -1;
    platform_SetBusy(busy);
    if (busy_ > 0 && !work_) {
        work_ = std::make_unique<LongWork>([this](double done, double total) { showProgress(done, total); });
    } else if (busy_ == 0) {
        work_.reset();
        bar_->hide();
    }
}

bool CanvasWindow::showStore(OpenedSource& opened, const std::string& name) {
    Legend legend;
    ConfigureCallbacks callbacks = configure_ConsoleCallbacks();
    callbacks.message = [this](const std::string& text) { say(text); };
    callbacks.attention = platform_Beep;
    callbacks.errorDialog = [&](const std::string& text) {
        opened.error += opened.error.empty() ? text : "\n" + text;
    };
    if (!configure_Read(legend, mt_GetOsName(opened.store.get()), callbacks, view_->graph().font.height))
        return false;
    _LaCanvasData& canvas = view_->canvas();
    bool shown = false;
    view_->draw(
        [&] { shown = laCanvas_SetUpFromStore(canvas, std::move(opened.store), std::move(legend), name); });
    if (shown) setWindowTitle(QString::fromStdString(canvas.canvasName));
    view_->layOutAndPaint();
    return shown;
}

void CanvasWindow::chooseAndLoad() {
    const _LaCanvasData& canvas = view_->canvas();
    QString name = QFileDialog::getOpenFileName(this, QStringLiteral("Read From?"),
                                                QString::fromStdString(canvas.sourcePath),
                                                QStringLiteral("Traces (*.trr *.trs *.core);;All files (*)"));
    if (name.isEmpty()) return;
    if (QFileInfo(name).suffix().isEmpty()) name += QStringLiteral(".trs");
    load(name.toStdString());
}

void CanvasWindow::help() {
    QMessageBox::information(this, QStringLiteral("Keys"),
                             QStringLiteral("Ctrl+O\topen a trace (or drop a file)\n"
                                            "Ctrl+wheel, W, S, +, -\tzoom at the pointer\n"
                                            "wheel, Up, Down\tscroll over the rows\n"
                                            "Shift+wheel, A, D, Left, Right\tscroll in time\n"
                                            "Page Up, Page Down\tscroll by a view\n"
                                            "Home, End\tto the ends\n"
                                            "0\tshow everything\n"
                                            "Escape\tstop long work"));
}

void CanvasWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Open))
        chooseAndLoad();
    else if (event->key() == Qt::Key_F1 || event->text() == QStringLiteral("?"))
        help();
    else
        QWidget::keyPressEvent(event);
}
