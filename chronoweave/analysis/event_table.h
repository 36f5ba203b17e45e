// The table of events that stands under the picture: one row for each event of the view that the picture
// shows, in order of time. It follows the view; a row that is chosen moves the first cursor and gets a frame
// in the picture, and an icon that is clicked there chooses its row. Rows are asked for when they are seen:
// nothing is held of an event but its place among the canvas's icons.
//
// Three filters leave rows out, by object, event and text. One with '*' or '?' must fit the whole of what the
// column shows, another one a part of it; the case of letters doesn't matter. Texts are read from the store,
// and only for events that the other filters leave; that shows progress and stops at Escape with the rows
// found so far.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/model.h"

// "tf_object", "tf_event", "tf_text", the list "list" and the message "ts_info".
DialogDescription event_TableDescription();

class EventTable {
  public:
    // The canvas outlives it. Takes canvas.calls.iconPressed and canvas.marks.markedEvent.
    explicit EventTable(_LaCanvasData& canvas);
    ~EventTable();
    EventTable(const EventTable&) = delete;
    EventTable& operator=(const EventTable&) = delete;

    DialogModel& model() { return model_; }
    // While it isn't shown it has no rows, marks nothing and follows nothing. Shown at first.
    void SetShown(bool shown);
    // To be called whenever the canvas may have changed; costs next to nothing when it has not. True when
    // rows changed.
    bool Sync();
    // Escape in an item: a filter is cleared. False when there is nothing to clear.
    bool Escape(const std::string& item);

  private:
    enum Column : int { Column_Time, Column_Distance, Column_Object, Column_Event, Column_Text };
    // What the rows are made of: when it is the same, so are the rows.
    struct Basis {
        const void* store = nullptr;
        uint32_t items = 0;
        double low = -1, high = -1;
        int timeMode = -1;
        uint64_t shown = 0;  // of lanes and events, a hash
        bool operator==(const Basis&) const = default;
    };

    Basis Present() const;
    bool NeedsText() const { return !model_.item("tf_text").text.empty(); }
    void Filter();
    std::vector<uint32_t> Candidates() const;
    bool FilterByText(std::vector<uint32_t>& ids);
    void ShowRows(std::vector<uint32_t> ids, bool stopped);
    void Choose(int row);
    void Activate(int row);
    void SelectIcon(uint32_t icon, bool scroll);
    int RowOf(uint32_t icon) const;
    void FollowCursor();
    std::string Cell(uint32_t icon, int column);
    std::string Distance(uint32_t icon) const;
    std::string Text(uint32_t icon);

    _LaCanvasData& canvas_;
    DialogModel model_;
    MScrollList& list_;
    Basis basis_;
    double cursor_ = -1;  // the first cursor as last seen
    bool shown_ = true;
    std::string textFilter_;  // that textStates_ was made with
    enum class Fits : uint8_t { Unknown, No, Yes };
    std::vector<Fits> textStates_;  // by icon, while there is a text filter
    uint32_t textItems_ = 0;
    std::unordered_map<uint32_t, std::string> texts_;  // of rows that were seen
};
