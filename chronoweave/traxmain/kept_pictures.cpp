#include "chronoweave/traxmain/kept_pictures.h"

#include <QEventLoop>
#include <QImage>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cstdio>
#include <unordered_map>
#include <utility>
#include <vector>

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

}  // namespace

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
