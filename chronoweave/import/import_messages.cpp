#include "chronoweave/import/import_messages.h"

#include <string>

#include "shared/libcxxutil/report.h"

void ImportMessages::print(std::string_view line) const {
    if (sink_)
        sink_(line);
    else
        gen_console("%.*s", static_cast<int>(line.size()), line.data());
}

void ImportMessages::finish() {
    constexpr std::array<const char*, 3> kinds{"bad TRR bytes", "events dropped as too long",
                                               "events dropped as too short"};
    for (size_t kind = 0; kind < seen_.size(); ++kind) {
        if (seen_[kind] > limit)
            print(gen_format("... and %llu more %s\n", static_cast<unsigned long long>(seen_[kind] - limit),
                             kinds[kind]));
        seen_[kind] = 0;
    }
}
