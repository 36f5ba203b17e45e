#include "companions/trv/system/task_events.h"

#include "companions/trv/server/server_testing.h"
#include "companions/trv/system/time_order.h"
#include "shared/libcxxutil/report.h"

namespace {

// Events as words: "TIME name|run|STATUS id [text]".
std::string told(const RawWriter& out) {
    std::string text;
    for (const TestEvent& event : events_of(out.bytes())) {
        text += std::to_string(event.time) + ' ';
        if (event.type == mt_Refresh)
            text += event.text(8) + '=' + std::to_string(event.subtype);
        else if (event.type == mt_TaskChange)
            text += "run";
        else if (event.type == mt_StatusChange)
            text += "status" + std::to_string(event.subtype);
        else
            text += "event" + std::to_string(event.type) + ' ' + event.text(8);
        text += gen_format(" %x\n", event.object);
    }
    return text;
}

TEST(TaskEvents, AMigratingTaskIsAnObjectAProcessorAllOfOneName) {
    TaskEvents tasks;
    RawWriter out(false);
    tasks.name({1, 0, 5}, "cc", out);
    tasks.runs({1, 0, 5}, out);
    tasks.leaves({2, 0, 5}, Leaves::Preempted, out);
    tasks.runs({3, 1, 5}, out);
    tasks.leaves({4, 1, 5}, Leaves::Waits, out);
    tasks.ready({5, 0, 5}, out);
    tasks.ready({6, 0, 5}, out);
    tasks.runs({7, 0, 5}, out);
    tasks.leaves({8, 0, 5}, Leaves::Ended, out);
    EXPECT_EQ(told(out),
              "1 cc/5=0 1400\n1 run 1400\n2 status0 1400\n"
              "3 status1 1400\n3 cc/5=0 1401\n3 run 1401\n4 status2 1401\n"
              "5 status1 1401\n5 status0 1400\n7 run 1400\n8 status1 1400\n");
}

TEST(TaskEvents, ANewNameIsToldOfAllItsObjects) {
    TaskEvents tasks;
    RawWriter out(false);
    tasks.runs({1, 0, 5}, out);
    tasks.runs({2, 1, 5}, out);
    tasks.name({3, 1, 5}, "a name that is far too long to be shown", out);
    tasks.name({4, 1, 5}, "a name that is far too long to be shown", out);
    EXPECT_EQ(told(out),
              "1 task/5=0 1400\n1 run 1400\n2 status1 1400\n2 task/5=0 1401\n2 run 1401\n"
              "3 a name that is far too long t/5=1 1400\n3 a name that is far too long t/5=3 1401\n");
}

TEST(TaskEvents, EachProcessorHasItsIdleTask) {
    TaskEvents tasks;
    RawWriter out(false);
    tasks.runs({1, 0, 0}, out);
    tasks.runs({1, 1, 0}, out);
    tasks.event({2, 1, 0}, mt_Interrupt, 9, 9, "disk", out);
    EXPECT_EQ(told(out), "1 idle=0 0\n1 run 0\n1 idle=0 1\n1 run 1\n2 event2 disk 1\n");
}

TEST(TaskEvents, WhoRunsIsUnknownOnceEventsAreLost) {
    TaskEvents tasks;
    RawWriter out(false);
    tasks.runs({1, 0, 5}, out);
    tasks.runs({1, 1, 6}, out);
    tasks.leaves({2, 1, 6}, Leaves::Waits, out);
    EXPECT_EQ(tasks.processorOf(5), 0u);
    EXPECT_FALSE(tasks.processorOf(6).has_value());
    out.clear();
    tasks.lose(3, out);
    EXPECT_EQ(told(out), "3 status10 1400\n");
    EXPECT_FALSE(tasks.processorOf(5).has_value());
}

TEST(TimeOrder, WhatIsReadLateFindsItsPlace) {
    struct Event {
        uint64_t time;
        char name;
    };
    TimeOrder<Event> order;
    std::string seen;
    const auto see = [&](const Event& event) { seen += event.name; };
    for (const Event& event : {Event{5, 'b'}, Event{9, 'd'}, Event{3, 'a'}, Event{5, 'c'}}) order.add(event);
    order.release(5, see);
    EXPECT_EQ(seen, "abc");
    order.add({7, 'e'});
    order.release(100, see);
    EXPECT_EQ(seen, "abced");
    EXPECT_EQ(order.size(), 0u);
}

}  // namespace
