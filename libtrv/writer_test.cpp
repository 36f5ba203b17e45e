#include <gtest/gtest.h>

#include "libtrv/append_observer.h"
#include "libtrv/store_writer.h"
#include "libtrv/test_store.h"
#include "libtrv/trace_store.h"

namespace {

struct InMemory {
    std::shared_ptr<Bytes> events = std::make_shared<Bytes>(), index = std::make_shared<Bytes>();
    MemoryDevice* device = nullptr;
    MemoryDevice* indexDevice = nullptr;
    std::unique_ptr<StoreWriter> writer;
    explicit InMemory(uint32_t interval = mt_CheckpointInterval) {
        auto e = std::make_unique<MemoryDevice>(events);
        auto i = std::make_unique<MemoryDevice>(index);
        device = e.get();
        indexDevice = i.get();
        writer =
            StoreWriter::OnDevices(std::move(e), std::move(i),
                                   {.bigEndianTarget = true, .checkpointInterval = interval}, TaskTracker);
    }
    bool append(const TestEvent& event) {
        return writer->AppendEvent(event.time, event.type, event.subtype, event.extra).ok();
    }
};

std::pair<Bytes, Bytes> store_of(const std::vector<TestEvent>& events, size_t count, size_t group) {
    InMemory store;
    store.writer->SetGrouping(group);
    for (size_t i = 0; i < count; ++i) EXPECT_TRUE(store.append(events[i]));
    EXPECT_TRUE(store.writer->Commit());
    return {*store.events, *store.index};
}

}  // namespace

TEST(StoreWriter, OneEventIsTheseBytes) {
    InMemory store;
    EXPECT_TRUE(store.writer->AppendEvent(0x0102, mt_Interrupt, 7, words({9})));
    Bytes expected = gf_EncodeHeader({1, mt_KindEvents, 0, 2});
    const Bytes head{3, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 2, 0,
                     0, 0, 4, 0, 2, 0, 7, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 9, 0, 76};
    expected.insert(expected.end(), head.begin(), head.end());
    Bytes block(76, 0);
    for (size_t i = 4; i < 8; ++i) block[i] = 0xFF;
    expected.insert(expected.end(), block.begin(), block.end());
    expected.push_back(3);
    expected.push_back(0);
    EXPECT_EQ(*store.events, expected);
    Bytes index = gf_EncodeHeader({1, mt_KindIndex, 0, 2});
    const Bytes record{1, 0, 0, 0, 0, 0, 0, 1, 2, 0, 0, 0, 20, 0};
    index.insert(index.end(), record.begin(), record.end());
    EXPECT_EQ(*store.index, index);
}

TEST(StoreWriter, GroupingChangesNoByte) {
    const auto events = random_events(1, 1234);
    const auto oneByOne = store_of(events, events.size(), 0);
    for (const size_t group : {1u, 500u, 1u << 20})
        EXPECT_EQ(store_of(events, events.size(), group), oneByOne);
}

TEST(StoreWriter, KeepsWholeEventsAndTheirStateWhenTheDeviceIsFull) {
    const auto events = random_events(2, 600);
    const auto whole = store_of(events, events.size(), 0);
    for (const size_t group : {0u, 2000u, 1u << 20}) {
        for (size_t room = 21; room < whole.first.size(); room += 1217) {
            InMemory store;
            store.writer->SetGrouping(group);
            store.device->SetRoom(room);
            size_t appended = 0;
            while (appended < events.size() && store.append(events[appended])) ++appended;
            if (appended == events.size()) {
                EXPECT_FALSE(store.writer->Commit());
            }
            const uint32_t kept = store.writer->EventsWritten();
            ASSERT_EQ(kept + store.writer->EventsRefused(), std::min(appended + 1, events.size()));
            ASSERT_EQ(store.writer->refusal().text(), ".trs: No space left on device");
            ASSERT_EQ(store.writer->LastTime(),
                      kept == 0 ? std::nullopt : std::optional(events[kept - 1].time));
            // What is there is the store of a prefix, and as much of it as there was room for.
            ASSERT_EQ(std::make_pair(*store.events, *store.index), store_of(events, kept, 0)) << room;
            if (kept < events.size()) {
                ASSERT_GT(store_of(events, kept + 1, 0).first.size(), room);
            }
            // With room again, appending goes on as if nothing had happened.
            store.device->SetRoom(SIZE_MAX);
            for (size_t i = kept; i < events.size(); ++i) ASSERT_TRUE(store.append(events[i]));
            ASSERT_TRUE(store.writer->Commit());
            ASSERT_EQ(std::make_pair(*store.events, *store.index), whole);
        }
    }
}

TEST(StoreWriter, IndexRecordsThatFoundNoRoomFollowLater) {
    const auto events = random_events(3, 450);
    InMemory store;
    store.indexDevice->SetRoom(40);
    for (const TestEvent& event : events) EXPECT_TRUE(store.append(event));
    EXPECT_EQ(store.index->size(), 34u);  // one whole record and its terminator
    EXPECT_EQ(store.writer->Commit().text(), ".tri: No space left on device");
    EXPECT_EQ(store.writer->EventsRefused(), 0u);
    store.indexDevice->SetRoom(SIZE_MAX);
    EXPECT_TRUE(store.writer->Commit());
    EXPECT_EQ(std::make_pair(*store.events, *store.index), store_of(events, events.size(), 0));
}

// Of either file of the store.
TEST(StoreWriter, TakesTheRoomThatItsObserverGives) {
    struct Giving : AppendObserver {
        MemoryDevice* full = nullptr;
        int gave = 0;
        void Appended(const EventRecord&, uint64_t) override {}
        void Committed(uint32_t) override {}
        void Refused() override { ADD_FAILURE(); }
        bool GiveRoom() override {
            full->SetRoom(SIZE_MAX);
            return gave++ == 0;
        }
    };
    const auto events = random_events(2, 300);
    for (MemoryDevice* InMemory::*device : {&InMemory::device, &InMemory::indexDevice}) {
        InMemory store;
        Giving observer;
        observer.full = store.*device;
        observer.full->SetRoom(40);
        store.writer->SetObserver(&observer);
        store.writer->SetGrouping(5000);
        for (const TestEvent& event : events) EXPECT_TRUE(store.append(event));
        EXPECT_TRUE(store.writer->Commit());
        EXPECT_EQ(observer.gave, 1);
        EXPECT_EQ(std::make_pair(*store.events, *store.index), store_of(events, events.size(), 0));
    }
}

TEST(StoreWriter, RefusesWhatLiesPastTheLastOffset) {
    const auto events = random_events(4, 500);
    InMemory store;
    store.writer->SetGrouping(1 << 20);
    store.writer->SetOffsetLimit(9000);
    size_t taken = 0;
    for (const TestEvent& event : events) taken += store.append(event);
    EXPECT_TRUE(store.writer->Commit());
    EXPECT_EQ(store.writer->EventsWritten(), taken);
    EXPECT_EQ(store.writer->EventsRefused(), events.size() - taken);
    EXPECT_NE(store.writer->refusal().what().find("four gigabytes"), std::string::npos);
    EXPECT_EQ(std::make_pair(*store.events, *store.index), store_of(events, taken, 0));
    EXPECT_LE(store.events->size(), 9001u);
    EXPECT_GT(store_of(events, taken + 1, 0).first.size(), 9001u);
}

namespace {
// Deletes the object of a type 2 event, refuses one of type 4, and creates it otherwise.
bool deleting(StoreWriter& writer, const mt_WriteRecord& record) {
    const uint32_t id = load_be32(record.extra.data());
    if (record.type == 2) writer.RecordDeleted(0, id);
    const Bytes block(5, static_cast<uint8_t>(id));
    if (record.type != 2) writer.RecordCreated(0, id, block);
    return record.type != 4;
}
}  // namespace

TEST(StoreWriter, DeletedObjectsStayUsedInTheirBlockAndARefusedEventLeavesNothing) {
    auto bytes = std::make_shared<Bytes>();
    auto writer = StoreWriter::OnDevices(std::make_unique<MemoryDevice>(bytes),
                                         std::make_unique<MemoryDevice>(std::make_shared<Bytes>()),
                                         {.bigEndianTarget = true}, deleting);
    EXPECT_TRUE(writer->AppendEvent(0, 1, 0, words({1})));
    EXPECT_TRUE(writer->AppendEvent(0, 2, 0, words({1})));
    EXPECT_TRUE(writer->AppendEvent(0, 1, 0, words({1})));  // comes back: used once
    EXPECT_TRUE(writer->AppendEvent(0, 1, 0, words({2})));
    EXPECT_FALSE(writer->AppendEvent(0, 4, 0, words({3})));
    EXPECT_EQ(writer->state().find(0, 3), StateTable::npos);
    EXPECT_TRUE(writer->AppendEvent(0, 2, 0, words({2})));
    for (int i = 5; i < 100; ++i) EXPECT_TRUE(writer->AppendEvent(0, 1, 0, words({1})));
    const size_t block = bytes->size() - 1;
    EXPECT_TRUE(writer->AppendEvent(0, 1, 0, words({1})));
    const Bytes checkpoint(bytes->begin() + static_cast<ptrdiff_t>(block),
                           bytes->begin() + static_cast<ptrdiff_t>(block) + 37);
    EXPECT_EQ(checkpoint, (Bytes{3, 0, 0, 0, 2, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 2, 2, 0,
                                 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 5, 1, 1, 1, 1, 1}));
}

TEST(StoreWriter, SaysWhichFileCannotBeMade) {
    TestFolder folder;
    std::unique_ptr<StoreWriter> writer;
    const Result made = StoreWriter::Create(folder / "none/run", {1, "x", true}, TaskTracker, writer);
    EXPECT_EQ(made.text(), folder / "none/run.trs" + ": No such file or directory");
    EXPECT_EQ(writer, nullptr);
}

TEST(StoreWriter, CheckpointsStandAtTheMultiplesOfTheInterval) {
    const auto events = random_events(5, 700);
    for (const uint32_t interval : {1u, 7u, 100u, 300u, 1000u}) {
        InMemory store(interval);
        for (const TestEvent& event : events) ASSERT_TRUE(store.append(event));
        const size_t records = (store.index->size() - mt_HeaderSize) / 13;
        ASSERT_EQ(records, (events.size() + interval - 1) / interval) << interval;
        for (size_t record = 0; record < records; ++record) {
            const uint8_t* at = store.index->data() + mt_HeaderSize + record * 13;
            EXPECT_EQ(load_be64(at + 1), events[record * interval].time);
            EXPECT_EQ((*store.events)[load_be32(at + 9)], mt_PacketObjectsUsed);
        }
    }
}

TEST(StoreWriter, ATransientFailureOfAWriteLosesItsGroupAndWhatClosingMeetsIsTold) {
    const auto events = random_events(6, 400);
    for (int n = 1; n < 30; ++n) {
        InMemory store;
        store.writer->SetGrouping(2000);
        store.device->FailWrite(n);
        size_t taken = 0;
        while (taken < events.size() && store.append(events[taken])) ++taken;
        const Result closed = store.writer->Close();
        const uint32_t kept = store.writer->EventsWritten();
        ASSERT_EQ(std::make_pair(*store.events, *store.index), store_of(events, kept, 0)) << n;
        ASSERT_EQ(kept == events.size(), store.writer->refusal().ok()) << n;
        ASSERT_TRUE(kept == events.size() || taken < events.size() || !closed.ok()) << n;
        ASSERT_EQ(kept + store.writer->EventsRefused(), std::min(taken + 1, events.size())) << n;
    }
    for (const bool index : {false, true}) {
        InMemory store;
        for (const TestEvent& event : events) ASSERT_TRUE(store.append(event));
        (index ? store.indexDevice : store.device)->SetSync(EIO);
        EXPECT_EQ(store.writer->Close().text(),
                  std::string(index ? ".tri" : ".trs") + ": the disk did not keep it: Input/output error");
        EXPECT_TRUE(store.writer->Close().ok());
        EXPECT_FALSE(store.append(events[0]));
    }
}
