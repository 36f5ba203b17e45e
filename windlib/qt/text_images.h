// Short texts as pictures, drawn once and kept: a zoomed-out canvas has thousands of numbers, of which few
// differ.
#pragma once

#include <QFont>
#include <QFontMetrics>
#include <string_view>

#include "windlib/lagraph/surface.h"
#include "windlib/qt/pixel_blit.h"

// The text with its baseline as many logical pixels below the upper edge as the font's ascent. Valid until
// the next call.
const Sprite& textSprite(const QFont& font, const QFontMetrics& metrics, std::string_view text, Colour colour,
                         double devicePixelRatio);
