#include "shared/libcxxutil/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>

#include "shared/libcxxutil/byte_pipe.h"

using namespace std::chrono_literals;

namespace {

constexpr auto longEnough = 60s;

std::string readAll(const FileDescriptor& from) {
    std::string text;
    uint8_t room[256];
    for (MovedBytes moved; (moved = pipe_Read(from, room)).what == Moved::Some;)
        text.append(room, room + moved.bytes);
    return text;
}

// What a child writes to its standard output.
std::string outputOf(ChildOptions options) {
    BytePipe pipe;
    EXPECT_TRUE(pipe_Make(pipe));
    options.descriptors.push_back({1, pipe.write.number()});
    ChildProcess child;
    const Result started = child.start(options);
    EXPECT_TRUE(started) << started.text();
    pipe.write.close();
    std::string text = readAll(pipe.read);
    EXPECT_TRUE(child.WaitForEnd(longEnough));
    return text;
}

}  // namespace

TEST(ChildProcess, ArgumentsDirectoryAndEnvironmentArriveAsTheyAre) {
    EXPECT_EQ(outputOf({.arguments = {"printf", "%s|", "a b", "$HOME;\"", ""}}), "a b|$HOME;\"||");
    EXPECT_EQ(outputOf({.arguments = {"pwd"}, .directory = "/"}), "/\n");
    ASSERT_EQ(::setenv("CHILD_TEST", "ours", 1), 0);
    EXPECT_EQ(outputOf({.arguments = {"printenv", "CHILD_TEST"}}), "ours\n");
    EXPECT_EQ(outputOf({.arguments = {"printenv", "CHILD_TEST"}, .environment = {"CHILD_TEST=its"}}),
              "its\n");
}

TEST(ChildProcess, HasTheDescriptorsThatItWasGivenAndNoOther) {
    BytePipe pipe, second;
    ASSERT_TRUE(pipe_Make(pipe));
    ASSERT_TRUE(pipe_Make(second));
    const FileDescriptor leaked(::open("/dev/null", O_RDONLY));  // not closed on exec
    ASSERT_TRUE(leaked.IsOpen());
    // The two swap their numbers in the child.
    ChildOptions options{.arguments = {"sh", "-c",
                                       "echo a >&$0; echo b >&$1; for f in /proc/self/fd/*; do "
                                       "printf '%s ' ${f##*/}; done",
                                       std::to_string(second.write.number()),
                                       std::to_string(pipe.write.number())}};
    const int first = pipe.write.number(), other = second.write.number();
    options.descriptors = {{other, first}, {first, other}};
    const std::string listed = outputOf(options);
    EXPECT_EQ(listed.find(std::to_string(leaked.number()) + " "), std::string::npos) << listed;
    EXPECT_NE(listed.find(std::to_string(first) + " "), std::string::npos) << listed;
    pipe.write.close();
    second.write.close();
    EXPECT_EQ(readAll(pipe.read), "a\n");
    EXPECT_EQ(readAll(second.read), "b\n");
}

TEST(ChildProcess, TellsHowItEnded) {
    ChildProcess child;
    EXPECT_FALSE(child.WasStarted());
    ASSERT_TRUE(child.start({.arguments = {"sh", "-c", "exit 7"}}));
    auto end = child.WaitForEnd(longEnough);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->how, ChildEnd::How::Exited);
    EXPECT_EQ(end->number, 7);
    EXPECT_FALSE(child.signal(SIGTERM));
    ASSERT_TRUE(child.start({.arguments = {"sleep", "1000"}}));
    EXPECT_TRUE(child.IsRunning());
    EXPECT_FALSE(child.ended());
    EXPECT_TRUE(child.signal(SIGTERM));
    end = child.WaitForEnd(longEnough);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->how, ChildEnd::How::Killed);
    EXPECT_EQ(end->number, SIGTERM);
}

TEST(ChildProcess, WhatCanNotStartIsToldWithItsReason) {
    ChildProcess child;
    EXPECT_EQ(child.start({.arguments = {"/nonexistent/program"}}).text(),
              "/nonexistent/program: can't be started: No such file or directory");
    EXPECT_FALSE(child.start({.arguments = {"true"}, .directory = "/nonexistent"}));
    EXPECT_FALSE(child.start({.arguments = {"true"}, .descriptors = {{5, 999}}}));
    EXPECT_FALSE(child.start({}));
    EXPECT_FALSE(child.WasStarted());
}

TEST(ChildProcess, NoneStaysAsAZombieAndNoDescriptorLeaks) {
    const int before = ::dup(0);
    ::close(before);
    pid_t killed = 0, left = 0;
    {
        ChildProcess first, second;
        ASSERT_TRUE(first.start({.arguments = {"sleep", "1000"}}));
        ASSERT_TRUE(
            second.start({.arguments = {"sleep", "0"}, .descriptors = {{9, 0}}}, ChildProcess::AtEnd::Leave));
        killed = *first.pid();
        left = *second.pid();
    }
    EXPECT_EQ(::kill(killed, 0), -1);
    EXPECT_EQ(errno, ESRCH);
    for (int i = 0; child_Left() > 0 && i < 60000; ++i) {
        ::usleep(1000);
        child_Reap();
    }
    EXPECT_EQ(child_Left(), 0u);
    EXPECT_EQ(::kill(left, 0), -1);
    const int after = ::dup(0);
    ::close(after);
    EXPECT_EQ(after, before);
}
