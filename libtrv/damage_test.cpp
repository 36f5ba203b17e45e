// Stores that are damaged: every answer is that of the whole store, or the damage is told.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "libtrv/store_image_testing.h"
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

// A store with what is done to it.
struct Case {
    StoreImage image;
    std::string what;
    uint64_t failFrom = 0, failTo = 0;  // bytes of the stream that can't be read
    uint64_t indexFailFrom = 0, indexFailTo = 0;
};

TraceStorePtr open_case(const Case& one, std::string& why) {
    const auto device = [](const Bytes& bytes, uint64_t from, uint64_t to) {
        return std::make_unique<FailingDevice>(std::make_shared<Bytes>(bytes), from, to);
    };
    return mt_OpenOnDevices(device(one.image.version, 0, 0),
                            device(one.image.events, one.failFrom, one.failTo),
                            device(one.image.index, one.indexFailFrom, one.indexFailTo), "run", &why);
}

class Damager {
  public:
    Damager(const StoreImage& whole, unsigned seed) : whole_(whole), random_(seed) {}

    Case next() {
        Case one{whole_, "", 0, 0, 0, 0};
        switch (random_() % 10) {
            case 0:
                cut(one, one.image.events, "stream");
                break;
            case 1:
                cut(one, one.image.index, "index");
                break;
            case 2:
                cut(one, one.image.version, "version");
                break;
            case 3:
            case 4:
            case 5:
                overwrite(one, one.image.events, "stream");
                break;
            case 6:
                overwrite(one, one.image.index, "index");
                break;
            case 7:
            case 8:
                disagree(one);
                break;
            default:
                fail(one);
        }
        return one;
    }
    std::mt19937& random() { return random_; }

  private:
    size_t below(size_t n) { return random_() % std::max<size_t>(n, 1); }

    void cut(Case& one, Bytes& bytes, const char* name) {
        const size_t size = below(bytes.size());
        bytes.resize(size);
        one.what = std::string(name) + " cut at " + std::to_string(size);
    }
    // 64 bytes and more: noise, zeros, ones, or bytes of another place.
    void overwrite(Case& one, Bytes& bytes, const char* name) {
        const size_t size = std::min(bytes.size(), 64 + below(below(3) == 0 ? 3000 : 200));
        const size_t at = below(bytes.size() - size + 1), from = below(bytes.size() - size + 1);
        const Bytes other(bytes.begin() + static_cast<ptrdiff_t>(from),
                          bytes.begin() + static_cast<ptrdiff_t>(from + size));
        const size_t kind = below(4);
        for (size_t i = 0; i < size; ++i)
            bytes[at + i] = kind == 0   ? 0
                            : kind == 1 ? 0xFF
                            : kind == 2 ? other[i]
                                        : static_cast<uint8_t>(random_());
        one.what = std::string(name) + " overwritten at " + std::to_string(at) + ", " + std::to_string(size) +
                   " bytes, kind " + std::to_string(kind);
    }
    // One record of the index is another one, is missing, stands twice, or two have changed places.
    void disagree(Case& one) {
        Bytes& index = one.image.index;
        const size_t records = (index.size() - 21) / 13;
        const size_t number = below(records), kind = below(5);
        const auto place = [&](size_t record) {
            return index.begin() + static_cast<ptrdiff_t>(20 + 13 * record);
        };
        const Bytes record(place(number), place(number + 1));
        if (kind == 0)
            index.erase(place(number), place(number + 1));
        else if (kind == 1)
            index.insert(place(number), record.begin(), record.end());
        else if (kind == 2 && number + 1 < records)
            std::swap_ranges(place(number), place(number + 1), place(number + 1));
        else
            for (int i = 0; i < 4; ++i)  // of the time's low half, or of the offset
                *(place(number) + (kind == 3 ? 5 : 9) + i) = static_cast<uint8_t>(i < 2 ? 0 : random_());
        one.what = "index disagrees, record " + std::to_string(number) + ", kind " + std::to_string(kind);
    }
    void fail(Case& one) {
        const bool index = below(4) == 0;
        const uint64_t size = index ? one.image.index.size() : one.image.events.size();
        const uint64_t from = below(size), to = from + 1 + below(5000);
        (index ? one.indexFailFrom : one.failFrom) = from;
        (index ? one.indexFailTo : one.failTo) = to;
        one.what = std::string(index ? "index" : "stream") + " fails from " + std::to_string(from) + " to " +
                   std::to_string(to);
    }

    const StoreImage& whole_;
    std::mt19937 random_;
};

// Asks a damaged store everything. The result is what was answered wrongly with nothing said.
std::string silent_lie(const Case& one, const StoreImage& whole, const std::vector<Question>& asked) {
    for (const Question& question : asked) {
        std::string why;
        const TraceStorePtr store = open_case(one, why);
        if (!store) {
            if (why.empty()) return "refused without a word";
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

unsigned seeds(unsigned otherwise) {
    const char* wanted = std::getenv("CW_DAMAGE_SEEDS");
    return wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : otherwise;
}

class Damage : public ::testing::Test {
  protected:
    void SetUp() override {
        gen_set_report_sink([](int, const std::string&) {});
    }
    void TearDown() override { gen_set_report_sink({}); }
};

}  // namespace

// CW_DAMAGE_SEEDS sets how many stores are damaged.
TEST_F(Damage, IsNeverPassedOverInSilence) {
    const unsigned count = seeds(2000);
    constexpr uint32_t intervals[] = {100, 7, 40, 250};
    std::vector<StoreImage> stores;
    for (unsigned which = 0; which < 12; ++which)
        stores.push_back(image_of(tracked(random_events(which, 200 + 150 * which)), intervals[which % 4]));
    for (unsigned seed = 0; seed < count; ++seed) {
        const StoreImage& whole = stores[seed % stores.size()];
        Damager damager(whole, seed);
        const Case one = damager.next();
        const TraceStorePtr sound = open_image(whole);
        const auto asked = questions(damager.random(), mt_GetTimeRange(*sound).end, mt_GetEventCount(*sound));
        const std::string lie = silent_lie(one, whole, asked);
        EXPECT_EQ(lie, "") << "seed " << seed << ": " << one.what << " of " << whole.events.size();
    }
}

TEST_F(Damage, FlippedBitsNeitherCrashNorHang) {
    const StoreImage whole = image_of(tracked(random_events(5, 700)), 100);
    std::mt19937 random(1);
    for (unsigned round = 0; round < seeds(2000) / 2; ++round) {
        Case one{whole, "", 0, 0, 0, 0};
        Bytes* files[] = {&one.image.events, &one.image.events, &one.image.index, &one.image.version};
        Bytes& file = *files[random() % 4];
        file[random() % file.size()] ^= static_cast<uint8_t>(1 << random() % 8);
        std::string why;
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
    Case one{whole, "", 0, 0, 0, 0};
    const auto at = static_cast<ptrdiff_t>(whole.eventEnds[219]);  // of the 221st event
    std::fill_n(one.image.events.begin() + at, 64, uint8_t{0xFF});
    std::string why;
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

TEST_F(Damage, EachKindHasItsWords) {
    const StoreImage whole = image_of(tracked(random_events(3, 450)), 100);
    const size_t size = whole.events.size();
    const auto put = [](Bytes& bytes, size_t at, std::initializer_list<int> values) {
        for (const int value : values) bytes[at++] = static_cast<uint8_t>(value);
    };
    const struct {
        std::string words;
        std::function<void(Case&)> harm;
    } rows[] = {
        {"run.trs, byte " + std::to_string(size - 1) + ": the file ends without an end mark: read up to ",
         [&](Case& c) { c.image.events.resize(size - 1); }},
        {" s; events from 302 on can't be read",
         [&](Case& c) { c.image.events.resize(whole.eventEnds[300] + 3); }},
        {": it can't be read: Input/output error; read up to ",
         [&](Case& c) { c.failFrom = whole.eventEnds[250], c.failTo = c.failFrom + 9; }},
        {" s; events from 252 to 300 can't be read",
         [&](Case& c) { c.failFrom = whole.eventEnds[250], c.failTo = c.failFrom + 9; }},
        {"run.tri, byte 59: the index ends without an end mark: 2 blocks were found in the stream instead",
         [](Case& c) { c.image.index.resize(65); }},
        {"run.tri, byte 20: the index ends without an end mark: 5 blocks",
         [](Case& c) { c.image.index.resize(20); }},
        {"run.tri, byte 33: the index can't be read: Input/output error; 4 blocks",
         [](Case& c) { c.indexFailFrom = 40, c.indexFailTo = 41; }},
        {"run.tri, byte 20: records of the index that are out of order",
         [&](Case& c) {
             put(c.image.index, 42, {0, 0, 0, 1});
         }},
        {"run.tri, byte 33: an end mark of the index with records behind it: 4 blocks",
         [&](Case& c) { std::fill_n(c.image.index.begin() + 33, 26, uint8_t{0}); }},
        {"run.trv, byte 30: the file ends within what it has to say",
         [](Case& c) { c.image.version.resize(30); }},
        {": a checkpoint interval of 4294967295 events: taken as 100",
         [&](Case& c) {
             put(c.image.version, c.image.version.size() - 4, {255, 255, 255, 255});
         }},
        {": a checkpoint interval of 0 events: taken as 100",
         [&](Case& c) {
             put(c.image.version, c.image.version.size() - 4, {0, 0, 0, 0});
         }},
    };
    for (const auto& row : rows) {
        Case one{whole, "", 0, 0, 0, 0};
        row.harm(one);
        std::string why, told;
        const TraceStorePtr store = open_case(one, why);
        ASSERT_TRUE(store) << row.words << why;
        walk_text(*store, 0, mt_NoTime);
        mt_GetEventCount(*store);
        for (const Result& damage : mt_TakeDamage(*store)) told += damage.text() + '\n';
        EXPECT_NE(told.find(row.words), std::string::npos) << row.words << "\n" << told;
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
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
