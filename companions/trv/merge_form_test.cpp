#include "companions/trv/merge_form.h"

#include <vector>

#include "chronoweave/import/import_testing.h"

namespace {

class MergeFormTest : public ImportTest {
  protected:
    void SetUp() override {
        ImportTest::SetUp();
        for (const char* name : {"a.trr", "b.trr"}) {
            Bytes bytes = short_header(false);
            put_record(bytes, raw_event(4, 1, name[0], 1, false));
            if (name[0] == 'b') bytes.push_back(0);
            write(name, bytes);
        }
    }
    // The words with "@" for the folder; says what went to standard error, the folder left out.
    int run(std::vector<std::string> words) {
        for (std::string& word : words)
            if (word.starts_with("@")) word = path(word.substr(1));
        testing::internal::CaptureStderr();
        EXPECT_EQ(merge_IsAsked(words), true);
        const int status = merge_Run(words);
        said_ = testing::internal::GetCapturedStderr();
        for (size_t at; (at = said_.find(folder_ + '/')) != std::string::npos;)
            said_.erase(at, folder_.size() + 1);
        return status;
    }
    std::string said_;
};

TEST_F(MergeFormTest, endsWithZeroWheneverTheOutputIsWhole) {
    const struct {
        std::vector<std::string> words;
        int status;
        const char* said;  // as it begins
        bool isThere;
    } cases[] = {
        {{"-align", "natural", "-o", "@out.trr", "@a.trr"}, 0, "", true},
        {{"-align", "head", "-o", "@out.trr", "@a.trr", "@b.trr"},
         0,
         "trv: b.trr: 1 bytes are no part of any event\n",
         true},
        {{"-align", "tail", "-o", "@out.trr", "--", "@a.trr"}, 0, "", true},
        {{"@a.trr", "-o", "@out.trr"}, 0, "", true},
        {{"-align", "head", "-o", "@out.trr", "@a.trr", "@none.trr"},
         1,
         "trv: none.trr: Cannot open TRR file.: No such file or directory\n",
         false},
        {{"-align", "head", "-o", "@a.trr", "@a.trr"},
         1,
         "trv: a.trr: it is one of the files to be merged\n",
         false},
        {{"-align", "middle", "-o", "@out.trr", "@a.trr"},
         2,
         "trv: -align: natural, head or tail, not middle\nusage: trv -align",
         false},
        {{"-align", "head", "@a.trr"}, 2, "trv: -o: the output is missing\nusage", false},
        {{"-o", "@out.trr"}, 2, "trv: the files to be merged are missing\nusage", false},
        {{"-o"}, 2, "trv: -o: a value is missing\nusage", false},
        {{"-o", "@out.trr", "-x", "@a.trr"}, 2, "trv: -x: there is no such option\nusage", false},
    };
    for (const auto& c : cases) {
        std::filesystem::remove(path("out.trr"));
        EXPECT_EQ(run(c.words), c.status) << c.said;
        EXPECT_EQ(said_.substr(0, std::string(c.said).size()), c.said);
        EXPECT_EQ(std::filesystem::exists(path("out.trr")), c.isThere) << c.said;
    }
}

TEST_F(MergeFormTest, leavesOtherWordsToOtherForms) {
    EXPECT_FALSE(merge_IsAsked({}));
    EXPECT_FALSE(merge_IsAsked(std::vector<std::string>{"-port", "1"}));
}

}  // namespace
