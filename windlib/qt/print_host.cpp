#include "windlib/qt/print_host.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <QPaintEngine>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QScreen>

#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/page_device.h"
#include "windlib/qt/platform.h"

namespace {

constexpr int usualPixelsPerInch = 96;

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

PrintOutcome failed(std::string why) {
    return {PrintOutcome::End::Failed, std::move(why)};
}

std::unique_ptr<QPrinter> printerFor(const PrintJob& job) {
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer->setDocName(text(job.name));
    printer->setCreator(QStringLiteral("Chronoweave"));
    printer->setPageLayout(page_Layout(job.paper, job.turn));
    printer->setFullPage(true);
    return printer;
}

QtPageDevice::Paper paperOf(QPrinter& printer) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const auto resolution = [&](qreal dots) { return dots > 0 ? static_cast<int>(dots + 0.5) : 0; };
    const int x = screen ? resolution(screen->logicalDotsPerInchX()) : 0;
    const int y = screen ? resolution(screen->logicalDotsPerInchY()) : 0;
    QtPageDevice::Paper paper =
        page_PaperOf(printer, x > 0 ? x : usualPixelsPerInch, y > 0 ? y : usualPixelsPerInch);
    paper.good = [&printer] {
        return printer.printerState() != QPrinter::Error && printer.printerState() != QPrinter::Aborted;
    };
    return paper;
}

// False for what body could not print, with nothing in why, and for what the device could not, with words.
bool drawOn(QPrinter& printer, const PrintHost::Body& body, std::string& why) {
    QtPageDevice device(paperOf(printer));
    if (!body(device)) return false;
    if (device.finish()) return true;
    why = "The printer failed.";
    return false;
}

std::string whereTo(const QPrinter& printer) {
    if (!printer.outputFileName().isEmpty())
        return "Printed to \"" + printer.outputFileName().toStdString() + "\".";
    return "Printed on \"" + printer.printerName().toStdString() + "\".";
}

}  // namespace

bool QtPrintHost::hasPrinter() {
    return !QPrinterInfo::availablePrinterNames().isEmpty();
}

PrintOutcome QtPrintHost::run(const PrintJob& job, const Body& body) {
    switch (job.to) {
        case PrintJob::To::Printer:
            return toPrinter(job, body);
        case PrintJob::To::Preview:
            return toPreview(job, body);
        case PrintJob::To::File:
            break;
    }
    bool drawn = true;  // body tells what it could not
    const Result written = page_WritePdf(job, [&](PageDevice& page) { return drawn = body(page); });
    if (!written) return failed(drawn ? written.text() : std::string());
    return {PrintOutcome::End::Printed, "Printed to \"" + job.file + "\"."};
}

PrintOutcome QtPrintHost::toPrinter(const PrintJob& job, const Body& body) {
    if (platform_IsAutomatic() && !choosePrinter) return failed("Nobody is there to choose a printer.");
    const std::unique_ptr<QPrinter> printer = printerFor(job);
    {
        const std::shared_ptr<void> waiting = hold_ ? hold_() : nullptr;
        const Gate::Token modal = gate_Begin(GateWork::ModalDialog);
        QPrintDialog dialog(printer.get(), over_ ? over_() : nullptr);
        dialog.setObjectName(QStringLiteral("QPrint"));
        dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
        const bool accepted =
            platform_IsAutomatic() ? choosePrinter(dialog) : dialog.exec() == QDialog::Accepted;
        if (!accepted) return {PrintOutcome::End::Cancelled};
    }
    printer->setFullPage(true);  // whatever the dialog made of it
    std::string why;
    if (!drawOn(*printer, body, why)) return failed(why);
    return {PrintOutcome::End::Printed, whereTo(*printer)};
}

PrintOutcome QtPrintHost::toPreview(const PrintJob& job, const Body& body) {
    if (platform_IsAutomatic() && !lookAtPreview) return failed("Nobody is there to look at a preview.");
    const std::unique_ptr<QPrinter> printer = printerFor(job);
    const std::shared_ptr<void> waiting = hold_ ? hold_() : nullptr;
    const Gate::Token modal = gate_Begin(GateWork::ModalDialog);
    QPrintPreviewDialog dialog(printer.get(), over_ ? over_() : nullptr);
    dialog.setObjectName(QStringLiteral("QPrintPreview"));
    std::string why;
    bool printed = false;
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog, [&](QPrinter* on) {
        on->setFullPage(true);
        why.clear();
        const bool drawn = drawOn(*on, body, why);
        const bool looked = on->paintEngine() && on->paintEngine()->type() == QPaintEngine::Picture;
        printed = (drawn && !looked) || printed;
    });
    if (platform_IsAutomatic())
        lookAtPreview(dialog);
    else
        dialog.exec();
    if (!why.empty()) return failed(why);
    return printed ? PrintOutcome{PrintOutcome::End::Printed, whereTo(*printer)}
                   : PrintOutcome{PrintOutcome::End::Cancelled};
}

void QtPrintHost::showBox(const std::string& title, const std::string& said) {
    if (platform_IsAutomatic()) return gen_error("%s: %s", title.c_str(), said.c_str());
    const std::shared_ptr<void> waiting = hold_ ? hold_() : nullptr;
    const Gate::Token modal = gate_Begin(GateWork::ModalDialog);
    QMessageBox box(QMessageBox::Critical, text(title), text(said), QMessageBox::Ok,
                    over_ ? over_() : nullptr);
    box.setObjectName(QStringLiteral("DeviceError"));
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
