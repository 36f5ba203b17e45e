// The window program, from its command line to its end.
#pragma once

// Runs the program until its last window is closed. Once in a process: the window system's library is started
// and ended in it. The exit status.
int trvgui_Main(int argc, char** argv);
