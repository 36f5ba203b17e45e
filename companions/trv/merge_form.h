// The form of the program that merges: trv -align natural|head|tail -o OUT IN...
#pragma once

#include <span>
#include <string>

// Whether the words of a command line, without the program's name, ask for it.
bool merge_IsAsked(std::span<const std::string> words);

// Merges as the words say. The exit status is 0 when the output is whole, though the sources may have been
// damaged; 1 when there is none; 2 when the words were wrong. What there is to say goes to standard error, a
// sentence a line.
int merge_Run(std::span<const std::string> words);

extern const char merge_Usage[];
