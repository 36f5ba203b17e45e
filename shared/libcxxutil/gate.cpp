#include "shared/libcxxutil/gate.h"

#include <algorithm>
#include <utility>

#include "shared/libcxxutil/report.h"

namespace {

// The one place that says what stops what.
bool Stops(GateWork work, GateActivity activity) {
    const bool tick = activity == GateActivity::TickReading || activity == GateActivity::TickDrawing;
    const bool handler = activity == GateActivity::ServiceHandler;
    switch (work) {
        case GateWork::Fetch:  // what would be painted is half there
        case GateWork::Print:  // what would be painted is that of a page
            return true;
        case GateWork::Load:
        case GateWork::Search:
        case GateWork::Report:
        case GateWork::Merge:
            return tick || handler || activity == GateActivity::Command;
        case GateWork::TargetWait:
            return handler || activity == GateActivity::Command;
        case GateWork::ContextMenu:
            return tick || handler;
        case GateWork::ModalDialog:
            return handler;
        case GateWork::DraggedCursor:
        case GateWork::HeldDrawing:
            return activity == GateActivity::TickDrawing;
    }
    return false;
}

}  // namespace

Gate::Token::Token(Token&& other) noexcept : gate_(std::exchange(other.gate_, nullptr)), work_(other.work_) {}

Gate::Token& Gate::Token::operator=(Token&& other) noexcept {
    if (this == &other) return *this;
    End();
    gate_ = std::exchange(other.gate_, nullptr);
    work_ = other.work_;
    return *this;
}

void Gate::Token::End() {
    if (Gate* gate = std::exchange(gate_, nullptr)) gate->Ended(work_);
}

Gate::Token Gate::Begin(GateWork work) {
    ++counts_[static_cast<size_t>(work)];
    return Token(*this, work);
}

void Gate::Ended(GateWork work) {
    GEN_ASSERT(counts_[static_cast<size_t>(work)] > 0);
    if (--counts_[static_cast<size_t>(work)] == 0) Wake();
}

bool Gate::May(GateActivity activity) const {
    for (size_t i = 0; i < gateWorks; ++i)
        if (counts_[i] > 0 && Stops(static_cast<GateWork>(i), activity)) return false;
    return true;
}

void Gate::WhenMay(GateActivity activity, const void* owner, std::function<void()> run) {
    const auto same = std::find_if(held_.begin(), held_.end(), [&](const Held& held) {
        return held.activity == activity && held.owner == owner;
    });
    if (same != held_.end())
        same->run = std::move(run);
    else
        held_.push_back({activity, owner, std::move(run), ++asked_});
    Wake();
}

void Gate::Forget(const void* owner) {
    std::erase_if(held_, [&](const Held& held) { return held.owner == owner; });
}

bool Gate::Ready() const {
    return std::any_of(held_.begin(), held_.end(), [&](const Held& held) { return May(held.activity); });
}

void Gate::Wake() const {
    if (wake_ && Ready()) wake_();
}

size_t Gate::RunHeld() {
    const size_t last = asked_;
    size_t ran = 0;
    while (true) {
        const auto next = std::find_if(held_.begin(), held_.end(), [&](const Held& held) {
            return held.number <= last && May(held.activity);
        });
        if (next == held_.end()) return ran;
        const std::function<void()> run = std::move(next->run);
        held_.erase(next);  // before it runs: it may ask again, or forget others
        ++ran;
        run();
    }
}

Gate& gate_Program() {
    static Gate gate;
    return gate;
}
