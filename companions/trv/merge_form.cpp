#include "companions/trv/merge_form.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "chronoweave/import/merge/merge_files.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/progress_bar.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

const char merge_Usage[] =
    "usage: trv -align natural|head|tail -o OUT IN...\n"
    "\n"
    "Merges the events of several sources by time into OUT, a raw event file (.trr).\n"
    "\n"
    "IN               raw event files (.trr) and core files (.core)\n"
    "-align natural   times are as recorded; so it is without -align\n"
    "-align head      times are shifted so that the first events of all sources have the same time\n"
    "-align tail      times are shifted so that the last events of all sources have the same time\n"
    "-o OUT           appears when it is whole, and is never one of the sources\n"
    "\n"
    "Status 0: OUT is whole; what was damaged in the sources stands on standard error. Status 1: there is\n"
    "no OUT. Status 2: the command line was wrong.\n";

namespace {

enum Status { Whole = 0, Failed = 1, Wrong = 2 };

// One line; names may hold anything.
void say(const std::string& text) {
    std::fputs((text_printable("trv: " + text) + '\n').c_str(), stderr);
}

int wrong(const std::string& what) {
    say(what);
    std::fputs(merge_Usage, stderr);
    return Wrong;
}

// Why the words are no request; empty when they are one.
std::string read_words(std::span<const std::string> words, MergeRequest& request) {
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--") {
            request.sources.insert(request.sources.end(), words.begin() + static_cast<ptrdiff_t>(i) + 1,
                                   words.end());
            break;
        }
        if (word.empty() || word[0] != '-') {
            request.sources.push_back(word);
            continue;
        }
        if (word != "-align" && word != "-o") return word + ": there is no such option";
        if (++i == words.size()) return word + ": a value is missing";
        if (word == "-o")
            request.output = words[i];
        else if (!merge_AlignOf(words[i], request.align))
            return "-align: natural, head or tail, not " + words[i];
    }
    if (request.output.empty()) return "-o: the output is missing";
    return request.sources.empty() ? "the files to be merged are missing" : std::string();
}

// Tells whoever started us how far we are, where that is wanted.
class ProgressTeller {
  public:
    ProgressTeller() {
        const char* number = std::getenv(merge_ProgressVariable);
        if (number) descriptor_ = scan_number(number);
    }
    void tell(double done, double total) {
        const int step = total > 0 ? static_cast<int>(merge_ProgressWhole * done / total) : 0;
        if (!descriptor_ || step == told_) return;
        told_ = step;
        // Nobody there to listen is no fault of the merge.
        if (::dprintf(static_cast<int>(*descriptor_), "%d\n", step) < 0) descriptor_.reset();
    }

  private:
    std::optional<uint64_t> descriptor_;
    int told_ = -1;
};

// The bar is gone ahead of what there is to say.
Merged merge_telling(MergeRequest& request) {
    ProgressBar bar(true);
    request.progress = [teller = ProgressTeller(), show = bar.progress()](double done, double total) mutable {
        teller.tell(done, total);
        return show(done, total) && !process_IsStopAsked();
    };
    return merge_Files(request);
}

}  // namespace

bool merge_IsAsked(std::span<const std::string> words) {
    return std::any_of(words.begin(), words.end(),
                       [](const std::string& word) { return word == "-align" || word == "-o"; });
}

int merge_Run(std::span<const std::string> words) {
    MergeRequest request;
    const std::string trouble = read_words(words, request);
    if (!trouble.empty()) return wrong(trouble);
    process_CatchStops();
    const Merged merged = merge_telling(request);
    if (merged.stopped) {
        say("stopped; nothing was written");
        return Failed;
    }
    for (const auto* lines : {&merged.damage, &merged.notes})
        for (const std::string& line : *lines) say(line);
    if (merged.result.ok()) return Whole;
    say(merged.result.text());
    return Failed;
}
