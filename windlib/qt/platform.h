// The window system as the program's main loop sees it, and what long work needs of it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

class QApplication;
class QPoint;
class QWidget;

// The application object, with the style and the icon of the program. Owns argv's lifetime needs.
std::unique_ptr<QApplication> platform_Start(int& argc, char** argv);

void platform_ProcessPending();
// Waits for an event of the window system, at most so long.
void platform_Wait(std::chrono::milliseconds longest);

// Dark colours for all windows, or those of the desktop.
void platform_SetDark(bool dark);

// A tip at a point of the screen, its text as it stands and not as markup; an empty one takes the tip away.
void platform_ShowTip(const QPoint& at, const std::string& text, QWidget* over);

void platform_Beep();
// The pointer's busy look; nests.
void platform_SetBusy(bool busy);

// True in an automatic run, on the offscreen platform: nobody is there to answer.
bool platform_IsAutomatic();

// A message that the user must acknowledge. In an automatic run (offscreen platform) it goes to the report
// sink.
void platform_MessageBox(QWidget* parent, const std::string& text);

// One stretch of long work: while it lives, windows keep painting, Escape asks it to stop, and no other input
// is taken, so that no command starts inside. One at a time.
class LongWork {
  public:
    explicit LongWork(std::function<void(double done, double total)> show);
    ~LongWork();
    LongWork(const LongWork&) = delete;
    LongWork& operator=(const LongWork&) = delete;
    // For the worker: keeps the windows alive now and then; false once Escape was pressed.
    bool tell(double done, double total);
    bool stopped() const;

  private:
    class Filter;
    std::unique_ptr<Filter> filter_;
};
