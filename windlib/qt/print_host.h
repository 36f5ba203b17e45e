// What prints on screen's side: the print dialog, the preview and PDF files of Qt (see
// windlib/dialog/print_host.h). On the offscreen platform nobody can choose a printer or look at a preview:
// such a job fails with a message.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "windlib/dialog/print_host.h"

class QPrinter;
class QPrintDialog;
class QPrintPreviewDialog;
class SettingsManager;

class QtPrintHost : public PrintHost {
  public:
    // Dialogs stand over what over gives, which may be null. What hold gives lives while one waits. settings,
    // which may be null, remembers the printer.
    QtPrintHost(std::function<QWidget*()> over, std::function<std::shared_ptr<void>()> hold,
                SettingsManager* settings = nullptr)
        : over_(std::move(over)), hold_(std::move(hold)), settings_(settings) {}

    bool hasPrinter() override;
    PrintOutcome run(const PrintJob& job, const Body& body) override;
    void showBox(const std::string& title, const std::string& text) override;

    // In place of the user on the offscreen platform: as in the dialog's end, true for printing.
    std::function<bool(QPrintDialog&)> choosePrinter;
    std::function<void(QPrintPreviewDialog&)> lookAtPreview;

  private:
    PrintOutcome toPrinter(const PrintJob& job, const Body& body);
    PrintOutcome toPreview(const PrintJob& job, const Body& body);
    std::unique_ptr<QPrinter> printerFor(const PrintJob& job) const;
    void keepPrinter(const QPrinter& printer);

    std::function<QWidget*()> over_;
    std::function<std::shared_ptr<void>()> hold_;
    SettingsManager* settings_;
};
