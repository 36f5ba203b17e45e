// What the reading of raw event files and log images says, in one place. Lines for the console end
// in a line end; sentences for a caller do not.
#pragma once

inline constexpr char words_CannotOpenTrr[] = "Cannot open TRR file.";
inline constexpr char words_BadFormatTrr[] = "Bad format TRR file.";
inline constexpr char words_Unsupported[] = "Unsupported OS or Architecture.";

inline constexpr char words_HeaderRead[] = "Error in reading KORVANTIS Raw Event File";
inline constexpr char words_Architecture[] = "WARNING: Unknown architecture code 0x%x.\n";
inline constexpr char words_Seek[] = "Cannot seek to file position (0x%llx)";
inline constexpr char words_BadByte[] = "Bad TRR byte at offset 0x%llx: 0x%x\n";
inline constexpr char words_TooLong[] =
    "Warning: drop event with abnormal length: %d(max KORVANTIS length=%d)\n";
inline constexpr char words_TooShort[] = "Warning: drop event with abnormal length: %d(min length=%d)\n";

inline constexpr char words_ImageOutside[] = "Corrupted log image: address 0x%x lies outside the image.";
inline constexpr char words_ImageCut[] =
    "Corrupted log image: the record at address 0x%x is cut by the end of the image.";
inline constexpr char words_ImageOverrun[] =
    "Corrupted log image: the records run past the newest one, at address 0x%x.";
inline constexpr char words_ImageWrap[] =
    "Corrupted log image: no record of the ring's old part ends at the wrap address 0x%x.";
inline constexpr char words_ImageTasks[] =
    "Corrupted log image: its table of %u tasks is cut by the end of the image.";
