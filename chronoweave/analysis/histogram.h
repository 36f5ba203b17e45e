// The lengths of intervals in figures and as bars.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "windlib/lagraph/surface.h"

// All 0 without lengths. A percentile is the smallest length that so many percent of all do not exceed; the
// median is the middle one, or the mean of the two in the middle; jitter is max - min.
struct LengthFigures {
    size_t count = 0;
    double min = 0, max = 0, mean = 0, median = 0, percentile95 = 0, percentile99 = 0, jitter = 0;
};

// How the bars divide the lengths: each as wide as the others, or each ending at the same multiple of where
// it begins.
enum class HistogramScale { Linear, Logarithmic };

class Histogram {
  public:
    static constexpr size_t mostBars = 60;

    Histogram() = default;
    // Of lengths in the unit in which they are shown. Not numbers are not allowed. On a logarithmic scale
    // lengths of 0 have a bar of their own ahead of the others.
    explicit Histogram(std::vector<double> lengths, HistogramScale scale = HistogramScale::Linear);

    const LengthFigures& figures() const { return figures_; }
    // How many lengths fall into each bar. Bars divide what lies from min to max, each with its lower end;
    // the last has max, too.
    const std::vector<uint32_t>& counts() const { return counts_; }
    size_t BarOf(double length) const;
    // The bar at a column of a picture so wide; the number of bars when there is none.
    size_t BarAt(int x, int width) const;
    // The figures as two lines of text, with what jitter means. unit is the word of the unit.
    std::string text(const std::string& unit) const;
    // Draws bars, the axis with its ends and, on a logarithmic one, the powers of ten between them, and the
    // highest count on a surface of w by h. A bar that holds something is never lower than a pixel.
    void draw(Surface& surface, int w, int h) const;

  private:
    double placed(double length) const;  // on the scale
    void DrawBars(Surface& surface, int w, int top, int base) const;
    void DrawAxis(Surface& surface, int w, int base) const;
    int ColumnOf(double length, int w) const;

    HistogramScale scale_ = HistogramScale::Linear;
    LengthFigures figures_;
    std::vector<uint32_t> counts_;
    size_t zeros_ = 0;  // bars ahead of the scale's: 1 for lengths of 0 on a logarithmic one
    double low_ = 0;    // where the first bar of the scale begins, on the scale
    double width_ = 0;  // of a bar, on the scale
};
