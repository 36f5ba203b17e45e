#include "chronoweave/analysis/table_text.h"

#include <numeric>

#include "chronoweave/analysis/print_dialog.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/text.h"
#include "windlib/busy.h"

namespace {

std::string title_of(const MScrollList& list, int column) {
    std::string title;
    for (const std::string& text : list.Column(column).header)
        if (!text.empty()) title += (title.empty() ? "" : " ") + text;
    return title;
}

std::string on_one_line(std::string text) {
    for (char& c : text)
        if (c == '\t' || c == '\n' || c == '\r') c = ' ';
    return text;
}

template <class Cell>
std::string table_of(const MScrollList& list, const std::vector<int>& rows, char separator, Cell&& cell) {
    std::string text;
    for (int column = 0; column < list.ColumnCount(); ++column)
        (column > 0 ? text += separator : text) += cell(title_of(list, column));
    text += '\n';
    for (const int row : rows) {
        for (int column = 0; column < list.ColumnCount(); ++column)
            (column > 0 ? text += separator : text) += cell(list.Text(row, column));
        text += '\n';
    }
    return text;
}

std::vector<int> all_rows(const MScrollList& list) {
    std::vector<int> rows(static_cast<size_t>(list.RowCount()));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

}  // namespace

std::string table_ForClipboard(const MScrollList& list) {
    return table_of(list, list.SelectionCount() > 0 ? list.SelectedRows() : all_rows(list), '\t',
                    on_one_line);
}

std::string table_AsCsv(const std::vector<const MScrollList*>& lists) {
    std::string text;
    for (const MScrollList* list : lists) {
        if (list->RowCount() == 0 && list != lists.front()) continue;
        if (!text.empty()) text += '\n';
        text += table_of(*list, all_rows(*list), ',', [](const std::string& cell) { return text_csv(cell); });
    }
    return text;
}

bool table_SaveCsv(DialogHost& host, const std::string& suggested,
                   const std::vector<const MScrollList*>& lists) {
    const std::string path = host.chooseSaveFile("Save As CSV", suggested, "Comma-Separated Values (*.csv)");
    if (path.empty()) return false;
    const Result written = [&] {
        const BusyWork busy(GateWork::Print, dialog_Busy(host));
        return file_replace(path, table_AsCsv(lists));
    }();
    if (!written) host.message("Can't write \"" + path + "\": " + written.reason() + '.');
    return written.ok();
}

void table_Menu(DialogModel& model, DialogHost& host, const TableMenu& menu, std::string_view command) {
    if (command == "Copy") {
        host.copyText(table_ForClipboard(model.list(menu.copied)));
    } else if (command == "SaveCsv" || command == "Print") {
        std::vector<const MScrollList*> lists;
        for (const std::string& name : menu.saved) lists.push_back(&model.list(name));
        if (command == "SaveCsv")
            table_SaveCsv(host, menu.file, lists);
        else if (const auto said = dialogs_PrintTables(host, model.title(), lists, menu.progress))
            model.setMessage(*said);
    } else if (command == "Close") {
        model.close(Dialog_Dismissed);
    } else {
        host.beep();
    }
}
