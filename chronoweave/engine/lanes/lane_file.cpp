#include "chronoweave/engine/lanes/lane_file.h"

#include <cstdio>

#include "shared/libcxxutil/paths.h"

namespace {
constexpr const char* extension = ".trl";
}  // namespace

std::string lane_NameBeside(const std::string& base) {
    return base + extension;
}

std::string lane_NameInCache(const std::string& base) {
    return path_in_cache(base) + extension;
}

Result LaneFile::Create(const std::string& name, std::unique_ptr<LaneFile>& file) {
    // Whoever reads the old one goes on reading it.
    std::remove(name.c_str());
    auto made = std::make_unique<LaneFile>();
    Result created = made->file_.create(name, lane_FileKind, lane_FileVersion);
    if (created.ok()) file = std::move(made);
    return created;
}

Result LaneFile::OnDevice(std::unique_ptr<FileDevice> device, std::unique_ptr<LaneFile>& file) {
    auto made = std::make_unique<LaneFile>();
    Result begun = made->file_.begin(std::move(device), extension, lane_FileKind, lane_FileVersion);
    if (begun.ok()) file = std::move(made);
    return begun;
}

Result LaneFile::Append(std::span<const uint8_t> block) {
    file_.pending.put8(1);
    file_.pending.put(block);
    size_t wrote = 0;
    Result result = file_.WriteBehind(wrote);
    if (result.ok()) result = file_.TurnTerminator(file_.pending.size());
    if (!result.ok()) {
        file_.pending.cut(0);
        file_.CutBack();
    }
    return result;
}
