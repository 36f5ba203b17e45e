// The foot of a printed page: the statuses and events that the picture shows, each with how it is drawn.
#pragma once

#include <string>
#include <vector>

#include "chronoweave/traxfunc/draw/scene.h"
#include "chronoweave/traxfunc/print/page_geometry.h"

struct TraxFootEntry {
    std::string name;
    IconHandle icon = NoIcon;  // of an event; a status has a line
    Colour colour = 0;
    int thickness = 1, style = 0;
};

// What is seen of the legend in the present view, in the legend's order, each name once.
std::vector<TraxFootEntry> traxFoot_Entries(const laScene& scene);
// The places of the entries, pixels of the screen. What has no room within the most rows is left out.
struct TraxFootLayout {
    int columns = 0, rows = 0;
    int cellWidth = 0, rowHeight = 0;
    int Height() const { return rows > 0 ? rows * rowHeight + 4 : 0; }
};
TraxFootLayout traxFoot_LayOut(const std::vector<TraxFootEntry>& entries, int width, int fontHeight);
void traxFoot_Draw(const std::vector<TraxFootEntry>& entries, const TraxFootLayout& layout,
                   const TraxPageGeometry& geometry, PageDevice& page);
