#include "chronoweave/import/merge/merged_source.h"

#include <algorithm>
#include <utility>

#include "chronoweave/import/merge/merge_words.h"
#include "shared/libcxxutil/report.h"

MergedSource::MergedSource(std::vector<MergePart> parts, MergeAlign align)
    : align_(align), order_(parts.size()) {
    for (MergePart& part : parts) inputs_.emplace_back(part.name, std::move(part.source));
    facts_ = inputs_.front().source().facts();
    for (const MergeInput& input : inputs_) {
        const SourceFacts& facts = input.source().facts();
        facts_.ticksPerSecond = std::max(facts_.ticksPerSecond, facts.ticksPerSecond);
        if (facts_.architecture == 0) facts_.architecture = facts.architecture;
    }
}

Result MergedSource::Make(std::vector<MergePart> parts, MergeAlign align,
                          std::unique_ptr<MergedSource>& merged) {
    std::unique_ptr<MergedSource> made(new MergedSource(std::move(parts), align));
    Result checked = made->Check();
    if (!checked.ok()) return checked;
    for (MergeInput& input : made->inputs_)
        input.SetTarget({made->facts_.ticksPerSecond, made->facts_.bigEndian});
    merged = std::move(made);
    return {};
}

Result MergedSource::Check() const {
    const std::string& first = inputs_.front().name();
    for (const MergeInput& input : inputs_) {
        const SourceFacts& facts = input.source().facts();
        if (facts.osName != facts_.osName)
            return Result::failure(
                gen_format(words_OtherSystem, facts.osName.c_str(), first.c_str(), facts_.osName.c_str()),
                input.name());
        if (facts.tracker != facts_.tracker)
            return Result::failure(gen_format(words_OtherObjects, first.c_str()), input.name());
        if (facts.ticksPerSecond == 0 && facts_.ticksPerSecond != 0)
            return Result::failure(words_NoClock, input.name());
    }
    return {};
}

Result MergedSource::LookAhead(const Progress& progress) {
    if (align_ != MergeAlign::Tail) return {};
    std::vector<mt_Time> newest;
    bool isStopped = false;
    const Progress share = [&](double done, double total) {
        const double before = static_cast<double>(newest.size()),
                     all = static_cast<double>(2 * inputs_.size());
        isStopped = progress && !progress(before + (total > 0 ? done / total : 0), all);
        return !isStopped;
    };
    for (MergeInput& input : inputs_) {
        std::optional<mt_Time> time;
        if (share(0, 1)) time = input.LookForNewest(share);
        if (isStopped) return Result::failure("");
        if (!time) return Result::failure(words_NoLook, input.name());
        newest.push_back(time.value_or(0));
    }
    const mt_Time latest = *std::max_element(newest.begin(), newest.end());
    for (size_t i = 0; i < inputs_.size(); ++i) inputs_[i].Shift(newest[i], latest);
    return {};
}

SourceStep MergedSource::next(SourceRecord& record) {
    const SourceRecord* present = nullptr;
    const SourceStep step = Next(present);
    if (step == SourceStep::Record) record = *present;
    return step;
}

// The records ahead of each input's first time.
SourceStep MergedSource::NextOfHeads(const SourceRecord*& record) {
    for (; head_ < inputs_.size(); ++head_) {
        MergeInput& input = inputs_[head_];
        const SourceStep step = input.Step();
        if (step == SourceStep::Pause) return step;
        if (step != SourceStep::Record) continue;
        if (input.place() == 0) {
            record = &input.record();
            return step;
        }
        order_.Set(head_, input.place());
    }
    if (align_ == MergeAlign::Head) AlignHeads();
    phase_ = Phase::InOrder;
    return NextInOrder(record);
}

void MergedSource::AlignHeads() {
    const std::optional<size_t> first = order_.First();
    if (!first) return;
    const mt_Time earliest = inputs_[*first].place();
    for (size_t i = 0; i < inputs_.size(); ++i) {
        if (!order_.IsIn(i)) continue;
        inputs_[i].Shift(inputs_[i].place(), earliest);
        order_.Set(i, earliest);
    }
}

SourceStep MergedSource::NextInOrder(const SourceRecord*& record) {
    if (handedOut_) {
        MergeInput& input = inputs_[at_];
        const SourceStep step = input.Step();
        if (step == SourceStep::Pause) return step;
        handedOut_ = false;
        if (step == SourceStep::Record)
            order_.Set(at_, input.place());
        else
            order_.TakeOut(at_);
    }
    const std::optional<size_t> first = order_.First();
    if (!first) return SourceStep::End;
    at_ = *first;
    handedOut_ = true;
    record = &inputs_[at_].record();
    return SourceStep::Record;
}

SourceExtent MergedSource::extent() const {
    const auto count = static_cast<double>(inputs_.size());
    const double looked = align_ == MergeAlign::Tail ? count : 0;
    SourceExtent all{looked, looked + count};
    for (const MergeInput& input : inputs_) {
        const SourceExtent one = input.source().extent();
        if (one.total > 0) all.done += one.done / one.total;
    }
    return all;
}

void MergedSource::settle() {
    for (const MergeInput& input : inputs_) input.source().settle();
}
