#include "chronoweave/import/source/byte_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <numeric>
#include <utility>

namespace {

using Bytes = std::vector<uint8_t>;

class PipeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(::pipe2(ends_, O_NONBLOCK | O_CLOEXEC), 0);
        source_ = source_FromPipe(ends_[0]);
    }
    void TearDown() override {
        ::close(ends_[0]);
        CloseFarEnd();
    }
    void put(const Bytes& bytes) const {
        ASSERT_EQ(::write(ends_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void CloseFarEnd() {
        if (ends_[1] >= 0) ::close(std::exchange(ends_[1], -1));
    }
    std::pair<SourceStatus, Bytes> read(uint64_t offset, size_t count) const {
        Bytes bytes(count);
        const SourceRead got = source_->ReadAt(offset, bytes);
        bytes.resize(got.bytes);
        return {got.status, bytes};
    }
    int ends_[2] = {-1, -1};
    std::unique_ptr<ByteSource> source_;
};

TEST_F(PipeTest, tellsNothingYetFromTheFarEndGone) {
    EXPECT_EQ(read(0, 9).first, SourceStatus::Again);
    put({1, 2, 3, 4});
    EXPECT_EQ(read(0, 3), std::pair(SourceStatus::Data, Bytes{1, 2, 3}));
    EXPECT_EQ(read(1, 9), std::pair(SourceStatus::Data, Bytes{2, 3, 4}));
    EXPECT_EQ(read(4, 9).first, SourceStatus::Again);
    put({5});
    CloseFarEnd();
    EXPECT_EQ(read(4, 9), std::pair(SourceStatus::Data, Bytes{5}));
    EXPECT_EQ(read(5, 9).first, SourceStatus::End);
    EXPECT_EQ(source_->size(), 5u);
    EXPECT_FALSE(source_->rereadable());
    EXPECT_EQ(read(7, 1).first, SourceStatus::Failed);  // nothing came that far
}

TEST_F(PipeTest, givesLongStreamsWholeAndKeepsTheNewestBytes) {
    Bytes portion(40'000);
    std::iota(portion.begin(), portion.end(), static_cast<uint8_t>(0));
    uint64_t offset = 0;
    for (int round = 0; round < 100; ++round) {
        put(portion);
        ASSERT_EQ(read(offset, 100'000), std::pair(SourceStatus::Data, portion)) << round;
        offset += portion.size();
    }
    EXPECT_EQ(read(offset - 60'000, 20'000),
              std::pair(SourceStatus::Data, Bytes(portion.begin() + 20'000, portion.end())));
    EXPECT_EQ(read(0, 1).first, SourceStatus::Failed);
}

TEST(FileSourceTest, theEndOfAFileThatGrowsIsNone) {
    std::array<char, 32> name{"/tmp/bytes_XXXXXX"};
    const int file = ::mkstemp(name.data());
    ASSERT_GE(file, 0);
    ASSERT_EQ(::write(file, "ab", 2), 2);
    std::unique_ptr<ByteSource> once, growing;
    ASSERT_TRUE(source_OpenFile(name.data(), false, once).ok());
    ASSERT_TRUE(source_OpenFile(name.data(), true, growing).ok());
    uint8_t bytes[8];
    EXPECT_EQ(once->ReadAt(2, bytes).status, SourceStatus::End);
    EXPECT_EQ(growing->ReadAt(2, bytes).status, SourceStatus::Again);
    ASSERT_EQ(::write(file, "c", 1), 1);
    EXPECT_EQ(growing->ReadAt(2, bytes).bytes, 1u);
    ::close(file);
    ::unlink(name.data());
    EXPECT_EQ(source_OpenFile(name.data(), false, once).text(),
              std::string(name.data()) + ": No such file or directory");
    ASSERT_EQ(::mkfifo(name.data(), 0600), 0);  // opening it would wait for a writer
    EXPECT_EQ(source_OpenFile(name.data(), false, once).text(),
              std::string(name.data()) + ": Not a regular file");
    ::unlink(name.data());
}

}  // namespace
