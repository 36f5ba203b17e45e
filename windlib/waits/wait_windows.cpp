#include "windlib/waits/wait_windows.h"

#include <map>

namespace {

// Handles that are in use, and whether each was told to stop.
std::map<int, bool>& handles() {
    static std::map<int, bool> inUse;
    return inUse;
}

}  // namespace

int waitHandle_Make() {
    int handle = 1;
    while (handles().contains(handle)) ++handle;
    handles()[handle] = false;
    return handle;
}

void waitHandle_Free(int handle) {
    handles().erase(handle);
}

bool waitHandle_Stop(int handle) {
    const auto found = handles().find(handle);
    if (found == handles().end()) return false;
    return found->second = true;
}

void waitHandle_Resume(int handle) {
    if (const auto found = handles().find(handle); found != handles().end()) found->second = false;
}

bool waitHandle_IsStopped(int handle) {
    const auto found = handles().find(handle);
    return found != handles().end() && found->second;
}
