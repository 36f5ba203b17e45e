#include "chronoweave/import/merge/turn_words.h"

#include <algorithm>

#include "libtrv/store_format.h"

namespace {

constexpr size_t word = 4;

// How an event's extra data begins: words, and text behind them.
struct KnownPart {
    size_t words = word, text = 0;
};

KnownPart known_part(uint16_t type) {
    switch (type) {
        case mt_StatusChange:
            return {2 * word, 0};
        case mt_Refresh:
            return {2 * word, size_t{2} * mt_NameSize};
        default:
            return {};
    }
}

}  // namespace

size_t turn_Words(uint16_t type, std::span<uint8_t> extra) {
    const KnownPart known = known_part(type);
    size_t at = 0;
    while (at + word <= std::min(extra.size(), known.words)) {
        std::reverse(extra.data() + at, extra.data() + at + word);
        at += word;
    }
    // A word that is cut is no word that can be turned, and nothing stands behind it.
    if (at < known.words) return extra.size() - at;
    return extra.size() - std::min(extra.size(), known.words + known.text);
}
