// Reads the examples of docs/formats.md, so that the page can't differ from what the programs do.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

// The bytes of the page's block that begins with "```hex NAME". A line is an offset, bytes, and a remark
// behind a "|"; offsets that don't count on from line to line fail the test. Empty, with a failure, when
// there is no such block.
inline std::vector<uint8_t> documented_Bytes(const std::string& name) {
    std::ifstream page(CW_SOURCE_DIR "/docs/formats.md");
    std::vector<uint8_t> bytes;
    std::string line;
    while (std::getline(page, line) && line != "```hex " + name) {
    }
    while (std::getline(page, line) && line != "```") {
        EXPECT_EQ(std::stoul(line.substr(0, 4), nullptr, 16), bytes.size()) << line;
        const std::string digits = line.substr(4, line.find('|') - 4);
        for (size_t at = digits.find_first_not_of(' '); at < digits.size();
             at = digits.find_first_not_of(' ', at + 2))
            bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    }
    EXPECT_FALSE(bytes.empty()) << "docs/formats.md has no bytes of " << name;
    return bytes;
}

// The text of the page's block that begins with "```text NAME", up to the "$" that ends it there.
inline std::string documented_Text(const std::string& name) {
    std::ifstream page(CW_SOURCE_DIR "/docs/formats.md");
    std::string line, text;
    while (std::getline(page, line) && line != "```text " + name) {
    }
    while (std::getline(page, line) && line != "```") text += line;
    EXPECT_TRUE(text.ends_with('$')) << "docs/formats.md has no text of " << name;
    return text.substr(0, text.rfind('$'));
}
