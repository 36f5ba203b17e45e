// What a window without a trace says in place of the picture: what can be done now.
#pragma once

#include <QLabel>
#include <functional>
#include <string>
#include <vector>

class StartCard : public QLabel {
  public:
    // In the middle of a widget, which owns it. run gets the command of a link.
    StartCard(QWidget& over, std::function<void(const std::string& command)> run);
    // The files that were open lately, newest first; their links open them.
    void fill(const std::vector<std::string>& recent);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void place();
};
