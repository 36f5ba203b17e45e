#include "windlib/qt/dialog_view.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QEventLoop>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>

#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/msl_view.h"
#include "windlib/qt/qt_surface.h"

namespace {

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

// A strip that the logic paints.
class PaintedStrip : public QWidget {
  public:
    PaintedStrip(DialogModel& model, std::string name) : model_(model), name_(std::move(name)) {}

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const SurfaceColours colours = surfaceColours(palette());
        painter.fillRect(rect(), QColor::fromRgb(colours.background));
        QtSurface surface(painter, nullptr, width(), height(), colours);
        if (const DialogModel::Painter paint = model_.painter(name_)) paint(surface, width(), height());
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton) return;
        const QPoint at = event->position().toPoint();
        model_.picture(name_, at.x(), at.y());
    }

  private:
    DialogModel& model_;
    std::string name_;
};

// An arrow down, as pull-downs have it.
QIcon pullDownIcon(const QPalette& palette) {
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette.color(QPalette::Text), 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygon({{8, 12}, {16, 20}, {24, 12}}));
    return QIcon(pixmap);
}

}  // namespace

DialogView::DialogView(DialogModel& model, Factory factory, QWidget* parent)
    : QWidget(parent), model_(model), factory_(std::move(factory)) {
    setProperty(dialogView_HelpKey, text(model_.description().helpKey));
    setProperty(dialogView_WindowName, text(model_.description().name));
    for (const DialogItem& item : model_.description().items) {
        if (!item.part.empty() || item.kind == DialogKind::MenuLine) continue;
        QWidget* made = factory_ ? factory_(item) : nullptr;
        if (!made) made = make(item);
        made->setParent(this);
        made->setObjectName(text(item.name));
        made->setAccessibleName(text(dialog_AccessibleName(item)));
        made->setToolTip(text(item.tip).toHtmlEscaped());
        widgets_[item.name] = made;
    }
    for (const DialogItem& item : model_.description().items)
        if (auto* label = qobject_cast<QLabel*>(widget(item.name)); label && !item.buddy.empty())
            label->setBuddy(widget(item.buddy));
    orderFocus();
    for (const auto& [name, made] : widgets_) refresh(name);
    layout_ = std::make_unique<DialogLayout>(model_.description(), metrics());
    if (!layout_->read()) gen_error("%s", layout_->read().text().c_str());
    for (const auto& [name, made] : widgets_)
        layout_->setText(dialog_Number(model_.description(), name), model_.shownText(name));
    place(layout_->open());
    wanted_ = QSize(layout_->width(), layout_->height());
    model_.itemChanged = [this](const std::string& name) {
        refresh(name);
        layout_->setText(dialog_Number(model_.description(), name), model_.shownText(name));
        place(layout_->solve());
    };
}

// The keyboard goes through the items in their order; within a set of choices through these.
void DialogView::orderFocus() {
    QWidget* before = nullptr;
    for (const DialogItem& item : model_.description().items) {
        QWidget* made = widget(item.name);
        if (!made) continue;
        const QList<QRadioButton*> choices = made->findChildren<QRadioButton*>();
        QList<QWidget*> stops(choices.begin(), choices.end());
        if (stops.isEmpty()) stops = {made};
        for (QWidget* stop : stops) {
            if (before) setTabOrder(before, stop);
            before = stop;
        }
    }
}

QWidget* DialogView::widget(const std::string& name) const {
    const auto found = widgets_.find(name);
    return found == widgets_.end() ? nullptr : found->second;
}

DialogMetrics DialogView::metrics() const {
    const QFontMetrics font = fontMetrics();
    const auto width = [font](const char* letters) { return font.horizontalAdvance(QLatin1String(letters)); };
    DialogMetrics metrics;
    metrics.font = {width("nn") - width("n"), std::max(width("M"), width("W")), font.lineSpacing(),
                    font.ascent()};
    metrics.textWidth = [font](std::string_view line) {
        return font.horizontalAdvance(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
    };
    metrics.menuInside = false;
    metrics.wish = [this](const DialogItem& item, const std::string&) -> std::optional<PlacerSize> {
        const bool knowsBetter = item.kind == DialogKind::Button || item.kind == DialogKind::CheckBox ||
                                 item.kind == DialogKind::ButtonSet || item.kind == DialogKind::PullDown ||
                                 item.kind == DialogKind::ToolBar;
        const QWidget* made = widget(item.name);
        if (!knowsBetter || !made) return std::nullopt;
        return PlacerSize{made->sizeHint().width(), made->sizeHint().height()};
    };
    return metrics;
}

// A search by typing shows in the message line, whose text comes back behind it.
QWidget* DialogView::makeList(const DialogItem& item) {
    auto* list = new MslView(model_.list(item.name));
    const auto& items = model_.description().items;
    if (std::none_of(items.begin(), items.end(),
                     [](const DialogItem& each) { return each.kind == DialogKind::StatusText; }))
        return list;
    list->footer = [this, before = std::string(), shown = std::string()](const std::string& text) mutable {
        const bool ours = !shown.empty() && model_.message() == shown;
        if (!ours) before = model_.message();
        if (ours || !text.empty()) model_.setMessage(text.empty() ? before : text);
        shown = text;
        return true;
    };
    return list;
}

QWidget* DialogView::makeChoices(const DialogItem& item) {
    auto* set = new QWidget;
    auto* column = new QVBoxLayout(set);
    column->setContentsMargins(0, 0, 0, 0);
    auto* group = new QButtonGroup(set);
    for (size_t i = 0; i < item.list.size(); ++i) {
        auto* choice = new QRadioButton(text(item.list[i]));
        choice->setObjectName(
            text(i < item.choiceNames.size() ? item.choiceNames[i] : item.name + '_' + std::to_string(i)));
        choice->setAccessibleName(text(dialog_PlainText(item.list[i])));
        group->addButton(choice, static_cast<int>(i));
        column->addWidget(choice);
    }
    connect(group, &QButtonGroup::idClicked, this,
            [this, name = item.name](int id) { model_.choose(name, id); });
    return set;
}

// What the field offers is shown by a button at its end, and by Down.
void DialogView::offer(QLineEdit& field, const std::string& name) {
    QAction* const shows = field.addAction(pullDownIcon(palette()), QLineEdit::TrailingPosition);
    shows->setObjectName(text(name + "_PullDown"));
    shows->setToolTip(QStringLiteral("Show what can be entered"));
    shows->setShortcut(Qt::Key_Down);
    shows->setShortcutContext(Qt::WidgetShortcut);
    connect(shows, &QAction::triggered, this, [this, name] { model_.pullDown(name); });
}

QWidget* DialogView::makeField(const DialogItem& item) {
    const std::string name = item.name;
    auto* field = new QLineEdit;
    field->setReadOnly(item.flags & Dialog_ReadOnly);
    field->setPlaceholderText(text(item.hint.empty() ? item.tip : item.hint));
    if (item.flags & Dialog_PullsDown) offer(*field, name);
    connect(field, &QLineEdit::textEdited, this,
            [this, name](const QString& typed) { model_.edit(name, typed.toStdString()); });
    connect(field, &QLineEdit::editingFinished, this, [this, field, name] {
        model_.commit(name);
        if (!field->hasFocus()) field->home(false);
    });
    return field;
}

QWidget* DialogView::make(const DialogItem& item) {
    const std::string name = item.name;
    switch (item.kind) {
        case DialogKind::Button: {
            auto* button = new QPushButton(text(item.text));
            button->setDefault(item.flags & Dialog_Default);
            button->setAutoDefault(false);
            connect(button, &QPushButton::clicked, this, [this, name] { model_.press(name); });
            return button;
        }
        case DialogKind::CheckBox: {
            auto* box = new QCheckBox(text(item.text));
            connect(box, &QCheckBox::clicked, this, [this, name](bool on) { model_.check(name, on); });
            return box;
        }
        case DialogKind::TextField:
            return makeField(item);
        case DialogKind::PullDown: {
            auto* choices = new QComboBox;
            connect(choices, &QComboBox::activated, this,
                    [this, name](int choice) { model_.choose(name, choice); });
            return choices;
        }
        case DialogKind::List:
            return makeList(item);
        case DialogKind::ButtonSet:
            return makeChoices(item);
        case DialogKind::Strip:
            return new PaintedStrip(model_, name);
        case DialogKind::ProgressBar:
            return new QProgressBar;
        case DialogKind::Frame: {
            auto* frame = new QFrame;
            frame->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
            frame->lower();
            return frame;
        }
        case DialogKind::Label:
        case DialogKind::StatusText:
        // Whoever shows a window with these makes them; a label stands in.
        case DialogKind::Graph:
        case DialogKind::MenuLine:
        case DialogKind::ToolBar:
        case DialogKind::Divider:
            break;
    }
    auto* label = new QLabel(text(item.text));
    label->setMinimumWidth(1);
    return label;
}

void DialogView::refresh(const std::string& name) {
    QWidget* made = widget(name);
    if (!made) return;
    const DialogItemState& state = model_.item(name);
    const QSignalBlocker quiet(made);
    made->setEnabled(state.enabled);
    made->setVisible(state.visible);
    const QString shown = text(model_.shownText(name));
    if (auto* label = qobject_cast<QLabel*>(made)) {
        label->setText(shown);
    } else if (auto* field = qobject_cast<QLineEdit*>(made)) {
        if (field->text() != shown) field->setText(shown);
        if (!field->hasFocus()) field->home(false);  // of what is too long its first digits are seen
        field->setReadOnly(state.readOnly);
    } else if (auto* button = qobject_cast<QAbstractButton*>(made)) {
        button->setText(shown);
        if (button->isCheckable()) button->setChecked(state.checked);
    } else if (auto* bar = qobject_cast<QProgressBar*>(made)) {
        bar->setRange(0, state.progressEnd);
        bar->setValue(state.progress);
    } else if (auto* choices = qobject_cast<QComboBox*>(made)) {
        choices->clear();
        for (const std::string& choice : state.choices) choices->addItem(text(choice));
        choices->setCurrentIndex(state.choice);
    } else if (auto* group = made->findChild<QButtonGroup*>()) {
        // None of them is something that only the logic can ask for.
        if (state.choice < 0 && group->checkedButton()) {
            group->setExclusive(false);
            group->checkedButton()->setChecked(false);
            group->setExclusive(true);
        }
        if (auto* choice = group->button(state.choice)) choice->setChecked(true);
        for (QAbstractButton* choice : group->buttons())
            choice->setEnabled(!state.disabledChoices.contains(group->id(choice)));
    }
    made->update();
}

void DialogView::place(const PlacerOutcome& outcome) {
    if (!outcome.check.empty()) {
        gen_error("%s: %s", placer_CheckFile, outcome.check.c_str());
        return;
    }
    setMinimumSize(outcome.minimum.width, outcome.minimum.height);
    const auto& items = model_.description().items;
    for (size_t i = 0; i < items.size(); ++i) {
        QWidget* made = widget(items[i].name);
        if (!made) continue;
        const DialogRect rect = layout_->rect(static_cast<int>(i) + 1);
        made->setGeometry(rect.x, rect.y, rect.width, rect.height);
    }
}

void DialogView::resizeEvent(QResizeEvent*) {
    place(layout_->resize(width(), height()));
}

void DialogView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() != QEvent::FontChange || !layout_) return;
    layout_->setMetrics(metrics());
    const PlacerOutcome outcome = layout_->open();
    wanted_ = QSize(layout_->width(), layout_->height());
    place(outcome);  // a new least size may resize this at once
    // A window that is as big as its items follows them; a main window stays as the user made it.
    if (qobject_cast<QMainWindow*>(window()))
        place(layout_->resize(width(), height()));
    else
        window()->resize(window()->size() - size() + wanted_);
}

void DialogView::focusFirst() {
    for (const DialogItem& item : model_.description().items) {
        QWidget* first = widget(item.name);
        if (!first || !first->isEnabled() || !(first->focusPolicy() & Qt::TabFocus)) continue;
        return first->setFocus();
    }
}

bool DialogView::takeKey(const QKeyEvent& event) {
    const QWidget* focus = focusWidget();
    const std::string name = focus ? focus->objectName().toStdString() : std::string();
    if (event.key() == Qt::Key_Escape)
        model_.key(DialogKey::Escape, name);
    else if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter)
        model_.key(DialogKey::Enter, name);
    else
        return false;
    return true;
}

namespace {

// The frame of a dialog: Enter and Escape go to the model.
class DialogFrame : public QDialog {
  public:
    DialogFrame(QWidget* parent, DialogModel& model) : QDialog(parent), model_(model) {
        setObjectName(text(model.description().name));
        setAccessibleName(text(model.title()));
        setWindowTitle(text(model.title()));
        auto* whole = new QVBoxLayout(this);
        whole->setContentsMargins(0, 0, 0, 0);
        view_ = new DialogView(model);
        whole->addWidget(view_);
        resize(view_->sizeHint());
        model.titleChanged = [this, &model] { setWindowTitle(text(model.title())); };
        model.closed = [this] { accept(); };
        view_->focusFirst();
    }
    ~DialogFrame() override {
        model_.itemChanged = {};
        model_.titleChanged = model_.closed = {};
    }
    void reject() override { model_.dismiss(); }

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (!view_->takeKey(*event)) QDialog::keyPressEvent(event);
    }

  private:
    DialogModel& model_;
    DialogView* view_;
};

}  // namespace

int dialog_Run(QWidget* parent, DialogModel& model) {
    if (model.isClosed()) return model.result();
    const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
    const QPointer<DialogFrame> frame = new DialogFrame(parent, model);
    // QDialog::exec would wait on where keys that came before end the dialog while it comes up.
    QEventLoop loop;
    bool over = false;
    const auto end = [&] {
        over = true;
        loop.quit();
    };
    QObject::connect(frame, &QDialog::finished, &loop, end);
    QObject::connect(frame, &QObject::destroyed, &loop, end);
    frame->setWindowModality(Qt::ApplicationModal);
    frame->show();
    if (!over) loop.exec(QEventLoop::DialogExec);
    // The dialog goes with the window that it stands over, unasked; the canvas may be gone then.
    if (!frame) return Dialog_Dismissed;
    if (!model.isClosed()) model.close(Dialog_Dismissed);
    delete frame.data();
    return model.result();
}
