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

std::vector<DialogItem> items_Range() {
    return {
        item_Label("t_from", "&From:", "tf_from"),
        {.name = "tf_from", .kind = DialogKind::TextField, .accessible = "From", .room = "00000.0000000000"},
        item_Label("t_to", "&To:", "tf_to"),
        {.name = "tf_to",
         .kind = DialogKind::TextField,
         .accessible = "To",
         .room = "0000.0000000000 (Max: 0000.0000000000)"}};
}

void items_Add(std::vector<DialogItem>& items, const std::vector<DialogItem>& more) {
    items.insert(items.end(), more.begin(), more.end());
}
