// What live reading and a target's panel need of the canvas window.
#include "chronoweave/import/import_words.h"
#include "chronoweave/live/live_target.h"
#include "chronoweave/live/live_words.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/overview_strip.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/event_service.h"
#include "windlib/qt/platform.h"

void CanvasWindow::makeLive() {
    view_->canvas().source.liveRefresh = live_;
    if (!services_.events) return;
    LiveWindow window;
    window.load = [this](const std::string& name) { return load(name); };
    window.reset = [this] { closeSource(); };
    window.growing = [this] { return growing_.get(); };
    window.endGrowing = [this] { endGrowing(); };
    window.source = [this] { return source_; };
    window.draw = [this](const std::function<void()>& work) { view_->draw(work); };
    window.grew = [this] { overview_->countOn(); };
    window.progress = [this](std::optional<double> share) { showProgress(share); };
    target_ = std::make_unique<LiveTarget>(view_->canvas(), std::move(window),
                                           LiveServices{&services_.events->tasks, &services_.events->watches,
                                                        services_.waits, services_.settings});
}

void CanvasWindow::makeDebugger() {
    if (!services_.debugger) return;
    laDebugger_Set(view_->canvas(), services_.debugger);
    laDebugger_Attach(view_->canvas(), *services_.debugger);
}

// Of reading that goes on between the window's events; busy work shows its own.
void CanvasWindow::showProgress(std::optional<double> share) {
    if (work_) return;
    model_.setVisible("Progress", share.has_value());
    if (share) model_.setProgress("Progress", static_cast<int>(1000 * *share), 1000);
}

// What is followed and has no records yet is waited for; what can't be followed is refused.
bool CanvasWindow::mayLoad(const std::string& name, const std::string& path) {
    if (!target_) return true;
    const LiveReader::Loading loading = target_->BeforeLoad(path);
    switch (loading.what) {
        case LiveReader::Loading::What::Load:
            return true;
        case LiveReader::Loading::What::Wait:
            closeSource();
            laCanvas_UpdateFields(view_->canvas(), 0, gen_format(words_WaitsForEvents, name.c_str()).c_str());
            return false;
        case LiveReader::Loading::What::Refuse:
            break;
    }
    gen_console("%s\n", loading.why.c_str());
    platform_MessageBox(this, loading.why + '\n' + gen_format(words_NoSource, name.c_str()));
    return false;
}
