// Pictures of the program's own windows, in files: for the manual and for looking at what was changed.
#pragma once

#include <QString>

class QImage;
class QWidget;

// Turns the event loop for so long, for what follows a change a moment later.
void kept_Wait(int milliseconds);
// Writes a picture of the window as FOLDER/NAME.png, once all is there; says so on standard error when it
// can't. With few colours: one of the 256 most frequent ones for each pixel takes a third of the room.
void kept_Window(QWidget& window, const QString& folder, const QString& name);
