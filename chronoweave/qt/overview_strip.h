// The overview strip on screen: the whole trace, with the view as a frame that the pointer drags and resizes.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "chronoweave/traxfunc/draw/overview.h"

class PictureView;

class OverviewStrip : public QWidget {
  public:
    explicit OverviewStrip(PictureView& view, QWidget* parent = nullptr);
    ~OverviewStrip() override;
    // Counts the store anew. A short one is counted on return, a longer one when nothing else is to be done.
    void rebuild();
    // Counts what has been added to the store.
    void countOn();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    void count();
    QRect area() const;
    int columnOf(const QMouseEvent& event) const;

    PictureView& view_;
    QTimer later_;  // the next slice
    laOverview overview_;
    laOverviewPart part_ = laOverviewPart::Outside;
    laOverviewRange start_;
    int grabbed_ = -1;  // column of the press; -1 while there is none
};
