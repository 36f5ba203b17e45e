// What the user does during long work, on the offscreen platform.
#include "windlib/qt/long_work.h"

#include <gtest/gtest.h>

#include <QWidget>

#include "windlib/qt/application_testing.h"

namespace {

// Writes down what reaches it.
class Pad : public QWidget {
  public:
    std::string took;

  protected:
    void mousePressEvent(QMouseEvent*) override { took += "press "; }
    void mouseMoveEvent(QMouseEvent* event) override {
        took += "move" + std::to_string(event->pos().x()) + ' ';
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        took += event->button() == Qt::LeftButton ? "left-up " : "right-up ";
    }
    void wheelEvent(QWheelEvent* event) override {
        took += "wheel" + std::to_string(event->angleDelta().y()) + ' ';
    }
    void keyPressEvent(QKeyEvent*) override { took += "key "; }
};

class Work : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    void SetUp() override { pad.setMouseTracking(true); }
    void mouse(QEvent::Type type, int x, Qt::MouseButton button) {
        QCoreApplication::postEvent(&pad,
                                    new QMouseEvent(type, QPointF(x, 1), QPointF(x, 1), button, button, {}));
    }
    void wheel(int turn) {
        const QPointF at(1, 1);
        QCoreApplication::postEvent(
            &pad, new QWheelEvent(at, at, QPoint(), QPoint(0, turn), {}, {}, Qt::NoScrollPhase, false));
    }
    void key(int code) { QCoreApplication::postEvent(&pad, new QKeyEvent(QEvent::KeyPress, code, {})); }

    Pad pad;
};

TEST_F(Work, TheLastMoveAndWhatEndsADragComeWhenItIsOver) {
    {
        LongWork work({});
        for (int x : {3, 5, 9}) mouse(QEvent::MouseMove, x, Qt::NoButton);
        wheel(120);
        wheel(-240);
        key(Qt::Key_A);
        mouse(QEvent::MouseButtonPress, 9, Qt::RightButton);
        mouse(QEvent::MouseButtonRelease, 9, Qt::RightButton);
        mouse(QEvent::MouseButtonRelease, 9, Qt::LeftButton);
        QCoreApplication::processEvents();
        EXPECT_EQ(pad.took, "");
        EXPECT_TRUE(work.tell(1, 2));
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(pad.took, "move9 wheel-240 left-up ");
}

TEST_F(Work, EscapeStopsItAndAReceiverMayGo) {
    auto other = std::make_unique<Pad>();
    LongWork work({});
    QCoreApplication::postEvent(other.get(),
                                new QMouseEvent(QEvent::MouseMove, {}, {}, Qt::NoButton, Qt::NoButton, {}));
    QCoreApplication::processEvents();
    other.reset();
    key(Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_FALSE(work.tell(1, 2));
}

}  // namespace
