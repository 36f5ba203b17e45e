// Whatever is answered by a lane index is what the walk over the store says, bit by bit.
#include <fstream>

#include "chronoweave/engine/engine_testing.h"
#include "chronoweave/engine/find.h"
#include "chronoweave/engine/lanes/lanes_testing.h"
#include "chronoweave/engine/range_figures.h"
#include "chronoweave/engine/report.h"
#include "shared/libcxxutil/report.h"

namespace {

// Everything that was found, as text, so that differences are seen.
class Told {
  public:
    std::string text;
    template <class... Values>
    Told& put(const Values&... values) {
        (add(values), ...);
        text += '\n';
        return *this;
    }
    void put(const std::vector<SearchRow>& rows) {
        for (const SearchRow& row : rows) put(row.objectA, row.objectB, row.timeA, row.timeB);
    }

  private:
    void add(double value) { text += gen_format(" %a", value); }
    void add(uint64_t value) { text += ' ' + std::to_string(value); }
    void add(uint32_t value) { add(uint64_t{value}); }
    void add(int32_t value) { text += ' ' + std::to_string(value); }
    void add(bool value) { text += value ? " yes" : " no"; }
    template <class Value>
    void add(const std::vector<Value>& values) {
        for (const Value& value : values) add(value);
        text += ';';
    }
};

class ByLanesTest : public AnalysisTest {
  protected:
    // A store whose index covers so many of its events.
    void OpenIndexed(const std::vector<TestEvent>& events, size_t covered, const std::string& os) {
        index_.reset();
        const std::string base = folder_ / ("indexed" + std::to_string(stores_++));
        lanes_WriteStore(base, {events.begin(), events.begin() + static_cast<ptrdiff_t>(covered)},
                         lanes_TestBlock, os);
        std::ifstream made(lane_NameBeside(base), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(made), {}};
        lanes_WriteStore(base, events, 0, os);
        std::ofstream(lane_NameBeside(base), std::ios::binary) << bytes;
        source_ = {};
        store_ = mt_OpenForRead(base);
        legend_ = random_() % 2 ? CrowdedLegend() : test_legend();
        source_ = analysis_SourceOfStore(*store_, legend_);
        OpenIndex();
    }
    void OpenIndex() {
        Result why;
        index_ = LaneIndex::Open(*store_, why);
        ASSERT_TRUE(index_) << why.text();
    }
    // Runs a question both ways.
    template <class Ask>
    void Compare(const char* what, Ask&& ask) {
        source_.lanes = nullptr;
        const std::string walked = ask();
        source_.lanes = index_;
        EXPECT_EQ(ask(), walked) << what;
        EXPECT_NE(walked, "");
    }
    uint32_t below(size_t n) { return static_cast<uint32_t>(random_() % n); }
    double SomeTime() {
        const double length = source_.totalLength;
        return below(6) == 0 ? (below(2) ? 0 : length) : length * below(1001) / 1000 + below(3) * 0.0003;
    }
    std::vector<uint32_t> Some(const std::vector<uint32_t>& objects) {
        if (below(3) == 0) return objects;
        std::vector<uint32_t> some;
        for (const uint32_t object : objects)
            if (below(3) == 0) some.push_back(object);
        return some;
    }

    std::string Search() {
        SearchResult result;
        const bool went = search_Run(source_, request_, result, limit_);
        Told told;
        told.put(went, result.found, result.stopped, result.damaged, result.reached);
        told.put(result.rows);
        told.put(result.open);
        return told.text;
    }
    std::string Report(ReportOutcome outcome, const LegendStatistics& s) {
        return Told()
            .put(static_cast<int>(outcome), s.eventCounts, s.statusCounts, s.statusTimes, s.rangeLength,
                 s.totalEvents, s.totalStatusCount, s.totalStatusTime, s.rangeTo, s.stopped)
            .text;
    }
    std::string Chosen() {
        ChosenReport report;
        const auto outcome = report_ChosenObjects(source_, request_, {}, report);
        Told told;
        told.put(static_cast<int>(outcome), report.totalCount < 0, static_cast<uint64_t>(report.totalCount));
        for (const ObjectFigures* one : report.sorted) told.put(one->object, one->count, one->time);
        return told.text;
    }
    static void Put(Told& told, const std::vector<ProcessorLoad>& processors) {
        for (const ProcessorLoad& one : processors) {
            told.put(one.processor, one.busy);
            for (const ObjectTime& object : one.objects) told.put(object.object, object.time);
        }
    }
    std::string Load(const std::vector<uint32_t>& idle, double from, double to) {
        LoadReport report;
        Told told;
        told.put(static_cast<int>(report_ProcessorLoad(source_, idle, from, to, report)), report.rangeTo);
        Put(told, report.processors);
        return told.text;
    }
    std::string Figures(const std::vector<uint32_t>& idle, double from, double to) {
        RangeTally tally(source_, idle, from, to);
        while (tally.Step()) {
        }
        Told told;
        if (const RangeFigures* figures = tally.Figures()) {
            told.put(figures->exact, figures->events, figures->eventCounts, figures->to);
            Put(told, figures->processors);
            if (const auto& wait = figures->longestWait) told.put(wait->object, wait->from, wait->length);
        }
        return told.text + ".";
    }
    std::string Find(const std::string& typed, double low, double high) {
        const ObjectNames names;
        FindWalk walk(source_, names, find_Parse(typed), low, high);
        while (walk.Step(50)) {
        }
        Told told;
        for (size_t i = 0; i < walk.count(); ++i)
            told.put(walk.hit(i).time, walk.hit(i).object, walk.hit(i).row,
                     static_cast<int>(walk.hit(i).kind));
        return told.text + ".";
    }
    // Every question with random choices.
    void AskEverything() {
        const std::vector<uint32_t> objects = everyone();
        double from = SomeTime(), to = SomeTime();
        if (from > to && below(4) > 0) std::swap(from, to);
        request_ = {};
        request_.rangeFrom = from;
        request_.rangeTo = to;
        request_.objects = Some(objects);
        request_.beginObjects = Some(objects);
        request_.endObjects = Some(objects);
        if (below(2)) request_.flags |= Search_SameObject;
        const auto rows = [&](size_t count) { return static_cast<int32_t>(below(count + 1)) - 1; };
        for (const int kind : {Search_Event, Search_Pattern, Search_Status, Search_Switch}) {
            request_.kind = kind;
            const bool ofStatuses = kind == Search_Status;
            request_.target = rows(ofStatuses ? legend_.statuses.size() : legend_.events.size());
            request_.endTarget = rows(legend_.events.size());
            limit_ = below(4) == 0 ? 1 + below(20) : 0;
            Compare("search", [&] { return Search(); });
            if (kind != Search_Pattern) Compare("report on chosen objects", [&] { return Chosen(); });
        }
        LegendStatistics statistics;
        Compare("report",
                [&] { return Report(report_AllObjects(source_, from, to, statistics), statistics); });
        const uint32_t one = objects[below(objects.size())];
        Compare("report on an object",
                [&] { return Report(report_OneObject(source_, one, from, to, statistics), statistics); });
        const auto idle = Some(objects);
        Compare("load", [&] { return Load(idle, from, to); });
        if (from > to) std::swap(from, to);
        Compare("figures", [&] { return Figures(idle, from, to); });
        for (const char* typed : {"event:take", "give", "status:ready", "object:0x401", "e"})
            Compare(typed, [&] { return Find(typed, from, to); });
    }

    std::shared_ptr<LaneIndex> index_;
    SearchRequest request_;
    uint64_t limit_ = 0;
    std::mt19937 random_{11};
};

TEST_F(ByLanesTest, AnswersAreThoseOfTheWalk) {
    for (unsigned seed = 1; seed <= 24; ++seed) {
        const auto events = random_events(seed, 60 + below(400));
        const size_t covered = seed % 3 == 0 ? 20 + below(events.size() - 20) : events.size();
        ASSERT_NO_FATAL_FAILURE(OpenIndexed(events, covered, seed % 2 ? "KORVANTIS" : "ThreadX"));
        for (int turn = 0; turn < 6; ++turn) AskEverything();
        if (HasFailure()) FAIL() << "seed " << seed;
    }
}

// A walk that progress stops says where; what it counted up to there is what the walk over the store counts.
TEST_F(ByLanesTest, StoppedReportsCountWhatTheyHaveSeen) {
    std::vector<TestEvent> events;
    for (uint32_t i = 0; i < 40000; ++i)
        events.push_back(status_change(i, 0x401, i % 2 ? mt_Ready : mt_Pend));
    ASSERT_NO_FATAL_FAILURE(OpenIndexed(events, events.size(), "KORVANTIS"));
    Compare("a stopped report", [&] {
        source_.progress = [](double, double) { return false; };
        LegendStatistics statistics;
        const auto outcome = report_AllObjects(source_, 0, source_.totalLength, statistics);
        EXPECT_TRUE(statistics.stopped);
        return Report(outcome, statistics);
    });
}

TEST_F(ByLanesTest, IndexThatTurnsOutDamagedIsLeftForTheStore) {
    const auto events = random_events(3, 300);
    for (int turn = 0; turn < 30; ++turn) {
        ASSERT_NO_FATAL_FAILURE(OpenIndexed(events, events.size(), "KORVANTIS"));
        std::fstream file(index_->name(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(0, std::ios::end);
        file.seekp(mt_HeaderSize + below(static_cast<size_t>(file.tellp()) - mt_HeaderSize));
        file << '#';
        file.close();
        AskEverything();
        if (HasFailure()) FAIL() << "turn " << turn;
    }
}

}  // namespace
