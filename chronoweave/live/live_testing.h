// For tests of the link: an installation of a launcher and a server that are shell scripts, a clock that
// stands still but where the link waits in vain, and what is left behind of a link.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>

#include "chronoweave/live/target_commands.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/report.h"

// Steps of a server, as shell commands: nothing here starts another process.
inline std::string script_Says(const std::string& text) {
    return "printf '" + text + "'";
}
inline const std::string script_Silent = ":", script_Dies = "kill -9 $$", script_Stops = "kill -STOP $$";

// Commands by how they begin, with what the server does about them; what is not here is answered by a prompt.
using ServerScript = std::map<std::string, std::string>;

class ScriptedInstallation {
  public:
    ScriptedInstallation() {
        // $1 is the number of the reply pipe, $5 the server.
        Write("gexec", "eval \"exec \\\"$5\\\" >&$1 2>&1 $1>&-\"\n");
        Script({});
    }
    void Script(const ServerScript& script, const std::string& banner = "trv 1.0\\n> ") {
        std::string text = script_Says(banner) +
                           "\nwhile IFS= read -r line; do\nprintf '%s\\n' \"$line\" >> " + (folder / "got") +
                           "\ncase \"$line\" in\nq) exit;;\n'') ;;\n";
        for (const auto& [begin, step] : script) text += "'" + begin + "'*) " + step + ";;\n";
        Write("trv", text + "*) printf '> ';;\nesac\ndone\n");
    }
    // What the servers were sent, line by line.
    std::string Got() const {
        std::ifstream file(folder / "got");
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string path() const { return folder / ""; }
    TestFolder folder;

  private:
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name) << "#!/bin/sh\n" << text;
        ::chmod((folder / name).c_str(), 0755);
    }
};

// Waits for the server for as long as it has something to do; when it has not, the time is over at once.
class ScriptedWait : public LinkWait {
  public:
    explicit ScriptedWait(const TargetLink& link) : link_(link) {}
    Clock::time_point now{std::chrono::hours(1)};
    bool stop = false;  // the user stops every wait
    Clock::time_point Now() override { return now; }
    bool GoesOn() override { return !stop; }
    Came ForInput(const FileDescriptor& from, std::optional<std::chrono::milliseconds> longest) override {
        for (int idle = 0; idle < 4;) {
            pollfd entry{from.number(), POLLIN, 0};
            if (::poll(&entry, 1, 1) > 0) return Came::Input;
            idle = IsIdle() ? idle + 1 : 0;
        }
        if (!longest || stop) return Came::Stopped;
        now += *longest;
        return Came::Nothing;
    }

  private:
    bool IsIdle() const {
        const auto pid = link_.server->child.pid();
        int unread = 0;
        if (!pid || ::ioctl(link_.server->commands.number(), FIONREAD, &unread) < 0) return false;
        std::ifstream stat("/proc/" + std::to_string(*pid) + "/stat");
        std::string text;
        std::getline(stat, text);
        const size_t at = text.rfind(") ");
        const char state = at == std::string::npos ? ' ' : text[at + 2];
        return state == 'T' || (state == 'S' && unread == 0);
    }
    const TargetLink& link_;
};

class RecordingPanel : public LinkPanel {
  public:
    explicit RecordingPanel(TargetLink& link) : link_(link) { link_.panel = this; }
    ~RecordingPanel() override {
        if (link_.panel == this) link_.panel = nullptr;
    }
    void AddLine(const std::string& line) override { text += line + "\n"; }
    void ShowMask(const std::string& shown) override { mask = shown; }
    void Refresh() override { ++refreshes; }
    void Destroy() override { link_.panel = nullptr; }
    std::string text, mask;
    int refreshes = 0;

  private:
    TargetLink& link_;
};

inline size_t open_descriptors() {
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += entry.path() != "";
    return count;
}
inline size_t semaphores_left() {
    const std::string ours = gen_format("sem.vrl:TRV:%X:", static_cast<unsigned>(::getpid()));
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
        count += entry.path().filename().string().starts_with(ours);
    return count;
}

// A link to the scripted server.
struct ScriptedLink {
    explicit ScriptedLink(const ScriptedInstallation& installation) {
        link.around = {.installation = installation.path(),
                       .tasks = &tasks,
                       .wait = &wait,
                       .timeoutMs = [this] { return timeout; },
                       .tell = [this](const std::string& text) { told += text; }};
        link.mode = TargetLink::Mode::Ready;
    }
    ~ScriptedLink() { End(); }
    void End() {
        TargetLinkReset(link, LinkEnd::Final, LinkPanelAfter::Stays);
        EXPECT_EQ(server_Reap(std::chrono::milliseconds(0)), 0u);
    }
    void Kill() {
        link.server->child.signal(SIGKILL);
        EXPECT_TRUE(link.server->child.WaitForEnd(std::chrono::seconds(60)));
    }
    int64_t SpentMs() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(wait.now - begin).count();
    }

    EventTasks tasks;
    TargetLink link;
    ScriptedWait wait{link};
    RecordingPanel panel{link};
    int timeout = 5000;
    std::string told;
    LinkWait::Clock::time_point begin = wait.now;
};
