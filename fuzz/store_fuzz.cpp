// The three files of a store in one input: the lengths of the .trv and the .tri, 2 bytes each, most
// significant first, then the .trv, the .tri and, with all that is left, the .trs.
#include <algorithm>

#include "fuzz/support.h"
#include "libtrv/byte_order.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    if (size < 4) return 0;
    std::span<const uint8_t> rest(data + 4, size - 4);
    const auto take = [&rest](size_t count) {
        const auto taken = rest.first(std::min(count, rest.size()));
        rest = rest.subspan(taken.size());
        return taken;
    };
    const auto version = take(load_be16(data)), index = take(load_be16(data + 2));
    if (const TraceStorePtr store = fuzz_OpenStore(version, rest, index)) fuzz_QueryStore(*store);
    return 0;
}
