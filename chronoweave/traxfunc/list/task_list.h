// The object list beside the picture: which objects are shown and in which order. The row of an object is the
// row of its lane. Objects nest by the separator in their names; groups can be collapsed; objects can be
// hidden by path or pattern, now and in every later fetch.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
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

class TraxTaskList : public MslObjectList {
  public:
    explicit TraxTaskList(_LaCanvasData& canvas);

    // Takes all lanes of the canvas, sorts, and numbers the rows. Hidden paths and collapsed groups stay.
    void Fill();
    // Drops the entries; with all, the hidden paths and the collapses too.
    void Clear(bool all);
    // Applies the hidden paths and the collapses anew and numbers the rows; lanes learn their row.
    void NumberRows() override;

    // Levels of the tree; 0 when empty.
    int depth() const { return depth_; }
    laPath PathOf(const MslObjectEntry& entry) const;

    const std::vector<laPath>& hiddenPaths() const { return hiddenPaths_; }
    void SetHiddenPaths(std::vector<laPath> paths) { hiddenPaths_ = std::move(paths); }
    // Adds it unless it is in already.
    void AddHiddenPath(laPath path);

    // Text of a row's column: the name in column 0, less the mark of a made-up object; nothing in others.
    std::string RowText(const MslObjectEntry& entry, int column) const override;
    // The tint of a row: of three, by its number, for one with children; the execution colour for the agent's
    // row; NoColour for any other.
    Colour RowColour(const MslObjectEntry& entry) const override;
    // What a group holds, or an object's name, id and priority; nothing for a lane that is gone.
    std::string RowTip(const MslObjectEntry& entry) const override;
    std::string EntryKey(const MslObjectEntry& entry) const override;
    void RowChanged(MslObjectEntry& entry) override;

    bool focused = false;  // the names have the keyboard, for drawing

  protected:
    void Collapsed(MslObjectEntry& entry) override;

  private:
    MslObjectEntry* Place(const laPath& path, uint32_t lane);
    void Sort(MslObjectEntry& entry);
    // True when the entry or something in it is shown.
    bool Hide(MslObjectEntry& entry);
    void Number(MslObjectEntry& entry, int depth);

    _LaCanvasData& canvas_;
    MslObjectEntry root_;
    std::unordered_map<std::string, MslObjectEntry*> byPath_;
    std::vector<laPath> hiddenPaths_;
    std::set<std::string> collapsed_;
    int depth_ = 0;
};

// A name as a path: split at the first character of the separator, or whole in the flat view. With noKernel
// clear, on Korvantis and with the program's option, a name with no separator goes under "Kernel".
laPath laTask_MakePath(const _LaCanvasData& canvas, std::string_view name, bool noKernel);
// The path of a lane's object, by its name or its term and id.
laPath laTask_PathOfLane(const _LaCanvasData& canvas, const laItem_Line& lane);
// What is typed in the hide dialog: a path with a wild card, "*" added unless it ends in one.
laPath laTask_PatternPath(std::string_view pattern);
// The name shown in the hide dialog.
std::string laTask_DisplayName(const _LaCanvasData& canvas, const laItem_Line& lane);
// True when a sorts before b.
bool laTask_Compare(const _LaCanvasData& canvas, const MslObjectEntry& a, const MslObjectEntry& b);
// True when the hidden path covers the path: equal, a prefix by components, or a match of a pattern with the
// whole text.
bool laHide_Covers(const _LaCanvasData& canvas, const laPath& hidden, const laPath& path);
bool laHide_IsHidden(const _LaCanvasData& canvas, const laItem_Line& lane, const std::vector<laPath>& hidden);
// Hides one row, or with show shows it again; lays out and, with repaint, repaints when that changed
// anything.
void laTask_Hide(_LaCanvasData& canvas, MslObjectEntry& entry, bool show, bool repaint);
// True when the list is, or could be, more than one level deep: then the flat view is offered.
bool laCanvas_HasHierarchy(const _LaCanvasData& canvas);
// The mark of made-up objects dropped from a name.
std::string_view laTask_WithoutFake(std::string_view name);
