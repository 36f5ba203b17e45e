// A stream as it comes through a pipe, in pieces of any size.
#include "chronoweave/import/raw/raw_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <random>
#include <utility>

#include "chronoweave/import/raw/raw_format.h"
#include "chronoweave/import/raw/raw_writer.h"

namespace {

TEST(RawStreamTest, aPipeGivesTheSameRecordsWhateverItsPiecesAre) {
    RawWriter writer(true);
    writer.header({3, true, 3, 1000, raw_OsKorvantis}, RawHeaderForm::Short);
    constexpr uint32_t records = 3000;
    std::mt19937 random(1);
    for (uint32_t i = 0; i < records; ++i) {
        const std::vector<uint8_t> extra(4 + random() % 60, static_cast<uint8_t>(i));
        ASSERT_TRUE(writer.event(1 + i, mt_UserEvent, static_cast<uint16_t>(i), extra));
    }
    const std::vector<uint8_t> bytes = writer.take();
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    size_t written = 0;
    const auto put = [&](size_t count) {
        count = std::min(count, bytes.size() - written);
        EXPECT_EQ(::write(ends[1], bytes.data() + written, count), static_cast<ssize_t>(count));
        written += count;
    };
    std::unique_ptr<EventSource> source;
    put(4);
    EXPECT_EQ(raw_Open(source_FromPipe(ends[0]), "pipe", source).what(), "Bad format TRR file.");
    // What came stays with the source that read it, so a new one begins behind.
    ::close(ends[0]);
    ::close(ends[1]);
    ASSERT_EQ(::pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    written = 0;
    put(28);
    ASSERT_TRUE(raw_Open(source_FromPipe(ends[0]), "pipe", source).ok());
    EXPECT_FALSE(source->look({}));
    uint32_t seen = 0;
    SourceRecord record;
    for (SourceStep step = SourceStep::Pause; step != SourceStep::End;) {
        step = source->next(record);
        if (step == SourceStep::Record) {
            ASSERT_EQ(record.time, 1 + seen);
            ASSERT_EQ(record.subtype, seen++);
        }
        if (step != SourceStep::Again) continue;
        if (written < bytes.size())
            put(1 + random() % 700);
        else if (ends[1] >= 0)
            ::close(std::exchange(ends[1], -1));
    }
    EXPECT_EQ(seen, records);
    EXPECT_EQ(source->counts().badBytes + source->counts().unread, 0u);
    ::close(ends[0]);
}

}  // namespace
