// Small text files as a whole: read with a limit, written so that nobody ever sees half of one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "shared/libcxxutil/result.h"

constexpr size_t fileMostBytes = size_t{16} << 20;

// Reads the whole file. Fails, with the system's reason and an empty text, when it can't be opened or read,
// is no regular file or holds more than most bytes. An empty file is read.
Result file_read_whole(const std::string& path, std::string& text, size_t most = fileMostBytes);

// Writes the text beside the file under its name with "_XXXXXX", and renames that to the file when every byte
// has reached the disk; the file is the old one or the new one at any moment. Where the path is a link, the
// file that it leads to is replaced. The mode of a file that stands is kept, a new one gets 0644. After a
// failure, which has the system's reason, the old file is untouched and nothing left beside it.
Result file_replace(const std::string& path, std::string_view text);

// Takes the next line off the text: ended by a line feed, a carriage return, both, or the end. False when
// there is none.
bool text_next_line(std::string_view& text, std::string_view& line);
