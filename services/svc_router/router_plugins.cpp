// What plug-ins want of the router about other plug-ins: starting them, and asking them.
#include <algorithm>

#include "services/svc_router/router.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr std::chrono::milliseconds lookEvery{100};
constexpr size_t mostQuestions = 65536;

}  // namespace

void Router::launch(RouterPlugin& from, const ServiceRouter_RequestPluginLaunch_Request& request) {
    if (request.argv.data.empty() || request.argv.data.front().empty())
        return tellStart(from.id(), request.cookie, 0, "There is no program to start.");
    PluginStart& start =
        starts_.add(from.id(), request.cookie, request.argv.data.front(), PluginStarts::Clock::now());
    std::vector<std::string> argv = request.argv.data;
    argv.insert(argv.end(), {"-connect_servicerouter", std::to_string(settings_.port),
                             "-sr_client_start_cookie", std::to_string(start.cookie)});
    std::string directory = request.working_dir.empty() ? from.workingDirectory() : request.working_dir;
    lookAtStarts();
    if (request.client_start != 0) {
        from.sent(from.StartPlugin({{argv}, start.cookie, directory}, STPSend::NonBlocking));
        return;
    }
    const Result started = start.process.start(
        {.arguments = std::move(argv), .directory = std::move(directory), .environment = from.environment()},
        ChildProcess::AtEnd::Leave);
    if (!started) startFailed(start, started.text());
}

void Router::tellStart(uint32_t launcher, uint32_t launcherCookie, uint32_t plugin,
                       const std::string& problem) {
    RouterPlugin* const to = find(launcher);
    const uint8_t success = problem.empty() ? 1 : 0;
    if (to)
        to->sent(to->PluginConnectedEvent({launcherCookie, plugin, success, problem}, STPSend::NonBlocking));
}

void Router::startFailed(const PluginStart& start, const std::string& problem) {
    tellStart(start.launcher, start.launcherCookie, 0, problem);
    if (RouterPlugin* const launcher = find(start.launcher))
        for (const auto& request : start.waiting) refuse(*launcher, request.serviceName);
    starts_.remove(start.cookie);
}

// Looks again and again as long as any is pending.
void Router::lookAtStarts() {
    if (startsTask_) return;
    startsTask_ = settings_.tasks->Once(lookEvery, EventTasks::Clock::now(), [this] {
        startsTask_.reset();
        while (const auto failed = starts_.nextFailed(PluginStarts::Clock::now()))
            startFailed(*starts_.find(failed->cookie), failed->problem);
        if (starts_.anyPending()) lookAtStarts();
        return true;
    });
}

// A plug-in that joins says whose start it is; a launcher may say that its start came to nothing.
void Router::startEvent(RouterPlugin& from, const ServiceRouter_StartPluginEvent_Request& request) {
    PluginStart* const start = starts_.find(request.cookie);
    if (!start || start->plugin) return;
    if (request.success == 0) {
        if (from.id() == start->launcher) startFailed(*start, request.error_message);
        return;
    }
    start->plugin = from.id();
    tellStart(start->launcher, start->launcherCookie, from.id(), "");
    if (start->launcher == 0) starts_.remove(request.cookie);
}

void Router::registered(RouterPlugin& plugin) {
    if (PluginStart* const start = starts_.findByPlugin(plugin.id())) retryWaiting(*start);
}

void Router::retryWaiting(PluginStart& start) {
    RouterPlugin* const launcher = find(start.launcher);
    const auto waiting = std::exchange(start.waiting, {});
    if (launcher)
        for (const auto& request : waiting) connect(*launcher, request);
}

void Router::connectOut(RouterPlugin& from, const ServiceRouter_RequestPluginConnect_Request& request) {
    STPStatus status{"Only programs of this host can be connected to.", STPCode::Misuse};
    const auto transport = ref_Make<STPTransport>();
    uint32_t plugin = 0;
    if (request.hostname == "localhost" && request.port > 0 && request.port <= 65535 &&
        transport->connect(request.hostname, static_cast<uint16_t>(request.port), &status))
        plugin = add(transport);
    tellStart(from.id(), 0, plugin, plugin == 0 ? status.text : std::string());
}

void Router::askValue(RouterPlugin& from, const ServiceRouter_RequestValueOfNameOnPlugin_Request& request) {
    RouterPlugin* const target = find(request.plugin_id);
    if (!target || questions_.size() >= mostQuestions) {
        from.sent(from.ValueOfNameOnPluginEvent({request.cookie, request.name, 0, ""}, STPSend::NonBlocking));
        return;
    }
    questions_[++lastQuestion_] = {from.id(), request.cookie, target->id(), request.name};
    target->sent(target->ForwardedRequestValueOfNameOnPlugin({from.id(), lastQuestion_, request.name},
                                                             STPSend::NonBlocking));
}

void Router::answerValue(RouterPlugin& from,
                         const ServiceRouter_ValueOfNameOnPluginResponseEvent_Request& request) {
    const auto found = questions_.find(request.cookie);
    if (found == questions_.end() || found->second.target != from.id()) return;
    const Question question = std::move(found->second);
    questions_.erase(found);
    if (RouterPlugin* const asker = find(question.asker))
        asker->sent(asker->ValueOfNameOnPluginEvent(
            {question.askerCookie, question.name, request.found, request.value}, STPSend::NonBlocking));
}

void Router::endQuestionsOf(uint32_t plugin) {
    std::vector<Question> unanswered;
    std::erase_if(questions_, [&](const auto& entry) {
        if (entry.second.target == plugin) unanswered.push_back(entry.second);
        return entry.second.target == plugin || entry.second.asker == plugin;
    });
    for (const Question& question : unanswered)
        if (RouterPlugin* const asker = find(question.asker))
            asker->sent(asker->ValueOfNameOnPluginEvent({question.askerCookie, question.name, 0, ""},
                                                        STPSend::NonBlocking));
}
