// What the tests of the event server and its targets share: a clock that is moved by hand, and bytes taken
// apart.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "chronoweave/import/raw/raw_record.h"
#include "companions/trv/server/target.h"
#include "libtrv/store_format.h"

inline std::vector<uint8_t> bytes_of(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// An event of a stream, with its extra data kept.
struct TestEvent {
    mt_Time time = 0;
    uint16_t type = 0, subtype = 0;
    uint32_t object = 0;
    std::vector<uint8_t> extra;

    bool is(uint16_t of, uint16_t sub) const { return type == of && subtype == sub; }
    // What stands behind the object, up to a 0 byte; from an offset on.
    std::string text(size_t from = 4) const {
        std::string all(extra.begin() + static_cast<ptrdiff_t>(std::min(from, extra.size())), extra.end());
        return all.substr(0, all.find('\0'));
    }
};

// The events of records; whatever is no whole sound record fails the test.
inline std::vector<TestEvent> events_of(std::span<const uint8_t> records, bool bigEndian = false) {
    std::vector<TestEvent> events;
    for (size_t at = 0; at < records.size();) {
        const RawCut cut = raw_Cut(records, at);
        EXPECT_EQ(cut.kind, RawCut::Kind::Record) << at;
        if (cut.kind != RawCut::Kind::Record) break;
        EXPECT_TRUE(raw_IsLengthSound(cut.record.size())) << at;
        const SourceRecord event = raw_Decode(cut.record, bigEndian);
        events.push_back({event.time,
                          event.type,
                          event.subtype,
                          load_32(event.extra.data(), bigEndian),
                          {event.extra.begin(), event.extra.end()}});
        at += cut.size;
    }
    return events;
}
// Those of a file with a long header.
inline std::vector<TestEvent> events_in(const std::string& file) {
    const auto bytes = bytes_of(file);
    EXPECT_GE(bytes.size(), raw_LongHeaderSize) << file;
    if (bytes.size() < raw_LongHeaderSize) return {};
    return events_of(std::span(bytes).subspan(raw_LongHeaderSize));
}

class TargetTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string folder = (std::filesystem::temp_directory_path() / "target_XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        folder_ = folder;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }
    std::string path(const std::string& name) const { return folder_ + '/' + name; }

    // The clock stands until it is moved.
    Instant now() const { return now_; }
    void pass(std::chrono::nanoseconds time) { now_ += std::chrono::duration_cast<Instant::duration>(time); }

    std::string folder_;

  private:
    Instant now_{std::chrono::hours(1)};
};
