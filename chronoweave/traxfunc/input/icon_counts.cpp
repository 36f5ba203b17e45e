#include "chronoweave/traxfunc/input/icon_counts.h"

#include <algorithm>
#include <map>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {
constexpr size_t mostNames = 8;
}

std::string laIcons_CountText(const _LaCanvasData& canvas, const laItem_Line& lane, laIconGroup icons) {
    std::map<std::string, size_t> counts;
    size_t total = 0;
    for (size_t i = icons.first; i < icons.end; ++i) {
        const uint16_t row = lane.icons.event(i);
        if (!canvas.looks.eventLooks[row].shown) continue;
        ++counts[canvas.looks.legend.events[row].name];
        ++total;
    }
    if (total < 2) return {};
    std::vector<std::pair<size_t, std::string>> names;
    for (const auto& [name, count] : counts) names.emplace_back(count, name);
    std::stable_sort(names.begin(), names.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    std::string text = gen_format("%zu events: ", total);
    for (size_t i = 0; i < std::min(names.size(), mostNames); ++i)
        text += (i ? ", " : "") + std::to_string(names[i].first) + " \"" + text_utf8(names[i].second) + '"';
    return text + (names.size() > mostNames ? ", ..." : "");
}
