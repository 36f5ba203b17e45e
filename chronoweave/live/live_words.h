// What live reading says, in one place: on the message line, or in a question.
#pragma once

inline constexpr char words_MoreEvents[] = "More events are coming than we can display promptly.";
inline constexpr char words_LoadFailed[] = "Error on loading source file \"%s\"";
inline constexpr char words_BadLiveFile[] = "Bad format TRR file.";
inline constexpr char words_LiveUnsupported[] = "Unsupported OS or Architecture.";
inline constexpr char words_WaitsForEvents[] = "Waiting for events in \"%s\".";
inline constexpr char words_LiveVanished[] = "Live reading has ended: \"%s\" is gone.";
inline constexpr char words_LiveShrunk[] =
    "Live reading has ended: \"%s\" is shorter than what was read of it.";
inline constexpr char words_LiveReplaced[] = "Live reading has ended: \"%s\" is another file than before.";
inline constexpr char words_LiveTrouble[] = "Live reading has ended: %s";
inline constexpr char words_CatchingUp[] = "Reading what came meanwhile ...";

inline constexpr char words_LiveOverwrite[] = "%s already exists and will be overwritten.  Continue?";
inline constexpr char words_LiveIntoCanvas[] = "Load file %s into canvas?";
