// What a Linux system says of its tasks, as raw events. A task is an object on each processor that it was on,
// (task id << 10) | processor, all of one name; when it goes to another processor, a status ends the object
// that it leaves. Task 0 is each processor's idle task.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "chronoweave/import/raw/raw_writer.h"

// A task and the processor that it is on, at a time in nanoseconds.
struct TaskPlace {
    uint64_t time = 0;
    uint32_t processor = 0;
    uint32_t task = 0;
};
// Why a task runs no more.
enum class Leaves {
    Preempted,  // it could run on
    Waits,
    Ended
};

class TaskEvents {
  public:
    // What the system's own name is for a task, and its priority. Told with its first event, and anew when
    // the name changes.
    void name(const TaskPlace& at, std::string_view name, RawWriter& out);
    void priority(uint32_t task, uint32_t priority) { tasks_[task].priority = priority; }
    std::string nameOf(uint32_t task) const;  // empty where none was told

    void runs(const TaskPlace& at, RawWriter& out);
    // Also of a task that was not known to run.
    void leaves(const TaskPlace& at, Leaves why, RawWriter& out);
    void ready(const TaskPlace& at, RawWriter& out);
    // Where the task runs, if it does.
    std::optional<uint32_t> processorOf(uint32_t task) const;
    // Nobody knows any longer what the tasks do that run.
    void lose(uint64_t time, RawWriter& out);

    // An event of a type, about the task, with a number and a text behind the object.
    void event(const TaskPlace& at, uint16_t type, uint16_t subtype, uint32_t number, std::string_view text,
               RawWriter& out);

  private:
    struct Object {
        uint32_t processor;
        uint16_t status;
    };
    struct Task {
        std::string name;
        uint32_t priority = 120;
        std::vector<Object> objects;
        std::optional<uint32_t> on;  // the processor of the object that has not been ended
    };
    static uint32_t id(const TaskPlace& at);
    std::string shownName(uint32_t id, const Task& task) const;
    // The object, which is introduced by its name when this is the first event about it; the task's object on
    // another processor is ended.
    Object& enter(const TaskPlace& at, uint16_t status, RawWriter& out);
    void put(const TaskPlace& at, uint16_t status, RawWriter& out);

    std::unordered_map<uint32_t, Task> tasks_;
};
