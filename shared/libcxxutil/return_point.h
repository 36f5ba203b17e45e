// The stack of return points: the last net under the parsing of damaged input.
//
// Parsers check every bound; should one fail to, the fault becomes a signal, the signal a non-local return to
// the innermost return point, and that return a message. Nothing between a return point and a fault may own
// something that needs a destructor, because the non-local return runs none.
//
//     if (!gen_guarded([&] { parse(bytes); })) show("Corrupted core file: ...");
#pragma once

#include <csetjmp>

// Depth of the stack: 0 when there is no return point.
int gen_return_depth();

// Pushes a return point and hands out its buffer for sigsetjmp; gen_pop_return_point takes it off again.
// Popping an empty stack is an assertion failure.
sigjmp_buf& gen_push_return_point();
void gen_pop_return_point();

// While quiet, a signal writes no message of its own. Returns the former setting.
bool gen_set_quiet(bool quiet);

// Installs the handlers for illegal instruction, floating point exception and segment violation. A handler
// reports at warning level (unless quiet) and returns to the innermost return point with value 1; without one
// it exits with "No error handler".
void gen_install_signal_handlers();

// Returns to the innermost return point with value 1; without one, exits with "No error handler".
[[noreturn]] void gen_return_to_point();

// Runs work under a fresh return point in quiet mode; false when a fault or gen_return_to_point ended it.
template <class Work>
[[nodiscard]] bool gen_guarded(Work&& work) {
    sigjmp_buf& point = gen_push_return_point();
    const bool wasQuiet = gen_set_quiet(true);
    const bool whole = sigsetjmp(point, 1) == 0;
    if (whole) work();
    gen_set_quiet(wasQuiet);
    gen_pop_return_point();
    return whole;
}
