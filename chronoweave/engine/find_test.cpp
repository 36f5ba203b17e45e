#include "chronoweave/engine/find.h"

#include <algorithm>
#include <random>

#include "chronoweave/engine/engine_testing.h"
#include "shared/libcxxutil/report.h"

class FindTest : public AnalysisTest {
  protected:
    std::vector<FindHit> find(const std::string& typed, double low = 0, double high = 1e9,
                              uint32_t slice = 1000) {
        const ObjectNames names(*store_, '@');
        FindWalk walk(source_, names, find_Parse(typed), low, high);
        while (walk.Step(slice)) {
        }
        std::vector<FindHit> hits;
        for (size_t i = 0; i < walk.count(); ++i) hits.push_back(walk.hit(i));
        EXPECT_EQ(walk.Share(), 1);
        return hits;
    }
    // "12e400" for an event of object 0x400 at tick 12, 's' for the beginning of a status.
    std::string text(const std::string& typed) {
        std::string all;
        for (const FindHit& hit : find(typed))
            all += std::to_string(source_.clock.NearestTick(hit.time)) +
                   (hit.kind == FindKind::Event ? 'e' : 's') + gen_format("%x ", hit.object);
        return all;
    }
    std::vector<std::pair<double, uint32_t>> rows(int kind, int32_t target) {
        SearchRequest request;
        request.kind = kind;
        request.target = target;
        // Events count whose object the store never told of.
        for (uint32_t id = 0; id < 20; ++id)
            for (uint32_t group = 0; group < 3; ++group) request.objects.push_back(id << 10 | group);
        request.rangeTo = source_.totalLength;
        SearchResult result;
        EXPECT_TRUE(search_Run(source_, request, result));
        std::vector<std::pair<double, uint32_t>> rows;
        for (const SearchRow& row : result.rows) rows.emplace_back(row.timeA, row.objectA);
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    static std::vector<std::pair<double, uint32_t>> sorted(const std::vector<FindHit>& hits) {
        std::vector<std::pair<double, uint32_t>> rows;
        for (const FindHit& hit : hits) rows.emplace_back(hit.time, hit.object);
        std::sort(rows.begin(), rows.end());
        return rows;
    }
};

TEST(FindQuery, WordsAreTakenApart) {
    const auto told = [](const char* typed) {
        std::string text;
        for (const FindWord& word : find_Parse(typed).words)
            text += std::to_string(static_cast<int>(word.field)) + word.text + '|';
        return text;
    };
    EXPECT_EQ(told("  Take\tnet "), "0take|0net|");
    EXPECT_EQ(told("event:Take task:\"Net RX\" STATUS:ready"), "1take|2net rx|3ready|");
    EXPECT_EQ(told("\"two words\" \"open"), "0two words|0open|");
    EXPECT_EQ(told("a:b text: \"\" x"), "0a:b|0x|");
    EXPECT_EQ(told(""), "");
    EXPECT_EQ(find_Parse(std::string(200, 'a') + std::string(400, ' ') + "b").words.size(), 2u);
    std::string many;
    for (int i = 0; i < 99; ++i) many += "w ";
    EXPECT_EQ(find_Parse(many).words.size(), 32u);
}

TEST_F(FindTest, AllWordsMustFit) {
    Legend legend = CrowdedLegend();
    for (LegendEvent& event : legend.events)
        if (event.name == "Give") event.extraFormat = "sema %4D";
    auto give = [](mt_Time time, uint32_t id, uint32_t value) {
        return TestEvent{time, mt_UserEvent, 3, words({id, value})};
    };
    open({name_event(0, 0x400, "net_rx"), name_event(0, 0x800, "disk"), switch_to(10, 0x400),
          user(12, 0x400, 2), give(14, 0x400, 77), switch_to(20, 0x800), user(21, 0x800, 2),
          give(23, 0x800, 5), status_change(30, 0x800, mt_Pend)},
         "Korvantis", legend);
    const struct {
        const char *typed, *found;
    } cases[] = {
        {"take", "12e400 21e800 "},
        {"TAKE net", "12e400 "},
        {"net take", "12e400 "},
        {"t*e", "12e400 21e800 "},
        {"?ive", "14e400 23e800 "},
        {"event:rx", ""},
        {"object:0x800 give", "23e800 "},
        {"0x800 give", "23e800 "},
        {"task:2048 give", "23e800 "},
        {"2048 give", ""},
        {"77", "14e400 "},
        {"text:sema disk", "23e800 "},
        {"text:77", "14e400 "},
        {"event:77", ""},
        {"status:pend", "30s800 "},
        {"running", "10s400 20s800 "},
        {"running disk", "20s800 "},
        {"running take", ""},
        {"none such", ""},
        {"", ""},
    };
    for (const auto& one : cases) EXPECT_EQ(text(one.typed), one.found) << one.typed;
}

TEST_F(FindTest, HitsAreThoseOfSearchesWhateverIsShown) {
    std::mt19937 random(3);
    for (unsigned seed = 1; seed <= 12; ++seed) {
        open(random_events(seed, 500), seed % 2 ? "Korvantis" : "ThreadX", test_legend());
        const double length = source_.totalLength;
        const double low = length * 0.01 * static_cast<double>(random() % 100);
        const double high = low + length * 0.3;
        for (const auto& [typed, kind, row] :
             {std::tuple{"\"Event 4\"", Search_Event, legend_.EventByName("Event 4")},
              {"status:Ready", Search_Status, legend_.StatusByName("Ready")},
              {"status:Running", Search_Status, legend_.StatusByName("Running")}}) {
            const auto hits = find(typed, low, high, 1 + seed * 7);
            EXPECT_TRUE(std::is_sorted(hits.begin(), hits.end(), [](const FindHit& a, const FindHit& b) {
                return a.time < b.time;
            })) << typed;
            EXPECT_EQ(sorted(hits), rows(kind, row)) << typed << ' ' << seed;
        }
    }
}

TEST_F(FindTest, AWalkGoesOnWhereATraceGrew) {
    const auto events = random_events(9, 400);
    open(events, "Korvantis", test_legend());
    const ObjectNames names(*store_, '@');
    const double whole = source_.totalLength;
    const auto wanted = find("status:Running", 0, whole);
    for (const double part : {0.3, 0.7, 0.999}) {
        // The store is whole; the walk is told of it later.
        AnalysisSource shorter = source_;
        shorter.totalLength = shorter.clock.OnTick(whole * part);
        FindWalk walk(shorter, names, find_Parse("status:Running"), shorter.totalLength / 2,
                      shorter.totalLength / 1.5);
        for (int i = 0; i < 5; ++i) walk.Step(part < 0.5 ? 3 : 1000);
        walk.Extend(whole * 0.9999);
        walk.Step(2);
        walk.Extend(whole);
        while (walk.Step(50)) {
        }
        std::vector<FindHit> hits;
        for (size_t i = 0; i < walk.count(); ++i) hits.push_back(walk.hit(i));
        EXPECT_EQ(sorted(hits), sorted(wanted)) << part;
        EXPECT_EQ(walk.Times().size(), hits.size());
        EXPECT_EQ(walk.FirstFrom(0), 0u);
        EXPECT_EQ(walk.FirstFrom(whole + 1), hits.size());
    }
}
