#include "windlib/qt/text_images.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr size_t mostLooks = 6, mostKept = 2048;

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
    struct Look {
        QFont font;
        Colour colour = 0;
        double ratio = 0;
        bool operator==(const Look&) const = default;
    };
    struct Kept {
        Look look;
        std::unordered_map<std::string, Sprite> sprites;  // by text
    };
    // A picture has few looks, and changes them seldom.
    static std::vector<Kept> kept;
    const Look wanted{font, colour, devicePixelRatio};
    auto at = std::ranges::find(kept, wanted, &Kept::look);
    if (at == kept.end()) {
        if (kept.size() >= mostLooks) kept.erase(kept.begin());
        at = kept.insert(kept.end(), {wanted, {}});
    }
    if (at->sprites.size() >= mostKept) at->sprites.clear();
    const auto [sprite, fresh] = at->sprites.try_emplace(std::string(text));
    if (fresh) sprite->second = Sprite(drawText(font, metrics, text, colour, devicePixelRatio));
    return sprite->second;
}
