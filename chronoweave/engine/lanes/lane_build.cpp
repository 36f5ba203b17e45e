#include "chronoweave/engine/lanes/lane_build.h"

#include <algorithm>

#include "libtrv/store_mark.h"
#include "shared/libcxxutil/paths.h"

LaneBuild::LaneBuild(TraceStore& store, LaneIndex* before, uint32_t blockEvents)
    : store_(store),
      builder_(mt_IsBigEndianTarget(store), blockEvents),
      blockEvents_(blockEvents),
      total_(mt_GetEventCount(store)) {
    StateTable state;
    if (mt_IsDamaged(store) || !Place() || (before && !Copy(*before))) {
        End(trouble_);
        return;
    }
    if (!mt_StartWalkAtEvent(store, next_, 0, &state, walk_) || !builder_.Begin(state)) End();
}

// Beside the store, or in the cache directory.
bool LaneBuild::Place() {
    const std::string& base = mt_GetBaseName(store_);
    std::string name = lane_NameBeside(base);
    if (!path_directory_is_writable(path_directory(name))) {
        if (!path_make_directory(path_cache_directory())) return false;
        name = lane_NameInCache(base);
    }
    trouble_ = beside_.make(name);
    if (trouble_.ok()) trouble_ = LaneFile::Create(beside_.name(), file_);
    return trouble_.ok();
}

// The whole blocks of an index that covers less, up to one that is damaged.
bool LaneBuild::Copy(LaneIndex& before) {
    std::vector<uint8_t> bytes;
    LaneSummary summary;
    LaneSums sums;
    for (size_t block = 0; block < before.BlockCount(); ++block) {
        const LaneHead& head = before.head(block);
        if (head.count != blockEvents_ || !before.ReadWhole(block, bytes) ||
            !before.ReadSummary(block, summary) || !before.ReadSums(block, 0, sums))
            break;
        if (!Append(bytes)) return false;
        builder_.PassOver(head, summary, std::move(sums));
        next_ = head.end();
    }
    return true;
}

bool LaneBuild::Append(std::span<const uint8_t> block) {
    trouble_ = file_->Append(block);
    return trouble_.ok();
}

bool LaneBuild::End(Result trouble) {
    trouble_ = std::move(trouble);
    over_ = true;
    file_.reset();
    walk_ = {};
    return false;
}

bool LaneBuild::Step(uint32_t events) {
    EventRecord event;
    for (uint32_t i = 0; i < events && !over_; ++i) {
        if (!mt_NextEvent(walk_, event)) return Finish();
        if (walk_.gap() || event.sequence != next_ || !builder_.Take(event)) return End();
        ++next_;
        if (!builder_.IsFull()) continue;
        builder_.Seal(mt_MarkOf(store_, next_ - 1), block_);
        if (!Append({block_.data(), block_.size()})) return End(trouble_);
        block_.cut(0);
    }
    return !over_;
}

bool LaneBuild::Finish() {
    if (walk_.gap()) return End();
    if (!builder_.IsEmpty()) {
        builder_.Seal(mt_MarkOf(store_, next_ - 1), block_);
        if (!Append({block_.data(), block_.size()})) return End(trouble_);
    }
    Result kept = file_->Sync();
    if (kept.ok()) kept = beside_.keep();
    made_ = kept.ok();
    return End(std::move(kept));
}

double LaneBuild::Share() const {
    return over_ || total_ == 0 ? 1 : std::min(1.0, static_cast<double>(next_ - 1) / total_);
}
