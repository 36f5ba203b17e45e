#include "windlib/qt/qt_surface.h"

#include <gtest/gtest.h>

#include <QImage>

#include "windlib/qt/picture_file.h"

namespace {

// Draws on a small image and gives one row or column of it as text: '.' for the background, '#' for anything
// else.
struct Drawn {
    QImage image{60, 20, QImage::Format_RGB32};
    template <class Draw>
    explicit Drawn(Draw draw) {
        picture_StartHeadless();
        image.fill(0xFFFFFFFFu);
        QPainter painter(&image);
        QtSurface surface(painter, &image, image.width(), image.height(), {});
        draw(surface);
    }
    std::string row(int y) const {
        std::string text;
        for (int x = 0; x < image.width(); ++x) text += image.pixel(x, y) == 0xFFFFFFFFu ? '.' : '#';
        return text.substr(0, text.find_last_of('#') + 1);
    }
    std::string column(int x) const {
        std::string text;
        for (int y = 0; y < image.height(); ++y) text += image.pixel(x, y) == 0xFFFFFFFFu ? '.' : '#';
        return text.substr(0, text.find_last_of('#') + 1);
    }
};

}  // namespace

TEST(QtSurface, LinesAlongAnAxisCoverBothEnds) {
    const Drawn one([](Surface& s) { s.drawLine(5, 3, 2, 3, 0); });
    EXPECT_EQ(one.row(3), "..####");
    EXPECT_EQ(one.row(2) + one.row(4), "");
    const Drawn thick([](Surface& s) { s.drawStyledLine(4, 2, 4, 6, 0, 3, 0, 0); });
    EXPECT_EQ(thick.column(3), "..#####");
    EXPECT_EQ(thick.row(4), "...###");
}

TEST(QtSurface, DashesKeepTheirPhaseWhenALineIsCut) {
    for (int style = 1; style <= 4; ++style) {
        for (const int thickness : {1, 2}) {
            const int period = dashPeriod[style] * thickness;
            const Drawn whole([&](Surface& s) { s.drawStyledLine(0, 5, 59, 5, 0, thickness, style, 0); });
            EXPECT_EQ(whole.row(5).find("#."), size_t(dashPattern[style][0] * thickness) - 1);
            const Drawn tail(
                [&](Surface& s) { s.drawStyledLine(17, 5, 59, 5, 0, thickness, style, 17 % period); });
            EXPECT_EQ(tail.row(5).substr(17), whole.row(5).substr(17)) << style;
        }
    }
    const Drawn down([](Surface& s) { s.drawStyledLine(7, 1, 7, 19, 0, 1, 2, 0); });
    EXPECT_EQ(down.column(7), ".###...###...###...#");
}

TEST(QtSurface, ClipsNestAndExclusiveOrUndoesItself) {
    const Drawn clipped([](Surface& s) {
        s.pushClip(2, 0, 10, 20, true);
        s.pushClip(5, 0, 50, 20, true);
        s.fillRect(0, 0, 60, 1, 0);
        s.popClip();
        s.fillRect(0, 1, 60, 1, 0);
        s.popClip();
        s.fillRect(0, 2, 60, 1, 0);
    });
    EXPECT_EQ(clipped.row(0), ".....#######");
    EXPECT_EQ(clipped.row(1), "..##########");
    EXPECT_EQ(clipped.row(2).size(), 60u);
    const Drawn twice([](Surface& s) {
        s.fillRect(0, 0, 4, 1, 0x123456);
        s.setExclusiveOr(true);
        for (int i = 0; i < 2; ++i) s.drawLine(2, 0, 2, 9, 0xFFFFFF);
        s.setExclusiveOr(false);
    });
    EXPECT_EQ(twice.row(0), "####");
    EXPECT_EQ(twice.row(5), "");
    EXPECT_EQ(twice.image.pixel(2, 0), 0xFF123456u);
}

TEST(PictureFile, RefusesANameThatIsNoPicturesAndAFolderThatIsNotThere) {
    picture_StartHeadless();
    const auto nothing = [](Surface&) {};
    EXPECT_EQ(picture_Write("x.jpeg", 10, 10, 1, nothing).text(),
              "x.jpeg: the name of a picture ends in .png, .svg or .pdf");
    const Result nowhere = picture_Write("/nonexistent/x.png", 10, 10, 1, nothing);
    EXPECT_EQ(nowhere.where(), "/nonexistent/x.png");
    EXPECT_NE(nowhere.reason(), "");
}

TEST(PixelBlit, BlendsLikeAPainterAndStaysInItsClip) {
    for (const int scale : {1, 2}) {
        QImage icon(8 * scale, 8 * scale, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < icon.height(); ++y)
            for (int x = 0; x < icon.width(); ++x) {
                const int alpha = std::clamp((x * 37 + y * 11) % 400 - 60, 0, 255);
                icon.setPixelColor(x, y, QColor(x * 9 % 256, 200, y * 5 % 256, alpha));
            }
        icon.setDevicePixelRatio(scale);
        QImage direct(20 * scale, 20 * scale, QImage::Format_RGB32);
        direct.setDevicePixelRatio(scale);
        direct.fill(0xFF406080u);
        QImage painted = direct;
        const QRect clip(3, 2, 9, 7);
        PixelBlit blit(direct);
        ASSERT_TRUE(blit.usable());
        blit.fill(QRect(-5, 4, 40, 2), 0x112233, clip);
        for (const QPoint at : {QPoint(-3, -3), QPoint(1, 4), QPoint(9, 6), QPoint(50, 50)})
            blit.blend(at.x(), at.y(), Sprite(icon), clip);
        QPainter painter(&painted);
        painter.setClipRect(clip);
        painter.fillRect(QRect(-5, 4, 40, 2), QColor(0x11, 0x22, 0x33));
        for (const QPoint at : {QPoint(-3, -3), QPoint(1, 4), QPoint(9, 6), QPoint(50, 50)})
            painter.drawImage(at, icon);
        painter.end();
        for (int y = 0; y < direct.height(); ++y)
            for (int x = 0; x < direct.width(); ++x) {
                const QColor a = direct.pixelColor(x, y), b = painted.pixelColor(x, y);
                ASSERT_LE(std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                              std::abs(a.blue() - b.blue()),
                          3)
                    << x << ' ' << y;
            }
    }
    QImage odd(3, 3, QImage::Format_RGB32);
    odd.setDevicePixelRatio(1.5);
    EXPECT_FALSE(PixelBlit(odd).usable());
}
