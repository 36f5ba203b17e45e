// Rows of a result in one of three forms: JSON (one object a line), CSV, or text in columns for people.
#pragma once

#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "chronoweave/cli/command_line.h"

// How a column's values read in text and CSV. Id: numbers as 0x12ab. Seconds: nine decimals. Percent: two.
enum class ColumnForm { Plain, Id, Seconds, Percent };

struct Column {
    const char* key;
    int width = 0;  // least characters in text; negative: aligned left
    ColumnForm form = ColumnForm::Plain;
};

class RowWriter {
  public:
    // Opens the output; good() is false when that failed, which has been said. An output that is the
    // command's input, or a file of its store, is refused.
    RowWriter(const CommandLine& line, std::vector<Column> columns);
    ~RowWriter();
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    bool good() const { return file_ != nullptr; }

    // One row; keys are those of the columns, a key may be absent, null reads "-" in text.
    void row(const nlohmann::ordered_json& values);
    // Facts of one thing: JSON as a row, CSV as a head and a row, otherwise a key and its value a line.
    void facts(const nlohmann::ordered_json& values);
    // A line for people, in text alone; a line of the program's own words and of names.
    void note(const std::string& line);
    // Flushes, ahead of that the head of a table with no rows; false, and a message, when something could not
    // be written.
    [[nodiscard]] bool close();

  private:
    enum class Form { Json, Csv, Text };
    std::string cell(const Column& column, const nlohmann::ordered_json& values) const;
    void head();

    std::string name_;
    std::FILE* file_ = nullptr;
    Form form_ = Form::Text;
    std::vector<Column> columns_;
    bool headed_ = false;
};
