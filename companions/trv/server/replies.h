// What the event server says, as lines that a reader of lines understands: short ones, none of which looks
// like the prompt or holds a byte that would end the reading.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The server waits for a command. It stands behind each answer, and nowhere else.
inline constexpr std::string_view reply_Prompt = "> ";
// Bytes of a line with its end, at most.
constexpr size_t reply_MostBytes = 120;

// The words by which whoever asked tells that it was done. No other line holds them.
inline constexpr std::string_view reply_Established = "established";
inline constexpr std::string_view reply_Disconnected = "disconnected from";
inline constexpr std::string_view reply_LoggingOn = "event logging: on";
inline constexpr std::string_view reply_LoggingOff = "event logging: off";
inline constexpr std::string_view reply_Enabled = "enabled";
inline constexpr std::string_view reply_Disabled = "disabled";
// What follows is a number.
inline constexpr std::string_view reply_Mask = "Target Event Log Mask:";

// How the line begins that tells, unasked, that no event will come any more.
inline constexpr std::string_view reply_Ended = "The target has ended";
// How those begin that tell, unasked, that events were lost, a number behind it, and why live mode ended.
inline constexpr std::string_view reply_Lost = "The system lost";
inline constexpr std::string_view reply_RecordingEnded = "Live mode ended:";

// The text, of one sentence a line, in such lines.
std::string reply_Lines(std::string_view text);
// The same of a text that others had a part in: none of the words above is left whole.
std::string reply_Harmless(std::string_view text);
