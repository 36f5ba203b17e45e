// Steps through times by the columns that they fall into.
#pragma once

#include <algorithm>
#include <cstddef>

// The first position from at on whose column lies right of x, size when there is none; column(i) never falls.
// Steps grow while nothing is found, so that the cost follows the columns and not the items.
template <class Column>
size_t laPaint_FirstRightOf(size_t at, size_t size, int x, const Column& column) {
    size_t step = 1;
    while (at < size && column(at) <= x) {
        if (at + step >= size || column(at + step) > x) {
            size_t low = at + 1, high = std::min(at + step, size);
            while (low < high) {
                const size_t middle = (low + high) / 2;
                if (column(middle) <= x)
                    low = middle + 1;
                else
                    high = middle;
            }
            return low;
        }
        at += step;
        step *= 2;
    }
    return std::min(at, size);
}
