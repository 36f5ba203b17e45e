// A print host for tests: it draws on recorded pages and answers as it was told.
#pragma once

#include <utility>
#include <vector>

#include "windlib/dialog/print_host.h"
#include "windlib/lagraph/recording_page.h"

class RecordingPrinter : public PrintHost {
  public:
    bool printer = true;  // there is one
    PrintOutcome outcome{PrintOutcome::End::Printed, "Printed on\na printer."};
    int draws = 1;  // how often what is printed is drawn; 0: the user cancels ahead of that
    RecordingPage page{{.width = 1123, .height = 794, .printerX = 96, .printerY = 96, .canDraw = true}};

    std::vector<PrintJob> jobs;
    std::vector<std::pair<std::string, std::string>> boxes;  // title and text
    std::vector<bool> drawn;                                 // what the bodies gave

    bool hasPrinter() override { return printer; }
    PrintOutcome run(const PrintJob& job, const Body& body) override {
        jobs.push_back(job);
        for (int i = 0; i < draws; ++i) drawn.push_back(body(page));
        return outcome;
    }
    void showBox(const std::string& title, const std::string& text) override {
        boxes.emplace_back(title, text);
    }
};
