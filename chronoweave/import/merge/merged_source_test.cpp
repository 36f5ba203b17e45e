// Streams of records merged, held against a sort of all that they say.
#include "chronoweave/import/merge/merged_source.h"

#include "chronoweave/import/merge/merge_testing.h"
#include "chronoweave/import/merge/turn_words.h"

namespace {

class MergedSourceTest : public ImportTest {
  protected:
    static std::unique_ptr<MergedSource> merge(const std::vector<TestSource>& sources, MergeAlign align) {
        std::vector<MergePart> parts;
        for (const TestSource& source : sources) {
            MergePart part{"part", nullptr};
            EXPECT_TRUE(raw_Open(source_FromBytes(source.bytes), part.name, part.source).ok());
            parts.push_back(std::move(part));
        }
        std::unique_ptr<MergedSource> merged;
        EXPECT_TRUE(MergedSource::Make(std::move(parts), align, merged).ok());
        EXPECT_TRUE(merged->LookAhead({}).ok());
        return merged;
    }
    static std::vector<TestEvent> EventsOf(MergedSource& merged) {
        std::vector<TestEvent> events;
        SourceRecord record;
        for (SourceStep step = SourceStep::Pause; step != SourceStep::End;) {
            step = merged.next(record);
            if (step == SourceStep::Record) events.push_back(test_event(record));
        }
        return events;
    }
};

TEST_F(MergedSourceTest, givesWhatASortOfAllEventsGives) {
    Random random(1);
    for (int set = 0; set < 4000; ++set) {
        std::vector<TestSource> sources;
        for (uint64_t left = 1 + below(random, 6); left > 0; --left) sources.push_back(random_source(random));
        for (const MergeAlign align : {MergeAlign::Natural, MergeAlign::Head, MergeAlign::Tail}) {
            const auto merged = merge(sources, align);
            ASSERT_EQ(EventsOf(*merged), model_merge(sources, align))
                << set << ' ' << static_cast<int>(align);
            EXPECT_LE(merged->extent().done, merged->extent().total);
        }
    }
}

TestSource source_of(uint64_t rate, const std::vector<uint64_t>& times, uint32_t id) {
    TestSource source;
    source.rate = rate;
    source.bytes = long_header(false, 3, 0);
    store_32(&source.bytes[12], static_cast<uint32_t>(rate >> 32), false);
    store_32(&source.bytes[16], static_cast<uint32_t>(rate), false);
    for (const uint64_t time : times) put_record(source.bytes, raw_event(4, 0, time, id, false));
    return source;
}

std::string text_of(const std::vector<TestEvent>& events) {
    std::string text;
    for (const TestEvent& event : events)
        text += std::to_string(event.extra[0]) + ':' + std::to_string(event.time) + ' ';
    return text;
}

TEST_F(MergedSourceTest, followsTheRulesOfTimes) {
    constexpr MergeAlign natural = MergeAlign::Natural, head = MergeAlign::Head, tail = MergeAlign::Tail;
    constexpr uint64_t most = UINT64_MAX;
    const struct {
        const char* name;
        MergeAlign align;
        std::vector<TestSource> sources;
        const char* merged;  // "source:time"
    } cases[] = {
        {"one time: the order of the sources",
         natural,
         {source_of(1, {7, 7}, 1), source_of(1, {7, 8}, 2)},
         "1:7 1:7 2:7 2:8 "},
        {"no time: behind the one before",
         natural,
         {source_of(1, {5, 0, 9}, 1), source_of(1, {5, 6}, 2)},
         "1:5 1:0 2:5 2:6 1:9 "},
        {"no time at the head: ahead of all",
         natural,
         {source_of(1, {3}, 1), source_of(1, {0, 0, 9}, 2), source_of(1, {0}, 3)},
         "2:0 2:0 3:0 1:3 2:9 "},
        {"back: at the newest",
         natural,
         {source_of(1, {5, 2, 9}, 1), source_of(1, {4, 6}, 2)},
         "2:4 1:5 1:5 2:6 1:9 "},
        {"heads", head, {source_of(1, {10, 12}, 1), source_of(1, {3, 6}, 2)}, "1:3 2:3 1:5 2:6 "},
        {"heads with none", head, {source_of(1, {0, 10}, 1), source_of(1, {}, 2)}, "1:0 1:10 "},
        {"tails", tail, {source_of(1, {10, 12}, 1), source_of(1, {3, 6, 0}, 2)}, "2:9 1:10 1:12 2:12 2:0 "},
        {"the faster clock, rounded down",
         natural,
         {source_of(3, {1, 2}, 1), source_of(10, {3, 6}, 2)},
         "1:3 2:3 1:6 2:6 "},
        {"heads of two clocks",
         head,
         {source_of(1, {5, 6}, 1), source_of(10, {20, 25}, 2)},
         "1:20 2:20 2:25 1:30 "},
        {"past the last time",
         natural,
         {source_of(1, {most / 4, most}, 1), source_of(3, {most}, 2)},
         "1:13835058055282163709 1:18446744073709551615 2:18446744073709551615 "},
        {"clocks past 32 bits",
         natural,
         {source_of(uint64_t{1} << 33, {8}, 1), source_of(uint64_t{1} << 34, {17}, 2)},
         "1:16 2:17 "},
    };
    for (const auto& c : cases) EXPECT_EQ(text_of(EventsOf(*merge(c.sources, c.align))), c.merged) << c.name;
}

TEST_F(MergedSourceTest, countsWhatItChanged) {
    TestSource little = source_of(1, {5, 2, 0, 4}, 1), big;
    big.big = true;
    big.bytes = short_header(true, 1, 3, 3);
    put_record(big.bytes, raw_event(5, 0, 1, 2, true, 8));            // all of it known
    put_record(big.bytes, raw_event(5, 0, 1, 2, true, 6));            // half a priority
    put_record(big.bytes, raw_event(6, 0, 1, 2, true, 70));           // text
    put_record(big.bytes, raw_event(3, 0, UINT64_MAX, 2, true, 12));  // words of the target's program
    const auto merged = merge({big, little}, MergeAlign::Natural);
    EXPECT_EQ(EventsOf(*merged).size(), 8u);
    EXPECT_TRUE(merged->facts().bigEndian);
    EXPECT_EQ(merged->facts().ticksPerSecond, 3u);
    const MergeInputCounts &first = merged->inputs()[0].counts(), &second = merged->inputs()[1].counts();
    EXPECT_EQ(first.events, 4u);
    EXPECT_EQ(first.unturned, 0u);
    EXPECT_EQ(first.far, 0u);
    EXPECT_EQ(second.back, 2u);
    const auto turned = merge({little, big}, MergeAlign::Natural);
    EventsOf(*turned);
    EXPECT_EQ(turned->inputs()[1].counts().unturned, 2u);
    const auto scaled = merge({source_of(9, {}, 1), big}, MergeAlign::Natural);
    EventsOf(*scaled);
    EXPECT_EQ(scaled->inputs()[1].counts().far, 1u);
}

// A source whose facts are what a test wants.
class NamedSource : public EventSource {
  public:
    explicit NamedSource(SourceFacts facts) : facts_(std::move(facts)) {}
    const SourceFacts& facts() const override { return facts_; }
    SourceStep next(SourceRecord&) override { return SourceStep::End; }
    SourceExtent extent() const override { return {}; }

  private:
    SourceFacts facts_;
};

TEST_F(MergedSourceTest, refusesWhatDoesNotBelongTogether) {
    const mt_EventCallback other = [](StoreWriter&, const mt_WriteRecord&) { return true; };
    const struct {
        SourceFacts first, second;
        MergeAlign align;
        const char* words;
    } cases[] = {
        {{1, "A"},
         {1, "B"},
         MergeAlign::Natural,
         "two: events of B can't be merged with those of \"one\", which are of A"},
        {{1, "A"},
         {1, "A", false, other},
         MergeAlign::Natural,
         "two: its objects are of another kind than those of \"one\""},
        {{1, "A"},
         {0, "A"},
         MergeAlign::Head,
         "two: it tells no clock rate, so that its times can't be brought to another's"},
        {{0, "A"},
         {1, "A"},
         MergeAlign::Head,
         "one: it tells no clock rate, so that its times can't be brought to another's"},
        {{0, "A"}, {0, "A"}, MergeAlign::Natural, ""},
        {{1, "A"},
         {1, "A"},
         MergeAlign::Tail,
         "one: it can't be read twice, which the alignment of ends asks for"},
    };
    for (const auto& c : cases) {
        std::vector<MergePart> parts;
        parts.push_back({"one", std::make_unique<NamedSource>(c.first)});
        parts.push_back({"two", std::make_unique<NamedSource>(c.second)});
        std::unique_ptr<MergedSource> merged;
        Result made = MergedSource::Make(std::move(parts), c.align, merged);
        if (made.ok()) made = merged->LookAhead({});
        EXPECT_EQ(made.text(), c.words);
    }
}

}  // namespace
