// The programs trv and gexec as they are started by others.
#include "companions/trv/server_form.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <csignal>
#include <filesystem>

#include "companions/trv/server/server_testing.h"
#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/child_process.h"

namespace {

using namespace std::chrono_literals;

class ProgramTest : public TargetTest {
  protected:
    void TearDown() override {
        child_ = ChildProcess();
        TargetTest::TearDown();
    }
    // Starts gexec with these words behind its name; "@" stands for the pipe's number in it.
    void startGexec(std::vector<std::string> words) {
        BytePipe commands, replies;
        ASSERT_TRUE(pipe_Make(commands).ok() && pipe_Make(replies).ok());
        ChildOptions options;
        options.arguments = {CW_GEXEC};
        for (const std::string& word : words) options.arguments.push_back(word == "@" ? "7" : word);
        options.descriptors = {{0, commands.read.number()}, {7, replies.write.number()}};
        ASSERT_TRUE(child_.start(options).ok());
        commands_ = std::move(commands.write);
        replies_ = std::move(replies.read);
    }
    void startServer() { startGexec({"@", "vrl:TRV:1:exec:000", "0", "-stdin", CW_TRV}); }
    // What is said up to the next prompt, or to the end.
    std::string answer() {
        std::string text;
        std::array<uint8_t, 1> byte;
        while (!text.ends_with("> ") && pipe_Read(replies_, byte).what == Moved::Some)
            text += static_cast<char>(byte[0]);
        return text;
    }
    void send(const std::string& text) {
        const std::vector<uint8_t> bytes(text.begin(), text.end());
        EXPECT_EQ(pipe_Write(commands_, bytes).bytes, bytes.size());
    }
    std::string ask(const std::string& line) {
        send(line + '\n');
        return answer();
    }

    ChildProcess child_;
    FileDescriptor commands_, replies_;
};

TEST_F(ProgramTest, AReplayedFileIsTheFile) {
    startServer();
    EXPECT_NE(answer().find("event server"), std::string::npos);
    const std::string sample = CW_SOURCE_DIR "/samples/build-2cpu.trr";
    EXPECT_NE(ask("c replay " + sample + " xmax").find("established"), std::string::npos);
    EXPECT_NE(ask("l " + path("live.trr")).find("enabled"), std::string::npos);
    EXPECT_NE(ask("g").find("event logging: on"), std::string::npos);
    std::string said;
    std::array<uint8_t, 1> byte;
    while (!said.ends_with('\n') && pipe_Read(replies_, byte).what == Moved::Some)
        said += static_cast<char>(byte[0]);
    EXPECT_EQ(said, "The target has ended: 25587 events\n");
    EXPECT_TRUE(bytes_of(path("live.trr")) == bytes_of(sample));
    EXPECT_NE(ask("n").find("disabled"), std::string::npos);
    send("\nq\n");
    EXPECT_EQ(answer(), "> ") << "for the empty line; behind q comes the pipe's end";
    EXPECT_EQ(answer(), "");
    const auto end = child_.WaitForEnd(10s);
    ASSERT_TRUE(end.has_value());
    EXPECT_TRUE(end->how == ChildEnd::How::Exited && end->number == 0);
}

// The end of the commands, and a signal, end the server; and the server's end is the end of the pipe.
TEST_F(ProgramTest, NobodyIsLeftBetweenTheServerAndItsPipe) {
    enum class How { InputEnds, Terminated, Killed };
    for (const How how : {How::InputEnds, How::Terminated, How::Killed}) {
        startServer();
        answer();
        if (how == How::InputEnds)
            commands_.close();
        else
            child_.signal(how == How::Terminated ? SIGTERM : SIGKILL);
        EXPECT_EQ(answer(), "");
        const auto end = child_.WaitForEnd(10s);
        ASSERT_TRUE(end.has_value());
        EXPECT_EQ(end->how, how == How::Killed ? ChildEnd::How::Killed : ChildEnd::How::Exited);
    }
}

TEST_F(ProgramTest, GexecSaysWhatIsWrong) {
    startGexec({"@", "s", "0", "-stdin", "/nowhere/trv"});
    EXPECT_EQ(answer(), "gexec: /nowhere/trv: No such file or directory\n");
    EXPECT_EQ(child_.WaitForEnd(10s).value().number, 127);
    const std::vector<std::string> wrong[] = {{},
                                              {"@", "s", "0", "-stdin"},
                                              {"99", "s", "0", "-stdin", "x"},
                                              {"@", "s", "1", "-stdin", "x"},
                                              {"@", "s", "0", "-file", "x"},
                                              {"-1", "s", "0", "-stdin", "x"}};
    for (const auto& words : wrong) {
        testing::internal::CaptureStderr();
        startGexec(words);
        EXPECT_EQ(child_.WaitForEnd(10s).value().number, 2);
        EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with("gexec: "));
    }
}

// The server has its three streams and nothing else of what gexec was given.
TEST_F(ProgramTest, TheServerGetsItsStreamsAndNoMore) {
    startGexec({"@", "s", "0", "-stdin", "ls", "/proc/self/fd"});
    const std::string listed = answer();
    EXPECT_EQ(listed, "0\n1\n2\n3\n") << "3 is the folder that ls reads";
}

}  // namespace
