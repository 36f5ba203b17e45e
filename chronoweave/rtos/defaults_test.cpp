// The configure files that come with the program.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/rtos/status_looks.h"
#include "libtrv/event_names.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/config_dirs.h"
#include "windlib/icons.h"

namespace {

// Read when the installation is first asked for, which is never before a test runs.
const int homeSet = setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);

class Defaults : public ::testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        ASSERT_EQ(homeSet, 0);
        config_UseDefaultsOnly(true);
        gen_set_report_sink([this](int, const std::string& line) { said_ += line; });
        gen_set_console_sink([this](std::string_view text) { said_ += text; });
        ConfigureCallbacks callbacks = configure_ConsoleCallbacks();
        callbacks.message = [this](const std::string& text) { said_ += text; };
        ASSERT_TRUE(configure_Read(legend_, GetParam(), callbacks, 0)) << said_;
    }
    void TearDown() override {
        config_UseDefaultsOnly(false);
        gen_set_report_sink({});
        gen_set_console_sink({});
    }
    const LegendEvent& Event(uint16_t type, uint16_t subtype) {
        return legend_.events[static_cast<size_t>(legend_.EventIndex(type, subtype))];
    }
    Legend legend_;
    std::string said_;
};

INSTANTIATE_TEST_SUITE_P(Systems, Defaults,
                         ::testing::Values("KORVANTIS", "TOLMUND", "ThreadX", "trace_function_flow"));

TEST_P(Defaults, ReadWithoutAWord) {
    const ConfigureCheck check = configure_Check(legend_.path);
    EXPECT_EQ(check.errors, 0);
    EXPECT_EQ(said_, "");
    EXPECT_TRUE(check.messages.empty());
    EXPECT_EQ(check.statuses, legend_.statuses.size()) << "nothing had to be added";
    EXPECT_EQ(check.events + check.categories, legend_.events.size());
}

TEST_P(Defaults, EveryStatusHasARowAndALineOfItsOwn) {
    for (const char* name : {"READY", "SUSPEND", "PEND", "RUNNING", "EVWAIT"}) {
        const LegendStatus& row = legend_.statuses[static_cast<size_t>(legend_.StatusByName(name))];
        EXPECT_STREQ(mt_StatusName(row.code), name);
        EXPECT_EQ(row.isExecution, mt_StatusIsRunning(0, row.code)) << name;
    }
    EXPECT_NE(legend_.StatusIndex(10), legend_.unknownStatus);
    for (const LegendStatus& a : legend_.statuses) {
        EXPECT_TRUE(a.visible) << a.name;
        for (const LegendStatus& b : legend_.statuses) {
            const bool sameLine = a.lineStyle == b.lineStyle && a.thickness == b.thickness;
            EXPECT_TRUE(&a == &b || a.isContextSwitch || b.isContextSwitch || !sameLine ||
                        a.name == "Unknown" || b.name == "Unknown")
                << a.name << " and " << b.name;
        }
    }
    EXPECT_EQ(legend_.contextSwitchCount, 1);
    EXPECT_EQ(said_, "");
}

TEST_P(Defaults, EveryKernelCallBearsItsName) {
    const std::string prefix = "Kernel Call: ";
    int named = 0;
    for (uint16_t subtype = 0; subtype < 0x100; ++subtype) {
        const std::string longName = mt_EventLongName(3, subtype);
        const bool known = longName.rfind(prefix, 0) == 0 && longName.find("UNKNOWN") == std::string::npos;
        named += known;
        EXPECT_EQ(Event(3, subtype).name, known ? longName.substr(prefix.size()) : "KernelCall") << subtype;
    }
    EXPECT_EQ(named, 47);
}

TEST_P(Defaults, NoEventOfAKnownTypeIsUnknown) {
    for (uint16_t type = 1; type <= 7; ++type)
        for (const int subtype : {0, 1, 2, 3, 7, 8, 10, 36, 0xFF, 0x1000, 0xFFFF}) {
            const LegendEvent& row = Event(type, static_cast<uint16_t>(subtype));
            EXPECT_NE(row.name, "Unknown") << type << "/" << subtype;
            EXPECT_EQ(row.visibility(), 1u) << row.name;
        }
    for (const uint16_t code : mt_StatusCodes(0))
        EXPECT_EQ(Event(5, code).name, "StatusChange " + std::string(mt_StatusName(code)));
    EXPECT_EQ(Event(8, 0).name, "Unknown");
}

TEST_P(Defaults, EveryIconExistsAndIsSmall) {
    EXPECT_NE(icon_Find(legend_.misc.overlapIcon), NoIcon);
    for (const LegendEvent& event : legend_.events) {
        if (event.IsCategory()) continue;
        EXPECT_TRUE(event.missingIcon.empty()) << event.name << ": " << event.missingIcon;
        const IconHandle icon = icon_Find(event.iconName);
        EXPECT_GT(icon_Width(icon), 0) << event.iconName;
        EXPECT_LE(std::max(icon_Width(icon), icon_Height(icon)), 20) << event.iconName;
    }
}

// The look of the statuses beside each file: the same statuses, other lines, and the way back.
TEST_P(Defaults, TheClassicLookIsKept) {
    const std::vector<LegendLook> looks = legend_Looks(GetParam());
    ASSERT_EQ(looks.size(), 2u);
    EXPECT_EQ(looks[0].name, "Default");
    EXPECT_EQ(looks[1].name, "Classic");
    EXPECT_EQ(configure_Check(looks[1].path).errors, 0);
    std::vector<LegendStatus> statuses = legend_.statuses;
    const auto lines = [&statuses] {
        std::vector<std::tuple<int, int, int>> all;
        for (const LegendStatus& one : statuses) all.emplace_back(one.red, one.thickness, one.lineStyle);
        return all;
    };
    const auto shipped = lines();
    ASSERT_TRUE(legend_UseLook(looks[1].path, statuses));
    const LegendStatus& ready = statuses[static_cast<size_t>(legend_.StatusByName("READY"))];
    EXPECT_EQ(ready.lineStyle, Line_Dash);
    EXPECT_EQ(ready.thickness, 2);
    EXPECT_NE(lines(), shipped);
    ASSERT_TRUE(legend_UseLook(looks[0].path, statuses));
    EXPECT_EQ(lines(), shipped);
    EXPECT_FALSE(legend_UseLook(looks[0].path + "x", statuses));
    EXPECT_EQ(lines(), shipped);
}

// A line's weight says how much its status matters; only what is rare is broken.
TEST_P(Defaults, WeightSaysWhatMatters) {
    const auto thickness = [&](const char* name) {
        return legend_.statuses[static_cast<size_t>(legend_.StatusByName(name))].thickness;
    };
    for (const char* sleeps : {"SUSPEND", "PEND", "EVWAIT"}) EXPECT_LT(thickness(sleeps), thickness("READY"));
    EXPECT_LT(thickness("READY"), thickness("RUNNING"));
    for (const char* common : {"READY", "PEND", "EVWAIT", "RUNNING"})
        EXPECT_EQ(legend_.statuses[static_cast<size_t>(legend_.StatusByName(common))].lineStyle, Line_Solid);
}

TEST(DefaultIcons, TheProgramsOwnAreThere) {
    for (const char* name : {"app", "help", "overlap", "Open", "zoomin", "zoomout", "quit", "plus9", "minus9",
                             "checkmark", "graycheckmark"})
        EXPECT_NE(icon_Find(name), NoIcon) << name;
    EXPECT_EQ(icon_Width(icon_Find("plus9")), 9);
}

}  // namespace
