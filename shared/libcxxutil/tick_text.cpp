#include "shared/libcxxutil/tick_text.h"

#include <charconv>
#include <cmath>

#include "shared/libcxxutil/report.h"

namespace {

__extension__ typedef unsigned __int128 Wide;

uint64_t power_of_ten(int exponent) {
    uint64_t power = 1;
    while (exponent-- > 0) power *= 10;
    return power;
}

// decimals is 0 to 17, and fraction below ten to that power.
char* put_decimal(uint64_t whole, uint64_t fraction, int decimals, char* to) {
    to = std::to_chars(to, to + 20, whole).ptr;
    if (decimals == 0) return to;
    *to++ = '.';
    for (char* at = to + decimals; at != to; fraction /= 10) *--at = static_cast<char>('0' + fraction % 10);
    return to + decimals;
}

}  // namespace

int tick_Decimals(const TickScale& scale, int most) {
    Wide left = scale.unitsPerSecond % scale.ticksPerSecond;
    int decimals = 0;
    for (; left != 0 && decimals < most; ++decimals) left = left * 10 % scale.ticksPerSecond;
    return decimals;
}

std::string tick_Text(const TickScale& scale, double time, int most) {
    const double ticks =
        time * (static_cast<double>(scale.ticksPerSecond) / static_cast<double>(scale.unitsPerSecond));
    const TickWriter writer(scale, most);
    if (!(std::fabs(ticks) < 9.0e18 && std::fabs(time) < 9.0e18))
        return gen_format("%.*f", writer.decimals(), time);
    char text[TickWriter::room];
    return {text, writer.put(std::llround(ticks), text)};
}

TickWriter::TickWriter(const TickScale& scale, int most)
    : scale_(scale), decimals_(tick_Decimals(scale, most)), shift_(power_of_ten(decimals_)), factor_(0) {
    const Wide last = static_cast<Wide>(scale.unitsPerSecond) * shift_;
    if (last % scale.ticksPerSecond != 0 || last / scale.ticksPerSecond > UINT64_MAX) return;
    factor_ = static_cast<uint64_t>(last / scale.ticksPerSecond);
    most_ = UINT64_MAX / factor_;
}

char* TickWriter::put(int64_t ticks, char* to) const {
    if (ticks < 0) *to++ = '-';
    const uint64_t size = ticks < 0 ? 0 - static_cast<uint64_t>(ticks) : static_cast<uint64_t>(ticks);
    if (factor_ != 0 && size <= most_) {
        const uint64_t scaled = size * factor_;
        return put_decimal(scaled / shift_, scaled % shift_, decimals_, to);
    }
    // In two steps, so that no product leaves 128 bits: the whole seconds, and the ticks behind them.
    const Wide behind = static_cast<Wide>(size % scale_.ticksPerSecond) * scale_.unitsPerSecond;
    Wide whole = static_cast<Wide>(size / scale_.ticksPerSecond) * scale_.unitsPerSecond +
                 behind / scale_.ticksPerSecond;
    Wide fraction =
        (behind % scale_.ticksPerSecond * shift_ + scale_.ticksPerSecond / 2) / scale_.ticksPerSecond;
    if (fraction == shift_) {
        fraction = 0;
        ++whole;
    }
    return put_decimal(static_cast<uint64_t>(whole), static_cast<uint64_t>(fraction), decimals_, to);
}
