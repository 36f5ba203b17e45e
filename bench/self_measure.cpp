#include "bench/self_measure.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "shared/libcxxutil/text.h"

namespace {

// A field of /proc/self/status in bytes.
uint64_t status_bytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(field + ":", 0) == 0)
            return std::strtoull(line.c_str() + field.size() + 1, nullptr, 10) * 1024;
    return 0;
}

// What a child that runs this program with these arguments prints; empty when it fails.
std::string output_of_self(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "cw_bench");
    int pipe[2];
    if (::pipe(pipe) != 0) return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(pipe[1], STDOUT_FILENO);
        std::vector<char*> pointers;
        for (std::string& argument : arguments) pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        ::execv("/proc/self/exe", pointers.data());
        ::_exit(127);
    }
    ::close(pipe[1]);
    std::string text;
    char bytes[256];
    for (ssize_t got = 0; child > 0 && (got = ::read(pipe[0], bytes, sizeof bytes)) > 0;)
        text.append(bytes, static_cast<size_t>(got));
    ::close(pipe[0]);
    int status = 1;
    if (child > 0) ::waitpid(child, &status, 0);
    return status == 0 ? text : std::string{};
}

}  // namespace

int self_Measure(const std::function<bool()>& work) {
    const uint64_t before = status_bytes("VmRSS");
    const bool done = work();
    const uint64_t most = status_bytes("VmHWM");
    if (!done || before == 0 || most == 0) return 1;
    std::printf("%llu\n", static_cast<unsigned long long>(most > before ? most - before : 0));
    return 0;
}

Outcome outcome_OfMemory(const std::vector<std::string>& words, double mostMebibytes) {
    const auto grown = scan_number(text_trim(output_of_self(words)));
    if (!grown) return outcome_OfTrouble("the work in a process of its own failed");
    Outcome outcome;
    outcome.value = static_cast<double>(*grown) / (1 << 20);
    outcome.unit = "MiB";
    outcome.limit = Outcome::AtMost;
    outcome.bound = mostMebibytes;
    return outcome;
}
