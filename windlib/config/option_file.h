// Option files: lines "KEY = VALUE" that fill a tree of dotted names, with macros and includes.
//
//     # a comment
//     ~define.ROOT = /opt/tools
//     editor.path = ROOT/bin/edit          names of macros are replaced wherever they stand as a whole word
//     editor.args += "-n #1"               adds a child "list_0", "list_1", ... holding the value
//     ~include = more.opt                  relative to this file; ~sysinclude looks on the system paths
//     ~delete = editor.args
//
// Values may stand in double quotes, with the escapes of C.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

struct OptionNode {
    std::string name;
    std::optional<std::string> value;
    OptionNode* parent = nullptr;
    std::vector<std::unique_ptr<OptionNode>> children;  // in the order in which they were made

    // The child of that name; null when there is none.
    OptionNode* Child(std::string_view wanted) const;
    OptionNode* AddChild(std::string childName);
    void RemoveChild(OptionNode* child);

  private:
    std::unordered_map<std::string_view, OptionNode*> index_;  // of the children, by their names
};

class OptionTree {
  public:
    OptionTree() : macroIndex_(macroBuckets) {}

    OptionNode& Root() { return root_; }
    const OptionNode& Root() const { return root_; }
    // The node at a dotted key, or null; the empty key is the root's.
    OptionNode* Find(std::string_view key) const;
    // The value at a dotted key; null when there is none.
    const std::string* Value(std::string_view key) const;
    // Stores a value; nodes that don't exist are made on the way. An empty value takes the value away and
    // makes no node. False for a key with an empty component.
    bool Set(std::string_view key, std::string_view value);
    // Adds a child "list_%d" of the key, numbered by how many children there are.
    bool Append(std::string_view key, std::string_view value);
    // Removes the key with all below it, and the nodes above that then have neither a value nor children.
    // False when there is no such key.
    bool Remove(std::string_view key);

    // Defines a macro; one that was defined keeps its place in the order.
    void DefineMacro(std::string_view name, std::string_view value);
    const std::string* Macro(std::string_view name) const;
    using Macros = std::vector<std::pair<std::string, std::string>>;
    const Macros& DefinedMacros() const { return macros_; }  // in definition order

  private:
    static constexpr size_t macroBuckets = 50;
    OptionNode* Make(std::string_view key);

    OptionNode root_;
    Macros macros_;
    std::unordered_map<std::string, size_t> macroIndex_;  // position in macros_
};

// What the application may add to the reading of option files. Each may be empty.
struct OptionFileHooks {
    // What "%EVAL{TEXT}" in the value of an include stands for; nothing leaves the text as it is.
    std::function<std::optional<std::string>(const std::string& text)> evaluate;
    // The full path of a "~sysinclude", or empty.
    std::function<std::string(const std::string& name)> findOnSystemPaths;
    // True when it took the file in place of the reader.
    std::function<bool(const std::string& path, OptionTree& tree)> takeFile;
};

// Reads a file into the tree. Faults are reported and skipped; false when there was one, what could be read
// is in the tree all the same.
bool optionfile_Load(const std::string& path, OptionTree& tree, const OptionFileHooks& hooks = {});

// A value that says yes (1, true) or no (0, false), in any case; none for another.
std::optional<bool> optionfile_Truth(std::string_view value);

// A line "KEY=VALUE" for each node that has a value, in the order of the tree. Quoted values read back to the
// same; the plain form is for people.
std::string optionfile_Text(const OptionTree& tree, bool quoted);
// Writes the quoted form, replacing the file as a whole. False with a report when it can't be written, or,
// before anything is touched, when a key would not read back.
bool optionfile_Save(const std::string& path, const OptionTree& tree);
