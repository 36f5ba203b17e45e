#include "chronoweave/rtos/extra_format.h"

#include <gtest/gtest.h>

#include <utility>

#include "shared/libcxxutil/report.h"

namespace {

using Bytes = std::vector<uint8_t>;

class ExtraFormatTest : public ::testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([this](std::string_view text) { console_ += text; });
    }
    void TearDown() override { gen_set_console_sink({}); }
    // Takes the console's text so far.
    std::string console() { return std::exchange(console_, {}); }

    std::string format(std::string_view text, const Bytes& data, bool big, bool warn = true,
                       bool unused = true) {
        Bytes extra{1, 2, 3, 4};
        extra.insert(extra.end(), data.begin(), data.end());
        EventRecord event;
        event.type = 4;
        event.subtype = 0x1F;
        event.extra = extra;
        std::string result;
        EXPECT_TRUE(extra_Format(event, text, big, warn, unused, result, &flag_));
        return result;
    }
    // The messages of the last call: E exceeded, N not enough, U unused with its count, ?c unknown.
    std::string messages() {
        std::string codes, text = console();
        const std::string head = "Chronoweave: WARNING: event(type=0x4/0x1f) ";
        while (!text.empty()) {
            const std::string line = text.substr(0, text.find('\n'));
            text.erase(0, line.size() + 1);
            const std::string rest = line.substr(0, head.size()) == head ? line.substr(head.size()) : "";
            unsigned count = 0;
            if (rest == "exceeded extra data limit")
                codes += "E";
            else if (rest == "does not have enough extra data")
                codes += "N";
            else if (std::sscanf(rest.c_str(), "has unused extra data(%u bytes)", &count) == 1)
                codes += "U" + std::to_string(count);
            else if (rest.starts_with("has unknown format character in extra data ("))
                codes += "?" + rest.substr(44, rest.size() - 45);
            else
                codes += "!" + line;
        }
        return codes;
    }
    bool flag_ = false;
    std::string console_;
};

TEST_F(ExtraFormatTest, conversions) {
    const Bytes word{0x78, 0x56, 0x34, 0x12};
    Bytes name16{'a', 'b', 'c', 0};
    name16.resize(16, 'z');
    const struct {
        const char* format;
        Bytes data;
        bool big;
        const char* text;
        const char* messages;
    } cases[] = {
        {"%4X", word, false, "0x12345678", ""},
        {"%4X", word, true, "0x78563412", ""},
        {"%2X", {0x34, 0x12}, false, "0x1200", ""},
        {"%2X", {0x34, 0x12}, true, "0x3412", ""},
        {"%4D|", {0xFF, 0xFF, 0xFF, 0xFE}, true, "-2|", ""},
        {"%1X %1I", {7, 8}, true, "0x7 0x8", ""},
        {"a%2Xb", {1}, true, "ab", "N"},
        {"%4X %4X", word, false, "0x12345678 %4X", ""},
        {"%4X %4X", {0x78, 0x56, 0x34, 0x12, 9}, false, "0x12345678 ", "N"},
        // Tagged integers.
        {"%AX", {0x05, 0x99}, false, "0x99", ""},
        {"%AD", {0x82, 0x01, 0x02}, false, "258", ""},
        {"%AX", {0x85, 0xEE, 1, 2, 3, 4}, false, "0x1020304", ""},
        {"%AX!", {0x80, 5}, false, "0x0!", "U1"},
        {"%AX", {0x85, 1, 2, 3, 4}, false, "", "N"},
        {"%AX", {0x7F}, false, "", "N"},
        {"%ID", {1, 10}, false, "0xa", ""},
        {"%IQ.", {1, 10}, false, "0xa.", ""},
        {"%I", {1, 10}, false, "0xa", ""},
        // Strings, and what they take off.
        {"%16C", name16, true, "abc", ""},
        {"%C", {'h', 'i'}, true, "hi", ""},
        {"%1C%1X", {'a', 0, 7}, true, "a0x0", ""},
        {"%0C%1X", {'a'}, true, "0x61", ""},
        {"%99999999999999999999C", {'a', 0, 1, 2}, true, "a", ""},
        // Repeats.
        {"%1D%S1C", {3, 'x', 'y', 'z'}, true, "3xyz", ""},
        {"%1D:%SC", {2, 'x', 'y'}, true, "2:xy", ""},
        {"%1x%S1X.", {2, 5, 6}, true, "0x5 0x6.", ""},
        {"%1x%S1x.", {3, 5, 6, 7}, true, "  .", ""},
        {"%1x%S1X.", {0, 5}, true, ".", "U1"},
        {"%1D%S1C", {200, 'x', 'y'}, true, "200xy", "N"},
        {"%4x%S2X", {0xFF, 0xFF, 0xFF, 0xFF, 1, 2}, true, "0x102 ", "N"},
        // Letters that are none.
        {"%%", {1}, true, "%", "?%U1"},
        {"%%4X", word, true, "%4X", "?%U4"},
        {"%q", {1}, true, "q", "?qU1"},
        {"%1q", {1}, true, "1q", "?q"},
        {"%16D", {1}, true, "16D", "?6"},
        {"%4", word, true, "4", "?"},
        {"a%", {1}, true, "a", "?U1"},
        {"", {1, 2}, true, "", "U2"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(format(c.format, c.data, c.big), c.text) << c.format;
        EXPECT_EQ(messages(), c.messages) << c.format;
        EXPECT_EQ(flag_, *c.messages != 0) << c.format;
    }
}

TEST_F(ExtraFormatTest, theTextEndsAt199Characters) {
    const std::string many(199, '-');
    const struct {
        std::string format;
        size_t data;
        std::string text;
        const char* messages;
    } cases[] = {
        {many, 1, many, "U1"},
        {many + "x", 1, many, "EU1"},
        {many.substr(1) + "%1X.", 1, many.substr(1) + ".", "E"},
        {many.substr(4) + "%1X", 1, many.substr(4) + "0x7", ""},
        {many.substr(3) + "%1X", 1, many.substr(3) + "0x7", ""},
        {many.substr(3) + "%1X  ", 1, many.substr(3) + "0x7", ""},
        {many.substr(3) + "%1X %1X", 1, many.substr(3) + "0x7", "N"},
        {"%C", 300, std::string(199, '\7'), "U100"},
        {"%C.", 300, std::string(199, '\7'), "EU100"},
        {"%1x%S1x", 250, "      ", "U242"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(format(c.format, Bytes(c.data, 7), true), c.text) << c.format;
        EXPECT_EQ(messages(), c.messages) << c.format;
    }
}

TEST_F(ExtraFormatTest, onlyTheIdMeansNoText) {
    const Bytes extra{1, 2, 3, 4};
    EventRecord event;
    event.extra = extra;
    std::string text = "old";
    bool flag = true;
    EXPECT_FALSE(extra_Format(event, "%4X", true, true, true, text, &flag));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(flag);
    EXPECT_EQ(console(), "");
}

TEST_F(ExtraFormatTest, warningsAreSwitchedSeparately) {
    format("%1X", {1, 2}, true, true, false);
    EXPECT_EQ(messages(), "");
    EXPECT_FALSE(flag_);
    format("%2X", {1}, true, true, false);
    EXPECT_EQ(messages(), "N");
    EXPECT_TRUE(flag_);
    for (const char* text : {"%2X%q", "%q", ""}) {
        format(text, {1}, true, false, true);
        EXPECT_EQ(messages(), "");
        EXPECT_FALSE(flag_);
    }
}

TEST_F(ExtraFormatTest, aLeadingRepeatTakesTheValueOfTheCallBefore) {
    format("%1D", {2}, true);
    EXPECT_EQ(format("%S1X", {8, 9}, true), "0x8 0x9");
    // Now it is 9, which the data does not hold.
    EXPECT_EQ(format("%S1D", {1}, true), "1 ");
    EXPECT_EQ(messages(), "N");
}

}  // namespace
