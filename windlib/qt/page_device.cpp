#include "windlib/qt/page_device.h"

#include <QFile>
#include <QFontDatabase>
#include <QPageLayout>
#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPdfWriter>

#include "shared/libcxxutil/file_beside.h"
#include "windlib/qt/icon_images.h"

namespace {

constexpr int pdfPixelsPerInch = 1200;
constexpr int screenPixelsPerInch = 96;

// From the top of the highest letter to the bottom of the lowest it is so many pixels high.
QFont pageFont(const QString& family, int height) {
    QFont font(family);
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setPixelSize(std::max(1, height));
    const double lines = QFontMetricsF(font).height();
    if (lines > 0) font.setPixelSize(std::max(1, static_cast<int>(height * height / lines)));
    return font;
}

}  // namespace

QtPageDevice::QtPageDevice(Paper paper) : paper_(std::move(paper)) {}

QtPageDevice::~QtPageDevice() {
    surface_.reset();
    if (painter_.isActive()) painter_.end();
}

bool QtPageDevice::makeFonts(const std::string& family, int applicationHeight, int axisHeight) {
    if (QFontDatabase::families().isEmpty()) return false;
    surface_.reset();
    const QString name = QString::fromStdString(family);
    fonts_ = std::make_unique<SurfaceFonts>(pageFont(name, applicationHeight), pageFont(name, axisHeight));
    return true;
}

bool QtPageDevice::startPage() {
    if (!fonts_ || (paper_.good && !paper_.good())) return false;
    surface_.reset();
    const bool begun = painter_.isActive() ? paper_.nextPage() : painter_.begin(paper_.device);
    if (!begun) return false;
    const SurfaceColours blackOnWhite;
    surface_ = std::make_unique<QtSurface>(painter_, nullptr, paper_.facts.width, paper_.facts.height,
                                           blackOnWhite, *fonts_);
    if (paper_.edges == Paper::Edges::Smooth) painter_.setRenderHint(QPainter::Antialiasing);
    return true;
}

bool QtPageDevice::endPage() {
    surface_.reset();
    return painter_.isActive() && (!paper_.good || paper_.good());
}

void QtPageDevice::drawIcon(int x, int y, int w, int h, IconHandle icon) {
    iconDrawShapes(painter_, QRectF(x, y, w, h), icon);
}

bool QtPageDevice::finish() {
    surface_.reset();
    const bool ended = !painter_.isActive() || painter_.end();
    return ended && (!paper_.good || paper_.good());
}

QPageLayout page_Layout(PagePaper paper, PageTurn turn) {
    const QPageSize::PageSizeId size = paper == PagePaper::A4 ? QPageSize::A4 : QPageSize::Letter;
    QPageLayout layout(QPageSize(size),
                       turn == PageTurn::Portrait ? QPageLayout::Portrait : QPageLayout::Landscape,
                       QMarginsF());
    layout.setMode(QPageLayout::FullPageMode);
    return layout;
}

QtPageDevice::Paper page_PaperOf(QPagedPaintDevice& device, int screenX, int screenY) {
    QtPageDevice::Paper paper;
    paper.device = &device;
    paper.nextPage = [&device] { return device.newPage(); };
    PageFacts& facts = paper.facts;
    facts.printerX = device.logicalDpiX();
    facts.printerY = device.logicalDpiY();
    const QSize sheet = device.pageLayout().fullRectPixels(facts.printerX).size();
    facts.width = sheet.width();
    facts.height =
        facts.printerX > 0
            ? static_cast<int>(static_cast<int64_t>(sheet.height()) * facts.printerY / facts.printerX)
            : 0;
    facts.screenX = screenX;
    facts.screenY = screenY;
    facts.canDraw = facts.width > 0 && facts.height > 0;
    return paper;
}

Result page_WritePdf(const PrintJob& job, const PrintHost::Body& body) {
    const auto failed = [&](const std::string& reason) {
        return Result::failure("the pages could not be written", job.file, reason);
    };
    FileBeside beside;
    if (const Result made = beside.make(job.file); !made) return failed(made.reason());
    QFile file(QString::fromStdString(beside.name()));
    if (!file.open(QIODevice::WriteOnly)) return failed(file.errorString().toStdString());
    bool drawn = false, ended = false;
    {
        QPdfWriter writer(&file);
        writer.setResolution(pdfPixelsPerInch);
        writer.setPageLayout(page_Layout(job.paper, job.turn));
        writer.setTitle(QString::fromStdString(job.name));
        writer.setCreator(QStringLiteral("Chronoweave"));
        QtPageDevice::Paper paper = page_PaperOf(writer, screenPixelsPerInch, screenPixelsPerInch);
        paper.good = [&file] { return file.error() == QFileDevice::NoError; };
        QtPageDevice device(std::move(paper));
        drawn = body(device);
        ended = device.finish();
    }
    if (!drawn) return Result::failure("nothing was printed", job.file);
    if (!ended || !file.flush() || file.error() != QFileDevice::NoError)
        return failed(file.errorString().toStdString());
    file.close();
    const Result kept = beside.keep();
    return kept ? Result() : failed(kept.reason());
}
