#include "shared/libcxxutil/return_point.h"

#include <csignal>
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

void handle_signal(int number) {
    std::signal(number, handle_signal);
    if (!stack().quiet) {
        if (number == SIGFPE)
            gen_warning("Floating point exception\n");
        else
            gen_warning("Invalid operation (msg %d)\n", (number + 5) * 10);
    }
    gen_return_to_point();
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
    std::signal(SIGILL, handle_signal);
    std::signal(SIGFPE, handle_signal);
    std::signal(SIGSEGV, handle_signal);
}

void gen_return_to_point() {
    JumpStack& jumps = stack();
    if (jumps.error_depth > 0)
        siglongjmp(jumps.points[static_cast<size_t>(jumps.error_depth - 1)]->buffer, 1);
    gen_exit(1, "No error handler");
}
