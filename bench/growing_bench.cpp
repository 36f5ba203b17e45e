// A trace that grows: what it costs to bring new events into the picture, against the import of their bytes.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/import/import.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/paths.h"
#include "windlib/lagraph/recording_surface.h"

namespace {

constexpr int turnsTaken = 27;

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

// The last second of the trace, or what there is of it, moves on with each tick; or the view stands.
enum class Shown { AllThatIsThere, TheLastSecond };

class ShownFile {
  public:
    ShownFile(GrowingFile& file, LaGraph& graph, Shown shown) : shown_(shown) {
        TraceStorePtr store = file.store();
        Legend legend;
        if (!store || !configure_Read(legend, mt_GetOsName(store.get()), configure_ConsoleCallbacks(), 0))
            return;
        canvas_ = laCanvas_Create(graph, 0);
        laCanvas_Resized(*canvas_, view_width, view_height);
        canvas_->options.prefetch = false;
        if (!laCanvas_SetUpFromStore(*canvas_, std::move(store), std::move(legend), "live.trr"))
            canvas_.reset();
        else if (shown_ == Shown::AllThatIsThere)
            laCanvas_ShowRange(*canvas_, 0, 1e3, {.paint = true});
        else
            follow();
    }
    bool good() const { return canvas_ != nullptr; }
    // Whether the items are all that the store has, where all of it is in view.
    bool whole() const {
        return shown_ != Shown::AllThatIsThere ||
               canvas_->items.bitmaps.size() == mt_GetEventCount(*canvas_->source.store);
    }
    void tick() {
        laCanvas_SourceGrew(*canvas_);
        if (shown_ == Shown::TheLastSecond) follow();
    }

  private:
    void follow() {
        const double total = canvas_->source.totalLength;
        laCanvas_ShowRange(*canvas_, std::max(0.0, total - 1), std::max(1.0, total), {.keepLength = moved_});
        laScroll_Paint(*canvas_);
        moved_ = true;
    }

    Shown shown_;
    bool moved_ = false;
    std::unique_ptr<_LaCanvasData> canvas_;
};

Outcome tick(const BenchPlace& place, const std::string& source, uint64_t events, uint64_t eventsOfTick,
             Shown shown) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    const uint64_t piece = plain_Size(source) * eventsOfTick / events;
    GrowingFile first(place, "growing-shown", source, piece), second(place, "growing-plain", source, piece);
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

void register_GrowingBenchmarks(const BenchPlace& place) {
    for (const auto& [shown, name] :
         {std::pair{Shown::AllThatIsThere, "all"}, {Shown::TheLastSecond, "the last second"}}) {
        measure_Register(std::string("tick/100 tasks, ") + name, [&place, shown = shown] {
            return tick(place, place.hundredTasks, 1'000'000, 20'000, shown);
        });
        measure_Register(std::string("tick/1000 tasks, ") + name, [&place, shown = shown] {
            return tick(place, place.thousandTasks, 200'000, 4000, shown);
        });
    }
}
