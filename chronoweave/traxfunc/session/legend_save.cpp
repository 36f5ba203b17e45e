#include "chronoweave/traxfunc/session/legend_save.h"

#include "chronoweave/rtos/configure_loss.h"
#include "chronoweave/rtos/configure_writer.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/config/config_dirs.h"
#include "windlib/dialog/host.h"

namespace {

bool save(_LaCanvasData& canvas, const std::string& folder, const std::string& file) {
    if (!path_is_directory(folder) && !path_make_directory(folder)) {
        canvas.calls.host->message(gen_format("Cannot create directory \"%s\"", folder.c_str()));
        return false;
    }
    if (!canvas.calls.host->ask(gen_format("Save changes to configuration file \"%s\"?", file.c_str())))
        return true;
    const std::string osName =
        canvas.source.store ? mt_GetOsName(canvas.source.store.get()) : canvas.looks.legend.osName;
    const Legend legend = laLegend_ForSaving(canvas);
    const std::string text = configure_WriteText(legend, osName);
    if (const auto lost = configure_FirstLoss(legend, text)) {
        canvas.calls.host->message(
            gen_format("Can't save configure file \"%s\":\n%s would not read back the same.", file.c_str(),
                       text_utf8(*lost).c_str()));
        return false;
    }
    const Result written = file_replace(file, text);
    if (written) return true;
    canvas.calls.host->message(gen_format("Can't open configure file \"%s\" to write.", file.c_str()) +
                               (written.reason().empty() ? "" : "\n" + written.reason()));
    return false;
}

}  // namespace

Legend laLegend_ForSaving(const _LaCanvasData& canvas) {
    Legend legend = canvas.looks.legend;
    LegendMisc& misc = legend.misc;
    misc.refreshInterval = canvas.options.refreshInterval;
    misc.maxRefreshedEvents = canvas.options.maxRefreshedEvents;
    misc.targetTimeout = canvas.options.targetTimeout;
    misc.extraDataWarning = canvas.options.extraDataWarning;
    misc.unusedExtraDataWarning = canvas.options.unusedExtraDataWarning;
    misc.centerStatus = canvas.looks.centerStatus;
    misc.tickPattern = canvas.axis.tickPattern;
    misc.showHiddenAgent = canvas.list.showHiddenAgent;
    misc.allForIntervalSearch = canvas.options.allForIntervalSearch;
    misc.sortField = canvas.list.sortField;
    misc.sortAscending = canvas.list.sortAscending;
    misc.objectTerm = canvas.list.objectTerm;
    misc.separator = canvas.list.separator;
    return legend;
}

bool laLegend_OfferSave(_LaCanvasData& canvas) {
    const bool changed = canvas.looks.legendChanged;
    canvas.looks.legendChanged = false;
    if (!changed || canvas.calls.host == nullptr || canvas.looks.legend.path.empty()) return true;
    const std::string& user = config_UserDirectory(true);
    if (user.empty() || !path_is_directory(user)) return false;
    const std::string folder = path_join(user, "chrono_weave");
    return save(canvas, folder, path_join(folder, path_file(canvas.looks.legend.path)));
}
