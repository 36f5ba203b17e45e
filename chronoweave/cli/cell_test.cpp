#include "chronoweave/cli/cell.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <random>

namespace {

constexpr uint64_t nanoseconds = 1000000000;

std::string shown(RowForm form, const Cell& cell, CellForm column = CellForm::Plain, bool terminal = false,
                  uint64_t clock = nanoseconds) {
    CellWriter writer(form, terminal);
    writer.setClock(clock);
    RowBuffer buffer;
    writer.put(cell, column, buffer);
    return {buffer.data(), buffer.size()};
}

}  // namespace

TEST(Cell, ReadsByItsFormAndColumn) {
    const uint8_t bytes[] = {0, 0x9f};
    const Cell::IdList ids{1, std::nullopt};
    const struct {
        Cell cell;
        CellForm column;
        const char *json, *csv, *text;
    } rows[] = {
        {Cell(), CellForm::Plain, "null", "", "-"},
        {Cell(), CellForm::Percent, "null", "", ""},
        {uint64_t{18446744073709551615u}, CellForm::Plain, "18446744073709551615", "18446744073709551615",
         "18446744073709551615"},
        {0x12abu, CellForm::Id, "4779", "0x12ab", "0x12ab"},
        {-3, CellForm::Id, "-3", "-3", "-3"},
        {12.345, CellForm::Percent, "12.345", "12.35", "12.35"},
        {Cell::ticks(1500000000), CellForm::Plain, "1.5", "1.500000000", "1.500000000"},
        {Cell::ticks(-16279), CellForm::Plain, "-1.6279e-05", "-0.000016279", "-0.000016279"},
        {true, CellForm::Plain, "true", "true", "true"},
        {false, CellForm::Verdict, "false", "FAIL", "FAIL"},
        {Cell::hex(bytes), CellForm::Plain, "\"009f\"", "009f", "009f"},
        {Cell::ids(ids), CellForm::Plain, "[1,null]", "[1,null]", "[1,null]"},
        {"a,\"b\\\n\x1B\x7F\xC2\x9B\xFF", CellForm::Plain,
         "\"a,\\\"b\\\\\\n\\u001b\x7F\xC2\x9B\xEF\xBF\xBD\"", "\"a,\"\"b\\\n\x1B\x7F\xC2\x9B\xEF\xBF\xBD\"",
         "a,\"b\\????\xEF\xBF\xBD"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(shown(RowForm::Json, row.cell, row.column), row.json);
        EXPECT_EQ(shown(RowForm::Csv, row.cell, row.column), row.csv);
        EXPECT_EQ(shown(RowForm::Text, row.cell, row.column), row.text);
    }
    EXPECT_EQ(shown(RowForm::Csv, Cell::ticks(250), CellForm::Plain, false, 1000000), "0.000250")
        << "no digit that a tick does not have";
}

TEST(Cell, SendsNoControlToATerminal) {
    const char* const nasty = "\x1B[2J\x7F\xC2\x9B\r\n\xC3\xA4";
    EXPECT_EQ(shown(RowForm::Csv, nasty, CellForm::Plain, true), "?[2J????\xC3\xA4");
    const std::string json = shown(RowForm::Json, nasty, CellForm::Plain, true);
    EXPECT_EQ(json, "\"\\u001b[2J\\u007f\\u009b\\r\\n\xC3\xA4\"");
    EXPECT_EQ(nlohmann::json::parse(json).get<std::string>(), nasty) << "the same text all the same";
}

TEST(Cell, NumbersAreAsShortAsTheyReadBack) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const double magnitude = std::pow(10.0, static_cast<double>(random() % 40) - 20);
        const double value = static_cast<double>(static_cast<int64_t>(random())) / 9.3e18 * magnitude;
        const std::string text = shown(RowForm::Json, value), other = nlohmann::json(value).dump();
        EXPECT_EQ(nlohmann::json::parse(text).get<double>(), value) << text;
        EXPECT_LE(text.size(), other.size()) << text << " for " << other;  // two can be as near
    }
    for (const double value : {0.0, -0.0, 1.0, 10.0, 123456.0, 1e14, 999999999999999.0, 1e15, 1e16, 1e-4,
                               1.25e-4, 9.9e-5, 1e300, 5e-324})
        EXPECT_EQ(shown(RowForm::Json, value), nlohmann::json(value).dump());
    // Times of a nanosecond's clock have nine decimals at most, also where their doubles have more.
    for (int i = 0; i < 20000; ++i) {
        const auto ticks = static_cast<int64_t>(random() % 1000000000000000);
        const std::string text = shown(RowForm::Json, Cell::ticks(ticks));
        const size_t point = text.find('.'), mark = std::min(text.find('e'), text.size());
        const int exponent = mark < text.size() ? std::stoi(text.substr(mark + 1)) : 0;
        EXPECT_LE(static_cast<int>(mark - std::min(point, mark)) - 1 - exponent, 9) << text;
        EXPECT_EQ(std::llround(std::stod(text) * 1e9), ticks);
    }
}
