// Live reading: a task that reads what was added to the canvas's source, in slices between which the window's
// events are served, and lets the view follow. One for each canvas, for as long as that lives; it reads only
// while the canvas's refresh is on.
//
// What may run now is the gate's to say: what is held runs when it may, and a user who drags a cursor holds
// the drawing and not the reading.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "chronoweave/import/import.h"
#include "chronoweave/live/live_file.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "shared/libcxxutil/event_tasks.h"

// What live reading needs of the window that shows the canvas. All must be set but progress.
struct LiveWindow {
    std::function<bool(const std::string& name)> load;  // as the user opens a file; false: nothing is shown
    std::function<void()> reset;                        // the canvas is empty, and shows that
    std::function<ImportSession*()> growing;            // the source that can be read on; null for none
    std::function<void()> endGrowing;                   // it is read on no more
    std::function<std::string()> source;                // the file shown, with its folder; empty for none
    std::function<void(const std::function<void()>& work)> draw;  // runs what may want painting
    std::function<void()> grew;                                   // the trace is longer than before
    std::function<void(std::optional<double> share)>
        progress;  // of a long reading, 0 to 1; nothing: it is over
};

class LiveReader {
  public:
    using Clock = EventTasks::Clock;
    // All outlive it, whoever window leads to as well.
    LiveReader(_LaCanvasData& canvas, const LiveWindow& window, EventTasks& tasks,
               std::function<Clock::time_point()> now = Clock::now);
    ~LiveReader();
    LiveReader(const LiveReader&) = delete;
    LiveReader& operator=(const LiveReader&) = delete;

    // The task anew, with the canvas's interval; one below 10 milliseconds is 10.
    void CreateRefreshTimer();
    void RefreshTick();

    // A file is about to be loaded into the canvas. While the refresh is on, one that has no records yet is
    // waited for, and what can't grow is refused.
    struct Loading {
        enum class What { Load, Wait, Refuse } what = What::Load;
        std::string why;  // it was refused
    };
    Loading BeforeLoad(const std::string& path);
    // The file is shown, and can be read on if the window has a growing source.
    void Loaded(const std::string& path);
    // The canvas has another source or none: nothing is waited for.
    void Forget();
    // The refresh was turned on or off: what came meanwhile is read at once.
    void Toggled();

    // More slices follow as soon as the loop comes round.
    bool IsReading() const { return next_.has_value(); }
    // The file that is waited for; empty for none.
    const std::string& WaitsFor() const { return waitsFor_; }
    // Bytes of the file that were read.
    uint64_t ReadUpTo() const { return file_.seen(); }

  private:
    struct CatchUp {
        double from, to;  // of the source's extent
        Clock::time_point drawn;
    };
    std::chrono::milliseconds Interval() const;
    void Slice();
    void SliceSoon();
    void LookForRecords();
    bool MayReadOn(ImportSession& session);
    void Took(const ReadOn& read);
    void TellBacklog(bool unread);
    void WantDrawing();
    void Draw();
    void EndCatchUp();
    void EndReading(const std::string& why);

    _LaCanvasData& canvas_;
    const LiveWindow& window_;
    EventTasks& tasks_;
    std::function<Clock::time_point()> now_;
    std::string waitsFor_;
    LiveFile file_;
    std::optional<int> timer_, next_;  // tasks
    Clock::time_point began_{};        // the slices under way
    std::optional<CatchUp> catchUp_;
    bool backlogTold_ = false;
    bool undrawn_ = false;  // events were read and are not in the picture
    char drawing_ = 0;      // its address is the drawing's name at the gate
};
