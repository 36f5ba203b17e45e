#include "chronoweave/qt/event_dock.h"

#include <QKeyEvent>
#include <QMainWindow>

#include "chronoweave/qt/picture_view.h"
#include "shared/libcxxutil/gate.h"
#include "windlib/config/settings.h"
#include "windlib/qt/dialog_view.h"

namespace {

constexpr const char* positionKey = "Trvgui.EventTable";
constexpr int followEvery = 60;  // milliseconds

}  // namespace

EventDock::EventDock(PictureView& picture, SettingsManager* settings, QWidget* parent)
    : QDockWidget(QStringLiteral("Events"), parent),
      picture_(picture),
      settings_(settings),
      table_(picture.canvas()) {
    setObjectName(QStringLiteral("EventTable"));
    setAccessibleName(QStringLiteral("Events of the view"));
    setAllowedAreas(Qt::BottomDockWidgetArea | Qt::TopDockWidgetArea);
    view_ = new DialogView(table_.model());
    setWidget(view_);
    table_.SetShown(false);
    later_.setSingleShot(true);
    later_.setInterval(followEvery);
    connect(&later_, &QTimer::timeout, this, [this] { follow(); });
    connect(&picture_, &PictureView::barsChanged, this, [this] {
        if (isVisible() && !later_.isActive()) later_.start();
    });
}

// The view shows the table's items, and so goes first.
EventDock::~EventDock() {
    disconnect(&picture_, nullptr, this, nullptr);
    shownChanged = {};
    gate_Program().Forget(this);
    delete view_;
}

void EventDock::follow() {
    if (!isVisible()) return;
    // While long work goes on the rows stay; they follow when it is over.
    if (!gate_May(GateActivity::Command))
        return gate_Program().WhenMay(GateActivity::Command, this, [this] { follow(); });
    table_.Sync();
}

void EventDock::toggle() {
    if (isVisible()) {
        hide();
        picture_.setFocus();
        return;
    }
    show();
    if (QWidget* rows = view_->widget("list")) rows->setFocus();
}

int EventDock::rememberedHeight() const {
    const auto position = settings_ ? settings_->Position(positionKey) : std::nullopt;
    return position ? position->absolute.height : 0;
}

void EventDock::keyPressEvent(QKeyEvent* event) {
    const QWidget* focus = view_->focusWidget();
    const std::string item = focus ? focus->objectName().toStdString() : std::string();
    if (event->key() == Qt::Key_Escape) {
        if (!table_.Escape(item)) picture_.setFocus();
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !item.empty()) {
        table_.model().commit(item);
    } else {
        QDockWidget::keyPressEvent(event);
    }
}

void EventDock::showEvent(QShowEvent* event) {
    QDockWidget::showEvent(event);
    if (event->spontaneous()) return;
    table_.SetShown(true);
    later_.start();
    if (auto* window = qobject_cast<QMainWindow*>(parentWidget()); window && rememberedHeight() > 0)
        window->resizeDocks({this}, {rememberedHeight()}, Qt::Vertical);
    if (shownChanged) shownChanged();
}

// The frame in the picture goes with the table.
void EventDock::hideEvent(QHideEvent* event) {
    QDockWidget::hideEvent(event);
    if (event->spontaneous()) return;
    table_.SetShown(false);
    picture_.update();
    if (shownChanged) shownChanged();
}

void EventDock::resizeEvent(QResizeEvent* event) {
    QDockWidget::resizeEvent(event);
    if (!settings_ || !isVisible() || isFloating()) return;
    WindowPosition position;
    position.absolute = position.toParent = {0, 0, width(), height()};
    settings_->SetPosition(positionKey, position);
}
