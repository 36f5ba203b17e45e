// The session: one that follows a file with a clock of its own, stores that fill up, and formats of their
// own.
#include "chronoweave/import/formats.h"
#include "chronoweave/import/import_session.h"
#include "chronoweave/import/import_testing.h"
#include "chronoweave/import/raw/raw_format.h"
#include "libtrv/test_store.h"

namespace {

Bytes stream(const std::vector<Bytes>& events, bool big) {
    Bytes bytes = short_header(big);
    for (const Bytes& event : events) put_record(bytes, event);
    return bytes;
}

class FollowTest : public ImportTest {
  protected:
    void open(std::unique_ptr<EventSource> source) {
        session_.status = [this](const char* text) { status_ = text; };
        session_.clock = [] { return now += step; };
        const Result made = session_.open(
            std::move(source), 0,
            [&](const StoreFacts& facts, mt_EventCallback tracker, std::unique_ptr<StoreWriter>& writer) {
                return StoreWriter::Create(path("live"), facts, tracker, writer);
            });
        ASSERT_TRUE(made.ok()) << made.text();
    }
    void follow(const Bytes& bytes) {
        std::unique_ptr<EventSource> source;
        const Result opened = raw_Format.open(SourceName(write("live.trr", bytes)), {true}, source);
        ASSERT_TRUE(opened.ok()) << opened.text();
        open(std::move(source));
    }
    void grow(const Bytes& bytes) const {
        std::ofstream file(path("live.trr"), std::ios::binary | std::ios::app);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    void SetUp() override {
        ImportTest::SetUp();
        now = step = 0;
    }
    ImportSession session_;
    std::string status_ = "unset";
    static inline int64_t now = 0, step = 0;
};

TEST_F(FollowTest, aRecordWrittenInTwoPartsIsReadOnceWhole) {
    const bool big = false;
    Bytes record;
    put_record(record, raw_event(2, 2, 20, 8, big));
    Bytes first = stream({raw_event(2, 1, 10, 7, big)}, big);
    first.insert(first.end(), record.begin(), record.begin() + 5);
    session_.tellsCutRecords = false;
    follow(first);
    EXPECT_EQ(session_.read(100), ReadEnd::Done);
    EXPECT_TRUE(session_.MayGrow());
    EXPECT_EQ(status_, "");
    EXPECT_EQ(session_.counts().unread, 5u);
    EXPECT_EQ(session_.counts().unreadAt, 27u);
    const TraceStorePtr reader = mt_OpenForRead(path("live"));
    EXPECT_EQ(events(*reader), "0:2/1:7");

    EXPECT_EQ(session_.read(100), ReadEnd::Done);
    EXPECT_EQ(session_.counts().events, 1u);
    grow(Bytes(record.begin() + 5, record.end()));
    EXPECT_EQ(session_.read(100), ReadEnd::Done);
    EXPECT_EQ(session_.counts().unread, 0u);
    mt_RefreshIndex(*reader);
    EXPECT_EQ(events(*reader), "0:2/1:7 10:2/2:8");
    EXPECT_EQ(console(), "");
}

TEST_F(FollowTest, aCutRecordIsToldOnceWhereItStands) {
    Bytes bytes = stream({raw_event(2, 1, 10, 7, false)}, false), record;
    put_record(record, raw_event(2, 2, 20, 8, false));
    append(bytes, {16, 0, 2});
    follow(bytes);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(session_.read(int64_t{i} * 10), ReadEnd::Done);
    EXPECT_EQ(console(), "Chronoweave: 3 bytes of a cut record are left at offset 0x1b.\n");
    grow(Bytes(record.begin() + 3, record.end()));
    grow({16, 9});
    for (int i = 0; i < 2; ++i) EXPECT_EQ(session_.read(0), ReadEnd::Done);
    EXPECT_EQ(session_.counts().events, 2u);
    EXPECT_EQ(console(), "Chronoweave: 2 bytes of a cut record are left at offset 0x2c.\n");
}

TEST_F(FollowTest, ticksTellACutRecordOnceAndNoneThatIsBeingWritten) {
    Bytes bytes = stream({raw_event(2, 1, 10, 7, false)}, false), record;
    put_record(record, raw_event(2, 2, 20, 8, false));
    follow(bytes);
    // Each read finds some bytes of the next record.
    for (size_t i = 0; i + 1 < record.size(); ++i) {
        grow(Bytes{record[i]});
        EXPECT_EQ(import_ReadOn(session_, 40).unread, i + 1);
    }
    EXPECT_EQ(console(), "");
    for (int i = 0; i < 9; ++i) EXPECT_EQ(import_ReadOn(session_, 40).events, 0u);
    EXPECT_EQ(console(), "Chronoweave: 16 bytes of a cut record are left at offset 0x1b.\n");
    grow(Bytes{record.back()});
    EXPECT_EQ(import_ReadOn(session_, 40).events, 1u);
    EXPECT_EQ(console(), "");
}

TEST_F(FollowTest, theLimitIsTestedOncePerBufferAndTheNextReadGoesOn) {
    Bytes bytes = short_header(true);
    for (uint32_t i = 0; i < 5000; ++i) put_record(bytes, raw_event(2, 1, 1 + i, 1, true));
    follow(bytes);
    step = 60;  // each look at the clock: the deadline of 100 falls to the second buffer
    EXPECT_EQ(session_.read(100), ReadEnd::CutShort);
    EXPECT_EQ(status_, "More events are coming than we can display promptly.");
    EXPECT_EQ(session_.counts().events, 2 * (32768u / 17));
    const ReadOn rest = import_ReadOn(session_, 0);
    EXPECT_EQ(rest.events, 5000 - 2 * (32768u / 17));
    EXPECT_FALSE(rest.more);
    EXPECT_TRUE(rest.trouble.ok());
    EXPECT_EQ(status_, "");
    EXPECT_EQ(session_.counts().events, 5000u);
}

class FailingSource : public ByteSource {
  public:
    explicit FailingSource(Bytes bytes) : bytes_(source_FromBytes(std::move(bytes))) {}
    SourceRead ReadAt(uint64_t offset, std::span<uint8_t> bytes) override {
        return offset < raw_ShortHeaderSize ? bytes_->ReadAt(offset, bytes)
                                            : SourceRead{SourceStatus::Failed, 0};
    }
    uint64_t size() override { return 1000; }

  private:
    std::unique_ptr<ByteSource> bytes_;
};

TEST_F(FollowTest, aSourceThatCannotBeReadIsTold) {
    Bytes bytes = short_header(true);
    bytes.resize(28);
    std::unique_ptr<EventSource> source;
    ASSERT_TRUE(raw_Open(std::make_unique<FailingSource>(bytes), "wire", source).ok());
    open(std::move(source));
    EXPECT_EQ(import_ReadOn(session_, 0).trouble.text(), "wire: Cannot seek to file position (0xa)");
    EXPECT_EQ(console(), "Chronoweave: Cannot seek to file position (0xa)\n");
}

// What a format of another system gives, at its least. It has 3000 events and no look ahead.
class CountingSource : public EventSource {
  public:
    const SourceFacts& facts() const override { return facts_; }
    SourceStep next(SourceRecord& record) override {
        if (done_ == last) return SourceStep::End;
        store_be32(id_, done_++ % 7);
        record = {done_ + (done_ > 2000 ? far_ : 0), 2, 1, id_};
        return SourceStep::Record;
    }
    SourceExtent extent() const override { return {static_cast<double>(done_), last}; }
    mt_Time far_ = 0;  // how far the times behind the 2000th lie

  private:
    static constexpr uint32_t last = 3000;
    SourceFacts facts_{1000, "TOLMUND", true};
    uint32_t done_ = 0;
    uint8_t id_[4];
};

TEST_F(FollowTest, aFormatNeedsNoMoreThanItsFactsAndItsRecords) {
    open(std::make_unique<CountingSource>());
    EXPECT_EQ(session_.read(0), ReadEnd::Done);
    EXPECT_FALSE(session_.MayGrow());
    EXPECT_TRUE(session_.close().ok());
    const TraceStorePtr store = mt_OpenForRead(path("live"));
    EXPECT_EQ(mt_GetEventCount(*store), 3000u);
    EXPECT_EQ(mt_GetTimeRange(*store).end, 3000u);
    EXPECT_EQ(mt_GetCheckpointInterval(*store), look_UnknownInterval);
    EXPECT_STREQ(mt_GetOsName(store.get()), "TOLMUND");
}

TEST_F(FollowTest, timesFromTheHighestBitOnAreToldOnce) {
    auto source = std::make_unique<CountingSource>();
    source->far_ = mt_Time{1} << 63;
    open(std::move(source));
    EXPECT_EQ(session_.read(0), ReadEnd::Done);
    EXPECT_EQ(console(),
              "Chronoweave: WARNING: Event 2001 is at tick 9223372036854777808; times from 2^63 on are "
              "ordered before all others.\n");
    EXPECT_EQ(session_.counts().events, 3000u);
}

TEST_F(ImportTest, eventsThatTheStoreRefusesAreCountedInOneLine) {
    ImportSession session;
    std::vector<Bytes> many;
    for (uint32_t i = 0; i < 2000; ++i) many.push_back(raw_event(2, 1, 10 + i, 7, true));
    std::unique_ptr<EventSource> source;
    ASSERT_TRUE(raw_Open(source_FromBytes(stream(many, true)), "memory", source).ok());
    const Result made = session.open(
        std::move(source), 0,
        [](const StoreFacts& facts, mt_EventCallback tracker, std::unique_ptr<StoreWriter>& writer) {
            writer = StoreWriter::OnDevices(std::make_unique<MemoryDevice>(std::make_shared<Bytes>()),
                                            std::make_unique<MemoryDevice>(std::make_shared<Bytes>()), facts,
                                            tracker);
            writer->SetOffsetLimit(20000);
            return Result();
        });
    ASSERT_TRUE(made.ok());
    EXPECT_EQ(session.read(0), ReadEnd::Done);
    const ImportCounts& counts = session.counts();
    EXPECT_GT(counts.events, 0u);
    EXPECT_EQ(counts.events + counts.refused, 2000u);
    EXPECT_EQ(console(), "Chronoweave: unexpected libtrv return value.\n");
    EXPECT_EQ(
        session.MissingEvents(),
        gen_format("%llu events could not be taken into the store, which ends at %.3f s: .trs: the store is "
                   "full: its offsets end at four gigabytes",
                   static_cast<unsigned long long>(counts.refused),
                   static_cast<double>(counts.events - 1) / 1000));
}

TEST_F(ImportTest, checkpointsStandAsFarApartAsTheObjectsAskOrTheUserSays) {
    const auto interval = [this](uint32_t objects, uint32_t wanted) {
        Bytes bytes = short_header(true);
        for (uint32_t i = 0; i < 4000; ++i) put_record(bytes, raw_event(4, 1, 1 + i, i % objects, true));
        ImportOptions options;
        options.checkpoint = wanted;
        const OpenedSource source = import_OpenSource(write("run.trr", bytes), options);
        EXPECT_EQ(events(*source.store).substr(0, 10), "0:4/1:0 1:");
        EXPECT_EQ(mt_GetEventCount(*source.store), 4000u);
        return mt_GetCheckpointInterval(*source.store);
    };
    EXPECT_EQ(interval(3, 0), 100u);
    EXPECT_EQ(interval(1000, 0), 5200u);  // 92 bytes an object, 18 an event
    EXPECT_EQ(interval(1000, 300), 300u);
    // Objects that come late count as well.
    Bytes late = short_header(true);
    for (uint32_t i = 0; i < 9000; ++i) put_record(late, raw_event(4, 1, 1 + i, i < 8000 ? 1 : i, true));
    EXPECT_GT(mt_GetCheckpointInterval(*import("late.trr", late).store), 5000u);
}

TEST_F(ImportTest, aNameIsTheFirstFormatsThatTakesIt) {
    write("a.trr", short_header(true));
    write("core.trr", {0, 4, 0, 0});
    write("a.core", {9, 9});
    const struct {
        const char* name;
        const char* format;
    } cases[] = {{"a.trr", "raw event file"}, {"gone.trr", "raw event file"},
                 {"core.trr", "core file"},   {"a.core", "core file"},
                 {"a.TRR", nullptr},          {"a", nullptr}};
    for (const auto& c : cases) {
        const SourceFormat* format = import_FormatOf(SourceName(path(c.name)));
        EXPECT_STREQ(format ? format->name : nullptr, c.format) << c.name;
    }
}

}  // namespace
