#include "chronoweave/traxmain/main_loop.h"

#include <algorithm>

bool MainLoop::round() {
    processPending();
    const auto next = tasks.Run(now());
    if (!next) return true;
    const auto longest = std::min(*next - lead, longestWait);
    if (longest.count() > 0) wait(longest);
    return goOn();
}

void MainLoop::run() {
    while (round()) {
    }
}
