#include "shared/libcxxutil/gate.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr GateActivity activities[] = {GateActivity::TickReading, GateActivity::TickDrawing,
                                       GateActivity::ServiceHandler, GateActivity::Command,
                                       GateActivity::Painting};

// One letter for each activity that may: reading, drawing, handler, command, painting.
std::string Allowed(const Gate& gate) {
    std::string allowed;
    for (size_t i = 0; i < 5; ++i)
        if (gate.May(activities[i])) allowed += "rdhcp"[i];
    return allowed;
}

}  // namespace

TEST(Gate, EachWorkStopsWhatItMust) {
    const struct {
        GateWork work;
        const char* allowed;
    } rows[] = {
        {GateWork::Load, "p"},           {GateWork::Fetch, ""},           {GateWork::Search, "p"},
        {GateWork::Report, "p"},         {GateWork::Print, ""},           {GateWork::Merge, "p"},
        {GateWork::ContextMenu, "cp"},   {GateWork::ModalDialog, "rdcp"}, {GateWork::DraggedCursor, "rhcp"},
        {GateWork::HeldDrawing, "rhcp"}, {GateWork::TargetWait, "rdp"},
    };
    Gate gate;
    for (const auto& row : rows) {
        const Gate::Token token = gate.Begin(row.work);
        EXPECT_TRUE(gate.Runs(row.work));
        EXPECT_EQ(Allowed(gate), row.allowed) << static_cast<int>(row.work);
    }
    EXPECT_EQ(Allowed(gate), "rdhcp");
}

TEST(Gate, NestedWorkEndsWithItsLastToken) {
    Gate gate;
    Gate::Token load = gate.Begin(GateWork::Load);
    Gate::Token fetch = gate.Begin(GateWork::Fetch), again = gate.Begin(GateWork::Fetch);
    Gate::Token moved = std::move(fetch);
    moved = std::move(again);  // ends the one that it stood for
    EXPECT_TRUE(gate.Runs(GateWork::Fetch));
    moved.End();
    moved.End();
    EXPECT_FALSE(gate.Runs(GateWork::Fetch));
    EXPECT_EQ(Allowed(gate), "p");
    load.End();
    EXPECT_EQ(Allowed(gate), "rdhcp");
}

TEST(Gate, WhatWasHeldRunsInOrderWhenItMay) {
    Gate gate;
    std::string ran;
    int wakes = 0, reader = 0, drawer = 0, server = 0;
    gate.SetWake([&] { ++wakes; });
    Gate::Token load = gate.Begin(GateWork::Load), dialog = gate.Begin(GateWork::ModalDialog);
    gate.WhenMay(GateActivity::ServiceHandler, &server, [&] { ran += 'h'; });
    gate.WhenMay(GateActivity::TickReading, &reader, [&] { ran += 'x'; });
    gate.WhenMay(GateActivity::TickReading, &reader, [&] { ran += 'r'; });  // in place of the one before
    gate.WhenMay(GateActivity::TickDrawing, &drawer, [&] { ran += 'd'; });
    gate.Forget(&drawer);
    EXPECT_EQ(gate.RunHeld(), 0u);
    EXPECT_EQ(wakes, 0);
    load.End();
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(ran, "");  // not from within the end of the work
    EXPECT_EQ(gate.RunHeld(), 1u);
    EXPECT_EQ(ran, "r");
    dialog.End();
    EXPECT_EQ(wakes, 2);
    EXPECT_EQ(gate.RunHeld(), 1u);
    EXPECT_EQ(ran, "rh");
    EXPECT_FALSE(gate.Ready());
}

TEST(Gate, HeldWorkMayStopTheNextAndAskAgain) {
    Gate gate;
    Gate::Token fetch;
    int first = 0, second = 0, calls = 0;
    gate.WhenMay(GateActivity::TickReading, &first, [&] {
        ++calls;
        fetch = gate.Begin(GateWork::Fetch);
        gate.WhenMay(GateActivity::TickReading, &first, [&] { ++calls; });
    });
    gate.WhenMay(GateActivity::ServiceHandler, &second, [&] { calls += 10; });
    EXPECT_EQ(gate.RunHeld(), 1u);
    EXPECT_EQ(calls, 1);
    fetch.End();
    EXPECT_EQ(gate.RunHeld(), 2u);
    EXPECT_EQ(calls, 12);
}
