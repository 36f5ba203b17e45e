// What the import says, in one place. Lines for the console end in a line end; sentences for a caller do not.
#pragma once

inline constexpr char words_InvalidName[] = "Invalid file name.";
inline constexpr char words_CannotOpenTrr[] = "Cannot open TRR file.";
inline constexpr char words_CannotOpen[] = "Cannot open file.";
inline constexpr char words_BadFormatTrr[] = "Bad format TRR file.";
inline constexpr char words_Unsupported[] = "Unsupported OS or Architecture.";
inline constexpr char words_NoSource[] = "Can't open VOREL Chronoweave source file \"%s\".";
inline constexpr char words_Refused[] = "%llu events could not be taken into the store, which %s: %s";
inline constexpr char words_EndsAt[] = "ends at %s s";
inline constexpr char words_EndsEmpty[] = "is empty";
inline constexpr char words_EarlierGone[] = "The earlier store \"%s\" was removed.";
inline constexpr char words_SourceIsStore[] = "The store's file \"%s\" is the source itself.";

inline constexpr char words_HeaderRead[] = "Error in reading KORVANTIS Raw Event File";
inline constexpr char words_Architecture[] = "WARNING: Unknown architecture code 0x%x.\n";
inline constexpr char words_ClockRate[] = "WARNING: Clock rate %llu is above 32 bits, %u is taken.\n";
inline constexpr char words_Seek[] = "Cannot seek to file position (0x%llx)";
inline constexpr char words_BadByte[] = "Bad TRR byte at offset 0x%llx: 0x%x\n";
inline constexpr char words_TooLong[] =
    "Warning: drop event with abnormal length: %d(max KORVANTIS length=%d)\n";
inline constexpr char words_TooShort[] = "Warning: drop event with abnormal length: %d(min length=%d)\n";
inline constexpr char words_AppendFailed[] = "unexpected libtrv return value.\n";
inline constexpr char words_Unread[] = "%llu bytes of a cut record are left at offset 0x%llx.\n";
inline constexpr char words_Overrun[] = "More events are coming than we can display promptly.";

inline constexpr char words_ImageOutside[] = "Corrupted log image: address 0x%x lies outside the image.";
inline constexpr char words_ImageCut[] =
    "Corrupted log image: the record at address 0x%x is cut by the end of the image.";
inline constexpr char words_ImageOverrun[] =
    "Corrupted log image: the records run past the newest one, at address 0x%x.";
inline constexpr char words_ImageWrap[] =
    "Corrupted log image: no record of the ring's old part ends at the wrap address 0x%x.";
inline constexpr char words_ImageTasks[] =
    "Corrupted log image: its table of %u tasks is cut by the end of the image.";

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
