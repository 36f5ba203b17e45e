// The link of a canvas to its event server: the process, the flags that follow from what it acknowledged, and
// the commands' way there and back. Commands are lines; an answer is all that comes up to the next prompt.
// What is sent for which button stands in target_commands.h.
//
// One thread. A command waits for its answer; windows are painted meanwhile, and Escape ends the wait. What
// the server says unasked is read by a task, twice a second.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "chronoweave/live/link_wait.h"
#include "chronoweave/live/reply_lines.h"
#include "chronoweave/live/server_process.h"
#include "shared/libcxxutil/event_tasks.h"

enum TargetFlag : unsigned {
    Target_LiveModeEnabled = 1,  // the server writes the log file
    Target_LoggingStarted = 2,   // the target logs
    Target_Connected = 4,        // the server has a connection to the target
    Target_LoadPending = 8,      // the canvas is to load the log file once live mode is on
};

// What shows the link. The link outlives it.
class LinkPanel {
  public:
    virtual ~LinkPanel() = default;
    virtual void AddLine(const std::string& line) = 0;
    virtual void ShowMask(const std::string& mask) = 0;
    // Labels and fields as the flags want them.
    virtual void Refresh() = 0;
    virtual void Destroy() = 0;
};

// What the link needs; all outlive it. All must be set but tell.
struct LinkSurroundings {
    std::string installation;  // directory of the launcher and the server
    EventTasks* tasks = nullptr;
    LinkWait* wait = nullptr;
    std::function<int()> timeoutMs;                     // 0 or below: until the user stops the wait
    std::function<void(const std::string& text)> tell;  // what is said while no panel is open
};

struct TargetLink {
    enum class Mode {
        Unused,  // no panel was ever opened
        Ready
    };
    LinkSurroundings around;
    Mode mode = Mode::Unused;
    LinkPanel* panel = nullptr;
    unsigned flags = 0;  // TargetFlag
    std::string logFile = "intdump";
    std::string logPath;                    // the same in full, as the server was told last
    std::string maskText, targetText;       // as last in the fields
    std::string lastMessage;                // as last shown
    std::unique_ptr<ServerProcess> server;  // null: none runs
    bool alive = false;                     // it is believed to run; only the end of its pipe clears it
    std::optional<int> pollTask;
    ReplyLines replies;
    bool waits = false;  // for an answer

    bool Has(TargetFlag flag) const { return (flags & flag) != 0; }
    void Set(TargetFlag flag, bool on) { flags = on ? flags | flag : flags & ~static_cast<unsigned>(flag); }
};

// Shows a text of one or several lines. One with the target's mask goes into the mask field as well.
void ShowPanelMessage(TargetLink& link, const std::string& text);

// Starts the server; there is none. The failure is nobody's but the caller's to tell.
Result TargetLinkSpawn(TargetLink& link);
// The same, and tells the failure: false.
bool TargetLinkStart(TargetLink& link);
// Starts it where there is none, and reads what it says first. False, which was told, when it can't be
// started.
bool TargetLinkEnsureServer(TargetLink& link);

enum class LinkTells { Panel, Nobody };
// Whether a command can be sent: one with a '%' can't, which in its form would stand for something else.
bool TargetLinkMaySend(std::string_view text);
// True when the whole command went out.
bool TargetLinkSend(TargetLink& link, const std::string& text, LinkTells tells = LinkTells::Panel);

enum class LinkLine {
    Line,
    Prompt,
    Nothing,  // none in time, a byte that can't be, or the user stopped the wait
    End       // the far end of the pipe is gone
};
// Each byte may take so long; nothing: until the user stops it.
LinkLine TargetLinkReadLine(TargetLink& link, std::string& line,
                            std::optional<std::chrono::milliseconds> each);

enum class LinkAnswer {
    Expected,  // up to a prompt, with the expected text in it
    Refused,   // up to a prompt without it
    Nothing    // nothing complete came
};
// Reads and shows what comes up to the prompt. An empty text is not expected. timeoutMs: 0 or below for the
// target's own. A server that is gone is noticed here.
LinkAnswer TargetLinkAwait(TargetLink& link, std::string_view expected = {}, int timeoutMs = 0);
// What the server said unasked: at most 200 lines, for at most 20 milliseconds.
void TargetLinkPoll(TargetLink& link);
// Polls from now on, until the link is closed.
void TargetLinkStartPolling(TargetLink& link);

enum class LinkEnd { ForNow, Final };
enum class LinkPanelAfter { Stays, Goes };
// The server is told to end, and given up. Final: what was typed goes too.
void TargetLinkClose(TargetLink& link, LinkEnd end);
void TargetLinkReset(TargetLink& link, LinkEnd end, LinkPanelAfter panel);

enum class LinkNotifies { No, Yes };
// To be called when the server may be gone: nothing while it is believed to run, else the link is reset.
void TargetLinkServerLost(TargetLink& link, LinkNotifies notify);
