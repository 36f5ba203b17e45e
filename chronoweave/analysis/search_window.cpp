#include "chronoweave/analysis/search_window.h"

#include <algorithm>
#include <climits>
#include <numeric>
#include <optional>
#include <unordered_map>

#include "chronoweave/analysis/canvas_windows.h"
#include "chronoweave/analysis/histogram.h"
#include "chronoweave/analysis/row_limit.h"
#include "chronoweave/analysis/table_text.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/found_times.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/busy.h"
#include "windlib/dialog/host.h"

// What stands behind a result window while it is open. A row's id in the list is its place in the result.
class SearchWindow : public HitSource {
  public:
    SearchWindow(std::shared_ptr<SearchDesk> desk, std::shared_ptr<CanvasFacts> facts, SearchResult result,
                 DialogModel& model)
        : desk_(std::move(desk)),
          facts_(std::move(facts)),
          canvas_(facts_->canvas),
          result_(std::move(result)),
          model_(model),
          columns_(search_Columns(facts_->words, result_.request)),
          limit_(canvas_) {
        Fill();
        if (Spans()) {
            model.setChecked("log_lengths", desk_->scale == HistogramScale::Logarithmic);
            ShowLengths();
        }
        OrderHits();
        Lead();
    }

    void Menu(const std::string& command);
    void RowClick(int row) {
        if (const SearchRow* one = RowAt(row)) Show(*one);
    }
    void Activate(int row);
    void RowMenu(int row);
    void Picture(int x);
    void Check(const std::string& name, bool on);
    void MarkHits() override;
    bool StepHit(bool forward) override;
    void Close();

  private:
    bool Spans() const {
        return result_.request.kind == Search_Pattern || result_.request.kind == Search_Status;
    }
    const SearchRow* RowAt(int row) const {
        const MScrollList& list = model_.list("list");
        if (row < 0 || row >= list.RowCount()) return nullptr;
        return &result_.rows[static_cast<size_t>(list.RowId(row))];
    }
    double Length(const SearchRow& row) const {
        return analysis_ShownOnTick(facts_->words, row.timeB - row.timeA);
    }
    void Fill();
    void SetKey(MScrollList& list, int column, SearchColumnKind kind);
    std::function<uint64_t(uint64_t)> NameKey() const;
    void ShowLengths();
    void OrderHits();
    void Lead();
    void LimitRows(bool on);
    void Show(const SearchRow& row);
    void MoveTo(double time, uint32_t object);

    std::shared_ptr<SearchDesk> desk_;
    std::shared_ptr<CanvasFacts> facts_;
    _LaCanvasData& canvas_;
    SearchResult result_;
    DialogModel& model_;
    std::vector<SearchColumn> columns_;
    RowLimit limit_;
    Histogram histogram_;
    int histogramWidth_ = 0;      // as last painted
    bool closed_ = false;         // what the user did to the window ahead of its end may still come
    std::vector<uint32_t> hits_;  // rows of the result, by timeA; as canvas_.marks.hits while this leads
    std::optional<size_t> hit_;   // last shown by a step
};

void SearchWindow::Fill() {
    const AnalysisWords& words = facts_->words;
    model_.setTitle(text_utf8(search_ResultTitle(*words.legend, result_.request, canvas_.source.canvasName,
                                                 canvas_.source.sourceFile)));
    model_.setText("t_stat", search_StatisticsLine(words, result_));
    std::vector<std::string> titles;
    for (const SearchColumn& column : columns_) titles.push_back(column.title);
    model_.setColumnTitles("list", titles);
    MScrollList& list = model_.list("list");
    MslLazyRows rows;
    rows.text = [this](uint32_t id, int column) {
        return text_utf8(
            search_CellText(facts_->words, result_.rows[id], columns_[static_cast<size_t>(column)].kind));
    };
    list.SetLazyRows(std::move(rows),
                     static_cast<int>(std::min<size_t>(result_.rows.size(), static_cast<size_t>(INT_MAX))));
    for (size_t i = 0; i < columns_.size(); ++i) SetKey(list, static_cast<int>(i), columns_[i].kind);
}

void SearchWindow::SetKey(MScrollList& list, int column, SearchColumnKind kind) {
    const auto number = [&](auto&& value) {
        list.SetRightAligned(column, true);
        list.SetNumberKey(column, [this, value](uint64_t id) { return value(result_.rows[id]); });
    };
    switch (kind) {
        case SearchColumnKind::ObjectId:
        case SearchColumnKind::FromObject:
            return list.SetUnsignedKey(column, [this](uint64_t id) { return result_.rows[id].objectA; });
        case SearchColumnKind::ToObject:
            return list.SetUnsignedKey(column, [this](uint64_t id) { return result_.rows[id].objectB; });
        case SearchColumnKind::Time:
        case SearchColumnKind::FromTime:
            return number([](const SearchRow& row) { return row.timeA; });
        case SearchColumnKind::ToTime:
            return number([](const SearchRow& row) { return row.timeB; });
        case SearchColumnKind::Interval:
            return number([](const SearchRow& row) { return row.timeB - row.timeA; });
        case SearchColumnKind::ObjectName:
            return list.SetUnsignedKey(column, NameKey());
    }
}

// Names sort as texts: by their rank among the names, which are few.
std::function<uint64_t(uint64_t)> SearchWindow::NameKey() const {
    std::vector<std::pair<std::string, uint32_t>> sorted;
    for (const auto& [object, name] : facts_->names.all()) sorted.emplace_back(name, object);
    std::sort(sorted.begin(), sorted.end());
    std::unordered_map<uint32_t, uint64_t> ranks;
    uint64_t rank = 0;
    for (size_t i = 0; i < sorted.size(); ++i) {
        if (i == 0 || sorted[i].first != sorted[i - 1].first) ++rank;
        ranks[sorted[i].second] = rank;
    }
    return [this, ranks = std::move(ranks)](uint64_t id) {
        const auto found = ranks.find(result_.rows[id].objectA);
        return found == ranks.end() ? 0 : found->second;
    };
}

void SearchWindow::ShowLengths() {
    std::vector<double> lengths;
    lengths.reserve(result_.rows.size());
    for (const SearchRow& row : result_.rows) lengths.push_back(Length(row));
    histogram_ = Histogram(std::move(lengths), desk_->scale);
    model_.setText("t_lengths", histogram_.text(facts_->words.unit));
    model_.setPainter("histogram", [this](Surface& surface, int w, int h) {
        histogramWidth_ = w;
        histogram_.draw(surface, w, h);
    });
}

void SearchWindow::OrderHits() {
    hits_.resize(result_.rows.size());
    std::iota(hits_.begin(), hits_.end(), 0);
    std::stable_sort(hits_.begin(), hits_.end(), [this](uint32_t a, uint32_t b) {
        return result_.rows[a].timeA < result_.rows[b].timeA;
    });
}

// From now on this result's rows are the hits.
void SearchWindow::Lead() {
    if (!closed_) desk_->hits.Lead(*this);
}

void SearchWindow::MarkHits() {
    std::vector<double> times;
    times.reserve(hits_.size());
    for (const uint32_t row : hits_) times.push_back(result_.rows[row].timeA);
    laCanvas_Paint(canvas_, [&] { laHits_Set(canvas_, std::move(times)); });
}

// A click on a bar selects the rows that it stands for.
void SearchWindow::Picture(int x) {
    const size_t bar = histogram_.BarAt(x, histogramWidth_);
    if (bar >= histogram_.counts().size()) return;
    MScrollList& list = model_.list("list");
    std::vector<int> rows;
    for (int row = 0; row < list.RowCount(); ++row)
        if (histogram_.BarOf(Length(*RowAt(row))) == bar) rows.push_back(row);
    list.SelectRows(rows);
    if (!rows.empty()) list.ScrollToRow(rows.front());
}

void SearchWindow::Show(const SearchRow& row) {
    Lead();
    laCanvas_Paint(canvas_, [&] {
        if (Spans()) {
            const double length = row.timeB - row.timeA, beside = length / 6;
            const auto seen = [this](double time) {
                return time >= canvas_.view.viewLow && time <= canvas_.view.viewHigh;
            };
            if (!(seen(row.timeA) && seen(row.timeB)) && length > 0)
                laCanvas_Zoom(canvas_, beside < row.timeA ? row.timeA - beside : 0,
                              std::min(row.timeB + beside, canvas_.source.totalLength));
        }
        laCanvas_SetSelection(canvas_, std::max(0.0, row.timeA),
                              std::max(0.0, Spans() ? row.timeB : row.timeA));
        laCanvas_Reveal(canvas_, row.timeA, row.objectA);
    });
    const std::string message = search_InvisibleMessage(canvas_.looks.legend, result_.request);
    if (!message.empty()) laCanvas_Refuse(canvas_, text_utf8(message));
}

void SearchWindow::MoveTo(double time, uint32_t object) {
    Lead();
    laCanvas_Paint(canvas_, [&] { laCanvas_GoTo(canvas_, time, object); });
}

void SearchWindow::Activate(int row) {
    const SearchRow* one = RowAt(row);
    if (!one) return;
    if (!Spans()) return MoveTo(one->timeA, one->objectA);
    const auto column = static_cast<size_t>(model_.list("list").CurrentColumn());
    const auto kind = column < columns_.size() ? columns_[column].kind : SearchColumnKind::Interval;
    if (kind == SearchColumnKind::FromTime) return MoveTo(one->timeA, one->objectA);
    if (kind == SearchColumnKind::ToTime) return MoveTo(one->timeB, one->objectB);
    Show(*one);
}

void SearchWindow::RowMenu(int row) {
    const SearchRow* one = RowAt(row);
    if (!one) return;
    const SearchRow chosen = *one;
    std::vector<PopUpRow> rows;
    if (result_.request.kind == Search_Event)
        rows = {{"&Show Event"}, {popUpSeparator}, {"&Move Cursor to Event"}};
    else
        rows = {{"&Show Interval"},
                {popUpSeparator},
                {"Move Cursor to Start &Point"},
                {"Move Cursor to &End Point"}};
    const int answer = canvas_.calls.host->popUpMenu("Operations", rows);
    if (model_.isClosed()) return;
    if (answer == 0) Show(chosen);
    if (answer == 2) MoveTo(chosen.timeA, chosen.objectA);
    if (answer == 3) MoveTo(chosen.timeB, chosen.objectB);
}

void SearchWindow::Menu(const std::string& command) {
    table_Menu(model_, *canvas_.calls.host, {"list", {"list"}, "search.csv", canvas_.calls.progress},
               command);
}

void SearchWindow::Check(const std::string& name, bool on) {
    if (closed_) return;
    if (name == "only_rows") return LimitRows(on);
    desk_->scale = on ? HistogramScale::Logarithmic : HistogramScale::Linear;
    ShowLengths();
    model_.repaint("histogram");
}

void SearchWindow::LimitRows(bool on) {
    if (!on) {
        if (desk_->limiting == this) desk_->limiting = nullptr;
        return limit_.Lift();
    }
    if (SearchWindow* other = desk_->limiting; other != nullptr && other != this) {
        other->model_.setChecked("only_rows", false);
        other->limit_.Lift();
    }
    desk_->limiting = this;
    std::vector<uint32_t> shown;
    for (const SearchRow& row : result_.rows) {
        if (shown.empty() || shown.back() != row.objectA) shown.push_back(row.objectA);
        if (result_.request.kind != Search_Event && row.objectB != row.objectA) shown.push_back(row.objectB);
    }
    std::vector<RowLimit::Named> all;
    for (const uint32_t object : facts_->objects) all.push_back({object, facts_->names.find(object)});
    limit_.Set(shown, all);
}

bool SearchWindow::StepHit(bool forward) {
    const auto next = laHits_Next(canvas_, hit_, forward);
    if (!next) {
        laCanvas_Refuse(canvas_, forward ? "There is no later hit." : "There is no earlier hit.");
        return false;
    }
    hit_ = next;
    const uint32_t id = hits_[*next];
    MScrollList& list = model_.list("list");
    const int row = list.RowOfId(id);
    list.SelectOnly(row);
    list.ScrollToRow(row);
    laCanvas_UpdateFields(canvas_, 0, gen_format("Hit %zu of %zu.", *next + 1, hits_.size()).c_str());
    Show(result_.rows[id]);
    return true;
}

void SearchWindow::Close() {
    closed_ = true;
    if (desk_->limiting == this) desk_->limiting = nullptr;
    limit_.Lift();
    desk_->hits.Leave(canvas_, *this);
}

int search_OpeningLetters(const AnalysisWords& words, const SearchResult& result) {
    constexpr size_t mostRows = 1000;
    constexpr int most = 200, besideText = 3, scrollBar = 6;
    const size_t step = std::max<size_t>(1, result.rows.size() / mostRows);
    int letters = scrollBar;
    for (const SearchColumn& column : search_Columns(words, result.request)) {
        size_t widest = text_utf8(column.title).size();
        for (size_t row = 0; row < result.rows.size(); row += step)
            widest =
                std::max(widest, text_utf8(search_CellText(words, result.rows[row], column.kind)).size());
        letters += besideText + static_cast<int>(std::min<size_t>(widest, most));
    }
    return std::clamp(letters, search_LeastLetters, most);
}

void search_OpenResult(const std::shared_ptr<SearchDesk>& desk, const std::shared_ptr<CanvasFacts>& facts,
                       SearchResult result) {
    const int kind = result.request.kind;
    auto made = std::make_unique<DialogModel>(search_ResultWindow(
        kind == Search_Pattern || kind == Search_Status, search_OpeningLetters(facts->words, result)));
    DialogModel& model = *made;
    auto window = std::make_shared<SearchWindow>(desk, facts, std::move(result), model);
    model.onMenu = [window](const std::string& command) { window->Menu(command); };
    model.onPress = [&model](const std::string&) { model.close(Dialog_Dismissed); };
    model.onCheck = [window](const std::string& name, bool on) { window->Check(name, on); };
    model.onPicture = [window](const std::string&, int x, int) { window->Picture(x); };
    // A double click comes as clicks 1 and 2, and as an activation.
    model.onRowClick = [window](const std::string&, int row, int, int clicks) {
        if (clicks == 1) window->RowClick(row);
    };
    model.onActivate = [window](const std::string&, int row) { window->Activate(row); };
    model.onRowMenu = [window](const std::string&, int row, int) { window->RowMenu(row); };
    analysis_OpenWindow(facts->canvas, CanvasWindow::View, std::move(made), [window] { window->Close(); });
}

void search_RunAndShow(const std::shared_ptr<SearchDesk>& desk, const std::shared_ptr<CanvasFacts>& facts,
                       SearchRequest request) {
    _LaCanvasData& canvas = facts->canvas;
    SearchResult result;
    {
        const BusyWork busy(GateWork::Search, dialog_Busy(*canvas.calls.host));
        if (!search_Run(facts->source, std::move(request), result)) return;
    }
    const Legend& legend = *facts->words.legend;
    std::string message;
    if (result.rows.empty()) {
        laCanvas_Beep(canvas);
        message = search_NotFoundMessage(legend, result.request);
    } else {
        message = search_FoundMessage(legend, result);
    }
    std::string end =
        analysis_EndText(*facts, result.stopped, result.reached, result.damaged ? &result.lost : nullptr);
    if (message.empty() && result.stopped) end = "The search was" + end.substr(std::string(" It was").size());
    message += message.empty() && !end.empty() && end[0] == ' ' ? end.substr(1) : end;
    if (!message.empty()) laCanvas_UpdateFields(canvas, 0, text_utf8(message).c_str());
    if (!result.rows.empty()) search_OpenResult(desk, facts, std::move(result));
}

bool search_StepHit(_LaCanvasData& canvas, SearchDesk& desk, bool forward) {
    if (HitSource* leading = desk.hits.leading()) return leading->StepHit(forward);
    laCanvas_Refuse(canvas, "There is no search result.");
    return false;
}
