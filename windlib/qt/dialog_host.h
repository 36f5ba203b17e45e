// What shows dialogs and windows on screen for the logic of one canvas window (see windlib/dialog/host.h).
// On the offscreen platform nobody can answer, so that what would wait for the user answers at once: a
// question with no, a menu and a file or colour dialog with nothing chosen, unless an answer is given below.
#pragma once

#include <QPointer>
#include <QRect>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

#include "windlib/dialog/host.h"

class QMenu;
class QMenuBar;
class QtPrintHost;
class SettingsManager;

class QtDialogHost : public DialogHost {
  public:
    // Dialogs stand over the window, which outlives the host; it may be null. settings, which may be null,
    // remembers where windows stood, under "Trvgui." and the name of their description, and what was chosen.
    explicit QtDialogHost(QWidget* over, SettingsManager* settings = nullptr);
    // Closes the windows that are open; their models are told as by Escape.
    ~QtDialogHost() override;
    QtDialogHost(const QtDialogHost&) = delete;
    QtDialogHost& operator=(const QtDialogHost&) = delete;

    // Makes the menu bar of a window whose description has a MenuLine item, by the description's name. The
    // window owns it. Chosen rows go to DialogModel::menu. Empty, or null from it: no menu bar.
    std::function<QMenuBar*(const std::string& name, DialogModel& model)> makeMenuBar;
    // The busy look with progress of the window; empty: the pointer alone.
    std::function<void(bool busy)> setBusy;
    // Answers on the offscreen platform.
    std::function<bool(const std::string& question)> answer;
    std::function<std::vector<std::string>(const FileQuestion& question)> filesChosen;
    std::function<void(QMenu&)> popUpShown;  // the menu is about to be shown, and then waits for a choice

    int run(DialogModel& model) override;
    DialogModel& open(std::unique_ptr<DialogModel> model) override;
    void raise(DialogModel& model) override;
    void message(const std::string& text) override;
    bool ask(const std::string& question) override;
    int popUpMenu(const std::string& title, const std::vector<PopUpRow>& rows) override;
    std::optional<uint32_t> chooseColour(const std::string& title, uint32_t start) override;
    std::string chooseSaveFile(const std::string& title, const std::string& suggested,
                               const std::string& filter) override;
    std::vector<std::string> chooseFiles(const FileQuestion& question) override;
    std::string lastChoice(const std::string& name) override;
    void keepChoice(const std::string& name, const std::string& chosen) override;
    void copyText(const std::string& text) override;
    void beep() override;
    void showBusy(bool busy) override;
    PrintHost* printHost() override;

    // The window of an open model; null when there is none.
    QWidget* windowOf(const DialogModel& model) const;
    size_t openWindows() const;

  private:
    class Window;
    class Waiting;
    struct Shown;

    void closed(Shown& shown);
    void reapSoon();
    void reap();
    QWidget* parentOfDialogs() const;

    QWidget* over_;
    SettingsManager* settings_;
    std::vector<std::unique_ptr<Shown>> shown_;
    std::unique_ptr<QtPrintHost> printer_;
    int waiting_ = 0;  // calls that wait for the user now: nothing is destroyed meanwhile
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};
