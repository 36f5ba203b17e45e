#include "windlib/config/attribute_store.h"

#include "windlib/config/config_testing.h"

namespace {

class AttributeStoreTest : public ConfigFolder {
  protected:
    // The flat form of what the text makes.
    std::string Loaded(const std::string& text, AttributeStoreOptions options = {}) {
        messages_.clear();
        store_ = std::make_unique<AttributeStore>(options);
        good_ = store_->ReadText(Path("main"), text);
        return store_->Write(AttributeForm::Flat);
    }
    std::unique_ptr<AttributeStore> store_;
    bool good_ = false;
};

TEST_F(AttributeStoreTest, ReadsStatementsAndValues) {
    const struct {
        const char *text, *flat;
    } cases[] = {{"a = 1\nb = -0x10\r\nc=010\n\nd = - 2", "a= 1\nb= -16\nc= 8\nd= -2\n"},
                 {"a = false b = no c = off d = true e = yes f = on", "a= 0\nb= 0\nc= 0\nd= 1\ne= 1\nf= 1\n"},
                 {"; a = 1\na = 2 ; b = 3", "a= 2\n"},
                 {"t = \"x\\n\\\"%s\\\"\"", "t= \"x\\n\\\"%s\\\"\"\n"},
                 {"\"odd = name\" = 1", "\"odd = name\"= 1\n"},
                 {"a.b.c = 1\nd = 2", "d= 2\na.b.c= 1\n"},
                 {"a { b { x = 1 } y = 2 }\nz = 3", "z= 3\na.y= 2\na.b.x= 1\n"},
                 {"a.b {\n x = 1\n}\nz = 3", "z= 3\na.b.x= 1\n"},
                 {"a {\n b.c { x = 1 }\n y = 2\n}", "a.y= 2\na.b.c.x= 1\n"},
                 {"l = { 1, -2,0x3 }", "l= { 1, -2, 3 }\n"},
                 {"l = { \"a\", \"b, }\" }", "l= { \"a\", \"b, }\" }\n"},
                 {"l = { 1, ...\n  2, ...\n\t3 }\nm = { }", "l= { 1, 2, 3 }\nm= { }\n"},
                 {"l += 1\nl += { 2, 3 }\nl += 4", "l= { 1, 2, 3, 4 }\n"},
                 {"t = \"a\"\nt += \"b\"", "t= { \"a\", \"b\" }\n"},
                 {"l = { }\nl += 4\nl += { }", "l= { 4 }\n"},
                 {"l = { 1 }\nl = \"x\"", "l= \"x\"\n"},
                 {"n = 9223372036854775807\nm = -9223372036854775808",
                  "n= 9223372036854775807\nm= -9223372036854775808\n"},
                 {"%define BIG 3\n%if BIG > 2\na = 1\n%else\na = 2\n%endif", "a= 1\n"}};
    for (const auto& each : cases) {
        EXPECT_EQ(Loaded(each.text), each.flat) << each.text;
        EXPECT_TRUE(good_) << each.text << "\n" << messages_;
    }
}

TEST_F(AttributeStoreTest, ReadsWordsAndSizesWhereTheyAreAllowed) {
    EXPECT_EQ(Loaded("a = word b = off c = 7", {.wordsAreTexts = true, .fileHook = {}}),
              "a= \"word\"\nb= \"off\"\nc= 7\n");
    EXPECT_EQ(Loaded("a = 4K b = -2k c = 0x1M d = 3", {.sizeSuffixes = true, .fileHook = {}}),
              "a= 4096\nb= -2048\nc= 1048576\nd= 3\n");
    EXPECT_EQ(Loaded("a = 4K"), "");
    EXPECT_TRUE(Told("line 1: parse error: illegal attribute value \"4K\"")) << messages_;
    EXPECT_EQ(Loaded("a = 9007199254740992K", {.sizeSuffixes = true, .fileHook = {}}), "");
    EXPECT_TRUE(Told("number out of range")) << messages_;
}

TEST_F(AttributeStoreTest, TellsTheFaultAndItsPlaceAndGoesOnWhenTold) {
    const struct {
        const char *text, *message;
        int line;
    } cases[] = {{"name ?= 2", "unknown operator sequence \"?=\" ", 1},
                 {"\nname ?", "unknown operator sequence \"? \" ", 2},
                 {"name -= 2", "unknown operator sequence \"-=\" ", 1},
                 {", x", "unknown operator sequence \", \" ", 1},
                 {"name\n \n", "unexpected end of file", 1},
                 {"name", "unexpected end of file", 1},
                 {"name\nb = 1", "unexpected end of line", 1},
                 {"a { x = 1", "unexpected end of file", 1},
                 {"%if 1\na = 1", "unexpected end of file", 2},
                 {"}", "unexpected '}'", 1},
                 {"\"\" = 1", "empty attribute name", 1},
                 {" = 1", "empty attribute name", 1},
                 {"a. = 1", "empty attribute name", 1},
                 {"a =", "empty attribute value", 1},
                 {"a = ; 1", "empty attribute value", 1},
                 {"a = { 1, }", "empty attribute value", 1},
                 {"a = { 1 2 }", "expected '}'", 1},
                 {"a = { 1", "expected '}'", 1},
                 {"a = { 1,\n 2 }", "unexpected end of line", 1},
                 {"a = { 1, ...", "unexpected end of file", 1},
                 {"a = { 1, \"x\" }", "the list has items of another kind", 1},
                 {"a = 1\na += \"x\"", "the list has items of another kind", 2},
                 {"a = \"open", "unexpected end of line", 1},
                 {"a = \"open\\\"", "unexpected end of line", 1},
                 {"a = maybe", "illegal attribute value \"maybe\"", 1},
                 {"a = 12x", "illegal attribute value \"12x\"", 1},
                 {"a = 9223372036854775808", "number out of range \"9223372036854775808\"", 1}};
    for (const auto& each : cases) {
        Loaded(each.text);
        EXPECT_FALSE(good_) << each.text;
        const std::string whole =
            gen_format("\"%s\", line %d: parse error: %s\n", Path("main").c_str(), each.line, each.message);
        EXPECT_TRUE(Told(whole)) << each.text << "\n" << messages_;
    }
    const AttributeStoreOptions goOn{.goOnAfterErrors = true, .fileHook = {}};
    EXPECT_EQ(Loaded("a = 1 b ? 2 c = 3\nd = 4", goOn), "a= 1\nd= 4\n");
    EXPECT_EQ(Loaded("a {\n b ? {\n c = \"}\"\n }\n d = 1\n}\ne = 2", goOn), "e= 2\na.d= 1\n");
    EXPECT_EQ(Loaded("a = { 1, x, ...\n 3, ...\n 4 }\nd = 4", goOn), "d= 4\n");
    EXPECT_EQ(Loaded("a = 1\nb ?\nc = 2"), "a= 1\n");
    EXPECT_EQ(Loaded("a = 1\nb = { 1, x, ...", goOn), "a= 1\n");  // nothing follows
    Loaded(
        std::string(200000, '?') + "\n" +
            [] {
                std::string lines;
                for (int i = 0; i < 5000; ++i) lines += "?\n";
                return lines;
            }(),
        goOn);
    EXPECT_LT(messages_.size(), 300000u);
    Loaded([] {
        std::string deep;
        for (int i = 0; i < 100000; ++i) deep += "a {";
        return deep;
    }());
    EXPECT_TRUE(Told("blocks are nested too deeply"));
}

TEST_F(AttributeStoreTest, IncludesFilesUnlessTheOwnerRefuses) {
    Write("more", "b = 2\n%ifdef __VOREL_HOST__\nc { d = 3 }\n%endif\n%error bad %s\n");
    Write("loop", "%include \"loop\"\n");
    const AttributeStoreOptions goOn{.goOnAfterErrors = true, .fileHook = {}};
    EXPECT_EQ(Loaded("a = 1\n%include \"more\"\ne = ?\n", goOn), "a= 1\nb= 2\nc.d= 3\n");
    EXPECT_TRUE(Told("\"" + Path("more") + "\", line 5: error: bad %s\n")) << messages_;
    EXPECT_TRUE(Told("\"" + Path("main") + "\", line 3: parse error: ")) << messages_;
    EXPECT_EQ(store_->Root().Find("b")->file, Path("more"));
    EXPECT_EQ(store_->Root().Find("b")->line, 1);

    EXPECT_EQ(Loaded("%include \"none\"\na = 1", goOn), "a= 1\n");
    EXPECT_TRUE(
        Told("could not open \"" + Path("none") + "\" which was referenced at \"" + Path("main") + "\":1\n"))
        << messages_;
    Loaded("%include \"loop\"\n");
    EXPECT_FALSE(good_);
    EXPECT_TRUE(Told("files include each other")) << messages_;

    EXPECT_EQ(Loaded("%include \"more\"\na = 1", {.fileHook = [](const std::string&) { return false; }}),
              "a= 1\n");
    EXPECT_TRUE(good_);
    AttributeStore store;
    EXPECT_FALSE(store.read_from_file(Path("none")));
    EXPECT_EQ(store.Macros().at("__VOREL_HOST__"), "win32");
}

TEST_F(AttributeStoreTest, BothFormsReadBackTheSame) {
    AttributeStore store;
    AttributeNode& node = store.Root().MakeChild("win dow").MakeChild("%x");
    node.Set("a.b", std::string("x\n\"\\\t\xC3\xA4 ; } %s"));
    node.Set("min", INT64_MIN);
    std::vector<int64_t> numbers(20);
    for (size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int64_t>(i) * -7;
    node.Set("numbers", numbers);
    node.Set("texts", std::vector<std::string>(9, "a, \"b\""));
    EXPECT_TRUE(store.add_or_replace_str_list_attribute("p.q", {"one", ""}));
    EXPECT_FALSE(store.add_or_replace_str_list_attribute("p.", {}));
    for (const AttributeForm form : {AttributeForm::Flat, AttributeForm::Block}) {
        ASSERT_TRUE(store.WriteToFile(Path("out"), form));
        AttributeStore back;
        EXPECT_TRUE(back.read_from_file(Path("out"))) << Read(Path("out"));
        EXPECT_EQ(back.Write(AttributeForm::Block), store.Write(AttributeForm::Block));
        EXPECT_EQ(*back.Root().Child("win dow")->Child("%x")->Numbers("numbers"), numbers);
    }
    EXPECT_NE(Read(Path("out")).find("...\n"), std::string::npos);
    EXPECT_FALSE(store.WriteToFile(Path("none/out"), AttributeForm::Flat));
    EXPECT_TRUE(Told("failed when writing " + Path("none/out"))) << messages_;
    ut_options_database none;
    EXPECT_FALSE(none.read_from_file("x") || none.add_or_replace_str_list_attribute("x", {}));
    EXPECT_TRUE(Told("[ut_options_database::read_from_file]: not implemented"));
    EXPECT_TRUE(Told("[add_or_replace_str_list_attribute]: not implemented"));
}

}  // namespace
