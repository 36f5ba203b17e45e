#include "chronoweave/analysis/find_line.h"

#include <algorithm>
#include <cmath>

#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/search_window.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/found_times.h"
#include "chronoweave/traxfunc/input/goto.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/dialog/host.h"
#include "windlib/dialog/layout_builder.h"

namespace {

constexpr uint32_t sliceEvents = 8192;

DialogItem button(const char* name, const char* text) {
    return {.name = name, .kind = DialogKind::Button, .text = text};
}

bool same_selection(const double (&one)[2], const double (&other)[2]) {
    return one[0] == other[0] && one[1] == other[1];
}

}  // namespace

DialogDescription find_LineDescription() {
    const LayoutItems others = {"t_find", "find", "previous", "next", "search", "close"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = others, .pixels = 60, .letters = 16}});
    layout.firstWidths({{.letters = 120}});
    layout.onlyHeight({.of = {"previous"}, .pixels = 8});
    layout.width("find", {.pixels = 24, .letters = 32});
    layout.fillWidth("ts_info", {.less = others, .gaps = 52});
    layout.left({.items = {"t_find"}, .gap = 6});
    layout.top({.items = {"previous"}, .gap = 4});
    layout.inRow({"t_find", "find", "previous", "next"}, 6);
    layout.inRow({"next", "ts_info"}, 10);
    layout.inRow({"ts_info", "search", "close"}, 6);
    layout.middle({"t_find", "find", "next", "ts_info", "search", "close"}, "previous");
    return {.name = "FindLine",
            .title = "Find",
            .helpKey = "find",
            .framed = false,
            .items = {item_Label("t_find", "Find:", "find"),
                      {.name = "find",
                       .kind = DialogKind::TextField,
                       .accessible = "Find",
                       .room = std::string(20, 'n'),
                       .hint = "Text, event, task, status or time"},
                      button("previous", "Previous"),
                      button("next", "Next"),
                      {.name = "ts_info",
                       .kind = DialogKind::StatusText,
                       .accessible = "What was found",
                       .room = "00000 of 00000"},
                      button("search", "Search..."),
                      button("close", "Close")},
            .layout = layout.lines()};
}

FindLine::FindLine(_LaCanvasData& canvas, std::shared_ptr<SearchDesk> desk)
    : canvas_(canvas), desk_(std::move(desk)), model_(find_LineDescription()) {
    model_.onEdit = [this](const std::string&, const std::string&) { Start(); };
    model_.onPress = [this](const std::string& name) {
        if (name == "close") return Close();
        if (name == "search") return Menu();
        StepHit(name == "next");
    };
}

FindLine::~FindLine() {
    desk_->hits.Forget(*this);
}

bool FindLine::IsOfTrace() const {
    return store_ == canvas_.source.store.get() && legends_ == canvas_.looks.legends;
}

void FindLine::TakeTrace() {
    if (IsOfTrace()) return;
    Drop();
    store_ = canvas_.source.store.get();
    legends_ = canvas_.looks.legends;
    namedTo_.reset();
}

// A trace that has grown may have objects that it had not.
void FindLine::TakeNames() {
    if (namedTo_ == canvas_.source.totalLength) return;
    namedTo_ = canvas_.source.totalLength;
    names_ = store_ ? ObjectNames(*canvas_.source.store,
                                  canvas_.list.separator.empty() ? '\0' : canvas_.list.separator[0])
                    : ObjectNames();
    if (walk_) walk_->matcher().ForgetObjects();
}

void FindLine::Drop() {
    walk_.reset();
    current_.reset();
    marked_ = ahead_ = 0;
}

void FindLine::Open() {
    const bool opened = !open_;
    open_ = true;
    if (opened) Start();
    if (changed) changed();
}

void FindLine::Close() {
    if (!open_) return;
    open_ = false;
    Drop();
    desk_->hits.Leave(canvas_, *this);
    if (changed) changed();
}

void FindLine::Start() {
    Drop();
    TakeTrace();
    TakeNames();
    stopped_ = false;
    const std::string typed(text_trim(model_.item("find").text));
    laGotoTarget unused;
    isTime_ = store_ != nullptr && static_cast<bool>(laGoto_Parse(canvas_, typed, unused));
    if (store_ && !isTime_ && open_ && !find_Parse(typed).empty()) {
        walk_ = std::make_unique<FindWalk>(analysis_SourceOfCanvas(canvas_), names_, find_Parse(typed),
                                           canvas_.view.viewLow, canvas_.view.viewHigh);
        desk_->hits.Lead(*this);
        MarkHits();
    } else {
        desk_->hits.Leave(canvas_, *this);
    }
    Tell();
    if (Works() && changed) changed();
}

void FindLine::Sync() {
    if (!open_) return;
    if (!IsOfTrace()) return Start();
    TakeNames();
    if (walk_) walk_->Extend(canvas_.source.totalLength);
    if (!same_selection(selection_, canvas_.marks.cursor)) Tell();
    if (Works() && changed) changed();
}

// Marks follow when the range is done that was shown, and then with each quarter more.
bool FindLine::Step() {
    if (!Works()) return false;
    if (!IsOfTrace()) {
        Start();
        return Works();
    }
    const bool viewDone = walk_->ViewDone();
    const bool more = walk_->Step(sliceEvents);
    const size_t count = walk_->count();
    if (!more || viewDone != walk_->ViewDone() || count > marked_ + marked_ / 4 + 100) MarkHits();
    Tell();
    return more;
}

void FindLine::MarkHits() {
    if (desk_->hits.leading() != this || !walk_) return;
    const size_t ahead = walk_->CountAhead();
    if (current_) *current_ += ahead - ahead_;
    ahead_ = ahead;
    marked_ = walk_->count();
    laCanvas_Paint(canvas_, [&] { laHits_Set(canvas_, walk_->Times()); });
}

size_t FindLine::InSelection() const {
    const auto span = analysis_Selection(canvas_);
    if (!walk_ || !span) return 0;
    const TimeBase& clock = canvas_.source.clock;
    return walk_->FirstFrom(std::nextafter(clock.OnTick(span->to), HUGE_VAL)) -
           walk_->FirstFrom(clock.OnTick(span->from));
}

std::string FindLine::CountText() const {
    if (isTime_) return "Enter goes there";
    if (!walk_) return {};
    const size_t count = walk_->count();
    std::string text = count == 0 && walk_->Over() ? "Nothing found"
                       : current_                  ? gen_format("%zu of %zu", *current_ + 1, count)
                                                   : gen_format("%zu found", count);
    if (walk_->Full()) text += " and more";
    if (analysis_Selection(canvas_)) text += gen_format(", %zu in the selection", InSelection());
    if (!walk_->Over())
        text +=
            stopped_ ? ", stopped" : gen_format(", %d %% searched", static_cast<int>(100 * walk_->Share()));
    if (walk_->Damaged()) text += "; some of the trace can't be read";
    return text;
}

void FindLine::Tell() {
    std::copy(std::begin(canvas_.marks.cursor), std::end(canvas_.marks.cursor), selection_);
    if (const std::string text = CountText(); text != model_.message()) model_.setMessage(text);
}

std::string FindLine::HitText(const FindHit& hit) const {
    const Legend& legend = canvas_.looks.legend;
    const std::string what = hit.kind == FindKind::Event ? analysis_EventName(legend, hit.row)
                                                         : analysis_StatusName(legend, hit.row);
    const std::string* name = names_.find(hit.object);
    return text_utf8(what) + " of " +
           (name ? text_utf8(*name) : canvas_.list.objectTermLower + gen_format(" 0x%x", hit.object)) +
           " at " + laCanvas_ExactTime(canvas_, hit.time) + ' ' + laTime_UnitName(canvas_.axis, true) + 's';
}

bool FindLine::StepHit(bool forward) {
    if (!walk_ || !IsOfTrace()) {
        laCanvas_Refuse(canvas_, "Nothing is looked for.");
        return false;
    }
    desk_->hits.Lead(*this);
    if (marked_ != walk_->count()) MarkHits();
    const auto next = laHits_Next(canvas_, current_, forward);
    if (!next) {
        laCanvas_Refuse(canvas_, forward ? "There is no later hit." : "There is no earlier hit.");
        return false;
    }
    current_ = next;
    const FindHit hit = walk_->hit(*next);
    laCanvas_UpdateFields(
        canvas_, 0,
        gen_format("Hit %zu of %zu: %s.", *next + 1, walk_->count(), HitText(hit).c_str()).c_str());
    laCanvas_Paint(canvas_, [&] {
        laCanvas_SetSelection(canvas_, std::max(0.0, hit.time), std::max(0.0, hit.time));
        laCanvas_Reveal(canvas_, hit.time, hit.object);
    });
    Tell();
    return true;
}

bool FindLine::Enter(bool forward) {
    if (!isTime_) return StepHit(forward);
    const std::string typed = model_.item("find").text;
    bool shown = false;
    laCanvas_Paint(canvas_, [&] {
        shown = laCanvas_GotoText(canvas_, typed);
        laGotoTarget target;
        if (shown && laGoto_Parse(canvas_, typed, target) && !target.high)
            laCanvas_MoveCursor(canvas_, 0, target.low);
    });
    return shown;
}

void FindLine::Escape() {
    if (!Works()) return Close();
    stopped_ = true;
    MarkHits();
    Tell();
}

// ---- The dialogs

SearchSeed FindLine::Seed() {
    SearchSeed seed;
    seed.range = analysis_Selection(canvas_);
    TakeTrace();
    if (isTime_ || !store_) return seed;
    const AnalysisSource source = analysis_SourceOfCanvas(canvas_);
    FindMatcher matcher(source, names_, find_Parse(model_.item("find").text));
    seed.objects = matcher.ObjectsOf(analysis_ObjectsAlive(source, 0, source.totalLength));
    seed.events = matcher.EventRows();
    seed.statuses = matcher.StatusRows();
    return seed;
}

void FindLine::Search(int kind) {
    SearchSeed seed = Seed();
    seed.kind = kind;
    const auto facts = std::make_shared<CanvasFacts>(canvas_);
    if (auto request = search_Ask(*facts, seed)) search_RunAndShow(desk_, facts, std::move(*request));
}

void FindLine::Menu() {
    if (!canvas_.source.store || !canvas_.calls.host) return;
    static const std::vector<PopUpRow> rows = {{"Search &Events..."},   {"Search Event &Patterns..."},
                                               {"Search &Statuses..."}, {"Search &Context Switches..."},
                                               {popUpSeparator},        {"Search &Intervals..."}};
    constexpr int kinds[] = {Search_Event, Search_Pattern, Search_Status, Search_Switch};
    const int answer = canvas_.calls.host->popUpMenu("Search", rows);
    if (answer < 0 || !canvas_.source.store) return;
    if (static_cast<size_t>(answer) < std::size(kinds)) return Search(kinds[answer]);
    const auto facts = std::make_shared<CanvasFacts>(canvas_);
    if (auto request = search_AskInterval(*facts, Seed()))
        search_RunAndShow(desk_, facts, std::move(*request));
}
