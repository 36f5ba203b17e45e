// The panel of what the selection tells, in a corner of the picture: it is there while there is a selection
// with figures, and out of the way of the selection's end. It does its walk when there is nothing else to do.
#pragma once

#include <QFrame>
#include <QTimer>

#include "chronoweave/analysis/selection_panel.h"

class DialogView;
class PictureView;

class SelectionCorner : public QFrame {
    Q_OBJECT
  public:
    // A child of the picture; it goes ahead of the canvas.
    explicit SelectionCorner(PictureView& picture);
    ~SelectionCorner() override;

    SelectionPanel& panel() { return panel_; }
    // While it is off the message line alone tells.
    void setShown(bool on);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void follow();
    void slice();
    void place();

    PictureView& picture_;
    SelectionPanel panel_;
    DialogView* view_;
    QTimer idle_;  // the next slice
    bool on_ = true;
};
