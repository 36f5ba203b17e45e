// How long the window takes for the moves of a drag over the whole of a trace: drag_figures TRACE.
#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxmain/kept_pictures.h"
#include "windlib/qt/platform.h"

namespace {

constexpr int moves = 400;

class Times {
  public:
    explicit Times(const char* what) : what_(what) {}
    template <class Work>
    void time(const Work& work) {
        QElapsedTimer since;
        since.start();
        work();
        all_.push_back(static_cast<double>(since.nsecsElapsed()) / 1e6);
    }
    void print() {
        std::ranges::sort(all_);
        std::printf("%-28s median %6.2f ms, 95 %% %6.2f ms, longest %6.2f ms\n", what_, all_[all_.size() / 2],
                    all_[all_.size() * 95 / 100], all_.back());
    }

  private:
    const char* what_;
    std::vector<double> all_;
};

// What the pointer's events do; synthetic ones would be noticed to have no button held.
void drag_to(PictureView& view, int x) {
    view.draw([&] { laCanvas_DragTo(view.canvas(), x, 100, false); });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: drag_figures TRACE\n");
        return 2;
    }
    const auto application = kept_Start(argv[0]);
    const auto window = kept_Open(argv[1], {1920, 1080});
    if (!window) return 1;
    PictureView& view = window->view();
    view.draw([&] { laCanvas_ShowAll(view.canvas()); });
    kept_Wait(500);
    Times pointer("one event of the pointer"), turn("with what follows at once");
    const int width = view.picture().graphWidth;
    view.draw([&] { laCanvas_BeginDrag(view.canvas(), 5, 100, false); });
    for (int i = 1; i <= moves; ++i) {
        const int x = 5 + (width - 10) * i / moves;
        turn.time([&] {
            pointer.time([&] { drag_to(view, x); });
            platform_ProcessPending();
        });
    }
    std::printf("%s\n", window->message().c_str());
    view.draw([&] { laCanvas_EndDrag(view.canvas()); });
    kept_Wait(1000);
    pointer.print();
    turn.print();
    std::printf("%s\n", window->message().c_str());
    return 0;
}
