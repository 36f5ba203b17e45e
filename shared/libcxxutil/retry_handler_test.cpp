#include "shared/libcxxutil/retry_handler.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

RetryHandler::Clock::time_point moment{};

struct Plain : RetryHandler {
    explicit Plain(std::optional<std::chrono::milliseconds> limit)
        : RetryHandler(limit, [] { return moment; }) {}
    void wait() override {}
};

}  // namespace

TEST(RetryHandler, GoesOnByConditionsLimitAndDeadline) {
    moment = RetryHandler::Clock::time_point{} + 1h;
    Plain endless(std::nullopt), limited(100ms), none(0ms);
    for (RetryHandler* handler : {static_cast<RetryHandler*>(&endless), static_cast<RetryHandler*>(&limited),
                                  static_cast<RetryHandler*>(&none)})
        handler->start();
    EXPECT_FALSE(none.keepTrying());
    moment += 99ms;
    EXPECT_TRUE(limited.keepTrying());
    moment += 1ms;
    EXPECT_FALSE(limited.keepTrying());
    moment += 1000h;
    EXPECT_TRUE(endless.keepTrying());
    // A new start begins the time anew.
    limited.start();
    EXPECT_TRUE(limited.keepTrying());
    // The deadline holds for handlers with a limit only.
    RetryHandler::SetDeadline(moment);
    EXPECT_FALSE(limited.keepTrying());
    EXPECT_TRUE(endless.keepTrying());
    RetryHandler::SetDeadline(moment + 1ms);
    EXPECT_TRUE(limited.keepTrying());
    RetryHandler::SetDeadline(std::nullopt);
    // A condition goes before everything.
    bool goesOn = true;
    endless.AddCondition([&] { return goesOn; });
    EXPECT_TRUE(endless.keepTrying());
    goesOn = false;
    EXPECT_FALSE(endless.keepTrying());
}
