#include "shared/libcxxutil/mapped_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

class MappedFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string name = (std::filesystem::temp_directory_path() / "mapped.XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        name_ = folder_ + "/file";
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }
    void Append(size_t count, char byte) const {
        std::ofstream(name_, std::ios::binary | std::ios::app) << std::string(count, byte);
    }
    std::string folder_, name_;
};

TEST_F(MappedFileTest, GrowsWithTheFileAndWhatWasGivenStays) {
    Append(10, 'a');
    std::unique_ptr<MappedFile> file;
    ASSERT_TRUE(MappedFile::Open(name_, file).ok());
    const auto first = file->bytes();
    ASSERT_EQ(first.size(), 10u);
    for (const size_t more : {size_t{5}, size_t{4} << 20}) {
        Append(more, 'b');
        file->Refresh();
        EXPECT_EQ(file->bytes().size(), std::filesystem::file_size(name_));
        EXPECT_EQ(file->bytes().back(), 'b');
        EXPECT_EQ(first[9], 'a');
    }
}

TEST_F(MappedFileTest, BytesOfAFileThatWasCutAreZeros) {
    Append(100'000, 'a');
    std::unique_ptr<MappedFile> file;
    ASSERT_TRUE(MappedFile::Open(name_, file).ok());
    std::filesystem::resize_file(name_, 10);
    EXPECT_EQ(file->bytes()[9], 'a');
    EXPECT_EQ(file->bytes()[50'000], 0);
    EXPECT_EQ(file->bytes()[99'999], 0);
}

TEST_F(MappedFileTest, OnlyRegularFilesAreOpened) {
    std::unique_ptr<MappedFile> file;
    EXPECT_EQ(MappedFile::Open(folder_, file).what(), "not a regular file");
    EXPECT_FALSE(MappedFile::Open(name_, file).ok());
    Append(0, 'a');
    ASSERT_TRUE(MappedFile::Open(name_, file).ok());
    EXPECT_TRUE(file->bytes().empty());
}

}  // namespace
