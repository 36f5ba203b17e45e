#include "chronoweave/traxfunc/model/list.h"

#include "chronoweave/traxfunc/model/items.h"
#include "shared/libcxxutil/report.h"

std::string laCanvas_Plural(const std::string& term) {
    return term + "s";
}

std::string laCanvas_LaneName(const LaList& list, const laItem_Line& lane) {
    return lane.hasName ? lane.name : list.objectTerm + gen_format(" 0x%x", lane.objectId);
}
