// merge.
#include "chronoweave/cli/commands.h"
#include "chronoweave/cli/rows.h"
#include "chronoweave/import/merge/merge_files.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/progress_bar.h"

namespace {

int tell(const CommandLine& line, const Merged& merged) {
    for (const std::string& damage : merged.damage) cli_Say(damage);
    if (!line.quiet)
        for (const std::string& note : merged.notes) cli_Say(note);
    if (merged.stopped) return cli_Failure("stopped; nothing was written");
    if (!merged.result.ok()) return cli_Failure(merged.result.text());
    return merged.damage.empty() ? Exit_Done : Exit_Failed;
}

}  // namespace

int command_Merge(const CommandLine& line) {
    if (line.output.empty()) return cli_UsageError("merge: -o is required");
    MergeRequest request{line.sources, line.output};
    if (!line.align.empty() && !merge_AlignOf(line.align, request.align))
        return cli_UsageError("--align: natural, head or tail, not " + line.align);
    process_CatchStops();
    Merged merged;
    {
        ProgressBar bar(!line.quiet);
        request.progress = [show = bar.progress()](double done, double total) {
            return show(done, total) && !process_IsStopAsked();
        };
        merged = merge_Files(request);
    }
    const int status = tell(line, merged);
    if (!merged.result.ok()) return status;
    CommandLine form = line;
    form.output.clear();  // -o names the merged file
    RowWriter rows(form, {});
    if (!rows.good()) return Exit_Failed;
    const MergeCounts& counts = merged.counts;
    rows.facts({{"sources", counts.sources},
                {"events", counts.events},
                {"dropped", counts.dropped},
                {"badBytes", counts.badBytes},
                {"unread", counts.unread},
                {"shortened", counts.shortened},
                {"back", counts.back},
                {"far", counts.far},
                {"unturned", counts.unturned}});
    return rows.close() ? status : Exit_Failed;
}
