#include "windlib/qt/icon_images.h"

#include <QSvgRenderer>
#include <cmath>
#include <memory>
#include <vector>

namespace {

QImage drawIcon(IconHandle icon, double ratio) {
    const IconInfo& info = icon_Table()[static_cast<size_t>(icon)];
    QSvgRenderer renderer(QString::fromStdString(info.path));
    if (!renderer.isValid()) return {};
    QImage image(static_cast<int>(std::ceil(info.width * ratio)),
                 static_cast<int>(std::ceil(info.height * ratio)), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(0, 0, info.width * ratio, info.height * ratio));
    painter.end();
    image.setDevicePixelRatio(ratio);
    return image;
}

}  // namespace

const Sprite& iconSprite(IconHandle icon, double devicePixelRatio) {
    struct Sized {
        double ratio = 0;  // 0 for none yet
        Sprite sprite;
    };
    // One size of each is kept: screens of two resolutions take turns only when a window moves.
    static std::vector<Sized> images(icon_Table().size());
    static const Sprite none;
    if (icon < 0 || static_cast<size_t>(icon) >= images.size()) return none;
    Sized& kept = images[static_cast<size_t>(icon)];
    if (kept.ratio != devicePixelRatio) kept = {devicePixelRatio, Sprite(drawIcon(icon, devicePixelRatio))};
    return kept.sprite;
}

void iconDrawShapes(QPainter& painter, int x, int y, IconHandle icon) {
    iconDrawShapes(painter, QRectF(x, y, icon_Width(icon), icon_Height(icon)), icon);
}

void iconDrawShapes(QPainter& painter, const QRectF& box, IconHandle icon) {
    if (icon < 0 || static_cast<size_t>(icon) >= icon_Table().size()) return;
    // A page has thousands of them: each file is read once.
    static std::vector<std::unique_ptr<QSvgRenderer>> renderers(icon_Table().size());
    auto& renderer = renderers[static_cast<size_t>(icon)];
    if (!renderer)
        renderer = std::make_unique<QSvgRenderer>(
            QString::fromStdString(icon_Table()[static_cast<size_t>(icon)].path));
    renderer->render(&painter, box);
}
