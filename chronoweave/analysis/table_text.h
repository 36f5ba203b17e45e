// Tables of windows as text, for the clipboard and for files: titles of the columns, then the rows as they
// stand.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "shared/libcxxutil/progress.h"
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

// What the menu of a window with tables works on, by the names of its lists.
struct TableMenu {
    std::string copied;              // the list that "Copy" takes
    std::vector<std::string> saved;  // those that "Save As CSV..." writes
    std::string file;                // and the file's name at first
    Progress progress = {};          // of printing them
};
// Carries out a command of that menu: "Copy", "SaveCsv", "Print" or "Close". Any other one beeps.
void table_Menu(DialogModel& model, DialogHost& host, const TableMenu& menu, std::string_view command);
