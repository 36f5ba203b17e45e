// trv: what the window program has done by another process. Its form is told by the words behind its name.
#include <cstdio>
#include <string>
#include <vector>

#include "companions/trv/merge_form.h"
#include "companions/trv/server_form.h"
#include "shared/libcxxutil/process_start.h"

namespace {

// A form of the program: whether the words ask for it, and what it does with them.
struct Form {
    bool (*isAsked)(std::span<const std::string> words);
    int (*run)(std::span<const std::string> words);
    std::string (*usage)();
};
constexpr Form forms[] = {{server_IsAsked, server_Run, server_Usage},
                          {merge_IsAsked, merge_Run, [] { return std::string(merge_Usage); }}};

void print_usage(std::FILE* to) {
    for (const Form& form : forms) std::fputs(form.usage().c_str(), to);
}

}  // namespace

int main(int argc, char** argv) {
    process_Begin(argv[0]);
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() == 1 && words[0] == "--version") {
        std::puts("trv " CW_VERSION);
        return 0;
    }
    if (words.size() == 1 && (words[0] == "--help" || words[0] == "-h")) {
        print_usage(stdout);
        return 0;
    }
    for (const Form& form : forms)
        if (form.isAsked(words)) return form.run(words);
    print_usage(stderr);
    return 2;
}
