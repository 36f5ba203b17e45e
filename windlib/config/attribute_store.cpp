#include "windlib/config/attribute_store.h"

#include <utility>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"

namespace {

template <class T>
const T* value_of(const Attribute* attribute) {
    return attribute ? std::get_if<T>(&attribute->value) : nullptr;
}

// Appends the items of a value; false when it has items of another type.
template <class Item>
bool take_items(const AttributeValue& from, std::vector<Item>& items) {
    const auto* list = std::get_if<std::vector<Item>>(&from);
    const Item* one = std::get_if<Item>(&from);
    if (list) items.insert(items.end(), list->begin(), list->end());
    if (one) items.push_back(*one);
    return list || one;
}

template <class Item>
bool join(AttributeValue& to, const AttributeValue& more) {
    std::vector<Item> items;
    // A list that stands grows in place, so that adding item after item costs no copies.
    if (auto* list = std::get_if<std::vector<Item>>(&to)) return take_items(more, *list);
    if (!take_items(to, items) || !take_items(more, items)) return false;
    to = std::move(items);
    return true;
}

bool is_empty_list(const AttributeValue& value) {
    const auto* texts = std::get_if<std::vector<std::string>>(&value);
    const auto* numbers = std::get_if<std::vector<int64_t>>(&value);
    return (texts && texts->empty()) || (numbers && numbers->empty());
}

bool not_implemented(const char* operation) {
    gen_error("[%s]: not implemented", operation);
    return false;
}

}  // namespace

AttributeNode* AttributeNode::Child(std::string_view name) const {
    const auto at = childIndex_.find(name);
    return at == childIndex_.end() ? nullptr : at->second;
}

AttributeNode& AttributeNode::MakeChild(std::string_view name) {
    if (AttributeNode* child = Child(name)) return *child;
    children_.push_back(std::make_unique<AttributeNode>(std::string(name), this));
    childIndex_.emplace(children_.back()->name_, children_.back().get());
    return *children_.back();
}

void AttributeNode::RemoveChild(std::string_view name) {
    AttributeNode* child = Child(name);
    childIndex_.erase(name);
    std::erase_if(children_, [&](const auto& each) { return each.get() == child; });
}

const Attribute* AttributeNode::Find(std::string_view name) const {
    const auto at = attributeIndex_.find(name);
    return at == attributeIndex_.end() ? nullptr : at->second;
}

const std::string* AttributeNode::Text(std::string_view name) const {
    return value_of<std::string>(Find(name));
}
const int64_t* AttributeNode::Number(std::string_view name) const {
    return value_of<int64_t>(Find(name));
}
const std::vector<std::string>* AttributeNode::Texts(std::string_view name) const {
    return value_of<std::vector<std::string>>(Find(name));
}
const std::vector<int64_t>* AttributeNode::Numbers(std::string_view name) const {
    return value_of<std::vector<int64_t>>(Find(name));
}

Attribute& AttributeNode::Set(std::string_view name, AttributeValue value) {
    auto at = attributeIndex_.find(name);
    if (at == attributeIndex_.end()) {
        attributes_.push_back(std::make_unique<Attribute>());
        attributes_.back()->name = name;
        at = attributeIndex_.emplace(attributes_.back()->name, attributes_.back().get()).first;
    }
    at->second->value = std::move(value);
    return *at->second;
}

Attribute* AttributeNode::Add(std::string_view name, const AttributeValue& value) {
    const bool texts = value.index() == 0 || value.index() == 2;
    const auto at = attributeIndex_.find(name);
    if (at != attributeIndex_.end() && is_empty_list(value)) return at->second;
    if (at != attributeIndex_.end() && !is_empty_list(at->second->value)) {
        AttributeValue& standing = at->second->value;
        const bool joined = texts ? join<std::string>(standing, value) : join<int64_t>(standing, value);
        return joined ? at->second : nullptr;
    }
    AttributeValue list;
    if (texts)
        list = std::vector<std::string>{};
    else
        list = std::vector<int64_t>{};
    texts ? join<std::string>(list, value) : join<int64_t>(list, value);
    return &Set(name, std::move(list));
}

void AttributeNode::Remove(std::string_view name) {
    const Attribute* attribute = Find(name);
    attributeIndex_.erase(name);
    std::erase_if(attributes_, [&](const auto& each) { return each.get() == attribute; });
}

bool ut_options_database::read_from_file(const std::string&) {
    return not_implemented("ut_options_database::read_from_file");
}

bool ut_options_database::add_or_replace_str_list_attribute(std::string_view,
                                                            const std::vector<std::string>&) {
    return not_implemented("add_or_replace_str_list_attribute");
}

AttributeStore::AttributeStore(AttributeStoreOptions options) : options_(std::move(options)) {
    const std::string& installation = path_installation_directory();
    macros_["_VOREL_DIR"] = installation;
    macros_["__VOREL_DIR__"] = installation;
    // What files that are shared with other hosts test for; part of their language.
    macros_["__VOREL_HOST__"] = "win32";
    if (!installation.empty() && path_is_readable_file(path_join(installation, "CMakeLists.txt")))
        macros_["__VOREL_WIN32_DEV_HOST__"] = "true";
}

void AttributeStore::Clear() {
    root_ = std::make_unique<AttributeNode>();
}

bool AttributeStore::add_or_replace_str_list_attribute(std::string_view name,
                                                       const std::vector<std::string>& texts) {
    AttributeNode* node = root_.get();
    for (size_t point; (point = name.find('.')) != std::string_view::npos; name.remove_prefix(point + 1)) {
        if (point == 0) return false;
        node = &node->MakeChild(name.substr(0, point));
    }
    if (name.empty()) return false;
    node->Set(name, texts);
    return true;
}

bool AttributeStore::WriteToFile(const std::string& path, AttributeForm form) const {
    const Result written = file_replace(path, Write(form));
    if (written) return true;
    gen_error("failed when writing %s: %s", path.c_str(), written.reason().c_str());
    return false;
}
