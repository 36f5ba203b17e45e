#include "windlib/menu/menu.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

// The menu that a body leads to; none for a command.
std::optional<std::string_view> sub_menu(std::string_view body) {
    if (!body.starts_with("->")) return std::nullopt;
    body.remove_prefix(2);
    while (!body.empty() && (body.front() == ' ' || body.front() == '\t')) body.remove_prefix(1);
    return body;
}

void build_display_label(MenuRow& row) {
    const std::string key = menu_ShownAccelerator(row.accelerator);
    if (row.label.empty() && key.empty()) gen_warning("[MenuResource_MSWBuildLabels] rlen==llen==0\n");
    row.displayLabel = key.empty() ? row.label : row.label.empty() ? key : row.label + "\t" + key;
}

bool same_row(const MenuRow& a, const MenuRow& b) {
    return text_equal_nocase(a.label, b.label) && text_equal_nocase(a.accelerator, b.accelerator) &&
           text_equal_nocase(a.body, b.body);
}

std::string written_label(const MenuRow& row) {
    const std::string& label = row.alternateLabel.empty() ? row.label : row.alternateLabel;
    if (label == menuSeparator) return "-";
    const bool plain =
        !label.empty() && label != "-" && label.find_first_of(" \t\n\r\v\f'\"\\{}") == std::string::npos;
    return plain ? label : menu_Quote(label);
}

std::string written_row(const MenuRow& row) {
    std::string text = "{" + written_label(row) + " ";
    if (!row.accelerator.empty()) text += menu_Quote(row.accelerator) + " ";
    return text + row.body + " }";
}

// The one row that a text describes.
std::optional<MenuRow> one_row(std::string_view text, bool doubleByte) {
    auto rows = menu_Parse(text, doubleByte);
    if (!rows || rows->size() != 1) return std::nullopt;
    return std::move(rows->front());
}

const char* shown_label(const MenuRow& row) {
    return row.IsSeparator() ? "-" : row.label.c_str();
}

}  // namespace

MenuRegistry& menu_Registry() {
    static MenuRegistry registry;
    return registry;
}

MenuRow* MenuResource::RowOf(std::string_view body) {
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const MenuRow& r) { return r.body == body; });
    return found == rows.end() ? nullptr : &*found;
}

MenuRegistry::List::iterator MenuRegistry::Locate(std::string_view name) {
    return std::find_if(menus_.begin(), menus_.end(), [&](const auto& menu) { return menu->name == name; });
}

MenuResource* MenuRegistry::Find(std::string_view name, bool report, bool tryLoad) {
    if (const auto found = Locate(name); found != menus_.end()) return found->get();
    if (tryLoad) {
        const auto text = deferred_.find(name);
        if (text != deferred_.end() && Define(name, text->second)) return Find(name, report, false);
    }
    if (report) gen_warning("Cannot find menu: %.256s", std::string(name).c_str());
    return nullptr;
}

bool MenuRegistry::Define(std::string_view name, std::optional<std::string_view> text) {
    if (!text) return Delete(name);
    const auto found = Locate(name);
    std::unique_ptr<MenuResource> old;
    if (found != menus_.end()) {
        old = std::move(*found);
        menus_.erase(found);
    }
    auto rows = menu_Parse(*text, doubleByte);
    if (!rows) {
        if (old) menus_.insert(menus_.begin(), std::move(old));
        return false;
    }
    auto fresh = std::make_unique<MenuResource>();
    fresh->name = name;
    fresh->rows = std::move(*rows);
    fresh->text = *text;
    fresh->flags = Menu_FromText | (old ? old->flags & Menu_NativeExists : 0u);
    fresh->isPopup = name.find("Popup") != std::string_view::npos;
    if (old) fresh->users = std::move(old->users);
    if (old && danglingPtrFix) {
        std::swap(*old, *fresh);
        std::swap(old, fresh);
    }
    if (old) Forget(old.get());
    menus_.insert(menus_.begin(), std::move(fresh));
    Touch(*menus_.front());
    return true;
}

bool MenuRegistry::DefineStatement(std::string_view statement) {
    std::string_view rest = text_trim(statement);
    const size_t open = rest.find('{');
    if (!rest.starts_with("menu ") || open == std::string_view::npos || rest.back() != '}') {
        gen_warning("Missing %s",
                    open == std::string_view::npos || !rest.starts_with("menu ") ? "menu" : "}");
        return false;
    }
    const std::string_view name = text_trim(rest.substr(5, open - 5));
    return Define(name, rest.substr(open + 1, rest.size() - open - 2));
}

void MenuRegistry::DefineMagic(std::string_view name, std::function<void(MenuResource&)> compute) {
    if (!Define(name, "")) return;
    MenuResource& menu = **Locate(name);
    menu.flags &= ~static_cast<unsigned>(Menu_FromText);
    menu.isMagic = true;
    menu.compute = std::move(compute);
}

bool MenuRegistry::Delete(std::string_view name) {
    const auto found = Locate(name);
    if (found == menus_.end()) return Find(name, true, false) != nullptr;
    if (!(*found)->users.empty()) {
        gen_warning("Cannot delete this menu: %s", (*found)->name.c_str());
        return false;
    }
    const std::unique_ptr<MenuResource> gone = std::move(*found);
    menus_.erase(found);
    Forget(gone.get());
    changed_ = true;
    if (held_ == 0 && changed) changed();
    return true;
}

// No row leads to a record that goes.
void MenuRegistry::Forget(const MenuResource* gone) {
    for (const auto& menu : menus_)
        for (MenuRow& row : menu->rows)
            if (row.child == gone) {
                row.child = nullptr;
                menu->flags &= ~static_cast<unsigned>(Menu_UpToDate);
            }
}

void MenuRegistry::Touch(MenuResource& menu) {
    menu.flags &= ~static_cast<unsigned>(Menu_UpToDate);
    changed_ = true;
    if (held_ == 0 && changed) changed();
}

bool MenuRegistry::AddRow(std::string_view name, NewRow added) {
    MenuResource* menu = Find(name, true);
    if (!menu) return false;
    if (menu->isMagic) {
        gen_warning("Cannot add to this menu: %.256s", menu->name.c_str());
        return false;
    }
    auto& rows = menu->rows;
    const auto equal = [&](const MenuRow& row) { return text_equal_nocase(row.label, added.label); };
    if (rows.size() >= mostRows || (added.unique && std::any_of(rows.begin(), rows.end(), equal)))
        return false;
    const auto at = added.sorted ? std::find_if(rows.begin(), rows.end(),
                                                [&](const MenuRow& row) { return row.label >= added.label; })
                                 : rows.end();
    MenuRow row;
    row.label = std::move(added.label);
    row.accelerator = std::move(added.accelerator);
    row.body = std::move(added.body);
    row.flags = added.flags;
    row.data = std::move(added.data);
    rows.insert(at, std::move(row));
    menu->text.clear();
    Touch(*menu);
    return true;
}

bool MenuRegistry::Modify(std::string_view name, int operation, int index, std::string_view text) {
    MenuResource* menu = Find(name, true);
    if (!menu) return false;
    if (menu->isMagic || (menu->flags & Menu_FromText) == 0) {
        gen_warning("Cannot modify this menu: %s", menu->name.c_str());
        return false;
    }
    if (operation == Menu_DeleteRow && index == -1) return Delete(name);
    auto& rows = menu->rows;
    if (index < 0 || operation < Menu_AddRow || operation > Menu_MoveRow) return false;
    auto at = static_cast<size_t>(index);
    const bool needsRow = operation == Menu_DeleteRow || operation == Menu_ReplaceRow;
    if (needsRow && at >= rows.size()) return false;
    std::optional<MenuRow> row;
    if (operation != Menu_DeleteRow && !(row = one_row(text, doubleByte))) return false;
    if (operation == Menu_AddRow && rows.size() >= mostRows) return false;
    const auto place = [&] { return rows.begin() + static_cast<std::ptrdiff_t>(std::min(at, rows.size())); };
    if (operation == Menu_DeleteRow) rows.erase(place());
    if (operation == Menu_ReplaceRow) rows[at] = std::move(*row);
    if (operation == Menu_MoveRow) {
        const auto old =
            std::find_if(rows.begin(), rows.end(), [&](const MenuRow& r) { return same_row(r, *row); });
        if (old != rows.end()) rows.erase(old);
    }
    if (operation == Menu_AddRow || operation == Menu_MoveRow) rows.insert(place(), std::move(*row));
    menu->text.clear();
    Touch(*menu);
    return true;
}

void MenuRegistry::SetLabel(MenuResource& menu, MenuRow& row, std::string label) {
    if (row.label == label) return;
    row.label = std::move(label);
    menu.flags &= ~static_cast<unsigned>(Menu_UpToDate);
}

std::string MenuRegistry::PrintText(const MenuResource& menu, int row) const {
    if (menu.isMagic) return "menu " + menu.name + " Magic\n";
    const auto line = [](const MenuRow& r) {
        return std::string("{ ") + shown_label(r) + " " + r.body + " }";
    };
    if (row >= 0) {
        if (static_cast<size_t>(row) < menu.rows.size())
            return line(menu.rows[static_cast<size_t>(row)]) + "\n";
        gen_warning("[MenuResource_GetLabel] bad args");
        return {};
    }
    std::string text = "menu " + menu.name + " {\n";
    for (size_t i = 0; i < menu.rows.size(); ++i)
        text += line(menu.rows[i]) + (i + 1 < menu.rows.size() ? " " : "") + "\n";
    return text + "}\n";
}

void MenuRegistry::Print(std::string_view name, int row) {
    if (const MenuResource* menu = Find(name, true)) gen_console_raw(PrintText(*menu, row));
}

void MenuRegistry::ForEach(const std::function<void(const std::string&)>& function, int which) const {
    for (const auto& menu : menus_) {
        if ((which == Menu_Unused && !menu->users.empty()) || (which == Menu_InUse && menu->users.empty()))
            continue;
        bool own = false;
        for (const char* name : {"FilesUsed", "WindowsMenu", "WindowsSub", "Language"})
            own = own || menu->name == name;
        if (own) continue;
        std::string text = menu->name + " {";
        for (const MenuRow& row : menu->rows) text += written_row(row) + " ";
        function(text + "}");
    }
}

void MenuRegistry::Use(MenuResource& menu, MenuUser& user) {
    menu.users.push_back(&user);
}

void MenuRegistry::Release(MenuUser& user) {
    for (const auto& menu : menus_) std::erase(menu->users, &user);
}

void MenuRegistry::Update(MenuResource& menu) {
    menu.flags |= Menu_Rebuilding;
    if (menu.isMagic && menu.compute) menu.compute(menu);
    for (MenuRow& row : menu.rows) {
        const auto name = sub_menu(row.body);
        row.child = name ? Find(*name, false) : nullptr;
        row.flags =
            row.child ? row.flags | MenuRow_SubMenu : row.flags & ~static_cast<unsigned>(MenuRow_SubMenu);
    }
    for (MenuRow& row : menu.rows) {
        if (!row.child) continue;
        if (row.child->flags & Menu_Rebuilding) {  // the menu contains itself
            row.child = nullptr;
            row.flags = (row.flags & ~static_cast<unsigned>(MenuRow_SubMenu)) | MenuRow_Disabled;
        } else {
            Update(*row.child);
        }
    }
    for (MenuRow& row : menu.rows) build_display_label(row);
    menu.flags = (menu.flags & ~static_cast<unsigned>(Menu_Rebuilding)) | Menu_UpToDate;
}

void MenuRegistry::HoldUpdates(bool hold) {
    held_ += hold ? 1 : -1;
    if (held_ == 0 && changed_ && changed) changed();
}

void MenuRegistry::Idle() {
    if (!changed_ || held_ > 0) return;
    changed_ = false;
    std::vector<MenuUser*> told;
    for (const auto& menu : menus_)
        for (MenuUser* user : menu->users)
            if (std::find(told.begin(), told.end(), user) == told.end()) told.push_back(user);
    for (size_t i = 0; i < menus_.size(); ++i)  // a deferred menu that is linked now comes in front
        if (!menus_[i]->users.empty()) Update(*menus_[i]);
    for (const MenuUser* user : told)
        if (user->changed) user->changed();
}

bool MenuRegistry::ShowPopUp(std::string_view name, void* window, int x, int y, const MenuCallback& callback,
                             const std::function<void(MenuResource&)>& prepare) {
    MenuResource* menu = Find(name, true);
    if (!menu) return false;
    for (MenuRow& row : menu->rows) row.flags &= ~static_cast<unsigned>(MenuRow_Disabled);
    if (prepare) prepare(*menu);
    Update(*menu);
    if (trackPopUp) trackPopUp(*menu, window, x, y, callback);
    return true;
}

void MenuRegistry::Run(const MenuRow& row, const MenuCallback& callback) {
    const std::string body = row.body;  // the callback may redefine the menu
    if (row.handler)
        row.handler(body, callback);
    else if (callback)
        callback(body);
}
