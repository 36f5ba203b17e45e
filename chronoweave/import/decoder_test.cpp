#include <algorithm>

#include "chronoweave/import/import_testing.h"
#include "chronoweave/import/raw/raw_record.h"
#include "libtrv/gfile.h"
#include "libtrv/test_store.h"

namespace {

size_t count_of(const std::string& text, const std::string& word) {
    size_t count = 0;
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
}

TEST(EventSourceHeaderTest, resultsByFirstBytes) {
    gen_set_console_sink([](std::string_view) {});
    Bytes wrongOs = long_header(false, 3, 0, 2);
    Bytes cutLong = long_header(false, 3, 0);
    cutLong.pop_back();
    Bytes cutShort = short_header(true);
    cutShort.pop_back();
    struct Case {
        const char* name;
        Bytes bytes;
        int64_t result;
        bool big;
        uint32_t version;
    };
    const Case cases[] = {
        {"no bytes", {}, 0, false, 0},
        {"one byte", {0}, -1, false, 0},
        {"core, version 1", {1, 0}, -3, false, 0},
        {"core, version 2", {0, 2}, -3, false, 0},
        {"core, version 4", {4, 0}, -3, false, 0},
        {"marker of both bytes", {1, 2, 0, 0}, -1, false, 0},
        {"short, big", short_header(true), 10, true, 3},
        {"short, little", short_header(false), 10, false, 3},
        {"short, other system", short_header(true, 9), -2, true, 3},
        {"short, cut", cutShort, -1, false, 0},
        {"long, big", long_header(true, 3, 1), 28, true, 0x301},
        {"long, little", long_header(false, 2, 1), 28, false, 0x201},
        {"long, other system", wrongOs, -2, false, 0x300},
        {"long, cut", cutLong, -1, false, 0},
    };
    for (const Case& c : cases) {
        EventSourceHeader header;
        testing::internal::CaptureStderr();
        EXPECT_EQ(raw_ReadHeader(*source_FromBytes(c.bytes), header), c.result) << c.name;
        const bool told =
            testing::internal::GetCapturedStderr() == "Error in reading KORVANTIS Raw Event File\n";
        EXPECT_EQ(told, c.name == std::string("one byte") || c.name == std::string("long, cut")) << c.name;
        if (c.result <= 0) continue;
        EXPECT_EQ(header.bigEndian, c.big) << c.name;
        EXPECT_EQ(header.version, c.version) << c.name;
        EXPECT_EQ(header.ticksPerSecond, 1000u) << c.name;
    }
    gen_set_console_sink({});
}

TEST(EventSourceHeaderTest, unknownArchitecturesAreToldAndAccepted) {
    std::string console;
    gen_set_console_sink([&](std::string_view text) { console += text; });
    for (uint32_t code = 0; code < 9; ++code) {
        EventSourceHeader header;
        EXPECT_EQ(raw_ReadHeader(*source_FromBytes(short_header(true, 1, code)), header), 10);
    }
    gen_set_console_sink({});
    std::string expected;
    for (const char* code : {"0", "5", "7", "8"})
        expected += std::string("Chronoweave: WARNING: Unknown architecture code 0x") + code + ".\n";
    EXPECT_EQ(console, expected);
}

TEST(EventSourceHeaderTest, aGrowingFileWaitsForTheRestOfItsHeader) {
    std::string file = (std::filesystem::temp_directory_path() / "header_XXXXXX").string();
    const int made = mkstemp(file.data());
    ASSERT_GE(made, 0);
    const Bytes header = short_header(true);
    ASSERT_EQ(write(made, header.data(), 7), 7);
    close(made);
    EventSourceHeader decoded;
    std::unique_ptr<ByteSource> growing, whole;
    ASSERT_TRUE(source_OpenFile(file, true, growing).ok());
    ASSERT_TRUE(source_OpenFile(file, false, whole).ok());
    EXPECT_EQ(raw_ReadHeader(*growing, decoded), 0);
    EXPECT_EQ(raw_ReadHeader(*whole, decoded), -1);
    std::filesystem::remove(file);
}

class RawDecoderTest : public ImportTest {
  protected:
    static Bytes stream(const std::vector<Bytes>& events, bool big) {
        Bytes bytes = short_header(big);
        for (const Bytes& event : events) put_record(bytes, event);
        return bytes;
    }
    std::string times(const std::vector<uint64_t>& raw, bool big) const {
        std::vector<Bytes> events;
        for (const uint64_t time : raw) events.push_back(raw_event(2, 0, time, 1, big));
        const OpenedSource source = import("t.trr", stream(events, big));
        std::string text;
        EventList list;
        StateTable state;
        mt_GetEventsBySequence(*source.store, 1, 0, list, state);
        for (const EventRecord& event : list) text += std::to_string(event.time) + " ";
        return text;
    }
};

TEST_F(RawDecoderTest, timesCountFromTheFirstTimedEventAndNeverDecrease) {
    const uint64_t far = 0x200000000;
    const struct {
        std::vector<uint64_t> raw;
        const char* stored;
    } cases[] = {
        {{100, 150, 150, 170}, "0 50 50 70 "},
        {{0, 0, 100, 0, 110, 0}, "0 0 0 0 10 10 "},
        {{100, 200, 150, 210}, "0 100 100 110 "},
        // Behind the first: the origin moves and later times jump up.
        {{100, 200, 50, 210, 0}, "0 100 150 160 160 "},
        {{far, far + 7, 1, far + 8}, "0 7 8589934598 8589934599 "},
    };
    for (const auto& c : cases)
        for (const bool big : {false, true}) EXPECT_EQ(times(c.raw, big), c.stored);
}

TEST_F(RawDecoderTest, recordsOfBadLengthAreDroppedAndTheStreamStaysInStep) {
    const bool big = true;
    Bytes fifteen = raw_event(2, 0, 5, 1, big);
    fifteen.pop_back();
    const OpenedSource source = import(
        "t.trr",
        stream({raw_event(2, 1, 10, 7, big), fifteen, Bytes(1, 9), raw_event(1, 2, 12, 8, big, 70)}, big));
    EXPECT_EQ(events(*source.store), "0:2/1:7 2:1/2:8");
    EXPECT_EQ(source.counts.tooShort, 2u);
    EXPECT_EQ(source.counts.dropped(), 2u);
    EXPECT_EQ(source.trouble.text(), "");
    EXPECT_EQ(console(),
              "Chronoweave: Warning: drop event with abnormal length: 15(min length=16)\n"
              "Chronoweave: Warning: drop event with abnormal length: 1(min length=16)\n");
}

TEST_F(RawDecoderTest, badBytesCostOneMessageAndOneByteEach) {
    Bytes bytes = stream({raw_event(2, 1, 10, 7, false)}, false);
    append(bytes, {0x00, 0x53, 0xFF});
    put_record(bytes, raw_event(2, 2, 11, 7, false));
    const OpenedSource source = import("t.trr", bytes);
    EXPECT_EQ(events(*source.store), "0:2/1:7 1:2/2:7");
    EXPECT_EQ(source.counts.badBytes, 3u);
    EXPECT_EQ(console(),
              "Chronoweave: Bad TRR byte at offset 0x1b: 0x0\n"
              "Chronoweave: Bad TRR byte at offset 0x1c: 0x53\n"
              "Chronoweave: Bad TRR byte at offset 0x1d: 0xff\n");
}

TEST_F(RawDecoderTest, aRunOfBadBytesIsCountedWholeAndToldInPart) {
    Bytes bytes = short_header(true);
    bytes.resize(bytes.size() + 3'000'000);
    put_record(bytes, raw_event(2, 2, 11, 7, true));
    const OpenedSource source = import("t.trr", bytes);
    EXPECT_EQ(source.counts.badBytes, 3'000'000u);
    EXPECT_EQ(source.counts.events, 1u);
    const std::string text = console();
    EXPECT_EQ(count_of(text, "Bad TRR byte"), RawRecords::limit);
    EXPECT_NE(text.find("... and 2999900 more bad TRR bytes\n"), std::string::npos);
}

TEST_F(RawDecoderTest, aCutTailIsLeftAndCounted) {
    Bytes bytes = stream({raw_event(2, 1, 10, 7, false)}, false);
    append(bytes, {20, 1, 2, 3});
    const OpenedSource source = import("t.trr", bytes);
    EXPECT_EQ(source.counts.events, 1u);
    EXPECT_EQ(source.counts.unread, 4u);
    EXPECT_EQ(source.trouble.text(), "");
    EXPECT_EQ(console(), "Chronoweave: 4 bytes of a cut record are left at offset 0x1b.\n");
}

TEST_F(RawDecoderTest, recordsThatSpanBuffersAreReadWhole) {
    // Records of 17 + 1 bytes never divide a buffer evenly, with a limit or without.
    Bytes bytes = short_header(true);
    for (uint32_t i = 0; i < 120000; ++i) put_record(bytes, raw_event(2, 1, 1 + i, i & 3, true, 5));
    const OpenedSource source = import("t.trr", bytes);
    EXPECT_EQ(source.counts.events, 120000u);
    EXPECT_EQ(source.counts.badBytes, 0u);
    EXPECT_EQ(mt_GetTimeRange(*source.store).end, 120000u);
}

TEST_F(RawDecoderTest, progressCanStopTheImportWithWhatItHas) {
    Bytes bytes = short_header(true);
    for (uint32_t i = 0; i < 200000; ++i) put_record(bytes, raw_event(2, 1, 1 + i, 1, true));
    double stopAt = 0.7, reached = 0;
    int calls = 0;
    ImportOptions options;
    options.progress = [&](double done, double total) {
        ++calls;
        EXPECT_GE(done / total, reached) << "it never goes back";
        EXPECT_LE(done, total);
        reached = done / total;
        return reached < stopAt;
    };
    const OpenedSource source = import_OpenSource(write("t.trr", bytes), options);
    EXPECT_TRUE(source.counts.stopped);
    EXPECT_GT(calls, 5) << "the look ahead tells too";
    ASSERT_TRUE(source.store);
    EXPECT_GT(source.counts.events, 100000u);
    EXPECT_LT(source.counts.events, 200000u);
    EXPECT_EQ(mt_GetEventCount(*source.store), source.counts.events);
    // Stopped in the look ahead nothing is written: the store that stands there stays.
    stopAt = reached = 0;
    const OpenedSource none = import_OpenSource(path("t.trr"), options);
    EXPECT_TRUE(none.counts.stopped);
    EXPECT_FALSE(none.store);
    EXPECT_EQ(none.trouble.text(), "");
    EXPECT_EQ(mt_GetEventCount(*mt_OpenForRead(path("t"))), source.counts.events);
}

}  // namespace
