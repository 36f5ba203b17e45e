#include "chronoweave/qt/selection_corner.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "chronoweave/qt/picture_view.h"
#include "shared/libcxxutil/gate.h"
#include "windlib/qt/dialog_view.h"

namespace {

constexpr qint64 sliceLength = 8;  // milliseconds
constexpr int beside = 8;          // pixels from the edges of the drawing area
constexpr int under = 16;          // and from its top, where marks and lengths stand
constexpr int mostUncovered = 3;   // rows of processors at the top that stay free
constexpr int leastAround = 120;   // pixels that the picture must have more than the panel
constexpr int leastHeight = 110;
constexpr int readable = 170;  // a height that is worth standing under the rows

// Below the rows that say who runs.
int upper(const _LaCanvasData& canvas) {
    const auto& rows = canvas.items.processors.list;
    const auto own = static_cast<int>(std::ranges::count_if(rows, &LaProcessor::own));
    const int end = rows.empty() ? 0 : std::clamp(own, 1, mostUncovered) * canvas.looks.rowHeight;
    return std::max(under, end + beside / 2);
}

}  // namespace

SelectionCorner::SelectionCorner(PictureView& picture)
    : QFrame(&picture), picture_(picture), panel_(picture.canvas()) {
    setObjectName(QStringLiteral("SelectionCorner"));
    setAccessibleName(QStringLiteral("Selection"));
    setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
    setAutoFillBackground(true);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    view_ = new DialogView(panel_.model());
    whole->addWidget(view_);
    hide();
    idle_.setSingleShot(true);
    connect(&idle_, &QTimer::timeout, this, [this] { slice(); });
    connect(&picture_, &PictureView::barsChanged, this, [this] { follow(); });
}

// The view shows the panel's items, and so goes first.
SelectionCorner::~SelectionCorner() {
    disconnect(&picture_, nullptr, this, nullptr);
    gate_Program().Forget(this);
    delete view_;
}

void SelectionCorner::setShown(bool on) {
    on_ = on;
    follow();
}

void SelectionCorner::follow() {
    if (panel_.Sync() && !idle_.isActive()) idle_.start(0);
    place();
}

// The walk of a load or a fetch is not disturbed: the slice waits until it is over.
void SelectionCorner::slice() {
    if (!gate_May(GateActivity::TickReading))
        return gate_Program().WhenMay(GateActivity::TickReading, this, [this] { slice(); });
    QElapsedTimer since;
    since.start();
    bool more = true;
    while (more && since.elapsed() < sliceLength) more = panel_.Step();
    if (more) idle_.start(0);
    place();
}

// In the upper right corner, or in the lower one where no rows are; on the left when the selection's end that
// moves lies there.
void SelectionCorner::place() {
    const laPicture& graph = picture_.picture();
    const QSize wish = view_->sizeHint() + QSize(2 * frameWidth(), 2 * frameWidth());
    const LaView& view = picture_.canvas().view;
    const int bare = graph.dataHeight - (view.contentHeight - view.verticalOffset) - 2 * beside;
    const int height = bare >= readable
                           ? std::min(wish.height(), bare)
                           : std::min(wish.height(), graph.dataHeight - upper(picture_.canvas()) - beside);
    const int top = bare >= readable ? graph.dataHeight - height - beside : upper(picture_.canvas());
    const bool room = graph.graphWidth > wish.width() + leastAround && height >= leastHeight;
    if (!on_ || !panel_.HasFigures() || !room) {
        if (isVisibleTo(&picture_)) hide();
        return;
    }
    const int right = graph.graphLeft + graph.graphWidth - wish.width() - beside;
    const int end = graph.graphLeft +
                    laCanvas_TimeToPixel(picture_.canvas(), picture_.canvas().marks.cursor[1], Time_Second);
    const bool covered = end >= right - beside && end < graph.graphLeft + graph.graphWidth;
    setGeometry(covered ? graph.graphLeft + beside : right, graph.graphTop + top, wish.width(), height);
    if (!isVisibleTo(&picture_)) {
        show();
        raise();
    }
}

// What is done to the panel is not done to the picture under it.
void SelectionCorner::mousePressEvent(QMouseEvent* event) {
    event->accept();
}
void SelectionCorner::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}
void SelectionCorner::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
}
void SelectionCorner::wheelEvent(QWheelEvent* event) {
    event->accept();
}

void SelectionCorner::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        panel_.model().press("copy");
    else if (event->key() == Qt::Key_Escape)
        picture_.setFocus();
    else
        QFrame::keyPressEvent(event);
}
