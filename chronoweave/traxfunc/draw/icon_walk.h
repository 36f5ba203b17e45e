// Which icons of a lane are drawn where many lie close together: the overlap rules. Drawing, hits and tips
// all ask here, so that what is pointed at is what is seen.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/traxfunc/draw/scene.h"

struct laShownIcon {
    size_t number = 0;  // of the icon in its lane
    int x = 0;          // column of its centre
    IconHandle icon = NoIcon;
    bool mark = false;     // the overlap mark, in place of this icon and those behind it
    int left = 0;          // first column that it covers
    int visibleFrom = -1;  // it is seen from this column on; -1: whole
    uint32_t hidden = 0;   // above 0: a mark that is this number, and stands for so many icons
};

// Whether marks are numbers, behind the icon that they follow, or the legend's picture in place of the second
// icon. Where the legend has no picture nothing is marked.
bool laMark_IsCounted(const laScene& scene);
// The number as shown: at most four characters, "12" or "3k".
std::string laMark_Text(uint32_t hidden);
// Columns that the number takes, with what is free around it.
int laMark_Width(const laScene& scene, uint32_t hidden);
// How far what is drawn for an icon may reach from the icon's column.
int laIcons_Reach(const LaLooks& looks, const FontMetrics& axisFont);

// The rule by free space, walking along one lane from a time on. A cluster of any size is its first icon and
// one mark about every icon width.
class laSpaceWalk {
  public:
    // All outlive it.
    laSpaceWalk(const laScene& scene, const laItem_Line& lane, const laTimeScale& scale, double from);

    bool done() const { return at_ >= lane_.icons.size(); }
    size_t at() const { return at_; }
    double time() const { return lane_.icons.time(at_); }
    int column() const { return Column(at_); }
    // Goes behind the next icon, and those that surely show nothing. False when there is nothing to show.
    bool Step(laShownIcon& shown);
    // Both are before the same icon, and nothing from it on can differ.
    bool Meets(const laSpaceWalk& other) const;

  private:
    int Column(size_t at) const { return scale_.ToPixel(lane_.icons.time(at)); }
    const LaEventLook& LookOf(size_t at) const { return looks_.eventLooks[lane_.icons.event(at)]; }
    bool Takes(const LaEventLook& look, laShownIcon& shown);
    bool Count(laShownIcon& shown);
    uint32_t Pass();
    int EndOfMark(uint32_t hidden) const;

    const laScene& scene_;
    const LaLooks& looks_;
    const laItem_Line& lane_;
    const laTimeScale& scale_;
    const bool counted_;
    const bool allAlike_;  // all icons of the lane are shown, and none is important
    size_t at_;
    int nextFree_ = -1;  // icons up to this column lie over what is drawn
    bool overlapped_ = false;
    // Of counted marks: the column behind what is drawn, and icons hidden ahead of an important one that left
    // no room for their number, with the first of them.
    int drawnEnd_ = 0;
    uint32_t carried_ = 0;
    size_t carriedFrom_ = 0;
};

// The shown icons of one lane, from the left end of the view.
class laIconWalk {
  public:
    // All outlive the walk. Those that could reach into the columns left of right are all met.
    laIconWalk(const laScene& scene, const laItem_Line& lane, const laTimeScale& scale, int right);
    bool Next(laShownIcon& shown);

  private:
    bool ByRectangles(const LaEventLook& look, laShownIcon& shown);
    bool NextByRectangles(laShownIcon& shown);

    const laScene& scene_;
    const laItem_Line& lane_;
    const laTimeScale& scale_;
    laSpaceWalk space_;
    size_t at_;    // of the rule by rectangles
    double last_;  // time of the last icon of interest
    // The rule by rectangles: each icon shows as much as the one before it leaves free.
    int lastLeft_ = -1000, lastRight_ = -1000;
};

// The icons that a shown one stands for: itself and those behind it that it hides. Numbers of the lane's
// icons from first on, end not included; those of invisible events are among them.
struct laIconGroup {
    size_t first = 0, end = 0;
};
// The group of the icon with this number as the view shows it; just itself when it isn't drawn.
laIconGroup laIcons_Group(const laScene& scene, const laItem_Line& lane, size_t number);
// The counted mark of a lane at a column, nothing when there is none.
std::optional<laShownIcon> laMark_At(const laScene& scene, const laItem_Line& lane, int x);

// After a scroll from one low end of the view to another, shift columns apart: the first column of the new
// view from which on the icons of the shown rows are those of the old one. At most limit, which stands for
// never.
int laIcons_SettleColumn(const laScene& scene, double oldLow, double newLow, int shift, int limit);
