#include "shared/libcxxutil/result.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(ResultTest, TellsThePartsThatThereAre) {
    const struct {
        Result result;
        const char* text;
    } cases[] = {
        {{}, ""},
        {Result::failure("Bad format TRR file."), "Bad format TRR file."},
        {Result::failure("not a trace store file", "run.trs"), "run.trs: not a trace store file"},
        {Result::system("run.trs", ENOSPC), "run.trs: No space left on device"},
        {Result::system("run.trs", EIO, "the disk did not keep it"),
         "run.trs: the disk did not keep it: Input/output error"},
        {Result::system("run.trs", 0), "run.trs: the system gives no reason"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(one.result.text(), one.text);
        EXPECT_EQ(one.result.ok(), one.text[0] == '\0') << one.text;
        EXPECT_FALSE(one.result.IsFatal());
    }
    EXPECT_TRUE(Result::failure("no").fatal().IsFatal());
}

TEST(ResultTest, TheFirstOfTwoFailuresIsTold) {
    EXPECT_TRUE(result_First({}, {}).ok());
    EXPECT_EQ(result_First(Result::failure("a"), Result::failure("b")).what(), "a");
    EXPECT_EQ(result_First({}, Result::failure("b")).what(), "b");
}
