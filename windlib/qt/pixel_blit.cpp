#include "windlib/qt/pixel_blit.h"

#include <algorithm>
#include <cmath>

namespace {

// source over target, source premultiplied, target opaque.
uint32_t over(uint32_t source, uint32_t target) {
    const uint32_t rest = 255 - (source >> 24);
    if (rest == 0) return source;
    if (rest == 255) return target;
    // Two channels at a time; x * rest / 255 rounded.
    uint32_t even = (target & 0xFF00FFu) * rest, odd = ((target >> 8) & 0xFF00FFu) * rest;
    even = ((even + ((even >> 8) & 0xFF00FFu) + 0x800080u) >> 8) & 0xFF00FFu;
    odd = (odd + ((odd >> 8) & 0xFF00FFu) + 0x800080u) & 0xFF00FF00u;
    return (source + (even | odd)) | 0xFF000000u;
}

}  // namespace

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

void PixelBlit::blend(int x, int y, const QImage& icon, const QRect& clip) {
    const QRect whole(x * scale_, y * scale_, icon.width(), icon.height());
    const QRect area = whole & toDevice(clip);
    for (int line = area.top(); line <= area.bottom(); ++line) {
        const auto* from = reinterpret_cast<const uint32_t*>(icon.constScanLine(line - whole.top())) +
                           area.left() - whole.left();
        uint32_t* to = bits_ + line * stride_ + area.left();
        for (int i = 0; i < area.width(); ++i) to[i] = over(from[i], to[i]);
    }
}
