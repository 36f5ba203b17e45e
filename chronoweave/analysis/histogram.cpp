#include "chronoweave/analysis/histogram.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "shared/libcxxutil/report.h"

namespace {

constexpr int margin = 4;
constexpr Colour barColour = 0x4C7FB8;

// The value that stands at a place when the values are sorted.
double nth(std::vector<double>& values, size_t place) {
    std::nth_element(values.begin(), values.begin() + static_cast<ptrdiff_t>(place), values.end());
    return values[place];
}

double percentile(std::vector<double>& values, size_t percent) {
    return nth(values, (values.size() * percent + 99) / 100 - 1);
}

LengthFigures figures_of(std::vector<double>& lengths) {
    LengthFigures figures;
    figures.count = lengths.size();
    if (lengths.empty()) return figures;
    const auto [least, most] = std::minmax_element(lengths.begin(), lengths.end());
    figures.min = *least;
    figures.max = *most;
    figures.jitter = figures.max - figures.min;
    figures.mean = std::accumulate(lengths.begin(), lengths.end(), 0.0) / static_cast<double>(lengths.size());
    const size_t middle = lengths.size() / 2;
    figures.median = nth(lengths, middle);
    if (lengths.size() % 2 == 0)
        figures.median =
            (figures.median +
             *std::max_element(lengths.begin(), lengths.begin() + static_cast<ptrdiff_t>(middle))) /
            2;
    figures.percentile95 = percentile(lengths, 95);
    figures.percentile99 = percentile(lengths, 99);
    return figures;
}

// Where a bar begins; that of the number of bars is the end of the last.
int bar_left(size_t bar, size_t bars, int width) {
    const auto room = static_cast<size_t>(std::max(0, width - 2 * margin));
    return margin + static_cast<int>(bar * room / bars);
}

}  // namespace

Histogram::Histogram(std::vector<double> lengths) : figures_(figures_of(lengths)) {
    if (lengths.empty()) return;
    // About as many bars as tell something, and one alone when all lengths are the same.
    const auto wanted = static_cast<size_t>(std::ceil(2 * std::sqrt(static_cast<double>(lengths.size()))));
    const size_t bars = figures_.jitter > 0 ? std::clamp<size_t>(wanted, 2, mostBars) : 1;
    width_ = figures_.jitter / static_cast<double>(bars);
    counts_.assign(bars, 0);
    for (const double length : lengths) ++counts_[barOf(length)];
}

size_t Histogram::barOf(double length) const {
    if (counts_.empty() || !(width_ > 0) || length <= figures_.min) return 0;
    const double place = (length - figures_.min) / width_;
    return std::min(counts_.size() - 1, static_cast<size_t>(std::min(place, 1e9)));
}

size_t Histogram::barAt(int x, int width) const {
    for (size_t bar = 0; bar < counts_.size(); ++bar)
        if (x >= bar_left(bar, counts_.size(), width) && x < bar_left(bar + 1, counts_.size(), width))
            return bar;
    return counts_.size();
}

std::string Histogram::text(const std::string& unit) const {
    const LengthFigures& f = figures_;
    return gen_format("Lengths (in %s): min=%g max=%g mean=%g median=%g\n", unit.c_str(), f.min, f.max,
                      f.mean, f.median) +
           gen_format("95th percentile=%g 99th percentile=%g jitter (max - min)=%g", f.percentile95,
                      f.percentile99, f.jitter);
}

void Histogram::draw(Surface& surface, int w, int h) const {
    if (counts_.empty()) return;
    const FontMetrics font = surface.fontMetrics(Font_Application);
    const uint32_t highest = *std::max_element(counts_.begin(), counts_.end());
    const int base = h - font.height - 3, top = font.height + 2;
    for (size_t bar = 0; bar < counts_.size() && base > top; ++bar) {
        if (counts_[bar] == 0) continue;
        const int left = bar_left(bar, counts_.size(), w), right = bar_left(bar + 1, counts_.size(), w);
        const int high = std::max(
            1, static_cast<int>(static_cast<double>(base - top) * counts_[bar] / std::max(1u, highest)));
        surface.fillRect(left, base - high, std::max(1, right - left - 1), high, barColour);
    }
    surface.drawLine(margin, base, w - margin - 1, base, surface.foreground());
    const auto put = [&](int x, int y, const std::string& text) {
        surface.drawText(x, y + font.ascent, text, surface.foreground(), NoColour);
    };
    put(margin, 1, gen_format("highest bar: %u", highest));
    put(margin, base + 2, gen_format("%g", figures_.min));
    const std::string most = gen_format("%g", figures_.max);
    put(w - margin - surface.textExtent(most).width, base + 2, most);
}
