// The tool bar of the canvas window, made from its table. A button under the pointer or with the keyboard
// puts its long help on the message line.
#pragma once

#include <QToolBar>
#include <functional>
#include <string>
#include <vector>

#include "chronoweave/traxfunc/input/menus.h"

class ToolBarView : public QToolBar {
  public:
    // run gets a pressed button's command; help a text for the message line, empty for none.
    ToolBarView(const std::function<void(const std::string& command)>& run,
                std::function<void(const std::string& text)> help);

    // Icons, or texts in their place.
    void showIcons(bool icons);
    // Takes over the states of all buttons, in the order of the table.
    void take(const std::vector<laButtonState>& states);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<void(const std::string&)> help_;
    std::vector<QAction*> actions_;  // one for each place of the table
};
