#include "chronoweave/analysis/selection_panel.h"

#include <algorithm>

#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/engine/report_texts.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/dialog/host.h"
#include "windlib/dialog/layout_builder.h"
#include "windlib/msl/object_list.h"

namespace {

constexpr size_t mostSaid = 4;  // processors on the message line

bool same(const std::optional<TimeSpan>& a, const std::optional<TimeSpan>& b) {
    return a.has_value() == b.has_value() && (!a || (a->from == b->from && a->to == b->to));
}

// In groups of three digits, as large counts are read.
std::string count_text(uint64_t count) {
    std::string text = std::to_string(count);
    for (size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
    return text;
}

std::string share_text(double part, double whole) {
    return whole > 0 ? gen_format("%.1f %%", 100 * part / whole) : std::string();
}

}  // namespace

DialogDescription selection_PanelDescription() {
    const LayoutItems rows = {"t_length", "t_wait", "copy"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"copy", "close"}, .pixels = 20}, {.pixels = 24, .letters = 32}});
    layout.leastHeight({.of = rows, .pixels = 28, .lines = 5});
    layout.firstWidths({{.pixels = 12, .letters = 54}});
    layout.firstHeight({.of = rows, .pixels = 24, .lines = 14});
    for (const char* wide : {"t_length", "t_wait", "list"}) layout.fillWidth(wide, {.gaps = 12});
    layout.fillHeight("list", {.less = rows, .gaps = 24});
    layout.left({.items = {"t_length", "t_wait", "list"}, .gap = 6});
    layout.nextRow("t_length", 6);
    layout.nextRow("t_wait", 2);
    layout.nextRow("list", 4);
    layout.right({.items = {"close"}, .gap = 6});
    layout.bottom({.items = {"close", "copy"}, .gap = 6});
    layout.leftOf({.items = {"copy"}, .of = "close", .gap = 6});
    return {.name = "SelectionPanel",
            .title = "Selection",
            .helpKey = "measure",
            .framed = false,
            .items = {item_Label("t_length", "Selection"),
                      item_Label("t_wait", "Longest ready wait"),
                      {.name = "list",
                       .kind = DialogKind::List,
                       .accessible = "Figures of the selection",
                       .flags = Dialog_Multiple,
                       .list = {"Selection", "Time", "Share"}},
                      {.name = "copy", .kind = DialogKind::Button, .text = "Copy"},
                      {.name = "close", .kind = DialogKind::Button, .text = "Close"}},
            .layout = layout.lines()};
}

SelectionPanel::SelectionPanel(_LaCanvasData& canvas)
    : canvas_(canvas), model_(selection_PanelDescription()) {
    MScrollList& list = model_.list("list");
    list.sortByHeader = false;
    for (const int column : {1, 2}) list.SetRightAligned(column, true);
    const int letter = std::max(1, canvas.graph->font.charWidth);
    constexpr int widths[] = {24, 11, 8};
    for (int column = 0; column < 3; ++column) list.SetWidth(column, widths[column] * letter);
    model_.onPress = [this](const std::string& name) {
        if (name == "copy" && canvas_.calls.host) canvas_.calls.host->copyText(Text());
        if (name == "close" && closed) closed();
    };
}

SelectionPanel::~SelectionPanel() = default;

bool SelectionPanel::IsOfTrace() const {
    return store_ == canvas_.source.store.get() && legends_ == canvas_.looks.legends;
}

// Names are read once, and again when a trace has grown.
void SelectionPanel::TakeTrace() {
    const bool grown = IsOfTrace() && facts_ && facts_->source.totalLength != canvas_.source.totalLength;
    if (IsOfTrace() && facts_ && !grown) return;
    tally_.reset();
    tallied_.reset();
    store_ = canvas_.source.store.get();
    legends_ = canvas_.looks.legends;
    facts_ = store_ ? std::make_unique<CanvasFacts>(canvas_) : nullptr;
    idle_ = facts_ ? report_IdleObjects(facts_->words, facts_->objects) : std::vector<uint32_t>();
}

bool SelectionPanel::Sync() {
    const auto selection = canvas_.source.storeHasEvents && !canvas_.looks.legend.empty()
                               ? analysis_Selection(canvas_)
                               : std::nullopt;
    const bool moved = !same(selection, wanted_) || !IsOfTrace();
    const bool had = wanted_.has_value();
    wanted_ = selection;
    if (!wanted_) {
        tally_.reset();
        tallied_.reset();
        figures_.reset();
        if (had) Say("");
        return false;
    }
    if (moved || (tally_ == nullptr && facts_ && facts_->source.totalLength != canvas_.source.totalLength))
        Begin();
    if (figures_ && timeMode_ != canvas_.axis.timeMode) Show();
    // A command begins with an empty line.
    if (figures_ && canvas_.fields.message.find_first_not_of(' ') == std::string::npos) Say(Summary());
    return tally_ != nullptr;
}

// An estimate that was begun goes on; what is wanted now is begun behind it.
void SelectionPanel::Begin() {
    TakeTrace();
    if (!facts_ || (tally_ && tallied_ && tally_->Figures() == nullptr)) return;
    const double end = canvas_.source.totalLength;
    tallied_ = wanted_;
    tally_ = std::make_unique<RangeTally>(facts_->source, idle_, std::min(wanted_->from, end),
                                          std::min(wanted_->to, end));
}

bool SelectionPanel::Step() {
    if (!tally_) return false;
    if (!IsOfTrace()) return Sync();
    const bool had = tally_->Figures() != nullptr;
    const bool more = tally_->Step();
    const RangeFigures* now = tally_->Figures();
    if (now && (!had || !more)) {
        figures_ = std::make_unique<RangeFigures>(*now);
        Show();
    }
    if (!more) tally_.reset();
    if (wanted_ && !same(tallied_, wanted_) && (now || !more)) {
        tally_.reset();
        Begin();
    }
    return tally_ != nullptr;
}

std::string SelectionPanel::Time(double time) const {
    return figures_->exact ? laCanvas_ExactTime(canvas_, time) : '~' + laCanvas_TimeText(canvas_, time);
}

std::string SelectionPanel::WaitText() const {
    if (!figures_->longestWait) return {};
    const ReadyWait& wait = *figures_->longestWait;
    const std::string* name = facts_->names.find(wait.object);
    const laItem_Line* lane = laCanvas_FindLane(canvas_.items, wait.object);
    const std::string shown = lane != nullptr && lane->hasName ? std::string(laTask_WithoutFake(lane->name))
                              : name                           ? *name
                                                               : "";
    return Time(wait.length) + " (" +
           (shown.empty() ? facts_->words.lowerTerm + gen_format(" 0x%x", wait.object) : text_utf8(shown)) +
           ')';
}

// As the picture has it: where the group of a processor's objects is its row, without the group.
std::string SelectionPanel::NameOn(const ProcessorLoad& load, uint32_t object) const {
    const auto& rows = canvas_.items.processors.list;
    const auto row = std::ranges::find(rows, load.processor, &LaProcessor::key);
    const laItem_Line* lane = laCanvas_FindLane(canvas_.items, object);
    if (row != rows.end() && !row->own && lane != nullptr && lane->listEntry != nullptr)
        return text_utf8(lane->listEntry->name);
    const std::string* name = facts_->names.find(object);
    return name ? text_utf8(*name) : facts_->words.term + gen_format(" 0x%x", object);
}

// Processors and who ran on them, longest first; then the events, most first.
void SelectionPanel::Fill() {
    const std::string mark = figures_->exact ? "" : "~";
    const double length = figures_->Length();
    rows_.clear();
    for (const ProcessorLoad& load : figures_->processors) {
        rows_.push_back(
            {"CPU " + std::to_string(load.processor), Time(load.busy), mark + share_text(load.busy, length)});
        for (const ObjectTime& one : load.objects) {
            rows_.push_back(
                {"    " + NameOn(load, one.object), Time(one.time), mark + share_text(one.time, length)});
        }
    }
    rows_.push_back({"Events", mark + count_text(figures_->events), ""});
    std::vector<size_t> kinds;
    for (size_t row = 0; row < figures_->eventCounts.size(); ++row)
        if (figures_->eventCounts[row] > 0) kinds.push_back(row);
    std::stable_sort(kinds.begin(), kinds.end(), [this](size_t a, size_t b) {
        return figures_->eventCounts[a] > figures_->eventCounts[b];
    });
    for (const size_t row : kinds)
        rows_.push_back({"    " + text_utf8(canvas_.looks.legend.events[row].name),
                         mark + count_text(figures_->eventCounts[row]),
                         mark + share_text(static_cast<double>(figures_->eventCounts[row]),
                                           static_cast<double>(figures_->events))});
}

void SelectionPanel::Show() {
    timeMode_ = canvas_.axis.timeMode;
    facts_->words.timeMode = timeMode_;
    Fill();
    MScrollList& list = model_.list("list");
    const int64_t top = list.ViewTop();
    list.HoldRepaint(true);
    list.SetLazyRows({[this](uint32_t id, int column) {
                          return id < rows_.size() ? rows_[id][static_cast<size_t>(column)] : std::string();
                      },
                      {},
                      {}},
                     static_cast<int>(rows_.size()));
    list.ScrollTo(top);
    list.HoldRepaint(false);
    const std::string unit = std::string(" ") + laTime_UnitName(canvas_.axis, true) + 's';
    model_.setText("t_length", laCanvas_ExactTime(canvas_, figures_->Length()) + unit + " selected");
    const std::string wait = WaitText();
    model_.setText("t_wait", wait.empty() ? "" : "Longest ready wait: " + wait);
    Say(Summary());
}

std::string SelectionPanel::Summary() const {
    const std::string mark = figures_->exact ? "" : "~";
    std::string text = laCanvas_ExactTime(canvas_, figures_->Length()) + ' ' +
                       laTime_UnitName(canvas_.axis, true) + "s selected: " + mark +
                       count_text(figures_->events) + (figures_->events == 1 ? " event" : " events");
    for (size_t i = 0; i < figures_->processors.size() && i < mostSaid; ++i) {
        const ProcessorLoad& load = figures_->processors[i];
        text += gen_format(", CPU %u ", load.processor) + mark + share_text(load.busy, figures_->Length());
    }
    if (figures_->processors.size() > mostSaid) text += ", ...";
    if (const std::string wait = WaitText(); !wait.empty()) text += "; longest ready wait " + wait;
    if (figures_->damaged) text += "; some of it can't be read";
    return text;
}

// What others said stays on the message line.
void SelectionPanel::Say(const std::string& text) {
    const std::string& now = canvas_.fields.message;
    const bool ours = now == said_ || now.find_first_not_of(' ') == std::string::npos;
    said_ = text;
    if (ours && now != text) laCanvas_UpdateFields(canvas_, 0, text.c_str());
}

std::string SelectionPanel::Text() const {
    if (!figures_) return {};
    std::string text;
    for (const char* label : {"t_length", "t_wait"})
        if (const std::string& line = model_.item(label).text; !line.empty()) text += line + '\n';
    for (const Cells& row : rows_) {
        text += row[0].substr(std::min(row[0].size(), row[0].find_first_not_of(' '))) + '\t' + row[1];
        text += row[2].empty() ? "\n" : '\t' + row[2] + '\n';
    }
    return text;
}
