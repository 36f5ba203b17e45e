// Tables of windows as text, for the clipboard and for files: titles of the columns, then the rows as they
// stand.
#pragma once

#include <string>
#include <vector>

#include "windlib/dialog/host.h"

// Columns separated by tabs, the rows that are selected or else all; line ends and tabs in a text become
// blanks.
std::string table_ForClipboard(const MScrollList& list);
// As comma-separated values, all rows of all lists, an empty line between two lists.
std::string table_AsCsv(const std::vector<const MScrollList*>& lists);
// Asks for a file and writes the lists there. A failure is told, and the old file stays. False when nothing
// was written.
bool table_SaveCsv(DialogHost& host, const std::string& suggested,
                   const std::vector<const MScrollList*>& lists);
