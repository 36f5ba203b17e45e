#include "chronoweave/traxfunc/legend_save.h"

#include "chronoweave/rtos/configure_writer.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/config_dirs.h"
#include "windlib/dialog/host.h"

namespace {

bool save(_LaCanvasData& canvas, const std::string& folder, const std::string& file) {
    if (!path_is_directory(folder) && !path_make_directory(folder)) {
        canvas.host->Message(gen_format("Cannot create directory \"%s\"", folder.c_str()));
        return false;
    }
    if (!canvas.host->Ask(gen_format("Save changes to configuration file \"%s\"?", file.c_str())))
        return true;
    const std::string osName = canvas.store ? mt_GetOsName(canvas.store.get()) : canvas.legend.osName;
    std::string why;
    if (file_replace(file, configure_WriteText(laLegend_ForSaving(canvas), osName), &why)) return true;
    canvas.host->Message(gen_format("Can't open configure file \"%s\" to write.", file.c_str()) +
                         (why.empty() ? "" : "\n" + why));
    return false;
}

}  // namespace

Legend laLegend_ForSaving(const _LaCanvasData& canvas) {
    Legend legend = canvas.legend;
    LegendMisc& misc = legend.misc;
    misc.refreshInterval = canvas.refreshInterval;
    misc.maxRefreshedEvents = canvas.maxRefreshedEvents;
    misc.targetTimeout = canvas.targetTimeout;
    misc.extraDataWarning = (canvas.flags & Canvas_ExtraDataWarning) != 0;
    misc.unusedExtraDataWarning = (canvas.flags & Canvas_UnusedExtraDataWarning) != 0;
    misc.centerStatus = canvas.centerStatus;
    misc.tickPattern = canvas.tickPattern;
    misc.showHiddenAgent = canvas.showHiddenAgent;
    misc.allForIntervalSearch = canvas.allForIntervalSearch;
    misc.sortField = canvas.sortField;
    misc.sortAscending = canvas.sortAscending;
    misc.objectTerm = canvas.objectTerm;
    misc.separator = canvas.separator;
    return legend;
}

LegendMisc laLegend_Kept(const _LaCanvasData& canvas) {
    LegendMisc misc;
    misc.refreshInterval = canvas.refreshInterval;
    misc.maxRefreshedEvents = canvas.maxRefreshedEvents;
    misc.targetTimeout = canvas.targetTimeout;
    return misc;
}

bool laLegend_OfferSave(_LaCanvasData& canvas) {
    const bool changed = (canvas.flags & Canvas_LegendChanged) != 0;
    canvas.flags &= ~static_cast<uint32_t>(Canvas_LegendChanged);
    if (!changed || canvas.host == nullptr || canvas.legend.path.empty()) return true;
    const std::string& user = config_UserDirectory(true);
    if (user.empty() || !path_is_directory(user)) return false;
    const std::string folder = path_join(user, "chrono_weave");
    return save(canvas, folder, path_join(folder, path_file(canvas.legend.path)));
}
