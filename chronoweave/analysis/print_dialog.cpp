#include "chronoweave/analysis/print_dialog.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <span>

#include "chronoweave/analysis/dialogs.h"
#include "chronoweave/analysis/file_to_write.h"
#include "chronoweave/analysis/table_pages.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/print/print.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/busy.h"
#include "windlib/dialog/print_host.h"

namespace {

constexpr int toPrinter = 1, toPreview = 2, toFile = 3;
constexpr const char* usualFile = "trvgui.pdf";
constexpr const char* stoppedEarly = "Printing was stopped early. ";
constexpr const char* noPrinter = "There is no printer: a PDF file is made.";

// Pages as typed; nothing when it is no number of them.
std::optional<int> pages_of(const std::string& typed) {
    const std::string_view text = text_trim(typed);
    int pages = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pages);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && pages >= 1 && pages <= traxPrint_MostPages ? std::optional(pages) : std::nullopt;
}

void close_by(DialogModel& model, int answer) {
    const bool asksPages = model.item("pages").enabled;
    if (!asksPages || pages_of(model.item("pages").text)) return model.close(answer);
    model.setMessage(gen_format("The number of pages is from 1 to %d.", traxPrint_MostPages));
}

// A choice of two that is as it was the last time.
struct LastingChoice {
    const char *item, *name;
    std::array<const char*, 2> words;
    int usual;
};
constexpr LastingChoice paperChoice{"paper", "PrintPaper", {"a4", "letter"}, 0};
constexpr std::array<LastingChoice, 2> canvasChoices{paperChoice,
                                                     {"turn", "PrintTurn", {"portrait", "landscape"}, 1}};
constexpr std::array<LastingChoice, 2> tableChoices{paperChoice,
                                                    {"turn", "PrintTableTurn", {"portrait", "landscape"}, 0}};
using LastingChoices = std::span<const LastingChoice>;
constexpr const char *legendName = "PrintLegend", *yes = "yes", *no = "no";

void recall(DialogHost& host, LastingChoices choices, DialogModel& model) {
    for (const LastingChoice& choice : choices) {
        const std::string last = host.lastChoice(choice.name);
        const auto found = std::find(choice.words.begin(), choice.words.end(), last);
        const int at = static_cast<int>(found - choice.words.begin());
        model.setChoice(choice.item, found != choice.words.end() ? at : choice.usual);
    }
    model.setChecked("legend", host.lastChoice(legendName) == yes);
}

void keep(DialogHost& host, LastingChoices choices, const DialogModel& model) {
    for (const LastingChoice& choice : choices)
        host.keepChoice(choice.name, choice.words[model.item(choice.item).choice == 1 ? 1 : 0]);
    if (model.item("legend").enabled) host.keepChoice(legendName, model.item("legend").checked ? yes : no);
}

void prepare(DialogModel& model, PrintHost& printer) {
    model.setChoice("range", 0);
    model.setText("pages", "1");
    if (!printer.hasPrinter()) model.setMessage(noPrinter);
    model.onPress = [&model](const std::string& name) {
        if (name == "ok") return close_by(model, toPrinter);
        if (name == "preview") return close_by(model, toPreview);
        if (name == "pdf") return close_by(model, toFile);
        model.close(Dialog_Dismissed);
    };
}

// Empty when the user cancelled.
std::string ask_file(DialogHost& host) {
    const std::vector<std::string> chosen = host.chooseFiles({.of = FileQuestion::Of::New,
                                                              .title = "Print to PDF File",
                                                              .button = "&Print",
                                                              .suggested = usualFile,
                                                              .filters = {"PDF files (*.pdf)"},
                                                              .settingsName = "PrintFile"});
    if (chosen.empty() || chosen.front().empty()) return {};
    return dialogs_FileToWrite(host, chosen.front(), "pdf");
}

// What the answered dialog asks for; a file is asked for here. Nothing when the user cancelled.
std::optional<PrintJob> job_of(DialogHost& host, PrintHost& printer, LastingChoices choices,
                               const DialogModel& model, int answer) {
    if (answer < toPrinter) return std::nullopt;
    keep(host, choices, model);
    PrintJob job;
    job.paper = model.item("paper").choice == 1 ? PagePaper::Letter : PagePaper::A4;
    job.turn = model.item("turn").choice == 0 ? PageTurn::Portrait : PageTurn::Landscape;
    job.to = answer == toPreview ? PrintJob::To::Preview : PrintJob::To::Printer;
    if (answer == toFile || (answer == toPrinter && !printer.hasPrinter())) {
        job.to = PrintJob::To::File;
        job.file = ask_file(host);
        if (job.file.empty()) return std::nullopt;
    }
    return job;
}

PrintHost* printer_of(DialogHost* host) {
    return host == nullptr ? nullptr : host->printHost();
}

}  // namespace

bool dialogs_AskPrint(_LaCanvasData& canvas, int listWidth) {
    DialogHost* host = canvas.calls.host;
    PrintHost* printer = printer_of(host);
    if (printer == nullptr) return TRAX_Print(canvas, listWidth, {}, {}) == 1;  // which says so
    DialogModel model(dialogs_Print());
    prepare(model, *printer);
    recall(*host, canvasChoices, model);
    model.setChoiceEnabled("range", 1, traxPrint_HasSelection(canvas));
    const int answer = host->run(model);
    const auto job = job_of(*host, *printer, canvasChoices, model, answer);
    if (!job) return false;
    const TraxPrintOptions options{
        .range = model.item("range").choice == 1 ? TraxPrintRange::Selection : TraxPrintRange::View,
        .pages = pages_of(model.item("pages").text).value_or(1),
        .foot = model.item("legend").checked ? TraxPrintFoot::Legend : TraxPrintFoot::None};
    return TRAX_Print(canvas, listWidth, *job, options) == 1;
}

std::optional<std::string> dialogs_PrintTables(DialogHost& host, const std::string& title,
                                               const std::vector<const MScrollList*>& lists,
                                               const Progress& progress) {
    PrintHost* printer = printer_of(&host);
    if (printer == nullptr) {
        host.beep();
        return std::nullopt;
    }
    DialogModel model(dialogs_PrintTable());
    prepare(model, *printer);
    recall(host, tableChoices, model);
    const int answer = host.run(model);
    auto job = job_of(host, *printer, tableChoices, model, answer);
    if (!job) return std::nullopt;
    job->name = title;
    TablePrinted printed = TablePrinted::Done;
    const PrintOutcome outcome = printer->run(*job, [&](PageDevice& page) {
        const BusyWork busy(GateWork::Print, dialog_Busy(host));
        printed = table_DrawPages(page, title, lists, progress);
        return printed == TablePrinted::Done || printed == TablePrinted::Stopped;
    });
    if (printed == TablePrinted::Failed) host.message("Failed to print the table.");
    if (outcome.end == PrintOutcome::End::Failed && !outcome.message.empty()) host.message(outcome.message);
    if (outcome.end != PrintOutcome::End::Printed) return std::nullopt;
    return (printed == TablePrinted::Stopped ? stoppedEarly : "") + outcome.message;
}
