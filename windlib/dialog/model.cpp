#include "windlib/dialog/model.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace {

// Callbacks are called through a copy: the call may destroy the model, and with it the function that runs.
template <class F, class... Args>
void call(const F& function, const Args&... args) {
    if (!function) return;
    const F copy = function;
    copy(args...);
}

bool rowsExist(const MScrollList& list, const std::set<int>& rows) {
    return rows.empty() || (*rows.begin() >= 0 && *rows.rbegin() < list.RowCount());
}

std::vector<int> numbers(const std::set<int>& rows) {
    return {rows.begin(), rows.end()};
}

}  // namespace

DialogModel::DialogModel(DialogDescription description)
    : description_(std::move(description)), title_(description_.title) {
    for (const DialogItem& item : description_.items) {
        Entry& entry = entries_.emplace_back();
        entry.state.text = entry.committed = item.text;
        entry.state.enabled = (item.flags & Dialog_Disabled) == 0;
        entry.state.visible = (item.flags & Dialog_Hidden) == 0;
        entry.state.readOnly = (item.flags & Dialog_ReadOnly) != 0;
        entry.state.multiple = (item.flags & Dialog_Multiple) != 0;
        if (item.kind == DialogKind::List) {
            makeList(entry, item);
        } else {
            entry.state.choices = item.list;
        }
        if (!entry.state.choices.empty()) entry.state.choice = 0;
    }
}

// What the user does to the list reaches the logic as what is done to the item.
void DialogModel::makeList(Entry& entry, const DialogItem& item) {
    const size_t index = entries_.size() - 1;
    const std::string name = item.name;
    entry.state.columnTitles = item.list;
    entry.list = std::make_unique<MScrollList>();
    MScrollList& list = *entry.list;
    if (item.list.empty()) list.SetHeaderRows(0);
    list.SetSize(0, static_cast<int>(item.list.size()));
    for (size_t i = 0; i < item.list.size(); ++i) list.SetHeader(0, static_cast<int>(i), item.list[i]);
    list.SetMultiple(entry.state.multiple);
    list.observed = [this, index](MslChange change, int, int) { noteList(index, change); };
    list.userSelected = [this, name] { call(onSelect, name); };
    list.clicked = [this, name](int row, int column, int clicks) {
        call(onRowClick, name, row, column, clicks);
    };
    list.rightClicked = [this, name](int row, int column) { call(onRowMenu, name, row, column); };
    list.activated = [this, name](int row) {
        const bool means = static_cast<bool>(onActivate);
        call(onActivate, name, row);
        return means;
    };
}

void DialogModel::noteList(size_t index, MslChange change) {
    Entry& entry = entries_[index];
    if (change == MslChange::Size || change == MslChange::Order || change == MslChange::Inserted ||
        change == MslChange::Removed || change == MslChange::Repaint)
        entry.rowsStale = true;
    if (change != MslChange::Repaint && change != MslChange::Footer && change != MslChange::Scroll)
        entry.selectionStale = true;
}

void DialogModel::takeFromList(Entry& entry) {
    const MScrollList& list = *entry.list;
    if (std::exchange(entry.rowsStale, false)) {
        std::vector<DialogRow>& rows = entry.state.rows;
        rows.assign(list.IsLazy() ? 0 : static_cast<size_t>(list.RowCount()), {});
        for (size_t i = 0; i < rows.size(); ++i) {
            const int row = static_cast<int>(i);
            for (int column = 0; column < list.ColumnCount(); ++column)
                rows[i].cells.push_back(list.Text(row, column));
            rows[i].id = list.RowId(row);
            const auto data = list.RowData(row);
            rows[i].data.assign(reinterpret_cast<const char*>(data.data()), data.size());
        }
    }
    if (!std::exchange(entry.selectionStale, false)) return;
    const std::vector<int> rows = list.SelectedRows();
    entry.state.selected = {rows.begin(), rows.end()};
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
    if (number == 0) return none;
    Entry& entry = entries_[static_cast<size_t>(number) - 1];
    if (entry.list) takeFromList(entry);
    return entry.state;
}

MScrollList& DialogModel::list(std::string_view name) {
    Entry* entry = find(name);
    return entry != nullptr && entry->list ? *entry->list : unseen_;
}

const MScrollList& DialogModel::list(std::string_view name) const {
    const int number = dialog_Number(description_, name);
    const Entry* entry = number == 0 ? nullptr : &entries_[static_cast<size_t>(number) - 1];
    return entry != nullptr && entry->list ? *entry->list : unseen_;
}

uint64_t DialogModel::rowId(std::string_view name, int row) const {
    return list(name).RowId(row);
}

std::vector<uint64_t> DialogModel::selectedIds(std::string_view name) const {
    return list(name).SelectedIds();
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
    const int row = list(name).SelectedRow();
    return row == MScrollList::severalRows ? Dialog_ManyRows : row;
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
void DialogModel::setReadOnly(std::string_view name, bool readOnly) {
    change(name, &DialogItemState::readOnly, readOnly);
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

void DialogModel::setChoiceEnabled(std::string_view name, int choice, bool enabled) {
    std::set<int> disabled = item(name).disabledChoices;
    if (enabled)
        disabled.erase(choice);
    else
        disabled.insert(choice);
    change(name, &DialogItemState::disabledChoices, std::move(disabled));
}

void DialogModel::setColumnTitles(std::string_view name, std::vector<std::string> titles) {
    if (item(name).columnTitles == titles) return;
    MScrollList& shown = list(name);
    shown.HoldRepaint(true);
    shown.SetColumnCount(static_cast<int>(titles.size()));
    if (shown.HeaderRows() == 0) shown.SetHeaderRows(1);
    for (size_t i = 0; i < titles.size(); ++i) shown.SetHeader(0, static_cast<int>(i), titles[i]);
    shown.HoldRepaint(false);
    change(name, &DialogItemState::columnTitles, std::move(titles));
}

void DialogModel::setRows(std::string_view name, std::vector<DialogRow> rows) {
    Entry* entry = find(name);
    if (entry == nullptr || !entry->list) return;
    MScrollList& shown = *entry->list;
    const int sortColumn = shown.SortColumn();
    const bool descending = shown.SortDescending();
    size_t columns = static_cast<size_t>(shown.ColumnCount());
    for (const DialogRow& row : rows) columns = std::max(columns, row.cells.size());
    const int known = shown.ColumnCount();
    shown.HoldRepaint(true);
    if (shown.SetSize(static_cast<int>(rows.size()), static_cast<int>(columns))) {
        for (int column = known; column < shown.ColumnCount(); ++column) shown.SetHeader(0, column, "");
        for (size_t i = 0; i < rows.size(); ++i) {
            const int row = static_cast<int>(i);
            for (size_t column = rows[i].cells.size(); column-- > 0;)
                shown.SetText(row, static_cast<int>(column), std::move(rows[i].cells[column]));
            shown.SetRowId(row, rows[i].id);
            shown.SetRowData(row, std::as_bytes(std::span(rows[i].data)));
        }
        if (sortColumn >= 0) shown.SortBy(sortColumn, descending);
    }
    shown.HoldRepaint(false);
    call(itemChanged, std::string(name));
}

void DialogModel::setSelected(std::string_view name, const std::set<int>& rows) {
    MScrollList& shown = list(name);
    if (!rowsExist(shown, rows) || (!item(name).multiple && rows.size() > 1) || item(name).selected == rows)
        return;
    shown.SelectRows(numbers(rows));
    call(itemChanged, std::string(name));
}

void DialogModel::setSelectedIds(std::string_view name, const std::vector<uint64_t>& ids) {
    MScrollList& shown = list(name);
    const std::unordered_set<uint64_t> wanted(ids.begin(), ids.end());
    std::vector<int> rows;
    for (int row = 0; row < shown.RowCount() && !wanted.empty(); ++row)
        if (wanted.count(shown.RowId(row)) > 0) rows.push_back(row);
    shown.SelectRows(rows);
    call(itemChanged, std::string(name));
}

void DialogModel::setPainter(std::string_view name, Painter painter) {
    if (Entry* entry = find(name)) entry->painter = std::move(painter);
    repaint(name);
}

void DialogModel::repaint(std::string_view name) {
    if (find(name) != nullptr) call(itemChanged, std::string(name));
}

const DialogModel::Painter& DialogModel::painter(std::string_view name) const {
    static const Painter none;
    const int number = dialog_Number(description_, name);
    return number == 0 ? none : entries_[static_cast<size_t>(number) - 1].painter;
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
    if (entry->state.readOnly) return false;
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

bool DialogModel::revert(std::string_view name) {
    const Entry* entry = usable(name, {DialogKind::TextField});
    if (entry == nullptr) return false;
    setText(name, entry->committed);
    return true;
}

bool DialogModel::type(std::string_view name, std::string text) {
    const std::weak_ptr<bool> alive = alive_;
    return edit(name, std::move(text)) && !alive.expired() && commit(name);
}

bool DialogModel::pullDown(std::string_view name) {
    Entry* entry = usable(name, {DialogKind::TextField});
    if (entry == nullptr || entry->state.readOnly) return false;
    const DialogItem& described = description_.items[static_cast<size_t>(entry - entries_.data())];
    if ((described.flags & Dialog_PullsDown) == 0) return false;
    call(onPullDown, nameOf(*entry));
    return true;
}

bool DialogModel::select(std::string_view name, const std::set<int>& rows) {
    Entry* entry = usable(name, {DialogKind::List});
    if (entry == nullptr || !rowsExist(*entry->list, rows)) return false;
    if (!entry->state.multiple && rows.size() > 1) return false;
    if (item(name).selected == rows) return true;
    entry->list->SelectRows(numbers(rows));
    call(onSelect, std::string(name));
    return true;
}

bool DialogModel::activate(std::string_view name, int row) {
    Entry* entry = usable(name, {DialogKind::List});
    if (entry == nullptr || row < 0 || row >= entry->list->RowCount()) return false;
    call(onActivate, std::string(name), row);
    return true;
}

bool DialogModel::clickRow(std::string_view name, int row, int column, int clicks, bool control, bool shift) {
    Entry* entry = usable(name, {DialogKind::List});
    if (entry == nullptr) return false;
    entry->list->Click(row, column, clicks, control, shift);
    return true;
}

bool DialogModel::rowMenu(std::string_view name, int row, int column) {
    Entry* entry = usable(name, {DialogKind::List});
    if (entry == nullptr) return false;
    entry->list->RightClick(row, column);
    return true;
}

bool DialogModel::sortRows(std::string_view name, int column) {
    Entry* entry = usable(name, {DialogKind::List});
    return entry != nullptr && entry->list->SortClick(column);
}

bool DialogModel::picture(std::string_view name, int x, int y) {
    if (usable(name, {DialogKind::Strip}) == nullptr) return false;
    call(onPicture, std::string(name), x, y);
    return true;
}

bool DialogModel::choose(std::string_view name, int choice) {
    Entry* entry = usable(name, {DialogKind::PullDown, DialogKind::ButtonSet});
    if (entry == nullptr || choice < 0 || static_cast<size_t>(choice) >= entry->state.choices.size() ||
        entry->state.disabledChoices.contains(choice))
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
    if (onEnter && usable(focus, {DialogKind::TextField}) != nullptr) {
        call(onEnter, std::string(focus));
        return true;
    }
    const DialogItem* button = withFlag(Dialog_Default);
    return (button != nullptr && press(button->name)) || committed;
}

void DialogModel::dismiss() {
    key(DialogKey::Escape);
}
