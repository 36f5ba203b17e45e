// Who learns of every event as it goes into a store, so that something beside the store can be made of it in
// the same pass.
#pragma once

#include <cstdint>

#include "libtrv/event.h"

class AppendObserver {
  public:
    virtual ~AppendObserver() = default;
    // An event was appended; no reader sees it yet. Its spans last until the return. mark is the store's up
    // to it (store_mark.h).
    virtual void Appended(const EventRecord& event, uint64_t mark) = 0;
    // Readers see the first so many events.
    virtual void Committed(uint32_t events) = 0;
    // The disk takes no more of the store. What the observer keeps there goes, and is not kept any more; the
    // store then tries again. False when it keeps nothing.
    [[nodiscard]] virtual bool GiveRoom() { return false; }
    // Some that were appended did not go in after all.
    virtual void Refused() = 0;
};
