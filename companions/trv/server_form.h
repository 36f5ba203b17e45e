// The form of the program that serves: commands on standard input, answers on standard output.
#pragma once

#include <span>
#include <string>

// Whether the words of a command line, without the program's name, ask for it: there are none.
bool server_IsAsked(std::span<const std::string> words);

// Serves until q, the end of the input, or a signal; nothing that it started is left behind. The exit status.
int server_Run(std::span<const std::string> words);

std::string server_Usage();
