#include "services/servicerouter_proxy/plugin_client.h"

#include "shared/libcxxutil/raised.h"
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/socket_wire.h"
#include "shared/stp_transport/sockets.h"

namespace {

constexpr std::chrono::milliseconds nap{50};  // after which windows are served
constexpr std::chrono::seconds writingLasts{5};
constexpr uint8_t deepest = 250;

}  // namespace

uint8_t PluginClientHost::request(const std::string& text, std::string& answer) {
    answer = "Unknown request:" + text;
    return 0;
}

PluginClient::PluginClient(std::unique_ptr<Wire> wire, PluginHost& host,
                           std::function<Clock::time_point()> now)
    : wire_(std::move(wire)), host_(host), now_(std::move(now)) {}

PluginClient::~PluginClient() {
    gone_ = nullptr;
    drop();
}

std::unique_ptr<PluginClient> PluginClient::connect(uint16_t port, PluginHost& host) {
    STPStatus status;
    FileDescriptor socket = socket_Connect("localhost", port, status);
    if (!socket.IsOpen()) {
        gen_warning("The plug-in host on port %u can't be reached: %s", static_cast<unsigned>(port),
                    status.text.c_str());
        return nullptr;
    }
    if (socket_PeerOwner(socket.number()) != PeerOwner::Same) {
        gen_warning("The plug-in host on port %u does not belong to this user", static_cast<unsigned>(port));
        return nullptr;
    }
    return std::make_unique<PluginClient>(std::make_unique<SocketWire>(std::move(socket)), host);
}

void PluginClient::drop() {
    watch_.remove();
    if (!wire_) return;
    wire_->shutDown();
    wire_->close();
    wire_.reset();
    if (gone_) gone_();
}

void PluginClient::watch(Watches& watches, std::function<void()> gone) {
    watches_ = &watches;
    gone_ = std::move(gone);
    startWatch();
    poll();
}

// Off while an answer is waited for: what comes then is taken by that wait.
void PluginClient::startWatch() {
    const auto descriptor = wire_ ? wire_->descriptor() : std::nullopt;
    if (watches_ && descriptor && waiting_ == 0)
        watch_ = Watch(*watches_, *descriptor, WatchFor::Input, [this] { poll(); });
}

// What the far end does not take within a few seconds ends the connection.
void PluginClient::send(const PluginFrame& frame) {
    const auto bytes = pluginFrame_Write(frame);
    if (!bytes) return drop();
    const auto begun = now_();
    std::span<const uint8_t> left(reinterpret_cast<const uint8_t*>(bytes->data()), bytes->size());
    while (wire_ && !left.empty()) {
        const WireMoved moved = wire_->write(left);
        if (moved.what == Moved::Some) {
            left = left.subspan(moved.bytes);
        } else if (moved.what == Moved::None && now_() - begun < writingLasts) {
            wire_->wait({.output = true}, nap);
        } else {
            drop();
        }
    }
}

// Takes what has come.
void PluginClient::fill() {
    constexpr size_t piece = 65536;
    while (wire_ && in_.size() < pluginMostFrame + piece) {
        const size_t had = in_.size();
        in_.resize(had + piece);
        const WireMoved moved = wire_->read(std::span(in_).subspan(had));
        in_.resize(had + (moved.what == Moved::Some ? moved.bytes : 0));
        if (moved.what == Moved::Some) continue;
        // What came before the end is handled still.
        if (moved.what != Moved::None && in_.empty()) drop();
        if (moved.what != Moved::None && pluginFrame_Read(in_).state != PluginFrameRead::State::Whole) drop();
        return;
    }
}

std::optional<PluginFrame> PluginClient::nextFrame() {
    if (pluginFrame_Read(in_).state == PluginFrameRead::State::Incomplete) fill();
    if (!wire_) return std::nullopt;
    PluginFrameRead read = pluginFrame_Read(in_);
    if (read.state == PluginFrameRead::State::Broken) drop();
    if (read.state != PluginFrameRead::State::Whole) return std::nullopt;
    in_.erase(in_.begin(), in_.begin() + static_cast<std::ptrdiff_t>(read.bytes));
    return std::move(read.frame);
}

void PluginClient::handle(const PluginFrame& request) {
    PluginFrame reply{PluginFrame::Type::Reply, static_cast<uint8_t>(depth_ - 1), 0, {}};
    reply.status = host_.request(request.text, reply.text);
    if (wire_) send(reply);
}

uint8_t PluginClient::runRequest(const std::string& text, std::string& reply) {
    if (!wire_ || depth_ >= deepest) return lostStatus;
    watch_.remove();
    const PluginFrame answer = exchange(text);
    startWatch();
    if (!in_.empty()) poll();  // what came with the answer: the socket has no more to wake the loop with
    reply = answer.text;
    return answer.status;
}

// The answer to the text; its status is lostStatus when the connection went away.
PluginFrame PluginClient::exchange(const std::string& text) {
    const Raised waiting(waiting_);
    send({PluginFrame::Type::Request, depth_, 0, text});
    ++depth_;
    PluginFrame answer{PluginFrame::Type::Reply, 0, lostStatus, {}};
    Turn turn = Turn::GoOn;
    auto heard = now_();
    while (wire_ && turn == Turn::GoOn) {
        if (const auto frame = nextFrame()) {
            turn = takeFrame(*frame, text, answer);
            heard = now_();
            continue;
        }
        if (!wire_) break;
        host_.idle();
        if (wire_ && now_() - heard >= patience) {
            if (!host_.goesOn()) drop();
            heard = now_();
        }
        if (wire_) wire_->wait({.input = true}, nap);
    }
    if (turn == Turn::GoOn) --depth_;  // lost
    return answer;
}

// A frame that comes while the answer to text is waited for.
PluginClient::Turn PluginClient::takeFrame(const PluginFrame& frame, const std::string& text,
                                           PluginFrame& answer) {
    const bool within = frame.depth == depth_, crossed = frame.depth + 1 == depth_;
    if (frame.type == PluginFrame::Type::Reply && crossed) {
        answer = frame;
        --depth_;
        return Turn::Answered;
    }
    if (frame.type == PluginFrame::Type::Request && crossed) {
        // Both sides asked at once: theirs is answered, ours asked again.
        handle(frame);
        if (wire_) send({PluginFrame::Type::Request, static_cast<uint8_t>(depth_ - 1), 0, text});
    } else if (frame.type == PluginFrame::Type::Request && within && depth_ < deepest) {
        ++depth_;
        handle(frame);
        --depth_;
    } else {
        drop();
    }
    return Turn::GoOn;
}

void PluginClient::poll() {
    if (waiting_ > 0 || polling_) return;
    polling_ = true;
    while (const auto frame = nextFrame()) {
        if (frame->type != PluginFrame::Type::Request || frame->depth != depth_) {
            drop();
            break;
        }
        ++depth_;
        handle(*frame);
        --depth_;
    }
    polling_ = false;
}
