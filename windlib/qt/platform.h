// The window system as the program's main loop sees it.
#pragma once

#include <functional>
#include <memory>
#include <string>

class QApplication;
class QKeyEvent;
class QPoint;
class QWidget;

// The application object, with the style and the icon of the program; of the command line it sees the
// program's name and nothing else. Whatever the gate held runs from its loops. Where there is no window
// system to be reached, or it can't be gone on with later, a message says so and the process ends with
// status 1.
std::unique_ptr<QApplication> platform_Start(const char* program);

// A key with its modifiers, as menus write it ("Ctrl+O", "Shift+F3", "?"); empty for a modifier alone.
std::string platform_KeyName(const QKeyEvent& event);
// The key alone ("W", "PgUp"); empty when Ctrl, Alt or Meta is held, or for a modifier.
std::string platform_BareKeyName(const QKeyEvent& event);

void platform_ProcessPending();
// The main loop: serves events, and sleeps until there is one, as long as goOn says so.
void platform_Loop(const std::function<bool()>& goOn);

// Dark colours for all windows, or those of the desktop.
void platform_SetDark(bool dark);

// A tip at a point of the screen, its text as it stands and not as markup; an empty one takes the tip away.
void platform_ShowTip(const QPoint& at, const std::string& text, QWidget* over);
// True while one is seen.
bool platform_TipStands();

void platform_Beep();
// The pointer's busy look; nests.
void platform_SetBusy(bool busy);

// True in an automatic run, on the offscreen platform: nobody is there to answer.
bool platform_IsAutomatic();

// A message that the user must acknowledge. In an automatic run (offscreen platform) it goes to the report
// sink.
void platform_MessageBox(QWidget* parent, const std::string& text);
