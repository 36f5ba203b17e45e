#include "companions/gdb_link/recorded_process.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>

namespace {

using namespace std::chrono;

system_clock::duration since(const timespec& time) {
    return duration_cast<system_clock::duration>(seconds(time.tv_sec) + nanoseconds(time.tv_nsec));
}

// Clocks of the system and of files differ by as much.
constexpr seconds doubt{2};

}  // namespace

// The line says "PID (NAME) STATE ...", where the name may hold anything; the beginning is the 22nd word, in
// clock ticks from when the machine was started.
std::optional<ProcessBegin> recorded_Begin(int pid) {
    constexpr int wordsBehindName = 20;
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t name = line.rfind(')');
    if (name == line.npos) return std::nullopt;
    std::istringstream words(line.substr(name + 1));
    std::string word;
    for (int i = 0; i < wordsBehindName && words >> word; ++i) continue;
    const long perSecond = ::sysconf(_SC_CLK_TCK);
    timespec up{};
    if (!words || perSecond <= 0 || ::clock_gettime(CLOCK_BOOTTIME, &up) != 0) return std::nullopt;
    const milliseconds begun(std::strtoll(word.c_str(), nullptr, 10) * 1000 / perSecond);
    return system_clock::now() - since(up) + begun;
}

bool recorded_MayBe(int pid, const std::string& trace) {
    struct stat file {};
    const auto begun = recorded_Begin(pid);
    if (!begun || ::stat(trace.c_str(), &file) != 0) return true;
    return *begun <= ProcessBegin(since(file.st_mtim)) + doubt;
}
