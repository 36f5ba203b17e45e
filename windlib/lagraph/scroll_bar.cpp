#include "windlib/lagraph/scroll_bar.h"

#include <algorithm>

namespace {

// a * b / c without overflow, rounded to the nearest; c is not 0 and the result fits.
uint64_t scaled(uint64_t a, uint64_t b, uint64_t c) {
    __extension__ typedef unsigned __int128 Wide;
    return static_cast<uint64_t>((static_cast<Wide>(a) * b + c / 2) / c);
}

}  // namespace

void ScrollBarModel::setRange(uint64_t range, uint64_t visible) {
    range_ = range;
    visible_ = visible;
    position_ = std::min(position_, maximum());
}

void ScrollBarModel::setPosition(uint64_t position) {
    position_ = std::min(position, maximum());
}

void ScrollBarModel::userMoved(uint64_t position) {
    const uint64_t before = position_;
    setPosition(position);
    if (position_ != before && onChange) onChange();
}

void ScrollBarModel::userScrolled(int64_t pixels) {
    const auto step = static_cast<uint64_t>(pixels < 0 ? -pixels : pixels);
    userMoved(pixels < 0 ? position_ - std::min(position_, step)
                         : position_ + std::min(maximum() - std::min(maximum(), position_), step));
}

uint32_t ScrollBarModel::nativeMaximum() const {
    return maximum() < nativeLimit ? static_cast<uint32_t>(maximum()) : nativeScaled;
}

uint32_t ScrollBarModel::nativePosition() const {
    if (maximum() < nativeLimit) return static_cast<uint32_t>(position_);
    const auto native = static_cast<uint32_t>(scaled(position_, nativeScaled, maximum()));
    // Only the true ends show as ends, so that the arrows of the bar stay alive in between.
    if (native == 0 && !atStart()) return 1;
    if (native == nativeScaled && !atEnd()) return nativeScaled - 1;
    return native;
}

uint64_t ScrollBarModel::fromNative(uint32_t native) const {
    if (maximum() < nativeLimit) return std::min<uint64_t>(native, maximum());
    if (native >= nativeScaled) return maximum();
    return scaled(native, maximum(), nativeScaled);
}
