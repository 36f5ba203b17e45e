#include "chronoweave/analysis/dialog_items.h"

#include <utility>

DialogItem item_Label(std::string name, std::string text, std::string leadsTo) {
    return {.name = std::move(name),
            .kind = DialogKind::Label,
            .text = std::move(text),
            .buddy = std::move(leadsTo)};
}

DialogItem item_Ok(std::string name, std::string text) {
    return {.name = std::move(name),
            .kind = DialogKind::Button,
            .text = std::move(text),
            .flags = Dialog_Default};
}

DialogItem item_Cancel(std::string name, std::string text) {
    return {
        .name = std::move(name), .kind = DialogKind::Button, .text = std::move(text), .flags = Dialog_Cancel};
}

DialogItem item_Close(std::string name, std::string text) {
    return item_Cancel(std::move(name), std::move(text));
}

DialogItem item_Message() {
    return {.name = "ts_info", .kind = DialogKind::StatusText, .accessible = "Message"};
}

std::vector<DialogItem> items_RangeButtons() {
    const auto button = [](const char* name, const char* text, const char* spoken) -> DialogItem {
        return {.name = name, .kind = DialogKind::Button, .text = text, .accessible = spoken};
    };
    return {button("r_view", "&View", "The range of the view"),
            button("r_selection", "Se&lection", "The range of the selection"),
            button("r_all", "&All", "The whole trace")};
}

DialogItem item_Filter(const std::string& list) {
    return {.name = "f_" + list, .kind = DialogKind::TextField, .accessible = "Filter", .hint = "Filter"};
}

std::vector<DialogItem> items_Range() {
    std::vector<DialogItem> items = {
        item_Label("t_from", "&From:", "tf_from"),
        {.name = "tf_from", .kind = DialogKind::TextField, .accessible = "From", .room = "00000.0000000000"},
        item_Label("t_to", "&To:", "tf_to"),
        {.name = "tf_to",
         .kind = DialogKind::TextField,
         .accessible = "To",
         .room = "0000.0000000000 (Max: 0000.0000000000)"}};
    items_Add(items, items_RangeButtons());
    return items;
}

void items_Add(std::vector<DialogItem>& items, const std::vector<DialogItem>& more) {
    items.insert(items.end(), more.begin(), more.end());
}
