#include "chronoweave/traxfunc/print/pages.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/fetch/range_fetch.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/list/names.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "shared/libcxxutil/report.h"
#include "windlib/lagraph/recording_surface.h"

namespace {

constexpr int barWidth = 16;  // as wide as bars are on most screens; the page shows none
constexpr double unset = -100.0;

// The canvas on a graph of its own for as long as this lives: what it shows can change, and nobody sees it.
class PrintedCanvas {
  public:
    explicit PrintedCanvas(_LaCanvasData& canvas)
        : canvas_(canvas),
          graph_(*canvas.graph),
          own_(std::exchange(canvas.graph, &graph_)),
          fields_(canvas.fields),
          list_(canvas.list),
          view_(canvas.view),
          axis_(canvas.axis),
          marks_(canvas.marks),
          wanted_(std::exchange(canvas.wanted, {})),
          scrollExtent_(canvas.source.scrollExtent),
          liveRefresh_(std::exchange(canvas.source.liveRefresh, false)) {
        LaCallbacks& calls = canvas.calls;
        fieldsChanged_ = std::exchange(calls.fieldsChanged, {});
        paintWanted_ = std::exchange(calls.paintWanted, {});
        buttonsChanged_ = std::exchange(calls.buttonsChanged, {});
        progress_ = std::exchange(calls.progress, {});
        graph_.surface = nullptr;
        graph_.horizontal.onChange = graph_.vertical.onChange = nullptr;
        graph_.beep = graph_.raise = graph_.listChanged = nullptr;
        graph_.setBusy = nullptr;
        graph_.warpPointer = nullptr;
        graph_.showTip = nullptr;
        canvas.marks.cursor[0] = canvas.marks.cursor[1] = unset;
        canvas.marks.pendingCursorX = -100;
        canvas.view.pinEdges = LaPinEdges::Upper;  // what is below comes on paper where it stands
    }
    ~PrintedCanvas() {
        canvas_.list = list_;
        if (parked_) {
            canvas_.fetch.reset();
            canvas_.items = std::move(items_);
            canvas_.fetch = std::move(fetch_);
            laCanvas_Resort(canvas_);
            canvas_.list.layouts = list_.layouts + 1;  // its rows are new ones
        }
        canvas_.graph = own_;
        canvas_.fields = std::move(fields_);
        canvas_.view = std::move(view_);
        canvas_.axis = axis_;
        canvas_.marks = std::move(marks_);
        canvas_.wanted = std::move(wanted_);
        canvas_.source.scrollExtent = scrollExtent_;
        canvas_.source.liveRefresh = liveRefresh_;
        LaCallbacks& calls = canvas_.calls;
        calls.fieldsChanged = std::move(fieldsChanged_);
        calls.paintWanted = std::move(paintWanted_);
        calls.buttonsChanged = std::move(buttonsChanged_);
        calls.progress = std::move(progress_);
    }
    PrintedCanvas(const PrintedCanvas&) = delete;
    PrintedCanvas& operator=(const PrintedCanvas&) = delete;

    const Progress& progress() const { return progress_; }

    // False when the range could not be fetched.
    bool Show(double low, double high) {
        if (!laCanvas_IsCached(canvas_.items, canvas_.source, low, high)) Park();
        return laCanvas_ShowRange(canvas_, low, high, {.ahead = laFetchAhead::No});
    }

  private:
    // The items stay for later; the canvas has none.
    void Park() {
        if (std::exchange(parked_, true)) return;
        canvas_.taskList->Clear(false);
        fetch_ = std::move(canvas_.fetch);
        items_ = std::move(canvas_.items);
        canvas_.items = {};
        canvas_.items.itemsVersion = items_.itemsVersion + 1;
    }

    _LaCanvasData& canvas_;
    LaGraph graph_;
    LaGraph* own_;
    LaCanvasFields fields_;
    LaList list_;
    LaView view_;
    LaAxis axis_;
    LaMarks marks_;
    LaWanted wanted_;
    double scrollExtent_;
    bool liveRefresh_;
    bool parked_ = false;
    LaItems items_;
    std::unique_ptr<LaFetch> fetch_;  // of those items, where it can go on
    std::function<void()> fieldsChanged_, paintWanted_, buttonsChanged_;
    Progress progress_;
};

// Texts in a font of one pitch, before there is a page to ask: a letter is a little wider than half its line
// is high.
class FixedPitch : public RecordingSurface {
  public:
    explicit FixedPitch(int lineHeight) : RecordingSurface(0, 0, false), lineHeight_(lineHeight) {}
    TextExtent textExtent(std::string_view text) override {
        const auto letters = std::count_if(text.begin(), text.end(), [](char byte) {
            return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
        });
        return {(static_cast<int>(letters) * lineHeight_ * 5 + 8) / 9, lineHeight_};
    }

  private:
    int lineHeight_;
};

// What the printed pages share.
struct Run {
    _LaCanvasData& canvas;
    PrintedCanvas& printed;
    PageDevice& page;
    const TraxPrintSizes& sizes;
    const TraxPrintOptions& options;
    double low, high;  // of all pages
    bool whole;        // the one page shows the view as it is
    bool stopped = false;

    bool Tell(int number, double part) {
        const Progress& progress = printed.progress();
        if (progress && !progress(number + std::clamp(part, 0.0, 1.0), options.pages)) stopped = true;
        return !stopped;
    }
};

bool show(Run& run, int number) {
    if (run.whole) return true;
    const double length = (run.high - run.low) / run.options.pages;
    const double high = number + 1 == run.options.pages ? run.high : run.low + (number + 1) * length;
    return run.printed.Show(run.low + number * length, high);
}

TraxPrintEnd print_page(Run& run, int number, TraxPrinted& printed) {
    run.canvas.calls.progress = [&run, number](double done, double total) {
        return run.Tell(number, total > 0 ? done / total : 0);
    };
    const bool shown = show(run, number);
    run.canvas.calls.progress = {};
    if (run.stopped || !run.Tell(number, 1)) return TraxPrintEnd::Stopped;
    if (!shown) return TraxPrintEnd::NothingShown;
    TraxPageContent content;
    if (run.options.pages > 1) content.pageOf = gen_format("Page %d of %d", number + 1, run.options.pages);
    TraxPrintSizes sizes = traxPrint_WithNames(run.canvas, run.sizes);
    if (run.options.foot == TraxPrintFoot::Legend) {
        content.foot = traxFoot_Entries(run.canvas.scene());
        content.footLayout =
            traxFoot_LayOut(content.foot, sizes.graphWidth + sizes.listWidth, sizes.fontHeight);
        sizes.footHeight = content.footLayout.Height();
    }
    const TraxPageGeometry geometry = traxPrint_Geometry(run.page.facts(), sizes);
    if (geometry.zoomRate <= 0) return TraxPrintEnd::CannotDraw;
    printed.zoomRate = geometry.zoomRate;
    return traxPrint_Page(run.canvas, run.page, geometry, content);
}

}  // namespace

TraxPrintSizes traxPrint_SizesOf(const _LaCanvasData& canvas, int listWidth) {
    const LaGraph& graph = *canvas.graph;
    TraxPrintSizes sizes;
    sizes.graphWidth = graph.width;
    sizes.graphHeight = graph.height;
    sizes.dataHeight = laAxis_Top(graph);
    sizes.listWidth = listWidth;
    sizes.barWidth = barWidth;
    sizes.fontHeight = graph.font.height;
    sizes.axisFontHeight = graph.axisFont.height;
    return sizes;
}

TraxPrintSizes traxPrint_WithNames(const _LaCanvasData& canvas, TraxPrintSizes sizes) {
    constexpr int divider = 3;
    if (canvas.list.nameWidth > 0) return sizes;
    FixedPitch letters(sizes.fontHeight);
    const laNames names(*canvas.taskList, canvas.looks, canvas.view, *canvas.graph);
    const int needed = names.Width(letters, (sizes.graphWidth + sizes.listWidth) / 3) + divider;
    sizes.listWidth = std::max(sizes.listWidth, needed);
    return sizes;
}

bool traxPrint_HasSelection(const _LaCanvasData& canvas) {
    const double* cursor = canvas.marks.cursor;
    return cursor[0] >= 0 && cursor[1] >= 0 && cursor[0] != cursor[1];
}

TraxPrinted traxPrint_Pages(_LaCanvasData& canvas, PageDevice& page, const TraxPrintSizes& sizes,
                            const TraxPrintOptions& options) {
    TraxPrinted printed;
    if (!page.facts().canDraw) return {TraxPrintEnd::CannotDraw};
    const bool selection = options.range == TraxPrintRange::Selection;
    if (selection && !traxPrint_HasSelection(canvas)) return {TraxPrintEnd::NothingShown};
    const double low = std::min(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    const double high = std::max(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    TraxPrintOptions clean = options;
    clean.pages = std::clamp(options.pages, 1, traxPrint_MostPages);
    PrintedCanvas borrowed(canvas);
    Run run{canvas,
            borrowed,
            page,
            sizes,
            clean,
            selection ? low : canvas.view.viewLow,
            selection ? high : canvas.view.viewHigh,
            !selection && clean.pages == 1};
    for (int number = 0; number < clean.pages && printed.end == TraxPrintEnd::Done; ++number) {
        printed.end = print_page(run, number, printed);
        if (printed.end == TraxPrintEnd::Done) ++printed.pages;
    }
    return printed;
}
