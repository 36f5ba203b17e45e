#include "chronoweave/traxfunc/fetch/fetch.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"

laFetchRange laFetch_RangeFor(const LaSource& source, laFetchRange asked, laFetchAhead ahead) {
    if (ahead == laFetchAhead::Yes) {
        const double length = asked.high - asked.low;
        asked.low = asked.low < length / 2 ? 0 : asked.low - length / 2;
        asked.high = asked.low + 2 * length;
    }
    asked.high = std::min(asked.high, source.totalLength);
    return asked;
}

uint64_t laFetch_EndTick(const LaSource& source, laFetchRange range) {
    return source.clock.TickFrom(range.high) + (range.high >= source.totalLength ? 1 : 0);
}

std::string laSource_TellDamage(LaSource& source) {
    if (source.store == nullptr) return {};
    const std::vector<Result> damage = mt_TakeDamage(*source.store);
    for (const Result& one : damage) gen_console("%s\n", one.text().c_str());
    if (damage.empty()) return {};
    source.damage = "The store is damaged: " + damage.front().text();
    if (damage.size() > 1) source.damage += gen_format(" (%zu more on the console)", damage.size() - 1);
    return source.damage;
}

bool laCanvas_IsCached(const LaItems& items, const LaSource& source, double low, double high) {
    return items.cachedHigh > items.cachedLow && low >= items.cachedLow &&
           std::min(high, source.totalLength) <= items.cachedHigh;
}
