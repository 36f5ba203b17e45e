// gdb_link: gdb as the debugger of the analyzer's windows.
#include <unistd.h>

#include <cstdio>

#include "companions/gdb_link/gdb_client.h"
#include "companions/remote/remote.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr char help[] =
    "Usage: gdb_link TRACE [--program FILE] [--gdb GDB] [options of chronoweave-remote open]\n"
    "\n"
    "Opens the trace and goes on as the window's debugger: \"Debug\" attaches a gdb to the task's process,\n"
    "and an event with a program counter is shown at its source line. What is typed goes to gdb.\n"
    "\n"
    "--program FILE  the program that was recorded, for when the process has ended; built with -no-pie\n"
    "--gdb GDB       another gdb than the one on PATH\n"
    "--help, --version\n"
    "                this text, the version\n";

struct Words {
    std::string program, gdb = "gdb";
    std::vector<std::string> remote{"open"};
};

// The options of this program; the rest is the remote control's.
Result takeWords(const std::vector<std::string>& arguments, Words& words) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string* const value = arguments[i] == "--program" ? &words.program
                                   : arguments[i] == "--gdb"   ? &words.gdb
                                                               : nullptr;
        if (!value) {
            words.remote.push_back(arguments[i]);
        } else if (i + 1 == arguments.size()) {
            return Result::failure("its argument is missing", arguments[i]);
        } else {
            *value = arguments[++i];
        }
    }
    return {};
}

void say(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

// The terminal's window comes to the front, where it is one that understands this.
void raiseTerminal() {
    if (::isatty(STDOUT_FILENO)) say("\033[5t");
}

// Lines that the user types, for gdb.
class Typing {
  public:
    Typing(GdbSession& gdb, EventLoop& loop) : gdb_(gdb) {
        watch_ = Watch(loop.watches, STDIN_FILENO, WatchFor::Input, [this] { take(); });
    }

  private:
    void take() {
        char piece[1024];
        const ssize_t count = ::read(STDIN_FILENO, piece, sizeof piece);
        if (count <= 0) return watch_.remove();
        text_.append(piece, static_cast<size_t>(count));
        for (size_t end = text_.find('\n'); end != text_.npos; end = text_.find('\n')) {
            const std::string line = text_.substr(0, end);
            text_.erase(0, end + 1);
            if (const Result done = gdb_.command(line); !done) say(done.what() + '\n');
        }
    }

    GdbSession& gdb_;
    Watch watch_;
    std::string text_;
};

int run(const Words& words, const RemoteOptions& options) {
    EventLoop loop;
    GdbSession gdb(words.gdb, say, &loop.watches);
    const RemoteOutput line = [](const std::string& text) { say(text + '\n'); };
    Remote remote(options, path_find_program("trvgui"), line, loop, [&]() -> Ref<TRA_client_Impl> {
        const auto client = ref_Make<GdbClient>(gdb, words.program, loop.tasks, line, raiseTerminal);
        return Ref<TRA_client_Impl>(client.get());
    });
    const Typing typing(gdb, loop);
    const Result done = remote.run();
    if (!done) gen_error("%s", done.text().c_str());
    return done.ok() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    process_Begin(argv[0]);
    process_CatchStops();
    Words words;
    RemoteOptions options;
    Result parsed = takeWords({argv + 1, argv + argc}, words);
    if (parsed) parsed = remoteOptions_Parse(words.remote, options);
    if (!parsed) {
        gen_error("%s", parsed.text().c_str());
        return 2;
    }
    options.after = RemoteOptions::After::Listen;
    switch (options.answer) {
        case RemoteOptions::Answer::Help:
            std::fputs(help, stdout);
            return 0;
        case RemoteOptions::Answer::Version:
            std::printf("gdb_link %s\n", CW_VERSION);
            return 0;
        case RemoteOptions::Answer::None:
            break;
    }
    return run(words, options);
}
