// How many context switches stand close together. The picture of the whole trace is cut into strips of 8
// columns from the trace's start on; where a strip holds many switches they become a light tint under lanes
// and icons. A strip is counted as a whole, whatever part of it is painted or seen, so that it looks the same
// after every scroll.
#pragma once

#include <cstdint>

#include "chronoweave/traxfunc/draw/columns.h"
#include "chronoweave/traxfunc/draw/scene.h"

constexpr int laSwitches_Strip = 8;         // columns
constexpr uint32_t laSwitches_Enough = 17;  // from here on nothing gets lighter

// So many switches of a strip are drawn as a tint.
constexpr bool laSwitches_AreDense(uint32_t count) {
    return count > 2;
}
// A switch's colour at the opacity of a strip of so many: that of two lines together, at least 0.12. As seen
// on the plain ground, so that what lies there twice is not darker.
Colour laSwitches_Tint(Colour colour, Colour ground, uint32_t count);

class laSwitchDensity {
  public:
    // Both outlive it.
    laSwitchDensity(const laScene& scene, const laTimeScale& scale)
        : lines_(scene.items.ctxLines),
          scale_(scale),
          phase_(static_cast<int>(scene.view.scrollPosition % laSwitches_Strip)) {}

    // Of a switch, by its place in the list. Strips rise with time; they have numbers of no further meaning.
    int StripOf(size_t at) const {
        const int column = scale_.ToColumn(lines_.TimeAt(static_cast<uint32_t>(at))) + phase_;
        return (column >= 0 ? column : column - laSwitches_Strip + 1) / laSwitches_Strip;
    }
    // The first switch behind a switch's strip.
    uint32_t EndOfStrip(uint32_t at) const {
        return static_cast<uint32_t>(laPaint_FirstRightOf(at + 1, lines_.size(), StripOf(at),
                                                          [this](size_t i) { return StripOf(i); }));
    }
    // How many switches of a switch's strip are seen, up to laSwitches_Enough.
    template <class Seen>
    uint32_t Count(uint32_t at, const Seen& seen) const {
        const int strip = StripOf(at);
        uint32_t count = 0;
        laItem_Ctx made;
        for (uint32_t i = at; i-- > 0 && StripOf(i) == strip && count < laSwitches_Enough;)
            count += seen(lines_.At(i, made)) ? 1u : 0u;
        for (uint32_t i = at; i < lines_.size() && StripOf(i) == strip && count < laSwitches_Enough; ++i)
            count += seen(lines_.At(i, made)) ? 1u : 0u;
        return count;
    }

  private:
    const LaItemList<laItem_Ctx>& lines_;
    const laTimeScale& scale_;
    int phase_;  // columns of the strip in the first column that lie left of it
};
