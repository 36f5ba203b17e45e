#include "chronoweave/traxmain/service_windows.h"

#include <QApplication>

#include "chronoweave/qt/picture_view.h"
#include "shared/libcxxutil/report.h"

struct TraWindow {
    QPointer<CanvasWindow> window;
    TRA_Server* owner = nullptr;
    std::string title;  // that a client gave it
};

namespace {

uint32_t numberOf(const CanvasWindow& window) {
    return static_cast<uint32_t>(window.winId());
}

// Whatever stands in a line of the list stays on it.
std::string oneLine(std::string text) {
    for (char& c : text)
        if (c == '\t' || c == '\n' || c == '\r') c = ' ';
    return text;
}

bool isOpen(const CanvasWindow* window) {
    const auto& all = CanvasWindow::all();
    return window && window->isVisible() && std::find(all.begin(), all.end(), window) != all.end();
}

}  // namespace

ServiceWindows::ServiceWindows(std::function<CanvasWindow*()> make) : make_(std::move(make)) {}
ServiceWindows::~ServiceWindows() = default;

TraWindow& ServiceWindows::known(CanvasWindow& window) {
    windows_.remove_if([](const auto& entry) { return !entry->window; });
    for (const auto& entry : windows_)
        if (entry->window == &window) return *entry;
    windows_.push_back(std::make_unique<TraWindow>());
    windows_.back()->window = &window;
    return *windows_.back();
}

TraWindow* ServiceWindows::open() {
    CanvasWindow* const window = make_();
    return window ? &known(*window) : nullptr;
}

TraWindow* ServiceWindows::find(const std::string& file) {
    CanvasWindow* const window = CanvasWindow::find(file);
    return isOpen(window) ? &known(*window) : nullptr;
}

TraWindow* ServiceWindows::focused() {
    for (CanvasWindow* window : CanvasWindow::all())
        if (window->isActiveWindow()) return &known(*window);
    return CanvasWindow::count() == 1 ? &known(*CanvasWindow::all().front()) : nullptr;
}

bool ServiceWindows::lives(const TraWindow* window) {
    return std::any_of(windows_.begin(), windows_.end(), [window](const auto& entry) {
        return entry.get() == window && isOpen(entry->window);
    });
}

void ServiceWindows::load(TraWindow& window, const std::string& file) {
    const QPointer<CanvasWindow> canvas = window.window;
    const std::string title = window.title;
    if (!isOpen(canvas)) return;
    canvas->load(file);
    if (canvas && !title.empty()) canvas->setWindowTitle(QString::fromStdString(title));
}

void ServiceWindows::raise(TraWindow& window) {
    if (!isOpen(window.window)) return;
    window.window->setWindowState((window.window->windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    window.window->raise();
    window.window->activateWindow();
}

void ServiceWindows::setTitle(TraWindow& window, const std::string& title) {
    window.title = title;
    if (window.window) window.window->setWindowTitle(QString::fromStdString(title));
}

void ServiceWindows::setOwner(TraWindow& window, TRA_Server& server) {
    window.owner = &server;
}

uint32_t ServiceWindows::number(const TraWindow& window) {
    return window.window ? numberOf(*window.window) : 0;
}

void ServiceWindows::scroll(TraWindow& window, uint32_t objectId, const std::string& time) {
    if (isOpen(window.window)) window.window->showTimeHere(objectId, time);
}

void ServiceWindows::forget(const TRA_Server& server) {
    for (const auto& entry : windows_)
        if (entry->owner == &server) entry->owner = nullptr;
}

TRA_Server* ServiceWindows::ownerOf(const _LaCanvasData& canvas) {
    for (const auto& entry : windows_)
        if (entry->window && &entry->window->view().canvas() == &canvas) return entry->owner;
    return nullptr;
}

std::string ServiceWindows::list() {
    std::string lines;
    for (const CanvasWindow* window : CanvasWindow::all())
        lines += gen_format("0x%x\t", numberOf(*window)) + oneLine(window->source()) + '\t' +
                 oneLine(window->windowTitle().toStdString()) + '\n';
    return lines;
}
