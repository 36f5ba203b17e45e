// What the user does while something goes on that must not be disturbed.
#pragma once

#include <QEvent>
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <vector>

// Keeps input from the windows of the program while it lives: keys, buttons, drops and closing go nowhere. Of
// the pointer's moves and wheel turns the last comes when this goes, and so does the release of a button that
// was down before.
class HeldInput : public QObject {
  public:
    enum class Hold {
        Nothing,
        Escape,  // that key alone
        Everything,
    };
    // holds is asked for each event that reaches an object; escape is called, perhaps more than once, when a
    // held key is Escape. Needs the application object.
    HeldInput(std::function<Hold(QObject* receiver)> holds, std::function<void()> escape);
    ~HeldInput() override;
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    struct Kept {
        QPointer<QObject> receiver;
        std::unique_ptr<QEvent> event;
    };
    bool take(QObject* receiver, QEvent& event);
    void takeKey(const QEvent& event);
    void keep(QObject* receiver, const QEvent& event);
    void keepLast(QObject* receiver, const QEvent& event);
    void keepRelease(QObject* receiver, const QEvent& event);

    std::function<Hold(QObject*)> holds_;
    std::function<void()> escape_;
    Qt::MouseButtons ignored_ = Qt::NoButton;
    std::vector<Kept> kept_;
};
