// One canvas window: the picture with its scroll bars, the overview, the fields of view and selection, the
// message line with the progress of long work, loading, and what the user arranged with each trace.
#pragma once

#include <QElapsedTimer>
#include <QMainWindow>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "chronoweave/analysis/program_options.h"
#include "chronoweave/import/import.h"
#include "chronoweave/traxfunc/input/menus.h"
#include "windlib/dialog/model.h"

class ArrangementStore;
class DialogView;
class EventDock;
class FindStrip;
class LiveTarget;
class LongWork;
class MenuView;
class LanesMaker;
class OverviewStrip;
class PictureView;
class QGridLayout;
class QScrollBar;
class QVBoxLayout;
class QtDialogHost;
class QtEventService;
class SelectionCorner;
class StartCard;
class ToolBarView;
class WaitWindows;
class laDebugger;

// What all windows share; each may be null. All outlive the windows.
struct CanvasServices {
    SettingsManager* settings = nullptr;
    ArrangementStore* arrangements = nullptr;
    QtEventService* events = nullptr;  // tasks and watches of the program's loop; without, nothing is live
    WaitWindows* waits = nullptr;      // what waits for a target's server sees of the windows
    laDebugger* debugger = nullptr;    // what events are shown in
};

class CanvasWindow : public QMainWindow {
    Q_OBJECT
  public:
    CanvasWindow(const std::string& title, bool live, CanvasServices services = {});
    ~CanvasWindow() override;

    // Opens a data source in place of the one shown: imports it when it is raw, reads its configure file,
    // shows the first view, or the one that the user left it with. False when nothing could be shown; the
    // user was told.
    bool load(const std::string& name);
    // Draws the canvas with no data source, its cursor in the middle.
    void showEmpty();
    PictureView& view() { return *view_; }
    // Live reading and the link to a target; null without tasks.
    LiveTarget* target() { return target_.get(); }
    DialogModel& items() { return model_; }
    QtDialogHost& host() { return *host_; }
    // Menus, buttons and keys all end here: a command of the canvas by its text.
    void command(const std::string& text);
    bool isLive() const { return live_; }
    // The text of the message line.
    std::string message() const;
    void chooseAndLoad();

    // The data source's full path; empty without one.
    const std::string& source() const { return source_; }
    // A second window beside this one, empty.
    CanvasWindow* openAnother();

    // Windows that are open now, in order of creation, and their number.
    static const std::vector<CanvasWindow*>& all();
    static int count() { return static_cast<int>(all().size()); }
    // The first that shows this file, compared as full paths; null when there is none.
    static CanvasWindow* find(const std::string& file);
    // Closes every window that shows a file; none for an empty name.
    static void closeFile(const std::string& file);
    static void closeAll();
    // In every window, or in those of the file when one is named: reads text as seconds and, where the trace
    // reaches that far, puts the cursor there and brings it and the object's row into view. True when any
    // did.
    // Says in every window whose message line is free that the console has something.
    static void tellConsoleAll(const std::string& text);
    static bool showTime(const std::string& file, uint32_t objectId, const std::string& text);
    // The same in this window.
    bool showTimeHere(uint32_t objectId, const std::string& text);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void build();
    void makeMenus();
    void fillUpperFloor();
    void makeEventTable();
    void makeFinding(std::shared_ptr<struct SearchDesk> desk);
    QWidget* makeItem(const DialogItem& item);
    QWidget* makePane();
    QWidget* makeTools();
    void connectItems();
    ProgramOptions options() const;
    void keepOptions(const ProgramOptions& wanted);
    void takeOptions();
    void setOptions(const ProgramOptions& wanted);
    void placeBars();
    void syncBars();
    void showButtons();
    void showFields();
    void showHover(const std::string& text);
    // said: takes what the reading of the configure file said.
    bool showStore(struct OpenedSource& opened, const std::string& name, std::string& said);
    bool readOn();
    void readRest(ReadOn& read);
    void showGrown(const ReadOn& read);
    void setBusy(bool busy);  // long work begins and ends; calls nest
    void restoreArrangement();
    void keepArrangement();
    void say(const std::string& text);
    void closeSource();
    void showNoSource();
    void endGrowing();
    void makeLive();
    void makeDebugger();
    bool mayLoad(const std::string& name, const std::string& path);
    void showProgress(std::optional<double> share);
    bool openFile(const std::string& name);
    bool chooseCommand();
    bool keyOfField(const QKeyEvent& event);
    void tellConsole(const std::string& text);
    void print();

    GrowingSource growing_;  // the raw file of the store shown, while it may grow
    std::string title_;      // of an empty window
    bool live_;
    CanvasServices services_;
    int busy_ = 0;
    bool diesWhenIdle_ = false;       // it was to be deleted while busy
    std::unique_ptr<LongWork> work_;  // while busy
    std::string source_;              // full path of the data source; empty without one
    DialogModel model_;
    PictureView* view_ = nullptr;
    OverviewStrip* overview_ = nullptr;
    LanesMaker* lanes_ = nullptr;
    StartCard* start_ = nullptr;  // while there is no trace
    QScrollBar* horizontal_ = nullptr;
    QScrollBar* vertical_ = nullptr;
    QVBoxLayout* pane_ = nullptr;  // what stands over the picture, and this
    QGridLayout* grid_ = nullptr;
    DialogView* dialog_ = nullptr;
    ToolBarView* tools_ = nullptr;
    MenuView* menus_ = nullptr;
    EventDock* events_ = nullptr;
    FindStrip* find_ = nullptr;
    SelectionCorner* selection_ = nullptr;
    std::vector<laButtonState> buttons_;
    std::string said_;  // last on the message line, but for the place of the pointer
    QElapsedTimer saidSince_;
    bool menusStale_ = false;             // they are renewed soon
    bool fieldRefused_ = false;           // what was last typed into a field
    std::unique_ptr<QtDialogHost> host_;  // its windows know the canvas
    std::unique_ptr<LiveTarget> target_;  // its window is the host's
};
