#include "chronoweave/analysis/merge_dialogs.h"

#include <array>

#include "chronoweave/analysis/file_to_write.h"
#include "chronoweave/import/merge/merge_files.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/captured_run.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/busy.h"

namespace {

constexpr char words_Merging[] = "Merging event source files ...";
constexpr char words_Failed[] = "Failed to merge event files, here are the error messages: \n%s";
constexpr char words_NoTool[] =
    "The program \"trv\", which merges, was found neither beside this program nor on the PATH.";
constexpr char words_Shown[] = "\"%s\" is the trace of a window. Choose another file for the merged result.";
constexpr char words_IsSource[] =
    "\"%s\" is one of the files to be merged. Choose another file for the merged result.";
constexpr char words_Stopped[] = "Merging was stopped.";

constexpr size_t mostPrinted = size_t{32} * 1024;  // bytes of either end of what the tool prints
constexpr size_t mostLines = 12;                   // of either end that a box shows
constexpr size_t mostColumns = 160;

// In the order of MergeAlign.
constexpr std::array<const char*, 3> choices = {"Natural_B", "HA_B", "TA_B"};
constexpr std::array<MergeAlign, 3> aligns = {MergeAlign::Natural, MergeAlign::Head, MergeAlign::Tail};

void choose_only(DialogModel& model, std::string_view chosen) {
    for (const char* choice : choices) model.setChoice(choice, choice == chosen ? 0 : -1);
}

// Lines of any bytes as a box can show them: no more than fit on a screen.
std::string for_box(std::string_view printed) {
    std::vector<std::string> lines;
    for (std::string_view line; text_next_line(printed, line);)
        if (!line.empty()) lines.push_back(text_printable(line.substr(0, mostColumns)));
    std::string text;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines.size() > 2 * mostLines && i == mostLines) {
            const size_t left = lines.size() - 2 * mostLines;
            text += gen_format("... %zu more lines ...\n", left);
            i += left;
        }
        text += lines[i] + '\n';
    }
    return text;
}

// What a program that failed leaves unsaid.
std::string end_of(const CapturedRun& run) {
    if (!run.started.ok()) return run.started.text() + '\n';
    if (!run.end) return {};
    if (run.end->how == ChildEnd::How::Killed)
        return gen_format("trv was ended by signal %d.\n", run.end->number);
    return run.printed.empty() ? gen_format("trv ended with status %d.\n", run.end->number) : std::string();
}

// How far the tool says that it is.
class ToolProgress {
  public:
    // Without a pipe the tool goes on all the same.
    ToolProgress() {
        if (!pipe_Make(pipe_).ok() || !pipe_.read.SetNonBlocking()) pipe_ = {};
    }
    void GiveTo(ChildOptions& options) const {
        if (!pipe_.write.IsOpen()) return;
        constexpr int descriptor = 3;
        options.descriptors.push_back({descriptor, pipe_.write.number()});
        options.environment.push_back(std::string(merge_ProgressVariable) + '=' + std::to_string(descriptor));
    }
    // Of merge_ProgressWhole.
    int Steps() {
        std::array<uint8_t, 1024> room;
        for (MovedBytes moved;
             pipe_.read.IsOpen() && (moved = pipe_Read(pipe_.read, room)).what == Moved::Some;)
            Take({reinterpret_cast<const char*>(room.data()), moved.bytes});
        return steps_;
    }

  private:
    void Take(std::string_view bytes) {
        for (const char c : bytes) {
            if (c != '\n') {
                if (line_.size() < 8) line_ += c;
                continue;
            }
            if (const auto step = scan_number(line_); step && *step <= merge_ProgressWhole)
                steps_ = static_cast<int>(*step);
            line_.clear();
        }
    }

    BytePipe pipe_;
    std::string line_;
    int steps_ = 0;
};

// One call of merge_AskAndLoad.
class MergeCommand {
  public:
    MergeCommand(DialogHost& host, _LaCanvasData& canvas, const MergeSurroundings& around)
        : host_(host), canvas_(canvas), around_(around) {}

    bool Run() {
        sources_ = host_.chooseFiles({.title = "Select KORVANTIS raw event files (.trr) to merge:",
                                      .button = "Choose",
                                      .filters = {"Raw event files (*.trr)", "Core files (*.core)"},
                                      .settingsName = "RawEventFile"});
        if (sources_.empty()) return false;
        if (sources_.size() == 1) return Load(sources_.front()), true;
        const std::vector<std::string> chosen =
            host_.chooseFiles({.of = FileQuestion::Of::New,
                               .title = "Select the files for merged result:",
                               .button = "Choose",
                               .suggested = path_join(path_directory(sources_.front()), "merged.trr"),
                               .filters = {"Raw event files (*.trr)"}});
        if (chosen.empty()) return false;
        const std::optional<MergeAlign> align = dialogs_AskMergeAlign(host_);
        if (!align) return true;
        align_ = *align;
        return TakeOutput(chosen.front()) && Merge();
    }

  private:
    bool Load(const std::string& name) { return laCanvas_Command(canvas_, "Open " + name); }
    bool Refuse(const std::string& words) const {
        host_.message(words);
        return false;
    }

    bool TakeOutput(const std::string& chosen) {
        if (chosen.empty()) return false;
        output_ = dialogs_FileToWrite(host_, chosen, "trr");
        if (output_.empty()) return false;
        for (const std::string& source : sources_)
            if (path_same_file(source, output_)) return Refuse(gen_format(words_IsSource, output_.c_str()));
        if (around_.isShown && around_.isShown(output_))
            return Refuse(gen_format(words_Shown, output_.c_str()));
        return !around_.tool.empty() || Refuse(words_NoTool);
    }

    bool Merge() {
        CapturedRun run;
        {
            const BusyWork busy(GateWork::Merge, dialog_Busy(host_));
            laCanvas_UpdateFields(canvas_, 0, words_Merging);
            run = RunTool();
        }
        if (run.stopped) return laCanvas_UpdateFields(canvas_, 0, words_Stopped), false;
        laCanvas_UpdateFields(canvas_, 0, "");
        if (!run.printed.empty()) gen_console_raw(text_utf8(run.printed));
        if (!run.succeeded())
            return Refuse(gen_format(words_Failed, (for_box(run.printed) + end_of(run)).c_str()));
        const bool loaded = Load(output_);
        // The sources were damaged; what could be read of them is there.
        if (const std::string told = for_box(run.printed); !told.empty()) host_.message(told);
        return loaded;
    }

    CapturedRun RunTool() const {
        ToolProgress progress;
        ChildOptions options;
        options.arguments = {around_.tool, "-align", merge_AlignName(align_), "-o", output_};
        options.arguments.insert(options.arguments.end(), sources_.begin(), sources_.end());
        progress.GiveTo(options);
        return run_Captured(std::move(options), mostPrinted, [this, &progress] {
            const int steps = progress.Steps();
            return !canvas_.calls.progress || canvas_.calls.progress(steps, merge_ProgressWhole);
        });
    }

    DialogHost& host_;
    _LaCanvasData& canvas_;
    const MergeSurroundings& around_;
    std::vector<std::string> sources_;  // in the order chosen
    std::string output_;
    MergeAlign align_ = MergeAlign::Natural;
};

}  // namespace

std::optional<MergeAlign> dialogs_AskMergeAlign(DialogHost& host) {
    DialogModel model(dialogs_MergeOptions());
    choose_only(model, choices[0]);
    model.onChoose = [&model](const std::string& name, int) { choose_only(model, name); };
    model.onPress = [&model](const std::string& name) {
        int chosen = Dialog_Dismissed;
        for (size_t i = 0; i < choices.size(); ++i)
            if (name == "Ok_BS" && model.item(choices[i]).choice == 0) chosen = static_cast<int>(i);
        model.close(chosen);
    };
    const int answer = host.run(model);
    return answer < 0 ? std::nullopt : std::optional(aligns[static_cast<size_t>(answer)]);
}

bool merge_AskAndLoad(DialogHost& host, _LaCanvasData& canvas, const MergeSurroundings& around) {
    return MergeCommand(host, canvas, around).Run();
}
