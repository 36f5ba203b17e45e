// A wire that does what a test says, and writes down what it was given.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "shared/stp_transport/wire.h"

struct WireScript {
    struct Step {
        Moved what = Moved::Some;
        std::string bytes = {};  // of a read
        size_t most = 0;         // of a write: so many are taken
        SocketError error = SocketError::None;
        size_t taken = 0;  // of a read's bytes
    };
    std::deque<Step> reads;   // when they are used up nothing comes
    std::deque<Step> writes;  // when they are used up everything is taken
    std::string written;
    std::vector<std::chrono::milliseconds> waits;
    std::function<void(std::chrono::milliseconds)> onWait;  // the clock, or the far end
    SocketError waitError = SocketError::None;
    int shutDownError = 0, closeError = 0;
    bool shutDown = false, closed = false;

    void come(std::string bytes) {
        reads.push_back({Moved::Some, std::move(bytes), 0, SocketError::None, 0});
    }
    void end() { reads.push_back({Moved::End, {}, 0, SocketError::None, 0}); }
    void failRead(SocketError error) { reads.push_back({Moved::Failed, {}, 0, error, 0}); }
    void takeOnly(size_t bytes) { writes.push_back({Moved::Some, {}, bytes, SocketError::None, 0}); }
    void takeNothing() { writes.push_back({Moved::None, {}, 0, SocketError::None, 0}); }
    void failWrite(SocketError error) { writes.push_back({Moved::Failed, {}, 0, error, 0}); }
    std::string takeWritten() { return std::exchange(written, {}); }
};

class ScriptedWire : public Wire {
  public:
    explicit ScriptedWire(std::shared_ptr<WireScript> script) : script_(std::move(script)) {}

    WireMoved read(std::span<uint8_t> room) override {
        auto& reads = script_->reads;
        if (reads.empty()) return {};
        WireScript::Step& step = reads.front();
        if (step.what != Moved::Some) {
            const WireMoved moved{step.what, 0, step.error};
            if (step.what != Moved::End) reads.pop_front();
            return moved;
        }
        const size_t count = std::min(room.size(), step.bytes.size() - step.taken);
        std::copy_n(step.bytes.begin() + static_cast<std::ptrdiff_t>(step.taken), count, room.begin());
        step.taken += count;
        if (step.taken == step.bytes.size()) reads.pop_front();
        return count == 0 ? WireMoved{} : WireMoved{Moved::Some, count, SocketError::None};
    }
    WireMoved write(std::span<const uint8_t> bytes) override {
        WireScript::Step step{Moved::Some, {}, bytes.size(), SocketError::None, 0};
        if (!script_->writes.empty()) {
            step = script_->writes.front();
            script_->writes.pop_front();
        }
        if (step.what != Moved::Some) return {step.what, 0, step.error};
        const size_t count = std::min(step.most, bytes.size());
        script_->written.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        return {Moved::Some, count, SocketError::None};
    }
    WireReadiness wait(WireReadiness wanted, std::chrono::milliseconds longest) override {
        script_->waits.push_back(longest);
        const auto hook = script_->onWait;
        if (hook) hook(longest);
        if (script_->waitError != SocketError::None)
            return {false, false, std::exchange(script_->waitError, SocketError::None)};
        return {wanted.input && !script_->reads.empty(), wanted.output, SocketError::None};
    }
    int shutDown() override {
        script_->shutDown = true;
        return script_->shutDownError;
    }
    int close() override {
        script_->closed = true;
        return script_->closeError;
    }

  private:
    std::shared_ptr<WireScript> script_;
};
