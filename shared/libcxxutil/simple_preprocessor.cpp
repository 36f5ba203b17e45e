#include "shared/libcxxutil/simple_preprocessor.h"

#include <algorithm>
#include <array>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t mostExpanded = size_t{1} << 20;
constexpr size_t mostActive = 64;
// Macros that name each other twice over would double the work with each step.
constexpr size_t mostEvaluations = 10000;

struct Function {
    const char* name;
    size_t arguments;
};
constexpr std::array<Function, 5> functions{
    {{"defined", 1}, {"notempty", 1}, {"fileexists", 1}, {"file_exists", 1}, {"streq", 2}}};

constexpr std::array<const char*, 3> includeMacros{"__VOREL_DIR__", "_VOREL_DIR", "__DIR__"};

bool is_identifier(std::string_view text) {
    return !text.empty() && !(text[0] >= '0' && text[0] <= '9') &&
           std::all_of(text.begin(), text.end(), is_identifier_character);
}

std::string_view take_word(std::string_view& text) {
    text = text_trim(text);
    const size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string_view word = text.substr(0, end);
    text = text_trim(text.substr(end));
    return word;
}

std::string unquoted(std::string_view text) {
    return text.starts_with('"') ? text_unquote(text) : std::string(text);
}

Result not_defined(std::string_view name) {
    return Result::failure(gen_format("macro not defined(%s) ...", std::string(name).c_str()));
}
Result recursion(std::string_view name) {
    return Result::failure(gen_format("macro recursion detected for: \"%s\"", std::string(name).c_str()));
}

}  // namespace

simple_preprocessor::simple_preprocessor(char directive, const macro_table* outer,
                                         ut_simple_preprocessor_client& owner, bool undefinedIsEmpty)
    : mark_(directive), outer_(outer), owner_(owner), undefinedIsEmpty_(undefinedIsEmpty) {}

std::string simple_preprocessor::location() const {
    return gen_format("\"%s\", line %d", owner_.file().c_str(), owner_.line());
}

void simple_preprocessor::fault(const std::string& text) {
    failed_ = true;
    const char* word = text.starts_with("parse error:") ? "" : "error: ";
    owner_.message(ReportLevel::Error, location() + ": " + word + text);
}

bool simple_preprocessor::IsSkipping() const {
    return !frames_.empty() && !frames_.back().live;
}

bool simple_preprocessor::LeaveFile() {
    if (files_.empty()) return true;
    const size_t before = files_.back();
    files_.pop_back();
    if (frames_.size() <= before) return true;
    frames_.erase(frames_.begin() + static_cast<std::ptrdiff_t>(before), frames_.end());
    return false;
}

void simple_preprocessor::HandleLine(std::string_view line) {
    directive_ = !line.empty() && line.front() == mark_;
    if (!directive_) return;
    std::string_view argument = text_trim(line.substr(1));
    size_t length = 0;
    while (length < argument.size() && is_identifier_character(argument[length])) ++length;
    if (length == 0) length = std::min(argument.find_first_of(" \t"), argument.size());
    const std::string_view name = argument.substr(0, length);
    argument = text_trim(argument.substr(length));
    if (HandleCondition(name, argument) || IsSkipping()) return;
    HandleAction(name, argument);
}

bool simple_preprocessor::HandleCondition(std::string_view name, std::string_view argument) {
    if (name == "if" || name == "ifdef") {
        const bool around = !IsSkipping();
        const bool yes = around && (name == "if" ? condition(argument) : ConditionDefined(argument));
        frames_.push_back({around, yes, yes});
        return true;
    }
    const bool next = name == "elif" || name == "elsif" || name == "elseif";
    if (!next && name != "else" && name != "endif") return false;
    // A file can't go on with a condition of the file that included it.
    const bool framed = frames_.size() > (files_.empty() ? 0 : files_.back());
    if (name == "endif") {
        if (framed)
            frames_.pop_back();
        else
            fault("unexpected directive: endif");
    } else if (!framed || frames_.back().sawElse) {
        fault(next ? "unexpected directive: elif" : "unexpected directive: else");
    } else {
        Frame& frame = frames_.back();
        frame.sawElse = !next;
        frame.live = frame.outerLive && !frame.taken;
        // What the earlier branches decided makes the condition of no interest.
        if (next && frame.live) frame.live = condition(argument);
        frames_.back().taken |= frames_.back().live;
    }
    return true;
}

void simple_preprocessor::HandleAction(std::string_view name, std::string_view argument) {
    const std::string text(argument);
    if (name == "include") {
        include(argument);
    } else if (name == "define") {
        if (!DefineFromLine(argument)) fault("parse error: near: \"\"");
    } else if (name == "undef") {
        undefine(take_word(argument));
    } else if (name == "info" || name == "echo") {
        owner_.print(text);
    } else if (name == "warning") {
        owner_.message(ReportLevel::Warning, gen_format("%s: warning: %s", location().c_str(), text.c_str()));
    } else if (name == "error") {
        failed_ = true;
        owner_.message(ReportLevel::Error, gen_format("%s: error: %s", location().c_str(), text.c_str()));
    } else {
        fault(gen_format("illegal directive: \"%s\"", std::string(name).c_str()));
    }
}

bool simple_preprocessor::condition(std::string_view text) {
    evaluations_ = 0;
    int64_t value = 0;
    if (const Result known = evaluate_integer(text, *this, value); !known) fault(known.text());
    return value != 0;
}

bool simple_preprocessor::ConditionDefined(std::string_view text) {
    const std::string_view name = take_word(text);
    if (!text.empty() || name.empty()) {
        fault(name.empty() ? "parse error: near: \"\"" : "parse error: too many arguments");
        return false;
    }
    return RawValue(name).has_value();
}

std::string simple_preprocessor::RelativeToFile(const std::string& path) const {
    if (path.empty() || path.front() == '/') return path;
    return path_join(path_directory(owner_.file()), path);
}

std::string simple_preprocessor::IncludedPath(std::string_view argument) {
    std::string path = unquoted(argument);
    for (const char* name : includeMacros) {
        const std::string place = std::string("${") + name + "}";
        std::string value;
        if (!RawValue(name) || !expand(name, value))
            value = std::string_view(name) == "__DIR__" ? path_directory(owner_.file())
                                                        : path_installation_directory();
        for (size_t at = path.find(place); at != std::string::npos && path.size() < mostExpanded;
             at = path.find(place, at + value.size()))
            path.replace(at, place.size(), value);
    }
    return RelativeToFile(path);
}

void simple_preprocessor::include(std::string_view argument) {
    included_ = IncludedPath(argument);
    if (files_.size() >= mostIncludes)
        fault(gen_format("more than %zu files include each other: \"%s\"", mostIncludes, included_.c_str()));
    if (files_.size() >= mostIncludes || owner_.include(included_)) return;
    failed_ = true;
    owner_.message(ReportLevel::Error, gen_format("could not open \"%s\" which was referenced at \"%s\":%d",
                                                  included_.c_str(), owner_.file().c_str(), owner_.line()));
}

void simple_preprocessor::define(std::string_view name, std::string_view value) {
    own_.insert_or_assign(std::string(name), std::string(value));
}

void simple_preprocessor::undefine(std::string_view name) {
    if (const auto at = own_.find(name); at != own_.end()) own_.erase(at);
}

bool simple_preprocessor::DefineFromLine(std::string_view line) {
    const std::string_view name = take_word(line);
    if (name.empty()) return false;
    define(name, unquoted(line));
    return true;
}

bool simple_preprocessor::DefineFromText(std::string_view text) {
    bool all = true;
    for (std::string_view line; text_next_line(text, line);)
        if (!text_trim(line).empty()) all = DefineFromLine(line) && all;
    return all;
}

std::optional<std::string> simple_preprocessor::RawValue(std::string_view name) {
    if (const auto at = own_.find(name); at != own_.end()) return at->second;
    if (outer_)
        if (const auto at = outer_->find(name); at != outer_->end()) return at->second;
    return owner_.macro(name);
}

// Notes that the macro is being expanded; to be taken back by active_.pop_back().
Result simple_preprocessor::EnterMacro(std::string_view name) {
    const bool again = std::find(active_.begin(), active_.end(), name) != active_.end();
    if (again || active_.size() >= mostActive || ++evaluations_ > mostEvaluations) return recursion(name);
    active_.emplace_back(name);
    return {};
}

Result simple_preprocessor::expand(std::string_view name, std::string& value) {
    const std::optional<std::string> raw = RawValue(name);
    if (!raw) return not_defined(name);
    if (active_.empty() && evaluation_depth == 0) evaluations_ = 0;
    if (Result entered = EnterMacro(name); !entered) return entered;
    Result expanded = ExpandText(*raw, value);
    active_.pop_back();
    return expanded && value.size() > mostExpanded ? recursion(name) : expanded;
}

Result simple_preprocessor::ExpandText(std::string_view text, std::string& value) {
    value.clear();
    for (size_t from = 0; from < text.size();) {
        const size_t place = text.find("${", from);
        const size_t end = place == std::string_view::npos ? place : text.find('}', place);
        if (end == std::string_view::npos) {
            value.append(text.substr(from));
            break;
        }
        value.append(text.substr(from, place - from));
        const std::string_view name = text.substr(place + 2, end - place - 2);
        if (RawValue(name) || !undefinedIsEmpty_) {
            std::string inner;
            if (Result expanded = expand(name, inner); !expanded) return expanded;
            value.append(inner);
        }
        if (value.size() > mostExpanded) break;  // expand tells
        from = end + 1;
    }
    return {};
}

Result simple_preprocessor::EvaluateName(std::string_view name, int64_t& value) {
    value = 0;
    const std::optional<std::string> raw = RawValue(name);
    if (!raw) return undefinedIsEmpty_ ? Result() : not_defined(name);
    if (text_trim(*raw).empty()) return {};
    if (Result entered = EnterMacro(name); !entered) return entered;
    std::string text;
    Result known = ExpandText(*raw, text);
    if (known) known = evaluate_integer(text, *this, value);
    active_.pop_back();
    return known;
}

// An argument as a text: a quoted text, the value of the macro that it names, or the text as it stands.
Result simple_preprocessor::ArgumentText(std::string_view argument, std::string& value) {
    if (is_identifier(argument) && RawValue(argument)) return expand(argument, value);
    return ExpandText(unquoted(argument), value);
}

Result simple_preprocessor::EvaluateFunction(std::string_view name,
                                             const std::vector<std::string_view>& arguments, int64_t& value) {
    value = 0;
    const auto function =
        std::find_if(functions.begin(), functions.end(), [&](const Function& f) { return name == f.name; });
    const char* fault = function == functions.end()              ? "unknown function: "
                        : arguments.size() > function->arguments ? "too many arguments "
                        : arguments.size() < function->arguments ? "too few arguments "
                                                                 : nullptr;
    if (fault) return Result::failure(std::string(fault).append(name));
    if (name == "defined") {
        value = RawValue(unquoted(arguments[0])).has_value();
        return {};
    }
    if (name == "notempty" && is_identifier(arguments[0]) && !RawValue(arguments[0]))
        return undefinedIsEmpty_ ? Result() : not_defined(arguments[0]);
    std::vector<std::string> texts;
    for (const std::string_view argument : arguments)
        if (Result known = ArgumentText(argument, texts.emplace_back()); !known) return known;
    value = name == "streq"      ? texts[0] == texts[1]
            : name == "notempty" ? !texts[0].empty()
                                 : path_is_readable_file(RelativeToFile(texts[0]));
    return {};
}
