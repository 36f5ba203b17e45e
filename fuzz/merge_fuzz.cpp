// Two sources merged: a byte that chooses the alignment, two with the first one's length, and their bytes. A
// source is whatever its bytes begin like.
#include <memory>
#include <string>
#include <vector>

#include "chronoweave/import/core/core_file.h"
#include "chronoweave/import/merge/merged_source.h"
#include "chronoweave/import/raw/raw_format.h"
#include "chronoweave/import/raw/raw_writer.h"
#include "fuzz/support.h"

namespace {

bool open_part(std::span<const uint8_t> bytes, MergePart& part) {
    std::vector<uint8_t> held(bytes.begin(), bytes.end());
    if (raw_BeginsLikeCore(bytes)) return CoreSource::open(std::move(held), part.name, part.source).ok();
    return raw_Open(source_FromBytes(std::move(held)), part.name, part.source).ok();
}

// Times never go back, none becomes 0, and every event fits into a stream's record.
void merge_all(MergedSource& merged) {
    RawWriter writer(merged.facts().bigEndian);
    SourceRecord record;
    uint64_t events = 0, expected = 0;
    mt_Time newest = 0;
    for (SourceStep step = SourceStep::Pause; step != SourceStep::End; step = merged.next(record)) {
        if (step != SourceStep::Record) continue;
        ++events;
        fuzz_Check(record.time == 0 || record.time >= newest);
        newest = std::max(newest, record.time);
        fuzz_Check(writer.event(record.time, record.type, record.subtype, record.extra));
        writer.clear();
    }
    merged.settle();
    for (const MergeInput& input : merged.inputs()) expected += input.counts().events;
    fuzz_Check(events == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    if (size < 3) return 0;
    constexpr MergeAlign aligns[] = {MergeAlign::Natural, MergeAlign::Head, MergeAlign::Tail};
    const std::span<const uint8_t> bytes(data + 3, size - 3);
    const size_t first = std::min<size_t>(bytes.size(), data[1] * size_t{256} + data[2]);
    std::vector<MergePart> parts;
    for (const std::span<const uint8_t> part : {bytes.first(first), bytes.subspan(first)}) {
        MergePart opened{"part", nullptr};
        if (open_part(part, opened)) parts.push_back(std::move(opened));
    }
    std::unique_ptr<MergedSource> merged;
    if (parts.empty() || !MergedSource::Make(std::move(parts), aligns[data[0] % 3], merged).ok()) return 0;
    if (merged->LookAhead({}).ok()) merge_all(*merged);
    return 0;
}
