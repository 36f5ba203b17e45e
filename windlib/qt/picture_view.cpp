#include "windlib/qt/picture_view.h"

#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <cmath>

#include "chronoweave/traxfunc/draw.h"
#include "chronoweave/traxfunc/layout.h"
#include "chronoweave/traxfunc/names.h"
#include "chronoweave/traxfunc/navigate.h"
#include "chronoweave/traxfunc/view.h"
#include "windlib/lagraph/translated_surface.h"
#include "windlib/qt/platform.h"
#include "windlib/qt/qt_surface.h"

namespace {

constexpr double notch = 120.0;  // of a wheel
constexpr double zoomPerNotch = 1.25;
constexpr int columnsPerNotch = 80;
constexpr int rowsPerNotch = 3;  // rows of the list
constexpr int keyColumns = 60;

}  // namespace

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("Graph"));
    setAccessibleName(QStringLiteral("Time line"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(240, 120);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    graph_.font = surfaceFonts().plain(Font_Application);
    graph_.beep = platform_Beep;
    graph_.setBusy = platform_SetBusy;
    graph_.listChanged = [this] { namesStale_ = true; };
    canvas_ = laCanvas_Create(graph_, 0);
    // The bars of the canvas may move in the middle of anything: painting needs the surface open.
    for (ScrollBarModel* bar : {&graph_.horizontal, &graph_.vertical})
        bar->onChange = [this, changed = bar->onChange] { draw(changed); };
}

PictureView::~PictureView() = default;

void PictureView::makeImage() {
    const double ratio = devicePixelRatioF();
    image_ = QImage(static_cast<int>(std::ceil(width() * ratio)),
                    static_cast<int>(std::ceil(height() * ratio)), QImage::Format_RGB32);
    image_.setDevicePixelRatio(ratio);
    image_.fill(palette().color(QPalette::Base));
}

void PictureView::draw(const std::function<void()>& work) {
    if (drawing_ > 0 || image_.isNull()) return work();
    ++drawing_;
    {
        QPainter painter(&image_);
        QtSurface whole(painter, &image_, width(), height(), surfaceColours(palette()));
        {
            TranslatedSurface area(whole, picture_.graphLeft, picture_.graphTop, picture_.graphWidth,
                                   picture_.graphHeight);
            graph_.surface = &area;
            work();
            graph_.surface = nullptr;
        }
        if (namesStale_) drawNames(whole);
        laPicture_DrawFooter(*canvas_, whole, picture_);
    }
    --drawing_;
    finishDrawing();
}

// Windows keep living during long work: a resize that came in its middle is carried out now.
void PictureView::finishDrawing() {
    if (resized_) {
        resized_ = false;
        makeImage();
        layOutAndPaint();
        return;
    }
    update();
    Q_EMIT barsChanged();
}

void PictureView::drawNames(Surface& whole) {
    namesStale_ = false;
    whole.clearRect(0, picture_.graphTop, picture_.nameWidth, picture_.dataHeight);
    TranslatedSurface column(whole, 0, picture_.graphTop, picture_.nameWidth, picture_.dataHeight);
    laNames_Draw(*canvas_, column, picture_.nameWidth, picture_.dataHeight);
}

void PictureView::layOutAndPaint() {
    if (drawing_ > 0 || image_.isNull()) return;
    if (image_.devicePixelRatioF() != devicePixelRatioF()) makeImage();
    {
        QPainter painter(&image_);
        QtSurface whole(painter, &image_, width(), height(), surfaceColours(palette()));
        ++drawing_;
        picture_ = laPicture_LayOut(*canvas_, whole, width(), height());
        laPicture_Draw(*canvas_, whole, picture_, true);
        --drawing_;
        namesStale_ = false;
    }
    finishDrawing();
}

void PictureView::paintEvent(QPaintEvent*) {
    if (drawing_ == 0 && image_.devicePixelRatioF() != devicePixelRatioF()) layOutAndPaint();
    QPainter painter(this);
    painter.drawImage(0, 0, image_);
    if (hasFocus()) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void PictureView::resizeEvent(QResizeEvent*) {
    if (drawing_ > 0) {
        resized_ = true;
        return;
    }
    makeImage();
    layOutAndPaint();
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
    draw([&] {
        if (event->modifiers() & Qt::ControlModifier) {
            const int column = x >= 0 && x < picture_.graphWidth ? x : picture_.graphWidth / 2;
            laCanvas_ZoomAtColumn(*canvas_, column, std::pow(zoomPerNotch, -(turn.x() + turn.y()) / notch));
        } else if (std::abs(turn.x()) > std::abs(turn.y()) || (event->modifiers() & Qt::ShiftModifier)) {
            laCanvas_ScrollColumns(*canvas_, std::lround(-(turn.x() + turn.y()) / notch * columnsPerNotch));
        } else {
            laCanvas_ScrollRows(*canvas_, std::lround(-turn.y() / notch * rowsPerNotch * canvas_->rowHeight));
        }
    });
    event->accept();
}

bool PictureView::handleKey(const QKeyEvent& event) {
    _LaCanvasData& canvas = *canvas_;
    const int page = picture_.graphWidth;
    switch (event.key()) {
        case Qt::Key_W:
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            laCanvas_ZoomAtColumn(canvas, pointerColumn(), 1 / zoomPerNotch);
            return true;
        case Qt::Key_S:
        case Qt::Key_Minus:
            laCanvas_ZoomAtColumn(canvas, pointerColumn(), zoomPerNotch);
            return true;
        case Qt::Key_A:
        case Qt::Key_Left:
            laCanvas_ScrollColumns(canvas, -keyColumns);
            return true;
        case Qt::Key_D:
        case Qt::Key_Right:
            laCanvas_ScrollColumns(canvas, keyColumns);
            return true;
        case Qt::Key_Up:
            laCanvas_ScrollRows(canvas, -canvas.rowHeight);
            return true;
        case Qt::Key_Down:
            laCanvas_ScrollRows(canvas, canvas.rowHeight);
            return true;
        case Qt::Key_PageUp:
            laCanvas_ScrollColumns(canvas, -page);
            return true;
        case Qt::Key_PageDown:
            laCanvas_ScrollColumns(canvas, page);
            return true;
        case Qt::Key_Home:
            laCanvas_ScrollToEnd(canvas, false);
            return true;
        case Qt::Key_End:
            laCanvas_ScrollToEnd(canvas, true);
            return true;
        case Qt::Key_0:
            laCanvas_ShowAll(canvas);
            return true;
        default:
            return false;
    }
}

void PictureView::keyPressEvent(QKeyEvent* event) {
    bool taken = false;
    if (!(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        draw([&] { taken = handleKey(*event); });
    if (!taken) QWidget::keyPressEvent(event);
}

// A press on the mark of a group opens or closes it.
void PictureView::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->button() != Qt::LeftButton || at.x() >= picture_.nameWidth) return;
    MslObjectEntry* entry = laNames_RowAt(*canvas_, at.y() - picture_.graphTop);
    if (!entry || !laNames_HitsMark(*canvas_, *entry, at.x())) return;
    draw([&] {
        if (canvas_->taskList->SetCollapsed(*entry, !entry->collapsed)) laCanvas_Relayout(*canvas_);
    });
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    const int x = static_cast<int>(event->position().x()) - picture_.graphLeft;
    Q_EMIT hovered(x >= 0 && x < picture_.graphWidth ? x : -1);
}

void PictureView::leaveEvent(QEvent*) {
    Q_EMIT hovered(-1);
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
