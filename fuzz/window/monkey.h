// A user without a plan: pointer, keys, wheels, typing, commands and sizes at random, by the window system's
// own way, in whatever window, dialog or menu can take them, also while long work goes on.
#pragma once

#include <QElapsedTimer>
#include <QEvent>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <deque>
#include <functional>
#include <random>
#include <string>

class CanvasWindow;
class QWidget;
class QWindow;

class Monkey : public QObject {
  public:
    // open gives a window with the trace in it, when there is none left.
    Monkey(unsigned seed, std::function<CanvasWindow*()> open);

    // Acts so often, then lets go of everything and closes what waits for an answer. Runs the main loop.
    void act(int times);
    // The last acts, one a line, for whoever looks for what went wrong.
    std::string trail() const;
    // What waits did not end when it was told to.
    bool stuck = false;
    // Nothing goes on, and nothing waits for that: no work, dialog, menu or drag.
    bool isQuiet() const;
    // Called now and then when it is quiet.
    std::function<void(CanvasWindow&)> quiet;

  private:
    void step();
    void schedule();
    void endStep();
    static bool dismiss();
    static bool isAtWork();
    CanvasWindow* canvas();
    QWidget* target();
    void pointer(QWidget& window);
    void press(QWidget& window, Qt::MouseButton button, bool twice);
    void release(QWidget& window);
    void move(QWidget& window);
    void wheel(QWidget& window);
    void key(QWidget& window);
    void key(QWidget& window, int code, Qt::KeyboardModifiers modifiers, const QString& text);
    void type(QWidget& window);
    void resize(CanvasWindow& window);
    void command(CanvasWindow& window);
    void send(QWidget& window, QEvent::Type type, Qt::MouseButton button);
    QPoint somewhere(QWidget& window);
    Qt::KeyboardModifiers modifiers();
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    void note(const std::string& what);

    std::mt19937 random_;
    std::function<CanvasWindow*()> open_;
    std::deque<std::string> trail_;
    QPoint at_;  // in the window
    Qt::MouseButtons buttons_;
    QPointer<QWidget> pressed_;  // whose window has the pointer
    int left_ = 0, depth_ = 0, stamp_ = 1, sinceQuiet_ = 0;
    QElapsedTimer ending_;
    bool over_ = true;
};
