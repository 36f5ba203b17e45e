// The program driven by a user on a screen of its own, as the tests have it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "chronoweave/traxmain/driven_robot.h"
#include "libtrv/test_store.h"

struct _LaCanvasData;

using Script = std::function<void(Robot&)>;

// Runs the program in a process of its own, with a user who follows the script, which ends with quitting.
// The exit status: that of the program, 99 after a fault, which standard error is told.
int run_program(const std::vector<std::string>& arguments, const std::string& pictures, const Script& script);
// The same for a program that shows a window only when another program asks for it.
int run_service(const std::vector<std::string>& arguments, const std::string& pictures, const Script& script);

// Of the first window.
_LaCanvasData& canvas_data();

// The program reads and writes no configuration but the test's; trace is a copy of the sample.
class DrivenSession : public testing::Test {
  protected:
    void SetUp() override;

    DrivenScreen screen;
    TestFolder folder;
    std::string trace, pictures;
};
