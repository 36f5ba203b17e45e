// For tests: a folder of their own, and the messages of the program.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

class ConfigFolder : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string name = path_join(path_temporary_directory(), "settings_XXXXXX");
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = std::filesystem::canonical(name).string();
        gen_set_report_sink([this](int, const std::string& line) { messages_ += line; });
    }
    void TearDown() override {
        gen_set_report_sink({});
        std::filesystem::remove_all(folder_);
    }
    std::string Path(const std::string& name) const { return path_join(folder_, name); }
    std::string Write(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name), std::ios::binary) << text;
        return Path(name);
    }
    static std::string Read(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    bool Told(const std::string& part) const { return messages_.find(part) != std::string::npos; }
    size_t Files() const {
        const std::filesystem::directory_iterator at(folder_);
        return static_cast<size_t>(std::distance(begin(at), end(at)));
    }

    std::string folder_, messages_;
};
