// Which icons of a lane are drawn where many lie close together: the overlap rules. Drawing, hits and tips
// all ask here, so that what is pointed at is what is seen.
#pragma once

#include "chronoweave/traxfunc/canvas.h"
#include "chronoweave/traxfunc/time.h"

// The rules begin anew at each multiple of so many columns of the virtual picture, and at the left end of the
// view. So icons stand still while the view scrolls over them, and a part of the picture can be painted by
// itself.
constexpr int laIconTile = 128;
// Columns of the view before the first such multiple; 0 when the view begins at one.
int laIcons_LeadingColumns(uint64_t scrollPosition);

struct laShownIcon {
    size_t number = 0;  // of the icon in its lane
    int x = 0;          // column of its centre
    IconHandle icon = NoIcon;
    bool mark = false;     // the overlap mark, in place of this icon and those behind it
    int left = 0;          // first column that it covers
    int visibleFrom = -1;  // it is seen from this column on; -1: whole
};

// The shown icons of one lane, from left to right. Those that could reach into the columns left to right (the
// latter not included) are all among them.
class laIconWalk {
  public:
    // All three outlive the walk.
    laIconWalk(const _LaCanvasData& canvas, const laItem_Line& lane, const laTimeScale& scale, int left,
               int right);
    bool Next(laShownIcon& shown);

  private:
    int Column(size_t number) const { return scale_.toPixel(lane_.iconTimes[number]); }
    void BeginTile(int x);
    bool BySpace(const LaEventLook& look, laShownIcon& shown);
    bool ByRectangles(const LaEventLook& look, laShownIcon& shown);
    void SkipHidden();

    const _LaCanvasData& canvas_;
    const laItem_Line& lane_;
    const laTimeScale& scale_;
    const int markWidth_;
    double last_;  // time of the last icon of interest
    size_t at_ = 0;
    int tileEnd_ = -1;
    // By free space: a cluster of any size is its first icon and one mark about every icon width.
    int nextFree_ = -1;
    bool overlapped_ = false;
    // By rectangles: each icon shows as much as the one before it leaves free.
    int lastLeft_ = -1000, lastRight_ = -1000;
};

// The icons that a shown one stands for: itself and those behind it that it hides. Numbers of the lane's
// icons from first on, end not included; those of invisible events count too.
struct laIconGroup {
    size_t first = 0, end = 0;
};
// The group of the icon with this number as the view shows it; just itself when it isn't drawn.
laIconGroup laIcons_Group(const _LaCanvasData& canvas, const laItem_Line& lane, size_t number);
