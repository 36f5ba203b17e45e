// What the raw writer writes, byte by byte and through the reader.
#include "chronoweave/import/raw/raw_writer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "chronoweave/import/raw/raw_format.h"
#include "libtrv/test_store.h"

namespace {

const EventSourceHeader small{3, true, 3, 1000, raw_OsKorvantis};

TEST(RawWriterTest, HeadersAreTheseBytes) {
    EXPECT_EQ(raw_EncodeHeader(small, RawHeaderForm::Short), (Bytes{0, 3, 0, 1, 0, 3, 0, 0, 3, 0xE8}));
    EventSourceHeader header{0x201, false, 2, (uint64_t{5} << 32) + 7, raw_OsKorvantis};
    Bytes bytes = raw_EncodeHeader(header, RawHeaderForm::Long);
    const Bytes expected{2, 1, 0, 0, 1, 0, 2, 0, 5, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.end()), expected);
    EXPECT_GT(bytes[0] | bytes[1], 4);  // not to be taken for a short header or a core file
}

TEST(RawWriterTest, RecordsAreTheseBytes) {
    RawWriter writer(false);
    ASSERT_TRUE(writer.event(0x100000002, mt_StatusChange, 3, {0x401, 9}));
    EXPECT_EQ(writer.take(), (Bytes{20, 0, 5, 0, 3, 2, 0, 0, 0, 1, 0, 0, 0, 1, 4, 0, 0, 9, 0, 0, 0}));
    writer.refresh(0, 2, {0x401, 20, "net", "grp"});
    Bytes refresh = writer.take();
    ASSERT_EQ(refresh.size(), 1u + 12 + 70);
    EXPECT_EQ(refresh[0], 82);
    EXPECT_EQ(std::string(&refresh[21], &refresh[24]), "net");
    EXPECT_EQ(std::string(&refresh[52], &refresh[55]), "grp");
    const Bytes longest(70), longer(71);
    EXPECT_TRUE(writer.event(1, mt_UserEvent, 0, longest));
    EXPECT_FALSE(writer.event(1, mt_UserEvent, 0, longer));
    EXPECT_EQ(writer.take().size(), 83u);
}

// What a source says, event by event.
std::string read_all(const Bytes& bytes) {
    std::unique_ptr<EventSource> source;
    const Result opened = raw_Open(source_FromBytes(bytes), "memory", source);
    if (!opened.ok()) return opened.text();
    std::string text = std::to_string(source->facts().ticksPerSecond);
    SourceRecord record;
    for (SourceStep step{}; (step = source->next(record)) != SourceStep::End;)
        if (step == SourceStep::Record)
            text += " " + std::to_string(record.time) + ":" + std::to_string(record.type) + "/" +
                    std::to_string(record.subtype) + ":" +
                    std::to_string(load_32(record.extra.data(), source->facts().bigEndian)) + "+" +
                    std::to_string(record.extra.size());
    return text;
}

TEST(RawWriterTest, TheReaderReadsItInBothOrdersAndForms) {
    for (const bool big : {false, true})
        for (const RawHeaderForm form : {RawHeaderForm::Short, RawHeaderForm::Long}) {
            RawWriter writer(big);
            writer.header({0x300, big, 3, 1'000'000, raw_OsKorvantis}, form);
            writer.refresh(0, 1, {7, 3, "a name that is longer than there is room"});
            ASSERT_TRUE(writer.event(uint64_t{1} << 40, mt_TaskChange, 0, {7}));
            EXPECT_EQ(read_all(writer.take()), "1000000 0:6/1:7+39 1099511627776:1/0:7+4");
        }
}

TEST(RawFileTest, TakesManyEventsAndTellsAFailure) {
    TestFolder folder;
    const std::string name = folder / "run.trr";
    std::unique_ptr<RawFile> file;
    ASSERT_TRUE(RawFile::create(name, small, RawHeaderForm::Short, file).ok());
    for (uint32_t i = 0; i < 100'000; ++i) {
        ASSERT_TRUE(file->writer().event(i, mt_Timer, 0, {i}));
        ASSERT_TRUE(file->put().ok());
    }
    ASSERT_TRUE(file->flush().ok());
    std::ifstream written(name, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(written), {}};
    EXPECT_EQ(bytes.size(), 10u + 100'000 * 17);
    const std::string said = read_all(bytes);
    EXPECT_EQ(said.substr(said.size() - 18), " 99999:7/0:99999+4");
    EXPECT_EQ(RawFile::create(folder / "none/run.trr", small, RawHeaderForm::Short, file).text(),
              folder / "none/run.trr" + ": No such file or directory");
}

}  // namespace
