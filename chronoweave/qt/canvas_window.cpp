#include "chronoweave/qt/canvas_window.h"

#include <sys/stat.h>

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QFileDialog>
#include <QGridLayout>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <filesystem>

#include "chronoweave/analysis/bindings.h"
#include "chronoweave/analysis/dialogs.h"
#include "chronoweave/import/import.h"
#include "chronoweave/live/live_target.h"
#include "chronoweave/qt/event_dock.h"
#include "chronoweave/qt/find_strip.h"
#include "chronoweave/qt/lanes_maker.h"
#include "chronoweave/qt/overview_strip.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/qt/selection_corner.h"
#include "chronoweave/qt/start_card.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/fetch/fetch.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "chronoweave/traxfunc/input/fields.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/arrangement.h"
#include "chronoweave/traxfunc/session/legend_save.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/busy.h"
#include "windlib/config/arrangement_store.h"
#include "windlib/config/settings.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/dialog_view.h"
#include "windlib/qt/long_work.h"
#include "windlib/qt/platform.h"

namespace {

constexpr const char* positionKey = "Trvgui.Canvas";
constexpr int64_t readingSlice = 20;    // milliseconds, of a growing source
constexpr qint64 messageStands = 3000;  // milliseconds for which the pointer leaves a message alone

std::vector<CanvasWindow*>& windows() {
    static std::vector<CanvasWindow*> open;
    return open;
}

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

// What tells a source from what it was when the user arranged it.
laSourceIdentity identityOf(const std::string& path, const _LaCanvasData& canvas) {
    laSourceIdentity identity;
    struct stat facts {};
    if (::stat(path.c_str(), &facts) == 0) {
        identity.size = static_cast<uint64_t>(facts.st_size);
        identity.modified = static_cast<int64_t>(facts.st_mtime);
    }
    identity.events = canvas.source.store ? mt_GetEventCount(*canvas.source.store) : 0;
    return identity;
}

// The file that a source's name stands for: of a base name, the store's data.
std::string fileOf(const std::string& name) {
    std::error_code none;
    const bool base = !std::filesystem::exists(name, none);
    return std::filesystem::absolute(base ? name + ".trs" : name, none).lexically_normal().string();
}

// None for an empty name.
std::vector<CanvasWindow*> windowsOf(const std::string& name) {
    std::vector<CanvasWindow*> showing;
    if (name.empty()) return showing;
    const std::string path = fileOf(name);
    for (CanvasWindow* window : windows())
        if (window->source() == path) showing.push_back(window);
    return showing;
}

}  // namespace

CanvasWindow::CanvasWindow(const std::string& title, bool live, CanvasServices services)
    : title_(title), live_(live), services_(services), model_(dialogs_CanvasWindow()) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("Trax"));
    setWindowTitle(QString::fromStdString(title));
    build();
    connectItems();
    fillUpperFloor();
    makeLive();
    makeDebugger();
    makeMenus();
    takeOptions();
    makeEventTable();
    resize(1200, 760);
    windows().push_back(this);  // last, so that a failing creation leaves the list as it was
    if (!services_.settings) return;
    if (const auto position = services_.settings->Position(positionKey)) {
        const WindowRectangle& at = position->absolute;
        setGeometry(at.x, at.y, at.width, at.height);
    }
}

CanvasWindow::~CanvasWindow() {
    gate_Program().Forget(this);
    std::erase(windows(), this);
    laDebugger_Set(view_->canvas(), nullptr);
    target_.reset();
    host_.reset();  // with the windows about the canvas
    // The widgets speak of losing the keyboard while they go, to what is a member here.
    dialog_ = nullptr;
    delete events_;
    delete find_;
    delete selection_;
    setMenuBar(nullptr);
    delete takeCentralWidget();
}

const std::vector<CanvasWindow*>& CanvasWindow::all() {
    return windows();
}

CanvasWindow* CanvasWindow::find(const std::string& file) {
    const std::vector<CanvasWindow*> showing = windowsOf(file);
    return showing.empty() ? nullptr : showing.front();
}

void CanvasWindow::closeFile(const std::string& file) {
    for (CanvasWindow* window : windowsOf(file)) window->close();
}

void CanvasWindow::closeAll() {
    for (CanvasWindow* window : std::vector<CanvasWindow*>(windows())) window->close();
}

bool CanvasWindow::showTime(const std::string& file, uint32_t objectId, const std::string& text) {
    bool any = false;
    for (CanvasWindow* window : file.empty() ? windows() : windowsOf(file))
        any = window->showTimeHere(objectId, text) || any;
    return any;
}

bool CanvasWindow::showTimeHere(uint32_t objectId, const std::string& text) {
    const auto time = scan_double(text);
    _LaCanvasData& canvas = view_->canvas();
    if (!time || !canvas.source.storeHasEvents || *time < 0 || *time > canvas.source.totalLength)
        return false;
    canvas.source.liveRefresh = false;
    view_->draw([&] {
        laCanvas_MoveCursor(canvas, 0, *time);
        laCanvas_Reveal(canvas, *time, objectId == 0 ? laAgentId : objectId);
    });
    showButtons();
    return true;
}

void CanvasWindow::tellConsoleAll(const std::string& text) {
    for (CanvasWindow* window : windows()) window->tellConsole(text);
}

void CanvasWindow::tellConsole(const std::string& text) {
    if (!text_trim(view_->canvas().fields.message).empty()) return;
    const std::string line(text_trim(std::string_view(text).substr(0, text.find('\n'))));
    if (!line.empty()) say("On the console: " + line);
}

CanvasWindow* CanvasWindow::openAnother() {
    auto* another = new CanvasWindow("VOREL Chronoweave", false, services_);  // deletes itself when closed
    another->move(pos() + QPoint(30, 30));
    another->show();
    return another;
}

void CanvasWindow::build() {
    dialog_ = new DialogView(model_, [this](const DialogItem& item) { return makeItem(item); });
    setCentralWidget(dialog_);
    const auto tell = [this](std::optional<double> share) {
        if (busy_ == 0) showProgress(share);
    };
    lanes_ = new LanesMaker(*view_, tell, this);
    view_->setFocus();
}

QWidget* CanvasWindow::makeItem(const DialogItem& item) {
    if (item.kind == DialogKind::Graph) return makePane();
    if (item.kind == DialogKind::Strip) return overview_ = new OverviewStrip(*view_);
    if (item.kind == DialogKind::ToolBar) return makeTools();
    return nullptr;
}

// The picture with its bars.
QWidget* CanvasWindow::makePane() {
    auto* pane = new QWidget;
    view_ = new PictureView;
    view_->setObjectName(QStringLiteral("Graph"));
    view_->setAccessibleName(QStringLiteral("Time line"));
    start_ = new StartCard(*view_, [this](const std::string& text) { command(text); });
    horizontal_ = new QScrollBar(Qt::Horizontal);
    vertical_ = new QScrollBar(Qt::Vertical);
    horizontal_->setObjectName(QStringLiteral("HScroll"));
    horizontal_->setAccessibleName(QStringLiteral("Scroll in time"));
    vertical_->setObjectName(QStringLiteral("VScroll"));
    vertical_->setAccessibleName(QStringLiteral("Scroll over the rows"));
    pane_ = new QVBoxLayout(pane);
    pane_->setContentsMargins(0, 0, 0, 0);
    pane_->setSpacing(0);
    grid_ = new QGridLayout;
    pane_->addLayout(grid_, 1);
    grid_->setContentsMargins(0, 0, 0, 0);
    grid_->setSpacing(0);
    return pane;
}

// On the sides that the options name.
void CanvasWindow::placeBars() {
    const int row = options().horizontalBarBottom ? 0 : 1, column = options().verticalBarRight ? 0 : 1;
    for (QWidget* part :
         {static_cast<QWidget*>(view_), static_cast<QWidget*>(vertical_), static_cast<QWidget*>(horizontal_)})
        grid_->removeWidget(part);
    for (int i : {0, 1}) {
        grid_->setRowStretch(i, i == row ? 1 : 0);
        grid_->setColumnStretch(i, i == column ? 1 : 0);
    }
    grid_->addWidget(view_, row, column);
    grid_->addWidget(vertical_, row, 1 - column);
    grid_->addWidget(horizontal_, 1 - row, column);
}

void CanvasWindow::connectItems() {
    LaGraph& graph = view_->graph();
    _LaCanvasData& canvas = view_->canvas();
    const auto follow = [](QScrollBar* bar, ScrollBarModel& model) {
        connect(bar, &QScrollBar::valueChanged, bar,
                [&model](int value) { model.userMoved(model.fromNative(static_cast<uint32_t>(value))); });
    };
    follow(horizontal_, graph.horizontal);
    connect(horizontal_, &QScrollBar::sliderPressed, view_, &PictureView::hold);
    connect(horizontal_, &QScrollBar::sliderReleased, view_, &PictureView::letGo);
    connect(view_, &PictureView::releaseMissed, this, [this] {
        if (horizontal_->isSliderDown()) horizontal_->setSliderDown(false);
    });
    follow(vertical_, graph.vertical);
    connect(view_, &PictureView::barsChanged, this, [this] { syncBars(); });
    connect(view_, &PictureView::hovered, this,
            [this](const QString& text) { showHover(text.toStdString()); });
    connect(view_, &PictureView::fileDropped, this,
            [this](const QString& path) { load(path.toStdString()); });
    canvas.calls.fieldsChanged = [this] { showFields(); };
    canvas.calls.buttonsChanged = [this] { showButtons(); };
    canvas.calls.progress = [this](double done, double total) { return !work_ || work_->tell(done, total); };
    graph.setBusy = [this](bool busy) { setBusy(busy); };
    model_.onCommit = [this](const std::string& name, const std::string& text) {
        view_->draw([&] { fieldRefused_ = !laCanvas_CommitField(view_->canvas(), name, text); });
        showFields();
    };
    model_.onPress = [this](const std::string& name) { command(name); };
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
    return model_.message();
}
void CanvasWindow::say(const std::string& text) {
    laCanvas_UpdateFields(view_->canvas(), 0, text.c_str());
}

// The place of the pointer gives way to what was just said, and to nothing when the pointer leaves.
void CanvasWindow::showHover(const std::string& text) {
    if (saidSince_.isValid() && saidSince_.elapsed() < messageStands) return;
    model_.setMessage(text.empty() ? view_->canvas().fields.message : text);
}

void CanvasWindow::showFields() {
    if (!dialog_) return;
    const LaCanvasFields& fields = view_->canvas().fields;
    const std::pair<const char*, const std::string*> texts[] = {{"tf_view_from", &fields.viewFrom},
                                                                {"tf_view_to", &fields.viewTo},
                                                                {"tf_view_len", &fields.viewLength},
                                                                {"tf_sel_from", &fields.selFrom},
                                                                {"tf_sel_to", &fields.selTo},
                                                                {"tf_sel_len", &fields.selLength},
                                                                {"TickPattern", &fields.tickPattern},
                                                                {"TickUnit", &fields.tickUnit},
                                                                {"TotalLength", &fields.totalLength},
                                                                {"tu_view", &fields.unit},
                                                                {"tu_sel", &fields.unit}};
    for (const auto& [name, text] : texts)
        if (model_.item(name).text != *text) model_.setText(name, *text);
    if (model_.item("TotalLength").title != fields.totalLengthTitle)
        model_.setItemTitle("TotalLength", fields.totalLengthTitle);
    if (said_ != fields.message) {
        said_ = fields.message;
        if (said_.find_first_not_of(' ') != std::string::npos) saidSince_.start();
    }
    if (model_.message() != fields.message) model_.setMessage(fields.message);
}

void CanvasWindow::setBusy(bool busy) {
    busy_ += busy ? 1 : -1;
    platform_SetBusy(busy);
    if (busy_ > 0 && !work_) {
        work_ = std::make_unique<LongWork>([this](double done, double total) {
            model_.setVisible("Progress", true);
            const double share = total > 0 ? done / total : 0;
            model_.setProgress("Progress", static_cast<int>(1000 * share), 1000);
            const std::string& what = view_->canvas().fields.message;
            model_.setMessage((what.find("...") == std::string::npos ? "Working ..." : what) +
                              gen_format(" %d %% (Escape stops)", static_cast<int>(100 * share)));
        });
    } else if (busy_ == 0) {
        work_.reset();
        // Qt takes a second request for none.
        if (diesWhenIdle_)
            return gate_Program().WhenMay(GateActivity::ServiceHandler, this, [this] { delete this; });
        if (!model_.item("Progress").visible) return;
        model_.setVisible("Progress", false);
        model_.setMessage(view_->canvas().fields.message);
    }
}

void CanvasWindow::showEmpty() {
    view_->draw([this] {
        _LaCanvasData& canvas = view_->canvas();
        laCanvas_MoveCursor(canvas, 0, (canvas.view.viewLow + canvas.view.viewHigh) / 2);
    });
    showButtons();
}

bool CanvasWindow::load(const std::string& name) {
    if (!gate_May(GateActivity::Command)) return false;
    if (name.empty()) {
        say("Invalid file name.");
        return false;
    }
    if (!mayLoad(name, fileOf(name))) return false;
    keepArrangement();
    const std::string loadingText = gen_format("Loading data from file \"%s\" ...", name.c_str());
    say(loadingText);
    start_->hide();
    auto busy = std::make_optional<BusyWork>(GateWork::Load, view_->graph().setBusy);
    ImportOptions options;
    options.progress = view_->canvas().calls.progress;
    options.keepGrowing = true;
    // A store has one writer: the file is made anew, and who showed it shows what it has.
    for (CanvasWindow* window : windowsOf(name)) window->endGrowing();
    OpenedSource opened = import_OpenSource(name, options);
    std::string losses = lossesOf(opened.counts);
    if (opened.counts.stopped) losses = "stopped" + (losses.empty() ? "" : "; " + losses);
    std::string configureSaid;
    const bool shown = opened.store && showStore(opened, name, configureSaid);
    if (shown) {
        overview_->rebuild();
        growing_ = std::move(opened.growing);
        view_->canvas().calls.upper.sourceGrows = growing_ != nullptr;
        if (target_) target_->reader().Loaded(source_);
    }
    showButtons();
    busy.reset();
    std::string message = opened.inCache ? "The store is " + opened.base + ".trs" : "";
    laSource_TellDamage(view_->canvas().source);  // of what the overview read
    const std::string damage = shown ? view_->canvas().source.damage : "";
    for (const std::string& more : {damage, losses, configureSaid})
        if (!more.empty()) message += (message.empty() ? "" : "; ") + more;
    if (shown) {
        say(message);
        restoreArrangement();
        if (!growing_) lanes_->begin();
        laHistory_Add(view_->canvas());  // so that one comes back to the first picture
        if (services_.settings) services_.settings->AddRecent(source_, program_TraceFiles);
        showButtons();
    }
    if (!shown && view_->canvas().fields.message == loadingText) say(opened.counts.stopped ? "Stopped." : "");
    if (!opened.trouble) gen_console("%s\n", opened.trouble.text().c_str());
    const std::string box = opened.trouble ? damage : opened.trouble.text();
    if (!box.empty()) platform_MessageBox(this, box);
    return shown;
}

void CanvasWindow::endGrowing() {
    growing_.reset();
    view_->canvas().calls.upper.sourceGrows = false;
    showButtons();
}

// What the target has logged since goes into the store and into the view. What is done in a moment shows
// nothing but the picture; much is read piece by piece, up to where the source ended when it was asked for.
bool CanvasWindow::readOn() {
    if (!growing_) {
        laCanvas_Refuse(view_->canvas(), "Nothing can be added to this source: only a raw event file grows.");
        return false;
    }
    ReadOn read = import_ReadOn(*growing_, readingSlice);
    if (read.more) {
        const BusyWork busy(GateWork::Load, view_->graph().setBusy);
        readRest(read);
        showGrown(read);
    } else {
        showGrown(read);
    }
    showButtons();
    std::string told = read.events == 0   ? "Nothing was added since it was last read"
                       : read.events == 1 ? "1 more event"
                                          : std::to_string(read.events) + " more events";
    if (read.more)
        told += "; the file has more";
    else if (read.unread > 0)
        told += "; " + std::to_string(read.unread) + " bytes unread at the end";
    say(read.trouble.ok() ? told + "." : read.trouble.text());
    return read.trouble.ok();
}

void CanvasWindow::readRest(ReadOn& read) {
    const SourceExtent begin = read.extent;
    const Progress& progress = view_->canvas().calls.progress;
    while (read.more && read.trouble.ok() && read.extent.done < begin.total &&
           progress(read.extent.done - begin.done, begin.total - begin.done)) {
        const uint64_t before = read.events;
        read = import_ReadOn(*growing_, readingSlice);
        read.events += before;
    }
}

void CanvasWindow::showGrown(const ReadOn& read) {
    if (read.events == 0) return;
    view_->draw([this] { laCanvas_SourceGrew(view_->canvas()); });
    overview_->countOn();
}

bool CanvasWindow::showStore(OpenedSource& opened, const std::string& name, std::string& said) {
    Legend legend;
    ConfigureCallbacks callbacks = configure_ConsoleCallbacks();
    callbacks.message = [&](const std::string& text) {
        say(text);
        said = text;
    };
    callbacks.attention = platform_Beep;
    callbacks.errorDialog = [&](const std::string& text) {
        opened.trouble = result_Both(std::move(opened.trouble), Result::failure(text));
    };
    _LaCanvasData& canvas = view_->canvas();
    const bool changed = canvas.looks.legendChanged;
    laLegend_OfferSave(canvas);  // what is saved now may be what is read next
    legend.misc = laLegend_Kept(canvas.options);
    if (!configure_Read(legend, mt_GetOsName(opened.store.get()), callbacks, view_->graph().font.height)) {
        canvas.looks.legendChanged = canvas.looks.legendChanged || changed;
        return false;
    }
    laCanvas_CloseViews(canvas);
    bool shown = false;
    view_->draw(
        [&] { shown = laCanvas_SetUpFromStore(canvas, std::move(opened.store), std::move(legend), name); });
    if (shown) {
        source_ = fileOf(name);
        setWindowTitle(QString::fromStdString(canvas.source.canvasName));
        setWindowIconText(QString::fromStdString(canvas.source.shortName));
        view_->layOutAndPaint();
    } else {
        showNoSource();
    }
    return shown;
}

void CanvasWindow::restoreArrangement() {
    if (!services_.arrangements) return;
    const auto text = services_.arrangements->Load(source_);
    if (!text) return;
    laArrangement arrangement;
    if (const Result read = laArrangement_FromText(*text, arrangement); !read) {
        gen_warning("the arrangement kept for %s is damaged: %s", source_.c_str(), read.text().c_str());
        return;
    }
    view_->draw(
        [&] { laArrangement_Restore(view_->canvas(), arrangement, identityOf(source_, view_->canvas())); });
    view_->layOutAndPaint();
}

void CanvasWindow::keepArrangement() {
    if (!services_.arrangements || source_.empty() || !view_->canvas().source.store) return;
    const _LaCanvasData& canvas = view_->canvas();
    services_.arrangements->Save(
        source_, laArrangement_ToText(laArrangement_Take(canvas, identityOf(source_, canvas))));
}

// The keyboard is the picture's, not the first button's.
void CanvasWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    view_->setFocus();
}

// A dialog or work of this window stands on what would go: it goes when they are over.
void CanvasWindow::closeEvent(QCloseEvent* event) {
    if (!gate_May(GateActivity::ServiceHandler)) {
        event->ignore();
        return gate_Program().WhenMay(GateActivity::ServiceHandler, this, [this] { close(); });
    }
    laLegend_OfferSave(view_->canvas());
    keepArrangement();
    if (services_.settings) {
        const QRect at = geometry();
        WindowPosition position;
        position.timestamp = QDateTime::currentSecsSinceEpoch();
        position.absolute = {at.x(), at.y(), at.width(), at.height()};
        position.toParent = position.absolute;
        services_.settings->SetPosition(positionKey, position);
        services_.settings->Save();
    }
    QMainWindow::closeEvent(event);
    setEnabled(false);            // what was typed ahead is for nobody
    std::erase(windows(), this);  // nobody finds it any more; it goes when the loop comes round
}

// A closed window can still be at work, which serves events: it does not go underneath.
bool CanvasWindow::event(QEvent* event) {
    if (event->type() != QEvent::DeferredDelete || busy_ == 0) return QMainWindow::event(event);
    diesWhenIdle_ = true;
    return true;
}

void CanvasWindow::chooseAndLoad() {
    QFileDialog dialog(this, QStringLiteral("Read From?"));
    dialog.setNameFilters({QStringLiteral("Raw event files (*.trr)"),
                           QStringLiteral("Stores and core files (*.trs *.core)"),
                           QStringLiteral("All files (*)")});
    dialog.setFileMode(QFileDialog::AnyFile);  // a store may be given by its base name
    dialog.setLabelText(QFileDialog::Accept, QStringLiteral("Read"));
    std::string last = source_;
    if (last.empty() && services_.settings && !services_.settings->Recent(program_TraceFiles).empty())
        last = services_.settings->Recent(program_TraceFiles).front();
    if (!last.empty()) dialog.setDirectory(QString::fromStdString(path_directory(last)));
    if (!source_.empty()) dialog.selectFile(QString::fromStdString(source_));
    const Gate::Token open = gate_Begin(GateWork::ModalDialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    QString name = dialog.selectedFiles().constFirst();
    if (QFileInfo(name).suffix().isEmpty()) name += QStringLiteral(".trs");
    load(name.toStdString());
}
