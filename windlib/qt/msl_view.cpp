#include "windlib/qt/msl_view.h"

#include <QAbstractTableModel>
#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <utility>

#include "windlib/qt/msl_cells.h"
#include "windlib/qt/platform.h"

namespace {

constexpr int rowPadding = 6;          // pixels of a row beyond its text
constexpr int headerPadding = 18;      // of a header beyond its text, for the mark of the order
constexpr int searchEndsAfter = 2500;  // milliseconds with no key
constexpr int busyFrom = 100000;       // rows whose sorting takes a moment
constexpr size_t mostRanges = 1000;    // of selected rows that Qt's own selection follows

bool isModifier(int key) {
    static constexpr Qt::Key modifiers[] = {
        Qt::Key_Shift,   Qt::Key_Control,    Qt::Key_Alt,         Qt::Key_AltGr,    Qt::Key_Meta,
        Qt::Key_Super_L, Qt::Key_Super_R,    Qt::Key_Hyper_L,     Qt::Key_Hyper_R,  Qt::Key_CapsLock,
        Qt::Key_NumLock, Qt::Key_ScrollLock, Qt::Key_Mode_switch, Qt::Key_Multi_key};
    return std::find(std::begin(modifiers), std::end(modifiers), key) != std::end(modifiers);
}

}  // namespace

// The list as Qt's views ask for it. What changed is told after it has changed, so the size that the view
// knows is kept here.
class MslView::Model : public QAbstractTableModel {
  public:
    Model(MScrollList& list, QObject* parent)
        : QAbstractTableModel(parent), list_(list), alive_(list.Alive()) {
        takeSize();
    }
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : columns_; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (alive_.expired() || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)) return {};
        return QString::fromStdString(list_.Text(index.row(), index.column()));
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (alive_.expired() || orientation != Qt::Horizontal || section >= list_.ColumnCount()) return {};
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(
                Qt::Alignment(list_.Column(section).rightAligned ? Qt::AlignRight : Qt::AlignLeft) |
                Qt::AlignVCenter);
        if (role != Qt::DisplayRole) return {};
        QStringList rows;
        for (const std::string& text : list_.Column(section).header) rows += QString::fromStdString(text);
        return rows.join(QLatin1Char('\n'));
    }
    void takeSize() {
        rows_ = list_.RowCount();
        columns_ = list_.ColumnCount();
    }
    void reset() {
        beginResetModel();
        takeSize();
        endResetModel();
    }
    void inserted(int first, int count) {
        beginInsertRows({}, first, first + count - 1);
        takeSize();
        endInsertRows();
    }
    void removed(int first, int count) {
        beginRemoveRows({}, first, first + count - 1);
        takeSize();
        endRemoveRows();
    }
    void headersChanged() {
        if (columns_ > 0) Q_EMIT headerDataChanged(Qt::Horizontal, 0, columns_ - 1);
    }

  private:
    MScrollList& list_;
    std::weak_ptr<bool> alive_;
    int rows_ = 0, columns_ = 0;
};

MslView::MslView(MScrollList& list, QWidget* parent)
    : QTableView(parent),
      list_(list),
      listAlive_(list.Alive()),
      model_(new Model(list, this)),
      cells_(new MslCells(list, this)),
      search_(new QLabel(this)) {
    setModel(model_);
    setItemDelegate(cells_);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setTabKeyNavigation(false);
    setAutoScroll(false);
    setShowGrid(false);
    setWordWrap(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setMinimumSectionSize(8);
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setHighlightSections(false);
    search_->setObjectName(QStringLiteral("Search"));
    search_->setAccessibleName(QStringLiteral("Search"));
    search_->setAutoFillBackground(true);
    search_->setBackgroundRole(QPalette::ToolTipBase);
    search_->setForegroundRole(QPalette::ToolTipText);
    search_->setMargin(2);
    search_->hide();
    searchEnd_.setSingleShot(true);
    selectionLater_.setSingleShot(true);
    connectTable();
    list_.changed = [this](MslChange change, int first, int count) { take(change, first, count); };
    list_.measure = [this](std::string_view text, bool heading) {
        // A text is cut for the smallest part of a pixel.
        const QFontMetricsF metrics(MslCells::fontOf(font(), heading));
        const double width =
            metrics.horizontalAdvance(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
        return static_cast<int>(std::ceil(width)) + (heading ? headerPadding : 0);
    };
    takeMetrics();
    showAll();
}

MslView::~MslView() {
    if (listAlive_.expired()) return;
    list_.changed = {};
    list_.measure = {};
}

void MslView::connectTable() {
    QHeaderView* header = horizontalHeader();
    disconnect(header, &QHeaderView::sectionPressed, this, nullptr);  // it would select the column
    disconnect(header, &QHeaderView::sectionEntered, this, nullptr);
    connect(header, &QHeaderView::sectionClicked, this, [this](int column) { sortBy(column); });
    connect(header, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (!taking_) list_.SetWidth(column, width);
    });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) {
        if (!taking_) list_.ScrollTo(value);
    });
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!taking_) takeSelection();
    });
    connect(&searchEnd_, &QTimer::timeout, this, [this] { list_.EndSearch(); });
    connect(&selectionLater_, &QTimer::timeout, this, [this] { showSelection(); });
}

void MslView::sortBy(int column) {
    const bool slow = list_.RowCount() >= busyFrom;
    if (slow) platform_SetBusy(true);
    list_.SortClick(column);
    if (slow) platform_SetBusy(false);
}

// Qt's selection was changed from elsewhere, as assistive programs do.
void MslView::takeSelection() {
    std::vector<int> rows;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row);
    if (rows == list_.SelectedRows()) return;
    list_.SelectRows(rows);
    if (rows.size() == 1) list_.SetCurrent(rows.front(), -1);
    if (list_.userSelected) list_.userSelected();
}

void MslView::take(MslChange change, int first, int count) {
    const QScopedValueRollback<bool> quiet(taking_, true);
    switch (change) {
        case MslChange::Size:
            model_->reset();
            showAll();
            return;
        case MslChange::Inserted:
            model_->inserted(first, count);
            return showRows(first, list_.RowCount() - first);
        case MslChange::Removed:
            model_->removed(first, count);
            selectionLater_.start(0);
            return showScroll();
        case MslChange::Columns:
            model_->headersChanged();
            return showColumns();
        case MslChange::Order:
            showHeights();
            showColumns();
            selectionLater_.start(0);
            return viewport()->update();
        case MslChange::Selection:
            selectionLater_.start(0);
            return viewport()->update();
        case MslChange::Repaint:
            return showRows(first, count);
        case MslChange::Scroll:
            return showScroll();
        case MslChange::Footer:
            return showFooter();
    }
}

void MslView::showAll() {
    const QScopedValueRollback<bool> quiet(taking_, true);
    showHeights();
    showColumns();
    showScroll();
    selectionLater_.start(0);
    fitOnce();
    viewport()->update();
}

void MslView::showRows(int first, int count) {
    const auto place = [this](int64_t y) {
        return static_cast<int>(std::clamp<int64_t>(y - list_.ViewTop(), -1, viewport()->height() + 1));
    };
    const int top = place(list_.TopOf(first)), bottom = place(list_.TopOf(first + count));
    viewport()->update(0, top, viewport()->width(), bottom - top);
}

void MslView::showHeights() {
    verticalHeader()->setDefaultSectionSize(list_.RowHeight());
    verticalScrollBar()->setSingleStep(list_.RowHeight());
    if (!list_.HasOwnHeights()) return;
    for (int row = 0; row < list_.RowCount(); ++row)
        if (list_.HeightOf(row) != verticalHeader()->sectionSize(row))
            verticalHeader()->resizeSection(row, list_.HeightOf(row));
}

// The last column takes what room is left.
void MslView::showColumns() {
    const QScopedValueRollback<bool> quiet(taking_, true);
    QHeaderView* header = horizontalHeader();
    header->setVisible(list_.HeaderRows() > 0);
    const int columns = std::min(list_.ColumnCount(), header->count());
    for (int column = 0; column < columns; ++column) {
        const MslColumn& shown = list_.Column(column);
        // A number stays beside what stands ahead of it.
        const bool last = column + 1 == columns && !shown.rightAligned;
        header->resizeSection(column,
                              last ? std::max(shown.width, viewport()->width() - shown.left) : shown.width);
    }
    header->setSortIndicatorShown(list_.SortColumn() >= 0);
    if (list_.SortColumn() >= 0)
        header->setSortIndicator(list_.SortColumn(),
                                 list_.SortDescending() ? Qt::DescendingOrder : Qt::AscendingOrder);
    viewport()->update();
}

// Painting looks at the list; Qt's own selection follows for those who read the view from outside, as far as
// it is in few enough pieces.
void MslView::showSelection() {
    if (listAlive_.expired()) return;
    const QScopedValueRollback<bool> quiet(taking_, true);
    setSelectionMode(list_.Multiple() ? ExtendedSelection : SingleSelection);
    QItemSelection ranges;
    const std::vector<int> rows = list_.SelectedRows();
    const int last = std::max(0, list_.ColumnCount() - 1);
    for (size_t i = 0, end; i < rows.size() && static_cast<size_t>(ranges.size()) < mostRanges; i = end) {
        for (end = i + 1; end < rows.size() && rows[end] == rows[end - 1] + 1;) ++end;
        ranges.append({model_->index(rows[i], 0), model_->index(rows[end - 1], last)});
    }
    selectionModel()->select(ranges, QItemSelectionModel::ClearAndSelect);
    const int current = list_.CurrentRow();
    if (current >= 0)
        selectionModel()->setCurrentIndex(model_->index(current, list_.CurrentColumn()),
                                          QItemSelectionModel::NoUpdate);
}

void MslView::showScroll() {
    const QScopedValueRollback<bool> quiet(taking_, true);
    QScrollBar* bar = verticalScrollBar();
    const auto top = static_cast<int>(list_.ViewTop());
    if (top > bar->maximum() || model_->rowCount() == 0) {
        executeDelayedItemsLayout();
        updateGeometries();
    }
    bar->setValue(top);
}

void MslView::showFooter() {
    if (footer && footer(list_.Footer())) return;
    search_->setText(QString::fromStdString(list_.Footer()));
    search_->setVisible(!list_.Footer().empty());
    search_->adjustSize();
    search_->move(viewport()->geometry().bottomLeft() - QPoint(0, search_->height() - 1));
    search_->raise();
}

void MslView::fitOnce() {
    if (fitted_ || !isVisible() || list_.RowCount() == 0) return;
    fitted_ = true;
    list_.FitUnsetColumns();
}

void MslView::takeMetrics() {
    const QFontMetrics metrics = fontMetrics();
    list_.metrics = {metrics.ascent(), metrics.descent(), metrics.lineSpacing()};
    list_.SetNaturalRowHeight(metrics.lineSpacing() + rowPadding);
}

void MslView::takeSize() {
    list_.SetViewHeight(viewport()->height());
    if (viewport()->width() != knownWidth_) {
        knownWidth_ = viewport()->width();
        if (list_.viewResized) list_.viewResized(knownWidth_);
    }
    showColumns();
}

void MslView::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    takeSize();
}

void MslView::showEvent(QShowEvent* event) {
    QTableView::showEvent(event);
    takeSize();
    fitOnce();
}

void MslView::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) takeMetrics();
}

// The frame tells who has the keyboard.
bool MslView::event(QEvent* event) {
    const bool done = QTableView::event(event);
    if (event->type() == QEvent::Paint && hasFocus()) {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    return done;
}

void MslView::paintEvent(QPaintEvent* event) {
    if (!listAlive_.expired()) QTableView::paintEvent(event);
}

void MslView::focusOutEvent(QFocusEvent* event) {
    QTableView::focusOutEvent(event);
    if (listAlive_.expired()) return;
    list_.EndSearch();
    update();
}

// Text goes on in a search and begins one; the keys that end it do so first.
bool MslView::keyInSearch(const QKeyEvent& event) {
    const bool plain = !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (list_.Searching() && event.key() == Qt::Key_Backspace) {
        list_.SearchBackspace();
        searchEnd_.start(searchEndsAfter);
        return true;
    }
    const QString typed = event.text();
    if (plain && !typed.isEmpty() && typed[0].isPrint() &&
        (list_.Searching() || typed != QStringLiteral(" "))) {
        searchEnd_.start(searchEndsAfter);
        list_.TypeAhead(typed.toStdString());
        return true;
    }
    // A key that only changes what another one types is part of typing that.
    if (isModifier(event.key())) return list_.Searching();
    const bool searching = list_.Searching();
    list_.EndSearch();
    return searching && event.key() == Qt::Key_Escape;
}

void MslView::keyPressEvent(QKeyEvent* event) {
    static const std::pair<int, MslKey> keys[] = {
        {Qt::Key_Up, MslKey::Up},         {Qt::Key_Down, MslKey::Down},
        {Qt::Key_PageUp, MslKey::PageUp}, {Qt::Key_PageDown, MslKey::PageDown},
        {Qt::Key_Home, MslKey::Home},     {Qt::Key_End, MslKey::End},
        {Qt::Key_Left, MslKey::Left},     {Qt::Key_Right, MslKey::Right},
        {Qt::Key_Return, MslKey::Enter},  {Qt::Key_Enter, MslKey::Enter},
        {Qt::Key_Space, MslKey::Space}};
    event->accept();
    if (event->modifiers() & Qt::AltModifier) return event->ignore();
    if (keyInSearch(*event)) return;
    const bool control = event->modifiers() & Qt::ControlModifier;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    if (event->matches(QKeySequence::SelectAll)) {
        list_.Key(MslKey::SelectAll);
        return;
    }
    for (const auto& [key, meaning] : keys) {
        if (event->key() != key) continue;
        if (meaning == MslKey::Enter && control) return sortBy(list_.CurrentColumn());
        const QPointer<MslView> here(this);
        if (!list_.Key(meaning, control, shift) && here) event->ignore();
        return;
    }
    event->ignore();
}

void MslView::click(const QMouseEvent& event, int clicks) {
    const QPoint at = event.position().toPoint();
    const QModelIndex cell = indexAt(at);
    list_.EndSearch();
    if (list_.toggleTree && cell.column() == list_.treeColumn &&
        cells_->markOf(cell.row(), cell.column(), visualRect(cell)).adjusted(-3, -3, 3, 3).contains(at)) {
        list_.ClickToggle(cell.row());
        return;
    }
    pressed_ = clicks == 1;
    list_.Click(cell.row(), cell.isValid() ? cell.column() : columnAt(at.x()), clicks,
                event.modifiers() & Qt::ControlModifier, event.modifiers() & Qt::ShiftModifier);
}

void MslView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) click(*event, 1);
}

void MslView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) click(*event, 2);
}

void MslView::mouseMoveEvent(QMouseEvent* event) {
    if (!pressed_ || !(event->buttons() & Qt::LeftButton)) return;
    const int64_t y = list_.ViewTop() + static_cast<int64_t>(event->position().y());
    const int row =
        list_.RowAt(std::clamp<int64_t>(y, 0, std::max<int64_t>(0, list_.TopOf(list_.RowCount()) - 1)));
    list_.DragTo(row);
}

void MslView::mouseReleaseEvent(QMouseEvent*) {
    pressed_ = false;
}

// From the keyboard, the menu is that of the current cell.
void MslView::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
    if (event->reason() == QContextMenuEvent::Keyboard)
        return list_.RightClick(list_.CurrentRow(), list_.CurrentColumn());
    const QPoint at = event->pos();
    list_.RightClick(indexAt(at).row(), columnAt(at.x()));
}

// What the owner says of the row, else the text of a cell that is cut.
std::string MslView::tipAt(QPoint at) const {
    const QModelIndex cell = indexAt(at);
    if (!cell.isValid()) return {};
    if (list_.tip)
        if (const std::string tip = list_.tip(cell.row()); !tip.empty()) return tip;
    if (list_.IsOwnerDrawn(cell.column())) return {};
    const QRect place = cells_->textOf(cell.row(), cell.column(), visualRect(cell));
    const std::string text = list_.Text(cell.row(), cell.column());
    return fontMetrics().horizontalAdvance(QString::fromStdString(text)) > place.width() ? text
                                                                                         : std::string();
}

bool MslView::viewportEvent(QEvent* event) {
    if (listAlive_.expired() || event->type() != QEvent::ToolTip) return QTableView::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    platform_ShowTip(help->globalPos(), tipAt(help->pos()), this);
    return true;
}
