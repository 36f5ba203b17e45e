// The lane index of a store as a file beside it, NAME.trl, or in the cache directory where the store's folder
// can't be written: blocks one behind the other (lane_block.h), each of which becomes visible by one byte.
// Nothing is lost with the file: it is made of the store.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "libtrv/committed_file.h"
#include "shared/libcxxutil/result.h"

constexpr uint32_t lane_FileKind = 7;
constexpr uint32_t lane_FileVersion = 2;

// By the store's base name.
std::string lane_NameBeside(const std::string& base);
std::string lane_NameInCache(const std::string& base);

class LaneFile {
  public:
    // Makes it anew in place of one that stands.
    static Result Create(const std::string& name, std::unique_ptr<LaneFile>& file);
    static Result OnDevice(std::unique_ptr<FileDevice> device, std::unique_ptr<LaneFile>& file);

    // Appends a block; after a failure the file ends where it did.
    Result Append(std::span<const uint8_t> block);
    Result Sync() { return file_.sync(); }
    const std::string& name() const { return file_.name; }

  private:
    CommittedFile file_;
};
