// What the tests of merging share: made-up sources with all that a source can have, as bytes and as what they
// say, and the rules of merging in their plainest form.
#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "chronoweave/import/import_testing.h"
#include "chronoweave/import/merge/merged_source.h"
#include "chronoweave/import/raw/raw_format.h"

struct TestEvent {
    uint64_t time = 0;
    uint32_t type = 0, subtype = 0;
    Bytes extra;
    bool operator==(const TestEvent&) const = default;
};

struct TestSource {
    bool big = false;
    uint64_t rate = 1000;
    std::vector<TestEvent> events;  // what can be read of it
    Bytes bytes;
};

using Random = std::mt19937_64;
inline uint64_t below(Random& random, uint64_t n) {
    return random() % n;
}

inline TestEvent random_event(Random& random, uint64_t time, bool big) {
    TestEvent event{
        time, static_cast<uint32_t>(1 + below(random, 8)), static_cast<uint32_t>(below(random, 9)), {}};
    put32(event.extra, static_cast<uint32_t>(below(random, 5)) << 10 | 1, big);
    const size_t more = below(random, 3) == 0 ? below(random, 67) : 4 * below(random, 3);
    for (size_t i = 0; i < more; ++i) event.extra.push_back(static_cast<uint8_t>(below(random, 256)));
    return event;
}

// Times that mostly go on, stay in part, go back at times, and are none at times.
inline uint64_t random_time(Random& random, uint64_t& clock) {
    switch (below(random, 8)) {
        case 0:
            return 0;
        case 1:
            return 1 + below(random, clock + 1);
        case 2:
        case 3:
            return clock == 0 ? clock = 5 : clock;
        default:
            return clock += 1 + below(random, 20);
    }
}

// Junk, records that are too short, and a record that the end cuts.
inline void put_damage(Random& random, Bytes& bytes) {
    if (below(random, 2) == 0)
        bytes.push_back(below(random, 2) == 0 ? uint8_t{0} : static_cast<uint8_t>(0x53 + below(random, 100)));
    else
        put_record(bytes, Bytes(1 + below(random, 15), 7));
}

inline TestSource random_source(Random& random) {
    constexpr uint64_t rates[] = {1000, 1000, 300, 1'000'000, 999'999'937};
    TestSource source;
    source.big = below(random, 2) == 0;
    source.rate = rates[below(random, 5)];
    const bool isLong = below(random, 2) == 0;
    const auto rate = static_cast<uint32_t>(source.rate);
    source.bytes = isLong ? long_header(source.big, 3, 0, 1, rate) : short_header(source.big, 1, 3, rate);
    uint64_t clock = below(random, 3) == 0 ? 0 : below(random, 100);
    const bool isDamaged = below(random, 4) == 0;
    for (uint64_t left = below(random, 12); left > 0; --left) {
        if (isDamaged && below(random, 4) == 0) put_damage(random, source.bytes);
        const TestEvent event = random_event(random, random_time(random, clock), source.big);
        source.events.push_back(event);
        put_record(source.bytes, raw_EncodeEvent(source.big, event.time, static_cast<uint16_t>(event.type),
                                                 static_cast<uint16_t>(event.subtype), event.extra));
    }
    if (isDamaged) append(source.bytes, {40, 1, 2, 3});
    return source;
}

// The words that are known by an event's type, turned.
inline void model_turn(TestEvent& event) {
    const size_t words = event.type == 5 || event.type == 6 ? 2 : 1;
    for (size_t i = 0; i < words && 4 * i + 4 <= event.extra.size(); ++i)
        std::reverse(event.extra.begin() + static_cast<ptrdiff_t>(4 * i),
                     event.extra.begin() + static_cast<ptrdiff_t>(4 * i + 4));
}

// An event with where it belongs; place 0 is ahead of all times.
struct ModelEvent {
    uint64_t place = 0;
    TestEvent event;
};
inline std::vector<ModelEvent> model_places(const TestSource& source, uint64_t rate, bool big) {
    std::vector<ModelEvent> placed;
    uint64_t newest = 0;
    for (TestEvent event : source.events) {
        const uint64_t whole = event.time / source.rate, rest = event.time % source.rate;
        newest = std::max(newest, whole * rate + rest * rate / source.rate);
        if (source.big != big) model_turn(event);
        placed.push_back({newest, event});
    }
    return placed;
}

// All events in order, by a sort.
inline std::vector<TestEvent> model_merge(const std::vector<TestSource>& sources, MergeAlign align) {
    uint64_t rate = 0;
    for (const TestSource& source : sources) rate = std::max(rate, source.rate);
    std::vector<std::vector<ModelEvent>> all;
    uint64_t earliest = UINT64_MAX, latest = 0;
    const auto firstOf = [](const std::vector<ModelEvent>& events) {
        for (const ModelEvent& event : events)
            if (event.place != 0) return event.place;
        return uint64_t{0};
    };
    for (const TestSource& source : sources) {
        all.push_back(model_places(source, rate, sources.front().big));
        if (all.back().empty() || all.back().back().place == 0) continue;
        earliest = std::min(earliest, firstOf(all.back()));
        latest = std::max(latest, all.back().back().place);
    }
    std::vector<ModelEvent> merged;
    for (const std::vector<ModelEvent>& events : all) {
        uint64_t shift = 0;  // may wrap, as sums do
        if (align == MergeAlign::Head) shift = earliest - firstOf(events);
        if (align == MergeAlign::Tail && !events.empty()) shift = latest - events.back().place;
        for (ModelEvent event : events) {
            if (event.place != 0) event.place += shift;
            if (event.event.time != 0) event.event.time = event.place;
            merged.push_back(event);
        }
    }
    std::stable_sort(merged.begin(), merged.end(),
                     [](const ModelEvent& a, const ModelEvent& b) { return a.place < b.place; });
    std::vector<TestEvent> events;
    for (const ModelEvent& event : merged) events.push_back(event.event);
    return events;
}

inline TestEvent test_event(const SourceRecord& record) {
    return {record.time, record.type, record.subtype, {record.extra.begin(), record.extra.end()}};
}
