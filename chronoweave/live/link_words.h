// What the link to the event server says, in one place; it stands in the panel's output.
#pragma once

inline constexpr char words_NoSpawn[] = "Chronoweave: Unable to spawn trv server!\n";
inline constexpr char words_SendFailed[] = "Chronoweave: failed to send command to TRV!\n";
inline constexpr char words_ReplyFailed[] = "Chronoweave: failed to get response from TRV!\n";
inline constexpr char words_ShortWrite[] = "Cannot send message to event server(errno=%d).\n";
inline constexpr char words_ServerLost[] = "Chronoweave: event server terminated or was killed\n";
inline constexpr char words_ConnectFailed[] = "Chronoweave: failed to connect to target!\n";
inline constexpr char words_NoTarget[] = "Chronoweave: no connection information.\n";
inline constexpr char words_NotConnected[] = "Chronoweave: target is not connected!\n";
inline constexpr char words_BadResponse[] =
    "Chronoweave: failed to get correct response from trv.\nChronoweave: closed trv connection\n";
inline constexpr char words_ConnectTimeOut[] =
    "Chronoweave: timeout connecting to target\nChronoweave: closed trv connection\n";
inline constexpr char words_BadMask[] =
    "Chronoweave: Mask string is invalid (should be an integer string).\n";
inline constexpr char words_BadFileName[] = "Invalid file name.\n";

// These stand on the message line: the output has no words for them.
inline constexpr char words_WaitsForServer[] =
    "Waiting for the event server to answer. Escape stops the wait.";
inline constexpr char words_NoAnswer[] = "The event server has not answered.";

// In a line of the server: what follows it is the target's mask.
inline constexpr char words_MaskLine[] = "Target Event Log Mask:";
// The mask that is not known.
inline constexpr char words_NoMask[] = "N/A";

// In the answers to the commands: that the server did what was asked.
inline constexpr char words_Established[] = "established";
inline constexpr char words_Disconnected[] = "disconnected from";
inline constexpr char words_LoggingOn[] = "event logging: on";
inline constexpr char words_LoggingOff[] = "event logging: off";
inline constexpr char words_LiveOn[] = "enabled";
inline constexpr char words_LiveOff[] = "disabled";
