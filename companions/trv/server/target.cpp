#include "companions/trv/server/target.h"

#include <utility>

TargetFacts target_NanosecondFacts(std::string name) {
    constexpr uint32_t version = 3 << 8, architecture = 2;
    const EventSourceHeader header{version, false, architecture, 1'000'000'000, raw_OsKorvantis};
    return {std::move(name), header, raw_EncodeHeader(header, RawHeaderForm::Long)};
}
