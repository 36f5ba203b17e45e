#include "windlib/qt/file_chooser.h"

#include <QFileDialog>

#include "shared/libcxxutil/paths.h"
#include "windlib/config/settings.h"

namespace {

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

void prepare(QFileDialog& dialog, const FileQuestion& question) {
    dialog.setObjectName(QStringLiteral("ChooseFiles"));
    dialog.setAccessibleName(text(question.title));
    QStringList filters;
    for (const std::string& filter : question.filters) filters.append(text(filter));
    filters.append(QStringLiteral("All files (*)"));
    dialog.setNameFilters(filters);
    const bool isNew = question.of == FileQuestion::Of::New;
    dialog.setAcceptMode(isNew ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(isNew ? QFileDialog::AnyFile : QFileDialog::ExistingFiles);
    dialog.setLabelText(QFileDialog::Accept, text(question.button));
}

}  // namespace

std::vector<std::string> files_Choose(QWidget* over, SettingsManager* settings,
                                      const FileQuestion& question) {
    QFileDialog dialog(over, text(question.title));
    prepare(dialog, question);
    const bool isRemembered = settings && !question.settingsName.empty();
    const std::vector<std::string> last =
        isRemembered ? settings->Recent(question.settingsName) : std::vector<std::string>();
    if (!last.empty()) dialog.setDirectory(text(path_directory(last.front())));
    if (!question.suggested.empty()) {
        if (question.suggested != path_file(question.suggested))
            dialog.setDirectory(text(path_directory(question.suggested)));
        dialog.selectFile(text(std::string(path_file(question.suggested))));
    }
    if (dialog.exec() != QDialog::Accepted) return {};
    std::vector<std::string> names;
    for (const QString& name : dialog.selectedFiles()) names.push_back(name.toStdString());
    if (isRemembered && !names.empty()) settings->AddRecent(names.front(), question.settingsName);
    return names;
}
