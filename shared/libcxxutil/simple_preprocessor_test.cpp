#include "shared/libcxxutil/simple_preprocessor.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/text.h"

namespace {

// An owner with one file of lines; it writes down what it is asked.
class Owner : public ut_simple_preprocessor_client {
  public:
    explicit Owner(const macro_table* outer = nullptr, bool undefinedIsEmpty = false)
        : preprocessor('%', outer, *this, undefinedIsEmpty) {}

    const std::string& file() const override { return file_; }
    int line() const override { return line_; }
    bool include(const std::string& path) override { return path != "/dir/missing"; }
    void message(ReportLevel, const std::string& text) override { messages += text + "\n"; }
    void print(const std::string& text) override { printed += text + "\n"; }
    std::optional<std::string> macro(std::string_view name) override {
        return name == "THIRD" ? std::optional<std::string>("3") : std::nullopt;
    }
    // The lines that are left, each followed by "|".
    std::string Run(std::string_view text) {
        std::string left;
        preprocessor.EnterFile();
        for (std::string_view line; text_next_line(text, line);) {
            ++line_;
            preprocessor.HandleLine(line);
            if (!preprocessor.WasDirective() && !preprocessor.IsSkipping()) left.append(line).append("|");
        }
        closed = preprocessor.LeaveFile();
        return left;
    }

    simple_preprocessor preprocessor;
    std::string messages, printed;
    bool closed = true;

  private:
    std::string file_ = "/dir/file";
    int line_ = 0;
};

std::string evaluated(const std::string& condition, const std::string& macros = {}) {
    Owner owner;
    owner.preprocessor.DefineFromText(macros);
    const std::string left = owner.Run("%if " + condition + "\nyes\n%else\nno\n%endif\n");
    const std::string location = "\"/dir/file\", line 1: ";
    return owner.messages.empty() ? left : owner.messages.substr(location.size());
}

TEST(IntegerEvaluator, FollowsC) {
    const struct {
        const char* text;
        int64_t value;
    } cases[] = {{"1 + 2 * 3", 7},
                 {"(1 + 2) * 3", 9},
                 {"10 - 4 - 3", 3},
                 {"7 / 2 + -7 / 2 + 7 % 4", 3},
                 {"1 << 2 + 1", 8},
                 {"-8 >> 1", -4},
                 {"5 & 3 == 3", 1},
                 {"6 & 3 ^ 1 | 8", 11},
                 {"1 | 2 && 0", 0},
                 {"0 || 0 && 1 || 2", 1},
                 {"!0 + !5 + ~0", 0},
                 {"1 < 2 == 2 > 1", 1},
                 {"1 <= 1 != 2 >= 3", 1},
                 {"0 ? 1 : 1 ? 2 : 3", 2},
                 {"0x10 + 010 + 1", 25},
                 {"- - +3", 3},
                 {"0x7fffffffffffffff + 1", INT64_MIN},
                 {"(1 << 63) / -1", INT64_MIN},
                 {"(1 << 63) % -1", 0},
                 {"0 && 1 / 0", 0},
                 {"1 || unknown", 1},
                 {"1 ? 5 : 1 % 0", 5},
                 {"0 ? nofunction(1) : 6", 6}};
    class : public ut_simple_integer_evaluator_client_interface {
        Result EvaluateName(std::string_view, int64_t&) override { return Result::failure("unknown"); }
        Result EvaluateFunction(std::string_view, const std::vector<std::string_view>&, int64_t&) override {
            return Result::failure("unknown");
        }
    } nothing;
    for (const auto& each : cases) {
        int64_t value = 0;
        EXPECT_EQ(evaluate_integer(each.text, nothing, value).text(), "") << each.text;
        EXPECT_EQ(value, each.value) << each.text;
    }
}

TEST(SimplePreprocessor, TellsWhatIsWrongWithACondition) {
    const std::string deep(100000, '(');
    const struct {
        std::string condition, message;
    } cases[] = {{"1 / 0", "parse error: near: \"/ 0\"\n"},
                 {"1 % 0", "parse error: near: \"% 0\"\n"},
                 {"1 << 64", "parse error: near: \"<< 64\"\n"},
                 {"1 +", "parse error: near: \"\"\n"},
                 {"(1", "parse error: near: \"\"\n"},
                 {"1 2", "parse error: near: \"2\"\n"},
                 {"1 ? 2", "parse error: near: \"\"\n"},
                 {"12ab", "parse error: near: \"12ab\"\n"},
                 {"", "parse error: near: \"\"\n"},
                 {"defined(A", "parse error: near: \"A\"\n"},
                 {"defined(A, B)", "error: too many arguments defined\n"},
                 {"defined()", "error: too few arguments defined\n"},
                 {"streq(a)", "error: too few arguments streq\n"},
                 {"streq(a, b, c)", "error: too many arguments streq\n"},
                 {"exists(a)", "error: unknown function: exists\n"},
                 {"NONE == 1", "error: macro not defined(NONE) ...\n"},
                 {"notempty(NONE)", "error: macro not defined(NONE) ...\n"},
                 {"LOOP", "error: macro recursion detected for: \"LOOP\"\n"},
                 {"streq(TEXTLOOP, x)", "error: macro recursion detected for: \"TEXTLOOP\"\n"}};
    for (const auto& each : cases)
        EXPECT_EQ(evaluated(each.condition, "LOOP LOOP2 + 1\nLOOP2 LOOP\nTEXTLOOP a${TEXTLOOP}\n"),
                  each.message)
            << each.condition;
    EXPECT_EQ(evaluated(deep).substr(0, 20), "parse error: near: \"");
}

TEST(SimplePreprocessor, ConditionsUseMacrosAndFunctions) {
    const std::string macros = "ONE 1\nSUM ONE + ${ONE}\nEMPTY\nNAME \"a b\"\nFILE ${__HERE}/x\n";
    const char* const yes[] = {"ONE",
                               "SUM * 2 == 4",
                               "!EMPTY",
                               "${SUM} == 2",
                               "defined(ONE) && !defined(NONE)",
                               "notempty(NAME) && !notempty(EMPTY) && !notempty(\"\")",
                               "streq(NAME, \"a b\") && streq(${NAME}, NAME) && streq(x, \"x\")",
                               "!streq(NAME, \"a, (b\")",
                               "THIRD == 3",
                               "fileexists(\"/dev/../etc/passwd\") && !file_exists(nothing)"};
    for (const char* each : yes) EXPECT_EQ(evaluated(each, macros), "yes|") << each;
    Owner lenient(nullptr, true);
    EXPECT_EQ(lenient.Run("%if NONE || notempty(NONE) || notempty(${NONE})\na\n%endif\nb\n"), "b|");
    EXPECT_EQ(lenient.messages, "");
}

TEST(SimplePreprocessor, MacrosThatDoubleEndInAnError) {
    std::string macros = "M0 1\n", texts = "T0 aaaaaaaaaa\n";
    for (int i = 1; i < 60; ++i) {
        const std::string n = std::to_string(i), before = std::to_string(i - 1);
        macros += "M" + n + " M" + before + " + M" + before + "\n";
        texts += "T" + n + " ${T" + before + "}${T" + before + "}\n";
    }
    EXPECT_TRUE(evaluated("M59", macros).starts_with("error: macro recursion detected"));
    EXPECT_TRUE(evaluated("notempty(T59)", texts).starts_with("error: macro recursion detected"));
}

TEST(SimplePreprocessor, ChoosesLinesByTheirConditions) {
    const struct {
        const char *text, *left, *message;
    } cases[] = {{"a\n%if 0\nb\n%endif\nc", "a|c|", ""},
                 {"%if 0\na\n%elif 1\nb\n%elsif 1\nc\n%else\nd\n%endif", "b|", ""},
                 {"%if 1\na\n%elseif 1/0\nb\n%else\nc\n%endif", "a|", ""},
                 {"%if 0\n%if 1/0\na\n%else\nb\n%endif\n%elif 0\n%else\nc\n%endif", "c|", ""},
                 {"%if 0\n%nonsense\n%error x\n%endif\nz", "z|", ""},
                 {"%  ifdef X\na\n%endif\n%define X\n% ifdef X\nb\n%endif", "b|", ""},
                 {"%if 0\n%define X 1\n%endif\n%ifdef X\na\n%endif", "", ""},
                 {"%define X 1\n%undef X\n%ifdef X\na\n%endif", "", ""},
                 {"%else\na", "a|", "\"/dir/file\", line 1: error: unexpected directive: else\n"},
                 {"%elsif 1\na", "a|", "\"/dir/file\", line 1: error: unexpected directive: elif\n"},
                 {"%endif\na", "a|", "\"/dir/file\", line 1: error: unexpected directive: endif\n"},
                 {"%if 1\n%else\na\n%else\nb\n%endif", "",
                  "\"/dir/file\", line 4: error: unexpected directive: else\n"},
                 {"%if 0\n%else\n%elif 1\nb\n%endif", "b|",
                  "\"/dir/file\", line 3: error: unexpected directive: elif\n"},
                 {"%ifdef A B\na\n%endif", "", "\"/dir/file\", line 1: parse error: too many arguments\n"},
                 {"%what now", "", "\"/dir/file\", line 1: error: illegal directive: \"what\"\n"},
                 {"%", "", "\"/dir/file\", line 1: error: illegal directive: \"\"\n"},
                 {"%warning 100%s full", "", "\"/dir/file\", line 1: warning: 100%s full\n"},
                 {"%error stop %n", "", "\"/dir/file\", line 1: error: stop %n\n"},
                 {"%include /dir/missing", "",
                  "could not open \"/dir/missing\" which was referenced at \"/dir/file\":1\n"}};
    for (const auto& each : cases) {
        Owner owner;
        EXPECT_EQ(owner.Run(each.text), each.left) << each.text;
        EXPECT_EQ(owner.messages, each.message) << each.text;
        EXPECT_TRUE(owner.closed) << each.text;
    }
    Owner owner;
    owner.Run("%info one two\n%echo three\n%if 1\n");
    EXPECT_EQ(owner.printed, "one two\nthree\n");
    EXPECT_FALSE(owner.closed);
    EXPECT_EQ(owner.Run("next"), "next|");
}

TEST(SimplePreprocessor, IncludesNameTheirDirectoryAndMacrosHaveThreeSources) {
    const macro_table outer{{"A", "outer"}, {"B", "outer"}, {"__VOREL_DIR__", "/vorel"}};
    Owner owner(&outer);
    const struct {
        const char *argument, *path;
    } cases[] = {{"\"${__DIR__}/x.opt\"", "/dir/x.opt"},
                 {"${__VOREL_DIR__}/x", "/vorel/x"},
                 {"sub/x", "/dir/sub/x"},
                 {"\"/a b\"", "/a b"}};
    for (const auto& each : cases) {
        owner.preprocessor.HandleLine(std::string("%include ") + each.argument);
        EXPECT_EQ(owner.preprocessor.LastIncludedPath(), each.path);
    }
    owner.preprocessor.define("A", "own ${B} ${THIRD}");
    std::string value;
    EXPECT_TRUE(owner.preprocessor.expand("A", value));
    EXPECT_EQ(value, "own outer 3");
    owner.preprocessor.undefine("A");
    EXPECT_TRUE(owner.preprocessor.expand("A", value));
    EXPECT_EQ(value, "outer");
    EXPECT_EQ(owner.preprocessor.expand("C", value).text(), "macro not defined(C) ...");
}

TEST(Files, AreReplacedAsAWholeAndReadWithALimit) {
    std::string folder = path_join(path_temporary_directory(), "files_XXXXXX");
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string real = path_join(folder, "real"), link = path_join(folder, "link");
    std::string text;
    const Result missing = file_read_whole(real, text, 10);
    EXPECT_EQ(missing.text(), real + ": No such file or directory");
    ASSERT_TRUE(file_replace(real, "old"));
    chmod(real.c_str(), 0600);
    std::filesystem::create_symlink("real", link);
    ASSERT_TRUE(file_replace(link, std::string_view("n\0w", 3)));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(std::filesystem::status(real).permissions(), std::filesystem::perms(0600));
    EXPECT_TRUE(file_read_whole(real, text, 3));
    EXPECT_EQ(text, std::string("n\0w", 3));
    EXPECT_FALSE(file_read_whole(real, text, 2));
    EXPECT_FALSE(file_read_whole(folder, text, 10));
    EXPECT_EQ(file_replace(folder, "x").where(), folder);  // nothing is left beside it
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2);
    std::filesystem::remove_all(folder);
    EXPECT_FALSE(file_replace(real, "x"));
}

TEST(Text, QuotesAnythingOnOneLine) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
    all += "\0017";
    const std::string quoted = text_quote(all);
    EXPECT_EQ(quoted.find_first_of("\r\n"), std::string::npos);
    size_t consumed = 0;
    EXPECT_EQ(text_unquote(quoted, &consumed), all);
    EXPECT_EQ(consumed, quoted.size());
}

}  // namespace
