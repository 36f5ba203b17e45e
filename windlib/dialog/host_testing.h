// A host for tests: dialogs are driven by a function of the test, and all that was shown is recorded.
#pragma once

#include <deque>
#include <functional>
#include <map>

#include "windlib/dialog/host.h"

class RecordingHost : public DialogHost {
  public:
    std::function<void(DialogModel&)> drive;  // does as the user in a dialog that Run shows; should close it
    std::vector<std::unique_ptr<DialogModel>> windows;  // open ones, oldest first
    std::vector<std::string> messages, questions, copied;
    std::vector<PopUpRow> popUp;  // the last one's rows
    std::string popUpTitle;
    int popUpAnswer = -1;
    bool askAnswer = true;
    std::optional<uint32_t> colourAnswer;
    std::string saveAnswer;
    std::vector<FileQuestion> fileQuestions;
    std::deque<std::vector<std::string>> fileAnswers;  // to the next of them; cancelled when none is left
    std::map<std::string, std::string> choices;        // that are remembered
    DialogModel* raised = nullptr;
    int beeps = 0, busy = 0;

    int run(DialogModel& model) override {
        if (drive) drive(model);
        if (!model.isClosed()) model.dismiss();
        return model.result();
    }
    // Windows that have been closed are dropped at the next call.
    DialogModel& open(std::unique_ptr<DialogModel> model) override {
        dropClosed();
        windows.push_back(std::move(model));
        return *windows.back();
    }
    void dropClosed() {
        std::erase_if(windows, [](const auto& window) { return window->isClosed(); });
    }
    void raise(DialogModel& model) override { raised = &model; }
    void message(const std::string& text) override { messages.push_back(text); }
    bool ask(const std::string& question) override {
        questions.push_back(question);
        return askAnswer;
    }
    int popUpMenu(const std::string& title, const std::vector<PopUpRow>& rows) override {
        popUpTitle = title;
        popUp = rows;
        return popUpAnswer;
    }
    std::optional<uint32_t> chooseColour(const std::string&, uint32_t) override { return colourAnswer; }
    std::string chooseSaveFile(const std::string&, const std::string&, const std::string&) override {
        return saveAnswer;
    }
    std::vector<std::string> chooseFiles(const FileQuestion& question) override {
        fileQuestions.push_back(question);
        std::vector<std::string> answer;
        if (!fileAnswers.empty()) answer = std::move(fileAnswers.front()), fileAnswers.pop_front();
        return answer;
    }
    std::string lastChoice(const std::string& name) override { return choices[name]; }
    void keepChoice(const std::string& name, const std::string& chosen) override { choices[name] = chosen; }
    void copyText(const std::string& text) override { copied.push_back(text); }
    void beep() override { ++beeps; }
    void showBusy(bool on) override { busy += on ? 1 : -1; }
    PrintHost* printer = nullptr;  // what prints
    PrintHost* printHost() override { return printer; }
};
