// Where the rows of processors stand in the object list: a processor whose objects all lie in one group has
// the group's row, any other a row of its own ahead of all others.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "chronoweave/traxfunc/model/items.h"
#include "windlib/msl/object_list.h"

class laProcessorRows {
  public:
    // Outlives it. Of the items it writes the rows of the processors.
    explicit laProcessorRows(LaItems& items) : items_(items) {}

    // Finds the row of each processor in a list that was filled and sorted. Groups hold objects and groups;
    // of nested ones the outermost that holds no object of another processor is taken.
    void Place(MslObjectEntry& root, int osKind);
    // The entries are gone.
    void Forget();
    // Whether a row is a processor's own.
    bool IsOwn(const MslObjectEntry& entry) const { return own_.contains(&entry); }
    const LaProcessor* Of(const MslObjectEntry& entry) const;

    // Numbering of the rows, in this order: no row has a number; one has; so many rows were numbered when its
    // group ended, or all were.
    void NoRows();
    void Numbered(const MslObjectEntry& entry);
    void Ended(const MslObjectEntry& entry, size_t rows);
    void AllEnded(size_t rows);

  private:
    LaProcessor* Find(const MslObjectEntry& entry);
    const MslObjectEntry* GroupOf(const LaProcessor& one, const MslObjectEntry& root, int osKind) const;
    void FindUsers(const MslObjectEntry& root, int osKind);

    LaItems& items_;
    std::unordered_map<const MslObjectEntry*, uint32_t> heads_;  // to the processor's key
    std::unordered_map<const MslObjectEntry*, uint32_t> own_;
    // The processor of all objects in a group; laNoLane for several.
    std::unordered_map<const MslObjectEntry*, uint32_t> users_;
};
