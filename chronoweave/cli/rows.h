// Rows of a result in one of three forms: JSON (one object a line), CSV, or text in columns for people. A row
// is written value by value into one block of bytes, which goes out when it is full.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "chronoweave/cli/cell.h"
#include "chronoweave/cli/request.h"

struct Column {
    const char* key;
    int width = 0;  // least characters in text; negative: aligned left
    CellForm form = CellForm::Plain;
};

// The columns of a command, in the order in which rows have them.
struct RowLayout {
    std::vector<Column> columns;
    size_t ofJson = SIZE_MAX;              // so many of them, from the first, are keys of JSON
    std::vector<const char*> tables = {};  // those of text and CSV, in their order; none: all as they stand
};

struct Fact {
    const char* key;
    Cell value;
};

class RowWriter {
  public:
    // Opens the output; good() is false when that failed, which has been said. ticksPerSecond is of the clock
    // of the rows' times.
    RowWriter(const CommandLine& line, RowLayout layout, uint64_t ticksPerSecond = 1);
    ~RowWriter();
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    // False, too, once something could not be written: what follows would be in vain.
    bool good() const { return file_ != nullptr && reason_ == 0; }
    RowForm form() const { return form_; }

    // One row, a value for each column.
    void row(std::span<const Cell> cells);
    void row(std::initializer_list<Cell> cells) { row(std::span(cells.begin(), cells.size())); }
    // Facts of one thing: JSON as an object, CSV as a head and a row, otherwise a key and its value a line.
    void facts(std::span<const Fact> facts);
    void facts(std::initializer_list<Fact> list) { facts(std::span(list.begin(), list.size())); }
    // A line for people, in text alone; a line of the program's own words and of names.
    void note(std::string_view line);
    // Hands on what is held, for whoever reads while more is to come.
    void send();
    // Writes out what is held, ahead of that the head of a table with no rows; false, and a message, when
    // something could not be written.
    [[nodiscard]] bool close();

  private:
    void jsonRow(std::span<const Cell> cells);
    void tableRow(std::span<const Cell> cells);
    void head();
    void padded(const Cell& cell, const Column& column);
    void jsonFacts(std::span<const Fact> facts);
    void endLine();
    void flush();

    std::string name_;
    std::FILE* file_ = nullptr;
    RowForm form_;
    bool terminal_ = false;
    RowLayout layout_;
    std::vector<size_t> shown_;          // columns of a table, by place
    std::vector<std::string> jsonKeys_;  // with quotes and colon
    CellWriter writer_;
    RowBuffer buffer_;
    bool headed_ = false;
    int reason_ = 0;  // why something could not be written
};
