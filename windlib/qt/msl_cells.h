// How the cells of a list look: their ground and colours, toggles and check marks, indents, texts, and cells
// that the owner draws.
#pragma once

#include <QRect>
#include <QStyledItemDelegate>

#include "windlib/msl/scroll_list.h"

class MslCells : public QStyledItemDelegate {
  public:
    // The list outlives the cells.
    MslCells(MScrollList& list, QWidget* view);
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // The toggle or check mark in a cell of this rectangle; empty when it has none.
    QRect markOf(int row, int column, const QRect& cell) const;
    // Where the text stands.
    QRect textOf(int row, int column, const QRect& cell) const;
    static QFont fontOf(const QFont& font, bool heading);

  private:
    void drawGround(QPainter& painter, const QStyleOptionViewItem& option, const MslCellRecord& cell,
                    bool selected) const;
    void drawByOwner(QPainter& painter, const QStyleOptionViewItem& option, int row, int column,
                     bool selected) const;

    MScrollList& list_;
    QWidget* view_;
};
