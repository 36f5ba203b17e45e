// The dark scheme and the console: what is seen, and who is told.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QPainter>
#include <QStyleOption>
#include <algorithm>

#include "windlib/qt/application_testing.h"
#include "windlib/qt/console_window.h"
#include "windlib/qt/dark_style.h"

namespace {

// The brightest pixel of a check box's mark on a dark ground.
int brightest(bool enabled) {
    QStyleOptionButton option;
    option.rect = QRect(0, 0, 14, 14);
    option.state = enabled ? QStyle::State_Enabled : QStyle::State_None;
    option.palette = QPalette(QColor(0xE0, 0xE0, 0xE0), QColor(0x2B, 0x2B, 0x2B));
    option.palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
    QImage image(14, 14, QImage::Format_RGB32);
    image.fill(QColor(0x2B, 0x2B, 0x2B));
    QPainter painter(&image);
    DarkStyle(QStringLiteral("Fusion"))
        .drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, &painter, nullptr);
    painter.end();
    int most = 0;
    for (int y = 0; y < 14; ++y)
        for (int x = 0; x < 14; ++x) most = std::max(most, qGray(image.pixel(x, y)));
    return most;
}

}  // namespace

TEST(Looks, AnEmptyCheckBoxIsSeenOnADarkGround) {
    testing_StartApplication();
    EXPECT_GT(brightest(true), 0x2B + 60);
}

TEST(Looks, ADisabledIconIsFaintAndKeepsItsShape) {
    testing_StartApplication();
    QPixmap icon(8, 8);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.fillRect(0, 0, 4, 8, Qt::red);
    painter.end();
    const QStyleOption option;
    const QImage drawn =
        DarkStyle(QStringLiteral("Fusion")).generatedIconPixmap(QIcon::Disabled, icon, &option).toImage();
    EXPECT_EQ(qAlpha(drawn.pixel(6, 4)), 0);
    EXPECT_GT(qAlpha(drawn.pixel(2, 4)), 40);
    EXPECT_LT(qAlpha(drawn.pixel(2, 4)), 160);
}

TEST(Console, WhoListensGetsWhatCameTogether) {
    testing_StartApplication();
    std::string heard;
    int times = 0;
    console_SetListener([&](const std::string& text) { heard += text, ++times; });
    testing::internal::CaptureStderr();
    console_Write("one\n");
    console_Write("two\n");
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(times, 0) << "not in the middle of what goes on";
    QApplication::processEvents();
    EXPECT_EQ(heard, "one\ntwo\n");
    EXPECT_EQ(times, 1);
    console_SetListener({});
}
