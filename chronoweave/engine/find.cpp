#include "chronoweave/engine/find.h"

#include <algorithm>
#include <optional>

#include "chronoweave/engine/search_tracker.h"
#include "chronoweave/rtos/extra_format.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t mostWords = 32;

std::string lowered(std::string_view text) {
    std::string low(text);
    for (char& c : low) c = text_lower(c);
    return low;
}

constexpr struct {
    std::string_view prefix;
    FindField field;
} prefixes[] = {{"event:", FindField::Event},
                {"object:", FindField::Object},
                {"task:", FindField::Object},
                {"status:", FindField::Status},
                {"text:", FindField::Text}};

// Takes the field that a word names off it.
FindField take_field(std::string_view& typed) {
    for (const auto& [prefix, field] : prefixes) {
        if (!text_starts_nocase(typed, prefix)) continue;
        typed.remove_prefix(prefix.size());
        return field;
    }
    return FindField::Any;
}

// The next word, unquoted.
std::string_view take_word(std::string_view& typed) {
    const bool quoted = typed.starts_with('"');
    if (quoted) typed.remove_prefix(1);
    const size_t end = std::min(quoted ? typed.find('"') : typed.find_first_of(" \t"), typed.size());
    const std::string_view word = typed.substr(0, end);
    typed.remove_prefix(std::min(typed.size(), end + 1));
    return word;
}

}  // namespace

FindQuery find_Parse(std::string_view typed) {
    FindQuery query;
    while (!(typed = text_trim(typed)).empty() && query.words.size() < mostWords) {
        const FindField field = take_field(typed);
        std::string word = lowered(take_word(typed));
        if (!word.empty()) query.words.push_back({field, std::move(word)});
    }
    return query;
}

bool find_Fits(std::string_view word, std::string_view text) {
    return word.find_first_of("*?") != std::string_view::npos ? text_matches(word, text)
                                                              : text.find(word) != std::string_view::npos;
}

FindMatcher::FindMatcher(const AnalysisSource& source, const ObjectNames& names, FindQuery query)
    : source_(source), names_(names), query_(std::move(query)) {
    for (size_t i = 0; i < query_.words.size(); ++i) {
        const FindField field = query_.words[i].field;
        all_ |= 1u << i;
        if (field == FindField::Any || field == FindField::Text) byText_ |= 1u << i;
        if (field == FindField::Any || field == FindField::Object) byObject_ |= 1u << i;
    }
    for (const LegendEvent& event : source.legend->events)
        events_.push_back(event.IsCategory() ? 0 : BitsOf(FindField::Event, event.name));
    for (const LegendStatus& status : source.legend->statuses) {
        statuses_.push_back(status.isContextSwitch ? 0 : BitsOf(FindField::Status, status.name));
        wantsStatuses_ = wantsStatuses_ || statuses_.back() != 0;
    }
}

FindMatcher::Bits FindMatcher::BitsOf(FindField field, std::string_view name) const {
    const std::string low = lowered(text_utf8(name));
    Bits bits = 0;
    for (size_t i = 0; i < query_.words.size(); ++i) {
        const FindWord& word = query_.words[i];
        if ((word.field == FindField::Any || word.field == field) && find_Fits(word.text, low))
            bits |= 1u << i;
    }
    return bits;
}

FindMatcher::Bits FindMatcher::BitsOfObject(uint32_t object) {
    if (const auto known = objects_.find(object); known != objects_.end()) return known->second;
    const std::string* name = names_.find(object);
    Bits bits = name ? BitsOf(FindField::Object, *name) : 0;
    for (size_t i = 0; i < query_.words.size(); ++i) {
        const FindWord& word = query_.words[i];
        // A bare number is mostly no id.
        const bool mayBeId =
            word.field == FindField::Object || (word.field == FindField::Any && word.text.starts_with("0x"));
        if (mayBeId && scan_number(word.text) == object) bits |= 1u << i;
    }
    return objects_[object] = bits;
}

bool FindMatcher::FitsText(const EventRecord& event, int32_t row, Bits missing) {
    const std::string& format = source_.legend->events[static_cast<size_t>(row)].extraFormat;
    if (format.empty()) return false;
    std::string text;
    extra_Format(event, format, mt_IsBigEndianTarget(*source_.store), false, false, text, nullptr);
    if (text.empty()) return false;
    text = lowered(text_utf8(text));
    for (size_t i = 0; i < query_.words.size(); ++i)
        if ((missing >> i & 1) != 0 && !find_Fits(query_.words[i].text, text)) return false;
    return true;
}

bool FindMatcher::HasText(int32_t row) const {
    return !source_.legend->events[static_cast<size_t>(row)].extraFormat.empty();
}

bool FindMatcher::MayFit(int32_t row) const {
    if (row < 0 || all_ == 0) return false;
    const Bits missing = all_ & ~events_[static_cast<size_t>(row)];
    return (missing & ~(byObject_ | (HasText(row) ? byText_ : 0))) == 0;
}

bool FindMatcher::ReadsText(int32_t row) const {
    return MayFit(row) && HasText(row) && (all_ & ~events_[static_cast<size_t>(row)] & byText_) != 0;
}

bool FindMatcher::Fits(const EventRecord& event, int32_t row, uint32_t object) {
    if (row < 0 || all_ == 0) return false;
    Bits missing = all_ & ~events_[static_cast<size_t>(row)];
    if (missing != 0) missing &= ~BitsOfObject(object);
    return missing == 0 || ((missing & ~byText_) == 0 && FitsText(event, row, missing));
}

bool FindMatcher::FitsStatus(uint32_t object, int32_t row) {
    const Bits byName = row < 0 ? 0 : statuses_[static_cast<size_t>(row)];
    return byName != 0 && (all_ & ~byName & ~BitsOfObject(object)) == 0;
}

bool FindMatcher::MayFitStatus(uint32_t object) {
    for (size_t row = 0; wantsStatuses_ && row < statuses_.size(); ++row)
        if (FitsStatus(object, static_cast<int32_t>(row))) return true;
    return false;
}

std::vector<int32_t> FindMatcher::EventRows() const {
    std::vector<int32_t> rows;
    for (size_t row = 0; row < events_.size(); ++row)
        if (events_[row] != 0) rows.push_back(static_cast<int32_t>(row));
    return rows;
}

std::vector<int32_t> FindMatcher::StatusRows() const {
    std::vector<int32_t> rows;
    for (size_t row = 0; row < statuses_.size(); ++row)
        if (statuses_[row] != 0) rows.push_back(static_cast<int32_t>(row));
    return rows;
}

std::vector<uint32_t> FindMatcher::ObjectsOf(const std::vector<uint32_t>& known) {
    std::vector<uint32_t> objects;
    for (const uint32_t object : known)
        if (BitsOfObject(object) != 0) objects.push_back(object);
    return objects;
}

// The walk over one stretch of the trace. Objects are followed only where statuses are wanted.
struct FindWalk::Part {
    Part(FindWalk& of, const Stretch& stretch, std::vector<uint32_t> objects)
        : source(of.source_),
          matcher(of.matcher_),
          hits(of.HitsOf(stretch.place)),
          low(source.clock.TimeOf(stretch.from)),
          high(source.clock.TimeOf(stretch.to)),
          followed(std::move(objects)),
          walk(source, low, high, followed.empty() ? nullptr : &state, Wanted()),
          at(low) {
        if (followed.empty()) return;
        tracker.emplace(source, state, followed, Follow::Changes);
        // What is in force there begins there only where the trace does.
        if (!walk.gap()) Look(stretch.from == of.first_, low);
    }
    // What may be passed over: nothing, where the extra data of some event matters.
    std::optional<LaneWants> Wanted() {
        const Legend& legend = *source.legend;
        for (size_t row = 0; row < legend.events.size(); ++row)
            if (matcher.ReadsText(static_cast<int32_t>(row))) return std::nullopt;
        const auto changes = followed.empty() ? LaneWants::Changes::PassedOver : LaneWants::Changes::Given;
        return LaneWants{changes,
                         [this](uint16_t type, uint16_t subtype) {
                             return matcher.MayFit(source.legend->EventIndex(type, subtype));
                         },
                         {}};
    }
    void Look(bool counts, double time) {
        tracker->All([&](SearchTracker::Record& record, Cause) { return Visit(record, counts, time); });
    }
    Pass Visit(SearchTracker::Record& record, bool counts, double time) {
        if (record.status == record.now) return Pass::Goes;
        record.status = record.now;
        if (counts && matcher.FitsStatus(record.object, record.now))
            hits.push_back({time, record.object, record.now, FindKind::Status});
        return Pass::Goes;
    }
    bool next() {
        EventRecord event;
        if (!walk.next(event, at)) return false;
        if (tracker) Follow(event);
        uint16_t type = 0;
        uint32_t object = 0;
        const int32_t row = source.legend->EventIndex(event.type, event.subtype);
        // The store tells of an event too short to have an object; here there would be no end of it.
        if (event.extra.size() >= sizeof object && mt_GetEventObject(*source.store, event, type, object) &&
            matcher.Fits(event, row, object))
            hits.push_back({at, object, row, FindKind::Event});
        return true;
    }
    void Follow(const EventRecord& event) {
        // Behind a stretch that can't be read statuses begin anew, as they do in a search.
        if (walk.gap()) {
            tracker->Forget([](const SearchTracker::Record&) {});
            Look(true, at);
        }
        tracker->Take(event, state);
        tracker->Step([&](SearchTracker::Record& record, Cause) { return Visit(record, true, at); });
    }

    AnalysisSource source;
    FindMatcher& matcher;
    std::vector<FindHit>& hits;
    double low, high;
    std::vector<uint32_t> followed;
    StateTable state;
    RangeWalk walk;
    std::optional<SearchTracker> tracker;
    double at;
};

FindWalk::FindWalk(const AnalysisSource& source, const ObjectNames& names, FindQuery query, double low,
                   double high)
    : source_(source), matcher_(source_, names, std::move(query)) {
    source_.progress = {};
    const TimeBase& clock = source_.clock;
    first_ = clock.NearestTick(0);
    last_ = clock.NearestTick(source_.totalLength);
    const mt_Time from = std::clamp(clock.NearestTick(low), first_, last_);
    const mt_Time to = std::clamp(clock.NearestTick(high), from, last_);
    left_.push_back({from, to, Place::View, false});
    if (to < last_) left_.push_back({to + 1, last_, Place::After, false});
    if (from > first_) left_.push_back({first_, from - 1, Place::Before, false});
    over_ = source_.store == nullptr || source_.legend->empty();
    if (!over_) Begin();
}

FindWalk::~FindWalk() = default;

std::vector<FindHit>& FindWalk::HitsOf(Place place) {
    switch (place) {
        case Place::Before:
            return before_;
        case Place::View:
            return view_;
        case Place::After:
            break;
    }
    return after_;
}

// The next stretch, if any is left.
void FindWalk::Begin() {
    if (part_) {
        viewDone_ = true;
        looked_ += source_.clock.TicksIn(part_->high - part_->low) + 1;
        damaged_ = damaged_ || part_->walk.end().damaged;
        part_.reset();
    }
    over_ = left_.empty() || Full();
    if (over_) return;
    const Stretch next = left_.front();
    left_.pop_front();
    const double low = source_.clock.TimeOf(next.from), high = source_.clock.TimeOf(next.to);
    if (next.anew)
        for (std::vector<FindHit>* hits : {&before_, &view_, &after_})
            std::erase_if(*hits, [low](const FindHit& hit) { return hit.time >= low; });
    std::vector<uint32_t> followed;
    if (matcher_.WantsStatuses())
        for (const uint32_t object : analysis_ObjectsAlive(source_, low, high))
            if (matcher_.MayFitStatus(object)) followed.push_back(object);
    part_ = std::make_unique<Part>(*this, next, std::move(followed));
}

bool FindWalk::Step(uint32_t events) {
    for (uint32_t i = 0; i < events && !over_; ++i)
        if (Full() || !part_->next()) Begin();
    return !over_;
}

// Events at the last tick may have come later than others there: that tick is looked at anew.
void FindWalk::Extend(double totalLength) {
    const mt_Time end = source_.clock.NearestTick(totalLength);
    if (source_.store == nullptr || source_.legend->empty() || end <= last_ || Full()) return;
    source_.totalLength = totalLength;
    if (!left_.empty() && left_.back().anew)
        left_.back().to = end;
    else
        left_.push_back({last_ > first_ ? last_ - 1 : first_, end, Place::After, true});
    last_ = end;
    if (over_) Begin();
}

double FindWalk::Share() const {
    const double all = static_cast<double>(last_ - first_) + 1;
    if (over_) return 1;
    return std::min(1.0, (looked_ + source_.clock.TicksIn(part_->at - part_->low)) / all);
}

const FindHit& FindWalk::hit(size_t number) const {
    if (number < before_.size()) return before_[number];
    number -= before_.size();
    return number < view_.size() ? view_[number] : after_[number - view_.size()];
}

std::vector<double> FindWalk::Times() const {
    std::vector<double> times;
    times.reserve(count());
    for (const std::vector<FindHit>* hits : {&before_, &view_, &after_})
        for (const FindHit& hit : *hits) times.push_back(hit.time);
    return times;
}

size_t FindWalk::FirstFrom(double time) const {
    size_t low = 0, high = count();
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (hit(middle).time < time)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}
