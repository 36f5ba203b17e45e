#include <utility>

#include "shared/libcxxutil/report.h"
#include "windlib/config/option_file.h"

namespace {

// Takes the component ahead of the first "." off the key.
std::string_view take_component(std::string_view& key) {
    const size_t point = key.find('.');
    const std::string_view component = key.substr(0, point);
    key = point == std::string_view::npos ? std::string_view{} : key.substr(point + 1);
    return component;
}

bool is_key(std::string_view key) {
    return !key.empty() && key.front() != '.' && key.back() != '.' &&
           key.find("..") == std::string_view::npos;
}

// Removes the node and those above it as long as they hold nothing.
void prune(OptionNode* node) {
    while (node->parent && node->children.empty() && !node->value) {
        OptionNode* parent = node->parent;
        parent->RemoveChild(node);
        node = parent;
    }
}

}  // namespace

OptionNode* OptionNode::Child(std::string_view wanted) const {
    const auto at = index_.find(wanted);
    return at == index_.end() ? nullptr : at->second;
}

OptionNode* OptionNode::AddChild(std::string childName) {
    OptionNode* child = children.emplace_back(std::make_unique<OptionNode>()).get();
    child->name = std::move(childName);
    child->parent = this;
    index_.emplace(child->name, child);
    return child;
}

void OptionNode::RemoveChild(OptionNode* child) {
    index_.erase(child->name);
    std::erase_if(children, [&](const auto& each) { return each.get() == child; });
}

OptionNode* OptionTree::Find(std::string_view key) const {
    auto* node = const_cast<OptionNode*>(&root_);
    while (node && !key.empty()) node = node->Child(take_component(key));
    return node;
}

const std::string* OptionTree::Value(std::string_view key) const {
    const OptionNode* node = is_key(key) ? Find(key) : nullptr;
    return node && node->value ? &*node->value : nullptr;
}

OptionNode* OptionTree::Make(std::string_view key) {
    OptionNode* node = &root_;
    while (!key.empty()) {
        const std::string_view component = take_component(key);
        OptionNode* const child = node->Child(component);
        node = child ? child : node->AddChild(std::string(component));
    }
    return node;
}

bool OptionTree::Set(std::string_view key, std::string_view value) {
    if (!is_key(key)) return false;
    if (!value.empty()) {
        Make(key)->value = value;
    } else if (OptionNode* node = Find(key)) {
        node->value.reset();
        prune(node);
    }
    return true;
}

bool OptionTree::Append(std::string_view key, std::string_view value) {
    if (!is_key(key)) return false;
    if (value.empty()) return true;
    OptionNode* node = Make(key);
    size_t number = node->children.size();
    // After a child was deleted the number may be in use.
    while (node->Child(gen_format("list_%zu", number))) ++number;
    node->AddChild(gen_format("list_%zu", number))->value = value;
    return true;
}

bool OptionTree::Remove(std::string_view key) {
    OptionNode* node = is_key(key) ? Find(key) : nullptr;
    if (!node) return false;
    OptionNode* parent = node->parent;
    parent->RemoveChild(node);
    prune(parent);
    return true;
}

void OptionTree::DefineMacro(std::string_view name, std::string_view value) {
    const auto [at, isNew] = macroIndex_.try_emplace(std::string(name), macros_.size());
    if (isNew)
        macros_.emplace_back(name, value);
    else
        macros_[at->second].second = value;
}

const std::string* OptionTree::Macro(std::string_view name) const {
    const auto at = macroIndex_.find(std::string(name));
    return at == macroIndex_.end() ? nullptr : &macros_[at->second].second;
}
