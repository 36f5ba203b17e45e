// What merging says, in one place. Sentences without the name of the source, which stands ahead of them.
#pragma once

inline constexpr char words_OtherSystem[] =
    "events of %s can't be merged with those of \"%s\", which are of %s";
inline constexpr char words_OtherObjects[] = "its objects are of another kind than those of \"%s\"";
inline constexpr char words_NoClock[] =
    "it tells no clock rate, so that its times can't be brought to another's";
inline constexpr char words_NoLook[] = "it can't be read twice, which the alignment of ends asks for";
inline constexpr char words_NotRaw[] = "events of %s can't be written as a raw event file";
inline constexpr char words_NoSources[] = "there is nothing to merge";
inline constexpr char words_OutputIsSource[] = "it is one of the files to be merged";
inline constexpr char words_NoSourceFormat[] = "it is no source of events that can be merged";

inline constexpr char words_Empty[] = "the file is empty";
inline constexpr char words_AllEmpty[] = "all the files are empty";
inline constexpr char words_MergeDropped[] = "%llu events were dropped for their lengths";
inline constexpr char words_MergeBadBytes[] = "%llu bytes are no part of any event";
inline constexpr char words_MergeUnread[] = "%llu bytes of a cut record are left at offset 0x%llx";
inline constexpr char words_MergeShortened[] = "the extra data of %llu events was cut to %zu bytes";
inline constexpr char words_MergeBack[] = "%llu times went back and were set to the newest before them";
inline constexpr char words_MergeFar[] = "%llu times lie past the end of the clock and were set to it";
inline constexpr char words_MergeUnturned[] =
    "the data of %llu events stays in the byte order of the source, as its meaning isn't known";
