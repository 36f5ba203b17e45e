#include "windlib/config/settings.h"

#include "windlib/config/arrangement_store.h"
#include "windlib/config/config_testing.h"

namespace {

using Settings = ConfigFolder;
using Arrangements = ConfigFolder;

constexpr const char* notes = "Notes";  // a kind of files

std::vector<SettingsSwitch> switches() {
    return {{"Beep", true}, {"Wrap", true}, {"Loud", false}, {"Grid", true}};
}

WindowPosition position(int x) {
    return {1700000000, {x, -20, 300, 200}, {x - 5, -25, 300, 200}};
}

TEST_F(Settings, ASiteGivesOtherDefaults) {
    OptionTree site;
    site.Set("Loud", "1");
    site.Set("Wrap", "FALSE");
    site.Set("Grid", "perhaps");
    SettingsManager first(switches(), folder_);
    first.TakeDefaults(site);
    EXPECT_NE(messages_.find("\"Grid\" can't be \"perhaps\""), std::string::npos);
    EXPECT_TRUE(first.Load());
    EXPECT_TRUE(first.IsOn("Loud") && first.IsOn("Grid") && !first.IsOn("Wrap"));
    first.SetOn("Loud", false);
    EXPECT_TRUE(first.Save());
    SettingsManager second(switches(), folder_);
    second.TakeDefaults(site);
    EXPECT_TRUE(second.Load());
    EXPECT_FALSE(second.IsOn("Loud")) << "the user's word goes first";
    SettingsManager without(switches(), folder_);
    EXPECT_TRUE(without.Load());
    EXPECT_TRUE(without.IsOn("Wrap") && !without.IsOn("Loud")) << "only what was changed is kept";
}

TEST_F(Settings, ComeBackAsTheyWereLeft) {
    SettingsManager first(switches(), folder_);
    EXPECT_TRUE(first.Load());  // there is no file
    EXPECT_TRUE(first.IsOn("Beep") && !first.IsOn("Loud"));
    first.SetOn("Loud", true);
    first.SetOn("Beep", false);
    first.SetOn("Nothing", true);
    for (int i = 0; i < 12; ++i) first.AddRecent("/t/" + std::to_string(i) + " \"%s\".trs", notes);
    first.AddRecent("/t/5 \"%s\".trs", notes);
    first.AddRecent("/other", "Other");
    first.SetChoice("Paper", "letter");
    first.SetChoice("Paper", "a \"4\"");
    first.RemoveRecent("/t/9 \"%s\".trs", notes);
    EXPECT_TRUE(first.SetPosition("Trvgui.Find", position(10)));
    EXPECT_FALSE(first.SetPosition("Trvgui..x", position(1)));
    EXPECT_TRUE(first.Save());
    EXPECT_EQ(Files(), 1u);

    SettingsManager second(switches(), folder_);
    EXPECT_TRUE(second.Load()) << messages_;
    EXPECT_TRUE(second.IsOn("Loud") && second.IsOn("Wrap") && !second.IsOn("Beep"));
    EXPECT_EQ(second.Choice("Paper") + '|' + second.Choice("Ink"), "a \"4\"|");
    EXPECT_FALSE(second.IsOn("Nothing"));
    const std::vector<std::string> recent = second.Recent(notes);
    ASSERT_EQ(recent.size(), 9u);
    EXPECT_EQ(recent[0], "/t/5 \"%s\".trs");
    EXPECT_EQ(recent[1], "/t/11 \"%s\".trs");
    EXPECT_EQ(second.Recent("Other"), std::vector<std::string>{"/other"});
    const auto found = second.Position("Trvgui.Find");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->absolute, position(10).absolute);
    EXPECT_EQ(found->toParent, position(10).toParent);
    EXPECT_FALSE(second.Position("Trvgui"));
    EXPECT_FALSE(second.Position("Trvgui.None"));
    EXPECT_EQ(messages_, "");

    AttributeStore store;
    store.read_from_file(second.Path());
    const AttributeNode* tree = store.Root().Child("WindowPositionsTree");
    EXPECT_EQ(*tree->Number("timestamp"), 1700000000);
    EXPECT_EQ(*tree->Child("Trvgui")->Number("timestamp"), 1700000000);
    EXPECT_EQ(*tree->Child("Trvgui")->Child("Find")->Number("abs_y"), -20);
}

// Whatever the file is, the program has its defaults for what can't be read, and the next save keeps the
// file.
TEST_F(Settings, OfADamagedOrNewerFileAreUsedAsFarAsTheyGo) {
    const struct {
        const char *text, *message;
        bool loud;
    } cases[] = {
        {"version = 1\nOptions {\n Loud = 1\n Beep = ?\n}\n", "line 4: parse error: ", true},
        {"version = 1\nOptions {\n Loud = 1\n Beep = \"x\"\n}\n", "line 4: the value of \"Beep\"", true},
        {"Options {\n Loud = 7\n}\n", "line 2: the value of \"Loud\"", false},
        {"RecentFiles {\n Notes = 1\n}\n", "line 2: the value of \"Notes\"", false},
        {"version = 2\nOptions.Loud = 1\nNew.thing = 5\n", "line 1: the settings are of a newer version (2)",
         true},
        {"version = \"x\"\n", "line 1: the value of \"version\"", false},
        {"\x7F"
         "ELF\x01\x02\n{{{\n}}}}\n\xFF\xFE",
         "parse error", false},
        {"Options {\n Loud = 1\n", "unexpected end of file", true}};
    for (const auto& each : cases) {
        std::filesystem::remove(Path("settings.bak"));
        messages_.clear();
        Write("settings", each.text);
        SettingsManager settings(switches(), folder_);
        EXPECT_FALSE(settings.Load()) << each.text;
        EXPECT_TRUE(Told(each.message)) << messages_;
        EXPECT_TRUE(Told(Path("settings"))) << messages_;
        EXPECT_EQ(settings.IsOn("Loud"), each.loud) << each.text;
        EXPECT_TRUE(settings.IsOn("Beep"));
        EXPECT_EQ(Read(Path("settings")), each.text);
        EXPECT_TRUE(settings.Save());
        EXPECT_TRUE(Told("settings.bak")) << messages_;
        EXPECT_EQ(Read(Path("settings.bak")), each.text);
        EXPECT_TRUE(SettingsManager(switches(), folder_).Load()) << messages_;
    }
}

TEST_F(Settings, ThatCanNotBeReadOrWrittenAreNoObstacle) {
    std::filesystem::create_directory(Path("settings"));
    Write("settings.bak", "older");
    SettingsManager directory(switches(), folder_);
    EXPECT_FALSE(directory.Load());
    EXPECT_TRUE(directory.Save());  // the directory went aside, and not over the older copy
    EXPECT_TRUE(std::filesystem::is_directory(Path("settings.bak2")));
    EXPECT_EQ(Read(Path("settings.bak")), "older");

    Write("file", "x");
    SettingsManager nowhere(switches(), Path("file"));
    EXPECT_TRUE(nowhere.Load());
    nowhere.SetOn("Loud", true);
    EXPECT_FALSE(nowhere.Save());
    EXPECT_TRUE(Told("failed when writing " + Path("file/settings"))) << messages_;
    EXPECT_EQ(Read(Path("file")), "x");
}

TEST_F(Settings, AreWrittenOnlyWhenSomethingIsNew) {
    SettingsManager settings(switches(), folder_);
    settings.Save();
    Write("settings", "version = 1 ; by hand\n");
    EXPECT_TRUE(settings.Save());
    EXPECT_EQ(Read(Path("settings")), "version = 1 ; by hand\n");
    settings.Load();
    settings.SetOn("Wrap", false);
    EXPECT_TRUE(settings.Save());
    EXPECT_NE(Read(Path("settings")).find("Wrap = 0"), std::string::npos);
    // What another version left is written back.
    Write("settings", "version = 1\nOther.x = 5\n");
    settings.Load();
    settings.Save();
    EXPECT_NE(Read(Path("settings")).find("Other {\n    x = 5"), std::string::npos);
}

TEST_F(Arrangements, BelongToASourceAndTheNewestStay) {
    ArrangementStore store(folder_);
    const std::string text = "rows \"a\"\n%if\n\t\xFF end";
    EXPECT_FALSE(store.Load("/x/a.trs"));
    EXPECT_TRUE(store.Save("/x/a.trs", text));
    EXPECT_EQ(store.Load("/x/./a.trs"), text);
    EXPECT_TRUE(store.Save("/x/a.trs", "new"));
    EXPECT_EQ(ArrangementStore(folder_).Load("/x/a.trs"), "new");

    const auto files = [this] { return std::filesystem::directory_iterator(Path("arrangements")); };
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    const std::filesystem::path first = files()->path();
    std::filesystem::last_write_time(first, old);
    for (size_t i = 1; i < ArrangementStore::mostKept; ++i)
        ASSERT_TRUE(store.Save("/y/" + std::to_string(i), "t"));
    EXPECT_EQ(store.Load("/x/a.trs"), "new");
    EXPECT_TRUE(store.Save("/y/last", "t"));
    EXPECT_FALSE(store.Load("/x/a.trs"));
    EXPECT_EQ(store.Load("/y/last"), "t");
    EXPECT_EQ(static_cast<size_t>(std::distance(files(), {})), ArrangementStore::mostKept);

    EXPECT_TRUE(store.Save("/y/last", ""));
    EXPECT_FALSE(store.Load("/y/last"));
    Write("blocked", "");
    EXPECT_FALSE(ArrangementStore(Path("blocked")).Save("/x", "t"));
}

TEST_F(Arrangements, OfTwoPathsWithOneHashOrADamagedFileDoNotMix) {
    ArrangementStore store(folder_);
    ASSERT_TRUE(store.Save("/x/a", "mine"));
    const std::string file = std::filesystem::directory_iterator(Path("arrangements"))->path().string();
    std::ofstream(file) << "path = \"/x/other\"\ntext = \"theirs\"\n";
    EXPECT_FALSE(store.Load("/x/a"));
    ASSERT_TRUE(store.Save("/x/a", "mine again"));
    EXPECT_EQ(store.Load("/x/a"), "mine again");
    EXPECT_NE(Read(file).find("theirs"), std::string::npos);
    std::ofstream(file) << "path = ?";
    EXPECT_EQ(store.Load("/x/a"), "mine again");
}

}  // namespace
