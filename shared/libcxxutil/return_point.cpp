#include "shared/libcxxutil/return_point.h"

#include <csignal>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <vector>

#include "shared/libcxxutil/report.h"

namespace {

constexpr int growth = 10;

struct ReturnPoint {
    sigjmp_buf buffer;
};

struct JumpStack {
    std::vector<std::unique_ptr<ReturnPoint>> points;  // kept allocated, so that a pushed buffer never moves
    int error_depth = 0;
    bool quiet = false;
};

JumpStack& stack() {
    static JumpStack jumps;
    return jumps;
}

// Whatever the fault broke is not to be used on the way: the message takes no memory and opens no window.
void handle_signal(int number) {
    if (!stack().quiet) {
        char text[64] = "Floating point exception\n";
        if (number != SIGFPE)
            std::snprintf(text, sizeof text, "Invalid operation (msg %d)\n", (number + 5) * 10);
        gen_warning_in_handler(text);
    }
    gen_return_to_point();
}

// A stack of its own for the handlers, so that one that ran over can still be told; what is there already
// stays.
void use_signal_stack() {
    alignas(16) static char bytes[64 << 10];
    stack_t now{};
    if (::sigaltstack(nullptr, &now) != 0 || (now.ss_flags & SS_DISABLE) == 0) return;
    stack_t own{};
    own.ss_sp = bytes;
    own.ss_size = sizeof bytes;
    ::sigaltstack(&own, nullptr);
}

}  // namespace

int gen_return_depth() {
    return stack().error_depth;
}

sigjmp_buf& gen_push_return_point() {
    JumpStack& jumps = stack();
    if (static_cast<size_t>(jumps.error_depth) == jumps.points.size())
        for (int i = 0; i < growth; ++i) jumps.points.push_back(std::make_unique<ReturnPoint>());
    return jumps.points[static_cast<size_t>(jumps.error_depth++)]->buffer;
}

void gen_pop_return_point() {
    --stack().error_depth;
    GEN_ASSERT(stack().error_depth >= 0);
}

bool gen_set_quiet(bool quiet) {
    const bool before = stack().quiet;
    stack().quiet = quiet;
    return before;
}

void gen_install_signal_handlers() {
    use_signal_stack();
    struct sigaction action = {};
    action.sa_handler = handle_signal;
    action.sa_flags =
        SA_ONSTACK;  // it stays armed, and the return point restores which signals are let through
    ::sigemptyset(&action.sa_mask);
    for (const int number : {SIGILL, SIGFPE, SIGSEGV}) ::sigaction(number, &action, nullptr);
}

void gen_return_to_point() {
    JumpStack& jumps = stack();
    if (jumps.error_depth > 0)
        siglongjmp(jumps.points[static_cast<size_t>(jumps.error_depth - 1)]->buffer, 1);
    gen_exit(1, "No error handler");
}
