// A trace that grows: what it costs to bring new events into the picture, against the import of their bytes.
#include <algorithm>
#include <climits>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/import/import.h"
#include "chronoweave/live/live_view.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/lagraph/recording_surface.h"

namespace {

// A raw file that gets the bytes of another one, piece by piece, and is imported as it grows.
class GrowingFile {
  public:
    GrowingFile(const BenchPlace& place, const std::string& name, const std::string& source, uint64_t begin)
        : from_(source, std::ios::binary),
          name_(path_join(place.work, name + ".trr")),
          to_(name_, std::ios::binary | std::ios::trunc) {
        grow(begin);
        opened_ = import_OpenSource(name_, {.keepGrowing = true});
    }
    ~GrowingFile() {
        opened_ = {};
        std::error_code none;
        for (const char* extension : {".trr", ".trv", ".tri", ".trs"})
            std::filesystem::remove(path_without_extension(name_) + extension, none);
    }
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;

    TraceStorePtr store() { return std::move(opened_.store); }
    void grow(uint64_t bytes) {
        buffer_.resize(bytes);
        from_.read(buffer_.data(), static_cast<std::streamsize>(bytes));
        to_.write(buffer_.data(), from_.gcount());
        to_.flush();
    }
    // Events taken in.
    uint64_t read() { return opened_.growing ? import_ReadOn(*opened_.growing, 0).events : 0; }

  private:
    std::ifstream from_;
    std::string name_;
    std::ofstream to_;
    std::vector<char> buffer_;
    OpenedSource opened_;
};

// The view stands and the trace grows into it, or the view goes along with the end of the trace.
enum class Shown { AllThatIsThere, TheEnd };

// Traces have some 900,000 events a second; times in names are as of 100,000, so that so many an interval are
// one tick's.
constexpr double lengthOfAll = 1.2, lengthOfEnd = 0.22;  // seconds
constexpr uint64_t eventsOfEnd = 220'000;  // that are there before the first tick; more than fit

// A canvas as a window has it: events of the program note what is to be painted, and then it is.
class ShownFile {
  public:
    ShownFile(GrowingFile& file, LaGraph& graph, Shown shown)
        : shown_(shown), graph_(graph), surface_(graph.surface) {
        TraceStorePtr store = file.store();
        Legend legend;
        if (!store || !configure_Read(legend, mt_GetOsName(store.get()), configure_ConsoleCallbacks(), 0))
            return;
        canvas_ = laCanvas_Create(graph, 0);
        laCanvas_Resized(*canvas_, view_width, view_height);
        canvas_->options.prefetch = false;
        if (!laCanvas_SetUpFromStore(*canvas_, std::move(store), std::move(legend), "live.trr") || !show())
            canvas_.reset();
    }
    bool good() const { return canvas_ != nullptr; }
    // Whether the view is where it is to be, with all that the store has where all of it is in view.
    bool whole() const {
        if (shown_ == Shown::TheEnd)
            return std::fabs(canvas_->view.viewHigh - canvas_->source.totalLength) < lengthOfEnd / 100;
        return canvas_->items.bitmaps.size() == mt_GetEventCount(*canvas_->source.store);
    }
    void tick() {
        graph_.surface = nullptr;
        live_Follow(*canvas_);
        graph_.surface = surface_;
        laCanvas_PaintWanted(*canvas_);
    }

  private:
    bool show() {
        const double end = canvas_->source.totalLength;
        const bool all = shown_ == Shown::AllThatIsThere;
        canvas_->options.followEnd = !all;
        canvas_->options.maxRefreshedEvents = INT_MAX;
        return laCanvas_ShowRange(*canvas_, all ? 0 : end - lengthOfEnd, all ? lengthOfAll : end,
                                  {.paint = true});
    }

    Shown shown_;
    LaGraph& graph_;
    Surface* const surface_;
    std::unique_ptr<_LaCanvasData> canvas_;
};

Outcome tick(const BenchPlace& place, const std::string& source, uint64_t events, uint64_t eventsOfTick,
             int turnsTaken, Shown shown) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    const uint64_t piece = plain_Size(source) * eventsOfTick / events;
    const uint64_t begin = shown == Shown::TheEnd ? plain_Size(source) * eventsOfEnd / events : piece;
    GrowingFile first(place, "growing-shown", source, begin), second(place, "growing-plain", source, begin);
    bench_WithSurface([&](Surface& surface) {
        LaGraph graph;
        graph.surface = &surface;
        graph.font = surface.fontMetrics(Font_Application);
        ShownFile view(first, graph, shown);
        if (!view.good()) return;
        uint64_t least = UINT64_MAX;
        const auto read = [&](GrowingFile& file) { least = std::min(least, file.read()); };
        const auto before = [&](bool ofSubject) {
            (ofSubject ? first : second).grow(piece);
            if (ofSubject) read(first);
        };
        const auto subject = [&] { view.tick(); };
        const auto baseline = [&] { read(second); };
        const Turns turns =
            measure_Turns({.count = turnsTaken, .clock = Clock::Processor}, before, subject, baseline);
        outcome = least > eventsOfTick / 2 && view.whole() ? outcome_OfRatio(turns, 1.5)
                                                           : outcome_OfTrouble("events are missing");
    });
    return outcome;
}

}  // namespace

// What is measured beside the reading of the bytes, which is the baseline: taking the events into the items,
// moving the view, and painting.
void register_GrowingBenchmarks(const BenchPlace& place) {
    struct Rate {
        const char* name;
        uint64_t eventsOfTick;
        int turns;
    };
    for (const auto& [shown, name] :
         {std::pair{Shown::AllThatIsThere, "all"}, {Shown::TheEnd, "the last 2 s"}})
        for (const uint32_t tasks : {100u, 1000u})
            for (const Rate& rate : {Rate{"40 ms", 4000, 27}, {"1 s", 100'000, 6}})
                measure_Register(gen_format("tick/%u tasks, %s, each %s", tasks, name, rate.name),
                                 [&place, tasks, rate, shown = shown] {
                                     const uint64_t events = 1'000'000;
                                     return tick(place, input_Generated(place.work, events, tasks), events,
                                                 rate.eventsOfTick, rate.turns, shown);
                                 });
}
