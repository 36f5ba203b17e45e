// The event server: commands in, answers out, and the events of one target on their way to a file. Bytes in,
// bytes out; the clock is handed in, and nothing here waits. Whoever runs it reads commands, writes what
// there is to say, and calls step when it is time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "companions/trv/server/event_mask.h"
#include "companions/trv/server/recorder.h"
#include "companions/trv/server/target.h"
#include "companions/trv/server/task_book.h"

// A target and where its events go.
struct Connection {
    std::unique_ptr<Target> target;
    std::unique_ptr<Recorder> recorder;
};
// Connects to what the text behind "c " names.
using ConnectFunction = std::function<Result(const std::string& text, Connection& connection)>;

class Server {
  public:
    // banner is said at once, with the first prompt.
    Server(ConnectFunction connect, std::string_view banner);

    // Bytes of commands, a line each. Behind each answer stands a prompt.
    void input(std::string_view bytes, Instant now);
    // No command comes any more: as the command q.
    void inputEnded(Instant now);
    // Takes the events that are there, and hands on what has waited long enough.
    void step(Instant now);
    // When step is to be called next; nothing while only a command can change anything.
    std::optional<Instant> next() const;
    // q was taken: what is still to be said is all.
    bool isDone() const { return done_; }

    // What is to be said. written takes so many bytes off its beginning.
    std::string_view output() const { return output_; }
    void written(size_t bytes) { output_.erase(0, bytes); }

  private:
    enum class State { Stopped, Logging, Ended };
    struct Command {
        std::string_view word, usage, help;
        void (Server::*run)(std::string_view argument, Instant now);
    };
    static const Command commands_[];

    void line(std::string_view text, Instant now);
    void connect(std::string_view argument, Instant now);
    void disconnect(std::string_view argument, Instant now);
    void startLogging(std::string_view argument, Instant now);
    void stopLogging(std::string_view argument, Instant now);
    void enable(std::string_view argument, Instant now);
    void disable(std::string_view argument, Instant now);
    void setMask(std::string_view argument, Instant now);
    void info(std::string_view argument, Instant now);
    void help(std::string_view argument, Instant now);
    void quit(std::string_view argument, Instant now);

    // An answer that holds one of the words by which it is known that the command was done, and one that
    // holds none of them, whatever names and reasons it repeats.
    void answer(std::string_view text);
    void tell(std::string_view what, const Result& why = {});
    bool isConnected();  // and says so when it isn't
    // Lines that nobody asked for.
    void remark(std::string_view text);
    void remarkAll(const std::vector<std::string>& lines);

    void drain(Instant now);
    TargetPoll takeFrom(TargetPoll polled, Instant now);
    void ended();
    void record(Instant now);
    size_t passed(std::span<const uint8_t> records);
    void sendStates(Instant now);
    void tellLost(uint64_t lost, Instant now);
    void recordingFailed(const Result& why);
    void letGo(Instant now);

    ConnectFunction connect_;
    std::string line_, output_;
    bool done_ = false, isLineTooLong_ = false;

    Connection connection_;
    std::optional<TaskBook> book_;
    RawWriter events_{false};
    std::vector<uint8_t> kept_;
    State state_ = State::Stopped;
    TargetPoll polled_;
    uint32_t mask_ = mask_All;
    struct Counts {
        uint64_t logged = 0, masked = 0, lost = 0;
    } counts_;
};
