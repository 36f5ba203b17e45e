#include "services/svc_router/plugin_starts.h"

#include <algorithm>
#include <csignal>

#include "shared/libcxxutil/report.h"

namespace {

template <class Starts, class Fits>
PluginStart* findStart(Starts& starts, Fits fits) {
    const auto found =
        std::find_if(starts.begin(), starts.end(), [&](const auto& start) { return fits(*start.second); });
    return found == starts.end() ? nullptr : found->second.get();
}

std::string endText(const PluginStart& start, const ChildEnd& end) {
    const char* const how = end.how == ChildEnd::How::Exited ? "with status" : "by signal";
    return gen_format("%s ended %s %d before it joined.", start.program.c_str(), how, end.number);
}

}  // namespace

PluginStart& PluginStarts::add(uint32_t launcher, uint32_t launcherCookie, std::string program,
                               Clock::time_point now) {
    auto start = std::make_unique<PluginStart>();
    start->cookie = ++last_;
    start->launcher = launcher;
    start->launcherCookie = launcherCookie;
    start->program = std::move(program);
    start->begun = now;
    return *(starts_[last_] = std::move(start));
}

PluginStart* PluginStarts::find(uint32_t cookie) {
    return findStart(starts_, [&](const PluginStart& start) { return start.cookie == cookie; });
}

PluginStart* PluginStarts::findOf(uint32_t launcher, uint32_t launcherCookie) {
    return findStart(starts_, [&](const PluginStart& start) {
        return start.launcher == launcher && start.launcherCookie == launcherCookie;
    });
}

PluginStart* PluginStarts::findByPlugin(uint32_t plugin) {
    return findStart(starts_, [&](const PluginStart& start) { return start.plugin == plugin; });
}

void PluginStarts::forgetLauncher(uint32_t launcher) {
    for (auto& [cookie, start] : starts_) {
        if (start->launcher != launcher) continue;
        start->launcher = 0;
        start->waiting.clear();
    }
    std::erase_if(starts_,
                  [](const auto& start) { return start.second->launcher == 0 && start.second->plugin; });
}

bool PluginStarts::anyPending() const {
    return std::any_of(starts_.begin(), starts_.end(),
                       [](const auto& start) { return !start.second->plugin; });
}

std::optional<PluginStarts::Failed> PluginStarts::nextFailed(Clock::time_point now) {
    for (auto& [cookie, start] : starts_) {
        if (start->plugin) continue;
        if (const auto end = start->process.ended()) return Failed{cookie, endText(*start, *end)};
        if (now - start->begun < longest) continue;
        start->process.signal(SIGKILL);
        return Failed{cookie, start->program + " did not join in time."};
    }
    return std::nullopt;
}
