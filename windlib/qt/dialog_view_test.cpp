// Dialogs that wait for their answer, on the offscreen platform.
#include "windlib/qt/dialog_view.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QTimer>
#include <functional>

#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_host.h"

namespace {

DialogDescription one_button() {
    DialogDescription description;
    description.name = "Question";
    description.items = {
        {.name = "cancel", .kind = DialogKind::Button, .text = "Cancel", .flags = Dialog_Cancel}};
    return description;
}

// Does something when a dialog or a menu comes up, inside of the call that shows it.
class AtShow : public QObject {
  public:
    explicit AtShow(std::function<void(QWidget&)> act) : act_(std::move(act)) {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override {
        const bool ours = qobject_cast<QDialog*>(object) || qobject_cast<QMenu*>(object);
        if (event->type() == QEvent::Show && ours) act_(static_cast<QWidget&>(*object));
        return false;
    }

  private:
    std::function<void(QWidget&)> act_;
};

// A dialog that waits although it is over is ended from outside, and said.
int run(DialogModel& model) {
    model.onPress = [&model](const std::string&) { model.close(Dialog_Dismissed); };
    QWidget parent;
    parent.show();
    QTimer late;
    late.setSingleShot(true);
    QObject::connect(&late, &QTimer::timeout, [] {
        ADD_FAILURE() << "the dialog waits on";
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* dialog = qobject_cast<QDialog*>(window)) dialog->done(QDialog::Rejected), delete dialog;
    });
    late.start(5000);
    return dialog_Run(&parent, model);
}

class DialogRun : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
};

TEST_F(DialogRun, EndsThoughItIsClosedWhileItComesUp) {
    DialogModel model(one_button());
    const AtShow close([&model](QWidget&) { model.dismiss(); });
    EXPECT_EQ(run(model), Dialog_Dismissed);
}

TEST_F(DialogRun, EndsWithTheWindowThatItStandsOver) {
    DialogModel model(one_button());
    const AtShow later([](QWidget&) {
        QTimer::singleShot(0, [] {
            for (QWidget* window : QApplication::topLevelWidgets())
                if (auto* dialog = qobject_cast<QDialog*>(window)) delete dialog;
        });
    });
    EXPECT_EQ(run(model), Dialog_Dismissed);
}

TEST_F(DialogRun, AMenuEndsThoughItIsClosedWhileItComesUp) {
    QWidget parent;
    parent.show();
    QtDialogHost host(&parent, nullptr);
    host.popUpShown = [](QMenu&) {};
    const AtShow close([](QWidget& menu) { menu.close(); });
    QTimer late;
    late.setSingleShot(true);
    QObject::connect(&late, &QTimer::timeout, [] {
        ADD_FAILURE() << "the menu waits on";
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* menu = qobject_cast<QMenu*>(window)) menu->show(), menu->hide();
    });
    late.start(5000);
    EXPECT_EQ(host.popUpMenu("Title", {{"One"}, {"Two"}}), -1);
}

}  // namespace
