// The end of a program that met a fault which nothing caught. What the fault broke may be anything: the
// memory, the window that was being painted, a lock. Nothing of it is used any more; the box that tells the
// user is another process's.
#pragma once

// Notes what will be needed. Called once, when the application object is there.
void last_Prepare();

// Shows the text in a box until the user has seen it, writes it as a warning, and ends the process with
// status
// 1. text is a line without its end, short. In an automatic run there is no box.
[[noreturn]] void last_Words(const char* text);

// The option with which the program is started to show the box, ahead of the text.
extern const char* const last_BoxOption;
// The other process: shows the box. The exit status.
int last_ShowBox(const char* program, const char* text);
