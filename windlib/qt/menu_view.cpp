#include "windlib/qt/menu_view.h"

#include <QAction>
#include <QCursor>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QTimer>

#include "shared/libcxxutil/gate.h"
#include "windlib/dialog/model.h"

namespace {

constexpr int deepest = 16;  // levels of menus that are shown
constexpr const char* nameProperty = "menuName";

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

// The key that an accelerator names; empty for a text that is none.
QKeySequence keyOf(const MenuRow& row) {
    const QKeySequence keys =
        QKeySequence::fromString(text(menu_ShownAccelerator(row.accelerator)), QKeySequence::PortableText);
    for (int i = 0; i < keys.count(); ++i)
        if (keys[static_cast<uint>(i)].key() == Qt::Key_unknown) return {};
    return keys;
}

void takeState(QAction* action, const MenuRow& row) {
    action->setVisible(!(row.flags & MenuRow_Hidden));
    if (row.IsSeparator()) return;
    action->setEnabled(!(row.flags & MenuRow_Disabled));
    action->setCheckable(row.flags & MenuRow_Checkable);
    action->setChecked((row.flags & MenuRow_Checkable) && (row.flags & MenuRow_Checked));
    action->setData(text(row.body));
    action->setToolTip(text(row.tip));
    action->setStatusTip(text(row.tip));
}

// Rows that can be taken over by the actions that stand there, one for one.
bool sameShape(const QList<QAction*>& actions, const MenuResource& menu) {
    if (actions.size() != static_cast<qsizetype>(menu.rows.size())) return false;
    for (qsizetype i = 0; i < actions.size(); ++i) {
        const MenuRow& row = menu.rows[static_cast<size_t>(i)];
        const QMenu* below = actions[i]->menu<QMenu*>();
        if (actions[i]->isSeparator() != row.IsSeparator() || (below != nullptr) != (row.child != nullptr))
            return false;
        if (below && below->property(nameProperty).toString() != text(row.child->name)) return false;
    }
    return true;
}

}  // namespace

MenuView::MenuView(QMenuBar* bar, std::string name, MenuHook hook, MenuCallback chosen, MenuRegistry& menus)
    : QObject(bar),
      bar_(bar),
      name_(std::move(name)),
      hook_(std::move(hook)),
      chosen_(std::move(chosen)),
      menus_(menus) {
    // What is redefined while it is shown is shown anew. The hooks of two windows may define a menu in turn,
    // so that only the active one's is asked now; another's is when it is activated.
    user_.changed = [this] { showAll(bar_->isActiveWindow()); };
    if (!menus_.changed)
        menus_.changed = [&menus = menus_] { QTimer::singleShot(0, [&menus] { menus.Idle(); }); };
    showAll(true);
}

MenuView::~MenuView() {
    menus_.Release(user_);
}

void MenuView::refresh() {
    showAll(true);
}

void MenuView::showAll(bool withHook) {
    menus_.Release(user_);
    keys_.clear();
    if (MenuResource* menu = menus_.Find(name_, true)) {
        menus_.Update(*menu);
        show(bar_, name_, withHook, 0);
    }
}

void MenuView::show(QWidget* place, const std::string& name, bool withHook, int depth) {
    if (withHook && hook_) hook_(name);
    MenuResource* menu = menus_.Find(name, false);
    if (!menu || depth > deepest) return;
    menus_.Update(*menu);
    if (std::find(menu->users.begin(), menu->users.end(), &user_) == menu->users.end())
        menus_.Use(*menu, user_);
    menu->flags |= Menu_NativeExists;
    if (!sameShape(place->actions(), *menu)) {
        for (QAction* old : place->actions()) {
            place->removeAction(old);
            if (auto* below = old->menu<QMenu*>())
                below->deleteLater();
            else
                old->deleteLater();
        }
        for (const MenuRow& row : menu->rows) makeRow(place, row);
    }
    const auto actions = place->actions();
    for (size_t i = 0; i < menu->rows.size(); ++i) {
        const MenuRow row = menu->rows[i];  // a hook below may redefine this menu
        QAction* action = actions[static_cast<qsizetype>(i)];
        takeRow(action, row, name + "\n" + std::to_string(i));
        if (row.child) show(action->menu<QMenu*>(), row.child->name, withHook, depth + 1);
        menu = menus_.Find(name, false);
        if (!menu || menu->rows.size() != static_cast<size_t>(actions.size())) return;
    }
}

QAction* MenuView::makeRow(QWidget* place, const MenuRow& row) {
    if (row.child) {
        auto* below = new QMenu(place);
        below->setObjectName(text(row.child->name));
        below->setAccessibleName(text(dialog_PlainText(row.label)));
        below->setProperty(nameProperty, text(row.child->name));
        below->setToolTipsVisible(true);
        connect(below, &QMenu::aboutToShow, this, [this, below] { open(below); });
        place->addAction(below->menuAction());
        return below->menuAction();
    }
    auto* action = new QAction(place);
    action->setSeparator(row.IsSeparator());
    place->addAction(action);
    const int index = static_cast<int>(place->actions().size()) - 1;
    const std::string name = place == bar_ ? name_ : place->property(nameProperty).toString().toStdString();
    connect(action, &QAction::triggered, this, [this, name, action, index] { chosen(name, action, index); });
    return action;
}

void MenuView::takeRow(QAction* action, const MenuRow& row, const std::string& key) {
    takeState(action, row);
    if (row.IsSeparator()) return;
    const QKeySequence keys = keyOf(row);
    const std::string written = keys.toString().toStdString();
    const bool real = !keys.isEmpty() && !row.child && !(row.flags & MenuRow_KeyOnlyShown) &&
                      keys_.try_emplace(written, key).first->second == key;
    action->setText(text(real && !row.label.empty() ? row.label : row.displayLabel));
    if (!row.child) action->setShortcut(real ? keys : QKeySequence());
}

void MenuView::open(QMenu* menu) {
    show(menu, menu->property(nameProperty).toString().toStdString(), true, 1);
}

void MenuView::chosen(const std::string& name, QAction* action, int index) {
    const std::string body = action->data().toString().toStdString();
    const MenuResource* menu = menus_.Find(name, false);
    const auto at = static_cast<size_t>(index);
    const MenuCallback callback = chosen_;
    if (menu && at < menu->rows.size() && menu->rows[at].body == body)
        MenuRegistry::Run(menu->rows[at], callback);
    else if (callback)
        callback(body);
}

QMenuBar* menu_MakeBar(DialogModel& model) {
    const DialogDescription& window = model.description();
    for (const DialogItem& item : window.items) {
        if (item.kind != DialogKind::MenuLine) continue;
        const std::string& named = item.text.empty() ? item.name : item.text;
        const MenuResource* menu = menu_Registry().Find(named, false);
        if (!menu) menu = menu_Registry().Find(window.name, true);
        if (!menu) return nullptr;
        auto* bar = new QMenuBar;
        new MenuView(bar, menu->name, {}, [&model](const std::string& body) { model.menu(body); });
        return bar;
    }
    return nullptr;
}

void menu_FillPopUp(QMenu& menu, MenuResource& resource, const std::string& title,
                    const MenuCallback& chosen) {
    if (!title.empty()) {
        QAction* head = menu.addAction(text(menu_PlainLabel(title)));
        head->setEnabled(false);
        menu.addSeparator();
    }
    for (const MenuRow& row : resource.rows) {
        QAction* action = row.child ? menu.addMenu(QString())->menuAction() : menu.addAction(QString());
        action->setSeparator(row.IsSeparator());
        takeState(action, row);
        action->setText(text(row.displayLabel));
        if (row.child)
            menu_FillPopUp(*action->menu<QMenu*>(), *row.child, "", chosen);
        else
            QObject::connect(action, &QAction::triggered, [row, chosen] { MenuRegistry::Run(row, chosen); });
    }
}

void menu_InstallPopUps(MenuRegistry& menus) {
    menus.trackPopUp = [](MenuResource& resource, void* window, int x, int y, const MenuCallback& chosen) {
        QMenu menu(static_cast<QWidget*>(window));
        menu_FillPopUp(menu, resource, "", chosen);
        const Gate::Token open = gate_Begin(GateWork::ContextMenu);
        menu.exec(x == -1 && y == -1 ? QCursor::pos() : QPoint(x, y));
    };
}
