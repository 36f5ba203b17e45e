#include "chronoweave/cli/rows.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

std::string value_text(const nlohmann::ordered_json& value, ColumnForm form) {
    if (value.is_string()) return value.get<std::string>();
    if (form == ColumnForm::Id && value.is_number()) return gen_format("0x%x", value.get<uint32_t>());
    if (form == ColumnForm::Seconds && value.is_number_float())
        return gen_format("%.9f", value.get<double>());
    if (form == ColumnForm::Percent && value.is_number_float())
        return gen_format("%.2f", value.get<double>());
    return value.dump();
}

// Names come from traces: no byte of theirs may break a line or reach the terminal as a control.
std::string printable(std::string text) {
    for (char& c : text)
        if ((c >= 0 && c < ' ') || c == 0x7F) c = '?';
    return text;
}

// True when the output is the command's own input: the file itself, or a file of its store.
bool is_input(const std::string& output, const std::string& path) {
    for (const std::string& base : {path, path_without_extension(path)})
        for (const char* extension : {"", ".trs", ".tri", ".trv"}) {
            std::error_code error;
            if (std::filesystem::equivalent(output, base + extension, error)) return true;
        }
    return false;
}

}  // namespace

RowWriter::RowWriter(const CommandLine& line, std::vector<Column> columns)
    : name_(line.output), columns_(std::move(columns)) {
    form_ = line.json ? Form::Json : line.csv ? Form::Csv : Form::Text;
    if (!name_.empty() && is_input(name_, line.path)) {
        cli_Failure(name_ + ": the result would overwrite what it is made of");
        return;
    }
    file_ = name_.empty() ? stdout : std::fopen(name_.c_str(), "w");
    if (!file_) cli_Failure(name_ + ": " + std::strerror(errno));
}

RowWriter::~RowWriter() {
    if (file_ && file_ != stdout) std::fclose(file_);
}

std::string RowWriter::cell(const Column& column, const nlohmann::ordered_json& values) const {
    const auto found = values.find(column.key);
    if (found == values.end() || found->is_null())
        return form_ == Form::Csv || column.form == ColumnForm::Percent ? "" : "-";
    return value_text(*found, column.form);
}

void RowWriter::head() {
    headed_ = true;
    nlohmann::ordered_json names;
    for (const Column& column : columns_) names[column.key] = column.key;
    row(names);
}

void RowWriter::row(const nlohmann::ordered_json& values) {
    if (form_ == Form::Json) {
        std::fputs((values.dump() + '\n').c_str(), file_);
        return;
    }
    if (!headed_) head();
    std::string line;
    for (size_t i = 0; i < columns_.size(); ++i) {
        const std::string text = cell(columns_[i], values);
        if (form_ == Form::Csv) {
            line += (i > 0 ? "," : "") + text_csv(text);
        } else {
            if (i > 0) line += "  ";
            line += gen_format("%*s", columns_[i].width, printable(text).c_str());
        }
    }
    std::fputs((line + '\n').c_str(), file_);
}

void RowWriter::facts(const nlohmann::ordered_json& values) {
    if (form_ == Form::Json) return row(values);
    if (form_ == Form::Csv) {
        std::string keys, line;
        for (const auto& [key, value] : values.items()) {
            keys += (keys.empty() ? "" : ",") + text_csv(key);
            line += (line.empty() ? "" : ",") + text_csv(value_text(value, ColumnForm::Plain));
        }
        std::fputs((keys + '\n' + line + '\n').c_str(), file_);
        return;
    }
    for (const auto& [key, value] : values.items())
        std::fputs(
            gen_format("%-20s %s\n", key.c_str(), printable(value_text(value, ColumnForm::Plain)).c_str())
                .c_str(),
            file_);
}

void RowWriter::note(const std::string& line) {
    if (form_ == Form::Text) std::fputs((printable(line) + '\n').c_str(), file_);
}

bool RowWriter::close() {
    if (form_ != Form::Json && !headed_ && !columns_.empty()) head();
    const bool written = std::fflush(file_) == 0 && !std::ferror(file_);
    const int reason = errno;
    const bool closed = file_ == stdout || std::fclose(file_) == 0;
    file_ = nullptr;
    if (written && closed) return true;
    cli_Failure((name_.empty() ? "standard output" : name_) + ": " + std::strerror(reason));
    return false;
}
