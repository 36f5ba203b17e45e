#include "chronoweave/qt/tool_bar.h"

#include <QAction>
#include <QIcon>
#include <QKeyEvent>
#include <QToolButton>

#include "windlib/icons.h"

namespace {

constexpr int iconSide = 20;  // logical pixels

QIcon iconOf(const char* name) {
    const IconHandle icon = icon_Find(name);
    return icon == NoIcon ? QIcon()
                          : QIcon(QString::fromStdString(icon_Table()[static_cast<size_t>(icon)].path));
}

}  // namespace

ToolBarView::ToolBarView(const std::function<void(const std::string&)>& run,
                         std::function<void(const std::string&)> help)
    : help_(std::move(help)) {
    setIconSize(QSize(iconSide, iconSide));
    for (const laToolButton& button : laMenus_ToolBar()) {
        if (button.IsGap()) {
            actions_.push_back(addSeparator());
            continue;
        }
        QAction* action = addAction(iconOf(button.row().icon), QString::fromStdString(button.ToolTip()));
        action->setIconText(QString::fromUtf8(button.text));
        action->setToolTip(QString::fromStdString(button.ToolTip()));
        action->setCheckable(button.toggles);
        connect(action, &QAction::triggered, this, [run, command = button.command] { run(command); });
        actions_.push_back(action);
        QWidget* made = widgetForAction(action);
        made->setObjectName(QString::fromUtf8(button.name));
        made->setAccessibleName(QString::fromStdString(button.ToolTip()));
        made->setAccessibleDescription(QString::fromStdString(button.LongHelp()));
        made->setFocusPolicy(Qt::TabFocus);
        made->installEventFilter(this);
    }
}

void ToolBarView::showIcons(bool icons) {
    setToolButtonStyle(icons ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextOnly);
}

void ToolBarView::take(const std::vector<laButtonState>& states) {
    for (size_t i = 0; i < std::min(states.size(), actions_.size()); ++i) {
        if (actions_[i]->isSeparator()) continue;
        actions_[i]->setEnabled(states[i].enabled);
        actions_[i]->setVisible(states[i].visible);
        if (actions_[i]->isCheckable()) actions_[i]->setChecked(states[i].pressed);
    }
}

bool ToolBarView::eventFilter(QObject* watched, QEvent* event) {
    const auto* button = qobject_cast<QWidget*>(watched);
    if (button && (event->type() == QEvent::Enter || event->type() == QEvent::FocusIn))
        help_(button->accessibleDescription().toStdString());
    else if (event->type() == QEvent::Leave || event->type() == QEvent::FocusOut)
        help_("");
    if (event->type() == QEvent::KeyPress) {  // the arrows walk along the bar
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Left || key == Qt::Key_Right) return focusNextPrevChild(key == Qt::Key_Right);
    }
    return QToolBar::eventFilter(watched, event);
}
