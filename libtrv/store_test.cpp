// Reading: every query against a model that holds all events and the state after each of them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

#include "libtrv/event_names.h"
#include "libtrv/store_image_testing.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/report.h"

namespace {

using State = std::map<uint32_t, Bytes>;

State state_of(const StateTable& table) {
    State state;
    for (uint32_t at = 0; at < table.size(); ++at) {
        const ObjectEntry entry = table.entry(at);
        state[entry.objectId] = Bytes(entry.block.begin(), entry.block.end());
    }
    return state;
}

// The events of a store with the states between them, from which every answer can be told for any checkpoint
// interval.
struct Model {
    EventList events;
    std::vector<State> before;  // before each event, and after the last
    uint32_t interval;

    Model(unsigned seed, size_t count, uint32_t interval_)
        : events(tracked(random_events(seed, count))), interval(interval_) {
        StateTable state;
        for (const EventRecord& event : events) {
            before.push_back(state_of(state));
            mt_ApplyEventToState(state, event);
        }
        before.push_back(state_of(state));
    }
    size_t FirstAt(mt_Time t) const {
        size_t i = 0;
        while (i < events.size() && events[i].time < t) ++i;
        return i;
    }
    size_t blocks() const { return (events.size() + interval - 1) / interval; }
    size_t BlockOf(mt_Time t) const {
        size_t block = blocks() - 1;
        while (block > 0 && events[block * interval].time >= t) --block;
        return block;
    }
    void ExpectSame(const EventList& list, size_t from, size_t to) const {
        ASSERT_EQ(list.size(), to - from);
        for (size_t i = from; i < to; ++i) {
            const EventRecord& event = list[i - from];
            ASSERT_EQ(event.sequence, i + 1);
            ASSERT_EQ(event.time, events[i].time);
            ASSERT_EQ(event.type, events[i].type);
            ASSERT_EQ(event.subtype, events[i].subtype);
            ASSERT_TRUE(std::ranges::equal(event.extra, events[i].extra));
        }
    }
    // The first event of a request by sequence, as an index: at multiples of the interval it is the next one.
    size_t FirstOf(uint32_t sequence) const {
        return std::min<size_t>(events.size(), sequence % interval == 0 ? sequence : sequence - 1);
    }
    // The objects that a range touches: known at t0, created in the block of t0 or of t1 before t1, and
    // whatever stood or came in the blocks between.
    std::vector<uint32_t> objects(mt_Time t0, mt_Time t1) const {
        const size_t a = BlockOf(t0), b = BlockOf(t1);
        std::set<uint32_t> ids;
        for (const auto& [id, bytes] : before[FirstAt(t0)]) ids.insert(id);
        for (size_t i = FirstAt(t0); i < std::min(events.size(), (b + 1) * interval); ++i) {
            const bool inside = i / interval > a && i / interval < b;
            if (!inside && events[i].time >= t1) break;
            for (const auto& [id, bytes] : before[i + 1]) ids.insert(id);
        }
        return {ids.begin(), ids.end()};
    }
};

void expect_range(const Model& model, TraceStore& store, mt_Time t0, mt_Time t1) {
    SCOPED_TRACE(testing::Message() << t0 << " to " << t1 << " by " << model.interval);
    const size_t from = model.FirstAt(t0), to = std::max(from, model.FirstAt(t1));
    EventList list;
    StateTable state;
    ASSERT_TRUE(mt_GetEventsInTimeRange(store, t0, t1, list, state));
    model.ExpectSame(list, from, to);
    EXPECT_EQ(state_of(state), model.before[from]);
    EXPECT_EQ(mt_GetObjectIdsUsedInTimeRange(store, 0, t0, t1), model.objects(t0, t1));
    for (const EventRecord& event : list) mt_ApplyEventToState(state, event);
    EXPECT_EQ(state_of(state), model.before[to]);
}

void expect_sequence(const Model& model, TraceStore& store, uint32_t sequence) {
    SCOPED_TRACE(testing::Message() << sequence << " by " << model.interval);
    const size_t from = model.FirstOf(sequence);
    EventList list;
    StateTable state;
    ASSERT_TRUE(mt_GetEventsBySequence(store, sequence, 3, list, state));
    model.ExpectSame(list, from, std::min(model.events.size(), from + 3));
    EXPECT_EQ(state_of(state), model.before[from]);
    EventWalk walk;
    EventRecord event;
    ASSERT_TRUE(mt_StartWalkAtEvent(store, sequence, 1, &state, walk));
    const bool there = sequence <= model.events.size();
    EXPECT_EQ(mt_NextEvent(walk, event), there);
    EXPECT_EQ(there ? event.sequence : 0, there ? std::max(sequence, 1u) : 0);
    EXPECT_EQ(state_of(state), model.before[there ? std::max(sequence, 1u) - 1 : model.events.size()]);
    EXPECT_FALSE(mt_NextEvent(walk, event));
}

}  // namespace

TEST(TraceStore, AnswersLikeTheModelAtEveryInterval) {
    const struct {
        uint32_t interval;
        size_t count;
    } stores[] = {{1, 40},    {7, 6},     {7, 7},     {7, 300},     {100, 1},    {100, 99},
                  {100, 100}, {100, 101}, {100, 730}, {1000, 2500}, {5000, 700}, {5000, 11000}};
    for (const auto& [interval, count] : stores) {
        const Model model(static_cast<unsigned>(count), count, interval);
        const TraceStorePtr store = open_image(image_of(model.events, interval));
        ASSERT_TRUE(store);
        EXPECT_EQ(mt_GetCheckpointInterval(*store), interval);
        EXPECT_EQ(mt_GetEventCount(*store), count);
        ASSERT_EQ(mt_GetBlockCount(*store), model.blocks());
        for (uint32_t block = 0; block < model.blocks(); ++block)
            EXPECT_EQ(mt_GetBlockTime(*store, block), model.events[block * interval].time);
        EXPECT_EQ(mt_GetBlockTime(*store, mt_GetBlockCount(*store)), 0u);
        const mt_Range range = mt_GetTimeRange(*store);
        EXPECT_EQ(range.first, model.events[0].time);
        EXPECT_EQ(range.end, model.events[count - 1].time + 1);
        std::mt19937 random(7);
        for (int round = 0; round < 50; ++round) {
            mt_Time t0 = random() % (range.end + 3), t1 = random() % (range.end + 3);
            if (round % 4 == 0) t0 = model.events[random() % count].time, t1 = t0 + random() % 3;
            expect_range(model, *store, std::min(t0, t1), std::max(t0, t1));
            expect_sequence(model, *store, static_cast<uint32_t>(random() % (count + 3)));
        }
        const auto blocks = static_cast<uint32_t>(model.blocks());
        for (const uint32_t sequence : {0u, 1u, interval - 1, interval, interval + 1, blocks * interval,
                                        blocks * interval + 1, 999'999u})
            expect_sequence(model, *store, sequence);
        EXPECT_EQ(mt_GetObjectTypesUsedInTimeRange(*store, 0, range.end), std::vector<uint16_t>{0});
        EXPECT_TRUE(mt_GetObjectIdsUsedInTimeRange(*store, 1, 0, range.end).empty());
        EXPECT_TRUE(mt_CheckStore(*store, {}) && mt_CheckNumbers(*store, UINT32_MAX, {}));
        for (const Result& damage : mt_TakeDamage(*store)) ADD_FAILURE() << damage.text();
    }
}

TEST(TraceStore, AWalkIsNotDisturbedByWhatElseIsAsked) {
    const Model model(3, 730, 100);
    const TraceStorePtr store = open_image(image_of(model.events, 100));
    const mt_Range range = mt_GetTimeRange(*store);
    EventWalk walk, other;
    EventRecord event, another;
    StateTable state;
    ASSERT_TRUE(mt_StartWalkInTimeRange(*store, 0, range.end, nullptr, walk));
    for (size_t i = 0; i < model.events.size(); ++i) {
        ASSERT_TRUE(mt_NextEvent(walk, event));
        EventList list;
        const mt_Time time = model.events[(i * 37) % model.events.size()].time;
        if (i % 3 == 0) mt_GetEventsInTimeRange(*store, time, time + 5, list, state);
        if (i % 3 == 1) mt_GetObjectIdsUsedInTimeRange(*store, 0, time, range.end);
        if (i % 3 == 2) mt_StartWalkAtEvent(*store, static_cast<uint32_t>(1 + i % 700), 0, nullptr, other);
        static_cast<void>(mt_NextEvent(other, another));
        mt_GetEventCount(*store);
        mt_HasNewData(*store);
        ASSERT_EQ(event.sequence, i + 1);
        ASSERT_TRUE(std::ranges::equal(event.extra, model.events[i].extra)) << "its bytes stay too";
    }
    EXPECT_FALSE(mt_NextEvent(walk, event));
}

TEST(TraceStore, RunsOfOneTickAreFoundWhole) {
    TestFolder folder;
    auto writer = StoreWriter::OpenForWrite(folder / "run", 1, "x", true, TaskTracker);
    for (int i = 0; i < 250; ++i) EXPECT_TRUE(writer->AppendEvent(5, mt_Interrupt, 0, words({1})));
    writer.reset();
    const TraceStorePtr store = mt_OpenForReadByDataFile(folder / "run.trs");
    EventList list;
    StateTable state;
    EXPECT_TRUE(mt_GetEventsInTimeRange(*store, 5, 6, list, state));
    EXPECT_EQ(list.size(), 250u);
    EXPECT_EQ(state.size(), 0u);
}

TEST(TraceStore, FollowsAWriter) {
    TestFolder folder;
    auto writer = StoreWriter::OpenForWrite(folder / "run", 1000, "ThreadX", false, TaskTracker);
    const TraceStorePtr store = mt_OpenForRead(folder / "run");
    ASSERT_TRUE(store);
    EXPECT_STREQ(mt_GetOsName(store.get()), "ThreadX");
    EXPECT_EQ(mt_GetEventCount(*store), 0u);
    EXPECT_EQ(mt_GetTimeRange(*store).end, 1u);
    EventList list;
    StateTable state;
    EXPECT_FALSE(mt_GetEventsInTimeRange(*store, 0, 9, list, state));
    EXPECT_TRUE(mt_HasNewData(*store));  // never scanned yet
    for (uint32_t i = 1; i <= 205; ++i) {
        EXPECT_TRUE(writer->AppendEvent(i, mt_TaskChange, 0, words({i % 5}, false)));
        EXPECT_TRUE(mt_HasNewData(*store));
        EXPECT_EQ(mt_GetEventCount(*store), i);
        EXPECT_EQ(mt_GetTimeRange(*store).end, i + 1);
        EXPECT_FALSE(mt_HasNewData(*store));
    }
    writer->SetGrouping(1 << 20);
    EXPECT_TRUE(writer->AppendEvent(300, mt_TaskChange, 0, words({1}, false)));
    EXPECT_FALSE(mt_HasNewData(*store));  // pending in its group
    EXPECT_TRUE(writer->Commit());
    EXPECT_EQ(mt_GetEventCount(*store), 206u);
}

namespace {
void write_file(const std::string& name, const Bytes& bytes) {
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}
}  // namespace

TEST(TraceStore, ACutDataFileGivesTheEventsBeforeTheCut) {
    const Model model(8, 120, 100);
    const StoreImage whole = image_of(model.events, 100);
    size_t most = 0;
    for (size_t size = 20; size < whole.events.size(); size += 37) {
        StoreImage cut = whole;
        cut.events.resize(size);
        const TraceStorePtr store = open_image(cut);
        EventList list;
        StateTable state;
        mt_GetEventsInTimeRange(*store, 0, ~0ull >> 1, list, state);
        model.ExpectSame(list, 0, list.size());
        ASSERT_GE(list.size(), most);
        most = list.size();
        EXPECT_EQ(mt_GetEventCount(*store), list.size()) << "the last that can be read";
        EXPECT_TRUE(mt_IsDamaged(*store)) << size;
    }
    EXPECT_GT(most, 110u);
}

TEST(TraceStore, SaysWhatIsWrongWithAFile) {
    TestFolder folder;
    const std::string base = folder / "run";
    const StoreImage image = image_of(tracked(random_events(9, 10)), 100);
    write_file(base + ".trv", image.version);
    write_file(base + ".trs", image.events);
    Bytes index = image.index;
    index[20] = 9;
    write_file(base + ".tri", index);
    Result why;
    EXPECT_FALSE(mt_OpenForRead(base + "x", &why));
    EXPECT_NE(why.text().find("runx.trv: No such file"), std::string::npos) << why.text();
    EXPECT_FALSE(mt_OpenForRead(base, &why));
    EXPECT_NE(why.text().find("run.tri, byte 20: a record of the index has an unknown type"),
              std::string::npos)
        << why.text();
    // What is no file is refused at once; a pipe would wait for its other end.
    for (const char* extension : {".tri", ".trs", ".trv"}) {
        std::filesystem::remove(base + extension);
        ASSERT_EQ(::mkfifo((base + extension).c_str(), 0600), 0);
        EXPECT_FALSE(mt_OpenForRead(base, &why));
        EXPECT_NE(why.text().find(std::string("run") + extension + ": Not a regular file"), std::string::npos)
            << why.text();
    }
    std::filesystem::remove(base + ".trv");
    std::filesystem::create_directory(base + ".trv");
    EXPECT_FALSE(mt_OpenForRead(base, &why));
    EXPECT_NE(why.text().find("run.trv: Is a directory"), std::string::npos) << why.text();
}

TEST(TraceStore, ReportsUnknownPackets) {
    StoreImage bad = image_of(tracked(random_events(10, 150)), 100);
    std::string reports;
    gen_set_report_sink([&](int, const std::string& line) { reports += line; });
    bad.events[20] = 77;
    const TraceStorePtr store = open_image(bad);
    EventList list;
    StateTable state;
    mt_GetEventsInTimeRange(*store, 0, 5, list, state);
    EXPECT_TRUE(list.empty());
    EXPECT_NE(
        reports.find("libtrv: [mt_GetEventListAndStateFromTimeRange]: Unrecognized .trs packet type (77)"),
        std::string::npos);
    gen_set_report_sink({});
}

TEST(TraceStore, AttributesOfATask) {
    TestFolder folder;
    auto writer = StoreWriter::OpenForWrite(folder / "run", 1000, "KORVANTIS", true, TaskTracker);
    EXPECT_TRUE(writer->AppendEvent(0, mt_Refresh, 2, refresh_extra(1, 50, "T1", "AS")));
    EXPECT_TRUE(writer->AppendEvent(0, mt_Interrupt, 0, words({2})));
    writer.reset();
    const TraceStorePtr store = mt_OpenForRead(folder / "run");
    EventList list;
    StateTable state;
    mt_GetEventsInTimeRange(*store, 1, 2, list, state);
    char name[31];
    bool delivered = false;
    EXPECT_TRUE(
        mt_GetObjectAttribute(*store, state, 0, 1, mt_AttributeName, name, sizeof name, '@', delivered));
    EXPECT_TRUE(delivered);
    EXPECT_STREQ(name, "AS@T1");
    for (const auto& [size, text] : {std::pair{4u, "AS@"}, {3u, "AS"}, {1u, ""}}) {
        mt_GetObjectAttribute(*store, state, 0, 1, mt_AttributeName, name, size, '@', delivered);
        EXPECT_STREQ(name, text);
    }
    uint16_t status = 0;
    EXPECT_TRUE(mt_GetObjectAttribute(*store, state, 0, 1, mt_AttributeStatus, &status, 2, '@', delivered));
    EXPECT_EQ(status, 2);
    EXPECT_TRUE(mt_GetObjectAttribute(*store, state, 0, 2, mt_AttributeStatus, &status, 2, '@', delivered));
    EXPECT_FALSE(delivered);
    EXPECT_TRUE(mt_GetObjectAttribute(*store, state, 0, 1, 9, name, sizeof name, '@', delivered));
    EXPECT_FALSE(delivered);
    EXPECT_FALSE(
        mt_GetObjectAttribute(*store, state, 0, 3, mt_AttributeName, name, sizeof name, '@', delivered));
}

TEST(EventNames, KeepTheDifferenceOfTheTwoForms) {
    EXPECT_STREQ(mt_EventShortName(3, 43), "CreateVirtualAddressSpace");
    EXPECT_STREQ(mt_EventShortName(3, 44), "UNKOWNKERNCALL");
    EXPECT_EQ(mt_EventLongName(3, 44), "Kernel Call: GetCurrentActivity");
    EXPECT_EQ(mt_EventLongName(3, 46), "UNKNOWN KERNEL CALL");
    EXPECT_EQ(mt_EventLongName(3, 0x84), "Kernel Call: MaxEventTag");
    EXPECT_STREQ(mt_EventShortName(8, 0), "UNKNOWNEVENT");
    EXPECT_EQ(mt_EventLongName(5, 1), "Status Change");
}
