#include "windlib/dialog/model.h"

#include <algorithm>

namespace {

// Callbacks are called through a copy: the call may destroy the model, and with it the function that runs.
template <class F, class... Args>
void call(const F& function, const Args&... args) {
    if (!function) return;
    const F copy = function;
    copy(args...);
}

bool rowsExist(const DialogItemState& state, const std::set<int>& rows) {
    return rows.empty() || (*rows.begin() >= 0 && static_cast<size_t>(*rows.rbegin()) < state.rows.size());
}

}  // namespace

DialogModel::DialogModel(DialogDescription description)
    : description_(std::move(description)), title_(description_.title) {
    for (const DialogItem& item : description_.items) {
        Entry& entry = entries_.emplace_back();
        entry.state.text = entry.committed = item.text;
        entry.state.enabled = (item.flags & Dialog_Disabled) == 0;
        entry.state.visible = (item.flags & Dialog_Hidden) == 0;
        entry.state.multiple = (item.flags & Dialog_Multiple) != 0;
        if (item.kind == DialogKind::List) {
            entry.state.columnTitles = item.list;
        } else {
            entry.state.choices = item.list;
        }
        if (!entry.state.choices.empty()) entry.state.choice = 0;
    }
}

DialogModel::Entry* DialogModel::find(std::string_view name) {
    const int number = dialog_Number(description_, name);
    return number == 0 ? nullptr : &entries_[static_cast<size_t>(number) - 1];
}

const std::string& DialogModel::nameOf(const Entry& entry) const {
    return description_.items[static_cast<size_t>(&entry - entries_.data())].name;
}

// The item, when the user can do something to it and it is of one of these kinds.
DialogModel::Entry* DialogModel::usable(std::string_view name, std::initializer_list<DialogKind> kinds) {
    Entry* entry = find(name);
    if (entry == nullptr || closed_ || !entry->state.enabled || !entry->state.visible) return nullptr;
    const DialogKind kind = description_.items[static_cast<size_t>(entry - entries_.data())].kind;
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end() ? entry : nullptr;
}

const DialogItem* DialogModel::withFlag(unsigned flag) const {
    for (const DialogItem& item : description_.items)
        if ((item.flags & flag) != 0) return &item;
    return nullptr;
}

const DialogItemState& DialogModel::item(std::string_view name) const {
    static const DialogItemState none = [] {
        DialogItemState state;
        state.enabled = state.visible = false;
        return state;
    }();
    const int number = dialog_Number(description_, name);
    return number == 0 ? none : entries_[static_cast<size_t>(number) - 1].state;
}

std::string DialogModel::shownText(std::string_view name) const {
    const DialogItemState& state = item(name);
    return state.title.empty() ? state.text : state.title + ": " + state.text;
}

std::string DialogModel::message() const {
    for (size_t i = 0; i < entries_.size(); ++i)
        if (description_.items[i].kind == DialogKind::StatusText) return entries_[i].state.text;
    return {};
}

int DialogModel::selectedRow(std::string_view name) const {
    const std::set<int>& rows = item(name).selected;
    return rows.empty() ? Dialog_NoRow : rows.size() > 1 ? Dialog_ManyRows : *rows.begin();
}

template <class T>
void DialogModel::change(std::string_view name, T DialogItemState::*member, T value) {
    Entry* entry = find(name);
    if (entry == nullptr || entry->state.*member == value) return;
    entry->state.*member = std::move(value);
    call(itemChanged, std::string(name));
}

void DialogModel::setTitle(std::string title) {
    if (title == title_) return;
    title_ = std::move(title);
    call(titleChanged);
}

void DialogModel::setText(std::string_view name, std::string text) {
    if (Entry* entry = find(name)) entry->committed = text;
    change(name, &DialogItemState::text, std::move(text));
}

void DialogModel::setMessage(std::string text) {
    for (const DialogItem& item : description_.items)
        if (item.kind == DialogKind::StatusText) return setText(item.name, std::move(text));
}

void DialogModel::setItemTitle(std::string_view name, std::string title) {
    change(name, &DialogItemState::title, std::move(title));
}
void DialogModel::setEnabled(std::string_view name, bool enabled) {
    change(name, &DialogItemState::enabled, enabled);
}
void DialogModel::setVisible(std::string_view name, bool visible) {
    change(name, &DialogItemState::visible, visible);
}
void DialogModel::setChecked(std::string_view name, bool checked) {
    change(name, &DialogItemState::checked, checked);
}

void DialogModel::setChoices(std::string_view name, std::vector<std::string> choices, int choice) {
    Entry* entry = find(name);
    if (entry == nullptr) return;
    entry->state.choices = std::move(choices);
    entry->state.choice =
        choice >= 0 && static_cast<size_t>(choice) < entry->state.choices.size() ? choice : -1;
    call(itemChanged, std::string(name));
}

void DialogModel::setChoice(std::string_view name, int choice) {
    if (choice < -1 || choice >= static_cast<int>(item(name).choices.size())) return;
    change(name, &DialogItemState::choice, choice);
}

void DialogModel::setColumnTitles(std::string_view name, std::vector<std::string> titles) {
    change(name, &DialogItemState::columnTitles, std::move(titles));
}
void DialogModel::setColumnWidths(std::string_view name, std::vector<int> widths) {
    change(name, &DialogItemState::columnWidths, std::move(widths));
}

void DialogModel::setRows(std::string_view name, std::vector<DialogRow> rows) {
    Entry* entry = find(name);
    if (entry == nullptr) return;
    entry->state.rows = std::move(rows);
    entry->state.selected.clear();
    call(itemChanged, std::string(name));
}

void DialogModel::setSelected(std::string_view name, const std::set<int>& rows) {
    const DialogItemState& state = item(name);
    if (!rowsExist(state, rows) || (!state.multiple && rows.size() > 1)) return;
    change(name, &DialogItemState::selected, rows);
}

void DialogModel::setProgress(std::string_view name, int progress, int end) {
    Entry* entry = find(name);
    if (entry == nullptr || (entry->state.progress == progress && entry->state.progressEnd == end)) return;
    entry->state.progress = progress;
    entry->state.progressEnd = end;
    call(itemChanged, std::string(name));
}

void DialogModel::close(int result) {
    if (closed_) return;
    closed_ = true;
    result_ = result;
    const std::weak_ptr<bool> alive = alive_;
    call(closed);
    if (!alive.expired()) call(onClose, result);
}

bool DialogModel::press(std::string_view name) {
    Entry* entry = usable(name, {DialogKind::Button});
    if (entry == nullptr) return false;
    call(onPress, nameOf(*entry));
    return true;
}

bool DialogModel::edit(std::string_view name, std::string text) {
    Entry* entry = usable(name, {DialogKind::TextField});
    if (entry == nullptr) return false;
    const DialogItem& described = description_.items[static_cast<size_t>(entry - entries_.data())];
    if ((described.flags & Dialog_ReadOnly) != 0) return false;
    if (entry->state.text == text) return true;
    entry->state.text = text;
    call(onEdit, std::string(name), text);
    return true;
}

bool DialogModel::commit(std::string_view name) {
    Entry* entry = usable(name, {DialogKind::TextField});
    if (entry == nullptr) return false;
    if (entry->state.text == entry->committed) return true;
    entry->committed = entry->state.text;
    call(onCommit, std::string(name), std::string(entry->committed));
    return true;
}

bool DialogModel::type(std::string_view name, std::string text) {
    const std::weak_ptr<bool> alive = alive_;
    return edit(name, std::move(text)) && !alive.expired() && commit(name);
}

bool DialogModel::select(std::string_view name, const std::set<int>& rows) {
    Entry* entry = usable(name, {DialogKind::List});
    if (entry == nullptr || !rowsExist(entry->state, rows)) return false;
    if (!entry->state.multiple && rows.size() > 1) return false;
    if (entry->state.selected == rows) return true;
    entry->state.selected = rows;
    call(onSelect, std::string(name));
    return true;
}

bool DialogModel::activate(std::string_view name, int row) {
    Entry* entry = usable(name, {DialogKind::List});
    if (entry == nullptr || row < 0 || static_cast<size_t>(row) >= entry->state.rows.size()) return false;
    call(onActivate, std::string(name), row);
    return true;
}

bool DialogModel::choose(std::string_view name, int choice) {
    Entry* entry = usable(name, {DialogKind::PullDown, DialogKind::ButtonSet});
    if (entry == nullptr || choice < 0 || static_cast<size_t>(choice) >= entry->state.choices.size())
        return false;
    if (entry->state.choice == choice) return true;
    entry->state.choice = choice;
    call(onChoose, std::string(name), choice);
    return true;
}

bool DialogModel::check(std::string_view name, bool checked) {
    Entry* entry = usable(name, {DialogKind::CheckBox});
    if (entry == nullptr) return false;
    if (entry->state.checked == checked) return true;
    entry->state.checked = checked;
    call(onCheck, std::string(name), checked);
    return true;
}

bool DialogModel::menu(std::string_view body) {
    if (closed_) return false;
    call(onMenu, std::string(body));
    return true;
}

bool DialogModel::key(DialogKey key, std::string_view focus) {
    if (closed_) return false;
    if (key == DialogKey::Escape) {
        if (const DialogItem* cancel = withFlag(Dialog_Cancel)) return press(cancel->name);
        close(Dialog_Dismissed);
        return true;
    }
    const std::weak_ptr<bool> alive = alive_;
    const bool committed = commit(focus);
    if (alive.expired()) return true;
    const DialogItem* button = withFlag(Dialog_Default);
    return (button != nullptr && press(button->name)) || committed;
}

void DialogModel::dismiss() {
    key(DialogKey::Escape);
}
