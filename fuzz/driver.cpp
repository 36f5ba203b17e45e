// Runs an entry point with no fuzzer: over the files of a folder, and over seeded mutations of each.
//
//     NAME_corpus FOLDER [MUTATIONS [SEED]]     all files of the folder
//     NAME_corpus FILE...                       these files as they are
//
// An input that crashes, breaks a promise or takes more than its time is left as NAME_corpus.failed in the
// working directory.
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "fuzz/support.h"

#if defined(__SANITIZE_ADDRESS__)
extern "C" void __sanitizer_set_death_callback(void (*callback)());
#endif

namespace {

using Input = std::vector<uint8_t>;

constexpr double most_seconds = 1;  // of the processor, for one input

std::string failed_name;
const Input* running = nullptr;

// Called on the way down: keeps to calls that need nothing of the process.
void leave_input() {
    if (!running) return;
    std::FILE* file = std::fopen(failed_name.c_str(), "wb");
    if (file) {
        std::fwrite(running->data(), 1, running->size(), file);
        std::fclose(file);
    }
    const std::string said = "the input is in " + failed_name + "\n";
    if (::write(STDOUT_FILENO, said.data(), said.size()) < 0) return;
    running = nullptr;
}

void on_signal(int number) {
    leave_input();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void watch_for_death() {
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_set_death_callback(leave_input);
    std::signal(SIGABRT, on_signal);
#else
    for (const int number : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(number, on_signal);
#endif
}

double processor_seconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void run(const Input& input) {
    running = &input;
    const double start = processor_seconds();
    LLVMFuzzerTestOneInput(input.data(), input.size());
    const double took = processor_seconds() - start;
    if (took > most_seconds) {
        std::printf("an input of %zu bytes took %.2f s\n", input.size(), took);
        std::fflush(stdout);
        leave_input();
        std::exit(1);
    }
    running = nullptr;
}

Input read_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Input(std::istreambuf_iterator<char>(file), {});
}

// One change out of those that parsers take badly.
void mutate(Input& input, const Input& other, std::mt19937& random) {
    const auto below = [&random](size_t n) { return n == 0 ? 0 : random() % n; };
    const size_t at = below(input.size()), length = std::min(1 + below(16), input.size() - at);
    const auto place = input.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end = place + static_cast<std::ptrdiff_t>(length);
    static constexpr uint8_t edges[] = {0, 1, 2, 3, 0x52, 0x7F, 0x80, 0xFF};
    switch (below(7)) {
        case 0:
            if (!input.empty()) *place = static_cast<uint8_t>(*place ^ (1u << below(8)));
            break;
        case 1:
            if (!input.empty()) *place = edges[below(sizeof edges)];
            break;
        case 2:
            std::fill(place, end, edges[below(sizeof edges)]);
            break;
        case 3:
            input.erase(place, end);
            break;
        case 4: {
            const Input copy(place, end);
            input.insert(input.begin() + static_cast<std::ptrdiff_t>(below(input.size())), copy.begin(),
                         copy.end());
            break;
        }
        case 5:
            input.resize(at);
            break;
        default: {
            const size_t from = below(other.size());
            input.insert(input.end(), other.begin() + static_cast<std::ptrdiff_t>(from), other.end());
            break;
        }
    }
}

int run_folder(const std::filesystem::path& folder, int mutations, unsigned seed) {
    std::vector<std::filesystem::path> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path());
    std::sort(names.begin(), names.end());
    std::vector<Input> files;
    for (const auto& name : names) files.push_back(read_file(name));
    std::mt19937 random(seed);
    for (const Input& file : files) {
        run(file);
        for (int i = 0; i < mutations; ++i) {
            Input input = file;
            for (size_t changes = 1 + random() % 4; changes > 0; --changes)
                mutate(input, files[random() % files.size()], random);
            run(input);
        }
    }
    std::printf("%zu files, %d mutations of each\n", files.size(), mutations);
    return files.empty() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::printf("usage: %s FOLDER [MUTATIONS [SEED]] | FILE...\n", argv[0]);
        return 2;
    }
    failed_name = std::filesystem::path(argv[0]).filename().string() + ".failed";
    watch_for_death();
    if (std::filesystem::is_directory(argv[1]))
        return run_folder(argv[1], argc > 2 ? std::atoi(argv[2]) : 200,
                          argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 1);
    for (int i = 1; i < argc; ++i) {
        const Input input = read_file(argv[i]);
        run(input);
    }
    return 0;
}
