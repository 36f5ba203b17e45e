#include "windlib/qt/pixel_blit.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// source over target, source premultiplied. rest is what remains of the target, 0 to 65535. The same in both
// forms, down to the last bit, since an icon may be painted whole or in parts.
uint32_t over(uint32_t source, uint32_t target, uint32_t rest) {
    uint32_t sum = 0;
    for (int shift = 0; shift < 32; shift += 8)
        sum |= ((((target >> shift) & 0xFF) * 257u * rest >> 16) >> 8) << shift;
    return source + sum;  // no channel overflows: it is premultiplied
}

// count is a multiple of four. No branch on what the pixels hold: an icon's are too mixed for any to be
// guessed.
#ifdef __x86_64__
void blend_four(uint32_t* to, const uint32_t* from, const uint16_t* rest) {
    auto* const place = reinterpret_cast<__m128i*>(to);
    const auto* const rests = reinterpret_cast<const __m128i*>(rest);
    const __m128i below = _mm_loadu_si128(place);
    const __m128i low = _mm_mulhi_epu16(_mm_unpacklo_epi8(below, below), _mm_loadu_si128(rests));
    const __m128i high = _mm_mulhi_epu16(_mm_unpackhi_epi8(below, below), _mm_loadu_si128(rests + 1));
    const __m128i kept = _mm_packus_epi16(_mm_srli_epi16(low, 8), _mm_srli_epi16(high, 8));
    const __m128i source = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    _mm_storeu_si128(place, _mm_add_epi8(kept, source));
}

void blend_row_sse2(uint32_t* to, const uint32_t* from, const uint16_t* rest, int count) {
    for (int i = 0; i < count; i += 4) blend_four(to + i, from + i, rest + 4 * i);
}

// Eight at once. The two halves of a register are unpacked each by itself, so the rests are brought in that
// order.
__attribute__((target("avx2"))) void blend_row_avx2(uint32_t* to, const uint32_t* from, const uint16_t* rest,
                                                    int count) {
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        auto* const place = reinterpret_cast<__m256i*>(to + i);
        const auto* const rests = reinterpret_cast<const __m256i*>(rest + 4 * i);
        const __m256i first = _mm256_loadu_si256(rests), second = _mm256_loadu_si256(rests + 1);
        const __m256i below = _mm256_loadu_si256(place);
        const __m256i low = _mm256_mulhi_epu16(_mm256_unpacklo_epi8(below, below),
                                               _mm256_permute2x128_si256(first, second, 0x20));
        const __m256i high = _mm256_mulhi_epu16(_mm256_unpackhi_epi8(below, below),
                                                _mm256_permute2x128_si256(first, second, 0x31));
        const __m256i kept = _mm256_packus_epi16(_mm256_srli_epi16(low, 8), _mm256_srli_epi16(high, 8));
        const __m256i source = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + i));
        _mm256_storeu_si256(place, _mm256_add_epi8(kept, source));
    }
    if (i < count) blend_four(to + i, from + i, rest + 4 * i);
}

const auto blend_row = __builtin_cpu_supports("avx2") ? blend_row_avx2 : blend_row_sse2;
#else
void blend_row(uint32_t* to, const uint32_t* from, const uint16_t* rest, int count) {
    for (int i = 0; i < count; ++i) to[i] = over(from[i], to[i], rest[4 * i]);
}
#endif

}  // namespace

Sprite::Sprite(QImage picture) : image(std::move(picture)), rowPixels((image.width() + 3) & ~3) {
    const auto count = static_cast<size_t>(rowPixels) * static_cast<size_t>(image.height());
    pixels.assign(count, 0);
    for (int y = 0; y < image.height(); ++y)
        std::copy_n(reinterpret_cast<const uint32_t*>(image.constScanLine(y)), image.width(),
                    pixels.begin() + y * rowPixels);
    rest.reserve(4 * count);
    for (const uint32_t pixel : pixels)
        rest.insert(rest.end(), 4, static_cast<uint16_t>((255 - (pixel >> 24)) * 257));
    for (int y = 0; y < image.height(); ++y) {
        const uint32_t* row = pixels.data() + y * rowPixels;
        const uint32_t* first = std::find_if(row, row + rowPixels, [](uint32_t pixel) { return pixel != 0; });
        int end = rowPixels;
        while (end > first - row && row[end - 1] == 0) --end;
        parts.push_back({static_cast<int>(first - row) & ~3, (end + 3) & ~3});
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
    const int left = std::max({rect.left(), clip.left(), 0}) * scale_;
    const int top = std::max({rect.top(), clip.top(), 0}) * scale_;
    const int right = std::min((std::min(rect.right(), clip.right()) + 1) * scale_, width_);
    const int bottom = std::min((std::min(rect.bottom(), clip.bottom()) + 1) * scale_, height_);
    const int width = right - left;
    if (width <= 0) return;
    colour |= 0xFF000000u;
    uint32_t* row = bits_ + top * stride_ + left;
    for (int y = top; y < bottom; ++y, row += stride_) {
        if (width < 8)
            for (int x = 0; x < width; ++x) row[x] = colour;
        else
            std::fill_n(row, width, colour);
    }
}

void PixelBlit::copy(const QRect& rect, int dx, int dy) {
    const QRect from = toDevice(rect), to = toDevice(rect.translated(dx, dy));
    const auto bytes = static_cast<size_t>(std::min(from.width(), to.width())) * sizeof(uint32_t);
    const int rows = std::min(from.height(), to.height());
    for (int i = 0; i < rows; ++i) {
        const int row = dy > 0 ? rows - 1 - i : i;  // from the end when the places overlap downwards
        std::memmove(bits_ + (to.top() + row) * stride_ + to.left(),
                     bits_ + (from.top() + row) * stride_ + from.left(), bytes);
    }
}

void PixelBlit::blend(int x, int y, const Sprite& sprite, const QRect& clip) {
    const int left = x * scale_, top = y * scale_;
    const QRect area = toDevice(clip), whole(left, top, sprite.rowPixels, sprite.image.height());
    const uint32_t* from = sprite.pixels.data();
    if (area.contains(whole)) {
        const uint16_t* rest = sprite.rest.data();
        uint32_t* to = bits_ + top * stride_ + left;
        for (const Sprite::Part& part : sprite.parts) {
            blend_row(to + part.first, from + part.first, rest + 4 * part.first, part.end - part.first);
            to += stride_;
            from += sprite.rowPixels;
            rest += 4 * sprite.rowPixels;
        }
        return;
    }
    const QRect part = area & whole;
    for (int line = part.top(); line <= part.bottom(); ++line)
        for (int column = part.left(); column <= part.right(); ++column) {
            uint32_t& to = bits_[line * stride_ + column];
            const auto at = static_cast<size_t>((line - top) * sprite.rowPixels + column - left);
            to = over(from[at], to, sprite.rest[4 * at]);
        }
}
