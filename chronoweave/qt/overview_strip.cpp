#include "chronoweave/qt/overview_strip.h"

#include <QMouseEvent>
#include <QPainter>

#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/view.h"
#include "shared/libcxxutil/gate.h"
#include "windlib/qt/qt_surface.h"

OverviewStrip::OverviewStrip(PictureView& view, QWidget* parent) : QWidget(parent), view_(view) {
    setMouseTracking(true);
    connect(&view, &PictureView::barsChanged, this, [this] { update(); });
    later_.setSingleShot(true);
    connect(&later_, &QTimer::timeout, this, [this] { countOn(); });
}

OverviewStrip::~OverviewStrip() {
    gate_Program().Forget(this);
}

void OverviewStrip::rebuild() {
    overview_ = laOverview_Begin(view_.canvas().source);
    count();
}

// The walk of a load or a fetch is not disturbed: the slice waits until it is over.
void OverviewStrip::countOn() {
    if (!gate_May(GateActivity::TickReading))
        return gate_Program().WhenMay(GateActivity::TickReading, this, [this] { countOn(); });
    count();
}

void OverviewStrip::count() {
    constexpr uint32_t slice = 100'000;  // events; a few milliseconds
    const bool more = laOverview_Count(view_.canvas().source, overview_, slice);
    update();
    if (more)
        later_.start(0);
    else
        later_.stop();
}

void OverviewStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    QtSurface surface(painter, nullptr, width(), height(), surfaceColours(palette()));
    if (overview_.length > 0)
        laOverview_Draw(overview_, view_.canvas().view, view_.canvas().marks, surface, width(), height());
}

void OverviewStrip::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || overview_.length <= 0) return;
    grabbed_ = static_cast<int>(event->position().x());
    part_ = laOverview_HitTest(overview_, view_.canvas().view, width(), grabbed_);
    start_ = {view_.canvas().view.viewLow, view_.canvas().view.viewHigh};
    if (part_ == laOverviewPart::Outside) mouseMoveEvent(event);
}

void OverviewStrip::mouseMoveEvent(QMouseEvent* event) {
    const int x = static_cast<int>(event->position().x());
    if (grabbed_ < 0) {
        const laOverviewPart part = overview_.length > 0
                                        ? laOverview_HitTest(overview_, view_.canvas().view, width(), x)
                                        : laOverviewPart::Outside;
        setCursor(part == laOverviewPart::Inside    ? Qt::OpenHandCursor
                  : part == laOverviewPart::Outside ? Qt::ArrowCursor
                                                    : Qt::SizeHorCursor);
        return;
    }
    const laOverviewRange range = laOverview_Drag(overview_, width(), part_, start_, grabbed_, x);
    _LaCanvasData& canvas = view_.canvas();
    view_.draw([&] { laCanvas_ShowRange(canvas, range.low, range.high, {.paint = true}); });
}

void OverviewStrip::mouseReleaseEvent(QMouseEvent*) {
    if (grabbed_ >= 0) laHistory_Add(view_.canvas());
    grabbed_ = -1;
}
