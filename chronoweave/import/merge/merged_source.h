// Several sources as one: their records in the order of their times, read as they are asked for. What is held
// in memory grows with the number of sources, not with their length.
//
// Records of one time come in the order of the sources, and each source's in its own order. A record with no
// time of its own stays behind the one that it follows; those that a source begins with, which most often
// tell the names and the states of its objects, come ahead of every record that has a time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "chronoweave/import/merge/merge_input.h"
#include "chronoweave/import/merge/merge_order.h"
#include "chronoweave/import/source/source.h"
#include "shared/libcxxutil/progress.h"

// How times of different sources are brought together.
enum class MergeAlign {
    Natural,  // they are as recorded
    Head,     // all are shifted to where the earliest source begins
    Tail,     // all are shifted to where the latest source ends
};

struct MergePart {
    std::string name;  // for messages
    std::unique_ptr<EventSource> source;
};

class MergedSource final : public EventSource {
  public:
    // Takes the sources over, at least one. The merged clock is the fastest of theirs, the byte order the
    // first one's. Refused when they are of different systems, have different kinds of objects, or clocks
    // that can't be brought together.
    static Result Make(std::vector<MergePart> parts, MergeAlign align, std::unique_ptr<MergedSource>& merged);
    // For the alignment of ends, which asks to look through every source first; it must be called before the
    // first record, and does nothing for the others. Refused where a source can't be looked through, and
    // without words when progress asks to stop.
    Result LookAhead(const Progress& progress);

    const SourceFacts& facts() const override { return facts_; }
    SourceStep next(SourceRecord& record) override;
    // The same without a copy: the record lasts until the next step.
    SourceStep Next(const SourceRecord*& record) {
        return phase_ == Phase::InOrder ? NextInOrder(record) : NextOfHeads(record);
    }
    // One for each source that is read, and one for each that is looked through ahead.
    SourceExtent extent() const override;
    void settle() override;

    const std::vector<MergeInput>& inputs() const { return inputs_; }

  private:
    MergedSource(std::vector<MergePart> parts, MergeAlign align);
    Result Check() const;
    SourceStep NextOfHeads(const SourceRecord*& record);
    SourceStep NextInOrder(const SourceRecord*& record);
    void AlignHeads();
    enum class Phase { Heads, InOrder };

    MergeAlign align_;
    SourceFacts facts_;
    std::vector<MergeInput> inputs_;
    Phase phase_ = Phase::Heads;
    size_t head_ = 0;   // the input whose head is read
    MergeOrder order_;  // of the inputs, by the places of their present records
    size_t at_ = 0;     // the input whose record was handed out
    bool handedOut_ = false;
};
