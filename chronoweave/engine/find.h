// Finding what is typed: a few words, which must all fit an event or the beginning of a status. A word fits
// an event by the event's name, by its object's name or id, or by the text of its extra data; it fits the
// beginning of a status by the status's name or the object. One word at least must fit a status by name for
// its beginnings to count.
//
//     take net          event:take task:net_rx          status:ready 0x401          "two words"
//
// A word with '*' or '?' must fit the whole of a name or text, another one a part of it. The case of letters
// doesn't matter. "event:", "object:" (also "task:"), "status:" and "text:" limit a word to one of these.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "chronoweave/engine/search_texts.h"

enum class FindField { Any, Event, Object, Status, Text };

struct FindWord {
    FindField field = FindField::Any;
    std::string text;  // in lower case; never empty
};

struct FindQuery {
    std::vector<FindWord> words;
    bool empty() const { return words.empty(); }
};
// At most 32 words are taken; a quotation that is not closed goes to the end.
FindQuery find_Parse(std::string_view typed);
// Whether one text fits a word; both in lower case.
bool find_Fits(std::string_view word, std::string_view text);

enum class FindKind { Event, Status };
struct FindHit {
    double time = 0;
    uint32_t object = 0;
    int32_t row = -1;  // of the event or status table
    FindKind kind = FindKind::Event;
};

// What a query's words mean for a trace. Borrows the store, the legend and the names.
class FindMatcher {
  public:
    FindMatcher(const AnalysisSource& source, const ObjectNames& names, FindQuery query);

    // Whether beginnings of a status can fit at all: only then objects need be followed.
    bool WantsStatuses() const { return wantsStatuses_; }
    // Whether a status of the object could fit.
    bool MayFitStatus(uint32_t object);
    // Whether an event of a row could fit, whatever its object; and whether its extra data would matter then.
    bool MayFit(int32_t row) const;
    bool ReadsText(int32_t row) const;
    // row: of the event table.
    bool Fits(const EventRecord& event, int32_t row, uint32_t object);
    bool FitsStatus(uint32_t object, int32_t row);
    // Rows that fit by their names with no other word to look at, for what is filled in elsewhere; objects
    // likewise.
    std::vector<int32_t> EventRows() const;
    std::vector<int32_t> StatusRows() const;
    std::vector<uint32_t> ObjectsOf(const std::vector<uint32_t>& known);
    // The names have changed: what was known of objects by them goes.
    void ForgetObjects() { objects_.clear(); }

  private:
    using Bits = uint32_t;  // by word

    Bits BitsOf(FindField field, std::string_view name) const;
    Bits BitsOfObject(uint32_t object);
    bool FitsText(const EventRecord& event, int32_t row, Bits missing);
    bool HasText(int32_t row) const;

    const AnalysisSource& source_;
    const ObjectNames& names_;
    FindQuery query_;
    Bits all_ = 0;
    Bits byText_ = 0;    // words that a text may fit
    Bits byObject_ = 0;  // words that an object may fit
    bool wantsStatuses_ = false;
    std::vector<Bits> events_, statuses_;         // by row
    std::unordered_map<uint32_t, Bits> objects_;  // as they were asked for
};

// The search of a query over a trace in slices: first the range that is shown, then what lies behind, then
// what lies ahead of it. The store, the legend and the names outlive it. Hits are counted once each, whatever
// the order, and are those of the searches of search.h.
class FindWalk {
  public:
    // Times of the time base; the tick of high is included.
    FindWalk(const AnalysisSource& source, const ObjectNames& names, FindQuery query, double low,
             double high);
    ~FindWalk();
    FindWalk(const FindWalk&) = delete;
    FindWalk& operator=(const FindWalk&) = delete;

    // Looks at so many events more. False when all was looked at, or there are more hits than are kept, and
    // at every later call.
    bool Step(uint32_t events);
    bool Over() const { return over_; }
    // The range of the constructor was looked at.
    bool ViewDone() const { return viewDone_ || over_; }
    // The trace has grown to a length: the walk goes on there.
    void Extend(double totalLength);
    // Share of the trace that was looked at, 0 to 1.
    double Share() const;

    // Hits found so far, in order of time.
    size_t count() const { return before_.size() + view_.size() + after_.size(); }
    const FindHit& hit(size_t number) const;
    std::vector<double> Times() const;
    // Of them, those ahead of the range of the constructor.
    size_t CountAhead() const { return before_.size(); }
    // The first that does not lie ahead of a time; count() when there is none.
    size_t FirstFrom(double time) const;
    bool Full() const { return count() >= most; }
    bool Damaged() const { return damaged_; }
    FindMatcher& matcher() { return matcher_; }

    static constexpr size_t most = 1'000'000;  // hits that are kept

  private:
    enum class Place { Before, View, After };
    struct Stretch {
        mt_Time from, to;  // both included
        Place place;       // of its hits
        bool anew;         // hits in it may have been found before
    };
    struct Part;

    void Begin();
    std::vector<FindHit>& HitsOf(Place place);

    AnalysisSource source_;
    FindMatcher matcher_;
    mt_Time first_, last_;  // of the trace
    std::deque<Stretch> left_;
    std::unique_ptr<Part> part_;
    std::vector<FindHit> before_, view_, after_;
    bool viewDone_ = false, over_ = false, damaged_ = false;
    double looked_ = 0;  // ticks of the stretches that are over
};
