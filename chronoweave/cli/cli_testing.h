// What the tests of the command line share: running the program in this process, and a folder with the sample
// trace.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "chronoweave/cli/command_line.h"
#include "chronoweave/import/import_testing.h"

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

struct Ran {
    int status = 0;
    std::string out, err;
};

// Runs the program in this process.
inline Ran run(const Words& words) {
    std::vector<const char*> argv{"chronoweave"};
    for (const std::string& word : words) argv.push_back(word.c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Ran ran;
    const auto line = cli_Parse(static_cast<int>(argv.size()), argv.data(), ran.status);
    if (line) ran.status = cli_Run(*line);
    std::fflush(stdout);
    ran.out = testing::internal::GetCapturedStdout();
    ran.err = testing::internal::GetCapturedStderr();
    return ran;
}

inline Words lines_of(const std::string& text) {
    Words lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// The objects of a command's JSON, which must succeed.
inline std::vector<Json> rows_of(Words words) {
    words.push_back("--json");
    const Ran ran = run(words);
    EXPECT_EQ(ran.status, 0) << ran.err;
    std::vector<Json> rows;
    for (const std::string& line : lines_of(ran.out)) rows.push_back(Json::parse(line));
    return rows;
}

inline std::string keys_of(const Json& row) {
    std::string keys;
    for (const auto& item : row.items()) keys += item.key() + ' ';
    return keys;
}

template <class Value>
std::vector<Value> column(const std::vector<Json>& rows, const char* key) {
    std::vector<Value> values;
    for (const Json& row : rows) values.push_back(row.at(key).get<Value>());
    return values;
}

inline std::string content(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline Bytes refresh(uint32_t id, uint32_t priority, const std::string& name) {
    Bytes event = raw_event(6, 1, 0, id, false, 39);
    event[16] = static_cast<uint8_t>(priority);
    std::copy(name.begin(), name.end(), event.begin() + 20);
    return event;
}

// Six events: task 0x401 comes with its name and runs from tick 0; task 0x402 is only ever seen in user
// events, at ticks 250, 250 and 500; the last event is at tick 1000. A tick is a microsecond.
inline Bytes small_trace(const std::string& name = "net") {
    Bytes bytes = short_header(false, 1, 1, 1000000);
    put_record(bytes, refresh(0x401, 20, name));
    put_record(bytes, raw_event(1, 0, 5000000, 0x401, false));
    for (const uint64_t time : {250u, 250u, 500u})
        put_record(bytes, raw_event(4, 7, 5000000 + time, 0x402, false, 8));
    put_record(bytes, raw_event(2, 0, 5001000, 0x401, false));
    return bytes;
}

class CliTest : public ImportTest {
  protected:
    static void SetUpTestSuite() {
        std::string folder = (std::filesystem::temp_directory_path() / "cli_XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        samples_ = folder;
        std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", folder + "/build-2cpu.trr");
        // The defaults of the tree, whatever the user who runs the tests has of their own.
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ASSERT_EQ(run({"import", folder + "/build-2cpu.trr"}).status, 0);
    }
    static void TearDownTestSuite() { std::filesystem::remove_all(samples_); }
    void SetUp() override {
        ImportTest::SetUp();
        gen_set_console_sink({});  // to standard error, where the program has it
    }

    static const std::string& folder() { return samples_; }
    static std::string sample() { return samples_ + "/build-2cpu"; }
    std::string small() const { return write("small.trr", small_trace()); }

    inline static std::string samples_;
};
