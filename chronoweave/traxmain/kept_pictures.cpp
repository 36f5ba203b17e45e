#include "chronoweave/traxmain/kept_pictures.h"

#include <QApplication>
#include <QEventLoop>
#include <QImage>
#include <QLineEdit>
#include <QPixmap>
#include <QStyle>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cstdio>
#include <unordered_map>
#include <utility>
#include <vector>

#include "chronoweave/analysis/canvas_facts.h"
#include "chronoweave/engine/range_figures.h"
#include "chronoweave/engine/report_texts.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/find_strip.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/view.h"
#include "windlib/qt/platform.h"

namespace {

QImage indexed(const QImage& picture) {
    std::unordered_map<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) ++counts[picture.pixel(x, y)];
    std::vector<std::pair<int, QRgb>> colours;
    for (const auto& [colour, count] : counts) colours.emplace_back(count, colour);
    std::sort(colours.rbegin(), colours.rend());
    QList<QRgb> table;
    for (size_t i = 0; i < std::min<size_t>(colours.size(), 256); ++i) table.append(colours[i].second);
    return picture.convertToFormat(QImage::Format_Indexed8, table, Qt::AvoidDither | Qt::ThresholdDither);
}

constexpr int searched = 1500;  // milliseconds

}  // namespace

std::unique_ptr<QApplication> kept_Start(const char* program) {
    ::qputenv("QT_QPA_PLATFORM", "offscreen");
    auto application = platform_Start(program);
    QApplication::setPalette(QApplication::style()->standardPalette());  // the platform itself has white only
    return application;
}

std::unique_ptr<CanvasWindow> kept_Open(const char* trace, QSize size, const std::function<void()>& made) {
    auto window = std::make_unique<CanvasWindow>("VOREL Chronoweave", false);
    if (made) made();
    window->resize(size);
    window->show();
    platform_ProcessPending();
    if (!window->load(trace)) return nullptr;
    return window;
}

void kept_Wait(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

void kept_Window(QWidget& window, const QString& folder, const QString& name) {
    kept_Wait(400);
    const QString file = folder + QLatin1Char('/') + name + QStringLiteral(".png");
    const QImage picture = indexed(window.grab().toImage().convertToFormat(QImage::Format_RGB32));
    if (!picture.save(file)) std::fprintf(stderr, "%s: not written\n", qPrintable(file));
}

void kept_SelectWait(CanvasWindow& window) {
    _LaCanvasData& canvas = window.view().canvas();
    const auto ready = analysis_ReadyStatus(canvas.looks.legend);
    const CanvasFacts facts(canvas);
    const std::vector<uint32_t> idle = report_IdleObjects(facts.words, facts.objects);
    LaLnSeg longest;
    uint32_t object = 0;
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
        if (std::ranges::find(idle, canvas.items.lanes[i].objectId) != idle.end()) continue;
        for (const LaLnSeg one : canvas.items.lanes[i].segments)
            if (one.status == ready && one.t0 > canvas.view.viewLow && one.t1 < canvas.view.viewHigh &&
                one.t1 - one.t0 > longest.t1 - longest.t0) {
                longest = one;
                object = canvas.items.lanes[i].objectId;
            }
    }
    laCanvas_Paint(canvas, [&] {
        laCanvas_SetSelection(canvas, longest.t0, longest.t1);
        laCanvas_Reveal(canvas, longest.t0, object);
    });
}

void kept_Find(CanvasWindow& window, const QString& words) {
    window.command("Find");
    if (auto* field = window.findChild<QLineEdit*>(QStringLiteral("find"))) field->insert(words);
    kept_Wait(searched);
}

void kept_Clear(CanvasWindow& window) {
    if (auto* strip = window.findChild<FindStrip*>(QStringLiteral("FindStrip")))
        while (strip->escape()) {
        }
    _LaCanvasData& canvas = window.view().canvas();
    laCanvas_Paint(canvas, [&] { laCanvas_ClearCursors(canvas); });
}
