// The layout solver: solves the rules of one window for its size, its font and what its items say of
// themselves. Numbers go in and numbers come out; a platform that wants to act at once, or whose controls
// round the size they are told, puts in hooks.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "placer/run_time/layout.h"

// The file that a failed check of a description is reported under.
extern const char* const placer_CheckFile;

struct PlacerMetrics {
    int nWidth = 0;      // width of "nn" less the width of "n"
    int wideWidth = 0;   // the larger of the widths of "M" and "W"
    int lineHeight = 0;  // font height and external leading
    int ascent = 0;
};

struct PlacerSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const PlacerSize&, const PlacerSize&) = default;
};

// What an item's content says of its size, and where its baseline is.
//   Button    content: width of the text, height of a button in its font; baseline ascent + 4
//   Label     content: the text's size; baseline ascent
//   PullDown  content: the size that it asks for
//   TextLine  content: height of a one-line text item; its width is the present one; baseline ascent + 3
//   ButtonSet content: the size that it takes inside 3000 by 3000; baseline ascent + setBaseline
//   Other     stays as big as it is
enum class PlacerKind { Other, Button, Label, PullDown, TextLine, ButtonSet };

// Pixels, all within 16 bits, signed; what is computed beyond is held at the ends.
struct PlacerItem {
    PlacerKind kind = PlacerKind::Other;
    PlacerSize content;
    bool marked = false;       // a Button with a mark beside its text: 14 pixels wider
    int setBaseline = 0;       // of a ButtonSet by its style: 0, 2 or 4
    bool setVertical = false;  // main axis of a ButtonSet
    PlacerMetrics metrics;     // of the item's own font; item 0: of the default font
    int container = 0;         // number of the item that it lies in
    int originX = 0;           // taken off the solved position: scroll or tab origin of the container
    int originY = 0;
    int x = 0, y = 0;           // present place, inset and top reserve of the window included
    int width = 0, height = 0;  // present size; item 0: of the window, inset and top reserve included
};

struct PlacerOutcome {
    std::string check;           // the check of the description that failed, empty when solved
    bool windowChanged = false;  // the native window must take item 0's size
    PlacerSize minimum;          // least size that the window may be dragged to; 0 where nothing says
};

struct PlacerHooks {
    std::function<PlacerSize(int item, PlacerSize told)> resize;  // gives the size that the item took
    std::function<void(int item, int dx, int dy)> move;
    std::function<PlacerSize(int item, PlacerSize inside)> arrange;  // lays out a ButtonSet, gives its size
};

class PlacerWindow {
  public:
    // items[0] is the window, and the layout was read for as many items. A container that does not exist is
    // the window.
    PlacerWindow(PlacerLayout layout, std::vector<PlacerItem> items);

    std::vector<PlacerItem> items;  // facts to be set before a solve; sizes and places to be read after it
    bool framed = false;            // 4 pixels of inset on each side
    bool topLevel = false;
    bool menu = false;  // a top-level window with a menu line keeps lineHeight + 7 free at the top
    PlacerHooks hooks;

    // The native window has a new size. Nothing happens when it is the present one.
    [[nodiscard]] PlacerOutcome resized(int width, int height);
    // The window's own size comes from the rules, where there are any for it: at first showing and on a new
    // font.
    [[nodiscard]] PlacerOutcome relayout();
    // An item changed: solves again inside the present size.
    [[nodiscard]] PlacerOutcome solve();

    int inset() const { return framed ? 4 : 0; }
    int topReserve() const { return topLevel && menu ? items[0].metrics.lineHeight + 7 : 0; }

  private:
    struct Entry {
        int at[2] = {0, 0};
        int size[2] = {0, 0};
        bool atKnown[2] = {false, false};
        bool sizeKnown[2] = {false, false};
        bool sizeRuled[2] = {false, false};
        bool atRuled[2] = {false, false};
    };

    bool sizePass(PlacerOutcome& outcome);
    void startSizes();
    PlacerSize naturalSize(int item);
    bool sweepSizes(PlacerOutcome& outcome);
    bool ready(const std::vector<PlacerSizeRule>& rules, size_t first) const;
    int valueOf(const std::vector<PlacerSizeRule>& rules, size_t first) const;
    bool belowMinimum();
    bool tellSizes();
    bool positionPass(PlacerOutcome& outcome);
    void startPositions();
    bool sweepPositions(PlacerOutcome& outcome);
    int reference(PlacerPositionRule& rule);
    void place(const PlacerPositionRule& rule, int reference);
    void moveItems();
    int64_t offsetOf(const PlacerOffset& offset, int item) const;
    int baseline(int item) const;  // -1: has none
    int extent(int item, PlacerAxis axis, bool toBaseline) const;

    PlacerLayout layout_;
    std::vector<Entry> entries_;
    PlacerSize minimum_;
    bool enlarging_ = false;       // to the least size
    bool sizeFromLayout_ = false;  // a relayout
    bool placedBefore_ = false;
    int lastLineHeight_ = 0;
    int lastInset_ = 0;
};
