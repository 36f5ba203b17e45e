// A user for tests: works the program through the window system (pointer and keys of the X server, by
// xdotool), and looks at its widgets only to find where they are and what they show. The program runs in the
// main thread, the user in another.
#pragma once

#include <QPoint>
#include <QRect>
#include <QString>
#include <functional>
#include <string>

class CanvasWindow;
class QWidget;

// An X server of its own with a window manager, for as long as it lives; DISPLAY leads to it.
class DrivenScreen {
  public:
    DrivenScreen();
    ~DrivenScreen();
    // Why there is none; empty when there is one.
    const std::string& missing() const { return missing_; }

  private:
    bool beginScreen();
    void endScreen();

    int server_ = -1, manager_ = -1;  // processes
    std::string missing_;
};

// The user. Everything that waits gives up after some seconds and is then a fault; the first fault ends the
// script.
class Robot {
  public:
    struct Fault {
        std::string what;
    };
    explicit Robot(std::string pictures) : pictures_(std::move(pictures)) {}

    // Runs in the program's thread, now.
    void look(const std::function<void()>& work);
    // Waits until a question that is asked in the program's thread is answered with yes.
    void waitFor(const char* what, const std::function<bool()>& question);
    void expect(bool fact, const std::string& what);

    // The first canvas window. For use inside look and waitFor.
    static CanvasWindow* canvas();
    // The middle of a visible widget, or of a part of it, on the screen. Waits for it.
    QPoint middleOf(const char* objectName);
    QRect placeOf(const char* objectName);

    void click(QPoint at, int button = 1, int times = 1);
    void click(const char* objectName) { click(middleOf(objectName)); }
    void press(QPoint at);
    void moveTo(QPoint at);
    void release();
    void wheel(QPoint at, int notches, const char* withKey = nullptr);
    void key(const char* chord);  // "ctrl+o"
    void type(const std::string& text);
    static void pause(int milliseconds);
    // Clicks the row of the open menu whose text begins so; '&' is left out.
    void choose(const char* text);
    // Waits for a window with this title, of any program, by what the window system knows.
    void waitForTitle(const char* title);
    // The whole screen as PICTURES/NAME.png.
    void picture(const char* name);

  private:
    std::string pictures_;
    QPoint pointer_{-1, -1};
};
