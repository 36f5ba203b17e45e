// The line preprocessor of settings files: directives that include files, choose lines by conditions, define
// macros and print. It is fed with lines by its owner, who reads the files and keeps those lines that are not
// directives and not skipped.
//
//     %include "FILE"          %if CONDITION   %ifdef NAME         %define NAME VALUE   %info TEXT   %echo
//     TEXT
//                              %elif CONDITION %else %endif        %undef NAME          %warning TEXT %error
//                              TEXT
//
// A condition is an integer expression (integer_evaluator.h) whose names are macros, their values again
// expressions, and whose functions are defined, notempty, fileexists (file_exists) and streq.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "shared/libcxxutil/integer_evaluator.h"
#include "shared/libcxxutil/report.h"

using macro_table = std::map<std::string, std::string, std::less<>>;

// What the preprocessor asks of the owner.
class ut_simple_preprocessor_client {
  public:
    virtual ~ut_simple_preprocessor_client() = default;
    // Where the line being handled stands; lines count from 1.
    virtual const std::string& file() const = 0;
    virtual int line() const = 0;
    // Goes on with this file before the rest of the present one. False when it can't be opened.
    virtual bool include(const std::string& path) = 0;
    // A whole message, with its location.
    virtual void message(ReportLevel level, const std::string& text) = 0;
    // What "info" and "echo" print.
    virtual void print(const std::string& text) = 0;
    // The third source of macros.
    virtual std::optional<std::string> macro(std::string_view) { return std::nullopt; }
};

// What a user of a preprocessor sees of it.
class ut_simple_preprocessor_interface {
  public:
    virtual ~ut_simple_preprocessor_interface() = default;
    virtual void HandleLine(std::string_view line) = 0;
    virtual bool IsSkipping() const = 0;
    virtual bool WasDirective() const = 0;
    virtual const std::string& LastIncludedPath() const = 0;
    virtual void define(std::string_view name, std::string_view value) = 0;
    virtual bool DefineFromLine(std::string_view line) = 0;
    virtual bool DefineFromText(std::string_view text) = 0;
    virtual Result expand(std::string_view name, std::string& value) = 0;
};

class simple_preprocessor : public ut_simple_preprocessor_interface,
                            private ut_simple_integer_evaluator_client_interface {
  public:
    static constexpr size_t mostIncludes = 32;

    // The outer table may be null; both it and the owner outlive the preprocessor. With undefinedIsEmpty a
    // macro that is in no table counts as empty in conditions; otherwise it is an error there.
    simple_preprocessor(char directive, const macro_table* outer, ut_simple_preprocessor_client& owner,
                        bool undefinedIsEmpty = false);

    // Takes one line without its end. Afterwards WasDirective tells if it was one, and the owner keeps the
    // line when it was none and IsSkipping is false.
    void HandleLine(std::string_view line) override;
    bool IsSkipping() const override;
    bool WasDirective() const override { return directive_; }
    // The path of the last "include", whether it could be opened or not.
    const std::string& LastIncludedPath() const override { return included_; }
    // True when a directive failed since the start.
    bool failed() const { return failed_; }

    // To be called around the lines of each file: conditions end with the file in which they began.
    // LeaveFile gives false when it had to end some.
    void EnterFile() { files_.push_back(frames_.size()); }
    [[nodiscard]] bool LeaveFile();

    // The preprocessor's own table goes before the outer one, and that before the owner's macros.
    void define(std::string_view name, std::string_view value) override;
    void undefine(std::string_view name);
    // "NAME VALUE"; the value may be in double quotes or missing. False when there is no name.
    bool DefineFromLine(std::string_view line) override;
    // Such lines, one a macro; false when one had no name.
    bool DefineFromText(std::string_view text) override;

    // The value of a macro with every "${NAME}" in it expanded. Fails when a macro isn't defined, expands to
    // itself, or grows past a megabyte; the value is of no use then.
    Result expand(std::string_view name, std::string& value) override;
    // A text with every "${NAME}" in it expanded, as above.
    Result ExpandText(std::string_view text, std::string& value);

    // The location of the line being handled, as messages give it.
    std::string location() const;

  private:
    // A condition between "if" and "endif". Its lines count when the branch is true and the frame around is.
    struct Frame {
        bool outerLive;
        bool taken;  // a branch was true already
        bool live;
        bool sawElse = false;
    };

    Result EvaluateName(std::string_view name, int64_t& value) override;
    Result EvaluateFunction(std::string_view name, const std::vector<std::string_view>& arguments,
                            int64_t& value) override;
    Result ArgumentText(std::string_view argument, std::string& value);
    std::optional<std::string> RawValue(std::string_view name);
    Result EnterMacro(std::string_view name);

    bool HandleCondition(std::string_view name, std::string_view argument);
    void HandleAction(std::string_view name, std::string_view argument);
    void DoElse(std::string_view name, std::string_view argument);
    bool condition(std::string_view text);
    bool ConditionDefined(std::string_view text);
    void include(std::string_view argument);
    std::string IncludedPath(std::string_view argument);
    std::string RelativeToFile(const std::string& path) const;
    void fault(const std::string& text);

    char mark_;
    const macro_table* outer_;
    ut_simple_preprocessor_client& owner_;
    bool undefinedIsEmpty_;
    macro_table own_;
    std::vector<Frame> frames_;
    std::vector<size_t> files_;        // number of frames at the start of each open file
    std::vector<std::string> active_;  // macros being expanded
    size_t evaluations_ = 0;           // of names in the present condition
    std::string included_;
    bool directive_ = false;
    bool failed_ = false;
};
