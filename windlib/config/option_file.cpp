#include "windlib/config/option_file.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/integer_evaluator.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

// Bounds on what a few lines can grow to in one load: macros in macros, and files that include each other
// twice over.
constexpr size_t mostExpanded = size_t{1} << 20;   // bytes of one line
constexpr size_t mostReplaced = size_t{64} << 20;  // bytes of all lines in which macros were replaced
constexpr size_t mostReplacements = 100000;        // in the values of macros
constexpr size_t mostFileBytes = size_t{4} << 20;
constexpr size_t mostFiles = 100;
constexpr size_t mostIncluded = 32;
constexpr size_t mostComponents = 64;

bool ends_with_append(std::string_view key) {
    return !key.empty() && key.back() == '+';
}

class Loader {
  public:
    Loader(OptionTree& tree, const OptionFileHooks& hooks) : tree_(tree), hooks_(hooks) {}

    void Load(const std::string& path) {
        std::error_code none;
        const std::string same = std::filesystem::weakly_canonical(path, none).string();
        if (std::find(loading_.begin(), loading_.end(), same) != loading_.end())
            return Fault(gen_format("Include recursion detected: %.256s", path.c_str()));
        if (loading_.size() >= mostIncluded || ++files_ > mostFiles)
            return Fault(gen_format("Too many included files: %.256s", path.c_str()));
        loading_.push_back(same);
        Read(path);
        loading_.pop_back();
    }
    bool failed() const { return failed_; }

  private:
    void Fault(const std::string& message) {
        failed_ = true;
        gen_warning("%s", message.c_str());
    }

    void Read(const std::string& path) {
        if (hooks_.takeFile && hooks_.takeFile(path, tree_)) return;
        std::string text;
        if (!file_read_whole(path, text, mostFileBytes))
            return Fault(gen_format("Could not open file: %.256s", path.c_str()));
        std::string_view rest = text;
        for (std::string_view line; text_next_line(rest, line);) Line(path, line);
    }

    void Line(const std::string& path, std::string_view original) {
        const std::optional<std::string> expanded = ReplaceMacros(original);
        if (!expanded)
            return Fault(gen_format("Macros grow without end in line \"%.60s\", skipping",
                                    std::string(original).c_str()));
        const std::string line(text_trim(*expanded));
        if (line.empty() || line.front() == '#') return;
        const size_t equals = line.find('=');
        if (equals == std::string::npos)
            return Fault(
                gen_format("No value for %.60s for line \"%s\", skipping", line.c_str(), line.c_str()));
        std::string_view key = std::string_view(line).substr(0, equals);
        const bool append = ends_with_append(key);
        if (append) key.remove_suffix(1);
        key = text_trim(key);
        if (key.find('#') != std::string_view::npos)
            return Fault(gen_format("Comment not allowed in keyname: %.60s.\n", std::string(key).c_str()));
        Apply(path, key, Value(std::string_view(line).substr(equals + 1)), append);
    }

    std::string Value(std::string_view text) {
        text = text_trim(text);
        if (!text.starts_with('"')) return std::string(text_trim(text.substr(0, text.find('#'))));
        size_t end = 0;
        std::string value = text_unquote(text, &end);
        const std::string rest(text_trim(text.substr(end)));
        if (rest.empty() || rest.front() == '#') return value;
        failed_ = true;
        gen_plain("Warning: Some stuff is discarded: %s.\n", rest.c_str());
        return value;
    }

    void Apply(const std::string& path, std::string_view key, const std::string& value, bool append) {
        const std::string name(key);
        if (text_equal_nocase(key, "~include")) return Include(path, Evaluated(value));
        if (text_equal_nocase(key, "~sysinclude")) return SystemInclude(Evaluated(value));
        if (text_starts_nocase(key, "~define")) {
            const size_t point = key.find('.');
            if (point == std::string_view::npos || point + 1 == key.size())
                return Fault(gen_format("No macro name in key: %.60s", name.c_str()));
            return tree_.DefineMacro(key.substr(point + 1), value);
        }
        if (text_starts_nocase(key, "~delete")) {
            tree_.Remove(value);
            return;
        }
        const auto points = std::count(key.begin(), key.end(), '.');
        const bool deep = static_cast<size_t>(points) >= mostComponents;
        if (deep || !(append ? tree_.Append(key, value) : tree_.Set(key, value)))
            Fault(gen_format("Illegal key: %.60s", name.c_str()));
    }

    void Include(const std::string& from, const std::string& name) {
        Load(name.starts_with('/') ? name : path_join(path_directory(from), name));
    }

    void SystemInclude(const std::string& name) {
        const std::string found = hooks_.findOnSystemPaths ? hooks_.findOnSystemPaths(name) : std::string{};
        if (found.empty())
            return Fault(gen_format("Couldn't locate file %s on any system paths", name.c_str()));
        Load(found);
    }

    // The name of an included file with its "%EVAL{...}", up to the last brace, replaced.
    std::string Evaluated(const std::string& value) const {
        const size_t from = value.find("%EVAL");
        if (!hooks_.evaluate || from == std::string::npos) return value;
        const size_t open = value.find_first_not_of(" \t", from + 5);
        const size_t close = value.rfind('}');
        if (open == std::string::npos || value[open] != '{' || close == std::string::npos || close < open)
            return value;
        const std::optional<std::string> result = hooks_.evaluate(value.substr(open + 1, close - open - 1));
        return result ? value.substr(0, from) + *result + value.substr(close + 1) : value;
    }

    std::optional<std::string> ReplaceMacros(std::string_view line) {
        if (tree_.DefinedMacros().empty()) return std::string(line);
        if (!text_starts_nocase(line, "~define")) return ReplaceIdentifiers(line);
        const size_t value = std::min(line.find('='), line.size() - 1) + 1;
        std::optional<std::string> replaced = ReplaceTexts(std::string(line.substr(value)));
        if (replaced) replaced->insert(0, line.substr(0, value));
        return replaced;
    }

    std::optional<std::string> ReplaceIdentifiers(std::string_view line) {
        std::string replaced;
        for (size_t at = 0; at < line.size();) {
            size_t end = at;
            while (end < line.size() && is_identifier_character(line[end])) ++end;
            const std::string* value = end > at ? tree_.Macro(line.substr(at, end - at)) : nullptr;
            end = std::max(end, at + 1);
            replaced.append(value ? std::string_view(*value) : line.substr(at, end - at));
            if (value) replaced_ += value->size();
            if (value && (replaced.size() > mostExpanded || replaced_ > mostReplaced)) return std::nullopt;
            at = end;
        }
        return replaced;
    }

    // Each macro's name wherever it stands, until it stands nowhere; a value that holds its own name is put
    // in once for each place.
    std::optional<std::string> ReplaceTexts(std::string text) {
        for (const auto& [name, value] : tree_.DefinedMacros()) {
            const bool again = value.find(name) == std::string::npos;
            size_t at = 0;
            while ((at = text.find(name, at)) != std::string::npos) {
                text.replace(at, name.size(), value);
                if (text.size() > mostExpanded || ++replacements_ > mostReplacements) return std::nullopt;
                // A new place can begin before the old one, where the value joins what stands ahead of it.
                at = again ? at - std::min(at, name.size()) : at + value.size();
            }
        }
        return text;
    }

    OptionTree& tree_;
    const OptionFileHooks& hooks_;
    std::vector<std::string> loading_;  // the files now open, the innermost last
    size_t files_ = 0;
    size_t replaced_ = 0;      // bytes of macros put into lines
    size_t replacements_ = 0;  // macros put into the values of macros
    bool failed_ = false;
};

void add_lines(const OptionNode& node, const std::string& key, bool quoted, std::string& text) {
    if (node.value) {
        const std::string value = quoted ? text_quote(*node.value) : *node.value;
        text.append(key).append("=").append(value).append("\n");
    }
    for (const auto& child : node.children)
        add_lines(*child, key.empty() ? child->name : key + "." + child->name, quoted, text);
}

// The first key below the node that a reader would take for something else; empty when there is none.
std::string unreadable_key(const OptionNode& node, const std::string& key) {
    if (node.value && (key.find_first_of("=#\r\n") != std::string::npos || text_trim(key) != key ||
                       ends_with_append(key) || key.front() == '~'))
        return key;
    for (const auto& child : node.children) {
        std::string found = unreadable_key(*child, key.empty() ? child->name : key + "." + child->name);
        if (!found.empty()) return found;
    }
    return {};
}

}  // namespace

bool optionfile_Load(const std::string& path, OptionTree& tree, const OptionFileHooks& hooks) {
    Loader loader(tree, hooks);
    loader.Load(path);
    return !loader.failed();
}

std::optional<bool> optionfile_Truth(std::string_view value) {
    if (value == "1" || text_equal_nocase(value, "true")) return true;
    if (value == "0" || text_equal_nocase(value, "false")) return false;
    return std::nullopt;
}

std::string optionfile_Text(const OptionTree& tree, bool quoted) {
    std::string text;
    add_lines(tree.Root(), {}, quoted, text);
    return text;
}

bool optionfile_Save(const std::string& path, const OptionTree& tree) {
    const std::string key = unreadable_key(tree.Root(), {});
    if (!key.empty()) {
        gen_warning("Couldn't write %s: illegal key \"%s\"", path.c_str(), key.c_str());
        return false;
    }
    const Result written = file_replace(path, optionfile_Text(tree, true));
    if (written) return true;
    gen_warning("Couldn't write %s: %s", path.c_str(), written.reason().c_str());
    return false;
}
