// What the reading of core files says, in one place. Lines for the console end in a line end; sentences for a
// caller do not.
#pragma once

inline constexpr char words_CoreOpen[] = "error opening core file, command failed.";
inline constexpr char words_CoreRead[] = "error reading core file, command failed.";
inline constexpr char words_CoreFormat[] = "Bad format core file.";
inline constexpr char words_CoreVersion[] = "Unknown core file version: %d";
inline constexpr char words_CoreSize[] = "Bad file size for core file(version %d): %llu.";
inline constexpr char words_CoreSize2[] = "Bad filesize for core file (version 2).";
inline constexpr char words_CoreDamaged[] = "Corrupted core file (version %d).";
inline constexpr char words_CoreWild[] = "Corrupted core file: %s";
inline constexpr char words_CoreNoName[] = "No core file is specified.";
inline constexpr char words_CoreTrace[] = "Event %dth Physical Location(on Target): 0x%x.\n";
