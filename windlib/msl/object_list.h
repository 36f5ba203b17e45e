// A tree list with whole entries behind its rows: the entries hold the state of the tree, the list that of
// the selection, the search and the scrolling. What the list is of derives from it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "windlib/lagraph/surface.h"
#include "windlib/msl/scroll_list.h"

// A row of the tree: an object, a group, or an object that others are nested in.
struct MslObjectEntry {
    static constexpr uint32_t noPayload = 0xFFFFFFFF;

    std::string name;              // last path component
    uint32_t payload = noPayload;  // the owner's: which of its objects the row is of; noPayload for a group
    int row = -1;                  // -1 while not shown
    int depth = 0;                 // 0 at the top
    bool collapsed = false;        // its children have no rows
    bool hidden = false;           // it and all in it, by hidden paths
    bool selfHidden = false;       // only its own object, by a hidden path: the row stands for what is in it
    MslObjectEntry* parent = nullptr;
    std::vector<std::unique_ptr<MslObjectEntry>> children;
    std::string path;  // components joined by '\0'; the key under which a collapse is remembered
};

class MslObjectList {
  public:
    MslObjectList();
    virtual ~MslObjectList() = default;
    MslObjectList(const MslObjectList&) = delete;
    MslObjectList& operator=(const MslObjectList&) = delete;

    // Shown rows from the top. Valid until the rows are made anew.
    const std::vector<MslObjectEntry*>& rows() const { return rows_; }
    MslObjectEntry* EntryAt(int row) const;               // null for no such row
    bool HasChildren(const MslObjectEntry& entry) const;  // shown ones
    // True when the group's rows changed. A selection that goes with them is the group's.
    bool SetCollapsed(MslObjectEntry& entry, bool collapsed);
    // The list of the rows: selection, keys, search and scrolling go through it. It outlives all its rows,
    // and what is selected stays so by EntryKey when they are made anew. Its rows are lazy and its callbacks
    // toggleTree, tip and observed are taken.
    MScrollList& list() { return list_; }
    const MScrollList& list() const { return list_; }
    std::vector<MslObjectEntry*> SelectedEntries() const;
    // Something of the list looks different; may be empty.
    std::function<void(MslChange)> changed;

    // Slots for the one who derives.
    virtual std::string RowText(const MslObjectEntry& entry, int column) const;
    virtual Colour RowColour(const MslObjectEntry&) const { return NoColour; }  // of its ground
    virtual std::string RowTip(const MslObjectEntry&) const { return {}; }
    virtual std::string EntryKey(const MslObjectEntry& entry) const { return entry.path; }
    virtual void RowChanged(MslObjectEntry&) {}  // the user collapsed or expanded it

  protected:
    virtual void Collapsed(MslObjectEntry&) {}  // to be remembered
    virtual void NumberRows() = 0;              // makes rows_ anew, and ends with ShowRows
    // The rows are as in rows_ now.
    void ShowRows();
    void DropRows(bool forgetSelection);

    std::vector<MslObjectEntry*> rows_;

  private:
    MslCellRecord CellOf(uint32_t row) const;
    void RememberSelection();
    void SelectionToGroup(const MslObjectEntry& group);

    MScrollList list_;
    bool filling_ = false;
    std::vector<std::string> selectedKeys_;
    std::string currentKey_;
};
