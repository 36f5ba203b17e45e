// What the canvas window does of the table of commands: whatever needs a window, a dialog or the settings.
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QTimer>
#include <QVBoxLayout>
#include <filesystem>

#include "chronoweave/analysis/analysis.h"
#include "chronoweave/analysis/detail_windows.h"
#include "chronoweave/analysis/dialog_commands.h"
#include "chronoweave/analysis/legend_window.h"
#include "chronoweave/analysis/merge_dialogs.h"
#include "chronoweave/analysis/print_dialog.h"
#include "chronoweave/analysis/program_dialogs.h"
#include "chronoweave/live/live_target.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/event_dock.h"
#include "chronoweave/qt/find_strip.h"
#include "chronoweave/qt/manual_window.h"
#include "chronoweave/qt/overview_strip.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/qt/selection_corner.h"
#include "chronoweave/qt/start_card.h"
#include "chronoweave/qt/tool_bar.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/session/legend_save.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/paths.h"
#include "windlib/config/settings.h"
#include "windlib/qt/console_window.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/dialog_view.h"
#include "windlib/qt/menu_view.h"
#include "windlib/qt/platform.h"

namespace {

constexpr const char* menuName = "TraxMenuBar";

void registerMenus() {
    if (menu_Registry().Find(menuName, false)) return;
    laMenus_Register(menu_Registry());
    menu_InstallPopUps(menu_Registry());
}

// Options of windows that were given no settings.
ProgramOptions& looseOptions() {
    static ProgramOptions options;
    return options;
}

// The file is the source of a window's trace, or its store would become that trace's.
bool isTraceShown(const std::string& file) {
    const auto store = [](const std::string& name) { return path_without_extension(name) + ".trs"; };
    for (const CanvasWindow* window : CanvasWindow::all())
        if (!window->source().empty() &&
            (path_same_file(window->source(), file) || path_same_file(store(window->source()), store(file))))
            return true;
    return false;
}

}  // namespace

void CanvasWindow::makeMenus() {
    registerMenus();
    auto* bar = new QMenuBar;
    bar->setObjectName(QString::fromUtf8(menuName));
    bar->setAccessibleName(QStringLiteral("Menus"));
    setMenuBar(bar);
    menus_ = new MenuView(
        bar, menuName,
        [this](const std::string& name) { laCanvas_MenuHook(menu_Registry(), name, view_->canvas()); },
        [this](const std::string& body) { command(body); });
}

QWidget* CanvasWindow::makeTools() {
    tools_ = new ToolBarView([this](const std::string& text) { command(text); },
                             [this](const std::string& help) {
                                 model_.setMessage(help.empty() ? view_->canvas().fields.message : help);
                             });
    return tools_;
}

void CanvasWindow::command(const std::string& text) {
    if (!gate_May(GateActivity::Command)) return;
    laCanvas_Command(view_->canvas(), text);
}

// The menus follow when the present work is over: a change often comes in many steps.
void CanvasWindow::showButtons() {
    if (!dialog_) return;
    const _LaCanvasData& canvas = view_->canvas();
    if (laCanvas_UpdateButtons(canvas, buttons_)) tools_->take(buttons_);
    start_->setVisible(!canvas.source.store);
    if (!canvas.source.store && canvas.calls.upper.recentFiles)
        start_->fill(canvas.calls.upper.recentFiles());
    model_.setEnabled("changeunit", laCanvas_CanDo(canvas, "changeunit"));
    if (menusStale_ || !menus_) return;
    menusStale_ = true;
    QTimer::singleShot(0, this, [this] {
        menusStale_ = false;
        menus_->refresh();
    });
}

ProgramOptions CanvasWindow::options() const {
    return services_.settings ? program_OptionsOf(*services_.settings) : looseOptions();
}

void CanvasWindow::keepOptions(const ProgramOptions& wanted) {
    if (services_.settings)
        program_Keep(wanted, *services_.settings);
    else
        looseOptions() = wanted;
}

void CanvasWindow::takeOptions() {
    const ProgramOptions wanted = options();
    _LaCanvasData& canvas = view_->canvas();
    const bool rows = canvas.list.kernelGroup != wanted.kernel ||
                      canvas.list.processorRows != wanted.processorRows,
               icons = canvas.options.newTrv != wanted.newTrv ||
                       canvas.options.plainMarks != wanted.plainMarks ||
                       canvas.options.plainSwitches != wanted.plainSwitches;
    canvas.options.newTrv = wanted.newTrv;
    canvas.options.plainMarks = wanted.plainMarks;
    canvas.options.plainSwitches = wanted.plainSwitches;
    canvas.options.prefetch = wanted.prefetch;
    canvas.list.kernelGroup = wanted.kernel;
    canvas.list.processorRows = wanted.processorRows;
    canvas.options.snapCursors = wanted.cursorsSnap;
    canvas.options.followEnd = wanted.followEnd;
    canvas.calls.upper.iconButtons = wanted.iconButtons;
    canvas.calls.upper.selectionPanel = wanted.selectionPanel;
    selection_->setShown(wanted.selectionPanel);
    view_->setBareWheelZooms(wanted.bareWheelZooms);
    platform_SetDark(wanted.darkColours);
    tools_->showIcons(wanted.iconButtons);
    model_.setText("TraxBtns", wanted.iconButtons ? "" : "texts");  // its place is measured anew
    placeBars();
    if (canvas.source.store && (rows || icons)) {
        view_->draw([&] {
            if (rows) laCanvas_Resort(canvas);
            laCanvas_Repaint(canvas);
        });
        view_->layOutAndPaint();
    }
    showButtons();
}

// All windows have the same options.
void CanvasWindow::setOptions(const ProgramOptions& wanted) {
    keepOptions(wanted);
    for (CanvasWindow* window : all()) window->takeOptions();
    if (services_.settings) services_.settings->Save();
}

void CanvasWindow::closeSource() {
    laLegend_OfferSave(view_->canvas());
    keepArrangement();
    view_->draw([&] { laCanvas_CloseSource(view_->canvas()); });
    showNoSource();
}

// The canvas is empty; so is all that stands about it.
void CanvasWindow::showNoSource() {
    source_.clear();
    endGrowing();
    setWindowTitle(QString::fromStdString(title_));
    setWindowIconText(QString::fromStdString(title_));
    overview_->rebuild();
    view_->layOutAndPaint();
}

bool CanvasWindow::openFile(const std::string& name) {
    if (name.empty()) {
        chooseAndLoad();
        return true;
    }
    if (load(name)) return true;
    std::error_code none;
    if (services_.settings && !std::filesystem::exists(name, none))
        services_.settings->RemoveRecent(name, program_TraceFiles);
    showButtons();
    return false;
}

// What was painted over while the canvas was that of a page is painted once more.
void CanvasWindow::print() {
    dialogs_AskPrint(view_->canvas(), view_->picture().graphLeft);
    view_->update();
    overview_->update();
    view_->setFocus();
}

bool CanvasWindow::chooseCommand() {
    menus_->refresh();
    const std::string chosen = dialogs_AskCommand(*host_, menu_Registry(), view_->canvas());
    if (!chosen.empty()) command(chosen);
    return !chosen.empty();
}

void CanvasWindow::fillUpperFloor() {
    _LaCanvasData& canvas = view_->canvas();
    laUpperFloor& upper = canvas.calls.upper;
    host_ = std::make_unique<QtDialogHost>(this, services_.settings);
    host_->makeMenuBar = [](const std::string&, DialogModel& model) { return menu_MakeBar(model); };
    host_->setBusy = [this](bool busy) { setBusy(busy); };
    canvas.calls.host = host_.get();
    upper.sourceIsLive = live_;
    upper.recentFiles = [this] {
        return services_.settings ? services_.settings->Recent(program_TraceFiles)
                                  : std::vector<std::string>();
    };
    auto& commands = upper.commands;
    commands["Quit"] = [this](const std::string&) { return close(); };
    commands["Open"] = [this](const std::string& name) { return openFile(name); };
    commands["Close"] = [this](const std::string&) {
        if (target_) target_->reader().Forget();
        closeSource();
        return true;
    };
    commands["NewWindow"] = [this](const std::string&) { return openAnother() != nullptr; };
    dialogs_Attach(
        canvas,
        {.options = [this] { return options(); },
         .setOptions = [this](const ProgramOptions& wanted) { setOptions(wanted); },
         .title = [this] { return windowTitle().toStdString(); },
         .setTitle = [this](const std::string& name) { setWindowTitle(QString::fromStdString(name)); },
         .closed = [this] { view_->setFocus(); }});
    commands["TraxMergeEventFiles"] = [this](const std::string&) {
        const bool done = merge_AskAndLoad(*host_, view_->canvas(), {isTraceShown, path_find_program("trv")});
        view_->setFocus();
        return done;
    };
    commands["TraxPrint"] = [this](const std::string&) { return print(), true; };
    legend_Attach(canvas);
    detail_Attach(canvas);
    makeFinding(analysis_Attach(canvas));
    upper.manual = [this](const std::string& entry) { return manual_Open(entry, this); };
    commands["Help"] = [this](const std::string&) {
        if (manual_Open("start", this)) return true;
        laCanvas_Refuse(view_->canvas(), "Sorry, on-line help is not supported.");
        return false;
    };
    commands["Console"] = [](const std::string&) { return console_Raise(), true; };
    commands["ReadOn"] = [this](const std::string&) { return readOn(); };
    commands["Palette"] = [this](const std::string&) { return chooseCommand(); };
}

void CanvasWindow::makeEventTable() {
    events_ = new EventDock(*view_, services_.settings, this);
    events_->hide();
    addDockWidget(Qt::BottomDockWidgetArea, events_);
    const bool shown = options().eventTable;
    events_->setVisible(shown);
    view_->canvas().calls.upper.eventTable = shown;
    // With its window it goes without being hidden.
    events_->shownChanged = [this] {
        ProgramOptions kept = options();
        kept.eventTable = view_->canvas().calls.upper.eventTable = !events_->isHidden();
        keepOptions(kept);
        showButtons();
    };
    view_->canvas().calls.upper.commands["EventTable"] = [this](const std::string&) {
        events_->toggle();
        return true;
    };
}

void CanvasWindow::makeFinding(std::shared_ptr<SearchDesk> desk) {
    auto& commands = view_->canvas().calls.upper.commands;
    find_ = new FindStrip(*view_, std::move(desk), this);
    pane_->insertWidget(0, find_);
    commands["Find"] = [this](const std::string&) {
        find_->open();
        return true;
    };
    selection_ = new SelectionCorner(*view_);
    const auto toggle = [this] {
        ProgramOptions wanted = options();
        wanted.selectionPanel = !wanted.selectionPanel;
        setOptions(wanted);
        view_->setFocus();
    };
    selection_->panel().closed = [this, toggle] {
        toggle();
        laCanvas_UpdateFields(view_->canvas(), 0, "Ctrl+I shows the figures of the selection again.");
    };
    commands["SelectionPanel"] = [toggle](const std::string&) {
        toggle();
        return true;
    };
}

// Enter was taken by the field already, Escape was not: both give the keyboard back to the picture, unless
// what was typed is to be mended.
bool CanvasWindow::keyOfField(const QKeyEvent& event) {
    const auto* field = qobject_cast<const QLineEdit*>(focusWidget());
    const bool enter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (!field || !field->objectName().startsWith(QLatin1String("tf_"))) return false;
    if (!enter && event.key() != Qt::Key_Escape) return false;
    if (!enter) model_.revert(field->objectName().toStdString());
    if (!enter || !std::exchange(fieldRefused_, false)) view_->setFocus();
    return true;
}

void CanvasWindow::keyPressEvent(QKeyEvent* event) {
    if (keyOfField(*event)) return;
    if (event->key() == Qt::Key_Escape && find_->escape()) return;
    const laCommand* known = laCommands_OfKey(platform_KeyName(*event), KeyPlace::Window);
    if (!known) return QMainWindow::keyPressEvent(event);
    command(known->name);
}

// Several windows share the menus: those of the one that is worked in show its state.
void CanvasWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) showButtons();
}
