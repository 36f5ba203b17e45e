// What the tests of the engines share: stores of given events in a folder of their own, legends, and sources.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "chronoweave/engine/search.h"
#include "chronoweave/rtos/legend_testing.h"
#include "libtrv/test_store.h"

constexpr uint32_t test_rate = 1000;  // ticks per second

inline LegendEvent legend_event(uint16_t type, uint16_t subtype, const char* name, uint32_t flags) {
    LegendEvent event;
    event.type = type;
    event.subtype = subtype;
    event.name = name;
    event.iconName = "help";
    event.flags = flags;
    return event;
}

class AnalysisTest : public ::testing::Test {
  protected:
    AnalysisSource& open(const std::vector<TestEvent>& events, const std::string& os, Legend legend) {
        const std::string base = folder_ / ("store" + std::to_string(stores_++));
        auto writer = StoreWriter::OpenForWrite(base, test_rate, os, true, TaskTracker);
        writer->SetGrouping(1 << 20);
        for (const TestEvent& event : events)
            EXPECT_TRUE(writer->AppendEvent(event.time, event.type, event.subtype, event.extra));
        writer.reset();
        source_ = {};
        store_ = mt_OpenForRead(base);
        legend_ = std::move(legend);
        base_ = base;
        source_ = analysis_SourceOfStore(*store_, legend_);
        return source_;
    }
    // The same with every object ready ahead of the first event: a switch to a task that the target has not
    // told yet leaves it ready.
    AnalysisSource& OpenReady(std::vector<TestEvent> events, const std::string& os, Legend legend) {
        std::set<uint32_t> objects;
        for (const TestEvent& event : events) objects.insert(load_32(event.extra.data(), true));
        for (const uint32_t object : objects)
            events.insert(events.begin(), {0, mt_StatusChange, mt_Ready, words({object})});
        return open(events, os, std::move(legend));
    }
    std::vector<uint32_t> everyone() { return analysis_ObjectsAlive(source_, 0, source_.totalLength); }

    // Event codes of one type each by name, exact codes ahead of two kinds of wild card, and two statuses
    // that execute, so that several objects execute on one processor.
    static Legend CrowdedLegend() {
        Legend legend = test_legend();
        legend.events.clear();
        const auto add = [&](uint16_t type, uint16_t subtype, const char* name, uint32_t flags) {
            legend.events.push_back(legend_event(type, subtype, name, flags | 1));
        };
        add(0, 0, "Early", LegendEvent_Category);
        add(1, 0, "Switch", 0);
        add(4, 2, "Take", LegendEvent_IntervalSearch);
        add(4, 3, "Give", LegendEvent_IntervalSearch);
        add(0, 5, "Fives", LegendEvent_AnyType);
        add(0, 0, "Late", LegendEvent_Category);
        add(5, 0, "Status", LegendEvent_AnySubtype);
        add(3, 0, "Call", LegendEvent_AnySubtype);
        add(3, 1, "Take", 0);
        add(0xFFFF, 0xFFFF, "Unknown", 0);
        for (LegendStatus& status : legend.statuses)
            if (status.code == mt_Suspend || status.code == mt_Running) status.isExecution = true;
        legend.BuildLookups();
        return legend;
    }

    TestFolder folder_;
    std::string base_;
    Legend legend_;
    TraceStorePtr store_;
    AnalysisSource source_;
    int stores_ = 0;
};
