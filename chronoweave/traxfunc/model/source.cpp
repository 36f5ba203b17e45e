#include "chronoweave/traxfunc/model/source.h"

#include "chronoweave/engine/lanes/lane_build.h"

LaSource::LaSource() = default;

LaSource::~LaSource() = default;
