#include "windlib/qt/picture_file.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <cmath>

#include "shared/libcxxutil/report.h"
#include "windlib/qt/qt_surface.h"

namespace {

constexpr int pixelsPerInch = 96;
constexpr double pointsPerPixel = 72.0 / pixelsPerInch;

using Draw = std::function<void(Surface&)>;

// image is the device itself when that is an image, null otherwise.
bool paintOn(QPaintDevice& device, QImage* image, int width, int height, const Draw& draw) {
    QPainter painter;
    if (!painter.begin(&device)) return false;
    {
        QtSurface surface(painter, image, width, height, surfaceColours(QGuiApplication::palette()));
        draw(surface);
    }
    return painter.end();
}

bool writePng(QFile& file, int width, int height, double scale, const Draw& draw) {
    QImage image(static_cast<int>(std::lround(width * scale)), static_cast<int>(std::lround(height * scale)),
                 QImage::Format_RGB32);
    if (image.isNull()) return false;
    image.setDevicePixelRatio(scale);
    return paintOn(image, &image, width, height, draw) && image.save(&file, "PNG");
}

bool writeSvg(QFile& file, int width, int height, const Draw& draw) {
    QSvgGenerator generator;
    generator.setOutputDevice(&file);
    generator.setSize(QSize(width, height));
    generator.setViewBox(QRect(0, 0, width, height));
    generator.setResolution(pixelsPerInch);
    generator.setTitle(QStringLiteral("Chronoweave"));
    return paintOn(generator, nullptr, width, height, draw);
}

bool writePdf(QFile& file, int width, int height, const Draw& draw) {
    QPdfWriter writer(&file);
    writer.setResolution(pixelsPerInch);
    writer.setPageLayout(QPageLayout(QPageSize(QSizeF(width, height) * pointsPerPixel, QPageSize::Point),
                                     QPageLayout::Portrait, QMarginsF()));
    writer.setTitle(QStringLiteral("Chronoweave"));
    return paintOn(writer, nullptr, width, height, draw);
}

}  // namespace

void picture_StartHeadless() {
    if (QCoreApplication::instance()) return;
    // With no display the offscreen plugin draws just the same; a picture never needs more.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The platform's own chatter is no message of this program; what fails is told by return values.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg) gen_fatal("%s", text.toStdString().c_str());
    });
    static int count = 1;
    static char name[] = "chronoweave";
    static char* arguments[] = {name, nullptr};
    // Left to the end of the process: Qt's own state goes before statics do.
    new QGuiApplication(count, arguments);
}

Result picture_Write(const std::string& name, int width, int height, double scale, const Draw& draw) {
    const QString path = QString::fromStdString(name);
    const QString kind = QFileInfo(path).suffix().toLower();
    if (kind != QLatin1String("png") && kind != QLatin1String("svg") && kind != QLatin1String("pdf"))
        return Result::failure("the name of a picture ends in .png, .svg or .pdf", name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return Result::failure({}, name, file.errorString().toStdString());
    const bool drawn = kind == QLatin1String("png")   ? writePng(file, width, height, scale, draw)
                       : kind == QLatin1String("svg") ? writeSvg(file, width, height, draw)
                                                      : writePdf(file, width, height, draw);
    const bool kept = file.flush() && file.error() == QFileDevice::NoError;
    if (drawn && kept) return {};
    return Result::failure("the picture could not be written", name,
                           kept ? std::string() : file.errorString().toStdString());
}

void picture_Measure(const Draw& measure, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    paintOn(image, &image, width, height, measure);
}
