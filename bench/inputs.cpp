#include "bench/inputs.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "bench/generate.h"
#include "chronoweave/import/import.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/paths.h"

namespace {

constexpr size_t block = 1 << 20;

class OpenFile {
  public:
    OpenFile(const std::string& name, int how) : file_(::open(name.c_str(), how | O_CLOEXEC, 0666)) {}
    ~OpenFile() {
        if (file_ >= 0) ::close(file_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    operator int() const { return file_; }

  private:
    int file_;
};

std::vector<char>& buffer() {
    static std::vector<char> bytes(block);
    return bytes;
}

}  // namespace

std::string input_Generated(const std::string& work, uint64_t events, uint32_t tasks, uint64_t seed) {
    GeneratedTrace trace;
    trace.events = events;
    trace.tasks = tasks;
    trace.seed = seed;
    const std::string name =
        path_join(work, "generated-" + std::to_string(events) + "-" + std::to_string(tasks) + "-" +
                            std::to_string(trace.processors) + "-" + std::to_string(trace.seed) + ".trr");
    if (path_is_readable_file(name)) return name;
    // Under its own name only when it is whole.
    const std::string part = name + ".part";
    if (!generate_Trr(part, trace) || std::rename(part.c_str(), name.c_str()) != 0) return {};
    return name;
}

std::string input_Store(const BenchPlace& place, const std::string& file) {
    const std::string base = path_join(place.work, path_without_extension(path_file(file)) + "-store");
    static std::vector<std::string> made;
    if (std::find(made.begin(), made.end(), base) != made.end()) return base;
    ImportOptions options;
    options.outputBase = base;
    if (!import_OpenSource(file, options).store) return {};
    made.push_back(base);
    return base;
}

uint64_t plain_Size(const std::string& name) {
    std::error_code error;
    const auto size = std::filesystem::file_size(name, error);
    return error ? 0 : size;
}

uint64_t plain_StoreSize(const std::string& base) {
    return plain_Size(base + ".trv") + plain_Size(base + ".trs") + plain_Size(base + ".tri");
}

bool plain_Read(const std::string& name) {
    const OpenFile file(name, O_RDONLY);
    if (file < 0) return false;
    for (;;) {
        const ssize_t got = ::read(file, buffer().data(), block);
        if (got <= 0) return got == 0;
    }
}

bool plain_Copy(const std::string& source, const std::string& target, uint64_t count) {
    const OpenFile from(source, O_RDONLY), to(target, O_WRONLY | O_CREAT | O_TRUNC);
    if (from < 0 || to < 0) return false;
    bool all_read = false;
    while (count > 0 || !all_read) {
        if (!all_read) all_read = ::read(from, buffer().data(), block) <= 0;
        const size_t size = static_cast<size_t>(std::min<uint64_t>(count, block));
        if (::write(to, buffer().data(), size) != static_cast<ssize_t>(size)) return false;
        count -= size;
    }
    return ::fdatasync(to) == 0;
}

std::unique_ptr<_LaCanvasData> input_Canvas(const BenchPlace& place, const std::string& file, LaGraph& graph,
                                            int width, int height) {
    const std::string base = input_Store(place, file);
    TraceStorePtr store = base.empty() ? nullptr : mt_OpenForRead(base);
    Legend legend;
    if (!store || !configure_Read(legend, mt_GetOsName(store.get()), configure_ConsoleCallbacks(), 0))
        return nullptr;
    auto canvas = laCanvas_Create(graph, 0);
    laCanvas_Resized(*canvas, width, height);
    canvas->options.prefetch = false;
    if (!laCanvas_SetUpFromStore(*canvas, std::move(store), std::move(legend), file)) return nullptr;
    return canvas;
}
