#include "windlib/qt/msl_cells.h"

#include <QPainter>

#include "windlib/icons.h"
#include "windlib/msl/toggle_handler.h"
#include "windlib/qt/icon_images.h"
#include "windlib/qt/qt_surface.h"

namespace {

constexpr int margin = 4;  // pixels ahead of and behind what a cell shows

bool isTree(const MScrollList& list, int column) {
    return list.toggleTree && column == list.treeColumn;
}

IconHandle markIcon(const MScrollList& list, int row, int column) {
    const uint32_t toggle = list.Toggle(row, column);
    return icon_Find(isTree(list, column) ? msl_TreePicture(toggle) : msl_CheckPicture(toggle));
}

QPalette::ColorGroup groupOf(const QStyleOptionViewItem& option) {
    if (!(option.state & QStyle::State_Enabled)) return QPalette::Disabled;
    return option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
}

// A text that can be read on a ground of any colour.
QColor inkOn(const QColor& ground) {
    return qGray(ground.rgb()) > 110 ? QColor(0x202020) : QColor(0xF8F8F8);
}

}  // namespace

MslCells::MslCells(MScrollList& list, QWidget* view) : QStyledItemDelegate(view), list_(list), view_(view) {}

QFont MslCells::fontOf(const QFont& font, bool heading) {
    QFont shown = font;
    shown.setBold(heading || font.bold());
    return shown;
}

QRect MslCells::markOf(int row, int column, const QRect& cell) const {
    const IconHandle icon = markIcon(list_, row, column);
    if (icon == NoIcon) return {};
    const int width = icon_Width(icon), height = icon_Height(icon);
    const int indent = column == list_.treeColumn ? list_.Level(row) * list_.levelIndent : 0;
    return {cell.left() + margin + indent, cell.top() + (cell.height() - height) / 2, width, height};
}

// In a tree every row leaves room for a toggle, so that texts of a level stand below each other.
QRect MslCells::textOf(int row, int column, const QRect& cell) const {
    int left = cell.left() + margin;
    if (column == list_.treeColumn) left += list_.Level(row) * list_.levelIndent;
    if (isTree(list_, column) || list_.Toggle(row, column) != mslToggleNone) left += list_.levelIndent;
    return {QPoint(left, cell.top()), QPoint(cell.right() - margin, cell.bottom())};
}

void MslCells::drawGround(QPainter& painter, const QStyleOptionViewItem& option, const MslCellRecord& cell,
                          bool selected) const {
    const QPalette::ColorGroup group = groupOf(option);
    if (selected)
        painter.fillRect(option.rect, option.palette.color(group, QPalette::Highlight));
    else if ((cell.attributes & mslBackground) != 0)
        painter.fillRect(option.rect, QColor::fromRgb(cell.background));
    else if ((cell.attributes & mslHeading) != 0)
        painter.fillRect(option.rect, option.palette.color(group, QPalette::Button));
}

void MslCells::drawByOwner(QPainter& painter, const QStyleOptionViewItem& option, int row, int column,
                           bool selected) const {
    SurfaceColours colours = surfaceColours(option.palette);
    if (selected) {
        colours.foreground =
            option.palette.color(groupOf(option), QPalette::HighlightedText).rgb() & 0xFFFFFF;
        colours.background = option.palette.color(groupOf(option), QPalette::Highlight).rgb() & 0xFFFFFF;
    }
    QtSurface surface(painter, nullptr, view_->width(), view_->height(), colours);
    const QRect& at = option.rect;
    surface.pushClip(at.x(), at.y(), at.width(), at.height(), true);
    list_.drawCell(surface, at.x(), at.y(), at.width(), at.height(), row, column, selected);
    surface.popClip();
}

void MslCells::paint(QPainter* painter, const QStyleOptionViewItem& given, const QModelIndex& index) const {
    QStyleOptionViewItem option = given;
    option.palette = view_->palette();
    const int row = index.row(), column = index.column();
    const bool selected = list_.IsSelected(row);
    const MslCellRecord cell = list_.Cell(row, column);
    painter->save();
    painter->setClipRect(option.rect, Qt::IntersectClip);
    drawGround(*painter, option, cell, selected);
    if (list_.IsOwnerDrawn(column)) {
        drawByOwner(*painter, option, row, column, selected);
    } else {
        const bool heading = (cell.attributes & mslHeading) != 0;
        if (const IconHandle icon = markIcon(list_, row, column); icon != NoIcon)
            painter->drawImage(markOf(row, column, option.rect).topLeft(),
                               iconSprite(icon, view_->devicePixelRatioF()).image);
        QColor ink = option.palette.color(groupOf(option), selected  ? QPalette::HighlightedText
                                                           : heading ? QPalette::ButtonText
                                                                     : QPalette::Text);
        if (!selected && (cell.attributes & mslBackground) != 0)
            ink = inkOn(QColor::fromRgb(cell.background));
        if (!selected && (cell.attributes & mslForeground) != 0) ink = QColor::fromRgb(cell.foreground);
        painter->setFont(fontOf(view_->font(), heading));
        painter->setPen(ink);
        const QRect place = textOf(row, column, option.rect);
        const QString text = painter->fontMetrics().elidedText(
            QString::fromStdString(list_.Text(row, column)), Qt::ElideRight, place.width());
        const int side = list_.Column(column).rightAligned ? Qt::AlignRight : Qt::AlignLeft;
        painter->drawText(place, Qt::AlignVCenter | side | Qt::TextSingleLine, text);
    }
    const bool current = view_->hasFocus() && row == list_.CurrentRow();
    if (current && (list_.toggleTree || column == list_.CurrentColumn())) {
        QPen dots(selected ? option.palette.color(QPalette::HighlightedText)
                           : option.palette.color(QPalette::Highlight));
        dots.setStyle(Qt::DotLine);
        painter->setPen(dots);
        painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
    }
    painter->restore();
}

QSize MslCells::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const int row = index.row(), column = index.column();
    const bool heading = (list_.Cell(row, column).attributes & mslHeading) != 0;
    const QFontMetrics metrics(fontOf(option.font, heading));
    const int indent = textOf(row, column, QRect(0, 0, 1000, 10)).left();
    return {indent + metrics.horizontalAdvance(QString::fromStdString(list_.Text(row, column))) + margin,
            list_.HeightOf(row)};
}
