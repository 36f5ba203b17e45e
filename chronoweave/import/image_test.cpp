#include "chronoweave/import/core/core_file.h"
#include "chronoweave/import/import_testing.h"
#include "chronoweave/import/raw/log_image.h"
#include "chronoweave/import/raw/task_table.h"

namespace {

constexpr uint32_t base = 0x1000;

// A log image of two tasks, one of them in use, and a ring of equal records of 17 bytes with types counting
// up.
struct ImageParts {
    bool big = false;
    uint32_t records = 4;
    uint32_t wrap = 0, end = 0, start = 0;  // in records from the ring's begin; wrap 0: none
    uint32_t ringAddress = 0;               // 0: where the ring stands
    uint32_t cut = 0;                       // bytes taken off the end
};
constexpr uint32_t ring_at = 24 + 2 * task_EntrySize + 4;
constexpr uint32_t record_size = 17;

uint32_t address(uint32_t record) {
    return base + ring_at + record * record_size;
}

Bytes log_image(const ImageParts& parts) {
    Bytes bytes = long_header(parts.big, 2, 1);
    put16(bytes, 2, parts.big);
    bytes.resize(bytes.size() + 6);
    put32(bytes, base, parts.big);
    put32(bytes, parts.wrap ? address(parts.wrap) : 0, parts.big);
    put32(bytes, address(parts.end), parts.big);
    put32(bytes, address(parts.start), parts.big);
    append(bytes, task_entry(0x401, 9, "unused", false, parts.big));
    append(bytes, task_entry(0x402, 5, "worker", true, parts.big));
    put32(bytes, parts.ringAddress ? parts.ringAddress : address(0), parts.big);
    for (uint32_t i = 0; i < parts.records; ++i) put_record(bytes, raw_event(2, i, 100 + i, 0xA, parts.big));
    bytes.resize(bytes.size() - parts.cut);
    return bytes;
}

class LogImageTest : public ImportTest {};

TEST_F(LogImageTest, ringsAreReadFromTheOldestToTheNewest) {
    const std::string task = "0:6/10:402";
    const struct {
        const char* name;
        ImageParts parts;
        std::string events;
        const char* error;
    } cases[] = {
        {"straight", {false, 4, 0, 3, 1}, task + " 0:2/1:a 1:2/2:a", ""},
        {"empty", {true, 4, 0, 2, 2}, task, ""},
        {"empty, addresses nowhere", {true, 4, 0, 900, 900}, task, ""},
        // The new part's times lie before the old one's here, so the origin moves back.
        {"wrapped", {true, 5, 4, 1, 2}, task + " 0:2/2:a 1:2/3:a 3:2/0:a", ""},
        {"wrapped, nothing new", {false, 4, 4, 0, 2}, task + " 0:2/2:a 1:2/3:a", ""},
        {"wrap before start",
         {false, 4, 1, 1, 2},
         task + " 0:2/0:a",
         "Corrupted log image: no record of the ring's old part ends at the wrap address 0x1085."},
        {"start outside",
         {false, 4, 0, 901, 900},
         task,
         "Corrupted log image: address 0x4c38 lies outside the image."},
        {"end outside",
         {false, 2, 0, 9, 1},
         task + " 0:2/1:a",
         "Corrupted log image: address 0x1096 lies outside the image."},
        {"wrap outside",
         {false, 3, 90, 1, 2},
         task + " 0:2/2:a",
         "Corrupted log image: address 0x10a7 lies outside the image."},
        {"ring before base",
         {false, 3, 3, 1, 2, base - 1},
         task + " 0:2/2:a",
         "Corrupted log image: address 0xfff lies outside the image."},
        {"no wrap address",
         {false, 4, 0, 1, 2},
         task + " 0:2/0:a",
         "Corrupted log image: no record of the ring's old part ends at the wrap address 0x0."},
        {"record cut",
         {true, 3, 0, 3, 1, 0, 1},
         task + " 0:2/1:a",
         "Corrupted log image: the record at address 0x1096 is cut by the end of the image."},
    };
    for (const auto& c : cases) {
        const OpenedSource source = import("t.trr", log_image(c.parts));
        ASSERT_TRUE(source.store) << c.name;
        EXPECT_EQ(source.trouble.text(), c.error) << c.name;
        EXPECT_EQ(events(*source.store), c.events) << c.name;
        EXPECT_EQ(mt_IsBigEndianTarget(*source.store), c.parts.big) << c.name;
    }
}

TEST_F(LogImageTest, theTaskTableGivesNamesAndPriorities) {
    const OpenedSource source = import("t.trr", log_image({true, 1, 0, 1, 0}));
    StateTable state;
    EventList list;
    ASSERT_TRUE(mt_GetEventsBySequence(*source.store, 2, 1, list, state));
    ASSERT_EQ(list.size(), 1u);
    mt_GetEventsInTimeRange(*source.store, 1, 2, list, state);
    const uint32_t task = state.find(0, 0x402);
    ASSERT_NE(task, StateTable::npos);
    EXPECT_EQ(mt_TaskNameAt(*source.store, state, task, '\0'), "worker");
    EXPECT_EQ(mt_TaskPriorityAt(state, task), 5u);
    EXPECT_EQ(mt_TaskStatusAt(state, task), mt_Stopped);
    EXPECT_EQ(state.find(0, 0x401), StateTable::npos);
}

TEST_F(LogImageTest, aCutTaskTableGivesItsWholeEntries) {
    Bytes bytes = log_image({});
    bytes.resize(28 + 24 + 2 * task_EntrySize + 1);
    OpenedSource source = import("t.trr", bytes);
    EXPECT_EQ(events(*source.store), "0:6/10:402");
    EXPECT_EQ(source.trouble.text(),
              "Corrupted log image: its table of 2 tasks is cut by the end of the image.");
    bytes.resize(28 + 23);
    source = import("u.trr", bytes);
    EXPECT_FALSE(source.store);
    EXPECT_EQ(source.trouble.text(),
              "Bad format TRR file.\nCan't open VOREL Chronoweave source file \"" + path("u.trr") + "\".");
}

TEST_F(LogImageTest, everyAddressEndsTheWalk) {
    // Every ring, end, start and wrap of a small image, sound or not: at most each byte is a record once
    // around.
    for (uint32_t code = 0; code < 7 * 7 * 7 * 7; ++code) {
        const auto pick = [&](uint32_t digit) { return base + ring_at - 9 + 8 * digit; };
        Bytes bytes = log_image({false, 2, 1, 1, 1, pick(code % 7)});
        bytes.erase(bytes.begin(), bytes.begin() + 28);
        const uint32_t values[3] = {pick(code / 7 % 7), pick(code / 49 % 7), pick(code / 343)};
        for (size_t i = 0; i < 3; ++i)
            for (size_t k = 0; k < 4; ++k) bytes[12 + 4 * i + k] = static_cast<uint8_t>(values[i] >> (8 * k));
        const size_t room = 2 * bytes.size() + 2;
        RawLogImage image;
        ASSERT_TRUE(log_Read(bytes, false, image));
        uint8_t record[raw_RecordRoom];
        size_t count = 0;
        while (log_NextRecord(image, record) != 0) ASSERT_LT(++count, room) << code;
    }
}

// A core file of versions 1 and 4: one task, and a log of count records with their addresses.
struct CoreParts {
    int version = 4;
    bool big = true;
    uint32_t count = 3, first = 0, next = 3;
    uint32_t zeroSlot = 9999, badSlot = 9999;
    uint32_t badAddress = 0;
    bool task = true;
};
constexpr uint32_t log_base = 0x400000;

Bytes core_file(const CoreParts& parts) {
    Bytes log, table;
    for (uint32_t i = 0; i < parts.count; ++i) {
        uint32_t at = log_base + static_cast<uint32_t>(log.size());
        if (i == parts.zeroSlot) at = 0;
        if (i == parts.badSlot) at = parts.badAddress;
        put32(table, at, parts.big);
        put_record(log, raw_event(2, i, 100 + i, 0xA, parts.big));
    }
    log.push_back(0);  // a record that ends with the log is refused
    Bytes bytes;
    put16(bytes, static_cast<uint32_t>(parts.version), parts.big);
    put16(bytes, 1, parts.big);
    for (const uint32_t value :
         {static_cast<uint32_t>(log.size()), parts.count, log_base, parts.first, parts.next, 500u})
        put32(bytes, value, parts.big);
    append(bytes, task_entry(0xA, 5, "main", parts.task, parts.big));
    append(bytes, log);
    append(bytes, table);
    return bytes;
}

class CoreFileTest : public ImportTest {};

TEST_F(CoreFileTest, slotsAreReadFromTheFirstToTheNext) {
    const std::string task = "0:6/10:a";
    const std::string damaged4 = "Corrupted core file (version 4).";
    const std::string wild = "Corrupted core file: " + path("t.core");
    const struct {
        const char* name;
        CoreParts parts;
        std::string events;
        std::string error;
    } cases[] = {
        {"straight", {4, true, 4, 1, 3}, task + " 0:2/1:a 1:2/2:a", ""},
        {"round the table", {4, false, 3, 2, 1}, task + " 0:2/2:a 2:2/0:a", ""},
        {"version 4, first is next", {4, false, 3, 1, 1}, task, ""},
        {"version 1, first is next", {1, false, 3, 1, 1}, task + " 0:2/1:a 1:2/2:a 2:2/0:a", ""},
        {"version 1, oldest is 0", {1, true, 3, 1, 1, 1}, task, ""},
        {"a 0 further on", {4, true, 3, 0, 2, 1}, task + " 0:2/0:a", damaged4},
        {"below the log", {4, true, 3, 0, 2, 9999, 1, log_base - 1}, task + " 0:2/0:a", damaged4},
        {"behind the log", {4, true, 3, 0, 2, 9999, 1, log_base + 52}, task + " 0:2/0:a", damaged4},
        {"damaged with nothing before", {4, true, 3, 0, 2, 9999, 0, 1, false}, "", ""},
        {"next outside", {4, true, 3, 1, 9}, task + " 0:2/1:a 1:2/2:a 2:2/0:a", damaged4},
        {"first outside", {4, true, 3, 0xFFFFFFFF, 1}, task, wild},
        {"no slots", {1, true, 0, 0, 0}, task, ""},
    };
    for (const auto& c : cases) {
        const OpenedSource source = import("t.core", core_file(c.parts));
        ASSERT_TRUE(source.store) << c.name;
        EXPECT_EQ(source.trouble.text(), c.error) << c.name;
        EXPECT_EQ(events(*source.store), c.events) << c.name;
        EXPECT_STREQ(mt_GetOsName(source.store.get()), "KORVANTIS");
        EXPECT_EQ(mt_GetTicksPerSecond(*source.store), 500u);
    }
}

// The record that ends exactly with the log counts as damage.
TEST_F(CoreFileTest, theLastByteOfTheLogBelongsToNoRecord) {
    Bytes bytes = core_file({4, true, 3, 1, 2, 9999, 1, log_base + 2 * 17 + 1});
    bytes[28 + 44 + 2 * 17 + 1] = 16;
    const OpenedSource source = import("t.core", bytes);
    EXPECT_EQ(events(*source.store), "0:6/10:a");
    EXPECT_EQ(source.trouble.text(), "Corrupted core file (version 4).");
}

Bytes tolmund_file(bool big, uint32_t count, uint32_t first, uint32_t next) {
    Bytes bytes;
    put16(bytes, 2, big);
    put16(bytes, 1, big);
    for (const uint32_t value : {count, first, next, 250u}) put32(bytes, value, big);
    append(bytes, task_entry(0xA, 5, "main", true, big));
    for (uint32_t i = 0; i < count; ++i) {
        put16(bytes, 2, big);
        put16(bytes, 0x100 + i, big);
        put32(bytes, 0x10000 + i, true);
        put32(bytes, 0, true);
        put32(bytes, 0xA, big);
        put32(bytes, 1, big);
        put32(bytes, 2, big);
    }
    return bytes;
}

TEST_F(CoreFileTest, theFixedLayoutReadsAlikeInBothOrders) {
    const std::string task = "0:6/10:a";
    for (const bool big : {false, true}) {
        const struct {
            uint32_t count, first, next;
            std::string events, error;
        } cases[] = {
            {4, 3, 1, task + " 0:2/259:a 3:2/256:a", ""},
            {2, 1, 1, task + " 0:2/257:a 1:2/256:a", ""},
            {0, 0, 0, task, ""},
            {2, 0, 7, task + " 0:2/256:a 1:2/257:a", "Corrupted core file (version 2)."},
            {2, 2, 1, task, "Corrupted core file: " + path("t.core")},
        };
        for (const auto& c : cases) {
            const OpenedSource source = import("t.core", tolmund_file(big, c.count, c.first, c.next));
            ASSERT_TRUE(source.store);
            EXPECT_EQ(events(*source.store), c.events);
            EXPECT_EQ(source.trouble.text(), c.error);
            EXPECT_STREQ(mt_GetOsName(source.store.get()), "TOLMUND");
        }
    }
}

TEST_F(CoreFileTest, headersThatDoNotFitTheFileAreRefusedInTheirWords) {
    Bytes hugeLog = core_file({}), hugeTable = core_file({}), hugeArray = tolmund_file(true, 1, 0, 1);
    std::fill_n(hugeLog.begin() + 4, 4, uint8_t{0xFF});
    std::fill_n(hugeTable.begin() + 8, 4, uint8_t{0xFF});
    std::fill_n(hugeArray.begin() + 4, 4, uint8_t{0xFF});
    Bytes eleven = core_file({});
    eleven.resize(11);
    Bytes little11{1, 0};
    little11.resize(11);
    const std::string noSource = "\nCan't open VOREL Chronoweave source file \"" + path("t.core") + "\".";
    const struct {
        Bytes bytes;
        std::string error;
    } cases[] = {
        {eleven, "Bad file size for core file(version 4): 11."},
        {little11, "Bad file size for core file(version 1): 11."},
        {hugeLog, gen_format("Bad file size for core file(version 4): %zu.", hugeLog.size())},
        {hugeTable, gen_format("Bad file size for core file(version 4): %zu.", hugeTable.size())},
        {hugeArray, "Bad filesize for core file (version 2)."},
        {{0, 2, 0}, "Bad filesize for core file (version 2)."},
        {{0, 9}, "Unknown core file version: 9"},
        {{0, 0}, "Unknown core file version: 0"},
        {{4, 4, 0}, "Bad format core file." + noSource},
        {{}, "Bad format core file." + noSource},
    };
    for (const auto& c : cases) {
        const OpenedSource source = import("t.core", c.bytes);
        EXPECT_FALSE(source.store);
        EXPECT_EQ(source.trouble.text(), c.error);
    }
}

TEST_F(CoreFileTest, longLogsGoOnAcrossBatches) {
    CoreParts parts{1, false, 1000, 600, 600};
    const OpenedSource source = import("t.core", core_file(parts));
    EXPECT_EQ(source.counts.events, 1001u);
    EXPECT_EQ(source.trouble.text(), "");
}

}  // namespace
