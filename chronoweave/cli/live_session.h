// The road from a target to a store, with no window: an event server, what it writes, and the import of that
// as it grows.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chronoweave/import/import.h"
#include "chronoweave/live/target_link.h"

struct LiveSessionOptions {
    std::string target;  // as it is typed into the panel
    std::string file;    // the raw event file, absolute; the store stands beside it
    uint32_t checkpoint = 0;
};

struct LiveCounts {
    uint64_t events = 0;   // in the store
    uint64_t dropped = 0;  // could not be taken
    uint64_t lost = 0;     // by the target, as the server told
    uint64_t behind = 0;   // bytes that were written and not read yet
};

enum class LiveEnd { Target, Seconds, Events, Interrupt, ServerLost, Recording };

class LiveSession : private LinkPanel {
  public:
    explicit LiveSession(LiveSessionOptions options);
    ~LiveSession() override;
    LiveSession(const LiveSession&) = delete;
    LiveSession& operator=(const LiveSession&) = delete;

    // Starts the server, connects, records and logs. What the server said stands in the notes.
    Result begin();
    // Hears what the server says and reads what was written, for a moment. True when there is more already.
    bool round();
    // Why there will be no more events; nothing while there may be.
    std::optional<LiveEnd> end() const { return end_; }
    // Logging and recording end, and the rest is read. What is wrong with the store or its source.
    Result finish();

    const LiveCounts& counts() const { return counts_; }
    // What the server said since, a line each.
    std::vector<std::string> takeNotes() { return std::exchange(notes_, {}); }

  private:
    void AddLine(const std::string& line) override;
    void ShowMask(const std::string&) override {}
    void Refresh() override {}
    void Destroy() override {}

    Result refused(const char* what) const;
    void open();
    bool readOn(int64_t limitMs);
    uint64_t written() const;

    LiveSessionOptions options_;
    EventTasks tasks_;
    PlainLinkWait wait_;
    TargetLink link_;
    OpenedSource opened_;
    bool wasOpened_ = false;
    Result trouble_;
    LiveCounts counts_;
    std::vector<std::string> notes_;
    std::optional<LiveEnd> end_;
};
