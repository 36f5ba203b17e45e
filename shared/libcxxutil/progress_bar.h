// A bar on the terminal's error stream, drawn when it grows and wiped at the end; nothing where there is no
// terminal.
#pragma once

#include "shared/libcxxutil/progress.h"

class ProgressBar {
  public:
    explicit ProgressBar(bool wanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    // Never asks to stop. Valid as long as the bar.
    Progress progress();

  private:
    void show(double done, double total);
    bool shown_;
    int drawn_ = -1;
};
