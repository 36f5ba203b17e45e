// The message console: a window that opens with the first message and keeps what was said.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// Sends reports and console texts to the console, which opens at the first one with the title "Trvgui
// Console". Without a display they go to the standard error stream.
void console_Install();
// Opens the console at once, with a title.
void console_Open(const std::string& title);
void console_Write(std::string_view text);
// Brings it to the front; opens it when it was not.
void console_Raise();
// Somebody who says elsewhere that the console has something: gets what came, soon after.
void console_SetListener(std::function<void(const std::string& text)> listener);
// Closes it, at the end of the program.
void console_Close();
