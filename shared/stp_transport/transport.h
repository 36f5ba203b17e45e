// A connection of the service bus: self-describing messages over one wire, with virtual channels, replies
// matched to requests, and blocking calls during which other messages are still handled, in an order that
// keeps nested calls right. docs/formats.md has the bytes.
//
// One thread. Every operation that takes a status leaves there how it ended, when one is given; the transport
// keeps its own as well. Operations may be called from within a handler, close and the last release included.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/ref.h"
#include "shared/libcxxutil/retry_handler.h"
#include "shared/libcxxutil/watches.h"
#include "shared/stp_transport/byte_window.h"
#include "shared/stp_transport/call_state.h"
#include "shared/stp_transport/in_process_wire.h"
#include "shared/stp_transport/may_dispatch.h"
#include "shared/stp_transport/message_queue.h"
#include "shared/stp_transport/sockets.h"
#include "shared/stp_transport/status.h"
#include "shared/stp_transport/wire.h"

class STPTransport;

// Takes messages of one channel and kind. Outlives its registration.
class STPHandler {
  public:
    virtual ~STPHandler() = default;
    // False when the message can't be taken now: it comes again with a later input. notAwaited is false for
    // the reply that somebody waits for. The message stays the transport's.
    virtual bool handleMessage(STPMessage& message, bool notAwaited) = 0;
    // Bits that the message's flags get before it is asked whether it may be handled.
    virtual uint32_t addedFlags(const STPMessage&) { return 0; }
    // The message has to wait; what is given lives as long as it does.
    virtual std::shared_ptr<void> holdWhileDeferred() { return nullptr; }
    // The transport is closed, its status says why.
    virtual void transportClosed() {}
};

// Where a packet goes that is not looked into.
struct STPRoute {
    enum class To {
        Here,     // to the handlers of the transport that it came to
        Peer,     // to another connection
        Nowhere,  // its ends are not connected any more
    };
    To to = To::Here;
    STPTransport* peer = nullptr;  // with Peer
};

// Sends the packets of a channel on to another connection, without a look at them.
class STPForwarder {
  public:
    virtual ~STPForwarder() = default;
    // The ids are the sender's and the receiver's.
    virtual STPRoute routeOf(uint32_t firstId, uint32_t secondId) = 0;
};

// A pair of small numbers over which messages go. Made by createChannel, or by the peer's wish.
struct STPChannel {
    STPTransport* transport = nullptr;  // null once that is gone
    uint32_t firstId = 0, secondId = 0;
    bool createSent = false, createReceived = false;
    bool startSent = false, startReceived = false;
    bool closeSent = false, closeReceived = false;
    STPStatus status;

    bool startChannel(RetryHandler* retry, STPStatus* status = nullptr);
    bool closeChannel(RetryHandler* retry, STPStatus* status = nullptr);
};

struct STPTransportOptions {
    uint32_t outInitial = 32768, inInitial = 32768;
    STPCallState* calls = &stp_CallState();
    Gate* gate = &gate_Program();
    PollFunction poll = watches_Poll;
    std::function<PeerOwner(int descriptor)> peerOwner = socket_PeerOwner;
    ListenOn listenOn = ListenOn::Loopback;
    // The upper half of the contexts that begin here: it tells them from those that begin at the far end. The
    // end that accepted a connection has 1, and so has the second of a pair.
    uint16_t contextHigh = 0;
};

class STPTransport : public RefCounted {
  public:
    explicit STPTransport(STPTransportOptions options = {});

    // Connecting: one of these, while neither bound nor listening.
    bool connect(const std::string& host, uint16_t port, STPStatus* status = nullptr);
    // Waits for one client.
    bool listen(uint16_t port, RetryHandler* retry, STPStatus* status = nullptr);
    // What becomes of a listening socket when its client is there.
    enum class AfterAccept { Close, LeaveOpen };
    // Takes a socket that listens, for tryAccept. It is closed with the transport, unless it was left open.
    bool startListenOnFD(int socket, STPStatus* status = nullptr);
    bool listenOnFD(int socket, AfterAccept after, RetryHandler* retry, STPStatus* status = nullptr);
    // True when a client was accepted. A client of another user is refused with a message, and false.
    bool tryAccept(AfterAccept after, STPStatus* status = nullptr);
    // Takes an open descriptor over, or any wire.
    bool bindFD(int socket, STPStatus* status = nullptr);
    bool bindWire(std::unique_ptr<Wire> wire, STPStatus* status = nullptr);
    // Two ends in this process. Made anew, or of two that are not bound; each end waits on its own counters
    // if they are to call each other and wait.
    static std::pair<Ref<STPTransport>, Ref<STPTransport>> createInProcessPair(
        STPTransportOptions first = {}, STPTransportOptions second = {});
    static bool linkInProcess(STPTransport& first, STPTransport& second, STPStatus* status = nullptr);
    // The far end is another party, that reads from outWindow's fields; wake tells it that there is
    // something.
    bool bindInProcess(PeerWindow peer, std::function<void()> wake, STPStatus* status = nullptr);
    PeerWindow outWindow();

    // Closes the connection, or ends listening, and frees all queues. The transport can connect again.
    void close(STPStatus* status = nullptr);

    bool bound() const { return wire_ != nullptr; }
    bool listening() const { return listening_.IsOpen(); }
    bool inProcess() const { return inProcess_ != nullptr; }
    const STPStatus& status() const { return status_; }
    std::string localName() const { return wire_ ? wire_->localName() : std::string(); }
    std::string peerName() const { return wire_ ? wire_->peerName() : std::string(); }
    // The socket to watch, of the connection or the one that listens.
    std::optional<int> descriptor() const;

    // One round: what is buffered and can be handled, then a wait of at most so long for the socket, writing
    // before reading.
    void serviceOnce(std::chrono::milliseconds longest, STPStatus* status = nullptr);
    // The same over several; those beyond the 64th are left out.
    static void serviceFirst(std::chrono::milliseconds longest, std::span<STPTransport* const> transports,
                             STPStatus* status = nullptr);
    static constexpr size_t mostServiced = 64;
    // For a loop that watches the descriptor. The listener is told when what is wanted may have changed.
    bool wantsInput() const;
    bool wantsOutput() const { return bound() && !inProcess_ && out_.length > 0; }
    void handleRead();
    void handleWrite();
    void setInterestListener(std::function<void()> listener) { interest_ = std::move(listener); }
    // Handles what waited and may go now.
    void processDeferred();

    // A message within the call that is being handled; at the top a context of its own begins.
    STPMessage newRequest(uint32_t firstId, uint32_t secondId, STPKind kind, uint32_t tag, uint32_t flags);
    STPMessage newReply(uint32_t firstId, uint32_t secondId, uint32_t inReplyTo) const;
    // Puts the message into the outgoing buffer and gives its sequence; 0 on failure.
    uint32_t enqueueMessage(STPMessage& message, STPStatus* status = nullptr);
    // Enqueues and waits until all is written. A message that has a reply must be awaited after that.
    uint32_t sendMessage(STPMessage& message, RetryHandler* retry, STPStatus* status = nullptr);
    // Enqueues and writes, at most so often, without any wait.
    uint32_t sendAndFlush(STPMessage& message, int rounds, STPStatus* status = nullptr);
    // Null on failure, and at once for sequence 0, which stands for a message that was not sent.
    STPMessagePtr awaitResponse(uint32_t sequence, RetryHandler* retry, STPStatus* status = nullptr);
    bool awaitSync(uint32_t firstId, uint32_t secondId, RetryHandler* retry, STPStatus* status = nullptr);
    // Waits until done says so; false on time-out or when the transport is lost, told by bound and status.
    bool waitUntil(RetryHandler* retry, const std::function<bool()>& done);

    // Null on failure. It stays known here until it is discarded.
    std::shared_ptr<STPChannel> createChannel(uint32_t firstId, uint32_t secondId, RetryHandler* retry,
                                              STPStatus* status = nullptr);
    std::shared_ptr<STPChannel> findChannel(uint32_t firstId, uint32_t secondId) const;
    // Sends a close when none was sent yet.
    void discardChannel(STPChannel& channel);
    static constexpr size_t mostChannels = 4096;

    void registerHandler(uint32_t firstId, uint32_t secondId, STPHandler& handler, STPKind kind);
    // All its entries.
    void unregisterHandler(STPHandler& handler);
    void setForwarder(STPForwarder* forwarder) { forwarder_ = forwarder; }
    // The upper half of the contexts that begin here from now on, where more than two ends send to each
    // other.
    void setContextHigh(uint16_t high) { defaultFrame_.context.high = high; }
    // An unsolicited message of this channel and kind that nobody took; null when there is none.
    STPMessagePtr takeUnclaimed(uint32_t firstId, uint32_t secondId, STPKind kind);

    // The request that is being handled, for its handler; popped at the end of the scope, together with what
    // nested calls left.
    class HandledScope {
      public:
        HandledScope(STPTransport& transport, const STPMessage& message);
        HandledScope(const HandledScope&) = delete;
        HandledScope& operator=(const HandledScope&) = delete;
        ~HandledScope();

      private:
        Ref<STPTransport> transport_;
        size_t frames_;
        int depth_;
    };

    // Whether a message was enqueued since this was last asked; and its kind and tag.
    bool takeSentFlag() { return std::exchange(sentFlag_, false); }
    uint32_t lastKind() const { return lastKind_; }
    uint32_t lastTag() const { return lastTag_; }
    // The next message gets the number behind this one.
    void setLastSequence(uint32_t sequence) { sequence_ = sequence; }

    static constexpr uint32_t mostOutput = uint32_t{256} << 20;
    // So many deferred messages end the reading while the gate holds the handlers.
    static constexpr size_t deferredToPause = size_t{16} << 10;

    // What is kept at the moment.
    struct Census {
        size_t deferred, unclaimed, replies, awaited, syncs, channels, handlers, frames;
        size_t outBytes, inBytes, outCapacity, inCapacity;
        bool operator==(const Census&) const = default;
    };
    Census census() const;

    // The transport of an open descriptor; null when there is none.
    static STPTransport* find(int descriptor);
    static void forEach(const std::function<void(STPTransport&)>& visit);

  protected:
    ~STPTransport() override;

  private:
    friend struct STPChannel;
    using HandlerKey = std::tuple<uint32_t, uint32_t, uint32_t>;
    using ChannelKey = std::pair<uint32_t, uint32_t>;

    // Status keeping.
    void beginOperation();
    bool fail(STPCode code, std::string text);
    bool failLost();
    bool give(STPStatus* status, bool result) const;
    void closeWith(STPStatus why);
    void closeQuietly();
    void tellClosed();
    void changed() const;
    // Connecting.
    bool canStart(const char* whenBound, const char* whenListening);
    bool acceptClient(AfterAccept after);
    bool awaitClient(AfterAccept after, RetryHandler* retry);
    void adopt(std::unique_ptr<Wire> wire);
    // Input and output.
    void serviceSocket(std::chrono::milliseconds longest);
    std::chrono::milliseconds handleBuffered(std::chrono::milliseconds longest);
    bool somethingToHandle() const;
    void takeReadiness(const WireReadiness& ready);
    bool readOnce();
    void makeRoom();
    bool enqueue(STPMessage& message);
    bool appendOutput(std::span<const uint8_t> first, std::span<const uint8_t> second);
    // What came.
    bool processInput();
    bool processPackets(size_t pass);
    void takePacket(const FrameExtent& extent, size_t pass);
    bool forward(const FrameExtent& extent, const STPHeader& header);
    bool handleDeferred(size_t pass);
    // What became of a message: Done, or it waits.
    enum class Taken { Done, Deferred };
    Taken dispatch(DeferredList::Entry entry, uint64_t number);
    Taken dispatchToHandlers(DeferredList::Entry entry, uint64_t number);
    Taken callHandlers(const std::vector<STPHandler*>& handlers, STPMessage& message, bool notAwaited);
    std::vector<STPHandler*> handlersOf(const STPHeader& header) const;
    bool isRegistered(const STPHandler* handler) const;
    void keepUnhandled(STPMessagePtr message);
    void handleChannelMessage(const STPHeader& header);
    bool mayHandle(const STPHeader& header, uint64_t number) const;
    bool gateHolds(const STPHeader& header) const;
    void defer(DeferredList::Entry entry, uint64_t number, STPHandler& handler);
    bool paused() const;
    void arrangeTurn();
    void askForTurn();
    void takeTurn();
    void enforceLimits();
    // Calls.
    const STPFrame& topFrame() const { return frames_.empty() ? defaultFrame_ : frames_.back(); }
    void pushFrame(const STPHeader& header, uint32_t ownSequence);
    void popFrameOf(uint32_t ownSequence);
    bool writeOut(RetryHandler* retry, const char* timeOut);
    bool sendWritten(STPMessage& message, RetryHandler* retry, const char* timeOut);
    STPMessagePtr waitForReply(uint32_t sequence, RetryHandler* retry);
    bool sendControl(STPKind kind, uint32_t firstId, uint32_t secondId, uint32_t tag);
    bool takeSync(uint32_t firstId, uint32_t secondId);
    void dropChannels();

    STPTransportOptions options_;
    STPStatus status_;
    uint32_t sequence_ = 0;  // the last one used
    FileDescriptor listening_;
    bool acceptPending_ = false;
    std::unique_ptr<Wire> wire_;
    InProcessWire* inProcess_ = nullptr;  // the wire, when it is one
    uint32_t lastKind_ = 0, lastTag_ = 0;
    bool sentFlag_ = false;
    ByteWindow out_, in_;
    bool inIncomplete_ = false;
    size_t skip_ = 0;  // padding of a packet that was taken before its padding came
    QueueUse use_;
    ReplyList replies_{use_};
    MessageList unclaimed_{use_};
    DeferredList deferred_{use_};
    size_t pass_ = 0;
    bool turnAsked_ = false;
    int waits_ = 0;          // blocking operations under way
    size_t connection_ = 0;  // counts the closings
    std::vector<STPFrame> frames_;
    STPFrame defaultFrame_;
    std::set<uint32_t> awaited_;
    std::multimap<HandlerKey, STPHandler*> handlers_;
    std::vector<ChannelKey> syncs_;
    STPForwarder* forwarder_ = nullptr;
    std::map<ChannelKey, std::shared_ptr<STPChannel>> channels_;
    std::function<void()> interest_;
};
