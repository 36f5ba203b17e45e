#include "chronoweave/traxmain/program_services.h"

#include <QApplication>
#include <QMessageBox>

#include "chronoweave/live/live_target.h"
#include "chronoweave/qt/picture_view.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/event_service.h"
#include "windlib/qt/platform.h"
#include "windlib/waits/windlib_retry_handlers.h"

namespace {

constexpr std::chrono::seconds startLasts{30}, firstClientWithin{60};
const int answerSeconds = 10;
constexpr char waitsForRouter[] = "Waiting for the service router";
constexpr char waitsForDebugger[] = "Waiting for the other program";

CanvasWindow* windowOf(const _LaCanvasData& canvas) {
    for (CanvasWindow* window : CanvasWindow::all())
        if (&window->view().canvas() == &canvas) return window;
    return nullptr;
}

// A client of the service as the debugger of a canvas. Held as long as a call of it lasts.
class ServedDebugger : public DebuggerService {
  public:
    explicit ServedDebugger(TRA_Server& server) : server_(&server) {}
    uint32_t Abilities(const std::string& file) override { return server_->abilities(file); }
    bool RunCommand(const std::string& file, const std::string& command, uint32_t objectId,
                    const std::string& time, uint32_t pc) override {
        return server_->RunCmdInDebugger({file, command, objectId, time, pc});
    }
    bool ShowPosition(const std::string& file, uint32_t objectId, const std::string& time,
                      uint32_t pc) override {
        return server_->ShowPositionInDebugger({file, objectId, time, pc}).has_value();
    }

  private:
    Ref<TRA_Server> server_;
};

bool askUser(const std::string& text) {
    if (platform_IsAutomatic()) return false;
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    return QMessageBox::question(QApplication::activeWindow(), QApplication::applicationDisplayName(),
                                 QString::fromStdString(text)) == QMessageBox::Yes;
}

// The target of the canvas's panel; empty while the server was never used.
std::string targetOf(const _LaCanvasData& canvas) {
    CanvasWindow* const window = windowOf(canvas);
    LiveTarget* const target = window ? window->target() : nullptr;
    if (!target || target->link().mode != TargetLink::Mode::Ready) return {};
    return target->link().targetText;
}

}  // namespace

ProgramServices::ProgramServices(QtEventService& events, WaitWindows& waits,
                                 std::function<CanvasWindow*()> make)
    : events_(events),
      waits_(waits),
      windows_(std::move(make)),
      debugger_(std::make_unique<DebuggerLink>(debuggerSurroundings())),
      pluginHost_([this] { waits_.serve(WaitWindows::Serve::Painting, std::chrono::milliseconds(0)); }) {}

ProgramServices::~ProgramServices() {
    if (firstClientTask_) events_.tasks.Remove(*firstClientTask_);
    TRA_Server::endAll();
    if (proxy_) proxy_->leave();
    proxy_ = {};
}

DebuggerSurroundings ProgramServices::debuggerSurroundings() {
    DebuggerSurroundings around;
    around.tasks = &events_.tasks;
    around.service = [this](const _LaCanvasData& canvas) -> std::shared_ptr<DebuggerService> {
        TRA_Server* const owner = windows_.ownerOf(canvas);
        if (!owner) return nullptr;
        return std::make_shared<ServedDebugger>(*owner);
    };
    around.file = [](const _LaCanvasData& canvas) {
        const CanvasWindow* const window = windowOf(canvas);
        return window ? window->source() : std::string();
    };
    around.plugin = [this]() -> std::function<uint8_t(const std::string&)> {
        if (!plugin_) return {};
        return [this](const std::string& command) {
            std::string reply;
            return plugin_ ? plugin_->runRequest(command, reply) : PluginClient::lostStatus;
        };
    };
    around.dropPlugin = [this] { plugin_.reset(); };
    around.target = targetOf;
    around.beep = platform_Beep;
    around.error = [](const std::string& text) { platform_MessageBox(QApplication::activeWindow(), text); };
    around.question = askUser;
    around.busy = platform_SetBusy;
    return around;
}

bool ProgramServices::joinRouter(const ServiceRouterOptions& options, const std::string& title) {
    ServiceRouterHooks hooks;
    hooks.watches = &events_.watches;
    hooks.tasks = &events_.tasks;
    hooks.joining = [this](const Ref<STPTransport>& transport) -> std::unique_ptr<RetryHandler> {
        return std::make_unique<ServiceRouterProxyStartup_RetryHandler>(
            [transport] { return transport->bound(); }, waits_, startLasts);
    };
    hooks.calls = [this](const STPSpecClass& service) -> std::unique_ptr<RetryHandler> {
        return std::make_unique<ConnWindLibRetryHandler>(service, waits_, waitsForDebugger, &answerSeconds);
    };
    factory_ = std::make_unique<TRA_ServiceFactory>("TRA", windows_);
    titleFactory_ = std::make_unique<TRA_ServiceFactory>(title, windows_);
    proxy_ = ref_Make<ServiceRouter_Proxy>(options, hooks);
    proxy_->names().set("TRA.windows", [] { return ServiceWindows::list(); });
    proxy_->offer(*titleFactory_);
    proxy_->offer(*factory_);
    if (!proxy_->join(ServiceRouter_Proxy::WithoutRouter::Fail)) return false;
    // One that was started for somebody who is gone must not stay for ever, unseen.
    if (options.startCookie)
        firstClientTask_ = events_.tasks.Once(firstClientWithin, EventTasks::Clock::now(), [this] {
            firstClientTask_.reset();
            endWithoutClients();
            return true;
        });
    return true;
}

void ProgramServices::endWithoutClients() {
    endsWithLastClient_ = true;
}

bool ProgramServices::goesOn() {
    if (!proxy_ || !proxy_->alive()) return false;
    const bool used = proxy_->clientCount() > 0 || CanvasWindow::count() > 0;
    if (used) endsWithLastClient_ = true;
    return used || !endsWithLastClient_;
}

// A host that does not know the first request is none.
void ProgramServices::connectPluginHost(uint16_t port) {
    constexpr uint8_t known = 1;
    plugin_ = PluginClient::connect(port, pluginHost_);
    if (!plugin_) return;
    std::string reply;
    if (plugin_->runRequest(";", reply) != known) {
        gen_warning("The program on port %u is no plug-in host; going on without it",
                    static_cast<unsigned>(port));
        plugin_.reset();
        return;
    }
    plugin_->watch(events_.watches, [this] {
        // Not from within its own work.
        events_.tasks.Once(std::chrono::milliseconds(0), EventTasks::Clock::now(), [this] {
            if (plugin_ && !plugin_->connected()) plugin_.reset();
            return true;
        });
    });
}
