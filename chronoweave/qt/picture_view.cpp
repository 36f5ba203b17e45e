#include "chronoweave/qt/picture_view.h"

#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPointer>
#include <cmath>
#include <utility>

#include "chronoweave/analysis/detail_walk.h"
#include "chronoweave/traxfunc/canvas/followed_rows.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/context_menu.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/scroll.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/paths.h"
#include "windlib/lagraph/translated_surface.h"
#include "windlib/qt/platform.h"
#include "windlib/qt/qt_surface.h"

namespace {

std::string sourceOf(const _LaCanvasData& canvas) {
    return path_join(canvas.source.sourcePath, canvas.source.sourceFile);
}

constexpr double notch = 120.0;  // of a wheel
constexpr double zoomPerNotch = 1.25;
constexpr int columnsPerNotch = 80;
constexpr int rowsPerNotch = 3;            // rows of the list
constexpr int autoScrollEvery = 40;        // milliseconds
constexpr int buttonsLookedAtEvery = 200;  // milliseconds
constexpr int viewRests = 250;             // milliseconds without a move of it
constexpr int tipWaits = 100;              // milliseconds, for other work to be over
constexpr int autoScrollWidths = 3;        // character widths a step

// A surface that is only asked for the sizes of texts.
struct Measure {
    explicit Measure(const QPalette& palette) : surface(painter, nullptr, 1, 1, surfaceColours(palette)) {}
    QImage image{1, 1, QImage::Format_RGB32};
    QPainter painter{&image};
    QtSurface surface;
};

}  // namespace

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(240, 120);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    graph_.font = surfaceFonts().plain(Font_Application);
    graph_.axisFont = surfaceFonts().plain(Font_Axis);
    graph_.beep = platform_Beep;
    graph_.setBusy = platform_SetBusy;
    autoScroll_.setInterval(autoScrollEvery);
    connect(&autoScroll_, &QTimer::timeout, this, [this] { autoScroll(); });
    pressed_.setInterval(buttonsLookedAtEvery);
    connect(&pressed_, &QTimer::timeout, this, [this] { checkButtons(); });
    settle_.setObjectName(QStringLiteral("Settle"));
    settle_.setSingleShot(true);
    settle_.setInterval(viewRests);
    connect(&settle_, &QTimer::timeout, this, [this] { settleRows(); });
    graph_.listChanged = [this] {
        namesStale_ = true;
        wantPaint();
    };
    graph_.raise = [this] {
        window()->raise();
        window()->activateWindow();
    };
    graph_.warpPointer = [this](int x, int y) {
        QCursor::setPos(mapToGlobal(QPoint(x + picture_.graphLeft, y + picture_.graphTop)));
    };
    graph_.pointerColumn = [this] { return pointerColumn(); };
    graph_.showTip = [this](const std::string& text) { showTip(QCursor::pos(), text); };
    connect(&tipMore_, &QTimer::timeout, this, [this] { completeTip(); });
    canvas_ = laCanvas_Create(graph_, 0);
    canvas_->view.pinEdges = LaPinEdges::Both;
    canvas_->calls.upper.draw = [this](const std::function<void()>& work) { draw(work); };
    pointer_ = std::make_unique<laPointer>(*canvas_);
    canvas_->calls.paintWanted = [this] { wantPaint(); };
    // The bars of the canvas may move in the middle of anything.
    for (ScrollBarModel* bar : {&graph_.horizontal, &graph_.vertical})
        bar->onChange = [this, changed = bar->onChange] { draw(changed); };
}

PictureView::~PictureView() {
    gate_Program().Forget(this);
}

void PictureView::makeImage() {
    const double ratio = devicePixelRatioF();
    const QSize size(static_cast<int>(std::ceil(width() * ratio)),
                     static_cast<int>(std::ceil(height() * ratio)));
    if (image_.size() == size && image_.devicePixelRatioF() == ratio) return;
    image_ = QImage(size, QImage::Format_RGB32);
    image_.setDevicePixelRatio(ratio);
    image_.fill(palette().color(QPalette::Base));
}

void PictureView::draw(const std::function<void()>& work) {
    const QPointer<PictureView> alive = this;
    ++drawing_;
    work();
    if (alive && --drawing_ == 0) catchUp();
}

// Work that waits in a loop of its own, as a command does in its dialog, is painted by that loop.
void PictureView::wantPaint() {
    if (posted_) return;
    posted_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (posted_) catchUp();
        },
        Qt::QueuedConnection);
}

// The one place that paints what was noted, with nothing else going on: no event is served meanwhile.
void PictureView::catchUp() {
    posted_ = false;
    if (image_.isNull() && !stale_) return;  // it has no size yet
    if (!gate_May(GateActivity::Painting))
        return gate_Program().WhenMay(GateActivity::Painting, this, [this] { catchUp(); });
    if (stale_ || namesNeedRoom()) layOut();
    if (!gate_May(GateActivity::Painting)) return wantPaint();
    if (stale_)
        paintAll();
    else
        paintWanted();
    update();
    followRows();
    Q_EMIT barsChanged();
}

// Rows that follow the view wait until it rests. What a live source moves by itself never does: there the
// time runs on.
void PictureView::followRows() {
    if (!laRows_Stale(*canvas_)) {
        settle_.stop();
        return shownRows_.reset();
    }
    const LaRowsView now = laCanvas_RowsView(*canvas_);
    const bool moved = shownRows_ != now;
    shownRows_ = now;
    if (!settle_.isActive() || (moved && !canvas_->source.liveRefresh)) settle_.start();
}

void PictureView::settleRows() {
    const bool held = pointer_->dragging() || panning_ || canvas_->hand.heldView;
    if (held || !gate_May(GateActivity::Command)) return settle_.start();
    const QPoint at = mapFromGlobal(QCursor::pos());
    const bool over = underMouse() && at.y() < picture_.dataHeight;
    draw([&] { laRows_Settle(*canvas_, over ? at.y() - picture_.graphTop : 0); });
}

// Whether names come and go with the trace.
bool PictureView::goesOn() const {
    return canvas_->source.liveRefresh && measuredOf_ == sourceOf(*canvas_);
}

// Whether the names in view need another width than the column has. A scroll over the rows makes it only
// wider, and so does a live trace: the picture does not move to and fro.
bool PictureView::namesNeedRoom() {
    const bool others = laidOut_ != canvas_->list.layouts;
    if (!others && measuredAt_ == canvas_->view.verticalOffset) return false;
    const bool narrows = others && !goesOn();
    noteMeasured();
    Measure measure(palette());
    const int needed = laPicture_NameWidth(*canvas_, measure.surface, width(), picture_.dataHeight);
    if (narrows) leastNames_ = needed;
    return narrows ? needed != picture_.nameWidth : needed > picture_.nameWidth;
}

// A new size may show what must be fetched first, and a fetch serves events: there is no surface open.
void PictureView::layOut() {
    makeImage();
    stale_ = true;
    Measure measure(palette());
    ++drawing_;
    picture_ =
        laPicture_LayOut(*canvas_, measure.surface, width(), height(), false, goesOn() ? leastNames_ : 0);
    --drawing_;
    leastNames_ = picture_.nameWidth;
    noteMeasured();
}

void PictureView::noteMeasured() {
    laidOut_ = canvas_->list.layouts;
    measuredAt_ = canvas_->view.verticalOffset;
    measuredOf_ = sourceOf(*canvas_);
}

void PictureView::paintWanted() {
    if (!canvas_->wanted.any() && !namesStale_) return;
    QPainter painter(&image_);
    QtSurface whole(painter, &image_, width(), height(), surfaceColours(palette()));
    {
        TranslatedSurface area(whole, picture_.graphLeft, picture_.graphTop, picture_.graphWidth,
                               picture_.graphHeight);
        graph_.surface = &area;
        laCanvas_PaintWanted(*canvas_);
        graph_.surface = nullptr;
    }
    if (namesStale_) drawNames(whole);  // outside of the area, to which the surface was clipped
}

void PictureView::paintAll() {
    QPainter painter(&image_);
    QtSurface whole(painter, &image_, width(), height(), surfaceColours(palette()));
    laPicture_Draw(*canvas_, whole, picture_, true);
    canvas_->wanted = {};
    namesStale_ = stale_ = false;
}

void PictureView::drawNames(Surface& whole) {
    namesStale_ = false;
    whole.clearRect(0, picture_.graphTop, picture_.nameWidth, picture_.dataHeight);
    TranslatedSurface column(whole, 0, picture_.graphTop, picture_.nameWidth, picture_.dataHeight);
    names().Draw(column, picture_.nameWidth, picture_.dataHeight);
}

void PictureView::layOutAndPaint() {
    if (image_.isNull()) return;
    stale_ = true;
    catchUp();
}

void PictureView::paintEvent(QPaintEvent*) {
    if (image_.devicePixelRatioF() != devicePixelRatioF()) {  // it came to another screen
        stale_ = true;
        wantPaint();
    }
    QPainter painter(this);
    if (stale_) painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.drawImage(0, 0, image_);
    drawRowTints(painter);
    drawSelectionLength(painter);
    if (gate_May(GateActivity::Painting)) drawMarkedEvent(painter);  // in a fetch its icon is half there
    if (hasFocus()) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void PictureView::resizeEvent(QResizeEvent*) {
    stale_ = true;
    catchUp();
}

void PictureView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) layOutAndPaint();
}

int PictureView::pointerColumn() const {
    const int x = mapFromGlobal(QCursor::pos()).x() - picture_.graphLeft;
    return x >= 0 && x < picture_.graphWidth ? x : picture_.graphWidth / 2;
}

// Ctrl zooms at the pointer, Shift or a sideways wheel scrolls in time, the bare wheel over the rows. Never
// two at once.
void PictureView::wheelEvent(QWheelEvent* event) {
    const QPoint turn = event->angleDelta();
    const int x = static_cast<int>(event->position().x()) - picture_.graphLeft;
    const bool control = event->modifiers() & Qt::ControlModifier;
    const bool sideways = std::abs(turn.x()) > std::abs(turn.y()) || (event->modifiers() & Qt::ShiftModifier);
    draw([&] {
        if (!sideways && control != bareWheelZooms_) {
            const int column = x >= 0 && x < picture_.graphWidth ? x : picture_.graphWidth / 2;
            laCanvas_ZoomAtColumn(*canvas_, column, std::pow(zoomPerNotch, -turn.y() / notch));
        } else if (sideways) {
            laCanvas_ScrollColumns(*canvas_, std::lround(-(turn.x() + turn.y()) / notch * columnsPerNotch));
        } else {
            laCanvas_ScrollRows(*canvas_,
                                std::lround(-turn.y() / notch * rowsPerNotch * canvas_->looks.rowHeight));
        }
    });
    event->accept();
}

void PictureView::command(const std::string& text) {
    laCanvas_Command(*canvas_, text);
}

bool PictureView::handleKey(const QKeyEvent& event) {
    const laCommand* known = laCommands_OfKey(platform_BareKeyName(event), KeyPlace::Picture);
    if (!known) return false;
    laCanvas_Command(*canvas_, known->name);
    return true;
}

void PictureView::keyPressEvent(QKeyEvent* event) {
    if (keyToNames(*event)) return;
    space_ = space_ || event->key() == Qt::Key_Space;
    bool taken = event->key() == Qt::Key_Space;
    taken = taken || handleKey(*event);
    if (!taken) QWidget::keyPressEvent(event);
}

void PictureView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) space_ = false;
    QWidget::keyReleaseEvent(event);
}

laPointerEvent PictureView::pointerEvent(const QMouseEvent& event, int clicks) const {
    const QPoint at = inGraph(event.position().toPoint());
    unsigned modifiers = 0;
    if (event.modifiers() & Qt::ShiftModifier) modifiers |= laModifier_Shift;
    if (event.modifiers() & Qt::ControlModifier) modifiers |= laModifier_Control;
    if (event.modifiers() & Qt::AltModifier) modifiers |= laModifier_Alt;
    const int button = event.button() == Qt::RightButton  ? laButton_Right
                       : event.button() == Qt::LeftButton ? laButton_Left
                                                          : 0;
    return {at.x(), at.y(), modifiers, clicks, button};
}

// The middle button, or the left with Space held, moves the picture; everything else in it is the canvas's.
void PictureView::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (pressNames(*event, 1)) return;
    focusNames(false);
    const bool pans = event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && space_);
    if (pans && canvas_->source.storeHasEvents && !pointer_->dragging()) {
        panning_ = true;
        hold();
        last_ = inGraph(at);
        setCursor(Qt::ClosedHandCursor);
    } else if (!panning_) {
        draw([&] { pointer_->Press(pointerEvent(*event, 1)); });
        if (pointer_->dragging()) pressed_.start();
    }
}

void PictureView::hold() {
    laScroll_Hold(*canvas_);
    pressed_.start();
}

void PictureView::letGo() {
    laScroll_Release(*canvas_);
}

void PictureView::checkButtons() {
    if (QGuiApplication::mouseButtons() != Qt::NoButton) return;
    pressed_.stop();
    if (pointer_->dragging()) draw([&] { pointer_->Cancel(); });
    if (std::exchange(panning_, false)) unsetCursor();
    letGo();
    Q_EMIT releaseMissed();
}

void PictureView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!pressNames(*event, 2)) draw([&] { pointer_->Press(pointerEvent(*event, 2)); });
}

void PictureView::pan(QPoint at) {
    const QPoint moved = last_ - at;
    // One after the other: a move along one axis copies what stays.
    draw([&] { laCanvas_ScrollColumns(*canvas_, moved.x()); });
    draw([&] { laCanvas_ScrollRows(*canvas_, moved.y()); });
    last_ = at;
}

// While a selection is dragged past an edge, the picture follows.
void PictureView::followDrag() {
    const bool outside = pointer_->dragging() && (pointer_->x() < 0 || pointer_->x() >= picture_.graphWidth ||
                                                  pointer_->y() < 0 || pointer_->y() >= picture_.dataHeight);
    if (outside && !autoScroll_.isActive()) autoScroll_.start();
    if (!outside) autoScroll_.stop();
}

void PictureView::autoScroll() {
    if (!pointer_->dragging()) return autoScroll_.stop();
    if (!gate_May(GateActivity::Command)) return;  // the next step comes when the last one is done
    const int x = pointer_->x(), y = pointer_->y();
    const int across = autoScrollWidths * graph_.font.charWidth, down = graph_.font.height;
    draw([&] {
        if (x < 0 || x >= picture_.graphWidth) laCanvas_ScrollColumns(*canvas_, x < 0 ? -across : across);
        if (y < 0 || y >= picture_.graphHeight) laCanvas_ScrollRows(*canvas_, y < 0 ? -down : down);
        pointer_->Scrolled();
    });
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    followRow(event->position().toPoint());
    const QPoint at = inGraph(event->position().toPoint());
    if (panning_) return pan(at);
    const QPoint whole = event->position().toPoint();
    if (held_ != Held::Nothing) return moveNames(whole);
    setCursor(overDivider(whole) ? Qt::SplitHCursor : Qt::ArrowCursor);
    if (event->buttons() != Qt::NoButton) {
        draw([&] { pointer_->Move(pointerEvent(*event, 1)); });
        followDrag();
    } else if (canvas_->source.storeHasEvents && at.x() >= 0 && at.x() < picture_.graphWidth) {
        Q_EMIT hovered(QString::fromStdString(laCanvas_HoverText(*canvas_, at.x())));
    }
}

void PictureView::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    followRow({});
    Q_EMIT hovered({});
}

void PictureView::mouseReleaseEvent(QMouseEvent* event) {
    if (held_ != Held::Nothing) {
        held_ = Held::Nothing;
        return;
    }
    if (panning_) {
        panning_ = false;
        letGo();
        unsetCursor();
        return;
    }
    bool menu = false;
    const laPointerEvent released = pointerEvent(*event, 1);
    draw([&] { menu = pointer_->Release(released); });
    followDrag();
    if (menu && askDebugger()) popUp(laCanvas_CanvasMenu(*canvas_, released.x, released.y, debuggerCan_));
}

// Before anything is looked at that a menu is about: other programs are served within. False when the window
// went meanwhile.
bool PictureView::askDebugger() {
    const QPointer<PictureView> self(this);
    const laDebuggerCan can = laDebugger_Ask(*canvas_);
    if (!self || !isVisible()) return false;
    debuggerCan_ = can;
    return true;
}

void PictureView::popUp(const laContextMenu& menu) {
    if (canvas_->calls.host)
        laContextMenu_Choose(*canvas_, menu, canvas_->calls.host->popUpMenu(menu.title, menu.rows));
}

// The press may have gone to another window's side: what was dragged stays where it is.
void PictureView::focusOutEvent(QFocusEvent* event) {
    if (event->reason() == Qt::ActiveWindowFocusReason && pointer_->dragging())
        draw([&] { pointer_->Cancel(); });
    space_ = false;
    if (event->reason() != Qt::PopupFocusReason) focusNames(false);
    QWidget::focusOutEvent(event);
}

bool PictureView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QPoint at = inGraph(help->pos());
    std::string text;
    if (!gate_May(GateActivity::Command)) return true;
    if (overNames(help->pos()))
        text = names().Tip(help->pos().y() - picture_.graphTop);
    else if (at.x() >= 0 && canvas_->source.storeHasEvents)
        text = laPointer_Tip(*canvas_, at.x(), at.y());
    showTip(help->globalPos(), text);
    return true;
}

void PictureView::showTip(QPoint at, const std::string& text) {
    platform_ShowTip(at, text, this);
    tipAt_ = at;
    if (!text.empty() && canvas_->hand.tipItem)
        tipMore_.start(0);
    else
        tipMore_.stop();
}

// What the tip did not know in time is looked for while it stands and nothing else is to do.
void PictureView::completeTip() {
    if (!gate_May(GateActivity::Command)) return tipMore_.start(tipWaits);
    if (!platform_TipStands()) return tipMore_.stop();
    const auto text = laTip_More(*canvas_);
    if (text && text->empty()) return tipMore_.start(0);
    tipMore_.stop();
    if (text) platform_ShowTip(tipAt_, *text, this);
}

void PictureView::followRow(std::optional<QPoint> at) {
    const auto row = [&](const std::optional<QPoint>& point) {
        const MslObjectEntry* entry = point ? names().RowAt(point->y() - picture_.graphTop) : nullptr;
        return entry == nullptr ? -1 : entry->row;
    };
    const bool other = row(at) != row(pointerAt_);
    pointerAt_ = at;
    if (other) update();
}

// A row is followed across names and picture by a tint that lies over them: that under the pointer, and
// selected ones, whose names have a ground of their own.
void PictureView::drawRowTints(QPainter& painter) {
    constexpr int hovered = 16, selected = 40;  // of 255
    const laNames list = names();
    const auto tint = [&](const MslObjectEntry* entry, int left, QColor colour, int alpha) {
        const laNames::Band band = entry != nullptr ? list.BandOf(*entry) : laNames::Band{};
        colour.setAlpha(alpha);
        if (band.top < band.end)
            painter.fillRect(left, picture_.graphTop + band.top, width() - left, band.end - band.top, colour);
    };
    for (const MslObjectEntry* entry : list.Selected())
        tint(entry, picture_.graphLeft, palette().color(QPalette::Highlight), selected);
    if (pointerAt_ && pointerAt_->y() < picture_.graphTop + picture_.dataHeight)
        tint(list.RowAt(pointerAt_->y() - picture_.graphTop), 0, palette().color(QPalette::Text), hovered);
}

// The selection shows its length beside it.
void PictureView::drawSelectionLength(QPainter& painter) {
    const _LaCanvasData& canvas = *canvas_;
    if (canvas.marks.cursor[0] < 0 || canvas.marks.cursor[1] < 0 ||
        canvas.marks.cursor[0] == canvas.marks.cursor[1])
        return;
    const double last = std::max(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    if (last < canvas.view.viewLow || last > canvas.view.viewHigh) return;
    const QString shown = QString::fromStdString(
        laCanvas_TimeWithUnit(canvas, std::abs(canvas.marks.cursor[1] - canvas.marks.cursor[0])));
    painter.setFont(surfaceFonts().fonts[Font_Application]);
    const QFontMetrics& metrics = surfaceFonts().metrics[Font_Application];
    const int column = picture_.graphLeft + laCanvas_TimeToPixel(canvas, last, Time_Second);
    const int textWidth = metrics.horizontalAdvance(shown) + 8;
    const int x = std::min(column + 4, picture_.graphLeft + picture_.graphWidth - textWidth);
    const LaFreeRows free = canvas.taskList->FreeRows(canvas.view, picture_.dataHeight);
    const QRect box(x, picture_.graphTop + free.end - metrics.height() - 4, textWidth, metrics.height() + 2);
    painter.fillRect(box, palette().color(QPalette::ToolTipBase));
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.drawText(box, Qt::AlignCenter, shown);
}

// The event chosen in the table has a frame around its icon.
void PictureView::drawMarkedEvent(QPainter& painter) {
    constexpr int gap = 3;
    const auto icon =
        canvas_->marks.markedEvent ? detail_FindIcon(*canvas_, canvas_->marks.markedEvent) : std::nullopt;
    if (!icon) return;
    const laItem_Bitmap item = canvas_->items.bitmaps[static_cast<uint32_t>(*icon)];
    const bool seen = item.time >= canvas_->view.viewLow && item.time <= canvas_->view.viewHigh;
    if (!seen || item.lane == laNoLane || canvas_->items.lanes[item.lane].hidden) return;
    const laRect box = laItem_Rect(canvas_->items, canvas_->looks,
                                   {canvas_->view, canvas_->axis, canvas_->graph->width}, item);
    const QRect frame(picture_.graphLeft + box.left - gap,
                      picture_.graphTop + box.top - canvas_->view.verticalOffset - gap,
                      box.right - box.left + 2 * gap, box.bottom - box.top + 2 * gap);
    painter.setClipRect(picture_.graphLeft, picture_.graphTop, picture_.graphWidth, picture_.dataHeight);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame);
    painter.setClipping(false);
}

void PictureView::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls() && event->mimeData()->urls().front().isLocalFile())
        event->acceptProposedAction();
}

void PictureView::dropEvent(QDropEvent* event) {
    if (!event->mimeData()->hasUrls()) return;
    event->acceptProposedAction();
    Q_EMIT fileDropped(event->mimeData()->urls().front().toLocalFile());
}
