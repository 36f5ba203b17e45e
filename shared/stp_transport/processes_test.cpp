// Real processes over loopback, with a proxy between them that spoils the connection.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "shared/stp_transport/socket_wire.h"
#include "shared/stp_transport/stp_retry_handler.h"
#include "shared/stp_transport/transport_testing.h"

using namespace std::chrono_literals;

namespace {

// A forked process that runs until it is done or this goes.
class Child {
  public:
    explicit Child(const std::function<void()>& run) : pid_(::fork()) {
        if (pid_ != 0) return;
        ::alarm(100);  // whatever goes wrong, it ends
        run();
        ::_exit(0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }

  private:
    pid_t pid_;
};

// Answers every request with its body, for one client.
void runEcho(int listening) {
    const auto transport = ref_Make<STPTransport>();
    if (!transport->listenOnFD(listening, STPTransport::AfterAccept::Close, nullptr)) return;
    NotingHandler echo;
    transport->registerHandler(2, 1, echo, STPKind::Text);
    echo.run = [&](STPMessage& message) {
        echo.seen.clear();
        const STPTransport::HandledScope scope(*transport, message);
        STPMessage reply = transport->newReply(1, 2, message.header.sequence);
        reply.body = message.body;
        transport->sendAndFlush(reply, 2);
        return true;
    };
    while (transport->bound()) transport->serviceOnce(10s);
}

enum class Fault { None, Trickle, Cut, Reset, HalfOpen, Flood, Junk, NeverReads };

void writeAll(const FileDescriptor& to, std::string_view bytes) {
    while (!bytes.empty()) {
        const MovedBytes moved =
            pipe_Write(to, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
        if (moved.what == Moved::End || moved.what == Moved::Failed) ::_exit(0);
        bytes.remove_prefix(moved.bytes);
    }
}

// So many bytes of the far end's answers pass; then the fault happens.
constexpr size_t spoiledAfter = 150;

class Proxy {
  public:
    Proxy(int listening, uint16_t far, Fault fault) : fault_(fault) {
        pollfd entry{listening, POLLIN, 0};
        ::poll(&entry, 1, -1);
        STPStatus status;
        client_ = socket_Accept(listening, status);
        server_ = socket_Connect("127.0.0.1", far, status);
    }
    void run() {
        while (true) {
            pollfd entries[] = {{client_.number(), POLLIN, 0}, {server_.number(), POLLIN, 0}};
            ::poll(entries, 2, -1);
            if (entries[0].revents != 0 && fault_ != Fault::NeverReads) forward(client_, server_);
            if (entries[1].revents != 0) answer();
            if (fault_ == Fault::NeverReads) ::pause();
        }
    }

  private:
    std::string take(const FileDescriptor& from) {
        std::string bytes(4096, '\0');
        const MovedBytes moved = pipe_Read(from, {reinterpret_cast<uint8_t*>(bytes.data()), bytes.size()});
        if (moved.what == Moved::End || moved.what == Moved::Failed) ::_exit(0);
        bytes.resize(moved.bytes);
        return bytes;
    }
    void forward(const FileDescriptor& from, const FileDescriptor& to) {
        const std::string bytes = take(from);
        if (fault_ != Fault::Trickle) return writeAll(to, bytes);
        for (const char byte : bytes) writeAll(to, {&byte, 1});
    }
    void answer() {
        if (fault_ == Fault::None || fault_ == Fault::Trickle) return forward(server_, client_);
        std::string bytes = take(server_);
        const size_t left = spoiledAfter - std::min(spoiledAfter, passed_);
        passed_ += bytes.size();
        if (passed_ <= spoiledAfter) return writeAll(client_, bytes);
        writeAll(client_, bytes.substr(0, left));
        spoil();
    }
    void spoil() {
        const linger now{1, 0};
        switch (fault_) {
            case Fault::Reset:
                ::setsockopt(client_.number(), SOL_SOCKET, SO_LINGER, &now, sizeof now);
                ::_exit(0);
            case Fault::HalfOpen:
                ::pause();
                break;
            case Fault::Flood: {
                std::string flood;
                for (uint16_t i = 0; i < 1000; ++i) flood += packet_Of(header_Text(1, stpOneWay, {7, i, 1}));
                while (true) writeAll(client_, flood);
            }
            case Fault::Junk:
                writeAll(client_, std::string(100000, '\xA5'));
                break;
            case Fault::Cut:
            case Fault::None:
            case Fault::Trickle:
            case Fault::NeverReads:
                break;
        }
        ::_exit(0);
    }

    Fault fault_;
    FileDescriptor client_, server_;
    size_t passed_ = 0;
};

struct Outcome {
    int answered = 0;
    STPStatus status;
    bool bound = false;
};

// Calls through the proxy until one fails, at most so many.
Outcome callThrough(Fault fault, int most, std::optional<std::chrono::milliseconds> limit,
                    size_t bodyBytes = 40) {
    Listening echo, proxy;
    const Child server([&] { runEcho(echo.socket.number()); });
    const Child between([&] {
        echo.socket.close();
        Proxy(proxy.socket.number(), echo.port, fault).run();
    });
    echo.socket.close();
    proxy.socket.close();
    Outcome outcome;
    const auto transport = ref_Make<STPTransport>();
    NotingHandler handler;  // what floods in finds a handler that must wait
    transport->registerHandler(2, 1, handler, STPKind::Text);
    EXPECT_TRUE(transport->connect("127.0.0.1", proxy.port, &outcome.status)) << outcome.status.text;
    for (; outcome.answered < most; ++outcome.answered) {
        STPRetryHandler retry(transport, limit);
        STPMessage message = transport->newRequest(2, 1, STPKind::Text, 0, stpWantsReply | stpOwnContextOnly);
        message.body = std::string(bodyBytes, 'a' + static_cast<char>(outcome.answered % 26));
        const std::string sent = message.body;
        const uint32_t sequence = transport->sendMessage(message, &retry, &outcome.status);
        if (sequence == 0) break;
        const STPMessagePtr reply = transport->awaitResponse(sequence, &retry, &outcome.status);
        if (!reply) break;
        EXPECT_EQ(reply->body.substr(0, bodyBytes), sent);
    }
    outcome.bound = transport->bound();
    transport->close();
    EXPECT_EQ(stp_CallState().messageDepth, 0);
    EXPECT_EQ(handler.held, 0);
    return outcome;
}

}  // namespace

TEST(Processes, CallsPassAProxyInWhateverPieces) {
    EXPECT_EQ(callThrough(Fault::None, 500, std::nullopt).answered, 500);
    EXPECT_EQ(callThrough(Fault::Trickle, 20, std::nullopt, 300).answered, 20);
    EXPECT_EQ(callThrough(Fault::None, 3, std::nullopt, 3 << 20).answered, 3);
}

TEST(Processes, ASpoiledConnectionCostsAStatusAndAText) {
    const struct {
        Fault fault;
        STPCode code;
        const char* text;
    } rows[] = {
        {Fault::Cut, STPCode::PeerClosed,
         "[awaitResponse]: connection closed while waiting to receive response"},
        {Fault::Reset, STPCode::PeerClosed,
         "[awaitResponse]: connection closed while waiting to receive response"},
        {Fault::Junk, STPCode::PeerClosed,
         "[awaitResponse]: connection closed while waiting to receive response"},
        {Fault::Flood, STPCode::PeerClosed,
         "[awaitResponse]: connection closed while waiting to receive response"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = callThrough(row.fault, 100, std::nullopt);
        EXPECT_EQ(outcome.answered, 1);
        EXPECT_EQ(outcome.status.code, row.code);
        EXPECT_EQ(outcome.status.text, row.text);
        EXPECT_FALSE(outcome.bound);
    }
}

TEST(Processes, APeerThatSaysNothingMoreOrNeverReadsTimesOut) {
    Outcome outcome = callThrough(Fault::HalfOpen, 100, 200ms);
    EXPECT_EQ(outcome.answered, 1);
    EXPECT_EQ(outcome.status.code, STPCode::TimeOut);
    EXPECT_TRUE(outcome.bound);
    outcome = callThrough(Fault::NeverReads, 1, 200ms, 15 << 20);
    EXPECT_EQ(outcome.answered, 0);
    EXPECT_EQ(outcome.status.text, "[sendMessage]: reached timeout while waiting to send message");
}

TEST(Processes, AFloodNeverTakesMuchMemory) {
    rusage before{}, after{};
    ::getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(callThrough(Fault::Flood, 100, std::nullopt).answered, 1);
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 200 * 1024);  // KiB
}
