// A description laid out: the places of its items for a font and a window size.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "placer/run_time/solver.h"
#include "windlib/dialog/description.h"

// What the platform tells of its font and controls, in logical pixels.
struct DialogMetrics {
    PlacerMetrics font;
    std::function<int(std::string_view)> textWidth;  // of one line; must be set
    int buttonPadding = 24;                          // width of a button beyond its text
    int markPadding = 24;                            // width of a check box or of a choice beyond its text
    int fieldPadding = 16;  // width of a field or pull-down beyond its text, a pull-down's arrow not included
    bool menuInside = true;  // the menu line stands in the area that is laid out
    // A control's own wish, where the platform's style knows better than the measures above; may be empty.
    // text is what the item shows.
    std::function<std::optional<PlacerSize>(const DialogItem& item, const std::string& text)> wish;
};

struct DialogRect {
    int x = 0, y = 0, width = 0, height = 0;
};

class DialogLayout {
  public:
    // The description is copied. Items start with their own texts.
    DialogLayout(DialogDescription description, DialogMetrics metrics);

    // Whether the layout lines could be read. Nothing is placed when not.
    const Result& read() const { return read_; }

    // For showing the window: its size as the rules want it, or else the least size that they allow.
    [[nodiscard]] PlacerOutcome open();
    // The native window got this size. The outcome tells when it is too small and what to resize it to: see
    // width() and height().
    [[nodiscard]] PlacerOutcome resize(int width, int height);
    // Item texts (see shownText of the model), for the natural sizes; solve() afterwards.
    void setText(int number, std::string text);
    void setMetrics(DialogMetrics metrics);  // open() or solve() afterwards
    [[nodiscard]] PlacerOutcome solve();

    int width() const { return placer_.items[0].width; }
    int height() const { return placer_.items[0].height; }
    // Place of an item, numbers from 1. Parts of other items have none: all 0.
    DialogRect rect(int number) const;
    // Where items may be: the window without inset and menu line.
    DialogRect inside() const;
    // The size without which the item's text would be cut.
    PlacerSize needed(int number) const;
    const DialogDescription& description() const { return description_; }

  private:
    void measure(size_t index);

    DialogDescription description_;
    DialogMetrics metrics_;
    PlacerLayout rules_;  // until the placer has them
    Result read_;
    std::vector<std::string> texts_;
    PlacerWindow placer_;
};

// Faults of a laid out description: layout lines that fail or are doubtful, items that overlap or stick out
// of the window, texts that are cut, names and shortcuts used twice. One text for each; empty when all is
// well. The window is opened and then made width by height; it may grow back to its least size.
std::vector<std::string> dialog_Check(const DialogDescription& description, const DialogMetrics& metrics,
                                      int width, int height);
