// The logic of a scroll bar without its looks: a 64-bit range, the visible extent, a 64-bit position, and the
// scaled integers that a native bar of the platform works in.
#pragma once

#include <cstdint>
#include <functional>

class ScrollBarModel {
  public:
    // A native bar takes a range below this as it is; above it, it runs from 0 to nativeScaled and is
    // converted.
    static constexpr uint64_t nativeLimit = uint64_t{1} << 31;
    static constexpr uint32_t nativeScaled = 0x7ffffff;

    // The whole content and how much of it is visible, in pixels. The position is pulled back into what
    // remains.
    void setRange(uint64_t range, uint64_t visible);
    uint64_t range() const { return range_; }
    uint64_t visible() const { return visible_; }
    uint64_t maximum() const { return range_ > visible_ ? range_ - visible_ : 0; }

    uint64_t position() const { return position_; }
    // Clamped to 0 .. maximum(). Tells no one.
    void setPosition(uint64_t position);
    // The user moved the bar: sets the position and calls onChange when it differs.
    void userMoved(uint64_t position);
    // The same by so many pixels, back when negative.
    void userScrolled(int64_t pixels);
    bool atStart() const { return position_ == 0; }
    bool atEnd() const { return position_ >= maximum(); }

    // For the native bar: its maximum, its position, and a position of it turned back. The ends map to the
    // ends.
    uint32_t nativeMaximum() const;
    uint32_t nativePosition() const;
    uint64_t fromNative(uint32_t native) const;

    std::function<void()> onChange;

  private:
    uint64_t range_ = 0, visible_ = 0, position_ = 0;
};
