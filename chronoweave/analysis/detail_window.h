// What all windows about a thing of the picture share.
#pragma once

#include <memory>
#include <string>

#include "chronoweave/analysis/canvas_windows.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/host.h"

class DetailWindow {
  public:
    DetailWindow(_LaCanvasData& canvas, DialogModel& model) : canvas_(canvas), model_(model) {}
    virtual ~DetailWindow() = default;
    virtual void Press(const std::string& name) = 0;

  protected:
    // On the message lines of the window and the canvas; Refuse beeps as well.
    void Say(const std::string& message);
    void Refuse(const std::string& message);
    // "0x%x", and the name in parentheses when the object has one.
    std::string ObjectText(uint32_t object) const;
    // A time with the unit's name.
    std::string TimeText(double time) const;

    _LaCanvasData& canvas_;
    DialogModel& model_;
};

// The title of the canvas as other windows name it.
std::string detail_CanvasTitle(const _LaCanvasData& canvas, const char* unnamed);

// Opens a window, which joins the canvas's list and leaves it when it closes. Window is made of canvas and
// model; the canvas has a host.
template <class Window, class... More>
void detail_Open(_LaCanvasData& canvas, DialogDescription description, const std::string& title,
                 More&&... more) {
    auto made = std::make_unique<DialogModel>(std::move(description));
    DialogModel& model = *made;
    model.setTitle(title);
    auto window = std::make_shared<Window>(canvas, model, std::forward<More>(more)...);
    model.onPress = [window](const std::string& name) { window->Press(name); };
    analysis_OpenWindow(canvas, CanvasWindow::View, std::move(made));
}
