// Pictures of the window at every zoom, for looking at what a change made of it: walk_pictures TRACE FOLDER.
// In both sizes and schemes the whole trace, 1 s, 10 ms, 1 ms and 10 us of it, and in the millisecond the
// answers to three questions: who ran, why one waited, how often something came. QT_SCALE_FACTOR holds.
#include <QApplication>
#include <QDir>
#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <vector>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxmain/kept_pictures.h"
#include "windlib/qt/platform.h"

namespace {

struct Zoom {
    const char* name;
    double length;  // seconds; 0: the whole trace
};
constexpr Zoom zooms[] = {{"whole", 0}, {"1s", 1}, {"10ms", 1e-2}, {"1ms", 1e-3}, {"10us", 1e-5}};
constexpr double millisecond = 1e-3;

class Walk {
  public:
    Walk(CanvasWindow& window, QString folder) : window_(window), folder_(std::move(folder)) {}

    void take(const QString& prefix) {
        prefix_ = prefix;
        findMiddle();
        for (const Zoom& zoom : zooms) {
            show(zoom.length);
            keep(zoom.name);
        }
        show(millisecond);
        command("OnlyActive");
        keep("who-ran");
        keepLate();
        keepHowOften();
        command("OnlyActive");
    }

  private:
    _LaCanvasData& canvas() { return window_.view().canvas(); }
    // Of the millisecond in which most tasks began to run.
    double middle() { return middle_; }
    void findMiddle() {
        const double whole = canvas().source.totalLength;
        laCanvas_Paint(canvas(), [&] { laCanvas_ShowRange(canvas(), 0, whole); });
        std::map<int64_t, std::set<uint32_t>> ran;
        const auto& switches = canvas().items.ctxLines;
        for (uint32_t i = 0; i < switches.size(); ++i)
            ran[static_cast<int64_t>(switches[i].t0 / millisecond)].insert(switches[i].toLane);
        const auto most = std::max_element(ran.begin(), ran.end(), [](const auto& a, const auto& b) {
            return a.second.size() < b.second.size();
        });
        middle_ = most == ran.end() ? whole / 2 : (static_cast<double>(most->first) + 0.5) * millisecond;
    }

    void keep(const char* name) {
        kept_Window(window_, folder_, prefix_ + QLatin1Char('-') + QLatin1String(name));
    }
    void command(const char* text) {
        window_.command(text);
        platform_ProcessPending();
    }
    void show(double length) {
        const double whole = canvas().source.totalLength;
        const double low =
            length == 0 || length >= whole ? 0 : std::min(middle() - length / 2, whole - length);
        const double high = length == 0 ? whole : std::min(low + length, whole);
        laCanvas_Paint(canvas(), [&] { laCanvas_ShowRange(canvas(), low, high, {.paint = true}); });
        platform_ProcessPending();
    }
    void keepLate() {
        kept_SelectWait(window_);
        keep("why-late");
    }
    // The event in the middle, counted in the trace and in the selection.
    void keepHowOften() {
        const auto& icons = canvas().items.bitmaps;
        const uint32_t icon = laBm_FirstAt(canvas().items, middle());
        if (icon >= icons.size()) return;
        const auto row = static_cast<size_t>(icons[icon].event);
        kept_Find(window_,
                  QStringLiteral("event:") + QString::fromStdString(canvas().looks.legend.events[row].name));
        keep("how-often");
        kept_Clear(window_);
    }

    CanvasWindow& window_;
    QString folder_, prefix_;
    double middle_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: walk_pictures TRACE FOLDER\n");
        return 2;
    }
    const auto application = kept_Start(argv[0]);
    const QString folder = QString::fromUtf8(argv[2]);
    QDir().mkpath(folder);
    for (const bool dark : {false, true}) {
        for (const QSize size : {QSize(1280, 800), QSize(1920, 1080)}) {
            const auto window = kept_Open(argv[1], size, [&] { platform_SetDark(dark); });
            if (!window) return 1;
            Walk(*window, folder)
                .take(QStringLiteral("%1-%2").arg(dark ? "dark" : "light").arg(size.width()));
        }
    }
    return 0;
}
