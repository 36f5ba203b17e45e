// Waits of the service bus among Qt's windows (see windlib/waits): the windows paint, Escape leads to the
// question whether the wait should end, and the loop sleeps until there is something to do.
//
//     STPSocketListener listener(transport, events.watches, events.tasks);   serves the socket meanwhile
//     STPWindLibRetryHandler retry(transport, windows, "Waiting for the debugger", &seconds);
//     transport->awaitResponse(sequence, &retry, &status);
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "windlib/qt/held_input.h"
#include "windlib/waits/wait_windows.h"

class QEventLoop;
class QMessageBox;
class QtEventService;

class QtWaitWindows : public WaitWindows {
  public:
    enum class Questions {
        Nobody,    // an automatic run: the wait ends, and a warning has the words
        Modal,     // handlers of services rest while one stands
        Modeless,  // they go on; the question goes with its wait
    };
    // The service outlives this. quits: the program is about to end; may be empty. Needs the application
    // object.
    QtWaitWindows(QtEventService& events, Questions questions, std::function<bool()> quits = {});
    ~QtWaitWindows() override;

    bool quitting() override { return quits_ && quits_(); }
    bool hasDisplay() override;
    bool handlesEvents() override;
    bool serve(Serve what, std::chrono::milliseconds longest) override;
    void idle() override;
    void serveTimers() override;
    void background(std::chrono::milliseconds longest) override;
    void abort() override;
    void began(int handle) override;
    void ended(int handle) override;
    bool waitDialogMode() override { return questions_ == Questions::Modeless; }
    WaitAnswer ask(const WaitQuestion& question) override;
    WaitAnswer askModeless(int handle, const WaitQuestion& question) override;
    void closeQuestion(int handle) override;

  private:
    struct Wait {
        int handle;
        QPointer<QWidget> modal, popup;  // that stood when it began
        QPointer<QMessageBox> question;  // a modeless one
    };
    HeldInput::Hold holds(QObject* receiver) const;
    bool newDialogStands() const;
    void stopInnermost();

    QtEventService& events_;
    Questions questions_;
    std::function<bool()> quits_;
    std::vector<Wait> waits_;       // innermost last
    std::optional<Serve> serving_;  // nothing: outside, and where a dialog of a handler has its own loop
    std::unique_ptr<HeldInput> input_;
};
