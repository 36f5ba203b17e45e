// The attribute store: a tree of named nodes with named attributes, kept in text files of a block syntax.
//
//     ; a comment
//     %include "more"                       directives of the line preprocessor, with "%" in the first column
//     version = 1
//     Window.Main { x = 10  y = -4          blocks; a dotted name reaches a child for this statement
//         files = { "a", "b", ...           lists of texts or of numbers; "..." goes on in the next line
//                   "c" }
//         sizes += 0x10                     adds to a list
//     }
//
// Values are quoted texts, numbers in the manner of C, and false, no, off, true, yes, on for 0 and 1.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "shared/libcxxutil/simple_preprocessor.h"

// Of kind 0 text, 1 number, 2 list of texts, 3 list of numbers.
using AttributeValue = std::variant<std::string, int64_t, std::vector<std::string>, std::vector<int64_t>>;

struct Attribute {
    std::string name;
    AttributeValue value;
    std::string file;  // where it was read last; empty for one that the program set
    int line = 0;

    int kind() const { return static_cast<int>(value.index()); }
};

class AttributeNode {
  public:
    AttributeNode() = default;
    explicit AttributeNode(std::string name, AttributeNode* parent = nullptr)
        : name_(std::move(name)), parent_(parent) {}

    const std::string& name() const { return name_; }
    AttributeNode* parent() const { return parent_; }
    // In the order in which they were made.
    const std::vector<std::unique_ptr<AttributeNode>>& children() const { return children_; }
    const std::vector<std::unique_ptr<Attribute>>& attributes() const { return attributes_; }

    AttributeNode* Child(std::string_view name) const;  // or null
    AttributeNode& MakeChild(std::string_view name);    // made if missing
    void RemoveChild(std::string_view name);

    const Attribute* Find(std::string_view name) const;  // or null
    // The values of attributes of just that kind; null when there is none.
    const std::string* Text(std::string_view name) const;
    const int64_t* Number(std::string_view name) const;
    const std::vector<std::string>* Texts(std::string_view name) const;
    const std::vector<int64_t>* Numbers(std::string_view name) const;

    // The set form replaces a value of any kind.
    Attribute& Set(std::string_view name, AttributeValue value);
    // The add form appends to a list of the same items, turns a single value into the first item of one, and
    // makes one where there is none. Null, with nothing changed, when the items differ.
    Attribute* Add(std::string_view name, const AttributeValue& value);
    void Remove(std::string_view name);

    bool open_block = false;  // while a reader is between its "{" and "}"

  private:
    std::string name_;
    AttributeNode* parent_ = nullptr;
    std::vector<std::unique_ptr<AttributeNode>> children_;
    std::vector<std::unique_ptr<Attribute>> attributes_;
    std::unordered_map<std::string_view, AttributeNode*> childIndex_;
    std::unordered_map<std::string_view, Attribute*> attributeIndex_;
};

// What every options database can be asked for; those that can't do it say so and give false.
class ut_options_database {
  public:
    virtual ~ut_options_database() = default;
    virtual bool read_from_file(const std::string& path);
    virtual bool add_or_replace_str_list_attribute(std::string_view name,
                                                   const std::vector<std::string>& texts);
};

struct AttributeStoreOptions {
    bool wordsAreTexts = false;  // words without quotes are texts, "true" and "off" among them
    bool sizeSuffixes = false;   // K and M behind numbers
    bool goOnAfterErrors = false;
    // Asked ahead of each file by its full path; false leaves the file out, which is no error. May be empty.
    std::function<bool(const std::string& path)> fileHook;
};

enum class AttributeForm {
    Flat,  // "a.b.name= value", one line an attribute
    Block
};

class AttributeStore : public ut_options_database {
  public:
    explicit AttributeStore(AttributeStoreOptions options = {});

    AttributeNode& Root() { return *root_; }
    const AttributeNode& Root() const { return *root_; }
    const AttributeStoreOptions& Options() const { return options_; }
    // The macros that every file starts with: of the installation and the host.
    macro_table& Macros() { return macros_; }
    void Clear();

    // Reads a file into the tree. False when it can't be opened or has a fault; each fault is reported with
    // its file and line, and what stands ahead of it (with goOnAfterErrors also what stands behind) is kept.
    bool read_from_file(const std::string& path) override;
    // The same with a text; path is what messages call it and where its includes are relative to.
    bool ReadText(const std::string& path, std::string_view text);
    // Sets an attribute of the node at the dotted path ahead of the last ".".
    bool add_or_replace_str_list_attribute(std::string_view name,
                                           const std::vector<std::string>& texts) override;

    // What a reader takes back to the same tree. Nodes without attributes are left out of the flat form.
    std::string Write(AttributeForm form) const;
    // Replaces the file as a whole; reports "failed when writing %s" and gives false when it can't.
    bool WriteToFile(const std::string& path, AttributeForm form) const;

  private:
    AttributeStoreOptions options_;
    macro_table macros_;
    std::unique_ptr<AttributeNode> root_ = std::make_unique<AttributeNode>();
};
