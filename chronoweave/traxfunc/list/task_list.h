// The object list beside the picture: which objects are shown and in which order. The row of an object is the
// row of its lane. Objects nest by the separator in their names; groups can be collapsed; objects can be
// hidden by path or pattern, now and in every later fetch.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "chronoweave/traxfunc/list/activity.h"
#include "chronoweave/traxfunc/list/processor_rows.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/source.h"
#include "chronoweave/traxfunc/model/time.h"
#include "windlib/msl/object_list.h"

// A name as components. A path with a wild card ('*', '?', '\' as the escape) is one component, matched on
// whole text.
struct laPath {
    std::vector<std::string> components;
    bool wildcard = false;
    std::optional<uint32_t> id;  // of the object; none for a group or a pattern

    std::string Joined(std::string_view separator) const;
    bool operator==(const laPath&) const = default;
};

// A row's payload is its lane, laNoLane for a group and for a processor's own row.
class TraxTaskList : public MslObjectList {
  public:
    // All outlive it. Of the items it writes what the lanes know of the list: row, hidden and listEntry.
    TraxTaskList(LaItems& items, const LaList& settings, const LaSource& source, const LaLooks& looks,
                 const LaAxis& axis);

    // Whom the list tells; set by who owns it.
    std::function<void()> rowsChanged;                  // rows came or went: to be laid out and painted
    std::function<bool(uint32_t objectId)> openObject;  // opens its window; false when there is none to open

    // Takes all lanes, sorts, and numbers the rows. Hidden paths and collapsed groups stay.
    void Fill();
    // Drops the entries; with all, the hidden paths and the collapses too.
    void Clear(bool all);
    // Applies the hidden paths and the collapses anew and numbers the rows; lanes learn their row.
    void NumberRows() override;

    // How active the objects were, for rows that follow the view: from the next Fill on. One that is not in
    // it was not active.
    void SetActivity(laActivities activity) { activity_ = std::move(activity); }

    // Levels of the tree; 0 when empty.
    int depth() const { return depth_; }
    laPath PathOf(const MslObjectEntry& entry) const;

    const std::vector<laPath>& HiddenPaths() const { return hiddenPaths_; }
    void SetHiddenPaths(std::vector<laPath> paths) { hiddenPaths_ = std::move(paths); }
    // Adds it unless it is in already.
    void AddHiddenPath(laPath path);
    // Hides what a row stands for; or drops all hidden paths that cover it. True when rows changed: who calls
    // lays out and paints.
    bool HideEntry(const MslObjectEntry& entry);
    bool ShowEntry(const MslObjectEntry& entry);

    // Text of a row's column: the name in column 0, less the mark of a made-up object; nothing in others.
    std::string RowText(const MslObjectEntry& entry, int column) const override;
    // The tint of a row: of three, by its number, for one with children; the execution colour for the agent's
    // row; NoColour for any other.
    Colour RowColour(const MslObjectEntry& entry) const override;
    // What a group holds, or an object's name, id and priority; nothing for a lane that is gone.
    std::string RowTip(const MslObjectEntry& entry) const override;
    // The rows that stay at the edges of a view of this height, by the row of the list, with their tops; and
    // what they leave free.
    std::vector<std::pair<int, int>> PinnedRows(const LaView& view, int height) const;
    LaFreeRows FreeRows(const LaView& view, int height) const;
    // Whether the row's object has nothing in the view: it does not exist yet, or no more.
    bool IsAbsent(const MslObjectEntry& entry, const LaView& view) const;
    std::string EntryKey(const MslObjectEntry& entry) const override;
    void RowChanged(MslObjectEntry& entry) override;

    bool focused = false;  // the names have the keyboard, for drawing

  protected:
    void Collapsed(MslObjectEntry& entry) override;

  private:
    MslObjectEntry* Place(const laPath& path, uint32_t lane);
    double Sort(MslObjectEntry& entry);
    laActivity ActivityOf(const MslObjectEntry& entry) const;
    bool LeftOut(const laItem_Line& lane) const;
    bool Covered(const laItem_Line& lane) const;  // by a hidden path
    // True when the entry or something in it is shown.
    bool Hide(MslObjectEntry& entry);
    void Number(MslObjectEntry& entry, int depth);

    LaItems& items_;
    const LaList& settings_;
    const LaSource& source_;
    const LaLooks& looks_;
    const LaAxis& axis_;
    MslObjectEntry root_;
    laProcessorRows processors_;
    std::unordered_map<std::string, MslObjectEntry*> byPath_;
    std::vector<laPath> hiddenPaths_;
    std::set<std::string> collapsed_;
    laActivities activity_;
    int depth_ = 0;
};

// Whether names with no separator go under "Kernel": on Korvantis, with the program's option.
bool laTask_UsesKernel(const LaList& list, const LaSource& source);
// A name as a path: split at the first character of the separator, or whole in the flat view; with kernel, a
// name with no separator goes under "Kernel".
laPath laTask_MakePath(const LaList& list, std::string_view name, bool kernel);
// The path of a lane's object, by its name or its term and id.
laPath laTask_PathOfLane(const LaList& list, const LaSource& source, const laItem_Line& lane);
// What is typed in the hide dialog: a path with a wild card, "*" added unless it ends in one.
laPath laTask_PatternPath(std::string_view pattern);
// The name shown in the hide dialog.
std::string laTask_DisplayName(const LaList& list, const LaSource& source, const laItem_Line& lane);
// True when a sorts before b. The entries' lanes are of the items.
bool laTask_Compare(const LaList& list, const LaItems& items, const MslObjectEntry& a,
                    const MslObjectEntry& b);
// True when the hidden path covers the path: equal, a prefix by components, or a match of a pattern with the
// whole text.
bool laHide_Covers(const LaList& list, const laPath& hidden, const laPath& path);
// True when one of the hidden paths covers the path.
bool laHide_IsHidden(const LaList& list, const laPath& path, const std::vector<laPath>& hidden);
// The mark of made-up objects dropped from a name.
std::string_view laTask_WithoutFake(std::string_view name);
