#include "chronoweave/live/target_link.h"

#include <array>
#include <cerrno>
#include <exception>

#include "chronoweave/live/link_words.h"
#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

using std::chrono::milliseconds;

namespace {

constexpr milliseconds pollEvery{500}, pollWait{1}, pollLongest{20}, serveEvery{20};
constexpr int pollLines = 200;

// One wait for an answer: none other begins within it, and no command of the user.
class Waiting {
  public:
    enum class For { Answer, Poll };
    Waiting(TargetLink& link, For what) : link_(link), what_(what) {
        link_.waits = true;
        if (what_ == For::Poll) return;
        token_ = gate_Begin(GateWork::TargetWait);
        link_.around.wait->Begin();
    }
    ~Waiting() {
        if (what_ == For::Answer) link_.around.wait->End();
        link_.waits = false;
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

  private:
    TargetLink& link_;
    For what_;
    Gate::Token token_;
};

// The first "\r\n" as "\n".
void mend_line_end(std::string& line) {
    const size_t at = line.find("\r\n");
    if (at != std::string::npos) line.erase(at, 1);
}

void take_mask(TargetLink& link, std::string_view line) {
    const size_t at = line.find(words_MaskLine);
    if (at == std::string_view::npos) return;
    link.maskText = text_trim(line.substr(at + sizeof words_MaskLine - 1));
    if (link.panel) link.panel->ShowMask(link.maskText);
}

// What is there now, without a wait.
LinkLine fill(TargetLink& link, bool& some) {
    std::array<uint8_t, 4096> room;
    const MovedBytes moved = pipe_Read(link.server->replies, room);
    some = moved.what == Moved::Some;
    switch (moved.what) {
        case Moved::Some:
            link.replies.Put(std::span(room).first(moved.bytes));
            return LinkLine::Line;
        case Moved::None:
            return LinkLine::Line;
        case Moved::End:
            return LinkLine::End;
        case Moved::Failed:
            break;
    }
    return LinkLine::Nothing;
}

void show_line(TargetLink& link, std::string line, std::string_view expected, LinkAnswer& answer) {
    if (!expected.empty() && line.find(expected) != std::string::npos) answer = LinkAnswer::Expected;
    mend_line_end(line);
    ShowPanelMessage(link, line);
}

// The end of the pipe, and nothing else, means that the server is gone.
LinkAnswer nothing_came(TargetLink& link, LinkLine why) {
    if (why == LinkLine::End) link.alive = false;
    TargetLinkServerLost(link, why == LinkLine::End ? LinkNotifies::Yes : LinkNotifies::No);
    return LinkAnswer::Nothing;
}

// Reads to the prompt, as long as goesOn says so.
template <class GoesOn>
LinkAnswer read_answer(TargetLink& link, std::string_view expected, std::optional<milliseconds> each,
                       GoesOn goesOn) {
    LinkAnswer answer = LinkAnswer::Refused;
    std::string line;
    while (goesOn()) {
        const LinkLine got = TargetLinkReadLine(link, line, each);
        if (got == LinkLine::Prompt) return answer;
        if (got != LinkLine::Line) return nothing_came(link, got);
        show_line(link, line, expected, answer);
    }
    return LinkAnswer::Nothing;
}

// A fault in the middle of the work is told, and is not the server's end.
template <class Work, class Failed>
Failed guarded(TargetLink& link, const char* words, Failed failed, Work work) {
    try {
        return work();
    } catch (const std::exception&) {
        if (*words != '\0') ShowPanelMessage(link, words);
        TargetLinkServerLost(link, LinkNotifies::No);
        return failed;
    }
}

bool short_write(TargetLink& link, LinkTells tells, int error) {
    if (tells == LinkTells::Panel) ShowPanelMessage(link, gen_format(words_ShortWrite, error));
    TargetLinkServerLost(link, LinkNotifies::No);
    return false;
}

bool write_command(TargetLink& link, const std::string& text, LinkTells tells) {
    if (!TargetLinkMaySend(text)) return short_write(link, tells, 0);
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const MovedBytes moved = pipe_Write(link.server->commands, {bytes, text.size()});
    if (moved.what == Moved::Some && moved.bytes == text.size()) return true;
    return short_write(link, tells, moved.what == Moved::End ? EPIPE : moved.error);
}

}  // namespace

void ShowPanelMessage(TargetLink& link, const std::string& text) {
    link.lastMessage = text;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        take_mask(link, line);
        if (link.panel) link.panel->AddLine(std::string(line));
    }
}

Result TargetLinkSpawn(TargetLink& link) {
    server_Reap();
    auto server = std::make_unique<ServerProcess>();
    Result started = server_Start(server_Programs(link.around.installation), *server);
    if (started.ok()) link.server = std::move(server);
    link.replies.Clear();
    return started;
}

bool TargetLinkStart(TargetLink& link) {
    if (const Result started = TargetLinkSpawn(link); !started) {
        gen_console("%s\n", started.text().c_str());
        ShowPanelMessage(link, words_NoSpawn);
        return false;
    }
    link.alive = true;
    return true;
}

bool TargetLinkEnsureServer(TargetLink& link) {
    if (link.server) return true;
    if (!TargetLinkStart(link)) return false;
    TargetLinkAwait(link);
    return true;
}

bool TargetLinkMaySend(std::string_view text) {
    return text.find('%') == std::string_view::npos;
}

bool TargetLinkSend(TargetLink& link, const std::string& text, LinkTells tells) {
    if (!link.server || text.empty()) return false;
    if (tells == LinkTells::Panel && !link.alive) return false;
    return guarded(link, tells == LinkTells::Panel ? words_SendFailed : "", false,
                   [&] { return write_command(link, text, tells); });
}

LinkLine TargetLinkReadLine(TargetLink& link, std::string& line, std::optional<milliseconds> each) {
    for (;;) {
        if (const auto got = link.replies.Next(line)) switch (*got) {
                case ReplyLines::Got::Line:
                    return LinkLine::Line;
                case ReplyLines::Got::Prompt:
                    return LinkLine::Prompt;
                case ReplyLines::Got::BadByte:
                    return LinkLine::Nothing;
            }
        if (link.around.wait->ForInput(link.server->replies, each) != LinkWait::Came::Input)
            return LinkLine::Nothing;
        bool some = false;
        const LinkLine filled = fill(link, some);
        if (!some && filled != LinkLine::Line) return filled;
    }
}

LinkAnswer TargetLinkAwait(TargetLink& link, std::string_view expected, int timeoutMs) {
    if (!link.alive || !link.server || link.waits) return LinkAnswer::Nothing;
    if (timeoutMs <= 0) timeoutMs = link.around.timeoutMs();
    const auto each = timeoutMs > 0 ? std::optional(milliseconds(timeoutMs)) : std::nullopt;
    const Waiting waiting(link, Waiting::For::Answer);
    LinkWait& wait = *link.around.wait;
    return guarded(link, words_ReplyFailed, LinkAnswer::Refused, [&] {
        auto served = wait.Now();
        return read_answer(link, expected, each, [&] {
            if (wait.Now() - served < serveEvery) return true;
            served = wait.Now();
            return wait.GoesOn();
        });
    });
}

void TargetLinkPoll(TargetLink& link) {
    server_Reap();
    if (!link.alive || !link.server || link.waits) return;
    const Waiting waiting(link, Waiting::For::Poll);
    guarded(link, words_ReplyFailed, LinkAnswer::Refused, [&] {
        const auto until = link.around.wait->Now() + pollLongest;
        int lines = 0;
        return read_answer(link, {}, pollWait,
                           [&] { return lines++ < pollLines && link.around.wait->Now() < until; });
    });
}

void TargetLinkStartPolling(TargetLink& link) {
    if (link.pollTask) return;
    link.pollTask = link.around.tasks->Add(pollEvery, link.around.wait->Now(), [&link] {
        TargetLinkPoll(link);
        return true;
    });
}

void TargetLinkClose(TargetLink& link, LinkEnd end) {
    if (link.mode == TargetLink::Mode::Ready) {
        if (link.pollTask) link.around.tasks->Remove(*link.pollTask);
        link.pollTask.reset();
        if (link.panel) link.panel->ShowMask(words_NoMask);
        if (link.server && link.alive) TargetLinkSend(link, "\nq\n", LinkTells::Nobody);
        if (end == LinkEnd::Final) link.maskText = link.targetText = link.lastMessage = {};
    }
    if (link.server) {
        server_Retire(std::move(*link.server));
        link.around.tasks->Once(server_TimeToEnd + pollEvery, link.around.wait->Now(), [] {
            server_Reap();
            return true;
        });
    }
    link.server.reset();
    link.replies.Clear();
    link.alive = false;
    link.flags &= Target_LoadPending;
}

void TargetLinkReset(TargetLink& link, LinkEnd end, LinkPanelAfter panel) {
    if (link.mode == TargetLink::Mode::Ready) {
        if (panel == LinkPanelAfter::Goes && link.panel) link.panel->Destroy();
        TargetLinkClose(link, end);
        if (end == LinkEnd::Final) {
            link.logFile.clear();
            link.mode = TargetLink::Mode::Unused;
        }
    }
    link.server.reset();
    link.flags = 0;
}

void TargetLinkServerLost(TargetLink& link, LinkNotifies notify) {
    if (link.alive) return;
    TargetLinkReset(link, LinkEnd::ForNow, LinkPanelAfter::Stays);
    if (link.panel) link.panel->Refresh();
    if (notify == LinkNotifies::No) return;
    if (!link.panel && link.around.tell) link.around.tell(words_ServerLost);
    ShowPanelMessage(link, words_ServerLost);
}
