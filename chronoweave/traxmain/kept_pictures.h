// Pictures of the program's own windows, in files: for the manual and for looking at what was changed.
#pragma once

#include <QSize>
#include <QString>
#include <functional>
#include <memory>

class CanvasWindow;
class QApplication;
class QWidget;

// The program with no display: its windows are drawn into memory, in the colours of their style.
std::unique_ptr<QApplication> kept_Start(const char* program);
// A window of this size that shows the trace; null when it can't be read, which was told. made is called when
// the window is there and not yet shown: it has taken up the options of its user.
std::unique_ptr<CanvasWindow> kept_Open(const char* trace, QSize size,
                                        const std::function<void()>& made = {});

// Turns the event loop for so long, for what follows a change a moment later.
void kept_Wait(int milliseconds);
// Writes a picture of the window as FOLDER/NAME.png, once all is there; says so on standard error when it
// can't. With few colours: one of the 256 most frequent ones for each pixel takes a third of the room.
void kept_Window(QWidget& window, const QString& folder, const QString& name);

// What the pictures show: the longest wait for a processor that begins and ends in the view, of no idle
// object: selected, its row in view. Words in the find line, found. No find line and no selection.
void kept_SelectWait(CanvasWindow& window);
void kept_Find(CanvasWindow& window, const QString& words);
void kept_Clear(CanvasWindow& window);
