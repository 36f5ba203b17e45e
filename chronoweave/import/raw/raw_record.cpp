#include "chronoweave/import/raw/raw_record.h"

#include "chronoweave/import/raw/raw_words.h"
#include "shared/libcxxutil/report.h"

void RawRecords::drop(size_t length) {
    const bool isLong = length > raw_MaxLength;
    ++(isLong ? counts_.tooLong : counts_.tooShort);
    if (!tells(isLong ? Problem::TooLong : Problem::TooShort)) return;
    if (isLong)
        gen_console(words_TooLong, static_cast<int>(length), static_cast<int>(raw_MaxLength));
    else
        gen_console(words_TooShort, static_cast<int>(length), static_cast<int>(raw_MinLength));
}

void RawRecords::BadByte(uint64_t offset, uint8_t byte) {
    ++counts_.badBytes;
    if (tells(Problem::BadByte)) gen_console(words_BadByte, static_cast<unsigned long long>(offset), byte);
}

void RawRecords::settle() {
    constexpr std::array<const char*, 3> kinds{"bad TRR bytes", "events dropped as too long",
                                               "events dropped as too short"};
    for (size_t kind = 0; kind < seen_.size(); ++kind) {
        if (seen_[kind] > limit)
            gen_console("... and %llu more %s\n", static_cast<unsigned long long>(seen_[kind] - limit),
                        kinds[kind]);
        seen_[kind] = 0;
    }
}
