// The find line on screen, over the picture of a canvas window: it has the keyboard while one types, and does
// the search when there is nothing else to do.
#pragma once

#include <QTimer>
#include <QWidget>
#include <memory>

#include "chronoweave/analysis/find_line.h"

class DialogView;
class PictureView;

class FindStrip : public QWidget {
    Q_OBJECT
  public:
    // Over the picture, which outlives it; hidden at first.
    FindStrip(PictureView& picture, std::shared_ptr<SearchDesk> desk, QWidget* parent);
    ~FindStrip() override;

    FindLine& line() { return line_; }
    // Shows it with the keyboard in its field, all of which is selected.
    void open();
    // Stops the search, or closes; false when it is closed.
    bool escape();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void follow();
    void slice();

    PictureView& picture_;
    FindLine line_;
    DialogView* view_;
    QTimer idle_;  // the next slice
};
