// The canvas on screen: names and drawing area on one backing image at the screen's own resolution, so that
// the canvas can paint parts of it, and what wheel, keys and pointer do there.
#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/input/context_menu.h"
#include "chronoweave/traxfunc/input/pointer.h"
#include "chronoweave/traxfunc/list/names.h"

class PictureView : public QWidget {
    Q_OBJECT
  public:
    explicit PictureView(QWidget* parent = nullptr);
    ~PictureView() override;

    _LaCanvasData& canvas() { return *canvas_; }
    LaGraph& graph() { return graph_; }
    const laPicture& picture() const { return picture_; }
    const QImage& image() const { return image_; }
    // From a press to the release the user holds the view in place. A release that never comes, as when
    // something else took the pointer meanwhile, is noticed.
    void hold();
    void letGo();
    void setBareWheelZooms(bool on) { bareWheelZooms_ = on; }

    // Runs work that may change what is seen, then paints what it noted and updates screen and bars. Calls
    // may nest; the outermost paints. What is noted outside is painted at the next turn of the loop.
    void draw(const std::function<void()>& work);
    // Places the parts for the present size and paints everything; later when a fetch runs.
    void layOutAndPaint();
    // Carries out a command of the canvas.
    void command(const std::string& text);

  Q_SIGNALS:
    void barsChanged();
    // What the message line says while the pointer stands there; empty when it left.
    void hovered(const QString& text);
    void fileDropped(const QString& path);
    void releaseMissed();  // nothing is pressed any more, and no release came

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void drawNames(Surface& whole);
    void drawRowTints(QPainter& painter);
    void followRow(std::optional<QPoint> at);
    void drawSelectionLength(QPainter& painter);
    void drawMarkedEvent(QPainter& painter);
    void makeImage();
    void wantPaint();
    void catchUp();
    void layOut();
    bool namesNeedRoom();
    void noteMeasured();
    bool goesOn() const;
    void paintWanted();
    void paintAll();
    bool handleKey(const QKeyEvent& event);
    // The names (picture_names.cpp).
    enum class Held { Nothing, Names, Divider };
    bool overNames(QPoint at) const { return at.x() < picture_.nameWidth; }
    bool overDivider(QPoint at) const;
    bool pressNames(const QMouseEvent& event, int clicks);
    void moveNames(QPoint at);
    class laNames names() const;
    void focusNames(bool on);
    bool keyToNames(const QKeyEvent& event);
    void listMenu(MslObjectEntry* clicked);
    void pan(QPoint at);
    void checkButtons();
    void followRows();
    void settleRows();
    void followDrag();
    void autoScroll();
    void showTip(QPoint at, const std::string& text);
    void completeTip();
    laPointerEvent pointerEvent(const QMouseEvent& event, int clicks) const;
    void popUp(const struct laContextMenu& menu);
    bool askDebugger();
    QPoint inGraph(QPoint at) const { return at - QPoint(picture_.graphLeft, picture_.graphTop); }
    int pointerColumn() const;

    LaGraph graph_;
    std::unique_ptr<_LaCanvasData> canvas_;
    laPicture picture_;
    QImage image_;
    int drawing_ = 0;          // depth of draw
    bool posted_ = false;      // the loop will catch up
    bool namesStale_ = false;  // the list must be painted
    bool stale_ = false;       // the parts must be placed anew
    uint32_t laidOut_ = 0;     // the layout of rows that the names were measured for,
    int measuredAt_ = 0;       // the vertical offset,
    std::string measuredOf_;   // and the source
    int leastNames_ = 0;       // width that the column keeps while the source goes on
    bool bareWheelZooms_ = false;
    bool space_ = false;  // held: a drag pans
    std::unique_ptr<laPointer> pointer_;
    std::optional<QPoint> pointerAt_;  // while it is over the picture: its row is tinted
    Held held_ = Held::Nothing;
    bool panning_ = false;
    QPoint last_;  // of the pan, in the drawing area
    QTimer autoScroll_;
    QTimer pressed_;                       // while a button is held
    QTimer settle_{this};                  // rows that follow the view: fires when it rests
    std::optional<LaRowsView> shownRows_;  // that the rows were seen to be stale for
    QTimer tipMore_;                       // fires when nothing else is to do, while a tip could not tell all
    QPoint tipAt_;                         // of the screen
    laDebuggerCan debuggerCan_;            // as of the last menu
};
