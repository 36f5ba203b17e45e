// Pages on Qt: a device with pages (printer, preview, PDF file) as the logic of printing sees it.
#pragma once

#include <QPainter>
#include <functional>
#include <memory>
#include <string>

#include "shared/libcxxutil/result.h"
#include "windlib/dialog/print_host.h"
#include "windlib/qt/qt_surface.h"

class QPageLayout;
class QPagedPaintDevice;

class QtPageDevice : public PageDevice {
  public:
    // What lies below the pages: where the painter draws, and what begins one behind the first.
    struct Paper {
        QPaintDevice* device = nullptr;
        std::function<bool()> nextPage;
        std::function<bool()> good;  // the device has not failed so far; empty: it never does
        PageFacts facts;
        // Smooth: for pages that are looked at much smaller than they are, where a sharp thin line would be
        // seen or not by chance.
        enum class Edges { Sharp, Smooth } edges = Edges::Sharp;
    };
    explicit QtPageDevice(Paper paper);
    ~QtPageDevice() override;
    QtPageDevice(const QtPageDevice&) = delete;
    QtPageDevice& operator=(const QtPageDevice&) = delete;

    PageFacts facts() const override { return paper_.facts; }
    bool makeFonts(const std::string& family, int applicationHeight, int axisHeight) override;
    bool startPage() override;
    bool endPage() override;
    Surface& surface() override { return *surface_; }
    void drawIcon(int x, int y, int w, int h, IconHandle icon) override;
    // Ends the drawing; without pages there is one empty one where the device can't do without. False when
    // the device failed.
    bool finish();

  private:
    Paper paper_;
    QPainter painter_;
    std::unique_ptr<SurfaceFonts> fonts_;
    std::unique_ptr<QtSurface> surface_;
};

// The whole sheet, without margins: those are the page's own.
QPageLayout page_Layout(PagePaper paper, PageTurn turn);
// For a device that is laid out so, scaled from a screen of this many pixels per inch.
QtPageDevice::Paper page_PaperOf(QPagedPaintDevice& device, int screenX, int screenY);
// Writes a PDF of the pages that body draws, beside the file whose place it then takes. Where body gave
// false, which knows why, and after a failure the file is what it was.
Result page_WritePdf(const PrintJob& job, const PrintHost::Body& body);
