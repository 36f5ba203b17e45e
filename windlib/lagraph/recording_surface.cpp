#include "windlib/lagraph/recording_surface.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "shared/libcxxutil/report.h"

void RecordingSurface::add(const SurfaceOp& op) {
    ++counts[op.kind];
    for (int value : {op.x0, op.y0, op.x1, op.y1}) farthest = std::max(farthest, std::abs(value));
    if (!keep_) return;
    ops.push_back(op);
    ops.back().exclusiveOr = exclusiveOr_;
}

void RecordingSurface::forget() {
    ops.clear();
    counts.fill(0);
    farthest = 0;
}

std::vector<SurfaceOp> RecordingSurface::of(SurfaceOp::Kind kind) const {
    std::vector<SurfaceOp> found;
    for (const SurfaceOp& op : ops)
        if (op.kind == kind) found.push_back(op);
    return found;
}

std::vector<std::string> RecordingSurface::texts() const {
    std::vector<std::string> found;
    for (const SurfaceOp& op : ops)
        if (op.kind == SurfaceOp::Text) found.push_back(op.text);
    return found;
}

std::string RecordingSurface::text() const {
    static const char* const names[SurfaceOp::KindCount] = {
        "line", "styled", "fill", "clear", "text", "icon", "pushclip", "popclip", "exclusiveor"};
    std::string all;
    for (const SurfaceOp& op : ops) {
        all +=
            gen_format("%s %d %d %d %d %06x t%d s%d p%d i%d%s ", names[op.kind], op.x0, op.y0, op.x1, op.y1,
                       op.colour, op.thickness, op.style, op.phase, op.icon, op.exclusiveOr ? " xor" : "");
        all += op.text;
        all += '\n';
    }
    return all;
}

void RecordingSurface::drawLine(int x0, int y0, int x1, int y1, Colour colour) {
    add({.kind = SurfaceOp::Line, .x0 = x0, .y0 = y0, .x1 = x1, .y1 = y1, .colour = colour, .text = {}});
}

void RecordingSurface::drawStyledLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                                      int phase) {
    add({.kind = SurfaceOp::StyledLine,
         .x0 = x0,
         .y0 = y0,
         .x1 = x1,
         .y1 = y1,
         .colour = colour,
         .thickness = thickness,
         .style = style,
         .phase = phase,
         .text = {}});
}

void RecordingSurface::fillRect(int x, int y, int w, int h, Colour colour) {
    add({.kind = SurfaceOp::Fill, .x0 = x, .y0 = y, .x1 = w, .y1 = h, .colour = colour, .text = {}});
}

void RecordingSurface::clearRect(int x, int y, int w, int h) {
    add({.kind = SurfaceOp::Clear, .x0 = x, .y0 = y, .x1 = w, .y1 = h, .text = {}});
}

void RecordingSurface::drawText(int x, int y, std::string_view text, Colour foreground, Colour) {
    add({.kind = SurfaceOp::Text, .x0 = x, .y0 = y, .colour = foreground, .text = std::string(text)});
}

TextExtent RecordingSurface::textExtent(std::string_view text) {
    int characters = 0;
    for (char c : text) characters += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return {characters * 7, 16};
}

void RecordingSurface::drawIcon(int x, int y, IconHandle icon) {
    add({.kind = SurfaceOp::Icon, .x0 = x, .y0 = y, .icon = icon, .text = {}});
}

void RecordingSurface::pushClip(int x, int y, int w, int h, bool) {
    ++clipDepth_;
    add({.kind = SurfaceOp::PushClip, .x0 = x, .y0 = y, .x1 = w, .y1 = h, .text = {}});
}

void RecordingSurface::popClip() {
    --clipDepth_;
    add({.kind = SurfaceOp::PopClip, .text = {}});
}

void RecordingSurface::setExclusiveOr(bool on) {
    exclusiveOr_ = on;
    add({.kind = SurfaceOp::ExclusiveOr, .x0 = on, .text = {}});
}

int RecordingSurface::setFont(int slot) {
    if (slot < 0 || slot >= Font_Count) return -1;
    return std::exchange(font_, slot);
}

FontMetrics RecordingSurface::fontMetrics(int) {
    return {};
}
