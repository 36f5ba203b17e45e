#include "windlib/qt/print_host.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <QPaintEngine>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QScreen>

#include "shared/libcxxutil/file_beside.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/settings.h"
#include "windlib/qt/page_device.h"
#include "windlib/qt/platform.h"

namespace {

constexpr int usualPixelsPerInch = 96;
constexpr const char* printerChoice = "Printer";

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

PrintOutcome failed(std::string why) {
    return {PrintOutcome::End::Failed, std::move(why)};
}

// The printer of a preview that draws a picture of its pages for the screen.
bool isLookedAt(const QPrinter& printer) {
    return printer.paintEngine() && printer.paintEngine()->type() == QPaintEngine::Picture;
}

QtPageDevice::Paper paperOf(QPrinter& printer) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const auto resolution = [&](qreal dots) { return dots > 0 ? static_cast<int>(dots + 0.5) : 0; };
    const int x = screen ? resolution(screen->logicalDotsPerInchX()) : 0;
    const int y = screen ? resolution(screen->logicalDotsPerInchY()) : 0;
    QtPageDevice::Paper paper =
        page_PaperOf(printer, x > 0 ? x : usualPixelsPerInch, y > 0 ? y : usualPixelsPerInch);
    if (isLookedAt(printer)) paper.edges = QtPageDevice::Paper::Edges::Smooth;
    paper.good = [&printer] {
        return printer.printerState() != QPrinter::Error && printer.printerState() != QPrinter::Aborted;
    };
    return paper;
}

// A printer that prints to a file does so beside it, for as long as this lives: the file is the old one until
// the new one is whole.
class PrintedBeside {
  public:
    explicit PrintedBeside(QPrinter& printer) : printer_(printer), name_(printer.outputFileName()) {}
    ~PrintedBeside() {
        if (!name_.isEmpty()) printer_.setOutputFileName(name_);
    }
    PrintedBeside(const PrintedBeside&) = delete;
    PrintedBeside& operator=(const PrintedBeside&) = delete;

    Result make() {
        if (name_.isEmpty()) return {};
        const QPrinter::OutputFormat format = printer_.outputFormat();  // which else the name decides
        Result made = beside_.make(name_.toStdString());
        if (!made) return made;
        printer_.setOutputFileName(text(beside_.name()));
        printer_.setOutputFormat(format);
        return {};
    }
    Result keep() { return name_.isEmpty() ? Result() : beside_.keep(); }

  private:
    QPrinter& printer_;
    QString name_;
    FileBeside beside_;
};

// False for what body could not print, with nothing in why, and for what the device could not, with words.
bool drawOn(QPrinter& printer, const PrintHost::Body& body, std::string& why) {
    QtPageDevice device(paperOf(printer));
    if (!body(device)) return false;
    if (device.finish()) return true;
    why = "The printer failed.";
    return false;
}

bool printOn(QPrinter& printer, const PrintHost::Body& body, std::string& why) {
    PrintedBeside file(printer);
    Result done = file.make();
    if (done && !drawOn(printer, body, why)) return false;
    if (done) done = file.keep();
    if (!done) why = done.text();
    return done.ok();
}

std::string whereTo(const QPrinter& printer) {
    if (!printer.outputFileName().isEmpty())
        return "Printed to \"" + printer.outputFileName().toStdString() + "\".";
    return "Printed on \"" + printer.printerName().toStdString() + "\".";
}

}  // namespace

std::unique_ptr<QPrinter> QtPrintHost::printerFor(const PrintJob& job) const {
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    const QString last = settings_ ? text(settings_->Choice(printerChoice)) : QString();
    if (!last.isEmpty() && QPrinterInfo::availablePrinterNames().contains(last))
        printer->setPrinterName(last);
    printer->setDocName(text(job.name));
    printer->setCreator(QStringLiteral("Chronoweave"));
    printer->setPageLayout(page_Layout(job.paper, job.turn));
    printer->setFullPage(true);
    return printer;
}

// A file is the choice of the moment.
void QtPrintHost::keepPrinter(const QPrinter& printer) {
    if (settings_ && printer.outputFileName().isEmpty())
        settings_->SetChoice(printerChoice, printer.printerName().toStdString());
}

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
        keepPrinter(*printer);
    }
    printer->setFullPage(true);  // whatever the dialog made of it
    std::string why;
    if (!printOn(*printer, body, why)) return failed(why);
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
        if (isLookedAt(*on))
            drawOn(*on, body, why);
        else
            printed = printOn(*on, body, why) || printed;
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
