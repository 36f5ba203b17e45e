// A name that may lead to a source, with what a format needs to know it by.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class SourceName {
  public:
    explicit SourceName(const std::string& path);
    const std::string& path() const { return path_; }
    std::string_view extension() const;  // without the "."; exact, not folded
    bool IsFolder() const { return folder_; }
    // The first bytes, at most 64; fewer in a shorter file, none of a folder or of what can't be read.
    std::span<const uint8_t> head() const { return head_; }

  private:
    std::string path_;
    bool folder_ = false;
    std::vector<uint8_t> head_;
};
