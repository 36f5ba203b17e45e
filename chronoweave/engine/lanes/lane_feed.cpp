#include "chronoweave/engine/lanes/lane_feed.h"

#include <cstdio>
#include <utility>

LaneFeed::LaneFeed(const std::string& base, bool bigEndian, uint32_t blockEvents)
    : builder_(bigEndian, blockEvents) {
    std::remove(lane_NameInCache(base).c_str());
    if (!LaneFile::Create(lane_NameBeside(base), file_).ok()) std::remove(lane_NameBeside(base).c_str());
}

// What was written of it goes too: a disk that is full has better uses for the room.
void LaneFeed::GiveUp() {
    if (!file_) return;
    std::remove(file_->name().c_str());
    file_.reset();
    sealed_.clear();
}

bool LaneFeed::GiveRoom() {
    const bool had = file_ != nullptr;
    GiveUp();
    return had;
}

void LaneFeed::Appended(const EventRecord& event, uint64_t mark) {
    if (!file_) return;
    if (!builder_.Take(event)) return GiveUp();
    taken_ = event.sequence;
    mark_ = mark;
    if (builder_.IsFull()) Seal();
}

void LaneFeed::Seal() {
    Sealed& block = sealed_.emplace_back();
    block.bytes = std::exchange(spare_, {});
    block.bytes.cut(0);
    block.last = builder_.Seal(mark_, block.bytes).end() - 1;
}

void LaneFeed::Committed(uint32_t events) {
    committed_ = events;
    while (file_ && !sealed_.empty() && sealed_.front().last <= events) {
        const ByteBuffer& bytes = sealed_.front().bytes;
        if (!file_->Append({bytes.data(), bytes.size()}).ok()) return GiveUp();
        spare_ = std::move(sealed_.front().bytes);
        sealed_.pop_front();
    }
}

void LaneFeed::Finish() {
    if (!file_ || taken_ != committed_) return;
    if (!builder_.IsEmpty()) Seal();
    Committed(committed_);
}
