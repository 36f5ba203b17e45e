// Calls that wait for their answer among windows, on the offscreen platform.
#include "windlib/qt/qt_wait_windows.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QDialog>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/socket_listener.h"
#include "shared/stp_transport/transport_testing.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/event_service.h"
#include "windlib/waits/windlib_retry_handlers.h"

using namespace std::chrono_literals;

namespace {

// Writes down what reaches it.
class Pad : public QWidget {
  public:
    std::string took;
    int painted = 0;

  protected:
    void paintEvent(QPaintEvent*) override { ++painted; }
    void mousePressEvent(QMouseEvent*) override { took += "press "; }
    void mouseMoveEvent(QMouseEvent* event) override {
        took += "move" + std::to_string(event->pos().x()) + ' ';
    }
    void keyPressEvent(QKeyEvent* event) override { took += "key" + event->text().toStdString() + ' '; }
};

// A window, and a call over a socket whose far end answers when a test says so.
class Waits : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    void SetUp() override {
        int ends[2];
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        ASSERT_TRUE(transport->bindFD(ends[0]));
        far = FileDescriptor(ends[1]);
        pad.setMouseTracking(true);
        pad.show();
        QCoreApplication::processEvents();
        pad.painted = 0;
    }
    uint32_t request() {
        STPMessage message = transport->newRequest(1, 2, STPKind::Text, 0, stpWantsReply | stpOwnContextOnly);
        return transport->sendMessage(message, nullptr);
    }
    void answer(uint32_t sequence) {
        const std::string packet = packet_Of(header_Reply(sequence, {0, 1, 1}));
        ASSERT_EQ(::send(far.number(), packet.data(), packet.size(), 0), ssize_t(packet.size()));
    }
    void after(std::chrono::milliseconds delay, std::function<void()> run) {
        events.tasks.Once(delay, EventTasks::Clock::now(), [run] { return run(), true; });
    }
    void key(int code, const QString& text = {}) {
        QCoreApplication::postEvent(&pad, new QKeyEvent(QEvent::KeyPress, code, Qt::NoModifier, text));
    }
    void mouse(QEvent::Type type, int x) {
        QCoreApplication::postEvent(
            &pad, new QMouseEvent(type, QPointF(x, 1), QPointF(x, 1), Qt::LeftButton, Qt::LeftButton, {}));
    }
    // Presses a button of the question as soon as it is there.
    void press(const char* button) {
        after(1ms, [this, button] {
            for (QWidget* window : QApplication::topLevelWidgets()) {
                const auto* const box = qobject_cast<QMessageBox*>(window);
                if (!box || !box->isVisible()) continue;
                words = box->text().toStdString();
                modal = box->isModal();
                return box->findChild<QPushButton*>(QLatin1String(button))->click();
            }
            press(button);
        });
    }

    QtEventService events;
    QtWaitWindows windows{events, QtWaitWindows::Questions::Modal};
    Ref<STPTransport> transport = ref_Make<STPTransport>();
    STPSocketListener listener{transport, events.watches, events.tasks};
    FileDescriptor far;
    Pad pad;
    std::string words;
    bool modal = false;
};

// Counts the rounds of a wait.
template <class Handler>
struct Counting : Handler {
    using Handler::Handler;
    int rounds = 0;
    void wait() override {
        ++rounds;
        Handler::wait();
    }
};

TEST_F(Waits, WindowsPaintWhatTheUserDoesIsHeldAndNothingSpins) {
    Counting<STPWindLibRetryHandler> retry(transport, windows, "Calling");
    const uint32_t sequence = request();
    pad.update();
    mouse(QEvent::MouseButtonPress, 3);
    mouse(QEvent::MouseMove, 4);
    mouse(QEvent::MouseMove, 5);
    key(Qt::Key_A, QStringLiteral("a"));
    after(60ms, [&] {
        EXPECT_GT(pad.painted, 0);
        EXPECT_EQ(pad.took, "");
        answer(sequence);
    });
    STPStatus status;
    EXPECT_NE(transport->awaitResponse(sequence, &retry, &status), nullptr) << status.text;
    EXPECT_LT(retry.rounds, 30);
    QCoreApplication::processEvents();
    EXPECT_EQ(pad.took, "move5 ");
}

TEST_F(Waits, EscapeAsksAndTheAnswerDecides) {
    STPWindLibRetryHandler retry(transport, windows, "Calling");
    uint32_t sequence = request();
    key(Qt::Key_Escape);
    press("goOn");
    after(60ms, [&] { answer(sequence); });
    STPStatus status;
    EXPECT_NE(transport->awaitResponse(sequence, &retry, &status), nullptr) << status.text;
    EXPECT_EQ(words, "Calling, Terminate Connection?");
    EXPECT_TRUE(modal);
    sequence = request();
    key(Qt::Key_Escape);
    press("stop");
    EXPECT_EQ(transport->awaitResponse(sequence, &retry, &status), nullptr);
    EXPECT_EQ(status.code, STPCode::TimeOut);
    EXPECT_TRUE(transport->bound());
    EXPECT_EQ(pad.took, "");
}

TEST_F(Waits, WithFullDispatchTheWindowsWorkAndEscapeStillStops) {
    STPWindLibEventProcessingRetryHandler retry(transport, windows, "Calling");
    const uint32_t sequence = request();
    QMenu menu;
    menu.addAction(QStringLiteral("row"));
    mouse(QEvent::MouseButtonPress, 3);
    key(Qt::Key_A, QStringLiteral("a"));
    after(10ms, [&] {
        menu.popup(QPoint(1, 1));
        testing_Key(menu, Qt::Key_Escape);  // is the menu's
        EXPECT_FALSE(menu.isVisible());
        EXPECT_FALSE(waitHandle_IsStopped(*retry.handle()));
        key(Qt::Key_Escape);
        press("stop");
    });
    STPStatus status;
    EXPECT_EQ(transport->awaitResponse(sequence, &retry, &status), nullptr);
    EXPECT_EQ(status.code, STPCode::TimeOut);
    EXPECT_EQ(pad.took, "press keya ");
}

TEST_F(Waits, ADialogOfAHandlerWithinTheWaitHasTheUsersHand) {
    STPWindLibRetryHandler retry(transport, windows, "Calling");
    const uint32_t sequence = request();
    after(1ms, [&] {
        QDialog dialog;
        after(1ms, [&] { testing_Key(dialog, Qt::Key_Escape); });
        EXPECT_EQ(dialog.exec(), QDialog::Rejected);
        EXPECT_FALSE(waitHandle_IsStopped(*retry.handle()));
        answer(sequence);
    });
    EXPECT_NE(transport->awaitResponse(sequence, &retry), nullptr);
}

TEST_F(Waits, AModelessQuestionGoesWithItsWaitAndAnAutomaticRunIsToldInWords) {
    QtWaitWindows modeless{events, QtWaitWindows::Questions::Modeless};
    STPWindLibRetryHandler retry(transport, modeless, "Calling");
    retry.start();
    retry.requestStop();
    press("goOn");
    after(0ms, [&] { mouse(QEvent::MouseButtonPress, 3); });
    EXPECT_TRUE(retry.keepTrying());
    EXPECT_FALSE(modal);
    EXPECT_EQ(pad.took, "");
    retry.requestStop();
    after(5ms, [&] { retry.finish(); });
    EXPECT_FALSE(retry.keepTrying());
    QtWaitWindows automatic{events, QtWaitWindows::Questions::Nobody};
    std::string said;
    gen_set_report_sink([&](int, const std::string& line) { said += line; });
    EXPECT_EQ(automatic.ask({"t", "Calling, Terminate Connection?", "a", "b"}), WaitAnswer::Stop);
    gen_set_report_sink({});
    EXPECT_NE(said.find("Calling, Terminate Connection?"), std::string::npos);
}

}  // namespace
