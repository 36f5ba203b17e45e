// What the buttons of the target's control panel ask of the event server. Each starts the server where there
// is none, and shows what the server says; the flags of the link follow what it acknowledged. What went wrong
// stands in the panel's output.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "chronoweave/live/target_link.h"

// Connects to the target, or disconnects from it. remember is told of a target that answered; it may be
// empty.
void TargetConnect(TargetLink& link, const std::string& target,
                   const std::function<void(const std::string& target)>& remember);
// Has the target log, or not.
void TargetStartStop(TargetLink& link);
// Has the server write to the file, given by a name that doesn't depend on a folder. For when it doesn't
// write.
void TargetEnable(TargetLink& link, const std::string& file);
void TargetDisable(TargetLink& link);
// text is the mask as typed.
void TargetSetMask(TargetLink& link, const std::string& text);
void TargetInfo(TargetLink& link);

// The server is there and connected to a target; tells otherwise.
bool TargetIsConnected(TargetLink& link);
// A number in the manner of C at the beginning of a text, whatever follows it; nothing when there is none.
std::optional<uint32_t> mask_Leading(std::string_view text);
