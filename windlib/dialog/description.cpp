#include "windlib/dialog/description.h"

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

bool isNameChar(char c) {
    return (c >= '0' && c <= '9') || c == '_' || (text_lower(c) >= 'a' && text_lower(c) <= 'z');
}

// One layout line with its names as numbers; false at a name that is no item's.
bool numbered(const DialogDescription& description, std::string_view line, std::string& out,
              std::string& unknown) {
    out.clear();
    for (size_t i = 0; i < line.size();) {
        if (line[i] != '@') {
            out += line[i++];
            continue;
        }
        const size_t start = ++i;
        while (i < line.size() && isNameChar(line[i])) ++i;
        const std::string_view name = line.substr(start, i - start);
        const int number = dialog_Number(description, name);
        if (number == 0) {
            unknown = name;
            return false;
        }
        out += std::to_string(number);
    }
    return true;
}

}  // namespace

int dialog_Number(const DialogDescription& description, std::string_view name) {
    for (size_t i = 0; i < description.items.size(); ++i)
        if (description.items[i].name == name) return static_cast<int>(i) + 1;
    return 0;
}

Result dialog_Layout(const DialogDescription& description, PlacerLayout& layout) {
    std::vector<std::string> lines;
    lines.reserve(description.layout.size());
    for (const std::string& line : description.layout) {
        std::string unknown;
        if (numbered(description, line, lines.emplace_back(), unknown)) continue;
        return Result::failure(
            gen_format("No item is named \"%s\" on line %zu", unknown.c_str(), lines.size()));
    }
    return placer_Parse(lines, static_cast<int>(description.items.size()) + 1, layout);
}

std::string dialog_PlainText(std::string_view text) {
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '&' && ++i == text.size()) break;
        plain += text[i];
    }
    return plain;
}

char dialog_Shortcut(std::string_view text) {
    for (size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != '&') continue;
        if (text[i + 1] != '&') return text_lower(text[i + 1]);
        ++i;
    }
    return 0;
}

std::string dialog_AccessibleName(const DialogItem& item) {
    return item.accessible.empty() ? dialog_PlainText(item.text) : item.accessible;
}
