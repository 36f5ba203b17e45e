#include "companions/trv/server/task_book.h"

#include <map>
#include <random>

#include "chronoweave/import/import.h"
#include "companions/trv/server/server_testing.h"
#include "libtrv/trace_store.h"

namespace {

using States = std::map<uint32_t, std::string>;

class TaskBookTest : public TargetTest {
  protected:
    // What a store of the records knows of the tasks behind their last: status, priority, name and prefix.
    States statesOf(std::span<const uint8_t> records) {
        const TargetFacts facts = target_NanosecondFacts("");
        const std::string file = path("t" + std::to_string(++files_) + ".trr");
        std::ofstream stream(file, std::ios::binary);
        for (const std::span<const uint8_t> part : {std::span(facts.headerBytes), records})
            stream.write(reinterpret_cast<const char*>(part.data()),
                         static_cast<std::streamsize>(part.size()));
        stream.close();
        const OpenedSource opened = import_OpenSource(file, {});
        EXPECT_TRUE(opened.store != nullptr);
        return opened.store ? read(*opened.store) : States();
    }

  private:
    static States read(TraceStore& store) {
        States states;
        StateTable table;
        EventWalk walk;
        EventRecord event;
        if (!mt_StartWalkInTimeRange(store, 0, mt_GetTimeRange(store).end, &table, walk)) return states;
        while (mt_NextEvent(walk, event)) mt_ApplyEventToState(table, event);
        for (uint32_t i = 0; i < table.size(); ++i) {
            const ObjectEntry entry = table.entry(i);
            // One of which nothing is known is as good as none.
            if (entry.block[mt_TaskStatusValid] != 0)
                states[entry.objectId] = std::string(entry.block.begin(), entry.block.end());
        }
        return states;
    }
    int files_ = 0;
};

// Events of all kinds about few tasks, in two groups.
std::vector<uint8_t> random_records(std::mt19937& random, size_t count) {
    RawWriter out(false);
    const auto below = [&](uint32_t most) { return static_cast<uint32_t>(random() % most); };
    for (size_t i = 0; i < count; ++i) {
        const uint32_t id = below(5) << 10 | below(2);
        const auto type = static_cast<uint16_t>(1 + below(7));
        const auto subtype = static_cast<uint16_t>(below(11));
        const RawTask task{id, below(9), "t" + std::to_string(below(3)),
                           below(2) ? std::optional<std::string>("p") : std::nullopt};
        if (type == mt_Refresh)
            out.refresh(100 + i, subtype, task);
        else if (below(2))
            EXPECT_TRUE(out.event(100 + i, type, subtype, {id}));
        else
            EXPECT_TRUE(out.event(100 + i, type, subtype, {id, below(9)}));
    }
    return out.take();
}

TEST_F(TaskBookTest, KnowsWhatAStoreOfTheSameEventsKnows) {
    std::mt19937 random(5);
    for (int round = 0; round < 40; ++round) {
        const auto records = random_records(random, 1 + random() % 60);
        TaskBook book(false);
        for (size_t at = 0; at < records.size(); at += 1u + records[at])
            book.take(raw_Decode(std::span(records).subspan(at + 1, records[at]), false));
        RawWriter told(false);
        book.write(book.time(), told);
        ASSERT_EQ(statesOf(told.bytes()), statesOf(records)) << round;
    }
}

}  // namespace
