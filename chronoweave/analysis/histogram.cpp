#include "chronoweave/analysis/histogram.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "shared/libcxxutil/report.h"

namespace {

constexpr int margin = 4;
constexpr int textGap = 6;     // between two texts of the axis
constexpr int tickHeight = 3;  // of a power of ten
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

double Histogram::placed(double length) const {
    return scale_ == HistogramScale::Linear ? length : std::log10(length);
}

Histogram::Histogram(std::vector<double> lengths, HistogramScale scale)
    : scale_(scale), figures_(figures_of(lengths)) {
    if (lengths.empty()) return;
    double least = figures_.min;
    if (scale == HistogramScale::Logarithmic) {
        least = figures_.max;
        for (const double length : lengths)
            if (length > 0) least = std::min(least, length);
        zeros_ = least > 0 && figures_.min <= 0 ? 1 : 0;
    }
    // With nothing above 0 there is nothing to place.
    if (!(least > 0)) {
        scale_ = HistogramScale::Linear;
        least = figures_.min;
    }
    low_ = placed(least);
    const double spread = placed(figures_.max) - low_;
    // About as many bars as tell something, and one alone when all lengths are the same.
    const auto wanted = static_cast<size_t>(std::ceil(2 * std::sqrt(static_cast<double>(lengths.size()))));
    const size_t bars = spread > 0 ? std::clamp<size_t>(wanted, 2, mostBars) : 1;
    width_ = spread / static_cast<double>(bars);
    counts_.assign(zeros_ + bars, 0);
    for (const double length : lengths) ++counts_[BarOf(length)];
}

size_t Histogram::BarOf(double length) const {
    if (zeros_ > 0 && length <= 0) return 0;
    if (counts_.empty() || !(width_ > 0)) return zeros_;
    const double place = (placed(length) - low_) / width_;
    if (!(place > 0)) return zeros_;
    return std::min(counts_.size() - 1, zeros_ + static_cast<size_t>(std::min(place, 1e9)));
}

size_t Histogram::BarAt(int x, int width) const {
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

void Histogram::DrawBars(Surface& surface, int w, int top, int base) const {
    const uint32_t highest = *std::max_element(counts_.begin(), counts_.end());
    for (size_t bar = 0; bar < counts_.size() && base > top; ++bar) {
        if (counts_[bar] == 0) continue;
        const int left = bar_left(bar, counts_.size(), w), right = bar_left(bar + 1, counts_.size(), w);
        const int high = std::max(
            1, static_cast<int>(static_cast<double>(base - top) * counts_[bar] / std::max(1u, highest)));
        surface.fillRect(left, base - high, std::max(1, right - left - 1), high, barColour);
    }
}

int Histogram::ColumnOf(double length, int w) const {
    const int left = bar_left(zeros_, counts_.size(), w), right = bar_left(counts_.size(), counts_.size(), w);
    const double share = (placed(length) - low_) / (width_ * static_cast<double>(counts_.size() - zeros_));
    return left + static_cast<int>(share * (right - left));
}

// The ends have their texts; the powers of ten between them as far as there is room.
void Histogram::DrawAxis(Surface& surface, int w, int base) const {
    const FontMetrics font = surface.fontMetrics(Font_Application);
    const auto put = [&](int x, const std::string& text) {
        surface.drawText(x, base + 2 + font.ascent, text, surface.foreground(), NoColour);
    };
    surface.drawLine(margin, base, w - margin - 1, base, surface.foreground());
    const std::string least = gen_format("%g", figures_.min), most = gen_format("%g", figures_.max);
    const int mostLeft = w - margin - surface.textExtent(most).width;
    put(margin, least);
    put(mostLeft, most);
    if (scale_ == HistogramScale::Linear || !(width_ > 0)) return;
    int room = margin + surface.textExtent(least).width + textGap;
    for (int power = static_cast<int>(std::ceil(low_)); power < placed(figures_.max); ++power) {
        const double value = std::pow(10.0, power);
        const int x = ColumnOf(value, w);
        surface.drawLine(x, base, x, base + tickHeight, surface.foreground());
        const std::string text = gen_format("%g", value);
        const int width = surface.textExtent(text).width, left = x - width / 2;
        if (left < room || left + width + textGap > mostLeft) continue;
        put(left, text);
        room = left + width + textGap;
    }
}

void Histogram::draw(Surface& surface, int w, int h) const {
    if (counts_.empty()) return;
    const FontMetrics font = surface.fontMetrics(Font_Application);
    const int base = h - font.height - 3, top = font.height + 2;
    DrawBars(surface, w, top, base);
    DrawAxis(surface, w, base);
    const uint32_t highest = *std::max_element(counts_.begin(), counts_.end());
    surface.drawText(margin, 1 + font.ascent, gen_format("highest bar: %u", highest), surface.foreground(),
                     NoColour);
}
