#include "companions/trv/targets.h"

#include <string_view>

#include "companions/trv/perf/run.h"
#include "companions/trv/replay/replay.h"
#include "companions/trv/ring/ring.h"
#include "companions/trv/server/live_file.h"
#include "companions/trv/server/words.h"
#include "companions/trv/sim/sim.h"
#include "companions/trv/tracefs/linux_target.h"

namespace {

struct Kind {
    std::string_view name;
    Result (*connect)(std::string_view text, std::unique_ptr<Target>& target);
    const char* usage;
};
constexpr Kind kinds[] = {
    {"replay", replay_Connect, replay_Usage},
    {"sim", sim_Connect, sim_Usage},
    {"run", run_Connect, run_Usage},
    {"linux", linux_Connect, linux_Usage},
};

std::string names() {
    std::string list;
    for (const Kind& kind : kinds) list += (list.empty() ? "" : ", ") + std::string(kind.name);
    return list;
}

Result connect_target(std::string_view text, std::unique_ptr<Target>& target) {
    const std::string word = words_TakeFirst(text);
    for (const Kind& kind : kinds)
        if (word == kind.name) return kind.connect(text, target);
    return Result::failure("\"" + word + "\" is none of " + names());
}

// A ring is no target but a way to keep what one gives.
Result connect_ring(std::string_view text, Connection& connection) {
    RingOptions options;
    if (Result read = ring_Read(text, options); !read) return read;
    if (Result made = connect_target(text, connection.target); !made) return made;
    connection.recorder = std::make_unique<Ring>(connection.target->facts(), std::move(options));
    return {};
}

}  // namespace

Result targets_Connect(const std::string& text, Connection& connection) {
    std::string_view rest = text;
    if (words_TakeFirst(rest) == "ring") return connect_ring(rest, connection);
    if (Result made = connect_target(text, connection.target); !made) return made;
    connection.recorder = std::make_unique<LiveFile>(connection.target->facts());
    return {};
}

std::string targets_Usage() {
    std::string text;
    for (const Kind& kind : kinds) text += std::string("  ") + kind.usage + '\n';
    return text + "  " + ring_Usage + '\n';
}
