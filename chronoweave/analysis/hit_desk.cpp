#include "chronoweave/analysis/hit_desk.h"

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/input/found_times.h"

void HitDesk::Lead(HitSource& source) {
    if (leading() == &source) return;
    std::erase(open_, &source);
    open_.push_back(&source);
    source.MarkHits();
}

void HitDesk::Leave(_LaCanvasData& canvas, HitSource& source) {
    const bool led = leading() == &source;
    std::erase(open_, &source);
    if (!led) return;
    if (HitSource* next = leading()) return next->MarkHits();
    laCanvas_Paint(canvas, [&] { laHits_Set(canvas, {}); });
}
