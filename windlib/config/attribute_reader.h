// Reads the text of an attribute store: lines through the preprocessor, then statement by statement.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "shared/libcxxutil/simple_preprocessor.h"
#include "windlib/config/attribute_store.h"

// True for what stands in a name without quotes.
bool attribute_IsNameCharacter(char c);

class AttributeReader : private ut_simple_preprocessor_client {
  public:
    explicit AttributeReader(AttributeStore& store);

    // Reads the text into the store's tree; once per reader. False after any fault.
    bool Read(const std::string& path, std::string text);

  private:
    struct Source {
        std::string path;
        std::string text;
        std::string_view rest;  // of text
    };

    const std::string& file() const override { return file_; }
    int line() const override { return line_; }
    bool include(const std::string& path) override;
    void message(ReportLevel level, const std::string& text) override;
    void print(const std::string& text) override;

    void Open(const std::string& path, std::string text);
    void Close();
    bool NextLine();
    bool OnlyBlanksFollow() const;

    void SkipBlanks();
    bool AtEnd() const { return at_ >= text_.size(); }
    char Peek() const { return AtEnd() ? '\0' : text_[at_]; }
    bool Take(std::string_view token);

    bool Statement();
    bool Name(std::string& name);
    bool Operator(std::vector<std::string>& path, bool& more);
    bool OpenBlock(const std::vector<std::string>& path);
    bool CloseBlock();
    bool Assign(const std::vector<std::string>& path, bool add);
    bool Value(AttributeValue& value);
    bool List(AttributeValue& value);
    bool Item(AttributeValue& value);
    bool Word(std::string_view word, AttributeValue& value);
    bool Number(std::string_view word, bool negative, AttributeValue& value);
    bool Quoted(std::string& text);
    AttributeNode& NodeAt(const std::vector<std::string>& path);

    bool Fault(const std::string& text);
    void CountFault();
    void SkipStatement();

    AttributeStore& store_;
    simple_preprocessor preprocessor_;
    std::vector<std::unique_ptr<Source>> sources_;  // open files, the innermost last
    std::vector<int> outerLines_;                   // the line reached in each but the innermost
    std::string file_;
    int line_ = 0;
    std::string_view text_;  // the present line, of the innermost source
    size_t at_ = 0;
    AttributeNode* block_;
    size_t depth_ = 0;  // of block_
    size_t files_ = 0, bytes_ = 0, faults_ = 0;
    bool stopped_ = false;
};
