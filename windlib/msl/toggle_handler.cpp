#include "windlib/msl/toggle_handler.h"

std::string_view msl_TreePicture(uint32_t toggle) {
    return toggle == mslToggleOff ? "plus9" : toggle == mslToggleOn ? "minus9" : "";
}

std::string_view msl_CheckPicture(uint32_t toggle) {
    return toggle == mslToggleOff ? "graycheckmark" : toggle == mslToggleOn ? "checkmark" : "";
}

void MScrollListAutoToggleHandler::SetChecked(int row, bool checked) {
    list_.SetCellAttribute(row, column_, mslToggle, checked ? mslToggleOn : mslToggleOff);
}

bool MScrollListAutoToggleHandler::Click(int row, int column) {
    if (column != column_ || list_.Toggle(row, column) == mslToggleNone) return false;
    const bool checked = !IsChecked(row);
    SetChecked(row, checked);
    Turned(row, checked);
    return true;
}
