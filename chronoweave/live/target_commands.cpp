#include "chronoweave/live/target_commands.h"

#include <cerrno>
#include <cstdlib>
#include <exception>

#include "chronoweave/live/link_words.h"
#include "shared/libcxxutil/report.h"

namespace {

bool has_line_end(const std::string& text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos;
}

// A command with the word by which its answer acknowledges it. Where sending failed, the reading notices why.
LinkAnswer ask(TargetLink& link, const std::string& command, std::string_view expected = {}) {
    if (!TargetLinkSend(link, command) && !TargetLinkMaySend(command)) return LinkAnswer::Refused;
    return TargetLinkAwait(link, expected);
}

// The same for one whose answer may stay away without more than that.
LinkAnswer ask_told(TargetLink& link, const std::string& command, std::string_view expected = {}) {
    const LinkAnswer answer = ask(link, command, expected);
    if (answer == LinkAnswer::Nothing && link.server && link.around.tell) link.around.tell(words_NoAnswer);
    return answer;
}

// The flag is as wanted once the server said so.
void change(TargetLink& link, TargetFlag flag, bool on, const std::string& command,
            std::string_view expected) {
    if (ask_told(link, command, expected) == LinkAnswer::Expected) link.Set(flag, on);
    if (link.panel) link.panel->Refresh();
}

// The first start of the server: what it says first must come.
bool start_for_connect(TargetLink& link) {
    if (link.server) return true;
    if (!TargetLinkStart(link)) return false;
    if (TargetLinkAwait(link) == LinkAnswer::Nothing) {
        TargetLinkClose(link, LinkEnd::ForNow);
        ShowPanelMessage(link, words_BadResponse);
        return false;
    }
    TargetLinkStartPolling(link);
    return true;
}

void disconnect(TargetLink& link) {
    if (ask_told(link, "d\n", words_Disconnected) == LinkAnswer::Expected) link.Set(Target_Connected, false);
    if (link.panel) link.panel->ShowMask(words_NoMask);
}

void connect(TargetLink& link, const std::string& target) {
    switch (ask(link, "c " + target + "\n", words_Established)) {
        case LinkAnswer::Expected:
            return link.Set(Target_Connected, true);
        case LinkAnswer::Refused:
            return;
        case LinkAnswer::Nothing:
            break;
    }
    TargetLinkClose(link, LinkEnd::ForNow);
    ShowPanelMessage(link, words_ConnectTimeOut);
}

void connect_or_disconnect(TargetLink& link, const std::string& target) {
    if (target.empty() || has_line_end(target)) return ShowPanelMessage(link, words_NoTarget);
    link.targetText = target;
    if (!start_for_connect(link)) return;
    if (link.Has(Target_Connected))
        disconnect(link);
    else
        connect(link, target);
}

}  // namespace

void TargetConnect(TargetLink& link, const std::string& target,
                   const std::function<void(const std::string& target)>& remember) {
    try {
        connect_or_disconnect(link, target);
    } catch (const std::exception&) {
        ShowPanelMessage(link, words_ConnectFailed);
    }
    if (!link.Has(Target_Connected)) {
        link.Set(Target_LoggingStarted, false);
        link.Set(Target_LiveModeEnabled, false);
    }
    if (link.panel) link.panel->Refresh();
    if (link.Has(Target_Connected) && !link.targetText.empty() && remember) remember(link.targetText);
}

bool TargetIsConnected(TargetLink& link) {
    if (!TargetLinkEnsureServer(link)) return false;
    if (!link.Has(Target_Connected)) ShowPanelMessage(link, words_NotConnected);
    return link.Has(Target_Connected);
}

void TargetStartStop(TargetLink& link) {
    if (!TargetIsConnected(link)) return;
    const bool on = link.Has(Target_LoggingStarted);
    change(link, Target_LoggingStarted, !on, on ? "s\n" : "g\n", on ? words_LoggingOff : words_LoggingOn);
}

void TargetEnable(TargetLink& link, const std::string& file) {
    if (has_line_end(file)) return ShowPanelMessage(link, words_BadFileName);
    change(link, Target_LiveModeEnabled, true, "l " + file + "\n", words_LiveOn);
}

void TargetDisable(TargetLink& link) {
    change(link, Target_LiveModeEnabled, false, "n\n", words_LiveOff);
}

std::optional<uint32_t> mask_Leading(std::string_view text) {
    const std::string whole(text);
    char* end = nullptr;
    const unsigned long value = std::strtoul(whole.c_str(), &end, 0);
    if (end == whole.c_str()) return std::nullopt;
    return static_cast<uint32_t>(value);
}

void TargetSetMask(TargetLink& link, const std::string& text) {
    if (!TargetIsConnected(link)) return;
    const auto mask = mask_Leading(text);
    if (!mask) return ShowPanelMessage(link, words_BadMask);
    ask_told(link, gen_format("M 0x%x\n", *mask));
}

void TargetInfo(TargetLink& link) {
    if (TargetIsConnected(link)) ask_told(link, "info\n");
}
