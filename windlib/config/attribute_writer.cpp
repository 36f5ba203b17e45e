// The two written forms of the attribute store.
#include <algorithm>

#include "shared/libcxxutil/text.h"
#include "windlib/config/attribute_reader.h"
#include "windlib/config/attribute_store.h"

namespace {

constexpr size_t itemsPerLine = 8;
constexpr const char* indentStep = "    ";

std::string written_name(const std::string& name) {
    // A line that starts with "%" is for the preprocessor.
    const bool word = !name.empty() && std::all_of(name.begin(), name.end(), attribute_IsNameCharacter) &&
                      name.front() != '%';
    return word ? name : text_quote(name);
}

std::string written(const std::string& text) {
    return text_quote(text);
}
std::string written(int64_t number) {
    return std::to_string(number);
}

template <class Item>
std::string written(const std::vector<Item>& items) {
    std::string text = "{";
    for (size_t i = 0; i < items.size(); ++i) {
        if (i != 0) text += ",";
        if (i != 0 && i % itemsPerLine == 0) text += " ...\n";
        text.append(" ").append(written(items[i]));
    }
    return text + " }";
}

std::string written_value(const AttributeValue& value) {
    return std::visit([](const auto& each) { return written(each); }, value);
}

void write_flat(const AttributeNode& node, const std::string& path, std::string& text) {
    for (const auto& attribute : node.attributes())
        text.append(path)
            .append(written_name(attribute->name))
            .append("= ")
            .append(written_value(attribute->value) + "\n");
    for (const auto& child : node.children())
        write_flat(*child, path + written_name(child->name()) + ".", text);
}

void write_block(const AttributeNode& node, const std::string& indent, std::string& text) {
    for (const auto& attribute : node.attributes())
        text.append(indent)
            .append(written_name(attribute->name))
            .append(" = ")
            .append(written_value(attribute->value) + "\n");
    for (const auto& child : node.children()) {
        text.append(indent).append(written_name(child->name())).append(" {\n");
        write_block(*child, indent + indentStep, text);
        text.append(indent).append("}\n");
    }
}

}  // namespace

std::string AttributeStore::Write(AttributeForm form) const {
    std::string text;
    if (form == AttributeForm::Flat)
        write_flat(*root_, {}, text);
    else
        write_block(*root_, {}, text);
    return text;
}
