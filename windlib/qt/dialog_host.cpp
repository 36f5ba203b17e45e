#include "windlib/qt/dialog_host.h"

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QDateTime>
#include <QEventLoop>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/settings.h"
#include "windlib/qt/dialog_view.h"
#include "windlib/qt/file_chooser.h"
#include "windlib/qt/platform.h"
#include "windlib/qt/print_host.h"

namespace {

constexpr int pointerInside = 10;  // pixels from the corner of a window that is raised

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

std::string positionKey(const DialogModel& model) {
    const DialogDescription& described = model.description();
    return described.positionKey.empty() ? "Trvgui." + described.name : described.positionKey;
}

// What opens upon its parent stays over it; the window system then takes it for a dialog.
Qt::WindowFlags kind_of(const DialogDescription& described) {
    if (described.offset < 0) return Qt::Window;
    return Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint |
           Qt::WindowCloseButtonHint;
}

}  // namespace

// A window beside the others: the items of its model under a menu bar, if it has one.
class QtDialogHost::Window : public QWidget {
  public:
    Window(QWidget* parent, DialogModel& model)
        : QWidget(parent, kind_of(model.description())), model_(model) {
        setObjectName(text(model.description().name));
        setAccessibleName(text(model.title()));
        setWindowTitle(text(model.title()));
        whole_ = new QVBoxLayout(this);
        whole_->setContentsMargins(0, 0, 0, 0);
        view_ = new DialogView(model);
        whole_->addWidget(view_);
        resize(view_->sizeHint());
        model.titleChanged = [this] {
            setWindowTitle(text(model_.title()));
            setAccessibleName(text(model_.title()));
        };
        view_->focusFirst();
    }
    void setMenuBar(QMenuBar* bar, const DialogItem& item) {
        bar->setObjectName(text(item.name));
        bar->setAccessibleName(text(dialog_AccessibleName(item)));
        whole_->setMenuBar(bar);
        resize(width(), view_->sizeHint().height() + bar->sizeHint().height());
    }

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (!view_->takeKey(*event)) QWidget::keyPressEvent(event);
    }
    // The logic may keep the window open. Afterwards nothing may touch it: its model can be gone.
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        if (!model_.isClosed()) model_.dismiss();
    }

  private:
    DialogModel& model_;
    QVBoxLayout* whole_;
    DialogView* view_;
};

struct QtDialogHost::Shown {
    std::unique_ptr<DialogModel> model;
    QPointer<Window> window;  // the window around may be gone before the host
};

// While one lives, a call of the logic waits for the user, and may be on the way through any model.
class QtDialogHost::Waiting {
  public:
    explicit Waiting(QtDialogHost& host) : host_(host), alive_(host.alive_) { ++host_.waiting_; }
    ~Waiting() {
        if (alive_.expired()) return;
        --host_.waiting_;
        host_.reapSoon();
    }

  private:
    QtDialogHost& host_;
    std::weak_ptr<bool> alive_;
};

QtDialogHost::QtDialogHost(QWidget* over, SettingsManager* settings)
    : over_(over),
      settings_(settings),
      printer_(std::make_unique<QtPrintHost>([this] { return parentOfDialogs(); },
                                             [this] { return std::make_shared<Waiting>(*this); }, settings)) {
}

PrintHost* QtDialogHost::printHost() {
    return printer_.get();
}

QtDialogHost::~QtDialogHost() {
    alive_.reset();
    // A window that closes may close others.
    for (size_t i = 0; i < shown_.size(); ++i) {
        DialogModel& model = *shown_[i]->model;
        if (!model.isClosed()) model.dismiss();
        if (!model.isClosed()) model.close(Dialog_Dismissed);
    }
    for (const auto& shown : shown_) {
        shown->model->itemChanged = {};
        shown->model->titleChanged = {};
        delete shown->window.data();
    }
}

QWidget* QtDialogHost::parentOfDialogs() const {
    QWidget* active = QApplication::activeWindow();
    for (const auto& shown : shown_)
        if (active && shown->window == active && !shown->model->isClosed()) return active;
    return over_ && over_->isVisible() ? over_ : nullptr;
}

int QtDialogHost::run(DialogModel& model) {
    const Waiting waiting(*this);
    return dialog_Run(parentOfDialogs(), model);
}

DialogModel& QtDialogHost::open(std::unique_ptr<DialogModel> opened) {
    shown_.push_back(std::make_unique<Shown>());
    Shown* shown = shown_.back().get();
    shown->model = std::move(opened);
    DialogModel& model = *shown->model;
    shown->window = new Window(over_, model);
    model.closed = [this, shown] { closed(*shown); };
    for (const DialogItem& item : model.description().items)
        if (item.kind == DialogKind::MenuLine && makeMenuBar)
            if (QMenuBar* bar = makeMenuBar(model.description().name, model))
                shown->window->setMenuBar(bar, item);
    if (const int offset = model.description().offset; offset >= 0 && over_)
        shown->window->move(over_->pos() + QPoint(offset, offset));
    if (settings_)
        if (const auto position = settings_->Position(positionKey(model))) {
            const WindowRectangle& at = position->absolute;
            shown->window->setGeometry(at.x, at.y, at.width, at.height);
        }
    shown->window->show();
    return model;
}

namespace {

// What waits over a window that goes would wait unseen.
void endWaiting(QWidget& window) {
    const QList<QWidget*> waiting = window.findChildren<QWidget*>();
    for (auto at = waiting.rbegin(); at != waiting.rend(); ++at) {
        if (auto* dialog = qobject_cast<QDialog*>(*at); dialog && dialog->isVisible()) {
            dialog->reject();
            if (dialog->isVisible()) dialog->done(QDialog::Rejected);
        } else if (auto* menu = qobject_cast<QMenu*>(*at); menu && menu->isVisible()) {
            menu->close();
        }
    }
}

}  // namespace

// The window goes from the screen at once; it and the model live on until nobody is on the way through them.
void QtDialogHost::closed(Shown& shown) {
    DialogModel& model = *shown.model;
    model.itemChanged = {};
    model.titleChanged = {};
    if (!shown.window) return;
    if (settings_) {
        const QRect at = shown.window->geometry();
        const QPoint parent = over_ ? over_->pos() : QPoint();
        WindowPosition position;
        position.timestamp = QDateTime::currentSecsSinceEpoch();
        position.absolute = {at.x(), at.y(), at.width(), at.height()};
        position.toParent = {at.x() - parent.x(), at.y() - parent.y(), at.width(), at.height()};
        settings_->SetPosition(positionKey(model), position);
    }
    endWaiting(*shown.window);
    shown.window->hide();
    reapSoon();
}

void QtDialogHost::reapSoon() {
    QTimer::singleShot(0, qApp, [this, alive = std::weak_ptr<bool>(alive_)] {
        if (!alive.expired()) reap();
    });
}

void QtDialogHost::reap() {
    if (waiting_ > 0) return;  // it is done when the wait is over
    const auto gone = std::stable_partition(shown_.begin(), shown_.end(),
                                            [](const auto& shown) { return !shown->model->isClosed(); });
    std::vector<std::unique_ptr<Shown>> closedOnes(std::make_move_iterator(gone),
                                                   std::make_move_iterator(shown_.end()));
    shown_.erase(gone, shown_.end());
    for (const auto& shown : closedOnes) delete shown->window.data();
}

QWidget* QtDialogHost::windowOf(const DialogModel& model) const {
    for (const auto& shown : shown_)
        if (shown->model.get() == &model) return shown->window;
    return nullptr;
}

size_t QtDialogHost::openWindows() const {
    return static_cast<size_t>(std::count_if(shown_.begin(), shown_.end(),
                                             [](const auto& shown) { return !shown->model->isClosed(); }));
}

void QtDialogHost::raise(DialogModel& model) {
    QWidget* window = windowOf(model);
    if (!window || model.isClosed()) return;
    if (window->isMinimized()) window->showNormal();
    window->raise();
    window->activateWindow();
    QCursor::setPos(window->mapToGlobal(QPoint(pointerInside, pointerInside)));
}

void QtDialogHost::message(const std::string& said) {
    const Waiting waiting(*this);
    platform_MessageBox(parentOfDialogs(), said);
}

bool QtDialogHost::ask(const std::string& question) {
    if (platform_IsAutomatic()) {
        if (answer) return answer(question);
        gen_warning("nobody is there to answer, taken as no: %s", question.c_str());
        return false;
    }
    const Waiting waiting(*this);
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(), text(question),
                    QMessageBox::Yes | QMessageBox::No, parentOfDialogs());
    box.setObjectName(QStringLiteral("Ask"));
    box.setAccessibleName(text(question));
    box.setTextFormat(Qt::PlainText);
    return box.exec() == QMessageBox::Yes;
}

namespace {

// Where a menu opens: at the pointer, or at the item with the keyboard when the pointer is elsewhere.
QPoint menuPlace() {
    const QWidget* window = QApplication::activeWindow();
    const QWidget* focus = QApplication::focusWidget();
    const QPoint pointer = QCursor::pos();
    if (!window || !focus || window->geometry().contains(pointer)) return pointer;
    return focus->mapToGlobal(focus->rect().center());
}

void fillMenu(QMenu& menu, const std::string& title, const std::vector<PopUpRow>& rows) {
    menu.setObjectName(QStringLiteral("PopUp"));
    menu.setAccessibleName(text(title));
    menu.setToolTipsVisible(true);
    if (!title.empty()) menu.addSection(text(title));
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].text == popUpSeparator) {
            menu.addSeparator();
            continue;
        }
        const std::string key = rows[i].key.empty() ? "" : "\t" + rows[i].key;
        QAction* action = menu.addAction(text(rows[i].text + key));
        action->setEnabled(rows[i].enabled);
        action->setToolTip(text(rows[i].tip));
        action->setCheckable(rows[i].checked.has_value());
        action->setChecked(rows[i].checked.value_or(false));
        action->setData(static_cast<int>(i));
    }
}

}  // namespace

int QtDialogHost::popUpMenu(const std::string& title, const std::vector<PopUpRow>& rows) {
    if (rows.empty() || (platform_IsAutomatic() && !popUpShown)) return -1;
    const Waiting waiting(*this);
    QMenu menu(parentOfDialogs());
    fillMenu(menu, title, rows);
    const Gate::Token open = gate_Begin(GateWork::ContextMenu);
    if (popUpShown) popUpShown(menu);
    // QMenu::exec would wait on where keys that came before close the menu while it comes up.
    const QAction* chosen = nullptr;
    QEventLoop loop;
    QObject::connect(&menu, &QMenu::triggered, &loop, [&](const QAction* action) { chosen = action; });
    QObject::connect(&menu, &QMenu::aboutToHide, &loop, &QEventLoop::quit);
    menu.popup(menuPlace());
    if (menu.isVisible()) loop.exec();
    return chosen && chosen->data().isValid() ? chosen->data().toInt() : -1;
}

std::optional<uint32_t> QtDialogHost::chooseColour(const std::string& title, uint32_t start) {
    if (platform_IsAutomatic()) return std::nullopt;
    const Waiting waiting(*this);
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    const QColor chosen =
        QColorDialog::getColor(QColor::fromRgb(start & 0xFFFFFF), parentOfDialogs(), text(title));
    if (!chosen.isValid()) return std::nullopt;
    return chosen.rgb() & 0xFFFFFF;
}

std::string QtDialogHost::chooseSaveFile(const std::string& title, const std::string& suggested,
                                         const std::string& filter) {
    if (platform_IsAutomatic()) return {};
    const Waiting waiting(*this);
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    return QFileDialog::getSaveFileName(parentOfDialogs(), text(title), text(suggested), text(filter))
        .toStdString();
}

std::vector<std::string> QtDialogHost::chooseFiles(const FileQuestion& question) {
    if (platform_IsAutomatic()) return filesChosen ? filesChosen(question) : std::vector<std::string>();
    const Waiting waiting(*this);
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    return files_Choose(parentOfDialogs(), settings_, question);
}

std::string QtDialogHost::lastChoice(const std::string& name) {
    return settings_ ? settings_->Choice(name) : std::string();
}

void QtDialogHost::keepChoice(const std::string& name, const std::string& chosen) {
    if (settings_) settings_->SetChoice(name, chosen);
}

void QtDialogHost::copyText(const std::string& copied) {
    QApplication::clipboard()->setText(text(copied));
}

void QtDialogHost::beep() {
    platform_Beep();
}

void QtDialogHost::showBusy(bool busy) {
    waiting_ += busy ? 1 : -1;
    if (setBusy)
        setBusy(busy);
    else
        platform_SetBusy(busy);
    if (!busy) reapSoon();
}
