#include "services/servicerouter_proxy/name_value_resolver.h"

#include <algorithm>
#include <vector>

// What is being made: the text so far, and the names whose values are being expanded, outermost first.
struct NameValueResolver::Expansion {
    std::string text;
    std::vector<std::string_view> names;

    void append(std::string_view more) {
        text += more.substr(0, mostBytes - std::min(mostBytes, text.size()));
    }
    bool full() const { return text.size() >= mostBytes; }
};

void NameValueResolver::set(const std::string& name, std::string value) {
    values_[name] = {std::move(value), nullptr};
}

void NameValueResolver::set(const std::string& name, std::function<std::string()> value) {
    values_[name] = {{}, std::move(value)};
}

std::optional<std::string> NameValueResolver::valueOf(const std::string& name) const {
    if (!values_.contains(name)) return std::nullopt;
    return expand("${" + name + "}");
}

std::string NameValueResolver::expand(std::string_view text) const {
    Expansion expansion;
    expandInto(text, expansion);
    return std::move(expansion.text);
}

void NameValueResolver::expandInto(std::string_view text, Expansion& expansion) const {
    while (!expansion.full()) {
        const size_t begin = text.find("${");
        const size_t end = begin == text.npos ? begin : text.find('}', begin);
        expansion.append(text.substr(0, end == text.npos ? text.npos : begin));
        if (end == text.npos) return;
        appendName(text.substr(begin, end - begin + 1), expansion);
        text.remove_prefix(end + 1);
    }
}

void NameValueResolver::appendName(std::string_view written, Expansion& expansion) const {
    const std::string_view name = written.substr(2, written.size() - 3);
    const auto found = values_.find(name);
    auto& names = expansion.names;
    if (found == values_.end() || std::find(names.begin(), names.end(), name) != names.end())
        return expansion.append(written);
    if (found->second.make) return expansion.append(found->second.make());
    names.push_back(found->first);
    expandInto(found->second.text, expansion);
    names.pop_back();
}
