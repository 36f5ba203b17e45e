// Pictures of the program's own windows, in files: for the manual and for looking at what was changed.
#pragma once

#include <QString>

class CanvasWindow;
class QWidget;

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
