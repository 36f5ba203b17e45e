// Reading: every query against a model that holds all events and the state after each of them.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>

#include "libtrv/event_names.h"
#include "libtrv/test_store.h"
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

struct Model {
    TestFolder folder;
    std::string base = folder / "run";
    std::vector<TestEvent> events;
    std::vector<State> before;  // before each event, and after the last

    Model(unsigned seed, size_t count) : events(random_events(seed, count)) {
        const auto writer = StoreWriter::OpenForWrite(base, 1000, "KORVANTIS", true, TaskTracker);
        for (const TestEvent& event : events) {
            before.push_back(state_of(writer->state()));
            EXPECT_TRUE(writer->AppendEvent(event.time, event.type, event.subtype, event.extra));
        }
        before.push_back(state_of(writer->state()));
    }
    size_t first_at(mt_Time t) const {
        size_t i = 0;
        while (i < events.size() && events[i].time < t) ++i;
        return i;
    }
    void expect_same(const EventList& list, size_t from, size_t to) const {
        ASSERT_EQ(list.size(), to - from);
        for (size_t i = from; i < to; ++i) {
            const EventRecord& event = list[i - from];
            EXPECT_EQ(event.sequence, i + 1);
            EXPECT_EQ(event.time, events[i].time);
            EXPECT_EQ(event.type, events[i].type);
            EXPECT_EQ(event.subtype, events[i].subtype);
            EXPECT_EQ(Bytes(event.extra.begin(), event.extra.end()), events[i].extra);
        }
    }
    // The objects that a range touches: known at t0, created in the block of t0 or of t1 before t1, and
    // whatever stood or came in the blocks between.
    std::vector<uint32_t> objects(mt_Time t0, mt_Time t1) const {
        const auto block = [&](mt_Time t) {
            size_t b = (events.size() - 1) / 100;
            while (b > 0 && events[b * 100].time >= t) --b;
            return b;
        };
        const size_t a = block(t0), b = block(t1);
        std::set<uint32_t> ids;
        for (const auto& [id, bytes] : before[first_at(t0)]) ids.insert(id);
        for (size_t i = first_at(t0); i < std::min(events.size(), (b + 1) * 100); ++i) {
            const bool inside = i / 100 > a && i / 100 < b;
            if (!inside && events[i].time >= t1) break;
            for (const auto& [id, bytes] : before[i + 1]) ids.insert(id);
        }
        return {ids.begin(), ids.end()};
    }
};

}  // namespace

TEST(TraceStore, AnswersEveryRangeLikeTheModel) {
    for (const size_t count : {1u, 99u, 100u, 101u, 730u}) {
        const Model model(static_cast<unsigned>(count), count);
        const TraceStorePtr store = mt_OpenForRead(model.base);
        ASSERT_TRUE(store);
        EXPECT_EQ(mt_GetEventCount(*store), count);
        EXPECT_EQ(mt_GetBlockCount(*store), (count + 99) / 100);
        for (uint32_t block = 0; block < mt_GetBlockCount(*store); ++block)
            EXPECT_EQ(mt_GetBlockTime(*store, block), model.events[block * 100u].time);
        EXPECT_EQ(mt_GetBlockTime(*store, mt_GetBlockCount(*store)), 0u);
        const mt_Range range = mt_GetTimeRange(*store);
        EXPECT_EQ(range.first, model.events.front().time);
        EXPECT_EQ(range.end, model.events.back().time + 1);
        std::mt19937 random(7);
        for (int round = 0; round < 120; ++round) {
            mt_Time t0 = random() % (range.end + 3), t1 = random() % (range.end + 3);
            if (round % 4 == 0) t0 = model.events[random() % count].time, t1 = t0 + random() % 3;
            if (t1 < t0) std::swap(t0, t1);
            EventList list;
            StateTable state;
            ASSERT_TRUE(mt_GetEventsInTimeRange(*store, t0, t1, list, state));
            const size_t from = model.first_at(t0);
            model.expect_same(list, from, std::max(from, model.first_at(t1)));
            EXPECT_EQ(state_of(state), model.before[from]);
            EXPECT_EQ(mt_GetObjectIdsUsedInTimeRange(*store, 0, t0, t1), model.objects(t0, t1))
                << t0 << ' ' << t1;
            for (const EventRecord& event : list) mt_ApplyEventToState(state, event);
            EXPECT_EQ(state_of(state), model.before[std::max(from, model.first_at(t1))]);
        }
        EXPECT_EQ(mt_GetObjectTypesUsedInTimeRange(*store, 0, range.end), std::vector<uint16_t>{0});
        EXPECT_TRUE(mt_GetObjectIdsUsedInTimeRange(*store, 1, 0, range.end).empty());
    }
}

TEST(TraceStore, FindsEventsBySequence) {
    const Model model(5, 250);
    const TraceStorePtr store = mt_OpenForRead(model.base);
    const struct {
        uint32_t first, count;
        size_t from, to;
    } rows[] = {{0, 3, 0, 3},       {1, 3, 0, 3},       {99, 1, 98, 99},    {100, 2, 100, 102},
                {101, 1, 100, 101}, {200, 1, 200, 201}, {240, 0, 239, 250}, {250, 5, 249, 250},
                {251, 5, 250, 250}, {9999, 1, 250, 250}};
    for (const auto& row : rows) {
        EventList list;
        StateTable state;
        ASSERT_TRUE(mt_GetEventsBySequence(*store, row.first, row.count, list, state));
        model.expect_same(list, row.from, row.to);
        EXPECT_EQ(state_of(state), model.before[row.from]) << row.first;
    }
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
Bytes read_file(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
void write_file(const std::string& name, const Bytes& bytes) {
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}
}  // namespace

TEST(TraceStore, ACutDataFileGivesTheEventsBeforeTheCut) {
    const Model model(8, 120);
    const Bytes whole = read_file(model.base + ".trs");
    size_t most = 0;
    for (size_t size = 20; size < whole.size(); size += 37) {
        write_file(model.base + ".trs", Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
        const TraceStorePtr store = mt_OpenForRead(model.base);
        EventList list;
        StateTable state;
        mt_GetEventsInTimeRange(*store, 0, ~0ull >> 1, list, state);
        model.expect_same(list, 0, list.size());
        ASSERT_GE(list.size(), most);
        most = list.size();
        if (list.size() > 100) {
            EXPECT_EQ(mt_GetEventCount(*store), list.size());
        }
    }
    EXPECT_GT(most, 110u);
}

TEST(TraceStore, SaysWhatIsWrongWithAFile) {
    const Model model(9, 10);
    std::string why;
    EXPECT_FALSE(mt_OpenForRead(model.base + "x", &why));
    EXPECT_NE(why.find("runx.trv: No such file"), std::string::npos) << why;
    Bytes index = read_file(model.base + ".tri");
    index[20] = 9;
    write_file(model.base + ".tri", index);
    EXPECT_FALSE(mt_OpenForRead(model.base, &why));
    EXPECT_NE(why.find("run.tri: a record of the index has an unknown type"), std::string::npos) << why;
}

TEST(TraceStore, ReportsUnknownPacketsAndChanges) {
    Model model(10, 150);
    Bytes data = read_file(model.base + ".trs");
    std::string reports;
    gen_set_report_sink([&](int, const std::string& line) { reports += line; });
    Bytes bad = data;
    bad[20] = 77;
    write_file(model.base + ".trs", bad);
    TraceStorePtr store = mt_OpenForRead(model.base);
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
