// Which icons of a lane are drawn where many lie close together: the overlap rules. Drawing, hits and tips
// all ask here, so that what is pointed at is what is seen.
#pragma once

#include "chronoweave/traxfunc/draw/scene.h"

// The rule by free space: a cluster of any size is its first icon and one mark about every icon width.
struct laSpaceRule {
    enum Shows { Nothing, Own, Mark };
    int nextFree = -1;
    bool overlapped = false;

    // The next icon of the lane, at a column; the legend shows its event.
    Shows Step(const LaLooks& looks, const LaEventLook& look, int x);
};

struct laShownIcon {
    size_t number = 0;  // of the icon in its lane
    int x = 0;          // column of its centre
    IconHandle icon = NoIcon;
    bool mark = false;     // the overlap mark, in place of this icon and those behind it
    int left = 0;          // first column that it covers
    int visibleFrom = -1;  // it is seen from this column on; -1: whole
};

// The shown icons of one lane, from the left end of the view.
class laIconWalk {
  public:
    // All outlive the walk. Those that could reach into the columns left of right are all met.
    laIconWalk(const laScene& scene, const laItem_Line& lane, const laTimeScale& scale, int right);
    bool Next(laShownIcon& shown);

  private:
    bool BySpace(const LaEventLook& look, laShownIcon& shown);
    bool ByRectangles(const LaEventLook& look, laShownIcon& shown);

    const laScene& scene_;
    const laItem_Line& lane_;
    const laTimeScale& scale_;
    size_t at_;
    double last_;  // time of the last icon of interest
    laSpaceRule space_;
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

// After a scroll from one low end of the view to another, shift columns apart: the first column of the new
// view from which on the icons of the shown rows are those of the old one. At most limit, which stands for
// never.
int laIcons_SettleColumn(const laScene& scene, double oldLow, double newLow, int shift, int limit);
