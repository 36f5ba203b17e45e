#include "chronoweave/analysis/report_window.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "chronoweave/analysis/canvas_windows.h"
#include "chronoweave/analysis/table_text.h"
#include "chronoweave/engine/report_texts.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/busy.h"
#include "windlib/dialog/host.h"

namespace {

constexpr const char* widestShare = "999.9%";
constexpr int widestBar = 100;
constexpr int barHeight = 9, barLeft = 1, barGap = 3;

// A table whose rows never change. A row's id is its place.
struct BarTable {
    struct Row {
        std::vector<std::string> texts;
        std::vector<double> shares;        // by column; negative: no bar
        int32_t colourOf = -1;             // status whose colour the bars have as they are drawn
        uint64_t order = 0;                // of the first column
        std::vector<double> numbers = {};  // that the other columns sort by; empty: the rows don't sort
    };
    std::vector<std::vector<std::string>> titles;  // by column, a text for each row of the header
    std::vector<int> barColumns, numberColumns;
    std::vector<Row> rows;
};

BarTable::Row row_of(const ReportRow& row) {
    BarTable::Row made;
    for (const std::string& text : row.texts) made.texts.push_back(text_utf8(text));
    made.shares = {-1, -1, row.countFraction, -1, row.timeFraction};
    made.colourOf = row.colourOf;
    return made;
}

// Puts a table into a list, which keeps it. The legend is the canvas's and outlives its windows.
void fill(DialogModel& model, const char* name, const Legend& legend, BarTable filled) {
    const auto table = std::make_shared<BarTable>(std::move(filled));
    MScrollList& list = model.list(name);
    const auto columns = static_cast<int>(table->titles.size());
    std::vector<std::string> first;
    for (const auto& titles : table->titles) first.push_back(titles.front());
    model.setColumnTitles(name, first);
    list.SetHeaderRows(static_cast<int>(table->titles.front().size()));
    for (int column = 0; column < columns; ++column) {
        const auto& titles = table->titles[static_cast<size_t>(column)];
        for (size_t i = 0; i < titles.size(); ++i) list.SetHeader(static_cast<int>(i), column, titles[i]);
    }
    MslLazyRows rows;
    rows.text = [table](uint32_t id, int column) {
        return table->rows[id].texts[static_cast<size_t>(column)];
    };
    list.SetLazyRows(std::move(rows), static_cast<int>(table->rows.size()));
    list.sortByHeader = !table->rows.empty() && !table->rows.front().numbers.empty();
    for (int column = 0; list.sortByHeader && column < columns; ++column) {
        const auto at = static_cast<size_t>(column);
        if (column == 0)
            list.SetUnsignedKey(0, [table](uint64_t id) { return table->rows[id].order; });
        else
            list.SetNumberKey(column, [table, at](uint64_t id) { return table->rows[id].numbers[at]; });
    }
    for (const int column : table->barColumns) list.SetOwnerDrawn(column, true);
    for (const int column : table->numberColumns) list.SetRightAligned(column, true);
    list.drawCell = [table, &list, &legend](Surface& surface, int x, int y, int, int h, int row, int column,
                                            bool) {
        const BarTable::Row& drawn = table->rows[static_cast<size_t>(list.RowId(row))];
        report_DrawBar(surface, x, y, h, drawn.shares[static_cast<size_t>(column)],
                       report_BarColour(legend, drawn.colourOf));
    };
    // Bars need a fixed room: that of a full bar and the widest text.
    list.viewResized = [table, &list](int) {
        if (!list.measure) return;
        for (const int column : table->barColumns) {
            int width = barLeft + widestBar + barGap + list.measure(widestShare, false);
            for (const std::string& title : table->titles[static_cast<size_t>(column)])
                width = std::max(width, list.measure(title, true));
            if (!list.Column(column).widthFixed) list.SetWidth(column, width + list.cellMargin);
        }
    };
}

BarTable load_table(const AnalysisWords& words, const LoadReport& load) {
    BarTable table;
    table.titles = {{"Processor"}, {"Time (in " + words.unit + "s)"}, {"Percent of Time"}};
    table.barColumns = {2};
    table.numberColumns = {1};
    const auto add = [&](std::string name, double time) {
        const double share = load.RangeLength() > 0 ? time / load.RangeLength() : -1;
        table.rows.push_back(
            {{std::move(name), analysis_TimeText(words, time, 6), report_BarText(share)}, {-1, -1, share}});
    };
    for (const ProcessorLoad& processor : load.processors) {
        add(gen_format("Processor %u", processor.processor), processor.busy);
        for (const ObjectTime& object : processor.objects) {
            std::string name = "  " + words.term + gen_format(" 0x%x", object.object);
            if (const std::string* known = words.names->find(object.object))
                name += " (" + text_utf8(*known) + ')';
            add(std::move(name), object.time);
        }
    }
    return table;
}

void show_load(DialogModel& model, const AnalysisWords& words, const LoadReport& load, bool idleLeftOut) {
    model.setText("t_load", report_LoadTitle(words, idleLeftOut));
    fill(model, "load", *words.legend, load_table(words, load));
}

std::string title_of(const CanvasFacts& facts) {
    return text_utf8(report_WindowTitle(facts.canvas.source.canvasName));
}

// Opens a filled window: its menu, and its place among the canvas's windows. table is the described list.
void open(const std::shared_ptr<CanvasFacts>& facts, std::unique_ptr<DialogModel> made, const char* table) {
    DialogModel& model = *made;
    _LaCanvasData& canvas = facts->canvas;
    model.setTitle(title_of(*facts));
    model.onPress = [&model](const std::string&) { model.close(Dialog_Dismissed); };
    model.onMenu = [&model, &canvas, table](const std::string& command) {
        table_Menu(model, *canvas.calls.host, {table, {table, "load"}, "report.csv", canvas.calls.progress},
                   command);
    };
    analysis_OpenWindow(canvas, CanvasWindow::View, std::move(made));
}

// What a walk says that did not end well. False then, and there is no window.
bool good(CanvasFacts& facts, ReportOutcome outcome) {
    if (outcome == ReportOutcome::NoObjects)
        laCanvas_Refuse(facts.canvas, report_NoObjectsMessage(facts.words));
    return outcome == ReportOutcome::Done;
}

void tell_end(CanvasFacts& facts, bool stopped, double reached, const TimeGap* lost) {
    const std::string text = analysis_EndText(facts, stopped, reached, lost);
    if (text.empty()) return;
    const std::string message = stopped ? "The report covers a part." + text : text.substr(1);
    laCanvas_UpdateFields(facts.canvas, 0, message.c_str());
}

void set_fields(DialogModel& model, const CanvasFacts& facts, const ChosenReport& report) {
    const AnalysisWords& words = facts.words;
    const SearchRequest& request = report.request;
    const bool event = request.kind == Search_Event;
    model.setText("t_header", "Statistics for the Selected Object on the Selected " + words.term + "s");
    model.setText("t_tasknum", "Number of Selected " + words.term + "s:");
    model.setText("t_range", "Time Range for Objects is from (in " + words.unit + "):");
    model.setText("tf_objtype", report_ChosenTypeName(request.kind));
    model.setText("tf_objname", text_utf8(event ? analysis_EventName(*words.legend, request.target)
                                                : analysis_StatusName(*words.legend, request.target)));
    model.setText("tf_from", facts.Shown(report.rangeFrom, 6));
    model.setText("tf_to", facts.Shown(report.rangeTo, 6));
    model.setText("tf_timelen", facts.Shown(report.RangeLength(), 6));
    model.setText("tf_tasknum", gen_format("%zu", report.figures.size()));
    model.setText("tf_objnum", std::to_string(report.totalCount));
    model.setText("tf_sorting", std::string(report.order.increasing ? "Increasing" : "Descending") +
                                    (report.order.timeFirst ? ", Time First" : ", Number First"));
}

BarTable chosen_table(const AnalysisWords& words, const ChosenReport& report) {
    BarTable table;
    for (const std::string& title : report_ChosenColumnTitles(words)) table.titles.push_back({title});
    table.barColumns = {2, 4};
    table.numberColumns = {1, 3};
    const auto rows = report_ChosenRows(words, report);
    for (size_t i = 0; i < rows.size(); ++i) {
        const ObjectFigures& figures = *report.sorted[i];
        const auto count = static_cast<double>(figures.count);
        BarTable::Row& row = table.rows.emplace_back(row_of(rows[i]));
        row.order = figures.object;
        row.numbers = {0, count, count, figures.time, figures.time};
    }
    return table;
}

// In pixels; 0 for none.
int bar_width(double fraction) {
    return fraction > 0 ? static_cast<int>(std::floor(100 * fraction + 0.5)) : 0;
}

}  // namespace

Colour report_BarColour(const Legend& legend, int32_t status) {
    if (status < 0 || static_cast<size_t>(status) >= legend.statuses.size()) return NoColour;
    const LegendStatus& row = legend.statuses[static_cast<size_t>(status)];
    return colour_From16(row.red, row.green, row.blue);
}

void report_DrawBar(Surface& surface, int x, int y, int h, double fraction, Colour colour) {
    if (!(fraction > 0)) return;
    const int width = bar_width(fraction), left = x + barLeft;
    if (width > 0)
        surface.fillRect(left, y + (h - barHeight) / 2, width, barHeight,
                         colour == NoColour ? surface.foreground() : colour);
    const FontMetrics font = surface.fontMetrics(Font_Application);
    surface.drawText(left + width + barGap, y + (h - font.height) / 2 + font.ascent, report_BarText(fraction),
                     surface.foreground(), NoColour);
}

void report_ShowStatistics(const std::shared_ptr<CanvasFacts>& facts, const ReportRange& range,
                           std::optional<uint32_t> object) {
    LegendStatistics statistics;
    LoadReport load;
    const std::vector<uint32_t> idle = report_IdleObjects(facts->words, facts->objects);
    auto busy = std::make_optional<BusyWork>(GateWork::Report, dialog_Busy(*facts->canvas.calls.host));
    const ReportOutcome outcome =
        object ? report_OneObject(facts->source, *object, range.from, range.to, statistics)
               : report_AllObjects(facts->source, range.from, range.to, statistics);
    const bool whole = outcome == ReportOutcome::Done && !statistics.stopped;
    if (whole && report_ProcessorLoad(facts->source, idle, range.from, range.to, load) != ReportOutcome::Done)
        load = {};
    busy.reset();
    if (!good(*facts, outcome)) return;
    const AnalysisWords& words = facts->words;
    auto model = std::make_unique<DialogModel>(report_StatisticsWindow());
    model->setText("txt_title", report_Title(words, statistics, object.has_value()));
    model->setText("txt_subtitle", report_Subtitle(words, statistics));
    BarTable table;
    for (const auto& titles : report_ColumnTitles(words, object.has_value()))
        table.titles.push_back({titles[0], titles[1]});
    table.barColumns = {2, 4};
    table.numberColumns = {1, 3};
    for (const ReportRow& row : report_Rows(words, statistics, object.has_value()))
        table.rows.push_back(row_of(row));
    fill(*model, "Status", *words.legend, std::move(table));
    show_load(*model, words, load, !idle.empty());
    open(facts, std::move(model), "Status");
    tell_end(*facts, statistics.stopped || load.stopped, statistics.rangeTo,
             statistics.damaged ? &statistics.lost : nullptr);
}

void report_ShowChosen(const std::shared_ptr<CanvasFacts>& facts, const SearchRequest& request,
                       ReportOrder order) {
    ChosenReport report;
    LoadReport load;
    const std::vector<uint32_t> idle = report_IdleObjects(facts->words, facts->objects);
    auto busy = std::make_optional<BusyWork>(GateWork::Report, dialog_Busy(*facts->canvas.calls.host));
    const ReportOutcome outcome = report_ChosenObjects(facts->source, request, order, report);
    const bool whole = outcome == ReportOutcome::Done && !report.stopped;
    if (whole && report_ProcessorLoad(facts->source, idle, report.rangeFrom, report.rangeTo, load) !=
                     ReportOutcome::Done)
        load = {};
    busy.reset();
    if (!good(*facts, outcome)) return;
    auto model = std::make_unique<DialogModel>(report_ChosenWindow());
    set_fields(*model, *facts, report);
    fill(*model, "list", *facts->words.legend, chosen_table(facts->words, report));
    show_load(*model, facts->words, load, !idle.empty());
    open(facts, std::move(model), "list");
    tell_end(*facts, report.stopped || load.stopped, report.rangeTo, report.damaged ? &report.lost : nullptr);
}
