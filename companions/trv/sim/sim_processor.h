// One processor of a simulated system: tasks with periods, deadlines and fixed priorities, the first of them
// the most urgent. Whoever is ready and most urgent runs. The first and the last task share a semaphore.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <string>
#include <vector>

#include "chronoweave/import/raw/raw_writer.h"
#include "companions/trv/sim/sim_random.h"

// Nanoseconds since the system began.
using SimTime = uint64_t;
// Times of events lie so far behind those of the system: an event at 0 would have no time of its own.
constexpr SimTime sim_Epoch = 1'000'000'000;
// Kinds of user events.
enum : uint16_t { sim_JobBegins = 1, sim_DeadlineMissed = 2, sim_Inversion = 3 };

struct SimTask {
    std::string name;
    uint32_t id = 0, priority = 0;  // the lower the number, the more urgent
    double period = 0, work = 0;    // of a job, nanoseconds
};

class SimProcessor {
  public:
    SimProcessor(uint32_t number, std::vector<SimTask> tasks, uint64_t seed);

    // Puts the tasks with their names, and who runs first.
    void begin(RawWriter& out);
    // When something happens next.
    SimTime next() const;
    // Lets it happen; puts its events.
    void advance(RawWriter& out);

    // How long each object has run up to the last advance, the processor's idle task first.
    struct Account {
        uint32_t id;
        std::string name;
        SimTime ran;
    };
    std::vector<Account> accounts() const;
    uint64_t missed() const { return missed_; }
    uint64_t inversions() const { return inversions_; }

  private:
    enum class Act { Begin, Take, Release, Send, Done };
    struct Step {
        SimTime at;  // of the job's work
        Act act;
    };
    struct Task : SimTask {
        bool active = false;  // a job is released and not done
        uint64_t jobs = 0;
        SimTime worked = 0;  // of the job
        std::array<Step, 5> steps{};
        size_t stepCount = 0, step = 0;
        SimTime ran = 0;
    };
    struct Release {
        SimTime time;
        size_t task;
        bool operator>(const Release& other) const {
            return time != other.time ? time > other.time : task > other.task;
        }
    };
    using Place = std::optional<size_t>;  // of a task; nothing is the idle task

    const SimTask& shown(Place place) const { return place ? tasks_[*place] : idle_; }
    SimTime stepTime() const;
    void pass(SimTime time);
    void plan(Task& task, size_t place);
    void addStep(Task& task, double share, SimTime work, Act act);

    void release(RawWriter& out);
    void interrupt(RawWriter& out);
    void dismiss(RawWriter& out);
    void doStep(RawWriter& out);
    void take(size_t place, RawWriter& out);
    void giveBack(size_t place, RawWriter& out);
    void done(size_t place, RawWriter& out);
    void reschedule(RawWriter& out);
    void dispatch(RawWriter& out);
    void noticeInversion(RawWriter& out);

    void put(RawWriter& out, uint16_t type, uint16_t subtype, uint32_t object,
             std::initializer_list<uint32_t> words = {});
    void putText(RawWriter& out, uint16_t type, uint16_t subtype, uint32_t object, uint32_t number,
                 const std::string& text);

    uint32_t number_;
    std::vector<Task> tasks_;
    SimTask idle_;
    SimTime idleRan_ = 0;
    SimRandom random_;
    SimTime now_ = 0;
    Place running_;
    std::priority_queue<size_t, std::vector<size_t>, std::greater<>> ready_;
    std::priority_queue<Release, std::vector<Release>, std::greater<>> releases_;
    double interruptGap_ = 0;
    SimTime nextInterrupt_ = 0;
    std::optional<SimTime> interruptEnd_;
    Place holder_, waiter_;  // of the semaphore
    bool isInversionTold_ = false;
    uint64_t missed_ = 0, inversions_ = 0;
};
