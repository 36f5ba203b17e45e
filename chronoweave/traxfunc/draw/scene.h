// What drawing reads: it changes none of it and asks nobody else.
#pragma once

#include <algorithm>

#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/options.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/model/view.h"
#include "windlib/lagraph/graph.h"

struct laScene {
    const LaGraph& graph;
    const LaView& view;
    const LaAxis& axis;
    const LaItems& items;
    const LaLooks& looks;
    const LaMarks& marks;
    const LaOptions& options;

    laTimeScale scale() const { return {view, axis, graph.width}; }
};
