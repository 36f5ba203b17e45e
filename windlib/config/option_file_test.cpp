#include "windlib/config/option_file.h"

#include "windlib/config/config_testing.h"

namespace {

class OptionFile : public ConfigFolder {
  protected:
    // The plain form of what the text makes.
    std::string Loaded(const std::string& text) {
        messages_.clear();
        tree_ = std::make_unique<OptionTree>();
        good_ = optionfile_Load(Write("main.opt", text), *tree_, hooks_);
        return optionfile_Text(*tree_, false);
    }
    std::unique_ptr<OptionTree> tree_;
    OptionFileHooks hooks_;
    bool good_ = false;
};

TEST_F(OptionFile, ReadsLines) {
    const struct {
        const char *text, *tree;
    } cases[] = {{"a.b = 1\r\n\t c=  two words \t\r d=3", "a.b=1\nc=two words\nd=3\n"},
                 {"\n  # a = 1\n#b=2\nc = 3 # rest", "c=3\n"},
                 {"a = x=y", "a=x=y\n"},
                 {"a = \"x = y # z\" # rest", "a=x = y # z\n"},
                 {"a = \"say \\\"hi\\\"\\tnow\"", "a=say \"hi\"\tnow\n"},
                 {"a = %s%n", "a=%s%n\n"},
                 {"l += one\nl+= two\nl +=\"three\"", "l.list_0=one\nl.list_1=two\nl.list_2=three\n"},
                 {"a = 1\na = 2", "a=2\n"},
                 {"a.b.c = 1\na =", "a.b.c=1\n"},
                 {"a.b = 1\na.b = \nc=1", "c=1\n"},
                 {"a.b = 1\na.c = 2\n~Delete = a.b", "a.c=2\n"},
                 {"a += x\na += y\n~delete.x = a\na += z", "a.list_0=z\n"}};
    for (const auto& each : cases) {
        EXPECT_EQ(Loaded(each.text), each.tree) << each.text;
        EXPECT_TRUE(good_) << each.text << messages_;
    }
}

TEST_F(OptionFile, TellsFaultsAndGoesOn) {
    const struct {
        const char *text, *tree, *message;
    } cases[] = {{"novalue %s\nb=1", "b=1\n", "No value for novalue %s for line \"novalue %s\", skipping"},
                 {"a#b = 1\nb=1", "b=1\n", "Comment not allowed in keyname: a#b.\n"},
                 {"a = \"x\" y z # c\nb=1", "a=x\nb=1\n", "Warning: Some stuff is discarded: y z # c.\n"},
                 {"~include = none.opt\nb=1", "b=1\n", "Could not open file: "},
                 {"~sysinclude = sys.opt\nb=1", "b=1\n", "Couldn't locate file sys.opt on any system paths"},
                 {"~define = 1\nb=1", "b=1\n", "No macro name in key: ~define"},
                 {"a..b = 1\n= 2\nb=1", "b=1\n", "Illegal key: a..b"}};
    for (const auto& each : cases) {
        EXPECT_EQ(Loaded(each.text), each.tree) << each.text;
        EXPECT_FALSE(good_) << each.text;
        EXPECT_TRUE(Told(each.message)) << messages_;
    }
}

TEST_F(OptionFile, ReplacesMacrosByIdentifierAndInDefinitionsByText) {
    EXPECT_EQ(Loaded("~define.DIR = /d\nDIR = DIR/DIRS:x_DIR:DIR"), "/d=/d/DIRS:x_DIR:/d\n");
    EXPECT_EQ(Loaded("~define.DIR = /d\n~define.SUB = xDIRS\na = SUB"), "a=x/dS\n");
    EXPECT_EQ(Loaded("~define.A = 1\n~define.A = A2\na = A"), "a=12\n");
    EXPECT_EQ(Loaded("~define.A = B\n~define.B = A\nx = A B"), "x=B B\n");  // a line is gone through once
    // A value that holds its own name is put in once, and one that grows without end is refused.
    EXPECT_EQ(Loaded("~define.A = xA\n~define.C = A-A\nx = C"), "x=xA-xA\n");
    EXPECT_EQ(Loaded("~define.ab = bba\n~define.C = " + std::string(60, 'a') + "b\nx=1"), "x=1\n");
    EXPECT_FALSE(good_);
    EXPECT_EQ(Loaded("~define.A = " + std::string(100000, 'x') + "\ny = " + std::string(100, ' ') +
                     [] {
                         std::string many;
                         for (int i = 0; i < 1000; ++i) many += "A ";
                         return many;
                     }() +
                     "\nx=1"),
              "x=1\n");
}

TEST_F(OptionFile, IncludesOnceAndAsksTheApplication) {
    Write("loop.opt", "x = 1\n~include = main.opt\ny = 2\n");
    EXPECT_EQ(Loaded("~include = loop.opt\nz=3"), "x=1\ny=2\nz=3\n");
    EXPECT_FALSE(good_);
    EXPECT_TRUE(Told("Include recursion detected: " + Path("main.opt"))) << messages_;

    Write("twice.opt", "l += 1\n");
    EXPECT_EQ(Loaded("~include = twice.opt\n~INCLUDE = \"" + Path("./twice.opt") + "\""),
              "l.list_0=1\nl.list_1=1\n");
    EXPECT_TRUE(good_);

    hooks_.evaluate = [](const std::string& text) {
        return text == "none" ? std::nullopt : std::optional(text == "{n}" ? "twice" : "?");
    };
    hooks_.findOnSystemPaths = [this](const std::string& name) { return Path(name); };
    hooks_.takeFile = [](const std::string& path, OptionTree& tree) {
        return path.ends_with("taken.opt") && tree.Set("taken", "yes");
    };
    EXPECT_EQ(Loaded("~include = %EVAL {{n}}.opt\n~sysinclude=taken.opt"), "l.list_0=1\ntaken=yes\n");
    EXPECT_EQ(Loaded("~include = %EVAL{none}"), "");
    EXPECT_TRUE(Told("%EVAL{none}")) << messages_;
}

TEST_F(OptionFile, SavesWhatReadsBackTheSame) {
    OptionTree tree;
    ASSERT_TRUE(tree.Set("a.b", "x # \"y\" = \\ \n\t\x01"));
    ASSERT_TRUE(tree.Set("a", "%d"));
    ASSERT_TRUE(tree.Append("a.l", "1"));
    EXPECT_FALSE(tree.Set("a..b", "x"));
    ASSERT_TRUE(optionfile_Save(Path("out"), tree));
    EXPECT_EQ(Files(), 1u);
    OptionTree back;
    EXPECT_TRUE(optionfile_Load(Path("out"), back));
    EXPECT_EQ(optionfile_Text(back, true), optionfile_Text(tree, true));
    EXPECT_EQ(*back.Value("a.b"), *tree.Value("a.b"));

    tree.Set("bad#key", "1");
    const std::string before = Read(Path("out"));
    EXPECT_FALSE(optionfile_Save(Path("out"), tree));
    EXPECT_EQ(Read(Path("out")), before);
    EXPECT_FALSE(optionfile_Save(Path("none/out"), back));
    EXPECT_TRUE(Told("Couldn't write " + Path("none/out"))) << messages_;
}

}  // namespace
