#include "chronoweave/rtos/configure_writer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <random>

#include "chronoweave/rtos/configure_loss.h"
#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/report.h"

namespace {

Legend read_back(const std::string& text, const LegendMisc& present = {}) {
    Legend legend;
    legend.misc = present;
    ConfigureCallbacks callbacks = configure_ConsoleCallbacks();
    std::string said;
    callbacks.syntaxError = [&](const std::string&, const std::string& line) { said += line; };
    EXPECT_TRUE(configure_ReadText(legend, text, "file.tc", "Os", callbacks, 0));
    EXPECT_EQ(said, "");
    return legend;
}

// Everything of a legend that a file holds.
std::string describe(const Legend& legend) {
    std::string text;
    for (const LegendStatus& s : legend.statuses)
        text += gen_format("%x|%s|%x %x %x|%d|%d|%d%d%d|%d\n", s.code, s.name.c_str(), s.red >> 8,
                           s.green >> 8, s.blue >> 8, s.lineStyle, s.thickness, s.visible, s.isExecution,
                           s.isContextSwitch, s.contextSwitchLink);
    for (const LegendEvent& e : legend.events)
        text += gen_format("%x/%x|%s|%s|%s|%d|%x\n", e.type, e.subtype, e.name.c_str(),
                           e.missingIcon.empty() ? e.iconName.c_str() : e.missingIcon.c_str(),
                           e.extraFormat.c_str(), e.category, e.flags);
    const LegendMisc& m = legend.misc;
    return text + gen_format("%d %d %d|%d%d%d%d%d%d%d|%d|%s|%s|%s", m.refreshInterval, m.maxRefreshedEvents,
                             m.targetTimeout, m.extraDataWarning, m.unusedExtraDataWarning, m.centerStatus,
                             m.tickPattern, m.showHiddenAgent, m.allForIntervalSearch, m.sortAscending,
                             m.sortField, m.overlapIcon.c_str(), m.objectTerm.c_str(), m.separator.c_str());
}

// A legend as readings leave it: finished rows, namesakes alike.
Legend random_legend(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    const auto flip = [&] { return below(2) == 1; };
    Legend legend;
    const char* names[] = {"Ready", "Run now", "Pend", "Context Switch", "a\xC3\xA9\xFF", "x=y", "Preempt"};
    const unsigned statuses = 2 + below(8);
    for (unsigned i = 0; i < statuses; ++i) {
        LegendStatus s;
        s.code = static_cast<uint16_t>(i * 7);
        s.name = names[below(7)];
        s.isContextSwitch = s.name == "Context Switch" || s.name == "Preempt";
        s.isExecution = !s.isContextSwitch && flip();
        s.red = static_cast<uint16_t>(below(256) << 8);
        s.blue = static_cast<uint16_t>(below(256) << 8);
        s.lineStyle = static_cast<int32_t>(below(5));
        s.thickness = static_cast<int32_t>(1 + below(20));
        s.visible = flip();
        legend.statuses.push_back(s);
    }
    const char* formats[] = {"", "PC=%4X", "say \"%1C\" and 'x' \\ : %A", ""};
    const unsigned events = 1 + below(12);
    for (unsigned i = 0; i < events; ++i) {
        LegendEvent e;
        e.category = legend.events.empty() ? -1 : legend.events.back().category;
        e.flags = below(2);
        if (below(4) == 0) {
            e.flags |= LegendEvent_Category;
            ++e.category;
            e.name = "Group " + std::to_string(i);
        } else {
            e.name = "Event " + std::to_string(i);
            e.type = static_cast<uint16_t>(1 + i);
            e.subtype = static_cast<uint16_t>(below(3));
            if (below(3) == 0) e.flags |= LegendEvent_AnySubtype, e.subtype = 0;
            if (below(6) == 0) e.flags |= LegendEvent_AnyType, e.type = 0;
            if (flip()) e.flags |= LegendEvent_IntervalSearch;
            if (below(3) == 0) e.flags |= LegendEvent_Important;
            e.iconName = flip() ? "help" : "no such icon";
            e.extraFormat = formats[below(4)];
        }
        legend.events.push_back(e);
    }
    LegendMisc& m = legend.misc;
    m.refreshInterval = flip() ? 1000 : 77;
    m.extraDataWarning = flip();
    m.centerStatus = flip();
    m.tickPattern = flip();
    m.allForIntervalSearch = flip();
    m.sortField = static_cast<int32_t>(below(2));
    m.sortAscending = flip();
    m.overlapIcon = flip() ? "" : "overlap";
    m.objectTerm = flip() ? "Task" : "Thread";
    const char* separators[] = {"@", "/", "\"", "\\", "\t", ":"};
    m.separator = separators[below(6)];
    return legend;
}

TEST(ConfigureWriter, WhatIsWrittenReadsBackToTheSameLegend) {
    ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
    gen_set_console_sink([](std::string_view) {});
    gen_set_report_sink([](int, const std::string&) {});
    for (unsigned seed = 0; seed < 200; ++seed) {
        // The first reading adds the rows that every legend has.
        const Legend first = read_back(configure_WriteText(random_legend(seed), "Os"));
        const std::string text = configure_WriteText(first, "Os");
        const Legend second = read_back(text);
        ASSERT_EQ(describe(second), describe(first)) << seed << "\n" << text;
        ASSERT_EQ(configure_FirstLoss(first, text), std::nullopt) << seed << "\n" << text;
        ASSERT_EQ(configure_WriteText(second, "Os"), text) << seed;
    }
    for (const char* name : {"korvantis", "threadx", "tolmund", "trace_function_flow"}) {
        std::string text;
        ASSERT_TRUE(
            file_read_whole(std::string(CW_SOURCE_DIR) + "/defaults/chrono_weave/" + name + ".tc", text));
        const Legend ours = read_back(text);
        const std::string written = configure_WriteText(ours, name);
        EXPECT_EQ(describe(read_back(written)), describe(ours)) << name;
        EXPECT_EQ(configure_FirstLoss(ours, written), std::nullopt) << name;
    }
    gen_set_report_sink({});
    gen_set_console_sink({});
}

TEST(ConfigureWriter, WhatALineCannotHoldIsNamed) {
    std::string text;
    ASSERT_TRUE(file_read_whole(CW_SOURCE_DIR "/defaults/chrono_weave/korvantis.tc", text));
    const Legend whole = read_back(text);
    const auto events = [](Legend& l) -> std::vector<LegendEvent>& { return l.events; };
    size_t event = 0, category = 0;
    while (whole.events[event].IsCategory()) ++event;
    while (!whole.events[category].IsCategory()) ++category;
    const struct {
        std::function<void(Legend&)> change;
        std::string named;
    } cases[] = {
        {[](Legend& l) { l.statuses[1].name = "a:b"; }, "status \"a:b\""},
        {[](Legend& l) { l.statuses[2].name = "TRV_Execution=x"; }, "status \"TRV_Execution=x\""},
        {[](Legend& l) { l.statuses[0].name = " blank"; }, "status \" blank\""},
        {[](Legend& l) { l.statuses[0].thickness = -1; }, "status \"" + whole.statuses[0].name + '"'},
        {[&](Legend& l) { events(l)[event].name = "two\nlines"; }, "event \"two\nlines\""},
        {[&](Legend& l) { events(l)[event].iconName = "icon:name"; },
         "event \"" + whole.events[event].name + '"'},
        {[&](Legend& l) { events(l)[category].name = ""; }, "category \"\""},
        {[](Legend& l) { l.misc.objectTerm = "Task:Thread"; }, "misc item \"TRV_Object_Term\""},
        {[](Legend& l) { l.misc.separator = "::"; }, "misc item \"TRV_Object_Hierarchy_Separator\""},
    };
    for (const auto& c : cases) {
        Legend legend = whole;
        c.change(legend);
        EXPECT_EQ(configure_FirstLoss(legend, configure_WriteText(legend, "Os")), c.named);
    }
    Legend fine = whole;
    fine.statuses[0].red ^= 0xFF;  // a file has the high bytes
    EXPECT_EQ(configure_FirstLoss(fine, configure_WriteText(fine, "Os")), std::nullopt);
}

// What a legend may hold, one thing at a time.
struct Edit {
    const char* what;
    void (*apply)(Legend& legend);
};
const Edit edits[] = {
    {"status code", [](Legend& l) { l.statuses[0].code = 0x77; }},
    {"status name", [](Legend& l) { l.statuses[0].name = "Idle = now"; }},
    {"red", [](Legend& l) { l.statuses[0].red = 0xC500; }},
    {"green", [](Legend& l) { l.statuses[0].green = 0xC600; }},
    {"blue", [](Legend& l) { l.statuses[0].blue = 0xC700; }},
    {"line style", [](Legend& l) { l.statuses[0].lineStyle = Line_DashDot; }},
    {"thickness", [](Legend& l) { l.statuses[0].thickness = 9; }},
    {"hidden status", [](Legend& l) { l.statuses[0].visible = false; }},
    {"executing status",
     [](Legend& l) { l.statuses[0].isExecution = true, l.statuses[0].contextSwitchLink = 2; }},
    {"switching status", [](Legend& l) { l.statuses[0].isContextSwitch = true; }},
    {"link", [](Legend& l) { l.statuses[1].contextSwitchLink = 3; }},
    {"event type", [](Legend& l) { l.events[1].type = 0x55; }},
    {"event subtype", [](Legend& l) { l.events[1].subtype = 0x56; }},
    {"any type", [](Legend& l) { l.events[1].flags |= LegendEvent_AnyType, l.events[1].type = 0; }},
    {"any subtype", [](Legend& l) { l.events[1].flags |= LegendEvent_AnySubtype, l.events[1].subtype = 0; }},
    {"event name", [](Legend& l) { l.events[1].name = "Another"; }},
    {"icon", [](Legend& l) { l.events[1].iconName = "task_change"; }},
    {"missing icon",
     [](Legend& l) { l.events[1].missingIcon = "no such icon", l.events[1].iconName = "help"; }},
    {"format", [](Legend& l) { l.events[1].extraFormat = "PC=%4X"; }},
    {"hidden event", [](Legend& l) { l.events[1].flags &= ~1u, l.events[0].flags = LegendEvent_Category; }},
    {"interval search", [](Legend& l) { l.events[1].flags |= LegendEvent_IntervalSearch; }},
    {"important", [](Legend& l) { l.events[1].flags |= LegendEvent_Important; }},
    {"category name", [](Legend& l) { l.events[0].name = "Others"; }},
    {"refresh interval", [](Legend& l) { l.misc.refreshInterval = 77; }},
    {"refreshed events", [](Legend& l) { l.misc.maxRefreshedEvents = 78; }},
    {"target time-out", [](Legend& l) { l.misc.targetTimeout = 79; }},
    {"extra data warning", [](Legend& l) { l.misc.extraDataWarning = false; }},
    {"unused extra data", [](Legend& l) { l.misc.unusedExtraDataWarning = false; }},
    {"centred", [](Legend& l) { l.misc.centerStatus = true; }},
    {"tick pattern", [](Legend& l) { l.misc.tickPattern = false; }},
    {"hidden agent", [](Legend& l) { l.misc.showHiddenAgent = true; }},
    {"all for intervals", [](Legend& l) { l.misc.allForIntervalSearch = true; }},
    {"descending", [](Legend& l) { l.misc.sortAscending = false; }},
    {"sorted by id", [](Legend& l) { l.misc.sortField = 1; }},
    {"overlap icon", [](Legend& l) { l.misc.overlapIcon = "overlap"; }},
    {"object term", [](Legend& l) { l.misc.objectTerm = "Thread"; }},
    {"separator", [](Legend& l) { l.misc.separator = "/"; }},
};

// Held against what was written, not against an earlier reading, in which it may be lost already.
TEST(ConfigureWriter, NothingOfALegendIsLost) {
    ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
    gen_set_console_sink([](std::string_view) {});
    gen_set_report_sink([](int, const std::string&) {});
    const Legend plain = read_back(
        "TRV_Object:TRV_Status:0x1:Idle\nTRV_Object:TRV_Status:0x2:TRV_Execution=Run\n"
        "TRV_Object:TRV_Status:0x3:Context Switch\nTRV_Object:TRV_Status:0x4:TRV_Context_Switch=Preempt\n"
        "TRV_Event_Category:Things:TRV_Visible\nTRV_Event:0x1:0x2:Tick:alarm:TRV_Visible\n");
    for (const Edit& edit : edits) {
        Legend legend = plain;
        edit.apply(legend);
        ASSERT_NE(describe(legend), describe(plain)) << edit.what;
        EXPECT_EQ(describe(read_back(configure_WriteText(legend, "Os"))), describe(legend)) << edit.what;
    }
    gen_set_report_sink({});
    gen_set_console_sink({});
}

// One of each form of line.
Legend legend_of_every_form() {
    Legend legend;
    const auto status = [&](const char* name, bool runs, bool switches) -> LegendStatus& {
        LegendStatus s;
        s.code = static_cast<uint16_t>(legend.statuses.size());
        s.name = name;
        s.isExecution = runs;
        s.isContextSwitch = switches;
        return legend.statuses.emplace_back(s);
    };
    LegendStatus& running = status("Running", true, false);
    running.red = 0x12FF;
    running.blue = 0xAB00;
    running.lineStyle = 77;
    running.contextSwitchLink = 2;
    status("Context Switch", false, true);
    status("Preempt", false, true);
    const auto event = [&](uint32_t flags, const char* format) {
        LegendEvent e;
        e.type = 0x1a;
        e.name = "E";
        e.iconName = "alarm";
        e.flags = flags;
        e.extraFormat = format;
        legend.events.push_back(e);
    };
    event(LegendEvent_Category | 2, "");
    event(LegendEvent_Category | 0, "");
    event(LegendEvent_IntervalSearch | 1, "\"%1C\"");
    event(2, "%2X");
    event(LegendEvent_IntervalSearch, "");
    event(LegendEvent_AnyType | LegendEvent_AnySubtype | 1, "");
    legend.misc.separator = "\x01";
    legend.misc.overlapIcon = "overlap";
    legend.misc.sortField = 5;
    return legend;
}

TEST(ConfigureWriter, EveryFormOfLineStandsAsItIsDescribed) {
    Legend legend = legend_of_every_form();
    const std::string text = configure_WriteText(legend, "My %s Os");
    for (const char* line :
         {"// Chronoweave Configure File for Operating System \"My %s Os\"\n\n// General information",
          "// Task's statuses\n// Format:\n//     TRV_Object:TRV_Status:<INTERNAL_CODE>:"
          "[TRV_Execution=|TRV_Context_Switch=]\\\n",
          "\nTRV_Object:TRV_Status:0x0:TRV_Execution=Running:0x1200ab:TRV_Solid:1:TRV_Visible\n",
          "\nTRV_Object:TRV_Status:0x1:Context Switch:0x0:TRV_Solid:1:TRV_Visible\n",
          "\nTRV_Object:TRV_Status:0x2:TRV_Context_Switch=Preempt:0x0:TRV_Solid:1:TRV_Visible\n",
          "\n// Task status's context switch links\n// Format:\n",
          "\nTRV_Object:TRV_Context_Switch_Link:0x0:0x2\n", "\n\nTRV_Event_Category:E\n",
          "\n\nTRV_Event_Category:E:TRV_Invisible\n",
          "\nTRV_Event:0x1a:0x0:TRV_Interval_Search=E:alarm:TRV_Extra=\"\\\"%1C\\\"\":TRV_Visible\n",
          "\nTRV_Event:0x1a:0x0:E:alarm:TRV_Extra=\"%2X\":TRV_Visible\n",
          "\nTRV_Event:0x1a:0x0:TRV_Interval_Search=E:alarm:TRV_Invisible\n",
          "\nTRV_Event:*:*:E:alarm:TRV_Visible\n",
          "\n// Misc \n\n//TRV_Misc:TRV_Refresh_Interval:1000\n//TRV_Misc:TRV_Max_Refreshed_Events:600\n",
          "\n//TRV_Misc:TRV_Object_Term:Task\n",
          "\nTRV_Misc:TRV_Overlap:overlap\nTRV_Misc:TRV_Overlap:overlap\n//"
          "TRV_Misc:TRV_Sort_In_Ascending_Order:true\n",
          "\nTRV_Misc:TRV_Object_Hierarchy_Separator:\"\\x01\"\n",
          "\n//TRV_Misc:TRV_Show_Hidden_Object_Agent:false\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "\nis not in\n" << text;
    EXPECT_EQ(text.find("Important"), std::string::npos) << "only with one";
    legend.statuses[0].contextSwitchLink = -1;
    EXPECT_EQ(configure_WriteText(legend, "Os").find("context switch links"), std::string::npos);
}

TEST(ConfigureWriter, ImportantEventsAreNamedBehindTheirLines) {
    ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
    const std::string head =
        "TRV_Object:TRV_Status:1:Run\nTRV_Event:1:*:Tick:help\nTRV_Event:1:0:Tock:help\n";
    const Legend legend = read_back(head + "TRV_Important_Event:0x1:*\n");
    EXPECT_TRUE(legend.events[0].IsImportant());
    EXPECT_FALSE(legend.events[1].IsImportant());
    ConfigureCallbacks callbacks;
    std::string said;
    callbacks.syntaxError = [&](const std::string&, const std::string& line) { said += line; };
    Legend other;
    configure_ReadText(other, "TRV_Important_Event:1:0\n" + head + "TRV_Important_Event:1\n", "f.tc", "Os",
                       callbacks, 0);
    EXPECT_NE(said.find("Line 1 - Syntax Error: The important event is not defined before this line."),
              std::string::npos)
        << said;
    EXPECT_NE(said.find("Line 5"), std::string::npos) << said;
}

}  // namespace
