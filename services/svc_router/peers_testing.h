// For tests of the router: a program that offers the analyzer's service, and one that uses it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "services/generated/tra_service_client_impl.h"
#include "services/generated/tra_service_server_impl.h"

struct TestServer : TRA_server_Impl {
    std::vector<std::string> calls;
    int lost = 0;
    void connectionLost() override { ++lost; }

  protected:
    TRA_OpenFile_Reply OpenFile(const TRA_OpenFile_Request& request) override {
        calls.push_back(request.dataFile);
        // Calls back within the call.
        const auto ability = CheckAbility({request.dataFile});
        return {.win = ability ? ability->powerMmask : 0};
    }
    TRA_ScrollToPosition_Reply ScrollToPosition(const TRA_ScrollToPosition_Request&) override { return {}; }
    void CloseFile(const TRA_CloseFile_Request&) override {}
};

struct TestClient : TRA_client_Impl {
    uint32_t ability = 6;
    int lost = 0;
    std::function<void()> asked;
    void connectionLost() override { ++lost; }

  protected:
    TRA_CheckAbility_Reply CheckAbility(const TRA_CheckAbility_Request&) override {
        if (asked) asked();
        return {.powerMmask = ability};
    }
    void RunCmdInDebugger(const TRA_RunCmdInDebugger_Request&) override {}
    TRA_ShowPositionInDebugger_Reply ShowPositionInDebugger(
        const TRA_ShowPositionInDebugger_Request&) override {
        return {};
    }
};
