// A dialog description made visible: one widget an item, placed by the layout solver, mirroring a
// DialogModel. Every widget bears its item's name as object name and its spoken name as accessible name.
#pragma once

#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "windlib/dialog/dialog_layout.h"
#include "windlib/dialog/model.h"

class QKeyEvent;
class QLineEdit;

// Properties of a view: the help key and the name of its description, by which help is found.
constexpr const char* dialogView_HelpKey = "helpKey";
constexpr const char* dialogView_WindowName = "helpWindow";

class DialogView : public QWidget {
  public:
    // Makes the widget of an item that the caller knows better (graphs, strips, tool bars); null for the
    // usual one.
    using Factory = std::function<QWidget*(const DialogItem&)>;

    // The model is not owned and must outlive the view.
    explicit DialogView(DialogModel& model, Factory factory = {}, QWidget* parent = nullptr);

    // The widget of an item; null for one that has none.
    QWidget* widget(const std::string& name) const;
    // Gives the keyboard to the first item that can have it.
    void focusFirst();
    // Enter and Escape of the window around go to the model; false for another key.
    bool takeKey(const QKeyEvent& event);
    // The size that the layout wants at first.
    QSize sizeHint() const override { return wanted_; }

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    QWidget* make(const DialogItem& item);
    QWidget* makeField(const DialogItem& item);
    QWidget* makeList(const DialogItem& item);
    QWidget* makeChoices(const DialogItem& item);
    void offer(QLineEdit& field, const std::string& name);
    void orderFocus();
    void refresh(const std::string& name);
    void place(const PlacerOutcome& outcome);
    DialogMetrics metrics() const;

    DialogModel& model_;
    Factory factory_;
    std::map<std::string, QWidget*> widgets_;
    std::unique_ptr<DialogLayout> layout_;
    QSize wanted_;
};

// Shows the model as a dialog over a window and returns when it is closed, with the model's result.
int dialog_Run(QWidget* parent, DialogModel& model);
