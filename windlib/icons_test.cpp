#include "windlib/icons.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

class IconFolder : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string name = path_join(path_temporary_directory(), "icons_XXXXXX");
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        gen_set_report_sink([this](int, const std::string&) { ++warnings_; });
    }
    void TearDown() override {
        gen_set_report_sink({});
        std::filesystem::remove_all(folder_);
    }
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(path_join(folder_, name), std::ios::binary) << text;
    }

    std::string folder_;
    int warnings_ = 0;
};

TEST_F(IconFolder, SizesComeFromTheRootElement) {
    struct Case {
        const char* name;
        const char* text;
        int width, height;  // 0: left out
    };
    const Case cases[] = {
        {"plain", "<svg width=\"14\" height=\"16\"/>", 14, 16},
        {"pixels", "<svg\n  height='16px'\n  width=' 13.6 '>", 14, 16},
        {"prolog",
         "<?xml version=\"1.0\"?><!-- <svg width=\"1\" height=\"1\"> --><!DOCTYPE svg>"
         "<svg width=\"9\" height=\"9\"></svg>",
         9, 9},
        {"stroke", "<svg stroke-width=\"3\" width=\"12\" height=\"10\"><rect width=\"5\"/></svg>", 12, 10},
        {"inner", "<svg viewBox=\"0 0 9 9\"><rect width=\"5\" height=\"5\"/></svg>", 0, 0},
        {"percent", "<svg width=\"100%\" height=\"100%\"/>", 0, 0},
        {"zero", "<svg width=\"0\" height=\"9\"/>", 0, 0},
        {"huge", "<svg width=\"1e9\" height=\"9\"/>", 0, 0},
        {"open", "<svg width=\"14", 0, 0},
        {"unquoted", "<svg width=14 height=14>", 0, 0},
        {"other", "<html width=\"14\" height=\"14\">", 0, 0},
        {"bracket", "<", 0, 0},
        {"empty", "", 0, 0},
    };
    int bad = 0;
    for (const Case& c : cases) {
        Write(std::string(c.name) + ".svg", c.text);
        bad += c.width == 0;
    }
    Write("picture.png", "<svg width=\"14\" height=\"14\"/>");
    std::filesystem::create_directory(path_join(folder_, "folder.svg"));

    const std::vector<IconInfo> icons = icon_ReadFolder(folder_);
    for (const Case& c : cases) {
        const auto found = std::find_if(icons.begin(), icons.end(),
                                        [&](const IconInfo& icon) { return icon.name == c.name; });
        ASSERT_EQ(found != icons.end(), c.width > 0) << c.name;
        if (c.width == 0) continue;
        EXPECT_EQ(found->width, c.width) << c.name;
        EXPECT_EQ(found->height, c.height) << c.name;
    }
    EXPECT_EQ(icons.size(), std::size(cases) - static_cast<size_t>(bad));
    EXPECT_EQ(warnings_, bad);
    EXPECT_TRUE(std::is_sorted(icons.begin(), icons.end(),
                               [](const IconInfo& a, const IconInfo& b) { return a.name < b.name; }));
}

TEST_F(IconFolder, AMissingFolderHasNoIcons) {
    EXPECT_TRUE(icon_ReadFolder(path_join(folder_, "none")).empty());
    EXPECT_EQ(icon_Width(NoIcon), 0);
    EXPECT_EQ(icon_Height(1 << 30), 0);
}

}  // namespace
