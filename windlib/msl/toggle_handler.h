// Check marks in cells of a list, and the names of the pictures for toggles.
#pragma once

#include <functional>
#include <string_view>

#include "windlib/msl/scroll_list.h"

// The picture of a toggle state, empty for none: of a tree's rows, and of check marks.
std::string_view msl_TreePicture(uint32_t toggle);
std::string_view msl_CheckPicture(uint32_t toggle);

// Turns the check mark of a cell over at a click on it. Cells without one stay so. A double click is one more
// turn, as each of its clicks is told.
class MScrollListAutoToggleHandler {
  public:
    // The list outlives the handler.
    MScrollListAutoToggleHandler(MScrollList& list, int column) : list_(list), column_(column) {}
    virtual ~MScrollListAutoToggleHandler() = default;

    void SetChecked(int row, bool checked);  // gives the cell a check mark if it had none
    bool IsChecked(int row) const { return list_.Toggle(row, column_) == mslToggleOn; }
    // To be called with the clicks of the list; true when a mark was turned over.
    bool Click(int row, int column);

  protected:
    virtual void Turned(int, bool) {}

  private:
    MScrollList& list_;
    int column_;
};

// The same for the list of a dialog, which is told.
class ScrollDialogue_ToggleHandler : public MScrollListAutoToggleHandler {
  public:
    using MScrollListAutoToggleHandler::MScrollListAutoToggleHandler;
    std::function<void(int row, bool checked)> turned;

  protected:
    void Turned(int row, bool checked) override {
        if (turned) turned(row, checked);
    }
};
