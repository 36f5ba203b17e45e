// Menus of the registry (windlib/menu/menu.h) on screen: a bar of native menus that follows redefinitions,
// and pop-ups. Chosen rows go to the callback by their body. An accelerator that is a key works all over the
// window; one that is none, or that another row of the bar has, is only shown.
#pragma once

#include <QObject>
#include <map>
#include <memory>
#include <string>

#include "windlib/menu/menu.h"

class DialogModel;
class QAction;
class QMenu;
class QMenuBar;

// Called before a menu opens, by its name: may enable, check, label or redefine. May be empty.
using MenuHook = std::function<void(const std::string& name)>;

class MenuView : public QObject {
  public:
    // Shows the menu of this name on the bar, which owns the view from then on.
    MenuView(QMenuBar* bar, std::string name, MenuHook hook, MenuCallback chosen,
             MenuRegistry& menus = menu_Registry());
    ~MenuView() override;

    // Runs the hook on all menus of the tree and takes over what it changed, so that keys of rows that can't
    // be used do nothing.
    void refresh();

  private:
    void showAll(bool withHook);
    void show(QWidget* place, const std::string& name, bool withHook, int depth);
    void open(QMenu* menu);
    QAction* makeRow(QWidget* place, const MenuRow& row);
    void takeRow(QAction* action, const MenuRow& row, const std::string& key);
    void chosen(const std::string& name, QAction* action, int index);

    QMenuBar* bar_;
    std::string name_;
    MenuHook hook_;
    MenuCallback chosen_;
    MenuRegistry& menus_;
    MenuUser user_;
    std::map<std::string, std::string> keys_;  // which row has a key
};

// The menu bar of a window whose description has a MenuLine item: the registry's menu of that item's name, or
// else of the description's. Rows go to DialogModel::menu. Null when there is no such item or menu.
QMenuBar* menu_MakeBar(DialogModel& model);
// Fills a menu with the rows of a resource under a title, which may be empty.
void menu_FillPopUp(QMenu& menu, MenuResource& resource, const std::string& title,
                    const MenuCallback& chosen);
// Lets the registry show pop-ups.
void menu_InstallPopUps(MenuRegistry& menus);
