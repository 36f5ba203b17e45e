// Icons as pictures, drawn from their files at the resolution asked for and kept.
#pragma once

#include <QImage>
#include <QPainter>

#include "windlib/icons.h"
#include "windlib/qt/pixel_blit.h"

// The icon at a device pixel ratio; an empty one for NoIcon or a file that can't be drawn.
const Sprite& iconSprite(IconHandle icon, double devicePixelRatio);
// Draws the icon's own shapes, for devices that have no pixels.
void iconDrawShapes(QPainter& painter, int x, int y, IconHandle icon);
// The same in a size.
void iconDrawShapes(QPainter& painter, const QRectF& box, IconHandle icon);
