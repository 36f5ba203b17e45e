// What prints for logic that knows no printer: an interface that is handed down with the dialogs
// (DialogHost::Printer). Tests have one that records (print_testing.h).
#pragma once

#include <functional>
#include <string>

#include "windlib/lagraph/page.h"

enum class PagePaper { A4, Letter };
enum class PageTurn { Portrait, Landscape };

struct PrintJob {
    enum class To {
        Printer,  // which, the user says
        Preview,  // from where the user may print
        File,     // a PDF of the name
    };
    std::string name;  // of the document
    PagePaper paper = PagePaper::A4;
    PageTurn turn = PageTurn::Portrait;
    To to = To::Printer;
    std::string file = {};
};

struct PrintOutcome {
    enum class End { Printed, Cancelled, Failed };
    End end = End::Printed;
    std::string message = {};  // of the platform, for the user; may be empty, and may have several lines
};

class PrintHost {
  public:
    virtual ~PrintHost() = default;

    // False where the system has no printer: what is printed goes into a file then.
    virtual bool hasPrinter() = 0;
    // Lets the user choose printer and pages where the job goes to one, and has body draw on the device; a
    // preview does so each time that it is looked at otherwise. body gives false for what could not be
    // printed; it has told why.
    using Body = std::function<bool(PageDevice&)>;
    virtual PrintOutcome run(const PrintJob& job, const Body& body) = 0;
    // A message with a title that must be acknowledged.
    virtual void showBox(const std::string& title, const std::string& text) = 0;
};
