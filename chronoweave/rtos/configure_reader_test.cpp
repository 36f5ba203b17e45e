#include "chronoweave/rtos/configure_reader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/config_dirs.h"

namespace {

// One reading of a text, with all that it said.
struct Reading {
    explicit Reading(const std::string& text, int largestThickness = 0, const LegendMisc& present = {})
        : reader(Callbacks(), largestThickness, present) {
        errors = reader.ReadText(text, "file.tc");
    }
    ConfigureCallbacks Callbacks() {
        ConfigureCallbacks callbacks = configure_ConsoleCallbacks();
        callbacks.syntaxError = [this](const std::string&, const std::string& line) { said += line; };
        callbacks.message = [this](const std::string& line) { messages.push_back(line); };
        callbacks.errorDialog = [this](const std::string& line) { dialogs.push_back(line); };
        callbacks.attention = [this] { ++attentions; };
        return callbacks;
    }
    bool Finish(Legend& legend) { return reader.Finish(legend, "Os", errors); }

    std::string said;
    std::vector<std::string> messages, dialogs;
    int attentions = 0;
    ConfigureReader reader;
    int errors = 0;
};

std::string describe(const ConfigureStatus& s) {
    return gen_format("%x %s %02x%02x%02x %d %d%s%s%s", static_cast<unsigned>(s.code), s.name.c_str(),
                      static_cast<unsigned>(s.red >> 8), static_cast<unsigned>(s.green >> 8),
                      static_cast<unsigned>(s.blue >> 8), s.lineStyle, s.thickness,
                      s.visible ? "" : " hidden", s.isExecution ? " runs" : "",
                      s.isContextSwitch ? " switch" : "");
}

std::string describe(const ConfigureEvent& e) {
    const std::string visibility = e.visibility() == 0 ? " hidden" : "";
    if (e.IsCategory()) return gen_format("[%d %s%s]", e.category, e.name.c_str(), visibility.c_str());
    return gen_format("%d: %x/%x %s <%s> '%s'%s%s%s%s", e.category, static_cast<unsigned>(e.type),
                      static_cast<unsigned>(e.subtype), e.name.c_str(), e.iconName.c_str(),
                      e.extraFormat.c_str(), visibility.c_str(),
                      e.flags & LegendEvent_AnyType ? " any-type" : "",
                      e.flags & LegendEvent_AnySubtype ? " any-subtype" : "",
                      e.flags & LegendEvent_IntervalSearch ? " interval" : "");
}

template <class Rows>
std::string describe_all(const Rows& rows) {
    std::string all;
    for (const auto& row : rows) all += (all.empty() ? "" : "; ") + describe(row);
    return all;
}

// A text, the records that it leaves, and what is said; the errors are counted from the latter.
struct Case {
    std::string text;
    std::string records;
    std::string said;
};

void expect_cases(std::initializer_list<Case> cases, bool events) {
    for (const Case& c : cases) {
        Reading reading(c.text, 9);
        EXPECT_EQ(events ? describe_all(reading.reader.events()) : describe_all(reading.reader.statuses()),
                  c.records)
            << c.text;
        const std::string wanted = c.said.empty() ? "" : "Line " + c.said + "\n";
        EXPECT_EQ(reading.said, wanted) << c.text;
        EXPECT_EQ(reading.errors, c.said.find("Error") != std::string::npos ? 1 : 0) << c.text;
    }
}

TEST(ConfigureLinesTest, EndsOfLinesAndTheirNumbers) {
    struct Lines {
        std::string text;
        std::string lines;
    };
    for (const Lines& c : {Lines{"a\nb", "1a 2b "},
                           {"a\r\nb\r\n", "1a 2b "},
                           {"\n\na\n\nb\n", "3a 5b "},
                           {"\r\n\r\na\r\n\r\nb", "3a 5b "},
                           {"a\rb", "1a 2b "},
                           {"", ""},
                           {"\n", ""},
                           {std::string("a\0x\nb", 5), "1a 2b "}}) {
        ConfigureLines lines(c.text);
        std::string seen;
        for (std::string_view line; lines.Next(line);)
            seen += std::to_string(lines.Number()) + std::string(line) + " ";
        EXPECT_EQ(seen, c.lines);
    }
}

TEST(FieldCursorTest, Fields) {
    struct Fields {
        std::string rest;
        std::string fields;  // each in brackets; "!" for a failure
    };
    const std::string full(200, 'x');
    for (const Fields& c : {Fields{":a:b", "[a][b][]"},
                            {"  :  a b \t: c ", "[a b][c][]"},
                            {"", "[][]"},
                            {"a:b", "!"},
                            {"::b", "[][b][]"},
                            {":\"a:b\":c", "[\"a:b\"][c][]"},
                            {":\"a\\\":b\":c", "[\"a\\\":b\"][c][]"},
                            {":a\\\":b", "[a\\\":b][]"},
                            {":\"\\", "[\"\\][]"},
                            {":" + full + ":b", "[" + full + "][b][]"},
                            {":" + full + "x:b", "!"}}) {
        FieldCursor cursor(c.rest);
        std::string seen;
        std::string_view field;
        bool ended = false;
        while (!ended) {
            const bool fetched = cursor.Next(field);
            seen += fetched ? "[" + std::string(field) + "]" : "!";
            ended = !fetched || (field.empty() && cursor.Rest().empty());
        }
        EXPECT_EQ(seen, c.fields == "[][]" ? "[]" : c.fields);
    }
}

TEST(ConfigureReaderTest, StatusLines) {
    const std::string longName(201, 'n');
    expect_cases(
        {{"TRV_Object:TRV_Status:0x3:Run:0x123456:TRV_DashDot:4:TRV_Invisible", "3 Run 123456 3 4 hidden",
          ""},
         {" \ttask anything:status : 010 : Run it ", "8 Run it 000000 0 1", ""},
         {"Task:Status:1:A::Dash", "1 A 000000 0 1", ""},
         {"Task:Status:1:A:0xff0000:Wavy:3px:Visible", "1 A ff0000 0 3", ""},
         {"Task:Status:1:A:0:Dot:thick", "1 A 000000 2 1", ""},
         {"Task:Status:1:A:0:Dot:99999999999", "1 A 000000 2 9", ""},
         {"Task:Status:1:TRV_Execution= Go", "1 Go 000000 0 1 runs", ""},
         {"Task:Status:1:trv_context_switch=Swap", "1 Swap 000000 0 1 switch", ""},
         {"Task:Status:1:TRV_Context_Switch", "1 Context Switch 000000 0 1 switch", ""},
         {"Task:Status:1:context_switch:0:Dot", "1 Context Switch 000000 2 1 switch", ""},
         {"Task: Status:1:A", "", ""},
         {"Tasks without a colon", "", ""},
         {"// Task:Status:1:A", "", ""},
         {"Task:Status", "", "1 - Syntax Error: Expect status informatin."},
         {"Task:Statuses:1:A", "", "1 - Syntax Error: Expect status informatin."},
         {"\nTask:Status:1x:A", "", "2 - Syntax Error: Expect status's internal code."},
         {"Task:Status:08:A", "", "1 - Syntax Error: Expect status's internal code."},
         {"Task:Status:1:", "", "1 - Syntax Error: Expect status's name."},
         {"Task:Status:1:" + longName, "", "1 - Syntax Error: Expect status's name."},
         {"Task:Status:1:TRV_Execution=", "", "1 - Syntax Error: Expect status's name."},
         {"Task:Status:1:A:red", "", "1 - Syntax Error: Expect status's line color in RGB."},
         {"Task:Status:1:A:0:" + longName, "", "1 - Syntax Error: Expect status's line style."},
         {"Task:Status:1:A:0:Dot:" + longName, "", "1 - Syntax Error: Expect status's line thickness."},
         {"Task:Status:1:A:0:Dot:2:" + longName, "",
          "1 - Syntax Error: Expect status's visible/invisible information."},
         {"Task:Status:1:A:0:Dot:2:hid%sden", "1 A 000000 2 2",
          "1 - Syntax Error: Unknown item \"hid%sden\"."},
         {"Task:Status:1:A:0:Dot:2:Invisible // no", "1 A 000000 2 2",
          "1 - Syntax Error: Unknown item \"Invisible // no\"."},
         {"Task:Status:1:A:0:Dot:2:Invisible: more", "1 A 000000 2 2 hidden",
          "1 - Syntax Error: Unknown item \": more\"."}},
        false);
}

TEST(ConfigureReaderTest, LinkLines) {
    const std::string rows = "Task:Status:1:A\nTask:Status:2:TRV_Context_Switch=S\nTask:Status:1:Again\n";
    struct Link {
        std::string line;
        int link;  // of the first row
        std::string said;
    };
    const Link cases[] = {{":1:2", 1, ""},
                          {":1:1", 0, "Warning: status with code 1 is not context switch."},
                          {":x:2", -1, "Error: Expect internal code for status."},
                          {":1", -1, "Error: Expect internal code for context switch."},
                          {":1:2:3", -1, "Error: Unknown item \":3\"."},
                          {":9:2", -1, "Error: status with code 9 is not defined."},
                          {":1:0x10", -1, "Error: context switch with code 16 is not defined."}};
    for (const Link& c : cases) {
        Reading reading(rows + "TRV_Object:TRV_Context_Switch_Link" + c.line);
        ASSERT_EQ(reading.reader.statuses().size(), 3u);
        EXPECT_EQ(reading.reader.statuses()[0].contextSwitchLink, c.link) << c.line;
        EXPECT_EQ(reading.reader.statuses()[2].contextSwitchLink, -1) << c.line;
        EXPECT_EQ(reading.said, c.said.empty() ? "" : "Line 4 - Syntax " + c.said + "\n");
        EXPECT_EQ(reading.errors, c.said.rfind("Error", 0) == 0 ? 1 : 0);
    }
}

TEST(ConfigureReaderTest, CategoryLines) {
    const std::string longName(201, 'n');
    expect_cases(
        {{"EventCategory:A\nEvent_Category:B:invisible\ntrv_event_category:C:TRV_Visible",
          "[0 A]; [1 B hidden]; [2 C]", ""},
         {"TRV_Event:1:1:e\nTRV_Event_Category:A", "-1: 1/1 e <e> ''; [0 A]", ""},
         {"EventCategory:", "", "1 - Syntax Error: Expect event category's name."},
         {"EventCategory:A:" + longName, "", "1 - Syntax Error: Expect visible/invisible information."},
         {"EventCategory:A:no", "[0 A]", "1 - Syntax Error: Unknown item \"no\"."},
         {"EventCategory:A:invisible:x", "[0 A hidden]", "1 - Syntax Error: Unknown item \":x\"."}},
        true);
}

TEST(ConfigureReaderTest, EventLines) {
    const std::string longName(201, 'n');
    expect_cases(
        {{"Event:1:2:Name", "-1: 1/2 Name <Name> ''", ""},
         {"TRV_Event:*x:0x10:Name:icon:TRV_Invisible", "-1: 0/10 Name <icon> '' hidden any-type", ""},
         {"Event:7:*:TRV_Interval_Search=Name:visible", "-1: 7/0 Name <Name> '' any-subtype interval", ""},
         {"Event:1:2:Name:icon:TRV_Extra=\"%4X: \\\"q\\\"\":invisible",
          "-1: 1/2 Name <icon> '%4X: \"q\"' hidden", ""},
         {"Event:1:2:Name:extra=\"x\":visible", "-1: 1/2 Name <Name> 'x'", ""},
         {"Event:1:2:Name:icon:extra \"x\"", "-1: 1/2 Name <icon> 'x'", ""},
         {"EventCategory:A:invisible\nEvent:1:2:Name\nEvent:1:3:B:b:visible",
          "[0 A hidden]; 0: 1/2 Name <Name> '' hidden; 0: 1/3 B <b> ''", ""},
         {"Event", "", "1 - Syntax Error: Expect event information."},
         {"Events:1:2:Name", "", "1 - Syntax Error: Expect event information."},
         {"Event:x:2:Name", "", "1 - Syntax Error: Expect event's type."},
         {"Event:1", "", "1 - Syntax Error: Expect event's subtype."},
         {"Event:1:two:Name", "", "1 - Syntax Error: Expect event's subtype."},
         {"Event:1:2", "", "1 - Syntax Error: Expect event name."},
         {"Event:1:2:TRV_Interval_Search=", "", "1 - Syntax Error: Expect event's name."},
         {"Event:1:2:A:" + longName, "", "1 - Syntax Error: Expect event icon name or visible information."},
         {"Event:1:2:A:visible:x", "-1: 1/2 A <A> ''", "1 - Syntax Error: Unknown item \":x\"."},
         {"Event:1:2:A:extra=x", "", "1 - Syntax Error: Expect \" for extra data format."},
         {"Event:1:2:A:icon:extra=x", "", "1 - Syntax Error: Expect \" for extra data format."},
         {"Event:1:2:A:icon:" + longName, "", "1 - Syntax Error: Expect more information."},
         {"Event:1:2:A:icon:extra=\"x\":" + longName, "", "1 - Syntax Error: Expect more information."},
         {"Event:1:2:A:extra=\"x\":icon", "-1: 1/2 A <A> 'x'", "1 - Syntax Error: Unknown item \"icon\"."},
         {"Event:1:2:A:extra=\"x\":extra=\"y\"", "-1: 1/2 A <A> 'x'",
          "1 - Syntax Error: Unknown item \"extra=\"y\"\"."},
         {"Event:1:2:A:icon:invisible:x", "-1: 1/2 A <icon> '' hidden",
          "1 - Syntax Error: Unknown item \":x\"."}},
        true);
}

TEST(ConfigureReaderTest, NamesakesShareIconAndVisibility) {
    expect_cases(
        {{"Event:1:1:A:icon\nEvent:1:2:a\nEvent:1:3:A:other\nEvent:1:4:A",
          "-1: 1/1 A <icon> ''; -1: 1/2 a <icon> ''; -1: 1/3 A <other> ''; -1: 1/4 A <other> ''", ""},
         {"Event:1:1:A:i:invisible\nEvent:1:2:A", "-1: 1/1 A <i> '' hidden; -1: 1/2 A <i> ''", ""},
         {"Event:1:1:A:i\nEvent:1:2:A:invisible\nEvent:1:3:B",
          "-1: 1/1 A <i> '' hidden; -1: 1/2 A <i> '' hidden; "
          "-1: 1/3 B <B> ''",
          ""},
         {"Event:1:1:A:i:invisible\nEvent:1:2:A:i:oops", "-1: 1/1 A <i> ''; -1: 1/2 A <i> ''",
          "2 - Syntax Error: Unknown item \"oops\"."},
         {"EventCategory:A:invisible\nEvent:1:1:A:i:visible", "[0 A hidden]; 0: 1/1 A <i> ''", ""}},
        true);
}

TEST(ConfigureReaderTest, MiscLines) {
    struct Misc {
        std::string line;
        std::string said;
    };
    const Misc cases[] = {
        {"", "Expect mics item's name."},
        {":TRV_Something:1", "Not supported."},
        {":refresh interval", "Expect value for refresh interval."},
        {":max_refreshed_events:many", "Expect value for max number of refershed events."},
        {":TRV_Overlap", "Expect icon name for overlapped stuff."},
        {":task prefix:", "Expect value for task prefix."},
        {":TRV_Unused_Extra_Data_Warning", "Expect value for unused extra data warning."},
        {":TRV_Unused_Extra_Data_Warning:maybe", "Expect bool value for unused extra data warning."},
        {":extra data warning", "Expect value for extra data warning."},
        {":extra data warning:on", "Expect bool value for extra data warning."},
        {":TRV_Center_Status", "Expect bool value about how to draw status line."},
        {":TRV_Tick_Pattern:2", "Expect bool value about if to use tick pattern."},
        {":TRV_Show_Hidden_Object_Agent:x",
         "Expect bool value about if to show an agent for the hidden objects."},
        {":target timeout:x", "Expect value for target connection timeout."},
        {":sort_field", "Expect value for sorting field."},
        {":sort_field:size", "Invalid sorting field value \"size\"."},
        {":sort_in_ascending_order", "Expect value for sorting order."},
        {":sort_in_ascending_order:up", "Invalid bool value for sorting order \"up\"."},
        {":TRV_All_For_Interval_Search", "Expect value for events' interval search."},
        {":TRV_All_For_Interval_Search:x", "Invalid bool value for events' interval search \"x\"."},
        {":TRV_Object_Hierarchy_Separator", "Expect value for hierarchy separator."},
        {":TRV_Object_Hierarchy_Separator:\"\"", "Invalid value for hierarchy separator."},
        {":TRV_Object_Hierarchy_Separator:::", "Expect value for hierarchy separator."},
        {":TRV_Object_Hierarchy_Separator:ab", "Hierarchy separator has exactly one character."},
        {":TRV_Center_Status:yes:x", "Unknown item \":x\"."}};
    for (const Misc& c : cases) {
        Reading reading("misc" + c.line);
        EXPECT_EQ(reading.said, "Line 1 - Syntax Error: " + c.said + "\n") << c.line;
        EXPECT_EQ(reading.errors, 1);
    }
}

TEST(ConfigureReaderTest, MiscValues) {
    const LegendMisc plain = Reading("").reader.misc();
    Reading reading(
        "misc:REFRESH_INTERVAL:0x20\nTRV_Misc:max refreshed "
        "events:7\nmisc:overlap:two\nmisc:task_term:thread\n"
        "misc:unused extra data warning:no\nmisc:extra data warning:FALSE\nmisc:TRV_Center_Status:1\n"
        "misc:TRV_Tick_Pattern:0\nmisc:TRV_Show_Hidden_Object_Agent:yes\nmisc:target_timeout:99999999999\n"
        "misc:sort_field:object_ID:whatever\nmisc:sort_in_ascending_order:false:x\n"
        "misc:TRV_All_For_Interval_Search:true:x\nmisc:TRV_Object_Hierarchy_Separator:\"\\x3a\"\n");
    EXPECT_EQ(reading.said, "");
    const LegendMisc& misc = reading.reader.misc();
    EXPECT_EQ(misc.refreshInterval, 32);
    EXPECT_EQ(misc.maxRefreshedEvents, 7);
    EXPECT_EQ(misc.overlapIcon, "two");
    EXPECT_EQ(misc.objectTerm + misc.objectTermLower, "Threadthread");
    EXPECT_FALSE(misc.unusedExtraDataWarning || misc.extraDataWarning || misc.tickPattern ||
                 misc.sortAscending);
    EXPECT_TRUE(misc.centerStatus && misc.showHiddenAgent && misc.allForIntervalSearch);
    EXPECT_EQ(misc.targetTimeout, INT32_MAX);
    EXPECT_EQ(misc.sortField, 1);
    EXPECT_EQ(misc.separator, ":");

    // With text behind the value, only the two numbers of the refresh are not stored.
    Reading trailing(
        "misc:refresh interval:5:x\nmisc:max refreshed events:5:x\nmisc:target timeout:5:x\n"
        "misc:TRV_Center_Status:1:x");
    EXPECT_EQ(trailing.errors, 4);
    EXPECT_EQ(trailing.reader.misc().refreshInterval, plain.refreshInterval);
    EXPECT_EQ(trailing.reader.misc().maxRefreshedEvents, plain.maxRefreshedEvents);
    EXPECT_EQ(trailing.reader.misc().targetTimeout, 5);
    EXPECT_TRUE(trailing.reader.misc().centerStatus);

    // What the file doesn't mention: some values stay, four start anew.
    const LegendMisc kept = Reading("", 0, misc).reader.misc();
    EXPECT_EQ(kept.refreshInterval, 32);
    EXPECT_EQ(kept.sortField, 1);
    EXPECT_EQ(kept.separator + kept.objectTerm, ":Thread");
    EXPECT_FALSE(kept.extraDataWarning || kept.sortAscending);
    EXPECT_TRUE(kept.tickPattern);
    EXPECT_FALSE(kept.centerStatus || kept.showHiddenAgent || kept.allForIntervalSearch);
}

TEST(ConfigureFinishTest, MissingRowsAreAdded) {
    Legend legend;
    Reading reading(
        "Task:Status:0:running\nTask:Status:1:Executing\nEventCategory:A\nEvent:1:1:A:help:visible\n");
    ASSERT_TRUE(reading.Finish(legend));
    EXPECT_EQ(describe_all(legend.statuses),
              "0 running 000000 0 1; 1 Executing 000000 0 1 runs; ffff Unknown 000000 0 1; "
              "ffff Context Switch 000000 2 1 switch");
    EXPECT_EQ(legend.statuses[1].contextSwitchLink, 3);
    EXPECT_EQ(legend.statuses[0].contextSwitchLink, -1);
    EXPECT_EQ(legend.StatusIndex(0xFFFF), 2);
    ASSERT_EQ(legend.events.size(), 3u);
    EXPECT_EQ(describe(legend.events[2]), "0: ffff/ffff Unknown <help> '' hidden");
    EXPECT_EQ(legend.unknownEvent, 2);
    EXPECT_EQ(legend.events[0].visibility(), 2u) << "the added event makes its category mixed";
    EXPECT_EQ(legend.path + " " + legend.osName, "file.tc Os");
    EXPECT_TRUE(reading.messages.empty());
}

TEST(ConfigureFinishTest, GivenRowsAreKept) {
    Legend legend;
    Reading reading(
        "Task:Status:9:UNKNOWN\nTask:Status:1:TRV_Execution=A\nTask:Status:2:running\n"
        "Task:Status:3:TRV_Context_Switch=S\nTask:Status:4:TRV_Context_Switch=T\n"
        "Task:Status:5:TRV_Execution=B\nTask:TRV_Context_Switch_Link:5:4\n"
        "Event:1:1:unknown:help\nEventCategory:Unknown\n");
    ASSERT_TRUE(reading.Finish(legend));
    EXPECT_EQ(legend.statuses.size(), 6u);
    EXPECT_EQ(legend.events.size(), 2u);
    EXPECT_EQ(legend.unknownStatus, 0);
    EXPECT_EQ(legend.unknownEvent, 0);
    EXPECT_EQ(legend.statuses[1].contextSwitchLink, 3);
    EXPECT_EQ(legend.statuses[5].contextSwitchLink, 4);
    EXPECT_FALSE(legend.statuses[2].isExecution) << "the name counts only where nothing else executes";
}

TEST(ConfigureFinishTest, MissingIconsAreToldAndHelpServes) {
    std::string reports;
    gen_set_report_sink([&](int, const std::string& line) { reports += line; });
    Legend legend;
    Reading reading("Task:Status:0:A\nmisc:overlap:none%d\nEvent:1:1:E:no_such_icon\n");
    ASSERT_TRUE(reading.Finish(legend));
    gen_set_report_sink({});
    EXPECT_EQ(reading.said,
              "Line 2 - Warning: the icon name(for overlapped stuff) \"none%d\" does not exist.\n");
    EXPECT_NE(reports.find("Can't find icon <no_such_icon> required by the legend event <E>, \n"
                           "use <help> icon instead!\n"),
              std::string::npos);
    EXPECT_EQ(reading.attentions, 1);
    EXPECT_EQ(legend.events[0].iconName, "help");
    EXPECT_EQ(legend.events[0].missingIcon, "no_such_icon");
    EXPECT_EQ(legend.events[1].missingIcon, "");
}

TEST(ConfigureFinishTest, IgnoredErrorsAreSummedUp) {
    const std::string good = "Task:Status:0:A\nEvent:1:1:E:help\n";
    struct Sum {
        std::string bad;
        std::vector<std::string> messages;
    };
    for (const Sum& c : {Sum{"", {}}, Sum{"Event\n", {"Warning: 1 syntax error in \"file.tc\" is ignored."}},
                         Sum{"Event\nmisc\n", {"Warning: 2 syntax errors in \"Os\" are ignored."}}}) {
        Legend legend;
        Reading reading(good + c.bad);
        ASSERT_TRUE(reading.Finish(legend));
        EXPECT_EQ(reading.messages, c.messages);
        EXPECT_EQ(reading.attentions, c.messages.empty() ? 0 : 1);
    }
}

TEST(ConfigureFinishTest, WithoutStatusesOrEventsThereIsNoLegend) {
    for (const char* text : {"// nothing", "Task:Status:0:A", "Event:1:1:E:help"}) {
        Legend legend;
        Reading reading(text);
        EXPECT_FALSE(reading.Finish(legend)) << text;
        EXPECT_EQ(reading.dialogs, std::vector<std::string>{"Can't read configure file \"file.tc\"."});
        EXPECT_TRUE(legend.empty());
    }
}

class ConfigureFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string name = path_join(path_temporary_directory(), "configure_XXXXXX");
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        config_SetUserDirectory(folder_);
        path_make_directory(path_join(folder_, "chrono_weave"));
    }
    void TearDown() override {
        config_SetUserDirectory({});
        std::filesystem::remove_all(folder_);
    }
    std::string Write(const std::string& relative, const std::string& text) {
        const std::string path = path_join(folder_, relative);
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    bool Read(const std::string& name) {
        said_.clear();
        ConfigureCallbacks callbacks;
        callbacks.message = [this](const std::string& text) { said_ += "message: " + text; };
        callbacks.errorDialog = [this](const std::string& text) { said_ += " dialog: " + text; };
        return configure_Read(legend_, name, callbacks, 0);
    }
    const std::string good_ = "Task:Status:0:A\nEvent:1:1:E:help\n";
    std::string folder_, said_;
    Legend legend_;
};

TEST_F(ConfigureFiles, AreFoundByTheNameOfTheSystem) {
    const std::string mine = Write("chrono_weave/My_Os.tc", good_);
    const std::string odd = Write("chrono_weave/odd.tcx", good_);
    const std::string elsewhere = Write("elsewhere.tc", good_);
    for (const auto& [name, path] : {std::pair<std::string, std::string>{"My_Os", mine},
                                     {"MY_OS", mine},
                                     {"My_Os.tc", mine},
                                     {"odd.tcx", odd},
                                     {elsewhere, elsewhere},
                                     {path_without_extension(elsewhere), elsewhere}}) {
        EXPECT_TRUE(Read(name)) << said_;
        EXPECT_EQ(legend_.path, path);
        EXPECT_EQ(legend_.osName, name);
    }
}

TEST_F(ConfigureFiles, AFailureIsToldAndLeavesNoLegend) {
    const std::string empty = Write("chrono_weave/empty.tc", "");
    const std::string comment = Write("chrono_weave/comment.tc", "// %s\n");
    Write("chrono_weave/good.tc", good_ + "misc:sort_field:object_id\nmisc:TRV_Center_Status:1\n");
    const auto no_rtos = [](const std::string& name) {
        return " dialog: Can't read configure file for RTOS \"" + name + "\".";
    };
    struct Failure {
        std::string name;
        std::string said;
    };
    for (const Failure& c :
         {Failure{"a.TC", "message: Bad VOREL Chronoweave configure file name \"a.TC\"." + no_rtos("a.TC")},
          {"a.t", "message: Bad VOREL Chronoweave configure file name \"a.t\"." + no_rtos("a.t")},
          {"none%n", "message: Can't find configure file \"none%n.tc\"." + no_rtos("none%n")},
          {"./none", "message: Can't find configure file \"./none.tc\"." + no_rtos("./none")},
          {"empty", "message: Can't read configure file \"" + empty + "\"." + no_rtos("empty")},
          {"comment", " dialog: Can't read configure file \"" + comment + "\"."}}) {
        ASSERT_TRUE(Read("good"));
        EXPECT_FALSE(Read(c.name));
        EXPECT_EQ(said_, c.said);
        EXPECT_TRUE(legend_.empty() && legend_.path.empty());
        EXPECT_EQ(legend_.LinkedStatus(0), -1) << "nothing of the older legend is left";
        EXPECT_TRUE(legend_.misc.centerStatus) << "misc values stay as they were";
        EXPECT_EQ(legend_.misc.sortField, 1);
    }
}

TEST_F(ConfigureFiles, ACheckCountsWhatStandsInTheFile) {
    const std::string path = Write("any.name",
                                   "// c\nTask:Status:0:A\nTask:Status:oops:B\nEventCategory:C\n"
                                   "Event:1:1:E:help:visible\nEvent:1:2:F:no_icon\n"
                                   "Task:TRV_Context_Switch_Link:0:0\n");
    const ConfigureCheck check = configure_Check(path);
    EXPECT_EQ(check.statuses, 1u);
    EXPECT_EQ(check.events, 2u);
    EXPECT_EQ(check.categories, 1u);
    EXPECT_EQ(check.errors, 1);
    EXPECT_TRUE(check.usable);
    std::string seen;
    for (const ConfigureCheck::Message& message : check.messages)
        seen += std::to_string(message.line) + (message.isError ? "! " : " ");
    EXPECT_EQ(seen, "3! 7 6 ");
    const ConfigureCheck none = configure_Check(path + "x");
    EXPECT_EQ(none.errors, -1);
    EXPECT_FALSE(none.usable);
    ASSERT_EQ(none.messages.size(), 1u);
    EXPECT_TRUE(none.messages[0].isError);
}

TEST(ConfigureReaderTest, AnyBytesAreReadInLinearTime) {
    // Namesakes that change each other's visibility, rows of one code, links, and lines that never end.
    std::string text = "Task:Status:7:S\n";
    for (int i = 0; i < 100000; ++i)
        text += i % 2 ? "Event:1:1:A:i:visible\nTask:Status:7:S\n"
                      : "Event:*:2:A:invisible\nTask:TRV_Context_Switch_Link:7:7\n";
    text += std::string(1 << 20, ':') + "\nEvent" + std::string(1 << 20, '"') + std::string(10, '\0') +
            "\xff\r\r\n";
    Reading reading(text);
    EXPECT_EQ(reading.reader.events().size(), 100000u);
    EXPECT_EQ(reading.reader.events()[0].visibility(), 1u);
    EXPECT_EQ(reading.reader.statuses().size(), 50001u);
    EXPECT_EQ(reading.errors, 1);
}

}  // namespace
