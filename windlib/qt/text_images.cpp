#include "windlib/qt/text_images.h"

#include <QPainter>
#include <cmath>
#include <string>
#include <unordered_map>

namespace {

constexpr size_t mostKept = 4096;

QImage drawText(const QFont& font, const QFontMetrics& metrics, std::string_view text, Colour colour,
                double ratio) {
    const QString shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    QImage image(static_cast<int>(std::ceil((metrics.horizontalAdvance(shown) + 1) * ratio)),
                 static_cast<int>(std::ceil(metrics.height() * ratio)), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    painter.setFont(font);
    painter.setPen(QColor::fromRgb(colour | 0xFF000000u));
    painter.drawText(0, metrics.ascent(), shown);
    painter.end();
    return image;
}

}  // namespace

const Sprite& textSprite(const QFont& font, const QFontMetrics& metrics, std::string_view text, Colour colour,
                         double devicePixelRatio) {
    // By the text alone: colour, font and resolution are the same for long.
    struct Look {
        QFont font;
        Colour colour = 0;
        double ratio = 0;
        bool operator==(const Look&) const = default;
    };
    static Look look;
    static std::unordered_map<std::string, Sprite> kept;
    const Look wanted{font, colour, devicePixelRatio};
    if (look != wanted || kept.size() >= mostKept) kept.clear();
    look = wanted;
    const auto [at, fresh] = kept.try_emplace(std::string(text));
    if (fresh) at->second = Sprite(drawText(font, metrics, text, colour, devicePixelRatio));
    return at->second;
}
