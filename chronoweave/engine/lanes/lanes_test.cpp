// The lane index against the store that it was made of.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>

#include "chronoweave/engine/lanes/lane_build.h"
#include "chronoweave/engine/lanes/lane_merge.h"
#include "chronoweave/engine/lanes/lane_table.h"
#include "chronoweave/engine/lanes/lane_walk.h"
#include "chronoweave/engine/lanes/lanes_testing.h"
#include "chronoweave/engine/lanes/packed_column.h"
#include "libtrv/trace_store.h"

namespace {

Bytes file_bytes(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
void write_file(const std::string& name, const Bytes& bytes) {
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

using Statuses = std::map<uint32_t, uint32_t>;  // by object
Statuses statuses_of(const StateTable& state) {
    Statuses statuses;
    for (uint32_t position = 0; position < state.size(); ++position) {
        const bool valid = mt_TaskStatusAt(state, position).has_value();
        statuses[state.IdAt(position)] = load_be16(state.BlockAt(position)) | (valid ? 0 : lane_NotValid);
    }
    return statuses;
}

// What an event did to objects: the states that it left otherwise than it found them, and lane_Absent for one
// that it made and took away.
Statuses statuses_left(StateTable& state, const EventRecord& event) {
    Statuses before = statuses_of(state), left;
    mt_ApplyEventToState(state, event);
    Statuses after = statuses_of(state);
    for (const auto& [object, status] : before) after.try_emplace(object, lane_Absent);
    for (const auto& [object, status] : after)
        if (before.try_emplace(object, lane_Absent).first->second != status) left[object] = status;
    StateChange change;
    for (ChangeList list = event.changes; list.next(change);)
        if (change.kind == mt_ChangeCreate && !before.contains(change.objectId) &&
            !after.contains(change.objectId))
            left[change.objectId] = lane_Absent;
    return left;
}

// A store with its index, and the store's events as a plain list.
class LanesTest : public ::testing::Test {
  protected:
    void open(const std::vector<TestEvent>& events, uint32_t block = lanes_TestBlock) {
        index_.reset();
        lanes_WriteStore(base_, events, block);
        store_ = mt_OpenForRead(base_);
        ASSERT_TRUE(store_);
        list_.clear();
        mt_GetEventsBySequence(*store_, 0, 0, list_, none_);
        OpenIndex();
    }
    void OpenIndex() {
        index_ = LaneIndex::Open(*store_, why_);
        ASSERT_TRUE(index_) << why_.text();
    }
    uint32_t below(uint32_t n) { return static_cast<uint32_t>(random_() % n); }
    uint32_t ObjectOf(const EventRecord& event) const { return load_be32(event.extra.data()); }

    // What a walk gives must be what the list has, with the statuses that it had.
    void ExpectWalk(uint32_t first, uint32_t end, const LaneWants& wants, bool every) {
        StateTable made, state;
        EventList ahead;
        LaneWalk walk(*index_, true, first, end, wants, &made);
        for (uint32_t i = 1; i < first; ++i) mt_ApplyEventToState(state, list_[i - 1]);
        if (first < index_->EndEvent()) {
            ASSERT_EQ(statuses_of(made), statuses_of(state));
        }
        EventRecord given;
        for (uint32_t i = first; i < end; ++i) {
            const EventRecord& event = list_[i - 1];
            const bool left = !statuses_left(state, event).empty();
            const bool changed = wants.changes == LaneWants::Changes::Given && left;
            const bool kind = wants.kind && wants.kind(event.type, event.subtype) &&
                              (!wants.object || wants.object(ObjectOf(event)));
            if (!every && !changed && !kind) continue;
            ASSERT_TRUE(walk.next(given, every ? LaneWalk::Stop::Every : LaneWalk::Stop::Wanted));
            ASSERT_EQ(given.sequence, i);
            ASSERT_EQ(given.time, event.time);
            if (wants.kind) {
                ASSERT_EQ(lane_Kind(given.type, given.subtype), lane_Kind(event.type, event.subtype));
                ASSERT_EQ(ObjectOf(given), ObjectOf(event));
            }
            mt_ApplyEventToState(made, given);
            if (wants.changes == LaneWants::Changes::Given) {
                ASSERT_EQ(statuses_of(made), statuses_of(state));
            }
        }
        ASSERT_FALSE(walk.next(given, LaneWalk::Stop::Wanted));
        ASSERT_EQ(walk.position(), std::max(first, end));
    }

    TestFolder folder_;
    std::string base_ = folder_ / "store";
    TraceStorePtr store_;
    std::unique_ptr<LaneIndex> index_;
    EventList list_;
    StateTable none_;
    Result why_;
    std::mt19937 random_{7};
};

TEST(PackedColumns, GiveBackWhatWasPut) {
    std::mt19937_64 random(3);
    for (const size_t count : {0u, 1u, 2u, 63u, 64u, 65u, 1000u})
        for (const unsigned width : {0u, 1u, 7u, 8u, 31u, 32u, 57u, 63u}) {
            std::vector<uint64_t> rising;
            std::vector<uint32_t> flat;
            for (size_t i = 0; i < count; ++i) {
                rising.push_back(width == 0 ? 0 : random() >> (64 - width));
                flat.push_back(static_cast<uint32_t>(rising.back()));
            }
            std::sort(rising.begin(), rising.end());
            ByteBuffer bytes;
            column_PutRising(bytes, rising);
            column_PutFlat(bytes, flat);
            const size_t size = bytes.size();
            bytes.put(Bytes(column_Slack, 0xff));
            ColumnReader reader({bytes.data(), size});
            std::vector<uint64_t> risen;
            std::vector<uint32_t> flatter;
            reader.Rising(count, rising.empty() ? 0 : rising.back(), risen);
            reader.Flat(count, uint64_t{1} << 32, flatter);
            EXPECT_TRUE(reader.AtEnd()) << count << ' ' << width;
            EXPECT_EQ(risen, rising);
            EXPECT_EQ(flatter, flat);
        }
}

TEST_F(LanesTest, WalksGiveTheEventsAndStatusesOfTheStore) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        open(random_events(seed, 40 + below(700)), seed % 3 == 0 ? 1 + below(40) : lanes_TestBlock);
        const auto count = static_cast<uint32_t>(list_.size());
        ASSERT_EQ(index_->EndEvent(), count + 1);
        for (int turn = 0; turn < 12; ++turn) {
            const uint32_t first = 1 + below(count), end = first + below(count + 2 - first);
            const uint32_t type = below(9), object = below(20) << 10;
            LaneWants wants;
            if (turn % 2 == 0) wants.changes = LaneWants::Changes::Given;
            if (turn % 3 != 0)
                wants.kind = [type](uint16_t of, uint16_t sub) { return of == type || sub == type; };
            if (turn % 4 == 0) wants.object = [object](uint32_t of) { return (of & ~0x3FFu) == object; };
            ExpectWalk(first, end, wants, turn % 5 == 4);
        }
    }
}

TEST_F(LanesTest, CountsAndPositionsAreThoseOfTheStore) {
    open(random_events(5, 900));
    const auto events = static_cast<uint32_t>(list_.size());
    for (int turn = 0; turn < 60; ++turn) {
        const uint32_t first = 1 + below(events), end = first + below(events + 2 - first);
        std::map<std::pair<uint32_t, uint32_t>, uint64_t> wanted, counted;
        for (uint32_t i = first; i < end; ++i)
            ++wanted[{ObjectOf(list_[i - 1]), lane_Kind(list_[i - 1].type, list_[i - 1].subtype)}];
        ASSERT_TRUE(index_->Count(first, end, [&](uint32_t object, uint32_t kind, uint64_t count) {
            counted[{object, kind}] += count;
        }));
        EXPECT_EQ(counted, wanted);
        EXPECT_EQ(index_->TickOf(first), list_[first - 1].time);
        const mt_Time tick = below(static_cast<uint32_t>(list_[events - 1].time) + 3);
        uint32_t from = 1;
        while (from <= events && list_[from - 1].time < tick) ++from;
        EXPECT_EQ(index_->FirstFrom(tick), from);
    }
    EXPECT_EQ(index_->FirstFrom(UINT64_MAX), 1u);  // ticks are signed
}

TEST_F(LanesTest, IndexMadeLaterIsTheOneOfTheImport) {
    open(random_events(9, 500));
    const std::string name = index_->name();
    const Bytes imported = file_bytes(name);
    std::filesystem::remove(name);
    LaneBuild build(*store_, nullptr, lanes_TestBlock);
    double share = 0;
    while (build.Step(37)) {
        EXPECT_GE(build.Share(), share);
        EXPECT_FALSE(std::filesystem::exists(name));
        share = build.Share();
    }
    EXPECT_TRUE(build.Made()) << build.trouble().text();
    EXPECT_EQ(file_bytes(name), imported);
}

TEST_F(LanesTest, IndexOfAShorterStoreIsTakenOnFromWhereItEnds) {
    const auto events = random_events(4, 500);
    open({events.begin(), events.begin() + 207});
    const Bytes part = file_bytes(index_->name());
    open(events);
    const Bytes whole = file_bytes(index_->name());
    write_file(index_->name(), part);
    OpenIndex();
    EXPECT_EQ(index_->EndEvent(), 208u);
    LaneBuild build(*store_, index_.get(), lanes_TestBlock);
    while (build.Step(100)) {
    }
    EXPECT_TRUE(build.Made());
    EXPECT_EQ(file_bytes(index_->name()), whole);
}

TEST_F(LanesTest, IndexIsNeverAheadOfTheStore) {
    const auto events = random_events(2, 400);
    auto writer = StoreWriter::OpenForWrite(base_, 1000, "korvantis", true, lanes_TestTracker);
    LaneFeed feed(base_, true, lanes_TestBlock);
    writer->SetObserver(&feed);
    writer->SetGrouping(3000);
    uint32_t most = 0;
    for (size_t i = 0; i < events.size(); ++i) {
        ASSERT_TRUE(
            writer->AppendEvent(events[i].time, events[i].type, events[i].subtype, events[i].extra).ok());
        if (i % 7 != 0) continue;
        store_ = mt_OpenForRead(base_);
        ASSERT_TRUE(store_);
        OpenIndex();
        EXPECT_LE(index_->EndEvent(), mt_GetEventCount(*store_) + 1);
        most = std::max(most, index_->EndEvent());
    }
    EXPECT_GT(most, 100u);
    // A reader of the first blocks takes in the others as they come.
    ASSERT_TRUE(writer->Close().ok());
    feed.Finish();
    mt_RefreshIndex(*store_);
    index_->Refresh(*store_);
    EXPECT_EQ(index_->EndEvent(), events.size() + 1);
}

TEST_F(LanesTest, IndexGoesWithTheEventsThatTheStoreRefuses) {
    auto bytes = std::make_shared<Bytes>();
    auto device = std::make_unique<MemoryDevice>(bytes, 6000);
    auto writer =
        StoreWriter::OnDevices(std::move(device), std::make_unique<MemoryDevice>(std::make_shared<Bytes>()),
                               {1000, "korvantis", true}, TaskTracker);
    LaneFeed feed(base_, true, lanes_TestBlock);
    writer->SetObserver(&feed);
    writer->SetGrouping(1000);
    for (const TestEvent& event : random_events(2, 400))
        if (!writer->AppendEvent(event.time, event.type, event.subtype, event.extra).ok()) break;
    EXPECT_GT(writer->EventsRefused(), 0u);
    static_cast<void>(writer->Close());
    feed.Finish();
    EXPECT_FALSE(std::filesystem::exists(lane_NameBeside(base_)));
}

TEST_F(LanesTest, IndexOfAnotherStoreIsNotTaken) {
    open(random_events(1, 300));
    const Bytes other = file_bytes(index_->name());
    auto events = random_events(1, 300);
    for (const auto change :
         {+[](std::vector<TestEvent>& of) { of.resize(200); },
          +[](std::vector<TestEvent>& of) { of.front().time = of.front().time > 0 ? 0 : 1; },
          +[](std::vector<TestEvent>& of) { of.back().subtype ^= 1; }}) {
        auto changed = events;
        change(changed);
        std::sort(changed.begin(), changed.end(), [](auto& a, auto& b) { return a.time < b.time; });
        lanes_WriteStore(base_, changed, 0);
        store_ = mt_OpenForRead(base_);
        write_file(lane_NameBeside(base_), other);
        EXPECT_FALSE(LaneIndex::Open(*store_, why_));
        EXPECT_EQ(why_.what(), "the lane index is that of another store");
    }
    std::filesystem::remove(lane_NameBeside(base_));
    EXPECT_FALSE(LaneIndex::Open(*store_, why_));
    EXPECT_TRUE(why_.ok());
}

// Every byte of an index wrong in turn, and the file cut there: it is not opened, or nothing wrong comes of
// it.
TEST_F(LanesTest, DamageIsFound) {
    open(random_events(6, 60));
    const Bytes good = file_bytes(index_->name());
    const auto all = [&](LaneIndex& index) {
        std::vector<uint64_t> seen;
        LaneWants wants;
        wants.changes = LaneWants::Changes::Given;
        wants.kind = [](uint16_t, uint16_t) { return true; };
        LaneWalk walk(index, true, 1, index.EndEvent(), wants, nullptr);
        EventRecord event;
        while (walk.next(event, LaneWalk::Stop::Wanted)) {
            seen.insert(seen.end(), {event.time, event.type, event.subtype, ObjectOf(event)});
            StateChange change;
            for (ChangeList list = event.changes; list.next(change);) seen.push_back(change.objectId);
        }
        return std::pair(seen, walk.position());
    };
    const auto wanted = all(*index_).first;
    for (size_t at = 0; at < good.size(); ++at)
        for (const bool cut : {false, true}) {
            auto bytes = std::make_shared<Bytes>(good);
            if (cut)
                bytes->resize(at);
            else
                (*bytes)[at] ^= 0x11;
            std::unique_ptr<LaneIndex> index;
            if (!LaneIndex::OfBytes(*bytes, index).ok()) continue;
            const auto [seen, position] = all(*index);
            ASSERT_TRUE(std::equal(seen.begin(), seen.end(), wanted.begin())) << at;
            EXPECT_TRUE(position == index->EndEvent() || !index->damage().ok());
        }
}

TEST_F(LanesTest, StoresThatCantBeIndexedHaveNoIndex) {
    const struct {
        const char* what;
        TestEvent event;
    } cases[] = {{"time goes back", user(3, 0x401, 1)},
                 {"no object", {20, mt_Interrupt, 0, Bytes(2)}},
                 {"a time behind 2^63", user(uint64_t{1} << 63, 0x401, 1)}};
    for (const auto& c : cases) {
        const auto plain = [](StoreWriter&, const mt_WriteRecord&) { return true; };
        auto writer = StoreWriter::OpenForWrite(base_, 1000, "korvantis", true, plain);
        LaneFeed feed(base_, true, 2);
        writer->SetObserver(&feed);
        for (const TestEvent& event : {user(10, 0x401, 1), user(11, 0x401, 1), c.event})
            EXPECT_TRUE(writer->AppendEvent(event.time, event.type, event.subtype, event.extra).ok());
        EXPECT_TRUE(writer->Close().ok());
        feed.Finish();
        EXPECT_FALSE(std::filesystem::exists(lane_NameBeside(base_))) << c.what;
        store_ = mt_OpenForRead(base_);
        LaneBuild build(*store_, nullptr, 2);
        while (build.Step(1)) {
        }
        EXPECT_FALSE(build.Made()) << c.what;
        EXPECT_TRUE(build.trouble().ok()) << build.trouble().text();
    }
}

// What a lane gives by number, tick and sequence is what the events did to its object, one after the other.
struct PlainLane {
    std::vector<LaneStatus> statuses;
    std::vector<LaneEvent> events;
};
std::map<uint32_t, PlainLane> lanes_of(const EventList& list) {
    std::map<uint32_t, PlainLane> lanes;
    StateTable state;
    for (const EventRecord& event : list) {
        for (const auto& [object, status] : statuses_left(state, event))
            lanes[object].statuses.push_back({event.time, status, event.sequence});
        lanes[load_be32(event.extra.data())].events.push_back(
            {event.time, lane_Kind(event.type, event.subtype), event.sequence});
    }
    return lanes;
}

template <class Entry>
uint32_t count_ahead(const std::vector<Entry>& entries, mt_Time tick) {
    return static_cast<uint32_t>(
        std::count_if(entries.begin(), entries.end(), [tick](const Entry& e) { return e.tick < tick; }));
}
template <class Entry>
uint32_t count_before(const std::vector<Entry>& entries, uint32_t sequence) {
    return static_cast<uint32_t>(std::count_if(entries.begin(), entries.end(),
                                               [sequence](const Entry& e) { return e.sequence < sequence; }));
}

class LaneTableTest : public LanesTest {
  protected:
    void ExpectLane(LaneReader reader, const PlainLane& plain) {
        ASSERT_EQ(reader.StatusCount(), plain.statuses.size());
        ASSERT_EQ(reader.EventCount(), plain.events.size());
        for (uint32_t n = 0; n < reader.StatusCount(); ++n) ExpectStatus(reader, plain, n);
        for (uint32_t n = 0; n < reader.EventCount(); ++n) ExpectEvent(reader, plain, n);
        for (int turn = 0; turn < 30; ++turn) {
            const mt_Time tick = below(static_cast<uint32_t>(list_[list_.size() - 1].time) + 3);
            const uint32_t sequence = below(static_cast<uint32_t>(list_.size()) + 3);
            EXPECT_EQ(reader.FirstStatusFrom(tick), count_ahead(plain.statuses, tick));
            EXPECT_EQ(reader.FirstEventFrom(tick), count_ahead(plain.events, tick));
            EXPECT_EQ(reader.FirstStatusAt(sequence), count_before(plain.statuses, sequence));
            EXPECT_EQ(reader.FirstEventAt(sequence), count_before(plain.events, sequence));
            if (reader.StatusCount() > 0) ExpectStatus(reader, plain, below(reader.StatusCount()));
            if (reader.EventCount() > 0) ExpectEvent(reader, plain, below(reader.EventCount()));
        }
        EXPECT_EQ(reader.StateAhead(reader.StatusCount()),
                  plain.statuses.empty() ? lane_Absent : plain.statuses.back().state);
    }
    static void ExpectStatus(LaneReader& reader, const PlainLane& plain, uint32_t n) {
        const LaneStatus status = reader.status(n);
        ASSERT_EQ(std::tie(status.tick, status.state, status.sequence),
                  std::tie(plain.statuses[n].tick, plain.statuses[n].state, plain.statuses[n].sequence));
    }
    static void ExpectEvent(LaneReader& reader, const PlainLane& plain, uint32_t n) {
        const LaneEvent event = reader.event(n);
        ASSERT_EQ(std::tie(event.tick, event.kind, event.sequence),
                  std::tie(plain.events[n].tick, plain.events[n].kind, plain.events[n].sequence));
    }
    void ExpectTable(const LaneTable& table) {
        const auto lanes = lanes_of(list_);
        ASSERT_EQ(table.EndEvent(), list_.size() + 1);
        ASSERT_EQ(table.size(), lanes.size());
        uint32_t at = 0;
        for (const auto& [object, plain] : lanes) {
            const uint32_t lane = table.find(object);
            ASSERT_EQ(table.ById()[at++], lane);
            ASSERT_EQ(table.ObjectOf(lane), object);
            ASSERT_NO_FATAL_FAILURE(ExpectLane(LaneReader(table, lane), plain));
            uint32_t seen = table.EndEvent();
            if (!plain.statuses.empty()) seen = plain.statuses[0].sequence;
            if (!plain.events.empty()) seen = std::min(seen, plain.events[0].sequence);
            EXPECT_EQ(table.FirstSeen(lane), seen);
        }
        EXPECT_EQ(table.find(0xFFFFFFFE), LaneTable::none);
        for (uint32_t sequence = 1; sequence < table.EndEvent(); ++sequence)
            ASSERT_EQ(table.TickOf(sequence), list_[sequence - 1].time);
        for (mt_Time tick = 0; tick < list_[list_.size() - 1].time + 2; tick += 1 + below(5))
            ASSERT_EQ(table.FirstFrom(tick), *index_->FirstFrom(tick));
    }
};

TEST_F(LaneTableTest, LanesAreWhatTheEventsDid) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        ASSERT_NO_FATAL_FAILURE(
            open(random_events(seed, 20 + 60 * seed), seed % 4 == 0 ? 1000 : lanes_TestBlock));
        ASSERT_NO_FATAL_FAILURE(ExpectTable(LaneTable(*index_))) << seed;
    }
}

// What the state has of objects besides their statuses, at any event.
TEST_F(LaneTableTest, NamesAndPrioritiesAreThoseOfTheState) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        ASSERT_NO_FATAL_FAILURE(open(random_events(seed, 300)));
        const LaneTable table(*index_);
        StateTable state;
        std::set<LaneNameBytes> names;
        for (const EventRecord& event : list_) {
            mt_ApplyEventToState(state, event);
            for (uint32_t lane = 0; lane < table.size(); ++lane) {
                LanePriority priority;
                LaneNameBytes name = {};
                for (const auto& set : table.Priorities(lane))
                    if (set.sequence <= event.sequence) priority = set.priority;
                for (const auto& set : table.Names(lane))
                    if (set.sequence <= event.sequence) name = set.name;
                const uint32_t at = state.find(mt_ObjectTask, table.ObjectOf(lane));
                LaneNameBytes wanted = {};
                if (at != StateTable::npos)
                    std::copy_n(state.BlockAt(at) + lane_NameAt, wanted.size(), wanted.begin());
                const auto known = at == StateTable::npos ? std::nullopt : mt_TaskPriorityAt(state, at);
                ASSERT_EQ(name, wanted) << seed << ' ' << event.sequence;
                ASSERT_EQ(priority.known, known.has_value());
                ASSERT_EQ(priority.known ? priority.value : 0, known.value_or(0));
                names.insert(name);
            }
        }
        EXPECT_GT(names.size(), 5u);
    }
}

// Each level's sums are those of the statuses between the last event ahead of its blocks and its own last.
TEST_F(LaneTableTest, SumsAreThoseOfTheStatuses) {
    ASSERT_NO_FATAL_FAILURE(open(random_events(8, 700), 2));
    const auto lanes = lanes_of(list_);
    size_t levels = 0;
    for (size_t size = 1, level = 0; size <= index_->BlockCount(); size *= lane_SumsOf, ++level, ++levels)
        for (size_t end = size; end <= index_->BlockCount(); end += size) {
            const LaneHead &first = index_->head(end - size), &last = index_->head(end - 1);
            const mt_Time from = end == size ? first.firstTick : index_->head(end - size - 1).lastTick;
            std::map<std::pair<uint32_t, uint32_t>, std::pair<uint64_t, uint64_t>> wanted, summed;
            for (const auto& [object, lane] : lanes)
                for (size_t i = 0; i < lane.statuses.size(); ++i) {
                    const LaneStatus& status = lane.statuses[i];
                    const mt_Time until =
                        i + 1 < lane.statuses.size() ? lane.statuses[i + 1].tick : last.lastTick;
                    const bool within = status.sequence >= first.first && status.sequence < last.end();
                    const mt_Time low = std::max(from, status.tick), high = std::min(last.lastTick, until);
                    auto& sum = wanted[{object, status.state}];
                    sum.first += within ? 1 : 0;
                    sum.second += high > low ? high - low : 0;
                }
            std::erase_if(wanted, [](const auto& cell) {
                return cell.first.second == lane_Absent || cell.second == std::pair<uint64_t, uint64_t>{};
            });
            LaneSums sums;
            ASSERT_TRUE(index_->ReadSums(end - 1, level, sums));
            for (const LaneSums::Status& cell : sums.statuses)
                summed[{cell.object, cell.state}] = {cell.entered, cell.ticks};
            ASSERT_EQ(summed, wanted) << level << ' ' << end;
        }
    EXPECT_EQ(levels, 3u);
}

TEST_F(LaneTableTest, TakesInWhatTheIndexTakesIn) {
    const auto events = random_events(4, 500);
    ASSERT_NO_FATAL_FAILURE(open({events.begin(), events.begin() + 208}));
    const Bytes part = file_bytes(index_->name());
    ASSERT_NO_FATAL_FAILURE(open(events));
    const Bytes whole = file_bytes(index_->name());
    write_file(index_->name(), part);
    OpenIndex();
    LaneTable table(*index_);
    EXPECT_EQ(table.EndEvent(), 209u);
    LaneReader reader(table, table.ById()[0]);
    const uint32_t before = reader.EventCount();
    if (before > 0) static_cast<void>(reader.event(before - 1));
    write_file(index_->name(), whole);
    index_->Refresh(*store_);
    table.Refresh();
    ExpectTable(table);
    EXPECT_GE(reader.EventCount(), before);
}

TEST_F(LanesTest, IndexGivesItsRoomToTheStore) {
    auto writer = StoreWriter::OpenForWrite(base_, 1000, "korvantis", true, lanes_TestTracker);
    LaneFeed feed(base_, true, lanes_TestBlock);
    writer->SetObserver(&feed);
    for (const TestEvent& event : random_events(2, 100))
        ASSERT_TRUE(writer->AppendEvent(event.time, event.type, event.subtype, event.extra).ok());
    EXPECT_TRUE(std::filesystem::exists(lane_NameBeside(base_)));
    EXPECT_TRUE(feed.GiveRoom());
    EXPECT_FALSE(std::filesystem::exists(lane_NameBeside(base_)));
    EXPECT_FALSE(feed.GiveRoom());
    feed.Finish();
    EXPECT_FALSE(std::filesystem::exists(lane_NameBeside(base_)));
}

// From any event on, the turns of the lanes of one processor are those that the list has.
TEST_F(LaneTableTest, TurnsOfSeveralLanesComeInTheOrderOfTheEvents) {
    const auto chosen = [](uint32_t state) { return state == mt_Running || state == mt_EvWait; };
    for (unsigned seed = 1; seed <= 6; ++seed) {
        ASSERT_NO_FATAL_FAILURE(open(random_events(seed, 400)));
        const LaneTable table(*index_);
        std::vector<uint32_t> lanes;
        for (uint32_t lane = 0; lane < table.size(); ++lane)
            if ((table.ObjectOf(lane) & mt_GroupMask) != 1) lanes.push_back(lane);
        LaneMerge merge(table, lanes, chosen);
        LaneTurn turn;
        EXPECT_FALSE(merge.next(turn));
        for (int turns = 0; turns < 4; ++turns) {
            const uint32_t from = turns == 0 ? 1 : 1 + below(table.EndEvent());
            merge.GoTo(from);
            StateTable state;
            Statuses now;
            for (const EventRecord& event : list_)
                for (const auto& [object, left] : statuses_left(state, event)) {
                    const uint32_t ahead =
                        std::exchange(now.try_emplace(object, lane_Absent).first->second, left);
                    const bool told = (chosen(ahead) || chosen(left)) && (object & mt_GroupMask) != 1;
                    if (!told || event.sequence < from) continue;
                    ASSERT_TRUE(merge.next(turn));
                    ASSERT_EQ(table.ObjectOf(turn.lane), object);
                    ASSERT_EQ(turn.ahead, ahead);
                    ASSERT_EQ(turn.status.state, left);
                    ASSERT_EQ(turn.status.sequence, event.sequence);
                }
            EXPECT_FALSE(merge.next(turn));
        }
    }
}

}  // namespace
