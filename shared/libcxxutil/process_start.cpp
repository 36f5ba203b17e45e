#include "shared/libcxxutil/process_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

#include "shared/libcxxutil/report.h"

namespace {
void do_nothing(int) {}

volatile std::sig_atomic_t stop_asked = 0;
void note_stop(int) {
    stop_asked = 1;
}
}  // namespace

void process_Begin(const char* program) {
    process_KeepStandardStreams();
    process_LetWritesFail();
    gen_set_short_name(program);
}

void process_KeepStandardStreams() {
    // The lowest free number is given first, so one too many is opened, and closed again.
    int file = 0;
    while (file >= 0 && file <= STDERR_FILENO) file = ::open("/dev/null", O_RDONLY);
    if (file >= 0) ::close(file);
}

void process_LetWritesFail() {
    // A handler, as what is ignored would stay so in programs that are started.
    struct sigaction action = {};
    action.sa_handler = do_nothing;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : {SIGPIPE, SIGXFSZ}) ::sigaction(signal, &action, nullptr);
}

void process_CatchStops() {
    struct sigaction action = {};
    action.sa_handler = note_stop;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    ::sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
}

bool process_IsStopAsked() {
    return stop_asked != 0;
}
