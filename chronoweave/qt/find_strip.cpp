#include "chronoweave/qt/find_strip.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QVBoxLayout>

#include "chronoweave/qt/picture_view.h"
#include "shared/libcxxutil/gate.h"
#include "windlib/qt/dialog_view.h"

namespace {
constexpr qint64 sliceLength = 10;  // milliseconds
}  // namespace

FindStrip::FindStrip(PictureView& picture, std::shared_ptr<SearchDesk> desk, QWidget* parent)
    : QWidget(parent), picture_(picture), line_(picture.canvas(), std::move(desk)) {
    setObjectName(QStringLiteral("FindStrip"));
    setAccessibleName(QStringLiteral("Find"));
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    view_ = new DialogView(line_.model());
    whole->addWidget(view_);
    setFixedHeight(view_->sizeHint().height());
    hide();
    idle_.setSingleShot(true);
    connect(&idle_, &QTimer::timeout, this, [this] { slice(); });
    connect(&picture_, &PictureView::barsChanged, this, [this] { line_.Sync(); });
    line_.changed = [this] { follow(); };
}

// The view shows the line's items, and so goes first.
FindStrip::~FindStrip() {
    disconnect(&picture_, nullptr, this, nullptr);
    line_.changed = {};
    gate_Program().Forget(this);
    delete view_;
}

void FindStrip::open() {
    line_.Open();
    auto* field = qobject_cast<QLineEdit*>(view_->widget("find"));
    field->setFocus();
    field->selectAll();
}

bool FindStrip::escape() {
    if (!line_.IsOpen()) return false;
    line_.Escape();
    return true;
}

void FindStrip::follow() {
    if (isHidden() == line_.IsOpen()) setVisible(line_.IsOpen());
    if (!line_.IsOpen()) {
        idle_.stop();
        picture_.setFocus();
    } else if (!idle_.isActive()) {
        idle_.start(0);
    }
}

// The walk of a load or a fetch is not disturbed: the slice waits until it is over.
void FindStrip::slice() {
    if (!gate_May(GateActivity::TickReading))
        return gate_Program().WhenMay(GateActivity::TickReading, this, [this] { slice(); });
    QElapsedTimer since;
    since.start();
    bool more = true;
    while (more && since.elapsed() < sliceLength) more = line_.Step();
    if (more) idle_.start(0);
}

void FindStrip::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        escape();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        line_.Enter(!(event->modifiers() & Qt::ShiftModifier));
    else
        QWidget::keyPressEvent(event);
}
