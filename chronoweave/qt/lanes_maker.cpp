#include "chronoweave/qt/lanes_maker.h"

#include "chronoweave/engine/lanes/lane_build.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/fetch/lanes.h"
#include "shared/libcxxutil/gate.h"

LanesMaker::LanesMaker(PictureView& view, Tell tell, QObject* parent)
    : QObject(parent), view_(view), tell_(std::move(tell)) {
    later_.setSingleShot(true);
    connect(&later_, &QTimer::timeout, this, [this] { step(); });
}

LanesMaker::~LanesMaker() {
    gate_Program().Forget(this);
}

void LanesMaker::begin() {
    if (laLanes_BeginMaking(view_.canvas().source)) later_.start(0);
}

// Work that runs is not disturbed: the slice waits until it is over.
void LanesMaker::step() {
    constexpr uint32_t slice = 20'000;  // events; a few milliseconds
    if (!gate_May(GateActivity::TickReading))
        return gate_Program().WhenMay(GateActivity::TickReading, this, [this] { step(); });
    LaSource& source = view_.canvas().source;
    const bool more = laLanes_Make(source, slice);
    tell_(more ? std::optional(source.lanesMade->Share()) : std::nullopt);
    if (more) later_.start(0);
}
