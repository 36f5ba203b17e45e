#include "windlib/qt/pixel_blit.h"

#include <algorithm>
#include <cmath>

namespace {

// source over target, source premultiplied, target opaque.
uint32_t over(uint32_t source, uint32_t target) {
    const uint32_t rest = 255 - (source >> 24);
    // Two channels at a time; x * rest / 255 rounded.
    uint32_t even = (target & 0xFF00FFu) * rest, odd = ((target >> 8) & 0xFF00FFu) * rest;
    even = ((even + ((even >> 8) & 0xFF00FFu) + 0x800080u) >> 8) & 0xFF00FFu;
    odd = (odd + ((odd >> 8) & 0xFF00FFu) + 0x800080u) & 0xFF00FF00u;
    return (source + (even | odd)) | 0xFF000000u;
}

enum class Cover { None, Part, Full };
Cover coverOf(uint32_t pixel) {
    const uint32_t alpha = pixel >> 24;
    return alpha == 0 ? Cover::None : alpha == 255 ? Cover::Full : Cover::Part;
}

}  // namespace

Sprite::Sprite(QImage picture) : image(std::move(picture)) {
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const uint32_t*>(image.constScanLine(y));
        for (int x = 0; x < image.width();) {
            const Cover cover = coverOf(line[x]);
            int end = x + 1;
            while (end < image.width() && coverOf(line[end]) == cover) ++end;
            if (cover != Cover::None)
                runs.push_back({static_cast<int16_t>(x), static_cast<int16_t>(y),
                                static_cast<int16_t>(end - x), cover == Cover::Full});
            x = end;
        }
    }
}

PixelBlit::PixelBlit(QImage& image) {
    const double ratio = image.devicePixelRatioF();
    if (image.depth() != 32 || ratio != std::floor(ratio) || ratio < 1) return;
    bits_ = reinterpret_cast<uint32_t*>(image.bits());
    stride_ = image.bytesPerLine() / 4;
    width_ = image.width();
    height_ = image.height();
    scale_ = static_cast<int>(ratio);
}

QRect PixelBlit::toDevice(const QRect& logical) const {
    return QRect(logical.x() * scale_, logical.y() * scale_, logical.width() * scale_,
                 logical.height() * scale_) &
           QRect(0, 0, width_, height_);
}

void PixelBlit::fill(const QRect& rect, uint32_t colour, const QRect& clip) {
    const QRect area = toDevice(rect & clip);
    uint32_t* row = bits_ + area.top() * stride_ + area.left();
    for (int y = 0; y < area.height(); ++y, row += stride_)
        std::fill_n(row, area.width(), colour | 0xFF000000u);
}

void PixelBlit::blend(int x, int y, const Sprite& sprite, const QRect& clip) {
    const int left = x * scale_, top = y * scale_;
    const QRect area = toDevice(clip);
    const bool whole = area.contains(QRect(left, top, sprite.image.width(), sprite.image.height()));
    for (const Sprite::Run& run : sprite.runs) {
        const int line = top + run.y;
        int first = left + run.x, end = first + run.length;
        const auto* from = reinterpret_cast<const uint32_t*>(sprite.image.constScanLine(run.y)) + run.x;
        if (!whole) {
            if (line < area.top() || line > area.bottom()) continue;
            const int cut = std::max(area.left() - first, 0);
            first += cut;
            from += cut;
            end = std::min(end, area.right() + 1);
            if (first >= end) continue;
        }
        uint32_t* to = bits_ + line * stride_ + first;
        if (run.opaque)
            std::copy_n(from, end - first, to);
        else
            for (int i = 0; i < end - first; ++i) to[i] = over(from[i], to[i]);
    }
}
