// What may run now, asked of one place.
//
// Work that serves window events while it runs, and states of the window that must not be disturbed, say here
// that they are there: a token for as long as they last. Whoever is called by a clock, a socket or a key asks
// before it starts, and what may not start now waits here until it may. Nothing is run from within the code
// that ends the work: the loop runs what waited, between two events. One thread; nothing here takes a lock.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <vector>

// What goes on. Several may, and each several times.
enum class GateWork {
    Load,
    Fetch,  // items are half there: nothing is painted
    Search,
    Report,
    Print,
    Merge,
    TargetWait,     // a command to a target's server waits for its answer
    ContextMenu,    // one is open
    ModalDialog,    // one is open
    DraggedCursor,  // a cursor or a selection follows the pointer
    HeldDrawing,    // the user holds the view in place
};
inline constexpr size_t gateWorks = static_cast<size_t>(GateWork::HeldDrawing) + 1;

// Who asks.
enum class GateActivity {
    TickReading,     // a refresh tick takes new events in
    TickDrawing,     // a refresh tick moves the view and draws
    ServiceHandler,  // a message of a service is handled
    Command,         // the user starts a command by menu, key or button
    Painting,        // what is there is painted anew; fetches nothing
};

class Gate {
  public:
    // The work goes on as long as this lives. Moved, not copied; an empty one stands for nothing.
    class Token {
      public:
        Token() = default;
        Token(Token&& other) noexcept;
        Token& operator=(Token&& other) noexcept;
        ~Token() { End(); }
        // Ends the work before the token dies; a second call does nothing.
        void End();

      private:
        friend class Gate;
        Token(Gate& gate, GateWork work) : gate_(&gate), work_(work) {}
        Gate* gate_ = nullptr;
        GateWork work_ = GateWork::Load;
    };

    Gate() = default;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    // The gate must outlive the token.
    [[nodiscard]] Token Begin(GateWork work);
    bool Runs(GateWork work) const { return counts_[static_cast<size_t>(work)] > 0; }
    bool May(GateActivity activity) const;

    // Keeps run until RunHeld finds that the activity may. One per activity and owner: a later one takes the
    // place of the earlier. The owner is a name, never looked into; it calls Forget before it dies.
    void WhenMay(GateActivity activity, const void* owner, std::function<void()> run);
    void Forget(const void* owner);

    // Runs, in the order of asking, what waits and may; each is asked about right before its turn. What they
    // ask for meanwhile waits for the next call. The loop calls this once a round. Gives how many ran.
    size_t RunHeld();
    // Whether RunHeld would run something.
    bool Ready() const;
    // Called when something that waits may run from now on, so that a waiting loop does a round. It must not
    // run anything itself.
    void SetWake(std::function<void()> wake) { wake_ = std::move(wake); }

  private:
    struct Held {
        GateActivity activity;
        const void* owner;
        std::function<void()> run;
        size_t number;
    };
    void Ended(GateWork work);
    void Wake() const;

    std::array<size_t, gateWorks> counts_{};
    std::vector<Held> held_;
    size_t asked_ = 0;
    std::function<void()> wake_;
};

// The program's own.
Gate& gate_Program();
[[nodiscard]] inline Gate::Token gate_Begin(GateWork work) {
    return gate_Program().Begin(work);
}
inline bool gate_May(GateActivity activity) {
    return gate_Program().May(activity);
}
