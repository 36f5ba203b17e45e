// The service bus between two processes over loopback, each figure against plain calls of the same sockets
// with the same bytes.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "services/generated/tra_service_client_impl.h"
#include "services/generated/tra_service_server_impl.h"
#include "shared/libcxxutil/event_loop.h"
#include "shared/stp_transport/socket_listener.h"
#include "shared/stp_transport/stp_retry_handler.h"
#ifdef CW_BENCH_QT
#include "windlib/qt/application_testing.h"
#include "windlib/qt/event_service.h"
#endif

namespace {

using std::chrono::milliseconds;

// A process at the other end of a connection over loopback.
class FarProcess {
  public:
    explicit FarProcess(const std::function<void(int socket)>& run) {
        STPStatus status;
        FileDescriptor listening = socket_Listen(0, ListenOn::Loopback, status);
        const uint16_t port = socket_Port(listening.number()).value_or(0);
        pid_ = ::fork();
        if (pid_ == 0) {
            FileDescriptor near = socket_Connect("127.0.0.1", port, status);
            run(near.give());
            ::_exit(0);
        }
        pollfd entry{listening.number(), POLLIN, 0};
        ::poll(&entry, 1, 10000);
        socket_ = socket_Accept(listening.number(), status);
    }
    FarProcess(const FarProcess&) = delete;
    FarProcess& operator=(const FarProcess&) = delete;
    ~FarProcess() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    FileDescriptor takeSocket() { return std::move(socket_); }

  private:
    pid_t pid_ = 0;
    FileDescriptor socket_;
};

void setBlocking(int socket) {
    ::fcntl(socket, F_SETFL, ::fcntl(socket, F_GETFL) & ~O_NONBLOCK);
}

bool readWhole(int socket, std::vector<uint8_t>& bytes) {
    for (size_t at = 0; at < bytes.size();) {
        const ssize_t got = ::recv(socket, bytes.data() + at, bytes.size() - at, 0);
        if (got <= 0) return false;
        at += static_cast<size_t>(got);
    }
    return true;
}

bool writeWhole(int socket, const std::vector<uint8_t>& bytes) {
    for (size_t at = 0; at < bytes.size();) {
        const ssize_t put = ::send(socket, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
        if (put <= 0) return false;
        at += static_cast<size_t>(put);
    }
    return true;
}

// A plain connection whose far end answers each block of so many bytes with another.
struct PlainFar {
    FarProcess far;
    FileDescriptor socket;
    PlainFar(size_t asked, size_t answered)
        : far([=](int own) {
              setBlocking(own);
              std::vector<uint8_t> question(asked), answer(answered);
              while (readWhole(own, question) && writeWhole(own, answer)) {
              }
          }),
          socket(far.takeSocket()) {
        setBlocking(socket.number());
    }
};

struct Asked : TRA_client_Impl {
  protected:
    TRA_CheckAbility_Reply CheckAbility(const TRA_CheckAbility_Request&) override {
        return {.powerMmask = 6};
    }
    void RunCmdInDebugger(const TRA_RunCmdInDebugger_Request&) override {}
    TRA_ShowPositionInDebugger_Reply ShowPositionInDebugger(
        const TRA_ShowPositionInDebugger_Request&) override {
        return {};
    }
};

struct Asking : TRA_server_Impl {
  protected:
    TRA_OpenFile_Reply OpenFile(const TRA_OpenFile_Request&) override { return {}; }
    TRA_ScrollToPosition_Reply ScrollToPosition(const TRA_ScrollToPosition_Request&) override { return {}; }
    void CloseFile(const TRA_CloseFile_Request&) override {}
};

template <class Service>
Ref<Service> serviceOn(int socket) {
    auto transport = ref_Make<STPTransport>();
    transport->bindFD(socket);
    auto service = ref_Make<Service>();
    service->attach(transport);
    service->assumeNegotiated();
    return service;
}

void serveByTransport(int socket) {
    const auto service = serviceOn<Asked>(socket);
    while (service->transport()->bound()) service->transport()->serviceOnce(milliseconds(10000));
}

// In the loop that the program's windows run in.
void serveByWindowLoop(int socket) {
#ifdef CW_BENCH_QT
    testing_StartApplication();
    QtEventService events;
    const auto service = serviceOn<Asked>(socket);
    const STPSocketListener listener(Ref<STPTransport>(service->transport()), events.watches, events.tasks);
    platform_Loop([&] { return service->transport()->bound(); });
#else
    EventLoop loop;
    const auto service = serviceOn<Asked>(socket);
    const STPSocketListener listener(Ref<STPTransport>(service->transport()), loop.watches, loop.tasks);
    while (service->transport()->bound()) loop.round();
#endif
}

constexpr size_t requestBytes = 80, replyBytes = 64;  // of the documented example
constexpr int roundTrips = 2000;

// Both ends' work of one call, and a plain exchange of the same bytes.
Turns roundTripTurns(const std::function<void(int)>& serve) {
    FarProcess far(serve);
    const auto service = serviceOn<Asking>(far.takeSocket().give());
    PlainFar plain(requestBytes, replyBytes);
    std::vector<uint8_t> question(requestBytes), answer(replyBytes);
    return measure_Turns(
        {.count = 9}, {},
        [&] {
            for (int i = 0; i < roundTrips; ++i) service->CheckAbility({.dataFile = "a.trr"});
        },
        [&] {
            for (int i = 0; i < roundTrips; ++i)
                if (!writeWhole(plain.socket.number(), question) || !readWhole(plain.socket.number(), answer))
                    return;
        });
}

Outcome microseconds(const Turns& turns) {
    Outcome outcome;
    outcome.turns = turns;
    outcome.value = turns.subject / roundTrips * 1e6;
    outcome.unit = "us";
    return outcome;
}

// A transport whose far end counts the messages and answers requests with their number.
struct CountingFar {
    FarProcess far;
    Ref<STPTransport> transport = ref_Make<STPTransport>();
    CountingFar() : far([](int socket) { run(socket); }) { transport->bindFD(far.takeSocket().give()); }

    // Waits until all that was sent has been handled.
    void settle() {
        STPMessage message = transport->newRequest(2, 1, STPKind::Text, 0, stpWantsReply);
        transport->awaitResponse(transport->sendMessage(message, nullptr), nullptr);
    }

  private:
    struct Counter : STPHandler {
        STPTransport* transport = nullptr;
        uint64_t count = 0;
        bool handleMessage(STPMessage& message, bool) override {
            ++count;
            if ((message.header.flags & stpWantsReply) == 0) return true;
            const STPTransport::HandledScope scope(*transport, message);
            STPMessage reply = transport->newReply(1, 2, message.header.sequence);
            transport->sendAndFlush(reply, 2);
            return true;
        }
    };
    static void run(int socket) {
        const auto own = ref_Make<STPTransport>();
        own->bindFD(socket);
        Counter counter;
        counter.transport = own.get();
        own->registerHandler(2, 1, counter, STPKind::Text);
        while (own->bound()) own->serviceOnce(milliseconds(10000));
    }
};

// A plain connection whose far end reads everything, and answers one byte for each so many.
struct SwallowingFar {
    FarProcess far;
    FileDescriptor socket;
    explicit SwallowingFar(size_t perTurn)
        : far([=](int own) {
              setBlocking(own);
              std::vector<uint8_t> room(65536);
              const std::vector<uint8_t> done(1);
              for (size_t got = 0;;) {
                  const ssize_t count = ::recv(own, room.data(), room.size(), 0);
                  if (count <= 0) return;
                  for (got += static_cast<size_t>(count); got >= perTurn; got -= perTurn)
                      if (!writeWhole(own, done)) return;
              }
          }),
          socket(far.takeSocket()) {
        setBlocking(socket.number());
    }
    void settle() {
        std::vector<uint8_t> done(1);
        readWhole(socket.number(), done);
    }
};

// Bytes of a body that makes a packet of so many.
std::string bodyFor(size_t packet) {
    return std::string(packet - stpHeaderBytes - 4, 'x');
}

enum class Sending { Enqueued, OneByOne };

Turns oneWayTurns(size_t packetBytes, int messages, Sending how) {
    CountingFar far;
    const size_t turnBytes = packetBytes * static_cast<size_t>(messages);
    SwallowingFar plain(turnBytes);
    const std::string body = bodyFor(packetBytes);
    const std::vector<uint8_t> bytes(packetBytes);
    return measure_Turns(
        {.count = 7}, {},
        [&] {
            for (int i = 0; i < messages; ++i) {
                STPMessage message = far.transport->newRequest(2, 1, STPKind::Text, 0, stpOneWay);
                message.body = body;
                if (how == Sending::OneByOne)
                    far.transport->sendMessage(message, nullptr);
                else
                    far.transport->enqueueMessage(message);
                if (far.transport->census().outBytes > 256 * 1024) far.transport->handleWrite();
            }
            far.settle();
        },
        [&] {
            for (int i = 0; i < messages; ++i)
                if (!writeWhole(plain.socket.number(), bytes)) return;
            plain.settle();
        });
}

Outcome rateOf(const Turns& turns, int messages) {
    Outcome outcome;
    outcome.turns = turns;
    outcome.value = messages / turns.subject;
    outcome.unit = "/s";
    outcome.limit = Outcome::AtLeast;
    outcome.bound = 500000;
    return outcome;
}

// The part of the plain speed that is left.
Outcome partOfPlain(const Turns& turns, double atLeast) {
    Outcome outcome;
    outcome.turns = turns;
    outcome.value = turns.ratio > 0 ? 1 / turns.ratio : 0;
    outcome.unit = "of plain";
    outcome.limit = Outcome::AtLeast;
    outcome.bound = atLeast;
    return outcome;
}

}  // namespace

void register_BusBenchmarks() {
    // One measurement for the ratio and the time.
    const auto trips = std::make_shared<Turns>();
    measure_Register("bus round trip",
                     [trips] { return outcome_OfRatio(*trips = roundTripTurns(serveByTransport), 2); });
    measure_Register("bus round trip/time", [trips] { return microseconds(*trips); });
    measure_Register("bus round trip/far end in the window's loop",
                     [] { return outcome_OfRatio(roundTripTurns(serveByWindowLoop), 6); });
    measure_Register("bus one-way/80 bytes, enqueued", [] {
        constexpr int messages = 300000;
        return rateOf(oneWayTurns(80, messages, Sending::Enqueued), messages);
    });
    measure_Register("bus one-way/64 KiB",
                     [] { return partOfPlain(oneWayTurns(65536 + 48, 4000, Sending::Enqueued), 0.3); });
    measure_Register("bus one-way/80 bytes, one by one",
                     [] { return partOfPlain(oneWayTurns(80, 100000, Sending::OneByOne), 0.6); });
}
