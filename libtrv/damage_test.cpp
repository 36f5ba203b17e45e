// Stores that are damaged: every answer is that of the whole store, or the damage is told.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "libtrv/store_damage_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

// Everything that is asked of a store, as text: one line a question.
using Answers = std::vector<std::string>;

std::string text_of(const EventRecord& event) {
    std::string text = std::to_string(event.sequence) + ' ' + std::to_string(event.time) + ' ' +
                       std::to_string(event.type) + '/' + std::to_string(event.subtype) + ' ';
    for (const auto bytes : {event.extra, event.changes.bytes()}) {
        text.append(bytes.begin(), bytes.end());
        text += '|';
    }
    return text;
}

std::string text_of(const StateTable& state) {
    std::string text;
    for (const uint32_t position : state.sorted()) {
        const ObjectEntry entry = state.entry(position);
        text += std::to_string(entry.objectType) + ':' + std::to_string(entry.objectId) + ' ';
        text.append(entry.block.begin(), entry.block.end());
    }
    return text;
}

std::string walk_text(TraceStore& store, mt_Time t0, mt_Time t1) {
    StateTable state;
    EventWalk walk;
    mt_StartWalkInTimeRange(store, t0, t1, &state, walk);
    std::string text = text_of(state);
    EventRecord event;
    uint32_t first = 0;
    while (mt_NextEvent(walk, event)) {
        if (first == 0) first = event.sequence;
        mt_ApplyEventToState(state, event);
        text += text_of(event);
    }
    if (first > 0) mt_CheckNumbers(store, first - 1, {});
    return text + text_of(state);
}

// One question each, so that damage that one finds does not cover for another: the store is opened anew.
struct Question {
    const char* name;
    std::function<std::string(TraceStore&)> ask;
};

std::vector<Question> questions(std::mt19937& random, mt_Time end, uint32_t events) {
    const mt_Time t0 = random() % end, t1 = t0 + random() % (end / 10 + 2);
    const auto sequence = static_cast<uint32_t>(1 + random() % events);
    return {
        {"facts",
         [](TraceStore& store) {
             mt_CheckStore(store, {});
             const mt_Range range = mt_GetTimeRange(store);
             return std::to_string(mt_GetEventCount(store)) + ' ' + std::to_string(range.first) + ' ' +
                    std::to_string(range.end) + ' ' + std::to_string(mt_GetBlockCount(store)) + ' ' +
                    mt_GetOsName(&store) + std::to_string(mt_GetTicksPerSecond(store)) +
                    (mt_IsBigEndianTarget(store) ? "big" : "little");
         }},
        {"all events", [end](TraceStore& store) { return walk_text(store, 0, end + 1); }},
        {"some events", [t0, t1](TraceStore& store) { return walk_text(store, t0, t1); }},
        {"state", [t0](TraceStore& store) { return walk_text(store, t0, t0); }},
        {"by sequence",
         [sequence](TraceStore& store) {
             EventList list;
             StateTable state;
             mt_GetEventsBySequence(store, sequence, 3, list, state);
             mt_CheckNumbers(store, sequence, {});
             std::string text = text_of(state);
             for (const EventRecord& event : list) text += text_of(event);
             return text;
         }},
        {"objects",
         [t0, t1](TraceStore& store) {
             std::string text;
             for (const auto& [from, to] : {std::pair{t0, t1}, {t1, mt_NoTime}})
                 for (const mt_ObjectKey& key :
                      mt_GetObjectStuffUsedInTimeRange(store, from, to, std::nullopt))
                     text += std::to_string(key.objectType) + ':' + std::to_string(key.objectId) + ' ';
             return text;
         }},
    };
}

TraceStorePtr open_case(const DamagedImage& one, Result& why) {
    const auto device = [](const Bytes& bytes, uint64_t from, uint64_t to) {
        return std::make_unique<FailingDevice>(std::make_shared<Bytes>(bytes), from, to);
    };
    return mt_OpenOnDevices(device(one.image.version, 0, 0),
                            device(one.image.events, one.failFrom, one.failTo),
                            device(one.image.index, one.indexFailFrom, one.indexFailTo), "run", &why);
}

// Asks a damaged store everything. The result is what was answered wrongly with nothing said.
std::string silent_lie(const DamagedImage& one, const StoreImage& whole, const std::vector<Question>& asked) {
    for (const Question& question : asked) {
        Result why;
        const TraceStorePtr store = open_case(one, why);
        if (!store) {
            if (why.ok()) return "refused without a word";
            continue;
        }
        const std::string answer = question.ask(*store);
        if (mt_IsDamaged(*store)) {
            for (const Result& damage : mt_TakeDamage(*store))
                if (damage.where().empty() && damage.what().find("more damage") == std::string::npos)
                    return std::string(question.name) + ": damage with no place: " + damage.text();
            continue;
        }
        if (answer != question.ask(*open_image(whole))) return question.name;
    }
    return {};
}

class Damage : public ::testing::Test {
  protected:
    void SetUp() override {
        gen_set_report_sink([](int, const std::string&) {});
    }
    void TearDown() override { gen_set_report_sink({}); }
};

}  // namespace

// CW_DAMAGE_SEEDS sets which stores are damaged.
TEST_F(Damage, IsNeverPassedOverInSilence) {
    const DamageSeeds seeds(4000);
    constexpr uint32_t intervals[] = {100, 7, 40, 250};
    std::vector<StoreImage> stores;
    for (unsigned which = 0; which < 12; ++which)
        stores.push_back(image_of(tracked(random_events(which, 200 + 150 * which)), intervals[which % 4]));
    for (unsigned seed = seeds.first; seed < seeds.end; ++seed) {
        const StoreImage& whole = stores[seed % stores.size()];
        Damager damager(whole, seed);
        const DamagedImage one = damager.next();
        const TraceStorePtr sound = open_image(whole);
        const auto asked = questions(damager.random(), mt_GetTimeRange(*sound).end, mt_GetEventCount(*sound));
        const std::string lie = silent_lie(one, whole, asked);
        EXPECT_EQ(lie, "") << "seed " << seed << ": " << one.what << " of " << whole.events.size();
    }
}

TEST_F(Damage, FlippedBitsNeitherCrashNorHang) {
    const StoreImage whole = image_of(tracked(random_events(5, 700)), 100);
    std::mt19937 random(1);
    for (unsigned round = 0; round < DamageSeeds(2000).end / 2; ++round) {
        DamagedImage one{whole, "", 0, 0, 0, 0};
        Bytes* files[] = {&one.image.events, &one.image.events, &one.image.index, &one.image.version};
        Bytes& file = *files[random() % 4];
        file[random() % file.size()] ^= static_cast<uint8_t>(1 << random() % 8);
        Result why;
        const TraceStorePtr store = open_case(one, why);
        if (!store) continue;
        for (const Question& question : questions(random, 5000, 700)) question.ask(*store);
    }
}

namespace {
std::string seconds(mt_Time milliseconds) {
    return gen_format("%d.%03d s", static_cast<int>(milliseconds / 1000),
                      static_cast<int>(milliseconds % 1000));
}
}  // namespace

TEST_F(Damage, IsToldWithItsPlaceAndReadingGoesOnBehindIt) {
    const EventList events = tracked(random_events(3, 450));
    const StoreImage whole = image_of(events, 100);
    DamagedImage one{whole, "", 0, 0, 0, 0};
    const auto at = static_cast<ptrdiff_t>(whole.eventEnds[219]);  // of the 221st event
    std::fill_n(one.image.events.begin() + at, 64, uint8_t{0xFF});
    Result why;
    const TraceStorePtr store = open_case(one, why);
    EventWalk walk;
    EventRecord event;
    StateTable state, sound;
    ASSERT_TRUE(mt_StartWalkAtEvent(*store, 1, 0, &state, walk));
    for (size_t i = 0; i < events.size(); ++i) {
        if (i < 220 || i >= 300) {
            ASSERT_TRUE(mt_NextEvent(walk, event));
            ASSERT_EQ(event.sequence, i + 1);
            EXPECT_EQ(text_of(state), text_of(sound)) << "the state is right behind the gap too";
            ASSERT_EQ(walk.gap() != nullptr, i == 300);
            if (i == 300) {
                EXPECT_EQ(walk.gap()->from, events[219].time);
                EXPECT_EQ(walk.gap()->to, events[300].time);
            }
            mt_ApplyEventToState(state, event);
        }
        mt_ApplyEventToState(sound, events[i]);
    }
    EXPECT_FALSE(mt_NextEvent(walk, event));
    EXPECT_EQ(walk.gap(), nullptr);
    EXPECT_EQ(walk.gaps(), 1u);
    EXPECT_EQ(mt_GetEventCount(*store), 450u);
    const std::vector<Result> told = mt_TakeDamage(*store);
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].text(), "run.trs, byte " + std::to_string(at) +
                                  ": a packet of an unknown type: read up to " + seconds(events[219].time) +
                                  "; events from 221 to 300 can't be read, reading goes on at " +
                                  seconds(events[300].time));
    ASSERT_TRUE(mt_StartWalkAtEvent(*store, 201, 5, nullptr, walk));
    while (mt_NextEvent(walk, event)) {
    }
    EXPECT_TRUE(mt_TakeDamage(*store).empty()) << "told once, also when another query meets it";
    EXPECT_TRUE(mt_IsDamaged(*store));
}

namespace {
void expect_told_once(const DamagedImage& one, const std::string& words) {
    Result why;
    std::string told;
    const TraceStorePtr store = open_case(one, why);
    ASSERT_TRUE(store) << words << why.text();
    walk_text(*store, 0, mt_NoTime);
    mt_GetEventCount(*store);
    for (const Result& damage : mt_TakeDamage(*store)) told += damage.text() + '\n';
    EXPECT_NE(told.find(words), std::string::npos) << words << "\n" << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
}
}  // namespace

TEST_F(Damage, EachKindHasItsWords) {
    const StoreImage whole = image_of(tracked(random_events(3, 450)), 100);
    const size_t size = whole.events.size();
    const auto put = [](Bytes& bytes, size_t at, std::initializer_list<int> values) {
        for (const int value : values) bytes[at++] = static_cast<uint8_t>(value);
    };
    const struct {
        std::string words;
        std::function<void(DamagedImage&)> harm;
    } rows[] = {
        {"run.trs, byte " + std::to_string(size - 1) + ": the file ends without an end mark: read up to ",
         [&](DamagedImage& c) { c.image.events.resize(size - 1); }},
        {" s; events from 302 on can't be read",
         [&](DamagedImage& c) { c.image.events.resize(whole.eventEnds[300] + 3); }},
        {": it can't be read: Input/output error; read up to ",
         [&](DamagedImage& c) { c.failFrom = whole.eventEnds[250], c.failTo = c.failFrom + 9; }},
        {" s; events from 252 to 300 can't be read",
         [&](DamagedImage& c) { c.failFrom = whole.eventEnds[250], c.failTo = c.failFrom + 9; }},
        {"run.trs, byte " + std::to_string(whole.eventEnds[448]) + ": an end mark with more events behind it",
         [&](DamagedImage& c) {
             put(c.image.events, whole.eventEnds[448], {0, 0, 0, 0, 0, 0, 0, 0, 9, 99});
         }},
        {"run.trs, byte " + std::to_string(whole.eventEnds[440]) + ": a change of state that can't be",
         [&](DamagedImage& c) {
             put(c.image.events, whole.eventEnds[440] + 9,
                 {0, 0, 0, 0, 0, 4, 0, 7, 0, 0, 0, 0, 0, 4, 0, 1, 0});
         }},
        {"run.tri, byte 59: the index ends without an end mark: 2 blocks were found in the stream instead",
         [](DamagedImage& c) { c.image.index.resize(65); }},
        {"run.tri, byte 20: the index ends without an end mark: 5 blocks",
         [](DamagedImage& c) { c.image.index.resize(20); }},
        {"run.tri, byte 33: the index can't be read: Input/output error; 4 blocks",
         [](DamagedImage& c) { c.indexFailFrom = 40, c.indexFailTo = 41; }},
        {"run.tri, byte 20: records of the index that are out of order",
         [&](DamagedImage& c) {
             put(c.image.index, 42, {0, 0, 0, 1});
         }},
        {"run.tri, byte 33: an end mark of the index with records behind it: 4 blocks",
         [&](DamagedImage& c) { std::fill_n(c.image.index.begin() + 33, 26, uint8_t{0}); }},
        {"run.trv, byte 30: the file ends within what it has to say",
         [](DamagedImage& c) { c.image.version.resize(30); }},
        {": a checkpoint interval of 4294967295 events: taken as 100",
         [&](DamagedImage& c) {
             put(c.image.version, c.image.version.size() - 4, {255, 255, 255, 255});
         }},
        {": a checkpoint interval of 0 events: taken as 100",
         [&](DamagedImage& c) {
             put(c.image.version, c.image.version.size() - 4, {0, 0, 0, 0});
         }},
    };
    for (const auto& row : rows) {
        DamagedImage one{whole, "", 0, 0, 0, 0};
        row.harm(one);
        expect_told_once(one, row.words);
    }
}

// Decided by the writer's order: everything stands behind the mark before the mark turns.
TEST_F(Damage, IsNotWhatAWriterLeavesBehindItsEndMark) {
    const EventList events = tracked(random_events(4, 330));
    const StoreImage more = image_of(events, 100);
    std::mt19937 random(2);
    const auto append = [&random](Bytes& bytes, const Bytes& from) {
        const auto mark = static_cast<ptrdiff_t>(bytes.size()),
                   rest = static_cast<ptrdiff_t>(from.size()) - mark;
        const auto size = static_cast<ptrdiff_t>(random() % static_cast<size_t>(rest + 1));
        bytes.insert(bytes.end(), from.begin() + mark, from.begin() + mark + size);
    };
    for (const size_t count : {299u, 300u, 301u, 329u}) {
        ImageBuilder builder(100, more.version);
        for (size_t i = 0; i < count; ++i) builder.add(events[i]);
        const StoreImage whole = builder.finish();
        for (int round = 0; round < 60; ++round) {
            StoreImage store = whole;
            if (round % 2 == 0) append(store.events, more.events);
            if (round % 4 == 0) append(store.index, more.index);
            for (size_t left = round % 2 == 1 ? random() % 300 : 0; left > 0; --left) {
                store.events.push_back(static_cast<uint8_t>(random()));
                store.index.push_back(static_cast<uint8_t>(random()));
            }
            const TraceStorePtr open = open_image(store);
            EXPECT_EQ(mt_GetEventCount(*open), count);
            mt_CheckStore(*open, {});
            for (const Result& damage : mt_TakeDamage(*open)) ADD_FAILURE() << count << ' ' << damage.text();
        }
    }
}

TEST_F(Damage, AStreamThatIsCutWhileItIsOpenIsTold) {
    const StoreImage whole = image_of(tracked(random_events(6, 450)), 100);
    const auto stream = std::make_shared<Bytes>(whole.events);
    const auto device = [](const Bytes& bytes) {
        return std::make_unique<MemoryDevice>(std::make_shared<Bytes>(bytes));
    };
    const TraceStorePtr store = mt_OpenOnDevices(
        device(whole.version), std::make_unique<MemoryDevice>(stream), device(whole.index), "run");
    ASSERT_EQ(mt_GetEventCount(*store), 450u);
    stream->resize(whole.eventEnds[249]);
    EventWalk walk;
    EventRecord event;
    uint32_t last = 0;
    ASSERT_TRUE(mt_StartWalkAtEvent(*store, 1, 0, nullptr, walk));
    while (mt_NextEvent(walk, event)) last = event.sequence;
    EXPECT_EQ(last, 250u);
    ASSERT_TRUE(walk.gap());
    EXPECT_EQ(walk.gap()->to, mt_NoTime);
    EXPECT_EQ(mt_GetEventCount(*store), 250u);
    EXPECT_EQ(mt_TakeDamage(*store).size(), 1u);
}
