#include "libtrv/gfile.h"

#include <gtest/gtest.h>

#include "libtrv/gadr.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/report.h"

TEST(GFile, RefusesEveryBadHeaderWithAReason) {
    GFileHeader header;
    header.kind = 4;
    const Bytes good = gf_EncodeHeader(header);
    EXPECT_EQ(good, (Bytes{0x7F, 'V', 'R', 'L', 0, 0, 0, 1, 0, 0, 0, 4, 0, 0, 0, 0, 4, 0, 0, 0}));
    std::string reports;
    gen_set_report_sink([&](int, const std::string& line) { reports += line; });
    const struct {
        size_t at;
        uint8_t value;
        const char* why;
    } rows[] = {{0, 0x7E, "not a trace store file"},
                {3, 'l', "not a trace store file"},
                {7, 2, "header version 2 is not supported"},
                {17, 1, "GFile desciptors not supported"},
                {19, 1, "the reserved byte of the header is not 0"},
                {7, 0, ""},
                {18, 2, ""},
                {16, 99, ""}};
    for (const auto& row : rows) {
        Bytes bytes = good;
        bytes[row.at] = row.value;
        EXPECT_EQ(gf_DecodeHeader(bytes, header).text(), row.why) << row.at;
    }
    EXPECT_FALSE(gf_DecodeHeader({good.data(), 19}, header));
    EXPECT_NE(reports.find("GFile desciptors not supported"), std::string::npos);
    EXPECT_NE(reports.find("[gadr_mode_from_encoding]: unknown mode!"), std::string::npos);
    gen_set_report_sink({});
}

TEST(GFile, ReadsAcrossItsBufferAndTellsTheEnd) {
    auto bytes = std::make_shared<Bytes>();
    for (int i = 0; i < 10000; ++i) bytes->push_back(static_cast<uint8_t>(i));
    MemoryDevice device(bytes);
    const auto file = GFile::OnDevice(device, "memory");
    EXPECT_EQ(file->u8(), 0);
    EXPECT_EQ(file->u16(), 0x0102);
    file->skip(4091);
    EXPECT_EQ(file->tell(), 4094u);
    EXPECT_EQ(file->u64(), 0xFEFF000102030405u);
    EXPECT_TRUE(file->fill(5000));
    EXPECT_FALSE(file->fill(0xFFFFFFFFu));  // a length from a damaged file makes no room
    EXPECT_TRUE(file->AtEnd());
    EXPECT_EQ(file->tell(), 4102u);
    file->seek(9999);
    EXPECT_FALSE(file->AtEnd());
    EXPECT_EQ(file->block(10).size(), 1u);
    EXPECT_TRUE(file->AtEnd());
    EXPECT_EQ(file->u32(), 0u);
}

TEST(Gadr, ScansAndShowsEachWidth) {
    gadr address;
    gadr_set_mode(gadr_64bit);
    EXPECT_TRUE(gadr_scan(" 0x12345678_9abcdef0", 1, address));
    EXPECT_EQ(address, (gadr{0x9ABCDEF0, 0x12345678}));
    EXPECT_EQ(gadr_text(address, true), "0x12345678_9abcdef0");
    EXPECT_EQ(gadr_from_32(0x80000000), (gadr{0x80000000, 0xFFFFFFFF}));
    std::string reports;
    gen_set_report_sink([&](int, const std::string& line) { reports += line; });
    EXPECT_FALSE(gadr_scan("1", 2, address));
    EXPECT_NE(reports.find("illegal scale factor"), std::string::npos);
    gen_set_report_sink({});
    gadr_set_mode(gadr_32bit);
    EXPECT_TRUE(gadr_scan("10", 4, address));
    EXPECT_EQ(address, (gadr{4, 0}));
    EXPECT_EQ(gadr_text({0x1F, 0}, true), "0x0000001f");
    EXPECT_EQ(gadr_from_32(0x80000000).high, 0u);
    EXPECT_EQ(gadr_from_32(0xFFFFFFFF).high, 0xFFFFFFFF);
    EXPECT_FALSE(gadr_scan("xyz", 1, address));
}
