#include "windlib/icons.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t mostFileBytes = 1 << 20;
constexpr double mostPixels = 1024;

bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// What stands between "<svg" and ">" of the root element; empty when the text doesn't hold one.
std::string_view root_attributes(std::string_view text) {
    while (true) {
        const size_t open = text.find('<');
        if (open == std::string_view::npos) return {};
        text.remove_prefix(open);
        const bool comment = text.substr(0, 4) == "<!--";
        const size_t end = text.find(comment ? "-->" : ">");
        if (end == std::string_view::npos) return {};
        if (text.substr(0, 4) == "<svg" && text.size() > 4 && is_space(text[4]))
            return text.substr(4, end - 4);
        // Only a prolog and comments may stand ahead of the root.
        if (text[1] != '?' && text[1] != '!') return {};
        text.remove_prefix(end + 1);
    }
}

// The value of an attribute; empty when it is missing.
std::string_view attribute(std::string_view attributes, std::string_view name) {
    while (true) {
        const size_t equals = attributes.find('=');
        if (equals == std::string_view::npos) return {};
        const std::string_view key = text_trim(attributes.substr(0, equals));
        attributes = text_trim(attributes.substr(equals + 1));
        if (attributes.empty()) return {};
        const char quote = attributes.front();
        const size_t end = attributes.find(quote, 1);
        if ((quote != '"' && quote != '\'') || end == std::string_view::npos) return {};
        if (key == name) return attributes.substr(1, end - 1);
        attributes.remove_prefix(end + 1);
    }
}

// Whole pixels of "14", "14px" or "13.5"; 0 for anything else.
int pixels(std::string_view value) {
    value = text_trim(value);
    if (value.size() > 2 && value.substr(value.size() - 2) == "px") value.remove_suffix(2);
    const double size = scan_double(value).value_or(0);
    return size > 0 && size <= mostPixels ? std::max(1, static_cast<int>(size + 0.5)) : 0;
}

bool read_size(IconInfo& icon) {
    std::ifstream file(icon.path, std::ios::binary);
    std::string text(mostFileBytes, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<size_t>(file.gcount()));
    const std::string_view attributes = root_attributes(text);
    icon.width = pixels(attribute(attributes, "width"));
    icon.height = pixels(attribute(attributes, "height"));
    return icon.width > 0 && icon.height > 0;
}

const IconInfo* at(IconHandle icon) {
    const std::vector<IconInfo>& table = icon_Table();
    return icon >= 0 && static_cast<size_t>(icon) < table.size() ? &table[static_cast<size_t>(icon)]
                                                                 : nullptr;
}

}  // namespace

std::vector<IconInfo> icon_ReadFolder(const std::string& folder) {
    std::vector<IconInfo> icons;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        IconInfo icon;
        icon.path = entry->path().string();
        std::error_code none;
        if (path_extension(icon.path) != "svg" || !entry->is_regular_file(none)) continue;
        icon.name = path_without_extension(path_file(icon.path));
        if (read_size(icon))
            icons.push_back(std::move(icon));
        else
            gen_warning("The icon file \"%s\" is no drawing with a width and a height.", icon.path.c_str());
    }
    std::sort(icons.begin(), icons.end(),
              [](const IconInfo& a, const IconInfo& b) { return a.name < b.name; });
    return icons;
}

const std::vector<IconInfo>& icon_Table() {
    static const std::vector<IconInfo> table = [] {
        const std::string& installation = path_installation_directory();
        return installation.empty() ? std::vector<IconInfo>{}
                                    : icon_ReadFolder(path_join(installation, "icons"));
    }();
    return table;
}

IconHandle icon_Find(std::string_view name) {
    const std::vector<IconInfo>& table = icon_Table();
    const auto found =
        std::lower_bound(table.begin(), table.end(), name,
                         [](const IconInfo& icon, std::string_view key) { return icon.name < key; });
    return found != table.end() && found->name == name ? static_cast<IconHandle>(found - table.begin())
                                                       : NoIcon;
}

int icon_Width(IconHandle icon) {
    return at(icon) ? at(icon)->width : 0;
}
int icon_Height(IconHandle icon) {
    return at(icon) ? at(icon)->height : 0;
}
