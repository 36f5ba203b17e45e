#include "chronoweave/qt/overview_strip.h"

#include <QMouseEvent>
#include <QPainter>

#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/view.h"
#include "shared/libcxxutil/gate.h"
#include "windlib/lagraph/translated_surface.h"
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

// Over the drawing area, so that its ends stand where those of the axis do; all of it while it stands
// elsewhere.
QRect OverviewStrip::area() const {
    const laPicture& picture = view_.picture();
    if (window() != view_.window() || picture.graphWidth <= 0) return rect();
    const int left = mapFrom(window(), view_.mapTo(window(), QPoint(picture.graphLeft, 0))).x();
    return rect().intersected(QRect(left, 0, picture.graphWidth, height()));
}

int OverviewStrip::columnOf(const QMouseEvent& event) const {
    return static_cast<int>(event.position().x()) - area().left();
}

void OverviewStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect place = area();
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(place, palette().color(QPalette::Base));
    QtSurface whole(painter, nullptr, width(), height(), surfaceColours(palette()));
    TranslatedSurface surface(whole, place.left(), 0, place.width(), height());
    if (overview_.length > 0)
        laOverview_Draw(overview_, view_.canvas().view, view_.canvas().marks, surface, place.width(),
                        height());
}

void OverviewStrip::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || overview_.length <= 0) return;
    grabbed_ = columnOf(*event);
    part_ = laOverview_HitTest(overview_, view_.canvas().view, area().width(), grabbed_);
    start_ = {view_.canvas().view.viewLow, view_.canvas().view.viewHigh};
    if (part_ == laOverviewPart::Outside) mouseMoveEvent(event);
}

void OverviewStrip::mouseMoveEvent(QMouseEvent* event) {
    const int x = columnOf(*event);
    if (grabbed_ < 0) {
        const laOverviewPart part =
            overview_.length > 0 ? laOverview_HitTest(overview_, view_.canvas().view, area().width(), x)
                                 : laOverviewPart::Outside;
        setCursor(part == laOverviewPart::Inside    ? Qt::OpenHandCursor
                  : part == laOverviewPart::Outside ? Qt::ArrowCursor
                                                    : Qt::SizeHorCursor);
        return;
    }
    const laOverviewRange range = laOverview_Drag(overview_, area().width(), part_, start_, grabbed_, x);
    _LaCanvasData& canvas = view_.canvas();
    view_.draw([&] { laCanvas_ShowRange(canvas, range.low, range.high, {.paint = true}); });
}

void OverviewStrip::mouseReleaseEvent(QMouseEvent*) {
    if (grabbed_ >= 0) laHistory_Add(view_.canvas());
    grabbed_ = -1;
}
