#include "chronoweave/cli/rows.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "chronoweave/cli/messages.h"

namespace {

constexpr size_t block_bytes = size_t{64} << 10;

RowForm form_of(const CommandLine& line) {
    return line.json ? RowForm::Json : line.csv ? RowForm::Csv : RowForm::Text;
}

bool goes_to_terminal(const CommandLine& line) {
    return line.output.empty() && ::isatty(STDOUT_FILENO);
}

std::vector<size_t> shown_columns(const RowLayout& layout) {
    std::vector<size_t> shown;
    if (layout.tables.empty())
        for (size_t at = 0; at < layout.columns.size(); ++at) shown.push_back(at);
    for (const std::string_view key : layout.tables)
        for (size_t at = 0; at < layout.columns.size(); ++at)
            if (key == layout.columns[at].key) shown.push_back(at);
    return shown;
}

}  // namespace

RowWriter::RowWriter(const CommandLine& line, RowLayout layout, uint64_t ticksPerSecond)
    : name_(line.output),
      form_(form_of(line)),
      terminal_(goes_to_terminal(line)),
      layout_(std::move(layout)),
      shown_(shown_columns(layout_)),
      writer_(form_, terminal_) {
    writer_.setClock(ticksPerSecond);
    for (const Column& column : layout_.columns)
        if (jsonKeys_.size() < layout_.ofJson) jsonKeys_.push_back('"' + std::string(column.key) + "\":");
    file_ = name_.empty() ? stdout : std::fopen(name_.c_str(), "w");
    if (!file_) cli_Failure(name_ + ": " + std::strerror(errno));
}

RowWriter::~RowWriter() {
    if (file_ && file_ != stdout) std::fclose(file_);
}

void RowWriter::row(std::span<const Cell> cells) {
    if (form_ == RowForm::Json) return jsonRow(cells);
    if (!headed_) head();
    tableRow(cells);
}

void RowWriter::jsonRow(std::span<const Cell> cells) {
    char mark = '{';
    for (size_t at = 0; at < jsonKeys_.size(); ++at) {
        if (cells[at].kind() == Cell::Kind::Absent) continue;
        buffer_.put(mark);
        mark = ',';
        buffer_.put(jsonKeys_[at]);
        writer_.put(cells[at], layout_.columns[at].form, buffer_);
    }
    buffer_.put('}');
    endLine();
}

void RowWriter::tableRow(std::span<const Cell> cells) {
    const bool csv = form_ == RowForm::Csv;
    std::string_view mark;
    for (const size_t at : shown_) {
        buffer_.put(mark);
        mark = csv ? "," : "  ";
        if (csv)
            writer_.put(cells[at], layout_.columns[at].form, buffer_);
        else
            padded(cells[at], layout_.columns[at]);
    }
    endLine();
}

void RowWriter::head() {
    headed_ = true;
    std::vector<Cell> keys;
    for (const Column& column : layout_.columns) keys.emplace_back(column.key);
    tableRow(keys);
}

void RowWriter::padded(const Cell& cell, const Column& column) {
    const size_t start = buffer_.size();
    writer_.put(cell, column.form, buffer_);
    const auto least = static_cast<size_t>(std::abs(column.width));
    const size_t length = buffer_.size() - start;
    if (length >= least) return;
    const size_t blanks = least - length;
    char* const behind = buffer_.room(blanks);
    if (column.width > 0) std::memmove(behind - length + blanks, behind - length, length);
    std::memset(column.width > 0 ? behind - length : behind, ' ', blanks);
    buffer_.took(behind + blanks);
}

void RowWriter::facts(std::span<const Fact> facts) {
    switch (form_) {
        case RowForm::Json:
            return jsonFacts(facts);
        case RowForm::Csv:
            for (const Fact& fact : facts) {
                if (&fact != &facts.front()) buffer_.put(',');
                buffer_.put(std::string_view(fact.key));
            }
            endLine();
            for (const Fact& fact : facts) {
                if (&fact != &facts.front()) buffer_.put(',');
                writer_.put(fact.value, CellForm::Plain, buffer_);
            }
            return endLine();
        case RowForm::Text:
            for (const Fact& fact : facts) {
                padded(fact.key, {"", -20});
                buffer_.put(' ');
                writer_.put(fact.value, CellForm::Plain, buffer_);
                endLine();
            }
            return;
    }
}

void RowWriter::jsonFacts(std::span<const Fact> facts) {
    char mark = '{';
    for (const Fact& fact : facts) {
        buffer_.put(mark);
        mark = ',';
        buffer_.put('"');
        buffer_.put(std::string_view(fact.key));
        buffer_.put(std::string_view("\":"));
        writer_.put(fact.value, CellForm::Plain, buffer_);
    }
    buffer_.put('}');
    endLine();
}

void RowWriter::note(std::string_view line) {
    if (form_ != RowForm::Text) return;
    writer_.putText(line, buffer_);
    endLine();
}

void RowWriter::endLine() {
    buffer_.put('\n');
    if (terminal_ || buffer_.size() >= block_bytes) flush();
}

void RowWriter::flush() {
    if (buffer_.size() == 0) return;
    errno = 0;
    const bool whole = std::fwrite(buffer_.data(), 1, buffer_.size(), file_) == buffer_.size() &&
                       (!terminal_ || std::fflush(file_) == 0);
    if (!whole && reason_ == 0) reason_ = errno != 0 ? errno : EIO;
    buffer_.clear();
}

void RowWriter::send() {
    flush();
    if (std::fflush(file_) != 0 && reason_ == 0) reason_ = errno;
}

bool RowWriter::close() {
    if (form_ != RowForm::Json && !headed_ && !layout_.columns.empty()) head();
    flush();
    errno = 0;
    const bool flushed = std::fflush(file_) == 0;
    if (!flushed && reason_ == 0) reason_ = errno != 0 ? errno : EIO;
    if (file_ != stdout && std::fclose(file_) != 0 && reason_ == 0) reason_ = errno;
    file_ = nullptr;
    if (reason_ == 0) return true;
    cli_Failure((name_.empty() ? "standard output" : name_) + ": " + std::strerror(reason_));
    return false;
}
