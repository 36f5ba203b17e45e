#include "shared/libcxxutil/progress_bar.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace {
constexpr int bar_width = 40;
}

ProgressBar::ProgressBar(bool wanted) : shown_(wanted && ::isatty(STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar() {
    if (drawn_ >= 0) std::fprintf(stderr, "\r%*s\r", bar_width + 10, "");
}

Progress ProgressBar::progress() {
    return [this](double done, double total) {
        show(done, total);
        return true;
    };
}

void ProgressBar::show(double done, double total) {
    const int percent = total > 0 ? static_cast<int>(100 * done / total) : 100;
    if (!shown_ || percent == drawn_) return;
    drawn_ = percent;
    const int full = percent * bar_width / 100;
    std::fprintf(stderr, "\r[%s%s] %3d%%", std::string(static_cast<size_t>(full), '#').c_str(),
                 std::string(static_cast<size_t>(bar_width - full), ' ').c_str(), percent);
}
