// What the import says, in one place. Lines for the console end in a line end; sentences for a caller do not.
// What a format says stands beside the format.
#pragma once

inline constexpr char words_InvalidName[] = "Invalid file name.";
inline constexpr char words_CannotOpen[] = "Cannot open file.";
inline constexpr char words_NoSource[] = "Can't open VOREL Chronoweave source file \"%s\".";
inline constexpr char words_Refused[] = "%llu events could not be taken into the store, which %s: %s";
inline constexpr char words_EndsAt[] = "ends at %s s";
inline constexpr char words_EndsEmpty[] = "is empty";
inline constexpr char words_EarlierGone[] = "The earlier store \"%s\" was removed.";
inline constexpr char words_SourceIsStore[] = "The store's file \"%s\" is the source itself.";
inline constexpr char words_NoFolder[] = "The folder \"%s\" for the store does not exist.";

inline constexpr char words_ClockRate[] = "WARNING: Clock rate %llu is above 32 bits, %u is taken.\n";
inline constexpr char words_AppendFailed[] = "unexpected libtrv return value.\n";
inline constexpr char words_Unread[] = "%llu bytes of a cut record are left at offset 0x%llx.\n";
inline constexpr char words_FarTime[] =
    "WARNING: Event %llu is at tick %llu; times from 2^63 on are ordered before all others.\n";
inline constexpr char words_Overrun[] = "More events are coming than we can display promptly.";
