// The table of events docked under the picture of a canvas window. Shown and hidden by the command
// "EventTable"; whether it is shown, and how high it is, is remembered.
#pragma once

#include <QDockWidget>
#include <QTimer>
#include <functional>

#include "chronoweave/analysis/event_table.h"

class DialogView;
class PictureView;
class SettingsManager;

class EventDock : public QDockWidget {
    Q_OBJECT
  public:
    // Over the picture, which outlives it. settings may be null.
    EventDock(PictureView& picture, SettingsManager* settings, QWidget* parent);
    ~EventDock() override;

    std::function<void()> shownChanged;  // it was shown or hidden; may be empty
    EventTable& table() { return table_; }
    // Shows it with the keyboard in its rows, or hides it and gives the keyboard to the picture.
    void toggle();
    // The height that it had when it was last shown; 0 for none.
    int rememberedHeight() const;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void follow();

    PictureView& picture_;
    SettingsManager* settings_;
    EventTable table_;
    DialogView* view_;
    QTimer later_;  // the picture changes in many steps
};
