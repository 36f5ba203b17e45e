// Pictures in files: .png, .svg or .pdf, by the name.
#pragma once

#include <functional>
#include <string>

#include "shared/libcxxutil/result.h"

class Surface;

// Makes what Qt needs to draw with no display. Call once, before anything else of this file, in a program
// that has no application object of its own.
void picture_StartHeadless();

// Draws a picture of a size in logical pixels and writes it. scale is the device pixels per logical one of a
// .png.
Result picture_Write(const std::string& file, int width, int height, double scale,
                     const std::function<void(Surface&)>& draw);
// Calls measure with a surface of the same fonts, for layout ahead of drawing. What it draws, on a size in
// pixels, is dropped.
void picture_Measure(const std::function<void(Surface&)>& measure, int width = 1, int height = 1);
