// The canvas windows as the service sees them.
#pragma once

#include <QPointer>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "chronoweave/qt/canvas_window.h"
#include "services/tra/tra_server.h"

class ServiceWindows : public TraProgram {
  public:
    // Makes a window that is shown, empty.
    explicit ServiceWindows(std::function<CanvasWindow*()> make);
    ~ServiceWindows() override;

    TraWindow* open() override;
    TraWindow* find(const std::string& file) override;
    TraWindow* focused() override;
    void load(TraWindow& window, const std::string& file) override;
    bool lives(const TraWindow* window) override;
    void raise(TraWindow& window) override;
    void setTitle(TraWindow& window, const std::string& title) override;
    void setOwner(TraWindow& window, TRA_Server& server) override;
    uint32_t number(const TraWindow& window) override;
    void scroll(TraWindow& window, uint32_t objectId, const std::string& time) override;
    void close(const std::string& file) override { CanvasWindow::closeFile(file); }
    void forget(const TRA_Server& server) override;

    // Who opened or scrolled the window of a canvas last; null for nobody.
    TRA_Server* ownerOf(const _LaCanvasData& canvas);
    // One line a window: its number, the file, the title, divided by tabs.
    static std::string list();

  private:
    TraWindow& known(CanvasWindow& window);

    std::function<CanvasWindow*()> make_;
    std::list<std::unique_ptr<TraWindow>> windows_;
};
