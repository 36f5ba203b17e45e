#include "libtrv/damage.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"

namespace {
constexpr size_t most_findings = 1000;
}

void DamageList::note(mt_DamageKind kind, uint32_t first, uint32_t end, Result failure) {
    for (uint32_t block = first; block < end;) {
        const auto covering = std::find_if(found_.begin(), found_.end(), [&](const Finding& one) {
            return one.kind == kind && one.first <= block && block < one.end;
        });
        if (covering == found_.end()) return add({kind, first, end, std::move(failure)});
        block = covering->end;
    }
}

void DamageList::add(Finding finding) {
    if (found_.size() < most_findings)
        found_.push_back(std::move(finding));
    else if (found_.size() == most_findings)
        found_.push_back({finding.kind, 0, 0, Result::failure("there is more damage than is told here")});
}

std::vector<Result> DamageList::take() {
    std::vector<Result> fresh;
    for (; taken_ < found_.size(); ++taken_) fresh.push_back(found_[taken_].failure);
    return fresh;
}

std::string mt_PlaceText(const std::string& file, uint64_t offset) {
    return file + gen_format(", byte %llu", static_cast<unsigned long long>(offset));
}
