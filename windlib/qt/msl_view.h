// A list on screen: a table that shows a MScrollList and passes on what the user does to it. Rows are asked
// for only when they are shown, so that a million of them cost what a page costs.
#pragma once

#include <QTableView>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>

#include "windlib/msl/scroll_list.h"

class MslCells;
class QLabel;

class MslView : public QTableView {
    Q_OBJECT
  public:
    // Takes the list's callbacks changed and measure. The list is not owned; when it goes first, the view can
    // only be destroyed.
    explicit MslView(MScrollList& list, QWidget* parent = nullptr);
    ~MslView() override;

    MScrollList& list() { return list_; }
    // Shows the text of a type-ahead search, "Srch: TEXT", and empty at its end. True when it did; otherwise
    // the list shows it itself. May be empty.
    std::function<bool(const std::string& text)> footer;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool viewportEvent(QEvent* event) override;

  private:
    class Model;

    void connectTable();
    void take(MslChange change, int first, int count);
    void takeMetrics();
    void takeSize();
    void showAll();
    void showRows(int first, int count);
    void showColumns();
    void showHeights();
    void showSelection();
    void showScroll();
    void showFooter();
    void fitOnce();
    void takeSelection();
    void sortBy(int column);
    bool keyInSearch(const QKeyEvent& event);
    void click(const QMouseEvent& event, int clicks);
    std::string tipAt(QPoint at) const;

    MScrollList& list_;
    std::weak_ptr<bool> listAlive_;
    Model* model_;
    MslCells* cells_;
    QLabel* search_;
    QTimer searchEnd_;
    QTimer selectionLater_;
    bool taking_ = false;  // the list's state is being shown: what Qt tells of it is no news
    bool pressed_ = false;
    bool fitted_ = false;
    int knownWidth_ = -1;
};
