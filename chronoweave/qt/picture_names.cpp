// The name column of the canvas on screen: pointer, keyboard, menu, and the divider that sizes it.
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <optional>

#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/context_menu.h"
#include "chronoweave/traxfunc/list/names.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "windlib/qt/platform.h"

namespace {

constexpr int dividerReach = 3;  // pixels to either side that still take hold of it
constexpr int leastNameWidth = 40;

std::optional<MslKey> listKey(const QKeyEvent& event) {
    switch (event.key()) {
        case Qt::Key_Up:
            return MslKey::Up;
        case Qt::Key_Down:
            return MslKey::Down;
        case Qt::Key_PageUp:
            return MslKey::PageUp;
        case Qt::Key_PageDown:
            return MslKey::PageDown;
        case Qt::Key_Home:
            return MslKey::Home;
        case Qt::Key_End:
            return MslKey::End;
        case Qt::Key_Left:
            return MslKey::Left;
        case Qt::Key_Right:
            return MslKey::Right;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return MslKey::Enter;
        case Qt::Key_Space:
            return MslKey::Space;
        case Qt::Key_A:
            if (event.modifiers() & Qt::ControlModifier) return MslKey::SelectAll;
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

}  // namespace

laNames PictureView::names() const {
    return {*canvas_->taskList, canvas_->looks, canvas_->view, *canvas_->graph};
}

bool PictureView::overDivider(QPoint at) const {
    return at.y() < picture_.graphTop + picture_.graphHeight && at.x() >= picture_.nameWidth - dividerReach &&
           at.x() < picture_.graphLeft + 1;
}

bool PictureView::pressNames(const QMouseEvent& event, int clicks) {
    const QPoint at = event.position().toPoint();
    if (event.button() == Qt::LeftButton && overDivider(at)) {
        if (clicks == 2) {
            canvas_->list.nameWidth = 0;
            measuredOf_.clear();  // narrower, too
            layOutAndPaint();
        } else {
            held_ = Held::Divider;
        }
        return true;
    }
    if (!overNames(at)) return at.x() < picture_.graphLeft;
    const int y = at.y() - picture_.graphTop;
    const bool control = event.modifiers() & Qt::ControlModifier,
               shift = event.modifiers() & Qt::ShiftModifier;
    focusNames(true);
    if (event.button() == Qt::RightButton) {
        if (!askDebugger()) return true;
        MslObjectEntry* clicked = nullptr;
        draw([&] { clicked = names().RightClick(y); });
        listMenu(clicked);
    } else if (event.button() == Qt::LeftButton) {
        draw([&] {
            if (!names().Click(at.x(), y, clicks, control, shift)) names().ClearSelection();
        });
        const std::string tip = names().Tip(y);
        platform_ShowTip(event.globalPosition().toPoint(), tip, this);
        held_ = Held::Names;
    }
    return true;
}

void PictureView::moveNames(QPoint at) {
    if (held_ == Held::Names) return draw([&] { names().DragTo(at.y() - picture_.graphTop); });
    canvas_->list.nameWidth = std::clamp(at.x(), leastNameWidth, std::max(leastNameWidth, width() / 2));
    layOutAndPaint();
}

// The names and the picture are two stations of the keyboard in one widget.
void PictureView::focusNames(bool on) {
    if (canvas_->taskList->focused == on) return;
    draw([&] {
        if (!on) names().EndSearch();
        names().Focus(on);
    });
}

bool PictureView::focusNextPrevChild(bool next) {
    const bool names = canvas_->taskList->focused;
    if (next == names || canvas_->taskList->rows().empty()) {
        focusNames(false);
        return QWidget::focusNextPrevChild(next);
    }
    focusNames(next);
    return true;
}

void PictureView::focusInEvent(QFocusEvent* event) {
    if (event->reason() == Qt::BacktabFocusReason) focusNames(true);
    QWidget::focusInEvent(event);
}

bool PictureView::keyToNames(const QKeyEvent& event) {
    if (!canvas_->taskList->focused) return false;
    const bool control = event.modifiers() & Qt::ControlModifier,
               shift = event.modifiers() & Qt::ShiftModifier;
    if (event.modifiers() & Qt::AltModifier) return false;
    bool taken = true;
    const std::string typed = event.text().toStdString();
    draw([&] {
        const auto key = listKey(event);
        if (key && !(*key == MslKey::Space && canvas_->taskList->list().Searching()))
            taken = names().Key(*key, control, shift);
        else if (event.key() == Qt::Key_Escape)
            names().EndSearch();
        else if (event.key() == Qt::Key_Backspace)
            taken = names().Backspace();
        else if (!control && !typed.empty() && event.text().front().isPrint() && typed != "?")
            names().Type(typed);
        else
            taken = false;
    });
    if (event.key() == Qt::Key_Escape) focusNames(false);
    return taken;
}

void PictureView::listMenu(MslObjectEntry* clicked) {
    if (canvas_->source.storeHasEvents) popUp(laCanvas_ListMenu(*canvas_, clicked, debuggerCan_));
}

// The menu key: about the selected rows, or the place of the first cursor.
void PictureView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() != QContextMenuEvent::Keyboard || !askDebugger() || !canvas_->source.storeHasEvents)
        return;
    const std::vector<MslObjectEntry*> selected = names().Selected();
    if (canvas_->taskList->focused) return listMenu(selected.empty() ? nullptr : selected.front());
    const int x = canvas_->marks.cursor[0] >= canvas_->view.viewLow &&
                          canvas_->marks.cursor[0] <= canvas_->view.viewHigh
                      ? laCanvas_TimeToPixel(*canvas_, canvas_->marks.cursor[0], Time_Second)
                      : picture_.graphWidth / 2;
    popUp(laCanvas_CanvasMenu(*canvas_, x, canvas_->looks.rowHeight / 2, debuggerCan_));
}
