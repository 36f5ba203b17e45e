// A model of two peers: random trees of calls, over three wires. Whatever the order of events, each request
// is handled once and has one reply, order within a call holds, nothing foreign runs in an ordered wait, and
// nothing is left over.
//
// The design lets peers wait for each other for ever when both begin chains of calls that let nobody else in;
// a time-out ends that. The trees here keep to what can end by itself: ordered calls are begun by one peer
// only, and what a one-way message causes is one-way too.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <deque>
#include <map>
#include <random>

#include "shared/stp_transport/fiber_testing.h"
#include "shared/stp_transport/transport_testing.h"

using namespace std::chrono_literals;

namespace {

constexpr int seeds = 10000, deepest = 6;
constexpr size_t mostSteps = 200000;

struct Call {
    uint32_t id = 0;
    Call* parent = nullptr;
    uint32_t flags = stpOneWay;
    int refusals = 0;     // so often its handler can't take it
    bool closes = false;  // its handler closes the connection
    std::vector<std::unique_ptr<Call>> children;
    int handled = 0, replies = 0;

    bool oneWay() const { return (flags & stpOneWay) != 0; }
    // The call that began the chain.
    const Call& root() const { return parent ? parent->root() : *this; }
};

using Random = std::mt19937;

int below(Random& random, int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n));
}

// A chain of calls. Ordered ones wait for their own chain only.
enum class Chain { Ordered, Unordered };
std::unique_ptr<Call> randomCall(Random& random, std::map<uint32_t, Call*>& all, Call* parent, int depth,
                                 Chain chain, bool mayWait) {
    auto call = std::make_unique<Call>();
    call->id = static_cast<uint32_t>(all.size() + 1);
    all[call->id] = call.get();
    call->parent = parent;
    if (mayWait && below(random, 3) > 0)
        call->flags = stpWantsReply | (chain == Chain::Ordered ? stpOwnContextOnly : 0);
    else if (below(random, 4) == 0)
        call->flags |= below(random, 2) == 0 ? stpOrdered : stpAnyTime;
    if (below(random, 12) == 0) call->refusals = 1 + below(random, 3);
    const int children = depth < deepest ? below(random, depth < 2 ? 4 : 3) : 0;
    for (int i = 0; i < children; ++i)
        call->children.push_back(randomCall(random, all, call.get(), depth + 1, chain, !call->oneWay()));
    return call;
}

// The bytes of one direction, in pieces of any size.
struct Stream {
    std::string bytes;
    bool open = true;
};

class ChunkWire : public Wire {
  public:
    ChunkWire(std::shared_ptr<Stream> in, std::shared_ptr<Stream> out, Random& random)
        : in_(std::move(in)), out_(std::move(out)), random_(random) {}
    WireMoved read(std::span<uint8_t> room) override {
        if (in_->bytes.empty()) return {in_->open ? Moved::None : Moved::End, 0, SocketError::None};
        const size_t count = std::min({room.size(), in_->bytes.size(), size_t{1} + random_() % 200});
        std::copy_n(in_->bytes.begin(), count, room.begin());
        in_->bytes.erase(0, count);
        return {Moved::Some, count, SocketError::None};
    }
    WireMoved write(std::span<const uint8_t> bytes) override {
        if (!out_->open) return {Moved::Failed, 0, SocketError::Reset};
        const size_t count = std::min<size_t>(bytes.size(), random_() % 300);
        out_->bytes.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        return {count > 0 ? Moved::Some : Moved::None, count, SocketError::None};
    }
    WireReadiness wait(WireReadiness wanted, std::chrono::milliseconds) override {
        return {wanted.input && (!in_->bytes.empty() || !in_->open), wanted.output, SocketError::None};
    }
    int close() override {
        in_->open = out_->open = false;
        return 0;
    }

  private:
    std::shared_ptr<Stream> in_, out_;
    Random& random_;
};

enum class WireKind { InProcess, Scripted, SocketPair };

class Model;

// One peer: its process, its handler, and what it calls by itself.
struct Peer : STPHandler {
    Model& model;
    uint32_t ownId, peerId;
    STPCallState calls;
    Gate gate;
    Gate::Token held;
    Ref<STPTransport> transport;
    std::vector<std::unique_ptr<Call>> script;
    std::vector<const Call*> ordered;  // ordered waits under way, innermost last
    std::vector<const Call*> running;  // what is handled or waited for
    std::unique_ptr<Fiber> fiber;
    bool scriptDone = false;

    Peer(Model& m, uint32_t own, uint32_t peer) : model(m), ownId(own), peerId(peer) {
        transport = ref_Make<STPTransport>(
            STPTransportOptions{.outInitial = 256,
                                .inInitial = 256,
                                .calls = &calls,
                                .gate = &gate,
                                .contextHigh = static_cast<uint16_t>(own == 2 ? 1 : 0)});
        transport->registerHandler(peerId, ownId, *this, STPKind::Text);
    }
    ~Peer() override { transport->unregisterHandler(*this); }

    bool handleMessage(STPMessage& message, bool) override;
    void run(Call& call);
    void runScript();
    void serve() {
        if (transport->bound()) transport->serviceOnce(0ms);
        gate.RunHeld();
    }
};

struct YieldingRetry : RetryHandler {
    Peer& peer;
    explicit YieldingRetry(Peer& p) : peer(p) {}
    void wait() override {
        peer.transport->serviceOnce(0ms);
        peer.fiber->pause();
    }
};

class Model {
  public:
    Model(unsigned seed, WireKind kind) : seed_(seed), kind_(kind), random_(seed) {
        connect();
        // One tree in twenty is cut short by a handler that closes.
        for (int i = 1 + below(random_, 3); i > 0; --i)
            first.script.push_back(randomCall(random_, all, nullptr, 1, Chain::Ordered, true));
        for (int i = below(random_, 4); i > 0; --i)
            second.script.push_back(randomCall(random_, all, nullptr, 1, Chain::Unordered, true));
        if (below(random_, 20) == 0) {
            closes = true;
            all[1 + static_cast<uint32_t>(random_() % all.size())]->closes = true;
        }
        for (Peer* peer : {&first, &second})
            peer->fiber = std::make_unique<Fiber>([peer] { peer->runScript(); });
    }

    void run() {
        size_t steps = 0;
        while (!over() && ++steps < mostSteps) {
            Peer& peer = below(random_, 2) == 0 ? first : second;
            // The gate holds the handlers now and then, for a while.
            if (below(random_, 40) == 0)
                peer.held = below(random_, 2) == 0 ? peer.gate.Begin(GateWork::ModalDialog) : Gate::Token();
            peer.fiber->resume();
            if (kind_ == WireKind::InProcess && closes) closeBoth();
        }
        EXPECT_LT(steps, mostSteps) << "stuck, " << about();
        check();
    }
    std::string about() const {
        return "seed " + std::to_string(seed_) + " wire " + std::to_string(static_cast<int>(kind_));
    }

    std::map<uint32_t, Call*> all;
    bool closes = false;
    Peer first{*this, 1, 2}, second{*this, 2, 1};

  private:
    void connect() {
        switch (kind_) {
            case WireKind::InProcess:
                first.transport->bindInProcess(second.transport->outWindow(), {});
                second.transport->bindInProcess(first.transport->outWindow(), {});
                return;
            case WireKind::Scripted: {
                auto out = std::make_shared<Stream>(), back = std::make_shared<Stream>();
                first.transport->bindWire(std::make_unique<ChunkWire>(back, out, random_));
                second.transport->bindWire(std::make_unique<ChunkWire>(out, back, random_));
                return;
            }
            case WireKind::SocketPair: {
                int ends[2];
                ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
                first.transport->bindFD(ends[0]);
                second.transport->bindFD(ends[1]);
                return;
            }
        }
    }
    // Another party in the process learns by other ways that its peer is gone.
    void closeBoth() {
        if (first.transport->bound() == second.transport->bound()) return;
        first.transport->close();
        second.transport->close();
    }
    bool over() {
        if (!first.scriptDone || !second.scriptDone || !first.running.empty() || !second.running.empty())
            return false;
        for (Peer* peer : {&first, &second}) peer->held.End();
        const auto quiet = [](const STPTransport::Census& c) {
            return c.deferred + c.outBytes + c.inBytes + c.replies + c.unclaimed == 0;
        };
        if (!quiet(first.transport->census()) || !quiet(second.transport->census())) return false;
        // Bytes may be under way still: one-way messages are handled at last.
        if (closes) return !first.transport->bound() && !second.transport->bound();
        for (const auto& [id, call] : all)
            if (call->handled == 0) return false;
        return true;
    }
    void check() {
        for (const auto& [id, call] : all) {
            EXPECT_LE(call->handled, 1) << about() << " call " << id;
            EXPECT_LE(call->replies, 1) << about() << " call " << id;
            if (closes) continue;
            EXPECT_EQ(call->handled, 1) << about() << " call " << id;
            EXPECT_EQ(call->replies, call->oneWay() ? 0 : 1) << about() << " call " << id;
        }
        STPTransport::Census rest{};
        rest.handlers = 1;
        rest.outCapacity = rest.inCapacity = 256;
        for (Peer* peer : {&first, &second}) {
            STPTransport::Census census = peer->transport->census();
            EXPECT_LE(census.inCapacity, 2560u);
            census.inCapacity = 256;
            if (kind_ == WireKind::InProcess) census.outCapacity = 256;  // drained by the other party
            EXPECT_EQ(census, rest) << about();
            EXPECT_EQ(peer->calls.messageDepth + peer->calls.sendDepth + peer->calls.orderedWaits, 0)
                << about();
        }
    }

    unsigned seed_;
    WireKind kind_;
    Random random_;
};

bool Peer::handleMessage(STPMessage& message, bool) {
    Call& call = *model.all.at(static_cast<uint32_t>(std::stoul(message.body)));
    const bool anyTime = (message.header.flags & stpAnyTime) != 0;
    if (!ordered.empty() && !anyTime) {
        EXPECT_EQ(&call.root(), &running.back()->root()) << "foreign in an ordered wait, " << model.about();
    }
    if (call.refusals > 0) return --call.refusals, false;
    if (call.parent && !anyTime) {
        for (const auto& sibling : call.parent->children) {
            if (sibling.get() == &call) break;
            EXPECT_TRUE(sibling->handled > 0 || (sibling->flags & stpAnyTime) != 0)
                << "out of order, " << model.about() << " call " << call.id;
        }
    }
    EXPECT_EQ(gate.May(GateActivity::ServiceHandler), true) << model.about();
    ++call.handled;
    running.push_back(&call);
    const STPTransport::HandledScope scope(*transport, message);
    for (const auto& child : call.children)
        if (transport->bound()) run(*child);
    if (call.closes) transport->close();
    if (!call.oneWay() && transport->bound()) {
        STPMessage reply = transport->newReply(ownId, peerId, message.header.sequence);
        reply.body = std::to_string(call.id);
        transport->sendAndFlush(reply, 2);
    }
    running.pop_back();
    return true;
}

void Peer::run(Call& call) {
    YieldingRetry retry(*this);
    STPMessage message = transport->newRequest(ownId, peerId, STPKind::Text, 0, call.flags);
    // Some are longer than the buffers.
    message.body = std::to_string(call.id) + ' ' + std::string(call.id % 7 == 0 ? 700 : 0, 'x');
    running.push_back(&call);
    const uint32_t sequence = transport->sendMessage(message, &retry);
    if (sequence != 0 && !call.oneWay()) {
        const bool only = (call.flags & stpOwnContextOnly) != 0;
        if (only) ordered.push_back(&call);
        const STPMessagePtr reply = transport->awaitResponse(sequence, &retry);
        if (only) ordered.pop_back();
        if (reply) {
            EXPECT_EQ(std::stoul(reply->body), call.id) << model.about();
            ++call.replies;
        } else {
            EXPECT_TRUE(model.closes) << transport->status().text << model.about();
        }
    }
    running.pop_back();
}

void Peer::runScript() {
    for (const auto& call : script) {
        if (transport->bound()) run(*call);
        fiber->pause();
    }
    scriptDone = true;
    while (true) {
        serve();
        fiber->pause();
    }
}

void runSeeds(WireKind kind) {
    for (unsigned seed = 1; seed <= seeds && !testing::Test::HasFailure(); ++seed) Model(seed, kind).run();
}

}  // namespace

TEST(Model, TenThousandTreesInProcess) {
    runSeeds(WireKind::InProcess);
}

TEST(Model, TenThousandTreesOverAScriptedWire) {
    runSeeds(WireKind::Scripted);
}

TEST(Model, TenThousandTreesOverASocketPair) {
    runSeeds(WireKind::SocketPair);
}
