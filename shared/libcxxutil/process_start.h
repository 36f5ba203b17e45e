// What a program does before anything else.
#pragma once

// The first line of a program's main: both of the next two, and the name ahead of its messages. program is
// its argv[0].
void process_Begin(const char* program);

// Keeps the places of the standard streams: one that was closed by whoever started the program must not be
// given to the next file that is opened, which would then take the messages. Reading from such a stream gives
// nothing, writing fails.
void process_KeepStandardStreams();

// Lets writes fail with their error number where the system would end the process by a signal and say
// nothing: into a pipe that nobody reads, and past the limit of a file's size. Programs that this one starts
// have the system's way again.
void process_LetWritesFail();

// From now on an interrupt, a termination or the end of the terminal asks the program's work to stop, so that
// it can leave everything as it should be; another one ends the process at once, as it would have.
void process_CatchStops();
// Whether one came.
bool process_IsStopAsked();
